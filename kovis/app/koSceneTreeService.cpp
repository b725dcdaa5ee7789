#include "koSceneTreeService.h"

#include "koNodeInformation.h"
#include "koSceneTreeView.h"

#include <kovis/koNodeInfoDialog.h>

koSceneTreeService::koSceneTreeService(koSceneTreeView* view, QObject* parent)
    : koTreeService(parent)
    , m_view(view)
{
    connect(view, &koSceneTreeView::nodesSelected, this,
            [this](const QList<kodNode>& nodes) { setSelection(encodeSelection(nodes)); });
    connect(this, &koTreeService::selectionChanged, view, [this] {
        if (m_view)
            m_view->selectNodes(getSelectedNodes());
    });
}

void koSceneTreeService::scrollToNode(unsigned id)
{
    koTreeService::scrollToNode(id);
    if (m_view)
        m_view->revealNode(id);
}

void koSceneTreeService::refresh(bool full)
{
    koTreeService::refresh(full);
    if (m_view)
        m_view->viewport()->update();
}

void koSceneTreeService::showNodeInfo(const QList<kodNode>& nodes)
{
    koTreeService::showNodeInfo(nodes);
    koNodeInfoDialog dialog(m_view ? m_view->window() : nullptr);
    dialog.setWindowTitle(tr("Node Information"));
    for (const kodNode& node : nodes)
        koNodeInformation::describe(node, dialog);
    dialog.exec();
}
