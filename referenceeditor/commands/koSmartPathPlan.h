#pragma once

#include <kovis/koReferenceTypes.h>
#include <kovis/kodReferenceNode.h>

#include <QList>
#include <QPair>
#include <QSet>
#include <QStringList>

// The files that new smart references of one save run are to get: a path of its own
// for each, one for all instances of shared content, never the reserved path. Nothing
// changes in the scene before commit().
class koSmartPathPlan
{
public:
    explicit koSmartPathPlan(const QString& reservedPath);

    // The proposal itself when no earlier reference of the run took it, else the
    // proposal numbered before its suffix. The number keeps rising across the run.
    QString claim(const QString& proposed);
    void add(const QList<kodReferenceNode>& references, koReferenceTypes::ExportLocation location,
             const QString& customFolder);
    // Planned files that exist already and would be overwritten.
    const QStringList& existingFiles() const { return m_existingFiles; }
    // Unloaded references only reserve their names: their content is not there to write.
    void commit();

private:
    void add(const kodReferenceNode& reference, koReferenceTypes::ExportLocation location,
             const QString& customFolder);
    bool isTaken(const QString& path) const;

    QString m_reservedPath;
    QSet<QString> m_chosenPaths;
    int m_collisions = 0;
    QSet<quint64> m_handledIds;
    QList<QPair<kodReferenceNode, QString>> m_assignments;
    QStringList m_existingFiles;
};
