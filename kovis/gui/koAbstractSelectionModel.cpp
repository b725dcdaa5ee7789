#include <kovis/koAbstractSelectionModel.h>
#include <kovis/koItemModel.h>

#include <QAbstractProxyModel>
#include <QSet>

namespace {

QVector<const QAbstractProxyModel*> proxyChain(const QAbstractItemModel* model)
{
    QVector<const QAbstractProxyModel*> chain;
    while (const auto* proxy = qobject_cast<const QAbstractProxyModel*>(model)) {
        chain.append(proxy);
        model = proxy->sourceModel();
    }
    return chain;
}

const QAbstractItemModel* endOfChain(const QAbstractItemModel* model)
{
    const QVector<const QAbstractProxyModel*> chain = proxyChain(model);
    return chain.isEmpty() ? model : chain.last()->sourceModel();
}

} // namespace

koAbstractSelectionModel::koAbstractSelectionModel(QAbstractItemModel* model, QObject* parent)
    : QItemSelectionModel(model, parent)
{
}

koItemModel* koAbstractSelectionModel::getItemModel() const
{
    return qobject_cast<koItemModel*>(const_cast<QAbstractItemModel*>(endOfChain(model())));
}

QModelIndex koAbstractSelectionModel::mapToItemModel(const QModelIndex& index) const
{
    QModelIndex mapped = index;
    for (const QAbstractProxyModel* proxy : proxyChain(model()))
        mapped = proxy->mapToSource(mapped);
    return mapped;
}

QModelIndex koAbstractSelectionModel::mapFromItemModel(const QModelIndex& index) const
{
    const QVector<const QAbstractProxyModel*> chain = proxyChain(model());
    QModelIndex mapped = index;
    for (auto proxy = chain.crbegin(); proxy != chain.crend(); ++proxy)
        mapped = (*proxy)->mapFromSource(mapped);
    return mapped;
}

QModelIndexList koAbstractSelectionModel::getSelectedRows() const
{
    QModelIndexList rows;
    QSet<QModelIndex> seen;
    const QItemSelection ranges = selection();
    for (const QItemSelectionRange& range : ranges) {
        const QModelIndex parent = range.parent();
        for (int row = range.top(); row <= range.bottom(); ++row) {
            const QModelIndex index = model()->index(row, 0, parent);
            if (!seen.contains(index)) {
                seen.insert(index);
                rows.append(index);
            }
        }
    }
    return rows;
}

QModelIndex koAbstractSelectionModel::getFirstSelectedIndex() const
{
    const QItemSelection ranges = selection();
    return ranges.isEmpty() ? QModelIndex() : model()->index(ranges.first().top(), 0, ranges.first().parent());
}

void koAbstractSelectionModel::replaceSelection(const QModelIndexList& rows)
{
    // Whole rows are built here and neighbouring rows share one range: Qt's own row
    // expansion and its comparison of the old and the new selection grow with the
    // square of the range count.
    QItemSelection ranges;
    for (const QModelIndex& index : rows) {
        const QModelIndex rowEnd = index.sibling(index.row(), model()->columnCount(index.parent()) - 1);
        if (!ranges.isEmpty()) {
            QItemSelectionRange& last = ranges.last();
            if (last.parent() == index.parent() && last.bottom() + 1 == index.row()) {
                last = QItemSelectionRange(last.topLeft(), rowEnd);
                continue;
            }
        }
        ranges.append(QItemSelectionRange(index.siblingAtColumn(0), rowEnd));
    }
    clearSelection();
    select(ranges, Select);
    if (!rows.isEmpty())
        setCurrentIndex(rows.first(), NoUpdate);
}
