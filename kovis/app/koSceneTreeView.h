#pragma once

#include <kovis/kodReferenceNode.h>

#include <QTreeView>

class koSceneTreeModel;

// The host's scene tree. Its selection is the scene selection of the tree service; its
// context menu asks modules to run their reference commands on the selected nodes.
class koSceneTreeView : public QTreeView
{
    Q_OBJECT
public:
    explicit koSceneTreeView(koSceneTreeModel* model, QWidget* parent = nullptr);

    QList<kodNode> selectedNodes() const;
    void selectNodes(const QList<kodNode>& nodes);
    void revealNode(quint64 id);

signals:
    // The user changed the selection in the view.
    void nodesSelected(const QList<kodNode>& nodes);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    QList<kodReferenceNode> selectedReferences() const;
    void addReferenceRequests(QMenu& menu);

    koSceneTreeModel* m_model;
    bool m_selecting = false;
};
