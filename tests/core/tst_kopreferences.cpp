#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesService.h>

#include <QTemporaryDir>
#include <QtTest>

class tst_koPreferences : public QObject
{
    Q_OBJECT

private slots:
    void valuesPersistAcrossSessions();
    void changeTracking_data();
    void changeTracking();

private:
    koTestHost m_host;
};

void tst_koPreferences::valuesPersistAcrossSessions()
{
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("prefs.ini"));
    {
        koPreferencesService preferences(file);
        preferences.setBoolValue(QStringLiteral("Reference Change Monitoring Enabled"), false, true);
        preferences.setIntValue(QStringLiteral("Reference Update Monitoring Interval"), 42, true);
        preferences.setStringValue(QStringLiteral("Reference Smart Reference Store Location"), QStringLiteral("/a b/ü"), true);
    }
    koPreferencesService reopened(file);
    QCOMPARE(reopened.getBoolValue(QStringLiteral("Reference Change Monitoring Enabled"), true), false);
    QCOMPARE(reopened.getIntValue(QStringLiteral("Reference Update Monitoring Interval"), 5), 42);
    QCOMPARE(reopened.getStringValue(QStringLiteral("Reference Smart Reference Store Location"), QString()),
             QStringLiteral("/a b/ü"));
    QCOMPARE(reopened.getIntValue(QStringLiteral("absent"), 7), 7);
    QVERIFY(!reopened.isChanged(QStringLiteral("Reference Update Monitoring Interval")));
}

void tst_koPreferences::changeTracking_data()
{
    // An invalid stored value leaves the key absent.
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QVariant>("written");
    QTest::addColumn<bool>("flag");
    QTest::addColumn<bool>("changed");

    QTest::newRow("new value with flag") << QVariant(5) << QVariant(7) << true << true;
    QTest::newRow("same value with flag") << QVariant(5) << QVariant(5) << true << false;
    QTest::newRow("new value without flag") << QVariant(5) << QVariant(7) << false << false;
    QTest::newRow("first value with flag") << QVariant() << QVariant(true) << true << true;
    QTest::newRow("emptied text with flag") << QVariant("a") << QVariant(QString()) << true << true;
}

void tst_koPreferences::changeTracking()
{
    QFETCH(QVariant, stored);
    QFETCH(QVariant, written);
    QFETCH(bool, flag);
    QFETCH(bool, changed);

    QTemporaryDir folder;
    koPreferencesService preferences(folder.filePath(QStringLiteral("prefs.ini")));
    const QString key = QStringLiteral("key");
    if (stored.isValid())
        koTestHost::storePreference(preferences, key, stored, false);
    koTestHost::storePreference(preferences, key, written, flag);
    QCOMPARE(preferences.isChanged(key), changed);
    QCOMPARE(preferences.getStringValue(key, QStringLiteral("<absent>")), written.toString());
    preferences.clearChanged(key);
    QVERIFY(!preferences.isChanged(key));
}

QTEST_MAIN(tst_koPreferences)
#include "tst_kopreferences.moc"
