#include <kovis/koFileDialog.h>
#include <kovis/koFileIOService.h>
#include <kovis/koFileReferenceGUIUtils.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>

#include <QApplication>
#include <QFileInfo>

kodReferenceNode koFileReferenceGUIUtils::loadSource(const kodNode& parent)
{
    const auto* fileIO = koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>();
    const QString path =
        koFileDialog::getOpenFileName(QApplication::activeWindow(), tr("Load Source Reference"), QString(),
                                      fileIO->getImportFileFilter(koFileIOService::ImportFiles));
    if (path.isEmpty())
        return kodReferenceNode();

    auto* references = koKernelServiceFactory::the()->getServiceOrNull<koReferenceService>();
    kodReferenceNode reference = references->createReference(parent);
    reference.setSourcePath(path);
    references->importSourceReferences({reference});
    reference.setName(QFileInfo(path).completeBaseName());
    return reference;
}
