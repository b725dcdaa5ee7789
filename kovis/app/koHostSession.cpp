#include "koHostSession.h"

#include "koSceneTreeService.h"
#include "koScreenPlatformService.h"

#include <kovis/koHost.h>

koHostSession::koHostSession(const QString& settingsFile)
{
    koHost::initialize(settingsFile);
    koHost::setPlatformService(new koScreenPlatformService);
    m_window = std::make_unique<koMainWindow>();
    koHost::setTreeService(new koSceneTreeService(m_window->sceneTree()));
}

koHostSession::~koHostSession()
{
    // Plug-ins delete what they keep in statics when unloaded: their windows must be
    // theirs again by then, and the application must still exist.
    m_window->releaseModules();
    m_plugins.unloadAll();
    m_window.reset();
    koHost::shutdown();
}

void koHostSession::loadPlugins(const QString& folder)
{
    m_plugins.loadFolder(folder);
}
