#include "koSmartPathPlan.h"

#include <QFileInfo>

koSmartPathPlan::koSmartPathPlan(const QString& reservedPath)
    : m_reservedPath(reservedPath)
{
}

QString koSmartPathPlan::claim(const QString& proposed)
{
    const int insertAt = proposed.size() - QFileInfo(proposed).suffix().size() - 1;
    QString candidate = proposed;
    while (isTaken(candidate)) {
        ++m_collisions;
        candidate = QString(proposed).insert(insertAt, QLatin1Char('_') + QString::number(m_collisions));
    }
    m_chosenPaths.insert(candidate);
    return candidate;
}

bool koSmartPathPlan::isTaken(const QString& path) const
{
    return m_chosenPaths.contains(path) || (!m_reservedPath.isEmpty() && path == m_reservedPath);
}

void koSmartPathPlan::add(const QList<kodReferenceNode>& references, koReferenceTypes::ExportLocation location,
                          const QString& customFolder)
{
    for (const kodReferenceNode& reference : references) {
        if (!m_handledIds.contains(reference.getObjectId()))
            add(reference, location, customFolder);
    }
}

void koSmartPathPlan::add(const kodReferenceNode& reference, koReferenceTypes::ExportLocation location,
                          const QString& customFolder)
{
    const QString path = claim(reference.createSmartPath(location, customFolder));
    m_assignments.append({reference, path});
    if (QFileInfo::exists(path) && reference.getState() != koReferenceTypes::Unloaded)
        m_existingFiles.append(path);
    m_handledIds.insert(reference.getObjectId());
    for (const kodNode& instance : reference.getSharedNodes())
        m_handledIds.insert(instance.getObjectId());
}

void koSmartPathPlan::commit()
{
    for (auto& assignment : m_assignments) {
        if (assignment.first.getState() != koReferenceTypes::Unloaded)
            assignment.first.setSmartPath(assignment.second);
    }
}
