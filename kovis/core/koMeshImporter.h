#pragma once

#include "koSceneNodeDesc.h"

#include <kovis/koGlobal.h>

#include <QCoreApplication>
#include <QStringList>

struct aiNode;
struct aiScene;

// Imports mesh files (OBJ, STL, PLY, glTF, FBX, Collada, 3DS and every other format
// the Open Asset Import Library reads) as a node tree: the file's nodes become groups
// with their transforms, its meshes geometry nodes with their triangles and counts.
class KOVIS_EXPORT koMeshImporter
{
    Q_DECLARE_TR_FUNCTIONS(koMeshImporter)

public:
    // False with why the file could not be read.
    static bool read(const QString& path, koSceneNodeDesc& content, QString* reason);
    // Whether the library reads files of this name (by its suffix).
    static bool canRead(const QString& path);
    // One "Name (*.ext ...)" entry per format the library reads, by name.
    static QStringList fileFilters();
    // Every suffix the library reads, as "*.ext".
    static QStringList patterns();

private:
    static bool addNode(const aiScene& scene, const aiNode& node, koSceneNodeDesc& parent, int depth, QString* error);
    static koSceneNodeDesc geometryOf(const aiScene& scene, unsigned meshIndex, const QString& fallbackName);
};
