#pragma once

#include <QDateTime>
#include <QString>

// The file links of a reference and what the host knows of their files.
struct koReferenceContent
{
    bool hasSmart = false;
    bool hasSource = false;
    QString smartPath;
    QString sourcePath;
    bool loaded = true;
    // Created in this session and never written.
    bool smartUnsaved = false;
    // The smart file could not be read; it counts as missing until it changes.
    bool smartUnreadable = false;
    // Modification time of the smart file when its content was read or written.
    QDateTime smartStamp;
    // The source file could not be imported; it counts as missing until it changes.
    bool sourceUnreadable = false;
    // Modification time of the source file when it could not be imported.
    QDateTime sourceStamp;
    QDateTime sourceImportDate;

    // Calls visit with each link that names a file: the smart file's, then the source's.
    template<class Visit>
    void forEachLinkedPath(Visit visit) const
    {
        if (hasSmart && !smartPath.isEmpty())
            visit(smartPath);
        if (hasSource && !sourcePath.isEmpty())
            visit(sourcePath);
    }

    bool operator==(const koReferenceContent& other) const
    {
        return hasSmart == other.hasSmart && hasSource == other.hasSource && smartPath == other.smartPath
            && sourcePath == other.sourcePath && loaded == other.loaded && smartUnsaved == other.smartUnsaved
            && smartUnreadable == other.smartUnreadable && smartStamp == other.smartStamp
            && sourceImportDate == other.sourceImportDate && sourceUnreadable == other.sourceUnreadable
            && sourceStamp == other.sourceStamp;
    }
    bool operator!=(const koReferenceContent& other) const { return !(*this == other); }
};
