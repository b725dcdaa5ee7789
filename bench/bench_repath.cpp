// Times the repath search against large folder trees in a real scene and prints
//   NAME: VALUE ms   and   NAME ratio: R
// Baseline: `find NEWDIR -type f`, the cost of the walk alone, measured in the same run.

#include "koLiteralRepath.h"

#include <RepathEntryList.h>
#include <koRepathEngine.h>

#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int runs = 7;
constexpr int referenceCount = 10000;
constexpr int partsPerProject = 8;
constexpr int subsPerPart = 5;
constexpr int filesPerFolder = 500;

struct Reference
{
    QString name;
    QString source;
};

[[noreturn]] void fail(const QString& message)
{
    std::fprintf(stderr, "bench_repath: %s\n", qPrintable(message));
    std::exit(1);
}

void touch(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        fail(QStringLiteral("cannot write %1").arg(path));
}

qint64 median(QVector<qint64> times)
{
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

void printLine(const QString& line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

void printMs(const QString& name, qint64 ms)
{
    printLine(QStringLiteral("%1: %2 ms").arg(name).arg(ms));
}

// A project tree: proj*/parts*/sub* leaf folders of filesPerFolder files each. A file name
// recurs in four leaves, so the search has to tell them apart by their folders.
QStringList makePartsTree(const QString& root, int projects)
{
    QStringList leaves;
    const int names = projects * partsPerProject * subsPerPart * filesPerFolder / 4;
    for (int p = 0; p < projects; ++p) {
        for (int q = 0; q < partsPerProject; ++q) {
            for (int s = 0; s < subsPerPart; ++s) {
                const QString leaf = QStringLiteral("proj%1/parts%2/sub%3").arg(p).arg(q).arg(s);
                QDir().mkpath(root + QLatin1Char('/') + leaf);
                for (int i = 0; i < filesPerFolder; ++i) {
                    const int name = (leaves.size() * filesPerFolder + i) % names;
                    touch(QStringLiteral("%1/%2/part_%3.stp").arg(root, leaf).arg(name, 6, 10, QLatin1Char('0')));
                }
                leaves.append(leaf);
            }
        }
    }
    return leaves;
}

// Old paths on a server that is gone: most repeat a leaf's folders, some only its last
// folder, some name files that are not in the tree.
QVector<Reference> partsReferences(const QString& oldRoot, const QStringList& leaves)
{
    QVector<Reference> references;
    const int names = leaves.size() * filesPerFolder / 4;
    for (int r = 0; r < referenceCount; ++r) {
        const int leaf = (r * 7) % leaves.size();
        const int number = (leaf * filesPerFolder + r % filesPerFolder) % names;
        const QString file = QStringLiteral("part_%1.stp").arg(number, 6, 10, QLatin1Char('0'));
        QString folder = oldRoot + QLatin1String("/archive/") + leaves.at(leaf);
        if (r % 10 == 8)
            folder = oldRoot + QLatin1String("/loose/") + leaves.at(leaf).section(QLatin1Char('/'), -1);
        const QString name = r % 10 == 9 ? QStringLiteral("gone_%1.stp").arg(r) : file;
        references.append({QStringLiteral("ref%1").arg(r), folder + QLatin1Char('/') + name});
    }
    return references;
}

// 400 folders with one file of the same name each, and references to that name from as
// many different old folders; every tenth has no folder in common with the tree.
QVector<Reference> makeSameNameCase(const QString& newRoot, const QString& oldRoot)
{
    for (int g = 0; g < 20; ++g) {
        for (int i = 0; i < 20; ++i) {
            const QString folder = QStringLiteral("%1/group%2/item%3").arg(newRoot).arg(g).arg(i);
            QDir().mkpath(folder);
            touch(folder + QLatin1String("/bolt.stp"));
        }
    }
    QVector<Reference> references;
    for (int r = 0; r < referenceCount; ++r) {
        const QString folder = r % 10 == 9 ? QStringLiteral("%1/loose/%2").arg(oldRoot).arg(r)
                                           : QStringLiteral("%1/site%2/group%3/item%4").arg(oldRoot).arg(r / 400).arg(r % 20).arg((r / 20) % 20);
        references.append({QStringLiteral("bolt%1").arg(r), folder + QLatin1String("/bolt.stp")});
    }
    return references;
}

// Writes the references into a project and opens it, so they are nodes of a real scene.
QList<kodReferenceNode> openScene(const QString& projectFile, const QVector<Reference>& references)
{
    QJsonArray children;
    for (const Reference& reference : references) {
        children.append(QJsonObject{{QStringLiteral("type"), QStringLiteral("reference")},
                                    {QStringLiteral("name"), reference.name},
                                    {QStringLiteral("source"), reference.source},
                                    {QStringLiteral("loaded"), false}});
    }
    const QJsonObject root{{QStringLiteral("type"), QStringLiteral("group")},
                           {QStringLiteral("name"), QStringLiteral("bench")},
                           {QStringLiteral("children"), children}};
    QFile file(projectFile);
    if (!file.open(QIODevice::WriteOnly)
        || file.write(QJsonDocument(QJsonObject{{QStringLiteral("format"), QStringLiteral("kovis-project")},
                                                {QStringLiteral("version"), 1},
                                                {QStringLiteral("root"), root}})
                          .toJson())
               < 0) {
        fail(QStringLiteral("cannot write %1").arg(projectFile));
    }
    file.close();
    if (!koService<koFileIOService>()->loadProject(projectFile))
        fail(QStringLiteral("cannot open %1").arg(projectFile));
    QList<kodReferenceNode> nodes;
    for (const kodReferenceNode& node : koService<koReferenceService>()->getSceneReferences()) {
        if (!node.isRootNode())
            nodes.append(node);
    }
    if (nodes.size() != references.size())
        fail(QStringLiteral("the scene holds %1 references instead of %2").arg(nodes.size()).arg(references.size()));
    return nodes;
}

qint64 collectMs(const QList<kodReferenceNode>& nodes, const QString& newDir)
{
    RepathEntryList found;
    RepathEntryList notFound;
    QElapsedTimer timer;
    timer.start();
    collectRepathEntries(found, notFound, nodes, true, false, true, true, newDir);
    return timer.elapsed();
}

qint64 findMs(const QString& newDir)
{
    QElapsedTimer timer;
    timer.start();
    QProcess find;
    find.start(QStringLiteral("find"), {newDir, QStringLiteral("-type"), QStringLiteral("f")});
    while (find.waitForReadyRead(-1))
        find.readAllStandardOutput();
    find.waitForFinished(-1);
    if (find.exitStatus() != QProcess::NormalExit || find.exitCode() != 0)
        fail(QStringLiteral("find failed: %1").arg(find.errorString()));
    return timer.elapsed();
}

QString describe(const QList<RepathEntry*>& entries, int index)
{
    const RepathEntry* entry = entries.value(index);
    return entry ? QStringLiteral("%1 %2 %3").arg(entry->node.getName()).arg(int(entry->kind)).arg(entry->path)
                 : QStringLiteral("(none)");
}

void compareLists(const char* list, const QList<RepathEntry*>& engine, const QList<RepathEntry*>& literal)
{
    for (int i = 0; i < qMax(engine.size(), literal.size()); ++i) {
        if (describe(engine, i) != describe(literal, i)) {
            fail(QStringLiteral("the engine differs from the literal search in the %1 list at %2: %3 instead of %4")
                     .arg(QLatin1String(list)).arg(i).arg(describe(engine, i), describe(literal, i)));
        }
    }
}

// Every sample-th reference, searched by the engine and by the literal search.
int checkAgainstLiteral(const QList<kodReferenceNode>& nodes, const QString& newDir, int sample)
{
    QList<kodReferenceNode> sampled;
    for (int i = 0; i < nodes.size(); i += sample)
        sampled.append(nodes.at(i));
    RepathEntryList found;
    RepathEntryList notFound;
    RepathEntryList literalFound;
    RepathEntryList literalNotFound;
    collectRepathEntries(found, notFound, sampled, true, false, true, true, newDir);
    koLiteralRepath::collect(literalFound, literalNotFound, sampled, true, false, true, true, newDir);
    compareLists("found", found, literalFound);
    compareLists("not found", notFound, literalNotFound);
    return sampled.size();
}

void benchPartsTree(const QString& work, int projects)
{
    const QString newDir = work + QLatin1String("/new");
    std::fprintf(stderr, "generating %d files...\n", projects * partsPerProject * subsPerPart * filesPerFolder);
    const QStringList leaves = makePartsTree(newDir, projects);
    const QList<kodReferenceNode> nodes = openScene(work + QLatin1String("/parts.kpr"),
                                                    partsReferences(work + QLatin1String("/old"), leaves));
    const int files = leaves.size() * filesPerFolder;
    const int folders = projects * (1 + partsPerProject + partsPerProject * subsPerPart);
    const QString name = QStringLiteral("repath %1 references in %2 files, %3 folders").arg(nodes.size()).arg(files).arg(folders);
    const int checked = checkAgainstLiteral(nodes, newDir, 50);
    // Alternate the two so that both see the same cache and load.
    QVector<qint64> collectTimes;
    QVector<qint64> findTimes;
    for (int i = 0; i < runs; ++i) {
        collectTimes.append(collectMs(nodes, newDir));
        findTimes.append(findMs(newDir));
    }
    const qint64 collect = median(collectTimes);
    const qint64 find = median(findTimes);
    printMs(name, collect);
    printMs(QStringLiteral("find -type f in %1 files").arg(files), find);
    printLine(QStringLiteral("%1 ratio: %2").arg(name).arg(double(collect) / double(qMax<qint64>(find, 1)), 0, 'f', 2));
    printLine(QStringLiteral("engine matches the literal search on %1 references in %2 files").arg(checked).arg(files));
}

void benchSameName(const QString& work)
{
    const QString newDir = work + QLatin1String("/same");
    const QList<kodReferenceNode> nodes = openScene(work + QLatin1String("/same.kpr"),
                                                    makeSameNameCase(newDir, work + QLatin1String("/old")));
    const int checked = checkAgainstLiteral(nodes, newDir, 25);
    QVector<qint64> times;
    for (int i = 0; i < runs; ++i)
        times.append(collectMs(nodes, newDir));
    printMs(QStringLiteral("repath %1 references to one name in 400 folders").arg(nodes.size()), median(times));
    printLine(QStringLiteral("engine matches the literal search on %1 references to one name").arg(checked));
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Times the repath search."));
    parser.addHelpOption();
    const QCommandLineOption large(QStringLiteral("large"), QStringLiteral("Also time a tree of 1,000,000 files."));
    parser.addOption(large);
    parser.process(app);

    QTemporaryDir settings;
    koHost::initialize(settings.filePath(QStringLiteral("kovis.ini")));
    {
        QTemporaryDir work;
        benchPartsTree(work.path(), 10);
    }
    {
        QTemporaryDir work;
        benchSameName(work.path());
    }
    if (parser.isSet(large)) {
        QTemporaryDir work;
        benchPartsTree(work.path(), 50);
    }
    koHost::shutdown();
    return 0;
}
