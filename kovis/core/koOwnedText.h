#pragma once

#include <QString>

// A copy of the text in memory of its own. A plug-in's string literals vanish when the
// plug-in is unloaded, so what the host keeps longer must not share their data.
inline QString koOwnedText(const QString& text)
{
    QString copy = text;
    copy.detach();
    return copy;
}
