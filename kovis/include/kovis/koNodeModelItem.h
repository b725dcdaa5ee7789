#pragma once

#include "koModelItem.h"
#include "kodNode.h"

// A row bound to a scene node: column 0 shows the node's name and icon, every column
// carries the node in Qt::UserRole, and the children are the node's children.
class KOVIS_EXPORT koNodeModelItem : public koModelItem
{
public:
    explicit koNodeModelItem(const kodNode& node, koModelItem* parent = nullptr);

    kodNode getNode() const { return kodNode(m_nodeId); }
    // The node, held as a kodNode.
    QVariant getId() const override;
    quint64 getIdObjectId() const override { return m_nodeId; }
    QVariant data(int column, int role) const override;
    // Rebuilds the children from createChildList(). Between koItemModel::beginEdit()
    // and endEdit() the rows of nodes that are still children are kept as they are.
    void reload() override;
    bool getDragEnabled() const override;
    bool getDropEnabled() const override;
    bool setEditData(int column, int role, const QVariant& value) override;

    // One item per child node through loadChild(); null items are left out.
    virtual QList<koModelItem*> createChildList();
    virtual koModelItem* loadChild(const kodNode& node);
    virtual bool canSetData(int column, int role, const QVariant& value) const;
    // Editing column 0 renames the node, as one undo step.
    virtual bool textChanged(int column, const QString& text);
    virtual bool checkStateChanged(int column, Qt::CheckState state);
    // Whether the nodes may be moved below this item's node.
    virtual bool canDropTo(const QList<kodNode>& nodes) const;
    // Moves the nodes below this item's node, as one undo step.
    virtual bool droppedFrom(const QList<kodNode>& nodes, Qt::DropAction action);

private:
    // Puts the current items of nodes that are still children in place of the new
    // ones; returns the items kept.
    QSet<koModelItem*> keepExistingChildren(QList<koModelItem*>& fresh) const;

    // Only the id: a handle per row would cost an object for each of many rows.
    quint64 m_nodeId;
};
