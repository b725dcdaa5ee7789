#include "koSceneTreeView.h"

#include "koSceneTreeModel.h"

#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koTreeService.h>
#include <kovis/kodReferenceNode.h>

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>

koSceneTreeView::koSceneTreeView(koSceneTreeModel* model, QWidget* parent)
    : QTreeView(parent)
    , m_model(model)
{
    setObjectName(QStringLiteral("SceneTree"));
    setModel(model);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    setUniformRowHeights(true);
    header()->hide();
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!m_selecting)
            emit nodesSelected(selectedNodes());
    });
    connect(model, &QAbstractItemModel::modelReset, this, [this] { expandToDepth(0); });
    expandToDepth(0);
}

QList<kodNode> koSceneTreeView::selectedNodes() const
{
    QList<kodNode> nodes;
    for (const QModelIndex& index : selectionModel()->selectedRows())
        nodes.append(kodNode(koSceneTreeModel::nodeId(index)));
    return nodes;
}

void koSceneTreeView::selectNodes(const QList<kodNode>& nodes)
{
    QItemSelection selection;
    for (const kodNode& node : nodes) {
        const QModelIndex index = m_model->indexOfNode(node.getObjectId());
        if (index.isValid())
            selection.select(index, index);
    }
    m_selecting = true;
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_selecting = false;
}

void koSceneTreeView::revealNode(quint64 id)
{
    const QModelIndex index = m_model->indexOfNode(id);
    for (QModelIndex parent = index.parent(); parent.isValid(); parent = parent.parent())
        expand(parent);
    scrollTo(index);
}

QList<kodReferenceNode> koSceneTreeView::selectedReferences() const
{
    QList<kodReferenceNode> references;
    for (const kodNode& node : selectedNodes()) {
        if (node.isTypeOf(kodReferenceNode::staticMetaObject))
            references.append(kodReferenceNode(node.getObjectId()));
    }
    return references;
}

void koSceneTreeView::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    addReferenceRequests(menu);
    menu.addSeparator();
    auto* tree = koKernelServiceFactory::the()->getServiceOrNull<koTreeService>();
    const QList<kodNode> nodes = selectedNodes();
    menu.addAction(tr("Clone"), this, [tree, nodes] { tree->cloneNodes(nodes); })->setEnabled(!nodes.isEmpty());
    menu.addAction(tr("Node Information"), this, [tree, nodes] { tree->showNodeInfo(nodes); })
        ->setEnabled(!nodes.isEmpty());
    menu.exec(event->globalPos());
}

void koSceneTreeView::addReferenceRequests(QMenu& menu)
{
    auto* ui = koKernelServiceFactory::the()->getServiceOrNull<koInternalUiService>();
    const QList<kodReferenceNode> references = selectedReferences();
    const auto request = [&](const QString& text, void (koInternalUiService::*signal)(QList<kodReferenceNode>)) {
        QAction* action = menu.addAction(text, this, [ui, signal, references] { emit (ui->*signal)(references); });
        action->setEnabled(!references.isEmpty());
    };
    request(tr("Load References"), &koInternalUiService::requestUiLoadReferences);
    request(tr("Unload References"), &koInternalUiService::requestUiUnloadReferences);
    request(tr("Repath References..."), &koInternalUiService::requestUiRepathReferences);
    request(tr("Save Smart References"), &koInternalUiService::requestUiSaveSmarts);
    request(tr("Save Smart References As..."), &koInternalUiService::requestUiSaveSmartsAs);
    request(tr("Remove References"), &koInternalUiService::requestUiRemoveReferences);
    QList<kodNode> nodes = selectedNodes();
    menu.addAction(tr("Convert to Smart References"), this, [ui, nodes] { emit ui->requestUiConvertToSmarts(nodes); })
        ->setEnabled(!nodes.isEmpty());
}
