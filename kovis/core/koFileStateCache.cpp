#include "koFileStateCache.h"

#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>

namespace {

// Looking an owner up by id is slow; a scene links to thousands of files of few owners.
QString ownerName(const QFileInfo& info)
{
    static QMutex mutex;
    static QHash<uint, QString> names;
    const uint id = info.ownerId();
    QMutexLocker locker(&mutex);
    auto it = names.constFind(id);
    if (it == names.constEnd())
        it = names.insert(id, info.owner());
    return it.value();
}

} // namespace

koFileSnapshot koFileStateCache::read(const QString& path)
{
    koFileSnapshot snapshot;
    if (path.isEmpty())
        return snapshot;
    const QFileInfo info(path);
    snapshot.exists = info.isFile();
    if (!snapshot.exists)
        return snapshot;
    snapshot.modified = info.lastModified();
    snapshot.created = info.birthTime().isValid() ? info.birthTime() : info.metadataChangeTime();
    snapshot.owner = ownerName(info);
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
