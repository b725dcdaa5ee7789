#include "koReferenceSearchVerdicts.h"

#include "koReferenceModelItem.h"
#include "koReferenceTreeModel.h"
#include "koTextMatcher.h"

#include <QtConcurrent/QtConcurrentMap>

namespace {

// Small enough that a thread left waiting for the share another one took never waits long.
constexpr int shareSize = 2048;

} // namespace

struct koReferenceSearchVerdicts::Share {
    const koModelItem* parent;
    int begin;
    int end;
    qint8* verdicts;
    // Each thread its own: a regular expression keeps the state of its last match.
    koTextMatcher search;
};

void koReferenceSearchVerdicts::judge(const koReferenceTreeModel& model, const koTextMatcher& search)
{
    clear();
    QVector<Share> shares;
    QVector<const koModelItem*> pending{model.getRootItem()};
    while (!pending.isEmpty()) {
        const koModelItem* parent = pending.takeLast();
        const int rows = parent ? parent->childCount() : 0;
        if (rows == 0)
            continue;
        QVector<qint8>& verdicts = m_byParent[parent == model.getRootItem() ? nullptr : parent];
        verdicts.fill(-1, rows);
        for (int row = 0; row < rows; ++row) {
            const koModelItem* child = parent->child(row);
            // Making a text reads the scene, which only this thread may do; once made,
            // the texts are read on the other threads as well.
            if (const koReferenceModelItem* item = koReferenceTreeModel::referenceItemOf(child))
                item->makeSearchTexts();
            if (child->childCount() > 0)
                pending.append(child);
        }
        for (int begin = 0; begin < rows; begin += shareSize)
            shares.append({parent, begin, qMin(begin + shareSize, rows), verdicts.data(), search});
    }
    QtConcurrent::blockingMap(shares, [](const Share& share) {
        for (int row = share.begin; row < share.end; ++row) {
            if (const koReferenceModelItem* item = koReferenceTreeModel::referenceItemOf(share.parent->child(row)))
                share.verdicts[row] = item->matches(share.search) ? 1 : 0;
        }
    });
}

void koReferenceSearchVerdicts::clear()
{
    m_byParent.clear();
    m_lastParent = nullptr;
    m_lastVerdicts = nullptr;
}

int koReferenceSearchVerdicts::verdict(int row, const QModelIndex& parent) const
{
    // The proxy asks for the rows of one parent in a row.
    const void* key = parent.internalPointer();
    if (!m_lastVerdicts || key != m_lastParent) {
        const auto found = m_byParent.constFind(key);
        if (found == m_byParent.constEnd())
            return -1;
        m_lastParent = key;
        m_lastVerdicts = &found.value();
    }
    return m_lastVerdicts->value(row, -1);
}
