#pragma once

#include <RepathEntry.h>

#include <QList>
#include <QString>

#include <map>

// The repath search done step by step as it is defined, with none of the engine's
// shortcuts, to check the engine's answers against.
namespace koLiteralRepath {

using FileIndex = std::multimap<QString, QString>;

FileIndex buildFileIndex(const QString& newDir);
QString findTarget(const QString& oldPath, const QString& newDir, bool searchSubdirs, const FileIndex& index);
void collect(QList<RepathEntry*>& found, QList<RepathEntry*>& notFound, const QList<kodReferenceNode>& nodes,
             bool searchSubdirs, bool missingOnly, bool sources, bool smarts, const QString& newDir);

} // namespace koLiteralRepath
