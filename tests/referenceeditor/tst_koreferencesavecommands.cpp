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
    QList<kodReferenceNode> references(const QString& names) const;
    void script(koDialogDriver& driver, koScriptedFileDialog& files, const QStringList& answers) const;
    bool run(const QString& command, bool expected);
    QStringList smartPaths() const;
    QMap<QString, QByteArray> files() const;

    koTestHost m_host;
    std::unique_ptr<koReferenceEditorModule> m_module;
    QHash<QString, kodReferenceNode> m_handles;
};

void tst_koReferenceSaveCommands::init()
{
    const QByteArray triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    m_host.writeFile(QStringLiteral("parts/wheel.obj"), "o Hub\n" + triangle + "g Axle\nf 1 2 3\no Rim\ng Ring\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("parts/wheel.stl"), "solid wheel\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid wheel\n");
    m_host.writeFile(QStringLiteral("parts/spoke.obj"), triangle + "o Spoke\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("frame/headset.obj"), triangle + "o Headset\nf 1 2 3\n");
    m_host.writeFile(QStringLiteral("blocked.txt"), "a file, so nothing can be created below it");
    QDir().mkpath(m_host.path(QStringLiteral("custom")));
    QDir().mkpath(m_host.path(QStringLiteral("copies")));
    m_host.writeProject(QStringLiteral("saved/saved.kpr"), {koTestHost::geometry("Body")});
    m_host.writeProject(QStringLiteral("frame/fork.kpr"), {koTestHost::geometry("Blade")});
    m_host.writeProject(QStringLiteral("frame/frame.kpr"), {koTestHost::reference("Fork", "fork.kpr", QString()),
                                                            koTestHost::reference("Headset", QString(), "headset.obj")});
    const QString project = m_host.writeProject(
        QStringLiteral("project.kpr"),
        {koTestHost::reference("Wheel", QString(), "parts/wheel.obj"),
         koTestHost::reference("WheelStl", QString(), "parts/wheel.stl"),
         koTestHost::group("Assembly", {koTestHost::reference("Spoke", QString(), "parts/spoke.obj")}),
         koTestHost::reference("Saved", "saved/saved.kpr", QString()),
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
// "bare:Name" (a new reference made smart without any source), "remove:Name" (the
// handle "Name removed" is left stale), "edit:Name" (its content), "file:path" (an old
// file there), "outdated:path" (a file changed on disk since), "list" (the list view).
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

QList<kodReferenceNode> tst_koReferenceSaveCommands::references(const QString& names) const
{
    QList<kodReferenceNode> result;
    for (const QString& name : names.split(QLatin1Char(','), Qt::SkipEmptyParts))
        result.append(reference(name));
    return result;
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

// "save: A,B", "save all:", "save as: A,B", "request save: A,B", "request save as: A,B",
// "update: Node" or "update reserving path: Node"; false when an update is refused. An
// update starts with the opposite of the expected answer, so that one left unset shows.
bool tst_koReferenceSaveCommands::run(const QString& command, bool expected)
{
    const QString verb = command.section(QLatin1Char(':'), 0, 0);
    const QString names = command.section(QLatin1Char(':'), 1).trimmed();
    const QList<kodReferenceNode> selected = references(names);
    auto* ui = koService<koInternalUiService>();
    bool result = expected;
    if (verb == QLatin1String("save"))
        m_module->saveSmartChanges(selected);
    else if (verb == QLatin1String("save all"))
        m_module->saveAllSmartChanges();
    else if (verb == QLatin1String("save as"))
        m_module->saveSmartAs(selected);
    else if (verb == QLatin1String("request save"))
        emit ui->requestUiSaveSmarts(selected);
    else if (verb == QLatin1String("request save as"))
        emit ui->requestUiSaveSmartsAs(selected);
    else {
        const QString reserved = verb.section(QStringLiteral("reserving "), 1);
        kodNode target = reference(names);
        if (names == QLatin1String("Assembly"))
            target = reference(QStringLiteral("Spoke")).getParent();
        if (names == QLatin1String("project"))
            target = koService<koReferenceService>()->getSceneReferences().first();
        result = !expected;
        emit ui->requestUiSmartPathsUpdate(target, reserved.isEmpty() ? QString() : m_host.path(reserved), result);
    }
    return result;
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
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("answers");
    // The dialogs shown, the smart links that changed, the files written and whether an
    // update was refused.
    QTest::addColumn<QStringList>("outcome");

    const QStringList none;
    const QString outdated = QStringLiteral(
        "Save Smart References|You are about to save your modifications to an outdated smart reference file. Any "
        "changes made to the file will be overwritten. This action is not undoable. Select OK to proceed. (question)");
    const QString subReferences = QStringLiteral(
        "Save Smart References|This modified reference also has modified sub-references. Saving it will also save all "
        "modified sub-references. This action is not undoable. Select OK to proceed. (question)");
    const QString overwrite = QStringLiteral(
        "Save Smart Changes|The smart reference files listed below that you are attempting to save already exist.\n"
        "Select OK to overwrite (this action is not undoable) or Cancel to abort the save.\n\n%1\n (question), "
        "scrollable, parentless");
    const QString noWrite = QStringLiteral(
        "Choose Smart Reference Location|You appear to not have write permissions for at least one of the source "
        "directories. Save operation canceled. (error)");
    const QString saveAsDialog = QStringLiteral("save: Save Smart Reference As|%1|*.kpr");

    QTest::newRow("nothing unsaved") << none << "save: Saved,Wheel" << none << none;
    QTest::newRow("next to the source") << QStringList{"convert:Wheel"} << "save: Wheel" << QStringList{"next"}
                                        << QStringList{"Wheel=parts/wheel.kpr", "wrote parts/wheel.kpr"};
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
    QTest::newRow("stale handle") << QStringList{"convert:Wheel", "remove:Wheel"} << "save: Wheel removed" << none
                                  << none;
    QTest::newRow("location dialog cancelled") << QStringList{"convert:Wheel"} << "save: Wheel"
                                               << QStringList{"reject"} << none;

    const QStringList twoOld{"convert:Wheel", "convert:Spoke", "file:parts/wheel.kpr", "file:parts/spoke.kpr"};
    const QStringList twoPlaced{"Wheel=parts/wheel.kpr", "Spoke=parts/spoke.kpr"};
    const QString twoListed = overwrite.arg("parts/wheel.kpr\nparts/spoke.kpr");
    QTest::newRow("overwrite, OK") << twoOld << "request save: Wheel,Spoke" << QStringList{"next", "ok"}
                                   << QStringList{twoListed} + twoPlaced
                                          + QStringList{"wrote parts/spoke.kpr", "wrote parts/wheel.kpr"};
    QTest::newRow("overwrite, Cancel") << twoOld << "request save: Wheel,Spoke" << QStringList{"next", "cancel"}
                                       << QStringList{twoListed};
    QTest::newRow("save as never asks to overwrite")
        << twoOld << "request save as: Wheel,Spoke" << QStringList{"next"}
        << QStringList{saveAsDialog.arg("parts/wheel.kpr"), saveAsDialog.arg("parts/spoke.kpr")} + twoPlaced;

    const QStringList saveAsDialogs{saveAsDialog.arg("frame/frame.kpr"), saveAsDialog.arg("saved/saved.kpr")};
    const QStringList copies{"file:copies/frame.kpr", "file:copies/saved.kpr"};
    QTest::newRow("save as: with changed sub-references")
        << QStringList{"edit:Fork"} << "save as: Frame,Saved" << copies
        << saveAsDialogs
               + QStringList{"Saved=copies/saved.kpr", "Frame=copies/frame.kpr", "wrote copies/frame.kpr",
                             "wrote copies/saved.kpr", "wrote frame/fork.kpr"};
    QTest::newRow("save as from the list: the reference alone")
        << QStringList{"edit:Fork", "list"} << "save as: Frame,Saved" << copies
        << saveAsDialogs
               + QStringList{"Saved=copies/saved.kpr", "Frame=copies/frame.kpr", "wrote copies/frame.kpr",
                             "wrote copies/saved.kpr"};
    QTest::newRow("save as, one file dialog cancelled")
        << QStringList{"edit:Fork"} << "save as: Frame,Saved" << QStringList{"file:", "file:copies/saved.kpr"}
        << saveAsDialogs + QStringList{"Saved=copies/saved.kpr", "wrote copies/saved.kpr"};

    const QStringList wheel{"convert:Wheel"};
    QTest::newRow("update, nothing unsaved") << none << "update: Wheel" << none << none;
    QTest::newRow("update, reserved path") << wheel << "update reserving parts/wheel.kpr: Wheel"
                                           << QStringList{"next"} << QStringList{"Wheel=parts/wheel_1.kpr"};
    QTest::newRow("update, only the node's references")
        << QStringList{"convert:Wheel", "convert:Spoke"} << "update: Assembly" << QStringList{"next"}
        << QStringList{"Spoke=parts/spoke.kpr"};
    QTest::newRow("update, empty custom folder") << wheel << "update: Wheel" << QStringList{"custom:"}
                                                 << QStringList{"refused"};
    // The folder is there, but takes no files, not even from root.
    QTest::newRow("update, custom folder not writable")
        << wheel << "update: Wheel" << QStringList{"custom:/proc", "ok"} << QStringList{noWrite, "refused"};
    QTest::newRow("update, one of two source folders not writable")
        << QStringList{"convert:Wheel", "convert:Blocked"} << "update: project" << QStringList{"next", "ok"}
        << QStringList{noWrite, "refused"};
    QTest::newRow("update, overwrite cancelled")
        << QStringList{"convert:Wheel", "file:parts/wheel.kpr"} << "update: Wheel" << QStringList{"next", "cancel"}
        << QStringList{overwrite.arg("parts/wheel.kpr"), "refused"};

    const QStringList savedOutdated{"edit:Saved", "outdated:saved/saved.kpr"};
    QTest::newRow("changed, no question") << QStringList{"edit:Saved"} << "save: Saved" << none
                                          << QStringList{"wrote saved/saved.kpr"};
    QTest::newRow("outdated, unchanged: no question")
        << QStringList{"outdated:saved/saved.kpr"} << "save: Saved" << none << none;
    QTest::newRow("changed and outdated, OK") << savedOutdated << "save: Saved" << QStringList{"ok"}
                                              << QStringList{outdated, "wrote saved/saved.kpr"};
    QTest::newRow("changed and outdated, Cancel") << savedOutdated << "save: Saved" << QStringList{"cancel"}
                                                  << QStringList{outdated};
    QTest::newRow("changed sub-reference, OK") << QStringList{"edit:Fork"} << "save: Frame" << QStringList{"ok"}
                                               << QStringList{subReferences, "wrote frame/fork.kpr"};
    QTest::newRow("changed sub-reference, Cancel") << QStringList{"edit:Fork"} << "save: Frame"
                                                   << QStringList{"cancel"} << QStringList{subReferences};
    QTest::newRow("save all asks nothing") << savedOutdated << "save all:" << none
                                           << QStringList{"wrote saved/saved.kpr"};
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

    const bool placed = run(command, !outcome.contains(QStringLiteral("refused")));

    // Paths in texts are shown relative to the test folder.
    const QString root = m_host.path(QString()) + QLatin1Char('/');
    QStringList shown = driver.mismatches();
    for (const koDialogDriver::MessageBox& box : driver.messageBoxes()) {
        shown << box.summary().replace(root, QString()) + (box.scrollable ? ", scrollable" : "")
                     + (box.parentless ? ", parentless" : "");
    }
    for (const koFileDialog::Call& call : dialogs.calls())
        QCOMPARE(call.parent.data(), m_module.get());
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
    if (!placed)
        shown << QStringLiteral("refused");
    QCOMPARE(shown, outcome);
    // What writes nothing and links nothing leaves the scene as it was.
    if (paths == pathsAfter && before == after)
        QCOMPARE(koTestHost::sceneSnapshot(), scene);
}

QTEST_MAIN(tst_koReferenceSaveCommands)
#include "tst_koreferencesavecommands.moc"
