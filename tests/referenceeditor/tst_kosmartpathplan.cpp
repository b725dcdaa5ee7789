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

    QTest::newRow("two equal proposals") << QString() << QStringList{"/p/a.kpr", "/p/a.kpr"}
                                         << QStringList{"/p/a.kpr", "/p/a_1.kpr"};
    QTest::newRow("next collision of the run, on another file")
        << QString() << QStringList{"/p/a.kpr", "/p/a.kpr", "/p/b.kpr", "/p/b.kpr"}
        << QStringList{"/p/a.kpr", "/p/a_1.kpr", "/p/b.kpr", "/p/b_2.kpr"};
    QTest::newRow("third equal proposal") << QString() << QStringList{"/p/a.kpr", "/p/a.kpr", "/p/a.kpr"}
                                          << QStringList{"/p/a.kpr", "/p/a_1.kpr", "/p/a_2.kpr"};
    QTest::newRow("numbered name taken by a proposal")
        << QString() << QStringList{"/p/a_1.kpr", "/p/a.kpr", "/p/a.kpr"}
        << QStringList{"/p/a_1.kpr", "/p/a.kpr", "/p/a_2.kpr"};
    QTest::newRow("names differ only in case") << QString() << QStringList{"/p/A.kpr", "/p/a.kpr"}
                                               << QStringList{"/p/A.kpr", "/p/a.kpr"};
    QTest::newRow("reserved path") << "/p/a.kpr" << QStringList{"/p/a.kpr", "/p/b.kpr"}
                                   << QStringList{"/p/a_1.kpr", "/p/b.kpr"};
    QTest::newRow("reserved numbered path") << "/p/a_1.kpr" << QStringList{"/p/a.kpr", "/p/a.kpr"}
                                            << QStringList{"/p/a.kpr", "/p/a_2.kpr"};
    QTest::newRow("only the last suffix") << QString() << QStringList{"/p/a.b.kpr", "/p/a.b.kpr"}
                                          << QStringList{"/p/a.b.kpr", "/p/a.b_1.kpr"};
    QTest::newRow("no suffix: before the last character")
        << QString() << QStringList{"/p.d/name", "/p.d/name"} << QStringList{"/p.d/name", "/p.d/nam_1e"};
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
