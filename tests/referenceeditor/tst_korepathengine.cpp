#include "koTestHost.h"

#include <koRepathEngine.h>

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QtTest>

class tst_koRepathEngine : public QObject
{
    Q_OBJECT

private slots:
    void choiceAmongTheFilesMet();
    void missingLinksSourcesFirst();
};

void tst_koRepathEngine::choiceAmongTheFilesMet()
{
    // folders holding a file "f", in the order the walk met them
    RepathFileIndex index;
    for (const char* folder : {"/n/q", "/n/b/a", "/n/a", "/n/p"})
        index.insert(QStringLiteral("f"), QString::fromLatin1(folder));
    const char* const rules[] = {"not found", "single file", "longest tail", "first met"};
    QStringList chosen;
    for (const char* oldPath : {"/x/b/a/f", "/x/z/f"}) {
        const RepathChoice choice = chooseRepathTarget(QString::fromLatin1(oldPath), "/n", true, index);
        chosen << QStringLiteral("%1 %2 %3").arg(rules[int(choice.rule)]).arg(choice.tailFolders).arg(choice.path);
    }
    QCOMPARE(chosen, (QStringList{"longest tail 2 /n/b/a/f", "first met 0 /n/q/f"}));
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
