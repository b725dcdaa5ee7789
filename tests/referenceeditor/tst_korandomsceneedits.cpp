#include "koReferenceEditorModule.h"
#include "koReferenceFilterModel.h"
#include "koReferenceTreeModel.h"
#include "koTestHost.h"

#include "koReferenceEngine.h"

#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koScopedUndo.h>
#include <kovis/koTreeService.h>
#include <kovis/koUndoStack.h>

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QUndoStack>
#include <QtTest>

#include <functional>

// Random edits of a scene with clones, instances and nested referenced files, as a
// user could make them, with undo and redo in between. After every step the store is
// whole and the editor's models pass Qt's model tester; at the end, undoing every step
// gives back the scene as it was and redoing them gives the scene as it became.
// KOVIS_RANDOM_SEEDS and KOVIS_RANDOM_STEPS make a longer run (scripts/soak).
class tst_koRandomSceneEdits : public QObject
{
    Q_OBJECT

private slots:
    void storeStaysWholeUnderRandomEdits_data();
    void storeStaysWholeUnderRandomEdits();

private:
    koTestHost m_host;
};

namespace {

int fromEnvironment(const char* name, int fallback)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok && value > 0 ? value : fallback;
}

QList<kodNode> allNodes()
{
    QList<kodNode> nodes{koService<koNodeService>()->getRootNode()};
    for (int i = 0; i < nodes.size(); ++i)
        nodes += nodes.at(i).getChildren();
    return nodes;
}

QList<kodReferenceNode> allReferences()
{
    return koService<koReferenceService>()->getSceneReferences();
}

using Step = QPair<QString, std::function<void(QRandomGenerator&)>>;

template<class T>
T pick(QRandomGenerator& random, const QList<T>& list)
{
    return list.at(random.bounded(list.size()));
}

kodNode anyButRoot(QRandomGenerator& random)
{
    const QList<kodNode> nodes = allNodes();
    return nodes.size() > 1 ? nodes.at(1 + random.bounded(nodes.size() - 1)) : nodes.first();
}

QVector<Step> steps()
{
    auto* references = koService<koReferenceService>();
    auto* nodes = koService<koNodeService>();
    const QStringList names{"a", "tab\there", "line\nbreak", "\u8eca\u8f2a", "<b>&</b>"};
    return {
        {"rename", [names](QRandomGenerator& r) { anyButRoot(r).setName(pick(r, names)); }},
        {"clone", [](QRandomGenerator& r) { koService<koTreeService>()->cloneNodes({anyButRoot(r)}); }},
        {"move", [](QRandomGenerator& r) { pick(r, allNodes()).addChild(anyButRoot(r)); }},
        {"move in a step",
         [](QRandomGenerator& r) {
             koScopedUndo step;
             pick(r, allNodes()).addChild(anyButRoot(r));
         }},
        {"delete", [nodes](QRandomGenerator& r) { nodes->deleteNode(anyButRoot(r)); }},
        {"add group", [nodes](QRandomGenerator& r) { nodes->createGroupNode(pick(r, allNodes()), "g"); }},
        {"add reference", [references](QRandomGenerator& r) { references->createReference(pick(r, allNodes())); }},
        {"load", [](QRandomGenerator& r) { pick(r, allReferences()).load(); }},
        {"unload", [](QRandomGenerator& r) { pick(r, allReferences()).unload(); }},
        {"convert", [references](QRandomGenerator& r) { references->convertToSmartReference(anyButRoot(r)); }},
        {"remove reference", [references](QRandomGenerator& r) { references->removeReference(pick(r, allReferences())); }},
        {"reimport smart", [references](QRandomGenerator& r) { references->reimportSmartReferences({pick(r, allReferences())}); }},
        {"import source", [references](QRandomGenerator& r) { references->importSourceReferences({pick(r, allReferences())}); }},
        {"undo", [](QRandomGenerator&) { koUndoStack::the()->undo(); }},
        {"redo", [](QRandomGenerator&) { koUndoStack::the()->redo(); }},
    };
}

} // namespace

void tst_koRandomSceneEdits::storeStaysWholeUnderRandomEdits_data()
{
    QTest::addColumn<quint32>("seed");
    const int seeds = fromEnvironment("KOVIS_RANDOM_SEEDS", 40);
    for (int seed = 1; seed <= seeds; ++seed)
        QTest::addRow("seed %d", seed) << quint32(seed);
}

void tst_koRandomSceneEdits::storeStaysWholeUnderRandomEdits()
{
    QFETCH(quint32, seed);
    m_host.writeFile(QStringLiteral("parts/spoke.obj"),
                     "v 0 0 0\nv 1 0 0\nv 0 1 0\no Spoke\nf 1 2 3\ng Nipple\nf 1 2 3\n");
    m_host.writeProject(QStringLiteral("parts/spoke.kpr"), {koTestHost::geometry("Spoke")});
    m_host.writeProject(QStringLiteral("parts/wheel.kpr"),
                        {koTestHost::group("Hub", {koTestHost::geometry("Axle")}),
                         koTestHost::reference("Spokes", "spoke.kpr", "spoke.obj")});
    const QJsonObject instance{{"instance", "wheel"}};
    QVERIFY(koService<koFileIOService>()->loadProject(m_host.writeProject(
        QStringLiteral("bike.kpr"),
        {koTestHost::group("Frame", {koTestHost::geometry("Tube")}),
         koTestHost::reference("Front Wheel", "parts/wheel.kpr", QString(), instance),
         koTestHost::reference("Rear Wheel", "parts/wheel.kpr", QString(), instance),
         koTestHost::reference("Bell", QString(), "parts/spoke.obj"),
         koTestHost::reference("Spare", "parts/spoke.kpr", QString(), {{"loaded", false}})})));
    QCOMPARE(koTestHost::findReference(QStringLiteral("Rear Wheel")).getSharedNodes().size(), 1);
    koReferenceEditorModule module;
    koTestHost::settle();
    const auto fatal = QAbstractItemModelTester::FailureReportingMode::Fatal;
    QAbstractItemModelTester modelTester(module.referenceModel(), fatal);
    QAbstractItemModelTester proxyTester(module.filterModel(), fatal);
    const koSceneStore* store = koHost::engine()->store();
    QUndoStack* undo = koUndoStack::the()->stack();
    const QByteArray before = koTestHost::sceneSnapshot();
    const QVector<Step> all = steps();
    QRandomGenerator random(seed);
    QStringList done;

    const int count = fromEnvironment("KOVIS_RANDOM_STEPS", 300);
    for (int i = 0; i < count; ++i) {
        const Step& step = all.at(random.bounded(all.size()));
        done << step.first;
        step.second(random);
        koTestHost::settle();
        // The data tag names the seed; the last steps tell where to look.
        const QStringList broken = store->brokenInvariants();
        QVERIFY2(broken.isEmpty(), qPrintable(done.mid(qMax(0, i - 8)).join(", ") + ": " + broken.join("; ")));
    }

    const QByteArray after = koTestHost::sceneSnapshot();
    const int reached = undo->index();
    undo->setIndex(0);
    koTestHost::settle();
    QCOMPARE(store->brokenInvariants(), QStringList());
    QCOMPARE(koTestHost::sceneSnapshot(), before);
    undo->setIndex(reached);
    koTestHost::settle();
    QCOMPARE(koTestHost::sceneSnapshot(), after);
}

QTEST_MAIN(tst_koRandomSceneEdits)
#include "tst_korandomsceneedits.moc"
