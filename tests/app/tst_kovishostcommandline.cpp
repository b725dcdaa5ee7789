#include "koTestHost.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

// Runs kovis-host as a pipeline would and looks at its output and exit code.
class tst_kovisHostCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void exitCodeAndOutput_data();
    void exitCodeAndOutput();
    void screenshotIsWritten();
    void repath_data();
    void repath();
    void jsonOutput_data();
    void jsonOutput();
};

namespace {

struct Run
{
    int exitCode;
    QString out;
    QString err;
};

Run runHost(const QStringList& arguments)
{
    QProcess host;
    host.start(QStringLiteral(KOVIS_HOST), arguments);
    if (!host.waitForFinished(60000))
        qFatal("kovis-host did not finish");
    return {host.exitCode(), QString::fromUtf8(host.readAllStandardOutput()), QString::fromUtf8(host.readAllStandardError())};
}

// A geometry file of 24 bytes that declares ten million children.
const QByteArray geometryCountBomb("KOSB\x00\x01\x01\xff\xff\xff\xff\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x98\x96\x7f", 24);

bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
}

// Puts a special or broken file where the demo's project or one of its files was.
bool applyChange(const QString& change, const QTemporaryDir& folder, const QString& project)
{
    if (change == "restore")
        return QFile::copy(folder.filePath(QStringLiteral("frame/headset.kpr")), folder.filePath(QStringLiteral("drivetrain/cassette.kpr")));
    if (change == "remove")
        return QFile::remove(folder.filePath(QStringLiteral("wheels/tyre.obj")));
    if (change == "geometry count bomb")
        return writeFile(folder.filePath(QStringLiteral("wheels/hub.osb")), geometryCountBomb);
    if (change == "corrupt")
        return writeFile(project, "{ not json");
    if (change == "awkward name")
        return writeFile(project, koTestHost::projectDocument("Root", {koTestHost::reference("a\tb\nc\\d\re", QString(), "sub\tdir/x.obj")}));
    if (change == "fifo")
        return QFile::remove(project) && ::mkfifo(QFile::encodeName(project).constData(), 0600) == 0;
    return change.isEmpty();
}

void copyFolder(const QString& from, const QString& to)
{
    QDir().mkpath(to);
    for (const QFileInfo& entry : QDir(from).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (entry.isDir())
            copyFolder(entry.filePath(), to + QLatin1Char('/') + entry.fileName());
        else
            QFile::copy(entry.filePath(), to + QLatin1Char('/') + entry.fileName());
    }
}

// The lines of a report with the test's folder taken out of the paths.
QStringList reportLines(const Run& run, const QTemporaryDir& folder)
{
    QString out = run.out;
    return out.replace(folder.path() + QLatin1Char('/'), QString()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QString copyDemo(const QTemporaryDir& folder)
{
    copyFolder(QFileInfo(QStringLiteral(KOVIS_DEMO_PROJECT)).path(), folder.path());
    return folder.filePath(QStringLiteral("bicycle.kpr"));
}

// A project whose files moved from old/ to new/: A and B link there directly, C is a
// sub-reference in the project's folder whose own reference D links there too.
QString makeMovedProject(const QTemporaryDir& folder, const QStringList& newFiles)
{
    const QString old = folder.filePath(QStringLiteral("old/"));
    const QJsonArray references{koTestHost::reference("A", QString(), old + "a/a.obj"),
                                koTestHost::reference("B", old + "parts/b/b.kpr", old + "parts/b/b.obj"),
                                koTestHost::reference("C", "c.kpr", QString())};
    QDir().mkpath(folder.filePath(QStringLiteral("proj")));
    writeFile(folder.filePath(QStringLiteral("proj/c.kpr")), koTestHost::projectDocument("C", {koTestHost::reference("D", QString(), old + "d/d.obj")}));
    for (const QString& file : newFiles) {
        QDir().mkpath(QFileInfo(folder.filePath(file)).path());
        writeFile(folder.filePath(file), file.endsWith(".kpr") ? koTestHost::projectDocument("B", {}) : QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\no X\nf 1 2 3\n"));
    }
    const QString project = folder.filePath(QStringLiteral("proj/scene.kpr"));
    writeFile(project, koTestHost::projectDocument("Root", references));
    return project;
}

} // namespace

void tst_kovisHostCommandLine::exitCodeAndOutput_data()
{
    QTest::addColumn<QString>("change");
    // PROJECT stands for a copy of the demo project.
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("error");
    QTest::addColumn<int>("outputLines");
    QTest::addColumn<QStringList>("shown");

    const QStringList check{"--check", "PROJECT"};
    const QStringList list{"--list-references", "PROJECT"};
    QTest::newRow("demo as shipped") << QString() << check << 1 << "1 link(s) missing" << 18 << QStringList();
    QTest::newRow("missing file restored") << "restore" << check << 0 << "All 17 reference(s) found" << 18 << QStringList();
    QTest::newRow("another file removed") << "remove" << check << 1 << "3 link(s) missing" << 18 << QStringList();
    QTest::newRow("geometry count bomb") << "geometry count bomb" << check << 1 << "3 link(s) missing" << 18 << QStringList();
    QTest::newRow("project unreadable") << "corrupt" << check << 2 << "Cannot open the project" << 0 << QStringList();
    QTest::newRow("project is a FIFO") << "fifo" << list << 2 << "is not a regular file" << 0 << QStringList();
    QTest::newRow("listing") << QString() << list << 0 << QString() << 18
                             << QStringList{"Bicycle/Drivetrain/Cassette\tdrivetrain/cassette.kpr\tMissing\t-\t-",
                                            "Bicycle/Drivetrain\tdrivetrain/drivetrain.kpr\tUp to date\t"
                                            "drivetrain/drivetrain.obj\tOut of date"};
    QTest::newRow("listing keeps one reference a line")
        << "awkward name" << list << 0 << QString() << 2
        << QStringList{"Root/a\\tb\\nc\\\\d\\re\t-\t-\tsub\\tdir/x.obj\tMissing"};
    const auto bad = [](const char* name, const QStringList& arguments, const char* error) {
        QTest::newRow(name) << QString() << arguments << 2 << error << 0 << QStringList();
    };
    bad("unknown option", {"--frobnicate"}, "Unknown option 'frobnicate'");
    bad("two commands", {"--check", "p.kpr", "--repath", "new"}, "--check, --repath cannot go together");
    bad("write without repath", {"--write", "--check", "p.kpr"}, "--write goes with --repath only");
    bad("sources and smarts", {"--repath", "new", "--sources", "--smarts", "p.kpr"}, "not both");
    bad("unknown format", {"--list-references", "p.kpr", "--format", "xml"}, "Unknown format: xml");
    bad("format without a command", {"--format", "json"}, "--format goes with");
    bad("repath without project", {"--repath", "new"}, "--repath needs the folder and one project");
    bad("repath to no folder", {"--repath", "no/such/folder", "p.kpr"}, "Not a folder: no/such/folder");
}

void tst_kovisHostCommandLine::exitCodeAndOutput()
{
    QFETCH(QString, change);
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, error);
    QFETCH(int, outputLines);
    QFETCH(QStringList, shown);

    QTemporaryDir folder;
    const QString project = copyDemo(folder);
    QVERIFY(applyChange(change, folder, project));

    const Run run = runHost(arguments.replaceInStrings("PROJECT", project));
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2(run.err.contains(error), qPrintable(run.err));
    const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), outputLines);
    for (const QString& line : shown)
        QVERIFY2(lines.contains(line), qPrintable(run.out));
}

void tst_kovisHostCommandLine::screenshotIsWritten()
{
    QTemporaryDir folder;
    const QString picture = folder.filePath(QStringLiteral("host.png"));
    const Run run = runHost({QStringLiteral("--screenshot"), picture});
    QCOMPARE(run.exitCode, 0);
    QImage image(picture);
    QVERIFY(!image.isNull());
    QVERIFY(image.width() >= 800);
}

void tst_kovisHostCommandLine::repath_data()
{
    QTest::addColumn<QStringList>("newFiles");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QStringList>("plan");

    const QStringList all{"new/a/a.obj", "new/parts/b/b.obj", "new/parts/b/b.kpr", "new/d/d.obj"};
    const QString header = "Reference\tLink\tOld path\tNew path\tResult\tChosen by\tOther candidates";
    const QString aFound = "Root/A\tsource\told/a/a.obj\tnew/a/a.obj\tFound\tsingle file";
    const QString bSource = "Root/B\tsource\told/parts/b/b.obj\tnew/parts/b/b.obj\tFound\tsingle file";
    const QString dFound = "Root/C/D\tsource\told/d/d.obj\tnew/d/d.obj\tFound\tsingle file";
    const QString bSmart = "Root/B\tsmart\told/parts/b/b.kpr\tnew/parts/b/b.kpr\tFound\tsingle file";

    const QStringList missing{"--missing-only"};
    QTest::newRow("all found") << all << missing << 0 << QStringList{header, aFound, bSource, dFound, bSmart};
    QTest::newRow("ambiguous: longest tail, others named")
        << all + QStringList{"new/b/b.obj", "new/x/y/b.obj"} << missing << 0
        << QStringList{header, aFound,
                       "Root/B\tsource\told/parts/b/b.obj\tnew/parts/b/b.obj\tAmbiguous\tlongest tail of 2 folder(s)\t"
                       "new/b/b.obj\tnew/x/y/b.obj",
                       dFound, bSmart};
    QTest::newRow("not found: planned in the folder")
        << QStringList{"new/parts/b/b.obj", "new/parts/b/b.kpr", "new/d/d.obj"} << missing << 1
        << QStringList{header, "Root/A\tsource\told/a/a.obj\tnew/a.obj\tNot found\t-", bSource, dFound, bSmart};
    QTest::newRow("no sub-folders") << all + QStringList{"new/b.kpr"} << QStringList{"--no-subdirs", "--smarts"} << 1
                                    << QStringList{header, "Root/B\tsmart\told/parts/b/b.kpr\tnew/b.kpr\tFound\tsingle file",
                                                   "Root/C\tsmart\tc.kpr\tnew/c.kpr\tNot found\t-"};
    QTest::newRow("every link, not only the missing ones")
        << all + QStringList{"old/a/a.obj"} << QStringList() << 1
        << QStringList{header, aFound, bSource, dFound, bSmart, "Root/C\tsmart\tc.kpr\tnew/c.kpr\tNot found\t-"};
    QTest::newRow("missing sources only skip files that are there")
        << all + QStringList{"old/a/a.obj", "old/d/d.obj"} << missing + QStringList{"--sources"} << 0
        << QStringList{header, bSource};
}

void tst_kovisHostCommandLine::repath()
{
    QFETCH(QStringList, newFiles);
    QFETCH(QStringList, options);
    QFETCH(int, exitCode);
    QFETCH(QStringList, plan);

    QTemporaryDir folder;
    const QString project = makeMovedProject(folder, newFiles);
    const QByteArray projectBefore = koTestHost::readFile(project);
    const QByteArray subBefore = koTestHost::readFile(folder.filePath(QStringLiteral("proj/c.kpr")));
    const QStringList arguments = QStringList{"--repath", folder.filePath("new")} + options + QStringList{project};

    const Run dryRun = runHost(arguments);
    QCOMPARE(dryRun.exitCode, exitCode);
    QCOMPARE(reportLines(dryRun, folder), plan);
    QCOMPARE(koTestHost::readFile(project), projectBefore);
    QCOMPARE(koTestHost::readFile(folder.filePath(QStringLiteral("proj/c.kpr"))), subBefore);

    const Run written = runHost(QStringList{"--write"} + arguments);
    QCOMPARE(written.exitCode, exitCode);
    QCOMPARE(reportLines(written, folder), plan);
    const bool anyFound = !plan.filter(QRegularExpression("\t(Found|Ambiguous)\t")).isEmpty();
    QCOMPARE(written.err.contains("Project saved"), anyFound);
    // Links found stay found when the project is opened again: nothing left to repath.
    const Run again = runHost(arguments);
    QCOMPARE(again.exitCode, exitCode);
    for (const QString& line : reportLines(again, folder).mid(1))
        QVERIFY2(line.contains("\tNot found\t") || line.section('\t', 2, 2) == line.section('\t', 3, 3), qPrintable(line));
}

void tst_kovisHostCommandLine::jsonOutput_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    // scene path, smart state, source state of each reference
    QTest::addColumn<QStringList>("references");
    // reference, link, found, rule, tail, others, new path of each link
    QTest::addColumn<QStringList>("links");

    const QStringList before{"Root/A - missing", "Root/B missing missing", "Root/C up-to-date -", "Root/C/D - missing"};
    const QStringList links{"Root/A source false not-found 0 - new/a.obj",
                            "Root/B source true longest-tail 2 new/b/b.obj new/parts/b/b.obj",
                            "Root/C/D source true single-file 0 - new/d/d.obj", "Root/B smart false not-found 0 - new/b.kpr",
                            "Root/C smart false not-found 0 - new/c.kpr"};
    QTest::newRow("check") << QStringList{"--check", "PROJECT"} << 1 << before << QStringList();
    QTest::newRow("repath") << QStringList{"--repath", "NEW", "PROJECT"} << 1 << before << links;
    QTest::newRow("repath and write")
        << QStringList{"--write", "--repath", "NEW", "PROJECT"} << 1
        << QStringList{"Root/A - missing", "Root/B missing up-to-date", "Root/C up-to-date -", "Root/C/D - up-to-date"}
        << links;
}

void tst_kovisHostCommandLine::jsonOutput()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QStringList, references);
    QFETCH(QStringList, links);

    QTemporaryDir folder;
    const QString project = makeMovedProject(folder, {"new/parts/b/b.obj", "new/b/b.obj", "new/d/d.obj"});
    arguments.replaceInStrings("NEW", folder.filePath("new"));
    arguments.replaceInStrings("PROJECT", project);
    const Run run = runHost(arguments + QStringList{"--format", "json"});
    QCOMPARE(run.exitCode, exitCode);
    QJsonParseError error;
    const QJsonObject report = QJsonDocument::fromJson(run.out.toUtf8(), &error).object();
    QVERIFY2(error.error == QJsonParseError::NoError, qPrintable(error.errorString() + run.out));

    const QString prefix = folder.path() + QLatin1Char('/');
    const auto state = [](const QJsonValue& link) { return link.isNull() ? QStringLiteral("-") : link["state"].toString(); };
    QStringList shownReferences;
    for (const QJsonValue reference : report["references"].toArray())
        shownReferences << reference["scenePath"].toString() + ' ' + state(reference["smart"]) + ' ' + state(reference["source"]);
    QCOMPARE(shownReferences, references);
    QStringList shownLinks;
    for (const QJsonValue link : report["links"].toArray()) {
        QStringList others;
        for (const QJsonValue other : link["otherCandidates"].toArray())
            others << other.toString().remove(prefix);
        shownLinks << QStringList{link["reference"].toString(), link["link"].toString(),
                                  link["found"].toBool() ? "true" : "false", link["chosenBy"].toString(),
                                  QString::number(link["tailFolders"].toInt()), others.isEmpty() ? "-" : others.join(','),
                                  link["newPath"].toString().remove(prefix)}
                          .join(' ');
    }
    QCOMPARE(shownLinks, links);
    QCOMPARE(report["written"].toBool(), arguments.contains("--write"));
}

QTEST_MAIN(tst_kovisHostCommandLine)
#include "tst_kovishostcommandline.moc"
