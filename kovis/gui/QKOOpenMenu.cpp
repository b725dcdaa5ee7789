#include <kovis/QKOOpenMenu.h>

#include <QFocusEvent>
#include <QTimer>

namespace {

bool isTickable(const QAction* entry)
{
    return entry && entry->isCheckable() && entry->isEnabled() && !entry->menu();
}

} // namespace

QKOOpenMenu::QKOOpenMenu(QWidget* parent)
    : QKOOpenMenu(QString(), parent)
{
}

QKOOpenMenu::QKOOpenMenu(const QString& title, QWidget* parent)
    : QMenu(title, parent)
{
    connect(this, &QMenu::triggered, this, [this](QAction* entry) { m_triggered = entry; });
}

void QKOOpenMenu::setVisible(bool visible)
{
    // QMenu hides itself before it triggers the entry, so whether this hide comes from
    // ticking the active entry or from Escape is known only once the turn is over.
    QAction* active = activeAction();
    if (visible || !isVisible() || !isTickable(active)) {
        QMenu::setVisible(visible);
        return;
    }
    m_triggered = nullptr;
    const QPointer<QAction> entry(active);
    QTimer::singleShot(0, this, [this, entry] { hideUnlessTicked(entry); });
}

void QKOOpenMenu::hideUnlessTicked(QAction* entry)
{
    if (!entry || m_triggered != entry)
        QMenu::setVisible(false);
}

void QKOOpenMenu::focusOutEvent(QFocusEvent* event)
{
    QMenu::focusOutEvent(event);
    // The user turned to another window: no entry is being ticked.
    if (event->reason() == Qt::ActiveWindowFocusReason)
        QMenu::setVisible(false);
}

void QKOOpenMenu::leaveEvent(QEvent* event)
{
    QMenu::leaveEvent(event);
    // A click outside closes at once: it can be no tick.
    setActiveAction(nullptr);
}
