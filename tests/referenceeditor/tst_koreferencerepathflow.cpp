#include "RepathProgress.h"
#include "koDialogDriver.h"
#include "koReferenceEditorModule.h"
#include "koReferenceRePathDialogI.h"
#include "koReferenceRePathSummaryI.h"
#include "koReferenceRepathFlow.h"
#include "koReferenceTreeModel.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koUndoStack.h>

#include <QDir>
#include <QProgressDialog>
#include <QPushButton>
#include <QThread>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStringListModel>
#include <QtTest>

class tst_koReferenceRepathFlow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void repath_data();
    void repath();
    void cancelDuringTheSearchChangesNothing();

private:
    QStringList links() const;
    void answerRepathDialog(koDialogDriver& driver, const QString& answer) const;

    koTestHost m_host;
    std::unique_ptr<koReferenceEditorModule> m_module;
};

namespace {

// A search that reads no further than its first folder until the user cancels: a slow
// share, as the user sees it.
class koStalledProgress : public RepathProgress
{
public:
    void enterFolder(const QString& folder) override
    {
        RepathProgress::enterFolder(folder);
        while (!isCancelled())
            QThread::msleep(1);
    }
};

} // namespace

void tst_koReferenceRepathFlow::init()
{
    m_host.writeFile(QStringLiteral("current/c.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no C\nf 1 2 3\n");
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::reference("A", "old/a/a.kpr", "old/a/a.obj"), koTestHost::reference("B", QString(), "old/b/b.obj"),
         koTestHost::reference("C", QString(), "current/c.obj")});
    QVERIFY(koService<koFileIOService>()->loadProject(project));
    m_module = std::make_unique<koReferenceEditorModule>();
    QCoreApplication::processEvents();
}

void tst_koReferenceRepathFlow::cleanup()
{
    m_module.reset();
    QDir(m_host.path(QStringLiteral("new"))).removeRecursively();
}

// "accept" searching the folder new/ with its sub-folders, "top only" without them,
// "missing only" for the missing files alone.
void tst_koReferenceRepathFlow::answerRepathDialog(koDialogDriver& driver, const QString& answer) const
{
    const QString folder = m_host.path(QStringLiteral("new"));
    driver.handleDialog([answer, folder](QDialog* dialog) {
        auto* repath = qobject_cast<koReferenceRePathDialogI*>(dialog);
        QVERIFY(repath);
        repath->m_newPath->setText(folder);
        repath->m_affectedFiles->setCurrentIndex(answer == QLatin1String("missing only") ? 1 : 0);
        repath->m_searchSubdirs->setChecked(answer != QLatin1String("top only"));
        repath->m_okButton->click();
    });
}

// "A smart=path" and "A source=path" for A, B and C, paths relative to the test folder.
QStringList tst_koReferenceRepathFlow::links() const
{
    QStringList links;
    for (const kodReferenceNode& node : koTestHost::findReferences({"A", "B", "C"})) {
        links << node.getName() + " smart=" + m_host.relative(node.getSmartPath())
              << node.getName() + " source=" + m_host.relative(node.getSourcePath());
    }
    return links;
}

void tst_koReferenceRepathFlow::repath_data()
{
    // "repath" as the editor's command does, or the host's request to repath "smarts".
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("nodes");
    QTest::addColumn<QStringList>("newFiles");
    // The repath dialog's answer as answerRepathDialog() takes it; then "summary ok" or
    // "summary cancel", or "ok" for a message box.
    QTest::addColumn<QStringList>("answers");
    // The summary, the message boxes, the links that changed and the warnings logged.
    QTest::addColumn<QStringList>("outcome");

    QTest::newRow("sub-folders not searched")
        << "repath" << QStringList{"A"} << QStringList{"new/parts/a/a.kpr", "new/parts/a/a.obj"}
        << QStringList{"top only", "ok"}
        << QStringList{"Repath|This reference name cannot be found in the selected directory. "
                       "Please check the directory and try again. (warning)"};
    QTest::newRow("missing files only, none missing")
        << "repath" << QStringList{"C"} << QStringList{"new/c.obj"} << QStringList{"missing only"} << QStringList();
    const QStringList ambiguous{"new/a/a.obj", "new/x/a.obj", "new/a/a.kpr"};
    const QString summary = QStringLiteral("Repath: 2 Filepaths successful|1 Filepaths unsuccessful|old/b/b.obj");
    QTest::newRow("ambiguous name, summary OK")
        << "repath" << QStringList{"A", "B"} << ambiguous << QStringList{"accept", "summary ok"}
        << QStringList{summary, "A smart=new/a/a.kpr", "A source=new/a/a.obj", "B source=new/b.obj",
                       "Warning References: A (source link): 2 files named a.obj were found; repathed to "
                       "new/a/a.obj by longest tail of 1 folder(s). The others: new/x/a.obj"};
    QTest::newRow("ambiguous name, summary cancelled")
        << "repath" << QStringList{"A", "B"} << ambiguous << QStringList{"accept", "summary cancel"}
        << QStringList{summary};
    QTest::newRow("request for smarts") << "smarts" << QStringList{"A"} << QStringList{"new/a.kpr", "new/a.obj"}
                                        << QStringList{"accept"} << QStringList{"A smart=new/a.kpr"};
}

void tst_koReferenceRepathFlow::repath()
{
    QFETCH(QString, command);
    QFETCH(QStringList, nodes);
    QFETCH(QStringList, newFiles);
    QFETCH(QStringList, answers);
    QFETCH(QStringList, outcome);

    for (const QString& file : qAsConst(newFiles))
        m_host.writeFile(file, "o X\n");
    koService<koLogService>()->clear();
    const QList<kodReferenceNode> selection = koTestHost::findReferences(nodes);
    QCoreApplication::processEvents();
    const int undoSteps = koUndoStack::the()->count();
    const QStringList linksBefore = links();
    QSignalSpy reloads(m_module->referenceModel(), &QAbstractItemModel::layoutChanged);
    koDialogDriver driver;
    QStringList shown;
    for (const QString& answer : qAsConst(answers)) {
        if (answer == QLatin1String("ok"))
            driver.answerMessageBox(QMessageBox::Ok);
        else if (answer.startsWith(QLatin1String("summary ")))
            driver.handleDialog([&shown, answer, this](QDialog* box) {
                auto* dialog = qobject_cast<koReferenceRePathSummaryI*>(box);
                QVERIFY(dialog);
                QStringList lines{dialog->m_message1->text(), dialog->m_message2->text()};
                for (const QString& path : qobject_cast<QStringListModel*>(dialog->m_listView->model())->stringList())
                    lines << m_host.relative(path);
                shown << dialog->windowTitle() + ": " + lines.join('|');
                (answer == "summary ok" ? dialog->m_okButton : dialog->m_cancelButton)->click();
            });
        else
            answerRepathDialog(driver, answer);
    }

    if (command == QLatin1String("smarts"))
        emit koService<koInternalUiService>()->requestUiRepathSmarts(selection);
    else
        m_module->repathReferences(selection, true, true);
    QCoreApplication::processEvents();

    shown = driver.mismatches() + shown + driver.summaries();
    const QStringList linksAfter = links();
    for (int i = 0; i < linksAfter.size(); ++i) {
        if (linksAfter.at(i) != linksBefore.at(i))
            shown << linksAfter.at(i);
    }
    const QString root = m_host.path(QString()) + QLatin1Char('/');
    shown << koTestHost::logLines().filter(QStringLiteral("Warning References: ")).replaceInStrings(root, QString());
    QCOMPARE(shown, outcome);
    // No undo group: the host makes each re-pointed link a step of its own.
    const int changed = shown.filter(QRegularExpression(QStringLiteral("^[ABC] (smart|source)="))).size();
    QCOMPARE(koUndoStack::the()->count() - undoSteps, changed);
    QCOMPARE(reloads.count(), changed > 0 || answers.contains(QStringLiteral("missing only")) ? 1 : 0);
}

void tst_koReferenceRepathFlow::cancelDuringTheSearchChangesNothing()
{
    m_host.writeFile(QStringLiteral("new/a.obj"), "o X\n");
    const QStringList linksBefore = links();
    QSignalSpy reloads(m_module->referenceModel(), &QAbstractItemModel::layoutChanged);
    koDialogDriver driver;
    answerRepathDialog(driver, QStringLiteral("accept"));
    QString label;
    driver.handleDialog([&label](QDialog* dialog) {
        auto* progress = qobject_cast<QProgressDialog*>(dialog);
        QVERIFY(progress);
        label = progress->labelText();
        progress->findChild<QPushButton*>()->click();
    });

    koStalledProgress progress;
    const QList<kodReferenceNode> nodes = koTestHost::findReferences({QStringLiteral("A"), QStringLiteral("B")});
    QVERIFY(!koReferenceRepathFlow::run(m_module.get(), nodes, true, true, progress));
    QCoreApplication::processEvents();

    QCOMPARE(driver.mismatches(), QStringList());
    QVERIFY2(label.contains(m_host.path(QStringLiteral("new"))), qPrintable(label));
    QCOMPARE(links(), linksBefore);
    QCOMPARE(reloads.count(), 0);
}

QTEST_MAIN(tst_koReferenceRepathFlow)
#include "tst_koreferencerepathflow.moc"
