#include "koRepathEngine.h"

#include "RepathTreeWalk.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

QFileInfo fileIn(const QString& folder, const QString& name)
{
    return QFileInfo(QDir(folder).filePath(name));
}

bool holds(const RepathFileIndex& index, const QString& name, const QFileInfo& trial)
{
    return index.contains(name, QDir::fromNativeSeparators(trial.absolutePath()));
}

// The tail walk as QString::arg reads it: a '%' followed by a digit in a folder name is a
// placeholder too. Used where the plain walk below could differ.
QString placeholderWalk(const QString& base, const QString& oldFolder, const QString& name,
                        const RepathFileIndex& index)
{
    QString result;
    QString pattern = base + QLatin1String("/%1");
    const QStringList parts = oldFolder.split(QLatin1Char('/'));
    for (auto part = parts.crbegin(); part != parts.crend(); ++part) {
        const QFileInfo trial = fileIn(pattern.arg(*part), name);
        if (holds(index, name, trial))
            result = trial.absoluteFilePath();
        pattern = pattern.arg(QLatin1String("%1/") + *part);
    }
    return result;
}

#ifdef Q_OS_WIN
// QFileInfo puts the current drive in front of a path starting with a separator.
bool isPlainPath(const QString&)
{
    return false;
}
#else
// An absolute path below the root that QString::arg and QFileInfo take as it is: no '%' that
// could be read as a placeholder, no empty, "." or ".." component (nor one starting with a dot).
bool isPlainPath(const QString& path)
{
    if (path.size() < 2 || !path.startsWith(QLatin1Char('/')) || path.endsWith(QLatin1Char('/')))
        return false;
    for (int i = 0; i < path.size(); ++i) {
        const QChar c = path.at(i);
        const QChar next = i + 1 < path.size() ? path.at(i + 1) : QChar();
        if (c == QLatin1Char('%') || (c == QLatin1Char('/') && (next == QLatin1Char('/') || next == QLatin1Char('.'))))
            return false;
    }
    return true;
}
#endif

// A name QDir and QFileInfo join to a folder as it is: not "." or "..", nor a resource path.
bool isPlainName(const QString& name)
{
    return !name.isEmpty() && !name.startsWith(QLatin1Char('.')) && !name.startsWith(QLatin1Char(':'))
        && !name.contains(QLatin1Char('/'));
}

QString filePathIn(const QString& folder, const QString& name)
{
    // The walk's folders are clean and absolute already: a run joins one for every
    // candidate of every link.
    if (isPlainPath(folder) && isPlainName(name))
        return folder + QLatin1Char('/') + name;
    return fileIn(folder, name).absoluteFilePath();
}

bool isAscii(const QString& text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() - 1u < 0x7fu; });
}

// The same walk for plain paths, longest tail first, so the first hit wins. Each trial is
// newDir joined with a tail of the old folder, already clean and absolute. The trial through
// the empty root component is not clean, so QFileInfo re-encodes it; it repeats the next
// trial unless the local 8-bit encoding changes a character, which ASCII rules out.
QString plainWalk(const QString& base, const QString& oldFolder, const QString& name,
                  const RepathFileIndex& index)
{
    if (!isAscii(base) || !isAscii(oldFolder)) {
        const QFileInfo root = fileIn(base + QLatin1Char('/') + oldFolder, name);
        if (holds(index, name, root))
            return root.absoluteFilePath();
    }
    const QString prefix = base + QLatin1Char('/');
    for (int slash = oldFolder.indexOf(QLatin1Char('/')); slash >= 0;
         slash = oldFolder.indexOf(QLatin1Char('/'), slash + 1)) {
        const QString folder = prefix + oldFolder.midRef(slash + 1);
        if (index.contains(name, folder))
            return folder + QLatin1Char('/') + name;
    }
    return QString();
}

// The file of the name in the folder below newDir that repeats the longest run of trailing
// components of oldPath's folder; empty when no such folder holds one.
QString tailMatch(const QString& oldPath, const QString& newDir, const QString& name,
                  const RepathFileIndex& index)
{
    const QString base = QDir::fromNativeSeparators(newDir);
    const int slash = oldPath.lastIndexOf(QLatin1Char('/'));
    if (slash > 0 && isPlainPath(base) && isPlainPath(oldPath) && !name.startsWith(QLatin1Char(':')))
        return plainWalk(base, oldPath.left(slash), name, index);
    return placeholderWalk(base, QDir::fromNativeSeparators(QFileInfo(oldPath).absolutePath()), name, index);
}

// How many folders below newDir the file lies, which is the length of the tail it matched.
int tailLength(const QString& newDir, const QString& file)
{
    const QString plainBase = QDir::fromNativeSeparators(newDir);
    if (isPlainPath(plainBase) && isPlainPath(file) && file.startsWith(plainBase + QLatin1Char('/'))) {
        const int folders = file.midRef(plainBase.size() + 1).count(QLatin1Char('/'));
        if (folders > 0)
            return folders;
    }
    const QDir base(QDir::cleanPath(QFileInfo(newDir).absoluteFilePath()));
    return base.relativeFilePath(QFileInfo(file).absolutePath()).count(QLatin1Char('/')) + 1;
}

RepathChoice singleFile(const QString& path)
{
    RepathChoice choice;
    choice.path = path;
    choice.rule = RepathChoice::Rule::SingleFile;
    return choice;
}

QString linkPath(const kodReferenceNode& node, RepathTarget kind)
{
    return kind == RepathTarget::Source ? node.getSourcePath() : node.getSmartPath();
}

bool isMissing(const kodReferenceNode& node, RepathTarget kind)
{
    const koReferenceTypes::FileState state =
        kind == RepathTarget::Source ? node.getSourceFileState() : node.getSmartFileState();
    return state == koReferenceTypes::Missing;
}

QStringList fileNames(const QVector<RepathLink>& links)
{
    QStringList names;
    for (const RepathLink& link : links)
        names.append(QFileInfo(link.oldPath).fileName());
    return names;
}

} // namespace

RepathMode repathMode(bool sources, bool smarts)
{
    if (sources && smarts)
        return RepathMode::Both;
    return smarts ? RepathMode::SmartsOnly : RepathMode::SourcesOnly;
}

void buildFileIndex(RepathFileIndex& index, const QString& newDir, RepathProgress* progress)
{
    RepathTreeWalk walk(newDir);
    // The files of a folder come in a row and share its absolute path.
    QString folder;
    QString absoluteFolder;
    while ((!progress || !progress->isCancelled()) && walk.next()) {
        if (folder.isNull() || walk.folder() != folder) {
            folder = walk.folder();
            absoluteFolder = QFileInfo(walk.filePath()).absolutePath();
            if (progress)
                progress->enterFolder(absoluteFolder);
        }
        index.insert(walk.fileName(), absoluteFolder);
        if (progress)
            progress->addFile();
    }
}

RepathChoice chooseRepathTarget(const QString& oldPath, const QString& newDir, bool searchSubdirs,
                                const RepathFileIndex& index)
{
    const QString name = QFileInfo(oldPath).fileName();
    if (name.isEmpty())
        return {};
    if (!searchSubdirs) {
        const QFileInfo candidate = fileIn(newDir, name);
        return candidate.exists() ? singleFile(candidate.absoluteFilePath()) : RepathChoice();
    }
    const int count = index.count(name);
    if (count == 0)
        return {};
    if (count == 1)
        return singleFile(filePathIn(index.firstDirectory(name), name));
    RepathChoice choice;
    for (const QString& folder : index.directories(name))
        choice.candidates.append(filePathIn(folder, name));
    choice.path = tailMatch(oldPath, newDir, name, index);
    if (choice.path.isEmpty()) {
        choice.path = choice.candidates.first();
        choice.rule = RepathChoice::Rule::FirstMet;
    } else {
        choice.rule = RepathChoice::Rule::LongestTail;
        choice.tailFolders = tailLength(newDir, choice.path);
    }
    return choice;
}

QString findRepathTarget(const QString& oldPath, const QString& newDir, bool searchSubdirs,
                         const RepathFileIndex& index)
{
    return chooseRepathTarget(oldPath, newDir, searchSubdirs, index).path;
}

QVector<RepathLink> repathLinks(const QList<kodReferenceNode>& nodes, bool missingOnly, bool sources, bool smarts)
{
    QVector<RepathLink> links;
    links.reserve(nodes.size() * (int(sources) + int(smarts)));
    const auto add = [&](RepathTarget kind) {
        for (const kodReferenceNode& node : nodes) {
            const QString oldPath = linkPath(node, kind);
            if (!oldPath.isEmpty() && (!missingOnly || isMissing(node, kind)))
                links.append({node, kind, oldPath});
        }
    };
    if (sources)
        add(RepathTarget::Source);
    if (smarts)
        add(RepathTarget::Smart);
    return links;
}

QVector<RepathChoice> findRepathChoices(const QVector<RepathLink>& links, const QString& newDir, bool searchSubdirs,
                                       RepathProgress* progress)
{
    // The index keeps only the names asked for.
    RepathFileIndex index(fileNames(links));
    if (searchSubdirs)
        buildFileIndex(index, newDir, progress);
    QVector<RepathChoice> choices;
    for (const RepathLink& link : links) {
        if (progress && progress->isCancelled())
            break;
        choices.append(chooseRepathTarget(link.oldPath, newDir, searchSubdirs, index));
    }
    return choices;
}

QString plannedRepathPath(const RepathLink& link, const RepathChoice& choice, const QString& newDir)
{
    return choice.path.isEmpty() ? filePathIn(newDir, QFileInfo(link.oldPath).fileName()) : choice.path;
}

void sortRepathEntries(QList<RepathEntry*>& found, QList<RepathEntry*>& notFound, const QVector<RepathLink>& links,
                       const QVector<RepathChoice>& choices, const QString& newDir)
{
    for (int i = 0; i < links.size(); ++i) {
        const RepathLink& link = links.at(i);
        const RepathChoice choice = choices.value(i);
        auto* entry = new RepathEntry{link.node, link.kind, plannedRepathPath(link, choice, newDir)};
        (choice.path.isEmpty() ? notFound : found).append(entry);
    }
}

void collectRepathEntries(QList<RepathEntry*>& found, QList<RepathEntry*>& notFound,
                          const QList<kodReferenceNode>& nodes, bool searchSubdirs, bool missingOnly,
                          bool sources, bool smarts, const QString& newDir)
{
    const QVector<RepathLink> links = repathLinks(nodes, missingOnly, sources, smarts);
    sortRepathEntries(found, notFound, links, findRepathChoices(links, newDir, searchSubdirs, nullptr), newDir);
}

void applyRepath(QList<RepathEntry*>& entries, RepathMode mode)
{
    for (RepathEntry* entry : entries) {
        const QString path = QDir::toNativeSeparators(entry->path);
        switch (mode) {
        case RepathMode::SourcesOnly:
            entry->node.setSourcePath(path);
            break;
        case RepathMode::SmartsOnly:
            entry->node.setSmartPath(path);
            break;
        case RepathMode::Both:
            if (entry->kind == RepathTarget::Source)
                entry->node.setSourcePath(path);
            else if (entry->kind == RepathTarget::Smart)
                entry->node.setSmartPath(path);
            break;
        }
    }
}

QStringList failedPaths(const QList<RepathEntry*>& notFound)
{
    QStringList paths;
    for (const RepathEntry* entry : notFound) {
        if (entry->kind == RepathTarget::Source || entry->kind == RepathTarget::Smart)
            paths.append(linkPath(entry->node, entry->kind));
    }
    return paths;
}
