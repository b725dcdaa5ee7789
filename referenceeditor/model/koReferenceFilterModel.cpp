#include "koReferenceFilterModel.h"

#include "koReferenceModelItem.h"
#include "koReferenceTreeModel.h"

#include <kovis/kodReferenceNode.h>

#include <QFileInfo>

namespace {

// File states are tested before load states; the first key that accepts decides.
const int keyOrder[] = {FilterUpToDate, FilterOutOfDate,        FilterMissing,         FilterLoaded, FilterUnloaded,
                        FilterSourceReferences, FilterSmartReferences, FilterModified, FilterFileType};

bool hasFileState(const kodReferenceNode& reference, koReferenceTypes::FileState state)
{
    return reference.getSmartFileState() == state || reference.getSourceFileState() == state;
}

bool hasSuffix(const kodReferenceNode& reference, const std::set<QString>& suffixes)
{
    const auto suffixChosen = [&suffixes](const QString& path) {
        const QString suffix = path.isEmpty() ? QString() : QFileInfo(path).suffix();
        return !suffix.isEmpty() && suffixes.count(suffix) > 0;
    };
    return suffixChosen(reference.getSourcePath()) || suffixChosen(reference.getSmartPath());
}

bool passesKey(int key, const kodReferenceNode& reference, const std::set<QString>& suffixes)
{
    switch (key) {
    case FilterLoaded:
        return reference.isLoaded();
    case FilterUnloaded:
        return !reference.isLoaded();
    case FilterUpToDate:
        return hasFileState(reference, koReferenceTypes::UpToDate);
    case FilterOutOfDate:
        return hasFileState(reference, koReferenceTypes::OutOfDate);
    case FilterMissing:
        return hasFileState(reference, koReferenceTypes::Missing);
    case FilterSourceReferences:
        return reference.hasSourceReference();
    case FilterSmartReferences:
        return reference.hasSmartReference();
    case FilterModified:
        return reference.isChanged();
    case FilterFileType:
        return hasSuffix(reference, suffixes);
    default:
        return false;
    }
}

} // namespace

koReferenceFilterModel::koReferenceFilterModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{
}

koReferenceFilterModel::~koReferenceFilterModel() = default;

void koReferenceFilterModel::setFilterFlag(int key, bool enabled, const QString& suffix)
{
    if (enabled) {
        std::set<QString>& suffixes = m_flags[key];
        if (!suffix.isEmpty())
            suffixes.insert(suffix);
    } else if (suffix.isEmpty()) {
        m_flags.erase(key);
    } else if (const auto entry = m_flags.find(key); entry != m_flags.end()) {
        entry->second.erase(suffix);
        if (entry->second.empty())
            m_flags.erase(entry);
    }
    invalidateFilter();
}

void koReferenceFilterModel::setSearchText(const QRegExp& expression)
{
    // Row by row, the views hear of every row that leaves or comes back, and each time
    // move every expanded row they keep: on a large scene that costs far more than one
    // relayout. So the rows are laid out once under the new search, after which the
    // base class takes the expression and finds nothing left to change; each row's
    // verdict is worked out once for both passes.
    matcherFor(expression);
    m_searchPending = true;
    ++m_searchRound;
    invalidate();
    setFilterRegExp(expression);
    m_searchPending = false;
}

bool koReferenceFilterModel::isFilterEmpty() const
{
    return filterRegExp().isEmpty() && m_flags.empty();
}

bool koReferenceFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    return acceptsSearch(sourceRow, sourceParent) && (m_flags.empty() || passesFlags(sourceRow, sourceParent));
}

const koTextMatcher& koReferenceFilterModel::matcherFor(const QRegExp& expression) const
{
    // The expression may be set through the base class as well, which tells nobody.
    if (!(m_search.expression() == expression))
        m_search = koTextMatcher(expression);
    return m_search;
}

bool koReferenceFilterModel::acceptsSearch(int sourceRow, const QModelIndex& sourceParent) const
{
    // While a search is applied its matcher is at hand; reading the expression back copies it.
    const koTextMatcher& search = m_searchPending ? m_search : matcherFor(filterRegExp());
    if (search.isEmpty())
        return true;
    // Reference rows hand their texts over directly: this runs for every row of the
    // scene on each keystroke.
    const auto* references = qobject_cast<const koReferenceTreeModel*>(sourceModel());
    const koReferenceModelItem* item =
        references ? references->referenceItem(references->index(sourceRow, 0, sourceParent)) : nullptr;
    bool matched = false;
    if (item && m_searchPending && item->knownVerdict(m_searchRound, matched))
        return matched;
    matched = matchesSearch(search, item, sourceRow, sourceParent);
    if (item && m_searchPending)
        item->rememberVerdict(m_searchRound, matched);
    return matched;
}

bool koReferenceFilterModel::matchesSearch(const koTextMatcher& search, const koReferenceModelItem* item,
                                           int sourceRow, const QModelIndex& sourceParent) const
{
    for (int column : {koReferenceModelItem::NameColumn, koReferenceModelItem::SmartLocationColumn,
                       koReferenceModelItem::SourceLocationColumn}) {
        if (item ? search.matches(item->text(column)) : matchesCell(search, sourceRow, column, sourceParent))
            return true;
    }
    return false;
}

bool koReferenceFilterModel::matchesCell(const koTextMatcher& search, int sourceRow, int column,
                                         const QModelIndex& sourceParent) const
{
    const QModelIndex cell = sourceModel()->index(sourceRow, column, sourceParent);
    return cell.isValid() && search.matches(cell.data(Qt::DisplayRole).toString());
}

bool koReferenceFilterModel::passesFlags(int sourceRow, const QModelIndex& sourceParent) const
{
    const QModelIndex cell = sourceModel()->index(sourceRow, 0, sourceParent);
    const kodReferenceNode reference =
        cell.isValid() ? cell.data(Qt::UserRole).value<kodReferenceNode>() : kodReferenceNode();
    for (int key : keyOrder) {
        const auto entry = m_flags.find(key);
        if (entry != m_flags.end() && passesKey(key, reference, entry->second))
            return true;
    }
    return false;
}
