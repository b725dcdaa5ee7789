#pragma once

#include <QTreeView>

// A tree view that can open every branch of a large tree at once.
class koReferenceTreeView : public QTreeView
{
    Q_OBJECT
public:
    using QTreeView::QTreeView;

    // Expands every row that has rows below it, laid out once afterwards. Unlike
    // expandAll(), leaves are not remembered as expanded: each remembered row is a
    // persistent index that every filter change has to move, three views over.
    void expandAllBranches();
};
