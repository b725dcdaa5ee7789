#include "koFileStateCache.h"

#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QtConcurrent>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

// Looking an owner up by id is slow; a scene links to thousands of files of few owners.
QString ownerName(uint id, const QString& path)
{
    static QMutex mutex;
    static QHash<uint, QString> names;
    QMutexLocker locker(&mutex);
    auto it = names.constFind(id);
    if (it == names.constEnd())
        it = names.insert(id, QFileInfo(path).owner());
    return it.value();
}

// In UTC: converting to local time costs more than the stat itself, and a scene links
// to 200,000 files. Readers convert the few dates they show.
QDateTime utcDate(const struct statx_timestamp& stamp)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(stamp.tv_sec) * 1000 + stamp.tv_nsec / 1000000, Qt::UTC);
}

} // namespace

koFileSnapshot koFileStateCache::read(const QString& path)
{
    koFileSnapshot snapshot;
    if (path.isEmpty())
        return snapshot;
    // One call for the type, both dates and the owner, following links as a user would.
    struct statx status = {};
    const QByteArray name = QFile::encodeName(path);
    const unsigned int wanted = STATX_TYPE | STATX_MTIME | STATX_CTIME | STATX_BTIME | STATX_UID;
    if (statx(AT_FDCWD, name.constData(), 0, wanted, &status) != 0 || !S_ISREG(status.stx_mode))
        return snapshot;
    snapshot.exists = true;
    snapshot.modified = utcDate(status.stx_mtime);
    snapshot.created = utcDate((status.stx_mask & STATX_BTIME) ? status.stx_btime : status.stx_ctime);
    snapshot.owner = ownerName(status.stx_uid, path);
    return snapshot;
}

const koFileSnapshot& koFileStateCache::lookup(const QString& path)
{
    auto it = m_snapshots.find(path);
    if (it == m_snapshots.end())
        it = m_snapshots.insert(path, read(path));
    return it.value();
}

bool koFileStateCache::refresh(const QString& path)
{
    ++m_generation;
    return update(path, read(path));
}

void koFileStateCache::refreshAll(const QStringList& paths)
{
    ++m_generation;
    const QVector<koFileSnapshot> snapshots =
        QtConcurrent::blockingMapped<QVector<koFileSnapshot>>(paths, &koFileStateCache::read);
    m_snapshots.reserve(m_snapshots.size() + paths.size());
    for (int i = 0; i < paths.size(); ++i)
        update(paths.at(i), snapshots.at(i));
}

bool koFileStateCache::update(const QString& path, const koFileSnapshot& snapshot)
{
    auto it = m_snapshots.find(path);
    if (it == m_snapshots.end()) {
        m_snapshots.insert(path, snapshot);
        return true;
    }
    if (it.value() == snapshot)
        return false;
    it.value() = snapshot;
    return true;
}
