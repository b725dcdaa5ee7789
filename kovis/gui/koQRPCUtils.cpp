#include <kovis/koQRPCUtils.h>

#include <QEventLoop>
#include <QFutureWatcher>
#include <QtConcurrent>

koQRPCUtils* koQRPCUtils::the()
{
    static koQRPCUtils utils;
    return &utils;
}

void koQRPCUtils::callOffGuiThread(const std::function<void()>& call)
{
    QEventLoop loop;
    QFutureWatcher<void> watcher;
    QObject::connect(&watcher, &QFutureWatcher<void>::finished, &loop, &QEventLoop::quit);
    watcher.setFuture(QtConcurrent::run(call));
    if (!watcher.isFinished())
        loop.exec();
    watcher.waitForFinished();
}
