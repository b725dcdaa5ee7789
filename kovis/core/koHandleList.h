#pragma once

#include <QList>
#include <QVector>

// Handles of the scene objects with these ids, in order.
template<class Handle>
QList<Handle> koHandleList(const QVector<quint64>& ids)
{
    QList<Handle> handles;
    handles.reserve(ids.size());
    for (quint64 id : ids)
        handles.append(Handle(id));
    return handles;
}
