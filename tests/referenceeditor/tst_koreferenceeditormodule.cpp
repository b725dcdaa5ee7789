#include "koInstalledService.h"
#include "koReferenceEditorModule.h"
#include "koReferenceFilterMenu.h"
#include "koReferenceFilterModel.h"
#include "koReferenceTreeModel.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/QKOOpenMenu.h>
#include <kovis/koObjectService.h>
#include <kovis/koPlatformService.h>
#include <kovis/koReferenceService.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

class tst_koReferenceEditorModule : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void reloadsAreBatched();
    void sceneSelectionSelectsSharedInstancesInTheList_data();
    void sceneSelectionSelectsSharedInstancesInTheList();
    void selectSubtreeLeavesTheLastSubtree();
    void sliderRangeFollowsTheGraphDepth_data();
    void sliderRangeFollowsTheGraphDepth();
    void sliderExpandsEveryViewToItsDepth_data();
    void sliderExpandsEveryViewToItsDepth();
    void expandedRowsSurviveTheListView();
    void onlyNameChangesUpdateAnItem();
    void createdReferenceIsSelected();
    void modelsStayConsistentInTheWindow();
    void rowsStayLevelAcrossTheViews_data();
    void rowsStayLevelAcrossTheViews();
    void hidingTheSelectionClearsThePathFields_data();
    void hidingTheSelectionClearsThePathFields();

private:
    koTestHost m_host;
    std::unique_ptr<koReferenceEditorModule> m_module;
};

namespace {

kodReferenceNode reference(const QString& name)
{
    return koTestHost::findReference(name);
}

// The names of the selected nodes, sorted.
QStringList selectedNames(const koReferenceEditorModule& module)
{
    QStringList result;
    for (const kodNode& node : module.nodeSelectionModel()->getAllSelectedNodes())
        result.append(node.getName());
    result.sort();
    return result;
}

// The names of the expanded rows with children in a view, sorted.
QStringList expandedNames(const QTreeView* view)
{
    QStringList result;
    QList<QModelIndex> pending{QModelIndex()};
    while (!pending.isEmpty()) {
        const QModelIndex parent = pending.takeLast();
        for (int row = 0; row < view->model()->rowCount(parent); ++row) {
            const QModelIndex index = view->model()->index(row, 0, parent);
            if (view->isExpanded(index) && view->model()->hasChildren(index))
                result.append(index.data(Qt::UserRole).value<kodNode>().getName());
            pending.append(index);
        }
    }
    result.sort();
    return result;
}

// A screen whose item icons are larger than a line of text.
class koLargeIconsPlatform : public koPlatformService
{
public:
    int getIconWidth() const override { return 40; }
    int getIconHeight() const override { return 40; }
};

// The rows among the first forty shown that are lower than an icon or do not start level
// in the three views.
QStringList unevenRows(const koReferenceEditorModule& module)
{
    QStringList uneven;
    QModelIndex index = module.m_treeView->indexAt(QPoint(1, 1));
    for (int row = 0; row < 40; ++row, index = module.m_treeView->indexBelow(index)) {
        QSet<int> tops;
        for (const auto& view : {qMakePair(module.m_treeView, 0), qMakePair(module.m_smartColumns, 2),
                                 qMakePair(module.m_sourceColumns, 6)}) {
            const QRect cell = view.first->visualRect(index.sibling(index.row(), view.second));
            tops.insert(view.first->viewport()->mapTo(&module, cell.topLeft()).y());
        }
        if (!index.isValid() || tops.size() > 1
            || module.m_treeView->visualRect(index).height() < module.m_treeView->iconSize().height())
            uneven.append(QString::number(row));
    }
    return uneven;
}

} // namespace

void tst_koReferenceEditorModule::init()
{
    QVERIFY(koService<koFileIOService>()->loadProject(QStringLiteral(KOVIS_DEMO_PROJECT)));
    m_module = std::make_unique<koReferenceEditorModule>();
    koTestHost::settle();
}

void tst_koReferenceEditorModule::cleanup()
{
    m_module.reset();
}

// A burst of notifications costs one reload, and none runs while a project loads.
void tst_koReferenceEditorModule::reloadsAreBatched()
{
    // Every reload of the reference model ends in one of these two signals.
    QSignalSpy resets(m_module->referenceModel(), &QAbstractItemModel::modelReset);
    QSignalSpy layouts(m_module->referenceModel(), &QAbstractItemModel::layoutChanged);
    const auto reloads = [&] { return resets.count() + layouts.count(); };
    for (int i = 0; i < 10; ++i)
        emit koService<koReferenceService>()->referencesChanged({reference(QStringLiteral("Frame"))});
    emit koService<koReferenceService>()->updateMonitoringChanged(true);
    QCOMPARE(reloads(), 0);
    koTestHost::settle();
    QCOMPARE(reloads(), 1);

    emit koService<koFileIOService>()->projectLoad(QStringLiteral("other.kpr"));
    emit koService<koReferenceService>()->referencesChanged({});
    m_module->scheduleReload();
    koTestHost::settle();
    QCOMPARE(reloads(), 1);
    emit koService<koFileIOService>()->projectLoadFinished(QStringLiteral("other.kpr"), true);
    koTestHost::settle();
    QCOMPARE(reloads(), 2);
    QVERIFY(!m_module->isReloadPending());
}

void tst_koReferenceEditorModule::sceneSelectionSelectsSharedInstancesInTheList_data()
{
    QTest::addColumn<bool>("shown");
    QTest::addColumn<int>("listMode");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("hidden window ignores it") << false << 0 << QStringList();
    QTest::newRow("graph") << true << 0 << QStringList{"Front Wheel"};
    QTest::newRow("list") << true << 1 << QStringList{"Front Wheel", "Rear Wheel"};
}

void tst_koReferenceEditorModule::sceneSelectionSelectsSharedInstancesInTheList()
{
    QFETCH(bool, shown);
    QFETCH(int, listMode);
    QFETCH(QStringList, expected);

    m_module->m_listMode->setCurrentIndex(listMode);
    koTestHost::settle();
    m_module->setVisible(shown);
    emit koService<koReferenceService>()->sceneSelectionChanged({reference(QStringLiteral("Front Wheel"))});
    QCOMPARE(selectedNames(*m_module), expected);
}

void tst_koReferenceEditorModule::selectSubtreeLeavesTheLastSubtree()
{
    m_module->selectSubtree({reference(QStringLiteral("Frame")), reference(QStringLiteral("Drivetrain"))});
    QCOMPARE(selectedNames(*m_module), (QStringList{"Cassette", "Chain", "Drivetrain"}));
}

void tst_koReferenceEditorModule::sliderRangeFollowsTheGraphDepth_data()
{
    QTest::addColumn<QString>("scene");
    QTest::addColumn<int>("maximum");

    QTest::newRow("empty model") << "none" << 0;
    QTest::newRow("project without references") << "empty" << 0;
    QTest::newRow("one reference") << "one" << 1;
    QTest::newRow("demo, three levels below the project") << "demo" << 3;
}

void tst_koReferenceEditorModule::sliderRangeFollowsTheGraphDepth()
{
    QFETCH(QString, scene);
    QFETCH(int, maximum);

    m_module->m_treeSlider->setMaximum(42);
    if (scene != "demo")
        koService<koFileIOService>()->newProject();
    if (scene == "one")
        koService<koReferenceService>()->createReference(kodNode());
    if (scene == "none")
        m_module->referenceModel()->clear();
    m_module->scheduleReload();
    koTestHost::settle();
    QCOMPARE(m_module->m_treeSlider->minimum(), 0);
    QCOMPARE(m_module->m_treeSlider->maximum(), maximum);
}

void tst_koReferenceEditorModule::sliderExpandsEveryViewToItsDepth_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<QStringList>("expanded");

    QTest::newRow("0: all collapsed") << 0 << QStringList();
    QTest::newRow("1: the project") << 1 << QStringList{"Bicycle"};
    QTest::newRow("2: its references")
        << 2 << QStringList{"Bicycle", "Drivetrain", "Frame", "Front Wheel", "Rear Wheel"};
    QTest::newRow("3: everything")
        << 3 << QStringList{"Bicycle", "Drivetrain", "Fork", "Frame", "Front Wheel", "Rear Wheel"};
}

void tst_koReferenceEditorModule::sliderExpandsEveryViewToItsDepth()
{
    QFETCH(int, depth);
    QFETCH(QStringList, expanded);

    m_module->show();
    m_module->m_treeSlider->setValue(depth == 0 ? 1 : 0);
    // Rows expanded by hand beyond the depth close as well.
    m_module->expandAllRows();
    m_module->m_treeSlider->setValue(depth);
    for (const QTreeView* view : {m_module->m_treeView, m_module->m_smartColumns, m_module->m_sourceColumns})
        QCOMPARE(expandedNames(view), expanded);
}

void tst_koReferenceEditorModule::expandedRowsSurviveTheListView()
{
    const auto rowOf = [this](const QString& name) {
        return m_module->filterModel()->mapFromSource(
            m_module->referenceModel()->indexFromId(QVariant::fromValue(kodNode(reference(name)))));
    };
    m_module->m_treeView->expand(rowOf(QStringLiteral("Bicycle")));
    m_module->m_treeView->expand(rowOf(QStringLiteral("Frame")));
    const QStringList expanded{"Bicycle", "Frame"};
    QCOMPARE(expandedNames(m_module->m_treeView), expanded);

    m_module->m_listMode->setCurrentIndex(1);
    koTestHost::settle();
    QCOMPARE(m_module->filterModel()->rowCount(), koService<koReferenceService>()->getSceneReferences().size());
    m_module->m_listMode->setCurrentIndex(0);
    koTestHost::settle();

    QCOMPARE(expandedNames(m_module->m_treeView), expanded);
    QCOMPARE(expandedNames(m_module->m_smartColumns), expanded);
    // The side columns follow the graph as the user folds it.
    m_module->m_treeView->collapse(rowOf(QStringLiteral("Frame")));
    QCOMPARE(expandedNames(m_module->m_smartColumns), QStringList{"Bicycle"});
    QCOMPARE(expandedNames(m_module->m_sourceColumns), QStringList{"Bicycle"});
}

void tst_koReferenceEditorModule::onlyNameChangesUpdateAnItem()
{
    QSignalSpy changed(m_module->referenceModel(), &QAbstractItemModel::dataChanged);
    const kodReferenceNode frame = reference(QStringLiteral("Frame"));
    emit koService<koObjectService>()->propertyChanged(frame, "visible");
    QCOMPARE(changed.count(), 0);

    emit koService<koObjectService>()->propertyChanged(frame, "name");
    QVERIFY(changed.count() >= 1);
    QCOMPARE(changed.last().at(0).toModelIndex(),
             m_module->referenceModel()->indexFromId(QVariant::fromValue(kodNode(frame))));
}

void tst_koReferenceEditorModule::createdReferenceIsSelected()
{
    m_module->show();
    const kodReferenceNode created =
        koService<koReferenceService>()->createReference(reference(QStringLiteral("Frame")));
    koTestHost::settle();
    QCOMPARE(m_module->nodeSelectionModel()->getAllSelectedNodes(), QList<kodNode>{created});
}

void tst_koReferenceEditorModule::modelsStayConsistentInTheWindow()
{
    QAbstractItemModelTester modelTester(m_module->referenceModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QAbstractItemModelTester filterTester(m_module->filterModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    m_module->m_treeView->expandAll();
    reference(QStringLiteral("Drivetrain")).unload();
    koTestHost::settle();
    m_module->filterModel()->setFilterFlag(FilterMissing, true, QString());
    m_module->m_listMode->setCurrentIndex(1);
    koTestHost::settle();
    m_module->filterModel()->setSearchText(QRegExp(QStringLiteral("wheel"), Qt::CaseInsensitive, QRegExp::FixedString));
    m_module->m_listMode->setCurrentIndex(0);
    koTestHost::settle();
    QCOMPARE(m_module->filterModel()->rowCount(), 0);
    reference(QStringLiteral("Drivetrain")).load();
    m_module->filterModel()->setSearchText(QRegExp());
    koTestHost::settle();
    QCOMPARE(m_module->filterModel()->rowCount(), 1);
}

void tst_koReferenceEditorModule::rowsStayLevelAcrossTheViews_data()
{
    QTest::addColumn<int>("listMode");
    QTest::addColumn<bool>("largerSourceFont");

    QTest::newRow("graph with large icons") << 0 << false;
    QTest::newRow("list with large icons") << 1 << false;
    QTest::newRow("graph, larger font in the source view") << 0 << true;
}

void tst_koReferenceEditorModule::rowsStayLevelAcrossTheViews()
{
    QFETCH(int, listMode);
    QFETCH(bool, largerSourceFont);

    m_module.reset();
    koLargeIconsPlatform platform;
    const koInstalledService<koPlatformService> largeIcons(&platform);
    koService<koFileIOService>()->newProject();
    QList<kodReferenceNode> created;
    for (int i = 0; i < 300; ++i)
        created.append(koService<koReferenceService>()->createReference(i < 3 ? kodNode() : kodNode(created.at(i / 3 - 1))));
    m_module = std::make_unique<koReferenceEditorModule>();
    m_module->resize(1200, 800);
    m_module->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_module.get()));
    if (largerSourceFont) {
        QFont font = m_module->m_sourceColumns->font();
        font.setPointSizeF(font.pointSizeF() * 1.8);
        m_module->m_sourceColumns->setFont(font);
        m_module->scheduleReload();
    }
    m_module->m_listMode->setCurrentIndex(listMode);
    koTestHost::settle();
    m_module->expandAllRows();
    koTestHost::settle();

    QCOMPARE(unevenRows(*m_module), QStringList());
    const QPersistentModelIndex top = m_module->m_treeView->indexAt(QPoint(1, 1));
    m_module->m_treeScrollBar->setValue(m_module->m_treeScrollBar->value() + 100);
    koTestHost::settle();
    QVERIFY(m_module->m_treeView->indexAt(QPoint(1, 1)) != top);
    QCOMPARE(unevenRows(*m_module), QStringList());
}

void tst_koReferenceEditorModule::hidingTheSelectionClearsThePathFields_data()
{
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("filter");

    QTest::newRow("search matching nothing") << "no such reference" << QString();
    QTest::newRow("type filter hiding the selection") << QString() << "Missing";
}

void tst_koReferenceEditorModule::hidingTheSelectionClearsThePathFields()
{
    QFETCH(QString, search);
    QFETCH(QString, filter);

    m_module->show();
    m_module->nodeSelectionModel()->selectNodes({reference(QStringLiteral("Frame"))});
    QVERIFY(m_module->m_smartFile->isEnabled());
    QVERIFY(!m_module->m_sourceFile->text().isEmpty());
    QAction* deleteSmart = m_module->m_smartRemove->defaultAction();
    QVERIFY(deleteSmart->isEnabled());

    if (!search.isEmpty())
        m_module->m_searchBox->setText(search);
    if (!filter.isEmpty())
        koTestHost::findAction(m_module->filterMenu()->menu()->actions(), filter)->setChecked(true);

    QVERIFY(m_module->nodeSelectionModel()->getAllSelectedNodes().isEmpty());
    for (const QLineEdit* field : {m_module->m_smartFile, m_module->m_sourceFile}) {
        QVERIFY(field->text().isEmpty());
        QVERIFY(!field->isEnabled());
    }
    QVERIFY(!deleteSmart->isEnabled());
    QCOMPARE(m_module->filterModel()->filterRegExp().pattern(), search);
}

QTEST_MAIN(tst_koReferenceEditorModule)
#include "tst_koreferenceeditormodule.moc"
