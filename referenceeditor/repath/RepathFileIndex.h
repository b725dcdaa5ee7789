#pragma once

#include <QHash>
#include <QSet>
#include <QString>

// The files below a folder by name, built by one walk and asked once per reference. Of the
// files sharing a name, the first one added stays first, so that a tie goes to the file
// the walk met first.
class RepathFileIndex
{
public:
    void insert(const QString& name, const QString& directory);

    int count(const QString& name) const;
    // The directory of the first file of the name; empty when there is none.
    QString firstDirectory(const QString& name) const;
    // Whether a file of the name lies in the folder; separators do not matter.
    bool contains(const QString& name, const QString& folder) const;

private:
    struct Name
    {
        int id = -1;
        int count = 0;
        QString firstDirectory;
    };

    int folderId(const QString& directory);

    QHash<QString, Name> m_names;
    QHash<QString, int> m_folders;
    // (name id, folder id) of every file
    QSet<quint64> m_placements;
    QString m_lastDirectory;
    int m_lastFolder = -1;
};
