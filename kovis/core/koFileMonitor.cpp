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
    m_cacheGeneration = m_engine->fileCache().generation();
    // The worker groups the links and compares with what is known, so the window's
    // thread only copies a list and handles the changes.
    const QVector<koReferenceFileStates::LinkedFile> links = m_engine->fileStates().linkedFiles();
    const QHash<QString, koFileSnapshot> known = m_engine->fileCache().snapshots();
    m_watcher.setFuture(QtConcurrent::run(&koReferenceFileStates::readChanges, links, known));
}

void koFileMonitor::finishCheck()
{
    // An operation read some file again meanwhile; its snapshot is newer than ours.
    if (m_engine->fileCache().generation() == m_cacheGeneration)
        m_engine->fileStates().applyChanges(m_watcher.result());
    emit checkFinished();
}
