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

QString names(const QList<kodReferenceNode>& references)
{
    QStringList result;
    for (const kodReferenceNode& reference : references)
        result << reference.getName();
    return result.join(QLatin1Char(','));
}

// Writes down the host calls that the commands make, then makes them.
class RecordingReferences : public koReferenceService
{
public:
    kodNode removeReference(const kodReferenceNode& reference) override
    {
        calls << QStringLiteral("remove ") + reference.getName();
        if (onRemove)
            onRemove();
        if (calls.size() == failAt)
            throw std::runtime_error("host failure");
        return koReferenceService::removeReference(reference);
    }
    kodReferenceNode convertToSmartReference(const kodNode& node) override
    {
        calls << QStringLiteral("convert ") + node.getName();
        return koReferenceService::convertToSmartReference(node);
    }
    QList<kodReferenceNode> importSourceReferences(const QList<kodReferenceNode>& references) override
    {
        calls << QStringLiteral("import ") + names(references);
        return koReferenceService::importSourceReferences(references);
    }
    QList<kodReferenceNode> reimportSmartReferences(const QList<kodReferenceNode>& references) override
    {
        calls << QStringLiteral("reimport ") + names(references);
        return koReferenceService::reimportSmartReferences(references);
    }

    QStringList calls;
    int failAt = -1;
    std::function<void()> onRemove;
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

const QMap<QString, QString> confirmationTexts{
    {"Unload Smart References",
     "You have selected to unload modified references in your session. To keep these changes, click Cancel and save "
     "your changes. To continue the unload and loose all modifications, click OK."},
    {"Remove all References",
     "You are about to remove all references from your scene. This will convert all references to Kovis groups and "
     "combine all external files into the current KPR (inline). Select OK to proceed."},
    {"Reimport source references",
     "Reimporting smart reference's source file will replace the current smart reference with a newly converted "
     "version from the source. This will only overwrite the smart reference once you save. Select OK to proceed."},
    {"Convert to Smart References", "You are attempting to convert outdated source references. Select OK to proceed"}};

// Edits the content of the reference, so that it counts as modified.
void modify(const QString& name)
{
    koTestHost::findReference(name).getChildren().first().setName(QStringLiteral("edited"));
}

QString describe(const QString& name)
{
    const kodReferenceNode reference = koTestHost::findReference(name);
    if (!koService<koReferenceService>()->getSceneReferences().contains(reference))
        return name + QStringLiteral(" removed");
    return QStringLiteral("%1 %2 %3 %4")
        .arg(name, reference.isLoaded() ? "loaded" : "unloaded", reference.hasSmartReference() ? "smart" : "-",
             reference.hasSourceReference() ? "source" : "-");
}

// "ask Title" for a question with the text of its title, else the box as it was.
QStringList boxes(const koDialogDriver& driver)
{
    QStringList shown;
    for (const QString& box : driver.summaries()) {
        const QString title = box.section(QLatin1Char('|'), 0, 0);
        shown << (box == title + '|' + confirmationTexts.value(title) + " (question)" ? "ask " + title : box);
    }
    for (const koDialogDriver::MessageBox& box : driver.messageBoxes()) {
        if (!box.checkBoxText.isEmpty())
            shown << QStringLiteral("check box %1%2").arg(box.checkBoxText, box.checkBoxChecked ? ", ticked" : "");
    }
    return shown;
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
    void sceneInformationSumsTheLinks_data();
    void sceneInformationSumsTheLinks();

private:
    QAction* action(const QString& path) const;
    void select(const QStringList& names);
    void run(const QString& command, const QList<kodReferenceNode>& references);

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
    m_references->setShowConvertToSmartWarning(false);
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

// "File/Load All" and "Edit/..." are the menu bar's; other paths are the context menu's.
QAction* tst_koReferenceCommands::action(const QString& path) const
{
    QAction* found = koTestHost::findAction(m_module->menuBar()->actions(), path);
    return found ? found : koTestHost::findAction(m_module->actions()->contextMenu()->actions(), path);
}

void tst_koReferenceCommands::select(const QStringList& names)
{
    const QList<kodReferenceNode> references = koTestHost::findReferences(names);
    m_module->nodeSelectionModel()->selectNodes({references.begin(), references.end()});
    QCOMPARE(m_module->nodeSelectionModel()->getAllSelectedNodes().size(), names.size());
}

// Menu paths as in action(); "request ..." for the host's requests.
void tst_koReferenceCommands::run(const QString& command, const QList<kodReferenceNode>& references)
{
    auto* ui = koService<koInternalUiService>();
    const QMap<QString, std::function<void()>> requests{
        {"request load", [&] { emit ui->requestUiLoadReferences(references); }},
        {"request unload", [&] { emit ui->requestUiUnloadReferences(references); }},
        {"request remove", [&] { emit ui->requestUiRemoveReferences(references); }},
        {"request remove smarts", [&] { emit ui->requestUiRemoveSmarts(references); }},
        {"request remove sources", [&] { emit ui->requestUiRemoveSources(references); }},
        {"request convert", [&] { emit ui->requestUiConvertToSmarts({references.begin(), references.end()}); }},
        {"request reimport missing smarts",
         [&] { emit ui->requestUiReimportSmarts(references, koReferenceTypes::Missing); }},
        {"request reimport up-to-date sources",
         [&] { emit ui->requestUiReimportSources(references, koReferenceTypes::UpToDate); }},
        {"request load unloaded smarts",
         [&] { emit ui->requestUILoadUnloadedSmarts(references, koReferenceTypes::Unloaded); }},
        {"request load unloaded sources",
         [&] { emit ui->requestUILoadUnloadedSources(references, koReferenceTypes::Unloaded); }},
        {"request open sources", [&] { emit ui->requestUiOpenSourcesInExplorer(references); }}};
    if (requests.contains(command))
        requests.value(command)();
    else
        action(command)->trigger();
}

void tst_koReferenceCommands::commands_data()
{
    QTest::addColumn<QString>("command");
    // "edit Name" edits the content of the reference, "unload Name" unloads it; "warn" turns
    // the convert warning on, "tick" ticks the check box of the box answered.
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("selection");
    QTest::addColumn<int>("answer");
    // The questions, the calls to the host and its scene tree, the folders opened, the
    // selected references that changed, and the undo steps that take the change back.
    QTest::addColumn<QStringList>("outcome");

    const int none = QMessageBox::NoButton;
    const int ok = QMessageBox::Ok;
    const int cancel = QMessageBox::Cancel;
    const QStringList nothing;
    for (int answer : {ok, cancel}) {
        const bool yes = answer == ok;
        const QString suffix = yes ? " (OK)" : " (Cancel)";
        QTest::newRow(qPrintable("unload a modified reference" + suffix))
            << "Unload" << QStringList{"edit Frame"} << QStringList{"Frame"} << answer
            << QStringList{"ask Unload Smart References"}
                   + (yes ? QStringList{"Frame unloaded smart source", "undo Unload Reference"} : nothing);
        QTest::newRow(qPrintable("remove all references" + suffix))
            << "Edit/Remove All References" << nothing << nothing << answer
            << QStringList{"ask Remove all References"}
                   + (yes ? QStringList{"remove *", "undo Remove all references"} : nothing);
        QTest::newRow(qPrintable("reimport sources with a smart link" + suffix))
            << "(Re)Import Source/Selected" << nothing << QStringList{"Drivetrain", "Bell"} << answer
            << QStringList{"ask Reimport source references"}
                   + (yes ? QStringList{"import Drivetrain,Bell", "undo 2 steps"} : nothing);
        QTest::newRow(qPrintable("convert all, one source out of date" + suffix))
            << "Edit/Convert All to Smart References" << nothing << nothing << answer
            << QStringList{"ask Convert to Smart References"}
                   + (yes ? QStringList{"undo Convert all to smart references"} : nothing);
    }
    QTest::newRow("remove selected")
        << "Edit/Remove" << nothing << QStringList{"Frame", "Bell"} << none
        << QStringList{"remove Frame", "remove Bell", "Frame removed", "Bell removed", "undo Remove references"};
    QTest::newRow("convert selected")
        << "Convert to Smart Reference" << nothing << QStringList{"Bell", "Seat Post"} << none
        << QStringList{"convert Bell", "convert Seat Post", "Bell loaded smart source", "Seat Post loaded smart source",
                       "undo Convert to smart references"};
    // The choice in the convert warning is kept even when the user cancels.
    const QString convertWarning = QStringLiteral(
        "Convert to Smart References|Converting to smart references adds a reference to the Smart column of the "
        "Reference Editor. Smart references maintain a link to their source reference. Smart references aren't "
        "immediately created on disk. They are created once you save.\n\nSmart references are an advanced feature. "
        "Use them to divide a project into multiple KPR files for individual team members to work on. Select OK to "
        "proceed.\n (question)");
    const QStringList notified{"check box Do not show again", "changed preferences References",
                               "applied preferences References"};
    QTest::newRow("convert warning ticked, Cancel")
        << "Convert to Smart Reference" << QStringList{"warn", "tick"} << QStringList{"Bell"} << cancel
        << QStringList{convertWarning} + notified + QStringList{"convert warning switched"};
    QTest::newRow("convert warning not ticked, OK")
        << "Convert to Smart Reference" << QStringList{"warn"} << QStringList{"Bell"} << ok
        << QStringList{convertWarning} + notified
               + QStringList{"convert Bell", "Bell loaded smart source", "undo Convert to smart references"};
    QTest::newRow("reimport sources without a smart link")
        << "(Re)Import Source/Selected" << nothing << QStringList{"Bell", "Seat Post"} << none
        << QStringList{"import Bell,Seat Post", "undo 2 steps"};
    QTest::newRow("delete smart")
        << "Delete Smart" << nothing << QStringList{"Frame", "Mudguard"} << none
        << QStringList{"Frame loaded - source", "Mudguard unloaded - -", "undo Delete smart references"};
    QTest::newRow("delete source") << "Delete Source" << nothing << QStringList{"Frame"} << none
                                   << QStringList{"Frame loaded smart -", "undo Delete source references"};
    QTest::newRow("delete all smart") << "Edit/Delete All Smart References" << nothing << nothing << none
                                      << QStringList{"undo Delete all smart references"};
    QTest::newRow("delete all source") << "Edit/Delete All Source References" << nothing << nothing << none
                                       << QStringList{"undo Delete all source references"};
    QTest::newRow("reimport smart, unloaded only")
        << "(Re)Import Smart/Unloaded" << nothing << QStringList{"Frame", "Mudguard"} << none
        << QStringList{"reimport Mudguard", "Mudguard loaded smart -", "undo Reimport Smart Reference"};
    QTest::newRow("reimport source, outdated only")
        << "(Re)Import Source/Outdated" << nothing << QStringList{"Frame", "Drivetrain"} << ok
        << QStringList{"ask Reimport source references", "import Drivetrain", "undo Import Source"};
    // One question for the whole selection, whichever reference or sub-reference was edited.
    const QStringList unloadCancelled{"ask Unload Smart References"};
    QTest::newRow("unload, nothing modified")
        << "Unload" << nothing << QStringList{"Frame", "Light"} << none
        << QStringList{"Frame unloaded smart source", "Light unloaded smart source", "undo 2 steps"};
    QTest::newRow("unload, the last one modified") << "Unload" << QStringList{"edit Frame"}
                                                   << QStringList{"Light", "Frame"} << cancel << unloadCancelled;
    QTest::newRow("unload, two modified") << "Unload" << QStringList{"edit Frame", "edit Drivetrain"}
                                          << QStringList{"Frame", "Drivetrain"} << cancel << unloadCancelled;
    QTest::newRow("unload, modified below") << "Unload" << QStringList{"edit Fork"} << QStringList{"Light", "Frame"}
                                            << cancel << unloadCancelled;
    QTest::newRow("clone") << "Edit/Clone" << nothing << QStringList{"Frame"} << none
                           << QStringList{"undo Insert Nodes"};

    // Smart files are read one by one, sources imported at once.
    QTest::newRow("host: load")
        << "request load" << QStringList{"unload Drivetrain", "unload Bell", "unload Mudguard", "unload Seat Post"}
        << QStringList{"Drivetrain", "Bell", "Mudguard", "Seat Post"} << none
        << QStringList{"import Bell,Seat Post", "Drivetrain loaded smart source", "Bell loaded - source",
                       "Mudguard loaded smart -", "Seat Post loaded - source", "undo 4 steps"};
    QTest::newRow("host: unload") << "request unload" << nothing << QStringList{"Frame"} << none
                                  << QStringList{"Frame unloaded smart source", "undo Unload Reference"};
    QTest::newRow("host: remove") << "request remove" << nothing << QStringList{"Bell"} << none
                                  << QStringList{"remove Bell", "Bell removed", "undo Remove references"};
    QTest::newRow("host: remove smarts") << "request remove smarts" << nothing << QStringList{"Frame"} << none
                                         << QStringList{"Frame loaded - source", "undo Delete smart references"};
    QTest::newRow("host: remove sources") << "request remove sources" << nothing << QStringList{"Frame"} << none
                                          << QStringList{"Frame loaded smart -", "undo Delete source references"};
    QTest::newRow("host: convert")
        << "request convert" << nothing << QStringList{"Bell"} << none
        << QStringList{"convert Bell", "Bell loaded smart source", "undo Convert to smart references"};
    QTest::newRow("host: reimport missing smarts") << "request reimport missing smarts" << nothing
                                                   << QStringList{"Frame", "Cassette"} << none
                                                   << QStringList{"reimport Cassette"};
    QTest::newRow("host: reimport sources up to date")
        << "request reimport up-to-date sources" << nothing << QStringList{"Drivetrain", "Bell", "Chain"} << none
        << QStringList{"import Bell,Chain", "undo 2 steps"};
    QTest::newRow("host: load unloaded smarts")
        << "request load unloaded smarts" << QStringList{"unload Bell"} << QStringList{"Mudguard", "Bell"} << none
        << QStringList{"import ", "Mudguard loaded smart -", "undo Load Reference"};
    QTest::newRow("host: load unloaded sources")
        << "request load unloaded sources" << QStringList{"unload Bell"} << QStringList{"Mudguard", "Bell"} << none
        << QStringList{"import Bell", "Bell loaded - source", "undo Import Source"};

    QTest::newRow("select nodes")
        << "Select Nodes" << nothing << QStringList{"Frame", "Bell", "Mudguard"} << none
        << QStringList{"clear selection", "select Frame,Bell,Mudguard in 12 bytes", "scroll to Mudguard"};
    QTest::newRow("open smart file") << "Open Smart in Explorer" << nothing << QStringList{"Frame"} << none
                                     << QStringList{"open frame"};
    QTest::newRow("open source file") << "Open Source in Explorer" << nothing << QStringList{"Bell"} << none
                                      << QStringList{"open accessories"};
    QTest::newRow("open the first of two") << "Open Smart in Explorer" << nothing << QStringList{"Light", "Frame"}
                                           << none << QStringList{"open accessories"};
    QTest::newRow("open a missing file") << "Open Smart in Explorer" << nothing << QStringList{"Cassette"} << none
                                         << nothing;
    QTest::newRow("open no such link") << "Open Source in Explorer" << nothing << QStringList{"Mudguard"} << none
                                       << nothing;
    QTest::newRow("host: open sources") << "request open sources" << nothing << QStringList{"Bell"} << none
                                        << QStringList{"open accessories"};
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
        if (step.startsWith(QLatin1String("edit ")))
            modify(step.mid(5));
        else if (step.startsWith(QLatin1String("unload ")))
            koTestHost::findReference(step.mid(7)).unload();
    }
    select(selection);
    // "remove *" stands for a removal of every reference, in scene order.
    const int all = outcome.indexOf("remove *");
    if (all >= 0) {
        QStringList calls;
        for (const kodReferenceNode& each : koService<koReferenceService>()->getSceneReferences())
            calls << "remove " + each.getName();
        outcome = outcome.mid(0, all) + calls + outcome.mid(all + 1);
    }
    QStringList states;
    for (const QString& name : selection)
        states << describe(name);
    const QByteArray scene = koTestHost::sceneSnapshot();
    const int steps = koUndoStack::the()->count();
    koDialogDriver driver;
    if (answer != QMessageBox::NoButton)
        driver.answerMessageBox(QMessageBox::StandardButton(answer), before.contains(QStringLiteral("tick")));
    QStringList notified;
    const QObject listening;
    connect(preferences, &koPreferencesService::categoryChanged, &listening,
            [&](const QString& category) { notified << "changed preferences " + category; });
    connect(preferences, &koPreferencesService::categoryApplied, &listening,
            [&](const QString& category) { notified << "applied preferences " + category; });
    UrlCatcher opened;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &opened, "open");
    RecordingTree tree;
    const koInstalledService<koTreeService> recording(&tree);

    run(command, koTestHost::findReferences(selection));
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));

    QStringList shown = driver.mismatches() + boxes(driver) + notified + m_references->calls + tree.calls;
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
    QCOMPARE(changed, added > 0);
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
    QCOMPARE(resets.count() + layouts.count(), 0);
    QVERIFY(!m_module->isProjectLoading());
    QVERIFY(m_module->isReloadPending());
    koTestHost::settle();
    QCOMPARE(resets.count() + layouts.count(), 1);
    // Only the project is left a reference; everything below became plain groups.
    QCOMPARE(m_module->referenceModel()->rowCount(), 1);
    QCOMPARE(m_module->referenceModel()->rowCount(m_module->referenceModel()->index(0, 0)), 0);

    // A host that fails half-way must not leave the window waiting for a load that never ends.
    QVERIFY(koService<koFileIOService>()->loadProject(QStringLiteral(KOVIS_DEMO_PROJECT)));
    m_references->failAt = m_references->calls.size() + 3;
    driver.answerMessageBox(QMessageBox::Ok);
    QVERIFY_EXCEPTION_THROWN(m_module->commands()->removeAllReferences(), std::runtime_error);
    QVERIFY(!m_module->isProjectLoading());
}

void tst_koReferenceCommands::sceneInformationSumsTheLinks_data()
{
    QTest::addColumn<QString>("scene");
    QTest::addColumn<QStringList>("values");

    QTest::newRow("demo") << "demo" << QStringList{"18", "1", "1", "0", "0", "12", "1", "0", "0", "12", "0", "1"};
    // The new smart reference counts as modified too: it exists only in memory.
    QTest::newRow("demo, edited") << "edited"
                                  << QStringList{"18", "1", "1", "1", "3", "13", "1", "0", "1", "12", "0", "1"};
    QTest::newRow("both files missing") << "missing"
                                        << QStringList{"2", "2", "0", "0", "0", "2", "1", "0", "0", "1", "1", "0"};
}

void tst_koReferenceCommands::sceneInformationSumsTheLinks()
{
    QFETCH(QString, scene);
    QFETCH(QStringList, values);

    if (scene == QLatin1String("edited")) {
        modify(QStringLiteral("Frame"));
        koTestHost::findReference(QStringLiteral("Bell")).createSmartReference();
    }
    if (scene == QLatin1String("missing")) {
        const QString project = m_host.writeProject(
            "scene.kpr", {koTestHost::reference("Gone", m_host.path("gone.kpr"), m_host.path("gone.obj"))});
        QVERIFY(koService<koFileIOService>()->loadProject(project));
    }
    QStringList shown;
    QString title;
    koDialogDriver driver;
    driver.handleDialog([&](QDialog* dialog) {
        title = dialog->windowTitle();
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

    const QStringList labels{"References", "Missing References", "Outdated References", "Unsaved References",
                             "Modified References", "Smart References", "Missing Smart References",
                             "Outdated Smart References", "Unsaved Smart References", "Source References",
                             "Missing Source References", "Outdated Source References"};
    QStringList expected;
    for (int i = 0; i < labels.size(); ++i)
        expected << labels.at(i) + ": " + values.at(i);
    expected.insert(9, "# Source References");
    expected.insert(5, "# Smart References");
    expected.prepend("# General");
    QCOMPARE(title, QStringLiteral("Scene Information"));
    QCOMPARE(shown, expected);
}

QTEST_MAIN(tst_koReferenceCommands)
#include "tst_koreferencecommands.moc"
