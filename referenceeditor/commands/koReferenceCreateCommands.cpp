#include "koReferenceCreateCommands.h"

#include "koReferenceEditorModule.h"
#include "koReferenceQuestion.h"

#include <kovis/koFileDialog.h>
#include <kovis/koFileIOService.h>
#include <kovis/koFileReferenceGUIUtils.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koScopedMultiCommand.h>
#include <kovis/koScopedUndo.h>

#include <QFileInfo>
#include <QMessageBox>

namespace {

bool isSmartFile(const QString& path)
{
    return path.endsWith(QLatin1String(".kpr")) || path.endsWith(QLatin1String(".osb"));
}

// Project and binary geometry files are smart files; as a source they would be
// converted into themselves.
bool refusedAsSource(const QString& path)
{
    if (!koService<koFileIOService>()->isProjectFile(path) && !path.endsWith(QLatin1String(".osb")))
        return false;
    koService<koLogService>()->logWarning(QStringLiteral("References"),
                                        QStringLiteral("Kovis project or OSB files are not allowed as a source "
                                                       "reference."));
    return true;
}

QString nameOf(const QString& path)
{
    return QFileInfo(path).completeBaseName();
}

} // namespace

koReferenceCreateCommands::koReferenceCreateCommands(koReferenceEditorModule& module)
    : m_module(module)
{
}

void koReferenceCreateCommands::create(bool source, bool fromFile, const QList<kodNode>& selectedNodes)
{
    const kodNode parent = selectedNodes.value(0);
    const koScopedUndo undo;
    const koScopedMultiCommand step(koUndoString("Reference Editor", tr("Create reference")));
    if (source)
        koFileReferenceGUIUtils::loadSource(parent);
    else if (fromFile)
        createSmartsFromFiles(parent);
    else
        koService<koReferenceService>()->createReference(parent);
}

void koReferenceCreateCommands::createSmartsFromFiles(const kodNode& parent)
{
    const QStringList paths = koFileDialog::getOpenFileNames(
        &m_module, tr("Create Smart Reference"), QString(),
        tr("All Supported Files (*.kpr *.osb);; Kovis Project File (*.kpr);; OpenSG Binary Geometry (*osb)"));
    for (const QString& path : paths) {
        if (!isSmartFile(path))
            continue;
        kodReferenceNode reference = koService<koReferenceService>()->createReference(parent);
        reference.setSmartPath(path);
        reference.loadSmartReference();
        reference.setName(nameOf(path));
    }
}

void koReferenceCreateCommands::replaceSmart(kodReferenceNode reference, const QString& typedPath)
{
    if (!reference.isValid())
        return;
    QLineEdit* field = m_module.m_smartFile;
    const QSignalBlocker blocker(field);
    const QString path = settleSmartPath(reference, typedPath);
    if (path.isEmpty())
        return;
    QString question;
    if (reference.hasSmartReference() && reference.getSmartFileState() != koReferenceTypes::Unsaved) {
        question = tr("You are attempting to replace a smart reference. If you proceed this will likely change the "
                      "source reference, too. ");
    }
    if (confirmReplace(tr("Replace Smart Reference"), question, reference) == DialogCanceled)
        return;
    reference.unload();
    reference.createSmartReference();
    reference.setSmartPath(path);
    reference.loadSmartReference();
    reference.setName(nameOf(path));
    field->clearFocus();
}

QString koReferenceCreateCommands::settleSmartPath(const kodReferenceNode& reference, const QString& typedPath)
{
    if (typedPath.isEmpty())
        return pickSmartFile();
    if (typedPath == reference.getSmartPath())
        return QString();
    if (QFileInfo::exists(typedPath) && isSmartFile(typedPath))
        return typedPath;
    QMessageBox::critical(&m_module, tr("Replace Smart Reference"),
                          tr("The entered file path does not exists or is not a valid smart file. Replace not "
                             "possible."),
                          QMessageBox::Ok);
    showPath(m_module.m_smartFile, reference.getSmartPath());
    return QString();
}

QString koReferenceCreateCommands::pickSmartFile()
{
    const QString path = koFileDialog::getOpenFileName(&m_module, tr("Replace Smart Reference"),
                                                       m_module.m_smartFile->text(), tr("Smart files (*.kpr *.osb)"));
    if (!isSmartFile(path))
        return QString();
    showPath(m_module.m_smartFile, path);
    return path;
}

void koReferenceCreateCommands::replaceSource(kodReferenceNode reference, const QString& typedPath)
{
    if (!reference.isValid())
        return;
    QLineEdit* field = m_module.m_sourceFile;
    const QSignalBlocker blocker(field);
    const QString path = settleSourcePath(reference, typedPath);
    if (path.isEmpty())
        return;
    const bool hadSmart = reference.hasSmartReference();
    const QString question = hadSmart ? tr("Replacing the source file on this smart reference will replace your "
                                           "current smart reference with a newly converted version from the "
                                           "source. ")
                                      : QString();
    if (confirmReplace(tr("Replace Source Reference"), question, reference) == DialogCanceled)
        return;
    reference.setSourcePath(path);
    const QList<kodReferenceNode> imported = koService<koReferenceService>()->importSourceReferences({reference});
    if (hadSmart && imported.size() == 1) {
        // The old smart file holds the old source's content; the new one waits for a save.
        kodReferenceNode converted = imported.first();
        converted.removeSmartReference();
        converted.createSmartReference();
        converted.setName(nameOf(path));
    }
    field->clearFocus();
}

QString koReferenceCreateCommands::settleSourcePath(const kodReferenceNode& reference, const QString& typedPath)
{
    if (typedPath.isEmpty())
        return pickSourceFile();
    if (typedPath == reference.getSourcePath())
        return QString();
    if (!QFileInfo::exists(typedPath)) {
        QMessageBox::critical(&m_module, tr("Replace Source Reference"),
                              tr("The entered file path does not exists. Replace not possible."), QMessageBox::Ok);
        showPath(m_module.m_sourceFile, reference.getSourcePath());
        return QString();
    }
    if (refusedAsSource(typedPath)) {
        showPath(m_module.m_sourceFile, reference.getSourcePath());
        return QString();
    }
    return typedPath;
}

QString koReferenceCreateCommands::pickSourceFile()
{
    const QString path = koFileDialog::getOpenFileName(
        &m_module, tr("Replace Source Reference"), m_module.m_sourceFile->text(),
        koService<koFileIOService>()->getImportFileFilter(koFileIOService::ImportFiles));
    if (path.isEmpty() || refusedAsSource(path))
        return QString();
    showPath(m_module.m_sourceFile, path);
    return path;
}

ReferenceDialogCode koReferenceCreateCommands::confirmReplace(const QString& title, QString question,
                                                              const kodReferenceNode& reference) const
{
    if (reference.isSelfOrSubReferenceChanged()) {
        if (!question.isEmpty())
            question += QLatin1Char('\n');
        question += tr("The reference which should be replaced has changed. If you proceed, all changes will be "
                       "lost. ");
    }
    if (question.isEmpty())
        return DialogAccepted;
    return koReferenceQuestion::ask(&m_module, title,
                                    question + tr("\nThis action is not undoable. Select OK to proceed."));
}

void koReferenceCreateCommands::showPath(QLineEdit* field, const QString& path)
{
    field->setText(path);
    field->clearFocus();
}
