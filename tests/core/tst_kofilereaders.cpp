#include "koOsbFile.h"
#include "koProjectFile.h"
#include "koSceneLoader.h"

#include <QDataStream>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

// The readers of smart and source files against what a user's disk can hand them:
// special files, oversized, truncated and hostile content.
class tst_koFileReaders : public QObject
{
    Q_OBJECT

private slots:
    void hostileFileIsRefused_data();
    void hostileFileIsRefused();
};

namespace {

// What the test puts at the reader's path.
enum class Make { Content, Fifo, LinkToZero, LinkToNull, Directory, Sparse };

QByteArray osbHeader()
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream << koOsbFile::magic << koOsbFile::version;
    return data;
}

// One node as the format stores it; the name is given as its raw byte length and
// UTF-16 bytes so that a test can lie about either.
QByteArray osbNode(quint32 childCount, quint32 nameBytes = 2, const QByteArray& name = QByteArray(2, 'a'))
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream << quint8(1) << nameBytes;
    stream.writeRawData(name.constData(), name.size());
    stream << true << quint32(0) << quint32(0) << childCount;
    return data;
}

// A geometry node without children whose triangles are the given positions and corners;
// positionCount may claim more positions than follow.
QByteArray osbGeometry(quint32 positionCount, const QVector<float>& coordinates, const QVector<quint32>& corners)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    stream << quint8(2) << QStringLiteral("g") << true << quint32(0) << quint32(0) << positionCount;
    for (float coordinate : coordinates)
        stream << coordinate;
    stream << quint32(corners.size());
    for (quint32 corner : corners)
        stream << corner;
    stream << quint32(0);
    return data;
}

QByteArray osbNested(int depth)
{
    QByteArray data = osbHeader();
    for (int i = 0; i < depth; ++i)
        data += osbNode(1);
    return data + osbNode(0);
}

// Every level declares as many children as the whole file could hold, so a reader that
// checks each count on its own still allocates the file's size over again per level.
QByteArray osbCountBombOnEveryLevel()
{
    const int size = 1024 * 1024;
    QByteArray data = osbHeader();
    for (int level = 0; level < 200; ++level)
        data += osbNode(quint32(size / 18));
    data.resize(size);
    return data;
}

bool readFile(const QString& path, QString* error)
{
    koSceneNodeDesc content;
    const QString suffix = QFileInfo(path).suffix();
    if (suffix == QLatin1String("kpr"))
        return koProjectFile::read(path, content, error);
    if (suffix == QLatin1String("osb"))
        return koOsbFile::read(path, content, error);
    // Sources are read the way a reference imports them.
    return koSceneLoader::importSource(path, content, error);
}

bool make(Make what, const QString& path, const QByteArray& content, qint64 size)
{
    QFile file(path);
    switch (what) {
    case Make::Fifo:
        return ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
    case Make::LinkToZero:
        return QFile::link(QStringLiteral("/dev/zero"), path);
    case Make::LinkToNull:
        return QFile::link(QStringLiteral("/dev/null"), path);
    case Make::Directory:
        return QDir().mkdir(path);
    case Make::Sparse:
        return file.open(QIODevice::WriteOnly) && file.resize(size);
    case Make::Content:
        break;
    }
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

} // namespace

Q_DECLARE_METATYPE(Make)

void tst_koFileReaders::hostileFileIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<Make>("what");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");

    const QByteArray project = "{\"format\": \"kovis-project\", \"version\": 1, \"root\": {\"type\": \"group\", \"name\": \"r\"}}";
    const QByteArray nameBytes = QByteArray(8, 'a');

    QTest::newRow("project FIFO") << "x.kpr" << Make::Fifo << QByteArray() << "is not a regular file";
    QTest::newRow("geometry FIFO") << "x.osb" << Make::Fifo << QByteArray() << "is not a regular file";
    QTest::newRow("source FIFO") << "x.obj" << Make::Fifo << QByteArray() << "is not a regular file";
    QTest::newRow("project linked to /dev/zero") << "x.kpr" << Make::LinkToZero << QByteArray() << "is not a regular file";
    QTest::newRow("source linked to /dev/zero") << "x.obj" << Make::LinkToZero << QByteArray() << "is not a regular file";
    QTest::newRow("geometry linked to /dev/null") << "x.osb" << Make::LinkToNull << QByteArray() << "is not a regular file";
    QTest::newRow("directory named as a project") << "x.kpr" << Make::Directory << QByteArray() << "is not a regular file";
    QTest::newRow("project over the size limit") << "x.kpr" << Make::Sparse << QByteArray() << "is larger than the limit of";
    QTest::newRow("geometry over the size limit") << "x.osb" << Make::Sparse << QByteArray() << "is larger than the limit of";
    QTest::newRow("truncated project") << "x.kpr" << Make::Content << project.left(project.size() - 5) << "offset";
    QTest::newRow("empty geometry") << "x.osb" << Make::Content << QByteArray() << "not a Kovis geometry file";
    QTest::newRow("geometry of another format") << "x.osb" << Make::Content << "KPR?" + osbNested(0).mid(4)
                                                << "not a Kovis geometry file";
    QTest::newRow("truncated geometry") << "x.osb" << Make::Content << osbNested(3).chopped(1) << "the file is truncated";
    QTest::newRow("geometry with trailing data") << "x.osb" << Make::Content << osbNested(0) + "extra"
                                                 << "unexpected data after the node tree";
    QTest::newRow("geometry truncated in a name")
        << "x.osb" << Make::Content << osbHeader() + osbNode(0, 8000, nameBytes) << "the file is truncated";
    QTest::newRow("geometry count bomb")
        << "x.osb" << Make::Content << osbHeader() + osbNode(10000000 - 1) << "the file is truncated";
    QTest::newRow("geometry count bomb on every level")
        << "x.osb" << Make::Content << osbCountBombOnEveryLevel() << "the file is truncated";
    QTest::newRow("geometry name of 4 GB")
        << "x.osb" << Make::Content << osbHeader() + osbNode(0, 0xfffffffe, nameBytes) << "longer than 4096 characters";
    QTest::newRow("geometry nested too deep")
        << "x.osb" << Make::Content << osbNested(koProjectFile::maxDepth + 1) << "nested more than 256 levels deep";
    QTest::newRow("geometry with a position count bomb")
        << "x.osb" << Make::Content << osbHeader() + osbGeometry(0xffffffff, {}, {}) << "the file is truncated";
    QTest::newRow("geometry with a corner past its positions")
        << "x.osb" << Make::Content << osbHeader() + osbGeometry(1, {0, 0, 0}, {0, 0, 1}) << "past the mesh's 1 positions";
    QTest::newRow("geometry with corners not in threes")
        << "x.osb" << Make::Content << osbHeader() + osbGeometry(1, {0, 0, 0}, {0, 0}) << "no multiple of three";
}

void tst_koFileReaders::hostileFileIsRefused()
{
    QFETCH(QString, name);
    QFETCH(Make, what);
    QFETCH(QByteArray, content);
    QFETCH(QString, message);

    QTemporaryDir folder;
    const QString path = folder.filePath(name);
    const qint64 limit = name.endsWith(QLatin1String(".osb")) ? koOsbFile::maxFileSize : koProjectFile::maxFileSize;
    QVERIFY(make(what, path, content, limit + 1));

    QString error;
    QVERIFY(!readFile(path, &error));
    QVERIFY2(error.contains(message), qPrintable(error));
    QVERIFY2(error.contains(QDir::toNativeSeparators(path)), qPrintable(error));
}

QTEST_MAIN(tst_koFileReaders)
#include "tst_kofilereaders.moc"
