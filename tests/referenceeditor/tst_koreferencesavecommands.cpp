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
    void save_data();
    void save();

private:
    void prepare(const QStringList& steps);
    kodReferenceNode reference(const QString& name) const;
    void script(koDialogDriver& driver, koScriptedFileDialog& files, const QStringList& answers) const;
    QStringList smartPaths() const;
    QMap<QString, QByteArray> files() const;

    koTestHost m_host;
    std::unique_ptr<koReferenceEditorModule> m_module;
    QHash<QString, kodReferenceNode> m_handles;
};

void tst_koReferenceSaveCommands::init()
{
    const QByteArray triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    m_host.writeFile(QStringLiteral("parts/wheel.obj"), triangle + "o Hub\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("parts/wheel.stl"), "solid wheel\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n"
                                                        "vertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid\n");
    m_host.writeFile(QStringLiteral("frame/headset.obj"), triangle + "o Headset\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("blocked.txt"), "a file, so nothing can be created below it");
    QDir().mkpath(m_host.path(QStringLiteral("custom")));
    QDir().mkpath(m_host.path(QStringLiteral("copies")));
    m_host.writeProject(QStringLiteral("frame/fork.kpr"), {koTestHost::geometry("Blade")});
    m_host.writeProject(QStringLiteral("frame/frame.kpr"),
                        {koTestHost::reference("Fork", "fork.kpr", QString()),
                         koTestHost::reference("Headset", QString(), "headset.obj")});
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::reference("Wheel", QString(), "parts/wheel.obj"),
         koTestHost::reference("WheelStl", QString(), "parts/wheel.stl"),
         koTestHost::reference("Frame", "frame/frame.kpr", QString()),
         koTestHost::reference("Blocked", QString(), "blocked.txt/parts/blocked.obj")});
    QVERIFY(koService<koFileIOService>()->loadProject(project));
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
// "bare:Name" (a new reference made smart without any source), "edit:Name" (its content),
// "file:path" (an old file there), "outdated:path" (a file changed on disk since), "list"
// (the list view).
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
        } else if (what == QLatin1String("unload")) {
            reference(name).unload();
        } else if (what == QLatin1String("bare")) {
            kodReferenceNode bare = references->createReference(kodNode());
            bare.setName(name);
            references->convertToSmartReference(bare);
        } else if (what == QLatin1String("edit")) {
            reference(name).getChild(0).setName(QStringLiteral("Edited"));
        } else if (what == QLatin1String("file")) {
            m_host.writeFile(name, "old");
        } else if (what == QLatin1String("outdated")) {
            koTestHost::setModified(m_host.path(name), QDateTime::currentDateTimeUtc().addSecs(60));
            references->checkFiles();
        } else if (what == QLatin1String("list")) {
            m_module->m_listMode->setCurrentIndex(1);
        }
    }
}

kodReferenceNode tst_koReferenceSaveCommands::reference(const QString& name) const
{
    return m_handles.contains(name) ? m_handles.value(name) : koTestHost::findReference(name);
}

// In order: "ok" or "cancel" for a message box; "file:path" for a file dialog, Cancel
// without a path; for the location dialog "next", "reject", "custom:folder" or
// "custom only:folder" (checks that nothing else is offered).
void tst_koReferenceSaveCommands::script(koDialogDriver& driver, koScriptedFileDialog& files,
                                         const QStringList& answers) const
{
    for (const QString& answer : answers) {
        const QString what = answer.section(QLatin1Char(':'), 0, 0);
        const QString path = answer.section(QLatin1Char(':'), 1);
        const QString folder = path.isEmpty() || QDir::isAbsolutePath(path) ? path : m_host.path(path);
        if (what == QLatin1String("ok") || what == QLatin1String("cancel"))
            driver.answerMessageBox(what == QLatin1String("ok") ? QMessageBox::Ok : QMessageBox::Cancel);
        else if (what == QLatin1String("file"))
            files.answer(folder);
        else
            driver.handleDialog([what, folder](QDialog* shown) {
                auto* dialog = qobject_cast<koReferenceSmartLocationDialogUI*>(shown);
                QVERIFY(dialog);
                if (what == QLatin1String("reject")) {
                    dialog->buttonBox->button(QDialogButtonBox::Cancel)->click();
                    return;
                }
                QCOMPARE(dialog->m_location->isHidden(), what == QLatin1String("custom only"));
                if (what == QLatin1String("custom only"))
                    QCOMPARE(dialog->m_location->currentIndex(), 1);
                dialog->m_location->setCurrentIndex(what == QLatin1String("next") ? 0 : 1);
                dialog->m_customPath->setText(folder);
                dialog->buttonBox->button(QDialogButtonBox::Ok)->click();
            });
    }
}

// "Name=path" of every reference, the path relative to the test folder.
QStringList tst_koReferenceSaveCommands::smartPaths() const
{
    QStringList result;
    for (const kodReferenceNode& each : koService<koReferenceService>()->getSceneReferences())
        result.append(each.getName() + QLatin1Char('=') + m_host.relative(each.getSmartPath()));
    return result;
}

QMap<QString, QByteArray> tst_koReferenceSaveCommands::files() const
{
    QMap<QString, QByteArray> contents;
    QDirIterator it(m_host.path(QString()), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        contents.insert(m_host.relative(file), koTestHost::readFile(file));
    }
    return contents;
}

void tst_koReferenceSaveCommands::save_data()
{
    QTest::addColumn<QStringList>("steps");
    // "save: A,B" or "save as: A,B", asked for by the host.
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("answers");
    // The dialogs shown, the smart links that changed and the files written.
    QTest::addColumn<QStringList>("outcome");

    const QStringList none;
    const QString subReferences = QStringLiteral(
        "Save Smart References|This modified reference also has modified sub-references. Saving it will also save all "
        "modified sub-references. This action is not undoable. Select OK to proceed. (question)");
    const QString overwrite = QStringLiteral(
        "Save Smart Changes|The smart reference files listed below that you are attempting to save already exist.\n"
        "Select OK to overwrite (this action is not undoable) or Cancel to abort the save.\n\nparts/wheel.kpr\n "
        "(question), scrollable, parentless");
    const QString noWrite = QStringLiteral(
        "Choose Smart Reference Location|You appear to not have write permissions for at least one of the source "
        "directories. Save operation canceled. (error)");
    const QString saveAsFrame = QStringLiteral("save: Save Smart Reference As|frame/frame.kpr|*.kpr");

    QTest::newRow("clones share one file")
        << QStringList{"convert:Wheel", "clone:Wheel"} << "save: Wheel,Wheel clone" << QStringList{"next"}
        << QStringList{"Wheel=parts/wheel.kpr", "Wheel=parts/wheel.kpr", "wrote parts/wheel.kpr"};
    QTest::newRow("unloaded reference only takes its name")
        << QStringList{"convert:WheelStl", "unload:WheelStl", "convert:Wheel", "file:parts/wheel.kpr"}
        << "save: WheelStl,Wheel" << QStringList{"next"}
        << QStringList{"Wheel=parts/wheel_1.kpr", "wrote parts/wheel_1.kpr"};
    QTest::newRow("no source: only a custom folder")
        << QStringList{"bare:Bare"} << "save: Bare" << QStringList{"custom only:custom"}
        << QStringList{"Bare=custom/Bare.kpr", "wrote custom/Bare.kpr"};
    // A new sub-reference counts as changed: its content exists only in memory.
    QTest::newRow("new sub-reference")
        << QStringList{"convert:Headset"} << "save: Frame" << QStringList{"ok", "next"}
        << QStringList{subReferences, "Headset=frame/headset.kpr", "wrote frame/frame.kpr", "wrote frame/headset.kpr"};
    QTest::newRow("location dialog cancelled") << QStringList{"convert:Wheel"} << "save: Wheel"
                                               << QStringList{"reject"} << none;
    // The folder is there, but takes no files, not even from root.
    QTest::newRow("custom folder not writable") << QStringList{"convert:Wheel"} << "save: Wheel"
                                                << QStringList{"custom:/proc", "ok"} << QStringList{noWrite};
    QTest::newRow("one of two source folders not writable")
        << QStringList{"convert:Wheel", "convert:Blocked"} << "save: Wheel,Blocked" << QStringList{"next", "ok"}
        << QStringList{noWrite};

    const QStringList old{"convert:Wheel", "file:parts/wheel.kpr"};
    QTest::newRow("overwrite, OK") << old << "save: Wheel" << QStringList{"next", "ok"}
                                   << QStringList{overwrite, "Wheel=parts/wheel.kpr", "wrote parts/wheel.kpr"};
    QTest::newRow("overwrite, Cancel") << old << "save: Wheel" << QStringList{"next", "cancel"}
                                       << QStringList{overwrite};
    QTest::newRow("save as never asks to overwrite")
        << old << "save as: Wheel" << QStringList{"next"}
        << QStringList{"save: Save Smart Reference As|parts/wheel.kpr|*.kpr", "Wheel=parts/wheel.kpr"};

    const QStringList copy{"file:copies/frame.kpr"};
    QTest::newRow("save as: with changed sub-references")
        << QStringList{"edit:Fork"} << "save as: Frame" << copy
        << QStringList{saveAsFrame, "Frame=copies/frame.kpr", "wrote copies/frame.kpr", "wrote frame/fork.kpr"};
    QTest::newRow("save as from the list: the reference alone")
        << QStringList{"edit:Fork", "list"} << "save as: Frame" << copy
        << QStringList{saveAsFrame, "Frame=copies/frame.kpr", "wrote copies/frame.kpr"};

    QTest::newRow("changed and outdated, Cancel")
        << QStringList{"edit:Fork", "outdated:frame/fork.kpr"} << "save: Fork" << QStringList{"cancel"}
        << QStringList{"Save Smart References|You are about to save your modifications to an outdated smart "
                       "reference file. Any changes made to the file will be overwritten. This action is not "
                       "undoable. Select OK to proceed. (question)"};
}

void tst_koReferenceSaveCommands::save()
{
    QFETCH(QStringList, steps);
    QFETCH(QString, command);
    QFETCH(QStringList, answers);
    QFETCH(QStringList, outcome);

    prepare(steps);
    koDialogDriver driver;
    koScriptedFileDialog dialogs;
    script(driver, dialogs, answers);
    const QStringList paths = smartPaths();
    const QMap<QString, QByteArray> before = files();
    const QByteArray scene = koTestHost::sceneSnapshot();

    QList<kodReferenceNode> selected;
    for (const QString& name : command.section(QLatin1Char(':'), 1).trimmed().split(QLatin1Char(',')))
        selected.append(reference(name));
    if (command.startsWith(QLatin1String("save as:")))
        emit koService<koInternalUiService>()->requestUiSaveSmartsAs(selected);
    else
        emit koService<koInternalUiService>()->requestUiSaveSmarts(selected);

    // Paths in texts are shown relative to the test folder.
    const QString root = m_host.path(QString()) + QLatin1Char('/');
    QStringList shown = driver.mismatches();
    for (const koDialogDriver::MessageBox& box : driver.messageBoxes()) {
        shown << box.summary().replace(root, QString()) + (box.scrollable ? ", scrollable" : "")
                     + (box.parentless ? ", parentless" : "");
    }
    shown << dialogs.summaries().replaceInStrings(root, QString());
    const QStringList pathsAfter = smartPaths();
    for (int i = 0; i < pathsAfter.size(); ++i) {
        if (pathsAfter.at(i) != paths.value(i))
            shown << pathsAfter.at(i);
    }
    const QMap<QString, QByteArray> after = files();
    for (auto file = after.cbegin(); file != after.cend(); ++file) {
        if (before.value(file.key()) != file.value())
            shown << "wrote " + file.key();
    }
    QCOMPARE(shown, outcome);
    // What writes nothing and links nothing leaves the scene as it was.
    if (paths == pathsAfter && before == after)
        QCOMPARE(koTestHost::sceneSnapshot(), scene);
}

QTEST_MAIN(tst_koReferenceSaveCommands)
#include "tst_koreferencesavecommands.moc"
