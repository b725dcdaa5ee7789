#include <kovis/koPlatformService.h>

int koPlatformService::getIconWidth() const
{
    return 16;
}

int koPlatformService::getIconHeight() const
{
    return 16;
}

int koPlatformService::getToolIconWidth() const
{
    return 16;
}

int koPlatformService::getToolIconHeight() const
{
    return 16;
}

double koPlatformService::getUiScaleFactorX() const
{
    return 1.0;
}

double koPlatformService::getUiScaleFactorY() const
{
    return 1.0;
}
