#pragma once

#include "koScopedUndo.h"
#include "koUndoString.h"

// An undo scope that names its step.
class KOVIS_EXPORT koScopedMultiCommand
{
public:
    koScopedMultiCommand(const koUndoString& label, bool enabled = true);
    ~koScopedMultiCommand();

    koScopedMultiCommand(const koScopedMultiCommand&) = delete;
    koScopedMultiCommand& operator=(const koScopedMultiCommand&) = delete;

private:
    koScopedUndo m_scope;
};
