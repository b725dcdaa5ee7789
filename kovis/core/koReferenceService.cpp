#include <kovis/koReferenceService.h>

#include "koHandleList.h"
#include "koReferenceEngine.h"
#include "koReferenceFileStates.h"
#include "koReferenceLinks.h"
#include "koReferenceLoading.h"
#include "koSceneOperations.h"

#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesService.h>

namespace {

const QString monitoringEnabledKey = QStringLiteral("Reference Change Monitoring Enabled");
const QString monitoringIntervalKey = QStringLiteral("Reference Update Monitoring Interval");
const QString notificationModeKey = QStringLiteral("Reference change notification mode");
const QString convertWarningKey = QStringLiteral("Reference Show Convert to Smart Warning Enabled");
const QString storeModeKey = QStringLiteral("Reference Smart Reference Store mode");
const QString storeLocationKey = QStringLiteral("Reference Smart Reference Store Location");
const QString loadModeKey = QStringLiteral("Reference Load Sub References mode");
const QString category = QStringLiteral("References");

koReferenceEngine* engine()
{
    return koHost::engine();
}

} // namespace

koReferenceService::koReferenceService(QObject* parent)
    : koBaseService(parent)
{
    koReferenceEngine* host = engine();
    connect(host, &koReferenceEngine::referencesChanged, this,
            [this](const QVector<quint64>& ids) { emit referencesChanged(koHandleList<kodReferenceNode>(ids)); });
    connect(host, &koReferenceEngine::referenceCreated, this,
            [this](quint64 id) { emit referenceCreated(kodReferenceNode(id)); });
    connect(host, &koReferenceEngine::monitoringChanged, this, &koReferenceService::updateMonitoringChanged);
    if (auto* preferences = koKernelServiceFactory::the()->getServiceOrNull<koPreferencesService>()) {
        connect(preferences, &koPreferencesService::categoryApplied, this, [this](const QString& name) {
            if (name == category)
                loadPreferences();
        });
        loadPreferences();
    }
}

koReferenceService::~koReferenceService() = default;

void koReferenceService::loadPreferences()
{
    const auto* preferences = koKernelServiceFactory::the()->getServiceOrNull<koPreferencesService>();
    if (!preferences)
        return;
    // Only what differs from what the host does now is acted on.
    const koReferenceEngine::Settings now = engine()->settings();
    const auto update = [this](const auto& stored, const auto& current, auto setter) {
        if (stored != current)
            (this->*setter)(stored);
    };
    update(preferences->getBoolValue(monitoringEnabledKey, true), now.monitoringEnabled,
           &koReferenceService::setChangeMonitoringEnabled);
    update(preferences->getBoolValue(convertWarningKey, true), now.showConvertWarning,
           &koReferenceService::setShowConvertToSmartWarning);
    update(preferences->getIntValue(notificationModeKey, 1), now.notificationMode,
           &koReferenceService::setChangeNotificationMode);
    update(preferences->getIntValue(storeModeKey, 0), now.storeMode, &koReferenceService::setSmartReferenceStoreMode);
    update(preferences->getStringValue(storeLocationKey, QString()), now.storeLocation,
           &koReferenceService::setSmartReferenceStoreLocation);
    update(preferences->getIntValue(loadModeKey, 0), now.loadMode, &koReferenceService::setLoadSubReferencesMode);
    // A page that stores an interval of 0 pushes it itself and hears why it is refused.
    const int interval = preferences->getIntValue(monitoringIntervalKey, 5);
    if (interval > 0)
        update(interval * 1000, now.monitoringInterval, &koReferenceService::setUpdateMonitoringInterval);
}

QList<kodReferenceNode> koReferenceService::getSceneReferences() const
{
    return koHandleList<kodReferenceNode>(engine()->sceneReferences());
}

QList<kodReferenceNode> koReferenceService::getReferences(const kodNode& node) const
{
    return koHandleList<kodReferenceNode>(engine()->store()->referencesBelow(node.getObjectId()));
}

QList<kodReferenceNode> koReferenceService::getSubReferences(const kodReferenceNode& reference) const
{
    QVector<quint64> ids = engine()->store()->referencesBelow(reference.getObjectId());
    ids.removeOne(reference.getObjectId());
    return koHandleList<kodReferenceNode>(ids);
}

kodReferenceNode koReferenceService::createReference(const kodNode& parent)
{
    return kodReferenceNode(engine()->operations().createReference(parent.getObjectId()));
}

kodNode koReferenceService::removeReference(const kodReferenceNode& reference)
{
    return kodNode(engine()->operations().removeReference(reference.getObjectId()));
}

kodReferenceNode koReferenceService::convertToSmartReference(const kodNode& node)
{
    return kodReferenceNode(engine()->operations().convertToSmart(node.getObjectId()));
}

QList<kodReferenceNode> koReferenceService::importSourceReferences(const QList<kodReferenceNode>& references)
{
    QList<kodReferenceNode> imported;
    for (const kodReferenceNode& reference : references) {
        if (engine()->loading().importSource(reference.getObjectId()))
            imported.append(reference);
    }
    return imported;
}

QList<kodReferenceNode> koReferenceService::reimportSmartReferences(const QList<kodReferenceNode>& references)
{
    QList<kodReferenceNode> reimported;
    for (const kodReferenceNode& reference : references) {
        if (engine()->loading().reloadSmart(reference.getObjectId()))
            reimported.append(reference);
    }
    return reimported;
}

QStringList koReferenceService::getSceneReferenceFileExtensions() const
{
    return engine()->links().fileExtensions();
}

bool koReferenceService::showConvertToSmartWarning() const
{
    return engine()->settings().showConvertWarning;
}

int koReferenceService::getSmartReferenceStoreMode() const
{
    return engine()->settings().storeMode;
}

QString koReferenceService::getSmartReferenceStoreLocation() const
{
    return engine()->settings().storeLocation;
}

bool koReferenceService::isChangeMonitoringEnabled() const
{
    return engine()->settings().monitoringEnabled;
}

int koReferenceService::getUpdateMonitoringInterval() const
{
    return engine()->settings().monitoringInterval;
}

int koReferenceService::getChangeNotificationMode() const
{
    return engine()->settings().notificationMode;
}

int koReferenceService::getLoadSubReferencesMode() const
{
    return engine()->settings().loadMode;
}

void koReferenceService::setChangeMonitoringEnabled(bool enabled)
{
    engine()->setMonitoringEnabled(enabled);
}

void koReferenceService::setShowConvertToSmartWarning(bool show)
{
    engine()->settings().showConvertWarning = show;
}

void koReferenceService::setChangeNotificationMode(int mode)
{
    engine()->settings().notificationMode = mode;
}

void koReferenceService::setSmartReferenceStoreMode(int mode)
{
    engine()->settings().storeMode = mode;
}

void koReferenceService::setSmartReferenceStoreLocation(const QString& folder)
{
    engine()->settings().storeLocation = folder;
}

void koReferenceService::setLoadSubReferencesMode(int mode)
{
    engine()->settings().loadMode = mode;
}

void koReferenceService::setUpdateMonitoringInterval(int milliseconds)
{
    engine()->setMonitoringInterval(milliseconds);
}

void koReferenceService::checkFiles()
{
    engine()->fileStates().checkFiles();
}
