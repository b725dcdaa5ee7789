#include "koDialogDriver.h"
#include "koReferenceEditorModule.h"
#include "koScriptedFileDialog.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koNodeBasedSelectionModel.h>
#include <kovis/koReferenceService.h>
#include <kovis/koUndoStack.h>

#include <QtTest>

class tst_koReferenceCreateCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void create_data();
    void create();
    void replace_data();
    void replace();

private:
    QString describe(const kodReferenceNode& reference) const;

    koTestHost m_host;
    std::unique_ptr<koReferenceEditorModule> m_module;
};

namespace {

// Ends every question: the box asks OK or Cancel, Cancel being the default.
const QString confirm = QStringLiteral("\nThis action is not undoable. Select OK to proceed. (question)");
const QString changedText =
    QStringLiteral("The reference which should be replaced has changed. If you proceed, all changes will be lost. ");

} // namespace

void tst_koReferenceCreateCommands::init()
{
    m_host.writeFile(QStringLiteral("parts/a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no A\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("parts/b.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no B\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("parts/b.v2.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no B\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("parts/c.stl"), "solid c\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid c\n");
    m_host.writeProject(QStringLiteral("smart/current.kpr"), {koTestHost::geometry("Current")});
    m_host.writeProject(QStringLiteral("smart/other.kpr"), {koTestHost::geometry("Other")});
    m_host.writeProject(QStringLiteral("smart/both.kpr"), {koTestHost::geometry("Both")});
    m_host.writeProject(QStringLiteral("smart/wheel.v2.kpr"), {koTestHost::geometry("Wheel")});
    m_host.writeProject(QStringLiteral("smart/UPPER.KPR"), {koTestHost::geometry("Upper")});
    QFile::copy(QStringLiteral(KOVIS_DEMO_OSB), m_host.path(QStringLiteral("smart/shape.osb")));
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::group("Holder"), koTestHost::reference("Smart", "smart/current.kpr", QString()),
         koTestHost::reference("Source", QString(), "parts/a.obj"),
         koTestHost::reference("Both", "smart/both.kpr", "parts/b.obj"),
         koTestHost::reference("Fresh", QString(), "parts/c.stl")});
    QVERIFY(koService<koFileIOService>()->loadProject(project));
    koService<koReferenceService>()->convertToSmartReference(koTestHost::findNode(QStringLiteral("Fresh")));
    m_module = std::make_unique<koReferenceEditorModule>();
    QCoreApplication::processEvents();
    koService<koLogService>()->clear();
}

void tst_koReferenceCreateCommands::cleanup()
{
    m_module.reset();
}

// "name smart source": a path relative to the test folder, "unsaved" for a smart link
// without a file, "-" for no link.
QString tst_koReferenceCreateCommands::describe(const kodReferenceNode& reference) const
{
    const bool unsaved = reference.getSmartFileState() == koReferenceTypes::Unsaved;
    const QString smart = unsaved ? QStringLiteral("unsaved") : m_host.relative(reference.getSmartPath());
    return QStringList{reference.getName(), smart, m_host.relative(reference.getSourcePath())}.join(QLatin1Char(' '));
}

void tst_koReferenceCreateCommands::create_data()
{
    QTest::addColumn<bool>("source");
    QTest::addColumn<bool>("fromFile");
    QTest::addColumn<QStringList>("picked");
    QTest::addColumn<QString>("expectedCall");
    QTest::addColumn<QStringList>("expectedReferences");

    const QString smartCall = QStringLiteral("open several: Create Smart Reference||All Supported Files (*.kpr "
                                             "*.osb);; Kovis Project File (*.kpr);; OpenSG Binary Geometry (*osb)");
    const QString sourceCall = "open: Load Source Reference||"
                               + koService<koFileIOService>()->getImportFileFilter(koFileIOService::ImportFiles);

    QTest::newRow("new smart reference")
        << false << false << QStringList() << QString() << QStringList{"Reference - -"};
    QTest::newRow("smart references from a mixed pick")
        << false << true
        << QStringList{"smart/other.kpr", "parts/a.obj", "smart/shape.osb", "smart/UPPER.KPR", "smart/wheel.v2.kpr"}
        << smartCall
        << QStringList{"other smart/other.kpr -", "shape smart/shape.osb -", "wheel.v2 smart/wheel.v2.kpr -"};
    QTest::newRow("smart references, nothing picked") << false << true << QStringList() << smartCall << QStringList();
    // Named after the file without its last suffix only.
    QTest::newRow("source reference") << true << true << QStringList{"parts/b.v2.obj"} << sourceCall
                                      << QStringList{"b.v2 - parts/b.v2.obj"};
    QTest::newRow("source reference, nothing picked") << true << true << QStringList() << sourceCall << QStringList();
}

void tst_koReferenceCreateCommands::create()
{
    QFETCH(bool, source);
    QFETCH(bool, fromFile);
    QFETCH(QStringList, picked);
    QFETCH(QString, expectedCall);
    QFETCH(QStringList, expectedReferences);

    koScriptedFileDialog files;
    QStringList answer;
    for (const QString& file : qAsConst(picked))
        answer.append(m_host.path(file));
    files.answer(answer);
    const QByteArray before = koTestHost::sceneSnapshot();
    const int undoSteps = koUndoStack::the()->count();
    const kodNode holder = koTestHost::findNode(QStringLiteral("Holder"));

    m_module->createReference(source, fromFile, {holder, koTestHost::findNode(QStringLiteral("Smart"))});

    QCOMPARE(files.summaries(), expectedCall.isEmpty() ? QStringList() : QStringList{expectedCall});
    QStringList created;
    for (const kodNode& child : holder.getChildren()) {
        const kodReferenceNode reference(child.getObjectId());
        created.append(describe(reference));
        // A source reference comes with its geometry imported.
        QVERIFY(!source || reference.getChildCount() > 0);
    }
    QCOMPARE(created, expectedReferences);
    QCOMPARE(koUndoStack::the()->count(), undoSteps + (created.isEmpty() ? 0 : 1));
    if (created.isEmpty())
        return;
    QCOMPARE(koUndoStack::the()->undoText(), QStringLiteral("Create reference"));
    koUndoStack::the()->undo();
    QCOMPARE(koTestHost::sceneSnapshot(), before);
}

void tst_koReferenceCreateCommands::replace_data()
{
    // The reference, and the others selected with it; "*" when its content was edited.
    QTest::addColumn<QString>("target");
    // "smart: type path" into the path field, or "smart: pick path" through the file dialog
    // (no path for Cancel); "source: ..." for the source.
    QTest::addColumn<QString>("input");
    QTest::addColumn<int>("answer");
    // The message boxes, the log, the reference afterwards and the path field.
    QTest::addColumn<QStringList>("outcome");

    const int none = QMessageBox::NoButton;
    const int ok = QMessageBox::Ok;
    const int cancel = QMessageBox::Cancel;
    const QString smartQuestion = QStringLiteral(
        "Replace Smart Reference|You are attempting to replace a smart reference. If you proceed this will likely "
        "change the source reference, too. ");
    const QString smartRefused = QStringLiteral(
        "Replace Smart Reference|The entered file path does not exists or is not a valid smart file. Replace not "
        "possible. (error)");
    const QString sourceQuestion = QStringLiteral(
        "Replace Source Reference|Replacing the source file on this smart reference will replace your current smart "
        "reference with a newly converted version from the source. ");
    const QString sourceMissing =
        QStringLiteral("Replace Source Reference|The entered file path does not exists. Replace not possible. (error)");
    const QString refusal = "Warning References: Kovis project or OSB files are not allowed as a source reference.";
    const QStringList smartKept{"Smart smart/current.kpr -", "field smart/current.kpr"};
    const QStringList sourceKept{"Source - parts/a.obj", "field parts/a.obj"};
    const QStringList otherTaken{"other smart/other.kpr -", "field smart/other.kpr"};
    const QStringList sourceTaken{"Source - parts/b.obj", "field parts/b.obj"};

    QTest::newRow("smart: current path typed again") << "Smart" << "smart: type smart/current.kpr" << none << smartKept;
    QTest::newRow("smart: typed file missing")
        << "Smart" << "smart: type smart/missing.kpr" << ok << QStringList{smartRefused} + smartKept;
    QTest::newRow("smart: typed file no smart file")
        << "Smart" << "smart: type parts/a.obj" << ok << QStringList{smartRefused} + smartKept;
    QTest::newRow("smart: typed, OK") << "Smart" << "smart: type smart/other.kpr" << ok
                                      << QStringList{smartQuestion + confirm} + otherTaken;
    QTest::newRow("smart: typed with two selected")
        << "Smart,Source" << "smart: type smart/other.kpr" << none
        << QStringList{"Smart smart/current.kpr -", "field smart/other.kpr"};
    QTest::newRow("smart: typed, Cancel")
        << "Smart" << "smart: type smart/other.kpr" << cancel
        << QStringList{smartQuestion + confirm, "Smart smart/current.kpr -", "field smart/other.kpr"};
    QTest::newRow("smart: changed, OK") << "Smart*" << "smart: type smart/other.kpr" << ok
                                        << QStringList{smartQuestion + '\n' + changedText + confirm} + otherTaken;
    // Content never written exists only in memory: replacing it is a change to confirm.
    QTest::newRow("smart: unsaved, OK") << "Fresh" << "smart: pick smart/shape.osb" << ok
                                        << QStringList{"Replace Smart Reference|" + changedText + confirm,
                                                       "shape smart/shape.osb parts/c.stl", "field smart/shape.osb"};
    QTest::newRow("smart: unsaved but changed") << "Fresh*" << "smart: pick smart/shape.osb" << cancel
                                                << QStringList{"Replace Smart Reference|" + changedText + confirm,
                                                               "Fresh unsaved parts/c.stl", "field smart/shape.osb"};
    QTest::newRow("smart: dialog cancelled") << "Smart" << "smart: pick" << none << smartKept;
    QTest::newRow("smart: no smart file picked") << "Smart" << "smart: pick parts/a.obj" << none << smartKept;

    QTest::newRow("source: current path typed again") << "Source" << "source: type parts/a.obj" << none << sourceKept;
    QTest::newRow("source: typed file missing")
        << "Source" << "source: type parts/missing.obj" << ok << QStringList{sourceMissing} + sourceKept;
    QTest::newRow("source: typed binary geometry")
        << "Source" << "source: type smart/shape.osb" << none << QStringList{refusal} + sourceKept;
    QTest::newRow("source: no smart, unchanged: no question")
        << "Source" << "source: type parts/b.obj" << none << sourceTaken;
    QTest::newRow("source: changed") << "Source*" << "source: type parts/b.obj" << ok
                                     << QStringList{"Replace Source Reference|" + changedText + confirm} + sourceTaken;
    QTest::newRow("source: with smart, OK")
        << "Both" << "source: type parts/a.obj" << ok
        << QStringList{sourceQuestion + confirm, "a unsaved parts/a.obj", "field parts/a.obj"};
    QTest::newRow("source: with smart, Cancel")
        << "Both" << "source: type parts/a.obj" << cancel
        << QStringList{sourceQuestion + confirm, "Both smart/both.kpr parts/b.obj", "field parts/a.obj"};
    QTest::newRow("source: binary geometry picked")
        << "Source" << "source: pick smart/shape.osb" << none << QStringList{refusal} + sourceKept;
    QTest::newRow("source: picked") << "Source" << "source: pick parts/b.obj" << none << sourceTaken;
    QTest::newRow("source: dialog cancelled") << "Source" << "source: pick" << none << sourceKept;
}

void tst_koReferenceCreateCommands::replace()
{
    QFETCH(QString, target);
    QFETCH(QString, input);
    QFETCH(int, answer);
    QFETCH(QStringList, outcome);

    const bool smart = input.startsWith(QLatin1String("smart"));
    const bool typed = input.contains(QLatin1String(": type "));
    const QString path = input.section(QLatin1Char(' '), 2);
    QList<kodNode> selection;
    for (const QString& name : QString(target).remove(QLatin1Char('*')).split(QLatin1Char(',')))
        selection.append(koTestHost::findNode(name));
    const kodReferenceNode reference(selection.first().getObjectId());
    if (target.endsWith(QLatin1Char('*')))
        reference.getChild(0).setName(QStringLiteral("Edited"));
    // The reload that the edit queues refills the path fields; it runs before the command.
    koTestHost::settle();
    QLineEdit* field = smart ? m_module->m_smartFile : m_module->m_sourceFile;
    const QString current = smart ? reference.getSmartPath() : reference.getSourcePath();
    koScriptedFileDialog files;
    files.answer(path.isEmpty() ? QString() : m_host.path(path));
    koDialogDriver driver;
    if (answer != QMessageBox::NoButton)
        driver.answerMessageBox(QMessageBox::StandardButton(answer));
    const QByteArray before = koTestHost::sceneSnapshot();
    const QString initial = describe(reference);
    auto* ui = koService<koInternalUiService>();

    // The field shows the reference's path until the user types another.
    field->setText(current);
    if (typed) {
        m_module->nodeSelectionModel()->selectNodes(selection);
        field->setText(m_host.path(path));
        QTest::keyClick(field, Qt::Key_Return);
    } else if (smart) {
        emit ui->requestUiReplaceSmart(reference);
    } else {
        emit ui->requestUiReplaceSource(reference);
    }

    const QStringList shown = driver.mismatches() + driver.summaries() + koTestHost::logLines()
                              + QStringList{describe(reference), "field " + m_host.relative(field->text())};
    QCOMPARE(shown, outcome);
    const QString call = smart ? "open: Replace Smart Reference|" + current + "|Smart files (*.kpr *.osb)"
                               : "open: Replace Source Reference|" + current + '|'
                                     + koService<koFileIOService>()->getImportFileFilter(koFileIOService::ImportFiles);
    QCOMPARE(files.summaries(), typed ? QStringList() : QStringList{call});
    QVERIFY(!field->signalsBlocked());
    if (describe(reference) == initial)
        QCOMPARE(koTestHost::sceneSnapshot(), before);
}

QTEST_MAIN(tst_koReferenceCreateCommands)
#include "tst_koreferencecreatecommands.moc"
