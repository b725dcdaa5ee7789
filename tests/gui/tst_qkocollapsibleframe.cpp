#include "ui_collapsibleframeform.h"

#include <kovis/QKOCollapsibleFrame.h>

#include <QLabel>
#include <QToolButton>
#include <QtTest>

namespace {

enum class Construction { Form, AddPage, ChildWidget };

} // namespace

Q_DECLARE_METATYPE(Construction)

class tst_qkocollapsibleframe : public QObject
{
    Q_OBJECT

private slots:
    void headerFoldsThePage_data();
    void headerFoldsThePage();
};

void tst_qkocollapsibleframe::headerFoldsThePage_data()
{
    QTest::addColumn<Construction>("construction");
    QTest::newRow("designer form") << Construction::Form;
    QTest::newRow("added page") << Construction::AddPage;
    QTest::newRow("child widget") << Construction::ChildWidget;
}

void tst_qkocollapsibleframe::headerFoldsThePage()
{
    QFETCH(Construction, construction);

    QWidget window;
    Ui::collapsibleFrameForm form;
    QKOCollapsibleFrame* frame = nullptr;
    QWidget* page = nullptr;
    if (construction == Construction::Form) {
        form.setupUi(&window);
        frame = form.collapsibleFrame;
        page = form.page;
    } else {
        auto* layout = new QVBoxLayout(&window);
        frame = new QKOCollapsibleFrame(&window);
        frame->setCaption(QStringLiteral("Reference Update Monitoring"));
        layout->addWidget(frame);
        page = new QLabel(QStringLiteral("content"), construction == Construction::ChildWidget ? frame : nullptr);
        if (construction == Construction::AddPage)
            frame->addPage(page);
    }
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    QCOMPARE(frame->pages(), QList<QWidget*>{page});
    QCOMPARE(page->parentWidget(), frame);
    QVERIFY(page->isVisible());
    QVERIFY(page->geometry().top() > 0);
    QVERIFY(frame->height() >= page->height());
    auto* header = frame->findChild<QToolButton*>(QStringLiteral("collapsibleFrameHeader"));
    QCOMPARE(header->text(), QStringLiteral("Reference Update Monitoring"));
    QCOMPARE(frame->getCaption(), header->text());
    const int expandedHeight = frame->sizeHint().height();

    QTest::mouseClick(header, Qt::LeftButton);
    QVERIFY(frame->isCollapsed());
    QVERIFY(!page->isVisible());
    QVERIFY(frame->sizeHint().height() < expandedHeight);

    QTest::mouseClick(header, Qt::LeftButton);
    QVERIFY(!frame->isCollapsed());
    QVERIFY(page->isVisible());
    QCOMPARE(frame->sizeHint().height(), expandedHeight);

    delete page;
    QVERIFY(frame->pages().isEmpty());
}

QTEST_MAIN(tst_qkocollapsibleframe)
#include "tst_qkocollapsibleframe.moc"
