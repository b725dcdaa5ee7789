#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koScopedMultiCommand.h>
#include <kovis/koTreeService.h>
#include <kovis/koUndoStack.h>

#include <QtTest>

#include <functional>

using SceneOperation = std::function<void(const QList<kodReferenceNode>& references)>;
Q_DECLARE_METATYPE(SceneOperation)

class tst_koUndo : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void undoRedoRestoresTheScene_data();
    void undoRedoRestoresTheScene();
    void changesOutsideAScopeAreStepsOfTheirOwn();
    void emptyScopeLeavesNoStep();
    void nestedScopesMakeOneStepNamedByTheFirstLabel();

private:
    koTestHost m_host;
};

namespace {

const auto byName = &koTestHost::findNode;
const auto referenceNamed = &koTestHost::findReference;

} // namespace

void tst_koUndo::init()
{
    m_host.writeFile(QStringLiteral("wheel.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Wheel\ng Rim\nf 1 2 3\ng Tyre\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("other.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Other\nf 1 2 3\n");
    m_host.writeProject(QStringLiteral("wheel.kpr"), {koTestHost::geometry("Rim"), koTestHost::geometry("Tyre")});
    const QString main = m_host.writeProject(
        QStringLiteral("main.kpr"),
        {koTestHost::group("Frame", {koTestHost::geometry("Beam")}),
         koTestHost::reference("Wheel", "wheel.kpr", "wheel.obj"),
         koTestHost::reference("Imported", QString(), "wheel.obj")});
    QVERIFY(koService<koFileIOService>()->loadProject(main));
}

void tst_koUndo::undoRedoRestoresTheScene_data()
{
    QTest::addColumn<SceneOperation>("operation");

    const QString other = m_host.path(QStringLiteral("other.obj"));
    QTest::newRow("rename") << SceneOperation([](auto) { byName("Beam").setName(QStringLiteral("Girder")); });
    QTest::newRow("hide") << SceneOperation([](auto) { byName("Frame").setVisibilityFlag(false); });
    QTest::newRow("lock") << SceneOperation([](auto) { referenceNamed("Wheel").setUserLocked(true); });
    QTest::newRow("create reference")
        << SceneOperation([](auto) { koService<koReferenceService>()->createReference(byName("Frame")); });
    QTest::newRow("remove reference")
        << SceneOperation([](auto) { koService<koReferenceService>()->removeReference(referenceNamed("Wheel")); });
    QTest::newRow("convert a group")
        << SceneOperation([](auto) { koService<koReferenceService>()->convertToSmartReference(byName("Frame")); });
    QTest::newRow("convert a reference")
        << SceneOperation([](auto) { koService<koReferenceService>()->convertToSmartReference(byName("Imported")); });
    QTest::newRow("repath smart") << SceneOperation([other](auto) { referenceNamed("Wheel").setSmartPath(other); });
    QTest::newRow("repath source") << SceneOperation([other](auto) { referenceNamed("Wheel").setSourcePath(other); });
    QTest::newRow("delete smart link") << SceneOperation([](auto) { referenceNamed("Wheel").removeSmartReference(); });
    QTest::newRow("delete source link") << SceneOperation([](auto) { referenceNamed("Wheel").removeSourceReference(); });
    // The scene's node ids come back too, and with them the handles that held them.
    QTest::newRow("delete a group")
        << SceneOperation([](auto) { koService<koNodeService>()->deleteNode(byName("Frame")); });
    QTest::newRow("clone")
        << SceneOperation([](auto) { koService<koTreeService>()->cloneNodes({byName("Wheel"), byName("Frame")}); });
    QTest::newRow("move") << SceneOperation([](auto) { byName("Frame").addChild(byName("Imported")); });
    QTest::newRow("clear children") << SceneOperation([](auto) { byName("Frame").clearChildren(); });
    QTest::newRow("reimport source of a smart reference")
        << SceneOperation([](auto) { koService<koReferenceService>()->importSourceReferences({referenceNamed("Wheel")}); });
    QTest::newRow("remove every reference") << SceneOperation([](const QList<kodReferenceNode>& all) {
        for (const kodReferenceNode& reference : all)
            koService<koReferenceService>()->removeReference(reference);
    });
}

void tst_koUndo::undoRedoRestoresTheScene()
{
    QFETCH(SceneOperation, operation);
    koUndoStack* undo = koUndoStack::the();
    const QByteArray before = koTestHost::sceneSnapshot();

    {
        koScopedMultiCommand step(koUndoString("tst_koUndo", QStringLiteral("Operation")), true);
        operation(koService<koReferenceService>()->getSceneReferences());
    }
    const QByteArray after = koTestHost::sceneSnapshot();
    QVERIFY(after != before);
    QCOMPARE(undo->count(), 1);
    QCOMPARE(undo->undoText(), QStringLiteral("Operation"));

    undo->undo();
    QCOMPARE(koTestHost::sceneSnapshot(), before);
    undo->redo();
    QCOMPARE(koTestHost::sceneSnapshot(), after);
    undo->undo();
    QCOMPARE(koTestHost::sceneSnapshot(), before);
}

void tst_koUndo::changesOutsideAScopeAreStepsOfTheirOwn()
{
    const QByteArray before = koTestHost::sceneSnapshot();
    byName("Beam").setName(QStringLiteral("Girder"));
    referenceNamed("Wheel").setSourcePath(m_host.path(QStringLiteral("other.obj")));
    QVERIFY(koService<koReferenceService>()->getSceneReferences().first().isChanged());
    // Loading is one step, whether content comes from a smart file or a source.
    referenceNamed("Imported").unload();
    referenceNamed("Imported").load();
    QCOMPARE(koUndoStack::the()->count(), 4);
    QCOMPARE(koUndoStack::the()->undoText(), QStringLiteral("Load Reference"));
    for (int step = 0; step < 4; ++step)
        koUndoStack::the()->undo();
    QCOMPARE(koTestHost::sceneSnapshot(), before);
}

void tst_koUndo::emptyScopeLeavesNoStep()
{
    {
        koScopedMultiCommand step(koUndoString("tst_koUndo", QStringLiteral("Nothing")), true);
        referenceNamed("Wheel").setSmartPath(referenceNamed("Wheel").getSmartPath());
    }
    QCOMPARE(koUndoStack::the()->count(), 0);
}

void tst_koUndo::nestedScopesMakeOneStepNamedByTheFirstLabel()
{
    {
        koScopedUndo outer(true);
        koScopedMultiCommand first(koUndoString("tst_koUndo", QStringLiteral("First")), true);
        byName("Beam").setName(QStringLiteral("Girder"));
        {
            koScopedMultiCommand second(koUndoString("tst_koUndo", QStringLiteral("Second")), true);
            byName("Frame").setVisibilityFlag(false);
        }
        koScopedUndo disabled(false);
        referenceNamed("Wheel").unload();
    }
    QCOMPARE(koUndoStack::the()->count(), 1);
    QCOMPARE(koUndoStack::the()->undoText(), QStringLiteral("First"));
    koUndoStack::the()->undo();
    QVERIFY(byName("Beam").isValid());
    QVERIFY(byName("Frame").getVisibilityFlag());
}

QTEST_MAIN(tst_koUndo)
#include "tst_koundo.moc"
