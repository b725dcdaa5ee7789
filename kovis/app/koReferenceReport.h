#pragma once

#include <QCoreApplication>
#include <QString>
#include <QTextStream>

// The references of a project as text for pipelines: one tab-separated line per
// reference with its place in the tree and the path and state of each link. Backslash,
// tab, newline and carriage return in names and paths are written as \\, \t, \n and \r.
class koReferenceReport
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceReport)
public:
    enum ExitCode { AllFound = 0, LinksMissing = 1, ProjectUnreadable = 2 };

    // Loads the project, writes the report and, when checking, says which links are
    // missing. Returns the exit code of the command.
    static int run(const QString& project, bool check, QTextStream& out, QTextStream& err);
};
