#include "koSceneStore.h"

#include "koSceneCommand.h"
#include "koSceneStoreChecker.h"

#include <kovis/koScopedUndo.h>
#include <kovis/koUndoStack.h>

#include <QCoreApplication>
#include <QSet>

#include <algorithm>

koSceneStore* koSceneStore::s_instance = nullptr;

koSceneStore* koSceneStore::the()
{
    return s_instance;
}

koSceneStore::koSceneStore(QObject* parent)
    : QObject(parent)
{
    s_instance = this;
}

koSceneStore::~koSceneStore()
{
    if (s_instance == this)
        s_instance = nullptr;
}

const koNodeRecord* koSceneStore::node(quint64 id) const
{
    const auto it = m_nodes.find(id);
    return it == m_nodes.end() ? nullptr : it->second.get();
}

koNodeRecord* koSceneStore::mutableNode(quint64 id)
{
    const auto it = m_nodes.find(id);
    return it == m_nodes.end() ? nullptr : it->second.get();
}

const koReferenceContent* koSceneStore::content(quint64 shareKey) const
{
    const auto it = m_contents.constFind(shareKey);
    return it == m_contents.constEnd() ? nullptr : &it.value();
}

const koReferenceContent* koSceneStore::contentOfNode(quint64 id) const
{
    const koNodeRecord* record = node(id);
    return record && record->isReference() ? content(record->shareKey) : nullptr;
}

quint64 koSceneStore::owningReference(quint64 id) const
{
    const koNodeRecord* record = node(id);
    for (record = record ? node(record->parent) : nullptr; record; record = node(record->parent)) {
        if (record->isReference())
            return record->id;
    }
    return 0;
}

quint64 koSceneStore::childOwner(quint64 id) const
{
    const koNodeRecord* record = node(id);
    if (record && record->isReference())
        return id;
    return owningReference(id);
}

bool koSceneStore::isAncestor(quint64 ancestor, quint64 id) const
{
    for (const koNodeRecord* record = node(id); record; record = node(record->parent)) {
        if (record->parent == ancestor)
            return true;
    }
    return false;
}

QVector<quint64> koSceneStore::instances(quint64 shareKey) const
{
    QVector<quint64> result;
    if (const koNodeRecord* original = node(shareKey); original && original->shareKey == shareKey)
        result.append(shareKey);
    // QMultiHash hands back the latest insertion first.
    const QList<quint64> clones = m_clones.values(shareKey);
    for (auto it = clones.crbegin(); it != clones.crend(); ++it)
        result.append(*it);
    return result;
}

void koSceneStore::visitSubtree(quint64 id, const std::function<void(const koNodeRecord&)>& visit) const
{
    QVector<const koNodeRecord*> stack;
    if (const koNodeRecord* start = node(id))
        stack.append(start);
    while (!stack.isEmpty()) {
        const koNodeRecord* record = stack.takeLast();
        visit(*record);
        for (auto child = record->children.crbegin(); child != record->children.crend(); ++child) {
            if (const koNodeRecord* childRecord = node(*child))
                stack.append(childRecord);
        }
    }
}

void koSceneStore::visitLiveContents(const std::function<void(quint64, const koReferenceContent&)>& visit) const
{
    // Contents of removed nodes stay for undo; a share key is live while a node has it.
    for (auto it = m_contents.cbegin(); it != m_contents.cend(); ++it) {
        const koNodeRecord* original = node(it.key());
        if ((original && original->shareKey == it.key()) || m_clones.contains(it.key()))
            visit(it.key(), it.value());
    }
}

QVector<quint64> koSceneStore::referencesBelow(quint64 id) const
{
    QVector<quint64> result;
    visitSubtree(id, [&result](const koNodeRecord& record) {
        if (record.isReference())
            result.append(record.id);
    });
    return result;
}

QVector<koNodeRecord> koSceneStore::subtree(quint64 id) const
{
    QVector<koNodeRecord> result;
    visitSubtree(id, [&result](const koNodeRecord& record) { result.append(record); });
    return result;
}

bool koSceneStore::isChanged(quint64 shareKey) const
{
    return m_changeCount.value(shareKey) != m_savedCount.value(shareKey) || isMemoryOnly(shareKey);
}

bool koSceneStore::isMemoryOnly(quint64 shareKey) const
{
    // A new project's root holds nothing worth a question until something is added.
    const koReferenceContent* links = content(shareKey);
    return links && shareKey != m_rootId && links->hasSmart && links->smartUnsaved && links->loaded;
}

bool koSceneStore::isAnyReferenceBelowChanged(quint64 id) const
{
    const QVector<quint64> references = referencesBelow(id);
    for (quint64 reference : references) {
        if (reference != id && isChanged(node(reference)->shareKey))
            return true;
    }
    return false;
}

void koSceneStore::reset(QVector<koNodeRecord> nodes, const QHash<quint64, koReferenceContent>& contents)
{
    emit sceneAboutToBeReset();
    m_nodes.clear();
    m_clones.clear();
    m_changeCount.clear();
    m_savedCount.clear();
    m_contents = contents;
    m_rootId = nodes.isEmpty() ? 0 : nodes.first().id;
    for (koNodeRecord& record : nodes) {
        m_lastId = qMax(m_lastId, record.id);
        indexClone(record);
        m_nodes.emplace(record.id, std::make_unique<koNodeRecord>(std::move(record)));
    }
    if (koNodeRecord* root = mutableNode(m_rootId))
        root->parent = 0;
    verify();
    emit sceneReset();
}

quint64 koSceneStore::markKeyFor(quint64 childOwnerOf, Mark mark) const
{
    if (mark == Mark::None)
        return 0;
    const koNodeRecord* owner = node(childOwner(childOwnerOf));
    return owner ? owner->shareKey : 0;
}

void koSceneStore::record(const QString& text, std::function<void()> undo, std::function<void()> redo)
{
    koUndoStack* stack = koUndoStack::the();
    if (!stack || stack->isReplaying())
        return;
    // Joins the open step, or makes this change a step of its own.
    koScopedUndo scope;
    new koSceneCommand(text, std::move(undo), std::move(redo), stack->recordingStep());
}

bool koSceneStore::nestsSharedContent(quint64 parent, const QVector<koNodeRecord>& nodes) const
{
    QSet<quint64> shareKeys;
    for (const koNodeRecord& record : nodes)
        shareKeys.insert(record.shareKey);
    for (const koNodeRecord* above = node(parent); above; above = node(above->parent)) {
        if (shareKeys.contains(above->shareKey))
            return true;
    }
    return false;
}

bool koSceneStore::canInsert(quint64 parent, const QVector<koNodeRecord>& nodes) const
{
    if (nodes.isEmpty() || !node(parent))
        return false;
    const bool taken = std::any_of(nodes.cbegin(), nodes.cend(), [this](const koNodeRecord& record) { return node(record.id); });
    return !taken && !nestsSharedContent(parent, nodes);
}

bool koSceneStore::insertSubtree(quint64 parent, int index, const QVector<koNodeRecord>& nodes, Mark mark)
{
    if (!canInsert(parent, nodes))
        return false;
    const quint64 markKey = markKeyFor(parent, mark);
    const quint64 id = nodes.first().id;
    insertRaw(parent, index, nodes, markKey, 1);
    record(QCoreApplication::translate("koSceneStore", "Insert Nodes"),
           [this, id, markKey] { removeRaw(id, markKey, -1); },
           [this, parent, index, nodes, markKey] { insertRaw(parent, index, nodes, markKey, 1); });
    return true;
}

void koSceneStore::removeSubtree(quint64 id, Mark mark)
{
    const koNodeRecord* record = node(id);
    if (!record || id == m_rootId)
        return;
    const quint64 parent = record->parent;
    const int index = node(parent)->children.indexOf(id);
    const QVector<koNodeRecord> nodes = subtree(id);
    const quint64 markKey = markKeyFor(parent, mark);
    removeRaw(id, markKey, 1);
    this->record(QCoreApplication::translate("koSceneStore", "Remove Nodes"),
                 [this, parent, index, nodes, markKey] { insertRaw(parent, index, nodes, markKey, -1); },
                 [this, id, markKey] { removeRaw(id, markKey, 1); });
}

void koSceneStore::setName(quint64 id, const QString& name)
{
    const koNodeRecord* record = node(id);
    if (!record || record->name == name)
        return;
    const QString oldName = record->name;
    const quint64 markKey = markKeyFor(record->parent, Mark::Owner);
    setNameRaw(id, name, markKey, 1);
    this->record(QCoreApplication::translate("koSceneStore", "Rename"),
                 [this, id, oldName, markKey] { setNameRaw(id, oldName, markKey, -1); },
                 [this, id, name, markKey] { setNameRaw(id, name, markKey, 1); });
}

void koSceneStore::setVisible(quint64 id, bool visible)
{
    setFlag(id, "visible", visible, QCoreApplication::translate("koSceneStore", "Change Visibility"));
}

void koSceneStore::setUserLocked(quint64 id, bool locked)
{
    setFlag(id, "locked", locked, QCoreApplication::translate("koSceneStore", "Change Lock"));
}

void koSceneStore::setFlag(quint64 id, const QByteArray& property, bool value, const QString& text)
{
    const koNodeRecord* record = node(id);
    if (!record || (property == "visible" ? record->visible : record->userLocked) == value)
        return;
    const quint64 markKey = markKeyFor(record->parent, Mark::Owner);
    setFlagRaw(id, property, value, markKey, 1);
    this->record(text, [this, id, property, value, markKey] { setFlagRaw(id, property, !value, markKey, -1); },
                 [this, id, property, value, markKey] { setFlagRaw(id, property, value, markKey, 1); });
}

void koSceneStore::setContent(quint64 shareKey, const koReferenceContent& content, quint64 markKey)
{
    std::optional<koReferenceContent> old;
    if (const koReferenceContent* current = this->content(shareKey)) {
        if (*current == content)
            return;
        old = *current;
    }
    setContentRaw(shareKey, content, markKey, 1);
    const auto restore = [this, shareKey](std::optional<koReferenceContent> links) {
        return links ? std::optional(withFileStateOf(*links, shareKey)) : links;
    };
    record(QCoreApplication::translate("koSceneStore", "Change Reference"),
           [this, shareKey, old, markKey, restore] { setContentRaw(shareKey, restore(old), markKey, -1); },
           [this, shareKey, content, markKey, restore] { setContentRaw(shareKey, restore(content), markKey, 1); });
}

void koSceneStore::setFileState(quint64 shareKey, const koReferenceContent& content)
{
    const koReferenceContent* current = this->content(shareKey);
    if (!current || *current == content)
        return;
    setContentRaw(shareKey, content, 0, 0);
}

koReferenceContent koSceneStore::withFileStateOf(koReferenceContent links, quint64 shareKey) const
{
    // What is known of a file belongs to its path: it stays when the link keeps the path.
    const koReferenceContent* current = content(shareKey);
    if (!current)
        return links;
    if (shareKey == m_rootId) {
        links.hasSmart = current->hasSmart;
        links.smartPath = current->smartPath;
    }
    if (links.hasSmart && current->hasSmart && links.smartPath == current->smartPath) {
        links.smartUnsaved = current->smartUnsaved;
        links.smartUnreadable = current->smartUnreadable;
        links.smartStamp = current->smartStamp;
    }
    if (links.hasSource && current->hasSource && links.sourcePath == current->sourcePath) {
        links.sourceUnreadable = current->sourceUnreadable;
        links.sourceStamp = current->sourceStamp;
    }
    return links;
}

void koSceneStore::markChanged(quint64 shareKey)
{
    addChange(shareKey, 1);
    record(QCoreApplication::translate("koSceneStore", "Change Reference"), [this, shareKey] { addChange(shareKey, -1); },
           [this, shareKey] { addChange(shareKey, 1); });
}

void koSceneStore::markSaved(quint64 shareKey)
{
    const int before = m_savedCount.value(shareKey);
    const int now = m_changeCount.value(shareKey);
    if (before == now)
        return;
    setSavedCount(shareKey, now);
    koUndoStack* stack = koUndoStack::the();
    if (stack && stack->isRecording()) {
        new koSceneCommand(QCoreApplication::translate("koSceneStore", "Change Reference"),
                           [this, shareKey, before] { setSavedCount(shareKey, before); },
                           [this, shareKey, now] { setSavedCount(shareKey, now); }, stack->recordingStep());
    }
}

void koSceneStore::setSavedCount(quint64 shareKey, int count)
{
    m_savedCount.insert(shareKey, count);
    emit changeStateChanged(shareKey);
}

void koSceneStore::insertRaw(quint64 parent, int index, const QVector<koNodeRecord>& nodes, quint64 markKey,
                             int delta)
{
    koNodeRecord* parentRecord = mutableNode(parent);
    if (!parentRecord || !canInsert(parent, nodes))
        return;
    for (const koNodeRecord& record : nodes) {
        auto copy = std::make_unique<koNodeRecord>(record);
        m_lastId = qMax(m_lastId, record.id);
        indexClone(*copy);
        m_nodes.emplace(record.id, std::move(copy));
    }
    const quint64 id = nodes.first().id;
    mutableNode(id)->parent = parent;
    const int row = qBound(0, index, int(parentRecord->children.size()));
    emit subtreeAboutToBeInserted(parent, row);
    parentRecord->children.insert(row, id);
    emit subtreeInserted(parent, id);
    addChange(markKey, delta);
    verify();
}

void koSceneStore::removeRaw(quint64 id, quint64 markKey, int delta)
{
    const koNodeRecord* record = node(id);
    if (!record)
        return;
    const quint64 parent = record->parent;
    emit subtreeAboutToBeRemoved(parent, id);
    const QVector<koNodeRecord> nodes = subtree(id);
    if (koNodeRecord* parentRecord = mutableNode(parent))
        parentRecord->children.removeOne(id);
    for (const koNodeRecord& removed : nodes) {
        unindexClone(removed);
        m_nodes.erase(removed.id);
    }
    emit subtreeRemoved(parent, id);
    addChange(markKey, delta);
    verify();
}

void koSceneStore::setFlagRaw(quint64 id, const QByteArray& property, bool value, quint64 markKey, int delta)
{
    koNodeRecord* record = mutableNode(id);
    if (!record)
        return;
    (property == "visible" ? record->visible : record->userLocked) = value;
    emit nodeChanged(id, property);
    addChange(markKey, delta);
}

void koSceneStore::setNameRaw(quint64 id, const QString& name, quint64 markKey, int delta)
{
    koNodeRecord* record = mutableNode(id);
    if (!record)
        return;
    record->name = name;
    emit nodeChanged(id, "name");
    addChange(markKey, delta);
}

void koSceneStore::setContentRaw(quint64 shareKey, const std::optional<koReferenceContent>& content,
                                 quint64 markKey, int delta)
{
    if (content)
        m_contents.insert(shareKey, *content);
    else
        m_contents.remove(shareKey);
    emit contentChanged(shareKey);
    addChange(markKey, delta);
}

void koSceneStore::addChange(quint64 shareKey, int delta)
{
    if (shareKey == 0 || delta == 0)
        return;
    m_changeCount[shareKey] += delta;
    emit changeStateChanged(shareKey);
}

void koSceneStore::indexClone(const koNodeRecord& node)
{
    if (node.shareKey != node.id)
        m_clones.insert(node.shareKey, node.id);
}

void koSceneStore::unindexClone(const koNodeRecord& node)
{
    if (node.shareKey != node.id)
        m_clones.remove(node.shareKey, node.id);
}

QStringList koSceneStore::brokenInvariants() const
{
    return koSceneStoreChecker(*this).brokenInvariants();
}

void koSceneStore::verify() const
{
#ifndef NDEBUG
    // Debug builds check the whole store after every structural change; past a few
    // thousand nodes that would make them unusable, and the tests stay below.
    if (nodeCount() <= 5000) {
        const QStringList broken = brokenInvariants();
        if (!broken.isEmpty())
            qFatal("koSceneStore: %s", qPrintable(broken.join(QStringLiteral("; "))));
    }
#endif
}
