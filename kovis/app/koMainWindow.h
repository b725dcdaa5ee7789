#pragma once

#include <QHash>
#include <QMainWindow>

class koSceneTreeModel;
class koSceneTreeView;
class koViewport;
class QDockWidget;
class QMenu;

// The host application's window: the scene tree, the modules that plug-ins register,
// project files, undo and redo.
class koMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit koMainWindow(QWidget* parent = nullptr);
    ~koMainWindow() override;

    koSceneTreeView* sceneTree() const { return m_sceneTree; }
    koViewport* viewport() const { return m_viewport; }
    bool openProject(const QString& path);
    // Gives the module windows back to their plug-ins before these are unloaded.
    void releaseModules();
    bool saveScreenshot(const QString& path);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createFileMenu();
    void createEditMenu();
    void createViewMenu();
    void addModule(int index);
    QMenu* groupMenu(const QString& group);
    void updateTitle();
    bool maybeSave();
    void newProject();
    void openProjectFromDialog();
    bool save();
    bool saveAs();
    bool writeProject(const QString& path);

    koSceneTreeModel* m_sceneModel;
    koSceneTreeView* m_sceneTree;
    koViewport* m_viewport;
    QHash<QString, QMenu*> m_groupMenus;
    QList<QDockWidget*> m_moduleDocks;
};
