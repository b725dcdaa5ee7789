#pragma once

#include "koFileSnapshot.h"

#include <QFutureWatcher>
#include <QHash>
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
    struct Changes
    {
        QStringList paths;
        QVector<koFileSnapshot> snapshots;
    };

    void startCheck();
    void finishCheck();

    koReferenceEngine* m_engine;
    QTimer m_timer;
    QFutureWatcher<Changes> m_watcher;
    QHash<QString, QVector<quint64>> m_files;
    quint64 m_cacheGeneration = 0;
};
