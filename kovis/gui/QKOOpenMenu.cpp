#include <kovis/QKOOpenMenu.h>

#include <QKeyEvent>
#include <QMouseEvent>

QKOOpenMenu::QKOOpenMenu(QWidget* parent)
    : QMenu(parent)
{
}

QKOOpenMenu::QKOOpenMenu(const QString& title, QWidget* parent)
    : QMenu(title, parent)
{
}

void QKOOpenMenu::mousePressEvent(QMouseEvent* event)
{
    m_pressed = rect().contains(event->pos()) ? actionAt(event->pos()) : nullptr;
    QMenu::mousePressEvent(event);
}

void QKOOpenMenu::mouseReleaseEvent(QMouseEvent* event)
{
    QAction* action = actionAt(event->pos());
    const bool pressedHere = action && action == m_pressed;
    m_pressed = nullptr;
    // A release without a press in the menu (the one that opened it) ticks nothing.
    if (event->button() == Qt::LeftButton && pressedHere && toggle(action))
        return;
    QMenu::mouseReleaseEvent(event);
}

void QKOOpenMenu::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if ((key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) && toggle(activeAction()))
        return;
    QMenu::keyPressEvent(event);
}

bool QKOOpenMenu::toggle(QAction* action)
{
    if (!action || !action->isCheckable() || !action->isEnabled() || action->menu())
        return false;
    action->trigger();
    return true;
}
