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
// What initDefaults stores, in the same order.
const QStringList defaultTexts{"true", "true", "1", "0", "", "0", "0", "true", "5"};

// Settings files hold text; comparing as text also tells a stored value from a sentinel.
QString storedText(const QString& key)
{
    return koService<koPreferencesService>()->getStringValue(key, QStringLiteral("<absent>"));
}

// Overwrites every key with a value no widget produces and forgets the change marks.
void storeSentinels()
{
    for (const QString& key : storeOrder) {
        koService<koPreferencesService>()->setStringValue(key, QStringLiteral("sentinel"), false);
        koService<koPreferencesService>()->clearChanged(key);
    }
}

// The page with the defaults stored, one value changed and everything loaded.
void loadPage(koReferencePreferencesGUII& page, const QVariantMap& stored = {})
{
    page.initDefaults(false);
    for (auto it = stored.cbegin(); it != stored.cend(); ++it)
        koTestHost::storePreference(*koService<koPreferencesService>(), it.key(), it.value(), false);
    for (const QString& key : storeOrder)
        koService<koPreferencesService>()->clearChanged(key);
    page.loadValues();
}

// What the widget shows as text: "true" or "false" for a check box, nothing for a combo box without a choice.
QString shown(const QWidget* widget)
{
    return widget->metaObject()->userProperty().read(widget).toString();
}

// Changes a widget as a user would; typed text goes through the field's validator.
void enter(QWidget* widget, const QString& value)
{
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
        edit->clear();
        QTest::keyClicks(edit, value);
        return;
    }
    widget->metaObject()->userProperty().write(widget, value);
    if (shown(widget) != value)
        qFatal("%s cannot show %s", qPrintable(widget->objectName()), qPrintable(value));
}

QWidget* widget(const koReferencePreferencesGUII& page, const QString& name)
{
    auto* found = page.findChild<QWidget*>(name);
    if (!found)
        qFatal("no widget %s on the page", qPrintable(name));
    return found;
}

// Each edit is "objectName=value".
void enterAll(koReferencePreferencesGUII& page, const QStringList& edits)
{
    for (const QString& edit : edits) {
        const int split = edit.indexOf(QLatin1Char('='));
        enter(widget(page, edit.left(split)), edit.mid(split + 1));
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
    void roundTrip_data();
    void roundTrip();
    void storesInTheHostsOrder_data();
    void storesInTheHostsOrder();
    void applyPushesOnlyChangedKeys_data();
    void applyPushesOnlyChangedKeys();
    void enabledStatesFollowTheWidgets_data();
    void enabledStatesFollowTheWidgets();
    void selectStoreLocation();

private:
    koTestHost m_host;
    QTemporaryDir m_folders;
};

void tst_koReferencePreferencesGUII::roundTrip_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QString>("widgetName");
    QTest::addColumn<QString>("shownValue");
    QTest::addColumn<QString>("entered");
    QTest::addColumn<QString>("saved");

    // Keys that the enabled states or the host's dialog already load have no row here.
    const QString none;
    QTest::newRow("convert warning on") << convertWarningKey << QVariant(true) << "m_showConvertToSmartWarning"
                                        << "true" << none << "true";
    QTest::newRow("material option off") << materialsKey << QVariant(false) << "m_preserveMaterials" << "false"
                                         << none << "false";
    QTest::newRow("notification at session start") << notificationKey << QVariant(2) << "m_changeNotificationMode"
                                                   << "At session start only" << none << "2";
    QTest::newRow("unknown notification mode") << notificationKey << QVariant(7) << "m_changeNotificationMode"
                                               << "" << none << "0";
    QTest::newRow("notification chosen") << notificationKey << QVariant(1) << "m_changeNotificationMode" << "Always"
                                         << "At session start only" << "2";
    QTest::newRow("always load") << loadModeKey << QVariant(1) << "m_loadSubReferences" << "Always load references"
                                 << none << "1";
    QTest::newRow("avoid leaves chosen") << loadModeKey << QVariant(0) << "m_loadSubReferences"
                                         << "Load scene references" << "Avoid leaf references" << "3";
    QTest::newRow("smart update never ask") << smartUpdateKey << QVariant(1) << "m_smartUpdate" << "Never Ask"
                                            << none << "1";
    QTest::newRow("blank interval") << intervalKey << QVariant(5) << "m_updateMonitoringInterval" << "5" << ""
                                    << "0";
    QTest::newRow("interval drops signs and letters") << intervalKey << QVariant(5) << "m_updateMonitoringInterval"
                                                      << "5" << "-1a5" << "15";
    QTest::newRow("interval longer than the range") << intervalKey << QVariant(5) << "m_updateMonitoringInterval"
                                                    << "5" << "100000" << "10000";
}

void tst_koReferencePreferencesGUII::roundTrip()
{
    QFETCH(QString, key);
    QFETCH(QVariant, stored);
    QFETCH(QString, widgetName);
    QFETCH(QString, shownValue);
    QFETCH(QString, entered);
    QFETCH(QString, saved);

    koReferencePreferencesGUII page;
    loadPage(page, {{key, stored}});
    QCOMPARE(shown(widget(page, widgetName)), shownValue);

    if (!entered.isNull())
        enter(widget(page, widgetName), entered);
    storeSentinels();
    page.saveValues();

    QCOMPARE(storedText(key), saved);
    QVERIFY(koService<koPreferencesService>()->isChanged(key));
}

void tst_koReferencePreferencesGUII::storesInTheHostsOrder_data()
{
    QTest::addColumn<bool>("defaults");

    QTest::newRow("initDefaults") << true;
    QTest::newRow("saveValues") << false;
}

void tst_koReferencePreferencesGUII::storesInTheHostsOrder()
{
    QFETCH(bool, defaults);

    koReferencePreferencesGUII page;
    loadPage(page);
    storeSentinels();
    QSignalSpy stores(koService<koPreferencesService>(), &koPreferencesService::valueChanged);

    if (defaults)
        page.initDefaults(true);
    else
        page.saveValues();

    QStringList keys;
    for (const QList<QVariant>& arguments : qAsConst(stores))
        keys << arguments.at(0).toString();
    QCOMPARE(keys, storeOrder);
    // A page loaded from the defaults saves them back unchanged.
    for (int i = 0; i < storeOrder.size(); ++i) {
        QCOMPARE(storedText(storeOrder.at(i)), defaultTexts.at(i));
        QVERIFY(koService<koPreferencesService>()->isChanged(storeOrder.at(i)));
    }
}

void tst_koReferencePreferencesGUII::applyPushesOnlyChangedKeys_data()
{
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QStringList>("changedKeys");
    QTest::addColumn<QStringList>("calls");

    QTest::newRow("nothing changed") << QStringList() << QStringList() << QStringList();
    QTest::newRow("smart update mode") << QStringList{"m_smartUpdate=Never Ask"} << QStringList{smartUpdateKey}
                                       << QStringList();
    QTest::newRow("every key, in the host's order")
        << QStringList{"m_updateMonitoringInterval=30",
                       "m_loadSubReferences=Never load references",
                       "m_smartReferenceStore=Custom",
                       "m_smartReferenceStoreLocation=/data/smart",
                       "m_changeNotificationMode=Off",
                       "m_showConvertToSmartWarning=false",
                       "m_changeNotificationEnabled=false",
                       "m_smartUpdate=Never Ask",
                       "m_preserveMaterials=false"}
        << storeOrder
        << QStringList{"setChangeMonitoringEnabled(false)", "setShowConvertToSmartWarning(false)",
                       "setChangeNotificationMode(0)",      "setSmartReferenceStoreMode(1)",
                       "setSmartReferenceStoreLocation(/data/smart)", "setLoadSubReferencesMode(2)",
                       "setUpdateMonitoringInterval(30000)"};
}

void tst_koReferencePreferencesGUII::applyPushesOnlyChangedKeys()
{
    QFETCH(QStringList, edits);
    QFETCH(QStringList, changedKeys);
    QFETCH(QStringList, calls);

    koReferencePreferencesGUII page;
    loadPage(page);
    enterAll(page, edits);
    page.saveValues();
    for (const QString& key : storeOrder)
        QVERIFY2(koService<koPreferencesService>()->isChanged(key) == changedKeys.contains(key), qPrintable(key));

    RecordingReferenceService recorder;
    const koInstalledService<koReferenceService> installed(&recorder);
    page.applyChanges();

    QCOMPARE(recorder.calls, calls);
}

void tst_koReferencePreferencesGUII::enabledStatesFollowTheWidgets_data()
{
    QTest::addColumn<bool>("monitoringBefore");
    QTest::addColumn<int>("storeModeBefore");
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<bool>("monitoringWidgetsEnabled");
    QTest::addColumn<bool>("locationWidgetsEnabled");

    QTest::newRow("monitoring unchecked") << true << 0 << QStringList{"m_changeNotificationEnabled=false"}
                                          << false << false;
    QTest::newRow("monitoring checked") << false << 0 << QStringList{"m_changeNotificationEnabled=true"} << true
                                        << false;
    QTest::newRow("custom chosen") << true << 0 << QStringList{"m_smartReferenceStore=Custom"} << true << true;
    QTest::newRow("source file location chosen")
        << true << 1 << QStringList{"m_smartReferenceStore=Source file location"} << true << false;
    QTest::newRow("loaded as stored") << false << 1 << QStringList() << false << true;
}

void tst_koReferencePreferencesGUII::enabledStatesFollowTheWidgets()
{
    QFETCH(bool, monitoringBefore);
    QFETCH(int, storeModeBefore);
    QFETCH(QStringList, edits);
    QFETCH(bool, monitoringWidgetsEnabled);
    QFETCH(bool, locationWidgetsEnabled);

    koReferencePreferencesGUII page;
    const QString location = m_folders.path();
    loadPage(page, {{monitoringKey, monitoringBefore}, {storeModeKey, storeModeBefore}, {storeLocationKey, location}});

    enterAll(page, edits);

    const QList<QWidget*> monitoringWidgets{page.m_changeNotificationMode, page.m_changeNotificationModeLabel,
                                            page.m_updateMonitoringInterval, page.m_updateMonitoringIntervalLabel,
                                            page.m_updateMonitoringIntervalSecondsLabel};
    for (const QWidget* monitoringWidget : monitoringWidgets)
        QVERIFY2(monitoringWidget->isEnabled() == monitoringWidgetsEnabled, qPrintable(monitoringWidget->objectName()));
    QCOMPARE(page.m_smartReferenceStoreLocation->isEnabled(), locationWidgetsEnabled);
    QCOMPARE(page.m_selectStoreLocation->isEnabled(), locationWidgetsEnabled);
    QCOMPARE(page.m_smartReferenceStoreLocation->text(), location);
    QVERIFY(page.m_changeNotificationEnabled->isEnabled());
    QVERIFY(page.m_smartReferenceStore->isEnabled());
}

// The shared chooser is tested with the smart location dialog; here only that the page
// hands it the field's folder, takes the pick and keeps the field on Cancel.
void tst_koReferencePreferencesGUII::selectStoreLocation()
{
    const QString chosen = m_folders.path();
    koReferencePreferencesGUII page;
    loadPage(page, {{storeModeKey, 1}});
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
