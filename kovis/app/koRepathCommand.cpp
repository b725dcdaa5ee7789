#include "koRepathCommand.h"

#include "koReferenceReport.h"
#include "koRepathPlan.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koQRPCUtils.h>

#include <RepathEntryList.h>
#include <koRepathEngine.h>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTimer>

namespace {

constexpr int quietMs = 2000;
constexpr int reportEveryMs = 1000;

// The walk runs on a worker so that a long one can say how far it got; a pipeline's log
// shows it, its standard output stays the plan alone.
QVector<RepathChoice> search(const QVector<RepathLink>& links, const QString& newDir, bool searchSubdirs,
                             QTextStream& err)
{
    RepathProgress progress;
    QElapsedTimer clock;
    clock.start();
    QTimer report;
    QObject::connect(&report, &QTimer::timeout, [&] {
        if (clock.elapsed() < quietMs)
            return;
        err << koRepathCommand::tr("Reading %1: %2 folders read, %3 files seen")
                   .arg(progress.folder(), QString::number(progress.folders()), QString::number(progress.files()))
            << '\n';
        err.flush();
    });
    report.start(reportEveryMs);
    QVector<RepathChoice> choices;
    koQRPCUtils::the()->callOffGuiThread([&] { choices = findRepathChoices(links, newDir, searchSubdirs, &progress); });
    return choices;
}

// A reference whose smart file was missing when the project was opened is not loaded, and
// would be saved as unloaded; once its file is found it is loaded as the project meant.
QList<kodReferenceNode> unreadableSmarts(const QList<RepathEntry*>& entries)
{
    QList<kodReferenceNode> nodes;
    for (const RepathEntry* entry : entries) {
        if (entry->kind == RepathTarget::Smart && !entry->node.isLoaded()
            && entry->node.getSmartFileState() == koReferenceTypes::Missing) {
            nodes.append(entry->node);
        }
    }
    return nodes;
}

// Only the links found are re-pointed: a link not found keeps the path a later run can
// still look for.
bool applyAndSave(const QVector<RepathLink>& links, const QVector<RepathChoice>& choices,
                  const koHostCommandLine::Repath& request, QTextStream& err)
{
    RepathEntryList found;
    RepathEntryList notFound;
    sortRepathEntries(found, notFound, links, choices, request.newDir);
    const QList<kodReferenceNode> unreadable = unreadableSmarts(found);
    applyRepath(found, repathMode(request.sources, request.smarts));
    for (kodReferenceNode node : unreadable)
        node.load();
    if (koService<koFileIOService>()->saveProject())
        return true;
    err << koRepathCommand::tr("Cannot save the project: %1").arg(koService<koLogService>()->lastMessage()) << '\n';
    return false;
}

} // namespace

int koRepathCommand::run(const QString& project, const koHostCommandLine::Repath& request,
                         koHostCommandLine::Format format, QTextStream& out, QTextStream& err)
{
    const QFileInfo folder(request.newDir);
    if (!folder.isDir()) {
        err << tr("Not a folder: %1").arg(request.newDir) << '\n';
        return koHostCommandLine::BadInput;
    }
    if (!koReferenceReport::loadProject(project, err))
        return koHostCommandLine::BadInput;
    koHostCommandLine::Repath absolute = request;
    absolute.newDir = folder.absoluteFilePath();
    const QVector<RepathLink> links =
        repathLinks(koReferenceReport::references(), request.missingOnly, request.sources, request.smarts);
    const QVector<RepathChoice> choices = search(links, absolute.newDir, request.searchSubdirs, err);
    const koRepathPlan plan(links, choices, absolute.newDir);
    if (format == koHostCommandLine::Format::Text) {
        plan.writeText(out);
        out.flush();
    }
    const bool writing = request.write && plan.found() > 0;
    const bool saved = writing && applyAndSave(links, choices, absolute, err);
    if (format == koHostCommandLine::Format::Json)
        plan.writeJson(saved, out);
    err << tr("%n link(s) found, ", nullptr, plan.found()) << tr("%n not found", nullptr, plan.notFound()) << '\n';
    if (writing && !saved)
        return koHostCommandLine::BadInput;
    if (!request.write)
        err << tr("Nothing written; --write saves the new links") << '\n';
    else if (saved)
        err << tr("Project saved") << '\n';
    return plan.notFound() > 0 ? koHostCommandLine::LinksMissing : koHostCommandLine::AllFound;
}
