#pragma once

#include "ReferenceDialogCode.h"
#include "ui_koReferenceEditorUI.h"

#include <kovis/kodReferenceNode.h>

#include <QMainWindow>

#include <functional>
#include <memory>

class koNodeBasedSelectionModel;
class koReferenceCommands;
class koReferenceCreateCommands;
class koReferenceEditorActions;
class koReferenceFilterMenu;
class koReferenceFilterModel;
class koReferenceSaveCommands;
class koReferenceTreeModel;
class QAbstractItemView;
class QTreeView;

// The Reference Editor's window: the scene's references as a graph or a flat list in
// three coupled views (the references, their smart files, their source files), kept
// current by deferred reloads that coalesce bursts of host notifications.
class koReferenceEditorModule : public QMainWindow, public Ui::koReferenceEditorUI
{
    Q_OBJECT
public:
    explicit koReferenceEditorModule(QWidget* parent = nullptr, const QString& objectName = QString());
    ~koReferenceEditorModule() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    // Keeps the side columns level with the main view; consumes nothing.
    bool eventFilter(QObject* watched, QEvent* event) override;

    // The one way to refresh the views: one reload on the next event-loop turn,
    // none while a project loads.
    void scheduleReload();
    // 0 shows the reference graph, anything else the flat list.
    void setListMode(int mode);
    void storeExpandedStates();
    void restoreExpandedStates();
    int treeDepth(const QModelIndex& index) const;
    void updateNodeItem(const kodNode& node);
    void onSceneSelectionChanged(const QList<kodReferenceNode>& references);
    // One entry per selected row; a null handle for a row that is no reference.
    QList<kodReferenceNode> selectedReferences() const;
    // Selects each reference with everything below it; the last one's subtree stays.
    void selectSubtree(const QList<kodReferenceNode>& references);
    void expandToSliderDepth(int value);
    // Expands every row of the graph, in the side columns too.
    void expandAllRows();
    // Enables the actions that the selected references allow.
    void updateActions();
    void showContextMenu(QAbstractItemView* view, const QPoint& pos);
    // Points the sources, the smart links or both of the references at their files in
    // a folder the user picks.
    void repathReferences(const QList<kodReferenceNode>& nodes, bool sources, bool smarts);
    // Gives the new smart references among the references and below them their files'
    // paths; none of them takes reservedPath.
    ReferenceDialogCode updateUnsavedSmartPaths(const QList<kodReferenceNode>& references,
                                                const QString& reservedPath, bool warnOverwrite);
    void saveSmartChanges(const QList<kodReferenceNode>& references);
    void saveAllSmartChanges();
    void saveSmartAs(const QList<kodReferenceNode>& references);
    void createReference(bool source, bool fromFile, const QList<kodNode>& selectedNodes);
    // An empty path asks for the file.
    void replaceSmart(const kodReferenceNode& reference, const QString& path);
    void replaceSource(const kodReferenceNode& reference, const QString& path);
    // Null unless exactly one reference is selected.
    kodReferenceNode singleSelectedReference() const;

    koReferenceTreeModel* referenceModel() const { return m_model.get(); }
    koReferenceFilterModel* filterModel() const { return m_filterModel; }
    koNodeBasedSelectionModel* nodeSelectionModel() const { return m_selectionModel; }
    koReferenceCommands* commands() const { return m_commands.get(); }
    koReferenceEditorActions* actions() const { return m_actions.get(); }
    koReferenceFilterMenu* filterMenu() const { return m_filterMenu.get(); }
    bool isReloadPending() const { return m_reloadPending; }
    bool isProjectLoading() const { return m_projectLoading; }
    // Commands that change many references one by one hold reloads back meanwhile.
    void setProjectLoading(bool loading) { m_projectLoading = loading; }

protected:
    // Fonts and styles change the height of rows and the width of texts.
    void changeEvent(QEvent* event) override;

private:
    void setUpModel();
    void connectSceneNotifications();
    void setUpViews();
    void setUpSideHeader(QTreeView* view);
    void setUpView(QTreeView* view);
    void showColumns(QTreeView* view, std::initializer_list<int> columns, bool hideable);
    void changeEveryViewAtOnce(const std::function<void(koReferenceTreeView*)>& change);
    void setUpListMode();
    void levelRows();
    void fitStateColumns();
    static void fitColumn(QTreeView* view, int column, const QStringList& texts);
    void buildActions();
    void registerModule();
    void connectHost();
    void connectRepathRequests();
    void connectSmartPathsUpdate();
    void connectSaveRequests();
    void connectReplaceRequests();
    void connectPathFields();
    void reloadModel();
    void onReferenceCreated(const kodReferenceNode& reference);
    void scrollToFirstSelected();
    bool isFlatList() const;

    bool m_reloadPending = false;
    bool m_projectLoading = false;
    std::unique_ptr<koReferenceTreeModel> m_model;
    std::unique_ptr<koReferenceSaveCommands> m_saveCommands;
    std::unique_ptr<koReferenceCreateCommands> m_createCommands;
    koReferenceFilterModel* m_filterModel = nullptr;
    koNodeBasedSelectionModel* m_selectionModel = nullptr;
    // Nodes whose rows were expanded in the graph, kept across a switch to the list.
    QList<kodNode> m_expandedNodes;
    // Declared last: they go first, while the views and models they work on still stand.
    std::unique_ptr<koReferenceCommands> m_commands;
    std::unique_ptr<koReferenceFilterMenu> m_filterMenu;
    std::unique_ptr<koReferenceEditorActions> m_actions;
};
