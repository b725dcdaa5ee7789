#include "koMeshImporter.h"

#include "koMesh.h"
#include "koProjectFile.h"

#include <QFile>
#include <QFileInfo>

#include <assimp/Importer.hpp>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <memory>

namespace {

QString nameOf(const aiString& name)
{
    return QString::fromUtf8(name.C_Str(), int(name.length)).trimmed();
}

QMatrix4x4 matrixOf(const aiMatrix4x4& m)
{
    // Both keep their numbers row by row.
    return QMatrix4x4(&m.a1);
}

std::shared_ptr<const koMesh> trianglesOf(const aiMesh& source)
{
    auto mesh = std::make_shared<koMesh>();
    mesh->positions.reserve(int(source.mNumVertices));
    for (unsigned i = 0; i < source.mNumVertices; ++i)
        mesh->positions.append(QVector3D(source.mVertices[i].x, source.mVertices[i].y, source.mVertices[i].z));
    for (unsigned f = 0; f < source.mNumFaces; ++f) {
        const aiFace& face = source.mFaces[f];
        // Polygons are drawn as fans; points and lines have no area to draw.
        for (unsigned corner = 2; corner < face.mNumIndices; ++corner)
            mesh->triangles << face.mIndices[0] << face.mIndices[corner - 1] << face.mIndices[corner];
    }
    return mesh;
}

const Assimp::Importer& library()
{
    static const Assimp::Importer importer;
    return importer;
}

QStringList suffixesOf(const char* extensions)
{
    QStringList patterns;
    for (const QString& suffix : QString::fromLatin1(extensions).split(QLatin1Char(' '), Qt::SkipEmptyParts))
        patterns.append(QStringLiteral("*.") + suffix.toLower());
    return patterns;
}

// The library's PLY reader never returns from a header cut short; such a file is
// refused before it gets there.
bool hasWholePlyHeader(const QString& path)
{
    if (QFileInfo(path).suffix().compare(QLatin1String("ply"), Qt::CaseInsensitive) != 0)
        return true;
    QFile file(path);
    const QByteArray start = file.open(QIODevice::ReadOnly) ? file.read(64 * 1024) : QByteArray();
    return start.contains("\nend_header\n") || start.contains("\nend_header\r\n");
}

} // namespace

bool koMeshImporter::canRead(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix();
    return !suffix.isEmpty() && library().IsExtensionSupported(QByteArray("." + suffix.toLower().toUtf8()).constData());
}

QStringList koMeshImporter::patterns()
{
    QStringList all;
    for (size_t i = 0; i < library().GetImporterCount(); ++i)
        all += suffixesOf(library().GetImporterInfo(i)->mFileExtensions);
    all.removeDuplicates();
    std::sort(all.begin(), all.end());
    return all;
}

QStringList koMeshImporter::fileFilters()
{
    QStringList filters;
    for (size_t i = 0; i < library().GetImporterCount(); ++i) {
        const aiImporterDesc* format = library().GetImporterInfo(i);
        filters.append(QStringLiteral("%1 (%2)")
                           .arg(QString::fromUtf8(format->mName).remove(QStringLiteral(" Importer")).trimmed(),
                                suffixesOf(format->mFileExtensions).join(QLatin1Char(' '))));
    }
    std::sort(filters.begin(), filters.end(),
              [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    return filters;
}

bool koMeshImporter::read(const QString& path, koSceneNodeDesc& content, QString* reason)
{
    const auto fail = [reason](const QString& why) {
        *reason = why;
        return false;
    };
    if (!canRead(path))
        return fail(tr("files of type \"%1\" cannot be imported").arg(QFileInfo(path).suffix()));
    if (!hasWholePlyHeader(path))
        return fail(tr("the PLY header is incomplete"));
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(QFile::encodeName(path).constData(),
                                             aiProcess_ValidateDataStructure | aiProcess_JoinIdenticalVertices);
    if (!scene || !scene->mRootNode || (scene->mFlags & AI_SCENE_FLAGS_INCOMPLETE))
        return fail(QString::fromUtf8(importer.GetErrorString()).trimmed());
    content.type = koNodeType::Group;
    content.name = QFileInfo(path).completeBaseName();
    QString why;
    if (!addNode(*scene, *scene->mRootNode, content, 0, &why))
        return fail(why);
    if (content.children.isEmpty())
        return fail(tr("the file holds no geometry"));
    return true;
}

bool koMeshImporter::addNode(const aiScene& scene, const aiNode& node, koSceneNodeDesc& parent, int depth,
                             QString* error)
{
    if (depth > koProjectFile::maxDepth) {
        *error = tr("nodes are nested more than %1 levels deep").arg(koProjectFile::maxDepth);
        return false;
    }
    // The file's root stands for the file itself: its content goes straight into the reference.
    const bool root = depth == 0;
    koSceneNodeDesc group;
    group.type = koNodeType::Group;
    group.name = nameOf(node.mName);
    group.transform = matrixOf(node.mTransformation);
    koSceneNodeDesc& target = root && group.transform.isIdentity() ? parent : group;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
        if (node.mMeshes[i] < scene.mNumMeshes)
            target.children.append(geometryOf(scene, node.mMeshes[i], group.name.isEmpty() ? parent.name : group.name));
    }
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
        if (!addNode(scene, *node.mChildren[i], target, depth + 1, error))
            return false;
    }
    if (&target != &group || group.children.isEmpty())
        return true;
    if (group.name.isEmpty())
        group.name = parent.name;
    // A node that holds one mesh and nothing else is that mesh, placed where the node is.
    if (group.children.size() == 1 && group.children.first().type == koNodeType::Geometry
        && group.children.first().children.isEmpty()) {
        koSceneNodeDesc geometry = std::move(group.children.first());
        geometry.name = group.name;
        geometry.transform = group.transform;
        parent.children.append(std::move(geometry));
        return true;
    }
    parent.children.append(std::move(group));
    return true;
}

koSceneNodeDesc koMeshImporter::geometryOf(const aiScene& scene, unsigned meshIndex, const QString& fallbackName)
{
    const aiMesh& mesh = *scene.mMeshes[meshIndex];
    koSceneNodeDesc geometry;
    geometry.type = koNodeType::Geometry;
    geometry.name = nameOf(mesh.mName);
    if (geometry.name.isEmpty())
        geometry.name = fallbackName;
    geometry.vertices = mesh.mNumVertices;
    geometry.faces = mesh.mNumFaces;
    geometry.mesh = trianglesOf(mesh);
    return geometry;
}
