#include "koSceneBuilder.h"

#include "koProjectFile.h"
#include "koReferenceEngine.h"
#include "koReferenceLoading.h"

koSceneBuilder::koSceneBuilder(koReferenceEngine& engine)
    : m_engine(engine)
{
}

int koSceneBuilder::materialize(const koSceneNodeDesc& desc, Built& out)
{
    if (!desc.instance.isEmpty()) {
        const auto first = out.firstInstance.constFind(desc.instance);
        if (out.instancesInProgress.contains(desc.instance)) {
            emit m_engine.warning(tr("Node \"%1\" shares its content with a node above it; it was given a copy of "
                                     "its own.").arg(desc.name.left(200)));
        } else if (first != out.firstInstance.constEnd()) {
            return materializeInstance(desc, first.value(), out);
        }
    }
    const int index = out.nodes.size();
    koNodeRecord node = recordOf(desc);
    if (desc.type == koNodeType::Reference) {
        koReferenceContent content = desc.reference;
        stampFiles(content);
        out.contents.insert(node.shareKey, content);
        if (!desc.unloadedContent.isEmpty())
            m_engine.loading().park(node.shareKey, desc.unloadedContent);
    }
    out.nodes.append(node);
    out.sizes.append(1);
    const bool tagged = !desc.instance.isEmpty() && !out.firstInstance.contains(desc.instance);
    if (tagged) {
        out.firstInstance.insert(desc.instance, index);
        out.instancesInProgress.insert(desc.instance);
    }
    for (const koSceneNodeDesc& child : desc.children) {
        const int childIndex = materialize(child, out);
        out.nodes[childIndex].parent = node.id;
        out.nodes[index].children.append(out.nodes.at(childIndex).id);
    }
    if (tagged)
        out.instancesInProgress.remove(desc.instance);
    out.sizes[index] = out.nodes.size() - index;
    return index;
}

int koSceneBuilder::materializeInstance(const koSceneNodeDesc& desc, int first, Built& out)
{
    const int index = out.nodes.size();
    const int size = out.sizes.at(first);
    QVector<koNodeRecord> copies = cloneRecords(out.nodes.mid(first, size));
    const koNodeRecord own = recordOf(desc);
    copies.first().name = own.name;
    copies.first().visible = own.visible;
    copies.first().userLocked = own.userLocked;
    copies.first().transform = own.transform;
    out.nodes.append(copies);
    out.sizes.append(out.sizes.mid(first, size));
    return index;
}

koNodeRecord koSceneBuilder::recordOf(const koSceneNodeDesc& desc)
{
    koNodeRecord node;
    node.id = m_engine.store()->allocateId();
    node.shareKey = node.id;
    node.type = desc.type;
    node.name = desc.name;
    if (node.name.size() > koProjectFile::maxTextLength) {
        node.name.truncate(koProjectFile::maxTextLength);
        emit m_engine.warning(tr("A node name longer than %1 characters was shortened: \"%2...\"")
                                  .arg(koProjectFile::maxTextLength)
                                  .arg(node.name.left(60)));
    }
    node.visible = desc.visible;
    node.userLocked = desc.locked;
    node.transform = desc.transform;
    node.vertexCount = desc.vertices;
    node.faceCount = desc.faces;
    return node;
}

void koSceneBuilder::stampFiles(koReferenceContent& content)
{
    koFileStateCache& cache = m_engine.fileCache();
    if (content.hasSmart && !content.smartPath.isEmpty()) {
        cache.refresh(content.smartPath);
        if (content.loaded || content.smartUnreadable)
            content.smartStamp = cache.lookup(content.smartPath).modified;
    }
    if (content.hasSource && !content.sourcePath.isEmpty()) {
        cache.refresh(content.sourcePath);
        if (!content.sourceImportDate.isValid())
            content.sourceImportDate = cache.lookup(content.sourcePath).modified;
    }
}

QVector<koNodeRecord> koSceneBuilder::cloneRecords(const QVector<koNodeRecord>& records) const
{
    QHash<quint64, quint64> newIds;
    for (const koNodeRecord& record : records)
        newIds.insert(record.id, m_engine.store()->allocateId());
    QVector<koNodeRecord> clones = records;
    for (koNodeRecord& clone : clones) {
        clone.id = newIds.value(clone.id);
        clone.parent = newIds.value(clone.parent, clone.parent);
        for (quint64& child : clone.children)
            child = newIds.value(child);
    }
    return clones;
}

koSceneNodeDesc koSceneBuilder::describeContent(quint64 id, bool inlineReferences) const
{
    koSceneNodeDesc content;
    const koNodeRecord* node = m_engine.store()->node(id);
    if (!node)
        return content;
    content.name = node->name;
    for (quint64 child : node->children)
        content.children.append(describeNode(*m_engine.store()->node(child), inlineReferences));
    return content;
}

koSceneNodeDesc koSceneBuilder::describeNode(const koNodeRecord& node, bool inlineReferences) const
{
    koSceneNodeDesc desc;
    desc.type = node.type;
    desc.name = node.name;
    desc.visible = node.visible;
    desc.locked = node.userLocked;
    desc.transform = node.transform;
    desc.vertices = node.vertexCount;
    desc.faces = node.faceCount;
    if (m_engine.store()->instances(node.shareKey).size() > 1)
        desc.instance = QString::number(node.shareKey);
    if (node.isReference()) {
        describeReference(node, desc, inlineReferences);
        return desc;
    }
    for (quint64 child : node.children)
        desc.children.append(describeNode(*m_engine.store()->node(child), inlineReferences));
    return desc;
}

void koSceneBuilder::describeReference(const koNodeRecord& node, koSceneNodeDesc& desc, bool inlineReferences) const
{
    desc.reference = *m_engine.store()->content(node.shareKey);
    // A smart file never written holds nothing: its content goes into this file until
    // it is, so that no save loses it.
    if (desc.reference.smartUnsaved)
        desc.reference.smartPath.clear();
    desc.inlineContent = !desc.reference.hasSmart || desc.reference.smartPath.isEmpty();
    if (inlineReferences)
        desc.type = koNodeType::Group;
    if (!desc.reference.loaded) {
        if (const QVector<koSceneNodeDesc>* parked = m_engine.loading().parkedContent(node.shareKey);
            parked && desc.inlineContent) {
            desc.children = *parked;
        }
        return;
    }
    if (desc.inlineContent || inlineReferences) {
        for (quint64 child : node.children)
            desc.children.append(describeNode(*m_engine.store()->node(child), inlineReferences));
    }
}
