#pragma once

#include "ReferenceDialogCode.h"

#include <kovis/kodReferenceNode.h>

#include <QCoreApplication>
#include <QList>

class koReferenceEditorModule;
class QLineEdit;

// Adds references to the scene and swaps the file behind one. A replace takes the path
// typed into the module's path field, or asks for a file when it is given none.
class koReferenceCreateCommands
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceCreateCommands)
public:
    explicit koReferenceCreateCommands(koReferenceEditorModule& module);

    // Below the first selected node, or where the host puts it without one; one undo step.
    void create(bool source, bool fromFile, const QList<kodNode>& selectedNodes);
    void replaceSmart(kodReferenceNode reference, const QString& typedPath);
    void replaceSource(kodReferenceNode reference, const QString& typedPath);

private:
    void createSmartsFromFiles(const kodNode& parent);
    QString settleSmartPath(const kodReferenceNode& reference, const QString& typedPath);
    QString pickSmartFile();
    QString settleSourcePath(const kodReferenceNode& reference, const QString& typedPath);
    QString pickSourceFile();
    ReferenceDialogCode confirmReplace(const QString& title, QString question,
                                       const kodReferenceNode& reference) const;
    static void showPath(QLineEdit* field, const QString& path);

    koReferenceEditorModule& m_module;
};
