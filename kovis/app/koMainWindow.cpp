#include "koMainWindow.h"

#include "koReferenceEngine.h"
#include "koPreferencesDialog.h"
#include "koSceneTreeModel.h"
#include "koSceneTreeView.h"
#include "koViewport.h"

#include <kovis/koFileDialog.h>
#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koMainWindowService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koUndoStack.h>

#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QUndoStack>

namespace {

koFileIOService* fileIO()
{
    return koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>();
}

kodReferenceNode projectRoot()
{
    return kodReferenceNode(koHost::engine()->store()->rootId());
}

} // namespace

koMainWindow::koMainWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_sceneModel(new koSceneTreeModel(koHost::engine()->store(), this))
    , m_sceneTree(new koSceneTreeView(m_sceneModel))
    , m_viewport(new koViewport(koHost::engine()->store(), this))
{
    setObjectName(QStringLiteral("KovisMainWindow"));
    setCentralWidget(m_viewport);

    auto* sceneDock = new QDockWidget(tr("Scene"), this);
    sceneDock->setObjectName(QStringLiteral("SceneDock"));
    sceneDock->setWidget(m_sceneTree);
    addDockWidget(Qt::LeftDockWidgetArea, sceneDock);

    createFileMenu();
    createEditMenu();
    createViewMenu();
    auto* modules = koKernelServiceFactory::the()->getServiceOrNull<koMainWindowService>();
    connect(modules, &koMainWindowService::moduleRegistered, this, &koMainWindow::addModule);
    for (int i = 0; i < modules->modules().size(); ++i)
        addModule(i);

    auto* log = koKernelServiceFactory::the()->getServiceOrNull<koLogService>();
    connect(log, &koLogService::messageLogged, this, [this](koLogService::Level, const QString&, const QString& message) {
        statusBar()->showMessage(message, 10000);
    });
    connect(fileIO(), &koFileIOService::projectLoadFinished, this, &koMainWindow::updateTitle);
    connect(koKernelServiceFactory::the()->getServiceOrNull<koReferenceService>(),
            &koReferenceService::referencesChanged, this, &koMainWindow::updateTitle);
    connect(koUndoStack::the()->stack(), &QUndoStack::indexChanged, this, &koMainWindow::updateTitle);
    resize(1400, 820);
    updateTitle();
}

koMainWindow::~koMainWindow()
{
    releaseModules();
}

void koMainWindow::createFileMenu()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&New"), this, &koMainWindow::newProject, QKeySequence::New);
    file->addAction(tr("&Open..."), this, &koMainWindow::openProjectFromDialog, QKeySequence::Open);
    file->addAction(tr("&Save"), this, &koMainWindow::save, QKeySequence::Save);
    file->addAction(tr("Save &As..."), this, &koMainWindow::saveAs, QKeySequence::SaveAs);
    file->addSeparator();
    file->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
}

void koMainWindow::createEditMenu()
{
    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    QUndoStack* stack = koUndoStack::the()->stack();
    QAction* undo = stack->createUndoAction(this, tr("&Undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* redo = stack->createRedoAction(this, tr("&Redo"));
    redo->setShortcut(QKeySequence::Redo);
    edit->addAction(undo);
    edit->addAction(redo);
    edit->addSeparator();
    edit->addAction(tr("&Preferences..."), this, [this] {
        koPreferencesDialog dialog(this);
        dialog.exec();
    }, QKeySequence::Preferences);
}

void koMainWindow::createViewMenu()
{
    QMenu* view = menuBar()->addMenu(tr("&View"));
    view->addAction(tr("Fit &All"), m_viewport, &koViewport::fitAll, Qt::Key_Home);
    view->addAction(tr("Fit &Selection"), m_viewport, &koViewport::fitSelection, Qt::Key_F);
    QAction* edges = view->addAction(tr("Show &Edges"), m_viewport, &koViewport::setShowEdges, Qt::Key_E);
    edges->setCheckable(true);
    // Single keys act only where the view has the focus, never while typing elsewhere.
    for (QAction* action : view->actions()) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        m_viewport->addAction(action);
    }
}

QMenu* koMainWindow::groupMenu(const QString& group)
{
    QMenu*& menu = m_groupMenus[group];
    if (!menu)
        menu = menuBar()->addMenu(group);
    return menu;
}

void koMainWindow::addModule(int index)
{
    const koMainWindowService::Module& module =
        koKernelServiceFactory::the()->getServiceOrNull<koMainWindowService>()->modules().at(index);
    if (!module.window)
        return;
    auto* dock = new QDockWidget(module.caption, this);
    dock->setObjectName(module.title);
    dock->setWindowIcon(module.icon);
    dock->setWidget(module.window);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    QAction* toggle = dock->toggleViewAction();
    toggle->setText(module.title);
    toggle->setIcon(module.icon);
    groupMenu(module.group)->addAction(toggle);
    m_moduleDocks.append(dock);
}

void koMainWindow::releaseModules()
{
    for (QDockWidget* dock : qAsConst(m_moduleDocks)) {
        if (QWidget* window = dock->widget()) {
            window->hide();
            window->setParent(nullptr);
        }
    }
    m_moduleDocks.clear();
}

void koMainWindow::updateTitle()
{
    const kodReferenceNode root = projectRoot();
    const QString path = fileIO()->getProjectPath();
    const QString name = path.isEmpty() ? root.getName() : QFileInfo(path).fileName();
    setWindowTitle(tr("%1%2 - Kovis").arg(name, root.isSelfOrSubReferenceChanged() ? QStringLiteral("*") : QString()));
}

bool koMainWindow::maybeSave()
{
    if (!projectRoot().isSelfOrSubReferenceChanged())
        return true;
    const auto answer = QMessageBox::warning(this, tr("Unsaved Changes"),
                                             tr("The project has changes that are not saved. Save them first?"),
                                             QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                                             QMessageBox::Save);
    if (answer == QMessageBox::Save)
        return save();
    return answer == QMessageBox::Discard;
}

void koMainWindow::newProject()
{
    if (maybeSave())
        fileIO()->newProject();
}

bool koMainWindow::openProject(const QString& path)
{
    if (fileIO()->loadProject(path))
        return true;
    const QString reason = koKernelServiceFactory::the()->getServiceOrNull<koLogService>()->lastMessage();
    QMessageBox::critical(this, tr("Open Project"), tr("The project could not be opened.\n\n%1").arg(reason));
    return false;
}

void koMainWindow::openProjectFromDialog()
{
    if (!maybeSave())
        return;
    const QString path = koFileDialog::getOpenFileName(this, tr("Open Project"), QFileInfo(fileIO()->getProjectPath()).path(),
                                                      fileIO()->getImportFileFilter(koFileIOService::ProjectFiles));
    if (!path.isEmpty())
        openProject(path);
}

bool koMainWindow::save()
{
    if (projectRoot().getSmartFileState() == koReferenceTypes::Unsaved)
        return saveAs();
    return writeProject(QString());
}

bool koMainWindow::saveAs()
{
    const QString path = koFileDialog::getSaveFileName(this, tr("Save Project As"), fileIO()->getProjectPath(),
                                                      fileIO()->getImportFileFilter(koFileIOService::ProjectFiles));
    return !path.isEmpty() && writeProject(path);
}

bool koMainWindow::writeProject(const QString& path)
{
    const koFileIOService::SaveOutcome outcome = fileIO()->writeProject(path);
    if (outcome == koFileIOService::SaveOutcome::Failed) {
        const QString reason = koKernelServiceFactory::the()->getServiceOrNull<koLogService>()->lastMessage();
        QMessageBox::critical(this, tr("Save Project"), tr("The project could not be saved.\n\n%1").arg(reason));
    }
    return outcome == koFileIOService::SaveOutcome::Saved;
}

bool koMainWindow::saveScreenshot(const QString& path)
{
    return grab().save(path, "PNG");
}

void koMainWindow::closeEvent(QCloseEvent* event)
{
    if (maybeSave())
        event->accept();
    else
        event->ignore();
}
