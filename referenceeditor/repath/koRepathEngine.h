#pragma once

#include "RepathChoice.h"
#include "RepathEntry.h"
#include "RepathFileIndex.h"
#include "RepathLink.h"
#include "RepathProgress.h"

#include <QList>
#include <QStringList>
#include <QVector>

// Finds moved reference files below a new folder and re-points the references at them.

// How a list of entries is written into the scene.
enum class RepathMode : qint32 { SourcesOnly = 0, SmartsOnly = 1, Both = 2 };

// SourcesOnly, SmartsOnly or Both, after the links a run is for.
RepathMode repathMode(bool sources, bool smarts);

// Adds every file below newDir, in the order the walk meets them; with a progress, tells
// it each folder and file and stops when it is cancelled.
void buildFileIndex(RepathFileIndex& index, const QString& newDir, RepathProgress* progress = nullptr);

// The file that should replace oldPath: without searchSubdirs the file of that name
// directly in newDir; with it the file of that name anywhere in the index, preferring the
// folder that repeats the longest tail of oldPath's folder, then the first one met.
// Empty when there is none.
QString findRepathTarget(const QString& oldPath, const QString& newDir, bool searchSubdirs,
                         const RepathFileIndex& index);
// The same choice with the rule that made it and, when several files had the name, all of them.
RepathChoice chooseRepathTarget(const QString& oldPath, const QString& newDir, bool searchSubdirs,
                                const RepathFileIndex& index);

// The links to repath as the scene has them now: all sources, then all smart links, none
// without a path.
QVector<RepathLink> repathLinks(const QList<kodReferenceNode>& nodes, bool missingOnly, bool sources, bool smarts);

// The choice for each link, with an empty path where none was found. Asks the disk only,
// never the scene, so it may run off the GUI thread; a cancelled progress cuts it short.
QVector<RepathChoice> findRepathChoices(const QVector<RepathLink>& links, const QString& newDir, bool searchSubdirs,
                                        RepathProgress* progress);

// Where the link is to point: the file chosen, else its name directly in newDir.
QString plannedRepathPath(const RepathLink& link, const RepathChoice& choice, const QString& newDir);

// The planned changes: a link with a target goes to found, one without to notFound,
// planned to point at its name directly in newDir.
void sortRepathEntries(QList<RepathEntry*>& found, QList<RepathEntry*>& notFound, const QVector<RepathLink>& links,
                       const QVector<RepathChoice>& choices, const QString& newDir);

// Plans the repath of the sources, then of the smart links, of the nodes, all at once.
void collectRepathEntries(QList<RepathEntry*>& found, QList<RepathEntry*>& notFound,
                          const QList<kodReferenceNode>& nodes, bool searchSubdirs, bool missingOnly,
                          bool sources, bool smarts, const QString& newDir);

// Writes the planned paths into the scene; SourcesOnly and SmartsOnly set that link
// whatever the entry's kind.
void applyRepath(QList<RepathEntry*>& entries, RepathMode mode);

// The current path of each entry's link.
QStringList failedPaths(const QList<RepathEntry*>& notFound);
