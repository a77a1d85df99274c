// One worker process of WorkerPool, owned from its start to its reaping.
#include "app/batch/WorkerProcess_p.h"

#include "support/SpawnAttributes.h"

#include <QDir>
#include <QFile>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

namespace orvel::detail {

namespace {

// The process groups of live workers, for the signal handler below. Fixed slots, because a
// signal handler may neither allocate nor lock.
constexpr int MaxRegisteredWorkers = 1024;
std::atomic<pid_t> registeredWorkers[MaxRegisteredWorkers];

void registerWorker(pid_t pid)
{
    for (auto &slot : registeredWorkers) {
        pid_t empty = 0;
        if (slot.compare_exchange_strong(empty, pid))
            return;
    }
}

void unregisterWorker(pid_t pid)
{
    for (auto &slot : registeredWorkers) {
        pid_t expected = pid;
        if (slot.compare_exchange_strong(expected, 0))
            return;
    }
}

/// The environment of this process with TMPDIR replaced by temporaryFolder when it is not empty.
std::vector<QByteArray> workerEnvironment(const QString &temporaryFolder)
{
    std::vector<QByteArray> environment;
    if (!temporaryFolder.isEmpty())
        environment.push_back("TMPDIR=" + QFile::encodeName(temporaryFolder));
    for (char **variable = environ; *variable; ++variable) {
        if (temporaryFolder.isEmpty() || std::strncmp(*variable, "TMPDIR=", 7) != 0)
            environment.emplace_back(*variable);
    }
    return environment;
}

std::vector<char *> pointers(std::vector<QByteArray> &strings)
{
    std::vector<char *> result;
    for (QByteArray &s : strings)
        result.push_back(s.data());
    result.push_back(nullptr);
    return result;
}

} // namespace

// Workers run in process groups of their own, so that a timed-out worker can be killed together
// with the tasks it started (Ghostscript, for one). Those groups do not get the terminal's
// interrupt, so the batch passes a fatal signal on to them before it dies.
extern "C" void killWorkersAndDie(int signal)
{
    for (auto &slot : registeredWorkers) {
        const pid_t pid = slot.load();
        if (pid > 0)
            ::kill(-pid, SIGKILL);
    }
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

std::unique_ptr<WorkerProcess> WorkerProcess::start(const QByteArray &program,
    const std::vector<QByteArray> &arguments, const QString &temporaryFolder, QString *error)
{
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        *error = QString::fromLocal8Bit(std::strerror(errno));
        return nullptr;
    }
    std::unique_ptr<WorkerProcess> process(new WorkerProcess);
    process->m_channel = sockets[0];
    if (!temporaryFolder.isEmpty() && ::mkdir(QFile::encodeName(temporaryFolder).constData(), 0700) == 0)
        process->m_temporaryFolder = temporaryFolder;

    // The worker's end becomes its standard input and output; every other descriptor of ours is
    // close-on-exec, so nothing else leaks into it.
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, sockets[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, sockets[1], STDOUT_FILENO);

    const SpawnAttributes attributes(true);

    std::vector<QByteArray> argv = arguments;
    std::vector<QByteArray> envp = workerEnvironment(process->m_temporaryFolder);
    pid_t pid = -1;
    const int status = ::posix_spawn(
        &pid, program.constData(), &actions, attributes.get(), pointers(argv).data(), pointers(envp).data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(sockets[1]);
    if (status != 0) {
        *error = QString::fromLocal8Bit(std::strerror(status));
        return nullptr; // the destructor closes our end and removes the folder
    }
    // Also from this side, so the group exists before we might signal it.
    ::setpgid(pid, pid);
    registerWorker(pid);
    process->m_pid = pid;
    return process;
}

WorkerProcess::~WorkerProcess()
{
    if (m_pid > 0) {
        ::kill(-m_pid, SIGKILL);
        int status = 0;
        while (::waitpid(m_pid, &status, 0) < 0 && errno == EINTR) { }
        unregisterWorker(m_pid);
    }
    if (m_channel >= 0)
        ::close(m_channel);
    if (!m_temporaryFolder.isEmpty())
        QDir(m_temporaryFolder).removeRecursively();
}

std::optional<siginfo_t> WorkerProcess::closeAndWaitForExit(std::chrono::milliseconds timeout)
{
    if (m_channel >= 0)
        ::close(m_channel);
    m_channel = -1;
    if (m_pid <= 0)
        return std::nullopt;
    const auto giveUp = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        siginfo_t info;
        std::memset(&info, 0, sizeof info);
        if (::waitid(P_PID, id_t(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0)
            return info;
        if (std::chrono::steady_clock::now() > giveUp)
            return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

} // namespace orvel::detail
