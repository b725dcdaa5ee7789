#pragma once

#include "koSceneStore.h"

#include <QSet>
#include <QStringList>

// Walks the whole store and names what is broken: a child whose parent does not list
// it, a node listed twice or unreachable, a clone index out of step with the nodes, an
// instance group of mixed types, shared content nested inside itself.
class koSceneStoreChecker
{
public:
    explicit koSceneStoreChecker(const koSceneStore& store);

    QStringList brokenInvariants();

private:
    void checkRoot();
    void checkTree();
    void checkNode(const koNodeRecord& node);
    void checkReachable();
    void checkClones();
    void checkInstanceGroups();
    void checkNesting(const koNodeRecord& node);
    void fail(const QString& message);

    const koSceneStore& m_store;
    QStringList m_broken;
};
