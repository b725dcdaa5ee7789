#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeService.h>
#include <kovis/koReferenceService.h>

#include <QtTest>

class tst_koHandles : public QObject
{
    Q_OBJECT

private slots:
    void staleHandleIsHarmless_data();
    void staleHandleIsHarmless();
    void lockAndVisibilityFollowAncestors();

private:
    koTestHost m_host;
};

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

    // Reads that follow links to other nodes or to files: each must find nothing.
    QVERIFY(!stale.isNull());
    QVERIFY(!stale.isValid());
    QVERIFY(stale.getParent().isNull());
    QVERIFY(stale.getChild(0).isNull());
    QCOMPARE(stale.getChildIndex(koService<koNodeService>()->getRootNode()), -1);
    QVERIFY(stale.getSharedNodes().isEmpty());
    QVERIFY(stale.getWorldTransform().isIdentity());
    QVERIFY(!stale.isSelfOrSubReferenceChanged());
    QCOMPARE(stale.getSmartFileState(), koReferenceTypes::NoFile);
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
