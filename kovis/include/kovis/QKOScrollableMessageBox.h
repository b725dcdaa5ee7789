#pragma once

#include "koGlobal.h"

#include <QMessageBox>

class QLabel;
class QScrollArea;

// A message box whose text may be too long for the screen: makeScrollable() shows the
// text in a scroll area no taller than half the screen.
class KOVIS_EXPORT QKOScrollableMessageBox : public QMessageBox
{
    Q_OBJECT
public:
    explicit QKOScrollableMessageBox(QWidget* parent = nullptr);
    QKOScrollableMessageBox(Icon icon, const QString& title, const QString& text, StandardButtons buttons = NoButton,
                            QWidget* parent = nullptr);

    // Call once the text is set.
    void makeScrollable();

private:
    QScrollArea* m_scrollArea = nullptr;
};
