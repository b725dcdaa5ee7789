#include <kovis/koUndoString.h>

koUndoString::koUndoString(const char* context, const QString& text)
    : m_context(context)
    , m_text(text)
{
}
