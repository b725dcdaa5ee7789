#include "koSceneLoader.h"

#include "koCadImporter.h"
#include "koMeshImporter.h"
#include "koOsbFile.h"
#include "koProjectFile.h"
#include "koRegularFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("koSceneLoader", text);
}

QString canonicalOrClean(const QString& path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(path) : canonical;
}

} // namespace

koSceneLoader::koSceneLoader(int loadMode, std::function<void(const QString&)> warn)
    : m_loadMode(loadMode)
    , m_warn(std::move(warn))
{
}

bool koSceneLoader::isSmartFile(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("kpr") || suffix == QLatin1String("osb");
}

bool koSceneLoader::isGeometryFile(const QString& path)
{
    return QFileInfo(path).suffix().toLower() == QLatin1String("osb");
}

bool koSceneLoader::readSmartFile(const QString& path, koSceneNodeDesc& content, QString* error)
{
    if (isGeometryFile(path))
        return koOsbFile::read(path, content, error);
    if (!koProjectFile::read(path, content, error))
        return false;
    resolveReferences(content, path);
    return true;
}

bool koSceneLoader::importSource(const QString& path, koSceneNodeDesc& content, QString* error)
{
    if (!QFileInfo::exists(path)) {
        if (error)
            *error = tr("%1 does not exist").arg(QDir::toNativeSeparators(path));
        return false;
    }
    // The libraries open files by name: what they get is checked to be a regular file first.
    koRegularFile file(path);
    if (!file.open(maxSourceSize)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    QString reason;
    const bool read = koCadImporter::canRead(path) ? koCadImporter::read(path, content, &reason)
                                                    : koMeshImporter::read(path, content, &reason);
    if (!read && error)
        *error = tr("%1 could not be imported: %2").arg(QDir::toNativeSeparators(path), reason);
    return read;
}

void koSceneLoader::resolveReferences(koSceneNodeDesc& content, const QString& path)
{
    m_openFiles.append(canonicalOrClean(path));
    tagInstances(content, QString::number(++m_filesRead) + QLatin1Char(':'));
    resolveChildren(content);
    m_openFiles.removeLast();
}

void koSceneLoader::resolveChildren(koSceneNodeDesc& node)
{
    for (koSceneNodeDesc& child : node.children) {
        if (child.type == koNodeType::Reference)
            resolveReference(child);
        else
            resolveChildren(child);
    }
}

void koSceneLoader::tagInstances(koSceneNodeDesc& node, const QString& prefix) const
{
    for (koSceneNodeDesc& child : node.children) {
        if (!child.instance.isEmpty() && !child.instance.contains(QLatin1Char(':')))
            child.instance.prepend(prefix);
        if (child.type != koNodeType::Reference || child.inlineContent)
            tagInstances(child, prefix);
    }
}

bool koSceneLoader::shouldLoad(const koSceneNodeDesc& reference) const
{
    switch (m_loadMode) {
    case AlwaysLoad:
        return true;
    case NeverLoad:
        return false;
    case AvoidLeafReferences:
        // Whether a smart file is a leaf is only known once it is read.
        return reference.reference.hasSmart && !isGeometryFile(reference.reference.smartPath);
    default:
        return reference.reference.loaded;
    }
}

void koSceneLoader::resolveReference(koSceneNodeDesc& reference)
{
    koReferenceContent& links = reference.reference;
    const bool load = shouldLoad(reference);
    links.loaded = false;
    if (links.hasSmart && !links.smartPath.isEmpty()) {
        reference.children.clear();
        if (load)
            loadSmartContent(reference);
        return;
    }
    if (!load) {
        if (reference.inlineContent)
            reference.unloadedContent = std::move(reference.children);
        reference.children.clear();
        return;
    }
    if (reference.inlineContent) {
        links.loaded = true;
        resolveChildren(reference);
        return;
    }
    if (!links.hasSource || links.sourcePath.isEmpty()) {
        links.loaded = true;
        return;
    }
    QString error;
    koSceneNodeDesc content;
    if (!importSource(links.sourcePath, content, &error)) {
        links.sourceUnreadable = QFileInfo(links.sourcePath).isFile();
        m_warn(tr("The source of reference \"%1\" was not loaded: %2").arg(reference.name, error));
        return;
    }
    reference.children = content.children;
    links.loaded = true;
}

void koSceneLoader::loadSmartContent(koSceneNodeDesc& reference)
{
    koReferenceContent& links = reference.reference;
    const QString path = links.smartPath;
    if (m_openFiles.contains(canonicalOrClean(path))) {
        m_warn(tr("Reference \"%1\" was not loaded: %2 includes itself")
                   .arg(reference.name, QDir::toNativeSeparators(path)));
        return;
    }
    if (m_openFiles.size() >= koProjectFile::maxDepth) {
        m_warn(tr("Reference \"%1\" was not loaded: references are nested too deeply").arg(reference.name));
        return;
    }
    QString error;
    koSceneNodeDesc content;
    if (!readSmartFile(path, content, &error)) {
        links.smartUnreadable = QFileInfo(path).isFile();
        m_warn(tr("Reference \"%1\" was not loaded: %2").arg(reference.name, error));
        return;
    }
    if (m_loadMode == AvoidLeafReferences && !content.containsReference())
        return;
    reference.children = content.children;
    links.loaded = true;
}
