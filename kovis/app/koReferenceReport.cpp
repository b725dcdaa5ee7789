#include "koReferenceReport.h"

#include "koNodeInformation.h"

#include <kovis/koFileIOService.h>
#include <kovis/koFileStateText.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koReferenceService.h>

#include <QDir>
#include <QFileInfo>

namespace {

// Keeps one reference on one line and the fields apart, whatever the names hold.
QString escaped(QString text)
{
    return text.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('\t'), QLatin1String("\\t"))
        .replace(QLatin1Char('\n'), QLatin1String("\\n"))
        .replace(QLatin1Char('\r'), QLatin1String("\\r"));
}

QString shownPath(const QString& path, const QDir& projectFolder)
{
    if (path.isEmpty())
        return QStringLiteral("-");
    const QString relative = projectFolder.relativeFilePath(path);
    return escaped(QDir::toNativeSeparators(relative.startsWith(QLatin1String("..")) ? path : relative));
}

} // namespace

int koReferenceReport::run(const QString& project, bool check, QTextStream& out, QTextStream& err)
{
    auto* fileIO = koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>();
    auto* log = koKernelServiceFactory::the()->getServiceOrNull<koLogService>();
    if (!fileIO->loadProject(project)) {
        err << tr("Cannot open the project: %1").arg(log->lastMessage()) << '\n';
        return ProjectUnreadable;
    }
    QList<kodReferenceNode> references =
        koKernelServiceFactory::the()->getServiceOrNull<koReferenceService>()->getSceneReferences();
    references.removeFirst();
    const QDir folder = QFileInfo(fileIO->getProjectPath()).dir();
    out << tr("Reference\tSmart file\tSmart state\tSource file\tSource state") << '\n';
    int missing = 0;
    for (const kodReferenceNode& reference : references) {
        const auto smartState = reference.getSmartFileState();
        const auto sourceState = reference.getSourceFileState();
        missing += (smartState == koReferenceTypes::Missing) + (sourceState == koReferenceTypes::Missing);
        out << escaped(koNodeInformation::scenePath(reference)) << '\t' << shownPath(reference.getSmartPath(), folder) << '\t'
            << koFileStateText::state(smartState, QStringLiteral("-")) << '\t' << shownPath(reference.getSourcePath(), folder) << '\t'
            << koFileStateText::state(sourceState, QStringLiteral("-")) << '\n';
    }
    out.flush();
    if (!check)
        return AllFound;
    if (missing > 0) {
        err << tr("%n link(s) missing", nullptr, missing) << '\n';
        return LinksMissing;
    }
    err << tr("All %n reference(s) found", nullptr, references.size()) << '\n';
    return AllFound;
}
