#pragma once

#include "koFileStateCache.h"
#include "koSceneNodeDesc.h"
#include "koSceneStore.h"

#include <kovis/koGlobal.h>

#include <QObject>
#include <QScopedPointer>
#include <QVector>

#include <functional>
#include <memory>

class koFileMonitor;
class koReferenceFileStates;
class koReferenceLinks;
class koReferenceLoading;
class koReferenceSaving;
class koSceneBuilder;
class koSceneOperations;
class koUndoStack;

// Keeps the scene over real files. It owns the scene store, the undo stack, what is
// known of the linked files and the monitor that watches them; the work is done by one
// role each: file states, link editing, loading, saving, scene operations, and turning
// file content into scene nodes and back.
class KOVIS_EXPORT koReferenceEngine : public QObject
{
    Q_OBJECT
public:
    // Change notification modes of the preferences.
    enum NotificationMode { NotifyNever = 0, NotifyAlways = 1, NotifyAtSessionStart = 2 };
    struct Settings
    {
        bool monitoringEnabled = true;
        int monitoringInterval = 5000;
        int notificationMode = NotifyAlways;
        bool showConvertWarning = true;
        int storeMode = 0;
        QString storeLocation;
        int loadMode = 0;
    };
    // Asked before a project is written while new smart references below have no file;
    // false cancels the write.
    using SmartPathsRequest = std::function<bool(quint64 root, const QString& projectPath)>;

    explicit koReferenceEngine(QObject* parent = nullptr);
    ~koReferenceEngine() override;

    koSceneStore* store() const { return m_store.data(); }
    koUndoStack* undoStack() const { return m_undoStack.data(); }
    koFileStateCache& fileCache() { return m_cache; }
    koFileMonitor* monitor() const { return m_monitor.data(); }

    koReferenceFileStates& fileStates() const { return *m_fileStates; }
    koReferenceLinks& links() const { return *m_links; }
    koReferenceLoading& loading() const { return *m_loading; }
    koReferenceSaving& saving() const { return *m_saving; }
    koSceneOperations& operations() const { return *m_operations; }
    koSceneBuilder& builder() const { return *m_builder; }

    Settings& settings() { return m_settings; }
    void setMonitoringEnabled(bool enabled);
    void setMonitoringInterval(int milliseconds);

    void newProject();
    bool loadProject(const QString& path);
    // Without a request the host places new smart files itself.
    bool saveProject(const QString& path, const SmartPathsRequest& askForSmartPaths = {});
    QString projectPath() const;
    QVector<quint64> sceneReferences() const;

    // What the roles share.
    koReferenceContent linksOf(quint64 id) const;
    quint64 shareKeyOf(quint64 id) const;
    // markOwner: the change counts against the reference whose file holds the node.
    void updateLinks(quint64 id, const koReferenceContent& links, bool markOwner);
    void announce(const QVector<quint64>& ids);
    void announceShared(quint64 shareKey);

signals:
    void referencesChanged(const QVector<quint64>& ids);
    void referenceCreated(quint64 id);
    void projectLoad(const QString& path);
    void projectLoadFinished(const QString& path, bool success);
    void monitoringChanged(bool enabled);
    void warning(const QString& message);
    void notice(const QString& message);

private:
    void connectStore();
    void resetScene(const koSceneNodeDesc& root);

    Settings m_settings;
    koFileStateCache m_cache;
    QScopedPointer<koUndoStack> m_undoStack;
    QScopedPointer<koSceneStore> m_store;
    std::unique_ptr<koReferenceFileStates> m_fileStates;
    std::unique_ptr<koReferenceLinks> m_links;
    std::unique_ptr<koReferenceLoading> m_loading;
    std::unique_ptr<koReferenceSaving> m_saving;
    std::unique_ptr<koSceneOperations> m_operations;
    std::unique_ptr<koSceneBuilder> m_builder;
    QScopedPointer<koFileMonitor> m_monitor;
    QVector<quint64> m_removing;
    bool m_projectLoading = false;
};
