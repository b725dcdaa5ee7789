#include <kovis/koNodeService.h>

#include "koReferenceEngine.h"
#include "koSceneOperations.h"

#include <kovis/koHost.h>

kodNode koNodeService::getRootNode() const
{
    return kodNode(koHost::engine()->store()->rootId());
}

kodNode koNodeService::createGroupNode(const kodNode& parent, const QString& name)
{
    return kodNode(koHost::engine()->operations().createNode(parent.getObjectId(), koNodeType::Group, name));
}

kodNode koNodeService::createGeometryNode(const kodNode& parent, const QString& name)
{
    return kodNode(koHost::engine()->operations().createNode(parent.getObjectId(), koNodeType::Geometry, name));
}

void koNodeService::deleteNode(const kodNode& node)
{
    koHost::engine()->store()->removeSubtree(node.getObjectId(), koSceneStore::Mark::Owner);
}

kodNode koNodeService::findNode(quint64 id) const
{
    return koHost::engine()->store()->node(id) ? kodNode(id) : kodNode();
}
