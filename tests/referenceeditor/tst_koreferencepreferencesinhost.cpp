#include "koPreferencesDialog.h"
#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesCategory.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>

#include <QDialogButtonBox>
#include <QLibrary>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QtTest>

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

// The plug-in's page in the host's own preferences dialog, down to the reference service.
class tst_koReferencePreferencesInHost : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void dialogButtonsReachTheReferenceService_data();
    void dialogButtonsReachTheReferenceService();

private:
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

void tst_koReferencePreferencesInHost::cleanupTestCase()
{
    QVERIFY(m_plugin.unload());
    // The store keeps the page's keys beyond the plug-in's life.
    koService<koPreferencesService>()->sync();
}

void tst_koReferencePreferencesInHost::dialogButtonsReachTheReferenceService_data()
{
    QTest::addColumn<int>("storedInterval");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QDialogButtonBox::StandardButton>("button");
    QTest::addColumn<int>("hostInterval");

    QTest::newRow("apply") << 5 << "7" << QDialogButtonBox::Apply << 7000;
    QTest::newRow("ok") << 5 << "12" << QDialogButtonBox::Ok << 12000;
    QTest::newRow("cancel") << 5 << "9" << QDialogButtonBox::Cancel << 5000;
    QTest::newRow("restore defaults") << 30 << QString() << QDialogButtonBox::RestoreDefaults << 5000;
}

void tst_koReferencePreferencesInHost::dialogButtonsReachTheReferenceService()
{
    QFETCH(int, storedInterval);
    QFETCH(QString, typed);
    QFETCH(QDialogButtonBox::StandardButton, button);
    QFETCH(int, hostInterval);

    // A host seeds the store with the defaults once; the page alone falls back to "off".
    referencesPage()->initDefaults(false);
    koService<koPreferencesService>()->setIntValue(intervalKey, storedInterval, false);
    koService<koReferenceService>()->loadPreferences();

    koPreferencesDialog dialog;
    auto* categories = dialog.findChild<QListWidget*>(QStringLiteral("PreferencesCategories"));
    const QList<QListWidgetItem*> items = categories->findItems(QStringLiteral("References"), Qt::MatchExactly);
    QCOMPARE(items.size(), 1);
    categories->setCurrentItem(items.first());
    QWidget* page = dialog.findChild<QStackedWidget*>()->currentWidget();
    QCOMPARE(page->objectName(), QStringLiteral("koReferencePreferencesGUI"));
    auto* interval = page->findChild<QLineEdit*>(QStringLiteral("m_updateMonitoringInterval"));
    QCOMPARE(interval->text(), QString::number(storedInterval));

    if (!typed.isNull()) {
        interval->clear();
        QTest::keyClicks(interval, typed);
    }
    dialog.findChild<QDialogButtonBox*>()->button(button)->click();

    QCOMPARE(koService<koReferenceService>()->getUpdateMonitoringInterval(), hostInterval);
}

QTEST_MAIN(tst_koReferencePreferencesInHost)
#include "tst_koreferencepreferencesinhost.moc"
