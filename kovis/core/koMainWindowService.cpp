#include <kovis/koMainWindowService.h>

#include "koOwnedText.h"

void koMainWindowService::registerModule(const QString& title, const QString& group, QWidget* window,
                                         const QString& toolClip, const QIcon& icon, const QString& caption,
                                         bool floating)
{
    m_modules.append({koOwnedText(title), koOwnedText(group), window, koOwnedText(toolClip), icon, koOwnedText(caption), floating});
    emit moduleRegistered(m_modules.size() - 1);
}
