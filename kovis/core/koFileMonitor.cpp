#include "koFileMonitor.h"

#include "koFileStateCache.h"
#include "koReferenceEngine.h"

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
    m_files = m_engine->linkedFiles();
    m_paths = m_files.keys();
    m_cacheGeneration = m_engine->fileCache().generation();
    const QStringList paths = m_paths;
    m_watcher.setFuture(QtConcurrent::run([paths] {
        QVector<koFileSnapshot> snapshots;
        snapshots.reserve(paths.size());
        for (const QString& path : paths)
            snapshots.append(koFileStateCache::read(path));
        return snapshots;
    }));
}

void koFileMonitor::finishCheck()
{
    // An operation read some file again meanwhile; its snapshot is newer than ours.
    if (m_engine->fileCache().generation() == m_cacheGeneration)
        m_engine->applySnapshots(m_files, m_paths, m_watcher.result());
    m_files.clear();
    m_paths.clear();
    emit checkFinished();
}
