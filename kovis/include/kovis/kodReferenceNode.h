#pragma once

#include "koReferenceTypes.h"
#include "kodNode.h"

#include <QDateTime>

// A node that stands for content held in files: an optional smart link (a project or
// binary geometry file kept in step with the scene) and an optional source link (the
// file the content was imported from).
class KOVIS_EXPORT kodReferenceNode : public kodNode
{
    Q_OBJECT
public:
    kodReferenceNode() = default;
    explicit kodReferenceNode(quint64 id);
    kodReferenceNode(const kodReferenceNode& other) = default;
    kodReferenceNode& operator=(const kodReferenceNode& other) = default;

    virtual bool hasSourceReference() const;
    virtual bool hasSmartReference() const;
    virtual bool isLoaded() const;
    virtual bool isChanged() const;
    virtual bool isSubReferenceChanged() const;
    virtual bool isSelfOrSubReferenceChanged() const;
    virtual bool isRootNode() const;
    virtual void createSmartReference();
    virtual void createSourceReference();
    virtual void removeSmartReference();
    virtual void removeSourceReference();
    virtual void unload();
    virtual void load();
    virtual void loadSourceReference();
    virtual void loadSmartReference();
    virtual koReferenceTypes::State getState() const;
    virtual bool saveSmartReference();
    // withSubReferences: also write the changed references below this one.
    virtual bool saveSmartReferenceAs(const QString& path, bool withSubReferences);
    virtual void setSourcePath(const QString& path);
    virtual QString getSourcePath() const;
    virtual koReferenceTypes::FileState getSourceFileState() const;
    virtual QString getSourceOwner() const;
    virtual QDateTime getSourceLastModified() const;
    virtual QDateTime getSourceImportDate() const;
    virtual void setSmartPath(const QString& path);
    virtual QString getSmartPath() const;
    virtual QString createSmartPath(koReferenceTypes::ExportLocation location, QString customFolder) const;
    virtual koReferenceTypes::FileState getSmartFileState() const;
    virtual QString getSmartOwner() const;
    virtual QDateTime getSmartLastModified() const;
    virtual QDateTime getSmartCreationDate() const;
};

Q_DECLARE_METATYPE(kodReferenceNode)
