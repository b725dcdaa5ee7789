#include "RepathFileIndex.h"

#include <QDir>

namespace {

quint64 placement(int nameId, int folderId)
{
    return (quint64(quint32(nameId)) << 32) | quint32(folderId);
}

} // namespace

void RepathFileIndex::insert(const QString& name, const QString& directory)
{
    const int nameCount = m_names.size();
    Name& entry = m_names[name];
    if (entry.count++ == 0) {
        entry.id = nameCount;
        entry.firstDirectory = directory;
    }
    m_placements.insert(placement(entry.id, folderId(directory)));
}

int RepathFileIndex::count(const QString& name) const
{
    return m_names.value(name).count;
}

QString RepathFileIndex::firstDirectory(const QString& name) const
{
    return m_names.value(name).firstDirectory;
}

bool RepathFileIndex::contains(const QString& name, const QString& folder) const
{
    const auto entry = m_names.constFind(name);
    const int folderId = m_folders.value(QDir::fromNativeSeparators(folder), -1);
    return entry != m_names.constEnd() && folderId >= 0 && m_placements.contains(placement(entry->id, folderId));
}

// A walk hands in the files of one directory in a row, so the last folder is remembered.
int RepathFileIndex::folderId(const QString& directory)
{
    if (m_lastFolder < 0 || directory != m_lastDirectory) {
        const QString folder = QDir::fromNativeSeparators(directory);
        m_lastFolder = m_folders.value(folder, m_folders.size());
        m_folders.insert(folder, m_lastFolder);
        m_lastDirectory = directory;
    }
    return m_lastFolder;
}
