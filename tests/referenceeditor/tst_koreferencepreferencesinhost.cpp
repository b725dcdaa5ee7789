#include "koGeneralPreferencesPage.h"
#include "koPreferencesDialog.h"
#include "koReferenceFlatModelItem.h"
#include "koReferenceTreeModel.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koPreferencesCategory.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLibrary>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(QDialogButtonBox::StandardButton)

namespace {

const QString intervalKey = QStringLiteral("Reference Update Monitoring Interval");

koPreferencesCategory* referencesPage()
{
    for (koPreferencesCategory* category : koPreferencesCategory::registeredCategories()) {
        if (category->getName() == QLatin1String("References"))
            return category;
    }
    qFatal("the plug-in registered no References page");
}

} // namespace

// The plug-in's page in the host's own preferences dialog, down to what the host does.
class tst_koReferencePreferencesInHost : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void dialogButtonsReachTheReferenceService_data();
    void dialogButtonsReachTheReferenceService();
    void notificationModeDecidesTheNotices_data();
    void notificationModeDecidesTheNotices();
    void storeModeDecidesWhereNewSmartFilesGo_data();
    void storeModeDecidesWhereNewSmartFilesGo();
    void colouredStateTextsCanBeSwitchedOff();

private:
    // Opens the dialog on a page, lets edit change its widgets, then presses the buttons.
    void useDialog(const QString& pageName, const std::function<void(QWidget*)>& edit,
                   const QList<QDialogButtonBox::StandardButton>& buttons);
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
}

void tst_koReferencePreferencesInHost::init()
{
    // A host seeds the store with the defaults once; the page alone falls back to "off".
    referencesPage()->initDefaults(false);
    koService<koReferenceService>()->loadPreferences();
    koService<koLogService>()->clear();
}

void tst_koReferencePreferencesInHost::cleanupTestCase()
{
    QVERIFY(m_plugin.unload());
    // The store keeps the page's keys beyond the plug-in's life.
    koService<koPreferencesService>()->sync();
}

void tst_koReferencePreferencesInHost::useDialog(const QString& pageName, const std::function<void(QWidget*)>& edit,
                                                 const QList<QDialogButtonBox::StandardButton>& buttons)
{
    koPreferencesDialog dialog;
    auto* categories = dialog.findChild<QListWidget*>(QStringLiteral("PreferencesCategories"));
    const QList<QListWidgetItem*> items = categories->findItems(pageName, Qt::MatchExactly);
    QCOMPARE(items.size(), 1);
    categories->setCurrentItem(items.first());
    edit(dialog.findChild<QStackedWidget*>()->currentWidget());
    for (QDialogButtonBox::StandardButton button : buttons)
        dialog.findChild<QDialogButtonBox*>()->button(button)->click();
}

int tst_koReferencePreferencesInHost::notices() const
{
    int count = 0;
    for (const koLogService::Entry& entry : koService<koLogService>()->entries())
        count += entry.level == koLogService::Info;
    return count;
}

void tst_koReferencePreferencesInHost::dialogButtonsReachTheReferenceService_data()
{
    using Buttons = QList<QDialogButtonBox::StandardButton>;
    QTest::addColumn<int>("storedInterval");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<Buttons>("buttons");
    // the host's interval in milliseconds, the stored one in seconds, and a warning if any
    QTest::addColumn<QString>("expected");

    QTest::newRow("apply") << 5 << "7" << Buttons{QDialogButtonBox::Apply} << "7000 7";
    QTest::newRow("ok") << 5 << "12" << Buttons{QDialogButtonBox::Ok} << "12000 12";
    QTest::newRow("cancel") << 5 << "9" << Buttons{QDialogButtonBox::Cancel} << "5000 5";
    QTest::newRow("restore defaults, OK") << 30 << QString()
                                          << Buttons{QDialogButtonBox::RestoreDefaults, QDialogButtonBox::Ok} << "5000 5";
    QTest::newRow("restore defaults, cancel")
        << 30 << QString() << Buttons{QDialogButtonBox::RestoreDefaults, QDialogButtonBox::Cancel} << "30000 30";
    QTest::newRow("group separator typed") << 5 << "1,000" << Buttons{QDialogButtonBox::Ok} << "1000000 1000";
    QTest::newRow("zero while monitoring") << 5 << "0" << Buttons{QDialogButtonBox::Ok} << "5000 0 warned";
}

void tst_koReferencePreferencesInHost::dialogButtonsReachTheReferenceService()
{
    QFETCH(int, storedInterval);
    QFETCH(QString, typed);
    QFETCH(QList<QDialogButtonBox::StandardButton>, buttons);
    QFETCH(QString, expected);
    koService<koPreferencesService>()->setIntValue(intervalKey, storedInterval, false);
    koService<koReferenceService>()->loadPreferences();

    useDialog(QStringLiteral("References"), [&](QWidget* page) {
        QCOMPARE(page->objectName(), QStringLiteral("koReferencePreferencesGUI"));
        auto* interval = page->findChild<QLineEdit*>(QStringLiteral("m_updateMonitoringInterval"));
        QCOMPARE(interval->text(), QString::number(storedInterval));
        if (!typed.isNull()) {
            interval->clear();
            QTest::keyClicks(interval, typed);
        }
    }, buttons);

    const bool warned = koService<koLogService>()->lastMessage().contains(QStringLiteral("Untick Enable"));
    QCOMPARE(QStringLiteral("%1 %2%3")
                 .arg(koService<koReferenceService>()->getUpdateMonitoringInterval())
                 .arg(koService<koPreferencesService>()->getIntValue(intervalKey, -1))
                 .arg(warned ? QStringLiteral(" warned") : QString()),
             expected);
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

void tst_koReferencePreferencesInHost::notificationModeDecidesTheNotices()
{
    QFETCH(QString, mode);
    QFETCH(int, atOpening);
    QFETCH(int, afterAChange);
    useDialog(QStringLiteral("References"), [&](QWidget* page) {
        page->findChild<QComboBox*>(QStringLiteral("m_changeNotificationMode"))->setCurrentText(mode);
    }, {QDialogButtonBox::Ok});
    const QString part = m_host.writeFile(QStringLiteral("notices/part.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Part\nf 1 2 3\n");
    const QString project = m_host.writeProject(
        QStringLiteral("notices/project.kpr"),
        {koTestHost::reference("Gone", QString(), "gone.obj"), koTestHost::reference("Part", QString(), "part.obj")});
    koService<koLogService>()->clear();

    QVERIFY(koService<koFileIOService>()->loadProject(project));
    QCOMPARE(notices(), atOpening);
    koTestHost::setModified(part, QDateTime::currentDateTime().addDays(1));
    koService<koReferenceService>()->checkFiles();
    QCOMPARE(notices(), atOpening + afterAChange);
}

void tst_koReferencePreferencesInHost::storeModeDecidesWhereNewSmartFilesGo_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("expected");

    QTest::newRow("source file location, no source") << "Source file location" << "store/project/Seat.kpr";
    QTest::newRow("custom") << "Custom" << "store/custom/Seat.kpr";
}

void tst_koReferencePreferencesInHost::storeModeDecidesWhereNewSmartFilesGo()
{
    QFETCH(QString, mode);
    QFETCH(QString, expected);
    const QString custom = m_host.path(QStringLiteral("store/custom"));
    QDir().mkpath(custom);
    useDialog(QStringLiteral("References"), [&](QWidget* page) {
        page->findChild<QLineEdit*>(QStringLiteral("m_smartReferenceStoreLocation"))->setText(custom);
        page->findChild<QComboBox*>(QStringLiteral("m_smartReferenceStore"))->setCurrentText(mode);
    }, {QDialogButtonBox::Ok});
    const QString project = m_host.writeProject(QStringLiteral("store/project/project.kpr"),
                                                {koTestHost::group("Seat", {koTestHost::geometry("Saddle")})});
    QVERIFY(koService<koFileIOService>()->loadProject(project));
    koService<koReferenceService>()->convertToSmartReference(koTestHost::findNode(QStringLiteral("Seat")));

    QVERIFY(koService<koFileIOService>()->saveProject());
    QCOMPARE(koTestHost::findReference(QStringLiteral("Seat")).getSmartPath(), m_host.path(expected));
    QVERIFY(QFile::exists(m_host.path(expected)));
}

void tst_koReferencePreferencesInHost::colouredStateTextsCanBeSwitchedOff()
{
    // Nothing in this process has read the setting yet: the model reads it once.
    koGeneralPreferencesPage general;
    general.initDefaults(false);
    useDialog(QStringLiteral("General"), [](QWidget* page) {
        page->findChild<QCheckBox*>(QStringLiteral("m_colouredStateTexts"))->setChecked(false);
    }, {QDialogButtonBox::Ok});
    m_host.writeFile(QStringLiteral("plain/rim.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Rim\nf 1 2 3\n");
    QVERIFY(koService<koFileIOService>()->loadProject(
        m_host.writeProject(QStringLiteral("plain/project.kpr"), {koTestHost::reference("Wheel", QString(), "rim.obj")})));

    struct Model : koReferenceTreeModel
    {
        Model() { setRootItem(new koReferenceFlatModelItem(kodNode())); }
    } model;
    const kodNode wheel = koTestHost::findNode(QStringLiteral("Wheel"));
    QCOMPARE(model.indexFromId(QVariant::fromValue(wheel), 0).data().toString(), QStringLiteral("Wheel [rim.obj]"));
}

QTEST_MAIN(tst_koReferencePreferencesInHost)
#include "tst_koreferencepreferencesinhost.moc"
