#include "koSceneTreeModel.h"

#include "koSceneStore.h"

#include <kovis/koScopedMultiCommand.h>
#include <kovis/kodReferenceNode.h>

#include <QApplication>
#include <QDir>
#include <QPalette>

koSceneTreeModel::koSceneTreeModel(koSceneStore* store, QObject* parent)
    : QAbstractItemModel(parent)
    , m_store(store)
{
    connectStore();
}

void koSceneTreeModel::connectStore()
{
    connect(m_store, &koSceneStore::sceneAboutToBeReset, this, &koSceneTreeModel::beginResetModel);
    connect(m_store, &koSceneStore::sceneReset, this, &koSceneTreeModel::endResetModel);
    connect(m_store, &koSceneStore::subtreeAboutToBeInserted, this,
            [this](quint64 parent, int row) { beginInsertRows(indexOfNode(parent), row, row); });
    connect(m_store, &koSceneStore::subtreeInserted, this, &koSceneTreeModel::endInsertRows);
    connect(m_store, &koSceneStore::subtreeAboutToBeRemoved, this, [this](quint64 parent, quint64 id) {
        const int row = m_store->node(parent) ? m_store->node(parent)->children.indexOf(id) : -1;
        beginRemoveRows(indexOfNode(parent), row, row);
    });
    connect(m_store, &koSceneStore::subtreeRemoved, this, &koSceneTreeModel::endRemoveRows);
    connect(m_store, &koSceneStore::nodeChanged, this, [this](quint64 id) {
        const QModelIndex changed = indexOfNode(id);
        emit dataChanged(changed, changed);
    });
    connect(m_store, &koSceneStore::contentChanged, this, [this](quint64 shareKey) {
        for (quint64 id : m_store->instances(shareKey)) {
            const QModelIndex changed = indexOfNode(id);
            emit dataChanged(changed, changed);
        }
    });
}

const koNodeRecord* koSceneTreeModel::record(const QModelIndex& index) const
{
    return index.isValid() ? m_store->node(nodeId(index)) : nullptr;
}

int koSceneTreeModel::rowOf(const koNodeRecord& node) const
{
    const koNodeRecord* parent = m_store->node(node.parent);
    return parent ? parent->children.indexOf(node.id) : 0;
}

QModelIndex koSceneTreeModel::indexOfNode(quint64 id) const
{
    const koNodeRecord* node = m_store->node(id);
    return node ? createIndex(rowOf(*node), 0, quintptr(id)) : QModelIndex();
}

QModelIndex koSceneTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column != 0)
        return QModelIndex();
    if (!parent.isValid())
        return row == 0 && m_store->node(m_store->rootId()) ? createIndex(0, 0, quintptr(m_store->rootId())) : QModelIndex();
    const koNodeRecord* node = record(parent);
    if (!node || row >= node->children.size())
        return QModelIndex();
    return createIndex(row, column, quintptr(node->children.at(row)));
}

QModelIndex koSceneTreeModel::parent(const QModelIndex& child) const
{
    const koNodeRecord* node = record(child);
    if (!node || node->id == m_store->rootId())
        return QModelIndex();
    return indexOfNode(node->parent);
}

int koSceneTreeModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return m_store->node(m_store->rootId()) ? 1 : 0;
    const koNodeRecord* node = record(parent);
    return node && parent.column() == 0 ? node->children.size() : 0;
}

int koSceneTreeModel::columnCount(const QModelIndex&) const
{
    return 1;
}

QVariant koSceneTreeModel::data(const QModelIndex& index, int role) const
{
    const koNodeRecord* node = record(index);
    if (!node)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return node->name;
    case Qt::DecorationRole:
        return kodNode(node->id).getIcon();
    case Qt::ToolTipRole:
        return toolTip(*node);
    case Qt::ForegroundRole:
        return kodNode(node->id).isVisible() ? QVariant() : QApplication::palette().brush(QPalette::Disabled, QPalette::Text);
    case Qt::UserRole:
        return QVariant::fromValue(kodNode(node->id));
    default:
        return QVariant();
    }
}

QString koSceneTreeModel::toolTip(const koNodeRecord& node) const
{
    const koReferenceContent* content = m_store->content(node.shareKey);
    if (!node.isReference() || !content)
        return node.name;
    QStringList lines{node.name};
    if (content->hasSmart)
        lines.append(tr("Smart: %1").arg(QDir::toNativeSeparators(content->smartPath)));
    if (content->hasSource)
        lines.append(tr("Source: %1").arg(QDir::toNativeSeparators(content->sourcePath)));
    if (!content->loaded)
        lines.append(tr("Unloaded"));
    return lines.join(QLatin1Char('\n'));
}

bool koSceneTreeModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const koNodeRecord* node = record(index);
    const QString name = value.toString().trimmed();
    if (!node || role != Qt::EditRole || name.isEmpty())
        return false;
    koScopedMultiCommand step(koUndoString("Scene", tr("Rename")), true);
    kodNode(node->id).setName(name);
    return true;
}

Qt::ItemFlags koSceneTreeModel::flags(const QModelIndex& index) const
{
    const koNodeRecord* node = record(index);
    if (!node)
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (!kodNode(node->id).isLocked())
        flags |= Qt::ItemIsEditable;
    return flags;
}

QVariant koSceneTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && section == 0 && role == Qt::DisplayRole)
        return tr("Scene");
    return QVariant();
}
