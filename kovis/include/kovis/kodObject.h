#pragma once

#include "koGlobal.h"

#include <QJsonObject>
#include <QMetaType>
#include <QObject>

// A handle of one object of the host's scene. It holds only the object's id and type
// id; every call looks the object up, so a handle outlives its object harmlessly.
class KOVIS_EXPORT kodObject : public QObject
{
    Q_OBJECT
public:
    kodObject();
    kodObject(const kodObject& other);
    kodObject& operator=(const kodObject& other);
    ~kodObject() override;

    virtual bool read(const QJsonObject& json);
    virtual void write(QJsonObject& json) const;
    virtual int invokeMethod(const QMetaObject* metaObject, int methodIndex, void** arguments);

    quint64 getObjectId() const { return m_id; }
    quint64 getTypeId() const { return m_typeId; }
    bool isNull() const { return m_id == 0; }

    bool operator==(const kodObject& other) const { return m_id == other.m_id; }
    bool operator!=(const kodObject& other) const { return m_id != other.m_id; }

    // True when the scene object is of the given handle class or one derived from it.
    bool isTypeOf(const QMetaObject& handleClass) const;

protected:
    void assign(quint64 id, quint64 typeId);
    void initialize(quint64 id);

private:
    quint64 m_id = 0;
    quint64 m_typeId = 0;
};

KOVIS_EXPORT uint qHash(const kodObject& object, uint seed = 0) noexcept;
