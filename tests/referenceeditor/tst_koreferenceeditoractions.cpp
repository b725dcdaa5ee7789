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
    void filterEntriesFilterTheList();
    void searchKeepsOnlyMatchesSelected();
    // The only path from a menu entry to saving: a dead entry would leave work unsaved.
    void entriesStartTheirFlows_data();
    void entriesStartTheirFlows();

private:
    // The menu bar's and the context menu's entries.
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
    return m_module->menuBar()->actions() + QList<QAction*>{m_module->actions()->contextMenu()->menuAction()};
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
                             << QStringList{"Create Smart", "Create Smart/New", "Create Smart/From File...",
                                            "Create Source", "Edit/Rename", "Edit/Repath", "Edit/Remove",
                                            "(Re)Import Smart/Outdated", "(Re)Import Smart/Unloaded",
                                            "(Re)Import Source/Outdated", "(Re)Import Source/Unloaded"}
                             << "" << "";
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

QStringList tst_koReferenceEditorActions::listedNames() const
{
    QStringList names;
    const koReferenceFilterModel* filter = m_module->filterModel();
    for (int row = 0; row < filter->rowCount(); ++row)
        names << filter->index(row, 0).data(Qt::UserRole).value<kodNode>().getName();
    names.sort();
    return names;
}

void tst_koReferenceEditorActions::filterEntriesFilterTheList()
{
    koTestHost::findNode(QStringLiteral("Tubes")).setName(QStringLiteral("Tubing"));
    m_module->m_listMode->setCurrentIndex(1);
    koTestHost::settle();
    // Each entry on its own reads its own fact.
    const QList<QPair<QString, QStringList>> entries{
        {"Unloaded", {"Cassette", "Mudguard"}},
        {"Missing", {"Cassette"}},
        {"Modified", {"Frame"}},
        {"Smart References",
         {"Bicycle", "Cassette", "Drivetrain", "Fork", "Frame", "Front Wheel", "Headset", "Hub", "Hub", "Light",
          "Mudguard", "Rear Wheel"}}};
    for (const auto& entry : entries) {
        QAction* action = koTestHost::findAction(m_module->filterMenu()->menu()->actions(), entry.first);
        action->trigger();
        QCOMPARE(listedNames(), entry.second);
        action->trigger();
    }
    // The file types are read from the scene as the menu opens.
    const auto openMenu = [this] {
        QTest::mouseClick(m_module->filterMenu()->button(), Qt::LeftButton);
        m_module->filterMenu()->menu()->hide();
    };
    openMenu();
    const QPointer<QAction> stl = m_module->filterMenu()->fileTypeEntries().value(QStringLiteral("stl"));
    QAction* obj = m_module->filterMenu()->fileTypeEntries().value(QStringLiteral("obj"));
    stl->trigger();
    QCOMPARE(listedNames(), QStringList{"Bell"});
    // A type that leaves the scene takes its filter with it; a type that stays keeps its entry.
    obj->trigger();
    reference(QStringLiteral("Bell")).setSourcePath(m_host.path(QStringLiteral("bell.ply")));
    openMenu();
    QVERIFY(stl.isNull());
    QCOMPARE(m_module->filterMenu()->fileTypeEntries().value(QStringLiteral("obj")), obj);
    obj->trigger();
    QVERIFY(m_module->filterModel()->isFilterEmpty());
}

void tst_koReferenceEditorActions::searchKeepsOnlyMatchesSelected()
{
    m_module->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_module.get()));
    auto* selection = m_module->nodeSelectionModel();
    selection->selectNodes({reference(QStringLiteral("Bicycle")), reference(QStringLiteral("Frame"))});
    m_module->m_searchBox->setText(QStringLiteral("FRAME"));
    // The root stays to show the way to the match, but it does not match itself.
    QCOMPARE(selection->getAllSelectedNodes(), QList<kodNode>{reference(QStringLiteral("Frame"))});
    // A match three levels down shows with the way to it.
    m_module->m_searchBox->setText(QStringLiteral("headset"));
    QModelIndex fork;
    for (int level = 0; level < 3; ++level)
        fork = m_module->filterModel()->index(0, 0, fork);
    QCOMPARE(fork.data(Qt::UserRole).value<kodNode>().getName(), "Fork");
    // Typed text is no pattern; hiding the selection empties the path fields.
    m_module->m_searchBox->setText(QStringLiteral("[f]rame"));
    QCOMPARE(m_module->filterModel()->rowCount(), 0);
    QCOMPARE(m_module->m_smartFile->text(), QString());
}

void tst_koReferenceEditorActions::entriesStartTheirFlows_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("selected");
    // The file dialog's caption or the dialog's object name.
    QTest::addColumn<QString>("shows");

    QTest::newRow("save all") << "File/Save All Smart Reference Changes" << "Bell" << "koReferenceSmartLocationDialog";
    QTest::newRow("save smart changes") << "Context Menu/Save Smart Changes" << "Bell"
                                        << "koReferenceSmartLocationDialog";
    QTest::newRow("save smart as") << "Context Menu/Save Smart As" << "Frame" << "Save Smart Reference As";
    QTest::newRow("create source") << "Context Menu/Create Source" << "Frame" << "Load Source Reference";
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
    QCOMPARE(shown, QStringList{shows});
}

QTEST_MAIN(tst_koReferenceEditorActions)
#include "tst_koreferenceeditoractions.moc"
