#pragma once

#include <kovis/koPreferencesService.h>

#include <QDialog>

class QDialogButtonBox;
class QListWidget;
class QStackedWidget;
class koPreferencesCategory;

// The host's preferences: one page per registered category. Apply saves each page's
// widgets into the store and tells the category to act on what changed; Cancel puts
// back what was stored when the dialog opened or was last applied.
class koPreferencesDialog : public QDialog
{
    Q_OBJECT
public:
    explicit koPreferencesDialog(QWidget* parent = nullptr);
    // The pages belong to their plug-ins; they are handed back, not deleted.
    ~koPreferencesDialog() override;

    void apply();
    void restoreDefaults();

private:
    void addPages();
    koPreferencesCategory* currentCategory() const;
    static koPreferencesService* preferences();

    QListWidget* m_categories;
    QStackedWidget* m_pages;
    QDialogButtonBox* m_buttons;
    koPreferencesService::Snapshot m_applied;
};
