#include "koDialogDriver.h"

#include <kovis/QKOScrollableMessageBox.h>

#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QtTest>

class tst_qkoscrollablemessagebox : public QObject
{
    Q_OBJECT

private slots:
    void longTextStaysOnScreen_data();
    void longTextStaysOnScreen();
};

void tst_qkoscrollablemessagebox::longTextStaysOnScreen_data()
{
    QTest::addColumn<int>("lines");
    QTest::addColumn<bool>("scrolls");

    QTest::newRow("one line") << 1 << false;
    QTest::newRow("five hundred lines") << 500 << true;
}

void tst_qkoscrollablemessagebox::longTextStaysOnScreen()
{
    QFETCH(int, lines);
    QFETCH(bool, scrolls);

    QStringList paths;
    for (int line = 0; line < lines; ++line)
        paths << QStringLiteral("/projects/plant/hall %1/conveyor/segment_%1.kpr").arg(line);
    QKOScrollableMessageBox box(QMessageBox::Warning, QStringLiteral("Save Smart Reference"), paths.join('\n'),
                                QMessageBox::Ok | QMessageBox::Cancel);
    box.makeScrollable();
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));

    const QRect available = box.screen()->availableGeometry();
    QVERIFY(box.height() <= available.height());
    QVERIFY(box.width() <= available.width());
    auto* area = box.findChild<QScrollArea*>(QStringLiteral("scrollArea"));
    QVERIFY(area && area->isVisible());
    auto* label = qobject_cast<QLabel*>(area->widget());
    QCOMPARE(label->text(), box.text());
    QCOMPARE(area->verticalScrollBar()->maximum() > 0, scrolls);
    QAbstractButton* ok = box.button(QMessageBox::Ok);
    QVERIFY(ok->isVisible());
    QVERIFY(box.rect().contains(QRect(ok->mapTo(&box, QPoint()), ok->size())));
    box.hide();

    koDialogDriver driver;
    driver.answerMessageBox(QMessageBox::Ok);
    QCOMPARE(box.exec(), int(QMessageBox::Ok));
    QCOMPARE(driver.messageBoxes().first().text, paths.join('\n'));
}

QTEST_MAIN(tst_qkoscrollablemessagebox)
#include "tst_qkoscrollablemessagebox.moc"
