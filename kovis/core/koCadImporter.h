#pragma once

#include "koSceneNodeDesc.h"

#include <kovis/koGlobal.h>

#include <QCoreApplication>
#include <QStringList>

// Imports CAD exchange files (STEP, IGES) through Open CASCADE: each shape of the file
// becomes a geometry node with the triangles of its surfaces.
class KOVIS_EXPORT koCadImporter
{
    Q_DECLARE_TR_FUNCTIONS(koCadImporter)

public:
    static bool canRead(const QString& path);
    // False with why the file could not be read.
    static bool read(const QString& path, koSceneNodeDesc& content, QString* reason);
    // "STEP (*.step *.stp)" and the like.
    static QStringList fileFilters();
    static QStringList patterns();
};
