#include "koFileMonitor.h"

#include "koFileStateCache.h"
#include "koReferenceEngine.h"
#include "koReferenceFileStates.h"

#include <QtConcurrent>

koFileMonitor::koFileMonitor(koReferenceEngine* engine)
    : m_engine(engine)
{
    m_timer.setInterval(engine->settings().monitoringInterval);
    connect(&m_timer, &QTimer::timeout, this, &koFileMonitor::startCheck);
    connect(&m_watcher, &QFutureWatcherBase::finished, this, &koFileMonitor::finishCheck);
    setEnabled(engine->settings().monitoringEnabled);
}

koFileMonitor::~koFileMonitor()
{
    m_timer.stop();
    m_watcher.waitForFinished();
}

void koFileMonitor::setEnabled(bool enabled)
{
    if (enabled && m_timer.interval() > 0)
        m_timer.start();
    else
        m_timer.stop();
}

void koFileMonitor::setInterval(int milliseconds)
{
    const bool enabled = m_engine->settings().monitoringEnabled;
    m_timer.setInterval(qMax(0, milliseconds));
    setEnabled(enabled);
}

void koFileMonitor::startCheck()
{
    if (m_watcher.isRunning())
        return;
    m_files = m_engine->fileStates().linkedFiles();
    m_cacheGeneration = m_engine->fileCache().generation();
    // The worker compares with what is known, so the window only handles changes.
    const QHash<QString, QVector<quint64>> files = m_files;
    const QHash<QString, koFileSnapshot> known = m_engine->fileCache().snapshots();
    m_watcher.setFuture(QtConcurrent::run([files, known] {
        Changes changes;
        for (auto file = files.cbegin(); file != files.cend(); ++file) {
            koFileSnapshot snapshot = koFileStateCache::read(file.key());
            if (snapshot != known.value(file.key())) {
                changes.paths.append(file.key());
                changes.snapshots.append(std::move(snapshot));
            }
        }
        return changes;
    }));
}

void koFileMonitor::finishCheck()
{
    // An operation read some file again meanwhile; its snapshot is newer than ours.
    if (m_engine->fileCache().generation() == m_cacheGeneration) {
        const Changes changes = m_watcher.result();
        m_engine->fileStates().applySnapshots(m_files, changes.paths, changes.snapshots);
    }
    m_files.clear();
    emit checkFinished();
}
