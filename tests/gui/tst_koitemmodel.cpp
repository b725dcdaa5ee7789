#include "koTestHost.h"

#include <kovis/koItemModel.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeModelItem.h>
#include <kovis/koNodeService.h>
#include <kovis/koUndoStack.h>

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <QtTest>

#include <memory>

namespace {

QVariant idOf(const kodNode& node)
{
    return QVariant::fromValue(node);
}

// Root (A (A1, A2), B (B1), C)
struct Scene
{
    Scene()
        : root(koService<koNodeService>()->getRootNode())
        , a(koService<koNodeService>()->createGroupNode(root, QStringLiteral("A")))
        , a1(koService<koNodeService>()->createGroupNode(a, QStringLiteral("A1")))
        , a2(koService<koNodeService>()->createGroupNode(a, QStringLiteral("A2")))
        , b(koService<koNodeService>()->createGroupNode(root, QStringLiteral("B")))
        , b1(koService<koNodeService>()->createGroupNode(b, QStringLiteral("B1")))
        , c(koService<koNodeService>()->createGroupNode(root, QStringLiteral("C")))
    {
    }

    kodNode root, a, a1, a2, b, b1, c;
};

// A model over the scene, watched by the model tester, a proxy with its own tester
// and an expanded tree view: a wrong signal or a dangling index fails or crashes here.
struct Watched
{
    explicit Watched(const kodNode& root)
    {
        model.setHeader({QStringLiteral("Name"), QStringLiteral("Extra")});
        model.setRootItem(new koNodeModelItem(root));
        model.reload();
        proxy.setSourceModel(&model);
        view.setModel(&proxy);
        view.expandAll();
        view.resize(300, 400);
        view.show();
    }

    QModelIndex indexOf(const kodNode& node) const { return model.indexFromId(idOf(node)); }

    koItemModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};
    QSortFilterProxyModel proxy;
    QAbstractItemModelTester proxyTester{&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest};
    QTreeView view;
};

QStringList childNames(const QAbstractItemModel& model, const QModelIndex& parent)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(parent); ++row)
        names << model.index(row, 0, parent).data().toString();
    return names;
}

enum class Change { Rename, AddChild, RemoveChild, MoveChild, ReloadUnchanged };

} // namespace

Q_DECLARE_METATYPE(Change)

class tst_koitemmodel : public QObject
{
    Q_OBJECT

private slots:
    void singleItemEdit_data();
    void singleItemEdit();
    void resetsKeepTheModelConsistent();
    void idLookupFollowsTheTree_data();
    void idLookupFollowsTheTree();
    void editingNameRenamesNode_data();
    void editingNameRenamesNode();
    void dropMovesNodes_data();
    void dropMovesNodes();
};

void tst_koitemmodel::singleItemEdit_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QStringList>("rowsOfA");
    QTest::addColumn<QStringList>("rowsOfB");
    QTest::addColumn<int>("inserted");
    QTest::addColumn<int>("removed");
    QTest::addColumn<bool>("firstChildKept");

    QTest::newRow("rename") << Change::Rename << QStringList{"A1", "A2"} << QStringList{"B1"} << 0 << 0 << true;
    QTest::newRow("add child") << Change::AddChild << QStringList{"A1", "A2", "A3"} << QStringList{"B1"} << 1 << 0
                               << true;
    QTest::newRow("remove child") << Change::RemoveChild << QStringList{"A2"} << QStringList{"B1"} << 0 << 1 << false;
    QTest::newRow("move child") << Change::MoveChild << QStringList{"A1", "A2", "B1"} << QStringList{} << 1 << 1
                                << true;
    QTest::newRow("unchanged") << Change::ReloadUnchanged << QStringList{"A1", "A2"} << QStringList{"B1"} << 0 << 0
                               << true;
}

void tst_koitemmodel::singleItemEdit()
{
    QFETCH(Change, change);
    QFETCH(QStringList, rowsOfA);
    QFETCH(QStringList, rowsOfB);
    QFETCH(int, inserted);
    QFETCH(int, removed);
    QFETCH(bool, firstChildKept);

    koTestHost host;
    Scene scene;
    Watched watched(scene.root);
    const QPersistentModelIndex firstChild = watched.indexOf(scene.a1);
    const QPersistentModelIndex c = watched.indexOf(scene.c);
    QSignalSpy resets(&watched.model, &QAbstractItemModel::modelReset);
    QSignalSpy insertedSpy(&watched.model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removedSpy(&watched.model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy changed(&watched.model, &QAbstractItemModel::dataChanged);

    QList<kodNode> reloaded{scene.a};
    switch (change) {
    case Change::Rename:
        scene.a.setName(QStringLiteral("Renamed"));
        break;
    case Change::AddChild:
        koService<koNodeService>()->createGroupNode(scene.a, QStringLiteral("A3"));
        break;
    case Change::RemoveChild:
        koService<koNodeService>()->deleteNode(scene.a1);
        break;
    case Change::MoveChild:
        scene.a.addChild(scene.b1);
        reloaded.prepend(scene.b);
        break;
    case Change::ReloadUnchanged:
        break;
    }
    watched.model.beginEdit();
    for (const kodNode& node : reloaded)
        watched.model.findItemById(idOf(node))->reload();
    watched.model.endEdit();

    QCOMPARE(resets.count(), 0);
    QCOMPARE(insertedSpy.count(), inserted);
    QCOMPARE(removedSpy.count(), removed);
    const QModelIndex a = watched.indexOf(scene.a);
    QCOMPARE(a.data().toString(), scene.a.getName());
    QCOMPARE(childNames(watched.model, a), rowsOfA);
    QCOMPARE(a.siblingAtColumn(1).data(Qt::UserRole).value<kodNode>(), scene.a);
    QVERIFY(!a.data(Qt::DecorationRole).value<QIcon>().isNull());
    QCOMPARE(childNames(watched.model, watched.indexOf(scene.b)), rowsOfB);
    QVERIFY(std::any_of(changed.cbegin(), changed.cend(),
                        [&a](const QList<QVariant>& arguments) { return arguments.at(0).toModelIndex() == a; }));
    QCOMPARE(firstChild.isValid(), firstChildKept);
    QCOMPARE(c.data().toString(), QStringLiteral("C"));
    QCOMPARE(watched.view.isExpanded(watched.proxy.mapFromSource(a)), true);
    for (const QString& name : rowsOfA + rowsOfB)
        QVERIFY2(watched.model.match(watched.model.index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchRecursive).size() == 1,
                 qPrintable(name));
}

void tst_koitemmodel::resetsKeepTheModelConsistent()
{
    koTestHost host;
    Scene scene;
    Watched watched(scene.root);

    koService<koNodeService>()->createGroupNode(scene.c, QStringLiteral("C1"));
    watched.model.reload();
    QCOMPARE(childNames(watched.model, watched.indexOf(scene.c)), QStringList{"C1"});

    watched.model.setRootItem(new koNodeModelItem(scene.b));
    QCOMPARE(childNames(watched.model, {}), QStringList{"B1"});
    QCOMPARE(watched.model.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Extra"));
    koService<koNodeService>()->createGroupNode(scene.b, QStringLiteral("B2"));
    watched.model.reload();
    QCOMPARE(childNames(watched.model, {}), (QStringList{"B1", "B2"}));
    QVERIFY(!watched.indexOf(scene.a).isValid());

    watched.model.clear();
    QCOMPARE(watched.model.rowCount(), 0);
    QVERIFY(!watched.model.findItemById(idOf(scene.b1)));
    watched.model.reload();
    QCOMPARE(watched.model.rowCount(), 0);
}

void tst_koitemmodel::idLookupFollowsTheTree_data()
{
    QTest::addColumn<bool>("deleteNode");
    QTest::addColumn<bool>("throughEdit");

    QTest::newRow("full reload, node kept") << false << false;
    QTest::newRow("full reload, node deleted") << true << false;
    QTest::newRow("single edit, node kept") << false << true;
    QTest::newRow("single edit, node deleted") << true << true;
}

void tst_koitemmodel::idLookupFollowsTheTree()
{
    QFETCH(bool, deleteNode);
    QFETCH(bool, throughEdit);

    koTestHost host;
    Scene scene;
    Watched watched(scene.root);
    QCOMPARE(watched.indexOf(scene.a2).data().toString(), QStringLiteral("A2"));

    const kodNode added = koService<koNodeService>()->createGroupNode(scene.a, QStringLiteral("A3"));
    if (deleteNode)
        koService<koNodeService>()->deleteNode(scene.a2);
    if (throughEdit) {
        watched.model.beginEdit();
        watched.model.findItemById(idOf(scene.a))->reload();
        watched.model.endEdit();
    } else {
        watched.model.reload();
    }

    const QModelIndex a2 = watched.indexOf(scene.a2);
    QCOMPARE(a2.isValid(), !deleteNode);
    QCOMPARE(watched.model.findItemById(idOf(scene.a2)) != nullptr, !deleteNode);
    const QModelIndex a3 = watched.model.indexFromId(idOf(added), 1);
    QCOMPARE(a3.column(), 1);
    QCOMPARE(a3.siblingAtColumn(0).data().toString(), QStringLiteral("A3"));
    QCOMPARE(a3.parent(), watched.indexOf(scene.a));
    QVERIFY(!watched.model.indexFromId(QStringLiteral("no such id")).isValid());
    QVERIFY(!watched.model.indexFromId(idOf(kodNode())).isValid());
}

void tst_koitemmodel::editingNameRenamesNode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("locked");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("new name") << QStringLiteral("Engine") << false << true;
    QTest::newRow("blank name") << QStringLiteral("  ") << false << false;
    QTest::newRow("locked node") << QStringLiteral("Engine") << true << false;
}

void tst_koitemmodel::editingNameRenamesNode()
{
    QFETCH(QString, text);
    QFETCH(bool, locked);
    QFETCH(bool, accepted);

    koTestHost host;
    Scene scene;
    scene.b.setUserLocked(locked);
    Watched watched(scene.root);
    const QModelIndex b1 = watched.indexOf(scene.b1);
    QVERIFY(watched.model.flags(b1) & Qt::ItemIsEditable);
    QVERIFY(!(watched.model.flags(b1.siblingAtColumn(1)) & Qt::ItemIsEditable));
    const int undoSteps = koUndoStack::the()->count();

    QCOMPARE(watched.model.setData(b1, text), accepted);
    QCOMPARE(scene.b1.getName(), accepted ? text : QStringLiteral("B1"));
    QCOMPARE(koUndoStack::the()->count(), undoSteps + (accepted ? 1 : 0));
    if (accepted) {
        koUndoStack::the()->undo();
        QCOMPARE(scene.b1.getName(), QStringLiteral("B1"));
    }
}

void tst_koitemmodel::dropMovesNodes_data()
{
    QTest::addColumn<QString>("dragged");
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("to another group") << QStringLiteral("B1") << QStringLiteral("A") << true;
    QTest::newRow("two nodes") << QStringLiteral("B1,C") << QStringLiteral("A2") << true;
    QTest::newRow("onto itself") << QStringLiteral("A") << QStringLiteral("A") << false;
    QTest::newRow("into own subtree") << QStringLiteral("A") << QStringLiteral("A1") << false;
    QTest::newRow("onto its parent") << QStringLiteral("A1") << QStringLiteral("A") << false;
}

void tst_koitemmodel::dropMovesNodes()
{
    QFETCH(QString, dragged);
    QFETCH(QString, target);
    QFETCH(bool, accepted);

    koTestHost host;
    Scene scene;
    Watched watched(scene.root);
    const QHash<QString, kodNode> byName{{"A", scene.a}, {"A1", scene.a1}, {"A2", scene.a2},
                                         {"B", scene.b}, {"B1", scene.b1}, {"C", scene.c}};
    QModelIndexList indexes;
    QList<kodNode> draggedNodes;
    QList<kodNode> formerParents;
    for (const QString& name : dragged.split(QLatin1Char(','))) {
        draggedNodes << byName.value(name);
        formerParents << byName.value(name).getParent();
        indexes << watched.indexOf(byName.value(name)) << watched.indexOf(byName.value(name)).siblingAtColumn(1);
    }
    const kodNode targetNode = byName.value(target);
    const QModelIndex targetIndex = watched.indexOf(targetNode);
    QVERIFY(watched.model.flags(indexes.first()) & Qt::ItemIsDragEnabled);
    const std::unique_ptr<QMimeData> data(watched.model.mimeData(indexes));
    QVERIFY(data);

    QCOMPARE(watched.model.canDropMimeData(data.get(), Qt::MoveAction, -1, -1, targetIndex), accepted);
    QVERIFY(!watched.model.canDropMimeData(data.get(), Qt::CopyAction, -1, -1, targetIndex));
    QCOMPARE(watched.model.dropMimeData(data.get(), Qt::MoveAction, -1, -1, targetIndex), accepted);

    for (int i = 0; i < draggedNodes.size(); ++i) {
        const kodNode parent = accepted ? targetNode : formerParents.at(i);
        QCOMPARE(draggedNodes.at(i).getParent(), parent);
        QCOMPARE(watched.indexOf(draggedNodes.at(i)).parent(), watched.indexOf(parent));
    }
    QCOMPARE(watched.model.rowCount(watched.indexOf(targetNode)), int(targetNode.getChildCount()));
    if (accepted) {
        koUndoStack::the()->undo();
        QCOMPARE(draggedNodes.first().getParent(), formerParents.first());
    }
}

QTEST_MAIN(tst_koitemmodel)
#include "tst_koitemmodel.moc"
