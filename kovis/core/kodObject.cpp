#include <kovis/kodObject.h>
#include <kovis/kodReferenceNode.h>

#include "koSceneStore.h"

namespace {

const QMetaObject* handleClassOf(quint64 typeId)
{
    switch (koNodeType(typeId)) {
    case koNodeType::Reference:
        return &kodReferenceNode::staticMetaObject;
    case koNodeType::Group:
    case koNodeType::Geometry:
        return &kodNode::staticMetaObject;
    }
    return nullptr;
}

} // namespace

kodObject::kodObject() = default;

kodObject::kodObject(const kodObject& other)
    : QObject()
    , m_id(other.m_id)
    , m_typeId(other.m_typeId)
{
}

kodObject& kodObject::operator=(const kodObject& other)
{
    m_id = other.m_id;
    m_typeId = other.m_typeId;
    return *this;
}

kodObject::~kodObject() = default;

bool kodObject::read(const QJsonObject& json)
{
    Q_UNUSED(json)
    return false;
}

void kodObject::write(QJsonObject& json) const
{
    json.insert(QStringLiteral("id"), QString::number(m_id));
    json.insert(QStringLiteral("typeId"), QString::number(m_typeId));
}

int kodObject::invokeMethod(const QMetaObject* metaObject, int methodIndex, void** arguments)
{
    if (!metaObject || !this->metaObject()->inherits(metaObject))
        return -1;
    return QMetaObject::metacall(this, QMetaObject::InvokeMetaMethod, methodIndex, arguments);
}

bool kodObject::isTypeOf(const QMetaObject& handleClass) const
{
    const QMetaObject* actual = handleClassOf(m_typeId);
    return actual && actual->inherits(&handleClass);
}

void kodObject::assign(quint64 id, quint64 typeId)
{
    m_id = id;
    m_typeId = typeId;
}

void kodObject::initialize(quint64 id)
{
    const koSceneStore* store = koSceneStore::the();
    const koNodeRecord* node = store && id ? store->node(id) : nullptr;
    assign(id, node ? quint64(node->type) : 0);
}

uint qHash(const kodObject& object, uint seed) noexcept
{
    return qHash(object.getObjectId(), seed);
}
