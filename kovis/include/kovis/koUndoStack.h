#pragma once

#include "koGlobal.h"

#include <QObject>
#include <QScopedPointer>
#include <QString>

class QUndoCommand;
class QUndoStack;

// The host's undo stack. Scene changes are recorded while an undo scope is open and
// become one step when the outermost scope closes.
class KOVIS_EXPORT koUndoStack : public QObject
{
    Q_OBJECT
public:
    static koUndoStack* the();

    explicit koUndoStack(QObject* parent = nullptr);
    ~koUndoStack() override;

    QUndoStack* stack() const;

    void openScope();
    void closeScope();
    // Names the step of the open scope; the first name given wins.
    void nameScope(const QString& label);
    bool isRecording() const;
    // The step that recorded changes join as children (null when not recording). A
    // change is made before it is recorded; its command runs again only on undo/redo.
    QUndoCommand* recordingStep() const;
    // True while a step is being undone or redone.
    bool isReplaying() const;

    void clear();
    void undo();
    void redo();
    int count() const;
    QString undoText() const;
    QString redoText() const;

private:
    friend class koSceneCommand;
    void setReplaying(bool replaying) { m_replaying = replaying; }

    static koUndoStack* s_instance;
    QScopedPointer<QUndoStack> m_stack;
    QScopedPointer<QUndoCommand> m_openStep;
    int m_depth = 0;
    bool m_replaying = false;
};
