#pragma once

#include "koBaseService.h"

#include <QScopedPointer>
#include <QHash>
#include <QSet>
#include <QVariant>
#include <QString>

class QSettings;

// The persistent preference store (a settings file). A value set with the flag on
// that differs from the stored one counts as changed until its category is applied.
class KOVIS_EXPORT koPreferencesService : public koBaseService
{
    Q_OBJECT
public:
    // An empty path uses the user's settings file of the host.
    explicit koPreferencesService(const QString& settingsFile = QString(), QObject* parent = nullptr);
    ~koPreferencesService() override;

    QString settingsFile() const;

    virtual void setBoolValue(const QString& key, bool value, bool markChanged);
    virtual void setIntValue(const QString& key, int value, bool markChanged);
    virtual void setStringValue(const QString& key, const QString& value, bool markChanged);
    virtual bool getBoolValue(const QString& key, bool defaultValue) const;
    virtual int getIntValue(const QString& key, int defaultValue) const;
    virtual QString getStringValue(const QString& key, const QString& defaultValue) const;
    virtual bool contains(const QString& key) const;

    virtual bool isChanged(const QString& key) const;
    virtual void clearChanged(const QString& key);

    // Tells the category's page that its values were changed elsewhere.
    virtual void notifyCategoryChanged(const QString& category);
    // Tells the category and the host that the category's values take effect now.
    virtual void notifyCategoryApplied(const QString& category);

    void sync();
    // Every stored value and which are marked changed, to go back to (a dialog's Cancel).
    struct Snapshot
    {
        QHash<QString, QVariant> values;
        QSet<QString> changedKeys;
    };
    Snapshot snapshot() const;
    void restore(const Snapshot& snapshot);

    // Whether the category's defaults were ever stored; the host stores them once.
    bool hasDefaults(const QString& category) const;
    void setHasDefaults(const QString& category);

signals:
    void valueChanged(const QString& key);
    void categoryChanged(const QString& category);
    void categoryApplied(const QString& category);

private:
    void store(const QString& givenKey, const QVariant& value, bool markChanged);

    QScopedPointer<QSettings> m_settings;
    QSet<QString> m_changedKeys;
};
