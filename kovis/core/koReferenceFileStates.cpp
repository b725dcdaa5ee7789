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

QHash<QString, QVector<quint64>> koReferenceFileStates::linkedFiles() const
{
    if (!m_linkedFilesKnown) {
        m_linkedFiles = collectLinkedFiles();
        m_linkedFilesKnown = true;
    }
    return m_linkedFiles;
}

QHash<QString, QVector<quint64>> koReferenceFileStates::collectLinkedFiles() const
{
    QHash<QString, QVector<quint64>> files;
    QSet<quint64> seen;
    for (quint64 id : m_engine.sceneReferences()) {
        const quint64 shareKey = m_engine.shareKeyOf(id);
        if (seen.contains(shareKey))
            continue;
        seen.insert(shareKey);
        const koReferenceContent* content = contentOf(id);
        if (content->hasSmart && !content->smartPath.isEmpty())
            files[content->smartPath].append(shareKey);
        if (content->hasSource && !content->sourcePath.isEmpty())
            files[content->sourcePath].append(shareKey);
    }
    return files;
}

void koReferenceFileStates::applySnapshots(const QHash<QString, QVector<quint64>>& files, const QStringList& paths,
                                           const QVector<koFileSnapshot>& snapshots)
{
    QSet<quint64> changedKeys;
    for (int i = 0; i < paths.size() && i < snapshots.size(); ++i) {
        if (m_engine.fileCache().update(paths.at(i), snapshots.at(i))) {
            for (quint64 shareKey : files.value(paths.at(i)))
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
    const QHash<QString, QVector<quint64>> files = linkedFiles();
    const QStringList paths = files.keys();
    QVector<koFileSnapshot> snapshots;
    snapshots.reserve(paths.size());
    for (const QString& path : paths)
        snapshots.append(koFileStateCache::read(path));
    applySnapshots(files, paths, snapshots);
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
