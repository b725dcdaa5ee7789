#pragma once

#include "koGeneralPreferencesPage.h"
#include "koMainWindow.h"
#include "koPluginLoader.h"

#include <memory>

// The host with its window: kernel services, the main window and the plug-ins, brought
// up together and taken down in the order their parts depend on each other.
class koHostSession
{
public:
    // settingsFile: where preferences persist; empty for the user's own settings.
    explicit koHostSession(const QString& settingsFile = QString());
    ~koHostSession();

    koHostSession(const koHostSession&) = delete;
    koHostSession& operator=(const koHostSession&) = delete;

    koMainWindow& window() { return *m_window; }
    // Loads every plug-in of the folder and stores the defaults of preference pages
    // the host has never run.
    void loadPlugins(const QString& folder);

private:
    void storeFirstDefaults();

    std::unique_ptr<koGeneralPreferencesPage> m_generalPage;
    std::unique_ptr<koMainWindow> m_window;
    koPluginLoader m_plugins;
};
