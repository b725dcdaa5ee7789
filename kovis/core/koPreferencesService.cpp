#include <kovis/koPreferencesService.h>

#include "koOwnedText.h"

#include <QSettings>

koPreferencesService::koPreferencesService(const QString& settingsFile, QObject* parent)
    : koBaseService(parent)
    , m_settings(settingsFile.isEmpty() ? new QSettings(QSettings::IniFormat, QSettings::UserScope,
                                                        QStringLiteral("Kovis"), QStringLiteral("kovis-host"))
                                        : new QSettings(settingsFile, QSettings::IniFormat))
{
}

koPreferencesService::~koPreferencesService()
{
    m_settings->sync();
}

QString koPreferencesService::settingsFile() const
{
    return m_settings->fileName();
}

void koPreferencesService::setBoolValue(const QString& key, bool value, bool markChanged)
{
    store(key, value, markChanged);
}

void koPreferencesService::setIntValue(const QString& key, int value, bool markChanged)
{
    store(key, value, markChanged);
}

void koPreferencesService::setStringValue(const QString& key, const QString& value, bool markChanged)
{
    store(key, value, markChanged);
}

bool koPreferencesService::getBoolValue(const QString& key, bool defaultValue) const
{
    return m_settings->value(key, defaultValue).toBool();
}

int koPreferencesService::getIntValue(const QString& key, int defaultValue) const
{
    bool ok = false;
    const int value = m_settings->value(key, defaultValue).toInt(&ok);
    return ok ? value : defaultValue;
}

QString koPreferencesService::getStringValue(const QString& key, const QString& defaultValue) const
{
    return m_settings->value(key, defaultValue).toString();
}

bool koPreferencesService::contains(const QString& key) const
{
    return m_settings->contains(key);
}

bool koPreferencesService::isChanged(const QString& key) const
{
    return m_changedKeys.contains(key);
}

void koPreferencesService::clearChanged(const QString& key)
{
    m_changedKeys.remove(key);
}

void koPreferencesService::notifyCategoryChanged(const QString& category)
{
    emit categoryChanged(category);
}

void koPreferencesService::notifyCategoryApplied(const QString& category)
{
    emit categoryApplied(category);
}

void koPreferencesService::sync()
{
    m_settings->sync();
}

koPreferencesService::Snapshot koPreferencesService::snapshot() const
{
    Snapshot snapshot;
    for (const QString& key : m_settings->allKeys())
        snapshot.values.insert(key, m_settings->value(key));
    snapshot.changedKeys = m_changedKeys;
    return snapshot;
}

void koPreferencesService::restore(const Snapshot& snapshot)
{
    for (const QString& key : m_settings->allKeys()) {
        if (!snapshot.values.contains(key)) {
            m_settings->remove(key);
            emit valueChanged(key);
        }
    }
    for (auto it = snapshot.values.cbegin(); it != snapshot.values.cend(); ++it)
        store(it.key(), it.value(), false);
    m_changedKeys = snapshot.changedKeys;
}

namespace {

QString defaultsKey(const QString& category)
{
    return QStringLiteral("Preference Categories/") + category + QStringLiteral(" Defaults Stored");
}

} // namespace

bool koPreferencesService::hasDefaults(const QString& category) const
{
    return m_settings->value(defaultsKey(category), false).toBool();
}

void koPreferencesService::setHasDefaults(const QString& category)
{
    m_settings->setValue(defaultsKey(category), true);
}

void koPreferencesService::store(const QString& givenKey, const QVariant& value, bool markChanged)
{
    // Keys often are a plug-in's literals, gone when it unloads; the store outlives it.
    const QString key = koOwnedText(givenKey);
    const QVariant old = m_settings->value(key);
    // Values read back from the file are text; compare them as text.
    if (old.isValid() && old.toString() == value.toString())
        return;
    m_settings->setValue(key, value);
    if (markChanged)
        m_changedKeys.insert(key);
    emit valueChanged(key);
}
