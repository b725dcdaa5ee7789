#include <kovis/koItemModel.h>
#include <kovis/koModelItem.h>
#include <kovis/koNodeModelItem.h>

#include "koItemIdIndex.h"

#include <QDataStream>
#include <QMimeData>

namespace {

const QString nodeMimeType = QStringLiteral("application/x-kovis-node-ids");

// Models between beginEdit() and endEdit(); usually none, so item changes stay cheap.
QVector<koItemModel*>& editingModels()
{
    static QVector<koItemModel*> models;
    return models;
}

QByteArray encodeNodes(const QList<kodNode>& nodes)
{
    QByteArray encoded;
    QDataStream stream(&encoded, QIODevice::WriteOnly);
    for (const kodNode& node : nodes)
        stream << node.getObjectId();
    return encoded;
}

QList<kodNode> decodeNodes(const QMimeData* data)
{
    QList<kodNode> nodes;
    QDataStream stream(data->data(nodeMimeType));
    quint64 id = 0;
    while (!stream.atEnd()) {
        stream >> id;
        if (stream.status() != QDataStream::Ok)
            break;
        nodes.append(kodNode(id));
    }
    return nodes;
}

} // namespace

koItemModel::koItemModel(QObject* parent)
    : QAbstractItemModel(parent)
    , m_ids(new koItemIdIndex)
{
}

koItemModel::~koItemModel()
{
    setObserving(false);
}

void koItemModel::setHeader(const QStringList& header)
{
    if (header.size() == m_header.size()) {
        m_header = header;
        if (!header.isEmpty())
            emit headerDataChanged(Qt::Horizontal, 0, header.size() - 1);
        return;
    }
    beginResetModel();
    m_header = header;
    endResetModel();
}

QStringList koItemModel::getHeader() const
{
    return m_header;
}

void koItemModel::setRootItem(koModelItem* root)
{
    beginResetModel();
    resetTree(root);
    if (root)
        root->reload();
    endResetModel();
}

koModelItem* koItemModel::getRootItem() const
{
    return m_root.get();
}

void koItemModel::clear()
{
    setRootItem(nullptr);
}

void koItemModel::reload()
{
    // A layout change rather than a reset: views keep their expanded, selected and
    // current rows, found again by id in the rebuilt tree.
    emit layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    QVector<QPair<QVariant, int>> ids;
    ids.reserve(before.size());
    for (const QModelIndex& index : before) {
        koModelItem* item = nullptr;
        ids.append({tryGetItem(index, item) ? item->getId() : QVariant(), index.column()});
    }
    // Nothing is reported row by row while the whole tree is rebuilt.
    setObserving(false);
    m_reloaded.clear();
    m_ids->invalidate();
    if (m_root)
        m_root->reload();
    setObserving(m_editDepth > 0);
    QModelIndexList after;
    after.reserve(ids.size());
    for (const auto& [id, column] : qAsConst(ids))
        after.append(id.isValid() ? indexFromId(id, column) : QModelIndex());
    changePersistentIndexList(before, after);
    emit layoutChanged();
}

void koItemModel::resetTree(koModelItem* root)
{
    m_reloaded.clear();
    m_ids->invalidate();
    m_root.reset(root);
    if (root)
        root->m_parent = nullptr;
}

koModelItem* koItemModel::findItemById(const QVariant& id) const
{
    return m_ids->find(id, m_root.get());
}

QModelIndex koItemModel::indexFromId(const QVariant& id, int column) const
{
    return indexFromItem(findItemById(id), column);
}

QModelIndex koItemModel::indexFromItem(const koModelItem* item, int column) const
{
    if (!item || item == m_root.get() || column < 0 || column >= columnCount())
        return QModelIndex();
    return createIndex(item->row(), column, const_cast<koModelItem*>(item));
}

void koItemModel::beginEdit()
{
    if (m_editDepth++ == 0)
        setObserving(true);
}

void koItemModel::endEdit()
{
    if (m_editDepth == 0 || --m_editDepth > 0)
        return;
    setObserving(false);
    reportReloadedRows();
}

void koItemModel::setObserving(bool observing)
{
    QVector<koItemModel*>& models = editingModels();
    if (!observing)
        models.removeOne(this);
    else if (!models.contains(this))
        models.append(this);
}

koItemModel* koItemModel::editingModelOf(const koModelItem* item)
{
    for (koItemModel* model : qAsConst(editingModels())) {
        if (model->holds(item))
            return model;
    }
    return nullptr;
}

void koItemModel::reportReloaded(koModelItem* item)
{
    if (koItemModel* model = editingModelOf(item))
        model->m_reloaded.insert(item);
}

bool koItemModel::holds(const koModelItem* item) const
{
    for (const koModelItem* current = item; current;) {
        if (current == m_root.get())
            return true;
        const koModelItem* parent = current->parent();
        if (!parent || parent->child(current->row()) != current)
            return false;
        current = parent;
    }
    return false;
}

void koItemModel::reportReloadedRows()
{
    const QSet<koModelItem*> reloaded = std::exchange(m_reloaded, {});
    const int lastColumn = columnCount() - 1;
    for (koModelItem* item : reloaded) {
        if (item != m_root.get() && holds(item))
            emit dataChanged(indexFromItem(item, 0), indexFromItem(item, lastColumn));
    }
}

void koItemModel::replaceChildren(koModelItem* item, QList<koModelItem*> children)
{
    m_reloaded.insert(item);
    const QSet<koModelItem*> wanted(children.cbegin(), children.cend());
    removeChildRows(item, wanted, [&wanted](koModelItem* child) { return !wanted.contains(child); });

    // The rows that stay must keep their order; otherwise they are taken out and put
    // back in their new places.
    int kept = 0;
    for (koModelItem* child : qAsConst(children)) {
        if (kept < item->childCount() && item->child(kept) == child)
            ++kept;
    }
    if (kept != item->childCount())
        removeChildRows(item, wanted, [](koModelItem*) { return true; });

    insertChildRows(item, children);
}

template<class Remove>
void koItemModel::removeChildRows(koModelItem* item, const QSet<koModelItem*>& wanted, Remove remove)
{
    QVector<koModelItem*>& children = item->m_children;
    const QModelIndex parent = indexFromItem(item);
    for (int last = children.size() - 1; last >= 0;) {
        if (!remove(children.at(last))) {
            --last;
            continue;
        }
        int first = last;
        while (first > 0 && remove(children.at(first - 1)))
            --first;
        beginRemoveRows(parent, first, last);
        const QVector<koModelItem*> taken = children.mid(first, last - first + 1);
        for (koModelItem* child : taken)
            forgetSubtree(child);
        children.remove(first, taken.size());
        item->renumberChildren(first);
        endRemoveRows();
        for (koModelItem* child : taken) {
            if (!wanted.contains(child))
                delete child;
        }
        last = first - 1;
    }
}

void koItemModel::insertChildRows(koModelItem* item, const QList<koModelItem*>& children)
{
    QVector<koModelItem*>& current = item->m_children;
    const QModelIndex parent = indexFromItem(item);
    for (int row = 0; row < children.size();) {
        koModelItem* next = current.value(row);
        if (children.at(row) == next) {
            ++row;
            continue;
        }
        int end = row;
        while (end < children.size() && children.at(end) != next)
            ++end;
        beginInsertRows(parent, row, end - 1);
        for (int position = row; position < end; ++position) {
            koModelItem* child = children.at(position);
            child->m_parent = item;
            current.insert(position, child);
        }
        item->renumberChildren(row);
        for (int position = row; position < end; ++position)
            m_ids->addSubtree(current.at(position));
        endInsertRows();
        row = end;
    }
}

void koItemModel::forgetSubtree(koModelItem* top)
{
    m_ids->removeSubtree(top);
    if (m_reloaded.isEmpty())
        return;
    QVector<koModelItem*> pending{top};
    while (!pending.isEmpty()) {
        koModelItem* item = pending.takeLast();
        m_reloaded.remove(item);
        pending += item->m_children;
    }
}

bool koItemModel::tryGetItem(const QModelIndex& index, koModelItem*& item) const
{
    item = index.isValid() && index.model() == this ? static_cast<koModelItem*>(index.internalPointer()) : nullptr;
    return item != nullptr;
}

QVariant koItemModel::data(const QModelIndex& index, int role) const
{
    koModelItem* item = nullptr;
    return tryGetItem(index, item) ? item->data(index.column(), role) : QVariant();
}

bool koItemModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    koModelItem* item = nullptr;
    if (!tryGetItem(index, item) || !item->setEditData(index.column(), role, value))
        return false;
    emit dataChanged(indexFromItem(item, 0), indexFromItem(item, columnCount() - 1));
    return true;
}

QModelIndex koItemModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || column >= columnCount() || parent.column() > 0)
        return QModelIndex();
    koModelItem* parentItem = m_root.get();
    if (parent.isValid() && !tryGetItem(parent, parentItem))
        return QModelIndex();
    koModelItem* child = parentItem ? parentItem->child(row) : nullptr;
    return child ? createIndex(row, column, child) : QModelIndex();
}

QModelIndex koItemModel::parent(const QModelIndex& index) const
{
    koModelItem* item = nullptr;
    if (!tryGetItem(index, item))
        return QModelIndex();
    return indexFromItem(item->parent());
}

int koItemModel::rowCount(const QModelIndex& parent) const
{
    if (parent.column() > 0)
        return 0;
    koModelItem* item = m_root.get();
    if (parent.isValid() && !tryGetItem(parent, item))
        return 0;
    return item ? item->childCount() : 0;
}

int koItemModel::columnCount(const QModelIndex& parent) const
{
    Q_UNUSED(parent)
    return qMax(1, m_header.size());
}

QVariant koItemModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < m_header.size())
        return m_header.at(section);
    return QAbstractItemModel::headerData(section, orientation, role);
}

Qt::ItemFlags koItemModel::flags(const QModelIndex& index) const
{
    koModelItem* item = nullptr;
    if (tryGetItem(index, item))
        return item->flags(index.column());
    return m_root && m_root->getDropEnabled() ? Qt::ItemIsDropEnabled : Qt::NoItemFlags;
}

QStringList koItemModel::mimeTypes() const
{
    return {nodeMimeType};
}

QMimeData* koItemModel::mimeData(const QModelIndexList& indexes) const
{
    QList<kodNode> nodes;
    QSet<quint64> seen;
    for (const QModelIndex& index : indexes) {
        koModelItem* item = nullptr;
        const auto* nodeItem = tryGetItem(index, item) ? dynamic_cast<koNodeModelItem*>(item) : nullptr;
        const kodNode node = nodeItem ? nodeItem->getNode() : kodNode();
        if (!node.isNull() && !seen.contains(node.getObjectId())) {
            seen.insert(node.getObjectId());
            nodes.append(node);
        }
    }
    if (nodes.isEmpty())
        return nullptr;
    auto data = std::make_unique<QMimeData>();
    data->setData(nodeMimeType, encodeNodes(nodes));
    return data.release();
}

bool koItemModel::canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                  const QModelIndex& parent) const
{
    if (!data)
        return false;
    if (!data->hasFormat(nodeMimeType))
        return canDropMimeDataExternal(data, action, row, column, parent);
    koModelItem* item = m_root.get();
    if (parent.isValid() && !tryGetItem(parent, item))
        return false;
    const auto* target = dynamic_cast<koNodeModelItem*>(item);
    const QList<kodNode> nodes = decodeNodes(data);
    return target && action == Qt::MoveAction && !nodes.isEmpty() && target->canDropTo(nodes);
}

bool koItemModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                               const QModelIndex& parent)
{
    if (!data || !data->hasFormat(nodeMimeType) || !canDropMimeData(data, action, row, column, parent))
        return false;
    koModelItem* item = m_root.get();
    tryGetItem(parent, item);
    auto* target = static_cast<koNodeModelItem*>(item);
    const QVariant targetId = target->getId();
    const QList<kodNode> nodes = decodeNodes(data);
    QList<kodNode> formerParents;
    QSet<quint64> seen;
    for (const kodNode& node : nodes) {
        const kodNode former = node.getParent();
        if (!seen.contains(former.getObjectId())) {
            seen.insert(former.getObjectId());
            formerParents.append(former);
        }
    }
    if (!target->droppedFrom(nodes, action))
        return false;

    // The rows follow the scene at once; the places they left go first, so that each
    // moved node keeps exactly one row.
    beginEdit();
    for (const kodNode& former : qAsConst(formerParents)) {
        if (koModelItem* formerItem = findItemById(QVariant::fromValue(former)))
            formerItem->reload();
    }
    if (koModelItem* targetItem = targetId.isValid() ? findItemById(targetId) : m_root.get())
        targetItem->reload();
    endEdit();
    return true;
}

bool koItemModel::canDropMimeDataExternal(const QMimeData* data, Qt::DropAction action, int row, int column,
                                          const QModelIndex& parent) const
{
    Q_UNUSED(data)
    Q_UNUSED(action)
    Q_UNUSED(row)
    Q_UNUSED(column)
    Q_UNUSED(parent)
    return false;
}

Qt::DropActions koItemModel::supportedDropActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions koItemModel::supportedDragActions() const
{
    return Qt::MoveAction;
}
