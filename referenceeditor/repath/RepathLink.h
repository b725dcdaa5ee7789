#pragma once

#include "RepathEntry.h"

// A link to repath as read from the scene: the node, which of its links, and its path now.
struct RepathLink
{
    kodReferenceNode node;
    RepathTarget kind;
    QString oldPath;
};
