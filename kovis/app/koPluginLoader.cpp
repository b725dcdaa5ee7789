#include "koPluginLoader.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>

#include <QDir>
#include <QFileInfo>

namespace {

using EntryPoint = void (*)();

void report(const koPluginLoader::Outcome& outcome)
{
    if (auto* log = koKernelServiceFactory::the()->getServiceOrNull<koLogService>())
        log->logWarning(QStringLiteral("Plug-ins"), outcome.error);
}

} // namespace

koPluginLoader::~koPluginLoader()
{
    unloadAll();
}

QString koPluginLoader::pluginFolder()
{
    const QString configured = qEnvironmentVariable("KOVIS_PLUGIN_PATH");
    if (!configured.isEmpty())
        return configured;
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("plugins"));
}

QList<koPluginLoader::Outcome> koPluginLoader::loadFolder(const QString& folder)
{
    QList<Outcome> outcomes;
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& file : files) {
        if (QLibrary::isLibrary(file.fileName()))
            outcomes.append(load(file.absoluteFilePath()));
    }
    return outcomes;
}

koPluginLoader::Outcome koPluginLoader::load(const QString& file)
{
    Outcome outcome{file, false, QString()};
    auto library = std::make_unique<QLibrary>(file);
    if (!library->load()) {
        outcome.error = tr("The plug-in %1 could not be loaded: %2").arg(QDir::toNativeSeparators(file), library->errorString());
        report(outcome);
        return outcome;
    }
    const auto initPlugin = reinterpret_cast<EntryPoint>(library->resolve("initPlugin"));
    if (!initPlugin) {
        outcome.error = tr("The plug-in %1 was skipped: it has no initPlugin entry").arg(QDir::toNativeSeparators(file));
        library->unload();
        report(outcome);
        return outcome;
    }
    initPlugin();
    if (const auto initPreferences = reinterpret_cast<EntryPoint>(library->resolve("initPreferencesPlugin")))
        initPreferences();
    m_libraries.push_back(std::move(library));
    outcome.loaded = true;
    return outcome;
}

void koPluginLoader::unloadAll()
{
    for (const auto& library : m_libraries)
        library->unload();
    m_libraries.clear();
}
