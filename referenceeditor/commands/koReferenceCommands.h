#pragma once

#include <kovis/kodReferenceNode.h>

#include <QList>
#include <QObject>

#include <functional>

class koReferenceEditorModule;

// The command flows of the Reference Editor that change references (load, unload,
// remove, delete, convert, reimport, clone), show them (open their folder, select
// their nodes in the scene tree) and sum them up. Each asks before dangerous changes,
// works through the host and leaves the view to the one deferred reload.
class koReferenceCommands : public QObject
{
    Q_OBJECT
public:
    // Which link a selection filter looks at.
    enum Link { SmartLink = 0, SourceLink = 1 };

    explicit koReferenceCommands(koReferenceEditorModule* module);

    // Routes the host's requests to run a flow of the Reference Editor.
    void connectHostRequests();

    void load(const QList<kodReferenceNode>& references);
    void loadAll();
    void unload(const QList<kodReferenceNode>& references);
    void unloadAll();
    void removeReferences(const QList<kodReferenceNode>& references);
    void removeAllReferences();
    void deleteSmartReferences(const QList<kodReferenceNode>& references);
    void deleteSourceReferences(const QList<kodReferenceNode>& references);
    void deleteAllSmartReferences();
    void deleteAllSourceReferences();
    void convertToSmartReferences(const QList<kodNode>& nodes);
    void convertAllToSmartReferences();
    // Returns the references imported; none when the user cancelled.
    QList<kodReferenceNode> reimportSourceReferences(const QList<kodReferenceNode>& references);
    void reimportSmartReferences(const QList<kodReferenceNode>& references);
    void clone(const QList<kodNode>& rootNodes);
    void openSmartLocation(const QList<kodReferenceNode>& references);
    void openSourceLocation(const QList<kodReferenceNode>& references);
    // Makes the nodes the scene tree's selection and shows the last one there.
    void selectNodes(const QList<kodNode>& nodes);
    void showSceneInformation();

    static QList<kodReferenceNode> referencesWithFileState(const QList<kodReferenceNode>& references, int link,
                                                           koReferenceTypes::FileState value);
    static QList<kodReferenceNode> referencesWithState(const QList<kodReferenceNode>& references, int link,
                                                       koReferenceTypes::State value);
    static QList<kodReferenceNode> allReferences();

private:
    bool confirm(const QString& title, const QString& text) const;
    // True to go on.
    bool confirmUnload(const QList<kodReferenceNode>& references) const;
    bool confirmConvert(const QList<kodReferenceNode>& references) const;
    bool askConvertWarning() const;
    // One named undo step for the work, then a reload.
    void changeInUndoStep(const QString& label, const std::function<void()>& work);
    void forEachInUndoStep(const QString& label, const QList<kodReferenceNode>& references,
                           void (kodReferenceNode::*change)());
    void openLocation(const QString& path) const;

    koReferenceEditorModule* m_module;
};
