#pragma once

#include "koGlobal.h"

#include <QString>

class koFileIOService;
class koMainWindowService;
class koPlatformService;
class koReferenceEngine;
class koTreeService;

// Brings up the host's scene and kernel services for the process (the host application,
// a tool, a test) and tears them down again.
class KOVIS_EXPORT koHost
{
public:
    // settingsFile: where preferences persist; empty for the user's own settings.
    static void initialize(const QString& settingsFile = QString());
    static void shutdown();
    static bool isInitialized();

    // The host application replaces the window-less services with its own; the host
    // takes ownership.
    static void setTreeService(koTreeService* service);
    static void setMainWindowService(koMainWindowService* service);
    static void setPlatformService(koPlatformService* service);

    static koReferenceEngine* engine();
};
