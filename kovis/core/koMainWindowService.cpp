#include <kovis/koMainWindowService.h>

namespace {

// A plug-in's string literals vanish when the plug-in is unloaded; keep own copies.
QString ownCopy(const QString& text)
{
    QString copy = text;
    copy.detach();
    return copy;
}

} // namespace

void koMainWindowService::registerModule(const QString& title, const QString& group, QWidget* window,
                                         const QString& toolClip, const QIcon& icon, const QString& caption,
                                         bool floating)
{
    m_modules.append({ownCopy(title), ownCopy(group), window, ownCopy(toolClip), icon, ownCopy(caption), floating});
    emit moduleRegistered(m_modules.size() - 1);
}
