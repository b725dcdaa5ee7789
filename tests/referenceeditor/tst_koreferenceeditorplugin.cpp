#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koMainWindowService.h>

#include <QLibrary>
#include <QMainWindow>
#include <QtTest>

// Loads the built plug-in as the host does.
class tst_koReferenceEditorPlugin : public QObject
{
    Q_OBJECT

private slots:
    void entryRegistersTheModuleOnce();

private:
    koTestHost m_host;
};

void tst_koReferenceEditorPlugin::entryRegistersTheModuleOnce()
{
    QLibrary plugin(QStringLiteral(PLUGIN_FILE));
    QVERIFY2(plugin.load(), qPrintable(plugin.errorString()));
    const auto initPlugin = reinterpret_cast<void (*)()>(plugin.resolve("initPlugin"));
    QVERIFY(initPlugin);
    // The second call must find everything made by the first.
    initPlugin();
    initPlugin();
    QStringList modules;
    for (const koMainWindowService::Module& module : koService<koMainWindowService>()->modules()) {
        const auto* window = qobject_cast<QMainWindow*>(module.window.data());
        modules << QStringLiteral("%1%2%3").arg(module.title, module.icon.isNull() ? QString() : QStringLiteral(", icon"),
                                              window && !window->parent() ? QStringLiteral(", own window") : QString());
    }
    QCOMPARE(modules, QStringList{"Reference Editor, icon, own window"});
}

QTEST_MAIN(tst_koReferenceEditorPlugin)
#include "tst_koreferenceeditorplugin.moc"
