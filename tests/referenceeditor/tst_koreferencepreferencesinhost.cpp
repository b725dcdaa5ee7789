#include "koPreferencesDialog.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koPreferencesCategory.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLibrary>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QtTest>

// The plug-in's page in the host's own preferences dialog, down to what the host does.
class tst_koReferencePreferencesInHost : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void notificationModeDecidesTheNotices_data();
    void notificationModeDecidesTheNotices();

private:
    int notices() const;

    koTestHost m_host;
    QLibrary m_plugin{QStringLiteral(PLUGIN_FILE)};
};

void tst_koReferencePreferencesInHost::initTestCase()
{
    QVERIFY2(m_plugin.load(), qPrintable(m_plugin.errorString()));
    const auto initPreferencesPlugin = reinterpret_cast<void (*)()>(m_plugin.resolve("initPreferencesPlugin"));
    QVERIFY(initPreferencesPlugin);
    initPreferencesPlugin();
    // A host seeds the store with the defaults once; the page alone falls back to "off".
    for (koPreferencesCategory* category : koPreferencesCategory::registeredCategories())
        category->initDefaults(false);
    koService<koReferenceService>()->loadPreferences();
}

void tst_koReferencePreferencesInHost::cleanupTestCase()
{
    QVERIFY(m_plugin.unload());
    // The store keeps the page's keys beyond the plug-in's life.
    koService<koPreferencesService>()->sync();
}

int tst_koReferencePreferencesInHost::notices() const
{
    int count = 0;
    for (const koLogService::Entry& entry : koService<koLogService>()->entries())
        count += entry.level == koLogService::Info;
    return count;
}

void tst_koReferencePreferencesInHost::notificationModeDecidesTheNotices_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<int>("atOpening");
    QTest::addColumn<int>("afterAChange");

    QTest::newRow("always") << "Always" << 0 << 1;
    QTest::newRow("at session start only") << "At session start only" << 1 << 0;
    QTest::newRow("off") << "Off" << 0 << 0;
}

// The mode chosen in the dialog reaches the host, which notices a missing file at opening
// or a file changed later as the mode says.
void tst_koReferencePreferencesInHost::notificationModeDecidesTheNotices()
{
    QFETCH(QString, mode);
    QFETCH(int, atOpening);
    QFETCH(int, afterAChange);

    koPreferencesDialog dialog;
    auto* categories = dialog.findChild<QListWidget*>(QStringLiteral("PreferencesCategories"));
    const QList<QListWidgetItem*> items = categories->findItems(QStringLiteral("References"), Qt::MatchExactly);
    QCOMPARE(items.size(), 1);
    categories->setCurrentItem(items.first());
    QWidget* page = dialog.findChild<QStackedWidget*>()->currentWidget();
    page->findChild<QComboBox*>(QStringLiteral("m_changeNotificationMode"))->setCurrentText(mode);
    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    const QString part = m_host.writeFile(QStringLiteral("part.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Part\nf 1 2 3\n");
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::reference("Gone", QString(), "gone.obj"), koTestHost::reference("Part", QString(), "part.obj")});
    koService<koLogService>()->clear();

    QVERIFY(koService<koFileIOService>()->loadProject(project));
    QCOMPARE(notices(), atOpening);
    koTestHost::setModified(part, QDateTime::currentDateTime().addDays(1));
    koService<koReferenceService>()->checkFiles();
    QCOMPARE(notices(), atOpening + afterAChange);
}

QTEST_MAIN(tst_koReferencePreferencesInHost)
#include "tst_koreferencepreferencesinhost.moc"
