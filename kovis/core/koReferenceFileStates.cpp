#include "koReferenceFileStates.h"

#include "koFileStateCache.h"
#include "koReferenceEngine.h"

#include <QCoreApplication>
#include <QSet>

using koReferenceTypes::FileState;

koReferenceFileStates::koReferenceFileStates(koReferenceEngine& engine)
    : m_engine(engine)
{
}

const koReferenceContent* koReferenceFileStates::contentOf(quint64 id) const
{
    return m_engine.store()->contentOfNode(id);
}

FileState koReferenceFileStates::smartFileState(quint64 id) const
{
    const koReferenceContent* content = contentOf(id);
    if (!content || !content->hasSmart)
        return koReferenceTypes::NoFile;
    if (content->smartUnsaved)
        return koReferenceTypes::Unsaved;
    if (content->smartPath.isEmpty())
        return koReferenceTypes::Missing;
    const koFileSnapshot& file = m_engine.fileCache().lookup(content->smartPath);
    if (!file.exists || (content->smartUnreadable && file.modified == content->smartStamp))
        return koReferenceTypes::Missing;
    if (content->loaded && content->smartStamp.isValid() && file.modified > content->smartStamp)
        return koReferenceTypes::OutOfDate;
    return koReferenceTypes::UpToDate;
}

FileState koReferenceFileStates::sourceFileState(quint64 id) const
{
    const koReferenceContent* content = contentOf(id);
    if (!content || !content->hasSource)
        return koReferenceTypes::NoFile;
    if (content->sourcePath.isEmpty())
        return koReferenceTypes::Missing;
    const koFileSnapshot& file = m_engine.fileCache().lookup(content->sourcePath);
    if (!file.exists || (content->sourceUnreadable && file.modified == content->sourceStamp))
        return koReferenceTypes::Missing;
    if (content->sourceImportDate.isValid() && file.modified > content->sourceImportDate)
        return koReferenceTypes::OutOfDate;
    return koReferenceTypes::UpToDate;
}

const koFileSnapshot* koReferenceFileStates::smartSnapshot(quint64 id) const
{
    return snapshotOf(id, true);
}

const koFileSnapshot* koReferenceFileStates::sourceSnapshot(quint64 id) const
{
    return snapshotOf(id, false);
}

const koFileSnapshot* koReferenceFileStates::snapshotOf(quint64 id, bool smart) const
{
    const koReferenceContent* content = contentOf(id);
    if (!content || !(smart ? content->hasSmart : content->hasSource))
        return nullptr;
    const QString& path = smart ? content->smartPath : content->sourcePath;
    return path.isEmpty() ? nullptr : &m_engine.fileCache().lookup(path);
}

QVector<koReferenceFileStates::LinkedFile> koReferenceFileStates::linkedFiles() const
{
    if (!m_linkedFilesKnown) {
        m_linkedFiles = collectLinkedFiles();
        m_linkedFilesKnown = true;
    }
    return m_linkedFiles;
}

QVector<koReferenceFileStates::LinkedFile> koReferenceFileStates::collectLinkedFiles() const
{
    QVector<LinkedFile> links;
    links.reserve(2 * m_engine.store()->nodeCount());
    m_engine.store()->visitLiveContents([&links](quint64 shareKey, const koReferenceContent& content) {
        content.forEachLinkedPath([&](const QString& path) { links.append({path, shareKey}); });
    });
    links.squeeze();
    return links;
}

QVector<koReferenceFileStates::FileChange> koReferenceFileStates::readChanges(const QVector<LinkedFile>& links,
                                                                           const QHash<QString, koFileSnapshot>& known)
{
    QHash<QString, QVector<quint64>> byPath;
    byPath.reserve(links.size());
    for (const LinkedFile& link : links)
        byPath[link.path].append(link.shareKey);
    QVector<FileChange> changes;
    for (auto file = byPath.cbegin(); file != byPath.cend(); ++file) {
        koFileSnapshot snapshot = koFileStateCache::read(file.key());
        if (snapshot != known.value(file.key()))
            changes.append({file.key(), std::move(snapshot), file.value()});
    }
    return changes;
}

void koReferenceFileStates::applyChanges(const QVector<FileChange>& changes)
{
    QSet<quint64> changedKeys;
    for (const FileChange& change : changes) {
        if (m_engine.fileCache().update(change.path, change.snapshot)) {
            for (quint64 shareKey : change.shareKeys)
                changedKeys.insert(shareKey);
        }
    }
    QVector<quint64> changed;
    for (quint64 shareKey : changedKeys)
        changed += m_engine.store()->instances(shareKey);
    if (changed.isEmpty())
        return;
    if (m_engine.settings().notificationMode == koReferenceEngine::NotifyAlways)
        emit m_engine.notice(tr("%n reference(s) changed on disk", nullptr, changed.size()));
    m_engine.announce(changed);
}

void koReferenceFileStates::checkFiles()
{
    applyChanges(readChanges(linkedFiles(), m_engine.fileCache().snapshots()));
}

void koReferenceFileStates::reportStaleFiles()
{
    const auto stale = [](koReferenceTypes::FileState state) {
        return state == koReferenceTypes::OutOfDate || state == koReferenceTypes::Missing;
    };
    int count = 0;
    for (quint64 id : m_engine.sceneReferences())
        count += stale(smartFileState(id)) || stale(sourceFileState(id));
    if (count > 0)
        emit m_engine.notice(tr("%n reference(s) have files that are out of date or missing", nullptr, count));
}
