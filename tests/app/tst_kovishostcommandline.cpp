#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// Runs kovis-host as a pipeline would and looks at its output and exit code.
class tst_kovisHostCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void checkExitCodes_data();
    void checkExitCodes();
    void listingNamesEveryReference();
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
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("summary");

    QTest::newRow("demo as shipped") << QString() << 1 << "1 link(s) missing";
    QTest::newRow("missing file restored") << "restore" << 0 << "All 17 reference(s) found";
    QTest::newRow("another file removed") << "remove" << 1 << "3 link(s) missing";
    QTest::newRow("project unreadable") << "corrupt" << 2 << "Cannot open the project";
}

void tst_kovisHostCommandLine::checkExitCodes()
{
    QFETCH(QString, change);
    QFETCH(int, exitCode);
    QFETCH(QString, summary);

    QTemporaryDir folder;
    const QString project = copyDemo(folder);
    if (change == "restore")
        QFile::copy(folder.filePath(QStringLiteral("frame/headset.kpr")), folder.filePath(QStringLiteral("drivetrain/cassette.kpr")));
    if (change == "remove")
        QFile::remove(folder.filePath(QStringLiteral("wheels/tyre.obj")));
    if (change == "corrupt") {
        QFile file(project);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{ not json");
    }

    const Run run = runHost({QStringLiteral("--check"), project});
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
