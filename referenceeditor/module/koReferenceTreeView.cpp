#include "koReferenceTreeView.h"

#include <QVector>

void koReferenceTreeView::expandAllBranches()
{
    QAbstractItemModel* rows = model();
    if (!rows)
        return;
    // With a layout pending, expand() only remembers the row.
    scheduleDelayedItemsLayout();
    QVector<QModelIndex> pending{rootIndex()};
    while (!pending.isEmpty()) {
        const QModelIndex parent = pending.takeLast();
        for (int row = 0, count = rows->rowCount(parent); row < count; ++row) {
            const QModelIndex child = rows->index(row, 0, parent);
            if (rows->hasChildren(child)) {
                expand(child);
                pending.append(child);
            }
        }
    }
}
