#include "koReferenceFlatModelItem.h"

#include "koReferenceModelItem.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

koReferenceFlatModelItem::koReferenceFlatModelItem(const kodNode& node)
    : koNodeModelItem(node)
{
}

QVariant koReferenceFlatModelItem::getId() const
{
    return QStringLiteral("FlatModelRoot");
}

QList<koModelItem*> koReferenceFlatModelItem::createChildList()
{
    const QList<kodReferenceNode> references =
        koService<koReferenceService>()->getSceneReferences();
    QList<koModelItem*> children;
    children.reserve(references.size());
    for (const kodReferenceNode& reference : references)
        children.append(new koReferenceModelItem(reference, false, this));
    return children;
}
