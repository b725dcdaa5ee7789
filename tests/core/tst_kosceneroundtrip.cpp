#include "koProjectFile.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koNodeService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koTreeService.h>

#include <QFile>
#include <QRandomGenerator>
#include <QtTest>

// Whatever the host writes it reads back as the same scene, and writing that again
// gives the same bytes; links survive the project folder moving.
class tst_koSceneRoundTrip : public QObject
{
    Q_OBJECT

private slots:
    void randomScenesSurviveSaveOpenSave_data();
    void randomScenesSurviveSaveOpenSave();
    void projectMovedWithSiblingFoldersKeepsItsLinks();
    void hostPlacesNewSmartFilesWithoutAModule();
    void namesLongerThanFilesHoldAreRefused();

private:
    koTestHost m_host;
};

namespace {

const QStringList awkwardNames{QStringLiteral("plain"),
                               QStringLiteral("tab\there"),
                               QStringLiteral("two\nlines"),
                               QStringLiteral("\"quoted\" <b>&amp;</b>"),
                               QStringLiteral("R\u00e4der \u8eca\u8f2a \U0001F6B2"),
                               QStringLiteral("back\\slash"),
                               QString(koProjectFile::maxTextLength, QLatin1Char('L'))};

QString lastLogMessage()
{
    return koService<koLogService>()->lastMessage();
}

QList<kodNode> allNodes()
{
    QList<kodNode> nodes{koService<koNodeService>()->getRootNode()};
    for (int i = 0; i < nodes.size(); ++i)
        nodes += nodes.at(i).getChildren();
    return nodes;
}

QJsonObject randomNode(QRandomGenerator& random, int depth)
{
    const QString name = awkwardNames.at(random.bounded(awkwardNames.size()));
    QJsonObject node;
    switch (random.bounded(depth > 3 ? 3 : 5)) {
    case 0:
        node = koTestHost::geometry(name);
        node.insert(QStringLiteral("vertices"), qint64(random.bounded(1000000)));
        break;
    case 1:
        node = koTestHost::reference(name, QString(), QStringLiteral("parts/bolt.obj"),
                                     {{"sourceImported", random.bounded(2) ? "9999-12-31T23:59:59.000-05:00"
                                                                           : "2024-02-29T12:30:00.250Z"}});
        break;
    case 2:
        node = koTestHost::reference(name, QStringLiteral("parts/nut.kpr"), QString(),
                                     {{"loaded", bool(random.bounded(2))}});
        break;
    default: {
        QJsonArray children;
        for (int i = random.bounded(4); i > 0; --i)
            children.append(randomNode(random, depth + 1));
        node = koTestHost::group(name, children);
    }
    }
    if (random.bounded(3) == 0) {
        const float extremes[] = {3.4e38f, -1e-45f, 1.17549435e-38f, -0.0f, 12.5f};
        QJsonArray transform{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        transform[random.bounded(12)] = double(extremes[random.bounded(5)]);
        node.insert(QStringLiteral("transform"), transform);
    }
    if (random.bounded(4) == 0)
        node.insert(QStringLiteral("visible"), false);
    return node;
}

void editRandomly(QRandomGenerator& random, int edits)
{
    for (int i = 0; i < edits; ++i) {
        const QList<kodNode> nodes = allNodes();
        kodNode node = nodes.at(1 + random.bounded(nodes.size() - 1));
        kodNode target = nodes.at(random.bounded(nodes.size()));
        switch (random.bounded(4)) {
        case 0:
            node.setName(awkwardNames.at(random.bounded(awkwardNames.size())));
            break;
        case 1:
            koService<koTreeService>()->cloneNodes({node});
            break;
        case 2:
            koService<koReferenceService>()->convertToSmartReference(node);
            break;
        default:
            target.addChild(node);
        }
    }
}

} // namespace

void tst_koSceneRoundTrip::randomScenesSurviveSaveOpenSave_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 12; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void tst_koSceneRoundTrip::randomScenesSurviveSaveOpenSave()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    QJsonArray nodes;
    for (int i = 0; i < 6; ++i)
        nodes.append(randomNode(random, 0));
    // Each seed in a folder of its own, so that it can be replayed alone.
    const QString folder = QStringLiteral("seed%1/").arg(seed);
    m_host.writeFile(folder + QStringLiteral("parts/bolt.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Bolt\nv 1 0 0\nf 1 2 3\n");
    m_host.writeProject(folder + QStringLiteral("parts/nut.kpr"), {koTestHost::geometry("Nut")});
    QVERIFY(koService<koFileIOService>()->loadProject(m_host.writeProject(folder + QStringLiteral("start.kpr"), nodes)));
    editRandomly(random, 10);

    const QString first = m_host.path(folder + QStringLiteral("first.kpr"));
    const QString second = m_host.path(folder + QStringLiteral("second.kpr"));
    QVERIFY2(koService<koFileIOService>()->saveProject(first), qPrintable(lastLogMessage()));
    QVERIFY2(koService<koFileIOService>()->loadProject(first), qPrintable(lastLogMessage()));
    for (const kodReferenceNode& reference : koService<koReferenceService>()->getSceneReferences()) {
        QVERIFY2(reference.getSmartFileState() != koReferenceTypes::Missing, qPrintable(reference.getName()));
        QVERIFY2(reference.getSmartFileState() != koReferenceTypes::Unsaved, qPrintable(reference.getName()));
    }
    QVERIFY(koService<koFileIOService>()->saveProject(second));
    // Line by line, so that a failure shows the first line that differs.
    QCOMPARE(koTestHost::readFile(second).split('\n'), koTestHost::readFile(first).split('\n'));
}

void tst_koSceneRoundTrip::projectMovedWithSiblingFoldersKeepsItsLinks()
{
    m_host.writeFile(QStringLiteral("project/shared/inner.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Inner\nf 1 2 3\n");
    m_host.writeProject(QStringLiteral("project/parts/a.kpr"), {koTestHost::group("Holder")});
    const QString root = m_host.writeProject(QStringLiteral("project/root.kpr"),
                                             {koTestHost::reference("A", "parts/a.kpr", QString())});
    QVERIFY(koService<koFileIOService>()->loadProject(root));
    // The reference inside a.kpr is made here, so the host writes its link itself.
    kodReferenceNode inner = koService<koReferenceService>()->createReference(koTestHost::findNode("Holder"));
    inner.setSourcePath(m_host.path(QStringLiteral("project/shared/inner.obj")));
    QVERIFY(koService<koFileIOService>()->saveProject());

    QVERIFY(QDir().rename(m_host.path(QStringLiteral("project")), m_host.path(QStringLiteral("moved"))));
    QVERIFY(koService<koFileIOService>()->loadProject(m_host.path(QStringLiteral("moved/root.kpr"))));
    const QList<kodReferenceNode> references = koService<koReferenceService>()->getSceneReferences();
    QCOMPARE(references.size(), 3);
    QCOMPARE(references.at(1).getSmartFileState(), koReferenceTypes::UpToDate);
    QCOMPARE(references.at(2).getSourcePath(), m_host.path(QStringLiteral("moved/shared/inner.obj")));
    QCOMPARE(references.at(2).getSourceFileState(), koReferenceTypes::UpToDate);
}

void tst_koSceneRoundTrip::hostPlacesNewSmartFilesWithoutAModule()
{
    m_host.writeFile(QStringLiteral("placed/Seat.kpr"), "taken by someone else");
    const QString main = m_host.writeProject(QStringLiteral("placed/main.kpr"),
                                             {koTestHost::group("Seat", {koTestHost::geometry("Saddle")})});
    QVERIFY(koService<koFileIOService>()->loadProject(main));
    koService<koReferenceService>()->convertToSmartReference(koTestHost::findNode("Seat"));
    QVERIFY(koService<koFileIOService>()->saveProject());

    QCOMPARE(koTestHost::readFile(m_host.path(QStringLiteral("placed/Seat.kpr"))), QByteArray("taken by someone else"));
    QVERIFY(koService<koFileIOService>()->loadProject(main));
    const kodReferenceNode seat = koTestHost::findReference(QStringLiteral("Seat"));
    QCOMPARE(seat.getSmartPath(), m_host.path(QStringLiteral("placed/Seat_1.kpr")));
    QCOMPARE(seat.getSmartFileState(), koReferenceTypes::UpToDate);
    QCOMPARE(seat.getChild(0).getName(), QStringLiteral("Saddle"));
}

void tst_koSceneRoundTrip::namesLongerThanFilesHoldAreRefused()
{
    const QString main = m_host.writeProject(QStringLiteral("names.kpr"), {koTestHost::group("Short")});
    QVERIFY(koService<koFileIOService>()->loadProject(main));
    kodNode node = koTestHost::findNode(QStringLiteral("Short"));
    node.setName(QString(koProjectFile::maxTextLength + 1, QLatin1Char('x')));
    QCOMPARE(node.getName(), QStringLiteral("Short"));
    QVERIFY2(lastLogMessage().contains(QString::number(koProjectFile::maxTextLength)), qPrintable(lastLogMessage()));

    const QString longest(koProjectFile::maxTextLength, QLatin1Char('x'));
    node.setName(longest);
    QCOMPARE(node.getName(), longest);
}

QTEST_MAIN(tst_koSceneRoundTrip)
#include "tst_kosceneroundtrip.moc"
