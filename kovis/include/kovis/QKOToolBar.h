#pragma once

#include "koGlobal.h"

#include <QToolBar>

// A tool bar with the host's tool icon size.
class KOVIS_EXPORT QKOToolBar : public QToolBar
{
    Q_OBJECT
public:
    explicit QKOToolBar(const QString& title, QWidget* parent = nullptr);
};
