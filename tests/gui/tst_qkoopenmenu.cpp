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
    // 0 clicks the entry.
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("staysOpen");
    QTest::addColumn<bool>("checked");

    QTest::newRow("click on checkable") << QStringLiteral("Loaded") << 0 << true << true;
    QTest::newRow("click on checked") << QStringLiteral("Missing") << 0 << true << false;
    QTest::newRow("return on checkable") << QStringLiteral("Loaded") << int(Qt::Key_Return) << true << true;
    QTest::newRow("click on plain entry") << QStringLiteral("Clear") << 0 << false << false;
    QTest::newRow("return on plain entry") << QStringLiteral("Clear") << int(Qt::Key_Return) << false << false;
    QTest::newRow("escape on checkable") << QStringLiteral("Loaded") << int(Qt::Key_Escape) << false << false;
}

void tst_qkoopenmenu::checkableEntriesKeepTheMenuOpen()
{
    QFETCH(QString, entry);
    QFETCH(int, key);
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

    if (key) {
        menu.setActiveAction(target);
        QTest::keyClick(&menu, Qt::Key(key));
    } else {
        QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(target).center());
    }
    // Whether a hide came from a tick is settled after the turn.
    QCoreApplication::processEvents();

    QCOMPARE(menu.isVisible(), staysOpen);
    const int triggers = key == Qt::Key_Escape ? 0 : 1;
    QCOMPARE(actionTriggered.count(), triggers);
    QCOMPARE(triggered.count(), triggers);
    if (triggers)
        QCOMPARE(triggered.first().first().value<QAction*>(), target);
    QCOMPARE(target->isChecked(), checked);
    menu.hide();
}

QTEST_MAIN(tst_qkoopenmenu)
#include "tst_qkoopenmenu.moc"
