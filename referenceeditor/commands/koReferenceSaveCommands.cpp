#include "koReferenceSaveCommands.h"

#include "koFolderWriteTest.h"
#include "koReferenceEditorModule.h"
#include "koReferenceQuestion.h"
#include "koReferenceSmartLocationDialogUI.h"
#include "koSmartPathPlan.h"

#include <kovis/QKOScrollableMessageBox.h>
#include <kovis/koFileDialog.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QFileInfo>

#include <QSet>

#include <algorithm>

namespace {

bool isUnsaved(const kodReferenceNode& reference)
{
    return reference.getSmartFileState() == koReferenceTypes::Unsaved;
}

QList<kodReferenceNode> unsavedReferences(const QList<kodReferenceNode>& references)
{
    QList<kodReferenceNode> unsaved;
    QSet<quint64> seen;
    const auto appendUnsaved = [&](const kodReferenceNode& reference) {
        if (isUnsaved(reference) && !seen.contains(reference.getObjectId())) {
            seen.insert(reference.getObjectId());
            unsaved.append(reference);
        }
    };
    for (const kodReferenceNode& reference : references) {
        appendUnsaved(reference);
        for (const kodReferenceNode& sub : koService<koReferenceService>()->getSubReferences(reference))
            appendUnsaved(sub);
    }
    return unsaved;
}

template<class Predicate>
bool anyOf(const QList<kodReferenceNode>& references, Predicate predicate)
{
    return std::any_of(references.cbegin(), references.cend(), predicate);
}

} // namespace

koReferenceSaveCommands::koReferenceSaveCommands(koReferenceEditorModule& module)
    : m_module(module)
{
}

ReferenceDialogCode koReferenceSaveCommands::updateUnsavedSmartPaths(const QList<kodReferenceNode>& references,
                                                                     const QString& reservedPath, bool warnOverwrite)
{
    const QList<kodReferenceNode> unsaved = unsavedReferences(references);
    if (unsaved.isEmpty())
        return DialogAccepted;
    Location location;
    if (chooseLocation(unsaved, location) == DialogCanceled || checkWritable(unsaved, location) == DialogCanceled)
        return DialogCanceled;
    koSmartPathPlan plan(reservedPath);
    plan.add(unsaved, location.index, location.customFolder);
    if (warnOverwrite && confirmOverwrite(plan.existingFiles()) == DialogCanceled)
        return DialogCanceled;
    plan.commit();
    return DialogAccepted;
}

ReferenceDialogCode koReferenceSaveCommands::chooseLocation(const QList<kodReferenceNode>& unsaved,
                                                            Location& location) const
{
    koReferenceSmartLocationDialogUI dialog(&m_module);
    dialog.setAllHaveSource(!anyOf(unsaved, [](const kodReferenceNode& reference) {
        return !reference.hasSourceReference();
    }));
    if (dialog.exec() != QDialog::Accepted)
        return DialogCanceled;
    location.index = koReferenceTypes::ExportLocation(dialog.locationIndex());
    location.customFolder = dialog.customFolder();
    return DialogAccepted;
}

ReferenceDialogCode koReferenceSaveCommands::checkWritable(const QList<kodReferenceNode>& unsaved,
                                                           const Location& location) const
{
    const bool custom = location.index != koReferenceTypes::NextToSourceFile;
    if (custom && location.customFolder.isEmpty())
        return DialogCanceled;
    const QStringList folders = custom ? QStringList{location.customFolder} : sourceFolders(unsaved);
    if (std::all_of(folders.cbegin(), folders.cend(), &koFolderWriteTest::isWritable))
        return DialogAccepted;
    QMessageBox::critical(&m_module, tr("Choose Smart Reference Location"),
                          tr("You appear to not have write permissions for at least one of the source directories. "
                             "Save operation canceled."),
                          QMessageBox::Ok);
    return DialogCanceled;
}

QStringList koReferenceSaveCommands::sourceFolders(const QList<kodReferenceNode>& references)
{
    QStringList folders;
    for (const kodReferenceNode& reference : references) {
        const QString folder = QFileInfo(reference.getSourcePath()).path();
        if (!folder.isEmpty() && !folders.contains(folder))
            folders.append(folder);
    }
    return folders;
}

ReferenceDialogCode koReferenceSaveCommands::confirmOverwrite(const QStringList& existingFiles)
{
    if (existingFiles.isEmpty())
        return DialogAccepted;
    QString text = tr("The smart reference files listed below that you are attempting to save already exist.\n"
                      "Select OK to overwrite (this action is not undoable) or Cancel to abort the save.\n\n");
    for (const QString& path : existingFiles)
        text += path + QLatin1Char('\n');
    // Without a parent: the list may be long, and the box centres on the screen.
    QKOScrollableMessageBox box(QMessageBox::Warning, tr("Save Smart Changes"), text,
                                QMessageBox::Ok | QMessageBox::Cancel);
    box.setDefaultButton(QMessageBox::Cancel);
    box.makeScrollable();
    return box.exec() == QMessageBox::Cancel ? DialogCanceled : DialogAccepted;
}

void koReferenceSaveCommands::saveSmartChanges(const QList<kodReferenceNode>& references)
{
    if (confirmModifiedSave(references) == DialogAccepted)
        save(references);
}

ReferenceDialogCode koReferenceSaveCommands::confirmModifiedSave(const QList<kodReferenceNode>& references) const
{
    const bool outdated = anyOf(references, [](const kodReferenceNode& reference) {
        return reference.isChanged() && reference.getSmartFileState() == koReferenceTypes::OutOfDate;
    });
    if (outdated
        && koReferenceQuestion::ask(&m_module, tr("Save Smart References"),
                                    tr("You are about to save your modifications to an outdated smart reference "
                                       "file. Any changes made to the file will be overwritten. This action is not "
                                       "undoable. Select OK to proceed."))
            == DialogCanceled) {
        return DialogCanceled;
    }
    const bool subReferencesChanged =
        anyOf(references, [](const kodReferenceNode& reference) { return reference.isSubReferenceChanged(); });
    if (subReferencesChanged) {
        return koReferenceQuestion::ask(&m_module, tr("Save Smart References"),
                                        tr("This modified reference also has modified sub-references. Saving it will "
                                           "also save all modified sub-references. This action is not undoable. "
                                           "Select OK to proceed."));
    }
    return DialogAccepted;
}

void koReferenceSaveCommands::saveAll()
{
    const QList<kodReferenceNode> references = koService<koReferenceService>()->getSceneReferences();
    if (!references.isEmpty())
        save(references);
}

void koReferenceSaveCommands::save(QList<kodReferenceNode> references)
{
    if (updateUnsavedSmartPaths(references, QString(), true) == DialogCanceled)
        return;
    // The host writes only those that need it.
    for (kodReferenceNode& reference : references)
        reference.saveSmartReference();
    m_module.scheduleReload();
}

void koReferenceSaveCommands::saveAs(const QList<kodReferenceNode>& references)
{
    if (updateUnsavedSmartPaths(references, QString(), false) == DialogCanceled)
        return;
    // The graph shows the sub-references with their parent, the list each on its own.
    const bool withSubReferences = m_module.m_listMode->currentIndex() == 0;
    for (kodReferenceNode reference : references) {
        if (reference.isNull())
            continue;
        const QString path =
            koFileDialog::getSaveFileName(&m_module, tr("Save Smart Reference As"),
                                          QFileInfo(reference.getSmartPath()).absoluteFilePath(),
                                          QStringLiteral("*.kpr"));
        if (!path.isEmpty())
            reference.saveSmartReferenceAs(path, withSubReferences);
    }
    m_module.scheduleReload();
}
