#pragma once

#include "koFileSnapshot.h"
#include "koReferenceFileStates.h"

#include <QFutureWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVector>

class koReferenceEngine;

// Re-reads the linked files of the scene at an interval. The files are read on a
// worker thread so that a large scene on a slow share never blocks the window.
class koFileMonitor : public QObject
{
    Q_OBJECT
public:
    explicit koFileMonitor(koReferenceEngine* engine);
    ~koFileMonitor() override;

    void setEnabled(bool enabled);
    void setInterval(int milliseconds);
    bool isEnabled() const { return m_timer.isActive(); }
    int interval() const { return m_timer.interval(); }

signals:
    void checkFinished();

private:
    void startCheck();
    void finishCheck();

    koReferenceEngine* m_engine;
    QTimer m_timer;
    QFutureWatcher<QVector<koReferenceFileStates::FileChange>> m_watcher;
    quint64 m_cacheGeneration = 0;
};
