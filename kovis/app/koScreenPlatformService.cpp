#include "koScreenPlatformService.h"

#include <QApplication>
#include <QScreen>
#include <QStyle>

namespace {

// Layouts are drawn for 96 dots per inch.
constexpr double designDpi = 96.0;

int styleSize(QStyle::PixelMetric metric)
{
    return QApplication::style()->pixelMetric(metric);
}

} // namespace

int koScreenPlatformService::getIconWidth() const
{
    return styleSize(QStyle::PM_SmallIconSize);
}

int koScreenPlatformService::getIconHeight() const
{
    return styleSize(QStyle::PM_SmallIconSize);
}

int koScreenPlatformService::getToolIconWidth() const
{
    return styleSize(QStyle::PM_SmallIconSize);
}

int koScreenPlatformService::getToolIconHeight() const
{
    return styleSize(QStyle::PM_SmallIconSize);
}

double koScreenPlatformService::getUiScaleFactorX() const
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? qMax(1.0, screen->logicalDotsPerInchX() / designDpi) : 1.0;
}

double koScreenPlatformService::getUiScaleFactorY() const
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? qMax(1.0, screen->logicalDotsPerInchY() / designDpi) : 1.0;
}
