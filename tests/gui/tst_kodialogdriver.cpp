#include "koDialogDriver.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <QtTest>

namespace {

// A dialog as forms build them: a named line edit, a button that asks a question in
// a message box of its own, and OK/Cancel.
class NameDialog : public QDialog
{
public:
    NameDialog()
    {
        auto* layout = new QVBoxLayout(this);
        auto* name = new QLineEdit(this);
        name->setObjectName(QStringLiteral("m_name"));
        layout->addWidget(name);
        auto* ask = new QPushButton(QStringLiteral("Check"), this);
        ask->setObjectName(QStringLiteral("m_check"));
        connect(ask, &QPushButton::clicked, this, [this] {
            answer = QMessageBox::question(this, QStringLiteral("Check"), QStringLiteral("Is the name right?"));
        });
        layout->addWidget(ask);
        auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
        connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        layout->addWidget(buttons);
    }

    QString name() const { return findChild<QLineEdit*>(QStringLiteral("m_name"))->text(); }

    QMessageBox::StandardButton answer = QMessageBox::NoButton;
};

} // namespace

class tst_kodialogdriver : public QObject
{
    Q_OBJECT

private slots:
    void messageBoxesAreRecordedAndAnswered_data();
    void messageBoxesAreRecordedAndAnswered();
    void dialogsGoToTheirHandler();
    void unscriptedDialogsAreCancelled();
};

void tst_kodialogdriver::messageBoxesAreRecordedAndAnswered_data()
{
    QTest::addColumn<bool>("scripted");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("tick");
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("ticked");

    QTest::newRow("ok") << true << int(QMessageBox::Ok) << false << int(QMessageBox::Ok) << false;
    QTest::newRow("cancel with tick") << true << int(QMessageBox::Cancel) << true << int(QMessageBox::Cancel) << true;
    QTest::newRow("button the box lacks") << true << int(QMessageBox::Yes) << false << int(QMessageBox::Cancel)
                                          << false;
    QTest::newRow("unscripted") << false << 0 << false << int(QMessageBox::Cancel) << false;
}

void tst_kodialogdriver::messageBoxesAreRecordedAndAnswered()
{
    QFETCH(bool, scripted);
    QFETCH(int, answer);
    QFETCH(bool, tick);
    QFETCH(int, result);
    QFETCH(bool, ticked);

    koDialogDriver driver;
    if (scripted)
        driver.answerMessageBox(QMessageBox::StandardButton(answer), tick);
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Replace Smart Reference"),
                    QStringLiteral("This action is not undoable."), QMessageBox::Ok | QMessageBox::Cancel);
    box.setDefaultButton(QMessageBox::Cancel);
    box.setInformativeText(QStringLiteral("Details"));
    box.setCheckBox(new QCheckBox(QStringLiteral("Don't show again"), &box));

    QCOMPARE(box.exec(), result);

    QCOMPARE(box.checkBox()->isChecked(), ticked);
    QCOMPARE(driver.messageBoxes().size(), 1);
    const koDialogDriver::MessageBox& record = driver.messageBoxes().first();
    QCOMPARE(record.title, QStringLiteral("Replace Smart Reference"));
    QCOMPARE(record.text, QStringLiteral("This action is not undoable."));
    QCOMPARE(record.informativeText, QStringLiteral("Details"));
    QCOMPARE(record.icon, QMessageBox::Warning);
    QCOMPARE(record.buttons, QMessageBox::Ok | QMessageBox::Cancel);
    QCOMPARE(record.defaultButton, QMessageBox::Cancel);
    QCOMPARE(record.checkBoxText, QStringLiteral("Don't show again"));
    QCOMPARE(record.checkBoxChecked, false);
    QCOMPARE(int(record.answer), result);
    const bool expected = scripted && answer == result;
    QCOMPARE(record.expected, expected);
    QCOMPARE(driver.unexpected().size(), expected ? 0 : 1);
    QCOMPARE(driver.pendingSteps(), 0);
}

void tst_kodialogdriver::dialogsGoToTheirHandler()
{
    koDialogDriver driver;
    driver.handleDialog([](QDialog* dialog) {
        dialog->findChild<QLineEdit*>(QStringLiteral("m_name"))->setText(QStringLiteral("Engine"));
        dialog->findChild<QPushButton*>(QStringLiteral("m_check"))->click();
        dialog->accept();
    });
    driver.answerMessageBox(QMessageBox::Yes);
    NameDialog dialog;

    QCOMPARE(dialog.exec(), int(QDialog::Accepted));

    QCOMPARE(dialog.name(), QStringLiteral("Engine"));
    QCOMPARE(dialog.answer, QMessageBox::Yes);
    QCOMPARE(driver.messageBoxes().size(), 1);
    QCOMPARE(driver.messageBoxes().first().text, QStringLiteral("Is the name right?"));
    QVERIFY(driver.unexpected().isEmpty());
}

void tst_kodialogdriver::unscriptedDialogsAreCancelled()
{
    koDialogDriver driver;
    driver.handleDialog([](QDialog*) {});
    NameDialog leftOpen;
    QCOMPARE(leftOpen.exec(), int(QDialog::Rejected));
    NameDialog unscripted;
    unscripted.setWindowTitle(QStringLiteral("Repath"));
    QCOMPARE(unscripted.exec(), int(QDialog::Rejected));

    QCOMPARE(driver.unexpected().size(), 2);
    QVERIFY(driver.unexpected().at(0).contains(QLatin1String("left open")));
    QVERIFY(driver.unexpected().at(1).contains(QLatin1String("\"Repath\"")));
}

QTEST_MAIN(tst_kodialogdriver)
#include "tst_kodialogdriver.moc"
