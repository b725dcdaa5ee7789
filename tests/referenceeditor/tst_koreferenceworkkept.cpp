#include "koDialogDriver.h"
#include "koReferenceEditorActions.h"
#include "koReferenceEditorModule.h"
#include "koReferenceSmartLocationDialogUI.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QtTest>

// What a user does with the editor's menus never throws away an edit without a
// question, and what a question lets go can be brought back.
class tst_koReferenceWorkKept : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void unloadedNewContentComesBack();
    void hostSaveAsAsksOnceForNewSmartFiles();

private:
    void trigger(const QString& path);

    koTestHost m_host;
    QString m_project;
    std::unique_ptr<koReferenceEditorModule> m_module;
};

namespace {

// The name of the reference's first child, "-" for none.
QString nameOf(const QString& reference)
{
    const QList<kodNode> children = koTestHost::findReference(reference).getChildren();
    return children.isEmpty() ? QStringLiteral("-") : children.first().getName();
}

} // namespace

void tst_koReferenceWorkKept::init()
{
    m_project = m_host.writeProject(QStringLiteral("bike.kpr"),
                                    {koTestHost::group("Seat", {koTestHost::geometry("Saddle")})});
    QVERIFY(koService<koFileIOService>()->loadProject(m_project));
    koService<koReferenceService>()->setShowConvertToSmartWarning(false);
    m_module = std::make_unique<koReferenceEditorModule>();
    // Groups are converted from the host's scene tree, which asks the editor to run the flow;
    // the new smart reference's content exists only in memory.
    emit koService<koInternalUiService>()->requestUiConvertToSmarts({koTestHost::findNode(QStringLiteral("Seat"))});
    koTestHost::settle();
    QVERIFY(koTestHost::findReference(QStringLiteral("Seat")).isChanged());
}

void tst_koReferenceWorkKept::cleanup()
{
    m_module.reset();
}

void tst_koReferenceWorkKept::trigger(const QString& path)
{
    m_module->actions()->updateActions();
    QAction* action = koTestHost::findAction(m_module->menuBar()->actions(), path);
    QVERIFY2(action && action->isEnabled(), qPrintable(path));
    action->trigger();
    koTestHost::settle();
}

void tst_koReferenceWorkKept::unloadedNewContentComesBack()
{
    const kodReferenceNode seat = koTestHost::findReference(QStringLiteral("Seat"));
    koDialogDriver driver;
    driver.answerMessageBox(QMessageBox::Ok);
    trigger(QStringLiteral("File/Unload All"));
    QCOMPARE(driver.messageBoxes().size(), 1);
    QCOMPARE(driver.messageBoxes().first().title, QStringLiteral("Unload Smart References"));
    QVERIFY(!seat.isLoaded());
    QCOMPARE(seat.getChildCount(), 0u);

    trigger(QStringLiteral("File/Load All"));
    QVERIFY(seat.isLoaded());
    QCOMPARE(nameOf(QStringLiteral("Seat")), QStringLiteral("Saddle"));
    QVERIFY(seat.isChanged());
}

// Cancelled in the location dialog, then placed in a folder of the user's choice.
void tst_koReferenceWorkKept::hostSaveAsAsksOnceForNewSmartFiles()
{
    const QString copy = m_host.path(QStringLiteral("bike-copy.kpr"));
    const QString folder = m_host.path(QStringLiteral("new"));
    const QString placed = folder + QStringLiteral("/Seat.kpr");
    QDir().mkpath(folder);
    QStringList requests;
    const QObject listening;
    connect(koService<koInternalUiService>(), &koInternalUiService::requestUiSmartPathsUpdate, &listening,
            [&](const kodNode&, const QString& path, bool&) { requests << path; });
    for (const bool accept : {false, true}) {
        koDialogDriver driver;
        driver.handleDialog([accept, folder](QDialog* shown) {
            auto* dialog = qobject_cast<koReferenceSmartLocationDialogUI*>(shown);
            QVERIFY(dialog);
            dialog->m_location->setCurrentIndex(1);
            dialog->m_customPath->setText(folder);
            dialog->buttonBox->button(accept ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
        });
        const auto outcome = koService<koFileIOService>()->writeProject(copy);
        QCOMPARE(driver.mismatches(), QStringList());
        QCOMPARE(outcome, accept ? koFileIOService::SaveOutcome::Saved : koFileIOService::SaveOutcome::Cancelled);
        // Cancelled, the project stays where it was, as if Save As had not been chosen.
        QCOMPARE(koService<koFileIOService>()->getProjectPath(), accept ? copy : m_project);
        QCOMPARE(QFile::exists(copy), accept);
        QCOMPARE(QFile::exists(placed), accept);
    }
    QCOMPARE(requests, QStringList({copy, copy}));

    QVERIFY(koService<koFileIOService>()->loadProject(copy));
    const kodReferenceNode seat = koTestHost::findReference(QStringLiteral("Seat"));
    QCOMPARE(seat.getSmartPath(), placed);
    QCOMPARE(seat.getSmartFileState(), koReferenceTypes::UpToDate);
    QCOMPARE(nameOf(QStringLiteral("Seat")), QStringLiteral("Saddle"));
}

QTEST_MAIN(tst_koReferenceWorkKept)
#include "tst_koreferenceworkkept.moc"
