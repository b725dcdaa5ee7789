#include "koHostCommandLine.h"
#include "koHostSession.h"
#include "koReferenceReport.h"
#include "koRepathCommand.h"

#include <kovis/koHost.h>

#include <QApplication>
#include <QTimer>

#include <cstdio>

namespace {

void useOffscreenWithoutDisplay()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY")
        && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
}

QStringList argumentsOf(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

int runCommand(const koHostCommandLine& commandLine)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    if (commandLine.mode == koHostCommandLine::Mode::Repath)
        return koRepathCommand::run(commandLine.project, commandLine.repath, commandLine.format, out, err);
    return koReferenceReport::run(commandLine.project, commandLine.mode == koHostCommandLine::Mode::Check,
                                  commandLine.format, out, err);
}

int runWithoutWindow(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    koHostCommandLine commandLine;
    if (!commandLine.parse(application.arguments()))
        return commandLine.answer();
    koHost::initialize();
    const int code = runCommand(commandLine);
    koHost::shutdown();
    return code;
}

int runWindow(int argc, char** argv)
{
    useOffscreenWithoutDisplay();
    QApplication application(argc, argv);
    koHostCommandLine commandLine;
    if (!commandLine.parse(application.arguments()))
        return commandLine.answer();
    koHostSession session;
    session.loadPlugins(koPluginLoader::pluginFolder());
    koMainWindow& window = session.window();
    window.openProject(commandLine.project.isEmpty() ? QStringLiteral(KOVIS_DEMO_PROJECT) : commandLine.project);
    window.show();
    if (!commandLine.screenshot.isEmpty()) {
        QTimer::singleShot(500, &window, [&] {
            const bool saved = window.saveScreenshot(commandLine.screenshot);
            if (!saved)
                std::fprintf(stderr, "Cannot write %s\n", qPrintable(commandLine.screenshot));
            application.exit(saved ? 0 : 1);
        });
    }
    return application.exec();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setOrganizationName(QStringLiteral("Kovis"));
    QCoreApplication::setApplicationName(QStringLiteral("kovis-host"));
    if (!koHostCommandLine::wantsWindow(argumentsOf(argc, argv)))
        return runWithoutWindow(argc, argv);
    return runWindow(argc, argv);
}
