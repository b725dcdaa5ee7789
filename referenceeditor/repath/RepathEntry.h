#pragma once

#include <kovis/kodReferenceNode.h>

#include <QString>

// Which link of a reference an entry re-points.
enum class RepathTarget : qint32 { Source = 0, Smart = 1 };

// One planned change: the link of the node and the path it is to get, with '/' separators.
struct RepathEntry
{
    kodReferenceNode node;
    RepathTarget kind;
    QString path;
};
