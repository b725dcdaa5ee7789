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
    void entryRegistersOnceUntilUnloaded_data();
    void entryRegistersOnceUntilUnloaded();

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

// The modules with what they show and the preferences pages of the process.
QStringList registered()
{
    QStringList names;
    for (const koMainWindowService::Module& module : koService<koMainWindowService>()->modules()) {
        const auto* window = qobject_cast<QMainWindow*>(module.window.data());
        names << QStringLiteral("module %1%2%3")
                     .arg(module.title, module.icon.isNull() ? QString() : QStringLiteral(", icon"),
                          window && !window->parent() ? QStringLiteral(", own window") : QString());
    }
    for (const koPreferencesCategory* category : koPreferencesCategory::registeredCategories())
        names << QStringLiteral("page %1 %2").arg(category->getName(), category->objectName());
    return names;
}

} // namespace

void tst_koReferenceEditorPlugin::entryRegistersOnceUntilUnloaded_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("added");
    // What stays when the library is gone: the module's entry, without its window.
    QTest::addColumn<QStringList>("left");

    // The title stands for the registration texts; no other test sees this module registered.
    QTest::newRow("initPlugin") << "initPlugin" << "module Reference Editor, icon, own window"
                                << QStringList{"module Reference Editor, icon"};
    QTest::newRow("initPreferencesPlugin") << "initPreferencesPlugin" << "page References koReferencePreferencesGUI"
                                           << QStringList();
}

void tst_koReferenceEditorPlugin::entryRegistersOnceUntilUnloaded()
{
    QFETCH(QString, entry);
    QFETCH(QString, added);
    QFETCH(QStringList, left);

    const QStringList before = registered();
    QLibrary plugin(QStringLiteral(PLUGIN_FILE));
    QVERIFY2(plugin.load(), qPrintable(plugin.errorString()));
    const auto function = reinterpret_cast<void (*)()>(plugin.resolve(qPrintable(entry)));
    QVERIFY(function);
    // The second call must find everything made by the first.
    function();
    function();
    QCOMPARE(registered(), before + QStringList{added});

    QVERIFY(plugin.unload());
    // A sanitizer build keeps libraries mapped.
    if (!isMapped(QStringLiteral(PLUGIN_FILE)))
        QCOMPARE(registered(), before + left);
}

QTEST_MAIN(tst_koReferenceEditorPlugin)
#include "tst_koreferenceeditorplugin.moc"
