#pragma once

#include "kodSceneObject.h"

#include <QIcon>
#include <QList>
#include <QMatrix4x4>
#include <QString>
#include <QVector>

class KOVIS_EXPORT kodNode : public kodSceneObject
{
    Q_OBJECT
public:
    kodNode() = default;
    explicit kodNode(quint64 id);
    kodNode(const kodNode& other) = default;
    kodNode& operator=(const kodNode& other) = default;

    bool isValid() const override;

    virtual QString getName() const;
    virtual void setName(const QString& name);
    virtual kodNode getParent() const;
    virtual unsigned getChildCount() const;
    virtual int getChildIndex(const kodNode& child) const;
    virtual kodNode getChild(unsigned index) const;
    virtual QList<kodNode> getChildren() const;
    // The children's ids, for walks over large scenes: no handle is made per child.
    QVector<quint64> getChildIds() const;
    virtual bool isVisible() const;
    virtual bool getVisibilityFlag() const;
    virtual void setVisibilityFlag(bool visible);
    virtual QMatrix4x4 getWorldTransform() const;
    virtual bool isShared() const;
    virtual QList<kodNode> getSharedNodes() const;
    virtual unsigned getIndex() const;
    virtual void addChild(const kodNode& child);
    virtual void clearChildren();
    virtual unsigned getRefCount() const;
    virtual bool getUserLocked() const;
    virtual void setUserLocked(bool locked);
    virtual bool hasLockedParent() const;
    virtual bool isLocked() const;
    virtual bool isSelectable() const;
    virtual bool isUneditedAsset() const;
    virtual bool isAsset() const;

    QIcon getIcon() const;

    bool read(const QJsonObject& json) override;
    void write(QJsonObject& json) const override;
};

Q_DECLARE_METATYPE(kodNode)
