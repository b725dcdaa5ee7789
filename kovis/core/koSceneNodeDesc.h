#pragma once

#include "koMesh.h"
#include "koNodeRecord.h"
#include "koReferenceContent.h"

#include <QMatrix4x4>
#include <QString>
#include <QVector>

#include <memory>

// A node tree as files hold it, before it becomes part of the scene. Paths are absolute.
struct koSceneNodeDesc
{
    koNodeType type = koNodeType::Group;
    QString name;
    bool visible = true;
    bool locked = false;
    QMatrix4x4 transform;
    quint32 vertices = 0;
    quint32 faces = 0;
    // The triangles an import read; files of the host keep only the counts.
    std::shared_ptr<const koMesh> mesh;
    // Nodes with the same tag share their content (clones); "" for none.
    QString instance;
    koReferenceContent reference;
    // The file stores this reference's content itself (it has no smart file).
    bool inlineContent = false;
    QVector<koSceneNodeDesc> children;
    // Content the file keeps for a reference that is not loaded and has no file of its
    // own to load it from.
    QVector<koSceneNodeDesc> unloadedContent;

    bool containsReference() const
    {
        for (const koSceneNodeDesc& child : children) {
            if (child.type == koNodeType::Reference || child.containsReference())
                return true;
        }
        return false;
    }
};
