#include "koSceneStoreChecker.h"

#include <QHash>

namespace {

QString id(quint64 value)
{
    return QString::number(value);
}

} // namespace

koSceneStoreChecker::koSceneStoreChecker(const koSceneStore& store)
    : m_store(store)
{
}

QStringList koSceneStoreChecker::brokenInvariants()
{
    m_broken.clear();
    checkRoot();
    checkTree();
    checkReachable();
    checkClones();
    checkInstanceGroups();
    return m_broken;
}

void koSceneStoreChecker::fail(const QString& message)
{
    // One broken node tends to break many more checks; the first few say enough.
    if (m_broken.size() < 20)
        m_broken.append(message);
}

void koSceneStoreChecker::checkRoot()
{
    const koNodeRecord* root = m_store.node(m_store.rootId());
    if (!root && !m_store.m_nodes.empty())
        fail(QStringLiteral("root %1 does not exist").arg(id(m_store.rootId())));
    else if (root && root->parent != 0)
        fail(QStringLiteral("root has parent %1").arg(id(root->parent)));
}

void koSceneStoreChecker::checkTree()
{
    for (const auto& entry : m_store.m_nodes) {
        const koNodeRecord& node = *entry.second;
        if (entry.first != node.id)
            fail(QStringLiteral("node %1 is kept under id %2").arg(id(node.id), id(entry.first)));
        checkNode(node);
        checkNesting(node);
    }
}

void koSceneStoreChecker::checkNode(const koNodeRecord& node)
{
    if (node.id != m_store.rootId()) {
        const koNodeRecord* parent = m_store.node(node.parent);
        if (!parent)
            fail(QStringLiteral("node %1 has no parent %2").arg(id(node.id), id(node.parent)));
        else if (parent->children.count(node.id) != 1)
            fail(QStringLiteral("parent %1 lists node %2 %3 times")
                     .arg(id(parent->id), id(node.id))
                     .arg(parent->children.count(node.id)));
    }
    for (quint64 child : node.children) {
        const koNodeRecord* record = m_store.node(child);
        if (!record)
            fail(QStringLiteral("node %1 lists missing child %2").arg(id(node.id), id(child)));
        else if (record->parent != node.id)
            fail(QStringLiteral("node %1 lists child %2 whose parent is %3").arg(id(node.id), id(child), id(record->parent)));
    }
    if (node.isReference() && !m_store.content(node.shareKey))
        fail(QStringLiteral("reference %1 has no links").arg(id(node.id)));
}

void koSceneStoreChecker::checkReachable()
{
    QSet<quint64> seen;
    QVector<quint64> stack;
    if (m_store.node(m_store.rootId()))
        stack.append(m_store.rootId());
    while (!stack.isEmpty()) {
        const quint64 current = stack.takeLast();
        if (seen.contains(current)) {
            fail(QStringLiteral("node %1 is reached twice").arg(id(current)));
            continue;
        }
        seen.insert(current);
        if (const koNodeRecord* node = m_store.node(current))
            stack += node->children;
    }
    if (seen.size() != int(m_store.m_nodes.size()))
        fail(QStringLiteral("%1 of %2 nodes are not below the root").arg(int(m_store.m_nodes.size()) - seen.size()).arg(m_store.m_nodes.size()));
}

void koSceneStoreChecker::checkClones()
{
    int clones = 0;
    for (const auto& entry : m_store.m_nodes) {
        const koNodeRecord& node = *entry.second;
        if (node.shareKey == node.id)
            continue;
        ++clones;
        if (!m_store.m_clones.contains(node.shareKey, node.id))
            fail(QStringLiteral("clone %1 of %2 is not indexed").arg(id(node.id), id(node.shareKey)));
    }
    if (clones != m_store.m_clones.size())
        fail(QStringLiteral("the clone index holds %1 entries for %2 clones").arg(m_store.m_clones.size()).arg(clones));
}

void koSceneStoreChecker::checkInstanceGroups()
{
    QHash<quint64, koNodeType> types;
    for (const auto& entry : m_store.m_nodes) {
        const koNodeRecord& node = *entry.second;
        const auto known = types.constFind(node.shareKey);
        if (known == types.constEnd())
            types.insert(node.shareKey, node.type);
        else if (known.value() != node.type)
            fail(QStringLiteral("instances of %1 differ in type").arg(id(node.shareKey)));
    }
}

void koSceneStoreChecker::checkNesting(const koNodeRecord& node)
{
    // A parent cycle is reported by checkReachable; the walk only must not loop on it.
    size_t steps = m_store.m_nodes.size();
    for (const koNodeRecord* above = m_store.node(node.parent); above && steps--; above = m_store.node(above->parent)) {
        if (above->shareKey == node.shareKey) {
            fail(QStringLiteral("node %1 lies inside %2, which shares its content").arg(id(node.id), id(above->id)));
            return;
        }
    }
}
