#pragma once

#include "koGlobal.h"

#include <QItemSelectionModel>

class koItemModel;

// A selection model over a koItemModel or over proxies in front of one. It reaches
// the koItemModel through the chain of proxies and maps indexes along it.
class KOVIS_EXPORT koAbstractSelectionModel : public QItemSelectionModel
{
    Q_OBJECT
public:
    explicit koAbstractSelectionModel(QAbstractItemModel* model, QObject* parent = nullptr);

    // Null when no koItemModel stands at the end of the chain.
    koItemModel* getItemModel() const;
    QModelIndex mapToItemModel(const QModelIndex& index) const;
    QModelIndex mapFromItemModel(const QModelIndex& index) const;

    // Column 0 of every selected row, once each, in the order of the selection.
    QModelIndexList getSelectedRows() const;
    QModelIndex getFirstSelectedIndex() const;

protected:
    // Selects exactly these rows as whole rows and makes the first one current. A
    // previous selection is cleared first, which observers see as its own change.
    void replaceSelection(const QModelIndexList& rows);
};
