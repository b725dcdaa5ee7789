#include "koMeshImporter.h"
#include "koNodeInformation.h"
#include "koReferenceEngine.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koNodeInfoDialog.h>
#include <kovis/koReferenceService.h>

#include <QDataStream>
#include <QLabel>
#include <QtTest>

// Sources of every common mesh format become node trees with the names, counts and
// placement the file gives; a file that cannot be imported says why and leaves a
// reference whose source shows as missing, never an empty node that looks fine.
class tst_koMeshImporter : public QObject
{
    Q_OBJECT

private slots:
    void formatsBecomeNodeTrees_data();
    void formatsBecomeNodeTrees();
    void badFilesAreRefusedWithAReason_data();
    void badFilesAreRefusedWithAReason();
    void filterListsWhatTheLibraryReads();

private:
    koTestHost m_host;
};

namespace {

const QByteArray triangleObj = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";

QByteArray binaryStl(quint32 declared, int written)
{
    QByteArray data(80, ' ');
    QDataStream stream(&data, QIODevice::Append);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    stream << declared;
    for (int t = 0; t < written; ++t) {
        for (float value : {0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, float(t)})
            stream << value;
        stream << quint16(0);
    }
    return data;
}

// plate.gltf: two nodes of one triangle each, the second moved 2 along x; box.step and
// box.igs: a box of 10 x 20 x 30 as the CAD library that reads them writes it.
QByteArray meshFile(const QString& name)
{
    return koTestHost::readFile(QFINDTESTDATA(QStringLiteral("../data/meshes/") + name));
}

// name(children) with vertices/faces of geometry and the x of its placement.
QString describe(const kodNode& node)
{
    const koNodeRecord* record = koHost::engine()->store()->node(node.getObjectId());
    QString text = node.getName();
    if (record->type == koNodeType::Geometry) {
        text += QStringLiteral(" %1/%2").arg(record->vertexCount).arg(record->faceCount);
        if (record->transform.column(3).x() != 0.0f)
            text += QStringLiteral(" x=%1").arg(double(record->transform.column(3).x()));
    }
    QStringList children;
    for (const kodNode& child : node.getChildren())
        children.append(describe(child));
    return children.isEmpty() ? text : text + QLatin1Char('(') + children.join(QStringLiteral(", ")) + QLatin1Char(')');
}

// The vertices/faces the node information dialog shows.
QString information(const kodNode& node)
{
    koNodeInfoDialog dialog;
    koNodeInformation::describe(node, dialog);
    QMap<QString, QString> shown;
    for (const QLabel* label : dialog.findChildren<QLabel*>(QStringLiteral("infoLabel")))
        shown.insert(label->text(), qobject_cast<QLabel*>(label->buddy())->text());
    return shown.value(QStringLiteral("Vertices")) + QLatin1Char('/') + shown.value(QStringLiteral("Faces"));
}

} // namespace

void tst_koMeshImporter::formatsBecomeNodeTrees_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("tree");
    QTest::addColumn<QString>("information");

    QTest::newRow("OBJ objects") << "part.obj"
                                 << triangleObj + "o Left\nf 1 2 3\no Right\nv 1 1 0\nf 1 2 4 3\nf 1 2 3\n"
                                 << "R(Left 3/1, Right 4/2)" << "7/3";
    QTest::newRow("ASCII STL") << "part.stl"
                               << QByteArray("solid bell\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                                  "vertex 0 1 0\nendloop\nendfacet\nendsolid bell\n")
                               << "R(bell 3/1)" << "3/1";
    QTest::newRow("binary STL") << "part.stl" << binaryStl(2, 2) << "R(part 4/2)" << "4/2";
    QTest::newRow("PLY") << "part.ply"
                         << QByteArray("ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                            "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
                            "0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 3\n")
                         << "R(part 4/1)" << "4/1";
    QTest::newRow("glTF with placement") << "part.gltf" << meshFile("plate.gltf") << "R(Left 3/1, Right 3/1 x=2)" << "6/2";
    // Six faces of two triangles each, every face with its own four corners.
    QTest::newRow("STEP") << "box.step" << meshFile("box.step") << "R(box 24/12)" << "24/12";
    QTest::newRow("IGES") << "box.igs" << meshFile("box.igs") << "R(box 24/12)" << "24/12";
}

void tst_koMeshImporter::formatsBecomeNodeTrees()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, tree);
    QFETCH(QString, information);
    m_host.writeFile(file, content);

    const kodReferenceNode reference = m_host.loadSingleReference(koTestHost::reference("R", QString(), file));
    QVERIFY2(reference.isLoaded(), qPrintable(koService<koLogService>()->lastMessage()));
    QCOMPARE(describe(reference), tree);
    QCOMPARE(::information(reference), information);
    QCOMPARE(reference.getSourceFileState(), koReferenceTypes::UpToDate);
}

void tst_koMeshImporter::badFilesAreRefusedWithAReason_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("reason");

    QTest::newRow("CAD format no library reads") << "engine.CATProduct" << QByteArray("binary") << "cannot be imported";
    QTest::newRow("unknown type") << "notes.xyz123" << QByteArray("text") << "cannot be imported";
    QTest::newRow("OBJ with indices out of range") << "bad.obj" << QByteArray("v 0 0 0\nf 1 2 3\n") << "bad.obj";
    QTest::newRow("OBJ without geometry") << "empty.obj" << QByteArray("# nothing\n") << "empty.obj";
    QTest::newRow("truncated binary STL") << "bad.stl" << binaryStl(1000, 1) << "bad.stl";
    QTest::newRow("PLY cut in the header") << "bad.ply" << QByteArray("ply\nformat ascii 1.0\nelement vert") << "bad.ply";
    QTest::newRow("STEP cut short") << "bad.step" << meshFile("box.step").left(400) << "bad.step";
    QTest::newRow("IGES that is text") << "bad.igs" << QByteArray("not a drawing\n") << "bad.igs";
    QTest::newRow("glTF that is no JSON") << "bad.gltf" << QByteArray("{\"asset\": {\"version\": ") << "bad.gltf";
    QTest::newRow("glTF pointing past its buffer")
        << "bad.gltf" << meshFile("plate.gltf").replace("\"mesh\": 0}, {", "\"mesh\": 3}, {").replace("\"count\": 3, \"type\": \"VEC3\"", "\"count\": 300, \"type\": \"VEC3\"")
        << "bad.gltf";
}

void tst_koMeshImporter::badFilesAreRefusedWithAReason()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, reason);
    m_host.writeFile(file, content);
    koService<koLogService>()->clear();

    const kodReferenceNode reference = m_host.loadSingleReference(koTestHost::reference("R", QString(), file));
    QVERIFY(reference.isValid());
    QVERIFY(!reference.isLoaded());
    QCOMPARE(reference.getChildCount(), 0u);
    QCOMPARE(reference.getSourceFileState(), koReferenceTypes::Missing);
    const QString logged = koService<koLogService>()->lastMessage();
    QVERIFY2(logged.contains(QStringLiteral("could not be imported")) && logged.contains(reason), qPrintable(logged));

    // A changed file may import: it no longer counts as missing.
    koTestHost::setModified(m_host.path(file), QDateTime::currentDateTime().addSecs(60));
    koService<koReferenceService>()->checkFiles();
    QVERIFY(reference.getSourceFileState() != koReferenceTypes::Missing);
}

void tst_koMeshImporter::filterListsWhatTheLibraryReads()
{
    const QString filter = koService<koFileIOService>()->getImportFileFilter(koFileIOService::ImportFiles);
    const QStringList entries = filter.split(QStringLiteral(";;"));
    QVERIFY(entries.first().startsWith(QStringLiteral("Importable Files (")));
    QCOMPARE(entries.last(), QStringLiteral("All Files (*)"));
    const QStringList all = entries.first().section(QLatin1Char('('), 1).chopped(1).split(QLatin1Char(' '));
    for (const char* pattern : {"*.obj", "*.stl", "*.ply", "*.gltf", "*.glb", "*.fbx", "*.dae", "*.3ds", "*.step", "*.igs"})
        QVERIFY2(all.contains(QLatin1String(pattern)), pattern);
    QVERIFY(entries.size() > 10);
    QVERIFY(!all.contains(QStringLiteral("*.catproduct")));
}

QTEST_MAIN(tst_koMeshImporter)
#include "tst_komeshimporter.moc"
