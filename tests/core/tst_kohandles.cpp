#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeService.h>
#include <kovis/koReferenceService.h>

#include <QSet>
#include <QtTest>

class tst_koHandles : public QObject
{
    Q_OBJECT

private slots:
    void typeTests_data();
    void typeTests();
    void identityIsTheObjectId();
    void staleHandleIsHarmless_data();
    void staleHandleIsHarmless();
    void lockAndVisibilityFollowAncestors();

private:
    koTestHost m_host;
};

void tst_koHandles::typeTests_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("isNode");
    QTest::addColumn<bool>("isReference");

    QTest::newRow("group") << "group" << true << false;
    QTest::newRow("geometry") << "geometry" << true << false;
    QTest::newRow("reference") << "reference" << true << true;
    QTest::newRow("null handle") << "null" << false << false;
}

void tst_koHandles::typeTests()
{
    QFETCH(QString, kind);
    QFETCH(bool, isNode);
    QFETCH(bool, isReference);

    kodNode node;
    if (kind == "group")
        node = koService<koNodeService>()->createGroupNode(kodNode(), QStringLiteral("G"));
    else if (kind == "geometry")
        node = koService<koNodeService>()->createGeometryNode(kodNode(), QStringLiteral("M"));
    else if (kind == "reference")
        node = koService<koReferenceService>()->createReference(kodNode());

    QCOMPARE(node.isTypeOf(kodNode::staticMetaObject), isNode);
    QCOMPARE(node.isTypeOf(kodSceneObject::staticMetaObject), isNode);
    QCOMPARE(node.isTypeOf(kodReferenceNode::staticMetaObject), isReference);
    QCOMPARE(kodReferenceNode(node.getObjectId()).hasSmartReference(), false);
}

void tst_koHandles::identityIsTheObjectId()
{
    const kodNode group = koService<koNodeService>()->createGroupNode(kodNode(), QStringLiteral("G"));
    const kodReferenceNode asReference(group.getObjectId());
    kodNode copy;
    copy = group;

    QCOMPARE(copy, group);
    QVERIFY(asReference == group);
    QCOMPARE(qHash(asReference), qHash(group));
    QCOMPARE(copy.getTypeId(), group.getTypeId());
    QVERIFY(group != koService<koNodeService>()->getRootNode());
    QSet<kodNode> set{group, copy, koService<koNodeService>()->getRootNode()};
    QCOMPARE(set.size(), 2);
    QVERIFY(kodReferenceNode(0).isNull());
}

void tst_koHandles::staleHandleIsHarmless_data()
{
    QTest::addColumn<bool>("reference");
    QTest::newRow("group") << false;
    QTest::newRow("reference") << true;
}

void tst_koHandles::staleHandleIsHarmless()
{
    QFETCH(bool, reference);

    const QString part = m_host.writeProject(QStringLiteral("part.kpr"), {koTestHost::geometry("Body")});
    kodReferenceNode stale = reference
        ? koService<koReferenceService>()->createReference(kodNode())
        : kodReferenceNode(koService<koNodeService>()->createGroupNode(kodNode(), "G").getObjectId());
    stale.setSmartPath(part);
    koService<koNodeService>()->deleteNode(stale);

    QVERIFY(!stale.isNull());
    QVERIFY(!stale.isValid());
    QVERIFY(stale.getName().isEmpty());
    QVERIFY(stale.getParent().isNull());
    QCOMPARE(stale.getChildCount(), 0u);
    QVERIFY(stale.getChildren().isEmpty());
    QVERIFY(stale.getChild(0).isNull());
    QCOMPARE(stale.getChildIndex(koService<koNodeService>()->getRootNode()), -1);
    QVERIFY(!stale.isVisible());
    QVERIFY(!stale.isLocked());
    QVERIFY(stale.getSharedNodes().isEmpty());
    QVERIFY(stale.getWorldTransform().isIdentity());
    QVERIFY(stale.getIcon().isNull());
    QVERIFY(!stale.hasSmartReference());
    QVERIFY(!stale.isLoaded());
    QVERIFY(!stale.isChanged());
    QVERIFY(!stale.isSelfOrSubReferenceChanged());
    QVERIFY(!stale.isRootNode());
    QVERIFY(stale.getSmartPath().isEmpty());
    QCOMPARE(stale.getSmartFileState(), koReferenceTypes::NoFile);
    QCOMPARE(stale.getSourceFileState(), koReferenceTypes::NoFile);
    QVERIFY(stale.getSmartLastModified().isNull());
    QVERIFY(stale.createSmartPath(koReferenceTypes::CustomFolder, m_host.path("x")).isEmpty());

    const QByteArray scene = koTestHost::sceneSnapshot();
    stale.setName(QStringLiteral("X"));
    stale.setVisibilityFlag(false);
    stale.setUserLocked(true);
    stale.addChild(koService<koNodeService>()->getRootNode());
    koService<koNodeService>()->getRootNode().addChild(stale);
    stale.clearChildren();
    stale.load();
    stale.unload();
    stale.loadSmartReference();
    stale.loadSourceReference();
    stale.createSmartReference();
    stale.removeSourceReference();
    stale.setSmartPath(part);
    stale.setSourcePath(part);
    QVERIFY(!stale.saveSmartReference());
    QVERIFY(!stale.saveSmartReferenceAs(m_host.path("copy.kpr"), true));
    koService<koReferenceService>()->removeReference(stale);
    koService<koReferenceService>()->convertToSmartReference(stale);
    koService<koReferenceService>()->importSourceReferences({stale});
    QCOMPARE(koTestHost::sceneSnapshot(), scene);
}

void tst_koHandles::lockAndVisibilityFollowAncestors()
{
    const kodNode outer = koService<koNodeService>()->createGroupNode(kodNode(), QStringLiteral("Outer"));
    const kodNode inner = koService<koNodeService>()->createGroupNode(outer, QStringLiteral("Inner"));
    kodNode(outer).setUserLocked(true);
    kodNode(outer).setVisibilityFlag(false);

    QVERIFY(inner.isLocked());
    QVERIFY(inner.hasLockedParent());
    QVERIFY(!inner.getUserLocked());
    QVERIFY(!inner.isVisible());
    QVERIFY(inner.getVisibilityFlag());
    QVERIFY(!outer.hasLockedParent());
}

QTEST_MAIN(tst_koHandles)
#include "tst_kohandles.moc"
