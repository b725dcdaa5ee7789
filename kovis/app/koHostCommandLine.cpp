#include "koHostCommandLine.h"

#include <QCommandLineParser>

namespace {

const QString listOption = QStringLiteral("list-references");
const QString checkOption = QStringLiteral("check");
const QString screenshotOption = QStringLiteral("screenshot");

} // namespace

bool koHostCommandLine::wantsWindow(const QStringList& arguments)
{
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--") + listOption || argument == QLatin1String("--") + checkOption)
            return false;
    }
    return true;
}

void koHostCommandLine::parse(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("Kovis host: opens a project and runs the plug-ins on it.\n\n"
           "--list-references and --check print one line per reference, its fields separated by tabs; "
           "in names and paths a backslash is written as \\\\, a tab as \\t, a newline as \\n and "
           "a carriage return as \\r.\n\n"
           "Exit codes: 0 all fine; 1 a linked file is missing (--check); 2 bad input, such as a project "
           "that cannot be opened."));
    parser.addHelpOption();
    parser.addOptions({
        {screenshotOption, tr("Write a picture of the main window to <file> once it has started, then exit."),
         tr("file")},
        {listOption, tr("Print the references of <project> with their files and states, without a window."),
         tr("project")},
        {checkOption, tr("As --list-references; exit with 1 when a linked file is missing."), tr("project")},
    });
    parser.addPositionalArgument(QStringLiteral("project"), tr("The project to open (the demo project when none)."),
                                 QStringLiteral("[project]"));
    parser.process(application);

    screenshot = parser.value(screenshotOption);
    if (parser.isSet(checkOption)) {
        mode = Mode::Check;
        project = parser.value(checkOption);
    } else if (parser.isSet(listOption)) {
        mode = Mode::ListReferences;
        project = parser.value(listOption);
    } else if (!parser.positionalArguments().isEmpty()) {
        project = parser.positionalArguments().first();
    }
}
