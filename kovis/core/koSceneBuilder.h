#pragma once

#include "koNodeRecord.h"
#include "koReferenceContent.h"
#include "koSceneNodeDesc.h"

#include <kovis/koGlobal.h>

#include <QCoreApplication>
#include <QHash>
#include <QSet>
#include <QVector>

class koReferenceEngine;

// Turns content as files hold it into scene nodes, and scene nodes back into content
// to write. Values enter the scene here, so limits are checked here.
class KOVIS_EXPORT koSceneBuilder
{
    Q_DECLARE_TR_FUNCTIONS(koSceneBuilder)

public:
    // Nodes in depth-first order; sizes[i] is the size of the subtree that starts at i.
    struct Built
    {
        QVector<koNodeRecord> nodes;
        QVector<int> sizes;
        QHash<quint64, koReferenceContent> contents;
        QHash<QString, int> firstInstance;
        QSet<QString> instancesInProgress;
    };

    explicit koSceneBuilder(koReferenceEngine& engine);

    // Appends the node and its subtree to out; returns its index there.
    int materialize(const koSceneNodeDesc& desc, Built& out);
    // The same records under new ids.
    QVector<koNodeRecord> cloneRecords(const QVector<koNodeRecord>& records) const;
    // The node's content as its file stores it: a group named after the node.
    // inlineReferences: write the content of references below as plain groups.
    koSceneNodeDesc describeContent(quint64 id, bool inlineReferences = false) const;

private:
    int build(const koSceneNodeDesc& desc, Built& out);
    void readLinkedFiles(const koSceneNodeDesc& desc);
    int materializeInstance(const koSceneNodeDesc& desc, int first, Built& out);
    koNodeRecord recordOf(const koSceneNodeDesc& desc);
    void stampFiles(koReferenceContent& content);
    struct Describing
    {
        bool inlineReferences = false;
    };
    koSceneNodeDesc describeNode(const koNodeRecord& node, Describing& describing) const;
    void describeReference(const koNodeRecord& node, koSceneNodeDesc& desc, Describing& describing) const;
    void describeChildren(const koNodeRecord& node, koSceneNodeDesc& desc, Describing& describing) const;
    static void tagInstances(koSceneNodeDesc& content);

    koReferenceEngine& m_engine;
};
