#include "RepathProgress.h"

#include <QMutexLocker>

void RepathProgress::enterFolder(const QString& folder)
{
    m_folders.fetch_add(1, std::memory_order_relaxed);
    const QMutexLocker lock(&m_mutex);
    m_folder = folder;
}

QString RepathProgress::folder() const
{
    const QMutexLocker lock(&m_mutex);
    return m_folder;
}
