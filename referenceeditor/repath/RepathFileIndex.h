#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

// The files below a folder by name, built by one walk and asked once per reference. Of the
// files sharing a name, the first one added stays first, so that a tie goes to the file
// the walk met first.
class RepathFileIndex
{
public:
    RepathFileIndex() = default;
    // Keeps only the files of these names, the only ones a run asks for, which on large trees
    // spares most of the work and memory of the index.
    explicit RepathFileIndex(const QStringList& names);

    void insert(const QString& name, const QString& directory);

    int count(const QString& name) const;
    // The directory of the first file of the name; empty when there is none.
    QString firstDirectory(const QString& name) const;
    // Whether a file of the name lies in the folder; separators do not matter.
    bool contains(const QString& name, const QString& folder) const;
    // The directories of all files of the name: the first one met first, then the others in
    // the order the walk met their folders.
    QStringList directories(const QString& name) const;

private:
    struct Name
    {
        int count = 0;
        QString firstDirectory;
        int firstFolder = -1;
        // sorted
        QVector<int> otherFolders;
    };

    int folderId(const QString& directory);

    QHash<QString, Name> m_names;
    bool m_limited = false;
    QHash<QString, int> m_folders;
    // by folder id
    QVector<QString> m_directories;
    QString m_lastDirectory;
    int m_lastFolder = -1;
};
