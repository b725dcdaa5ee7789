#include <kovis/koStyle.h>

#include <QApplication>
#include <QPalette>

// Each colour keeps a contrast of at least 4.5:1 to the base colour of common light
// and dark palettes.
QColor koStyle::getReferenceUpToDateColor()
{
    return forPalette(0x2a7230, 0x81c784);
}

QColor koStyle::getReferenceOutOfDateColor()
{
    return forPalette(0xa04f00, 0xffb74d);
}

QColor koStyle::getReferenceMissingColor()
{
    return forPalette(0xc62828, 0xff7b72);
}

QColor koStyle::getLockedItemColor()
{
    return forPalette(0x6d5f8a, 0xb7a8d9);
}

QColor koStyle::getInactiveNodeColor()
{
    return forPalette(0x666666, 0x9e9e9e);
}

QColor koStyle::forPalette(QRgb onLight, QRgb onDark)
{
    // Views ask for these colours for every cell they paint or filter.
    static QRgb knownBase = 0;
    static bool dark = false;
    const QRgb base = QApplication::palette().color(QPalette::Base).rgb();
    if (base != knownBase) {
        knownBase = base;
        dark = QColor(base).lightness() < 128;
    }
    return QColor(dark ? onDark : onLight);
}
