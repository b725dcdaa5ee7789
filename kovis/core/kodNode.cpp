#include <kovis/kodNode.h>

#include "koHandleList.h"
#include "koReferenceEngine.h"
#include "koSceneOperations.h"
#include "koSceneStore.h"

#include <kovis/koHost.h>

namespace {

const koNodeRecord* recordOf(const kodObject& handle)
{
    const koSceneStore* store = koSceneStore::the();
    return store && !handle.isNull() ? store->node(handle.getObjectId()) : nullptr;
}

} // namespace

kodNode::kodNode(quint64 id)
{
    initialize(id);
}

bool kodNode::isValid() const
{
    return recordOf(*this) != nullptr;
}

QString kodNode::getName() const
{
    const koNodeRecord* node = recordOf(*this);
    return node ? node->name : QString();
}

void kodNode::setName(const QString& name)
{
    if (isValid())
        koHost::engine()->operations().rename(getObjectId(), name);
}

kodNode kodNode::getParent() const
{
    const koNodeRecord* node = recordOf(*this);
    return node ? kodNode(node->parent) : kodNode();
}

unsigned kodNode::getChildCount() const
{
    const koNodeRecord* node = recordOf(*this);
    return node ? unsigned(node->children.size()) : 0;
}

int kodNode::getChildIndex(const kodNode& child) const
{
    const koNodeRecord* node = recordOf(*this);
    return node ? node->children.indexOf(child.getObjectId()) : -1;
}

kodNode kodNode::getChild(unsigned index) const
{
    const koNodeRecord* node = recordOf(*this);
    return node && index < unsigned(node->children.size()) ? kodNode(node->children.at(int(index))) : kodNode();
}

QList<kodNode> kodNode::getChildren() const
{
    const koNodeRecord* node = recordOf(*this);
    return node ? koHandleList<kodNode>(node->children) : QList<kodNode>();
}

QVector<quint64> kodNode::getChildIds() const
{
    const koNodeRecord* node = recordOf(*this);
    return node ? node->children : QVector<quint64>();
}

bool kodNode::isVisible() const
{
    const koSceneStore* store = koSceneStore::the();
    const koNodeRecord* node = recordOf(*this);
    for (; node; node = store->node(node->parent)) {
        if (!node->visible)
            return false;
    }
    return isValid();
}

bool kodNode::getVisibilityFlag() const
{
    const koNodeRecord* node = recordOf(*this);
    return node && node->visible;
}

void kodNode::setVisibilityFlag(bool visible)
{
    if (isValid())
        koSceneStore::the()->setVisible(getObjectId(), visible);
}

QMatrix4x4 kodNode::getWorldTransform() const
{
    const koSceneStore* store = koSceneStore::the();
    QMatrix4x4 world;
    for (const koNodeRecord* node = recordOf(*this); node; node = store->node(node->parent))
        world = node->transform * world;
    return world;
}

bool kodNode::isShared() const
{
    return getRefCount() > 1;
}

QList<kodNode> kodNode::getSharedNodes() const
{
    const koNodeRecord* node = recordOf(*this);
    if (!node)
        return {};
    QVector<quint64> others = koSceneStore::the()->instances(node->shareKey);
    others.removeOne(node->id);
    return koHandleList<kodNode>(others);
}

unsigned kodNode::getIndex() const
{
    const koNodeRecord* node = recordOf(*this);
    const koNodeRecord* parent = node ? koSceneStore::the()->node(node->parent) : nullptr;
    return parent ? unsigned(parent->children.indexOf(node->id)) : 0;
}

void kodNode::addChild(const kodNode& child)
{
    if (isValid() && child.isValid())
        koHost::engine()->operations().moveNode(child.getObjectId(), getObjectId());
}

void kodNode::clearChildren()
{
    const koNodeRecord* node = recordOf(*this);
    if (!node)
        return;
    const QVector<quint64> children = node->children;
    for (quint64 child : children)
        koSceneStore::the()->removeSubtree(child, koSceneStore::Mark::Owner);
}

unsigned kodNode::getRefCount() const
{
    const koNodeRecord* node = recordOf(*this);
    return node ? unsigned(koSceneStore::the()->instances(node->shareKey).size()) : 0;
}

bool kodNode::getUserLocked() const
{
    const koNodeRecord* node = recordOf(*this);
    return node && node->userLocked;
}

void kodNode::setUserLocked(bool locked)
{
    if (isValid())
        koSceneStore::the()->setUserLocked(getObjectId(), locked);
}

bool kodNode::hasLockedParent() const
{
    const koSceneStore* store = koSceneStore::the();
    const koNodeRecord* node = recordOf(*this);
    for (node = node ? store->node(node->parent) : nullptr; node; node = store->node(node->parent)) {
        if (node->userLocked)
            return true;
    }
    return false;
}

bool kodNode::isLocked() const
{
    return getUserLocked() || hasLockedParent();
}

bool kodNode::isSelectable() const
{
    return isValid();
}

bool kodNode::isUneditedAsset() const
{
    return false;
}

bool kodNode::isAsset() const
{
    return false;
}

QIcon kodNode::getIcon() const
{
    const koNodeRecord* node = recordOf(*this);
    if (!node)
        return QIcon();
    // One icon per type, made once: views ask for it on every paint.
    static const QIcon reference(QStringLiteral(":/kovis/icons/NodeReference.svg"));
    static const QIcon geometry(QStringLiteral(":/kovis/icons/NodeGeometry.svg"));
    static const QIcon group(QStringLiteral(":/kovis/icons/NodeGroup.svg"));
    switch (node->type) {
    case koNodeType::Reference:
        return reference;
    case koNodeType::Geometry:
        return geometry;
    case koNodeType::Group:
        break;
    }
    return group;
}

bool kodNode::read(const QJsonObject& json)
{
    if (!isValid())
        return false;
    if (json.value(QLatin1String("name")).isString())
        setName(json.value(QLatin1String("name")).toString());
    if (json.value(QLatin1String("visible")).isBool())
        setVisibilityFlag(json.value(QLatin1String("visible")).toBool());
    if (json.value(QLatin1String("locked")).isBool())
        setUserLocked(json.value(QLatin1String("locked")).toBool());
    return true;
}

void kodNode::write(QJsonObject& json) const
{
    kodSceneObject::write(json);
    json.insert(QStringLiteral("name"), getName());
    json.insert(QStringLiteral("visible"), getVisibilityFlag());
    json.insert(QStringLiteral("locked"), getUserLocked());
}
