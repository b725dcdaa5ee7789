#include "koItemId.h"

#include <kovis/koModelItem.h>

#include <kovis/kodReferenceNode.h>

koItemId koItemId::of(const QVariant& id)
{
    koItemId key;
    const int type = id.userType();
    // Read the handle in place: ids are hashed for every item of a reload.
    if (type == qMetaTypeId<kodNode>() || type == qMetaTypeId<kodReferenceNode>())
        key.m_node = static_cast<const kodNode*>(id.constData())->getObjectId();
    else if (id.isValid())
        key.m_text = id.toString();
    return key;
}

koItemId koItemId::ofObject(quint64 objectId)
{
    koItemId key;
    key.m_node = objectId;
    return key;
}

koItemId koItemId::ofItem(const koModelItem& item)
{
    const quint64 objectId = item.getIdObjectId();
    return objectId ? ofObject(objectId) : of(item.getId());
}
