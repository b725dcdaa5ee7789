#include "koTestHost.h"

#include <kovis/koItemModel.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koNodeModelItem.h>
#include <kovis/koNodeService.h>

#include <QAbstractItemModelTester>
#include <QSortFilterProxyModel>
#include <QtTest>

namespace {

// Root (A (A1, A2), B (B1), C), shown through a proxy that sorts descending, so that
// proxy rows differ from source rows.
struct Scene
{
    Scene()
    {
        auto* service = koService<koNodeService>();
        const kodNode root = service->getRootNode();
        const auto add = [&](const kodNode& parent, const QString& name) {
            nodes.insert(name, service->createGroupNode(parent, name));
            return nodes.value(name);
        };
        const kodNode a = add(root, "A");
        add(a, "A1");
        add(a, "A2");
        add(add(root, "B"), "B1");
        add(root, "C");
        model.setHeader({"Name", "Second"});
        model.setRootItem(new koNodeModelItem(root));
        model.reload();
        proxy.setSourceModel(&model);
        proxy.setRecursiveFilteringEnabled(true);
        proxy.sort(0, Qt::DescendingOrder);
    }

    QList<kodNode> nodesNamed(const QStringList& names) const
    {
        QList<kodNode> list;
        for (const QString& name : names)
            list << nodes.value(name);
        return list;
    }

    static QStringList namesOf(const QList<kodNode>& list)
    {
        QStringList names;
        for (const kodNode& node : list)
            names << node.getName();
        return names;
    }

    QHash<QString, kodNode> nodes;
    koItemModel model;
    QSortFilterProxyModel proxy;
    QAbstractItemModelTester tester{&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest};
};

} // namespace

class tst_konodebasedselectionmodel : public QObject
{
    Q_OBJECT

private slots:
    void selectNodes_data();
    void selectNodes();
    void selectedNodeFollowsCurrentRow();
};

void tst_konodebasedselectionmodel::selectNodes_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QStringList>("select");
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QStringList>("roots");

    QTest::newRow("one node") << QStringList() << QString() << QStringList{"A1"} << QStringList{"A1"}
                              << QStringList{"A1"};
    QTest::newRow("descendants dropped from roots")
        << QStringList() << QString() << QStringList{"A", "A1", "B1", "A2"} << QStringList{"A", "A1", "B1", "A2"}
        << QStringList{"A", "B1"};
    QTest::newRow("order of the list kept") << QStringList() << QString() << QStringList{"A1", "C", "A2"}
                                            << QStringList{"A1", "C", "A2"} << QStringList{"A1", "C", "A2"};
    QTest::newRow("replaces the selection") << QStringList{"A", "B", "C"} << QString() << QStringList{"B1"}
                                            << QStringList{"B1"} << QStringList{"B1"};
    QTest::newRow("empty list clears") << QStringList{"A", "B"} << QString() << QStringList() << QStringList()
                                       << QStringList();
    QTest::newRow("filtered rows left out") << QStringList() << QStringLiteral("B") << QStringList{"A1", "B1", "B"}
                                            << QStringList{"B1", "B"} << QStringList{"B"};
}

void tst_konodebasedselectionmodel::selectNodes()
{
    QFETCH(QStringList, before);
    QFETCH(QString, filter);
    QFETCH(QStringList, select);
    QFETCH(QStringList, selected);
    QFETCH(QStringList, roots);

    koTestHost host;
    Scene scene;
    scene.proxy.setFilterFixedString(filter);
    koNodeBasedSelectionModel selection(&scene.proxy);
    QCOMPARE(selection.getItemModel(), &scene.model);
    selection.selectNodes(scene.nodesNamed(before));

    selection.selectNodes(scene.nodesNamed(select));

    QCOMPARE(Scene::namesOf(selection.getAllSelectedNodes()), selected);
    QCOMPARE(Scene::namesOf(selection.getSelectedRootNodes()), roots);
    QCOMPARE(selection.selectedRows().size(), selected.size());
    for (const QModelIndex& row : selection.selectedRows())
        QVERIFY(selection.isRowSelected(row.row(), row.parent()));
    const QModelIndex first = selection.getFirstSelectedIndex();
    QCOMPARE(first.model(), selected.isEmpty() ? nullptr : &scene.proxy);
    QCOMPARE(first.data().toString(), selected.value(0));
    QCOMPARE(selection.getSelectedNode().getName(), selected.value(0));
    QCOMPARE(selection.mapToItemModel(first), scene.model.indexFromId(QVariant::fromValue(scene.nodes.value(selected.value(0)))));
}

void tst_konodebasedselectionmodel::selectedNodeFollowsCurrentRow()
{
    koTestHost host;
    Scene scene;
    koNodeBasedSelectionModel selection(&scene.proxy);
    selection.selectNodes(scene.nodesNamed({"A", "B", "C"}));
    const auto rowOf = [&](const QString& name) {
        return selection.mapFromItemModel(scene.model.indexFromId(QVariant::fromValue(scene.nodes.value(name))));
    };

    selection.setCurrentIndex(rowOf("B"), QItemSelectionModel::NoUpdate);
    QCOMPARE(selection.getSelectedNode().getName(), QStringLiteral("B"));
    selection.setCurrentIndex(rowOf("A1"), QItemSelectionModel::NoUpdate);
    QCOMPARE(selection.getSelectedNode().getName(), QStringLiteral("A"));
}

QTEST_MAIN(tst_konodebasedselectionmodel)
#include "tst_konodebasedselectionmodel.moc"
