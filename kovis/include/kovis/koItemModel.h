#pragma once

#include "koGlobal.h"

#include <QAbstractItemModel>
#include <QSet>
#include <QStringList>

#include <memory>

class koItemIdIndex;
class koModelItem;

// An item model over a tree of koModelItem. The root item stands for the invisible
// top; its children are the top-level rows. Items are found by id in constant time.
// Nodes can be dragged onto other node rows to move them there.
class KOVIS_EXPORT koItemModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    explicit koItemModel(QObject* parent = nullptr);
    ~koItemModel() override;

    void setHeader(const QStringList& header);
    QStringList getHeader() const;
    // Takes ownership of the root, builds its items and shows them.
    void setRootItem(koModelItem* root);
    koModelItem* getRootItem() const;
    void clear();
    // Rebuilds every item from the root in one layout change; rows that views hold
    // (expanded, selected, current) are found again by id.
    void reload();

    koModelItem* findItemById(const QVariant& id) const;
    QModelIndex indexFromId(const QVariant& id, int column = 0) const;
    QModelIndex indexFromItem(const koModelItem* item, int column = 0) const;

    // Bracket reloads of single items: changes in between are reported row by row
    // and as changed data, without a model reset. Pairs nest.
    void beginEdit();
    void endEdit();

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    // Data from outside the model (no node list); a model that accepts such data also
    // overrides dropMimeData() for it.
    virtual bool canDropMimeDataExternal(const QMimeData* data, Qt::DropAction action, int row, int column,
                                         const QModelIndex& parent) const;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;

protected:
    bool tryGetItem(const QModelIndex& index, koModelItem*& item) const;

private:
    friend class koModelItem;

    static koItemModel* editingModelOf(const koModelItem* item);
    static void reportReloaded(koModelItem* item);
    bool holds(const koModelItem* item) const;
    void setObserving(bool observing);
    void resetTree(koModelItem* root);

    void replaceChildren(koModelItem* item, QList<koModelItem*> children);
    template<class Remove>
    void removeChildRows(koModelItem* item, const QSet<koModelItem*>& wanted, Remove remove);
    void insertChildRows(koModelItem* item, const QList<koModelItem*>& children);
    void forgetSubtree(koModelItem* top);
    void reportReloadedRows();

    QStringList m_header;
    std::unique_ptr<koModelItem> m_root;
    std::unique_ptr<koItemIdIndex> m_ids;
    QSet<koModelItem*> m_reloaded;
    int m_editDepth = 0;
};
