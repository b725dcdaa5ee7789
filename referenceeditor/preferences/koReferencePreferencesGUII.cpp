#include "koReferencePreferencesGUII.h"

#include <kovis/koFileDialog.h>
#include <kovis/koIconManager.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPlatformService.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>

#include <QIntValidator>
#include <QLocale>

namespace {

// Made at run time, not literals: the preference store keeps the keys after the
// plug-in is unloaded, and a literal's text goes with the plug-in.
const QString monitoringEnabledKey = QString::fromLatin1("Reference Change Monitoring Enabled");
const QString monitoringIntervalKey = QString::fromLatin1("Reference Update Monitoring Interval");
const QString notificationModeKey = QString::fromLatin1("Reference change notification mode");
const QString convertWarningKey = QString::fromLatin1("Reference Show Convert to Smart Warning Enabled");
const QString storeModeKey = QString::fromLatin1("Reference Smart Reference Store mode");
const QString storeLocationKey = QString::fromLatin1("Reference Smart Reference Store Location");
const QString loadModeKey = QString::fromLatin1("Reference Load Sub References mode");
const QString smartUpdateKey = QString::fromLatin1("Reference Smart update mode");
const QString preserveMaterialsKey = QString::fromLatin1("Reference Preserve Material Assignment");

const int customStoreMode = 1;

// Values are matched through the item data so that the item order stays free.
void selectData(QComboBox* comboBox, int value)
{
    comboBox->setCurrentIndex(comboBox->findData(value));
}

int currentValue(const QComboBox* comboBox)
{
    return comboBox->currentData().toInt();
}

} // namespace

koReferencePreferencesGUII::koReferencePreferencesGUII(QWidget* parent)
    : koPreferencesCategory(tr("References"), parent)
{
    setupUi(this);
    setUpStoreLocationButton();
    connect(m_selectStoreLocation, &QToolButton::clicked, this, &koReferencePreferencesGUII::selectStoreLocation);
    connect(m_changeNotificationEnabled, &QCheckBox::stateChanged, this,
            &koReferencePreferencesGUII::updateEnabledStates);
    connect(m_smartReferenceStore, &QComboBox::currentTextChanged, this,
            &koReferencePreferencesGUII::updateEnabledStates);
    fillComboBoxes();
    // Digits only: a group separator ("1,000") would read back as no number at all.
    auto* interval = new QIntValidator(0, 10000, m_updateMonitoringInterval);
    QLocale digitsOnly = QLocale::c();
    digitsOnly.setNumberOptions(QLocale::RejectGroupSeparator);
    interval->setLocale(digitsOnly);
    m_updateMonitoringInterval->setValidator(interval);
    // The persistence settings are kept and defaulted, but the host does not act on them yet.
    m_smartReferenceChangePersistanceFrame->hide();
    registerCategory();
}

void koReferencePreferencesGUII::setUpStoreLocationButton()
{
    const auto* platform = koService<koPlatformService>();
    const QSize iconSize(platform->getIconWidth(), platform->getIconHeight());
    m_selectStoreLocation->setIcon(koIconManager::getIcon(QStringLiteral("FileOpen"), QString()));
    m_selectStoreLocation->setIconSize(iconSize);
    m_selectStoreLocation->setFixedSize(iconSize + QSize(2, 2));
}

void koReferencePreferencesGUII::fillComboBoxes()
{
    m_changeNotificationMode->addItem(tr("Always"), 1);
    m_changeNotificationMode->addItem(tr("Off"), 0);
    m_changeNotificationMode->addItem(tr("At session start only"), 2);

    m_smartReferenceStore->addItem(tr("Source file location"), 0);
    m_smartReferenceStore->addItem(tr("Custom"), customStoreMode);

    m_loadSubReferences->addItem(tr("Load scene references"), 0);
    m_loadSubReferences->addItem(tr("Always load references"), 1);
    m_loadSubReferences->addItem(tr("Never load references"), 2);
    m_loadSubReferences->addItem(tr("Avoid leaf references"), 3);

    m_smartUpdate->addItem(tr("Never Ask"), 1);
    m_smartUpdate->addItem(tr("Always Ask"), 0);
}

void koReferencePreferencesGUII::initDefaults(bool markChanged)
{
    setBoolValue(monitoringEnabledKey, true, markChanged);
    setBoolValue(convertWarningKey, true, markChanged);
    setIntValue(notificationModeKey, 1, markChanged);
    setIntValue(storeModeKey, 0, markChanged);
    setStringValue(storeLocationKey, QString(), markChanged);
    setIntValue(loadModeKey, 0, markChanged);
    setIntValue(smartUpdateKey, 0, markChanged);
    setBoolValue(preserveMaterialsKey, true, markChanged);
    setIntValue(monitoringIntervalKey, 5, markChanged);
}

void koReferencePreferencesGUII::applyChanges()
{
    koReferenceService* references = koService<koReferenceService>();
    const auto pushBool = [&](const QString& key, void (koReferenceService::*set)(bool)) {
        if (isChanged(key))
            (references->*set)(getBoolValue(key, false));
    };
    const auto pushInt = [&](const QString& key, void (koReferenceService::*set)(int), int factor) {
        if (isChanged(key))
            (references->*set)(getIntValue(key, 0) * factor);
    };
    pushBool(monitoringEnabledKey, &koReferenceService::setChangeMonitoringEnabled);
    pushBool(convertWarningKey, &koReferenceService::setShowConvertToSmartWarning);
    pushInt(notificationModeKey, &koReferenceService::setChangeNotificationMode, 1);
    pushInt(storeModeKey, &koReferenceService::setSmartReferenceStoreMode, 1);
    if (isChanged(storeLocationKey))
        references->setSmartReferenceStoreLocation(getStringValue(storeLocationKey, QString()));
    pushInt(loadModeKey, &koReferenceService::setLoadSubReferencesMode, 1);
    // Stored in seconds, the host counts in milliseconds.
    pushInt(monitoringIntervalKey, &koReferenceService::setUpdateMonitoringInterval, 1000);
}

void koReferencePreferencesGUII::loadValues()
{
    m_changeNotificationEnabled->setChecked(getBoolValue(monitoringEnabledKey, false));
    m_showConvertToSmartWarning->setChecked(getBoolValue(convertWarningKey, false));
    m_preserveMaterials->setChecked(getBoolValue(preserveMaterialsKey, false));
    selectData(m_changeNotificationMode, getIntValue(notificationModeKey, 0));
    selectData(m_smartReferenceStore, getIntValue(storeModeKey, 0));
    selectData(m_loadSubReferences, getIntValue(loadModeKey, 0));
    selectData(m_smartUpdate, getIntValue(smartUpdateKey, 0));
    m_smartReferenceStoreLocation->setText(getStringValue(storeLocationKey, QString()));
    m_updateMonitoringInterval->setText(QString::number(getIntValue(monitoringIntervalKey, 0)));
    updateEnabledStates();
}

void koReferencePreferencesGUII::saveValues()
{
    koPreferencesService* preferences = koService<koPreferencesService>();
    preferences->setBoolValue(monitoringEnabledKey, m_changeNotificationEnabled->isChecked(), true);
    preferences->setBoolValue(convertWarningKey, m_showConvertToSmartWarning->isChecked(), true);
    preferences->setIntValue(notificationModeKey, currentValue(m_changeNotificationMode), true);
    preferences->setIntValue(storeModeKey, currentValue(m_smartReferenceStore), true);
    preferences->setStringValue(storeLocationKey, m_smartReferenceStoreLocation->text(), true);
    preferences->setIntValue(loadModeKey, currentValue(m_loadSubReferences), true);
    preferences->setIntValue(smartUpdateKey, currentValue(m_smartUpdate), true);
    preferences->setBoolValue(preserveMaterialsKey, m_preserveMaterials->isChecked(), true);
    // A blank field is no number and stores 0.
    preferences->setIntValue(monitoringIntervalKey, m_updateMonitoringInterval->text().toInt(nullptr, 10), true);
}

void koReferencePreferencesGUII::updateEnabledStates()
{
    const bool monitoring = m_changeNotificationEnabled->isChecked();
    const QList<QWidget*> monitoringWidgets{m_changeNotificationMode, m_changeNotificationModeLabel,
                                            m_updateMonitoringInterval, m_updateMonitoringIntervalSecondsLabel,
                                            m_updateMonitoringIntervalLabel};
    for (QWidget* widget : monitoringWidgets)
        widget->setEnabled(monitoring);
    const bool custom = currentValue(m_smartReferenceStore) == customStoreMode;
    m_smartReferenceStoreLocation->setEnabled(custom);
    m_selectStoreLocation->setEnabled(custom);
}

void koReferencePreferencesGUII::selectStoreLocation()
{
    const QString folder = koFileDialog::getExistingDirectoryForField(this, tr("Custom Smart Reference Store"),
                                                                      m_smartReferenceStoreLocation->text());
    if (!folder.isEmpty())
        m_smartReferenceStoreLocation->setText(folder);
}
