#include "koDialogDriver.h"
#include "koReferenceEditorModule.h"
#include "koReferenceSmartLocationDialogUI.h"
#include "koScriptedFileDialog.h"
#include "koTestHost.h"

#include <kovis/koFileIOService.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>
#include <kovis/koTreeService.h>

#include <QDirIterator>
#include <QPushButton>
#include <QtTest>

class tst_koReferenceSaveCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void saveSelected_data();
    void saveSelected();
    void overwriteQuestion_data();
    void overwriteQuestion();
    void saveAs_data();
    void saveAs();
    void smartPathsUpdateRequest_data();
    void smartPathsUpdateRequest();
    void modifiedSaveWarnings_data();
    void modifiedSaveWarnings();

private:
    void prepare(const QStringList& steps);
    kodReferenceNode reference(const QString& name) const;
    QList<kodReferenceNode> references(const QStringList& names) const;
    QStringList smartPaths(const QStringList& names) const;
    QStringList smartFiles() const;
    void answerLocationDialog(koDialogDriver& driver, const QString& answer, const QString& customFolder = QString());

    koTestHost m_host;
    std::unique_ptr<koReferenceEditorModule> m_module;
    QHash<QString, kodReferenceNode> m_handles;
};

namespace {

// The names of "Name=path" entries.
QStringList namesIn(QStringList entries)
{
    return entries.replaceInStrings(QRegularExpression(QStringLiteral("=.*")), QString());
}

} // namespace

void tst_koReferenceSaveCommands::init()
{
    QDir().mkpath(m_host.path(QStringLiteral("custom")));
    QVERIFY(koService<koFileIOService>()->loadProject(m_host.copyScene(QStringLiteral("saving"))));
    m_module = std::make_unique<koReferenceEditorModule>();
    QCoreApplication::processEvents();
}

void tst_koReferenceSaveCommands::cleanup()
{
    m_module.reset();
    m_handles.clear();
    QDir folder(m_host.path(QString()));
    folder.removeRecursively();
    folder.mkpath(folder.path());
}

// Steps: "convert:Name", "clone:Name" (the clone is "Name clone"), "unload:Name",
// "bare:Name" (a new reference made smart without any source), "remove:Name" (the
// handle "Name removed" is left stale), "file:path".
void tst_koReferenceSaveCommands::prepare(const QStringList& steps)
{
    auto* references = koService<koReferenceService>();
    for (const QString& step : steps) {
        const QString what = step.section(QLatin1Char(':'), 0, 0);
        const QString name = step.section(QLatin1Char(':'), 1);
        if (what == QLatin1String("convert")) {
            references->convertToSmartReference(reference(name));
        } else if (what == QLatin1String("clone")) {
            const kodNode clone = koService<koTreeService>()->cloneNodes({reference(name)}).value(0);
            m_handles.insert(name + QStringLiteral(" clone"), kodReferenceNode(clone.getObjectId()));
        } else if (what == QLatin1String("remove")) {
            m_handles.insert(name + QStringLiteral(" removed"), reference(name));
            references->removeReference(reference(name));
        } else if (what == QLatin1String("unload")) {
            reference(name).unload();
        } else if (what == QLatin1String("bare")) {
            kodReferenceNode bare = references->createReference(kodNode());
            bare.setName(name);
            references->convertToSmartReference(bare);
        } else if (what == QLatin1String("file")) {
            m_host.writeFile(name, "old");
        }
    }
}

kodReferenceNode tst_koReferenceSaveCommands::reference(const QString& name) const
{
    return m_handles.contains(name) ? m_handles.value(name) : koTestHost::findReference(name);
}

QList<kodReferenceNode> tst_koReferenceSaveCommands::references(const QStringList& names) const
{
    QList<kodReferenceNode> result;
    for (const QString& name : names)
        result.append(reference(name));
    return result;
}

// "Name=path" with the path relative to the test folder, "-" for none.
QStringList tst_koReferenceSaveCommands::smartPaths(const QStringList& names) const
{
    QStringList result;
    for (const QString& name : names)
        result.append(name + QLatin1Char('=') + m_host.relative(reference(name).getSmartPath()));
    return result;
}

// The smart files in the test folder besides those the test starts with.
QStringList tst_koReferenceSaveCommands::smartFiles() const
{
    QStringList files;
    QDirIterator it(m_host.path(QString()), {QStringLiteral("*.kpr")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(m_host.relative(it.next()));
    for (const char* initial : {"project.kpr", "saved/saved.kpr", "frame/frame.kpr", "frame/fork.kpr"})
        files.removeOne(QLatin1String(initial));
    files.sort();
    return files;
}

// "next", "custom", "custom only" (checks that nothing else is offered) or "reject".
void tst_koReferenceSaveCommands::answerLocationDialog(koDialogDriver& driver, const QString& answer,
                                                       const QString& customFolder)
{
    const QString folder =
        customFolder.isEmpty() || QDir::isAbsolutePath(customFolder) ? customFolder : m_host.path(customFolder);
    driver.handleDialog([answer, folder](QDialog* shown) {
        auto* dialog = qobject_cast<koReferenceSmartLocationDialogUI*>(shown);
        QVERIFY(dialog);
        if (answer == QLatin1String("reject")) {
            dialog->buttonBox->button(QDialogButtonBox::Cancel)->click();
            return;
        }
        QCOMPARE(dialog->m_location->isHidden(), answer == QLatin1String("custom only"));
        if (answer == QLatin1String("custom only"))
            QCOMPARE(dialog->m_location->currentIndex(), 1);
        dialog->m_location->setCurrentIndex(answer == QLatin1String("next") ? 0 : 1);
        dialog->m_customPath->setText(folder);
        dialog->buttonBox->button(QDialogButtonBox::Ok)->click();
    });
}

void tst_koReferenceSaveCommands::saveSelected_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("selection");
    QTest::addColumn<QString>("dialog");
    QTest::addColumn<QStringList>("expectedPaths");
    QTest::addColumn<QStringList>("expectedFiles");
    // A new sub-reference counts as changed: its content exists only in memory.
    QTest::addColumn<bool>("warnsOfSubReferences");

    QTest::newRow("nothing unsaved") << QStringList() << QStringList{"Saved", "Wheel"} << QString()
                                     << QStringList{"Saved=saved/saved.kpr", "Wheel=-"} << QStringList() << false;
    QTest::newRow("next to the source")
        << QStringList{"convert:Wheel"} << QStringList{"Wheel"} << "next" << QStringList{"Wheel=parts/wheel.kpr"}
        << QStringList{"parts/wheel.kpr"} << false;
    QTest::newRow("clones share one file")
        << QStringList{"convert:Wheel", "clone:Wheel"} << QStringList{"Wheel", "Wheel clone"} << "next"
        << QStringList{"Wheel=parts/wheel.kpr", "Wheel clone=parts/wheel.kpr"} << QStringList{"parts/wheel.kpr"} << false;
    QTest::newRow("unloaded reference only takes its name")
        << QStringList{"convert:WheelStl", "unload:WheelStl", "convert:Wheel", "file:parts/wheel.kpr"}
        << QStringList{"WheelStl", "Wheel"} << "next" << QStringList{"WheelStl=-", "Wheel=parts/wheel_1.kpr"}
        << QStringList{"parts/wheel.kpr", "parts/wheel_1.kpr"} << false;
    QTest::newRow("no source: only a custom folder")
        << QStringList{"bare:Bare"} << QStringList{"Bare"} << "custom only" << QStringList{"Bare=custom/Bare.kpr"}
        << QStringList{"custom/Bare.kpr"} << false;
    QTest::newRow("new sub-reference") << QStringList{"convert:Headset"} << QStringList{"Frame"} << "next"
                                       << QStringList{"Frame=frame/frame.kpr", "Headset=frame/headset.kpr"}
                                       << QStringList{"frame/headset.kpr"} << true;
    QTest::newRow("stale handle") << QStringList{"convert:Wheel", "remove:Wheel"} << QStringList{"Wheel removed"}
                                  << QString() << QStringList{"Wheel removed=-"} << QStringList() << false;
    QTest::newRow("location dialog cancelled") << QStringList{"convert:Wheel"} << QStringList{"Wheel"} << "reject"
                                               << QStringList{"Wheel=-"} << QStringList() << false;
}

void tst_koReferenceSaveCommands::saveSelected()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, selection);
    QFETCH(QString, dialog);
    QFETCH(QStringList, expectedPaths);
    QFETCH(QStringList, expectedFiles);
    QFETCH(bool, warnsOfSubReferences);

    prepare(steps);
    koDialogDriver driver;
    if (warnsOfSubReferences)
        driver.answerMessageBox(QMessageBox::Ok);
    if (!dialog.isEmpty())
        answerLocationDialog(driver, dialog, QStringLiteral("custom"));

    m_module->saveSmartChanges(references(selection));

    QCOMPARE(driver.mismatches(), QStringList());
    if (warnsOfSubReferences)
        QCOMPARE(driver.messageBoxes().first().title, QStringLiteral("Save Smart References"));
    QCOMPARE(smartPaths(namesIn(expectedPaths)), expectedPaths);
    QCOMPARE(smartFiles(), expectedFiles);
}

void tst_koReferenceSaveCommands::overwriteQuestion_data()
{
    QTest::addColumn<bool>("saveAs");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("expectedPaths");

    const QStringList assigned{"Wheel=parts/wheel.kpr", "Spoke=parts/spoke.kpr"};
    QTest::newRow("save, OK") << false << int(QMessageBox::Ok) << assigned;
    QTest::newRow("save, Cancel") << false << int(QMessageBox::Cancel) << QStringList{"Wheel=-", "Spoke=-"};
    QTest::newRow("save as never asks") << true << int(QMessageBox::NoButton) << assigned;
}

void tst_koReferenceSaveCommands::overwriteQuestion()
{
    QFETCH(bool, saveAs);
    QFETCH(int, answer);
    QFETCH(QStringList, expectedPaths);

    prepare({"convert:Wheel", "convert:Spoke", "file:parts/wheel.kpr", "file:parts/spoke.kpr"});
    koDialogDriver driver;
    answerLocationDialog(driver, QStringLiteral("next"));
    if (answer != QMessageBox::NoButton)
        driver.answerMessageBox(QMessageBox::StandardButton(answer));
    koScriptedFileDialog files;
    const QList<kodReferenceNode> selected = references({"Wheel", "Spoke"});
    const QByteArray scene = koTestHost::sceneSnapshot();

    if (saveAs)
        emit koService<koInternalUiService>()->requestUiSaveSmartsAs(selected);
    else
        emit koService<koInternalUiService>()->requestUiSaveSmarts(selected);

    QCOMPARE(driver.mismatches(), QStringList());
    QCOMPARE(smartPaths({"Wheel", "Spoke"}), expectedPaths);
    QCOMPARE(files.calls().size(), saveAs ? 2 : 0);
    QCOMPARE(koTestHost::readFile(m_host.path(QStringLiteral("parts/wheel.kpr"))) != "old", answer == QMessageBox::Ok);
    if (answer == QMessageBox::Cancel)
        QCOMPARE(koTestHost::sceneSnapshot(), scene);
    if (saveAs)
        return;
    QCOMPARE(driver.summaries(), QStringList{QStringLiteral("Save Smart Changes|The smart reference files listed below "
                                                            "that you are attempting to save already exist.\nSelect OK "
                                                            "to overwrite (this action is not undoable) or Cancel to "
                                                            "abort the save.\n\n%1\n%2\n (question)")
                                                 .arg(m_host.path(QStringLiteral("parts/wheel.kpr")),
                                                      m_host.path(QStringLiteral("parts/spoke.kpr")))});
    QVERIFY(driver.messageBoxes().first().scrollable);
    QVERIFY(driver.messageBoxes().first().parentless);
}

void tst_koReferenceSaveCommands::saveAs_data()
{
    QTest::addColumn<int>("listMode");
    // The answers of the file dialogs for Frame and Saved; empty for Cancel.
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QStringList>("expectedPaths");
    QTest::addColumn<bool>("subReferenceWritten");

    QTest::newRow("graph: with changed sub-references")
        << 0 << QStringList{"copies/frame.kpr", "copies/saved.kpr"}
        << QStringList{"Frame=copies/frame.kpr", "Saved=copies/saved.kpr"} << true;
    QTest::newRow("list: the reference alone") << 1 << QStringList{"copies/frame.kpr", "copies/saved.kpr"}
                                               << QStringList{"Frame=copies/frame.kpr", "Saved=copies/saved.kpr"}
                                               << false;
    QTest::newRow("one file dialog cancelled") << 0 << QStringList{QString(), "copies/saved.kpr"}
                                               << QStringList{"Frame=frame/frame.kpr", "Saved=copies/saved.kpr"}
                                               << false;
}

void tst_koReferenceSaveCommands::saveAs()
{
    QFETCH(int, listMode);
    QFETCH(QStringList, answers);
    QFETCH(QStringList, expectedPaths);
    QFETCH(bool, subReferenceWritten);

    QDir().mkpath(m_host.path(QStringLiteral("copies")));
    m_module->m_listMode->setCurrentIndex(listMode);
    reference(QStringLiteral("Fork")).getChild(0).setName(QStringLiteral("Edited"));
    const QByteArray fork = koTestHost::readFile(m_host.path(QStringLiteral("frame/fork.kpr")));
    koScriptedFileDialog files;
    for (const QString& answer : qAsConst(answers))
        files.answer(answer.isEmpty() ? QString() : m_host.path(answer));

    m_module->saveSmartAs(references({"Frame", "Saved"}));

    const QString call = QStringLiteral("save: Save Smart Reference As|%1|*.kpr");
    QCOMPARE(files.summaries(),
             (QStringList{call.arg(m_host.path("frame/frame.kpr")), call.arg(m_host.path("saved/saved.kpr"))}));
    for (const koFileDialog::Call& call : files.calls())
        QCOMPARE(call.parent.data(), m_module.get());
    QCOMPARE(smartPaths(namesIn(expectedPaths)), expectedPaths);
    for (const QString& answer : qAsConst(answers))
        QVERIFY(answer.isEmpty() || QFile::exists(m_host.path(answer)));
    QCOMPARE(koTestHost::readFile(m_host.path(QStringLiteral("frame/fork.kpr"))) != fork, subReferenceWritten);
}

void tst_koReferenceSaveCommands::smartPathsUpdateRequest_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QString>("node");
    QTest::addColumn<QString>("reserved");
    QTest::addColumn<QString>("dialog");
    QTest::addColumn<QString>("customFolder");
    QTest::addColumn<int>("boxAnswer");
    QTest::addColumn<bool>("expectedResult");
    QTest::addColumn<QStringList>("expectedPaths");

    const QStringList wheel{"convert:Wheel"};
    const int none = QMessageBox::NoButton;
    const int refused = QMessageBox::Ok;
    QTest::newRow("nothing unsaved") << QStringList() << "Wheel" << QString() << QString() << QString() << none
                                     << true << QStringList{"Wheel=-"};
    QTest::newRow("reserved path") << wheel << "Wheel" << "parts/wheel.kpr" << "next" << QString() << none << true
                                   << QStringList{"Wheel=parts/wheel_1.kpr"};
    QTest::newRow("only the node's references")
        << QStringList{"convert:Wheel", "convert:Spoke"} << "Assembly" << QString() << "next" << QString() << none
        << true << QStringList{"Wheel=-", "Spoke=parts/spoke.kpr"};
    QTest::newRow("empty custom folder") << wheel << "Wheel" << QString() << "custom" << QString() << none << false
                                         << QStringList{"Wheel=-"};
    // The folder is there, but takes no files, not even from root.
    QTest::newRow("custom folder not writable") << wheel << "Wheel" << QString() << "custom" << "/proc" << refused
                                                << false << QStringList{"Wheel=-"};
    QTest::newRow("one of two source folders not writable")
        << QStringList{"convert:Wheel", "convert:Blocked"} << "project" << QString() << "next" << QString() << refused
        << false << QStringList{"Wheel=-", "Blocked=-"};
    QTest::newRow("source folder not writable") << QStringList{"convert:Blocked"} << "Blocked" << QString() << "next"
                                                << QString() << refused << false << QStringList{"Blocked=-"};
    QTest::newRow("overwrite cancelled")
        << QStringList{"convert:Wheel", "file:parts/wheel.kpr"} << "Wheel" << QString() << "next" << QString()
        << int(QMessageBox::Cancel) << false << QStringList{"Wheel=-"};
}

void tst_koReferenceSaveCommands::smartPathsUpdateRequest()
{
    QFETCH(QStringList, steps);
    QFETCH(QString, node);
    QFETCH(QString, reserved);
    QFETCH(QString, dialog);
    QFETCH(QString, customFolder);
    QFETCH(int, boxAnswer);
    QFETCH(bool, expectedResult);
    QFETCH(QStringList, expectedPaths);

    prepare(steps);
    koDialogDriver driver;
    if (!dialog.isEmpty())
        answerLocationDialog(driver, dialog, customFolder);
    if (boxAnswer != QMessageBox::NoButton)
        driver.answerMessageBox(QMessageBox::StandardButton(boxAnswer));
    kodNode target = reference(node);
    if (node == QLatin1String("Assembly"))
        target = reference(QStringLiteral("Spoke")).getParent();
    if (node == QLatin1String("project"))
        target = koService<koReferenceService>()->getSceneReferences().first();
    bool result = !expectedResult;

    emit koService<koInternalUiService>()->requestUiSmartPathsUpdate(
        target, reserved.isEmpty() ? QString() : m_host.path(reserved), result);

    QCOMPARE(result, expectedResult);
    QCOMPARE(driver.mismatches(), QStringList());
    QCOMPARE(smartPaths(namesIn(expectedPaths)), expectedPaths);
    if (boxAnswer == QMessageBox::Ok) {
        QCOMPARE(driver.summaries(), QStringList{"Choose Smart Reference Location|You appear to not have write "
                                                 "permissions for at least one of the source directories. Save "
                                                 "operation canceled. (error)"});
    }
}

void tst_koReferenceSaveCommands::modifiedSaveWarnings_data()
{
    QTest::addColumn<bool>("saveAll");
    QTest::addColumn<QString>("changed");
    QTest::addColumn<bool>("outdated");
    QTest::addColumn<QList<int>>("answers");
    QTest::addColumn<QStringList>("expectedBoxes");
    QTest::addColumn<bool>("expectedWritten");

    const QString outdatedText = QStringLiteral(
        "Save Smart References|You are about to save your modifications to an outdated smart reference file. Any changes made to the file "
        "will be overwritten. This action is not undoable. Select OK to proceed. (question)");
    const QString subText = QStringLiteral(
        "Save Smart References|This modified reference also has modified sub-references. Saving it will also save all modified "
        "sub-references. This action is not undoable. Select OK to proceed. (question)");
    const QList<int> ok{QMessageBox::Ok};
    const QList<int> cancel{QMessageBox::Cancel};

    QTest::newRow("changed, no question") << false << "Saved" << false << QList<int>() << QStringList() << true;
    QTest::newRow("outdated, unchanged: no question") << false << QString() << true << QList<int>() << QStringList()
                                                      << false;
    QTest::newRow("changed and outdated, OK") << false << "Saved" << true << ok << QStringList{outdatedText} << true;
    QTest::newRow("changed and outdated, Cancel")
        << false << "Saved" << true << cancel << QStringList{outdatedText} << false;
    QTest::newRow("changed sub-reference, OK") << false << "Fork" << false << ok << QStringList{subText} << true;
    QTest::newRow("changed sub-reference, Cancel")
        << false << "Fork" << false << cancel << QStringList{subText} << false;
    QTest::newRow("save all asks nothing") << true << "Saved" << true << QList<int>() << QStringList() << true;
}

void tst_koReferenceSaveCommands::modifiedSaveWarnings()
{
    QFETCH(bool, saveAll);
    QFETCH(QString, changed);
    QFETCH(bool, outdated);
    QFETCH(QList<int>, answers);
    QFETCH(QStringList, expectedBoxes);
    QFETCH(bool, expectedWritten);

    const bool sub = changed == QLatin1String("Fork");
    const QString file = m_host.path(sub ? QStringLiteral("frame/fork.kpr") : QStringLiteral("saved/saved.kpr"));
    if (!changed.isEmpty())
        reference(changed).getChild(0).setName(QStringLiteral("Edited"));
    const QDateTime later = QDateTime::currentDateTimeUtc().addSecs(60);
    if (outdated) {
        koTestHost::setModified(file, later);
        koService<koReferenceService>()->checkFiles();
    }
    const QByteArray before = koTestHost::readFile(file);
    koDialogDriver driver;
    for (int answer : qAsConst(answers))
        driver.answerMessageBox(QMessageBox::StandardButton(answer));
    const QByteArray scene = koTestHost::sceneSnapshot();

    if (saveAll)
        m_module->saveAllSmartChanges();
    else
        m_module->saveSmartChanges({reference(sub ? QStringLiteral("Frame") : QStringLiteral("Saved"))});

    QCOMPARE(driver.mismatches(), QStringList());
    QCOMPARE(driver.summaries(), expectedBoxes);
    QCOMPARE(koTestHost::readFile(file) != before, expectedWritten);
    if (!expectedWritten)
        QCOMPARE(koTestHost::sceneSnapshot(), scene);
}

QTEST_MAIN(tst_koReferenceSaveCommands)
#include "tst_koreferencesavecommands.moc"
