#pragma once

#include "koBaseService.h"

// Sizes that depend on the screen the host runs on.
class KOVIS_EXPORT koPlatformService : public koBaseService
{
    Q_OBJECT
public:
    using koBaseService::koBaseService;

    virtual int getIconWidth() const;
    virtual int getIconHeight() const;
    virtual int getToolIconWidth() const;
    virtual int getToolIconHeight() const;
    virtual double getUiScaleFactorX() const;
    virtual double getUiScaleFactorY() const;
};
