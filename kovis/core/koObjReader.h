#pragma once

#include "koSceneNodeDesc.h"

#include <kovis/koGlobal.h>

#include <QString>

// Reads the structure of a Wavefront OBJ file: each object becomes a group, each group
// a geometry node with its vertex and face counts.
class KOVIS_EXPORT koObjReader
{
public:
    static constexpr qint64 maxFileSize = qint64(2) * 1024 * 1024 * 1024;

    static bool read(const QString& path, koSceneNodeDesc& content, QString* error);
};
