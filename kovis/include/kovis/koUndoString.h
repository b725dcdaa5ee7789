#pragma once

#include "koGlobal.h"

#include <QString>

// The label of one undo step and the context it was made in.
class KOVIS_EXPORT koUndoString
{
public:
    koUndoString(const char* context, const QString& text);

    const char* context() const { return m_context; }
    QString text() const { return m_text; }

private:
    const char* m_context;
    QString m_text;
};
