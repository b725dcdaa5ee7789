#pragma once

#include <QCoreApplication>
#include <QLibrary>
#include <QList>
#include <QString>

#include <memory>
#include <vector>

// Loads the host's plug-ins: every library in the plug-in folder that exports
// initPlugin (and optionally initPreferencesPlugin), each entry called once.
class koPluginLoader
{
    Q_DECLARE_TR_FUNCTIONS(koPluginLoader)
public:
    struct Outcome
    {
        QString file;
        bool loaded = false;
        QString error;
    };

    ~koPluginLoader();

    // KOVIS_PLUGIN_PATH when set, else the "plugins" folder beside the executable.
    static QString pluginFolder();

    QList<Outcome> loadFolder(const QString& folder);
    // Unloads the plug-ins, so that what they keep in statics goes while the
    // application still exists.
    void unloadAll();

private:
    Outcome load(const QString& file);

    std::vector<std::unique_ptr<QLibrary>> m_libraries;
};
