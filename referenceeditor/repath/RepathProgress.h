#pragma once

#include <QMutex>
#include <QString>

#include <atomic>

// What a file search running off the GUI thread has reached, for the window to show,
// and the user's Cancel, for the search to heed.
class RepathProgress
{
public:
    virtual ~RepathProgress() = default;

    // From the search's thread.
    virtual void enterFolder(const QString& folder);
    void addFile() { m_files.fetch_add(1, std::memory_order_relaxed); }

    // From any thread.
    QString folder() const;
    int folders() const { return m_folders.load(std::memory_order_relaxed); }
    int files() const { return m_files.load(std::memory_order_relaxed); }
    void cancel() { m_cancelled.store(true); }
    bool isCancelled() const { return m_cancelled.load(); }

private:
    mutable QMutex m_mutex;
    QString m_folder;
    std::atomic<int> m_folders{0};
    std::atomic<int> m_files{0};
    std::atomic<bool> m_cancelled{false};
};
