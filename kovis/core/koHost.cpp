#include <kovis/koHost.h>

#include "koReferenceEngine.h"

#include <kovis/koFileIOService.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koMainWindowService.h>
#include <kovis/koNodeService.h>
#include <kovis/koObjectService.h>
#include <kovis/koPermissionService.h>
#include <kovis/koPlatformService.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koTreeService.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

struct HostState
{
    std::unique_ptr<koPreferencesService> preferences;
    std::unique_ptr<koLogService> log;
    std::unique_ptr<koReferenceEngine> engine;
    std::unique_ptr<koReferenceService> references;
    std::unique_ptr<koFileIOService> fileIO;
    std::unique_ptr<koNodeService> nodes;
    std::unique_ptr<koObjectService> objects;
    std::unique_ptr<koInternalUiService> internalUi;
    std::unique_ptr<koPermissionService> permissions;
    std::unique_ptr<koTreeService> tree;
    std::unique_ptr<koMainWindowService> mainWindow;
    std::unique_ptr<koPlatformService> platform;
    std::vector<std::function<void()>> unregisterServices;
};

std::unique_ptr<HostState> s_host;

template<class T>
void install(std::unique_ptr<T>& slot, T* service)
{
    if (!slot)
        s_host->unregisterServices.emplace_back([] { koKernelServiceFactory::the()->unregisterService<T>(); });
    koKernelServiceFactory::the()->registerService<T>(service);
    slot.reset(service);
}

void registerMetaTypes()
{
    qRegisterMetaType<kodNode>("kodNode");
    qRegisterMetaType<kodReferenceNode>("kodReferenceNode");
    qRegisterMetaType<QList<kodNode>>("QList<kodNode>");
    qRegisterMetaType<QList<kodReferenceNode>>("QList<kodReferenceNode>");
    qRegisterMetaType<koReferenceTypes::FileState>("koReferenceTypes::FileState");
    qRegisterMetaType<koReferenceTypes::State>("koReferenceTypes::State");
    // Item models hand nodes out as kodNode; callers ask for the reference handle.
    QMetaType::registerConverter<kodNode, kodReferenceNode>(
        [](const kodNode& node) { return kodReferenceNode(node.getObjectId()); });
}

void announceSceneSelection()
{
    QList<kodReferenceNode> references;
    for (const kodNode& node : s_host->tree->getSelectedNodes()) {
        if (node.isTypeOf(kodReferenceNode::staticMetaObject))
            references.append(kodReferenceNode(node.getObjectId()));
    }
    emit s_host->references->sceneSelectionChanged(references);
}

void connectNodeSignals()
{
    QObject::connect(s_host->engine->store(), &koSceneStore::nodeChanged, s_host->nodes.get(),
                     [](quint64 id, const QByteArray& property) {
                         const kodNode node(id);
                         if (property == "name")
                             emit s_host->nodes->nameChanged(unsigned(id), node.getName());
                         emit s_host->objects->propertyChanged(node, property);
                     });
    QObject::connect(s_host->engine.get(), &koReferenceEngine::warning, s_host->log.get(),
                     [](const QString& message) { s_host->log->logWarning(QStringLiteral("References"), message); });
    QObject::connect(s_host->engine.get(), &koReferenceEngine::notice, s_host->log.get(),
                     [](const QString& message) { s_host->log->logInfo(QStringLiteral("References"), message); });
}

} // namespace

void koHost::initialize(const QString& settingsFile)
{
    if (s_host)
        return;
    registerMetaTypes();
    s_host = std::make_unique<HostState>();
    install(s_host->preferences, new koPreferencesService(settingsFile));
    install(s_host->log, new koLogService);
    s_host->engine = std::make_unique<koReferenceEngine>();
    install(s_host->references, new koReferenceService);
    install(s_host->fileIO, new koFileIOService);
    install(s_host->nodes, new koNodeService);
    install(s_host->objects, new koObjectService);
    install(s_host->internalUi, new koInternalUiService);
    install(s_host->permissions, new koPermissionService);
    install(s_host->mainWindow, new koMainWindowService);
    install(s_host->platform, new koPlatformService);
    setTreeService(new koTreeService);
    connectNodeSignals();
}

void koHost::shutdown()
{
    if (!s_host)
        return;
    for (const auto& unregister : s_host->unregisterServices)
        unregister();
    s_host.reset();
}

bool koHost::isInitialized()
{
    return s_host != nullptr;
}

void koHost::setTreeService(koTreeService* service)
{
    install(s_host->tree, service);
    QObject::connect(service, &koTreeService::selectionChanged, service, &announceSceneSelection);
}

void koHost::setMainWindowService(koMainWindowService* service)
{
    install(s_host->mainWindow, service);
}

void koHost::setPlatformService(koPlatformService* service)
{
    install(s_host->platform, service);
}

koReferenceEngine* koHost::engine()
{
    return s_host ? s_host->engine.get() : nullptr;
}
