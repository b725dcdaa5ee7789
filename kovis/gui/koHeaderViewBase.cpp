#include <kovis/koHeaderViewBase.h>

#include <QContextMenuEvent>
#include <QMenu>

koHeaderViewBase::koHeaderViewBase(QAbstractItemModel* model, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    if (model)
        setModel(model);
}

void koHeaderViewBase::setSectionHideable(int logicalIndex, bool hideable)
{
    if (hideable)
        m_hideable.insert(logicalIndex);
    else
        m_hideable.remove(logicalIndex);
}

bool koHeaderViewBase::isSectionHideable(int logicalIndex) const
{
    return m_hideable.contains(logicalIndex);
}

void koHeaderViewBase::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    for (int visual = 0; visual < count(); ++visual) {
        const int section = logicalIndex(visual);
        if (!isSectionHideable(section))
            continue;
        QAction* action = menu.addAction(model()->headerData(section, orientation()).toString());
        action->setCheckable(true);
        action->setChecked(!isSectionHidden(section));
        // The last visible section stays: a header without sections cannot be reached.
        action->setEnabled(!isOnlyVisibleSection(section));
        connect(action, &QAction::toggled, this, [this, section](bool shown) { setSectionHidden(section, !shown); });
    }
    if (menu.isEmpty()) {
        QHeaderView::contextMenuEvent(event);
        return;
    }
    menu.exec(event->globalPos());
}

bool koHeaderViewBase::isOnlyVisibleSection(int logicalIndex) const
{
    return !isSectionHidden(logicalIndex) && count() - hiddenSectionCount() == 1;
}
