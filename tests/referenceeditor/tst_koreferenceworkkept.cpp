#include "koDialogDriver.h"
#include "koReferenceEditorActions.h"
#include "koReferenceEditorModule.h"
#include "koReferenceSmartLocationDialogUI.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koReferenceService.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
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
    void unloadedNewContentComesBack_data();
    void unloadedNewContentComesBack();
    void hostSaveAsksOnceForNewSmartFiles_data();
    void hostSaveAsksOnceForNewSmartFiles();

private:
    void trigger(const QString& path, const QStringList& selection = {});
    // Groups are converted from the host's scene tree, which asks the editor to run the flow.
    static void convertGroup(const QString& name);
    void answerLocationDialog(koDialogDriver& driver, bool accept);

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
    m_host.writeFile(QStringLiteral("bell.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Bell\nf 1 2 3\n");
    m_host.writeProject(QStringLiteral("frame.kpr"),
                        {koTestHost::geometry("Tube"), koTestHost::group("Fork", {koTestHost::geometry("Blade")})});
    m_host.writeProject(QStringLiteral("wheel.kpr"), {koTestHost::geometry("Rim")});
    m_project = m_host.writeProject(
        QStringLiteral("bike.kpr"),
        {koTestHost::reference("Frame", "frame.kpr", QString()),
         koTestHost::reference("Wheel", "wheel.kpr", QString(), {{"loaded", false}}),
         koTestHost::group("Seat", {koTestHost::geometry("Saddle")}),
         koTestHost::reference("Bell", QString(), "bell.obj")});
    QDir(m_host.path(QStringLiteral("new"))).removeRecursively();
    QVERIFY(koService<koFileIOService>()->loadProject(m_project));
    koService<koReferenceService>()->setShowConvertToSmartWarning(false);
    m_module = std::make_unique<koReferenceEditorModule>();
    koTestHost::settle();
}

void tst_koReferenceWorkKept::cleanup()
{
    m_module.reset();
}

void tst_koReferenceWorkKept::trigger(const QString& path, const QStringList& selection)
{
    QList<kodNode> nodes;
    for (const QString& name : selection)
        nodes << koTestHost::findNode(name);
    m_module->nodeSelectionModel()->selectNodes(nodes);
    m_module->actions()->updateActions();
    QAction* action = koTestHost::findAction(m_module->menuBar()->actions(), path);
    if (!action)
        action = koTestHost::findAction(m_module->actions()->contextMenu()->actions(), path);
    QVERIFY2(action, qPrintable(path));
    QVERIFY2(action->isEnabled(), qPrintable(path));
    action->trigger();
    koTestHost::settle();
}

void tst_koReferenceWorkKept::convertGroup(const QString& name)
{
    emit koService<koInternalUiService>()->requestUiConvertToSmarts({koTestHost::findNode(name)});
    koTestHost::settle();
    QVERIFY(koTestHost::findReference(name).hasSmartReference());
}

void tst_koReferenceWorkKept::answerLocationDialog(koDialogDriver& driver, bool accept)
{
    const QString folder = m_host.path(QStringLiteral("new"));
    QDir().mkpath(folder);
    driver.handleDialog([accept, folder](QDialog* shown) {
        auto* dialog = qobject_cast<koReferenceSmartLocationDialogUI*>(shown);
        QVERIFY(dialog);
        dialog->m_location->setCurrentIndex(1);
        dialog->m_customPath->setText(folder);
        dialog->buttonBox->button(accept ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
    });
}

void tst_koReferenceWorkKept::unloadedNewContentComesBack_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("group");
    QTest::addColumn<QString>("unload");
    QTest::addColumn<QString>("load");

    QTest::newRow("converted reference") << "Bell" << false << "Unload" << "Load";
    QTest::newRow("converted group, all") << "Seat" << true << "File/Unload All" << "File/Load All";
}

void tst_koReferenceWorkKept::unloadedNewContentComesBack()
{
    QFETCH(QString, target);
    QFETCH(bool, group);
    QFETCH(QString, unload);
    QFETCH(QString, load);
    if (group)
        convertGroup(target);
    else
        trigger(QStringLiteral("Convert to Smart Reference"), {target});
    const kodReferenceNode reference = koTestHost::findReference(target);
    const QString content = nameOf(target);
    QVERIFY(reference.isChanged());

    koDialogDriver driver;
    driver.answerMessageBox(QMessageBox::Ok);
    trigger(unload, group ? QStringList() : QStringList{target});
    QCOMPARE(driver.messageBoxes().size(), 1);
    QCOMPARE(driver.messageBoxes().first().title, QStringLiteral("Unload Smart References"));
    QVERIFY(!reference.isLoaded());
    QCOMPARE(reference.getChildCount(), 0u);

    trigger(load, group ? QStringList() : QStringList{target});
    QVERIFY(reference.isLoaded());
    QCOMPARE(nameOf(target), content);
    QVERIFY(reference.isChanged());
}

void tst_koReferenceWorkKept::hostSaveAsksOnceForNewSmartFiles_data()
{
    QTest::addColumn<bool>("accept");
    QTest::newRow("placed") << true;
    QTest::newRow("cancelled") << false;
}

void tst_koReferenceWorkKept::hostSaveAsksOnceForNewSmartFiles()
{
    QFETCH(bool, accept);
    convertGroup(QStringLiteral("Seat"));
    const QString copy = m_host.path(QStringLiteral("bike-copy.kpr"));
    QFile::remove(copy);
    QStringList requests;
    const QMetaObject::Connection counting =
        connect(koService<koInternalUiService>(), &koInternalUiService::requestUiSmartPathsUpdate, this,
                [&](const kodNode&, const QString& path, bool&) { requests << path; });
    koDialogDriver driver;
    answerLocationDialog(driver, accept);

    const auto outcome = koService<koFileIOService>()->writeProject(copy);
    disconnect(counting);

    QCOMPARE(requests, QStringList{copy});
    QCOMPARE(driver.mismatches(), QStringList());
    if (!accept) {
        QCOMPARE(outcome, koFileIOService::SaveOutcome::Cancelled);
        // The project stays where it was, as if Save As had not been chosen.
        QCOMPARE(koService<koFileIOService>()->getProjectPath(), m_project);
        QVERIFY(!QFile::exists(copy));
        QVERIFY(!QFile::exists(m_host.path(QStringLiteral("new/Seat.kpr"))));
        return;
    }
    QCOMPARE(outcome, koFileIOService::SaveOutcome::Saved);
    QVERIFY(koService<koFileIOService>()->loadProject(copy));
    const kodReferenceNode seat = koTestHost::findReference(QStringLiteral("Seat"));
    QCOMPARE(seat.getSmartPath(), m_host.path(QStringLiteral("new/Seat.kpr")));
    QCOMPARE(seat.getSmartFileState(), koReferenceTypes::UpToDate);
    QCOMPARE(nameOf(QStringLiteral("Seat")), QStringLiteral("Saddle"));
}

QTEST_MAIN(tst_koReferenceWorkKept)
#include "tst_koreferenceworkkept.moc"
