#pragma once

#include "RepathEntry.h"
#include "RepathFileIndex.h"

#include <QList>
#include <QStringList>

// Finds moved reference files below a new folder and re-points the references at them.

// How a list of entries is written into the scene.
enum class RepathMode : qint32 { SourcesOnly = 0, SmartsOnly = 1, Both = 2 };

// Adds every file below newDir, in the order the walk meets them.
void buildFileIndex(RepathFileIndex& index, const QString& newDir);

// The file that should replace oldPath: without searchSubdirs the file of that name
// directly in newDir; with it the file of that name anywhere in the index, preferring the
// folder that repeats the longest tail of oldPath's folder, then the first one met.
// Empty when there is none.
QString findRepathTarget(const QString& oldPath, const QString& newDir, bool searchSubdirs,
                         const RepathFileIndex& index);

// Plans the repath of the sources, then of the smart links, of the nodes. A link whose file
// was not found is planned to point at its name directly in newDir.
void collectRepathEntries(QList<RepathEntry*>& found, QList<RepathEntry*>& notFound,
                          const QList<kodReferenceNode>& nodes, bool searchSubdirs, bool missingOnly,
                          bool sources, bool smarts, const QString& newDir);

// Writes the planned paths into the scene; SourcesOnly and SmartsOnly set that link
// whatever the entry's kind.
void applyRepath(QList<RepathEntry*>& entries, RepathMode mode);

// The current path of each entry's link.
QStringList failedPaths(const QList<RepathEntry*>& notFound);
