#pragma once

#include "koGlobal.h"

#include <QSet>
#include <QString>
#include <QWidget>

// A page of the host's preferences dialog. Values live in the preferences service;
// the category reads and writes them under its keys and tracks which of them changed.
class KOVIS_EXPORT koPreferencesCategory : public QWidget
{
    Q_OBJECT
public:
    explicit koPreferencesCategory(const QString& name, QWidget* parent = nullptr);
    ~koPreferencesCategory() override;

    QString getName() const;

    // Stores the defaults; markChanged as for the set functions.
    virtual void initDefaults(bool markChanged);
    // Hands the changed values to whoever acts on them.
    virtual void applyChanges();
    // Stored values into the widgets.
    virtual void loadValues();
    // Widgets into the stored values.
    virtual void saveValues();
    virtual void newScene();

    // Makes the category known to the host and lets it follow the service's
    // notifications for its name.
    void registerCategory();
    static QList<koPreferencesCategory*> registeredCategories();

    bool getBoolValue(const QString& key, bool defaultValue) const;
    int getIntValue(const QString& key, int defaultValue) const;
    QString getStringValue(const QString& key, const QString& defaultValue) const;
    // markChanged: a value that differs from the stored one counts as changed until
    // the category is applied.
    void setBoolValue(const QString& key, bool value, bool markChanged);
    void setIntValue(const QString& key, int value, bool markChanged);
    void setStringValue(const QString& key, const QString& value, bool markChanged);
    bool isChanged(const QString& key) const;

private:
    void clearChangedKeys();

    QString m_name;
    // Every key this category read, wrote or asked about: applying clears their marks.
    mutable QSet<QString> m_keys;
};
