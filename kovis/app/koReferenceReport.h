#pragma once

#include "koHostCommandLine.h"

#include <kovis/kodReferenceNode.h>

#include <QCoreApplication>
#include <QDir>
#include <QString>
#include <QTextStream>

// The references of a project for pipelines. As text, one tab-separated line per reference
// with its place in the tree and the path and state of each link; backslash, tab, newline
// and carriage return in names and paths are written as \\, \t, \n and \r. As JSON, one
// document with every reference.
class koReferenceReport
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceReport)
public:
    // Loads the project, writes the report and, when checking, says which links are
    // missing. Returns the exit code of the command.
    static int run(const QString& project, bool check, koHostCommandLine::Format format, QTextStream& out,
                   QTextStream& err);

    // Opens the project, or says on err why it cannot.
    static bool loadProject(const QString& project, QTextStream& err);
    // The references of the open project, without the project itself.
    static QList<kodReferenceNode> references();
    // The open project's folder, against which paths inside it are shown.
    static QDir projectFolder();

    // One field of a line: its tabs and line breaks escaped.
    static QString escaped(QString text);
    // Relative to the folder when inside it, else as it is; "-" when empty.
    static QString shownPath(const QString& path, const QDir& projectFolder);

private:
    static void writeText(const QList<kodReferenceNode>& references, QTextStream& out);
};
