#include "koReferenceEditorActions.h"
#include "koReferenceEditorModule.h"
#include "koReferenceFilterMenu.h"
#include "koReferenceFilterModel.h"
#include "koDialogDriver.h"
#include "koScriptedFileDialog.h"
#include "koTestHost.h"

#include <kovis/QKOOpenMenu.h>
#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koReferenceService.h>

#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

class tst_koReferenceEditorActions : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void selectionDecidesWhatIsEnabled_data();
    void selectionDecidesWhatIsEnabled();
    void rulesRunOnSelectionReloadAndContextMenu();
    void fileButtonsRunTheirEntries();
    void filterEntriesFilterTheList_data();
    void filterEntriesFilterTheList();
    void fileTypeEntriesFollowTheScene();
    void searchKeepsOnlyMatchesSelected();
    void entriesStartTheirFlows_data();
    void entriesStartTheirFlows();

private:
    // The menu bar's, the context menu's and the quick action bar's entries.
    QList<QAction*> menus() const;
    // Every entry of the context menu by path ("Edit/Rename"), the two information
    // actions and the two path fields, each with whether it is enabled.
    QMap<QString, bool> enabledStates() const;
    QStringList listedNames() const;

    koTestHost m_host;
    std::unique_ptr<koReferenceEditorModule> m_module;
};

namespace {

kodReferenceNode reference(const QString& name)
{
    return koTestHost::findReference(name);
}

// Marks an expectation as "every entry but these".
QStringList allBut(QStringList entries)
{
    entries.prepend(QStringLiteral("*"));
    return entries;
}

const QStringList createEntries{"Create Smart", "Create Smart/New", "Create Smart/From File...", "Create Source"};

} // namespace

void tst_koReferenceEditorActions::init()
{
    QVERIFY(koService<koFileIOService>()->loadProject(QStringLiteral(KOVIS_DEMO_PROJECT)));
    m_module = std::make_unique<koReferenceEditorModule>();
    koTestHost::settle();
}

void tst_koReferenceEditorActions::cleanup()
{
    m_module.reset();
}

QList<QAction*> tst_koReferenceEditorActions::menus() const
{
    return m_module->menuBar()->actions() + QList<QAction*>{m_module->actions()->contextMenu()->menuAction()}
        + m_module->findChild<QToolBar*>(QStringLiteral("QuickActionBar"))->actions();
}

QMap<QString, bool> tst_koReferenceEditorActions::enabledStates() const
{
    QMap<QString, bool> states;
    for (const QAction* entry : m_module->actions()->contextMenu()->actions()) {
        if (entry->isSeparator())
            continue;
        states.insert(entry->text(), entry->isEnabled());
        for (const QAction* inner : entry->menu() ? entry->menu()->actions() : QList<QAction*>())
            states.insert(entry->text() + QLatin1Char('/') + inner->text(), inner->isEnabled());
    }
    states.insert(QStringLiteral("Smart Info"), m_module->m_smartInfo->defaultAction()->isEnabled());
    states.insert(QStringLiteral("Source Info"), m_module->m_sourceInfo->defaultAction()->isEnabled());
    states.insert(QStringLiteral("smart path"), m_module->m_smartFile->isEnabled());
    states.insert(QStringLiteral("source path"), m_module->m_sourceFile->isEnabled());
    return states;
}

void tst_koReferenceEditorActions::selectionDecidesWhatIsEnabled_data()
{
    QTest::addColumn<QStringList>("selection");
    // "convert Name" gives the reference a smart link never written; "unload Name" unloads it.
    QTest::addColumn<QString>("change");
    QTest::addColumn<QStringList>("enabled");
    QTest::addColumn<QString>("smartPath");
    QTest::addColumn<QString>("sourcePath");

    const QStringList withoutSource{"(Re)Import Source", "(Re)Import Source/Selected", "(Re)Import Source/Outdated",
                                    "(Re)Import Source/Unloaded", "Replace Source", "Repath Source",
                                    "Delete Source", "Open Source in Explorer", "Source Info", "source path"};
    const QStringList withoutSmart{"(Re)Import Smart", "(Re)Import Smart/Selected", "(Re)Import Smart/Outdated",
                                   "(Re)Import Smart/Unloaded", "Replace Smart", "Repath Smart", "Delete Smart",
                                   "Open Smart in Explorer", "Save Smart Changes", "Save Smart As", "Smart Info",
                                   "smart path"};
    const QStringList notOutdated{"(Re)Import Smart/Outdated", "(Re)Import Source/Outdated"};
    const QStringList loaded{"Load", "(Re)Import Smart/Unloaded", "(Re)Import Source/Unloaded"};

    // Inside sub-menus that cannot open, the states of the last selection stand.
    QTest::newRow("nothing") << QStringList() << QString()
                             << createEntries + QStringList{"Edit/Rename", "Edit/Repath", "Edit/Remove",
                                                            "(Re)Import Smart/Outdated", "(Re)Import Smart/Unloaded",
                                                            "(Re)Import Source/Outdated", "(Re)Import Source/Unloaded"}
                             << "" << "";
    QTest::newRow("smart and source") << QStringList{"Frame"} << QString()
                                      << allBut(loaded + notOutdated + QStringList{"Convert to Smart Reference"})
                                      << "frame/frame.kpr" << "frame/frame.obj";
    QTest::newRow("source out of date")
        << QStringList{"Drivetrain"} << QString()
        << allBut(loaded + QStringList{"(Re)Import Smart/Outdated", "Convert to Smart Reference"})
        << "drivetrain/drivetrain.kpr" << "drivetrain/drivetrain.obj";
    QTest::newRow("unloaded smart only")
        << QStringList{"Mudguard"} << QString()
        << allBut(withoutSource + QStringList{"Unload", "Convert to Smart Reference", "(Re)Import Smart/Outdated"})
        << "accessories/mudguard.kpr" << "";
    QTest::newRow("source only") << QStringList{"Bell"} << QString()
                                 << allBut(withoutSmart + loaded + QStringList{"(Re)Import Source/Outdated"}) << ""
                                 << "accessories/bell.stl";
    QTest::newRow("locked") << QStringList{"Handlebar"} << QString()
                            << QStringList{"Edit", "Edit/Clone", "Open Source in Explorer", "Source Info",
                                           "Select Nodes", "Select Subtree", "Create Smart/New",
                                           "Create Smart/From File..."}
                            << "" << "handlebar/handlebar.obj";
    QTest::newRow("root") << QStringList{"Bicycle"} << QString()
                          << allBut(withoutSource + loaded + notOutdated
                                    + QStringList{"Unload", "Edit", "Edit/Rename", "Edit/Clone",
                                                  "Convert to Smart Reference"})
                          << "bicycle.kpr" << "";
    QTest::newRow("unloaded source only")
        << QStringList{"Bell"} << "unload Bell"
        << allBut(withoutSmart + QStringList{"Unload", "Convert to Smart Reference", "(Re)Import Source/Outdated"})
        << "" << "accessories/bell.stl";
    QTest::newRow("unsaved smart")
        << QStringList{"Bell"} << "convert Bell"
        << allBut(loaded + notOutdated
                  + QStringList{"Convert to Smart Reference", "(Re)Import Smart", "(Re)Import Smart/Selected",
                                "Repath Smart", "Open Smart in Explorer", "Smart Info", "smart path"})
        << "" << "accessories/bell.stl";
    QTest::newRow("two references")
        << QStringList{"Frame", "Mudguard"} << QString()
        << allBut(notOutdated
                  + QStringList{"Edit/Rename", "Convert to Smart Reference", "(Re)Import Source/Unloaded",
                                "Replace Smart", "Replace Source", "smart path", "source path"})
        << "" << "";
    QTest::newRow("a group among references")
        << QStringList{"Decals", "Bell"} << QString()
        << allBut(withoutSmart + loaded
                  + QStringList{"Edit/Rename", "(Re)Import Source/Outdated", "Replace Source", "source path"})
        << "" << "";
}

void tst_koReferenceEditorActions::selectionDecidesWhatIsEnabled()
{
    QFETCH(QStringList, selection);
    QFETCH(QString, change);
    QFETCH(QStringList, enabled);
    QFETCH(QString, smartPath);
    QFETCH(QString, sourcePath);

    if (change.startsWith(QLatin1String("convert ")))
        reference(change.section(QLatin1Char(' '), 1)).createSmartReference();
    if (change.startsWith(QLatin1String("unload ")))
        reference(change.section(QLatin1Char(' '), 1)).unload();
    QList<kodNode> nodes;
    for (const QString& name : selection)
        nodes << reference(name);
    m_module->actions()->updateActions(nodes);

    // An expectation "every entry but these" lists the disabled ones.
    const bool allBut = enabled.value(0) == QLatin1String("*");
    const QMap<QString, bool> states = enabledStates();
    QStringList actual;
    for (auto state = states.cbegin(); state != states.cend(); ++state) {
        if (state.value() != allBut)
            actual << state.key();
    }
    QStringList expected = enabled.mid(allBut ? 1 : 0);
    expected.removeDuplicates();
    expected.sort();
    QCOMPARE(actual, expected);
    const QDir demo = QFileInfo(QStringLiteral(KOVIS_DEMO_PROJECT)).dir();
    QCOMPARE(m_module->m_smartFile->text(), smartPath.isEmpty() ? QString() : demo.filePath(smartPath));
    QCOMPARE(m_module->m_sourceFile->text(), sourcePath.isEmpty() ? QString() : demo.filePath(sourcePath));
}

void tst_koReferenceEditorActions::rulesRunOnSelectionReloadAndContextMenu()
{
    const auto loadEnabled = [this] { return enabledStates().value(QStringLiteral("Load")); };
    auto* selection = m_module->nodeSelectionModel();
    selection->selectNodes({reference(QStringLiteral("Mudguard"))});
    QVERIFY(loadEnabled());
    selection->selectNodes({reference(QStringLiteral("Frame"))});
    QVERIFY(!loadEnabled());

    reference(QStringLiteral("Frame")).unload();
    koTestHost::settle();
    QVERIFY(loadEnabled());

    // No reload may run meanwhile: only the menu itself can bring the rules up to date.
    m_module->setProjectLoading(true);
    reference(QStringLiteral("Frame")).load();
    bool enabledInMenu = true;
    QTimer::singleShot(0, this, [&] {
        enabledInMenu = loadEnabled();
        m_module->actions()->contextMenu()->close();
    });
    m_module->showContextMenu(m_module->m_treeView, QPoint(5, 5));
    QVERIFY(!enabledInMenu);
}

void tst_koReferenceEditorActions::fileButtonsRunTheirEntries()
{
    const koReferenceEditorModule& module = *m_module;
    const QMap<QToolButton*, QString> buttons{
        {module.m_smartRelink, "Replace Smart"},   {module.m_smartReload, "Selected"},
        {module.m_smartRemove, "Delete Smart"},    {module.m_smartInfo, "Info"},
        {module.m_sourceRelink, "Replace Source"}, {module.m_sourceReload, "Selected"},
        {module.m_sourceRemove, "Delete Source"},  {module.m_sourceInfo, "Info"}};
    for (auto button = buttons.cbegin(); button != buttons.cend(); ++button)
        QCOMPARE(button.key()->defaultAction()->text(), button.value());
    QCOMPARE(qobject_cast<QMenu*>(module.m_smartReload->defaultAction()->parent())->title(), "(Re)Import Smart");
    QCOMPARE(qobject_cast<QMenu*>(module.m_sourceReload->defaultAction()->parent())->title(), "(Re)Import Source");
}

QStringList tst_koReferenceEditorActions::listedNames() const
{
    QStringList names;
    const koReferenceFilterModel* filter = m_module->filterModel();
    for (int row = 0; row < filter->rowCount(); ++row)
        names << filter->index(row, 0).data(Qt::UserRole).value<kodNode>().getName();
    names.sort();
    return names;
}

void tst_koReferenceEditorActions::filterEntriesFilterTheList_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QStringList>("listed");

    QTest::newRow("Unloaded") << "Unloaded" << QStringList{"Cassette", "Mudguard"};
    QTest::newRow("Modified") << "Modified" << QStringList{"Frame"};
    QTest::newRow("Smart References")
        << "Smart References"
        << QStringList{"Bicycle", "Cassette", "Drivetrain", "Fork", "Frame", "Front Wheel", "Headset", "Hub", "Hub",
                       "Light", "Mudguard", "Rear Wheel"};
}

void tst_koReferenceEditorActions::filterEntriesFilterTheList()
{
    QFETCH(QString, entry);
    QFETCH(QStringList, listed);

    koTestHost::findNode(QStringLiteral("Tubes")).setName(QStringLiteral("Tubing"));
    m_module->m_listMode->setCurrentIndex(1);
    koTestHost::settle();
    koTestHost::findAction(m_module->filterMenu()->menu()->actions(), entry)->trigger();
    QCOMPARE(listedNames(), listed);
    QVERIFY(m_module->filterMenu()->button()->isChecked());
}

void tst_koReferenceEditorActions::fileTypeEntriesFollowTheScene()
{
    QToolButton* button = m_module->filterMenu()->button();
    const auto& entries = m_module->filterMenu()->fileTypeEntries();
    const auto fileTypes = [this] {
        const QList<QAction*> actions = m_module->filterMenu()->menu()->actions();
        QStringList texts;
        for (auto action = actions.crbegin(); action != actions.crend() && !(*action)->isSeparator(); ++action)
            texts.prepend((*action)->text() + ((*action)->isChecked() ? QStringLiteral(" on") : QString()));
        return texts;
    };
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(m_module->filterMenu()->menu()->isVisible());
    m_module->filterMenu()->menu()->hide();
    QCOMPARE(fileTypes(), (QStringList{".gltf", ".kpr", ".obj", ".osb", ".ply", ".stl"}));
    QVERIFY(!button->isChecked());

    m_module->m_listMode->setCurrentIndex(1);
    koTestHost::settle();
    entries.value(QStringLiteral("stl"))->trigger();
    QCOMPARE(listedNames(), QStringList{"Bell"});
    entries.value(QStringLiteral("obj"))->trigger();
    QVERIFY(button->isChecked());

    QStringList events;
    connect(entries.value(QStringLiteral("stl")), &QAction::toggled, this, [&] { events << "released"; });
    connect(entries.value(QStringLiteral("stl")), &QObject::destroyed, this, [&] { events << "removed"; });
    reference(QStringLiteral("Bell")).setSourcePath(m_host.path(QStringLiteral("bell.ply")));
    QTest::mouseClick(button, Qt::LeftButton);
    m_module->filterMenu()->menu()->hide();

    QCOMPARE(fileTypes(), (QStringList{".gltf", ".kpr", ".obj on", ".osb", ".ply"}));
    QCOMPARE(events, (QStringList{"released", "removed"}));
    QVERIFY(button->isChecked());
    entries.value(QStringLiteral("obj"))->trigger();
    QVERIFY(!button->isChecked());
    QVERIFY(m_module->filterModel()->isFilterEmpty());
}

void tst_koReferenceEditorActions::searchKeepsOnlyMatchesSelected()
{
    m_module->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_module.get()));
    auto* selection = m_module->nodeSelectionModel();
    m_module->m_treeView->collapseAll();
    selection->selectNodes({reference(QStringLiteral("Bicycle")), reference(QStringLiteral("Frame"))});
    m_module->m_searchBox->setText(QStringLiteral("FRAME"));
    // The root stays to show the way to the match, but it does not match itself.
    QCOMPARE(selection->getAllSelectedNodes(), QList<kodNode>{reference(QStringLiteral("Frame"))});
    QVERIFY(m_module->m_treeView->isExpanded(m_module->filterModel()->index(0, 0)));

    for (QTreeView* view : {m_module->m_treeView, m_module->m_smartColumns, m_module->m_sourceColumns})
        view->collapseAll();
    m_module->m_searchBox->setText(QStringLiteral("headset"));
    // Every view shows the match: the side columns stay level with the names.
    QModelIndex fork;
    for (int level = 0; level < 3; ++level)
        fork = m_module->filterModel()->index(0, 0, fork);
    QCOMPARE(fork.data(Qt::UserRole).value<kodNode>().getName(), "Fork");
    for (QTreeView* view : {m_module->m_treeView, m_module->m_smartColumns, m_module->m_sourceColumns})
        QVERIFY(view->isExpanded(fork));

    // Typed text is no pattern.
    m_module->m_searchBox->setText(QStringLiteral("[f]rame"));
    QCOMPARE(m_module->filterModel()->rowCount(), 0);

    koTestHost::findAction(m_module->filterMenu()->menu()->actions(), QStringLiteral("Missing"))->trigger();
    QVERIFY(m_module->filterMenu()->button()->isChecked());
    m_module->filterMenu()->menu()->actions().first()->trigger();
    QVERIFY(m_module->m_searchBox->text().isEmpty());
    // The clear button hides once it has faded out; its animation must not outlive the box.
    const auto* clear = m_module->m_searchBox->findChild<QAction*>(QStringLiteral("_q_qlineeditclearaction"));
    for (const QWidget* button : clear->associatedWidgets())
        QTRY_VERIFY(button->isHidden());
    QVERIFY(!m_module->filterMenu()->button()->isChecked());
    QVERIFY(m_module->filterModel()->isFilterEmpty());
}

void tst_koReferenceEditorActions::entriesStartTheirFlows_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("selected");
    // The file dialog's caption, a dialog's object name, or "created" for a new reference.
    QTest::addColumn<QString>("shows");

    QTest::newRow("save all") << "File/Save All Smart Reference Changes" << "Bell" << "koReferenceSmartLocationDialog";
    QTest::newRow("save smart changes") << "Context Menu/Save Smart Changes" << "Bell"
                                        << "koReferenceSmartLocationDialog";
    QTest::newRow("save smart as") << "Context Menu/Save Smart As" << "Frame" << "Save Smart Reference As";
    QTest::newRow("new smart reference") << "Context Menu/Create Smart/New" << "Frame" << "created";
    QTest::newRow("smart reference from files") << "Context Menu/Create Smart/From File..." << "Frame"
                                                << "Create Smart Reference";
    QTest::newRow("source reference") << "Context Menu/Create Source" << "Frame" << "Load Source Reference";
    QTest::newRow("source reference from the quick action bar") << "Create/Create Source" << "Frame"
                                                                << "Load Source Reference";
    QTest::newRow("replace smart") << "Context Menu/Replace Smart" << "Frame" << "Replace Smart Reference";
    QTest::newRow("replace source") << "Context Menu/Replace Source" << "Frame" << "Replace Source Reference";
}

void tst_koReferenceEditorActions::entriesStartTheirFlows()
{
    QFETCH(QString, entry);
    QFETCH(QString, selected);
    QFETCH(QString, shows);

    // The bell has only a source; converted, it has a smart link without a file yet.
    koService<koReferenceService>()->convertToSmartReference(reference(QStringLiteral("Bell")));
    koTestHost::settle();
    m_module->nodeSelectionModel()->selectNodes({reference(selected)});
    const int references = koService<koReferenceService>()->getSceneReferences().size();
    koScriptedFileDialog files;
    koDialogDriver driver;
    QStringList shown;
    driver.handleDialog([&shown](QDialog* dialog) {
        shown << dialog->objectName();
        dialog->reject();
    });
    QAction* action = koTestHost::findAction(menus(), entry);
    QVERIFY(action);
    action->trigger();
    koTestHost::settle();

    for (const koFileDialog::Call& call : files.calls())
        shown << call.caption;
    if (koService<koReferenceService>()->getSceneReferences().size() == references + 1)
        shown << QStringLiteral("created");
    QCOMPARE(shown, QStringList{shows});
}

QTEST_MAIN(tst_koReferenceEditorActions)
#include "tst_koreferenceeditoractions.moc"
