#pragma once

#include "koSceneNodeDesc.h"

#include <kovis/koGlobal.h>

#include <QByteArray>
#include <QString>

// Reads and writes binary geometry files (.osb): a tree of groups and geometry nodes
// with their triangles, without references; references in written content are stored
// as plain groups.
class KOVIS_EXPORT koOsbFile
{
public:
    static constexpr quint32 magic = 0x4B4F5342; // "KOSB"
    // Version 1 files hold no triangles; they are still read.
    static constexpr quint16 version = 2;
    static constexpr quint32 maxNodes = 10000000;
    static constexpr qint64 maxFileSize = qint64(256) * 1024 * 1024;

    static bool read(const QString& path, koSceneNodeDesc& root, QString* error);
    static bool parse(const QByteArray& data, koSceneNodeDesc& root, QString* error);
    static QByteArray serialize(const koSceneNodeDesc& root);
};
