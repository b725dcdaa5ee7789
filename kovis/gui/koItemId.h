#pragma once

#include <QString>
#include <QVariant>

class koModelItem;

// The hash key of an item id: a node by its object id, anything else by its text.
class koItemId
{
public:
    static koItemId of(const QVariant& id);
    static koItemId ofObject(quint64 objectId);
    // The key of an item's id.
    static koItemId ofItem(const koModelItem& item);

    bool isValid() const { return m_node != 0 || !m_text.isEmpty(); }
    bool operator==(const koItemId& other) const { return m_node == other.m_node && m_text == other.m_text; }

    friend uint qHash(const koItemId& key, uint seed = 0) noexcept
    {
        return key.m_node ? qHash(key.m_node, seed) : qHash(key.m_text, seed);
    }

private:
    quint64 m_node = 0;
    QString m_text;
};
