#include <kovis/koItemModel.h>
#include <kovis/koNodeBasedSelectionModel.h>

#include <QSet>

namespace {

kodNode nodeAt(const QModelIndex& index)
{
    return index.data(Qt::UserRole).value<kodNode>();
}

} // namespace

koNodeBasedSelectionModel::koNodeBasedSelectionModel(QAbstractItemModel* model, QObject* parent)
    : koAbstractSelectionModel(model, parent)
{
}

QList<kodNode> koNodeBasedSelectionModel::getAllSelectedNodes() const
{
    QList<kodNode> nodes;
    const QModelIndexList rows = getSelectedRows();
    nodes.reserve(rows.size());
    for (const QModelIndex& row : rows) {
        const kodNode node = nodeAt(row);
        if (!node.isNull())
            nodes.append(node);
    }
    return nodes;
}

QList<kodNode> koNodeBasedSelectionModel::getSelectedRootNodes() const
{
    const QList<kodNode> selected = getAllSelectedNodes();
    QSet<quint64> ids;
    for (const kodNode& node : selected)
        ids.insert(node.getObjectId());
    QList<kodNode> roots;
    for (const kodNode& node : selected) {
        bool below = false;
        for (kodNode parent = node.getParent(); !parent.isNull() && !below; parent = parent.getParent())
            below = ids.contains(parent.getObjectId());
        if (!below)
            roots.append(node);
    }
    return roots;
}

kodNode koNodeBasedSelectionModel::getSelectedNode() const
{
    const QModelIndex current = currentIndex();
    if (current.isValid() && isSelected(current))
        return nodeAt(current);
    return nodeAt(getFirstSelectedIndex());
}

void koNodeBasedSelectionModel::selectNodes(const QList<kodNode>& nodes)
{
    const koItemModel* items = getItemModel();
    QModelIndexList rows;
    rows.reserve(nodes.size());
    for (const kodNode& node : nodes) {
        const QModelIndex row = items ? mapFromItemModel(items->indexFromId(QVariant::fromValue(node))) : QModelIndex();
        if (row.isValid())
            rows.append(row);
    }
    replaceSelection(rows);
}
