#pragma once

#include "ReferenceDialogCode.h"

class QString;
class QWidget;

// The confirmation before a command changes references: a warning with OK and Cancel,
// Cancel the default, so that a hasty Enter changes nothing.
class koReferenceQuestion
{
public:
    static ReferenceDialogCode ask(QWidget* parent, const QString& title, const QString& text);
};
