#pragma once

#include "koNodeRecord.h"

#include <kovis/koGlobal.h>

#include <QCoreApplication>
#include <QVector>

class koReferenceEngine;

// Adds, removes, converts, clones, moves and renames nodes. Each operation is one undo
// step; none can put shared content inside an instance of itself.
class KOVIS_EXPORT koSceneOperations
{
    Q_DECLARE_TR_FUNCTIONS(koSceneOperations)

public:
    explicit koSceneOperations(koReferenceEngine& engine);

    quint64 createNode(quint64 parent, koNodeType type, const QString& name);
    quint64 createReference(quint64 parent);
    quint64 removeReference(quint64 id);
    quint64 convertToSmart(quint64 id);
    QVector<quint64> cloneNodes(const QVector<quint64>& ids);
    // False (with a warning) when the node cannot go there.
    bool moveNode(quint64 id, quint64 newParent);
    // False (with a warning) for a name longer than files can hold.
    bool rename(quint64 id, const QString& name);

private:
    // Puts replacement in the node's place, keeping its name, flags, transform and children.
    quint64 replaceNode(quint64 id, koNodeRecord replacement);

    koReferenceEngine& m_engine;
};
