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

    struct LinkedFile
    {
        QString path;
        quint64 shareKey = 0;
    };
    struct FileChange
    {
        QString path;
        koFileSnapshot snapshot;
        QVector<quint64> shareKeys;
    };

    // Every link of the scene, once per shared content: cheap enough for the window's
    // thread, which must not group 200,000 paths.
    QVector<LinkedFile> linkedFiles() const;
    void forgetLinkedFiles() { m_linkedFilesKnown = false; }
    // Reads the linked files and keeps those whose snapshot differs from the known one;
    // safe on any thread.
    static QVector<FileChange> readChanges(const QVector<LinkedFile>& links, const QHash<QString, koFileSnapshot>& known);
    // Takes fresh snapshots and announces the references whose state changed.
    void applyChanges(const QVector<FileChange>& changes);
    // Reads every linked file again now and announces the references whose state changed.
    void checkFiles();
    // One notice of the references whose files are out of date or missing, if any.
    void reportStaleFiles();

private:
    const koReferenceContent* contentOf(quint64 id) const;
    const koFileSnapshot* snapshotOf(quint64 id, bool smart) const;
    QVector<LinkedFile> collectLinkedFiles() const;

    koReferenceEngine& m_engine;
    // Which files the scene links to changes rarely; monitoring asks every few seconds.
    mutable QVector<LinkedFile> m_linkedFiles;
    mutable bool m_linkedFilesKnown = false;
};
