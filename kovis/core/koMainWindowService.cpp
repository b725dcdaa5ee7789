#include <kovis/koMainWindowService.h>

void koMainWindowService::registerModule(const QString& title, const QString& group, QWidget* window,
                                         const QString& toolClip, const QIcon& icon, const QString& caption,
                                         bool floating)
{
    m_modules.append({title, group, window, toolClip, icon, caption, floating});
    emit moduleRegistered(m_modules.size() - 1);
}
