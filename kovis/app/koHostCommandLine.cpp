#include "koHostCommandLine.h"

#include <QCommandLineParser>

#include <cstdio>

namespace {

const QString listOption = QStringLiteral("list-references");
const QString checkOption = QStringLiteral("check");
const QString repathOption = QStringLiteral("repath");
const QString formatOption = QStringLiteral("format");
const QString writeOption = QStringLiteral("write");
const QString missingOnlyOption = QStringLiteral("missing-only");
const QString noSubdirsOption = QStringLiteral("no-subdirs");
const QString sourcesOption = QStringLiteral("sources");
const QString smartsOption = QStringLiteral("smarts");
const QString screenshotOption = QStringLiteral("screenshot");

const QStringList commandOptions{listOption, checkOption, repathOption};
const QStringList repathOnlyOptions{writeOption, missingOnlyOption, noSubdirsOption, sourcesOption, smartsOption};

bool names(const QString& argument, const QString& option)
{
    const QString spelled = QLatin1String("--") + option;
    return argument == spelled || argument.startsWith(spelled + QLatin1Char('='));
}

} // namespace

bool koHostCommandLine::wantsWindow(const QStringList& arguments)
{
    for (const QString& argument : arguments) {
        for (const QString& option : commandOptions + QStringList{QStringLiteral("help")}) {
            if (names(argument, option))
                return false;
        }
        if (argument == QLatin1String("-h") || argument == QLatin1String("-?"))
            return false;
    }
    return true;
}

namespace {

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(koHostCommandLine::tr(
        "Kovis host: opens a project and runs the plug-ins on it. With --list-references, --check or "
        "--repath it answers without a window, for pipelines.\n\n"
        "In text, --list-references and --check print one line per reference and --repath one line per "
        "link, its fields separated by tabs; in names and paths a backslash is written as \\\\, a tab as "
        "\\t, a newline as \\n and a carriage return as \\r. --repath prints the plan first: reference, "
        "link, old path, new path, Found, Ambiguous (the name was found in several folders) or Not found, "
        "how the file was chosen, then the other files of that name. With --format json the output is one "
        "JSON document instead.\n\n"
        "A search that takes longer than two seconds reports its progress on standard error; standard "
        "output holds the report only.\n\n"
        "Exit codes: 0 all fine; 1 a linked file is missing (--check) or a link was not found (--repath); "
        "2 bad input, such as a project that cannot be opened, a folder that is not there or options that "
        "do not go together."));
    parser.addHelpOption();
    parser.addOptions({
        {screenshotOption, koHostCommandLine::tr("Write a picture of the main window to <file> once it has started, then exit."),
         koHostCommandLine::tr("file")},
        {listOption, koHostCommandLine::tr("Print the references of <project> with their files and states, without a window."),
         koHostCommandLine::tr("project")},
        {checkOption, koHostCommandLine::tr("As --list-references; exit with 1 when a linked file is missing."),
         koHostCommandLine::tr("project")},
        {repathOption, koHostCommandLine::tr("Look for the linked files of [project] below <folder>, as the Reference "
                                             "Editor's Repath does, and print the plan. Exit with 1 when a file was not "
                                             "found; its planned path is the name directly in <folder>."),
         koHostCommandLine::tr("folder")},
        {writeOption, koHostCommandLine::tr("With --repath: point the links at the files found and save the project "
                                            "and the changed sub-reference files. Links not found keep their paths. "
                                            "Without it nothing is written.")},
        {missingOnlyOption, koHostCommandLine::tr("With --repath: only the links whose files are missing.")},
        {noSubdirsOption, koHostCommandLine::tr("With --repath: look directly in <folder> only, not below it.")},
        {sourcesOption, koHostCommandLine::tr("With --repath: the source links only.")},
        {smartsOption, koHostCommandLine::tr("With --repath: the smart links only.")},
        {formatOption, koHostCommandLine::tr("Output as text (the default) or json."), koHostCommandLine::tr("format"),
         QStringLiteral("text")},
    });
    parser.addPositionalArgument(QStringLiteral("project"),
                                 koHostCommandLine::tr("The project to open (the demo project when none); with --repath "
                                                       "the project to repath."),
                                 QStringLiteral("[project]"));
}

} // namespace

bool koHostCommandLine::fail(const QString& error)
{
    m_error = error;
    return false;
}

bool koHostCommandLine::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments))
        return fail(parser.errorText());
    if (parser.isSet(QStringLiteral("help")) || parser.isSet(QStringLiteral("help-all"))) {
        m_help = parser.helpText();
        return false;
    }
    if (!checkCombination(parser))
        return false;
    format = parser.value(formatOption) == QLatin1String("json") ? Format::Json : Format::Text;
    screenshot = parser.value(screenshotOption);
    repath.newDir = parser.value(repathOption);
    repath.missingOnly = parser.isSet(missingOnlyOption);
    repath.searchSubdirs = !parser.isSet(noSubdirsOption);
    repath.sources = !parser.isSet(smartsOption);
    repath.smarts = !parser.isSet(sourcesOption);
    repath.write = parser.isSet(writeOption);
    return readMode(parser);
}

bool koHostCommandLine::checkCombination(const QCommandLineParser& parser)
{
    QStringList commands;
    for (const QString& option : commandOptions) {
        if (parser.isSet(option))
            commands.append(QLatin1String("--") + option);
    }
    if (commands.size() > 1)
        return fail(tr("%1 cannot go together.").arg(commands.join(QLatin1String(", "))));
    for (const QString& option : repathOnlyOptions) {
        if (parser.isSet(option) && !parser.isSet(repathOption))
            return fail(tr("--%1 goes with --repath only.").arg(option));
    }
    if (parser.isSet(sourcesOption) && parser.isSet(smartsOption))
        return fail(tr("Give --sources or --smarts, not both; without either, both links are repathed."));
    const QString format = parser.value(formatOption);
    if (format != QLatin1String("text") && format != QLatin1String("json"))
        return fail(tr("Unknown format: %1 (text or json).").arg(format));
    if (parser.isSet(formatOption) && commands.isEmpty())
        return fail(tr("--format goes with --list-references, --check or --repath."));
    return true;
}

bool koHostCommandLine::readMode(const QCommandLineParser& parser)
{
    const QStringList positional = parser.positionalArguments();
    if (parser.isSet(repathOption)) {
        mode = Mode::Repath;
        if (positional.size() != 1)
            return fail(tr("--repath needs the folder and one project."));
        project = positional.first();
        return true;
    }
    const bool projectGiven = parser.isSet(checkOption) || parser.isSet(listOption);
    if (positional.size() > (projectGiven ? 0 : 1))
        return fail(tr("Unexpected argument: %1").arg(positional.last()));
    if (parser.isSet(checkOption)) {
        mode = Mode::Check;
        project = parser.value(checkOption);
    } else if (parser.isSet(listOption)) {
        mode = Mode::ListReferences;
        project = parser.value(listOption);
    } else {
        project = positional.value(0);
    }
    return true;
}

int koHostCommandLine::answer() const
{
    if (!m_help.isNull()) {
        std::fputs(qPrintable(m_help), stdout);
        return AllFound;
    }
    std::fprintf(stderr, "%s\n%s\n", qPrintable(m_error), qPrintable(tr("See kovis-host --help.")));
    return BadInput;
}
