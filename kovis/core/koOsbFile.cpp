#include "koOsbFile.h"

#include "koProjectFile.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("koOsbFile", text);
}

enum class Kind : quint8 { Group = 1, Geometry = 2 };

struct Reader
{
    QDataStream& stream;
    quint32 nodesLeft = koOsbFile::maxNodes;
    QString error;

    bool readNode(koSceneNodeDesc& node, int depth)
    {
        if (depth > koProjectFile::maxDepth)
            return fail(tr("nodes are nested more than %1 levels deep").arg(koProjectFile::maxDepth));
        if (nodesLeft-- == 0)
            return fail(tr("the file holds more than %1 nodes").arg(koOsbFile::maxNodes));
        quint8 kind = 0;
        quint32 childCount = 0;
        stream >> kind >> node.name >> node.visible >> node.vertices >> node.faces >> childCount;
        if (stream.status() != QDataStream::Ok)
            return fail(tr("the file is truncated"));
        if (kind != quint8(Kind::Group) && kind != quint8(Kind::Geometry))
            return fail(tr("unknown node kind %1").arg(kind));
        if (node.name.size() > koProjectFile::maxTextLength)
            return fail(tr("a node name is longer than %1 characters").arg(koProjectFile::maxTextLength));
        if (childCount > nodesLeft)
            return fail(tr("the file is truncated"));
        node.type = kind == quint8(Kind::Geometry) ? koNodeType::Geometry : koNodeType::Group;
        node.children.resize(int(childCount));
        for (koSceneNodeDesc& child : node.children) {
            if (!readNode(child, depth + 1))
                return false;
        }
        return true;
    }

    bool fail(const QString& message)
    {
        if (error.isEmpty())
            error = message;
        return false;
    }
};

void writeNode(QDataStream& stream, const koSceneNodeDesc& node)
{
    const Kind kind = node.type == koNodeType::Geometry ? Kind::Geometry : Kind::Group;
    stream << quint8(kind) << node.name << node.visible << node.vertices << node.faces
           << quint32(node.children.size());
    for (const koSceneNodeDesc& child : node.children)
        writeNode(stream, child);
}

} // namespace

bool koOsbFile::read(const QString& path, koSceneNodeDesc& root, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = tr("%1 cannot be read: %2").arg(QDir::toNativeSeparators(path), file.errorString());
        return false;
    }
    QString message;
    if (parse(file.readAll(), root, &message))
        return true;
    if (error)
        *error = tr("%1 is not a valid geometry file: %2").arg(QDir::toNativeSeparators(path), message);
    return false;
}

bool koOsbFile::parse(const QByteArray& data, koSceneNodeDesc& root, QString* error)
{
    QDataStream stream(data);
    stream.setVersion(QDataStream::Qt_5_15);
    quint32 fileMagic = 0;
    quint16 fileVersion = 0;
    stream >> fileMagic >> fileVersion;
    Reader reader{stream, koOsbFile::maxNodes, QString()};
    koSceneNodeDesc result;
    if (fileMagic != magic)
        reader.fail(tr("the file is not a Kovis geometry file"));
    else if (fileVersion != version)
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
    stream << magic << version;
    writeNode(stream, root);
    return data;
}
