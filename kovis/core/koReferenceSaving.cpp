#include "koReferenceSaving.h"

#include "koAtomicFile.h"
#include "koOsbFile.h"
#include "koProjectFile.h"
#include "koReferenceFileStates.h"
#include "koReferenceLinks.h"
#include "koSceneBuilder.h"
#include "koSceneLoader.h"

#include <kovis/koScopedMultiCommand.h>

#include <QFileInfo>
#include <QSet>

namespace {

bool isNewSmartReference(const koReferenceContent& links)
{
    return links.hasSmart && links.smartUnsaved && links.loaded;
}

QString freePath(const QString& proposed, const QStringList& chosen, const QString& reservedPath)
{
    const int suffixAt = proposed.size() - QFileInfo(proposed).suffix().size() - 1;
    QString candidate = proposed;
    for (int counter = 1; chosen.contains(candidate) || candidate == reservedPath || QFileInfo::exists(candidate);
         ++counter) {
        candidate = proposed;
        candidate.insert(suffixAt, QLatin1Char('_') + QString::number(counter));
    }
    return candidate;
}

} // namespace

koReferenceSaving::koReferenceSaving(koReferenceEngine& engine)
    : m_engine(engine)
{
}

bool koReferenceSaving::needsWriting(quint64 id) const
{
    return m_engine.linksOf(id).smartUnsaved || m_engine.store()->isChanged(m_engine.shareKeyOf(id))
           || m_engine.fileStates().smartFileState(id) == koReferenceTypes::Missing;
}

bool koReferenceSaving::save(quint64 id)
{
    const koReferenceContent links = m_engine.linksOf(id);
    if (!links.hasSmart || links.smartPath.isEmpty() || !links.loaded)
        return false;
    bool ok = saveChangedSubReferences(id);
    if (needsWriting(id)) {
        if (!writeFile(id, links.smartPath))
            return false;
        finishSave(id);
    }
    return ok;
}

bool koReferenceSaving::saveChangedSubReferences(quint64 id)
{
    bool ok = true;
    QSet<quint64> written;
    // Deepest first: a file written before the new files below it would hold them inline.
    const QVector<quint64> references = m_engine.store()->referencesBelow(id);
    for (auto it = references.crbegin(); it != references.crend(); ++it) {
        const quint64 sub = *it;
        const koReferenceContent links = m_engine.linksOf(sub);
        const quint64 shareKey = m_engine.shareKeyOf(sub);
        if (sub == id || written.contains(shareKey) || !links.hasSmart || links.smartPath.isEmpty() || !links.loaded
            || !(links.smartUnsaved || m_engine.store()->isChanged(shareKey))) {
            continue;
        }
        written.insert(shareKey);
        if (writeFile(sub, links.smartPath))
            finishSave(sub);
        else
            ok = false;
    }
    return ok;
}

bool koReferenceSaving::saveAs(quint64 id, const QString& path, bool withSubReferences)
{
    const QString target = koReferenceLinks::cleanPath(path);
    koReferenceContent links = m_engine.linksOf(id);
    if (!m_engine.store()->contentOfNode(id) || target.isEmpty() || !links.loaded)
        return false;
    const bool ok = !withSubReferences || saveChangedSubReferences(id);
    if (!writeFile(id, target))
        return false;
    links.hasSmart = true;
    links.smartPath = target;
    // Where the project lives is no edit to undo; where a reference points is one of its parent.
    if (id == m_engine.store()->rootId())
        m_engine.store()->setFileState(id, links);
    else
        m_engine.updateLinks(id, links, true);
    finishSave(id);
    return ok;
}

bool koReferenceSaving::saveProject(const QString& path, const koReferenceEngine::SmartPathsRequest& askForSmartPaths)
{
    koSceneStore* store = m_engine.store();
    const quint64 root = store->rootId();
    const koReferenceContent before = m_engine.linksOf(root);
    const QString target = path.isEmpty() ? before.smartPath : koReferenceLinks::cleanPath(path);
    if (target.isEmpty() || (path.isEmpty() && before.smartUnsaved))
        return false;
    const bool moved = target != before.smartPath || before.smartUnsaved;
    // The project takes its file first, so the new files below are placed around it.
    koReferenceContent placed = before;
    placed.smartPath = target;
    placed.smartUnsaved = false;
    store->setFileState(root, placed);
    if (hasNewSmartReferencesBelow(root)) {
        const bool placedAll = askForSmartPaths ? askForSmartPaths(root, target) : (placeNewSmartFiles(root, target), true);
        if (!placedAll) {
            store->setFileState(root, before);
            return false;
        }
    }
    const bool ok = saveChangedSubReferences(root);
    if (moved || needsWriting(root)) {
        if (!writeFile(root, target)) {
            store->setFileState(root, before);
            return false;
        }
        finishSave(root);
    }
    return ok;
}

bool koReferenceSaving::hasNewSmartReferencesBelow(quint64 id) const
{
    const QVector<quint64> references = m_engine.store()->referencesBelow(id);
    return std::any_of(references.cbegin(), references.cend(),
                       [&](quint64 sub) { return sub != id && isNewSmartReference(m_engine.linksOf(sub)); });
}

void koReferenceSaving::placeNewSmartFiles(quint64 id, const QString& reservedPath)
{
    const koReferenceEngine::Settings& settings = m_engine.settings();
    const bool custom = settings.storeMode == 1 && !settings.storeLocation.isEmpty();
    const QString folder = custom ? settings.storeLocation : QFileInfo(m_engine.projectPath()).path();
    koScopedMultiCommand step(koUndoString("koReferenceSaving", tr("Place New Smart Files")));
    QSet<quint64> placed;
    QStringList chosen;
    for (quint64 sub : m_engine.store()->referencesBelow(id)) {
        const koReferenceContent links = m_engine.linksOf(sub);
        const quint64 shareKey = m_engine.shareKeyOf(sub);
        if (sub == id || placed.contains(shareKey) || !isNewSmartReference(links))
            continue;
        placed.insert(shareKey);
        const bool besideSource = !custom && links.hasSource && !links.sourcePath.isEmpty();
        const QString proposed = m_engine.links().proposeSmartPath(
            sub, besideSource ? koReferenceTypes::NextToSourceFile : koReferenceTypes::CustomFolder, folder);
        chosen.append(freePath(proposed, chosen, reservedPath));
        m_engine.links().setSmartPath(sub, chosen.last());
    }
}

bool koReferenceSaving::writeFile(quint64 id, const QString& path)
{
    const bool geometry = koSceneLoader::isGeometryFile(path);
    const koSceneNodeDesc content = m_engine.builder().describeContent(id, geometry);
    const QString projectFolder = QFileInfo(m_engine.projectPath()).absolutePath();
    const QByteArray data = geometry ? koOsbFile::serialize(content)
                                     : koProjectFile::serialize(content, QFileInfo(path).absolutePath(), projectFolder);
    QString error;
    if (koAtomicFile::write(path, data, &error))
        return true;
    emit m_engine.warning(error);
    return false;
}

void koReferenceSaving::finishSave(quint64 id)
{
    koReferenceContent links = m_engine.linksOf(id);
    const quint64 shareKey = m_engine.shareKeyOf(id);
    links.smartUnsaved = false;
    links.smartUnreadable = false;
    m_engine.fileCache().refresh(links.smartPath);
    links.smartStamp = m_engine.fileCache().lookup(links.smartPath).modified;
    m_engine.store()->setFileState(shareKey, links);
    m_engine.store()->markSaved(shareKey);
    m_engine.announceShared(shareKey);
}
