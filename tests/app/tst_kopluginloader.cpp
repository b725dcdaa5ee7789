#include "koPluginLoader.h"
#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koMainWindowService.h>

#include <QDir>
#include <QFile>
#include <QtTest>

class tst_koPluginLoader : public QObject
{
    Q_OBJECT

private slots:
    void loadsGoodPluginsAndSkipsBrokenOnes();
    void folderComesFromTheEnvironment();

private:
    koTestHost m_host;
};

void tst_koPluginLoader::loadsGoodPluginsAndSkipsBrokenOnes()
{
    const QString folder = m_host.path(QStringLiteral("plugins"));
    QDir().mkpath(folder);
    QVERIFY(QFile::copy(QStringLiteral(GOOD_PLUGIN), folder + QStringLiteral("/libgood.so")));
    QVERIFY(QFile::copy(QStringLiteral(NO_ENTRY_PLUGIN), folder + QStringLiteral("/libnoentry.so")));
    m_host.writeFile(QStringLiteral("plugins/libgarbage.so"), "not a library");
    m_host.writeFile(QStringLiteral("plugins/readme.txt"), "not a plug-in either");
    auto* modules = koService<koMainWindowService>();
    const int before = modules->modules().size();

    koPluginLoader loader;
    const QList<koPluginLoader::Outcome> outcomes = loader.loadFolder(folder);

    QStringList loaded;
    for (const koPluginLoader::Outcome& outcome : outcomes)
        loaded << QFileInfo(outcome.file).fileName() + (outcome.loaded ? " loaded" : outcome.error.isEmpty() ? " unexplained" : " refused");
    QCOMPARE(loaded, (QStringList{"libgarbage.so refused", "libgood.so loaded", "libnoentry.so refused"}));
    QCOMPARE(modules->modules().size(), before + 2);
    QCOMPARE(modules->modules().at(before).title, QStringLiteral("Probe"));
    QCOMPARE(modules->modules().at(before + 1).title, QStringLiteral("Probe Preferences"));
    const auto log = koService<koLogService>()->entries();
    QCOMPARE(std::count_if(log.cbegin(), log.cend(), [](const auto& e) { return e.category == "Plug-ins"; }), 2);
}

void tst_koPluginLoader::folderComesFromTheEnvironment()
{
    qputenv("KOVIS_PLUGIN_PATH", "/some/where");
    QCOMPARE(koPluginLoader::pluginFolder(), QStringLiteral("/some/where"));
    qunsetenv("KOVIS_PLUGIN_PATH");
    QCOMPARE(koPluginLoader::pluginFolder(), QCoreApplication::applicationDirPath() + QStringLiteral("/plugins"));
}

QTEST_MAIN(tst_koPluginLoader)
#include "tst_kopluginloader.moc"
