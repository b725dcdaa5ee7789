#pragma once

#include "koFileStateCache.h"
#include "koSceneNodeDesc.h"
#include "koSceneStore.h"

#include <kovis/koGlobal.h>
#include <kovis/koReferenceTypes.h>

#include <QDateTime>
#include <QObject>
#include <QScopedPointer>
#include <QVector>

class koFileMonitor;
class koUndoStack;

// Keeps the scene over real files: opens and saves projects, loads, unloads, imports
// and saves references, edits their links, and knows the state of every linked file.
class KOVIS_EXPORT koReferenceEngine : public QObject
{
    Q_OBJECT
public:
    struct Settings
    {
        bool monitoringEnabled = true;
        int monitoringInterval = 5000;
        int notificationMode = 1;
        bool showConvertWarning = true;
        int storeMode = 0;
        QString storeLocation;
        int loadMode = 0;
    };

    explicit koReferenceEngine(QObject* parent = nullptr);
    ~koReferenceEngine() override;

    koSceneStore* store() const { return m_store.data(); }
    koUndoStack* undoStack() const { return m_undoStack.data(); }
    koFileStateCache& fileCache() { return m_cache; }
    koFileMonitor* monitor() const { return m_monitor.data(); }

    Settings& settings() { return m_settings; }
    void setMonitoringEnabled(bool enabled);
    void setMonitoringInterval(int milliseconds);

    // Project
    void newProject();
    bool loadProject(const QString& path);
    bool saveProject(const QString& path);
    QString projectPath() const;

    // Reference queries (never touch the disk)
    koReferenceTypes::FileState smartFileState(quint64 id);
    koReferenceTypes::FileState sourceFileState(quint64 id);
    const koFileSnapshot* smartSnapshot(quint64 id);
    const koFileSnapshot* sourceSnapshot(quint64 id);
    QVector<quint64> sceneReferences() const;
    QStringList fileExtensions() const;
    QString proposeSmartPath(quint64 id, koReferenceTypes::ExportLocation location, const QString& customFolder) const;

    // Reference operations
    void loadReference(quint64 id);
    bool loadSmart(quint64 id);
    bool importSource(quint64 id);
    void unload(quint64 id);
    bool save(quint64 id, bool withSubReferences = true);
    bool saveAs(quint64 id, const QString& path, bool withSubReferences);
    void createSmartLink(quint64 id);
    void createSourceLink(quint64 id);
    void removeSmartLink(quint64 id);
    void removeSourceLink(quint64 id);
    void setSmartPath(quint64 id, const QString& path);
    void setSourcePath(quint64 id, const QString& path);

    // Scene operations
    quint64 createReference(quint64 parent);
    quint64 removeReference(quint64 id);
    quint64 convertToSmart(quint64 id);
    quint64 createNode(quint64 parent, koNodeType type, const QString& name);
    QVector<quint64> cloneNodes(const QVector<quint64>& ids);
    void moveNode(quint64 id, quint64 newParent);

    // The node's content as its file stores it: a group named after the node.
    koSceneNodeDesc describeContent(quint64 id, bool inlineReferences = false) const;

    // Every linked file with the share keys of the references that link to it.
    QHash<QString, QVector<quint64>> linkedFiles() const;
    // Takes fresh snapshots of linked files and announces the references whose state
    // changed; snapshots[i] belongs to paths[i].
    void applySnapshots(const QHash<QString, QVector<quint64>>& files, const QStringList& paths,
                        const QVector<koFileSnapshot>& snapshots);
    // Reads every linked file again now and announces the references whose state changed.
    void checkFiles();

signals:
    void referencesChanged(const QVector<quint64>& ids);
    void referenceCreated(quint64 id);
    void projectLoad(const QString& path);
    void projectLoadFinished(const QString& path, bool success);
    void monitoringChanged(bool enabled);
    void warning(const QString& message);
    void notice(const QString& message);

private:
    struct Materialized;
    enum class Link { Smart, Source };

    static bool& hasLink(koReferenceContent& content, Link link);
    static bool hasLink(const koReferenceContent& content, Link link);
    static QString& linkPath(koReferenceContent& content, Link link);
    static const QString& linkPath(const koReferenceContent& content, Link link);
    const koFileSnapshot* snapshotOf(quint64 id, Link link);
    void setLinkPath(quint64 id, const QString& path, Link link);

    const koReferenceContent* contentOf(quint64 id) const { return m_store->contentOfNode(id); }
    koReferenceContent linksOf(quint64 id) const;
    quint64 shareKeyOf(quint64 id) const;
    void updateLinks(quint64 id, const koReferenceContent& content, bool markOwner, bool undoable = true);
    quint64 ownerKey(quint64 id) const;

    int materialize(const koSceneNodeDesc& desc, Materialized& out);
    void stampFiles(koReferenceContent& content);
    // Takes the smart file as it is on disk now as the one the content matches.
    void stampSmartFile(koReferenceContent& content);
    void replaceContent(quint64 id, const QVector<koSceneNodeDesc>& children);
    void clearContent(quint64 id);
    quint64 replaceNode(quint64 id, koNodeRecord replacement);
    QVector<koNodeRecord> cloneRecords(const QVector<koNodeRecord>& records) const;
    koSceneNodeDesc describeNode(const koNodeRecord& node, bool inlineReferences) const;
    bool writeFile(quint64 id, const QString& path);
    void finishSave(quint64 id);
    void announce(const QVector<quint64>& ids);
    void announceShared(quint64 shareKey);
    void connectStore();
    QHash<QString, QVector<quint64>> collectLinkedFiles() const;

    Settings m_settings;
    koFileStateCache m_cache;
    QScopedPointer<koUndoStack> m_undoStack;
    QScopedPointer<koSceneStore> m_store;
    QScopedPointer<koFileMonitor> m_monitor;
    QVector<quint64> m_removing;
    bool m_loading = false;
    // Which files the scene links to changes rarely; monitoring asks every few seconds.
    mutable QHash<QString, QVector<quint64>> m_linkedFiles;
    mutable bool m_linkedFilesKnown = false;
};
