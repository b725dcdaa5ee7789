#include "koSmartPathPlan.h"

#include <QtTest>

class tst_koSmartPathPlan : public QObject
{
    Q_OBJECT

private slots:
    void claimsUniquePaths_data();
    void claimsUniquePaths();
};

void tst_koSmartPathPlan::claimsUniquePaths_data()
{
    QTest::addColumn<QString>("reservedPath");
    QTest::addColumn<QStringList>("proposals");
    QTest::addColumn<QStringList>("expected");

    // One counter for the whole run: the second collision is numbered 3, on another file.
    QTest::newRow("collisions") << QString()
                                << QStringList{"/p/a_1.kpr", "/p/a.kpr", "/p/a.kpr", "/p/b.kpr", "/p/b.kpr"}
                                << QStringList{"/p/a_1.kpr", "/p/a.kpr", "/p/a_2.kpr", "/p/b.kpr", "/p/b_3.kpr"};
    QTest::newRow("reserved path") << "/p/a.kpr" << QStringList{"/p/a.kpr"} << QStringList{"/p/a_1.kpr"};
}

void tst_koSmartPathPlan::claimsUniquePaths()
{
    QFETCH(QString, reservedPath);
    QFETCH(QStringList, proposals);
    QFETCH(QStringList, expected);

    koSmartPathPlan plan(reservedPath);
    QStringList claimed;
    for (const QString& proposal : qAsConst(proposals))
        claimed.append(plan.claim(proposal));
    QCOMPARE(claimed, expected);
}

QTEST_GUILESS_MAIN(tst_koSmartPathPlan)
#include "tst_kosmartpathplan.moc"
