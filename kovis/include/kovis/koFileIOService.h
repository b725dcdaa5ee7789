#pragma once

#include "koBaseService.h"

#include <QString>

// Opens and saves project files and knows which files the host can import.
class KOVIS_EXPORT koFileIOService : public koBaseService
{
    Q_OBJECT
public:
    // Groups of getImportFileFilter().
    enum FileGroup { ProjectFiles = 0, SmartFiles = 1, GeometryFiles = 2, AllFiles = 3, ImportFiles = 4 };
    Q_ENUM(FileGroup)
    enum class SaveOutcome { Saved, Cancelled, Failed };

    explicit koFileIOService(QObject* parent = nullptr);

    virtual bool isProjectFile(const QString& path) const;
    virtual QString getImportFileFilter(int group) const;

    // Replaces the scene with the project; on failure the scene stays as it was.
    virtual bool loadProject(const QString& path);
    // Writes the scene to the path (the project's own file when empty). New smart
    // references below get their files first: a module that answers
    // koInternalUiService::requestUiSmartPathsUpdate places them (and may cancel),
    // else the host does.
    virtual SaveOutcome writeProject(const QString& path = QString());
    bool saveProject(const QString& path = QString()) { return writeProject(path) == SaveOutcome::Saved; }
    virtual void newProject();
    virtual QString getProjectPath() const;

signals:
    void projectLoad(const QString& path);
    void projectLoadFinished(const QString& path, bool success);
    void projectSaved(const QString& path);
};
