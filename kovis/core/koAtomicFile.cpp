#include "koAtomicFile.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int createBeside(const QByteArray& target, QByteArray& temporary)
{
    for (int attempt = 0; attempt < 16; ++attempt) {
        temporary = target + ".tmp-" + QByteArray::number(QRandomGenerator::global()->generate(), 36);
        const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

bool writeAll(int fd, const QByteArray& data)
{
    const char* next = data.constData();
    qint64 left = data.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, next, size_t(left));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        next += written;
        left -= written;
    }
    return true;
}

bool keepPermissions(int fd, const QByteArray& target)
{
    struct stat old;
    if (::stat(target.constData(), &old) != 0)
        return errno == ENOENT;
    return ::fchmod(fd, old.st_mode & 07777) == 0;
}

} // namespace

bool koAtomicFile::write(const QString& path, const QByteArray& data, QString* error)
{
    const QByteArray target = QFile::encodeName(path);
    QByteArray temporary;
    const int fd = createBeside(target, temporary);
    bool ok = fd >= 0 && writeAll(fd, data) && keepPermissions(fd, target) && ::fsync(fd) == 0;
    int cause = ok ? 0 : errno;
    if (fd >= 0 && ::close(fd) != 0 && ok) {
        ok = false;
        cause = errno;
    }
    if (ok && ::rename(temporary.constData(), target.constData()) != 0) {
        ok = false;
        cause = errno;
    }
    if (!ok) {
        if (fd >= 0)
            ::unlink(temporary.constData());
        if (error)
            *error = tr("%1 could not be written: %2").arg(QDir::toNativeSeparators(path), qt_error_string(cause));
    }
    return ok;
}
