#pragma once

#include "koFileSnapshot.h"

#include <kovis/koGlobal.h>

#include <QHash>
#include <QString>
#include <QStringList>

// The last known snapshot of every file the scene links to, so that queries never
// touch the disk. Snapshots are refreshed by monitoring and by operations on a file.
class KOVIS_EXPORT koFileStateCache
{
public:
    // Reads the file's snapshot from disk; safe to call from any thread.
    static koFileSnapshot read(const QString& path);

    // The cached snapshot; a path never seen before is read once.
    const koFileSnapshot& lookup(const QString& path);
    // Reads the file again; returns whether its snapshot changed.
    bool refresh(const QString& path);
    // Reads the files again, several at once: a project links to 200,000 of them.
    void refreshAll(const QStringList& paths);
    // Stores a snapshot read elsewhere; returns whether it changed.
    bool update(const QString& path, const koFileSnapshot& snapshot);
    void clear() { m_snapshots.clear(); ++m_generation; }
    QHash<QString, koFileSnapshot> snapshots() const { return m_snapshots; }
    // Rises whenever an operation reads a file again, so that a check started before
    // can tell that its snapshots may be older than the cache's.
    quint64 generation() const { return m_generation; }

private:
    quint64 m_generation = 0;
    QHash<QString, koFileSnapshot> m_snapshots;
};
