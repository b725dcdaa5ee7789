#include <kovis/koInternalUiService.h>

#include <QMetaMethod>

bool koInternalUiService::answersSmartPathsUpdate() const
{
    return isSignalConnected(QMetaMethod::fromSignal(&koInternalUiService::requestUiSmartPathsUpdate));
}
