#pragma once

#include "koMesh.h"

#include <QMatrix4x4>
#include <QString>
#include <QVector>

#include <memory>

enum class koNodeType : quint64 { Group = 1, Geometry = 2, Reference = 3 };

// One node of the scene store. Clones share the shareKey (the original's id); the
// reference data of a reference node is kept per shareKey.
struct koNodeRecord
{
    quint64 id = 0;
    koNodeType type = koNodeType::Group;
    QString name;
    quint64 parent = 0;
    QVector<quint64> children;
    bool visible = true;
    bool userLocked = false;
    QMatrix4x4 transform;
    quint64 shareKey = 0;
    quint32 vertexCount = 0;
    quint32 faceCount = 0;
    std::shared_ptr<const koMesh> mesh;

    bool isReference() const { return type == koNodeType::Reference; }
};
