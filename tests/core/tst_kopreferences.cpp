#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesService.h>

#include <QTemporaryDir>
#include <QtTest>

class tst_koPreferences : public QObject
{
    Q_OBJECT

private slots:
    void valuesOutliveTheSessionTheirChangesDoNot_data();
    void valuesOutliveTheSessionTheirChangesDoNot();

private:
    koTestHost m_host;
};

namespace {

// Reads through the getter of the value's type, with a default that differs from it.
QVariant readPreference(const koPreferencesService& preferences, const QString& key, const QVariant& like)
{
    if (like.userType() == QMetaType::Bool)
        return preferences.getBoolValue(key, !like.toBool());
    if (like.userType() == QMetaType::Int)
        return preferences.getIntValue(key, like.toInt() + 1);
    return preferences.getStringValue(key, QStringLiteral("<absent>"));
}

} // namespace

void tst_koPreferences::valuesOutliveTheSessionTheirChangesDoNot_data()
{
    // An invalid stored value leaves the key absent.
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QVariant>("written");
    QTest::addColumn<bool>("flag");
    QTest::addColumn<bool>("changed");

    QTest::newRow("new value with flag") << QVariant(5) << QVariant(7) << true << true;
    QTest::newRow("same value with flag") << QVariant(5) << QVariant(5) << true << false;
    QTest::newRow("new value without flag") << QVariant(5) << QVariant(7) << false << false;
    QTest::newRow("first value with flag") << QVariant() << QVariant(false) << true << true;
    QTest::newRow("emptied text with flag") << QVariant("a") << QVariant(QString()) << true << true;
    QTest::newRow("text with a space and an umlaut") << QVariant() << QVariant("/a b/\u00fc") << true << true;
}

void tst_koPreferences::valuesOutliveTheSessionTheirChangesDoNot()
{
    QFETCH(QVariant, stored);
    QFETCH(QVariant, written);
    QFETCH(bool, flag);
    QFETCH(bool, changed);

    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("prefs.ini"));
    // Keys of the host hold spaces, which the settings file escapes.
    const QString key = QStringLiteral("Reference Smart Reference Store Location");
    {
        koPreferencesService preferences(file);
        if (stored.isValid())
            koTestHost::storePreference(preferences, key, stored, false);
        koTestHost::storePreference(preferences, key, written, flag);
        QCOMPARE(preferences.isChanged(key), changed);
        QCOMPARE(readPreference(preferences, key, written), written);
    }
    koPreferencesService reopened(file);
    QCOMPARE(readPreference(reopened, key, written), written);
    QVERIFY(!reopened.isChanged(key));
}

QTEST_MAIN(tst_koPreferences)
#include "tst_kopreferences.moc"
