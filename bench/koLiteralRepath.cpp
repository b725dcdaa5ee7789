#include "koLiteralRepath.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSet>

namespace koLiteralRepath {

FileIndex buildFileIndex(const QString& newDir)
{
    FileIndex index;
    QDirIterator it(newDir, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        // std::multimap puts an equal key after the ones already there.
        index.insert({it.fileInfo().fileName(), it.fileInfo().absolutePath()});
    }
    return index;
}

QString findTarget(const QString& oldPath, const QString& newDir, bool searchSubdirs, const FileIndex& index)
{
    const QString name = QFileInfo(oldPath).fileName();
    if (name.isEmpty())
        return QString();
    if (!searchSubdirs) {
        const QFileInfo candidate(QDir(newDir).filePath(name));
        return candidate.exists() ? candidate.absoluteFilePath() : QString();
    }
    const auto range = index.equal_range(name);
    const auto count = std::distance(range.first, range.second);
    if (count == 0)
        return QString();
    const QString first = QFileInfo(QDir(range.first->second).filePath(name)).absoluteFilePath();
    if (count == 1)
        return first;
    QSet<QString> folders;
    for (auto candidate = range.first; candidate != range.second; ++candidate)
        folders.insert(QDir::fromNativeSeparators(candidate->second));
    for (auto candidate = range.first; candidate != range.second; ++candidate) {
        const QStringList parts = QDir::fromNativeSeparators(QFileInfo(oldPath).absolutePath()).split(QLatin1Char('/'));
        QString pattern = QDir::fromNativeSeparators(newDir) + QLatin1String("/%1");
        QString result;
        for (int i = parts.size() - 1; i >= 0; --i) {
            const QFileInfo trial(QDir(pattern.arg(parts.at(i))).filePath(name));
            if (folders.contains(QDir::fromNativeSeparators(trial.absolutePath())))
                result = trial.absoluteFilePath();
            pattern = pattern.arg(QLatin1String("%1/") + parts.at(i));
        }
        if (!result.isEmpty())
            return result;
    }
    return first;
}

void collect(QList<RepathEntry*>& found, QList<RepathEntry*>& notFound, const QList<kodReferenceNode>& nodes,
             bool searchSubdirs, bool missingOnly, bool sources, bool smarts, const QString& newDir)
{
    const FileIndex index = searchSubdirs ? buildFileIndex(newDir) : FileIndex();
    for (const RepathTarget kind : {RepathTarget::Source, RepathTarget::Smart}) {
        if ((kind == RepathTarget::Source && !sources) || (kind == RepathTarget::Smart && !smarts))
            continue;
        for (const kodReferenceNode& node : nodes) {
            const bool isSource = kind == RepathTarget::Source;
            const QString oldPath = isSource ? node.getSourcePath() : node.getSmartPath();
            const auto state = isSource ? node.getSourceFileState() : node.getSmartFileState();
            if (oldPath.isEmpty() || (missingOnly && state != koReferenceTypes::Missing))
                continue;
            const QString target = findTarget(oldPath, newDir, searchSubdirs, index);
            if (!target.isEmpty()) {
                found.append(new RepathEntry{node, kind, target});
                continue;
            }
            const QString inNewDir = QDir(newDir).filePath(QFileInfo(oldPath).fileName());
            notFound.append(new RepathEntry{node, kind, QFileInfo(inNewDir).absoluteFilePath()});
        }
    }
}

} // namespace koLiteralRepath
