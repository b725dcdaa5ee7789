#pragma once

#include "RepathEntry.h"

#include <QList>

// Owns the entries the engine appends to a list, so that they are freed however a repath
// run ends. It stands wherever the engine asks for a list of entries.
class RepathEntryList
{
public:
    RepathEntryList() = default;
    ~RepathEntryList();

    operator QList<RepathEntry*>&() { return m_entries; }
    operator const QList<RepathEntry*>&() const { return m_entries; }
    int size() const { return m_entries.size(); }
    bool isEmpty() const { return m_entries.isEmpty(); }

private:
    Q_DISABLE_COPY(RepathEntryList)

    QList<RepathEntry*> m_entries;
};
