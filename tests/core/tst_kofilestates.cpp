#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QFile>
#include <QSignalSpy>
#include <QtTest>

using koReferenceTypes::FileState;

Q_DECLARE_METATYPE(koReferenceTypes::FileState)

class tst_koFileStates : public QObject
{
    Q_OBJECT

private slots:
    void states_data();
    void states();
    void monitoringAnnouncesEachChangeOnce();
    void monitoringRunsAtItsInterval();

private:

    koTestHost m_host;
};

namespace {

const QDateTime past(QDate(2020, 1, 1), QTime(12, 0), Qt::UTC);

} // namespace

void tst_koFileStates::states_data()
{
    QTest::addColumn<QString>("setup");
    QTest::addColumn<FileState>("smartState");
    QTest::addColumn<FileState>("sourceState");

    QTest::newRow("both files present") << "present" << koReferenceTypes::UpToDate << koReferenceTypes::UpToDate;
    QTest::newRow("smart file absent") << "smart absent" << koReferenceTypes::Missing << koReferenceTypes::UpToDate;
    QTest::newRow("source file absent") << "source absent" << koReferenceTypes::UpToDate << koReferenceTypes::Missing;
    QTest::newRow("smart file corrupt") << "smart corrupt" << koReferenceTypes::Missing << koReferenceTypes::UpToDate;
    QTest::newRow("smart file written after loading")
        << "smart touched" << koReferenceTypes::OutOfDate << koReferenceTypes::UpToDate;
    QTest::newRow("unloaded smart file written later")
        << "unloaded smart touched" << koReferenceTypes::UpToDate << koReferenceTypes::UpToDate;
    QTest::newRow("source newer than its import")
        << "source newer" << koReferenceTypes::UpToDate << koReferenceTypes::OutOfDate;
    QTest::newRow("source older than its import")
        << "source older" << koReferenceTypes::UpToDate << koReferenceTypes::UpToDate;
    QTest::newRow("smart link created in the session")
        << "converted" << koReferenceTypes::Unsaved << koReferenceTypes::UpToDate;
    QTest::newRow("unsaved smart link given an existing file")
        << "converted with path" << koReferenceTypes::Unsaved << koReferenceTypes::UpToDate;
    QTest::newRow("no links") << "no links" << koReferenceTypes::NoFile << koReferenceTypes::NoFile;
}

void tst_koFileStates::states()
{
    QFETCH(QString, setup);
    QFETCH(FileState, smartState);
    QFETCH(FileState, sourceState);

    const QString smartFile = m_host.writeProject(QStringLiteral("parts/part.kpr"), {koTestHost::geometry("Body")});
    const QString sourceFile = m_host.writeFile(QStringLiteral("parts/part.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Body\nf 1 2 3\n");
    koTestHost::setModified(smartFile, past);
    koTestHost::setModified(sourceFile, past);
    if (setup == "smart absent")
        QFile::remove(smartFile);
    if (setup == "source absent")
        QFile::remove(sourceFile);
    if (setup == "smart corrupt")
        m_host.writeFile(QStringLiteral("parts/part.kpr"), "{\"format\": \"kovis-pro");

    QJsonObject extra;
    if (setup == "unloaded smart touched")
        extra.insert(QStringLiteral("loaded"), false);
    if (setup == "source newer")
        extra.insert(QStringLiteral("sourceImported"), past.addDays(-1).toString(Qt::ISODate));
    if (setup == "source older")
        extra.insert(QStringLiteral("sourceImported"), past.addDays(1).toString(Qt::ISODate));
    const bool withSmart = setup != "converted" && setup != "converted with path" && setup != "no links";
    const QJsonObject node = koTestHost::reference(QStringLiteral("Part"),
                                                   withSmart ? QStringLiteral("parts/part.kpr") : QString(),
                                                   setup == "no links" ? QString() : QStringLiteral("parts/part.obj"),
                                                   extra);
    kodReferenceNode reference = m_host.loadSingleReference(node);
    QVERIFY(reference.isValid());

    if (setup == "smart touched" || setup == "unloaded smart touched") {
        koTestHost::setModified(smartFile, past.addSecs(60));
        koService<koReferenceService>()->checkFiles();
    }
    if (setup.startsWith("converted"))
        koService<koReferenceService>()->convertToSmartReference(reference);
    if (setup == "converted with path")
        reference.setSmartPath(smartFile);

    QCOMPARE(reference.getSmartFileState(), smartState);
    QCOMPARE(reference.getSourceFileState(), sourceState);
}

void tst_koFileStates::monitoringAnnouncesEachChangeOnce()
{
    const QString project = m_host.copyScene(QStringLiteral("monitoring"));
    const QString sourceFile = m_host.path(QStringLiteral("a.obj"));
    const QString moved = m_host.path(QStringLiteral("moved/a.obj"));
    koTestHost::setModified(sourceFile, past);
    QVERIFY(koService<koFileIOService>()->loadProject(project));
    QSignalSpy changed(koService<koReferenceService>(), &koReferenceService::referencesChanged);

    koService<koReferenceService>()->checkFiles();
    QCOMPARE(changed.count(), 0);

    koTestHost::setModified(sourceFile, past.addSecs(10));
    koService<koReferenceService>()->checkFiles();
    koService<koReferenceService>()->checkFiles();
    QCOMPARE(changed.count(), 1);
    const auto announced = changed.at(0).at(0).value<QList<kodReferenceNode>>();
    QCOMPARE(announced.size(), 1);
    QCOMPARE(announced.first().getName(), QStringLiteral("A"));
    QCOMPARE(announced.first().getSourceFileState(), koReferenceTypes::OutOfDate);

    // The file a link is changed to is watched from then on.
    kodReferenceNode reference = announced.first();
    reference.setSourcePath(moved);
    changed.clear();
    QVERIFY(QFile::remove(moved));
    // Queries read what was last checked.
    QVERIFY(reference.getSourceFileState() != koReferenceTypes::Missing);
    koService<koReferenceService>()->checkFiles();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(reference.getSourceFileState(), koReferenceTypes::Missing);
}

void tst_koFileStates::monitoringRunsAtItsInterval()
{
    const QString sourceFile = m_host.writeFile(QStringLiteral("a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    kodReferenceNode reference = m_host.loadSingleReference(koTestHost::reference("A", QString(), "a.obj"));
    QSignalSpy monitoring(koService<koReferenceService>(), &koReferenceService::updateMonitoringChanged);
    QSignalSpy changed(koService<koReferenceService>(), &koReferenceService::referencesChanged);

    koService<koReferenceService>()->setChangeMonitoringEnabled(false);
    koService<koReferenceService>()->setUpdateMonitoringInterval(10);
    QCOMPARE(monitoring.count(), 1);
    QCOMPARE(monitoring.at(0).at(0).toBool(), false);
    QFile::remove(sourceFile);
    QTest::qWait(50);
    QCOMPARE(changed.count(), 0);

    koService<koReferenceService>()->setChangeMonitoringEnabled(true);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(reference.getSourceFileState(), koReferenceTypes::Missing);
    koService<koReferenceService>()->loadPreferences();
}

QTEST_MAIN(tst_koFileStates)
#include "tst_kofilestates.moc"
