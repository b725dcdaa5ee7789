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

void tst_koReferenceCreateCommands::init()
{
    m_host.writeFile(QStringLiteral("parts/a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no A\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("parts/b.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\no B\nf 1 2 3\n");
    m_host.writeProject(QStringLiteral("smart/current.kpr"), {koTestHost::geometry("Current")});
    m_host.writeProject(QStringLiteral("smart/both.kpr"), {koTestHost::geometry("Both")});
    m_host.writeProject(QStringLiteral("smart/wheel.v2.kpr"), {koTestHost::geometry("Wheel")});
    m_host.writeProject(QStringLiteral("smart/UPPER.KPR"), {koTestHost::geometry("Upper")});
    QFile::copy(QStringLiteral(KOVIS_DEMO_OSB), m_host.path(QStringLiteral("smart/shape.osb")));
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::group("Holder"), koTestHost::reference("Smart", "smart/current.kpr", QString()),
         koTestHost::reference("Both", "smart/both.kpr", "parts/b.obj"),
         koTestHost::reference("Fresh", QString(), "parts/a.obj")});
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
    // The files picked; none for Create Smart/New, which asks for no file.
    QTest::addColumn<QStringList>("picked");
    QTest::addColumn<QStringList>("expectedReferences");

    QTest::newRow("smart references from a mixed pick")
        << false << QStringList{"parts/a.obj", "smart/shape.osb", "smart/UPPER.KPR", "smart/wheel.v2.kpr"}
        << QStringList{"shape smart/shape.osb -", "wheel.v2 smart/wheel.v2.kpr -"};
    QTest::newRow("new smart reference") << false << QStringList() << QStringList{"Reference - -"};
    QTest::newRow("source reference") << true << QStringList{"parts/b.obj"} << QStringList{"b - parts/b.obj"};
}

void tst_koReferenceCreateCommands::create()
{
    QFETCH(bool, source);
    QFETCH(QStringList, picked);
    QFETCH(QStringList, expectedReferences);

    koScriptedFileDialog files;
    QStringList answer;
    for (const QString& file : qAsConst(picked))
        answer.append(m_host.path(file));
    files.answer(answer);
    const QByteArray before = koTestHost::sceneSnapshot();
    const int undoSteps = koUndoStack::the()->count();
    const kodNode holder = koTestHost::findNode(QStringLiteral("Holder"));

    m_module->createReference(source, !picked.isEmpty(), {holder, koTestHost::findNode(QStringLiteral("Smart"))});

    QStringList created;
    for (const kodNode& child : holder.getChildren()) {
        const kodReferenceNode reference(child.getObjectId());
        created.append(describe(reference));
        // A source reference comes with its geometry imported.
        QVERIFY(!source || reference.getChildCount() > 0);
    }
    QCOMPARE(created, expectedReferences);
    QCOMPARE(koUndoStack::the()->count(), undoSteps + 1);
    QCOMPARE(koUndoStack::the()->undoText(), QStringLiteral("Create reference"));
    koUndoStack::the()->undo();
    QCOMPARE(koTestHost::sceneSnapshot(), before);
}

void tst_koReferenceCreateCommands::replace_data()
{
    // The reference, "*" when its content was edited.
    QTest::addColumn<QString>("target");
    // "smart: type path" into the path field, or "smart: pick path" through the file dialog;
    // "source: ..." for the source.
    QTest::addColumn<QString>("input");
    QTest::addColumn<int>("answer");
    // The message boxes, the log, the reference afterwards and the path field.
    QTest::addColumn<QStringList>("outcome");

    const int none = QMessageBox::NoButton;
    const QString changed = QStringLiteral(
        "Replace Smart Reference|The reference which should be replaced has changed. If you proceed, all changes will "
        "be lost. \nThis action is not undoable. Select OK to proceed. (question)");
    const QStringList smartKept{"Smart smart/current.kpr -", "field smart/current.kpr"};

    QTest::newRow("smart: current path typed again") << "Smart" << "smart: type smart/current.kpr" << none << smartKept;
    QTest::newRow("smart: typed file missing")
        << "Smart" << "smart: type smart/missing.kpr" << int(QMessageBox::Ok)
        << QStringList{"Replace Smart Reference|The entered file path does not exists or is not a valid smart file. "
                       "Replace not possible. (error)"}
               + smartKept;
    QTest::newRow("smart: no smart file picked") << "Smart" << "smart: pick parts/a.obj" << none << smartKept;
    // Content never written exists only in memory: replacing it is a change to confirm.
    QTest::newRow("smart: unsaved, OK") << "Fresh" << "smart: pick smart/shape.osb" << int(QMessageBox::Ok)
                                        << QStringList{changed, "shape smart/shape.osb parts/a.obj",
                                                       "field smart/shape.osb"};
    QTest::newRow("smart: unsaved but changed, Cancel")
        << "Fresh*" << "smart: pick smart/shape.osb" << int(QMessageBox::Cancel)
        << QStringList{changed, "Fresh unsaved parts/a.obj", "field smart/shape.osb"};
    QTest::newRow("source: with smart, OK")
        << "Both" << "source: type parts/a.obj" << int(QMessageBox::Ok)
        << QStringList{"Replace Source Reference|Replacing the source file on this smart reference will replace your "
                       "current smart reference with a newly converted version from the source. \nThis action is not "
                       "undoable. Select OK to proceed. (question)",
                       "a unsaved parts/a.obj", "field parts/a.obj"};
    QTest::newRow("source: binary geometry picked")
        << "Both" << "source: pick smart/shape.osb" << none
        << QStringList{"Warning References: Kovis project or OSB files are not allowed as a source reference.",
                       "Both smart/both.kpr parts/b.obj", "field parts/b.obj"};
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
    const kodReferenceNode reference(koTestHost::findNode(QString(target).remove(QLatin1Char('*'))).getObjectId());
    if (target.endsWith(QLatin1Char('*')))
        reference.getChild(0).setName(QStringLiteral("Edited"));
    // The reload that the edit queues refills the path fields; it runs before the command.
    koTestHost::settle();
    QLineEdit* field = smart ? m_module->m_smartFile : m_module->m_sourceFile;
    const QString current = smart ? reference.getSmartPath() : reference.getSourcePath();
    koScriptedFileDialog files;
    files.answer(m_host.path(path));
    koDialogDriver driver;
    if (answer != QMessageBox::NoButton)
        driver.answerMessageBox(QMessageBox::StandardButton(answer));
    const QByteArray before = koTestHost::sceneSnapshot();
    const QString initial = describe(reference);
    auto* ui = koService<koInternalUiService>();

    // The field shows the reference's path until the user types another.
    field->setText(current);
    if (typed) {
        m_module->nodeSelectionModel()->selectNodes({reference});
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
