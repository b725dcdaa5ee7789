#include "koTestHost.h"

#include <koRepathEngine.h>

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QTextCodec>
#include <QtTest>

class tst_koRepathEngine : public QObject
{
    Q_OBJECT

private slots:
    void choiceAmongTheFilesMet_data();
    void choiceAmongTheFilesMet();
    void missingLinksSourcesFirst();
};

void tst_koRepathEngine::choiceAmongTheFilesMet_data()
{
    // folders holding a file "f", in the order the walk met them
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("newDir");
    QTest::addColumn<QString>("oldPath");
    // the rule, the trailing folders it matched and the path chosen
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QByteArray>("localeCodec");

    const QStringList met{"/n/q", "/n/b/a", "/n/a", "/n/p"};
    QTest::newRow("longest tail") << met << "/n" << "/x/b/a/f" << "longest tail 2 /n/b/a/f" << QByteArray();
    QTest::newRow("no tail: first met") << met << "/n" << "/x/z/f" << "first met 0 /n/q/f" << QByteArray();
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
    for (const QString& folder : folders)
        index.insert(QStringLiteral("f"), folder);
    const RepathChoice choice = chooseRepathTarget(oldPath, newDir, true, index);
    const char* const rules[] = {"not found", "single file", "longest tail", "first met"};
    QCOMPARE(QStringLiteral("%1 %2 %3").arg(rules[int(choice.rule)]).arg(choice.tailFolders).arg(choice.path),
             expected);
}

void tst_koRepathEngine::missingLinksSourcesFirst()
{
    const koTestHost host;
    host.writeFile(QStringLiteral("old/a.obj"), "x");
    host.writeFile(QStringLiteral("old/b.kpr"), "x");
    QList<kodReferenceNode> nodes;
    for (const QString& name : {QStringLiteral("old/a"), QStringLiteral("old/b")}) {
        nodes << koService<koReferenceService>()->createReference(kodNode());
        nodes.last().setSourcePath(host.path(name + ".obj"));
        nodes.last().setSmartPath(host.path(name + ".kpr"));
    }
    QStringList links;
    for (const RepathLink& link : repathLinks(nodes, true, true, true))
        links << QString::number(nodes.indexOf(link.node)) + (link.kind == RepathTarget::Source ? " source" : " smart");
    QCOMPARE(links, (QStringList{"1 source", "0 smart"}));
}

QTEST_GUILESS_MAIN(tst_koRepathEngine)
#include "tst_korepathengine.moc"
