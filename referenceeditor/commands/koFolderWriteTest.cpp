#include "koFolderWriteTest.h"

#include <QDir>
#include <QTemporaryFile>

bool koFolderWriteTest::isWritable(const QString& folder)
{
    // Permission bits do not tell: they say nothing of ACLs, read-only mounts or root.
    QTemporaryFile probe(QDir(folder).absoluteFilePath(QStringLiteral("temp.txt")));
    return probe.open();
}
