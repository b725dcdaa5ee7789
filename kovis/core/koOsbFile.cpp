#include "koOsbFile.h"

#include "koMesh.h"
#include "koProjectFile.h"
#include "koRegularFile.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QtEndian>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("koOsbFile", text);
}

enum class Kind : quint8 { Group = 1, Geometry = 2 };

// QDataStream's length of a null QString.
constexpr quint32 nullString = 0xffffffff;
// Kind, null name, visibility, vertex, face and child counts: no node takes fewer bytes.
constexpr qint64 minimalNodeSize = 1 + 4 + 1 + 4 + 4 + 4;

// Geometry nodes hold their triangles from this version on.
constexpr quint16 firstVersionWithMeshes = 2;

struct Reader
{
    Reader(QDataStream& data, quint16 fileVersion)
        : stream(data)
        , version(fileVersion)
    {
    }

    QDataStream& stream;
    quint16 version;
    quint32 nodesLeft = koOsbFile::maxNodes;
    // Children declared and not read yet: room is made for them only when the bytes
    // left could hold them all, so a file cannot make the reader allocate more than
    // a small multiple of its size.
    qint64 nodesPending = 0;
    QString error;

    bool readNode(koSceneNodeDesc& node, int depth)
    {
        if (depth > koProjectFile::maxDepth)
            return fail(tr("nodes are nested more than %1 levels deep").arg(koProjectFile::maxDepth));
        if (nodesLeft-- == 0)
            return fail(tr("the file holds more than %1 nodes").arg(koOsbFile::maxNodes));
        quint8 kind = 0;
        quint32 childCount = 0;
        stream >> kind;
        if (!readName(node.name))
            return false;
        stream >> node.visible >> node.vertices >> node.faces;
        if (stream.status() != QDataStream::Ok)
            return truncated();
        if (kind != quint8(Kind::Group) && kind != quint8(Kind::Geometry))
            return fail(tr("unknown node kind %1").arg(kind));
        if (kind == quint8(Kind::Geometry) && version >= firstVersionWithMeshes && !readMesh(node))
            return false;
        stream >> childCount;
        if (stream.status() != QDataStream::Ok)
            return truncated();
        if (childCount > nodesLeft)
            return fail(tr("the file holds more than %1 nodes").arg(koOsbFile::maxNodes));
        if ((nodesPending + childCount) * minimalNodeSize > bytesLeft()) {
            return fail(tr("the file is truncated: a node declares %1 children, the rest of the file holds at most %2")
                            .arg(childCount)
                            .arg(bytesLeft() / minimalNodeSize - nodesPending));
        }
        nodesPending += childCount;
        node.type = kind == quint8(Kind::Geometry) ? koNodeType::Geometry : koNodeType::Group;
        node.children.resize(int(childCount));
        for (koSceneNodeDesc& child : node.children) {
            --nodesPending;
            if (!readNode(child, depth + 1))
                return false;
        }
        return true;
    }

    // Positions (three floats each), then triangle corners (indices into the positions),
    // each list after its count, checked against the bytes left before it is allocated.
    bool readMesh(koSceneNodeDesc& node)
    {
        auto mesh = std::make_shared<koMesh>();
        quint32 positions = 0;
        stream >> positions;
        if (stream.status() != QDataStream::Ok || qint64(positions) * 12 > bytesLeft())
            return truncated();
        mesh->positions.resize(int(positions));
        for (QVector3D& position : mesh->positions) {
            float x = 0;
            float y = 0;
            float z = 0;
            stream >> x >> y >> z;
            position = QVector3D(x, y, z);
        }
        quint32 corners = 0;
        stream >> corners;
        if (stream.status() != QDataStream::Ok || qint64(corners) * 4 > bytesLeft())
            return truncated();
        if (corners % 3 != 0)
            return fail(tr("a mesh has %1 triangle corners, which is no multiple of three").arg(corners));
        mesh->triangles.resize(int(corners));
        for (quint32& corner : mesh->triangles) {
            stream >> corner;
            if (corner >= positions)
                return fail(tr("a triangle corner lies past the mesh's %1 positions").arg(positions));
        }
        if (positions > 0 || corners > 0)
            node.mesh = std::move(mesh);
        return true;
    }

    // The name as QDataStream writes a QString (a byte length, then UTF-16), with the
    // length checked before anything is allocated for it.
    bool readName(QString& name)
    {
        quint32 bytes = 0;
        stream >> bytes;
        if (stream.status() != QDataStream::Ok)
            return truncated();
        if (bytes == nullString) {
            name = QString();
            return true;
        }
        if (bytes % 2 != 0)
            return fail(tr("a node name has an odd number of bytes"));
        if (bytes / 2 > quint32(koProjectFile::maxTextLength))
            return fail(tr("a node name is longer than %1 characters").arg(koProjectFile::maxTextLength));
        if (bytes > bytesLeft())
            return truncated();
        QByteArray utf16(int(bytes), Qt::Uninitialized);
        stream.readRawData(utf16.data(), int(bytes));
        name.resize(int(bytes / 2));
        qFromBigEndian<char16_t>(utf16.constData(), name.size(), name.data());
        return true;
    }

    qint64 bytesLeft() const { return stream.device()->bytesAvailable(); }

    bool truncated() { return fail(tr("the file is truncated")); }

    bool fail(const QString& message)
    {
        if (error.isEmpty())
            error = message;
        return false;
    }
};

void writeMesh(QDataStream& stream, const koMesh& mesh)
{
    stream << quint32(mesh.positions.size());
    for (const QVector3D& position : mesh.positions)
        stream << position.x() << position.y() << position.z();
    stream << quint32(mesh.triangles.size());
    for (quint32 corner : mesh.triangles)
        stream << corner;
}

void writeNode(QDataStream& stream, const koSceneNodeDesc& node)
{
    const Kind kind = node.type == koNodeType::Geometry ? Kind::Geometry : Kind::Group;
    stream << quint8(kind) << node.name << node.visible << node.vertices << node.faces;
    if (kind == Kind::Geometry)
        writeMesh(stream, node.mesh ? *node.mesh : koMesh());
    stream << quint32(node.children.size());
    for (const koSceneNodeDesc& child : node.children)
        writeNode(stream, child);
}

} // namespace

bool koOsbFile::read(const QString& path, koSceneNodeDesc& root, QString* error)
{
    QByteArray data;
    if (!koRegularFile::read(path, maxFileSize, data, error))
        return false;
    QString message;
    if (parse(data, root, &message))
        return true;
    if (error)
        *error = tr("%1 is not a valid geometry file: %2").arg(QDir::toNativeSeparators(path), message);
    return false;
}

bool koOsbFile::parse(const QByteArray& data, koSceneNodeDesc& root, QString* error)
{
    QDataStream stream(data);
    stream.setVersion(QDataStream::Qt_5_15);
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    quint32 fileMagic = 0;
    quint16 fileVersion = 0;
    stream >> fileMagic >> fileVersion;
    Reader reader(stream, fileVersion);
    koSceneNodeDesc result;
    if (fileMagic != magic)
        reader.fail(tr("the file is not a Kovis geometry file"));
    else if (fileVersion < 1 || fileVersion > version)
        reader.fail(tr("unsupported version %1").arg(fileVersion));
    else if (reader.readNode(result, 0) && !stream.atEnd())
        reader.fail(tr("unexpected data after the node tree"));
    if (!reader.error.isEmpty()) {
        if (error)
            *error = reader.error;
        return false;
    }
    root = std::move(result);
    return true;
}

QByteArray koOsbFile::serialize(const koSceneNodeDesc& root)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_15);
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    stream << magic << version;
    writeNode(stream, root);
    return data;
}
