#include "koHostSession.h"

#include "koSceneTreeService.h"
#include "koScreenPlatformService.h"

#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesCategory.h>
#include <kovis/koPreferencesService.h>

koHostSession::koHostSession(const QString& settingsFile)
{
    koHost::initialize(settingsFile);
    koHost::setPlatformService(new koScreenPlatformService);
    m_generalPage = std::make_unique<koGeneralPreferencesPage>();
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
    m_generalPage.reset();
    koHost::shutdown();
}

void koHostSession::loadPlugins(const QString& folder)
{
    m_plugins.loadFolder(folder);
    storeFirstDefaults();
}

void koHostSession::storeFirstDefaults()
{
    // Pages read what is stored; before their first run nothing is, and their
    // fallbacks are not their defaults.
    auto* preferences = koKernelServiceFactory::the()->getServiceOrNull<koPreferencesService>();
    for (koPreferencesCategory* category : koPreferencesCategory::registeredCategories()) {
        if (preferences->hasDefaults(category->getName()))
            continue;
        category->initDefaults(false);
        preferences->setHasDefaults(category->getName());
        preferences->notifyCategoryApplied(category->getName());
    }
}
