#include <kovis/QKOToolBar.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPlatformService.h>

QKOToolBar::QKOToolBar(const QString& title, QWidget* parent)
    : QToolBar(title, parent)
{
    if (const auto* platform = koKernelServiceFactory::the()->getServiceOrNull<koPlatformService>())
        setIconSize(QSize(platform->getToolIconWidth(), platform->getToolIconHeight()));
}
