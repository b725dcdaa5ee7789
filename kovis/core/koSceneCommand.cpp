#include "koSceneCommand.h"

#include <kovis/koUndoStack.h>

koSceneCommand::koSceneCommand(const QString& text, std::function<void()> undo, std::function<void()> redo,
                               QUndoCommand* parent)
    : QUndoCommand(text, parent)
    , m_undo(std::move(undo))
    , m_redo(std::move(redo))
{
}

void koSceneCommand::undo()
{
    koUndoStack::the()->setReplaying(true);
    m_undo();
    koUndoStack::the()->setReplaying(false);
}

void koSceneCommand::redo()
{
    koUndoStack::the()->setReplaying(true);
    m_redo();
    koUndoStack::the()->setReplaying(false);
}
