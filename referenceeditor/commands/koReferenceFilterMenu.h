#pragma once

#include <QMap>
#include <QObject>
#include <QString>

class QAction;
class QKOOpenMenu;
class QToolButton;
class koReferenceEditorModule;

// The type filters of the Reference Editor: the Filter menu with its fixed entries and
// one entry per file type of the scene, the button in the search box that opens it,
// and the search box itself, all feeding the window's filter model.
class koReferenceFilterMenu : public QObject
{
    Q_OBJECT
public:
    explicit koReferenceFilterMenu(koReferenceEditorModule* module);
    ~koReferenceFilterMenu() override;

    void buildFilterMenu();
    void buildFilterButton();
    // Gives the menu one entry per file type of the scene's references now.
    void rebuildFileTypeEntries();
    // Shows every match and keeps selected only the rows the filter itself accepts.
    void applyFilterToView();

    QKOOpenMenu* menu() const { return m_menu; }
    QToolButton* button() const { return m_button; }
    // By extension (without dot).
    const QMap<QString, QAction*>& fileTypeEntries() const { return m_fileTypeEntries; }

private:
    QAction* createEntry(const QString& text, int code, const QString& userText = QString());
    QAction* createFileTypeEntry(const QString& extension);
    void onEntryToggled(const QAction* entry, bool checked);
    void updateButton();
    void clear();
    void popUp();
    void pruneSelection();

    koReferenceEditorModule* m_module;
    QKOOpenMenu* m_menu = nullptr;
    QToolButton* m_button = nullptr;
    QMap<QString, QAction*> m_fileTypeEntries;
};
