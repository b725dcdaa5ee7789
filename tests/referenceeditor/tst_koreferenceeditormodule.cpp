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
    void sliderFollowsTheGraphDepth();
    void expandedRowsSurviveTheListView();
    void onlyNameChangesUpdateAnItem();
    void createdReferenceIsSelected();
    void rowsStayLevelWithLargeIcons();

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

void tst_koReferenceEditorModule::sliderFollowsTheGraphDepth()
{
    m_module->show();
    m_module->m_treeSlider->setMaximum(42);
    m_module->scheduleReload();
    koTestHost::settle();
    // The demo lies three levels below the project.
    QCOMPARE(m_module->m_treeSlider->maximum(), 3);
    // Rows expanded by hand beyond the depth close as well.
    m_module->m_treeSlider->setValue(0);
    m_module->expandAllRows();
    m_module->m_treeSlider->setValue(1);
    for (const QTreeView* view : {m_module->m_treeView, m_module->m_smartColumns, m_module->m_sourceColumns})
        QCOMPARE(expandedNames(view), QStringList{"Bicycle"});
}

void tst_koReferenceEditorModule::expandedRowsSurviveTheListView()
{
    const auto mode = QAbstractItemModelTester::FailureReportingMode::QtTest;
    QAbstractItemModelTester modelTester(m_module->referenceModel(), mode);
    QAbstractItemModelTester filterTester(m_module->filterModel(), mode);
    const auto rowOf = [this](const QString& name) {
        return m_module->filterModel()->mapFromSource(
            m_module->referenceModel()->indexFromId(QVariant::fromValue(kodNode(reference(name)))));
    };
    m_module->m_treeView->expand(rowOf(QStringLiteral("Bicycle")));
    m_module->m_treeView->expand(rowOf(QStringLiteral("Frame")));
    m_module->m_listMode->setCurrentIndex(1);
    koTestHost::settle();
    m_module->m_listMode->setCurrentIndex(0);
    koTestHost::settle();
    QCOMPARE(expandedNames(m_module->m_treeView), (QStringList{"Bicycle", "Frame"}));
    // The side columns follow the graph as the user folds it.
    m_module->m_treeView->collapse(rowOf(QStringLiteral("Frame")));
    QCOMPARE(expandedNames(m_module->m_smartColumns), QStringList{"Bicycle"});
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

void tst_koReferenceEditorModule::rowsStayLevelWithLargeIcons()
{
    m_module.reset();
    koLargeIconsPlatform platform;
    const koInstalledService<koPlatformService> largeIcons(&platform);
    koService<koFileIOService>()->newProject();
    for (int i = 0; i < 40; ++i)
        koService<koReferenceService>()->createReference(kodNode());
    m_module = std::make_unique<koReferenceEditorModule>();
    m_module->resize(1200, 800);
    m_module->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_module.get()));
    m_module->expandAllRows();
    koTestHost::settle();
    QCOMPARE(unevenRows(*m_module), QStringList());
}

QTEST_MAIN(tst_koReferenceEditorModule)
#include "tst_koreferenceeditormodule.moc"
