#pragma once

#include <QDateTime>
#include <QString>
#include <QTemporaryDir>

// Brings the host up once per test process, with preferences in a temporary file, and
// gives each test a fresh empty scene and a temporary folder for its files.
class koTestHost
{
public:
    koTestHost();
    ~koTestHost();

    QString path(const QString& relative) const;
    QString writeFile(const QString& relative, const QByteArray& content) const;
    // Sets the file's modification time (and with it what the host sees on disk).
    static void setModified(const QString& path, const QDateTime& time);

private:
    QTemporaryDir m_dir;
};
