#include "koInstalledService.h"
#include "koReferencePreferencesGUII.h"
#include "koScriptedFileDialog.h"
#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>

#include <QSignalSpy>
#include <QtTest>

namespace {

const QString monitoringKey = QStringLiteral("Reference Change Monitoring Enabled");
const QString convertWarningKey = QStringLiteral("Reference Show Convert to Smart Warning Enabled");
const QString notificationKey = QStringLiteral("Reference change notification mode");
const QString storeModeKey = QStringLiteral("Reference Smart Reference Store mode");
const QString storeLocationKey = QStringLiteral("Reference Smart Reference Store Location");
const QString loadModeKey = QStringLiteral("Reference Load Sub References mode");
const QString smartUpdateKey = QStringLiteral("Reference Smart update mode");
const QString materialsKey = QStringLiteral("Reference Preserve Material Assignment");
const QString intervalKey = QStringLiteral("Reference Update Monitoring Interval");

// The order in which the host expects the page to store its values.
const QStringList storeOrder{monitoringKey, convertWarningKey, notificationKey, storeModeKey, storeLocationKey,
                             loadModeKey,   smartUpdateKey,    materialsKey,    intervalKey};

// The page with the defaults stored, some values over them and everything loaded.
void loadPage(koReferencePreferencesGUII& page, const QVariantMap& stored = {})
{
    page.initDefaults(false);
    for (auto it = stored.cbegin(); it != stored.cend(); ++it)
        koTestHost::storePreference(*koService<koPreferencesService>(), it.key(), it.value(), false);
    for (const QString& key : storeOrder)
        koService<koPreferencesService>()->clearChanged(key);
    page.loadValues();
}

// Each edit is "objectName=value", made as a user would; typed text goes through the field's validator.
void enterAll(const koReferencePreferencesGUII& page, const QStringList& edits)
{
    for (const QString& edit : edits) {
        const int split = edit.indexOf(QLatin1Char('='));
        const QString value = edit.mid(split + 1);
        auto* widget = page.findChild<QWidget*>(edit.left(split));
        if (auto* line = qobject_cast<QLineEdit*>(widget)) {
            line->clear();
            QTest::keyClicks(line, value);
        } else if (!widget || !widget->metaObject()->userProperty().write(widget, value)
                   || widget->metaObject()->userProperty().read(widget).toString() != value) {
            qFatal("the page cannot take %s", qPrintable(edit));
        }
    }
}

// Writes down what the page hands to the host instead of acting on it.
class RecordingReferenceService : public koReferenceService
{
public:
    void setChangeMonitoringEnabled(bool enabled) override { record(__func__, enabled); }
    void setShowConvertToSmartWarning(bool show) override { record(__func__, show); }
    void setChangeNotificationMode(int mode) override { record(__func__, mode); }
    void setSmartReferenceStoreMode(int mode) override { record(__func__, mode); }
    void setSmartReferenceStoreLocation(const QString& folder) override { record(__func__, folder); }
    void setLoadSubReferencesMode(int mode) override { record(__func__, mode); }
    void setUpdateMonitoringInterval(int milliseconds) override { record(__func__, milliseconds); }

    QStringList calls;

private:
    void record(const char* operation, const QVariant& value)
    {
        calls << QStringLiteral("%1(%2)").arg(QLatin1String(operation), value.toString());
    }
};

} // namespace

class tst_koReferencePreferencesGUII : public QObject
{
    Q_OBJECT

private slots:
    void storesInTheHostsOrder_data();
    void storesInTheHostsOrder();
    void applyPushesOnlyChangedKeys_data();
    void applyPushesOnlyChangedKeys();
    void selectStoreLocation();

private:
    koTestHost m_host;
};

void tst_koReferencePreferencesGUII::storesInTheHostsOrder_data()
{
    QTest::addColumn<bool>("defaults");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("initDefaults") << true << QStringList{"true", "true", "1", "0", "", "0", "0", "true", "5"};
    // The page loaded the smart update mode as 1; no other key holds 1 there.
    QTest::newRow("saveValues") << false << QStringList{"true", "true", "1", "0", "", "0", "1", "true", "5"};
}

void tst_koReferencePreferencesGUII::storesInTheHostsOrder()
{
    QFETCH(bool, defaults);
    QFETCH(QStringList, texts);

    koReferencePreferencesGUII page;
    loadPage(page, {{smartUpdateKey, 1}});
    // A value no widget produces, with the change marks forgotten.
    for (const QString& key : storeOrder) {
        koService<koPreferencesService>()->setStringValue(key, QStringLiteral("sentinel"), false);
        koService<koPreferencesService>()->clearChanged(key);
    }
    QSignalSpy stores(koService<koPreferencesService>(), &koPreferencesService::valueChanged);

    if (defaults)
        page.initDefaults(true);
    else
        page.saveValues();

    QStringList keys;
    QStringList stored;
    for (const QList<QVariant>& arguments : qAsConst(stores)) {
        keys << arguments.at(0).toString();
        // Settings files hold text: compare as text.
        stored << koService<koPreferencesService>()->getStringValue(keys.last(), QString());
        QVERIFY(koService<koPreferencesService>()->isChanged(keys.last()));
    }
    QCOMPARE(keys, storeOrder);
    QCOMPARE(stored, texts);
}

void tst_koReferencePreferencesGUII::applyPushesOnlyChangedKeys_data()
{
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QStringList>("calls");

    QTest::newRow("nothing changed") << QStringList() << QStringList();
    // A group separator is refused as it is typed: "1,000" stays a number.
    QTest::newRow("every key, in the host's order")
        << QStringList{"m_updateMonitoringInterval=1,000",
                       "m_loadSubReferences=Never load references",
                       "m_smartReferenceStore=Custom",
                       "m_smartReferenceStoreLocation=/data/smart",
                       "m_changeNotificationMode=Off",
                       "m_showConvertToSmartWarning=false",
                       "m_changeNotificationEnabled=false",
                       "m_smartUpdate=Never Ask",
                       "m_preserveMaterials=false"}
        << QStringList{"setChangeMonitoringEnabled(false)", "setShowConvertToSmartWarning(false)",
                       "setChangeNotificationMode(0)",      "setSmartReferenceStoreMode(1)",
                       "setSmartReferenceStoreLocation(/data/smart)", "setLoadSubReferencesMode(2)",
                       "setUpdateMonitoringInterval(1000000)"};
    // Typing stops at the longest interval.
    QTest::newRow("the last mode, the longest interval")
        << QStringList{"m_updateMonitoringInterval=100000", "m_loadSubReferences=Avoid leaf references"}
        << QStringList{"setLoadSubReferencesMode(3)", "setUpdateMonitoringInterval(10000000)"};
}

void tst_koReferencePreferencesGUII::applyPushesOnlyChangedKeys()
{
    QFETCH(QStringList, edits);
    QFETCH(QStringList, calls);

    koReferencePreferencesGUII page;
    loadPage(page);
    enterAll(page, edits);
    page.saveValues();
    RecordingReferenceService recorder;
    const koInstalledService<koReferenceService> installed(&recorder);
    page.applyChanges();

    QCOMPARE(recorder.calls, calls);
}

// The page hands the chooser the field's folder, takes the pick and keeps the field on
// Cancel. The folder is the custom store's, usable with monitoring off.
void tst_koReferencePreferencesGUII::selectStoreLocation()
{
    const QString chosen = m_host.path(QString());
    koReferencePreferencesGUII page;
    loadPage(page, {{storeModeKey, 1}, {monitoringKey, false}});
    QVERIFY(page.m_smartReferenceStoreLocation->isEnabled());
    koScriptedFileDialog dialogs;
    dialogs.answer(chosen);
    dialogs.answer(QString());

    page.m_selectStoreLocation->click();
    page.m_selectStoreLocation->click();

    QCOMPARE(dialogs.calls().size(), 2);
    QCOMPARE(dialogs.calls().at(1).dir, chosen);
    QCOMPARE(page.m_smartReferenceStoreLocation->text(), chosen);
}

QTEST_MAIN(tst_koReferencePreferencesGUII)
#include "tst_koreferencepreferencesguii.moc"
