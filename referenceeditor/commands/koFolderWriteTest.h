#pragma once

#include <QString>

// Whether new files can be created in a folder, found by creating one and removing it
// again at once; nothing else is written.
class koFolderWriteTest
{
public:
    static bool isWritable(const QString& folder);
};
