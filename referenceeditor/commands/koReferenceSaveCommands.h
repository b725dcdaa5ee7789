#pragma once

#include "ReferenceDialogCode.h"

#include <kovis/koReferenceTypes.h>
#include <kovis/kodReferenceNode.h>

#include <QCoreApplication>
#include <QList>
#include <QStringList>

class koReferenceEditorModule;

// Writes smart references to their files. New smart references get their files first:
// the user chooses where, the folders are tested for writing, names are made unique
// and existing files are only overwritten after a question.
class koReferenceSaveCommands
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceSaveCommands)
public:
    explicit koReferenceSaveCommands(koReferenceEditorModule& module);

    // Gives every Unsaved smart reference among the references and below them a path.
    // No new file takes reservedPath (unless it is empty).
    ReferenceDialogCode updateUnsavedSmartPaths(const QList<kodReferenceNode>& references,
                                                const QString& reservedPath, bool warnOverwrite);
    void saveSmartChanges(const QList<kodReferenceNode>& references);
    void saveAll();
    // Each reference to a file the user names; the others are still saved when one
    // file dialog is cancelled.
    void saveAs(const QList<kodReferenceNode>& references);

private:
    struct Location
    {
        koReferenceTypes::ExportLocation index = koReferenceTypes::NextToSourceFile;
        QString customFolder;
    };

    void save(QList<kodReferenceNode> references);
    ReferenceDialogCode confirmModifiedSave(const QList<kodReferenceNode>& references) const;
    ReferenceDialogCode chooseLocation(const QList<kodReferenceNode>& unsaved, Location& location) const;
    ReferenceDialogCode checkWritable(const QList<kodReferenceNode>& unsaved, const Location& location) const;
    static QStringList sourceFolders(const QList<kodReferenceNode>& references);
    static ReferenceDialogCode confirmOverwrite(const QStringList& existingFiles);

    koReferenceEditorModule& m_module;
};
