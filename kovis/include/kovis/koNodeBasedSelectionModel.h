#pragma once

#include "koAbstractSelectionModel.h"
#include "kodNode.h"

#include <QList>

// A selection model that speaks in scene nodes: the node of a row is its
// Qt::UserRole data.
class KOVIS_EXPORT koNodeBasedSelectionModel : public koAbstractSelectionModel
{
    Q_OBJECT
public:
    explicit koNodeBasedSelectionModel(QAbstractItemModel* model, QObject* parent = nullptr);

    // The nodes of the selected rows, in the order of the selection.
    QList<kodNode> getAllSelectedNodes() const;
    // The selected nodes that have no selected node above them in the scene.
    QList<kodNode> getSelectedRootNodes() const;
    // The current node if its row is selected, else the first selected node.
    kodNode getSelectedNode() const;
    // Replaces the selection with the rows of these nodes; nodes without a visible row
    // are left out.
    void selectNodes(const QList<kodNode>& nodes);
};
