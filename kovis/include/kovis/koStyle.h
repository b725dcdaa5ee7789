#pragma once

#include "koGlobal.h"

#include <QColor>

// Text colours for states in item views, readable on the application's palette: each
// has a light and a dark variant, chosen by the lightness of the palette's base colour.
class KOVIS_EXPORT koStyle
{
public:
    static QColor getReferenceUpToDateColor();
    static QColor getReferenceOutOfDateColor();
    static QColor getReferenceMissingColor();
    static QColor getLockedItemColor();
    static QColor getInactiveNodeColor();

private:
    static QColor forPalette(QRgb onLight, QRgb onDark);
};
