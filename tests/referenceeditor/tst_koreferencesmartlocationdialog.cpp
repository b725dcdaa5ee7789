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
    void unwritablePickKeepsTheStoredFolder();

private:
    koTestHost m_host;
};

// Every stored mode but 0 means the custom folder. A pick below a regular file, where
// nothing can be created (not even by root), is refused.
void tst_koReferenceSmartLocationDialog::unwritablePickKeepsTheStoredFolder()
{
    const QString stored = m_host.path(QStringLiteral("stored"));
    QDir().mkpath(stored);
    m_host.writeFile(QStringLiteral("plain.txt"), "not a folder");
    koService<koReferenceService>()->setSmartReferenceStoreMode(2);
    koService<koReferenceService>()->setSmartReferenceStoreLocation(stored);
    koReferenceSmartLocationDialogUI dialog(nullptr);
    koScriptedFileDialog files;
    files.answer(m_host.path(QStringLiteral("plain.txt/sub")));
    koDialogDriver driver;
    driver.answerMessageBox(QMessageBox::Ok);

    QCOMPARE(dialog.locationIndex(), 1);
    QVERIFY(dialog.m_customPath->isEnabled());
    dialog.m_chooseFolder->click();

    QCOMPARE(files.summaries(), QStringList{"folder: Custom Smart Reference Location|" + stored + '|'});
    QCOMPARE(driver.summaries(), QStringList{"Create Smart References|You appear to not have write permissions for "
                                             "this directory. Please choose a new directory. (error)"});
    QCOMPARE(dialog.customFolder(), stored);
}

QTEST_MAIN(tst_koReferenceSmartLocationDialog)
#include "tst_koreferencesmartlocationdialog.moc"
