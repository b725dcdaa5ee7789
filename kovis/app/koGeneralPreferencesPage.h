#pragma once

#include <kovis/koPreferencesCategory.h>

#include <QScopedPointer>

namespace Ui {
class koGeneralPreferencesPage;
}

// The host's own settings: whether reference lists colour their file states (modules
// read it once, when they start).
class koGeneralPreferencesPage : public koPreferencesCategory
{
    Q_OBJECT
public:
    static const QString colouredStateTextsKey;

    explicit koGeneralPreferencesPage(QWidget* parent = nullptr);
    ~koGeneralPreferencesPage() override;

    void initDefaults(bool markChanged) override;
    void loadValues() override;
    void saveValues() override;

private:
    QScopedPointer<Ui::koGeneralPreferencesPage> m_ui;
};
