#include <kovis/koNodeInfoDialog.h>

#include <QGridLayout>
#include <QLabel>
#include <QtTest>

class tst_konodeinfodialog : public QObject
{
    Q_OBJECT

private slots:
    void rowsAreGroupedUnderTheirSection();
};

void tst_konodeinfodialog::rowsAreGroupedUnderTheirSection()
{
    koNodeInfoDialog dialog;
    dialog.setWindowTitle(QStringLiteral("Scene Information"));
    dialog.addSection(QStringLiteral("General"));
    dialog.addInfo(QStringLiteral("References"), QStringLiteral("3"));
    dialog.addInfo(QStringLiteral("Missing References"), QStringLiteral("2"));
    dialog.addSection(QStringLiteral("Source References"));
    dialog.addInfo(QStringLiteral("Source References"), QStringLiteral("1"));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    // Read back as a reader sees it: top to bottom, label beside its value.
    auto* grid = dialog.findChild<QGridLayout*>(QStringLiteral("infoGrid"));
    QStringList lines;
    for (int row = 0; row < grid->rowCount(); ++row) {
        QLayoutItem* start = grid->itemAtPosition(row, 0);
        QVERIFY2(start, "an empty row");
        auto* first = qobject_cast<QLabel*>(start->widget());
        QLayoutItem* second = grid->itemAtPosition(row, 1);
        if (first->objectName() == QLatin1String("infoSection")) {
            QCOMPARE(second->widget(), first);
            lines << "# " + first->text();
            continue;
        }
        auto* value = qobject_cast<QLabel*>(second->widget());
        QCOMPARE(first->objectName(), QStringLiteral("infoLabel"));
        QCOMPARE(value->objectName(), QStringLiteral("infoValue"));
        QCOMPARE(value->geometry().top(), first->geometry().top());
        QVERIFY(value->geometry().left() > first->geometry().right());
        lines << first->text() + " = " + value->text();
    }
    QCOMPARE(lines, (QStringList{"# General", "References = 3", "Missing References = 2", "# Source References",
                                 "Source References = 1"}));
    QCOMPARE(dialog.findChildren<QLabel*>(QStringLiteral("infoValue")).size(), 3);
}

QTEST_MAIN(tst_konodeinfodialog)
#include "tst_konodeinfodialog.moc"
