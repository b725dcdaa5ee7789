#include "koScriptedFileDialog.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koFileReferenceGUIUtils.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koScopedUndo.h>
#include <kovis/koUndoStack.h>

#include <QtTest>

namespace {

const QByteArray engineObj = "o Block\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\ng Side\nf 1 3 2\n";

} // namespace

class tst_kofilereferenceguiutils : public QObject
{
    Q_OBJECT

private slots:
    void loadSource_data();
    void loadSource();
    void scriptsNest();
};

void tst_kofilereferenceguiutils::loadSource_data()
{
    QTest::addColumn<QString>("picked");
    QTest::addColumn<bool>("underGroup");

    QTest::newRow("cancelled") << QString() << false;
    QTest::newRow("obj below the scene root") << QStringLiteral("parts/engine.v2.obj") << false;
    QTest::newRow("obj below a group") << QStringLiteral("engine.obj") << true;
}

void tst_kofilereferenceguiutils::loadSource()
{
    QFETCH(QString, picked);
    QFETCH(bool, underGroup);

    koTestHost host;
    const kodNode group = underGroup ? koService<koNodeService>()->createGroupNode(kodNode(), QStringLiteral("Group"))
                                     : kodNode();
    const QString path = picked.isEmpty() ? QString() : host.writeFile(picked, engineObj);
    const int referencesBefore = koService<koReferenceService>()->getSceneReferences().size();
    const int undoStepsBefore = koUndoStack::the()->count();
    koScriptedFileDialog files;
    files.answer(path);

    kodReferenceNode reference;
    {
        const koScopedUndo step;
        reference = koFileReferenceGUIUtils::loadSource(group);
    }

    QCOMPARE(files.calls().size(), 1);
    const koFileDialog::Call& call = files.calls().first();
    QCOMPARE(call.function, koFileDialog::Function::OpenFileName);
    QCOMPARE(call.caption, QStringLiteral("Load Source Reference"));
    QCOMPARE(call.dir, QString());
    QCOMPARE(call.filter, koService<koFileIOService>()->getImportFileFilter(koFileIOService::ImportFiles));
    if (path.isEmpty()) {
        QVERIFY(reference.isNull());
        QCOMPARE(koService<koReferenceService>()->getSceneReferences().size(), referencesBefore);
        QCOMPARE(koUndoStack::the()->count(), undoStepsBefore);
        return;
    }
    QVERIFY(reference.isValid());
    QCOMPARE(reference.getName(), QFileInfo(path).completeBaseName());
    QCOMPARE(reference.getSourcePath(), path);
    QVERIFY(reference.hasSourceReference());
    QVERIFY(!reference.hasSmartReference());
    QCOMPARE(reference.getSourceFileState(), koReferenceTypes::FileState(0));
    QVERIFY(reference.getChildCount() > 0);
    QCOMPARE(reference.getParent(), underGroup ? group : koService<koNodeService>()->getRootNode());
    QCOMPARE(koService<koReferenceService>()->getSceneReferences().size(), referencesBefore + 1);

    QCOMPARE(koUndoStack::the()->count(), undoStepsBefore + 1);
    koUndoStack::the()->undo();
    QVERIFY(!reference.isValid());
}

void tst_kofilereferenceguiutils::scriptsNest()
{
    koScriptedFileDialog outer;
    outer.answer(QStringLiteral("/outer.obj"));
    {
        koScriptedFileDialog inner;
        inner.answer(QStringList{"/a.kpr", "/b.osb"});
        QCOMPARE(koFileDialog::getOpenFileNames(nullptr, QStringLiteral("Create Smart Reference")),
                 (QStringList{"/a.kpr", "/b.osb"}));
        QCOMPARE(koFileDialog::getSaveFileName(), QString());
        QCOMPARE(inner.calls().size(), 2);
        QCOMPARE(inner.calls().at(1).function, koFileDialog::Function::SaveFileName);
    }
    QCOMPARE(koFileDialog::getExistingDirectory(nullptr, QStringLiteral("Repath"), QStringLiteral("/start")),
             QStringLiteral("/outer.obj"));
    QCOMPARE(outer.calls().size(), 1);
    QCOMPARE(outer.calls().first().dir, QStringLiteral("/start"));
    QCOMPARE(outer.calls().first().options, QFileDialog::ShowDirsOnly);
    QCOMPARE(outer.pendingAnswers(), 0);
}

QTEST_MAIN(tst_kofilereferenceguiutils)
#include "tst_kofilereferenceguiutils.moc"
