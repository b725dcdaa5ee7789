#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPreferencesCategory.h>
#include <kovis/koPreferencesService.h>

namespace {

QList<koPreferencesCategory*>& registry()
{
    static QList<koPreferencesCategory*> categories;
    return categories;
}

koPreferencesService* preferences()
{
    return koKernelServiceFactory::the()->getServiceOrNull<koPreferencesService>();
}

} // namespace

koPreferencesCategory::koPreferencesCategory(const QString& name, QWidget* parent)
    : QWidget(parent)
    , m_name(name)
{
}

koPreferencesCategory::~koPreferencesCategory()
{
    registry().removeOne(this);
}

QString koPreferencesCategory::getName() const
{
    return m_name;
}

void koPreferencesCategory::initDefaults(bool markChanged)
{
    Q_UNUSED(markChanged)
}

void koPreferencesCategory::applyChanges()
{
}

void koPreferencesCategory::loadValues()
{
}

void koPreferencesCategory::saveValues()
{
}

void koPreferencesCategory::newScene()
{
}

void koPreferencesCategory::registerCategory()
{
    if (registry().contains(this))
        return;
    registry().append(this);
    if (koPreferencesService* service = preferences()) {
        connect(service, &koPreferencesService::categoryChanged, this, [this](const QString& name) {
            if (name == m_name)
                loadValues();
        });
        connect(service, &koPreferencesService::categoryApplied, this, [this](const QString& name) {
            if (name != m_name)
                return;
            applyChanges();
            clearChangedKeys();
        });
    }
}

QList<koPreferencesCategory*> koPreferencesCategory::registeredCategories()
{
    return registry();
}

bool koPreferencesCategory::getBoolValue(const QString& key, bool defaultValue) const
{
    m_keys.insert(key);
    return preferences()->getBoolValue(key, defaultValue);
}

int koPreferencesCategory::getIntValue(const QString& key, int defaultValue) const
{
    m_keys.insert(key);
    return preferences()->getIntValue(key, defaultValue);
}

QString koPreferencesCategory::getStringValue(const QString& key, const QString& defaultValue) const
{
    m_keys.insert(key);
    return preferences()->getStringValue(key, defaultValue);
}

void koPreferencesCategory::setBoolValue(const QString& key, bool value, bool markChanged)
{
    m_keys.insert(key);
    preferences()->setBoolValue(key, value, markChanged);
}

void koPreferencesCategory::setIntValue(const QString& key, int value, bool markChanged)
{
    m_keys.insert(key);
    preferences()->setIntValue(key, value, markChanged);
}

void koPreferencesCategory::setStringValue(const QString& key, const QString& value, bool markChanged)
{
    m_keys.insert(key);
    preferences()->setStringValue(key, value, markChanged);
}

bool koPreferencesCategory::isChanged(const QString& key) const
{
    m_keys.insert(key);
    return preferences()->isChanged(key);
}

void koPreferencesCategory::clearChangedKeys()
{
    koPreferencesService* service = preferences();
    for (const QString& key : qAsConst(m_keys))
        service->clearChanged(key);
}
