// Not API: one worker process of WorkerPool, owned from its start to its reaping.
#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>
#include <signal.h>
#include <sys/types.h>
#include <vector>

namespace orvel::detail {

/// A worker process: its end of the socket that is the worker's standard input and output, its
/// process group (the worker and every task it starts) and its temporary folder. Destroying it
/// kills the group, reaps the worker and removes the folder, whatever state it is in.
class WorkerProcess
{
public:
    /// Starts program with arguments (argv[0] included) in a process group of its own, its
    /// TMPDIR set to temporaryFolder when that is not empty (the folder is made here and removed
    /// with the process). Answers null with error set when it cannot be started.
    [[nodiscard]] static std::unique_ptr<WorkerProcess> start(const QByteArray &program,
        const std::vector<QByteArray> &arguments, const QString &temporaryFolder, QString *error);

    ~WorkerProcess();
    WorkerProcess(const WorkerProcess &) = delete;
    WorkerProcess &operator=(const WorkerProcess &) = delete;

    pid_t pid() const { return m_pid; }
    /// The socket to the worker; -1 once closed.
    int channel() const { return m_channel; }

    /// Closes the socket (a worker between files then leaves its loop) and waits up to timeout
    /// for the worker to end, without reaping it, so its process group stays reserved until the
    /// destructor has killed what is left in it. Answers how it ended; nullopt when it did not.
    std::optional<siginfo_t> closeAndWaitForExit(std::chrono::milliseconds timeout);

private:
    WorkerProcess() = default;

    pid_t m_pid = -1;
    int m_channel = -1;
    QString m_temporaryFolder;
};

/// Kills the process groups of every live worker of this process and dies of signal; installed
/// for the fatal signals while a pool runs.
extern "C" void killWorkersAndDie(int signal);

} // namespace orvel::detail
