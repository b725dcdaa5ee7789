#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koMainWindowService.h>

#include <QLibrary>
#include <QMainWindow>
#include <QtTest>

#include <dlfcn.h>

// Loads the built plug-in as the host does.
class tst_koReferenceEditorPlugin : public QObject
{
    Q_OBJECT

private slots:
    void initPluginRegistersOneModule();

private:
    koTestHost m_host;
};

namespace {

bool isMapped(const QString& file)
{
    void* handle = dlopen(QFile::encodeName(file).constData(), RTLD_NOW | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

} // namespace

void tst_koReferenceEditorPlugin::initPluginRegistersOneModule()
{
    auto* modules = koKernelServiceFactory::the()->getServiceOrNull<koMainWindowService>();
    const int before = modules->modules().size();
    QLibrary plugin(QStringLiteral(PLUGIN_FILE));
    QVERIFY2(plugin.load(), qPrintable(plugin.errorString()));
    const auto initPlugin = reinterpret_cast<void (*)()>(plugin.resolve("initPlugin"));
    QVERIFY(initPlugin);

    initPlugin();
    initPlugin();

    QCOMPARE(modules->modules().size(), before + 1);
    const koMainWindowService::Module& module = modules->modules().last();
    QCOMPARE(module.title, QStringLiteral("Reference Editor"));
    QCOMPARE(module.group, QStringLiteral("Scene"));
    QCOMPARE(module.toolClip, QStringLiteral("Toolclip_Assembly"));
    QCOMPARE(module.caption, QStringLiteral("References"));
    QVERIFY(!module.floating);
    QVERIFY(!module.icon.isNull());
    QVERIFY(qobject_cast<QMainWindow*>(module.window.data()));
    QVERIFY(module.window->parent() == nullptr);

    QVERIFY(plugin.unload());
    // The window goes with the library; a sanitizer build keeps libraries mapped.
    if (!isMapped(QStringLiteral(PLUGIN_FILE)))
        QVERIFY(module.window.isNull());
}

QTEST_MAIN(tst_koReferenceEditorPlugin)
#include "tst_koreferenceeditorplugin.moc"
