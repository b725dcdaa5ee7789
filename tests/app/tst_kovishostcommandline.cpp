#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

// Runs kovis-host as a pipeline would and looks at its output and exit code.
class tst_kovisHostCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void checkExitCodes_data();
    void checkExitCodes();
    void listingNamesEveryReference();
    void listingKeepsOneReferencePerLine();
    void screenshotIsWritten();

private:
    static QString copyDemo(const QTemporaryDir& folder);
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
    if (change.isEmpty())
        return true;
    if (change == "restore")
        return QFile::copy(folder.filePath(QStringLiteral("frame/headset.kpr")), folder.filePath(QStringLiteral("drivetrain/cassette.kpr")));
    if (change == "remove")
        return QFile::remove(folder.filePath(QStringLiteral("wheels/tyre.obj")));
    if (change == "geometry count bomb")
        return writeFile(folder.filePath(QStringLiteral("wheels/hub.osb")), geometryCountBomb);
    if (change == "corrupt")
        return writeFile(project, "{ not json");
    if (!QFile::remove(project))
        return false;
    if (change == "fifo")
        return ::mkfifo(QFile::encodeName(project).constData(), 0600) == 0;
    if (change == "link to /dev/zero")
        return QFile::link(QStringLiteral("/dev/zero"), project);
    if (change == "directory")
        return QDir().mkdir(project);
    QFile sparse(project);
    return change == "oversized" && sparse.open(QIODevice::WriteOnly) && sparse.resize(qint64(1) << 40);
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

} // namespace

QString tst_kovisHostCommandLine::copyDemo(const QTemporaryDir& folder)
{
    copyFolder(QFileInfo(QStringLiteral(KOVIS_DEMO_PROJECT)).path(), folder.path());
    return folder.filePath(QStringLiteral("bicycle.kpr"));
}

void tst_kovisHostCommandLine::checkExitCodes_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("option");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("summary");

    const QString check = QStringLiteral("--check");
    const QString list = QStringLiteral("--list-references");
    QTest::newRow("demo as shipped") << QString() << check << 1 << "1 link(s) missing";
    QTest::newRow("missing file restored") << "restore" << check << 0 << "All 17 reference(s) found";
    QTest::newRow("another file removed") << "remove" << check << 1 << "3 link(s) missing";
    QTest::newRow("geometry count bomb") << "geometry count bomb" << check << 1 << "3 link(s) missing";
    QTest::newRow("project unreadable") << "corrupt" << check << 2 << "Cannot open the project";
    QTest::newRow("project is a FIFO") << "fifo" << list << 2 << "is not a regular file";
    QTest::newRow("project links to /dev/zero") << "link to /dev/zero" << list << 2 << "is not a regular file";
    QTest::newRow("project is a directory") << "directory" << check << 2 << "is not a regular file";
    QTest::newRow("project of a terabyte") << "oversized" << check << 2 << "is larger than the limit of";
}

void tst_kovisHostCommandLine::checkExitCodes()
{
    QFETCH(QString, change);
    QFETCH(QString, option);
    QFETCH(int, exitCode);
    QFETCH(QString, summary);

    QTemporaryDir folder;
    const QString project = copyDemo(folder);
    QVERIFY(applyChange(change, folder, project));

    const Run run = runHost({option, project});
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2(run.err.contains(summary), qPrintable(run.err));
}

void tst_kovisHostCommandLine::listingNamesEveryReference()
{
    const Run run = runHost({QStringLiteral("--list-references"), QStringLiteral(KOVIS_DEMO_PROJECT)});
    QCOMPARE(run.exitCode, 0);
    const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 18);
    QVERIFY(lines.contains(QStringLiteral("Bicycle/Drivetrain/Cassette\tdrivetrain/cassette.kpr\tMissing\t-\t-")));
    QVERIFY(lines.contains(QStringLiteral("Bicycle/Drivetrain\tdrivetrain/drivetrain.kpr\tUp to date\t"
                                          "drivetrain/drivetrain.obj\tOut of date")));
}

void tst_kovisHostCommandLine::listingKeepsOneReferencePerLine()
{
    QTemporaryDir folder;
    const QJsonObject reference{{"type", "reference"}, {"name", "a\tb\nc\\d\re"}, {"source", "sub\tdir/x.obj"}};
    const QJsonObject root{{"type", "group"}, {"name", "Root"}, {"children", QJsonArray{reference}}};
    QFile project(folder.filePath(QStringLiteral("project.kpr")));
    QVERIFY(project.open(QIODevice::WriteOnly));
    project.write(QJsonDocument(QJsonObject{{"format", "kovis-project"}, {"version", 1}, {"root", root}}).toJson());
    project.close();

    const Run run = runHost({QStringLiteral("--list-references"), project.fileName()});
    QCOMPARE(run.exitCode, 0);
    const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(1), QStringLiteral("Root/a\\tb\\nc\\\\d\\re\t-\t-\tsub\\tdir/x.obj\tMissing"));
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

QTEST_MAIN(tst_kovisHostCommandLine)
#include "tst_kovishostcommandline.moc"
