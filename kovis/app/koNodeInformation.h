#pragma once

#include <kovis/kodNode.h>

#include <QCoreApplication>

class koNodeInfoDialog;

// What the host tells about a node: its place, its kind and, for a reference, its
// files with their states, dates and owners.
class koNodeInformation
{
    Q_DECLARE_TR_FUNCTIONS(koNodeInformation)
public:
    static void describe(const kodNode& node, koNodeInfoDialog& dialog);
    // "Bicycle/Frame/Fork": the names from the scene root down to the node.
    static QString scenePath(const kodNode& node);
};
