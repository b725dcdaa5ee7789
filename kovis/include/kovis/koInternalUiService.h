#pragma once

#include "koBaseService.h"
#include "kodReferenceNode.h"

#include <QList>

// Lets parts of the host ask a module to run one of its command flows with its dialogs.
class KOVIS_EXPORT koInternalUiService : public koBaseService
{
    Q_OBJECT
public:
    using koBaseService::koBaseService;

    // Whether a module places new smart files when the host saves.
    bool answersSmartPathsUpdate() const;

signals:
    void requestUiLoadReferences(QList<kodReferenceNode> references);
    void requestUiUnloadReferences(QList<kodReferenceNode> references);
    void requestUiRepathReferences(QList<kodReferenceNode> references);
    void requestUiRemoveReferences(QList<kodReferenceNode> references);
    void requestUiRepathSmarts(QList<kodReferenceNode> references);
    void requestUiRemoveSmarts(QList<kodReferenceNode> references);
    void requestUiOpenSmartsInExplorer(QList<kodReferenceNode> references);
    void requestUiSaveSmarts(QList<kodReferenceNode> references);
    void requestUiSaveSmartsAs(QList<kodReferenceNode> references);
    void requestUiRepathSources(QList<kodReferenceNode> references);
    void requestUiRemoveSources(QList<kodReferenceNode> references);
    void requestUiOpenSourcesInExplorer(QList<kodReferenceNode> references);
    void requestUiReimportSmarts(QList<kodReferenceNode> references, koReferenceTypes::FileState state);
    void requestUiReimportSources(QList<kodReferenceNode> references, koReferenceTypes::FileState state);
    void requestUILoadUnloadedSmarts(QList<kodReferenceNode> references, koReferenceTypes::State state);
    void requestUILoadUnloadedSources(QList<kodReferenceNode> references, koReferenceTypes::State state);
    void requestUiReplaceSmart(const kodReferenceNode& reference);
    void requestUiReplaceSource(const kodReferenceNode& reference);
    void requestUiConvertToSmarts(QList<kodNode> nodes);
    void requestUiSmartPathsUpdate(const kodNode& node, const QString& path, bool& result);
};
