#pragma once

#include "koReferenceCommands.h"
#include "koReferenceSelectionFacts.h"

#include <QObject>

class QAction;
class QKOToolBar;
class QMenu;
class QToolButton;
class koReferenceEditorModule;

// The commands of the Reference Editor as actions: the File and Edit menus, the
// context menu of the views, the file buttons of the smart and source columns and the
// quick action bar; and which of them the selection allows.
class koReferenceEditorActions : public QObject
{
    Q_OBJECT
public:
    koReferenceEditorActions(koReferenceEditorModule* module, koReferenceCommands* commands);
    ~koReferenceEditorActions() override;

    void buildFileMenu();
    void buildEditMenu();
    void buildContextMenu();
    // With the two information actions.
    void buildFileButtons();
    void buildQuickActionBar();

    // Enables the actions that the selection of the views allows.
    void updateActions();
    // The same for any nodes, also for nodes that are no references.
    void updateActions(const QList<kodNode>& selection);

    QMenu* fileMenu() const { return m_fileMenu; }
    QMenu* editMenu() const { return m_editMenu; }
    QMenu* contextMenu() const { return m_contextMenu; }
    QKOToolBar* quickActionBar() const { return m_quickActionBar; }

private:
    // The entries of one link (smart or source) in the context menu.
    struct LinkActions
    {
        QMenu* reimportMenu = nullptr;
        QAction* reimportSelected = nullptr;
        QAction* reimportOutdated = nullptr;
        QAction* reimportUnloaded = nullptr;
        QAction* replace = nullptr;
        QAction* repath = nullptr;
        QAction* remove = nullptr;
        QAction* open = nullptr;
        QAction* info = nullptr;
    };

    QAction* addAction(QMenu* menu, const QString& text, const char* icon = nullptr);
    QAction* addCreateSourceAction(QMenu* menu);
    // The selection's root nodes and every instance sharing their content, each once.
    QList<kodReferenceNode> selectedRootsWithTheirInstances() const;
    void addEditEntries();
    void addLinkEntries(LinkActions& actions, koReferenceCommands::Link link);
    void addReimportMenu(LinkActions& actions, koReferenceCommands::Link link);
    void reimport(koReferenceCommands::Link link, const QList<kodReferenceNode>& references);
    void repathAll(bool sources, bool smarts);
    QAction* createInfoAction();
    void setUpFileButton(QToolButton* button, QAction* action);
    QMenu* createCreateMenu();
    void enableForSelection(bool any);
    void applyFacts(const koReferenceSelectionFacts& facts);
    static void applyLinkFacts(const LinkActions& actions, const koReferenceSelectionFacts::Link& facts);

    QList<kodReferenceNode> selectedReferences() const;
    QList<kodNode> selectedNodes() const;

    koReferenceEditorModule* m_module;
    koReferenceCommands* m_commands;
    QMenu* m_fileMenu = nullptr;
    QMenu* m_editMenu = nullptr;
    QMenu* m_contextMenu = nullptr;
    QMenu* m_contextEditMenu = nullptr;
    QMenu* m_createSmartMenu = nullptr;
    QAction* m_load = nullptr;
    QAction* m_unload = nullptr;
    QAction* m_rename = nullptr;
    QAction* m_clone = nullptr;
    QAction* m_repath = nullptr;
    QAction* m_remove = nullptr;
    QAction* m_convert = nullptr;
    QAction* m_selectNodes = nullptr;
    QAction* m_newSmart = nullptr;
    QAction* m_smartFromFile = nullptr;
    QAction* m_saveSmartChanges = nullptr;
    QAction* m_saveSmartAs = nullptr;
    QAction* m_createSource = nullptr;
    LinkActions m_smart;
    LinkActions m_source;
    QKOToolBar* m_quickActionBar = nullptr;
};
