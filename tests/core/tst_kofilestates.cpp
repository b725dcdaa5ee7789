#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QFile>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QtTest>

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
    // What is done to the part's files before and after loading, the links and fields of the
    // reference to them (single quotes stand for double), and its smart and source file states.
    QTest::addColumn<QString>("before");
    QTest::addColumn<QByteArray>("links");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("states");

    const QByteArray both = "'smart': 'parts/part.kpr', 'source': 'parts/part.obj'";
    const QByteArray imported = both + ", 'sourceImported': ";
    const QByteArray source = "'source': 'parts/part.obj'";
    QTest::newRow("both files present") << "" << both << "" << "UpToDate UpToDate";
    QTest::newRow("smart file absent") << "remove smart" << both << "" << "Missing UpToDate";
    QTest::newRow("source file absent") << "remove source" << both << "" << "UpToDate Missing";
    QTest::newRow("smart file corrupt") << "corrupt smart" << both << "" << "Missing UpToDate";
    QTest::newRow("smart file written after loading") << "" << both << "touch smart" << "OutOfDate UpToDate";
    QTest::newRow("unloaded smart file written later") << "" << both + ", 'loaded': false" << "touch smart" << "UpToDate UpToDate";
    QTest::newRow("source newer than its import") << "" << imported + "'2019-12-31T12:00:00Z'" << "" << "UpToDate OutOfDate";
    QTest::newRow("source older than its import") << "" << imported + "'2020-01-02T12:00:00Z'" << "" << "UpToDate UpToDate";
    QTest::newRow("smart link created in the session") << "" << source << "convert" << "Unsaved UpToDate";
    QTest::newRow("unsaved smart link given an existing file") << "" << source << "convert, give a file" << "Unsaved UpToDate";
    QTest::newRow("no links") << "" << QByteArray() << "" << "NoFile NoFile";
}

void tst_koFileStates::states()
{
    QFETCH(QString, before);
    QFETCH(QByteArray, links);
    QFETCH(QString, after);
    QFETCH(QString, states);

    const QString smartFile = m_host.writeProject(QStringLiteral("parts/part.kpr"), {koTestHost::geometry("Body")});
    const QString sourceFile = m_host.writeFile(QStringLiteral("parts/part.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no Body\nf 1 2 3\n");
    koTestHost::setModified(smartFile, past);
    koTestHost::setModified(sourceFile, past);
    if (before == "remove smart")
        QFile::remove(smartFile);
    if (before == "remove source")
        QFile::remove(sourceFile);
    if (before == "corrupt smart")
        m_host.writeFile(QStringLiteral("parts/part.kpr"), "{\"format\": \"kovis-pro");

    const QJsonObject fields = QJsonDocument::fromJson("{" + links.replace('\'', '"') + "}").object();
    kodReferenceNode reference = m_host.loadSingleReference(koTestHost::reference("Part", QString(), QString(), fields));
    QVERIFY(reference.isValid());

    if (after == "touch smart") {
        koTestHost::setModified(smartFile, past.addSecs(60));
        koService<koReferenceService>()->checkFiles();
    }
    if (after.startsWith("convert"))
        koService<koReferenceService>()->convertToSmartReference(reference);
    if (after == "convert, give a file")
        reference.setSmartPath(smartFile);

    const QMetaEnum names = QMetaEnum::fromType<koReferenceTypes::FileState>();
    QCOMPARE(QStringLiteral("%1 %2").arg(names.valueToKey(reference.getSmartFileState()),
                                         names.valueToKey(reference.getSourceFileState())),
             states);
}

void tst_koFileStates::monitoringAnnouncesEachChangeOnce()
{
    const QString sourceFile = m_host.writeFile(QStringLiteral("a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("b.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const QString moved = m_host.writeFile(QStringLiteral("moved/a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    koTestHost::setModified(sourceFile, past);
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::reference("A", QString(), "a.obj"), koTestHost::reference("B", QString(), "b.obj")});
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
