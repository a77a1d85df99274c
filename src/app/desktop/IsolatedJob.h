// IsolatedJob: the thumbnail job of the desktop application, run in a worker process.
#pragma once

#include <QString>

#include <memory>

namespace orvel {

class UserDefaults;
class WorkerPool;

/// Runs the thumbnail job of one file at a time in a worker process of orvel-thumbs, so that a
/// decoder that crashes or hangs on a hostile file fails that file only. The worker reads the
/// settings from the store's file, so a change stored by this process reaches it once stored.
class IsolatedJob
{
public:
    /// executable is orvel-thumbs; when it (or the engine beside it) is missing the job runs in
    /// this process instead.
    explicit IsolatedJob(
        const QString &executable, int timeoutSeconds = 120, UserDefaults *defaults = nullptr);
    ~IsolatedJob();
    IsolatedJob(const IsolatedJob &) = delete;
    IsolatedJob &operator=(const IsolatedJob &) = delete;

    /// orvel-thumbs beside the running program (the build folder or the installed bin folder).
    [[nodiscard]] static QString defaultExecutable();

    /// Whether the jobs run in worker processes.
    bool isIsolated() const { return !m_executable.isEmpty(); }

    /// The thumbnail job for the file at path (resolved). Answers YES or NO; on NO, error (when
    /// given) says why and skipped (when given) whether the file is none of the kinds the job
    /// reads. On the main thread the event loop runs, user input included, until the worker has
    /// answered; a call made meanwhile (from an event handler) answers NO at once.
    bool processFile(const QString &path, QString *error = nullptr, bool *skipped = nullptr);

    /// Ends the job running in processFile(): its worker is killed with whatever it started, the
    /// temporary file of a thumbnail being written is removed, and processFile() answers NO with
    /// the reason "cancelled". Nothing when no job is running, nor for a job run in this process
    /// (no worker executable), which is never cut short.
    void cancel();
    /// Whether processFile() is waiting for a worker.
    bool isRunning() const { return m_running; }
    /// The process id of the worker making the current file; 0 when none.
    qint64 workerProcessId() const { return m_workerPid; }

private:
    QString m_executable;
    int m_timeoutSeconds = 120;
    UserDefaults *m_defaults = nullptr;
    std::unique_ptr<WorkerPool> m_pool;
    qint64 m_nextTag = 0;
    bool m_lastOk = false;
    bool m_lastSkipped = false;
    QString m_lastReason;
    qint64 m_workerPid = 0;
    bool m_running = false;
    bool m_cancelled = false;
};

} // namespace orvel
