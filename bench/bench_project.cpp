#include "koBenchScene.h"
#include "koFileMonitor.h"
#include "koReferenceEngine.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

// Opening, saving and watching a project of 101,101 references, each beside its floor:
// what reading or writing the same JSON and looking at the same files costs at the least.
namespace {

constexpr int runs = 3;

double medianMs(const std::function<void()>& work)
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

void print(const char* name, double ours, double floor)
{
    std::printf("%s: %.1f ms\n%s floor: %.1f ms\n%s ratio: %.2f\n", name, ours, name, floor, name, ours / floor);
}

// Every link of the file with one stat each, as the project asks of its files.
void statLinks(const QJsonObject& node, const QString& folder)
{
    for (const char* key : {"smart", "source"}) {
        const QString link = node.value(QLatin1String(key)).toString();
        struct stat status;
        if (!link.isEmpty())
            stat(QFile::encodeName(folder + QLatin1Char('/') + link).constData(), &status);
    }
    for (const QJsonValue child : node.value(QLatin1String("children")).toArray())
        statLinks(child.toObject(), folder);
}

double loadFloor(const QString& project)
{
    return medianMs([&] {
        QFile file(project);
        file.open(QIODevice::ReadOnly);
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
        statLinks(document.object().value(QLatin1String("root")).toObject(), QFileInfo(project).path());
    });
}

double saveFloor(const QString& project, const QString& copy)
{
    QFile file(project);
    file.open(QIODevice::ReadOnly);
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    return medianMs([&] {
        QFile out(copy);
        out.open(QIODevice::WriteOnly);
        out.write(document.toJson(QJsonDocument::Indented));
        out.flush();
        out.close();
    });
}

// The longest the GUI thread waits for a zero-time timer while monitoring checks every file.
double monitoringStall()
{
    koReferenceEngine* engine = koHost::engine();
    QElapsedTimer sinceTick;
    double longest = 0;
    QTimer ticks;
    ticks.setInterval(0);
    QObject::connect(&ticks, &QTimer::timeout, [&] {
        longest = std::max(longest, sinceTick.nsecsElapsed() / 1e6);
        sinceTick.restart();
    });
    bool finished = false;
    QObject::connect(engine->monitor(), &koFileMonitor::checkFinished, [&] { finished = true; });
    engine->setMonitoringEnabled(true);
    engine->setMonitoringInterval(1);
    sinceTick.start();
    ticks.start();
    while (!finished)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    engine->setMonitoringEnabled(false);
    return longest;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    koTestHost host;
    const QString project = koBenchScene::write(host, koBenchScene::partsFrom(application.arguments()));
    auto* fileIO = koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>();
    koHost::engine()->setMonitoringEnabled(false);

    print("project load", medianMs([&] { fileIO->loadProject(project); }), loadFloor(project));
    koHost::engine()->setMonitoringEnabled(false);
    // Each run saves under a new name: saving an unchanged project where it lies writes nothing.
    int copies = 0;
    const auto saveCopy = [&] { fileIO->saveProject(host.path(QStringLiteral("copy%1.kpr").arg(++copies))); };
    print("project save", medianMs(saveCopy), saveFloor(project, host.path(QStringLiteral("floor.kpr"))));
    std::printf("monitoring check, longest GUI stall: %.1f ms\n", monitoringStall());
    return 0;
}
