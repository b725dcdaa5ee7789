#include "koReferenceLoading.h"

#include "koReferenceEngine.h"
#include "koSceneBuilder.h"
#include "koSceneLoader.h"

#include <kovis/koScopedMultiCommand.h>

#include <QDateTime>
#include <QFileInfo>

koReferenceLoading::koReferenceLoading(koReferenceEngine& engine)
    : m_engine(engine)
{
}

QString koReferenceLoading::nameOf(quint64 id) const
{
    const koNodeRecord* node = m_engine.store()->node(id);
    return node ? node->name.left(200) : QString();
}

void koReferenceLoading::load(quint64 id)
{
    const koReferenceContent links = m_engine.linksOf(id);
    if (!m_engine.store()->contentOfNode(id) || links.loaded)
        return;
    if (links.hasSmart) {
        loadSmart(id);
        return;
    }
    koScopedMultiCommand step(koUndoString("koReferenceLoading", tr("Load Reference")));
    if (!restoreParked(id) && links.hasSource)
        importSource(id);
}

bool koReferenceLoading::loadSmart(quint64 id)
{
    const koReferenceContent links = m_engine.linksOf(id);
    if (!m_engine.store()->contentOfNode(id) || !links.hasSmart)
        return false;
    if (links.loaded)
        return true;
    koScopedMultiCommand step(koUndoString("koReferenceLoading", tr("Load Reference")));
    if (isMemoryOnly(links) && restoreParked(id))
        return true;
    return !links.smartUnsaved && !links.smartPath.isEmpty() && readSmartFile(id, links);
}

bool koReferenceLoading::reloadSmart(quint64 id)
{
    const koReferenceContent links = m_engine.linksOf(id);
    if (!links.hasSmart || links.smartUnsaved || links.smartPath.isEmpty())
        return false;
    koScopedMultiCommand step(koUndoString("koReferenceLoading", tr("Reimport Smart Reference")));
    return readSmartFile(id, links);
}

bool koReferenceLoading::readSmartFile(quint64 id, koReferenceContent links)
{
    QString error;
    koSceneNodeDesc content;
    koSceneLoader loader(m_engine.settings().loadMode, [this](const QString& message) { emit m_engine.warning(message); });
    koFileStateCache& cache = m_engine.fileCache();
    cache.refresh(links.smartPath);
    links.smartStamp = cache.lookup(links.smartPath).modified;
    if (!loader.readSmartFile(links.smartPath, content, &error)) {
        // What is loaded stays: an unreadable file never takes the user's content away.
        emit m_engine.warning(tr("Reference \"%1\" was not loaded: %2").arg(nameOf(id), error));
        links.smartUnreadable = QFileInfo(links.smartPath).isFile();
        m_engine.store()->setFileState(m_engine.shareKeyOf(id), links);
        return false;
    }
    replaceContent(id, content.children);
    links.loaded = true;
    links.smartUnsaved = false;
    links.smartUnreadable = false;
    m_engine.updateLinks(id, links, false);
    m_engine.store()->markSaved(m_engine.shareKeyOf(id));
    return true;
}

bool koReferenceLoading::importSource(quint64 id)
{
    koReferenceContent links = m_engine.linksOf(id);
    if (!links.hasSource || links.sourcePath.isEmpty())
        return false;
    koScopedMultiCommand step(koUndoString("koReferenceLoading", tr("Import Source")));
    QString error;
    koSceneNodeDesc content;
    koFileStateCache& cache = m_engine.fileCache();
    cache.refresh(links.sourcePath);
    if (!koSceneLoader::importSource(links.sourcePath, content, &error)) {
        // The content stays; the source shows as missing until the file changes.
        emit m_engine.warning(tr("The source of reference \"%1\" was not imported: %2").arg(nameOf(id), error));
        links.sourceUnreadable = QFileInfo(links.sourcePath).isFile();
        links.sourceStamp = cache.lookup(links.sourcePath).modified;
        m_engine.store()->setFileState(m_engine.shareKeyOf(id), links);
        m_engine.announceShared(m_engine.shareKeyOf(id));
        return false;
    }
    replaceContent(id, content.children);
    links.loaded = true;
    links.sourceUnreadable = false;
    links.sourceImportDate = qMax(QDateTime::currentDateTimeUtc(), cache.lookup(links.sourcePath).modified);
    m_engine.updateLinks(id, links, false);
    // Content converted from the source differs from the smart file until it is saved.
    if (links.hasSmart)
        m_engine.store()->markChanged(m_engine.shareKeyOf(id));
    return true;
}

bool koReferenceLoading::isMemoryOnly(const koReferenceContent& links) const
{
    if (links.hasSmart)
        return links.smartUnsaved || links.smartPath.isEmpty();
    return !links.hasSource || links.sourcePath.isEmpty();
}

void koReferenceLoading::unload(quint64 id)
{
    koReferenceContent links = m_engine.linksOf(id);
    if (id == m_engine.store()->rootId() || !m_engine.store()->contentOfNode(id) || !links.loaded)
        return;
    koScopedMultiCommand step(koUndoString("koReferenceLoading", tr("Unload Reference")));
    const quint64 shareKey = m_engine.shareKeyOf(id);
    if (isMemoryOnly(links))
        m_parked.insert(shareKey, m_engine.builder().describeContent(id).children);
    else
        m_parked.remove(shareKey);
    clearContent(id);
    links.loaded = false;
    m_engine.updateLinks(id, links, false);
    m_engine.store()->markSaved(shareKey);
}

void koReferenceLoading::park(quint64 shareKey, const QVector<koSceneNodeDesc>& content)
{
    m_parked.insert(shareKey, content);
}

const QVector<koSceneNodeDesc>* koReferenceLoading::parkedContent(quint64 shareKey) const
{
    const auto it = m_parked.constFind(shareKey);
    return it == m_parked.constEnd() ? nullptr : &it.value();
}

bool koReferenceLoading::restoreParked(quint64 id)
{
    const QVector<koSceneNodeDesc>* parked = parkedContent(m_engine.shareKeyOf(id));
    if (!parked)
        return false;
    // References inside were kept as their links; they load as the load mode says.
    koSceneNodeDesc content;
    content.children = *parked;
    koSceneLoader loader(m_engine.settings().loadMode, [this](const QString& message) { emit m_engine.warning(message); });
    loader.resolveReferences(content, m_engine.projectPath());
    replaceContent(id, content.children);
    koReferenceContent links = m_engine.linksOf(id);
    links.loaded = true;
    m_engine.updateLinks(id, links, false);
    return true;
}

void koReferenceLoading::clearContent(quint64 id)
{
    koSceneStore* store = m_engine.store();
    const quint64 shareKey = m_engine.shareKeyOf(id);
    // Every instance is looked up again: none may lie inside another, but a broken
    // file must not make this read a node it has just removed.
    for (quint64 instance : store->instances(shareKey)) {
        const koNodeRecord* node = store->node(instance);
        const QVector<quint64> children = node ? node->children : QVector<quint64>();
        for (quint64 child : children)
            store->removeSubtree(child, koSceneStore::Mark::None);
    }
}

void koReferenceLoading::replaceContent(quint64 id, const QVector<koSceneNodeDesc>& children)
{
    koSceneStore* store = m_engine.store();
    if (!store->node(id))
        return;
    clearContent(id);
    koSceneBuilder::Built out;
    QVector<int> roots;
    for (const koSceneNodeDesc& child : children)
        roots.append(m_engine.builder().materialize(child, out));
    for (auto it = out.contents.cbegin(); it != out.contents.cend(); ++it)
        store->setContent(it.key(), it.value(), 0);
    bool first = true;
    for (quint64 instance : store->instances(m_engine.shareKeyOf(id))) {
        for (int root : roots) {
            QVector<koNodeRecord> nodes = out.nodes.mid(root, out.sizes.at(root));
            if (!first)
                nodes = m_engine.builder().cloneRecords(nodes);
            store->insertSubtree(instance, store->node(instance)->children.size(), nodes, koSceneStore::Mark::None);
        }
        first = false;
    }
}
