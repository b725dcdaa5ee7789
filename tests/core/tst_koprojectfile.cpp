#include "koProjectFile.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koTreeService.h>

#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QSignalSpy>
#include <QtTest>

#include <ctime>

class tst_koProjectFile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void badProjectLoadsNothing_data();
    void badProjectLoadsNothing();
    void referenceIncludingItselfStaysUnloaded_data();
    void referenceIncludingItselfStaysUnloaded();
    void saveReplacesTheWholeFileOrNothing_data();
    void saveReplacesTheWholeFileOrNothing();
    void awkwardValuesSurviveSaving_data();
    void awkwardValuesSurviveSaving();
    void linksInsideTheProjectAreRelative_data();
    void linksInsideTheProjectAreRelative();

private:
    koTestHost m_host;
};

namespace {

QString lastLogMessage()
{
    return koService<koLogService>()->lastMessage();
}

// Single quotes in the root stand for double ones, to keep the rows readable.
QByteArray project(QByteArray root)
{
    return "{\"format\": \"kovis-project\", \"version\": 1, \"root\": " + root.replace('\'', '"') + "}";
}

// A project whose root group "r" holds the node.
QByteArray holding(const QByteArray& node)
{
    return project("{'type': 'group', 'name': 'r', 'children': [" + node + "]}");
}

QByteArray nested(int depth)
{
    QByteArray node = "{'type': 'group', 'name': 'leaf'}";
    for (int i = 0; i < depth; ++i)
        node = "{'type': 'group', 'name': 'n', 'children': [" + node + "]}";
    return node;
}

QByteArray referenceTo(const QByteArray& name, const QByteArray& smart)
{
    return project("{'type': 'group', 'name': '" + name + "', 'children': [{'type': 'reference', 'name': '" + name
                   + " ref', 'smart': '" + smart + "'}]}");
}

// Every field of a node tree, transform bits and date offsets included, so that two
// trees compare equal only when they are the same.
QString describe(const koSceneNodeDesc& node)
{
    QStringList fields{QString::number(int(node.type)), node.name, QString::number(node.visible),
                       QString::number(node.locked), node.instance, QString::number(node.vertices),
                       QString::number(node.faces), QString::number(node.inlineContent)};
    fields.append(QString::fromLatin1(
        QByteArray::fromRawData(reinterpret_cast<const char*>(node.transform.constData()), 16 * sizeof(float)).toHex()));
    const koReferenceContent& reference = node.reference;
    fields << QString::number(reference.hasSmart) << reference.smartPath << QString::number(reference.hasSource)
           << reference.sourcePath << QString::number(reference.loaded) << QString::number(reference.smartUnsaved)
           << reference.sourceImportDate.toString(Qt::ISODateWithMs)
           << QString::number(reference.sourceImportDate.offsetFromUtc());
    for (const koSceneNodeDesc& child : node.children)
        fields.append(QLatin1Char('(') + describe(child) + QLatin1Char(')'));
    return fields.join(QLatin1Char('|'));
}

koSceneNodeDesc projectHolding(const koSceneNodeDesc& node)
{
    koSceneNodeDesc root;
    root.name = QStringLiteral("Root");
    root.children = {node};
    return root;
}

koSceneNodeDesc referenceNode(const QString& name, const QString& smart = QString())
{
    koSceneNodeDesc node;
    node.type = koNodeType::Reference;
    node.name = name;
    node.reference.hasSmart = !smart.isNull();
    node.reference.smartPath = smart;
    return node;
}

} // namespace

Q_DECLARE_METATYPE(koSceneNodeDesc)

void tst_koProjectFile::initTestCase()
{
    // Local dates in the rows are read west of UTC; a POSIX rule needs no time zone database.
    qputenv("TZ", "EST5");
    tzset();
}

void tst_koProjectFile::badProjectLoadsNothing_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");

    QTest::newRow("empty file") << QByteArray() << "illegal value";
    QTest::newRow("truncated") << project("{'type': 'group', 'na") << "offset";
    QTest::newRow("not a project") << QByteArray("{\"format\": \"something\", \"root\": {}}") << "not a Kovis project";
    QTest::newRow("no version") << QByteArray("{\"format\": \"kovis-project\"}") << "no valid format version";
    QTest::newRow("newer version") << QByteArray("{\"format\": \"kovis-project\", \"version\": 7, \"root\": {}}")
                                   << "newer version";
    QTest::newRow("root not a node") << project("[1, 2]") << "must be an object";
    QTest::newRow("root is a reference") << project("{'type': 'reference', 'name': 'r'}") << "root node must be a group";
    QTest::newRow("name is a number") << project("{'type': 'group', 'name': 12}") << "\"name\" must be a text";
    QTest::newRow("name missing") << project("{'type': 'group'}") << "\"name\" is missing";
    QTest::newRow("unknown node type") << holding("{'type': 'camera', 'name': 'c'}") << "unknown node type \"camera\"";
    QTest::newRow("children not a list") << project("{'type': 'group', 'name': 'r', 'children': {}}")
                                         << "\"children\" must be a list";
    QTest::newRow("visible as text") << project("{'type': 'group', 'name': 'r', 'visible': 'no'}")
                                     << "\"visible\" must be true or false";
    QTest::newRow("short transform") << project("{'type': 'group', 'name': 'r', 'transform': [1, 2, 3]}") << "16 numbers";
    QTest::newRow("negative vertex count") << holding("{'type': 'geometry', 'name': 'g', 'vertices': -4}")
                                           << "\"vertices\" must be a whole number";
    QTest::newRow("smart path as number") << holding("{'type': 'reference', 'name': 'x', 'smart': 42}")
                                          << "\"smart\" must be a text";
    QTest::newRow("bad import date") << holding("{'type': 'reference', 'name': 'x', 'sourceImported': 'yesterday'}")
                                     << "\"sourceImported\" must be a date";
    QTest::newRow("huge name") << project("{'type': 'group', 'name': '" + QByteArray(100000, 'x') + "'}")
                               << "longer than 4096 characters";
    QTest::newRow("deep nesting") << project(nested(300)) << "nested more than 256 levels deep";
    QTest::newRow("local date past year 9999 in UTC")
        << holding("{'type': 'reference', 'name': 'x', 'sourceImported': '9999-12-31T23:00:00'}")
        << "\"sourceImported\" holds a date that cannot be written back";
    QTest::newRow("transform beyond a float")
        << project("{'type': 'group', 'name': 'r', 'transform': [1e39, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]}")
        << "\"transform\" holds 1e+39";
    // One position (12 bytes, base 64 "AAAA..."), and a triangle that points past it.
    const auto mesh = [](const QByteArray& mesh) { return holding("{'type': 'geometry', 'name': 'g', 'mesh': {" + mesh + "}}"); };
    QTest::newRow("mesh corner past its positions")
        << mesh("'positions': 'AAAAAAAAAAAAAAAA', 'triangles': 'AAAAAAAAAAABAAAA'") << "triangle corner past its 1 positions";
    QTest::newRow("mesh positions cut short") << mesh("'positions': 'AAAA', 'triangles': ''")
                                              << "\"positions\" in base 64, 12 bytes an item";
    QTest::newRow("mesh triangles not base 64") << mesh("'positions': 'AAAAAAAAAAAAAAAA', 'triangles': '*'")
                                                << "\"triangles\" in base 64";
}

void tst_koProjectFile::badProjectLoadsNothing()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);

    QSignalSpy started(koService<koFileIOService>(), &koFileIOService::projectLoad);
    QSignalSpy finished(koService<koFileIOService>(), &koFileIOService::projectLoadFinished);
    const QString good = m_host.writeProject(QStringLiteral("good.kpr"), {koTestHost::group("Kept")});
    QVERIFY(koService<koFileIOService>()->loadProject(good));
    const QByteArray before = koTestHost::sceneSnapshot();

    const QString bad = m_host.writeFile(QStringLiteral("bad.kpr"), content);
    QVERIFY(!koService<koFileIOService>()->loadProject(bad));
    QCOMPARE(koTestHost::sceneSnapshot(), before);
    QCOMPARE(koService<koFileIOService>()->getProjectPath(), good);
    QVERIFY2(lastLogMessage().contains(message), qPrintable(lastLogMessage()));
    QVERIFY(lastLogMessage().contains(QDir::toNativeSeparators(bad)));
    QCOMPARE(QList<QVariantList>(started), (QList<QVariantList>{{good}, {bad}}));
    QCOMPARE(QList<QVariantList>(finished), (QList<QVariantList>{{good, true}, {bad, false}}));
}

void tst_koProjectFile::referenceIncludingItselfStaysUnloaded_data()
{
    QTest::addColumn<bool>("throughAnother");
    QTest::newRow("directly") << false;
    QTest::newRow("through another file") << true;
}

void tst_koProjectFile::referenceIncludingItselfStaysUnloaded()
{
    QFETCH(bool, throughAnother);

    const QString main = m_host.writeFile(QStringLiteral("main.kpr"), referenceTo("main", throughAnother ? "other.kpr" : "main.kpr"));
    m_host.writeFile(QStringLiteral("other.kpr"), referenceTo("other", "main.kpr"));

    QVERIFY(koService<koFileIOService>()->loadProject(main));
    const QList<kodReferenceNode> all = koService<koReferenceService>()->getSceneReferences();
    const kodReferenceNode& cyclic = all.last();
    QCOMPARE(all.size(), throughAnother ? 3 : 2);
    QVERIFY(!cyclic.isLoaded());
    QCOMPARE(cyclic.getChildCount(), 0u);
    QVERIFY2(lastLogMessage().contains("includes itself"), qPrintable(lastLogMessage()));
}

void tst_koProjectFile::saveReplacesTheWholeFileOrNothing_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("smallDisk");
    QTest::addColumn<QString>("logged");
    QTest::newRow("over the project") << QString() << false << QString();
    // A folder below a regular file cannot be written, not even by root.
    QTest::newRow("below a file") << "folder/main.kpr/inside.kpr" << false << "could not be written";
    QTest::newRow("on a full disk") << QString() << true << "No space left on device";
}

void tst_koProjectFile::saveReplacesTheWholeFileOrNothing()
{
    QFETCH(QString, target);
    QFETCH(bool, smallDisk);
    QFETCH(QString, logged);

    const QString folder = m_host.path(QStringLiteral("folder"));
    QDir().mkpath(folder);
    if (smallDisk && QProcess::execute(QStringLiteral("mount"), {"-t", "tmpfs", "-o", "size=16k", "tmpfs", folder}) != 0)
        QSKIP("a small file system cannot be mounted here (needs root)");
    const auto unmount = qScopeGuard([&] {
        if (smallDisk)
            QProcess::execute(QStringLiteral("umount"), {folder});
    });
    const QString main = m_host.writeProject(QStringLiteral("folder/main.kpr"), {koTestHost::group("A")});
    QVERIFY(koService<koFileIOService>()->loadProject(main));
    const QString longest(koProjectFile::maxTextLength, QLatin1Char('B'));
    const kodNode node = koService<koReferenceService>()->getSceneReferences().first().getChild(0);
    kodNode(node).setName(longest);
    // More than the small disk holds.
    for (int i = 0; i < 8; ++i)
        koService<koTreeService>()->cloneNodes({node});
    const QByteArray scene = koTestHost::sceneSnapshot();
    const QByteArray onDisk = koTestHost::readFile(main);

    const bool saved = koService<koFileIOService>()->saveProject(target.isEmpty() ? target : m_host.path(target));
    QCOMPARE(saved, logged.isEmpty());
    QVERIFY2(lastLogMessage().contains(logged), qPrintable(lastLogMessage()));
    // A failed save keeps the scene unsaved; a save marks it saved.
    QCOMPARE(koTestHost::sceneSnapshot() == scene, !saved);
    QCOMPARE(koService<koFileIOService>()->getProjectPath(), main);
    QCOMPARE(koTestHost::readFile(main) == onDisk, !saved);
    QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{QStringLiteral("main.kpr")});

    QVERIFY(koService<koFileIOService>()->loadProject(main));
    QCOMPARE(koService<koReferenceService>()->getSceneReferences().first().getChild(0).getName(), saved ? longest : "A");
}

void tst_koProjectFile::awkwardValuesSurviveSaving_data()
{
    QTest::addColumn<koSceneNodeDesc>("node");

    const auto named = [](const QString& name) {
        koSceneNodeDesc node;
        node.name = name;
        return node;
    };
    const auto transformed = [&](std::initializer_list<float> values) {
        koSceneNodeDesc node = named(QStringLiteral("moved"));
        std::vector<float> numbers(values);
        numbers.resize(16, 1.0f);
        node.transform = QMatrix4x4(numbers.data());
        return node;
    };
    const auto imported = [](const QString& date) {
        koSceneNodeDesc node = referenceNode(QStringLiteral("imported"));
        node.reference.hasSource = true;
        node.reference.sourcePath = QStringLiteral("/elsewhere/part.obj");
        node.reference.sourceImportDate = QDateTime::fromString(date, Qt::ISODateWithMs);
        return node;
    };
    koSceneNodeDesc counted = named(QStringLiteral("counted"));
    counted.type = koNodeType::Geometry;
    counted.vertices = 4294967295u;
    counted.instance = QStringLiteral("tag\t\"<&>\"");
    koSceneNodeDesc meshed = named(QStringLiteral("meshed"));
    meshed.type = koNodeType::Geometry;
    auto mesh = std::make_shared<koMesh>();
    mesh->positions = {QVector3D(-0.0f, std::numeric_limits<float>::max(), 1e-45f), QVector3D(1, 2, 3), QVector3D(0, 0, -1)};
    mesh->triangles = {2, 1, 0};
    meshed.mesh = mesh;
    koSceneNodeDesc unsaved = referenceNode(QStringLiteral("new"), QStringLiteral(""));
    unsaved.reference.smartUnsaved = true;

    QTest::newRow("control characters") << named(QStringLiteral("a\tb\nc\rd\\e\u0001f\u007f"));
    QTest::newRow("markup and quotes") << named(QStringLiteral("<b>\"Q&A\"</b> 'x' /* y */"));
    QTest::newRow("unicode") << named(QStringLiteral("R\u00e4der \u8eca\u8f2a \U0001F6B2 \u202eabc"));
    QTest::newRow("lone surrogates") << named(QString(QChar(0xdc00)) + QStringLiteral("\u00e4\"") + QChar(0xd800));
    QTest::newRow("longest name") << named(QString(koProjectFile::maxTextLength, QChar(0x00e9)));
    QTest::newRow("huge transform values") << transformed({3.4e38f, -3.4e38f, std::numeric_limits<float>::max()});
    QTest::newRow("tiny transform values") << transformed({1e-45f, -1e-45f, std::numeric_limits<float>::min(), -0.0f, 0.0f});
    QTest::newRow("counts and instance tag") << counted;
    QTest::newRow("date west of UTC at the end of year 9999") << imported(QStringLiteral("9999-12-31T23:59:59.000-05:00"));
    QTest::newRow("date east of UTC in year 1") << imported(QStringLiteral("0001-01-01T00:00:00.000+14:00"));
    QTest::newRow("date in UTC") << imported(QStringLiteral("2024-02-29T12:30:00.250Z"));
    QTest::newRow("unsaved smart link") << unsaved;
    QTest::newRow("mesh") << meshed;
}

void tst_koProjectFile::awkwardValuesSurviveSaving()
{
    QFETCH(koSceneNodeDesc, node);

    const QString folder = m_host.path(QStringLiteral("project"));
    const QByteArray saved = koProjectFile::serialize(projectHolding(node), folder, folder);
    koSceneNodeDesc read;
    QString error;
    QVERIFY2(koProjectFile::parse(saved, folder, read, &error), qPrintable(error));
    QCOMPARE(describe(read), describe(projectHolding(node)));
    QCOMPARE(koProjectFile::serialize(read, folder, folder), saved);
}

void tst_koProjectFile::linksInsideTheProjectAreRelative_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("projectFolder");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("stored");

    QTest::newRow("below the file") << "/p/main.kpr" << "/p" << "/p/parts/a.obj" << "parts/a.obj";
    QTest::newRow("beside the file's folder") << "/p/parts/a.kpr" << "/p" << "/p/shared/inner.obj" << "../shared/inner.obj";
    QTest::newRow("two folders up") << "/p/a/b/c.kpr" << "/p" << "/p/x.obj" << "../../x.obj";
    QTest::newRow("the file's own folder") << "/p/a/c.kpr" << "/p" << "/p/a" << ".";
    QTest::newRow("outside the project") << "/p/parts/a.kpr" << "/p" << "/elsewhere/x.obj" << "/elsewhere/x.obj";
    QTest::newRow("folder sharing the project's prefix") << "/p/a.kpr" << "/p" << "/p2/x.obj" << "/p2/x.obj";
    QTest::newRow("file outside the project") << "/q/a.kpr" << "/p" << "/p/x.obj" << "/p/x.obj";
    QTest::newRow("project at the top folder") << "/a/b.kpr" << "/" << "/c/d.obj" << "../c/d.obj";
    QTest::newRow("no project, below the file") << "/p/parts/a.kpr" << "" << "/p/parts/sub/x.obj" << "sub/x.obj";
    QTest::newRow("no project, beside the file") << "/p/parts/a.kpr" << "" << "/p/shared/x.obj" << "/p/shared/x.obj";
}

void tst_koProjectFile::linksInsideTheProjectAreRelative()
{
    QFETCH(QString, file);
    QFETCH(QString, projectFolder);
    QFETCH(QString, link);
    QFETCH(QString, stored);

    const QString folder = QFileInfo(file).path();
    const QByteArray saved = koProjectFile::serialize(projectHolding(referenceNode(QStringLiteral("r"), link)), folder, projectFolder);
    QCOMPARE(QJsonDocument::fromJson(saved)["root"]["children"][0]["smart"].toString(), stored);
    koSceneNodeDesc read;
    QVERIFY(koProjectFile::parse(saved, folder, read, nullptr));
    QCOMPARE(read.children.value(0).reference.smartPath, link);
}

QTEST_MAIN(tst_koProjectFile)
#include "tst_koprojectfile.moc"
