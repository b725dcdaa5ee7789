#include <kovis/QKOOpenMenu.h>

#include <QSignalSpy>
#include <QtTest>

class tst_qkoopenmenu : public QObject
{
    Q_OBJECT

private slots:
    void checkableEntriesKeepTheMenuOpen_data();
    void checkableEntriesKeepTheMenuOpen();
};

void tst_qkoopenmenu::checkableEntriesKeepTheMenuOpen_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<bool>("staysOpen");
    QTest::addColumn<bool>("checked");

    QTest::newRow("click on checkable") << QStringLiteral("Loaded") << false << true << true;
    QTest::newRow("click on checked") << QStringLiteral("Missing") << false << true << false;
    QTest::newRow("return on checkable") << QStringLiteral("Loaded") << true << true << true;
    QTest::newRow("click on plain entry") << QStringLiteral("Clear") << false << false << false;
    QTest::newRow("return on plain entry") << QStringLiteral("Clear") << true << false << false;
}

void tst_qkoopenmenu::checkableEntriesKeepTheMenuOpen()
{
    QFETCH(QString, entry);
    QFETCH(bool, byKey);
    QFETCH(bool, staysOpen);
    QFETCH(bool, checked);

    QKOOpenMenu menu(QStringLiteral("Filter Menu"));
    menu.addAction(QStringLiteral("Clear"));
    menu.addSeparator();
    for (const QString& text : {QStringLiteral("Loaded"), QStringLiteral("Missing")}) {
        QAction* action = menu.addAction(text);
        action->setCheckable(true);
        action->setChecked(text == QLatin1String("Missing"));
    }
    QAction* target = nullptr;
    for (QAction* action : menu.actions()) {
        if (action->text() == entry)
            target = action;
    }
    QSignalSpy triggered(&menu, &QMenu::triggered);
    QSignalSpy actionTriggered(target, &QAction::triggered);
    menu.popup(QPoint(20, 20));
    QVERIFY(QTest::qWaitForWindowExposed(&menu));

    if (byKey) {
        menu.setActiveAction(target);
        QTest::keyClick(&menu, Qt::Key_Return);
    } else {
        QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(target).center());
    }

    QCOMPARE(menu.isVisible(), staysOpen);
    QCOMPARE(actionTriggered.count(), 1);
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(triggered.first().first().value<QAction*>(), target);
    QCOMPARE(target->isChecked(), checked);
    menu.hide();
}

QTEST_MAIN(tst_qkoopenmenu)
#include "tst_qkoopenmenu.moc"
