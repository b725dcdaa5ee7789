#include "koRegularFile.h"

#include <QDir>
#include <QLocale>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

koRegularFile::koRegularFile(const QString& path)
    : m_path(path)
{
}

bool koRegularFile::open(qint64 maxSize)
{
    const int fd = ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return fail(cannotRead(qt_error_string(errno)));
    QString refusal = check(fd, maxSize);
    if (refusal.isEmpty() && !m_file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        refusal = cannotRead(m_file.errorString());
    if (refusal.isEmpty())
        return true;
    ::close(fd);
    return fail(refusal);
}

QByteArray koRegularFile::readAll()
{
    // A file that grows while it is read is cut at the size it was opened with.
    return m_file.read(m_size);
}

bool koRegularFile::read(const QString& path, qint64 maxSize, QByteArray& data, QString* error)
{
    koRegularFile file(path);
    if (!file.open(maxSize)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    data = file.readAll();
    return true;
}

QString koRegularFile::check(int fd, qint64 maxSize)
{
    struct stat status;
    if (::fstat(fd, &status) != 0)
        return cannotRead(qt_error_string(errno));
    if (!S_ISREG(status.st_mode))
        return tr("%1 is not a regular file").arg(QDir::toNativeSeparators(m_path));
    if (status.st_size > maxSize) {
        return tr("%1 is larger than the limit of %2")
            .arg(QDir::toNativeSeparators(m_path), QLocale().formattedDataSize(maxSize, 0));
    }
    m_size = status.st_size;
    return QString();
}

QString koRegularFile::cannotRead(const QString& reason) const
{
    return tr("%1 cannot be read: %2").arg(QDir::toNativeSeparators(m_path), reason);
}

bool koRegularFile::fail(const QString& reason)
{
    m_error = reason;
    return false;
}
