#include <kovis/QKOSearchBox.h>

#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>

namespace {

struct SearchBox : QKOSearchBox
{
    using QKOSearchBox::cursorRect;
};

} // namespace

class tst_qkosearchbox : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void everyChangeIsReported();
    void addedWidgetSitsInsideAndWorks_data();
    void addedWidgetSitsInsideAndWorks();
};

void tst_qkosearchbox::cleanup()
{
    // A finished fade animation deletes itself later.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void tst_qkosearchbox::everyChangeIsReported()
{
    QKOSearchBox box;
    QSignalSpy changes(&box, &QKOSearchBox::searchChanged);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    box.setFocus();

    QTest::keyClicks(&box, QStringLiteral("eng"));
    QTest::keyClick(&box, Qt::Key_Backspace);
    box.clear();
    box.setText(QStringLiteral("Engine"));

    QStringList reported;
    for (const QList<QVariant>& change : changes)
        reported << change.first().toString();
    QCOMPARE(reported, (QStringList{"e", "en", "eng", "en", "", "Engine"}));
}

void tst_qkosearchbox::addedWidgetSitsInsideAndWorks_data()
{
    QTest::addColumn<bool>("searchLine");
    QTest::newRow("plain") << false;
    QTest::newRow("search line") << true;
}

void tst_qkosearchbox::addedWidgetSitsInsideAndWorks()
{
    QFETCH(bool, searchLine);

    SearchBox box;
    box.resize(300, box.sizeHint().height());
    auto* button = new QToolButton;
    button->setCheckable(true);
    box.addWidget(button);
    box.setSearchLineStyle(searchLine);
    box.setText(QStringLiteral("a long search text that runs up to the end of the field and beyond it"));
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    // Let the clear button's fade-in end, so that its animation does not outlive the box.
    for (const QWidget* side : box.findChildren<QWidget*>()) {
        if (side->property("opacity").isValid())
            QTRY_COMPARE(side->property("opacity").toReal(), 1.0);
    }

    QVERIFY(button->isVisible());
    QVERIFY(box.rect().contains(button->geometry()));
    QVERIFY(button->geometry().left() > box.width() / 2);
    QCOMPARE(box.isClearButtonEnabled(), searchLine);
    QCOMPARE(box.placeholderText().isEmpty(), !searchLine);
    box.setCursorPosition(box.text().size());
    QVERIFY2(box.cursorRect().center().x() < button->geometry().left(), "the text runs under the button");

    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(button->isChecked());
}

QTEST_MAIN(tst_qkosearchbox)
#include "tst_qkosearchbox.moc"
