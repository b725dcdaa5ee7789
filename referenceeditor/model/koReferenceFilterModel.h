#pragma once

#include "koTextMatcher.h"

#include <QRegExp>
#include <QSortFilterProxyModel>

#include <map>
#include <set>

// The keys of the state filters; each Filter-menu entry carries one.
enum ReferenceFilterFlag {
    FilterLoaded = 0,
    FilterUnloaded = 1,
    FilterUpToDate = 2,
    FilterOutOfDate = 3,
    FilterMissing = 4,
    FilterSourceReferences = 5,
    FilterSmartReferences = 6,
    FilterModified = 7,
    FilterFileType = 8
};

// Shows the references that match the search text and at least one chosen state filter.
class koReferenceFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT
public:
    explicit koReferenceFilterModel(QObject* parent = nullptr);
    ~koReferenceFilterModel() override;

    // Turns a filter key on or off; for the file-type key, one suffix (without dot,
    // case-sensitive) of its set.
    void setFilterFlag(int key, bool enabled, const QString& suffix);
    void setSearchText(const QRegExp& expression);
    QRegExp searchText() const { return m_search.expression(); }
    // No search text and no filter key.
    bool isFilterEmpty() const;
    // Public: the window keeps selected only the rows this accepts, not their ancestors
    // that recursive filtering keeps visible.
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    bool matchesSearch(int sourceRow, const QModelIndex& sourceParent) const;
    bool matchesCell(int sourceRow, int column, const QModelIndex& sourceParent) const;
    bool passesFlags(int sourceRow, const QModelIndex& sourceParent) const;
    void refilter();

    std::map<int, std::set<QString>> m_flags;
    koTextMatcher m_search;
};
