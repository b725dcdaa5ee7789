#include <kovis/koScopedUndo.h>
#include <kovis/koUndoStack.h>

koScopedUndo::koScopedUndo(bool enabled)
    : m_enabled(enabled && koUndoStack::the())
{
    if (m_enabled)
        koUndoStack::the()->openScope();
}

koScopedUndo::~koScopedUndo()
{
    if (m_enabled && koUndoStack::the())
        koUndoStack::the()->closeScope();
}
