#include "koReferenceEngine.h"

#include "koFileMonitor.h"
#include "koReferenceFileStates.h"
#include "koReferenceLinks.h"
#include "koReferenceLoading.h"
#include "koReferenceSaving.h"
#include "koSceneBuilder.h"
#include "koSceneLoader.h"
#include "koSceneOperations.h"

#include <kovis/koUndoStack.h>

#include <QDir>
#include <QFileInfo>

koReferenceEngine::koReferenceEngine(QObject* parent)
    : QObject(parent)
    , m_undoStack(new koUndoStack)
    , m_store(new koSceneStore)
    , m_fileStates(std::make_unique<koReferenceFileStates>(*this))
    , m_links(std::make_unique<koReferenceLinks>(*this))
    , m_loading(std::make_unique<koReferenceLoading>(*this))
    , m_saving(std::make_unique<koReferenceSaving>(*this))
    , m_operations(std::make_unique<koSceneOperations>(*this))
    , m_builder(std::make_unique<koSceneBuilder>(*this))
    , m_monitor(new koFileMonitor(this))
{
    connectStore();
    newProject();
}

koReferenceEngine::~koReferenceEngine()
{
    m_monitor.reset();
    m_undoStack->clear();
}

void koReferenceEngine::connectStore()
{
    koSceneStore* store = m_store.data();
    koReferenceFileStates* files = m_fileStates.get();
    const auto forgetLinkedFiles = [files] { files->forgetLinkedFiles(); };
    connect(store, &koSceneStore::contentChanged, this, forgetLinkedFiles);
    connect(store, &koSceneStore::subtreeInserted, this, forgetLinkedFiles);
    connect(store, &koSceneStore::subtreeRemoved, this, forgetLinkedFiles);
    connect(store, &koSceneStore::sceneReset, this, forgetLinkedFiles);
    connect(store, &koSceneStore::contentChanged, this, &koReferenceEngine::announceShared);
    connect(store, &koSceneStore::changeStateChanged, this, &koReferenceEngine::announceShared);
    connect(store, &koSceneStore::subtreeAboutToBeRemoved, this,
            [this](quint64, quint64 id) { m_removing = m_store->referencesBelow(id); });
    connect(store, &koSceneStore::subtreeRemoved, this, [this] { announce(std::exchange(m_removing, {})); });
    connect(store, &koSceneStore::subtreeInserted, this,
            [this](quint64, quint64 id) { announce(m_store->referencesBelow(id)); });
    connect(store, &koSceneStore::nodeChanged, this, [this](quint64 id, const QByteArray& property) {
        if (property != "name")
            announce(m_store->referencesBelow(id));
    });
}

void koReferenceEngine::announce(const QVector<quint64>& ids)
{
    if (!m_projectLoading && !ids.isEmpty())
        emit referencesChanged(ids);
}

void koReferenceEngine::announceShared(quint64 shareKey)
{
    announce(m_store->instances(shareKey));
}

void koReferenceEngine::setMonitoringEnabled(bool enabled)
{
    if (m_settings.monitoringEnabled == enabled)
        return;
    m_settings.monitoringEnabled = enabled;
    m_monitor->setEnabled(enabled);
    emit monitoringChanged(enabled);
}

void koReferenceEngine::setMonitoringInterval(int milliseconds)
{
    // Monitoring stops through its own switch only; a zero interval would check without pause.
    if (milliseconds <= 0) {
        if (m_settings.monitoringEnabled) {
            emit warning(tr("A check interval of %1 seconds was not taken: monitoring goes on every %2 seconds. "
                            "Untick Enable to stop it.")
                             .arg(milliseconds / 1000)
                             .arg(m_settings.monitoringInterval / 1000));
        }
        return;
    }
    m_settings.monitoringInterval = milliseconds;
    m_monitor->setInterval(milliseconds);
}

void koReferenceEngine::resetScene(const koSceneNodeDesc& root)
{
    m_projectLoading = true;
    m_undoStack->clear();
    m_cache.clear();
    m_loading->forgetParkedContent();
    koSceneBuilder::Built out;
    m_builder->materialize(root, out);
    m_store->reset(out.nodes, out.contents);
    m_projectLoading = false;
}

void koReferenceEngine::newProject()
{
    emit projectLoad(QString());
    koSceneNodeDesc root;
    root.type = koNodeType::Reference;
    root.name = tr("Untitled");
    root.reference.hasSmart = true;
    root.reference.smartUnsaved = true;
    resetScene(root);
    emit projectLoadFinished(QString(), true);
}

bool koReferenceEngine::loadProject(const QString& path)
{
    const QString projectFile = path.isEmpty() ? path : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    emit projectLoad(projectFile);
    QString error;
    koSceneNodeDesc content;
    koSceneLoader loader(m_settings.loadMode, [this](const QString& message) { emit warning(message); });
    if (QFileInfo(projectFile).suffix().toLower() != QLatin1String("kpr")) {
        error = tr("%1 is not a Kovis project file").arg(QDir::toNativeSeparators(projectFile));
    } else if (loader.readSmartFile(projectFile, content, &error)) {
        koSceneNodeDesc root;
        root.type = koNodeType::Reference;
        root.name = content.name.isEmpty() ? QFileInfo(projectFile).completeBaseName() : content.name;
        root.reference.hasSmart = true;
        root.reference.smartPath = projectFile;
        root.children = std::move(content.children);
        resetScene(root);
        emit projectLoadFinished(projectFile, true);
        if (m_settings.notificationMode == NotifyAtSessionStart)
            m_fileStates->reportStaleFiles();
        return true;
    }
    emit warning(error);
    emit projectLoadFinished(projectFile, false);
    return false;
}

bool koReferenceEngine::saveProject(const QString& path, const SmartPathsRequest& askForSmartPaths)
{
    return m_saving->saveProject(path, askForSmartPaths);
}

QString koReferenceEngine::projectPath() const
{
    const koReferenceContent* root = m_store->contentOfNode(m_store->rootId());
    return root ? root->smartPath : QString();
}

QVector<quint64> koReferenceEngine::sceneReferences() const
{
    return m_store->referencesBelow(m_store->rootId());
}

koReferenceContent koReferenceEngine::linksOf(quint64 id) const
{
    const koReferenceContent* content = m_store->contentOfNode(id);
    return content ? *content : koReferenceContent();
}

quint64 koReferenceEngine::shareKeyOf(quint64 id) const
{
    const koNodeRecord* node = m_store->node(id);
    return node ? node->shareKey : 0;
}

void koReferenceEngine::updateLinks(quint64 id, const koReferenceContent& links, bool markOwner)
{
    const quint64 owner = markOwner ? shareKeyOf(m_store->owningReference(id)) : 0;
    m_store->setContent(shareKeyOf(id), links, owner);
}
