#include "koTestHost.h"

#include <RepathEntryList.h>
#include <koRepathEngine.h>

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QDirIterator>
#include <QScopeGuard>
#include <QTextCodec>
#include <QtTest>

namespace {

const QString newFolder = QStringLiteral("new");

// Entries below the new folder: "name" a file, "name>target" a link to target.
void makeTree(const koTestHost& host, const QStringList& entries)
{
    QDir().mkpath(host.path(newFolder));
    for (const QString& entry : entries) {
        const QString path = host.path(newFolder + QLatin1Char('/') + entry.section(QLatin1Char('>'), 0, 0));
        if (!entry.contains(QLatin1Char('>')))
            host.writeFile(newFolder + QLatin1Char('/') + entry, "x");
        else
            QVERIFY(QFile::link(host.path(newFolder + QLatin1Char('/') + entry.section(QLatin1Char('>'), 1)), path));
    }
}

QString firstMet(const QString& folder, const QString& name)
{
    QDirIterator it(folder, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        if (it.fileName() == name)
            return it.fileInfo().absoluteFilePath();
    }
    return QString();
}

// A reference whose links are "" (none) or paths below the host folder "old".
kodReferenceNode makeReference(const koTestHost& host, const QString& source, const QString& smart)
{
    kodReferenceNode node = koService<koReferenceService>()->createReference(kodNode());
    if (!source.isEmpty())
        node.setSourcePath(host.path(QLatin1String("old/") + source));
    if (!smart.isEmpty())
        node.setSmartPath(host.path(QLatin1String("old/") + smart));
    return node;
}

// "node kind path", the path relative to the new folder
QStringList describe(const QList<RepathEntry*>& entries, const QList<kodReferenceNode>& nodes, const QString& newDir)
{
    QStringList lines;
    for (const RepathEntry* entry : entries) {
        lines.append(QStringLiteral("%1 %2 %3")
                         .arg(nodes.indexOf(entry->node))
                         .arg(entry->kind == RepathTarget::Source ? QLatin1String("source") : QLatin1String("smart"))
                         .arg(QDir(newDir).relativeFilePath(entry->path)));
    }
    return lines;
}

} // namespace

class tst_koRepathEngine : public QObject
{
    Q_OBJECT

private slots:
    void findTarget_data();
    void findTarget();
    void choiceAmongTheFilesMet_data();
    void choiceAmongTheFilesMet();
    void collect_data();
    void collect();
    void failedPathsReadTheNodesAgain();
};

void tst_koRepathEngine::findTarget_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("newDir");
    QTest::addColumn<QString>("oldPath");
    QTest::addColumn<bool>("subdirs");
    // below the new folder; "(first met)": the first file of the name the directory walk meets
    QTest::addColumn<QString>("expected");

    QTest::newRow("longest tail wins") << QStringList{"a/f", "parts/a/f", "other/f"} << "" << "/X/proj/parts/a/f" << true << "parts/a/f";
    QTest::newRow("tail beats a copy in the new folder") << QStringList{"f", "a/f"} << "" << "/X/a/f" << true << "a/f";
    QTest::newRow("only file anywhere") << QStringList{"deep/er/f"} << "" << "/X/y/f" << true << "deep/er/f";
    QTest::newRow("no tail, copy in new folder: first met") << QStringList{"f", "p/f", "q/f"} << "" << "/X/z/f" << true << "(first met)";
    QTest::newRow("no sub-folders: top only") << QStringList{"f", "sub/f"} << "" << "/X/sub/f" << false << "f";
    QTest::newRow("no sub-folders: nothing on top") << QStringList{"sub/f"} << "" << "/X/sub/f" << false << "";
    QTest::newRow("letter case differs") << QStringList{"F", "a/F"} << "" << "/X/a/f" << true << "";
    QTest::newRow("path ends in a separator") << QStringList{"dir/f"} << "" << "/X/dir/" << true << "";
    QTest::newRow("new folder not clean") << QStringList{"a/f", "b/f"} << "/b/../" << "/X/a/f" << true << "a/f";
    QTest::newRow("link loop is not followed") << QStringList{"a/f", "b/f", "a/loop>", "b/up>b"} << "" << "/X/b/f" << true << "b/f";
}

void tst_koRepathEngine::findTarget()
{
    QFETCH(QStringList, files);
    QFETCH(QString, newDir);
    QFETCH(QString, oldPath);
    QFETCH(bool, subdirs);
    QFETCH(QString, expected);

    const koTestHost host;
    makeTree(host, files);
    const QString base = host.path(newFolder);
    RepathFileIndex index;
    if (subdirs)
        buildFileIndex(index, base + newDir);
    if (expected == QLatin1String("(first met)"))
        expected = ::firstMet(base, QFileInfo(oldPath).fileName());
    else if (!expected.isEmpty())
        expected = QDir(base).filePath(expected);
    QCOMPARE(findRepathTarget(oldPath, base + newDir, subdirs, index), expected);
}

void tst_koRepathEngine::choiceAmongTheFilesMet_data()
{
    // folders holding a file "f", in the order the walk met them
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("newDir");
    QTest::addColumn<QString>("oldPath");
    // the rule, the trailing folders it matched and the path chosen
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QByteArray>("localeCodec");

    QTest::newRow("nothing") << QStringList() << "/n" << "/x/f" << "not found 0 " << QByteArray();
    QTest::newRow("one file") << QStringList{"/n/p"} << "/n" << "/x/q/f" << "single file 0 /n/p/f" << QByteArray();
    QTest::newRow("tail of two") << QStringList{"/n/a", "/n/b/a", "/n/c"} << "/n" << "/x/b/a/f"
                                 << "longest tail 2 /n/b/a/f" << QByteArray();
    QTest::newRow("tail of one") << QStringList{"/n/q/a", "/n/a"} << "/n" << "/x/b/a/f" << "longest tail 1 /n/a/f"
                                 << QByteArray();
    QTest::newRow("no tail: first met") << QStringList{"/n/q", "/n", "/n/p"} << "/n" << "/x/z/f"
                                        << "first met 0 /n/q/f" << QByteArray();
    QTest::newRow("file at the root tries the new folder") << QStringList{"/n/p", "/n"} << "/n" << "/f"
                                                           << "longest tail 1 /n/f" << QByteArray();
    QTest::newRow("umlauts") << QStringList{"/n/ü", "/n/a/ü", "/n/b"} << "/n" << "/x/a/ü/f"
                             << "longest tail 2 /n/a/ü/f" << QByteArray();
    QTest::newRow("new folder not clean") << QStringList{"/n/b", "/n/a"} << "/n/b/.." << "/x/a/f"
                                          << "longest tail 1 /n/a/f" << QByteArray();
    // QFileInfo cleans the trial through the root component in the local 8-bit encoding.
    QTest::newRow("root trial re-encoded") << QStringList{"/n/q", "/n/x/?"} << "/n" << "/x/\u03a9/f"
                                           << "longest tail 2 /n/x/?/f" << QByteArray("ISO-8859-1");
    // QString::arg reads "%1" in an old folder as a placeholder and fills it in later.
    QTest::newRow("percent sign in the old folder") << QStringList{"/n/a", "/n/X/50X/a"} << "/n" << "/X/50%1/a/f"
                                                    << "longest tail 3 /n/X/50X/a/f" << QByteArray();
}

void tst_koRepathEngine::choiceAmongTheFilesMet()
{
    QFETCH(QStringList, folders);
    QFETCH(QString, newDir);
    QFETCH(QString, oldPath);
    QFETCH(QString, expected);
    QFETCH(QByteArray, localeCodec);

    QTextCodec* const codec = QTextCodec::codecForLocale();
    const auto restoreCodec = qScopeGuard([codec] { QTextCodec::setCodecForLocale(codec); });
    if (!localeCodec.isEmpty())
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(localeCodec));
    RepathFileIndex index;
    QStringList files;
    for (const QString& folder : folders) {
        index.insert(QStringLiteral("f"), folder);
        files.append(folder + QLatin1String("/f"));
    }
    const RepathChoice choice = chooseRepathTarget(oldPath, newDir, true, index);
    const char* const rules[] = {"not found", "single file", "longest tail", "first met"};
    QCOMPARE(QStringLiteral("%1 %2 %3").arg(rules[int(choice.rule)]).arg(choice.tailFolders).arg(choice.path), expected);
    // Every file of the name is a candidate when there are several.
    QCOMPARE(choice.candidates, files.size() > 1 ? files : QStringList());
    QCOMPARE(choice.path, findRepathTarget(oldPath, newDir, true, index));
}

void tst_koRepathEngine::collect_data()
{
    QTest::addColumn<QStringList>("sourcePaths");
    QTest::addColumn<QStringList>("smartPaths");
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QStringList>("files");
    // which of "sub-folders", "missing only", "sources" and "smarts" are asked for
    QTest::addColumn<QString>("options");
    QTest::addColumn<QStringList>("found");
    QTest::addColumn<QStringList>("notFound");

    QTest::newRow("sources before smarts")
        << QStringList{"p/a.obj", "q/b.obj"} << QStringList{"p/a.kpr", "q/b.kpr"} << QStringList() << QStringList{"p/a.obj", "q/b.obj", "p/a.kpr", "x/b.kpr", "q/a.kpr"}
        << "sub-folders sources smarts"
        << QStringList{"0 source p/a.obj", "1 source q/b.obj", "0 smart p/a.kpr", "1 smart x/b.kpr"} << QStringList();
    QTest::newRow("not found: the name in the new folder")
        << QStringList{"gone/z.obj", "p/a.obj"} << QStringList{"", "gone/z.kpr"} << QStringList() << QStringList{"p/a.obj"}
        << "sub-folders sources smarts"
        << QStringList{"1 source p/a.obj"} << QStringList{"0 source z.obj", "1 smart z.kpr"};
    QTest::newRow("missing only keeps files that are there")
        << QStringList{"x/a.obj", "x/b.obj"} << QStringList{"x/a.kpr", "x/b.kpr"} << QStringList{"x/a.obj", "x/b.kpr"} << QStringList{"x/a.obj", "x/b.obj", "x/a.kpr", "x/b.kpr"}
        << "sub-folders missing only sources smarts"
        << QStringList{"1 source x/b.obj", "0 smart x/a.kpr"} << QStringList();
    QTest::newRow("empty link skipped per link")
        << QStringList{"", "s/d.obj"} << QStringList{"s/c.kpr", ""} << QStringList() << QStringList{"s/c.kpr", "s/d.obj"}
        << "sub-folders sources smarts"
        << QStringList{"1 source s/d.obj", "0 smart s/c.kpr"} << QStringList();
    QTest::newRow("smarts only")
        << QStringList{"s/d.obj"} << QStringList{"s/d.kpr"} << QStringList() << QStringList{"s/d.obj"}
        << "sub-folders smarts"
        << QStringList() << QStringList{"0 smart d.kpr"};
    QTest::newRow("without sub-folders")
        << QStringList{"p/a.obj", "p/b.obj"} << QStringList{"", ""} << QStringList() << QStringList{"a.obj", "p/a.obj", "p/b.obj"}
        << "sources smarts"
        << QStringList{"0 source a.obj"} << QStringList{"1 source b.obj"};
}

void tst_koRepathEngine::collect()
{
    QFETCH(QStringList, sourcePaths);
    QFETCH(QStringList, smartPaths);
    QFETCH(QStringList, existing);
    QFETCH(QStringList, files);
    QFETCH(QString, options);
    QFETCH(QStringList, found);
    QFETCH(QStringList, notFound);

    const koTestHost host;
    makeTree(host, files);
    for (const QString& file : existing)
        host.writeFile(QLatin1String("old/") + file, "x");
    QList<kodReferenceNode> nodes;
    for (int i = 0; i < sourcePaths.size(); ++i)
        nodes.append(makeReference(host, sourcePaths.at(i), smartPaths.at(i)));

    RepathEntryList foundEntries;
    RepathEntryList notFoundEntries;
    const QString newDir = host.path(newFolder);
    collectRepathEntries(foundEntries, notFoundEntries, nodes, options.contains("sub-folders"),
                         options.contains("missing only"), options.contains("sources"), options.contains("smarts"), newDir);
    QCOMPARE(describe(foundEntries, nodes, newDir), found);
    QCOMPARE(describe(notFoundEntries, nodes, newDir), notFound);
}

void tst_koRepathEngine::failedPathsReadTheNodesAgain()
{
    const koTestHost host;
    makeTree(host, {});
    kodReferenceNode node = makeReference(host, "gone/a.obj", "gone/a.kpr");
    RepathEntryList found;
    RepathEntryList notFound;
    collectRepathEntries(found, notFound, {node}, true, false, true, true, host.path(newFolder));
    QList<RepathEntry*>& list = notFound;
    list.append(new RepathEntry{node, RepathTarget(7), QString()});
    node.setSourcePath(host.path(QStringLiteral("moved/a.obj")));

    QCOMPARE(failedPaths(notFound), (QStringList{host.path("moved/a.obj"), host.path("old/gone/a.kpr")}));
}

QTEST_GUILESS_MAIN(tst_koRepathEngine)
#include "tst_korepathengine.moc"
