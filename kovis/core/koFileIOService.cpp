#include <kovis/koFileIOService.h>

#include "koCadImporter.h"
#include "koMeshImporter.h"
#include "koReferenceEngine.h"

#include <kovis/koHost.h>
#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>

#include <QCoreApplication>
#include <QFileInfo>

koFileIOService::koFileIOService(QObject* parent)
    : koBaseService(parent)
{
    koReferenceEngine* engine = koHost::engine();
    connect(engine, &koReferenceEngine::projectLoad, this, &koFileIOService::projectLoad);
    connect(engine, &koReferenceEngine::projectLoadFinished, this, &koFileIOService::projectLoadFinished);
}

bool koFileIOService::isProjectFile(const QString& path) const
{
    return QFileInfo(path).suffix().compare(QLatin1String("kpr"), Qt::CaseInsensitive) == 0;
}

QString koFileIOService::getImportFileFilter(int group) const
{
    const auto tr = [](const char* text) { return QCoreApplication::translate("koFileIOService", text); };
    const QString all = tr("All Files (*)");
    switch (group) {
    case ProjectFiles:
        return tr("Kovis Project Files (*.kpr)");
    case SmartFiles:
        return tr("Smart Files (*.kpr *.osb)");
    case GeometryFiles:
    case ImportFiles: {
        // What the import libraries read, asked from them: all at once first, then format by format.
        QStringList patterns = koMeshImporter::patterns() + koCadImporter::patterns();
        QStringList formats = koMeshImporter::fileFilters() + koCadImporter::fileFilters();
        patterns.sort();
        formats.sort(Qt::CaseInsensitive);
        const QString importable = tr("Importable Files (%1)").arg(patterns.join(QLatin1Char(' ')));
        if (group == GeometryFiles)
            return importable;
        return (QStringList{importable} + formats + QStringList{all}).join(QStringLiteral(";;"));
    }
    default:
        return all;
    }
}

bool koFileIOService::loadProject(const QString& path)
{
    return koHost::engine()->loadProject(path);
}

koFileIOService::SaveOutcome koFileIOService::writeProject(const QString& path)
{
    auto* ui = koKernelServiceFactory::the()->getServiceOrNull<koInternalUiService>();
    bool cancelled = false;
    koReferenceEngine::SmartPathsRequest askModule;
    if (ui && ui->answersSmartPathsUpdate()) {
        askModule = [ui, &cancelled](quint64 root, const QString& projectPath) {
            bool result = true;
            emit ui->requestUiSmartPathsUpdate(kodNode(root), projectPath, result);
            cancelled = !result;
            return result;
        };
    }
    if (!koHost::engine()->saveProject(path, askModule))
        return cancelled ? SaveOutcome::Cancelled : SaveOutcome::Failed;
    emit projectSaved(koHost::engine()->projectPath());
    return SaveOutcome::Saved;
}

void koFileIOService::newProject()
{
    koHost::engine()->newProject();
}

QString koFileIOService::getProjectPath() const
{
    return koHost::engine()->projectPath();
}
