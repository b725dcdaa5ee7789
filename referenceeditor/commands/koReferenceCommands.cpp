#include "koReferenceCommands.h"

#include "koReferenceEditorModule.h"
#include "koReferenceQuestion.h"

#include <kovis/koInternalUiService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeInfoDialog.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koScopedMultiCommand.h>
#include <kovis/koScopedUndo.h>
#include <kovis/koTreeService.h>

#include <QCheckBox>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMessageBox>
#include <QScopeGuard>
#include <QUrl>

#include <algorithm>

namespace {

const QString convertWarningKey = QStringLiteral("Reference Show Convert to Smart Warning Enabled");
const QString preferencesCategory = QStringLiteral("References");

struct SceneCounts
{
    unsigned references = 0;
    unsigned modified = 0;
    unsigned smart = 0;
    unsigned missingSmart = 0;
    unsigned outdatedSmart = 0;
    unsigned unsavedSmart = 0;
    unsigned source = 0;
    unsigned missingSource = 0;
    unsigned outdatedSource = 0;

    void add(const kodReferenceNode& reference)
    {
        const koReferenceTypes::FileState smartState = reference.getSmartFileState();
        const koReferenceTypes::FileState sourceState = reference.getSourceFileState();
        ++references;
        modified += reference.isChanged();
        smart += smartState != koReferenceTypes::NoFile;
        missingSmart += smartState == koReferenceTypes::Missing;
        outdatedSmart += smartState == koReferenceTypes::OutOfDate;
        unsavedSmart += smartState == koReferenceTypes::Unsaved;
        source += sourceState != koReferenceTypes::NoFile;
        missingSource += sourceState == koReferenceTypes::Missing;
        outdatedSource += sourceState == koReferenceTypes::OutOfDate;
    }
};

void addInfo(koNodeInfoDialog& dialog, const QString& label, unsigned value)
{
    dialog.addInfo(label, QString::number(value));
}

} // namespace

koReferenceCommands::koReferenceCommands(koReferenceEditorModule* module)
    : m_module(module)
{
}

void koReferenceCommands::connectHostRequests()
{
    auto* ui = koService<koInternalUiService>();
    using References = QList<kodReferenceNode>;
    connect(ui, &koInternalUiService::requestUiLoadReferences, this, &koReferenceCommands::load);
    connect(ui, &koInternalUiService::requestUiUnloadReferences, this, &koReferenceCommands::unload);
    connect(ui, &koInternalUiService::requestUiRemoveReferences, this, &koReferenceCommands::removeReferences);
    connect(ui, &koInternalUiService::requestUiRemoveSmarts, this, &koReferenceCommands::deleteSmartReferences);
    connect(ui, &koInternalUiService::requestUiOpenSmartsInExplorer, this, &koReferenceCommands::openSmartLocation);
    connect(ui, &koInternalUiService::requestUiRemoveSources, this, &koReferenceCommands::deleteSourceReferences);
    connect(ui, &koInternalUiService::requestUiOpenSourcesInExplorer, this, &koReferenceCommands::openSourceLocation);
    connect(ui, &koInternalUiService::requestUiConvertToSmarts, this, &koReferenceCommands::convertToSmartReferences);
    connect(ui, &koInternalUiService::requestUiReimportSmarts, this,
            [this](const References& references, koReferenceTypes::FileState state) {
                reimportSmartReferences(referencesWithFileState(references, SmartLink, state));
            });
    connect(ui, &koInternalUiService::requestUiReimportSources, this,
            [this](const References& references, koReferenceTypes::FileState state) {
                reimportSourceReferences(referencesWithFileState(references, SourceLink, state));
            });
    connect(ui, &koInternalUiService::requestUILoadUnloadedSmarts, this,
            [this](const References& references, koReferenceTypes::State state) {
                load(referencesWithState(references, SmartLink, state));
            });
    connect(ui, &koInternalUiService::requestUILoadUnloadedSources, this,
            [this](const References& references, koReferenceTypes::State state) {
                load(referencesWithState(references, SourceLink, state));
            });
}

QList<kodReferenceNode> koReferenceCommands::allReferences()
{
    return koService<koReferenceService>()->getSceneReferences();
}

bool koReferenceCommands::confirm(const QString& title, const QString& text) const
{
    return koReferenceQuestion::ask(m_module, title, text) == DialogAccepted;
}

void koReferenceCommands::load(const QList<kodReferenceNode>& references)
{
    QList<kodReferenceNode> sourceOnly;
    for (kodReferenceNode reference : references) {
        if (reference.hasSmartReference())
            reference.loadSmartReference();
        else if (reference.hasSourceReference())
            sourceOnly.append(reference);
    }
    koService<koReferenceService>()->importSourceReferences(sourceOnly);
    m_module->scheduleReload();
}

void koReferenceCommands::loadAll()
{
    load(allReferences());
}

bool koReferenceCommands::confirmUnload(const QList<kodReferenceNode>& references) const
{
    const bool changed = std::any_of(references.cbegin(), references.cend(), [](const kodReferenceNode& reference) {
        return reference.isSelfOrSubReferenceChanged();
    });
    return !changed
           || confirm(tr("Unload Smart References"),
                      tr("You have selected to unload modified references in your session. To keep these changes, "
                         "click Cancel and save your changes. To continue the unload and loose all modifications, "
                         "click OK."));
}

void koReferenceCommands::unload(const QList<kodReferenceNode>& references)
{
    if (!confirmUnload(references))
        return;
    for (kodReferenceNode reference : references)
        reference.unload();
    m_module->scheduleReload();
}

void koReferenceCommands::unloadAll()
{
    unload(allReferences());
}

void koReferenceCommands::changeInUndoStep(const QString& label, const std::function<void()>& work)
{
    koScopedUndo undo(true);
    koScopedMultiCommand step(koUndoString("Reference Editor", label));
    work();
    m_module->scheduleReload();
}

void koReferenceCommands::forEachInUndoStep(const QString& label, const QList<kodReferenceNode>& references,
                                            void (kodReferenceNode::*change)())
{
    changeInUndoStep(label, [&references, change] {
        for (kodReferenceNode reference : references)
            (reference.*change)();
    });
}

void koReferenceCommands::removeReferences(const QList<kodReferenceNode>& references)
{
    changeInUndoStep(tr("Remove references"), [&references] {
        for (const kodReferenceNode& reference : references)
            koService<koReferenceService>()->removeReference(reference);
    });
}

void koReferenceCommands::removeAllReferences()
{
    if (!confirm(tr("Remove all References"),
                 tr("You are about to remove all references from your scene. This will convert all references to "
                    "Kovis groups and combine all external files into the current KPR (inline). Select OK to "
                    "proceed.")))
        return;
    changeInUndoStep(tr("Remove all references"), [this] {
        // References vanish one by one; the view reloads once, after the last.
        m_module->setProjectLoading(true);
        const auto loadingDone = qScopeGuard([this] { m_module->setProjectLoading(false); });
        for (const kodReferenceNode& reference : allReferences())
            koService<koReferenceService>()->removeReference(reference);
    });
}

void koReferenceCommands::deleteSmartReferences(const QList<kodReferenceNode>& references)
{
    forEachInUndoStep(tr("Delete smart references"), references, &kodReferenceNode::removeSmartReference);
}

void koReferenceCommands::deleteSourceReferences(const QList<kodReferenceNode>& references)
{
    forEachInUndoStep(tr("Delete source references"), references, &kodReferenceNode::removeSourceReference);
}

void koReferenceCommands::deleteAllSmartReferences()
{
    forEachInUndoStep(tr("Delete all smart references"), allReferences(), &kodReferenceNode::removeSmartReference);
}

void koReferenceCommands::deleteAllSourceReferences()
{
    forEachInUndoStep(tr("Delete all source references"), allReferences(), &kodReferenceNode::removeSourceReference);
}

bool koReferenceCommands::askConvertWarning() const
{
    QMessageBox box(QMessageBox::Warning, tr("Convert to Smart References"),
                    tr("Converting to smart references adds a reference to the Smart column of the Reference Editor. "
                       "Smart references maintain a link to their source reference. Smart references aren't "
                       "immediately created on disk. They are created once you save.\n\nSmart references are an "
                       "advanced feature. Use them to divide a project into multiple KPR files for individual team "
                       "members to work on. Select OK to proceed.\n"),
                    QMessageBox::Ok | QMessageBox::Cancel, m_module);
    box.setDefaultButton(QMessageBox::Cancel);
    box.setCheckBox(new QCheckBox(tr("Do not show again"), &box));
    const int answer = box.exec();
    // The choice sticks even when the user cancels.
    auto* preferences = koService<koPreferencesService>();
    preferences->setBoolValue(convertWarningKey, !box.checkBox()->isChecked(), true);
    preferences->notifyCategoryChanged(preferencesCategory);
    preferences->notifyCategoryApplied(preferencesCategory);
    return answer != QMessageBox::Cancel;
}

bool koReferenceCommands::confirmConvert(const QList<kodReferenceNode>& references) const
{
    if (koService<koReferenceService>()->showConvertToSmartWarning() && !askConvertWarning())
        return false;
    const bool outdated = std::any_of(references.cbegin(), references.cend(), [](const kodReferenceNode& reference) {
        return reference.getSourceFileState() == koReferenceTypes::OutOfDate;
    });
    return !outdated
           || confirm(tr("Convert to Smart References"),
                      tr("You are attempting to convert outdated source references. Select OK to proceed"));
}

void koReferenceCommands::convertToSmartReferences(const QList<kodNode>& nodes)
{
    QList<kodReferenceNode> references;
    for (const kodNode& node : nodes) {
        if (node.isTypeOf(kodReferenceNode::staticMetaObject))
            references.append(kodReferenceNode(node.getObjectId()));
    }
    if (!confirmConvert(references))
        return;
    // Every node goes to the host, references or not: a plain group becomes one.
    changeInUndoStep(tr("Convert to smart references"), [&nodes] {
        for (const kodNode& node : nodes)
            koService<koReferenceService>()->convertToSmartReference(node);
    });
}

void koReferenceCommands::convertAllToSmartReferences()
{
    const QList<kodReferenceNode> references = allReferences();
    if (!confirmConvert(references))
        return;
    forEachInUndoStep(tr("Convert all to smart references"), references, &kodReferenceNode::createSmartReference);
}

QList<kodReferenceNode> koReferenceCommands::reimportSourceReferences(const QList<kodReferenceNode>& references)
{
    const bool smart = std::any_of(references.cbegin(), references.cend(),
                                   [](const kodReferenceNode& reference) { return reference.hasSmartReference(); });
    if (smart
        && !confirm(tr("Reimport source references"),
                    tr("Reimporting smart reference's source file will replace the current smart reference with a "
                       "newly converted version from the source. This will only overwrite the smart reference once "
                       "you save. Select OK to proceed."))) {
        return {};
    }
    return koService<koReferenceService>()->importSourceReferences(references);
}

void koReferenceCommands::reimportSmartReferences(const QList<kodReferenceNode>& references)
{
    koService<koReferenceService>()->reimportSmartReferences(references);
    m_module->scheduleReload();
}

void koReferenceCommands::clone(const QList<kodNode>& rootNodes)
{
    koScopedUndo undo(true);
    koService<koTreeService>()->cloneNodes(rootNodes);
    m_module->scheduleReload();
}

void koReferenceCommands::openSmartLocation(const QList<kodReferenceNode>& references)
{
    if (!references.isEmpty())
        openLocation(references.first().getSmartPath());
}

void koReferenceCommands::openSourceLocation(const QList<kodReferenceNode>& references)
{
    if (!references.isEmpty())
        openLocation(references.first().getSourcePath());
}

void koReferenceCommands::openLocation(const QString& path) const
{
    const QFileInfo file(path);
    if (file.exists())
        QDesktopServices::openUrl(QUrl::fromLocalFile(file.canonicalPath()));
}

void koReferenceCommands::selectNodes(const QList<kodNode>& nodes)
{
    if (nodes.isEmpty())
        return;
    koScopedUndo undo(true);
    auto* tree = koService<koTreeService>();
    tree->clearSelection();
    tree->setSelection(koTreeService::encodeSelection(nodes));
    tree->scrollToNode(unsigned(nodes.last().getObjectId()));
}

void koReferenceCommands::showSceneInformation()
{
    SceneCounts counts;
    for (const kodReferenceNode& reference : allReferences())
        counts.add(reference);

    koNodeInfoDialog dialog(m_module);
    dialog.setWindowTitle(tr("Scene Information"));
    dialog.addSection(tr("General"));
    addInfo(dialog, tr("References"), counts.references);
    // Links, not references: one with both files missing counts twice.
    addInfo(dialog, tr("Missing References"), counts.missingSmart + counts.missingSource);
    addInfo(dialog, tr("Outdated References"), counts.outdatedSmart + counts.outdatedSource);
    addInfo(dialog, tr("Unsaved References"), counts.unsavedSmart);
    addInfo(dialog, tr("Modified References"), counts.modified);
    dialog.addSection(tr("Smart References"));
    addInfo(dialog, tr("Smart References"), counts.smart);
    addInfo(dialog, tr("Missing Smart References"), counts.missingSmart);
    addInfo(dialog, tr("Outdated Smart References"), counts.outdatedSmart);
    addInfo(dialog, tr("Unsaved Smart References"), counts.unsavedSmart);
    dialog.addSection(tr("Source References"));
    addInfo(dialog, tr("Source References"), counts.source);
    addInfo(dialog, tr("Missing Source References"), counts.missingSource);
    addInfo(dialog, tr("Outdated Source References"), counts.outdatedSource);
    dialog.exec();
}

QList<kodReferenceNode> koReferenceCommands::referencesWithFileState(const QList<kodReferenceNode>& references,
                                                                     int link, koReferenceTypes::FileState value)
{
    QList<kodReferenceNode> kept;
    for (const kodReferenceNode& reference : references) {
        const bool matches = (link == SmartLink && reference.getSmartFileState() == value)
                             || (link == SourceLink && reference.getSourceFileState() == value);
        if (matches)
            kept.append(reference);
    }
    return kept;
}

QList<kodReferenceNode> koReferenceCommands::referencesWithState(const QList<kodReferenceNode>& references, int link,
                                                                 koReferenceTypes::State value)
{
    QList<kodReferenceNode> kept;
    for (const kodReferenceNode& reference : references) {
        const bool linked = (link == SmartLink && reference.hasSmartReference())
                            || (link == SourceLink && reference.hasSourceReference());
        if (linked && reference.getState() == value)
            kept.append(reference);
    }
    return kept;
}
