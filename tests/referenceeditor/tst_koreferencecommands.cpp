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

#include <QCheckBox>
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

class RecordingTree : public koTreeService
{
public:
    void clearSelection() override { calls << QStringLiteral("clearSelection"); }
    void setSelection(const QByteArray& encoded) override
    {
        calls << QStringLiteral("setSelection");
        ids = encoded;
    }
    void scrollToNode(unsigned id) override { calls << QStringLiteral("scrollToNode %1").arg(id); }

    QStringList calls;
    QByteArray ids;
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

kodReferenceNode reference(const QString& name)
{
    return koTestHost::findReference(name);
}

QList<kodReferenceNode> references(const QStringList& names)
{
    QList<kodReferenceNode> result;
    for (const QString& name : names)
        result << reference(name);
    return result;
}

// Edits the content of the reference, so that it counts as modified.
void modify(const QString& name)
{
    reference(name).getChildren().first().setName(QStringLiteral("edited"));
}

QString describe(const kodReferenceNode& reference)
{
    return QStringLiteral("%1 %2 %3 %4")
        .arg(reference.getName(), reference.isLoaded() ? "loaded" : "unloaded",
             reference.hasSmartReference() ? "smart" : "-", reference.hasSourceReference() ? "source" : "-");
}

} // namespace

class tst_koReferenceCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void commandsAskAndGroupTheirChanges_data();
    void commandsAskAndGroupTheirChanges();
    void removeAllReloadsOnceAfterTheLastRemoval();
    void convertWarningKeepsTheChoiceEvenOnCancel_data();
    void convertWarningKeepsTheChoiceEvenOnCancel();
    void hostRequestsRunTheFlows_data();
    void hostRequestsRunTheFlows();
    void selectNodesSendsTheCompressedIds();
    void sceneInformationSumsTheLinks_data();
    void sceneInformationSumsTheLinks();
    void openLocationOpensTheFolder_data();
    void openLocationOpensTheFolder();

private:
    QAction* action(const QString& path) const;
    void select(const QStringList& names);

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
    QList<kodNode> nodes;
    for (const QString& name : names)
        nodes << reference(name);
    m_module->nodeSelectionModel()->selectNodes(nodes);
    QCOMPARE(m_module->nodeSelectionModel()->getAllSelectedNodes().size(), names.size());
}

void tst_koReferenceCommands::commandsAskAndGroupTheirChanges_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("selection");
    QTest::addColumn<QStringList>("modified");
    QTest::addColumn<QStringList>("questions");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QString>("undoStep");

    const int ok = QMessageBox::Ok;
    const int cancel = QMessageBox::Cancel;
    const QStringList none;
    for (int answer : {ok, cancel}) {
        const QString suffix = answer == ok ? " (OK)" : " (Cancel)";
        QTest::newRow(qPrintable("unload a modified reference" + suffix))
            << "Unload" << QStringList{"Frame"} << QStringList{"Frame"} << QStringList{"Unload Smart References"} << answer << none
            << "";
        QTest::newRow(qPrintable("remove all references" + suffix))
            << "Edit/Remove All References" << none << none << QStringList{"Remove all References"} << answer
            << QStringList{"remove *"} << "Remove all references";
        QTest::newRow(qPrintable("reimport sources with a smart link" + suffix))
            << "(Re)Import Source/Selected" << QStringList{"Drivetrain", "Bell"} << none
            << QStringList{"Reimport source references"} << answer << QStringList{"import Drivetrain,Bell"} << "";
        QTest::newRow(qPrintable("convert all, one source out of date" + suffix))
            << "Edit/Convert All to Smart References" << none << none << QStringList{"Convert to Smart References"}
            << answer << none << "Convert all to smart references";
    }
    QTest::newRow("remove selected") << "Edit/Remove" << QStringList{"Frame", "Bell"} << none << none << ok
                                     << QStringList{"remove Frame", "remove Bell"} << "Remove references";
    QTest::newRow("convert selected") << "Convert to Smart Reference" << QStringList{"Bell", "Seat Post"} << none
                                      << none << ok << QStringList{"convert Bell", "convert Seat Post"}
                                      << "Convert to smart references";
    QTest::newRow("reimport sources without a smart link")
        << "(Re)Import Source/Selected" << QStringList{"Bell", "Seat Post"} << none << none << ok
        << QStringList{"import Bell,Seat Post"} << "";
    QTest::newRow("delete smart") << "Delete Smart" << QStringList{"Frame", "Mudguard"} << none << none << ok << none
                                  << "Delete smart references";
    QTest::newRow("delete source") << "Delete Source" << QStringList{"Frame"} << none << none << ok << none
                                   << "Delete source references";
    QTest::newRow("delete all smart") << "Edit/Delete All Smart References" << none << none << none << ok << none
                                      << "Delete all smart references";
    QTest::newRow("delete all source") << "Edit/Delete All Source References" << none << none << none << ok << none
                                       << "Delete all source references";
    QTest::newRow("reimport smart, unloaded only") << "(Re)Import Smart/Unloaded" << QStringList{"Frame", "Mudguard"}
                                                   << none << none << ok << QStringList{"reimport Mudguard"} << "";
    QTest::newRow("reimport source, outdated only")
        << "(Re)Import Source/Outdated" << QStringList{"Frame", "Drivetrain"} << none
        << QStringList{"Reimport source references"} << ok << QStringList{"import Drivetrain"} << "";
    // One question for the whole selection, whichever reference or sub-reference was edited.
    const QStringList unloadQuestion{"Unload Smart References"};
    QTest::newRow("unload, nothing modified") << "Unload" << QStringList{"Frame", "Light"} << none << none << ok << none
                                              << "";
    QTest::newRow("unload, the last one modified") << "Unload" << QStringList{"Light", "Frame"} << QStringList{"Frame"}
                                                   << unloadQuestion << cancel << none << "";
    QTest::newRow("unload, two modified") << "Unload" << QStringList{"Frame", "Drivetrain"}
                                          << QStringList{"Frame", "Drivetrain"} << unloadQuestion << cancel << none << "";
    QTest::newRow("unload, modified below") << "Unload" << QStringList{"Light", "Frame"} << QStringList{"Fork"}
                                            << unloadQuestion << cancel << none << "";
    QTest::newRow("clone") << "Edit/Clone" << QStringList{"Frame"} << none << none << ok << none << "*";
}

void tst_koReferenceCommands::commandsAskAndGroupTheirChanges()
{
    QFETCH(QString, command);
    QFETCH(QStringList, selection);
    QFETCH(QStringList, modified);
    QFETCH(QStringList, questions);
    QFETCH(int, answer);
    QFETCH(QStringList, calls);
    QFETCH(QString, undoStep);

    for (const QString& name : modified)
        modify(name);
    select(selection);
    if (calls == QStringList{"remove *"}) {
        calls.clear();
        for (const kodReferenceNode& each : koService<koReferenceService>()->getSceneReferences())
            calls << "remove " + each.getName();
    }
    const QByteArray scene = koTestHost::sceneSnapshot();
    const int steps = koUndoStack::the()->count();
    koDialogDriver driver;
    for (int i = 0; i < questions.size(); ++i)
        driver.answerMessageBox(QMessageBox::StandardButton(answer));

    QAction* trigger = action(command);
    QVERIFY(trigger);
    trigger->trigger();

    QCOMPARE(driver.mismatches(), QStringList());
    QStringList asked;
    for (const QString& title : qAsConst(questions))
        asked << title + '|' + confirmationTexts.value(title) + " (question)";
    QCOMPARE(driver.summaries(), asked);
    if (answer == QMessageBox::Cancel) {
        QCOMPARE(koTestHost::sceneSnapshot(), scene);
        QCOMPARE(koUndoStack::the()->count(), steps);
        QVERIFY(m_references->calls.isEmpty());
        return;
    }
    QCOMPARE(m_references->calls, calls);
    QVERIFY(koTestHost::sceneSnapshot() != scene);
    // Commands that group their changes make one step; the host records the others
    // change by change, and every change can be taken back.
    if (!undoStep.isEmpty())
        QCOMPARE(koUndoStack::the()->count(), steps + 1);
    if (undoStep != QLatin1String("*") && !undoStep.isEmpty())
        QCOMPARE(koUndoStack::the()->undoText(), undoStep);
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

void tst_koReferenceCommands::convertWarningKeepsTheChoiceEvenOnCancel_data()
{
    QTest::addColumn<bool>("warn");
    QTest::addColumn<bool>("tick");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("notified");
    QTest::addColumn<bool>("converted");

    const QStringList notified{"changed References", "applied References"};
    QTest::newRow("ticked, Cancel") << true << true << int(QMessageBox::Cancel) << notified << false;
    QTest::newRow("not ticked, OK") << true << false << int(QMessageBox::Ok) << notified << true;
    QTest::newRow("warning off") << false << false << 0 << QStringList() << true;
}

void tst_koReferenceCommands::convertWarningKeepsTheChoiceEvenOnCancel()
{
    QFETCH(bool, warn);
    QFETCH(bool, tick);
    QFETCH(int, answer);
    QFETCH(QStringList, notified);
    QFETCH(bool, converted);

    auto* preferences = koService<koPreferencesService>();
    preferences->setBoolValue(convertWarningKey, warn, false);
    m_references->setShowConvertToSmartWarning(warn);
    QStringList notifications;
    const QObject listening;
    connect(preferences, &koPreferencesService::categoryChanged, &listening,
            [&](const QString& category) { notifications << "changed " + category; });
    connect(preferences, &koPreferencesService::categoryApplied, &listening,
            [&](const QString& category) { notifications << "applied " + category; });
    koDialogDriver driver;
    if (warn)
        driver.answerMessageBox(QMessageBox::StandardButton(answer), tick);

    m_module->commands()->convertToSmartReferences({reference(QStringLiteral("Bell"))});

    QCOMPARE(driver.messageBoxes().size(), warn ? 1 : 0);
    if (warn) {
        const koDialogDriver::MessageBox& box = driver.messageBoxes().first();
        QCOMPARE(box.title, QStringLiteral("Convert to Smart References"));
        QVERIFY(box.text.startsWith("Converting to smart references adds a reference to the Smart column"));
        QVERIFY(box.text.endsWith("team members to work on. Select OK to proceed.\n"));
        QVERIFY(box.text.contains("once you save.\n\nSmart references are an advanced feature."));
        QCOMPARE(box.checkBoxText, QStringLiteral("Do not show again"));
        QVERIFY(!box.checkBoxChecked);
        QCOMPARE(box.defaultButton, QMessageBox::Cancel);
    }
    QCOMPARE(notifications, notified);
    QCOMPARE(preferences->getBoolValue(convertWarningKey, !warn), warn && !tick);
    QCOMPARE(reference(QStringLiteral("Bell")).hasSmartReference(), converted);
}

void tst_koReferenceCommands::hostRequestsRunTheFlows_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QStringList>("references");
    QTest::addColumn<int>("state");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QStringList>("after");

    // Smart files are read one by one, sources imported at once.
    QTest::newRow("load") << "load" << QStringList{"Drivetrain", "Bell", "Mudguard", "Seat Post"} << 0
                          << QStringList{"import Bell,Seat Post"}
                          << QStringList{"Drivetrain loaded smart source", "Bell loaded - source",
                                         "Mudguard loaded smart -", "Seat Post loaded - source"};
    QTest::newRow("unload") << "unload" << QStringList{"Frame"} << 0 << QStringList()
                            << QStringList{"Frame unloaded smart source"};
    QTest::newRow("remove") << "remove" << QStringList{"Bell"} << 0 << QStringList{"remove Bell"} << QStringList();
    QTest::newRow("remove smarts") << "remove smarts" << QStringList{"Frame"} << 0 << QStringList()
                                   << QStringList{"Frame loaded - source"};
    QTest::newRow("remove sources") << "remove sources" << QStringList{"Frame"} << 0 << QStringList()
                                    << QStringList{"Frame loaded smart -"};
    QTest::newRow("convert") << "convert" << QStringList{"Bell"} << 0 << QStringList{"convert Bell"}
                             << QStringList{"Bell loaded smart source"};
    QTest::newRow("reimport missing smarts") << "reimport smarts" << QStringList{"Frame", "Cassette"}
                                             << int(koReferenceTypes::Missing) << QStringList{"reimport Cassette"}
                                             << QStringList();
    QTest::newRow("reimport sources up to date")
        << "reimport sources" << QStringList{"Drivetrain", "Bell", "Chain"} << int(koReferenceTypes::UpToDate)
        << QStringList{"import Bell,Chain"} << QStringList();
    QTest::newRow("load unloaded smarts") << "load unloaded smarts" << QStringList{"Mudguard", "Bell"}
                                          << int(koReferenceTypes::Unloaded) << QStringList{"import "}
                                          << QStringList{"Mudguard loaded smart -", "Bell unloaded - source"};
    QTest::newRow("load unloaded sources") << "load unloaded sources" << QStringList{"Mudguard", "Bell"}
                                           << int(koReferenceTypes::Unloaded) << QStringList{"import Bell"}
                                           << QStringList{"Mudguard unloaded smart -", "Bell loaded - source"};
}

void tst_koReferenceCommands::hostRequestsRunTheFlows()
{
    QFETCH(QString, request);
    QFETCH(QStringList, references);
    QFETCH(int, state);
    QFETCH(QStringList, calls);
    QFETCH(QStringList, after);

    if (request.startsWith(QLatin1String("load unloaded")))
        reference(QStringLiteral("Bell")).unload();
    const QList<kodReferenceNode> list = ::references(references);
    if (request == QLatin1String("load")) {
        for (kodReferenceNode each : list)
            each.unload();
    }
    auto* ui = koService<koInternalUiService>();
    const auto fileState = koReferenceTypes::FileState(state);
    const auto loadState = koReferenceTypes::State(state);
    const QMap<QString, std::function<void()>> requests{
        {"load", [&] { emit ui->requestUiLoadReferences(list); }},
        {"unload", [&] { emit ui->requestUiUnloadReferences(list); }},
        {"remove", [&] { emit ui->requestUiRemoveReferences(list); }},
        {"remove smarts", [&] { emit ui->requestUiRemoveSmarts(list); }},
        {"remove sources", [&] { emit ui->requestUiRemoveSources(list); }},
        {"convert", [&] { emit ui->requestUiConvertToSmarts({list.begin(), list.end()}); }},
        {"reimport smarts", [&] { emit ui->requestUiReimportSmarts(list, fileState); }},
        {"reimport sources", [&] { emit ui->requestUiReimportSources(list, fileState); }},
        {"load unloaded smarts", [&] { emit ui->requestUILoadUnloadedSmarts(list, loadState); }},
        {"load unloaded sources", [&] { emit ui->requestUILoadUnloadedSources(list, loadState); }}};
    koDialogDriver driver;
    requests.value(request)();

    QVERIFY2(driver.messageBoxes().isEmpty(), "no question was expected");
    QCOMPARE(m_references->calls, calls);
    QStringList states;
    for (const QString& name : references.mid(0, after.size()))
        states << describe(reference(name));
    QCOMPARE(states, after);
}

void tst_koReferenceCommands::selectNodesSendsTheCompressedIds()
{
    RecordingTree tree;
    koInstalledService<koTreeService> installed(&tree);
    select({"Frame", "Bell", "Mudguard"});
    const QList<kodNode> nodes = m_module->nodeSelectionModel()->getAllSelectedNodes();

    m_module->findChild<QToolBar*>(QStringLiteral("QuickActionBar"))->actions().at(2)->trigger();

    QCOMPARE(tree.calls, (QStringList{"clearSelection", "setSelection",
                                      QStringLiteral("scrollToNode %1").arg(nodes.last().getObjectId())}));
    QList<quint32> expected;
    for (const kodNode& node : nodes)
        expected << quint32(node.getObjectId());
    QCOMPARE(koTreeService::decodeSelection(tree.ids), expected);
    QCOMPARE(qUncompress(tree.ids).size(), 12);
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
        reference(QStringLiteral("Bell")).createSmartReference();
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

void tst_koReferenceCommands::openLocationOpensTheFolder_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("selection");
    QTest::addColumn<QString>("folder");

    QTest::newRow("smart file") << "Open Smart in Explorer" << QStringList{"Frame"} << "frame";
    QTest::newRow("source file") << "Open Source in Explorer" << QStringList{"Bell"} << "accessories";
    QTest::newRow("first of two") << "Open Smart in Explorer" << QStringList{"Light", "Frame"} << "accessories";
    QTest::newRow("missing file") << "Open Smart in Explorer" << QStringList{"Cassette"} << "";
    QTest::newRow("no such link") << "Open Source in Explorer" << QStringList{"Mudguard"} << "";
    QTest::newRow("host request") << "sources" << QStringList{"Bell"} << "accessories";
}

void tst_koReferenceCommands::openLocationOpensTheFolder()
{
    QFETCH(QString, command);
    QFETCH(QStringList, selection);
    QFETCH(QString, folder);

    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");
    select(selection);
    if (command == QLatin1String("sources"))
        emit koService<koInternalUiService>()->requestUiOpenSourcesInExplorer(references(selection));
    else
        action(command)->trigger();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));

    QList<QUrl> expected;
    if (!folder.isEmpty())
        expected << QUrl::fromLocalFile(QFileInfo(QStringLiteral(KOVIS_DEMO_PROJECT)).canonicalPath() + '/' + folder);
    QCOMPARE(catcher.urls, expected);
}

QTEST_MAIN(tst_koReferenceCommands)
#include "tst_koreferencecommands.moc"
