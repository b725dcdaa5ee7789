#include "RepathFileIndex.h"

#include <QDir>

#include <algorithm>

RepathFileIndex::RepathFileIndex(const QStringList& names)
    : m_limited(true)
{
    for (const QString& name : names)
        m_names.insert(name, Name());
}

void RepathFileIndex::insert(const QString& name, const QString& directory)
{
    const auto kept = m_limited ? m_names.find(name) : m_names.end();
    if (m_limited && kept == m_names.end())
        return;
    Name& entry = m_limited ? *kept : m_names[name];
    const int folder = folderId(directory);
    if (entry.count++ == 0) {
        entry.firstDirectory = directory;
        entry.firstFolder = folder;
    } else {
        entry.otherFolders.insert(std::upper_bound(entry.otherFolders.begin(), entry.otherFolders.end(), folder), folder);
    }
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
    const int id = m_folders.value(QDir::fromNativeSeparators(folder), -1);
    if (entry == m_names.constEnd() || id < 0)
        return false;
    return entry->firstFolder == id || std::binary_search(entry->otherFolders.cbegin(), entry->otherFolders.cend(), id);
}

QStringList RepathFileIndex::directories(const QString& name) const
{
    const Name entry = m_names.value(name);
    if (entry.count == 0)
        return {};
    QStringList directories{entry.firstDirectory};
    for (const int folder : entry.otherFolders)
        directories.append(m_directories.at(folder));
    return directories;
}

// A walk hands in the files of one directory in a row, so the last folder is remembered.
int RepathFileIndex::folderId(const QString& directory)
{
    if (m_lastFolder < 0 || directory != m_lastDirectory) {
        const QString folder = QDir::fromNativeSeparators(directory);
        m_lastFolder = m_folders.value(folder, m_folders.size());
        if (m_lastFolder == m_directories.size()) {
            m_folders.insert(folder, m_lastFolder);
            m_directories.append(directory);
        }
        m_lastDirectory = directory;
    }
    return m_lastFolder;
}
