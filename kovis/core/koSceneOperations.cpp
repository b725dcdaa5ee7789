#include "koSceneOperations.h"

#include "koProjectFile.h"
#include "koReferenceEngine.h"
#include "koSceneBuilder.h"

#include <kovis/koScopedUndo.h>

koSceneOperations::koSceneOperations(koReferenceEngine& engine)
    : m_engine(engine)
{
}

quint64 koSceneOperations::createNode(quint64 parent, koNodeType type, const QString& name)
{
    koSceneStore* store = m_engine.store();
    const koNodeRecord* parentNode = store->node(parent);
    if (!parentNode)
        parentNode = store->node(store->rootId());
    if (parentNode && parentNode->type == koNodeType::Geometry)
        parentNode = store->node(parentNode->parent);
    if (!parentNode)
        return 0;
    koNodeRecord node;
    node.id = store->allocateId();
    node.shareKey = node.id;
    node.type = type;
    node.name = name;
    koScopedUndo step;
    if (type == koNodeType::Reference)
        store->setContent(node.shareKey, koReferenceContent(), 0);
    store->insertSubtree(parentNode->id, parentNode->children.size(), {node}, koSceneStore::Mark::Owner);
    return node.id;
}

quint64 koSceneOperations::createReference(quint64 parent)
{
    const quint64 id = createNode(parent, koNodeType::Reference, tr("Reference"));
    if (id)
        emit m_engine.referenceCreated(id);
    return id;
}

quint64 koSceneOperations::replaceNode(quint64 id, koNodeRecord replacement)
{
    koSceneStore* store = m_engine.store();
    const koNodeRecord* node = store->node(id);
    const koNodeRecord* parent = node ? store->node(node->parent) : nullptr;
    if (!parent)
        return 0;
    const quint64 parentId = parent->id;
    const int index = parent->children.indexOf(id);
    QVector<koNodeRecord> nodes = store->subtree(id);
    if (replacement.id == 0)
        replacement.id = store->allocateId();
    replacement.shareKey = replacement.id;
    replacement.name = node->name;
    replacement.visible = node->visible;
    replacement.userLocked = node->userLocked;
    replacement.transform = node->transform;
    replacement.children = node->children;
    nodes.first() = replacement;
    for (koNodeRecord& child : nodes) {
        if (replacement.children.contains(child.id))
            child.parent = replacement.id;
    }
    koScopedUndo step;
    store->removeSubtree(id, koSceneStore::Mark::Owner);
    store->insertSubtree(parentId, index, nodes, koSceneStore::Mark::Owner);
    return replacement.id;
}

quint64 koSceneOperations::removeReference(quint64 id)
{
    const koNodeRecord* node = m_engine.store()->node(id);
    if (!node || !node->isReference() || id == m_engine.store()->rootId())
        return 0;
    koNodeRecord group;
    group.type = koNodeType::Group;
    return replaceNode(id, group);
}

quint64 koSceneOperations::convertToSmart(quint64 id)
{
    koSceneStore* store = m_engine.store();
    const koNodeRecord* node = store->node(id);
    if (!node)
        return 0;
    if (node->isReference()) {
        koReferenceContent links = m_engine.linksOf(id);
        if (!links.hasSmart) {
            links.hasSmart = true;
            links.smartUnsaved = true;
            links.smartPath.clear();
            m_engine.updateLinks(id, links, true);
        }
        return id;
    }
    if (node->type != koNodeType::Group || id == store->rootId())
        return 0;
    koNodeRecord reference;
    reference.type = koNodeType::Reference;
    reference.id = store->allocateId();
    koReferenceContent links;
    links.hasSmart = true;
    links.smartUnsaved = true;
    koScopedUndo step;
    store->setContent(reference.id, links, 0);
    return replaceNode(id, reference);
}

QVector<quint64> koSceneOperations::cloneNodes(const QVector<quint64>& ids)
{
    koSceneStore* store = m_engine.store();
    QVector<quint64> clones;
    koScopedUndo step;
    for (quint64 id : ids) {
        const koNodeRecord* node = store->node(id);
        const koNodeRecord* parent = node ? store->node(node->parent) : nullptr;
        if (!parent)
            continue;
        const QVector<koNodeRecord> copies = m_engine.builder().cloneRecords(store->subtree(id));
        if (store->insertSubtree(parent->id, parent->children.indexOf(id) + 1, copies, koSceneStore::Mark::Owner))
            clones.append(copies.first().id);
    }
    return clones;
}

bool koSceneOperations::moveNode(quint64 id, quint64 newParent)
{
    koSceneStore* store = m_engine.store();
    const koNodeRecord* node = store->node(id);
    const koNodeRecord* target = store->node(newParent);
    if (!node || !target || id == store->rootId() || id == newParent || store->isAncestor(id, newParent)
        || target->type == koNodeType::Geometry) {
        return false;
    }
    QVector<koNodeRecord> nodes = store->subtree(id);
    if (store->nestsSharedContent(newParent, nodes)) {
        emit m_engine.warning(tr("\"%1\" cannot be moved into \"%2\": it would hold a copy of itself.")
                                  .arg(node->name.left(200), target->name.left(200)));
        return false;
    }
    nodes.first().parent = newParent;
    koScopedUndo step;
    store->removeSubtree(id, koSceneStore::Mark::Owner);
    return store->insertSubtree(newParent, store->node(newParent)->children.size(), nodes, koSceneStore::Mark::Owner);
}

bool koSceneOperations::rename(quint64 id, const QString& name)
{
    if (name.size() > koProjectFile::maxTextLength) {
        emit m_engine.warning(tr("A name can hold at most %1 characters.").arg(koProjectFile::maxTextLength));
        return false;
    }
    m_engine.store()->setName(id, name);
    return true;
}
