#pragma once

#include <QVector3D>
#include <QVector>

// The triangles of one geometry node as its file gave them. Shared, never changed:
// clones and undo records of a node hold the same mesh.
struct koMesh
{
    QVector<QVector3D> positions;
    // Three positions per triangle.
    QVector<quint32> triangles;
};
