#pragma once

#include <kovis/koGlobal.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QFile>
#include <QString>

// A file opened for reading only if it is a regular file no larger than a limit. Opening
// never blocks, so a FIFO or a device given as a file is refused instead of hanging, and
// reading stops at the size the file had when it was opened.
class KOVIS_EXPORT koRegularFile
{
    Q_DECLARE_TR_FUNCTIONS(koRegularFile)
public:
    explicit koRegularFile(const QString& path);

    // False with errorString() when the file cannot be opened, is not a regular file
    // (after following links) or holds more than maxSize bytes.
    bool open(qint64 maxSize);
    // The file for reading in pieces; open after a successful open().
    QIODevice& device() { return m_file; }
    QByteArray readAll();
    QString errorString() const { return m_error; }

    // Opens and reads the whole file; false with a message naming the file.
    static bool read(const QString& path, qint64 maxSize, QByteArray& data, QString* error);

private:
    // Why the open file is refused, or nothing when it can be read.
    QString check(int fd, qint64 maxSize);
    QString cannotRead(const QString& reason) const;
    bool fail(const QString& reason);

    QString m_path;
    QFile m_file;
    qint64 m_size = 0;
    QString m_error;
};
