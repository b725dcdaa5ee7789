#pragma once

#include "koHostCommandLine.h"

#include <QCoreApplication>
#include <QTextStream>

// kovis-host --repath: looks for the linked files of a project below a new folder with the
// Reference Editor's own engine, prints the plan and, when asked, re-points the links found
// and saves.
class koRepathCommand
{
    Q_DECLARE_TR_FUNCTIONS(koRepathCommand)
public:
    // Returns the exit code: 0 all links found, 1 some not, 2 bad input or a failed save.
    static int run(const QString& project, const koHostCommandLine::Repath& request, koHostCommandLine::Format format,
                   QTextStream& out, QTextStream& err);
};
