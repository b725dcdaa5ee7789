#include "koTestHost.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// Runs kovis-host as a pipeline would and looks at its output and exit code.
class tst_kovisHostCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void argumentMistakesStopWithAReason_data();
    void argumentMistakesStopWithAReason();
    void listingAndCheck();
    void repathWritesOnlyWhenAsked();
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
    return {host.exitCode(), QString::fromUtf8(host.readAllStandardOutput()),
            QString::fromUtf8(host.readAllStandardError())};
}

bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
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

// A project whose files moved from old/ to new/: A and B link there directly, C is a
// sub-reference in the project's folder whose own reference D links there too.
QString makeMovedProject(const QTemporaryDir& folder, const QStringList& newFiles)
{
    const QString old = folder.filePath(QStringLiteral("old/"));
    const QJsonArray references{koTestHost::reference("A", QString(), old + "a/a.obj"),
                                koTestHost::reference("B", old + "parts/b/b.kpr", old + "parts/b/b.obj"),
                                koTestHost::reference("C", "c.kpr", QString())};
    QDir().mkpath(folder.filePath(QStringLiteral("proj")));
    writeFile(folder.filePath(QStringLiteral("proj/c.kpr")),
              koTestHost::projectDocument("C", {koTestHost::reference("D", QString(), old + "d/d.obj")}));
    for (const QString& file : newFiles) {
        QDir().mkpath(QFileInfo(folder.filePath(file)).path());
        const QByteArray mesh("v 0 0 0\nv 1 0 0\nv 0 1 0\no X\nf 1 2 3\n");
        writeFile(folder.filePath(file), file.endsWith(".kpr") ? koTestHost::projectDocument("B", {}) : mesh);
    }
    const QString project = folder.filePath(QStringLiteral("proj/scene.kpr"));
    writeFile(project, koTestHost::projectDocument("Root", references));
    return project;
}

} // namespace

void tst_kovisHostCommandLine::argumentMistakesStopWithAReason_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");

    const QString file = QStringLiteral(KOVIS_DEMO_PROJECT);
    QTest::newRow("two commands") << QStringList{"--check", "p.kpr", "--repath", "new"}
                                  << "--check, --repath cannot go together";
    QTest::newRow("write without repath") << QStringList{"--write", "--check", "p.kpr"}
                                          << "--write goes with --repath only";
    QTest::newRow("sources and smarts") << QStringList{"--repath", "new", "--sources", "--smarts", "p.kpr"}
                                        << "not both";
    QTest::newRow("unknown format") << QStringList{"--list-references", "p.kpr", "--format", "xml"}
                                    << "Unknown format: xml";
    QTest::newRow("a second project") << QStringList{"--check", "p.kpr", "q.kpr"} << "Unexpected argument: q.kpr";
    QTest::newRow("repath into a file") << QStringList{"--repath", file, "p.kpr"} << "Not a folder: " + file;
}

// Nothing runs: a pipeline sees exit code 2, the reason and no output.
void tst_kovisHostCommandLine::argumentMistakesStopWithAReason()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);

    const Run run = runHost(arguments);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(error), qPrintable(run.err));
    QCOMPARE(run.out, QString());
}

// A listing exits with 0 whatever it lists; a check counts the missing links of both kinds.
void tst_kovisHostCommandLine::listingAndCheck()
{
    QTemporaryDir folder;
    copyFolder(QFileInfo(QStringLiteral(KOVIS_DEMO_PROJECT)).path(), folder.path());
    const QString project = folder.filePath(QStringLiteral("bicycle.kpr"));
    const Run listing = runHost({"--list-references", project});
    QCOMPARE(listing.exitCode, 0);
    const QStringList lines = listing.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 18);
    QVERIFY2(lines.contains("Bicycle/Drivetrain/Cassette\tdrivetrain/cassette.kpr\tMissing\t-\t-"),
             qPrintable(listing.out));
    QVERIFY2(lines.contains("Bicycle/Drivetrain\tdrivetrain/drivetrain.kpr\tUp to date\t"
                            "drivetrain/drivetrain.obj\tOut of date"),
             qPrintable(listing.out));

    QVERIFY(QFile::remove(folder.filePath(QStringLiteral("wheels/tyre.obj"))));
    const Run check = runHost({"--check", project});
    QCOMPARE(check.exitCode, 1);
    QVERIFY2(check.err.contains("3 link(s) missing"), qPrintable(check.err));
}

// A dry run writes nothing; --write saves the links found and keeps those not found, which a
// later run can still look for.
void tst_kovisHostCommandLine::repathWritesOnlyWhenAsked()
{
    QTemporaryDir folder;
    const QString project =
        makeMovedProject(folder, {"new/parts/b/b.obj", "new/parts/b/b.kpr", "new/b/b.obj", "new/d/d.obj"});
    const QByteArray projectBefore = koTestHost::readFile(project);
    const QByteArray subBefore = koTestHost::readFile(folder.filePath(QStringLiteral("proj/c.kpr")));
    const QStringList arguments{"--repath", folder.filePath("new"), project};
    // The plan while the links found lead into "moved".
    const auto plan = [](const QString& moved) {
        return QStringList{"Reference\tLink\tOld path\tNew path\tResult\tChosen by\tOther candidates",
                           "Root/A\tsource\told/a/a.obj\tnew/a.obj\tNot found\t-",
                           "Root/B\tsource\t" + moved + "parts/b/b.obj\tnew/parts/b/b.obj\tAmbiguous\t"
                               + "longest tail of 2 folder(s)\tnew/b/b.obj",
                           "Root/C/D\tsource\t" + moved + "d/d.obj\tnew/d/d.obj\tFound\tsingle file",
                           "Root/B\tsmart\t" + moved + "parts/b/b.kpr\tnew/parts/b/b.kpr\tFound\tsingle file",
                           "Root/C\tsmart\tc.kpr\tnew/c.kpr\tNot found\t-"};
    };

    const Run dryRun = runHost(arguments);
    QCOMPARE(dryRun.exitCode, 1);
    QCOMPARE(reportLines(dryRun, folder), plan("old/"));
    QCOMPARE(koTestHost::readFile(project), projectBefore);
    QCOMPARE(koTestHost::readFile(folder.filePath(QStringLiteral("proj/c.kpr"))), subBefore);

    const Run written = runHost(QStringList{"--write", "--format", "json"} + arguments);
    QCOMPARE(written.exitCode, 1);
    const QJsonObject report = QJsonDocument::fromJson(written.out.toUtf8()).object();
    QCOMPARE(report["written"], QJsonValue(true));
    const QString prefix = folder.path() + QLatin1Char('/');
    QStringList links;
    for (const QJsonValue link : report["links"].toArray()) {
        QStringList shown{link["reference"].toString(), link["link"].toString(), link["chosenBy"].toString(),
                          QString::number(link["tailFolders"].toInt()), link["newPath"].toString().remove(prefix)};
        for (const QJsonValue other : link["otherCandidates"].toArray())
            shown << other.toString().remove(prefix);
        links << shown.join(' ');
    }
    QCOMPARE(links, (QStringList{"Root/A source not-found 0 new/a.obj",
                                 "Root/B source longest-tail 2 new/parts/b/b.obj new/b/b.obj",
                                 "Root/C/D source single-file 0 new/d/d.obj",
                                 "Root/B smart single-file 0 new/parts/b/b.kpr",
                                 "Root/C smart not-found 0 new/c.kpr"}));
    const auto state = [](const QJsonValue& file) { return file.isNull() ? QString("-") : file["state"].toString(); };
    QStringList references;
    for (const QJsonValue reference : report["references"].toArray())
        references << reference["scenePath"].toString() + ' ' + state(reference["smart"]) + ' '
                + state(reference["source"]);
    QCOMPARE(references, (QStringList{"Root/A - missing", "Root/B up-to-date up-to-date", "Root/C up-to-date -",
                                      "Root/C/D - up-to-date"}));

    QCOMPARE(reportLines(runHost(arguments), folder), plan("new/"));
}

QTEST_MAIN(tst_kovisHostCommandLine)
#include "tst_kovishostcommandline.moc"
