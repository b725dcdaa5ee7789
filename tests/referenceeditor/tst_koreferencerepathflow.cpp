#include "RepathProgress.h"
#include "koDialogDriver.h"
#include "koReferenceEditorModule.h"
#include "koReferenceRePathDialogI.h"
#include "koReferenceRePathSummaryI.h"
#include "koReferenceRepathFlow.h"
#include "koReferenceTreeModel.h"
#include "koScriptedFileDialog.h"
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
    void requestsChooseTheLinks_data();
    void requestsChooseTheLinks();
    void dialogStartsFreshAndEnterAccepts();
    void cancelDuringTheSearchChangesNothing();

private:
    QString links() const;

    koTestHost m_host;
    std::unique_ptr<koReferenceEditorModule> m_module;
};

namespace {

// What the user does in the repath dialog.
struct DialogAnswer
{
    QString folder;
    bool missingOnly = false;
    bool accept = true;
    bool subfolders = true;
};

void answerRepathDialog(koDialogDriver& driver, const DialogAnswer& answer)
{
    driver.handleDialog([answer](QDialog* dialog) {
        auto* repath = qobject_cast<koReferenceRePathDialogI*>(dialog);
        QVERIFY(repath);
        repath->m_newPath->setText(answer.folder);
        repath->m_affectedFiles->setCurrentIndex(answer.missingOnly ? 1 : 0);
        repath->m_searchSubdirs->setChecked(answer.subfolders);
        (answer.accept ? repath->m_okButton : repath->m_cancelButton)->click();
    });
}

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
    QVERIFY(koService<koFileIOService>()->loadProject(m_host.copyScene(QStringLiteral("repath"))));
    m_module = std::make_unique<koReferenceEditorModule>();
    QCoreApplication::processEvents();
}

void tst_koReferenceRepathFlow::cleanup()
{
    m_module.reset();
    QDir(m_host.path(QStringLiteral("new"))).removeRecursively();
}

QString tst_koReferenceRepathFlow::links() const
{
    QStringList links;
    for (const QString& name : {QStringLiteral("A"), QStringLiteral("B")}) {
        const kodReferenceNode node = koTestHost::findReference(name);
        links.append(name + QLatin1Char('=') + m_host.relative(node.getSmartPath()) + QLatin1Char(',')
                     + m_host.relative(node.getSourcePath()));
    }
    return links.join(QLatin1Char(' '));
}

namespace {

int differingLinks(const QString& before, const QString& after)
{
    const QStringList old = before.split(QRegularExpression(QStringLiteral("[ ,]")));
    const QStringList now = after.split(QRegularExpression(QStringLiteral("[ ,]")));
    int differing = 0;
    for (int i = 0; i < old.size() && i < now.size(); ++i)
        differing += old.at(i) != now.at(i);
    return differing;
}

} // namespace

void tst_koReferenceRepathFlow::repath_data()
{
    QTest::addColumn<QStringList>("nodes");
    QTest::addColumn<QStringList>("newFiles");
    QTest::addColumn<QString>("dialog");
    QTest::addColumn<QString>("summary");
    QTest::addColumn<QStringList>("expectedSummary");
    QTest::addColumn<QString>("expectedWarning");
    QTest::addColumn<QString>("expectedLinks");
    // Whether a warning names the other files of A's source, found in two folders.
    QTest::addColumn<bool>("ambiguityLogged");

    const QString unchanged = QStringLiteral("A=old/a/a.kpr,old/a/a.obj B=-,old/b/b.obj");
    const QString notFound = QStringLiteral("This reference name cannot be found in the selected directory. "
                                            "Please check the directory and try again.");
    const QStringList someFiles{"new/parts/a/a.kpr", "new/parts/a/a.obj"};
    const QStringList allFiles = someFiles + QStringList{"new/b/b.obj"};

    QTest::newRow("one node, both links found")
        << QStringList{"A"} << someFiles << "accept" << QString() << QStringList() << QString()
        << "A=new/parts/a/a.kpr,new/parts/a/a.obj B=-,old/b/b.obj" << false;
    QTest::newRow("two nodes, all found")
        << QStringList{"A", "B"} << allFiles << "accept" << QString() << QStringList() << QString()
        << "A=new/parts/a/a.kpr,new/parts/a/a.obj B=-,new/b/b.obj" << false;
    QTest::newRow("one node, its file not found")
        << QStringList{"B"} << someFiles << "accept" << QString() << QStringList() << notFound << unchanged << false;
    QTest::newRow("one node, one of its two links found")
        << QStringList{"A"} << QStringList{"new/a.obj"} << "accept" << QString() << QStringList() << notFound << unchanged << false;
    QTest::newRow("sub-folders not searched")
        << QStringList{"A"} << someFiles << "top only" << QString() << QStringList() << notFound << unchanged << false;
    QTest::newRow("empty folder") << QStringList{"A", "B"} << allFiles << "empty" << QString() << QStringList()
                                  << QString() << unchanged << false;
    QTest::newRow("dialog cancelled") << QStringList{"A", "B"} << allFiles << "reject" << QString() << QStringList()
                                      << QString() << unchanged << false;
    QTest::newRow("missing files only, none missing")
        << QStringList{"C"} << QStringList{"new/c.obj"} << "missing only" << QString() << QStringList() << QString()
        << unchanged << false;
    const QStringList ambiguous{"new/a/a.obj", "new/x/a.obj", "new/a/a.kpr"};
    const QStringList oneNotFound{"2 Filepaths successful", "1 Filepaths unsuccessful", "old/b/b.obj"};
    const QString ambiguousFound = QStringLiteral("A=new/a/a.kpr,new/a/a.obj");
    QTest::newRow("ambiguous name, all found")
        << QStringList{"A", "B"} << ambiguous + QStringList{"new/b/b.obj"} << "accept" << QString() << QStringList()
        << QString() << ambiguousFound + " B=-,new/b/b.obj" << true;
    QTest::newRow("ambiguous name, summary OK") << QStringList{"A", "B"} << ambiguous << "accept" << "ok" << oneNotFound
                                                << QString() << ambiguousFound + " B=-,new/b.obj" << true;
    QTest::newRow("ambiguous name, summary cancelled")
        << QStringList{"A", "B"} << ambiguous << "accept" << "cancel" << oneNotFound << QString() << unchanged << false;
}

void tst_koReferenceRepathFlow::repath()
{
    QFETCH(QStringList, nodes);
    QFETCH(QStringList, newFiles);
    QFETCH(QString, dialog);
    QFETCH(QString, summary);
    QFETCH(QStringList, expectedSummary);
    QFETCH(QString, expectedWarning);
    QFETCH(QString, expectedLinks);
    QFETCH(bool, ambiguityLogged);

    for (const QString& file : qAsConst(newFiles))
        m_host.writeFile(file, "o X\n");
    koService<koLogService>()->clear();
    QList<kodReferenceNode> selection;
    for (const QString& name : qAsConst(nodes))
        selection.append(koTestHost::findReference(name));
    QCoreApplication::processEvents();
    const int undoSteps = koUndoStack::the()->count();
    const QString linksBefore = links();
    QSignalSpy reloads(m_module->referenceModel(), &QAbstractItemModel::layoutChanged);

    koDialogDriver driver;
    answerRepathDialog(driver, {dialog == "empty" ? QString() : m_host.path(QStringLiteral("new")),
                                dialog == "missing only", dialog != "reject", dialog != "top only"});
    QStringList shownSummary;
    if (!summary.isEmpty()) {
        driver.handleDialog([&](QDialog* box) {
            auto* dialog = qobject_cast<koReferenceRePathSummaryI*>(box);
            QVERIFY(dialog);
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Repath"));
            shownSummary << dialog->m_message1->text() << dialog->m_message2->text();
            const auto* list = qobject_cast<QStringListModel*>(dialog->m_listView->model());
            for (const QString& path : list->stringList())
                shownSummary << m_host.relative(path);
            (summary == "ok" ? dialog->m_okButton : dialog->m_cancelButton)->click();
        });
    }
    if (!expectedWarning.isEmpty())
        driver.answerMessageBox(QMessageBox::Ok);

    m_module->repathReferences(selection, true, true);
    QCoreApplication::processEvents();

    QCOMPARE(driver.mismatches(), QStringList());
    QCOMPARE(shownSummary, expectedSummary);
    QCOMPARE(driver.summaries(), expectedWarning.isEmpty() ? QStringList() : QStringList{"Repath|" + expectedWarning + " (warning)"});
    QCOMPARE(links(), expectedLinks);
    // No undo group: the host makes each re-pointed link a step of its own.
    QCOMPARE(koUndoStack::the()->count() - undoSteps, differingLinks(linksBefore, expectedLinks));
    const bool applied = expectedLinks != QStringLiteral("A=old/a/a.kpr,old/a/a.obj B=-,old/b/b.obj");
    QCOMPARE(reloads.count(), applied || dialog == "missing only" ? 1 : 0);
    const QString ambiguity = QStringLiteral("A (source link): 2 files named a.obj were found; repathed to %1 by longest "
                                             "tail of 1 folder(s). The others: %2")
                                  .arg(QDir::toNativeSeparators(m_host.path("new/a/a.obj")),
                                       QDir::toNativeSeparators(m_host.path("new/x/a.obj")));
    QCOMPARE(koTestHost::logLines().filter(QStringLiteral("Warning References: ")),
             ambiguityLogged ? QStringList{"Warning References: " + ambiguity} : QStringList());
}

void tst_koReferenceRepathFlow::requestsChooseTheLinks_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("expectedLinks");

    QTest::newRow("references") << "references" << "A=new/a.kpr,new/a.obj B=-,old/b/b.obj";
    QTest::newRow("smarts") << "smarts" << "A=new/a.kpr,old/a/a.obj B=-,old/b/b.obj";
    QTest::newRow("sources") << "sources" << "A=old/a/a.kpr,new/a.obj B=-,old/b/b.obj";
}

void tst_koReferenceRepathFlow::requestsChooseTheLinks()
{
    QFETCH(QString, request);
    QFETCH(QString, expectedLinks);

    m_host.writeFile(QStringLiteral("new/a.kpr"), "{}");
    m_host.writeFile(QStringLiteral("new/a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no A\nf 1 2 3\n");
    koDialogDriver driver;
    answerRepathDialog(driver, {m_host.path(QStringLiteral("new")), false, true});
    auto* ui = koService<koInternalUiService>();
    const QList<kodReferenceNode> nodes{koTestHost::findReference(QStringLiteral("A"))};
    if (request == "references")
        emit ui->requestUiRepathReferences(nodes);
    else if (request == "smarts")
        emit ui->requestUiRepathSmarts(nodes);
    else
        emit ui->requestUiRepathSources(nodes);
    QCOMPARE(driver.mismatches(), QStringList());
    QCOMPARE(links(), expectedLinks);
}

// The dialog is made anew for each repath: no folder or narrowed search may carry over.
// Enter in the path field accepts it; it does not open the folder picker.
void tst_koReferenceRepathFlow::dialogStartsFreshAndEnterAccepts()
{
    koScriptedFileDialog files;
    files.answer(m_host.path(QStringLiteral("current")));
    koReferenceRePathDialogI dialog(m_module.get());
    QVERIFY(dialog.newPath().isEmpty());
    QVERIFY(!dialog.missingFilesOnly());
    QVERIFY(dialog.searchSubdirectories());
    dialog.m_newPathButton->click();
    QCOMPARE(dialog.newPath(), m_host.path(QStringLiteral("current")));

    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.m_newPath->setFocus();
    QTest::keyClicks(dialog.m_newPath, QStringLiteral("/new"));
    QTest::keyClick(dialog.m_newPath, Qt::Key_Return);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!dialog.isVisible());
    QCOMPARE(files.calls().size(), 1);
    QCOMPARE(dialog.newPath(), m_host.path(QStringLiteral("current/new")));
}

void tst_koReferenceRepathFlow::cancelDuringTheSearchChangesNothing()
{
    for (int folder = 0; folder < 20; ++folder) {
        for (const QString& file : {QStringLiteral("a.kpr"), QStringLiteral("a.obj"), QStringLiteral("b.obj")})
            m_host.writeFile(QStringLiteral("new/%1/%2").arg(folder).arg(file), "o X\n");
    }
    const QString linksBefore = links();
    QSignalSpy reloads(m_module->referenceModel(), &QAbstractItemModel::layoutChanged);
    koDialogDriver driver;
    answerRepathDialog(driver, {m_host.path(QStringLiteral("new")), false, true});
    QString label;
    driver.handleDialog([&label](QDialog* dialog) {
        auto* progress = qobject_cast<QProgressDialog*>(dialog);
        QVERIFY(progress);
        label = progress->labelText();
        progress->findChild<QPushButton*>()->click();
    });

    koStalledProgress progress;
    const QList<kodReferenceNode> nodes{koTestHost::findReference(QStringLiteral("A")),
                                        koTestHost::findReference(QStringLiteral("B"))};
    QVERIFY(!koReferenceRepathFlow::run(m_module.get(), nodes, true, true, progress));
    QCoreApplication::processEvents();

    QCOMPARE(driver.mismatches(), QStringList());
    QVERIFY2(label.contains(m_host.path(QStringLiteral("new"))), qPrintable(label));
    QCOMPARE(links(), linksBefore);
    QCOMPARE(reloads.count(), 0);
}

QTEST_MAIN(tst_koReferenceRepathFlow)
#include "tst_koreferencerepathflow.moc"
