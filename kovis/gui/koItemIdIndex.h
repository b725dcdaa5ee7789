#pragma once

#include "koItemId.h"

#include <QHash>

class koModelItem;

// Finds the items of a tree by id in constant time. Built on first use after the
// tree was replaced, then kept up to date as subtrees come and go.
class koItemIdIndex
{
public:
    void invalidate();
    koModelItem* find(const QVariant& id, koModelItem* root);
    void addSubtree(koModelItem* top);
    void removeSubtree(koModelItem* top);

private:
    template<class Visit>
    static void forEachInSubtree(koModelItem* top, Visit visit);

    QHash<koItemId, koModelItem*> m_items;
    bool m_built = false;
};
