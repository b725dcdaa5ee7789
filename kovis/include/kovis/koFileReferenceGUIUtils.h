#pragma once

#include "kodReferenceNode.h"

#include <QCoreApplication>

// Reference operations that ask the user for files.
class KOVIS_EXPORT koFileReferenceGUIUtils
{
    Q_DECLARE_TR_FUNCTIONS(koFileReferenceGUIUtils)

public:
    // Asks for a source file and imports it as a new reference below the parent (the
    // scene root for a null parent), named after the file. The caller opens the undo
    // step. A null handle when the user cancels; then nothing has changed.
    static kodReferenceNode loadSource(const kodNode& parent);
};
