#pragma once

#include "koGlobal.h"

#include <QMenu>
#include <QPointer>

// A menu that stays open while the user ticks its checkable entries, so that several
// can be switched in one go. Other entries, Escape and a click elsewhere close it as usual.
class KOVIS_EXPORT QKOOpenMenu : public QMenu
{
    Q_OBJECT
public:
    explicit QKOOpenMenu(QWidget* parent = nullptr);
    explicit QKOOpenMenu(const QString& title, QWidget* parent = nullptr);

    void setVisible(bool visible) override;

protected:
    void focusOutEvent(QFocusEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void hideUnlessTicked(QAction* entry);

    // The entry last triggered, to tell a tick from another reason to close.
    QPointer<QAction> m_triggered;
};
