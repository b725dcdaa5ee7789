#pragma once

#include "koBaseService.h"
#include "kodObject.h"

#include <QByteArray>

// Announces property changes of scene objects ("name", "visible", "locked").
class KOVIS_EXPORT koObjectService : public koBaseService
{
    Q_OBJECT
public:
    using koBaseService::koBaseService;

signals:
    void propertyChanged(kodObject object, const QByteArray& name);
};
