#include "koItemIdIndex.h"

#include <kovis/koModelItem.h>

#include <QVector>

template<class Visit>
void koItemIdIndex::forEachInSubtree(koModelItem* top, Visit visit)
{
    QVector<koModelItem*> pending{top};
    while (!pending.isEmpty()) {
        koModelItem* item = pending.takeLast();
        visit(item);
        for (int row = item->childCount() - 1; row >= 0; --row)
            pending.append(item->child(row));
    }
}

void koItemIdIndex::invalidate()
{
    m_items.clear();
    m_built = false;
}

koModelItem* koItemIdIndex::find(const QVariant& id, koModelItem* root)
{
    if (!m_built && root) {
        m_built = true;
        addSubtree(root);
    }
    return m_items.value(koItemId::of(id));
}

void koItemIdIndex::addSubtree(koModelItem* top)
{
    if (!m_built)
        return;
    forEachInSubtree(top, [this](koModelItem* item) {
        const koItemId key = koItemId::ofItem(*item);
        if (key.isValid() && !m_items.contains(key))
            m_items.insert(key, item);
    });
}

void koItemIdIndex::removeSubtree(koModelItem* top)
{
    if (!m_built)
        return;
    forEachInSubtree(top, [this](koModelItem* item) {
        const auto entry = m_items.find(koItemId::ofItem(*item));
        if (entry != m_items.end() && entry.value() == item)
            m_items.erase(entry);
    });
}
