#pragma once

#include "koGlobal.h"

#include <QLineEdit>

// A search field. Widgets such as a filter button can sit inside it, after the text.
class KOVIS_EXPORT QKOSearchBox : public QLineEdit
{
    Q_OBJECT
public:
    explicit QKOSearchBox(QWidget* parent = nullptr);

    // The box takes ownership of the widget.
    void addWidget(QWidget* widget);
    // A search line shows a magnifier, a hint and a clear button.
    void setSearchLineStyle(bool searchLine);

signals:
    // On every change of the text, typed or set.
    void searchChanged(const QString& text);

private:
    QAction* m_searchIcon = nullptr;
};
