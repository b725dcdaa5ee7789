#include <kovis/koStyle.h>

#include <QApplication>
#include <QPalette>

// Each colour keeps a contrast of at least 4.5:1 to the base colour of common light
// and dark palettes.
QColor koStyle::getReferenceUpToDateColor()
{
    return forPalette("#2a7230", "#81c784");
}

QColor koStyle::getReferenceOutOfDateColor()
{
    return forPalette("#a04f00", "#ffb74d");
}

QColor koStyle::getReferenceMissingColor()
{
    return forPalette("#c62828", "#ff7b72");
}

QColor koStyle::getLockedItemColor()
{
    return forPalette("#6d5f8a", "#b7a8d9");
}

QColor koStyle::getInactiveNodeColor()
{
    return forPalette("#666666", "#9e9e9e");
}

QColor koStyle::forPalette(const char* onLight, const char* onDark)
{
    const bool dark = QApplication::palette().color(QPalette::Base).lightness() < 128;
    return QColor(QLatin1String(dark ? onDark : onLight));
}
