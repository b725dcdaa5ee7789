#include "koReferenceFilterMenu.h"

#include "ReferenceFilterActionUserData.h"
#include "koReferenceEditorModule.h"
#include "koReferenceFilterModel.h"

#include <kovis/QKOOpenMenu.h>
#include <kovis/koIconManager.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koReferenceService.h>

#include <QToolButton>

#include <algorithm>

koReferenceFilterMenu::koReferenceFilterMenu(koReferenceEditorModule* module)
    : m_module(module)
{
}

koReferenceFilterMenu::~koReferenceFilterMenu() = default;

void koReferenceFilterMenu::buildFilterMenu()
{
    if (m_menu)
        return;
    m_menu = new QKOOpenMenu(tr("Filter Menu"), m_module);
    connect(m_menu->addAction(tr("Clear")), &QAction::triggered, this, &koReferenceFilterMenu::clear);
    m_menu->addSeparator();
    m_menu->addAction(createEntry(tr("Loaded"), FilterLoaded));
    m_menu->addAction(createEntry(tr("Unloaded"), FilterUnloaded));
    m_menu->addSeparator();
    m_menu->addAction(createEntry(tr("Up to date"), FilterUpToDate));
    m_menu->addAction(createEntry(tr("Out of date"), FilterOutOfDate));
    m_menu->addAction(createEntry(tr("Missing"), FilterMissing));
    m_menu->addAction(createEntry(tr("Modified"), FilterModified));
    m_menu->addSeparator();
    m_menu->addAction(createEntry(tr("Source References"), FilterSourceReferences));
    m_menu->addAction(createEntry(tr("Smart References"), FilterSmartReferences));
    m_menu->addSeparator();
}

QAction* koReferenceFilterMenu::createEntry(const QString& text, int code, const QString& userText)
{
    auto* entry = new QAction(text, m_menu);
    entry->setCheckable(true);
    entry->setData(QVariant::fromValue(ReferenceFilterActionUserData{code, userText}));
    connect(entry, &QAction::toggled, this, [this, entry](bool checked) { onEntryToggled(entry, checked); });
    return entry;
}

void koReferenceFilterMenu::onEntryToggled(const QAction* entry, bool checked)
{
    const auto data = entry->data().value<ReferenceFilterActionUserData>();
    // A file type's entry reads ".ext"; the filter model compares suffixes without the dot.
    const QString suffix = data.code == FilterFileType ? data.text.mid(1) : data.text;
    m_module->filterModel()->setFilterFlag(data.code, checked, suffix);
    updateButton();
    applyFilterToView();
}

void koReferenceFilterMenu::updateButton()
{
    const QList<QAction*> entries = m_menu->actions();
    m_button->setChecked(std::any_of(entries.cbegin(), entries.cend(), [](const QAction* entry) {
        return entry->isChecked();
    }));
}

void koReferenceFilterMenu::clear()
{
    for (QAction* entry : m_menu->actions())
        entry->setChecked(false);
    m_module->m_searchBox->clear();
}

void koReferenceFilterMenu::buildFilterButton()
{
    if (m_button)
        return;
    m_button = new QToolButton(m_module->m_searchBox);
    m_button->setObjectName(QStringLiteral("MaterialEditorFilterButton"));
    m_button->setCheckable(true);
    m_button->setIcon(koIconManager::getIcon(QStringLiteral("Filter"), QString()));
    m_button->setToolTip(tr("Select a type filter"));
    m_button->setChecked(false);
    m_module->m_searchBox->addWidget(m_button);
    m_module->m_searchBox->setSearchLineStyle(true);
    connect(m_button, &QToolButton::released, this, &koReferenceFilterMenu::popUp);
    // The click flips a checkable button; it shows whether a type filter is on instead.
    connect(m_button, &QToolButton::clicked, this, &koReferenceFilterMenu::updateButton);
    connect(m_module->m_searchBox, &QKOSearchBox::searchChanged, this, [this](const QString& text) {
        // Users type plain text, which the filter model matches without a regular expression.
        m_module->filterModel()->setSearchText(QRegExp(text, Qt::CaseInsensitive, QRegExp::FixedString));
        applyFilterToView();
    });
}

void koReferenceFilterMenu::popUp()
{
    rebuildFileTypeEntries();
    m_menu->popup(m_button->mapToGlobal(QPoint(0, 0)));
}

QAction* koReferenceFilterMenu::createFileTypeEntry(const QString& extension)
{
    const QString text = QLatin1Char('.') + extension;
    return createEntry(text, FilterFileType, text);
}

void koReferenceFilterMenu::rebuildFileTypeEntries()
{
    QStringList extensions = koService<koReferenceService>()->getSceneReferenceFileExtensions();
    extensions.removeDuplicates();
    extensions.sort();
    QMap<QString, QAction*> previous;
    previous.swap(m_fileTypeEntries);
    for (const QString& extension : qAsConst(extensions)) {
        QAction* entry = previous.take(extension);
        m_fileTypeEntries.insert(extension, entry ? entry : createFileTypeEntry(extension));
    }
    // Released before its entry goes, so that no filter is left that no entry can switch off.
    for (QAction* vanished : qAsConst(previous)) {
        vanished->setChecked(false);
        delete vanished;
    }
    // Adding an entry that is in the menu already moves it to the end: the types stay sorted.
    for (QAction* entry : qAsConst(m_fileTypeEntries))
        m_menu->addAction(entry);
}

void koReferenceFilterMenu::applyFilterToView()
{
    if (m_module->filterModel()->isFilterEmpty())
        return;
    m_module->expandAllRows();
    pruneSelection();
    // The proxy drops the rows it hides from the selection without a word, so the
    // actions and path fields would go on showing a reference that is gone.
    m_module->updateActions();
}

void koReferenceFilterMenu::pruneSelection()
{
    const koReferenceFilterModel* filter = m_module->filterModel();
    koNodeBasedSelectionModel* selection = m_module->nodeSelectionModel();
    QItemSelection kept;
    for (const QModelIndex& row : selection->getSelectedRows()) {
        const QModelIndex source = filter->mapToSource(row);
        if (filter->filterAcceptsRow(source.row(), source.parent()))
            kept.select(row, row);
    }
    selection->clearSelection();
    selection->select(kept, QItemSelectionModel::Select | QItemSelectionModel::Rows);
}
