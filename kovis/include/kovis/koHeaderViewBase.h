#pragma once

#include "koGlobal.h"

#include <QHeaderView>
#include <QSet>

// A horizontal header whose context menu lets the user hide and show the sections
// marked hideable.
class KOVIS_EXPORT koHeaderViewBase : public QHeaderView
{
    Q_OBJECT
public:
    explicit koHeaderViewBase(QAbstractItemModel* model, QWidget* parent = nullptr);

    void setSectionHideable(int logicalIndex, bool hideable);
    bool isSectionHideable(int logicalIndex) const;

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    bool isOnlyVisibleSection(int logicalIndex) const;

    QSet<int> m_hideable;
};
