#pragma once

#include "koGlobal.h"

// While it lives, the host records scene changes on its undo stack, all of them in one
// step. Scopes nest; the outermost one closes the step. Changes made outside any scope
// are not undoable. With enabled false the scope does nothing.
class KOVIS_EXPORT koScopedUndo
{
public:
    explicit koScopedUndo(bool enabled = true);
    ~koScopedUndo();

    koScopedUndo(const koScopedUndo&) = delete;
    koScopedUndo& operator=(const koScopedUndo&) = delete;

private:
    bool m_enabled;
};
