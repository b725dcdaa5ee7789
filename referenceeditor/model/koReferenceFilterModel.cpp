#include "koReferenceFilterModel.h"

#include "koReferenceModelItem.h"
#include "koReferenceTreeModel.h"

#include <kovis/kodReferenceNode.h>

#include <QFileInfo>
#include <QThread>
#include <QtConcurrent/QtConcurrentMap>

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
    // base class takes the expression and finds nothing left to change; each row's
    // verdict is worked out once for both passes.
    matcherFor(expression);
    ++m_searchRound;
    judgeReferenceRows();
    m_searchPending = true;
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

void koReferenceFilterModel::judgeReferenceRows() const
{
    if (!m_references || m_search.isEmpty())
        return;
    const QVector<const koReferenceModelItem*> items = m_references->referenceItems();
    // Making a text reads the scene, which only this thread may do; once made, the
    // texts are read on the other threads as well.
    for (const koReferenceModelItem* item : items)
        item->makeSearchTexts();
    struct Share {
        int begin;
        int end;
        // Each thread its own: a regular expression keeps the state of its last match.
        koTextMatcher search;
    };
    QVector<Share> shares;
    const int size = qMax(1024, int(items.size() / (4 * qMax(1, QThread::idealThreadCount()))));
    for (int begin = 0; begin < items.size(); begin += size)
        shares.append({begin, qMin(begin + size, int(items.size())), m_search});
    QtConcurrent::blockingMap(shares, [&items, round = m_searchRound](const Share& share) {
        for (int at = share.begin; at < share.end; ++at)
            items.at(at)->rememberVerdict(round, matchesTexts(share.search, *items.at(at)));
    });
}

bool koReferenceFilterModel::acceptsSearch(int sourceRow, const QModelIndex& sourceParent) const
{
    // While a search is applied its matcher is at hand; reading the expression back copies it.
    const koTextMatcher& search = m_searchPending ? m_search : matcherFor(filterRegExp());
    if (search.isEmpty())
        return true;
    const koReferenceModelItem* item = m_references ? m_references->referenceItem(sourceRow, sourceParent) : nullptr;
    bool matched = false;
    if (item && m_searchPending && item->knownVerdict(m_searchRound, matched))
        return matched;
    matched = item ? matchesTexts(search, *item) : matchesCells(search, sourceRow, sourceParent);
    if (item && m_searchPending)
        item->rememberVerdict(m_searchRound, matched);
    return matched;
}

bool koReferenceFilterModel::matchesTexts(const koTextMatcher& search, const koReferenceModelItem& item)
{
    for (int column : koReferenceModelItem::searchColumns) {
        if (search.matches(item.text(column)))
            return true;
    }
    return false;
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
