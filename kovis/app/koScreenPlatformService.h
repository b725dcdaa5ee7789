#pragma once

#include <kovis/koPlatformService.h>

// Sizes of the screen the host application runs on.
class koScreenPlatformService : public koPlatformService
{
    Q_OBJECT
public:
    using koPlatformService::koPlatformService;

    int getIconWidth() const override;
    int getIconHeight() const override;
    int getToolIconWidth() const override;
    int getToolIconHeight() const override;
    double getUiScaleFactorX() const override;
    double getUiScaleFactorY() const override;
};
