#pragma once

#include <QAbstractItemModel>

class koSceneStore;
struct koNodeRecord;

// The host's scene as a tree model, read straight from the scene store: an index's
// internal id is its node's id, so no items are kept and every change is reported
// row by row as the store makes it.
class koSceneTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    explicit koSceneTreeModel(koSceneStore* store, QObject* parent = nullptr);

    QModelIndex indexOfNode(quint64 id) const;
    static quint64 nodeId(const QModelIndex& index) { return index.isValid() ? quint64(index.internalId()) : 0; }

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const koNodeRecord* record(const QModelIndex& index) const;
    int rowOf(const koNodeRecord& node) const;
    QString toolTip(const koNodeRecord& node) const;
    void connectStore();

    koSceneStore* m_store;
};
