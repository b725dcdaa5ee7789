#pragma once

#include "koBaseService.h"

#include <QList>
#include <QString>

// The host's log: messages of command flows and of file reading and writing.
class KOVIS_EXPORT koLogService : public koBaseService
{
    Q_OBJECT
public:
    enum Level { Info, Warning, Error };
    Q_ENUM(Level)

    struct Entry
    {
        Level level;
        QString category;
        QString message;
    };

    using koBaseService::koBaseService;

    virtual void logInfo(const QString& category, const QString& message);
    virtual void logWarning(const QString& category, const QString& message);
    virtual void logError(const QString& category, const QString& message);

    // The latest entries, oldest first; the log keeps a bounded number of them.
    QList<Entry> entries() const { return m_entries; }
    // The latest message, empty when the log is.
    QString lastMessage() const { return m_entries.isEmpty() ? QString() : m_entries.last().message; }
    void clear() { m_entries.clear(); }

signals:
    void messageLogged(koLogService::Level level, const QString& category, const QString& message);

private:
    void append(Level level, const QString& category, const QString& message);

    QList<Entry> m_entries;
};
