#include "koReferenceEditorModule.h"

#include "HtmlDelegate.h"
#include "koReferenceCommands.h"
#include "koReferenceCreateCommands.h"
#include "koReferenceEditorActions.h"
#include "koReferenceFilterMenu.h"
#include "koReferenceFilterModel.h"
#include "koReferenceFlatModelItem.h"
#include "koReferenceModelItem.h"
#include "koReferenceRepathFlow.h"
#include "koReferenceSaveCommands.h"
#include "koReferenceTreeModel.h"
#include "koReferenceTreeRootItem.h"

#include <kovis/QKOToolBar.h>
#include <kovis/koFileIOService.h>
#include <kovis/koFileStateText.h>
#include <kovis/koHeaderView.h>
#include <kovis/koIconManager.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koMainWindowService.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koNodeService.h>
#include <kovis/koObjectService.h>
#include <kovis/koPlatformService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koTreeService.h>

#include <QEvent>
#include <QScrollBar>
#include <QTimer>

namespace {

constexpr int columnCount = koReferenceModelItem::ColumnCount;

} // namespace

koReferenceEditorModule::koReferenceEditorModule(QWidget* parent, const QString& objectName)
    : QMainWindow(parent, Qt::WindowFlags())
    , m_saveCommands(std::make_unique<koReferenceSaveCommands>(*this))
    , m_createCommands(std::make_unique<koReferenceCreateCommands>(*this))
    , m_commands(std::make_unique<koReferenceCommands>(this))
    , m_filterMenu(std::make_unique<koReferenceFilterMenu>(this))
    , m_actions(std::make_unique<koReferenceEditorActions>(this, m_commands.get()))
{
    setObjectName(objectName);
    setupUi(this);
    setUpModel();
    setUpViews();
    connectPathFields();
    buildActions();
    registerModule();
    connectHost();
}

koReferenceEditorModule::~koReferenceEditorModule()
{
    // Before the main window's layout goes, which the bar reaches for as it leaves.
    delete m_actions->quickActionBar();
}

QSize koReferenceEditorModule::sizeHint() const
{
    return QSize(1200, 500);
}

QSize koReferenceEditorModule::minimumSizeHint() const
{
    return QSize(300, 300);
}

void koReferenceEditorModule::setUpModel()
{
    if (m_model)
        return;
    m_model = std::make_unique<koReferenceTreeModel>();
    m_model->setHeader(koReferenceTreeModel::columnTitles());
    m_filterModel = new koReferenceFilterModel(this);
    // A match deep in the graph keeps the rows above it, so it can be seen.
    m_filterModel->setRecursiveFilteringEnabled(true);
    m_filterModel->setSourceModel(m_model.get());
    m_selectionModel = new koNodeBasedSelectionModel(m_filterModel, this);
    connect(m_selectionModel, &QItemSelectionModel::selectionChanged, this, &koReferenceEditorModule::updateActions);
    setListMode(0);
    connectSceneNotifications();
}

void koReferenceEditorModule::connectSceneNotifications()
{
    connect(koService<koReferenceService>(), &koReferenceService::sceneSelectionChanged, this,
            &koReferenceEditorModule::onSceneSelectionChanged);
    connect(koService<koNodeService>(), &koNodeService::nameChanged, this,
            [this](unsigned id, const QString&) { updateNodeItem(kodReferenceNode(id)); });
    connect(koService<koObjectService>(), &koObjectService::propertyChanged, this,
            [this](const kodObject& object, const QByteArray& property) {
                if (property != "name")
                    return;
                updateNodeItem(kodNode(object.getObjectId()));
                koService<koTreeService>()->refresh(false);
            });
}

void koReferenceEditorModule::setUpViews()
{
    const auto* platform = koService<koPlatformService>();
    m_treeView->setIconSize(QSize(platform->getIconWidth(), platform->getIconHeight()));
    for (QTreeView* view : {m_treeView, m_smartColumns, m_sourceColumns})
        view->setAlternatingRowColors(true);
    m_treeView->installEventFilter(this);
    m_treeView->setItemDelegate(new HtmlDelegate(m_treeView));
    m_treeView->header()->setSectionsMovable(false);
    m_smartButtonGroup->installEventFilter(this);
    m_listMode->installEventFilter(this);

    setUpSideHeader(m_sourceColumns);
    setUpSideHeader(m_smartColumns);
    for (QTreeView* view : {m_smartColumns, m_sourceColumns, m_treeView})
        setUpView(view);

    connect(m_treeView, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        m_smartColumns->collapse(index);
        m_sourceColumns->collapse(index);
    });
    connect(m_treeView, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        m_smartColumns->expand(index);
        m_sourceColumns->expand(index);
    });
    m_smartColumns->setItemDelegate(new HtmlDelegate(m_smartColumns));
    m_sourceColumns->setItemDelegate(new HtmlDelegate(m_sourceColumns));
    connect(m_treeView->verticalScrollBar(), &QScrollBar::rangeChanged, m_treeScrollBar, &QScrollBar::setRange);

    showColumns(m_treeView, {0, 1}, false);
    showColumns(m_smartColumns, {2, 3, 4, 5}, true);
    showColumns(m_sourceColumns, {6, 7, 8, 9}, true);
    m_treeViewSplitter->setCollapsible(0, false);
    m_treeViewSplitter->setCollapsible(1, true);
    m_treeViewSplitter->setCollapsible(2, true);
    // The names need room as much as the files do; the splitter keeps these proportions.
    m_treeViewSplitter->setSizes({400, 500, 300});
    m_treeView->setColumnHidden(1, true);
    setUpListMode();
    levelRows();
    fitStateColumns();
}

void koReferenceEditorModule::levelRows()
{
    // A row reads across the three views: they share the height of the tallest of
    // their rows, the main view's with its icons, and of the tallest header.
    const std::initializer_list<QTreeView*> views{m_treeView, m_smartColumns, m_sourceColumns};
    int rowHeight = 0;
    int headerHeight = 0;
    for (const QTreeView* view : views) {
        rowHeight = qMax(rowHeight, HtmlDelegate::naturalSize(view, QStringLiteral("Xg"), m_treeView->iconSize()).height());
        headerHeight = qMax(headerHeight, view->header()->sizeHint().height());
    }
    for (QTreeView* view : views) {
        static_cast<HtmlDelegate*>(view->itemDelegate())->setRowHeight(rowHeight);
        view->header()->setMinimumHeight(headerHeight);
    }
}

void koReferenceEditorModule::fitStateColumns()
{
    QStringList states;
    for (int state = koReferenceTypes::UpToDate; state <= koReferenceTypes::Unsaved; ++state)
        states.append(koFileStateText::state(koReferenceTypes::FileState(state), QString()));
    // Figures are as wide as each other in the fonts of item views.
    const QStringList dates{koFileStateText::date(QDateTime(QDate(8888, 8, 8), QTime(8, 8))),
                            koFileStateText::date(QDateTime())};
    fitColumn(m_smartColumns, koReferenceModelItem::SmartStatusColumn, states);
    fitColumn(m_smartColumns, koReferenceModelItem::SmartModifiedColumn, dates);
    fitColumn(m_sourceColumns, koReferenceModelItem::SourceStatusColumn, states);
    fitColumn(m_sourceColumns, koReferenceModelItem::SourceModifiedColumn, dates);
}

void koReferenceEditorModule::fitColumn(QTreeView* view, int column, const QStringList& texts)
{
    // Sized for every text the column can hold, not for the rows that happen to be open.
    int width = view->header()->sectionSizeHint(column);
    for (const QString& text : texts)
        width = qMax(width, HtmlDelegate::naturalSize(view, text, QSize()).width());
    view->header()->resizeSection(column, width);
}

void koReferenceEditorModule::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        levelRows();
        fitStateColumns();
    }
}

void koReferenceEditorModule::setUpSideHeader(QTreeView* view)
{
    auto* header = new koHeaderView<QTreeView>(view);
    for (int column = 0; column < columnCount; ++column)
        header->setSectionHideable(column, false);
    header->setStretchLastSection(true);
    header->setSectionsMovable(false);
}

void koReferenceEditorModule::setUpView(QTreeView* view)
{
    QScrollBar* own = view->verticalScrollBar();
    connect(own, &QScrollBar::valueChanged, m_treeScrollBar, &QScrollBar::setValue);
    connect(m_treeScrollBar, &QScrollBar::valueChanged, own, &QScrollBar::setValue);
    connect(view, &QWidget::customContextMenuRequested, this,
            [this, view](const QPoint& pos) { showContextMenu(view, pos); });
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setEditTriggers(QAbstractItemView::SelectedClicked);
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    view->setUniformRowHeights(true);
    view->setExpandsOnDoubleClick(false);
    view->setAutoScroll(false);
    view->setModel(m_filterModel);
    view->setSelectionModel(m_selectionModel);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    for (int column = 0; column < columnCount; ++column)
        view->setColumnHidden(column, true);
}

void koReferenceEditorModule::showColumns(QTreeView* view, std::initializer_list<int> columns, bool hideable)
{
    auto* header = qobject_cast<koHeaderViewBase*>(view->header());
    for (int column : columns) {
        view->setColumnHidden(column, false);
        if (header)
            header->setSectionHideable(column, hideable);
    }
}

void koReferenceEditorModule::setUpListMode()
{
    m_listMode->addItem(koIconManager::getIcon(QStringLiteral("ModuleScenegraph"), QString()), tr("Reference Graph"));
    m_listMode->addItem(koIconManager::getIcon(QStringLiteral("ListView"), QString()), tr("Reference List"));
    connect(m_listMode, qOverload<int>(&QComboBox::currentIndexChanged), this, &koReferenceEditorModule::setListMode);
    connect(m_treeSlider, &QSlider::valueChanged, this, &koReferenceEditorModule::expandToSliderDepth);
}

void koReferenceEditorModule::buildActions()
{
    m_actions->buildFileMenu();
    m_actions->buildEditMenu();
    m_filterMenu->buildFilterMenu();
    m_filterMenu->buildFilterButton();
    m_actions->buildContextMenu();
    m_actions->buildFileButtons();
    m_actions->buildQuickActionBar();
}

void koReferenceEditorModule::registerModule()
{
    const QIcon icon = koIconManager::getIcon(QStringLiteral("ModuleReferenceEditor"), QString());
    koService<koMainWindowService>()->registerModule(QStringLiteral("Reference Editor"), QStringLiteral("Scene"), this,
                                                   QStringLiteral("Toolclip_Assembly"), icon, tr("References"), false);
}

void koReferenceEditorModule::connectHost()
{
    auto* references = koService<koReferenceService>();
    connect(references, &koReferenceService::updateMonitoringChanged, this, &koReferenceEditorModule::scheduleReload);
    connect(references, &koReferenceService::referencesChanged, this, &koReferenceEditorModule::scheduleReload);
    connectSmartPathsUpdate();
    connect(references, &koReferenceService::referenceCreated, this, &koReferenceEditorModule::onReferenceCreated);
    connectRepathRequests();
    connectSaveRequests();
    connectReplaceRequests();
    m_commands->connectHostRequests();
    auto* fileIO = koService<koFileIOService>();
    connect(fileIO, &koFileIOService::projectLoad, this, [this] { m_projectLoading = true; });
    connect(fileIO, &koFileIOService::projectLoadFinished, this, [this] {
        m_projectLoading = false;
        scheduleReload();
    });
}

void koReferenceEditorModule::connectRepathRequests()
{
    auto* ui = koService<koInternalUiService>();
    connect(ui, &koInternalUiService::requestUiRepathReferences, this,
            [this](const QList<kodReferenceNode>& nodes) { repathReferences(nodes, true, true); });
    connect(ui, &koInternalUiService::requestUiRepathSmarts, this,
            [this](const QList<kodReferenceNode>& nodes) { repathReferences(nodes, false, true); });
    connect(ui, &koInternalUiService::requestUiRepathSources, this,
            [this](const QList<kodReferenceNode>& nodes) { repathReferences(nodes, true, false); });
}

void koReferenceEditorModule::connectSmartPathsUpdate()
{
    // The host asks for the file it is about to write itself: no new smart file may take it.
    connect(koService<koInternalUiService>(), &koInternalUiService::requestUiSmartPathsUpdate, this,
            [this](const kodNode& node, const QString& path, bool& result) {
                const QList<kodReferenceNode> references = koService<koReferenceService>()->getReferences(node);
                result = updateUnsavedSmartPaths(references, path, true) == DialogAccepted;
            });
}

void koReferenceEditorModule::connectSaveRequests()
{
    auto* ui = koService<koInternalUiService>();
    connect(ui, &koInternalUiService::requestUiSaveSmarts, this, &koReferenceEditorModule::saveSmartChanges);
    connect(ui, &koInternalUiService::requestUiSaveSmartsAs, this, &koReferenceEditorModule::saveSmartAs);
}

void koReferenceEditorModule::connectReplaceRequests()
{
    auto* ui = koService<koInternalUiService>();
    connect(ui, &koInternalUiService::requestUiReplaceSmart, this,
            [this](const kodReferenceNode& reference) { replaceSmart(reference, QString()); });
    connect(ui, &koInternalUiService::requestUiReplaceSource, this,
            [this](const kodReferenceNode& reference) { replaceSource(reference, QString()); });
}

void koReferenceEditorModule::connectPathFields()
{
    const auto replaceWithTypedPath = [this](QLineEdit* field, auto replace) {
        connect(field, &QLineEdit::editingFinished, this, [this, field, replace] {
            const kodReferenceNode reference = singleSelectedReference();
            if (!reference.isNull())
                (this->*replace)(reference, field->text());
        });
    };
    replaceWithTypedPath(m_smartFile, &koReferenceEditorModule::replaceSmart);
    replaceWithTypedPath(m_sourceFile, &koReferenceEditorModule::replaceSource);
}

void koReferenceEditorModule::repathReferences(const QList<kodReferenceNode>& nodes, bool sources, bool smarts)
{
    if (koReferenceRepathFlow::run(this, nodes, sources, smarts))
        scheduleReload();
}

ReferenceDialogCode koReferenceEditorModule::updateUnsavedSmartPaths(const QList<kodReferenceNode>& references,
                                                                     const QString& reservedPath, bool warnOverwrite)
{
    return m_saveCommands->updateUnsavedSmartPaths(references, reservedPath, warnOverwrite);
}

void koReferenceEditorModule::saveSmartChanges(const QList<kodReferenceNode>& references)
{
    m_saveCommands->saveSmartChanges(references);
}

void koReferenceEditorModule::saveAllSmartChanges()
{
    m_saveCommands->saveAll();
}

void koReferenceEditorModule::saveSmartAs(const QList<kodReferenceNode>& references)
{
    m_saveCommands->saveAs(references);
}

void koReferenceEditorModule::createReference(bool source, bool fromFile, const QList<kodNode>& selectedNodes)
{
    m_createCommands->create(source, fromFile, selectedNodes);
}

void koReferenceEditorModule::replaceSmart(const kodReferenceNode& reference, const QString& path)
{
    m_createCommands->replaceSmart(reference, path);
}

void koReferenceEditorModule::replaceSource(const kodReferenceNode& reference, const QString& path)
{
    m_createCommands->replaceSource(reference, path);
}

void koReferenceEditorModule::scheduleReload()
{
    if (m_projectLoading || m_reloadPending)
        return;
    m_reloadPending = true;
    QTimer::singleShot(0, this, &koReferenceEditorModule::reloadModel);
}

void koReferenceEditorModule::reloadModel()
{
    m_reloadPending = false;
    m_model->reload();
    {
        const QSignalBlocker blocker(m_treeSlider);
        m_treeSlider->setRange(0, qMax(treeDepth(QModelIndex()) - 2, 0));
    }
    updateActions();
    levelRows();
    if (!isFlatList())
        m_treeView->resizeColumnToContents(0);
    m_smartColumns->resizeColumnToContents(koReferenceModelItem::SmartLocationColumn);
    m_sourceColumns->resizeColumnToContents(koReferenceModelItem::SourceLocationColumn);
}

int koReferenceEditorModule::treeDepth(const QModelIndex& index) const
{
    const int rows = m_model->rowCount(index);
    int deepest = 0;
    for (int row = 0; row < rows; ++row)
        deepest = qMax(deepest, treeDepth(m_model->index(row, 0, index)));
    return 1 + deepest;
}

void koReferenceEditorModule::setListMode(int mode)
{
    if (mode != 0) {
        storeExpandedStates();
        m_model->clear();
        m_model->setRootItem(new koReferenceFlatModelItem(kodNode()));
    } else {
        m_model->clear();
        m_model->setRootItem(new koReferenceTreeRootItem(kodNode()));
        restoreExpandedStates();
    }
    m_treeSlider->setVisible(mode == 0);
    m_treeView->setColumnHidden(1, mode == 0);
    scheduleReload();
    m_treeView->resizeColumnToContents(0);
    m_filterModel->invalidate();
}

bool koReferenceEditorModule::isFlatList() const
{
    return m_listMode->currentIndex() == 1;
}

void koReferenceEditorModule::expandToSliderDepth(int value)
{
    changeEveryViewAtOnce([value](koReferenceTreeView* view) {
        view->collapseAll();
        if (value >= 1)
            view->expandToDepth(value - 1);
    });
}

void koReferenceEditorModule::expandAllRows()
{
    changeEveryViewAtOnce([](koReferenceTreeView* view) { view->expandAllBranches(); });
}

void koReferenceEditorModule::changeEveryViewAtOnce(const std::function<void(koReferenceTreeView*)>& change)
{
    // The side columns follow the graph row by row otherwise, and lay themselves out
    // once per row: seconds on a large scene.
    const QSignalBlocker rowByRow(m_treeView);
    for (koReferenceTreeView* view : {m_treeView, m_smartColumns, m_sourceColumns})
        change(view);
}

void koReferenceEditorModule::updateNodeItem(const kodNode& node)
{
    m_model->beginEdit();
    if (koModelItem* item = m_model->findItemById(QVariant::fromValue(node)))
        item->reload();
    m_model->endEdit();
}

void koReferenceEditorModule::onReferenceCreated(const kodReferenceNode& reference)
{
    scheduleReload();
    const kodNode node(reference.getObjectId());
    QTimer::singleShot(0, this, [this, node] {
        m_selectionModel->selectNodes({node});
        scrollToFirstSelected();
    });
}

void koReferenceEditorModule::scrollToFirstSelected()
{
    m_treeView->scrollTo(m_selectionModel->getFirstSelectedIndex(), QAbstractItemView::EnsureVisible);
}

void koReferenceEditorModule::onSceneSelectionChanged(const QList<kodReferenceNode>& references)
{
    if (!isVisible() || references.isEmpty())
        return;
    QList<kodNode> nodes;
    for (const kodReferenceNode& reference : references) {
        nodes.append(reference);
        if (isFlatList())
            nodes += reference.getSharedNodes();
    }
    m_selectionModel->selectNodes(nodes);
    scrollToFirstSelected();
}

QList<kodReferenceNode> koReferenceEditorModule::selectedReferences() const
{
    QList<kodReferenceNode> references;
    for (const kodNode& node : m_selectionModel->getAllSelectedNodes()) {
        references.append(node.isTypeOf(kodReferenceNode::staticMetaObject) ? kodReferenceNode(node.getObjectId())
                                                                            : kodReferenceNode());
    }
    return references;
}

kodReferenceNode koReferenceEditorModule::singleSelectedReference() const
{
    const QList<kodReferenceNode> references = selectedReferences();
    return references.size() == 1 ? references.first() : kodReferenceNode();
}

void koReferenceEditorModule::selectSubtree(const QList<kodReferenceNode>& references)
{
    QList<kodNode> subtree;
    for (const kodReferenceNode& reference : references) {
        subtree.clear();
        QList<kodNode> pending{reference};
        while (!pending.isEmpty()) {
            const kodNode node = pending.takeLast();
            subtree.append(node);
            const QList<kodNode> children = node.getChildren();
            for (auto child = children.crbegin(); child != children.crend(); ++child)
                pending.append(*child);
        }
        m_selectionModel->selectNodes(subtree);
    }
}

void koReferenceEditorModule::storeExpandedStates()
{
    m_expandedNodes.clear();
    QList<QModelIndex> pending{m_treeView->rootIndex()};
    while (!pending.isEmpty()) {
        const QModelIndex parent = pending.takeLast();
        for (int row = m_filterModel->rowCount(parent) - 1; row >= 0; --row) {
            const QModelIndex index = m_filterModel->index(row, 0, parent);
            if (index.isValid() && m_treeView->isExpanded(index)) {
                const kodNode node = m_filterModel->mapToSource(index).data(Qt::UserRole).value<kodNode>();
                if (!node.isNull())
                    m_expandedNodes.append(node);
            }
            if (m_filterModel->hasChildren(index))
                pending.append(index);
        }
    }
}

void koReferenceEditorModule::restoreExpandedStates()
{
    for (const kodNode& node : qAsConst(m_expandedNodes)) {
        const QModelIndex index = m_filterModel->mapFromSource(m_model->indexFromId(QVariant::fromValue(node), 0));
        if (index.isValid())
            m_treeView->expand(index);
    }
}

void koReferenceEditorModule::updateActions()
{
    m_actions->updateActions();
}

void koReferenceEditorModule::showContextMenu(QAbstractItemView* view, const QPoint& pos)
{
    updateActions();
    m_actions->contextMenu()->exec(view->viewport()->mapToGlobal(pos));
}

bool koReferenceEditorModule::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Resize)
        return false;
    if (watched == m_treeView)
        m_treeScrollBar->setMinimumHeight(m_treeView->height());
    else if (watched == m_smartButtonGroup)
        m_sliderGroup->setFixedHeight(m_smartButtonGroup->height());
    else if (watched == m_listMode) {
        m_smartLabel->setFixedHeight(m_listModeGroup->height());
        m_sourceLabel->setFixedHeight(m_listModeGroup->height());
    }
    return false;
}
