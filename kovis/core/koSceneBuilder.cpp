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
    readLinkedFiles(desc);
    return build(desc, out);
}

void koSceneBuilder::readLinkedFiles(const koSceneNodeDesc& desc)
{
    QSet<QString> paths;
    const std::function<void(const koSceneNodeDesc&)> collect = [&](const koSceneNodeDesc& node) {
        if (node.type == koNodeType::Reference)
            node.reference.forEachLinkedPath([&paths](const QString& path) { paths.insert(path); });
        for (const koSceneNodeDesc& child : node.children)
            collect(child);
    };
    collect(desc);
    m_engine.fileCache().refreshAll(paths.values());
}

int koSceneBuilder::build(const koSceneNodeDesc& desc, Built& out)
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
        const int childIndex = build(child, out);
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
    node.mesh = desc.mesh;
    return node;
}

void koSceneBuilder::stampFiles(koReferenceContent& content)
{
    koFileStateCache& cache = m_engine.fileCache();
    if (content.hasSmart && !content.smartPath.isEmpty() && (content.loaded || content.smartUnreadable))
        content.smartStamp = cache.lookup(content.smartPath).modified;
    if (content.hasSource && !content.sourcePath.isEmpty()) {
        if (!content.sourceImportDate.isValid())
            content.sourceImportDate = cache.lookup(content.sourcePath).modified;
        if (content.sourceUnreadable)
            content.sourceStamp = cache.lookup(content.sourcePath).modified;
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
    Describing describing;
    describing.inlineReferences = inlineReferences;
    describeChildren(*node, content, describing);
    tagInstances(content);
    return content;
}

void koSceneBuilder::describeChildren(const koNodeRecord& node, koSceneNodeDesc& desc, Describing& describing) const
{
    for (quint64 child : node.children)
        desc.children.append(describeNode(*m_engine.store()->node(child), describing));
}

namespace {

// Equal as a file would hold them, apart from the instance's own name, flags and place.
bool sameContent(const koSceneNodeDesc& a, const koSceneNodeDesc& b)
{
    if (a.type != b.type || a.vertices != b.vertices || a.faces != b.faces || a.reference != b.reference
        || a.inlineContent != b.inlineContent || a.children.size() != b.children.size()) {
        return false;
    }
    for (int i = 0; i < a.children.size(); ++i) {
        const koSceneNodeDesc& left = a.children.at(i);
        const koSceneNodeDesc& right = b.children.at(i);
        if (left.name != right.name || left.visible != right.visible || left.locked != right.locked
            || left.transform != right.transform || !sameContent(left, right)) {
            return false;
        }
    }
    return true;
}

void collectTagged(koSceneNodeDesc& node, QVector<koSceneNodeDesc*>& tagged)
{
    if (!node.instance.isEmpty())
        tagged.append(&node);
    for (koSceneNodeDesc& child : node.children)
        collectTagged(child, tagged);
}

} // namespace

void koSceneBuilder::tagInstances(koSceneNodeDesc& content)
{
    // A file shares content only between nodes it holds that really are alike: an
    // instance edited apart from the others, or whose partners live in another file,
    // is written as content of its own. Tags are numbered as met, so that the same
    // scene writes the same bytes.
    QVector<koSceneNodeDesc*> tagged;
    collectTagged(content, tagged);
    QHash<QString, koSceneNodeDesc*> first;
    QHash<QString, int> alike;
    for (koSceneNodeDesc* node : qAsConst(tagged)) {
        koSceneNodeDesc*& original = first[node->instance];
        if (!original)
            original = node;
        else if (sameContent(*original, *node))
            ++alike[node->instance];
    }
    QHash<QString, QString> numbers;
    for (koSceneNodeDesc* node : qAsConst(tagged)) {
        const koSceneNodeDesc* original = first.value(node->instance);
        if (alike.value(node->instance) == 0 || (node != original && !sameContent(*original, *node))) {
            node->instance.clear();
            continue;
        }
        auto number = numbers.find(node->instance);
        if (number == numbers.end())
            number = numbers.insert(node->instance, QString::number(numbers.size() + 1));
        node->instance = number.value();
    }
}

koSceneNodeDesc koSceneBuilder::describeNode(const koNodeRecord& node, Describing& describing) const
{
    koSceneNodeDesc desc;
    desc.type = node.type;
    desc.name = node.name;
    desc.visible = node.visible;
    desc.locked = node.userLocked;
    desc.transform = node.transform;
    desc.vertices = node.vertexCount;
    desc.faces = node.faceCount;
    desc.mesh = node.mesh;
    if (m_engine.store()->instances(node.shareKey).size() > 1)
        desc.instance = QLatin1Char('#') + QString::number(node.shareKey);
    if (node.isReference())
        describeReference(node, desc, describing);
    else
        describeChildren(node, desc, describing);
    return desc;
}

void koSceneBuilder::describeReference(const koNodeRecord& node, koSceneNodeDesc& desc, Describing& describing) const
{
    desc.reference = *m_engine.store()->content(node.shareKey);
    // A smart file never written holds nothing: its content goes into this file until
    // it is, so that no save loses it.
    if (desc.reference.smartUnsaved)
        desc.reference.smartPath.clear();
    desc.inlineContent = !desc.reference.hasSmart || desc.reference.smartPath.isEmpty();
    if (describing.inlineReferences)
        desc.type = koNodeType::Group;
    if (!desc.reference.loaded) {
        if (const QVector<koSceneNodeDesc>* parked = m_engine.loading().parkedContent(node.shareKey);
            parked && desc.inlineContent) {
            desc.children = *parked;
        }
        return;
    }
    if (desc.inlineContent || describing.inlineReferences)
        describeChildren(node, desc, describing);
}
