#pragma once

#include "koHeaderViewBase.h"

// Puts a koHeaderViewBase on a tree view: new koHeaderView<QTreeView>(view) replaces
// the view's header and is owned by the view.
template<class View>
class koHeaderView : public koHeaderViewBase
{
public:
    explicit koHeaderView(View* view)
        : koHeaderViewBase(view->model(), view)
    {
        view->setHeader(this);
    }
};
