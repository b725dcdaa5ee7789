#pragma once

#include "koReferenceSearchVerdicts.h"
#include "koTextMatcher.h"

#include <QRegExp>
#include <QSortFilterProxyModel>

#include <map>
#include <set>

class koReferenceModelItem;
class koReferenceTreeModel;

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
    // The search: the proxy's filter expression, matched against the reference's name
    // and both locations.
    void setSearchText(const QRegExp& expression);
    // No search text and no filter key.
    bool isFilterEmpty() const;
    // Public: the window keeps selected only the rows this accepts, not their ancestors
    // that recursive filtering keeps visible.
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    const koTextMatcher& matcherFor(const QRegExp& expression) const;
    // Has the proxy filter the rows below every branch.
    void mapEveryBranch();
    bool acceptsSearch(int sourceRow, const QModelIndex& sourceParent) const;
    bool matchesCells(const koTextMatcher& search, int sourceRow, const QModelIndex& sourceParent) const;
    bool passesFlags(int sourceRow, const QModelIndex& sourceParent) const;

    std::map<int, std::set<QString>> m_flags;
    // The source model when it is the reference model, whose rows hand their texts over
    // directly: a search reads three for every row of the scene.
    const koReferenceTreeModel* m_references = nullptr;
    // Built from the filter expression when it changes: the expression itself is slow
    // for the plain text users type.
    mutable koTextMatcher m_search;
    bool m_searchPending = false;
    // While a search is applied: its verdict on every reference row.
    koReferenceSearchVerdicts m_verdicts;
};
