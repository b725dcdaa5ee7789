#include <kovis/kodSceneObject.h>

#include "koSceneStore.h"

bool kodSceneObject::isValid() const
{
    const koSceneStore* store = koSceneStore::the();
    return !isNull() && store && store->node(getObjectId());
}
