#include "koObjReader.h"

#include "koRegularFile.h"

#include <QFileInfo>

namespace {

struct ObjStructure
{
    koSceneNodeDesc& content;
    QString fileName;
    int object = -1;
    koSceneNodeDesc* geometry = nullptr;
    quint32 pendingVertices = 0;

    koSceneNodeDesc& container() { return object < 0 ? content : content.children[object]; }

    void startObject(const QString& name)
    {
        koSceneNodeDesc group;
        group.type = koNodeType::Group;
        group.name = name;
        content.children.append(group);
        object = content.children.size() - 1;
        geometry = nullptr;
    }

    void startGeometry(const QString& name)
    {
        koSceneNodeDesc node;
        node.type = koNodeType::Geometry;
        node.name = name;
        node.vertices = pendingVertices;
        pendingVertices = 0;
        container().children.append(node);
        geometry = &container().children.last();
    }

    void addVertex()
    {
        if (geometry)
            ++geometry->vertices;
        else
            ++pendingVertices;
    }

    void addFace()
    {
        if (!geometry)
            startGeometry(object < 0 ? fileName : container().name);
        ++geometry->faces;
    }

    void finish()
    {
        if (content.children.isEmpty() || pendingVertices > 0)
            startGeometry(fileName);
    }
};

QString argumentOf(const QByteArray& line, int keywordLength)
{
    return QString::fromUtf8(line.mid(keywordLength).trimmed());
}

} // namespace

bool koObjReader::read(const QString& path, koSceneNodeDesc& content, QString* error)
{
    koRegularFile file(path);
    if (!file.open(maxFileSize)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    ObjStructure structure{content, QFileInfo(path).completeBaseName()};
    QIODevice& device = file.device();
    while (!device.atEnd()) {
        const QByteArray line = device.readLine(64 * 1024).trimmed();
        if (line.startsWith("v ") || line.startsWith("v\t"))
            structure.addVertex();
        else if (line.startsWith("f ") || line.startsWith("f\t"))
            structure.addFace();
        else if (line.startsWith("o ") || line.startsWith("o\t"))
            structure.startObject(argumentOf(line, 2));
        else if (line.startsWith("g ") || line.startsWith("g\t"))
            structure.startGeometry(argumentOf(line, 2));
    }
    structure.finish();
    return true;
}
