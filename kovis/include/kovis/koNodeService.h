#pragma once

#include "koBaseService.h"
#include "kodNode.h"

// Creates and deletes plain scene nodes and announces renames.
class KOVIS_EXPORT koNodeService : public koBaseService
{
    Q_OBJECT
public:
    using koBaseService::koBaseService;

    virtual kodNode getRootNode() const;
    // A new group under the parent (the scene root for a null parent).
    virtual kodNode createGroupNode(const kodNode& parent, const QString& name);
    virtual kodNode createGeometryNode(const kodNode& parent, const QString& name);
    virtual void deleteNode(const kodNode& node);
    virtual kodNode findNode(quint64 id) const;

signals:
    void nameChanged(unsigned id, QString name);
};
