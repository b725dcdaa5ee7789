#include "koHostSession.h"

#include <kovis/koPreferencesCategory.h>

#include <QTemporaryDir>
#include <QtTest>

// A page that counts how often its defaults are stored.
class koCountingCategory : public koPreferencesCategory
{
public:
    koCountingCategory()
        : koPreferencesCategory(QStringLiteral("Counting"))
    {
    }

    void initDefaults(bool markChanged) override
    {
        ++defaultsStored;
        QVERIFY(!markChanged);
    }

    int defaultsStored = 0;
};

class tst_koHostSession : public QObject
{
    Q_OBJECT

private slots:
    void defaultsAreStoredOnTheFirstRunOnly();
};

void tst_koHostSession::defaultsAreStoredOnTheFirstRunOnly()
{
    QTemporaryDir folder;
    const QString settings = folder.filePath(QStringLiteral("kovis.ini"));
    koCountingCategory page;
    for (int run = 0; run < 2; ++run) {
        koHostSession session(settings);
        if (run == 0)
            page.registerCategory();
        session.loadPlugins(folder.filePath(QStringLiteral("no plug-ins here")));
    }
    QCOMPARE(page.defaultsStored, 1);
}

QTEST_MAIN(tst_koHostSession)
#include "tst_kohostsession.moc"
