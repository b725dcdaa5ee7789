#include "koReferenceReport.h"

#include "koNodeInformation.h"
#include "koReferenceJson.h"

#include <kovis/koFileIOService.h>
#include <kovis/koFileStateText.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koReferenceService.h>

#include <QFileInfo>
#include <QJsonDocument>

namespace {

int missingLinks(const QList<kodReferenceNode>& references)
{
    int missing = 0;
    for (const kodReferenceNode& reference : references) {
        missing += (reference.getSmartFileState() == koReferenceTypes::Missing)
                   + (reference.getSourceFileState() == koReferenceTypes::Missing);
    }
    return missing;
}

} // namespace

QString koReferenceReport::escaped(QString text)
{
    return text.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('\t'), QLatin1String("\\t"))
        .replace(QLatin1Char('\n'), QLatin1String("\\n"))
        .replace(QLatin1Char('\r'), QLatin1String("\\r"));
}

QString koReferenceReport::shownPath(const QString& path, const QDir& projectFolder)
{
    if (path.isEmpty())
        return QStringLiteral("-");
    const QString relative = projectFolder.relativeFilePath(path);
    return escaped(QDir::toNativeSeparators(relative.startsWith(QLatin1String("..")) ? path : relative));
}

bool koReferenceReport::loadProject(const QString& project, QTextStream& err)
{
    if (koService<koFileIOService>()->loadProject(project))
        return true;
    err << tr("Cannot open the project: %1").arg(koService<koLogService>()->lastMessage()) << '\n';
    return false;
}

QList<kodReferenceNode> koReferenceReport::references()
{
    QList<kodReferenceNode> references = koService<koReferenceService>()->getSceneReferences();
    references.removeFirst();
    return references;
}

QDir koReferenceReport::projectFolder()
{
    return QFileInfo(koService<koFileIOService>()->getProjectPath()).dir();
}

void koReferenceReport::writeText(const QList<kodReferenceNode>& references, QTextStream& out)
{
    const QDir folder = projectFolder();
    out << tr("Reference\tSmart file\tSmart state\tSource file\tSource state") << '\n';
    for (const kodReferenceNode& reference : references) {
        out << escaped(koNodeInformation::scenePath(reference)) << '\t' << shownPath(reference.getSmartPath(), folder)
            << '\t' << koFileStateText::state(reference.getSmartFileState(), QStringLiteral("-")) << '\t'
            << shownPath(reference.getSourcePath(), folder) << '\t'
            << koFileStateText::state(reference.getSourceFileState(), QStringLiteral("-")) << '\n';
    }
}

int koReferenceReport::run(const QString& project, bool check, koHostCommandLine::Format format, QTextStream& out,
                           QTextStream& err)
{
    if (!loadProject(project, err))
        return koHostCommandLine::BadInput;
    const QList<kodReferenceNode> references = koReferenceReport::references();
    const int missing = missingLinks(references);
    if (format == koHostCommandLine::Format::Json) {
        const QJsonObject report{{QStringLiteral("project"), koReferenceJson::path(koService<koFileIOService>()->getProjectPath())},
                                 {QStringLiteral("references"), koReferenceJson::references(references)},
                                 {QStringLiteral("missingLinks"), missing}};
        out << QJsonDocument(report).toJson();
    } else {
        writeText(references, out);
    }
    out.flush();
    if (!check)
        return koHostCommandLine::AllFound;
    if (missing > 0) {
        err << tr("%n link(s) missing", nullptr, missing) << '\n';
        return koHostCommandLine::LinksMissing;
    }
    err << tr("All %n reference(s) found", nullptr, references.size()) << '\n';
    return koHostCommandLine::AllFound;
}
