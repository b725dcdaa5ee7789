#pragma once

#include "koGlobal.h"

#include <QMenu>

// A menu that stays open while the user ticks its checkable entries, so that several
// can be switched in one go. Other entries close it as usual.
class KOVIS_EXPORT QKOOpenMenu : public QMenu
{
    Q_OBJECT
public:
    explicit QKOOpenMenu(QWidget* parent = nullptr);
    explicit QKOOpenMenu(const QString& title, QWidget* parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool toggle(QAction* action);

    QAction* m_pressed = nullptr;
};
