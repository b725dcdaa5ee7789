#pragma once

#include <QHash>
#include <QModelIndex>
#include <QVector>

class koModelItem;
class koReferenceTreeModel;
class koTextMatcher;

// One search's verdicts on every reference row, worked out at once on all cores and
// kept by parent row: the proxy asks for each row several times in one keystroke,
// and reading a verdict this way touches no row of a scene that fills the memory.
class koReferenceSearchVerdicts
{
public:
    void judge(const koReferenceTreeModel& model, const koTextMatcher& search);
    void clear();
    // 1 for a match, 0 for none, -1 for a row that was not judged.
    int verdict(int row, const QModelIndex& parent) const;

private:
    struct Share;

    // Keyed as the model's indexes point at their rows: by item, the top by null.
    QHash<const void*, QVector<qint8>> m_byParent;
    mutable const void* m_lastParent = nullptr;
    mutable const QVector<qint8>* m_lastVerdicts = nullptr;
};
