#pragma once

#include "koBaseService.h"
#include "kodReferenceNode.h"

#include <QList>
#include <QStringList>

// Lists and changes the references of the scene, watches their files and announces
// every change of reference data.
class KOVIS_EXPORT koReferenceService : public koBaseService
{
    Q_OBJECT
public:
    explicit koReferenceService(QObject* parent = nullptr);
    ~koReferenceService() override;

    // Takes the reference settings from the preference store.
    void loadPreferences();

    // Every reference node of the scene, parents before children.
    virtual QList<kodReferenceNode> getSceneReferences() const;
    // The references at and below the node.
    virtual QList<kodReferenceNode> getReferences(const kodNode& node) const;
    // The references below the reference, all levels.
    virtual QList<kodReferenceNode> getSubReferences(const kodReferenceNode& reference) const;

    // A new reference without files under the parent (the scene root for a null parent).
    virtual kodReferenceNode createReference(const kodNode& parent);
    // Turns the reference into a plain group holding its content; returns that group.
    virtual kodNode removeReference(const kodReferenceNode& reference);
    // Gives the node a new, unsaved smart link; a plain group becomes a reference first.
    virtual kodReferenceNode convertToSmartReference(const kodNode& node);
    // Imports the source file of each reference; returns the references imported.
    virtual QList<kodReferenceNode> importSourceReferences(const QList<kodReferenceNode>& references);
    // Reads the smart file of each reference again, dropping unsaved changes.
    virtual QList<kodReferenceNode> reimportSmartReferences(const QList<kodReferenceNode>& references);
    // The suffixes (without dot) of the smart and source files of the scene's references.
    virtual QStringList getSceneReferenceFileExtensions() const;

    virtual bool showConvertToSmartWarning() const;
    virtual int getSmartReferenceStoreMode() const;
    virtual QString getSmartReferenceStoreLocation() const;
    virtual bool isChangeMonitoringEnabled() const;
    virtual int getUpdateMonitoringInterval() const;
    virtual int getChangeNotificationMode() const;
    virtual int getLoadSubReferencesMode() const;

    virtual void setChangeMonitoringEnabled(bool enabled);
    virtual void setShowConvertToSmartWarning(bool show);
    virtual void setChangeNotificationMode(int mode);
    virtual void setSmartReferenceStoreMode(int mode);
    virtual void setSmartReferenceStoreLocation(const QString& folder);
    virtual void setLoadSubReferencesMode(int mode);
    virtual void setUpdateMonitoringInterval(int milliseconds);

    // Re-reads the files of every reference now instead of waiting for the next check.
    virtual void checkFiles();

signals:
    void referencesChanged(QList<kodReferenceNode> references);
    void referenceCreated(const kodReferenceNode& reference);
    void sceneSelectionChanged(QList<kodReferenceNode> references);
    void updateMonitoringChanged(bool enabled);
};
