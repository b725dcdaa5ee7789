#include <kovis/koUndoStack.h>

#include <QCoreApplication>
#include <QUndoStack>

namespace {

// A finished step: its changes were made while it was recorded, so the redo that
// QUndoStack::push() runs is skipped once.
class koUndoStep : public QUndoCommand
{
public:
    void redo() override
    {
        if (m_pushed)
            QUndoCommand::redo();
        m_pushed = true;
    }

private:
    bool m_pushed = false;
};

} // namespace

koUndoStack* koUndoStack::s_instance = nullptr;

koUndoStack* koUndoStack::the()
{
    return s_instance;
}

koUndoStack::koUndoStack(QObject* parent)
    : QObject(parent)
    , m_stack(new QUndoStack)
{
    s_instance = this;
}

koUndoStack::~koUndoStack()
{
    if (s_instance == this)
        s_instance = nullptr;
}

QUndoStack* koUndoStack::stack() const
{
    return m_stack.data();
}

void koUndoStack::openScope()
{
    if (m_depth++ == 0)
        m_openStep.reset(new koUndoStep);
}

void koUndoStack::closeScope()
{
    if (m_depth == 0 || --m_depth > 0)
        return;
    QScopedPointer<QUndoCommand> step(m_openStep.take());
    if (step->childCount() == 0)
        return;
    if (step->text().isEmpty())
        step->setText(step->child(0)->text());
    m_stack->push(step.take());
}

void koUndoStack::nameScope(const QString& label)
{
    if (m_openStep && m_openStep->text().isEmpty())
        m_openStep->setText(label);
}

bool koUndoStack::isRecording() const
{
    return m_depth > 0 && !m_replaying;
}

QUndoCommand* koUndoStack::recordingStep() const
{
    return isRecording() ? m_openStep.data() : nullptr;
}

bool koUndoStack::isReplaying() const
{
    return m_replaying;
}

void koUndoStack::clear()
{
    m_stack->clear();
}

void koUndoStack::undo()
{
    m_stack->undo();
}

void koUndoStack::redo()
{
    m_stack->redo();
}

int koUndoStack::count() const
{
    return m_stack->count();
}

QString koUndoStack::undoText() const
{
    return m_stack->undoText();
}

QString koUndoStack::redoText() const
{
    return m_stack->redoText();
}
