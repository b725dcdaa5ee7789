#pragma once

#include <kovis/kodReferenceNode.h>

#include <QJsonArray>
#include <QJsonObject>

// References as JSON for programs: stable keys and state names, absolute paths, ISO dates.
class koReferenceJson
{
public:
    // name, scenePath, state ("loaded", "unloaded") and its smart and source links, each
    // null or {path, state, modified, created or imported, owner}.
    static QJsonObject reference(const kodReferenceNode& reference);
    static QJsonArray references(const QList<kodReferenceNode>& references);
    // "up-to-date", "out-of-date", "missing", "unsaved"; null for no link.
    static QJsonValue fileState(koReferenceTypes::FileState state);
    // The path with the platform's separators; null when empty.
    static QJsonValue path(const QString& path);
};
