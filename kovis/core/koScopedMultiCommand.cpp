#include <kovis/koScopedMultiCommand.h>
#include <kovis/koUndoStack.h>

koScopedMultiCommand::koScopedMultiCommand(const koUndoString& label, bool enabled)
    : m_scope(enabled)
{
    if (enabled && koUndoStack::the())
        koUndoStack::the()->nameScope(label.text());
}

koScopedMultiCommand::~koScopedMultiCommand() = default;
