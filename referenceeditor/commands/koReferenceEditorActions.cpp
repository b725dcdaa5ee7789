#include "koReferenceEditorActions.h"

#include "koReferenceEditorModule.h"

#include <kovis/QKOToolBar.h>
#include <kovis/koIconManager.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koPlatformService.h>
#include <kovis/koTreeService.h>

#include <QMenuBar>
#include <QSet>
#include <QSignalBlocker>
#include <QToolButton>

#include <functional>

namespace {

QIcon icon(const char* name)
{
    return koIconManager::getIcon(QString::fromLatin1(name), QString());
}

} // namespace

koReferenceEditorActions::koReferenceEditorActions(koReferenceEditorModule* module, koReferenceCommands* commands)
    : m_module(module)
    , m_commands(commands)
{
}

koReferenceEditorActions::~koReferenceEditorActions() = default;

QList<kodReferenceNode> koReferenceEditorActions::selectedReferences() const
{
    return m_module->selectedReferences();
}

QList<kodNode> koReferenceEditorActions::selectedNodes() const
{
    return m_module->nodeSelectionModel()->getAllSelectedNodes();
}

QAction* koReferenceEditorActions::addAction(QMenu* menu, const QString& text, const char* iconName)
{
    QAction* action = menu->addAction(text);
    if (iconName)
        action->setIcon(icon(iconName));
    return action;
}

void koReferenceEditorActions::buildFileMenu()
{
    if (m_fileMenu)
        return;
    m_fileMenu = m_module->menuBar()->addMenu(tr("File"));
    connect(m_fileMenu->addAction(tr("Load All")), &QAction::triggered, this, [this] { m_commands->loadAll(); });
    connect(m_fileMenu->addAction(tr("Unload All")), &QAction::triggered, this, [this] { m_commands->unloadAll(); });
    m_fileMenu->addSeparator();
    connect(m_fileMenu->addAction(tr("Save All Smart Reference Changes")), &QAction::triggered, this,
            [this] { m_module->saveAllSmartChanges(); });
}

void koReferenceEditorActions::repathAll(bool sources, bool smarts)
{
    m_module->repathReferences(koReferenceCommands::allReferences(), sources, smarts);
}

void koReferenceEditorActions::buildEditMenu()
{
    if (m_editMenu)
        return;
    m_editMenu = m_module->menuBar()->addMenu(tr("Edit"));
    const auto add = [this](const QString& text, std::function<void()> handler) {
        connect(m_editMenu->addAction(text), &QAction::triggered, this, std::move(handler));
    };
    using C = koReferenceCommands;
    add(tr("Convert All to Smart References"), [this] { m_commands->convertAllToSmartReferences(); });
    m_editMenu->addSeparator();
    add(tr("Repath All"), [this] { repathAll(true, true); });
    add(tr("Remove All References"), [this] { m_commands->removeAllReferences(); });
    m_editMenu->addSeparator();
    add(tr("(Re)Import All Smart References"), [this] { m_commands->reimportSmartReferences(C::allReferences()); });
    add(tr("Repath All Smart References"), [this] { repathAll(false, true); });
    add(tr("Delete All Smart References"), [this] { m_commands->deleteAllSmartReferences(); });
    m_editMenu->addSeparator();
    add(tr("(Re)Import All Source References"), [this] { m_commands->reimportSourceReferences(C::allReferences()); });
    add(tr("Repath All Source References"), [this] { repathAll(true, false); });
    add(tr("Delete All Source References"), [this] { m_commands->deleteAllSourceReferences(); });
}

void koReferenceEditorActions::buildContextMenu()
{
    if (m_contextMenu)
        return;
    m_contextMenu = new QMenu(tr("Context Menu"), m_module);
    m_load = addAction(m_contextMenu, tr("Load"), "LoadReference");
    connect(m_load, &QAction::triggered, this, [this] { m_commands->load(selectedReferences()); });
    m_unload = addAction(m_contextMenu, tr("Unload"), "UnloadReference");
    connect(m_unload, &QAction::triggered, this, [this] { m_commands->unload(selectedReferences()); });
    addEditEntries();
    m_convert = addAction(m_contextMenu, tr("Convert to Smart Reference"), "ConvertToSmart");
    connect(m_convert, &QAction::triggered, this, [this] { m_commands->convertToSmartReferences(selectedNodes()); });
    m_contextMenu->addSeparator();
    m_selectNodes = addAction(m_contextMenu, tr("Select Nodes"), "SelectNode");
    connect(m_selectNodes, &QAction::triggered, this, [this] { m_commands->selectNodes(selectedNodes()); });
    connect(addAction(m_contextMenu, tr("Select Subtree"), "SelectSubtree"), &QAction::triggered, this,
            [this] { m_module->selectSubtree(selectedReferences()); });
    m_contextMenu->addSeparator();
    m_createSmartMenu = m_contextMenu->addMenu(tr("Create Smart"));
    m_newSmart = addAction(m_createSmartMenu, tr("New"), "CreateNew");
    connect(m_newSmart, &QAction::triggered, this, [this] { m_module->createReference(false, false, selectedNodes()); });
    m_smartFromFile = addAction(m_createSmartMenu, tr("From File..."), "FileNew");
    connect(m_smartFromFile, &QAction::triggered, this,
            [this] { m_module->createReference(false, true, selectedNodes()); });
    addLinkEntries(m_smart, koReferenceCommands::SmartLink);
    m_saveSmartChanges = addAction(m_contextMenu, tr("Save Smart Changes"), "Save");
    connect(m_saveSmartChanges, &QAction::triggered, this,
            [this] { m_module->saveSmartChanges(selectedRootsWithTheirInstances()); });
    m_saveSmartAs = addAction(m_contextMenu, tr("Save Smart As"), "SaveAs");
    connect(m_saveSmartAs, &QAction::triggered, this, [this] { m_module->saveSmartAs(selectedReferences()); });
    m_contextMenu->addSeparator();
    m_createSource = addCreateSourceAction(m_contextMenu);
    addLinkEntries(m_source, koReferenceCommands::SourceLink);
}

QAction* koReferenceEditorActions::addCreateSourceAction(QMenu* menu)
{
    QAction* action = addAction(menu, tr("Create Source"), "CreateNew");
    connect(action, &QAction::triggered, this, [this] { m_module->createReference(true, true, selectedNodes()); });
    return action;
}

QList<kodReferenceNode> koReferenceEditorActions::selectedRootsWithTheirInstances() const
{
    // Clones share one file: saving one instance saves them all.
    QList<kodReferenceNode> references;
    QSet<quint64> added;
    const auto addOnce = [&](const kodNode& node) {
        const kodReferenceNode reference = node.isTypeOf(kodReferenceNode::staticMetaObject)
            ? kodReferenceNode(node.getObjectId())
            : kodReferenceNode();
        if (!reference.isNull() && added.contains(reference.getObjectId()))
            return;
        added.insert(reference.getObjectId());
        references.append(reference);
    };
    for (const kodNode& root : m_module->nodeSelectionModel()->getSelectedRootNodes()) {
        addOnce(root);
        for (const kodNode& instance : root.getSharedNodes())
            addOnce(instance);
    }
    return references;
}

void koReferenceEditorActions::addEditEntries()
{
    m_contextEditMenu = m_contextMenu->addMenu(tr("Edit"));
    m_rename = addAction(m_contextEditMenu, tr("Rename"), "RenameReference");
    connect(m_rename, &QAction::triggered, this, [this] {
        m_module->m_treeView->edit(m_module->nodeSelectionModel()->getFirstSelectedIndex());
    });
    m_clone = addAction(m_contextEditMenu, tr("Clone"), "Duplicate");
    m_clone->setToolTip(tr("Clones selected root items"));
    connect(m_clone, &QAction::triggered, this,
            [this] { m_commands->clone(m_module->nodeSelectionModel()->getSelectedRootNodes()); });
    m_repath = addAction(m_contextEditMenu, tr("Repath"), "Repath");
    connect(m_repath, &QAction::triggered, this,
            [this] { m_module->repathReferences(selectedReferences(), true, true); });
    m_remove = addAction(m_contextEditMenu, tr("Remove"), "Remove");
    connect(m_remove, &QAction::triggered, this, [this] { m_commands->removeReferences(selectedReferences()); });
}

void koReferenceEditorActions::addLinkEntries(LinkActions& actions, koReferenceCommands::Link link)
{
    const bool smart = link == koReferenceCommands::SmartLink;
    addReimportMenu(actions, link);
    actions.replace = addAction(m_contextMenu, smart ? tr("Replace Smart") : tr("Replace Source"), "Replace");
    connect(actions.replace, &QAction::triggered, this, [this, smart] {
        if (smart)
            m_module->replaceSmart(m_module->singleSelectedReference(), QString());
        else
            m_module->replaceSource(m_module->singleSelectedReference(), QString());
    });
    actions.repath = addAction(m_contextMenu, smart ? tr("Repath Smart") : tr("Repath Source"), "Repath");
    connect(actions.repath, &QAction::triggered, this,
            [this, smart] { m_module->repathReferences(selectedReferences(), !smart, smart); });
    actions.remove = addAction(m_contextMenu, smart ? tr("Delete Smart") : tr("Delete Source"), "Delete");
    connect(actions.remove, &QAction::triggered, this, [this, smart] {
        if (smart)
            m_commands->deleteSmartReferences(selectedReferences());
        else
            m_commands->deleteSourceReferences(selectedReferences());
    });
    actions.open = addAction(m_contextMenu, smart ? tr("Open Smart in Explorer") : tr("Open Source in Explorer"),
                             "FileOpen");
    connect(actions.open, &QAction::triggered, this, [this, smart] {
        if (smart)
            m_commands->openSmartLocation(selectedReferences());
        else
            m_commands->openSourceLocation(selectedReferences());
    });
}

void koReferenceEditorActions::addReimportMenu(LinkActions& actions, koReferenceCommands::Link link)
{
    using C = koReferenceCommands;
    const bool smart = link == C::SmartLink;
    actions.reimportMenu = m_contextMenu->addMenu(smart ? tr("(Re)Import Smart") : tr("(Re)Import Source"));
    actions.reimportSelected = addAction(actions.reimportMenu, tr("Selected"), "ReimportSelected");
    actions.reimportSelected->setToolTip(tr("(Re)Import Selected"));
    connect(actions.reimportSelected, &QAction::triggered, this,
            [this, link] { reimport(link, selectedReferences()); });
    actions.reimportOutdated = addAction(actions.reimportMenu, tr("Outdated"), "ReimportOutdated");
    connect(actions.reimportOutdated, &QAction::triggered, this, [this, link] {
        reimport(link, C::referencesWithFileState(selectedReferences(), link, koReferenceTypes::OutOfDate));
    });
    actions.reimportUnloaded =
        addAction(actions.reimportMenu, tr("Unloaded"), smart ? "ReimportUnloadedSmart" : "ReimportUnloadedSource");
    connect(actions.reimportUnloaded, &QAction::triggered, this, [this, link] {
        reimport(link, C::referencesWithState(selectedReferences(), link, koReferenceTypes::Unloaded));
    });
}

void koReferenceEditorActions::reimport(koReferenceCommands::Link link, const QList<kodReferenceNode>& references)
{
    if (link == koReferenceCommands::SmartLink)
        m_commands->reimportSmartReferences(references);
    else
        m_commands->reimportSourceReferences(references);
}

QAction* koReferenceEditorActions::createInfoAction()
{
    auto* action = new QAction(icon("ShowInfo"), tr("Info"), m_module);
    connect(action, &QAction::triggered, this, [this] {
        koService<koTreeService>()->showNodeInfo({m_module->nodeSelectionModel()->getSelectedNode()});
    });
    return action;
}

void koReferenceEditorActions::buildFileButtons()
{
    if (m_smart.info)
        return;
    m_smart.info = createInfoAction();
    m_source.info = createInfoAction();
    setUpFileButton(m_module->m_smartRelink, m_smart.replace);
    setUpFileButton(m_module->m_smartReload, m_smart.reimportSelected);
    setUpFileButton(m_module->m_smartRemove, m_smart.remove);
    setUpFileButton(m_module->m_smartInfo, m_smart.info);
    setUpFileButton(m_module->m_sourceRelink, m_source.replace);
    setUpFileButton(m_module->m_sourceReload, m_source.reimportSelected);
    setUpFileButton(m_module->m_sourceRemove, m_source.remove);
    setUpFileButton(m_module->m_sourceInfo, m_source.info);
}

void koReferenceEditorActions::setUpFileButton(QToolButton* button, QAction* action)
{
    const auto* platform = koService<koPlatformService>();
    button->setObjectName(QStringLiteral("ReferenceEditorFileButton"));
    button->setFixedSize(int(24 * platform->getUiScaleFactorX()), int(24 * platform->getUiScaleFactorY()));
    button->setIconSize(QSize(platform->getToolIconWidth(), platform->getToolIconHeight()));
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    button->setDefaultAction(action);
}

void koReferenceEditorActions::buildQuickActionBar()
{
    if (m_quickActionBar)
        return;
    m_quickActionBar = new QKOToolBar(tr("ReferenceEditorActions"), m_module);
    m_quickActionBar->setObjectName(QStringLiteral("QuickActionBar"));
    m_quickActionBar->setAllowedAreas(Qt::BottomToolBarArea);
    m_quickActionBar->setMovable(false);
    m_quickActionBar->setFloatable(false);
    m_quickActionBar->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_module->addToolBar(Qt::BottomToolBarArea, m_quickActionBar);

    QAction* create = m_quickActionBar->addAction(icon("CreateNew"), tr("Create"));
    create->setToolTip(tr("Create a new smart or source reference"));
    create->setMenu(createCreateMenu());
    connect(create, &QAction::triggered, this, [this, create] {
        if (auto* button = qobject_cast<QToolButton*>(m_quickActionBar->widgetForAction(create)))
            button->showMenu();
    });
    m_quickActionBar->addAction(m_clone);
    m_quickActionBar->addAction(m_selectNodes);
    connect(m_quickActionBar->addAction(icon("Delete"), tr("Remove")), &QAction::triggered, this,
            [this] { m_commands->removeReferences(selectedReferences()); });
    connect(m_quickActionBar->addAction(icon("ShowInfo"), tr("Show Scene Information")), &QAction::triggered, this,
            [this] { m_commands->showSceneInformation(); });
}

QMenu* koReferenceEditorActions::createCreateMenu()
{
    auto* menu = new QMenu(m_quickActionBar);
    QMenu* createSmart = menu->addMenu(tr("Create Smart"));
    createSmart->addAction(m_newSmart);
    createSmart->addAction(m_smartFromFile);
    addCreateSourceAction(menu);
    return menu;
}

void koReferenceEditorActions::updateActions()
{
    updateActions(selectedNodes());
}

void koReferenceEditorActions::updateActions(const QList<kodNode>& selection)
{
    enableForSelection(!selection.isEmpty());
    QLineEdit* smartFile = m_module->m_smartFile;
    QLineEdit* sourceFile = m_module->m_sourceFile;
    const QSignalBlocker smartBlocker(smartFile);
    const QSignalBlocker sourceBlocker(sourceFile);
    for (QLineEdit* field : {smartFile, sourceFile}) {
        field->setEnabled(false);
        field->clear();
    }
    if (selection.isEmpty())
        return;
    // Taken by id, so that a node that is no reference still answers for its lock.
    QList<kodReferenceNode> references;
    for (const kodNode& node : selection)
        references.append(kodReferenceNode(node.getObjectId()));
    if (references.size() == 1) {
        smartFile->setText(references.first().getSmartPath());
        sourceFile->setText(references.first().getSourcePath());
    }
    applyFacts(koReferenceSelectionFacts(references));
}

void koReferenceEditorActions::enableForSelection(bool any)
{
    for (QAction* entry : m_contextMenu->actions())
        entry->setEnabled(any);
    for (QAction* create : {m_createSmartMenu->menuAction(), m_newSmart, m_smartFromFile, m_createSource})
        create->setEnabled(true);
    for (QAction* action : {m_clone, m_smart.info, m_source.info})
        action->setEnabled(any);
    m_smart.reimportSelected->setEnabled(false);
    m_source.reimportSelected->setEnabled(false);
}

void koReferenceEditorActions::applyFacts(const koReferenceSelectionFacts& facts)
{
    m_load->setEnabled(facts.load);
    m_unload->setEnabled(facts.unload);
    m_contextEditMenu->menuAction()->setEnabled(facts.editable || facts.clone);
    m_rename->setEnabled(facts.editable);
    m_clone->setEnabled(facts.clone);
    m_repath->setEnabled(facts.repath);
    m_remove->setEnabled(facts.remove);
    m_convert->setEnabled(facts.convert);
    m_createSmartMenu->menuAction()->setEnabled(facts.createSmart);
    m_createSource->setEnabled(facts.createSource);
    m_saveSmartChanges->setEnabled(facts.saveChanges);
    m_saveSmartAs->setEnabled(facts.saveAs);
    applyLinkFacts(m_smart, facts.smart);
    applyLinkFacts(m_source, facts.source);
    m_module->m_smartFile->setEnabled(facts.smart.pathField);
    m_module->m_sourceFile->setEnabled(facts.source.pathField);
}

void koReferenceEditorActions::applyLinkFacts(const LinkActions& actions, const koReferenceSelectionFacts::Link& facts)
{
    actions.reimportMenu->menuAction()->setEnabled(facts.reimportOutdated || facts.reimportSelected
                                                   || facts.reimportUnloaded);
    actions.reimportSelected->setEnabled(facts.reimportSelected);
    actions.reimportOutdated->setEnabled(facts.reimportOutdated);
    actions.reimportUnloaded->setEnabled(facts.reimportUnloaded);
    actions.replace->setEnabled(facts.replace);
    actions.repath->setEnabled(facts.repath);
    actions.remove->setEnabled(facts.remove);
    actions.open->setEnabled(facts.open);
    actions.info->setEnabled(facts.info);
}
