#include "koTestHost.h"

#include "koReferenceEngine.h"

#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>
#include <kovis/koTreeService.h>
#include <kovis/koUndoStack.h>

#include <QtTest>

class tst_koReferenceLoading : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void subReferenceLoadModes_data();
    void subReferenceLoadModes();
    void geometryFileRoundTrip();
    void editedReferenceLoadedAgainAndUnloaded_data();
    void editedReferenceLoadedAgainAndUnloaded();
    void savingWritesAMissingFileAgain();
    void sourceImportOnASmartReferenceIsAChange();
    void clonesShareTheirReference();

private:
    koTestHost m_host;
};

namespace {

QString describeTree(const kodNode& node)
{
    QString text = node.getName();
    if (node.getChildCount() > 0) {
        QStringList children;
        for (const kodNode& child : node.getChildren())
            children.append(describeTree(child));
        text += QLatin1Char('(') + children.join(QLatin1Char(',')) + QLatin1Char(')');
    }
    return text;
}

QString loadStates()
{
    QStringList states;
    for (const kodReferenceNode& reference : koService<koReferenceService>()->getSceneReferences())
        states.append(reference.getName() + (reference.isLoaded() ? QStringLiteral("+") : QStringLiteral("-")));
    return states.join(QLatin1Char(' '));
}

} // namespace

void tst_koReferenceLoading::init()
{
    // The files of the reference "Part" that most tests load.
    m_host.writeProject(QStringLiteral("part.kpr"), {koTestHost::geometry("Body")});
    m_host.writeFile(QStringLiteral("part.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Mesh\nf 1 2 3\n");
}

void tst_koReferenceLoading::subReferenceLoadModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("expected");

    QTest::newRow("load scene references") << 0 << "main+ Assembly+ Leaf- Mid+ Deep+ Imported+";
    QTest::newRow("always load") << 1 << "main+ Assembly+ Leaf+ Mid+ Deep+ Imported+";
    QTest::newRow("never load") << 2 << "main+ Assembly- Imported-";
    QTest::newRow("avoid leaf references") << 3 << "main+ Assembly+ Leaf- Mid+ Deep- Imported-";
}

void tst_koReferenceLoading::subReferenceLoadModes()
{
    QFETCH(int, mode);
    QFETCH(QString, expected);

    m_host.writeProject(QStringLiteral("deep.kpr"), {koTestHost::geometry("Bolt")});
    m_host.writeProject(QStringLiteral("mid.kpr"), {koTestHost::reference("Deep", "deep.kpr", QString())});
    m_host.writeProject(QStringLiteral("leaf.kpr"), {koTestHost::geometry("Nut")});
    m_host.writeProject(QStringLiteral("assembly.kpr"),
                        {koTestHost::reference("Leaf", "leaf.kpr", QString(), {{"loaded", false}}),
                         koTestHost::reference("Mid", "mid.kpr", QString())});
    const QString main = m_host.writeProject(QStringLiteral("main.kpr"),
                                             {koTestHost::reference("Assembly", "assembly.kpr", QString()),
                                              koTestHost::reference("Imported", QString(), "part.obj")});

    koService<koReferenceService>()->setLoadSubReferencesMode(mode);
    const bool loaded = koService<koFileIOService>()->loadProject(main);
    koService<koReferenceService>()->setLoadSubReferencesMode(0);
    QVERIFY(loaded);
    QCOMPARE(loadStates(), expected);
}

void tst_koReferenceLoading::geometryFileRoundTrip()
{
    m_host.writeFile(QStringLiteral("hub.osb"), koTestHost::readFile(QStringLiteral(KOVIS_DEMO_OSB)));
    kodReferenceNode reference = m_host.loadSingleReference(koTestHost::reference("Hub", "hub.osb", QString()));
    const auto shell = [&reference] { return *koHost::engine()->store()->node(reference.getChild(0).getObjectId()); };
    const koNodeRecord before = shell();
    QVERIFY(before.mesh);
    QCOMPARE(describeTree(reference), QStringLiteral("Hub(Shell,Axle)"));
    reference.getChild(0).setName(QStringLiteral("Outer Shell"));
    QVERIFY(reference.isChanged());
    QVERIFY(reference.saveSmartReference());
    QVERIFY(!reference.isChanged());

    reference.unload();
    reference.loadSmartReference();
    QCOMPARE(describeTree(reference), QStringLiteral("Hub(Outer Shell,Axle)"));
    QCOMPARE(shell().vertexCount, before.vertexCount);
    QCOMPARE(shell().mesh->positions, before.mesh->positions);
    QCOMPARE(shell().mesh->triangles, before.mesh->triangles);
}

void tst_koReferenceLoading::editedReferenceLoadedAgainAndUnloaded_data()
{
    QTest::addColumn<QString>("smart");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("reloaded");
    QTest::addColumn<QString>("fromSource");

    QTest::newRow("smart file") << "part.kpr" << QString() << "Part(Body)" << "Part(Body)";
    QTest::newRow("source only") << QString() << "part.obj" << "Part(Mesh)" << "Part(Mesh)";
    // Loading prefers the smart file; the source is read when asked for.
    QTest::newRow("smart file and source") << "part.kpr" << "part.obj" << "Part(Body)" << "Part(Mesh)";
}

void tst_koReferenceLoading::editedReferenceLoadedAgainAndUnloaded()
{
    QFETCH(QString, smart);
    QFETCH(QString, source);
    QFETCH(QString, reloaded);
    QFETCH(QString, fromSource);

    kodReferenceNode reference = m_host.loadSingleReference(koTestHost::reference("Part", smart, source));
    reference.getChild(0).setName(QStringLiteral("Edited"));
    QVERIFY(koService<koReferenceService>()->getSceneReferences().first().isSubReferenceChanged());
    const QByteArray scene = koTestHost::sceneSnapshot();
    const int steps = koUndoStack::the()->count();

    reference.load();
    QCOMPARE(koTestHost::sceneSnapshot(), scene);
    QCOMPARE(koUndoStack::the()->count(), steps);

    reference.unload();
    QCOMPARE(reference.getState(), koReferenceTypes::Unloaded);
    QCOMPARE(reference.getChildCount(), 0u);
    QVERIFY(!reference.isSelfOrSubReferenceChanged());
    reference.load();
    QCOMPARE(describeTree(reference), reloaded);
    reference.loadSourceReference();
    QCOMPARE(describeTree(reference), fromSource);
}

void tst_koReferenceLoading::savingWritesAMissingFileAgain()
{
    const QString file = m_host.path(QStringLiteral("part.kpr"));
    kodReferenceNode reference = m_host.loadSingleReference(koTestHost::reference("Part", "part.kpr", QString()));
    QVERIFY(QFile::remove(file));
    koService<koReferenceService>()->checkFiles();
    QCOMPARE(reference.getSmartFileState(), koReferenceTypes::Missing);

    // Nothing was edited, yet the content would be lost without the file.
    QVERIFY(reference.saveSmartReference());
    QCOMPARE(reference.getSmartFileState(), koReferenceTypes::UpToDate);
    QVERIFY(QFile::exists(file));
}

void tst_koReferenceLoading::sourceImportOnASmartReferenceIsAChange()
{
    m_host.writeFile(QStringLiteral("other.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Other\nf 1 2 3\n");
    kodReferenceNode smart = m_host.loadSingleReference(koTestHost::reference("Part", "part.kpr", "part.obj"));
    kodReferenceNode sourceOnly = koService<koReferenceService>()->createReference(kodNode());
    sourceOnly.setSourcePath(m_host.path(QStringLiteral("other.obj")));

    const auto imported = koService<koReferenceService>()->importSourceReferences({smart, sourceOnly});
    QCOMPARE(imported.size(), 2);
    QVERIFY(smart.isChanged());
    QVERIFY(!sourceOnly.isChanged());
    QCOMPARE(smart.getSmartFileState(), koReferenceTypes::UpToDate);
    QVERIFY(sourceOnly.getSourceImportDate() >= QFileInfo(m_host.path(QStringLiteral("other.obj"))).lastModified());
}

void tst_koReferenceLoading::clonesShareTheirReference()
{
    kodReferenceNode original = m_host.loadSingleReference(koTestHost::reference("Part", "part.kpr", QString()));
    const QList<kodNode> clones = koService<koTreeService>()->cloneNodes({original});
    QCOMPARE(clones.size(), 1);
    kodReferenceNode clone(clones.first().getObjectId());

    QCOMPARE(original.getSharedNodes(), QList<kodNode>{clone});
    QCOMPARE(clone.getSharedNodes(), QList<kodNode>{original});
    QVERIFY(original.isShared());
    QCOMPARE(clone.getSmartPath(), original.getSmartPath());

    original.unload();
    QVERIFY(!clone.isLoaded());
    QCOMPARE(clone.getChildCount(), 0u);
    clone.load();
    QCOMPARE(describeTree(original), QStringLiteral("Part(Body)"));
    QCOMPARE(describeTree(clone), QStringLiteral("Part(Body)"));
}

QTEST_MAIN(tst_koReferenceLoading)
#include "tst_koreferenceloading.moc"
