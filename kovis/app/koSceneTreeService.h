#pragma once

#include <kovis/koTreeService.h>

#include <QPointer>

class koSceneTreeView;

// The tree service of the host application: the scene selection is the selection of
// the scene tree, and node information opens the host's information dialog.
class koSceneTreeService : public koTreeService
{
    Q_OBJECT
public:
    explicit koSceneTreeService(koSceneTreeView* view, QObject* parent = nullptr);

    void scrollToNode(unsigned id) override;
    void refresh(bool full) override;
    void showNodeInfo(const QList<kodNode>& nodes) override;

private:
    QPointer<koSceneTreeView> m_view;
};
