#include "koDialogDriver.h"
#include "koReferenceSmartLocationDialogUI.h"
#include "koScriptedFileDialog.h"
#include "koTestHost.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QtTest>

class tst_koReferenceSmartLocationDialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void locationChoice_data();
    void locationChoice();
    void chooseFolder_data();
    void chooseFolder();

private:
    koTestHost m_host;
};

void tst_koReferenceSmartLocationDialog::cleanup()
{
    koService<koReferenceService>()->setSmartReferenceStoreMode(0);
    koService<koReferenceService>()->setSmartReferenceStoreLocation(QString());
}

void tst_koReferenceSmartLocationDialog::locationChoice_data()
{
    QTest::addColumn<int>("storeMode");
    // "yes", "no", or empty when the caller does not say.
    QTest::addColumn<QString>("allHaveSource");
    // The user's pick afterwards, -1 for none.
    QTest::addColumn<int>("userPick");
    QTest::addColumn<int>("expectedIndex");
    QTest::addColumn<bool>("choiceShown");
    QTest::addColumn<QString>("customLabel");
    QTest::addColumn<bool>("customEnabled");

    QTest::newRow("next to source stored") << 0 << QString() << -1 << 0 << true << QString() << false;
    QTest::newRow("custom stored") << 1 << QString() << -1 << 1 << true << QString() << true;
    QTest::newRow("other non-zero mode") << 2 << QString() << -1 << 1 << true << QString() << true;
    QTest::newRow("user picks custom") << 0 << QString() << 1 << 1 << true << QString() << true;
    QTest::newRow("user picks next to source") << 1 << QString() << 0 << 0 << true << QString() << false;
    QTest::newRow("not all have a source") << 0 << "no" << -1 << 1 << false << "Location" << true;
    QTest::newRow("all have a source after all") << 0 << "no,yes" << -1 << 1 << true << QString() << true;
}

void tst_koReferenceSmartLocationDialog::locationChoice()
{
    QFETCH(int, storeMode);
    QFETCH(QString, allHaveSource);
    QFETCH(int, userPick);
    QFETCH(int, expectedIndex);
    QFETCH(bool, choiceShown);
    QFETCH(QString, customLabel);
    QFETCH(bool, customEnabled);

    const QString stored = m_host.path(QStringLiteral("stored"));
    koService<koReferenceService>()->setSmartReferenceStoreMode(storeMode);
    koService<koReferenceService>()->setSmartReferenceStoreLocation(stored);
    koReferenceSmartLocationDialogUI dialog(nullptr);
    for (const QString& answer : allHaveSource.split(QLatin1Char(','), Qt::SkipEmptyParts))
        dialog.setAllHaveSource(answer == QLatin1String("yes"));
    if (userPick >= 0)
        dialog.m_location->setCurrentIndex(userPick);

    QCOMPARE(dialog.windowTitle(), QStringLiteral("Choose Smart Reference Location"));
    QCOMPARE(dialog.locationIndex(), expectedIndex);
    QCOMPARE(dialog.m_location->currentText(),
             expectedIndex == 0 ? QStringLiteral("Next to Source File") : QStringLiteral("Custom"));
    QCOMPARE(!dialog.m_location->isHidden(), choiceShown);
    QCOMPARE(!dialog.m_locationLabel->isHidden(), choiceShown);
    QCOMPARE(dialog.m_customLabel->text(), customLabel);
    QCOMPARE(dialog.m_customPath->isEnabled(), customEnabled);
    QCOMPARE(dialog.m_chooseFolder->isEnabled(), customEnabled);
    QCOMPARE(dialog.customFolder(), stored);
}

void tst_koReferenceSmartLocationDialog::chooseFolder_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("picked");
    QTest::addColumn<bool>("startsAtTyped");
    QTest::addColumn<QString>("expectedFolder");
    QTest::addColumn<bool>("refused");

    QTest::newRow("typed folder exists") << "typed" << "picked" << true << "picked" << false;
    QTest::newRow("typed folder missing") << "nowhere" << "picked" << false << "picked" << false;
    QTest::newRow("typed text is a file") << "plain.txt" << "picked" << false << "picked" << false;
    QTest::newRow("cancelled") << "typed" << QString() << true << "typed" << false;
    QTest::newRow("unwritable folder") << "typed" << "plain.txt/sub" << true << "typed" << true;
}

void tst_koReferenceSmartLocationDialog::chooseFolder()
{
    QFETCH(QString, typed);
    QFETCH(QString, picked);
    QFETCH(bool, startsAtTyped);
    QFETCH(QString, expectedFolder);
    QFETCH(bool, refused);

    QDir().mkpath(m_host.path(QStringLiteral("typed")));
    QDir().mkpath(m_host.path(QStringLiteral("picked")));
    // Below a regular file nothing can be created, not even by root.
    m_host.writeFile(QStringLiteral("plain.txt"), "not a folder");
    koReferenceSmartLocationDialogUI dialog(nullptr);
    dialog.setAllHaveSource(false);
    dialog.m_customPath->setText(m_host.path(typed));
    koScriptedFileDialog files;
    files.answer(picked.isEmpty() ? QString() : m_host.path(picked));
    koDialogDriver driver;
    if (refused)
        driver.answerMessageBox(QMessageBox::Ok);

    dialog.m_chooseFolder->click();

    const QString start = startsAtTyped ? m_host.path(typed) : QString();
    QCOMPARE(files.summaries(), QStringList{"folder: Custom Smart Reference Location|" + start + '|'});
    QCOMPARE(files.calls().first().parent.data(), &dialog);
    QCOMPARE(files.calls().first().options, QFileDialog::Options(QFileDialog::ShowDirsOnly));
    QCOMPARE(dialog.customFolder(), m_host.path(expectedFolder));
    QCOMPARE(driver.mismatches(), QStringList());
    const QString refusal = QStringLiteral("Create Smart References|You appear to not have write permissions for this "
                                           "directory. Please choose a new directory. (error)");
    QCOMPARE(driver.summaries(), refused ? QStringList{refusal} : QStringList());
    QCOMPARE(QDir(m_host.path(QStringLiteral("picked"))).entryList(QDir::Files), QStringList());
}

QTEST_MAIN(tst_koReferenceSmartLocationDialog)
#include "tst_koreferencesmartlocationdialog.moc"
