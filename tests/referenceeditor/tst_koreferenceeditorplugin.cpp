#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koMainWindowService.h>
#include <kovis/koPreferencesCategory.h>

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
    void initPreferencesPluginRegistersOnePage();

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

// The second call must find everything made by the first.
void callTwice(QLibrary& plugin, const char* entry)
{
    QVERIFY2(plugin.load(), qPrintable(plugin.errorString()));
    const auto function = reinterpret_cast<void (*)()>(plugin.resolve(entry));
    QVERIFY2(function, entry);
    function();
    function();
}

QList<koPreferencesCategory*> categoriesNamed(const QString& name)
{
    QList<koPreferencesCategory*> named;
    for (koPreferencesCategory* category : koPreferencesCategory::registeredCategories()) {
        if (category->getName() == name)
            named.append(category);
    }
    return named;
}

} // namespace

void tst_koReferenceEditorPlugin::initPluginRegistersOneModule()
{
    auto* modules = koService<koMainWindowService>();
    const int before = modules->modules().size();
    QLibrary plugin(QStringLiteral(PLUGIN_FILE));
    callTwice(plugin, "initPlugin");
    if (QTest::currentTestFailed())
        return;

    QCOMPARE(modules->modules().size(), before + 1);
    const koMainWindowService::Module& module = modules->modules().last();
    // The title stands for the registration texts; no other test sees this module registered.
    QCOMPARE(module.title, QStringLiteral("Reference Editor"));
    QVERIFY(!module.icon.isNull());
    QVERIFY(qobject_cast<QMainWindow*>(module.window.data()));
    QVERIFY(module.window->parent() == nullptr);

    QVERIFY(plugin.unload());
    // The window goes with the library; a sanitizer build keeps libraries mapped.
    if (!isMapped(QStringLiteral(PLUGIN_FILE)))
        QVERIFY(module.window.isNull());
}

void tst_koReferenceEditorPlugin::initPreferencesPluginRegistersOnePage()
{
    QVERIFY(categoriesNamed(QStringLiteral("References")).isEmpty());
    QLibrary plugin(QStringLiteral(PLUGIN_FILE));
    callTwice(plugin, "initPreferencesPlugin");
    if (QTest::currentTestFailed())
        return;

    const QList<koPreferencesCategory*> pages = categoriesNamed(QStringLiteral("References"));
    QCOMPARE(pages.size(), 1);
    QCOMPARE(pages.first()->objectName(), QStringLiteral("koReferencePreferencesGUI"));

    QVERIFY(plugin.unload());
    if (!isMapped(QStringLiteral(PLUGIN_FILE)))
        QVERIFY(categoriesNamed(QStringLiteral("References")).isEmpty());
}

QTEST_MAIN(tst_koReferenceEditorPlugin)
#include "tst_koreferenceeditorplugin.moc"
