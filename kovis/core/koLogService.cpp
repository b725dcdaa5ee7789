#include <kovis/koLogService.h>

#include <QDebug>

namespace {
constexpr int maxEntries = 1000;
}

void koLogService::logInfo(const QString& category, const QString& message)
{
    append(Info, category, message);
}

void koLogService::logWarning(const QString& category, const QString& message)
{
    append(Warning, category, message);
}

void koLogService::logError(const QString& category, const QString& message)
{
    append(Error, category, message);
}

void koLogService::append(Level level, const QString& category, const QString& message)
{
    if (m_entries.size() >= maxEntries)
        m_entries.removeFirst();
    m_entries.append({level, category, message});
    if (level != Info)
        qInfo().noquote() << category + QLatin1String(": ") + message;
    emit messageLogged(level, category, message);
}
