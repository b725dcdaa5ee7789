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
    const QString project = m_host.copyScene(QStringLiteral("creating"));
    QFile::copy(QStringLiteral(KOVIS_DEMO_OSB), m_host.path(QStringLiteral("smart/shape.osb")));
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
    return QStringList{reference.getName(), unsaved ? QStringLiteral("unsaved") : m_host.relative(reference.getSmartPath()),
                       m_host.relative(reference.getSourcePath())}
        .join(QLatin1Char(' '));
}

void tst_koReferenceCreateCommands::create_data()
{
    QTest::addColumn<bool>("source");
    QTest::addColumn<bool>("fromFile");
    QTest::addColumn<QStringList>("picked");
    QTest::addColumn<QString>("expectedCall");
    QTest::addColumn<QStringList>("expectedReferences");

    const QString smartCall = QStringLiteral("open several: Create Smart Reference||All Supported Files (*.kpr *.osb);; "
                                             "Kovis Project File (*.kpr);; OpenSG Binary Geometry (*osb)");
    const QString sourceCall = "open: Load Source Reference||"
                               + koService<koFileIOService>()->getImportFileFilter(koFileIOService::ImportFiles);

    QTest::newRow("new smart reference") << false << false << QStringList() << QString() << QStringList{"Reference - -"};
    QTest::newRow("smart references from a mixed pick")
        << false << true
        << QStringList{"smart/other.kpr", "parts/a.obj", "smart/shape.osb", "smart/UPPER.KPR", "smart/wheel.v2.kpr"}
        << smartCall << QStringList{"other smart/other.kpr -", "shape smart/shape.osb -", "wheel.v2 smart/wheel.v2.kpr -"};
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
    QTest::addColumn<bool>("smart");
    // The reference, and the others selected with it.
    QTest::addColumn<QString>("target");
    // Typed into the path field; a null text asks through the file dialog instead.
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("picked");
    QTest::addColumn<bool>("changed");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("expectedBox");
    QTest::addColumn<bool>("expectedLog");
    QTest::addColumn<QString>("expectedReference");
    QTest::addColumn<QString>("expectedField");

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
    const QString smartKept = QStringLiteral("Smart smart/current.kpr -");
    const QString sourceKept = QStringLiteral("Source - parts/a.obj");
    const QString bothKept = QStringLiteral("Both smart/both.kpr parts/b.obj");

    QTest::newRow("smart: current path typed again")
        << true << "Smart" << "smart/current.kpr" << QString() << false << none << QString() << false << smartKept
        << "smart/current.kpr";
    QTest::newRow("smart: typed file missing") << true << "Smart" << "smart/missing.kpr" << QString() << false << ok
                                               << smartRefused << false << smartKept << "smart/current.kpr";
    QTest::newRow("smart: typed file no smart file") << true << "Smart" << "parts/a.obj" << QString() << false << ok
                                                     << smartRefused << false << smartKept << "smart/current.kpr";
    QTest::newRow("smart: typed, OK") << true << "Smart" << "smart/other.kpr" << QString() << false << ok
                                      << smartQuestion + confirm << false << "other smart/other.kpr -"
                                      << "smart/other.kpr";
    QTest::newRow("smart: typed with two selected") << true << "Smart,Source" << "smart/other.kpr" << QString()
                                                    << false << none << QString() << false << smartKept
                                                    << "smart/other.kpr";
    QTest::newRow("smart: typed, Cancel") << true << "Smart" << "smart/other.kpr" << QString() << false << cancel
                                          << smartQuestion + confirm << false << smartKept << "smart/other.kpr";
    QTest::newRow("smart: changed, OK") << true << "Smart" << "smart/other.kpr" << QString() << true << ok
                                        << smartQuestion + '\n' + changedText + confirm << false
                                        << "other smart/other.kpr -" << "smart/other.kpr";
    // Content never written exists only in memory: replacing it is a change to confirm.
    QTest::newRow("smart: unsaved, OK")
        << true << "Fresh" << QString() << "smart/shape.osb" << false << ok
        << "Replace Smart Reference|" + changedText + confirm << false << "shape smart/shape.osb parts/c.stl"
        << "smart/shape.osb";
    QTest::newRow("smart: unsaved but changed")
        << true << "Fresh" << QString() << "smart/shape.osb" << true << cancel
        << "Replace Smart Reference|" + changedText + confirm << false << "Fresh unsaved parts/c.stl"
        << "smart/shape.osb";
    QTest::newRow("smart: dialog cancelled") << true << "Smart" << QString() << QString() << false << none
                                             << QString() << false << smartKept << "smart/current.kpr";
    QTest::newRow("smart: no smart file picked") << true << "Smart" << QString() << "parts/a.obj" << false << none
                                                 << QString() << false << smartKept << "smart/current.kpr";

    QTest::newRow("source: current path typed again") << false << "Source" << "parts/a.obj" << QString() << false
                                                      << none << QString() << false << sourceKept << "parts/a.obj";
    QTest::newRow("source: typed file missing") << false << "Source" << "parts/missing.obj" << QString() << false
                                                << ok << sourceMissing << false << sourceKept << "parts/a.obj";
    QTest::newRow("source: typed binary geometry") << false << "Source" << "smart/shape.osb" << QString() << false
                                                   << none << QString() << true << sourceKept << "parts/a.obj";
    QTest::newRow("source: no smart, unchanged: no question")
        << false << "Source" << "parts/b.obj" << QString() << false << none << QString() << false
        << "Source - parts/b.obj" << "parts/b.obj";
    QTest::newRow("source: changed") << false << "Source" << "parts/b.obj" << QString() << true << ok
                                     << "Replace Source Reference|" + changedText + confirm << false
                                     << "Source - parts/b.obj" << "parts/b.obj";
    QTest::newRow("source: with smart, OK") << false << "Both" << "parts/a.obj" << QString() << false << ok
                                            << sourceQuestion + confirm << false << "a unsaved parts/a.obj"
                                            << "parts/a.obj";
    QTest::newRow("source: with smart, Cancel") << false << "Both" << "parts/a.obj" << QString() << false << cancel
                                                << sourceQuestion + confirm << false << bothKept << "parts/a.obj";
    QTest::newRow("source: binary geometry picked") << false << "Source" << QString() << "smart/shape.osb" << false
                                                    << none << QString() << true << sourceKept << "parts/a.obj";
    QTest::newRow("source: picked") << false << "Source" << QString() << "parts/b.obj" << false << none << QString()
                                    << false << "Source - parts/b.obj" << "parts/b.obj";
    QTest::newRow("source: dialog cancelled") << false << "Source" << QString() << QString() << false << none
                                              << QString() << false << sourceKept << "parts/a.obj";
}

void tst_koReferenceCreateCommands::replace()
{
    QFETCH(bool, smart);
    QFETCH(QString, target);
    QFETCH(QString, typed);
    QFETCH(QString, picked);
    QFETCH(bool, changed);
    QFETCH(int, answer);
    QFETCH(QString, expectedBox);
    QFETCH(bool, expectedLog);
    QFETCH(QString, expectedReference);
    QFETCH(QString, expectedField);

    QList<kodNode> selection;
    for (const QString& name : target.split(QLatin1Char(',')))
        selection.append(koTestHost::findNode(name));
    const kodReferenceNode reference(selection.first().getObjectId());
    if (changed)
        reference.getChild(0).setName(QStringLiteral("Edited"));
    // The reload that the edit queues refills the path fields; it runs before the command.
    koTestHost::settle();
    QLineEdit* field = smart ? m_module->m_smartFile : m_module->m_sourceFile;
    const QString current = smart ? reference.getSmartPath() : reference.getSourcePath();
    koScriptedFileDialog files;
    files.answer(picked.isEmpty() ? QString() : m_host.path(picked));
    koDialogDriver driver;
    if (answer != QMessageBox::NoButton)
        driver.answerMessageBox(QMessageBox::StandardButton(answer));
    const QByteArray before = koTestHost::sceneSnapshot();
    const QString initial = describe(reference);
    auto* ui = koService<koInternalUiService>();

    // The field shows the reference's path until the user types another.
    field->setText(current);
    if (!typed.isNull()) {
        m_module->nodeSelectionModel()->selectNodes(selection);
        field->setText(m_host.path(typed));
        QTest::keyClick(field, Qt::Key_Return);
    } else if (smart) {
        emit ui->requestUiReplaceSmart(reference);
    } else {
        emit ui->requestUiReplaceSource(reference);
    }

    QCOMPARE(driver.mismatches(), QStringList());
    QCOMPARE(driver.summaries(), expectedBox.isEmpty() ? QStringList() : QStringList{expectedBox});
    const QString call = smart ? "open: Replace Smart Reference|" + current + "|Smart files (*.kpr *.osb)"
                               : "open: Replace Source Reference|" + current + '|'
                                     + koService<koFileIOService>()->getImportFileFilter(koFileIOService::ImportFiles);
    QCOMPARE(files.summaries(), typed.isNull() ? QStringList{call} : QStringList());
    const QString refusal = "Warning References: Kovis project or OSB files are not allowed as a source reference.";
    QCOMPARE(koTestHost::logLines(), expectedLog ? QStringList{refusal} : QStringList());
    QCOMPARE(describe(reference), expectedReference);
    QCOMPARE(m_host.relative(field->text()), expectedField);
    QVERIFY(!field->signalsBlocked());
    if (expectedReference == initial)
        QCOMPARE(koTestHost::sceneSnapshot(), before);
}

QTEST_MAIN(tst_koReferenceCreateCommands)
#include "tst_koreferencecreatecommands.moc"
