#pragma once

#include <kovis/koGlobal.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

// Writes a file whole or not at all: the bytes go to a new file beside it, reach the
// disk, and only then take the old file's place (keeping its permissions). A failure
// leaves the old file as it was and names the real cause ("No space left on device").
class KOVIS_EXPORT koAtomicFile
{
    Q_DECLARE_TR_FUNCTIONS(koAtomicFile)

public:
    static bool write(const QString& path, const QByteArray& data, QString* error);
};
