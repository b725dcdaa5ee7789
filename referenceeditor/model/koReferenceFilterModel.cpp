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
    connect(this, &QAbstractProxyModel::sourceModelChanged, this,
            [this] { m_references = qobject_cast<const koReferenceTreeModel*>(sourceModel()); });
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
    // base class takes the expression and finds nothing left to change. Both passes
    // read the verdicts worked out beforehand.
    matcherFor(expression);
    const bool judged = m_references && !m_search.isEmpty();
    if (judged)
        m_verdicts.judge(*m_references, m_search);
    m_searchPending = true;
    invalidate();
    setFilterRegExp(expression);
    // The window opens every branch after a search, and the proxy filters the rows
    // below a branch when it is first asked for them: asked now, they read the
    // verdicts rather than being matched again, a copy of the expression each.
    if (judged)
        mapEveryBranch();
    m_searchPending = false;
    m_verdicts.clear();
}

void koReferenceFilterModel::mapEveryBranch()
{
    QVector<QModelIndex> pending{QModelIndex()};
    while (!pending.isEmpty()) {
        const QModelIndex parent = pending.takeLast();
        for (int row = 0, count = rowCount(parent); row < count; ++row) {
            const QModelIndex child = index(row, 0, parent);
            if (hasChildren(child))
                pending.append(child);
        }
    }
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
    if (m_searchPending) {
        const int verdict = m_verdicts.verdict(sourceRow, sourceParent);
        if (verdict >= 0)
            return verdict > 0;
    }
    const koReferenceModelItem* item = m_references ? m_references->referenceItem(sourceRow, sourceParent) : nullptr;
    return item ? item->matches(search) : matchesCells(search, sourceRow, sourceParent);
}

bool koReferenceFilterModel::matchesCells(const koTextMatcher& search, int sourceRow,
                                          const QModelIndex& sourceParent) const
{
    for (int column : koReferenceModelItem::searchColumns) {
        const QModelIndex cell = sourceModel()->index(sourceRow, column, sourceParent);
        if (cell.isValid() && search.matches(cell.data(Qt::DisplayRole).toString()))
            return true;
    }
    return false;
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
