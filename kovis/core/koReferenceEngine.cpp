#include "koReferenceEngine.h"

#include "koFileMonitor.h"
#include "koOsbFile.h"
#include "koProjectFile.h"
#include "koSceneLoader.h"

#include <kovis/koUndoStack.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>

using koReferenceTypes::FileState;

namespace {

QString cleanPath(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QDir::fromNativeSeparators(QFileInfo(path).absoluteFilePath()));
}

QString fileNameFor(const QString& nodeName)
{
    static const QRegularExpression forbidden(QStringLiteral("[/\\\\:*?\"<>|\\x00-\\x1f]"));
    QString name = nodeName.trimmed();
    name.replace(forbidden, QStringLiteral("_"));
    return name.isEmpty() ? QStringLiteral("Reference") : name;
}

} // namespace

bool& koReferenceEngine::hasLink(koReferenceContent& content, Link link)
{
    return link == Link::Smart ? content.hasSmart : content.hasSource;
}

bool koReferenceEngine::hasLink(const koReferenceContent& content, Link link)
{
    return link == Link::Smart ? content.hasSmart : content.hasSource;
}

QString& koReferenceEngine::linkPath(koReferenceContent& content, Link link)
{
    return link == Link::Smart ? content.smartPath : content.sourcePath;
}

const QString& koReferenceEngine::linkPath(const koReferenceContent& content, Link link)
{
    return link == Link::Smart ? content.smartPath : content.sourcePath;
}

struct koReferenceEngine::Materialized
{
    QVector<koNodeRecord> nodes;
    QVector<int> sizes;
    QHash<quint64, koReferenceContent> contents;
    QHash<QString, int> firstInstance;
};

koReferenceEngine::koReferenceEngine(QObject* parent)
    : QObject(parent)
    , m_undoStack(new koUndoStack)
    , m_store(new koSceneStore)
    , m_monitor(new koFileMonitor(this))
{
    connectStore();
    newProject();
}

koReferenceEngine::~koReferenceEngine()
{
    m_monitor.reset();
    m_undoStack->clear();
}

void koReferenceEngine::connectStore()
{
    const auto forgetLinkedFiles = [this] { m_linkedFilesKnown = false; };
    connect(m_store.data(), &koSceneStore::contentChanged, this, forgetLinkedFiles);
    connect(m_store.data(), &koSceneStore::subtreeInserted, this, forgetLinkedFiles);
    connect(m_store.data(), &koSceneStore::subtreeRemoved, this, forgetLinkedFiles);
    connect(m_store.data(), &koSceneStore::sceneReset, this, forgetLinkedFiles);
    connect(m_store.data(), &koSceneStore::contentChanged, this, &koReferenceEngine::announceShared);
    connect(m_store.data(), &koSceneStore::changeStateChanged, this, &koReferenceEngine::announceShared);
    connect(m_store.data(), &koSceneStore::subtreeAboutToBeRemoved, this,
            [this](quint64, quint64 id) { m_removing = m_store->referencesBelow(id); });
    connect(m_store.data(), &koSceneStore::subtreeRemoved, this, [this] { announce(std::exchange(m_removing, {})); });
    connect(m_store.data(), &koSceneStore::subtreeInserted, this,
            [this](quint64, quint64 id) { announce(m_store->referencesBelow(id)); });
    connect(m_store.data(), &koSceneStore::nodeChanged, this, [this](quint64 id, const QByteArray& property) {
        if (property != "name")
            announce(m_store->referencesBelow(id));
    });
}

void koReferenceEngine::announce(const QVector<quint64>& ids)
{
    if (!m_loading && !ids.isEmpty())
        emit referencesChanged(ids);
}

void koReferenceEngine::announceShared(quint64 shareKey)
{
    announce(m_store->instances(shareKey));
}

void koReferenceEngine::setMonitoringEnabled(bool enabled)
{
    if (m_settings.monitoringEnabled == enabled)
        return;
    m_settings.monitoringEnabled = enabled;
    m_monitor->setEnabled(enabled);
    emit monitoringChanged(enabled);
}

void koReferenceEngine::setMonitoringInterval(int milliseconds)
{
    m_settings.monitoringInterval = milliseconds;
    m_monitor->setInterval(milliseconds);
}

// ---- project ------------------------------------------------------------------------

void koReferenceEngine::newProject()
{
    emit projectLoad(QString());
    koSceneNodeDesc root;
    root.type = koNodeType::Reference;
    root.name = tr("Untitled");
    root.reference.hasSmart = true;
    root.reference.smartUnsaved = true;
    m_undoStack->clear();
    m_cache.clear();
    Materialized out;
    materialize(root, out);
    m_store->reset(out.nodes, out.contents);
    emit projectLoadFinished(QString(), true);
}

bool koReferenceEngine::loadProject(const QString& path)
{
    const QString projectFile = cleanPath(path);
    emit projectLoad(projectFile);
    QString error;
    koSceneNodeDesc content;
    koSceneLoader loader(m_settings.loadMode, [this](const QString& message) { emit warning(message); });
    if (QFileInfo(projectFile).suffix().toLower() != QLatin1String("kpr")) {
        error = tr("%1 is not a Kovis project file").arg(QDir::toNativeSeparators(projectFile));
    } else if (loader.readSmartFile(projectFile, content, &error)) {
        koSceneNodeDesc root;
        root.type = koNodeType::Reference;
        root.name = content.name.isEmpty() ? QFileInfo(projectFile).completeBaseName() : content.name;
        root.reference.hasSmart = true;
        root.reference.smartPath = projectFile;
        root.children = std::move(content.children);
        m_loading = true;
        m_undoStack->clear();
        m_cache.clear();
        Materialized out;
        materialize(root, out);
        m_store->reset(out.nodes, out.contents);
        m_loading = false;
        emit projectLoadFinished(projectFile, true);
        return true;
    }
    emit warning(error);
    emit projectLoadFinished(projectFile, false);
    return false;
}

bool koReferenceEngine::saveProject(const QString& path)
{
    const quint64 root = m_store->rootId();
    if (path.isEmpty() || cleanPath(path) == projectPath())
        return save(root);
    return saveAs(root, path, true);
}

QString koReferenceEngine::projectPath() const
{
    const koReferenceContent* root = contentOf(m_store->rootId());
    return root ? root->smartPath : QString();
}

// ---- queries --------------------------------------------------------------------------

FileState koReferenceEngine::smartFileState(quint64 id)
{
    const koReferenceContent* content = contentOf(id);
    if (!content || !content->hasSmart)
        return koReferenceTypes::NoFile;
    if (content->smartUnsaved)
        return koReferenceTypes::Unsaved;
    if (content->smartPath.isEmpty())
        return koReferenceTypes::Missing;
    const koFileSnapshot& file = m_cache.lookup(content->smartPath);
    if (!file.exists || (content->smartUnreadable && file.modified == content->smartStamp))
        return koReferenceTypes::Missing;
    if (content->loaded && content->smartStamp.isValid() && file.modified > content->smartStamp)
        return koReferenceTypes::OutOfDate;
    return koReferenceTypes::UpToDate;
}

FileState koReferenceEngine::sourceFileState(quint64 id)
{
    const koReferenceContent* content = contentOf(id);
    if (!content || !content->hasSource)
        return koReferenceTypes::NoFile;
    if (content->sourcePath.isEmpty())
        return koReferenceTypes::Missing;
    const koFileSnapshot& file = m_cache.lookup(content->sourcePath);
    if (!file.exists)
        return koReferenceTypes::Missing;
    if (content->sourceImportDate.isValid() && file.modified > content->sourceImportDate)
        return koReferenceTypes::OutOfDate;
    return koReferenceTypes::UpToDate;
}

const koFileSnapshot* koReferenceEngine::smartSnapshot(quint64 id)
{
    return snapshotOf(id, Link::Smart);
}

const koFileSnapshot* koReferenceEngine::sourceSnapshot(quint64 id)
{
    return snapshotOf(id, Link::Source);
}

const koFileSnapshot* koReferenceEngine::snapshotOf(quint64 id, Link link)
{
    const koReferenceContent* content = contentOf(id);
    if (!content || !hasLink(*content, link) || linkPath(*content, link).isEmpty())
        return nullptr;
    return &m_cache.lookup(linkPath(*content, link));
}

QVector<quint64> koReferenceEngine::sceneReferences() const
{
    return m_store->referencesBelow(m_store->rootId());
}

QStringList koReferenceEngine::fileExtensions() const
{
    QStringList extensions;
    QSet<QString> seen;
    auto add = [&](const QString& path) {
        const QString suffix = QFileInfo(path).suffix();
        if (!suffix.isEmpty() && !seen.contains(suffix)) {
            seen.insert(suffix);
            extensions.append(suffix);
        }
    };
    for (quint64 id : sceneReferences()) {
        const koReferenceContent* content = contentOf(id);
        if (content->hasSmart)
            add(content->smartPath);
        if (content->hasSource)
            add(content->sourcePath);
    }
    return extensions;
}

QString koReferenceEngine::proposeSmartPath(quint64 id, koReferenceTypes::ExportLocation location,
                                            const QString& customFolder) const
{
    const koNodeRecord* node = m_store->node(id);
    const koReferenceContent* content = contentOf(id);
    if (!node)
        return QString();
    if (location == koReferenceTypes::NextToSourceFile && content && content->hasSource
        && !content->sourcePath.isEmpty()) {
        const QFileInfo source(content->sourcePath);
        return source.path() + QLatin1Char('/') + source.completeBaseName() + QStringLiteral(".kpr");
    }
    QString folder = customFolder;
    if (folder.isEmpty())
        folder = m_settings.storeLocation;
    if (folder.isEmpty() && !projectPath().isEmpty())
        folder = QFileInfo(projectPath()).path();
    if (folder.isEmpty())
        folder = QDir::homePath();
    return QDir::cleanPath(QDir(folder).absoluteFilePath(fileNameFor(node->name) + QStringLiteral(".kpr")));
}

// ---- reference operations ---------------------------------------------------------

koReferenceContent koReferenceEngine::linksOf(quint64 id) const
{
    const koReferenceContent* content = contentOf(id);
    return content ? *content : koReferenceContent();
}

quint64 koReferenceEngine::shareKeyOf(quint64 id) const
{
    const koNodeRecord* node = m_store->node(id);
    return node ? node->shareKey : 0;
}

quint64 koReferenceEngine::ownerKey(quint64 id) const
{
    return shareKeyOf(m_store->owningReference(id));
}

void koReferenceEngine::updateLinks(quint64 id, const koReferenceContent& content, bool markOwner, bool undoable)
{
    m_store->setContent(shareKeyOf(id), content, markOwner ? ownerKey(id) : 0, undoable);
}

void koReferenceEngine::stampSmartFile(koReferenceContent& content)
{
    m_cache.refresh(content.smartPath);
    content.smartStamp = m_cache.lookup(content.smartPath).modified;
}

void koReferenceEngine::stampFiles(koReferenceContent& content)
{
    if (content.hasSmart && !content.smartPath.isEmpty()) {
        if (content.loaded || content.smartUnreadable)
            stampSmartFile(content);
        else
            m_cache.refresh(content.smartPath);
    }
    if (content.hasSource && !content.sourcePath.isEmpty()) {
        m_cache.refresh(content.sourcePath);
        if (!content.sourceImportDate.isValid())
            content.sourceImportDate = m_cache.lookup(content.sourcePath).modified;
    }
}

void koReferenceEngine::loadReference(quint64 id)
{
    const koReferenceContent* content = contentOf(id);
    if (!content)
        return;
    if (content->hasSmart && !content->smartPath.isEmpty())
        loadSmart(id);
    else if (content->hasSource && !content->sourcePath.isEmpty())
        importSource(id);
}

bool koReferenceEngine::loadSmart(quint64 id)
{
    koReferenceContent links = linksOf(id);
    if (!links.hasSmart || links.smartPath.isEmpty())
        return false;
    QString error;
    koSceneNodeDesc content;
    koSceneLoader loader(m_settings.loadMode, [this](const QString& message) { emit warning(message); });
    const bool ok = loader.readSmartFile(links.smartPath, content, &error);
    if (!ok) {
        emit warning(tr("Reference \"%1\" was not loaded: %2").arg(m_store->node(id)->name, error));
        clearContent(id);
        links.loaded = false;
        links.smartUnreadable = QFileInfo(links.smartPath).isFile();
        stampSmartFile(links);
        updateLinks(id, links, false, false);
        return false;
    }
    replaceContent(id, content.children);
    links.loaded = true;
    links.smartUnsaved = false;
    links.smartUnreadable = false;
    stampSmartFile(links);
    updateLinks(id, links, false, false);
    m_store->markSaved(shareKeyOf(id));
    return true;
}

bool koReferenceEngine::importSource(quint64 id)
{
    koReferenceContent links = linksOf(id);
    if (!links.hasSource || links.sourcePath.isEmpty())
        return false;
    QString error;
    koSceneNodeDesc content;
    if (!koSceneLoader::importSource(links.sourcePath, content, &error)) {
        emit warning(tr("The source of reference \"%1\" was not imported: %2").arg(m_store->node(id)->name, error));
        m_cache.refresh(links.sourcePath);
        announceShared(shareKeyOf(id));
        return false;
    }
    replaceContent(id, content.children);
    m_cache.refresh(links.sourcePath);
    links.loaded = true;
    links.sourceImportDate = qMax(QDateTime::currentDateTimeUtc(), m_cache.lookup(links.sourcePath).modified);
    updateLinks(id, links, false);
    // Content converted from the source differs from the smart file until it is saved.
    if (links.hasSmart)
        m_store->markChanged(shareKeyOf(id));
    return true;
}

void koReferenceEngine::unload(quint64 id)
{
    if (id == m_store->rootId() || !contentOf(id))
        return;
    koReferenceContent links = linksOf(id);
    clearContent(id);
    links.loaded = false;
    updateLinks(id, links, false, false);
    m_store->markSaved(shareKeyOf(id));
}

bool koReferenceEngine::save(quint64 id, bool withSubReferences)
{
    const koReferenceContent links = linksOf(id);
    if (!links.hasSmart || links.smartPath.isEmpty() || !links.loaded)
        return false;
    bool ok = true;
    if (withSubReferences) {
        for (quint64 sub : m_store->referencesBelow(id)) {
            const koReferenceContent* content = contentOf(sub);
            if (sub != id && content->hasSmart && !content->smartPath.isEmpty() && content->loaded
                && (content->smartUnsaved || m_store->isChanged(shareKeyOf(sub)))) {
                ok = save(sub, false) && ok;
            }
        }
    }
    const bool needed = links.smartUnsaved || m_store->isChanged(shareKeyOf(id))
        || smartFileState(id) == koReferenceTypes::Missing;
    if (needed) {
        if (!writeFile(id, links.smartPath))
            return false;
        finishSave(id);
    }
    return ok;
}

bool koReferenceEngine::saveAs(quint64 id, const QString& path, bool withSubReferences)
{
    const QString target = cleanPath(path);
    koReferenceContent links = linksOf(id);
    if (!contentOf(id) || target.isEmpty() || !links.loaded)
        return false;
    bool ok = true;
    if (withSubReferences) {
        for (quint64 sub : m_store->referencesBelow(id)) {
            if (sub != id && m_store->isChanged(shareKeyOf(sub)))
                ok = save(sub, false) && ok;
        }
    }
    if (!writeFile(id, target))
        return false;
    links.hasSmart = true;
    links.smartPath = target;
    updateLinks(id, links, id != m_store->rootId());
    finishSave(id);
    return ok;
}

bool koReferenceEngine::writeFile(quint64 id, const QString& path)
{
    const bool geometry = koSceneLoader::isGeometryFile(path);
    const koSceneNodeDesc content = describeContent(id, geometry);
    const QByteArray data = geometry ? koOsbFile::serialize(content)
                                     : koProjectFile::serialize(content, QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit()) {
        emit warning(tr("%1 could not be written: %2").arg(QDir::toNativeSeparators(path), file.errorString()));
        return false;
    }
    return true;
}

void koReferenceEngine::finishSave(quint64 id)
{
    koReferenceContent links = linksOf(id);
    links.smartUnsaved = false;
    links.smartUnreadable = false;
    stampSmartFile(links);
    updateLinks(id, links, false, false);
    m_store->markSaved(shareKeyOf(id));
    announceShared(shareKeyOf(id));
}

void koReferenceEngine::createSmartLink(quint64 id)
{
    koReferenceContent links = linksOf(id);
    if (!contentOf(id) || links.hasSmart)
        return;
    links.hasSmart = true;
    links.smartUnsaved = true;
    links.smartPath.clear();
    updateLinks(id, links, true);
}

void koReferenceEngine::createSourceLink(quint64 id)
{
    koReferenceContent links = linksOf(id);
    if (!contentOf(id) || links.hasSource)
        return;
    links.hasSource = true;
    updateLinks(id, links, true);
}

void koReferenceEngine::removeSmartLink(quint64 id)
{
    koReferenceContent links = linksOf(id);
    if (!links.hasSmart || id == m_store->rootId())
        return;
    links.hasSmart = false;
    links.smartPath.clear();
    links.smartUnsaved = false;
    links.smartUnreadable = false;
    links.smartStamp = QDateTime();
    updateLinks(id, links, true);
}

void koReferenceEngine::removeSourceLink(quint64 id)
{
    koReferenceContent links = linksOf(id);
    if (!links.hasSource)
        return;
    links.hasSource = false;
    links.sourcePath.clear();
    links.sourceImportDate = QDateTime();
    updateLinks(id, links, true);
}

void koReferenceEngine::setSmartPath(quint64 id, const QString& path)
{
    setLinkPath(id, path, Link::Smart);
}

void koReferenceEngine::setSourcePath(quint64 id, const QString& path)
{
    setLinkPath(id, path, Link::Source);
}

void koReferenceEngine::setLinkPath(quint64 id, const QString& path, Link link)
{
    koReferenceContent links = linksOf(id);
    const QString target = cleanPath(path);
    if (!contentOf(id) || (hasLink(links, link) && linkPath(links, link) == target))
        return;
    hasLink(links, link) = true;
    linkPath(links, link) = target;
    if (!target.isEmpty())
        m_cache.refresh(target);
    if (link == Link::Smart) {
        // The file now linked is taken as the one the content came from.
        links.smartUnreadable = false;
        if (!target.isEmpty())
            links.smartStamp = m_cache.lookup(target).modified;
    }
    updateLinks(id, links, true);
}

// ---- scene operations -------------------------------------------------------------

quint64 koReferenceEngine::createNode(quint64 parent, koNodeType type, const QString& name)
{
    const koNodeRecord* parentNode = m_store->node(parent);
    if (!parentNode)
        parentNode = m_store->node(m_store->rootId());
    if (parentNode && parentNode->type == koNodeType::Geometry)
        parentNode = m_store->node(parentNode->parent);
    if (!parentNode)
        return 0;
    koNodeRecord node;
    node.id = m_store->allocateId();
    node.shareKey = node.id;
    node.type = type;
    node.name = name;
    if (type == koNodeType::Reference)
        m_store->setContent(node.shareKey, koReferenceContent(), 0);
    m_store->insertSubtree(parentNode->id, parentNode->children.size(), {node}, koSceneStore::Mark::Owner);
    return node.id;
}

quint64 koReferenceEngine::createReference(quint64 parent)
{
    const quint64 id = createNode(parent, koNodeType::Reference, tr("Reference"));
    if (id)
        emit referenceCreated(id);
    return id;
}

quint64 koReferenceEngine::replaceNode(quint64 id, koNodeRecord replacement)
{
    const koNodeRecord* node = m_store->node(id);
    const koNodeRecord* parent = node ? m_store->node(node->parent) : nullptr;
    if (!parent)
        return 0;
    const quint64 parentId = parent->id;
    const int index = parent->children.indexOf(id);
    QVector<koNodeRecord> nodes = m_store->subtree(id);
    if (replacement.id == 0)
        replacement.id = m_store->allocateId();
    replacement.shareKey = replacement.id;
    replacement.name = node->name;
    replacement.visible = node->visible;
    replacement.userLocked = node->userLocked;
    replacement.transform = node->transform;
    replacement.children = node->children;
    nodes.first() = replacement;
    for (koNodeRecord& child : nodes) {
        if (replacement.children.contains(child.id))
            child.parent = replacement.id;
    }
    m_store->removeSubtree(id, koSceneStore::Mark::Owner);
    m_store->insertSubtree(parentId, index, nodes, koSceneStore::Mark::Owner);
    return replacement.id;
}

quint64 koReferenceEngine::removeReference(quint64 id)
{
    const koNodeRecord* node = m_store->node(id);
    if (!node || !node->isReference() || id == m_store->rootId())
        return 0;
    koNodeRecord group;
    group.type = koNodeType::Group;
    return replaceNode(id, group);
}

quint64 koReferenceEngine::convertToSmart(quint64 id)
{
    const koNodeRecord* node = m_store->node(id);
    if (!node)
        return 0;
    if (node->isReference()) {
        createSmartLink(id);
        return id;
    }
    if (node->type != koNodeType::Group || id == m_store->rootId())
        return 0;
    koNodeRecord reference;
    reference.type = koNodeType::Reference;
    reference.id = m_store->allocateId();
    koReferenceContent links;
    links.hasSmart = true;
    links.smartUnsaved = true;
    m_store->setContent(reference.id, links, 0);
    return replaceNode(id, reference);
}

QVector<koNodeRecord> koReferenceEngine::cloneRecords(const QVector<koNodeRecord>& records) const
{
    QHash<quint64, quint64> newIds;
    for (const koNodeRecord& record : records)
        newIds.insert(record.id, m_store->allocateId());
    QVector<koNodeRecord> clones = records;
    for (koNodeRecord& clone : clones) {
        clone.id = newIds.value(clone.id);
        clone.parent = newIds.value(clone.parent, clone.parent);
        for (quint64& child : clone.children)
            child = newIds.value(child);
    }
    return clones;
}

QVector<quint64> koReferenceEngine::cloneNodes(const QVector<quint64>& ids)
{
    QVector<quint64> clones;
    for (quint64 id : ids) {
        const koNodeRecord* node = m_store->node(id);
        const koNodeRecord* parent = node ? m_store->node(node->parent) : nullptr;
        if (!parent)
            continue;
        const QVector<koNodeRecord> copies = cloneRecords(m_store->subtree(id));
        m_store->insertSubtree(parent->id, parent->children.indexOf(id) + 1, copies, koSceneStore::Mark::Owner);
        clones.append(copies.first().id);
    }
    return clones;
}

void koReferenceEngine::moveNode(quint64 id, quint64 newParent)
{
    const koNodeRecord* node = m_store->node(id);
    const koNodeRecord* target = m_store->node(newParent);
    if (!node || !target || id == m_store->rootId() || id == newParent || m_store->isAncestor(id, newParent)
        || target->type == koNodeType::Geometry) {
        return;
    }
    QVector<koNodeRecord> nodes = m_store->subtree(id);
    m_store->removeSubtree(id, koSceneStore::Mark::Owner);
    nodes.first().parent = newParent;
    m_store->insertSubtree(newParent, m_store->node(newParent)->children.size(), nodes, koSceneStore::Mark::Owner);
}

// ---- content ----------------------------------------------------------------------

int koReferenceEngine::materialize(const koSceneNodeDesc& desc, Materialized& out)
{
    const int index = out.nodes.size();
    if (!desc.instance.isEmpty()) {
        const auto first = out.firstInstance.constFind(desc.instance);
        if (first != out.firstInstance.constEnd()) {
            const int size = out.sizes.at(first.value());
            QVector<koNodeRecord> copies = cloneRecords(out.nodes.mid(first.value(), size));
            copies.first().name = desc.name;
            copies.first().visible = desc.visible;
            copies.first().userLocked = desc.locked;
            copies.first().transform = desc.transform;
            out.nodes.append(copies);
            out.sizes.append(out.sizes.mid(first.value(), size));
            return index;
        }
        out.firstInstance.insert(desc.instance, index);
    }
    koNodeRecord node;
    node.id = m_store->allocateId();
    node.shareKey = node.id;
    node.type = desc.type;
    node.name = desc.name;
    node.visible = desc.visible;
    node.userLocked = desc.locked;
    node.transform = desc.transform;
    node.vertexCount = desc.vertices;
    node.faceCount = desc.faces;
    if (desc.type == koNodeType::Reference) {
        koReferenceContent content = desc.reference;
        stampFiles(content);
        out.contents.insert(node.shareKey, content);
    }
    out.nodes.append(node);
    out.sizes.append(1);
    for (const koSceneNodeDesc& child : desc.children) {
        const int childIndex = materialize(child, out);
        out.nodes[childIndex].parent = node.id;
        out.nodes[index].children.append(out.nodes.at(childIndex).id);
    }
    out.sizes[index] = out.nodes.size() - index;
    return index;
}

void koReferenceEngine::clearContent(quint64 id)
{
    const koNodeRecord* node = m_store->node(id);
    if (!node)
        return;
    for (quint64 instance : m_store->instances(node->shareKey)) {
        const QVector<quint64> children = m_store->node(instance)->children;
        for (quint64 child : children)
            m_store->removeSubtree(child, koSceneStore::Mark::None);
    }
}

void koReferenceEngine::replaceContent(quint64 id, const QVector<koSceneNodeDesc>& children)
{
    const koNodeRecord* node = m_store->node(id);
    if (!node)
        return;
    clearContent(id);
    Materialized out;
    QVector<int> roots;
    for (const koSceneNodeDesc& child : children)
        roots.append(materialize(child, out));
    for (auto it = out.contents.cbegin(); it != out.contents.cend(); ++it)
        m_store->setContent(it.key(), it.value(), 0);
    bool first = true;
    for (quint64 instance : m_store->instances(node->shareKey)) {
        for (int root : roots) {
            QVector<koNodeRecord> nodes = out.nodes.mid(root, out.sizes.at(root));
            if (!first)
                nodes = cloneRecords(nodes);
            const int index = m_store->node(instance)->children.size();
            m_store->insertSubtree(instance, index, nodes, koSceneStore::Mark::None);
        }
        first = false;
    }
}

koSceneNodeDesc koReferenceEngine::describeContent(quint64 id, bool inlineReferences) const
{
    koSceneNodeDesc content;
    const koNodeRecord* node = m_store->node(id);
    if (!node)
        return content;
    content.name = node->name;
    for (quint64 child : node->children)
        content.children.append(describeNode(*m_store->node(child), inlineReferences));
    return content;
}

koSceneNodeDesc koReferenceEngine::describeNode(const koNodeRecord& node, bool inlineReferences) const
{
    koSceneNodeDesc desc;
    desc.type = node.type;
    desc.name = node.name;
    desc.visible = node.visible;
    desc.locked = node.userLocked;
    desc.transform = node.transform;
    desc.vertices = node.vertexCount;
    desc.faces = node.faceCount;
    if (m_store->instances(node.shareKey).size() > 1)
        desc.instance = QString::number(node.shareKey);
    bool describeChildren = true;
    if (node.isReference()) {
        desc.reference = *m_store->content(node.shareKey);
        desc.inlineContent = !desc.reference.hasSmart || desc.reference.smartPath.isEmpty();
        describeChildren = desc.reference.loaded && (desc.inlineContent || inlineReferences);
        if (inlineReferences)
            desc.type = koNodeType::Group;
    }
    if (describeChildren) {
        for (quint64 child : node.children)
            desc.children.append(describeNode(*m_store->node(child), inlineReferences));
    }
    return desc;
}

// ---- monitoring ---------------------------------------------------------------------

QHash<QString, QVector<quint64>> koReferenceEngine::linkedFiles() const
{
    if (!m_linkedFilesKnown) {
        m_linkedFiles = collectLinkedFiles();
        m_linkedFilesKnown = true;
    }
    return m_linkedFiles;
}

QHash<QString, QVector<quint64>> koReferenceEngine::collectLinkedFiles() const
{
    QHash<QString, QVector<quint64>> files;
    QSet<quint64> seen;
    for (quint64 id : sceneReferences()) {
        const quint64 shareKey = shareKeyOf(id);
        if (seen.contains(shareKey))
            continue;
        seen.insert(shareKey);
        const koReferenceContent* content = contentOf(id);
        if (content->hasSmart && !content->smartPath.isEmpty())
            files[content->smartPath].append(shareKey);
        if (content->hasSource && !content->sourcePath.isEmpty())
            files[content->sourcePath].append(shareKey);
    }
    return files;
}

void koReferenceEngine::applySnapshots(const QHash<QString, QVector<quint64>>& files, const QStringList& paths,
                                       const QVector<koFileSnapshot>& snapshots)
{
    QSet<quint64> changedKeys;
    for (int i = 0; i < paths.size() && i < snapshots.size(); ++i) {
        if (m_cache.update(paths.at(i), snapshots.at(i))) {
            for (quint64 shareKey : files.value(paths.at(i)))
                changedKeys.insert(shareKey);
        }
    }
    QVector<quint64> changed;
    for (quint64 shareKey : changedKeys)
        changed += m_store->instances(shareKey);
    if (changed.isEmpty())
        return;
    if (m_settings.notificationMode == 1)
        emit notice(tr("%n reference(s) changed on disk", nullptr, changed.size()));
    announce(changed);
}

void koReferenceEngine::checkFiles()
{
    const QHash<QString, QVector<quint64>> files = linkedFiles();
    const QStringList paths = files.keys();
    QVector<koFileSnapshot> snapshots;
    snapshots.reserve(paths.size());
    for (const QString& path : paths)
        snapshots.append(koFileStateCache::read(path));
    applySnapshots(files, paths, snapshots);
}
