#pragma once

#include "koGlobal.h"

#include <QIcon>
#include <QString>

// The host's icons, looked up by name.
class KOVIS_EXPORT koIconManager
{
public:
    // secondName is tried when there is no icon of the first name; for an unknown
    // name a fallback icon stands in, so a missing icon shows instead of a gap.
    static QIcon getIcon(const QString& name, const QString& secondName = QString());
    static bool hasIcon(const QString& name);
};
