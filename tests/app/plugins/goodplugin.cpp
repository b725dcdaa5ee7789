#include <kovis/koKernelServiceFactory.h>
#include <kovis/koMainWindowService.h>

#include <QIcon>
#include <QWidget>

// Registers one module per call, so a host that calls an entry twice shows it.
extern "C" Q_DECL_EXPORT void initPlugin()
{
    koKernelServiceFactory::the()->getServiceOrNull<koMainWindowService>()->registerModule(
        QStringLiteral("Probe"), QStringLiteral("Tools"), nullptr, QString(), QIcon(), QStringLiteral("Probe"), false);
}

extern "C" Q_DECL_EXPORT void initPreferencesPlugin()
{
    koKernelServiceFactory::the()->getServiceOrNull<koMainWindowService>()->registerModule(
        QStringLiteral("Probe Preferences"), QStringLiteral("Tools"), nullptr, QString(), QIcon(), QString(), false);
}
