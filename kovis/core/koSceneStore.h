#pragma once

#include "koNodeRecord.h"
#include "koReferenceContent.h"

#include <kovis/koGlobal.h>

#include <QHash>
#include <QMultiHash>
#include <QObject>
#include <QStringList>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>

// The one scene of the process: nodes keyed by id, the reference data of each shared
// content, and how many unsaved edits each reference's own content has. Every change
// goes through here and is recorded on the undo stack: it joins the open undo scope or
// becomes a step of its own, so that undo never meets a scene it did not record.
class KOVIS_EXPORT koSceneStore : public QObject
{
    Q_OBJECT
public:
    // Which reference an edit counts against.
    enum class Mark { None, Owner };

    static koSceneStore* the();

    explicit koSceneStore(QObject* parent = nullptr);
    ~koSceneStore() override;

    const koNodeRecord* node(quint64 id) const;
    quint64 rootId() const { return m_rootId; }
    quint64 allocateId() { return ++m_lastId; }
    int nodeCount() const { return int(m_nodes.size()); }

    const koReferenceContent* content(quint64 shareKey) const;
    const koReferenceContent* contentOfNode(quint64 id) const;

    // The nearest reference strictly above the node (0 for none).
    quint64 owningReference(quint64 id) const;
    // The reference whose file holds the children of the node.
    quint64 childOwner(quint64 id) const;
    bool isAncestor(quint64 ancestor, quint64 id) const;
    // Every live node with this share key, the original first.
    QVector<quint64> instances(quint64 shareKey) const;
    // Reference nodes at and below the node, parents before children.
    QVector<quint64> referencesBelow(quint64 id) const;
    // Copies of the node and everything below it, parents before children.
    QVector<koNodeRecord> subtree(quint64 id) const;

    // Calls visit once for each content a node of the scene shows, without walking the tree.
    void visitLiveContents(const std::function<void(quint64, const koReferenceContent&)>& visit) const;

    // Edited since loaded or saved, or held only in memory (a smart link never written).
    bool isChanged(quint64 shareKey) const;
    bool isAnyReferenceBelowChanged(quint64 id) const;

    // Replaces the whole scene (not undoable). The first record is the root.
    void reset(QVector<koNodeRecord> nodes, const QHash<quint64, koReferenceContent>& contents);

    // False when the nodes cannot go there: an id is taken, or shared content would end
    // up inside an instance of itself.
    bool insertSubtree(quint64 parent, int index, const QVector<koNodeRecord>& nodes, Mark mark);
    // Whether any of the nodes shares content with the parent or a node above it.
    bool nestsSharedContent(quint64 parent, const QVector<koNodeRecord>& nodes) const;
    void removeSubtree(quint64 id, Mark mark);
    void setName(quint64 id, const QString& name);
    void setVisible(quint64 id, bool visible);
    void setUserLocked(quint64 id, bool locked);
    // markKey: the share key of the reference whose file changes with it (0 for none).
    // Undo and redo restore the links but keep what is known of the linked file on disk
    // (and where the project lives).
    void setContent(quint64 shareKey, const koReferenceContent& content, quint64 markKey);
    // What happened on disk (a file written, where the project now lives): not undoable.
    void setFileState(quint64 shareKey, const koReferenceContent& content);
    // The reference's content differs from its file though no node of it changed.
    void markChanged(quint64 shareKey);
    // The reference's content now matches its file. Inside an undo scope (content read
    // again from disk) undo takes this back with the content; a save is never undone.
    void markSaved(quint64 shareKey);

    // What is broken in the store; empty when it is whole.
    QStringList brokenInvariants() const;

signals:
    void sceneAboutToBeReset();
    void sceneReset();
    void subtreeAboutToBeInserted(quint64 parent, int row);
    void subtreeInserted(quint64 parent, quint64 id);
    void subtreeAboutToBeRemoved(quint64 parent, quint64 id);
    void subtreeRemoved(quint64 parent, quint64 id);
    void nodeChanged(quint64 id, const QByteArray& property);
    void contentChanged(quint64 shareKey);
    void changeStateChanged(quint64 shareKey);

private:
    friend class koSceneStoreChecker;

    koNodeRecord* mutableNode(quint64 id);
    quint64 markKeyFor(quint64 childOwnerOf, Mark mark) const;
    void setFlag(quint64 id, const QByteArray& property, bool value, const QString& text);
    void record(const QString& text, std::function<void()> undo, std::function<void()> redo);

    void insertRaw(quint64 parent, int index, const QVector<koNodeRecord>& nodes, quint64 markKey, int delta);
    void removeRaw(quint64 id, quint64 markKey, int delta);
    void setFlagRaw(quint64 id, const QByteArray& property, bool value, quint64 markKey, int delta);
    void setNameRaw(quint64 id, const QString& name, quint64 markKey, int delta);
    void setContentRaw(quint64 shareKey, const std::optional<koReferenceContent>& content, quint64 markKey,
                       int delta);
    bool canInsert(quint64 parent, const QVector<koNodeRecord>& nodes) const;
    void addChange(quint64 shareKey, int delta);
    void setSavedCount(quint64 shareKey, int count);
    koReferenceContent withFileStateOf(koReferenceContent links, quint64 shareKey) const;
    bool isMemoryOnly(quint64 shareKey) const;
    void verify() const;

    // Visits the node and everything below it, parents before children, in child order.
    void visitSubtree(quint64 id, const std::function<void(const koNodeRecord&)>& visit) const;
    void indexClone(const koNodeRecord& node);
    void unindexClone(const koNodeRecord& node);

    static koSceneStore* s_instance;
    std::unordered_map<quint64, std::unique_ptr<koNodeRecord>> m_nodes;
    QHash<quint64, koReferenceContent> m_contents;
    QMultiHash<quint64, quint64> m_clones;
    QHash<quint64, int> m_changeCount;
    QHash<quint64, int> m_savedCount;
    quint64 m_rootId = 0;
    quint64 m_lastId = 0;
};
