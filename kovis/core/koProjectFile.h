#pragma once

#include "koSceneNodeDesc.h"

#include <kovis/koGlobal.h>

#include <QByteArray>
#include <QString>

// Reads and writes project files (.kpr): a JSON node tree in which references are
// stored as their file links. A link is stored relative to the folder of the file that
// holds it when it lies below that folder, or when both it and the file lie inside the
// project's folder; other links are stored absolute.
class KOVIS_EXPORT koProjectFile
{
public:
    static constexpr int maxDepth = 256;
    static constexpr int maxTextLength = 4096;
    static constexpr qint64 maxFileSize = qint64(256) * 1024 * 1024;

    // The file's root node: a group whose children are the content. False with a
    // message when the file cannot be read or is not a valid project file.
    static bool read(const QString& path, koSceneNodeDesc& root, QString* error);
    static bool parse(const QByteArray& data, const QString& folder, koSceneNodeDesc& root, QString* error);
    static QByteArray serialize(const koSceneNodeDesc& root, const QString& folder,
                                const QString& projectFolder = QString());
};
