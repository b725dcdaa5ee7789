#pragma once

#include "koFileSnapshot.h"

#include <kovis/koGlobal.h>
#include <kovis/koReferenceTypes.h>

#include <QCoreApplication>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

class koReferenceEngine;
struct koReferenceContent;

// The state of every linked file, from what the host knows of it: queries never touch
// the disk; monitoring and operations on a file refresh what is known.
class KOVIS_EXPORT koReferenceFileStates
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceFileStates)

public:
    explicit koReferenceFileStates(koReferenceEngine& engine);

    koReferenceTypes::FileState smartFileState(quint64 id) const;
    koReferenceTypes::FileState sourceFileState(quint64 id) const;
    const koFileSnapshot* smartSnapshot(quint64 id) const;
    const koFileSnapshot* sourceSnapshot(quint64 id) const;

    // Every linked file with the share keys of the references that link to it.
    QHash<QString, QVector<quint64>> linkedFiles() const;
    void forgetLinkedFiles() { m_linkedFilesKnown = false; }
    // Takes fresh snapshots of linked files and announces the references whose state
    // changed; snapshots[i] belongs to paths[i].
    void applySnapshots(const QHash<QString, QVector<quint64>>& files, const QStringList& paths,
                        const QVector<koFileSnapshot>& snapshots);
    // Reads every linked file again now and announces the references whose state changed.
    void checkFiles();
    // One notice of the references whose files are out of date or missing, if any.
    void reportStaleFiles();

private:
    const koReferenceContent* contentOf(quint64 id) const;
    const koFileSnapshot* snapshotOf(quint64 id, bool smart) const;
    QHash<QString, QVector<quint64>> collectLinkedFiles() const;

    koReferenceEngine& m_engine;
    // Which files the scene links to changes rarely; monitoring asks every few seconds.
    mutable QHash<QString, QVector<quint64>> m_linkedFiles;
    mutable bool m_linkedFilesKnown = false;
};
