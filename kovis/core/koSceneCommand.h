#pragma once

#include <QUndoCommand>

#include <functional>

// One recorded scene change: how to take it back and how to make it again.
class koSceneCommand : public QUndoCommand
{
public:
    koSceneCommand(const QString& text, std::function<void()> undo, std::function<void()> redo,
                   QUndoCommand* parent = nullptr);

    void undo() override;
    void redo() override;

private:
    std::function<void()> m_undo;
    std::function<void()> m_redo;
};
