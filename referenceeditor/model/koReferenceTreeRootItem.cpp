#include "koReferenceTreeRootItem.h"

#include "koReferenceModelItem.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeService.h>

koReferenceTreeRootItem::koReferenceTreeRootItem(const kodNode& node)
    : koNodeModelItem(node)
{
}

QVariant koReferenceTreeRootItem::getId() const
{
    return QStringLiteral("TreeModelRoot");
}

QList<koModelItem*> koReferenceTreeRootItem::createChildList()
{
    const kodNode sceneRoot = koService<koNodeService>()->getRootNode();
    if (!sceneRoot.isValid())
        return {};
    return {new koReferenceModelItem(sceneRoot, true, this)};
}
