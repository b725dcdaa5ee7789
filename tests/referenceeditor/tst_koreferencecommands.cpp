#include "koDialogDriver.h"
#include "koInstalledService.h"
#include "koReferenceCommands.h"
#include "koReferenceEditorActions.h"
#include "koReferenceEditorModule.h"
#include "koReferenceTreeModel.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koTreeService.h>
#include <kovis/koUndoStack.h>

#include <QDesktopServices>
#include <QGridLayout>
#include <QLabel>
#include <QMenuBar>
#include <QSignalSpy>
#include <QToolBar>
#include <QUndoStack>
#include <QtTest>

#include <stdexcept>

namespace {

// Writes down the host calls that the commands make, then makes them.
class RecordingReferences : public koReferenceService
{
public:
    kodNode removeReference(const kodReferenceNode& reference) override
    {
        onRemove();
        return koReferenceService::removeReference(reference);
    }
    QList<kodReferenceNode> importSourceReferences(const QList<kodReferenceNode>& references) override
    {
        QStringList names;
        for (const kodReferenceNode& reference : references)
            names << reference.getName();
        calls << "import " + names.join(QLatin1Char(','));
        return koReferenceService::importSourceReferences(references);
    }

    QStringList calls;
    std::function<void()> onRemove = [] {};
};

// Writes down the selection that the commands send to the host's scene tree.
class RecordingTree : public koTreeService
{
public:
    void clearSelection() override { calls << QStringLiteral("clear selection"); }
    void setSelection(const QByteArray& encoded) override
    {
        QStringList names;
        for (quint32 id : decodeSelection(encoded))
            names << kodNode(id).getName();
        calls << QStringLiteral("select %1 in %2 bytes").arg(names.join(',')).arg(qUncompress(encoded).size());
    }
    void scrollToNode(unsigned id) override { calls << "scroll to " + kodNode(id).getName(); }

    QStringList calls;
};

class UrlCatcher : public QObject
{
    Q_OBJECT
public slots:
    void open(const QUrl& url) { urls << url; }

public:
    QList<QUrl> urls;
};

const QString convertWarningKey = QStringLiteral("Reference Show Convert to Smart Warning Enabled");

QString describe(const QString& name)
{
    const kodReferenceNode reference = koTestHost::findReference(name);
    if (!koService<koReferenceService>()->getSceneReferences().contains(reference))
        return name + QStringLiteral(" removed");
    return QStringLiteral("%1 %2 %3 %4")
        .arg(name, reference.isLoaded() ? "loaded" : "unloaded", reference.hasSmartReference() ? "smart" : "-",
             reference.hasSourceReference() ? "source" : "-");
}

} // namespace

class tst_koReferenceCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void commands_data();
    void commands();
    void removeAllReloadsOnceAfterTheLastRemoval();
    void sceneInformationSumsTheLinks();

private:
    koTestHost m_host;
    std::unique_ptr<RecordingReferences> m_references;
    std::unique_ptr<koInstalledService<koReferenceService>> m_installed;
    std::unique_ptr<koReferenceEditorModule> m_module;
};

void tst_koReferenceCommands::init()
{
    QVERIFY(koService<koFileIOService>()->loadProject(QStringLiteral(KOVIS_DEMO_PROJECT)));
    m_references = std::make_unique<RecordingReferences>();
    m_installed = std::make_unique<koInstalledService<koReferenceService>>(m_references.get());
    koUndoStack::the()->clear();
    m_module = std::make_unique<koReferenceEditorModule>();
    koTestHost::settle();
}

void tst_koReferenceCommands::cleanup()
{
    m_module.reset();
    m_installed.reset();
    m_references.reset();
}

void tst_koReferenceCommands::commands_data()
{
    // A menu entry, or "request ..." for the host's request.
    QTest::addColumn<QString>("command");
    // "edit Name" edits the content of the reference, "unload Name" unloads it; "warn" turns
    // the convert warning on, "tick" ticks the check box of the box answered.
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("selection");
    QTest::addColumn<int>("answer");
    // The boxes shown, the calls to the host and its scene tree, the folders opened, the
    // selected references that changed and the undo steps that take the change back.
    QTest::addColumn<QStringList>("outcome");

    const int none = QMessageBox::NoButton;
    const int cancel = QMessageBox::Cancel;
    // One question for the whole selection, though only a sub-reference of the last one was edited.
    QTest::newRow("unload, modified below")
        << "Unload" << QStringList{"edit Fork"} << QStringList{"Light", "Frame"} << cancel
        << QStringList{"Unload Smart References|You have selected to unload modified references in your session. To "
                       "keep these changes, click Cancel and save your changes. To continue the unload and loose all "
                       "modifications, click OK. (question)"};
    // The choice in the convert warning is kept even when the user cancels.
    QTest::newRow("convert warning ticked, Cancel")
        << "Convert to Smart Reference" << QStringList{"warn", "tick"} << QStringList{"Bell"} << cancel
        << QStringList{"Convert to Smart References|Converting to smart references adds a reference to the Smart column "
                       "of the Reference Editor. Smart references maintain a link to their source reference. Smart "
                       "references aren't immediately created on disk. They are created once you save.\n\nSmart "
                       "references are an advanced feature. Use them to divide a project into multiple KPR files for "
                       "individual team members to work on. Select OK to proceed.\n (question)",
                       "convert warning switched"};
    QTest::newRow("host: reimport sources up to date")
        << "request reimport" << QStringList() << QStringList{"Drivetrain", "Bell", "Chain"} << none
        << QStringList{"import Bell,Chain", "undo 2 steps"};
    QTest::newRow("select nodes")
        << "Select Nodes" << QStringList() << QStringList{"Frame", "Bell", "Mudguard"} << none
        << QStringList{"clear selection", "select Frame,Bell,Mudguard in 12 bytes", "scroll to Mudguard"};
    // Each entry reaches the host with the whole selection, in one undo step.
    QTest::newRow("remove") << "Edit/Remove" << QStringList() << QStringList{"Frame", "Bell"} << none
                            << QStringList{"Frame removed", "Bell removed", "undo Remove references"};
    QTest::newRow("delete smart") << "Delete Smart" << QStringList() << QStringList{"Frame"} << none
                                  << QStringList{"Frame loaded - source", "undo Delete smart references"};
    QTest::newRow("delete all source") << "Edit/Delete All Source References" << QStringList()
                                       << QStringList{"Frame"} << none
                                       << QStringList{"Frame loaded smart -", "undo Delete all source references"};
    QTest::newRow("reimport smart, unloaded only")
        << "(Re)Import Smart/Unloaded" << QStringList() << QStringList{"Frame", "Mudguard"} << none
        << QStringList{"Mudguard loaded smart -", "undo Reimport Smart Reference"};
    QTest::newRow("reimport source, outdated only")
        << "(Re)Import Source/Outdated" << QStringList() << QStringList{"Frame", "Drivetrain"} << int(QMessageBox::Ok)
        << QStringList{"Reimport source references|Reimporting smart reference's source file will replace the current "
                       "smart reference with a newly converted version from the source. This will only overwrite the "
                       "smart reference once you save. Select OK to proceed. (question)",
                       "import Drivetrain", "undo Import Source"};
    // Smart files are read one by one, sources imported at once.
    QTest::newRow("host: load") << "request load" << QStringList{"unload Drivetrain", "unload Bell"}
                                << QStringList{"Drivetrain", "Bell"} << none
                                << QStringList{"import Bell", "Drivetrain loaded smart source", "Bell loaded - source",
                                               "undo 2 steps"};
    QTest::newRow("remove all, Cancel")
        << "Edit/Remove All References" << QStringList() << QStringList() << cancel
        << QStringList{"Remove all References|You are about to remove all references from your scene. This will "
                       "convert all references to Kovis groups and combine all external files into the current KPR "
                       "(inline). Select OK to proceed. (question)"};
    QTest::newRow("convert all, one source out of date, Cancel")
        << "Edit/Convert All to Smart References" << QStringList() << QStringList() << cancel
        << QStringList{"Convert to Smart References|You are attempting to convert outdated source references. Select "
                       "OK to proceed (question)"};
    QTest::newRow("open the folder of the smart file") << "Open Smart in Explorer" << QStringList()
                                                       << QStringList{"Frame"} << none << QStringList{"open frame"};
    QTest::newRow("open a missing file") << "Open Smart in Explorer" << QStringList() << QStringList{"Cassette"} << none
                                         << QStringList();
}

void tst_koReferenceCommands::commands()
{
    QFETCH(QString, command);
    QFETCH(QStringList, before);
    QFETCH(QStringList, selection);
    QFETCH(int, answer);
    QFETCH(QStringList, outcome);

    const bool warn = before.contains(QStringLiteral("warn"));
    auto* preferences = koService<koPreferencesService>();
    preferences->setBoolValue(convertWarningKey, warn, false);
    m_references->setShowConvertToSmartWarning(warn);
    for (const QString& step : before) {
        kodReferenceNode reference = koTestHost::findReference(step.section(QLatin1Char(' '), 1));
        if (step.startsWith(QLatin1String("edit ")))
            reference.getChildren().first().setName(QStringLiteral("edited"));
        else if (step.startsWith(QLatin1String("unload ")))
            reference.unload();
    }
    const QList<kodReferenceNode> references = koTestHost::findReferences(selection);
    m_module->nodeSelectionModel()->selectNodes({references.begin(), references.end()});
    QStringList states;
    for (const QString& name : selection)
        states << describe(name);
    const QByteArray scene = koTestHost::sceneSnapshot();
    const int steps = koUndoStack::the()->count();
    koDialogDriver driver;
    if (answer != QMessageBox::NoButton)
        driver.answerMessageBox(QMessageBox::StandardButton(answer), before.contains(QStringLiteral("tick")));
    UrlCatcher opened;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &opened, "open");
    RecordingTree tree;
    const koInstalledService<koTreeService> recording(&tree);

    auto* ui = koService<koInternalUiService>();
    if (command == QLatin1String("request reimport"))
        emit ui->requestUiReimportSources(references, koReferenceTypes::UpToDate);
    else if (command == QLatin1String("request load"))
        emit ui->requestUiLoadReferences(references);
    else if (QAction* inMenuBar = koTestHost::findAction(m_module->menuBar()->actions(), command))
        inMenuBar->trigger();
    else
        koTestHost::findAction(m_module->actions()->contextMenu()->actions(), command)->trigger();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));

    QStringList shown = driver.mismatches() + driver.summaries() + m_references->calls + tree.calls;
    if (preferences->getBoolValue(convertWarningKey, !warn) != warn)
        shown << QStringLiteral("convert warning switched");
    const QDir demo(QFileInfo(QStringLiteral(KOVIS_DEMO_PROJECT)).canonicalPath());
    for (const QUrl& url : qAsConst(opened.urls))
        shown << "open " + demo.relativeFilePath(url.toLocalFile());
    for (int i = 0; i < selection.size(); ++i) {
        if (describe(selection.at(i)) != states.at(i))
            shown << describe(selection.at(i));
    }
    const bool changed = koTestHost::sceneSnapshot() != scene;
    const int added = koUndoStack::the()->count() - steps;
    if (added == 1)
        shown << "undo " + koUndoStack::the()->undoText();
    else if (added > 1)
        shown << QStringLiteral("undo %1 steps").arg(added);
    else if (changed)
        shown << QStringLiteral("changed without an undo step");
    QCOMPARE(shown, outcome);
    // Every change can be taken back.
    while (koUndoStack::the()->stack()->index() > steps)
        koUndoStack::the()->undo();
    QCOMPARE(koTestHost::sceneSnapshot(), scene);
}

void tst_koReferenceCommands::removeAllReloadsOnceAfterTheLastRemoval()
{
    QSignalSpy resets(m_module->referenceModel(), &QAbstractItemModel::modelReset);
    QSignalSpy layouts(m_module->referenceModel(), &QAbstractItemModel::layoutChanged);
    int queuedMeanwhile = 0;
    m_references->onRemove = [&] { queuedMeanwhile += m_module->isReloadPending(); };
    koDialogDriver driver;
    driver.answerMessageBox(QMessageBox::Ok);
    m_module->commands()->removeAllReferences();
    QCOMPARE(queuedMeanwhile, 0);
    QVERIFY(!m_module->isProjectLoading());
    QVERIFY(m_module->isReloadPending());
    koTestHost::settle();
    QCOMPARE(resets.count() + layouts.count(), 1);
    // Only the project is left a reference; everything below became plain groups.
    QCOMPARE(m_module->referenceModel()->rowCount(), 1);
    QCOMPARE(m_module->referenceModel()->rowCount(m_module->referenceModel()->index(0, 0)), 0);

    // A host that fails half-way must not leave the window waiting for a load that never ends.
    QVERIFY(koService<koFileIOService>()->loadProject(QStringLiteral(KOVIS_DEMO_PROJECT)));
    int removals = 0;
    m_references->onRemove = [&removals] {
        if (++removals == 3)
            throw std::runtime_error("host failure");
    };
    driver.answerMessageBox(QMessageBox::Ok);
    QVERIFY_EXCEPTION_THROWN(m_module->commands()->removeAllReferences(), std::runtime_error);
    QVERIFY(!m_module->isProjectLoading());
}

void tst_koReferenceCommands::sceneInformationSumsTheLinks()
{
    QStringList shown;
    koDialogDriver driver;
    driver.handleDialog([&](QDialog* dialog) {
        shown << dialog->windowTitle();
        // Read as a reader sees it: top to bottom, each value beside its label, a
        // section title across both columns.
        const auto* grid = dialog->findChild<QGridLayout*>(QStringLiteral("infoGrid"));
        QVERIFY(grid);
        for (int row = 0; row < grid->rowCount(); ++row) {
            QLayoutItem* left = grid->itemAtPosition(row, 0);
            QLayoutItem* right = grid->itemAtPosition(row, 1);
            QVERIFY2(left && right, "a gap in the grid");
            const auto* label = qobject_cast<QLabel*>(left->widget());
            const auto* value = qobject_cast<QLabel*>(right->widget());
            shown << (label == value ? "# " + label->text() : label->text() + ": " + value->text());
        }
        dialog->accept();
    });
    m_module->findChild<QToolBar*>(QStringLiteral("QuickActionBar"))->actions().last()->trigger();

    const QStringList expected{"Scene Information", "# General", "References: 18", "Missing References: 1",
                               "Outdated References: 1", "Unsaved References: 0", "Modified References: 0",
                               "# Smart References", "Smart References: 12", "Missing Smart References: 1",
                               "Outdated Smart References: 0", "Unsaved Smart References: 0", "# Source References",
                               "Source References: 12", "Missing Source References: 0",
                               "Outdated Source References: 1"};
    QCOMPARE(shown, expected);
}

QTEST_MAIN(tst_koReferenceCommands)
#include "tst_koreferencecommands.moc"
