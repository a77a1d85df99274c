// WorkerPool: runs the thumbnail job in worker processes, in parallel and with a time limit per file.
// The frames exchanged with the workers are in WorkerProtocol_p.h.
#include "app/WorkerPool.h"

#include "app/WorkerProtocol_p.h"
#include "files/LinkResolution.h"
#include "support/Log.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace orvel {

namespace {

using Clock = std::chrono::steady_clock;
using namespace detail;

/// The path with the links in its folder resolved, its last component kept as it is (a job
/// replaces a link at its output path rather than writing through it). Two spellings of one
/// place give the same key, also for files and folders that do not exist yet.
QString comparisonKey(const QString &path)
{
    if (path.isEmpty())
        return {};
    const qsizetype slash = path.lastIndexOf(u'/');
    const QString name = path.mid(slash + 1);
    if (slash < 0 || name.isEmpty() || name == u"." || name == u"..")
        return stringByResolvingSymlinksInPath(path);
    const QString folder
        = stringByResolvingSymlinksInPath(slash == 0 ? QStringLiteral("/") : path.left(slash));
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

bool isAtOrInside(const QString &key, const QString &folderKey)
{
    if (key.isEmpty() || folderKey.isEmpty())
        return false;
    if (folderKey == u"/")
        return true;
    return key == folderKey || (key.startsWith(folderKey) && key.at(folderKey.size()) == u'/');
}

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

constexpr int ForwardedSignals[] = { SIGINT, SIGTERM, SIGHUP, SIGQUIT };

QString signalText(int signal)
{
    const char *name = ::strsignal(signal);
    return name ? QStringLiteral("signal %1: %2").arg(signal).arg(QString::fromLocal8Bit(name))
                : QStringLiteral("signal %1").arg(signal);
}

} // namespace

struct WorkerPool::Private
{
    struct Job
    {
        qint64 tag = 0;
        QString path;
        QString sourceKey;
        QString outputKey;
        Clock::time_point deadline;
    };

    struct Worker
    {
        pid_t pid = -1;
        int fd = -1;
        bool busy = false;
        Job job;
        QByteArray input;
        // The worker's TMPDIR: whatever a killed worker (or a task it started) left there goes with it.
        QString temporaryFolder;
    };

    Options options;
    ResultHandler handler;
    std::vector<Worker> workers;
    // Holds one temporary folder per worker process; empty when it could not be made.
    QString temporaryRoot;
    int spawned = 0;
    struct sigaction previousActions[std::size(ForwardedSignals)] = {};
    bool installedHandler[std::size(ForwardedSignals)] = {};

    bool spawn(Worker &worker, QString *error);
    void reaped(Worker &worker);
    void retire(Worker &worker);
    void finishJob(Worker &worker, bool ok, const QString &reason);
    void workerDied(Worker &worker);
    void killWorker(Worker &worker, const QString &reason);
    void pump();
    void waitUntil(const std::function<bool()> &done);
    bool anyRunning(const std::function<bool(const Job &)> &predicate) const;
    Worker *idleWorker();
};

bool WorkerPool::Private::spawn(Worker &worker, QString *error)
{
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }

    const QByteArray program = QFile::encodeName(options.executable);
    std::vector<QByteArray> arguments;
    arguments.push_back(program);
    arguments.push_back("--worker");
    for (const QString &argument : options.workerArguments)
        arguments.push_back(argument.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    // The worker's end becomes its standard input and output; every other descriptor of ours is
    // close-on-exec, so nothing else leaks into it.
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, sockets[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, sockets[1], STDOUT_FILENO);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t noSignals;
    sigemptyset(&noSignals);
    sigset_t defaultSignals;
    sigemptyset(&defaultSignals);
    for (int s : { SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGCHLD, SIGUSR1, SIGUSR2 })
        sigaddset(&defaultSignals, s);
    posix_spawnattr_setsigmask(&attributes, &noSignals);
    posix_spawnattr_setsigdefault(&attributes, &defaultSignals);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(
        &attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::vector<QByteArray> environment;
    worker.temporaryFolder.clear();
    if (!temporaryRoot.isEmpty()) {
        const QString folder = temporaryRoot + QStringLiteral("/%1").arg(++spawned);
        if (::mkdir(QFile::encodeName(folder).constData(), 0700) == 0) {
            worker.temporaryFolder = folder;
            environment.push_back("TMPDIR=" + QFile::encodeName(folder));
        }
    }
    for (char **variable = environ; *variable; ++variable) {
        if (worker.temporaryFolder.isEmpty() || std::strncmp(*variable, "TMPDIR=", 7) != 0)
            environment.emplace_back(*variable);
    }
    std::vector<char *> envp;
    for (QByteArray &variable : environment)
        envp.push_back(variable.data());
    envp.push_back(nullptr);

    pid_t pid = -1;
    const int status
        = ::posix_spawn(&pid, program.constData(), &actions, &attributes, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(sockets[1]);
    if (status != 0) {
        ::close(sockets[0]);
        if (!worker.temporaryFolder.isEmpty())
            QDir(worker.temporaryFolder).removeRecursively();
        worker.temporaryFolder.clear();
        *error = QString::fromLocal8Bit(std::strerror(status));
        return false;
    }
    // Also from this side, so the group exists before we might signal it.
    ::setpgid(pid, pid);
    registerWorker(pid);
    worker.pid = pid;
    worker.fd = sockets[0];
    worker.busy = false;
    worker.input.clear();
    return true;
}

/// Forgets a worker whose process has been reaped, and removes what it left in its temporary folder.
void WorkerPool::Private::reaped(Worker &worker)
{
    unregisterWorker(worker.pid);
    worker.pid = -1;
    if (!worker.temporaryFolder.isEmpty())
        QDir(worker.temporaryFolder).removeRecursively();
    worker.temporaryFolder.clear();
}

/// Ends an idle worker: closing its input makes it leave its loop.
void WorkerPool::Private::retire(Worker &worker)
{
    if (worker.fd >= 0)
        ::close(worker.fd);
    worker.fd = -1;
    if (worker.pid <= 0)
        return;
    int status = 0;
    const auto giveUp = Clock::now() + std::chrono::seconds(2);
    while (::waitpid(worker.pid, &status, WNOHANG) == 0) {
        if (Clock::now() > giveUp) {
            ::kill(-worker.pid, SIGKILL);
            while (::waitpid(worker.pid, &status, 0) < 0 && errno == EINTR) { }
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    reaped(worker);
}

void WorkerPool::Private::finishJob(Worker &worker, bool ok, const QString &reason)
{
    Result result;
    result.tag = worker.job.tag;
    result.path = worker.job.path;
    result.ok = ok;
    result.reason = ok ? QString() : (reason.isEmpty() ? QStringLiteral("no thumbnail made") : reason);
    worker.busy = false;
    worker.job = Job();
    worker.input.clear();
    if (handler)
        handler(result);
}

/// The worker's connection ended while it had a job: it crashed or exited. Its job answers NO
/// with what happened, and whatever it started is killed with it.
void WorkerPool::Private::workerDied(Worker &worker)
{
    ::close(worker.fd);
    worker.fd = -1;
    // Wait for the exit without reaping, so the process group cannot vanish (and its id be
    // reused) before we have killed what is left in it.
    siginfo_t info;
    std::memset(&info, 0, sizeof info);
    const auto giveUp = Clock::now() + std::chrono::seconds(2);
    for (;;) {
        info.si_pid = 0;
        if (::waitid(P_PID, id_t(worker.pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0)
            break;
        if (Clock::now() > giveUp) {
            // It closed its end but goes on running: it cannot be trusted with another file.
            ::kill(-worker.pid, SIGKILL);
            info.si_code = 0;
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ::kill(-worker.pid, SIGKILL);
    int status = 0;
    while (::waitpid(worker.pid, &status, 0) < 0 && errno == EINTR) { }
    reaped(worker);

    QString reason;
    if (info.si_code == CLD_KILLED || info.si_code == CLD_DUMPED)
        reason = QStringLiteral("the decoder crashed (%1)").arg(signalText(info.si_status));
    else if (info.si_code == CLD_EXITED)
        reason = QStringLiteral("the decoder exited unexpectedly (exit status %1)").arg(info.si_status);
    else
        reason = QStringLiteral("the decoder stopped answering");
    finishJob(worker, false, reason);
}

/// Kills a busy worker with everything it started; its job answers NO for reason.
void WorkerPool::Private::killWorker(Worker &worker, const QString &reason)
{
    ::kill(-worker.pid, SIGKILL);
    ::close(worker.fd);
    worker.fd = -1;
    int status = 0;
    while (::waitpid(worker.pid, &status, 0) < 0 && errno == EINTR) { }
    reaped(worker);
    finishJob(worker, false, reason);
}

/// Waits for the next answer, death or deadline of a busy worker and deals with it.
void WorkerPool::Private::pump()
{
    std::vector<pollfd> fds;
    std::vector<Worker *> polled;
    Clock::time_point earliest = Clock::time_point::max();
    for (Worker &worker : workers) {
        if (!worker.busy)
            continue;
        fds.push_back({ worker.fd, POLLIN, 0 });
        polled.push_back(&worker);
        if (options.timeoutSeconds > 0)
            earliest = std::min(earliest, worker.job.deadline);
    }
    if (fds.empty())
        return;

    int timeout = -1;
    if (earliest != Clock::time_point::max()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(earliest - Clock::now()).count();
        timeout = int(std::clamp<long long>(left, 0, INT_MAX));
    }
    int ready = ::poll(fds.data(), nfds_t(fds.size()), timeout);
    if (ready < 0 && errno != EINTR)
        ready = 0;

    for (size_t i = 0; i < fds.size() && ready > 0; ++i) {
        if (fds[i].revents == 0)
            continue;
        Worker &worker = *polled[i];
        char buffer[4096];
        ssize_t n = ::read(worker.fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            workerDied(worker);
            continue;
        }
        worker.input.append(buffer, n);
        quint32 size = 0;
        if (worker.input.size() < qsizetype(sizeof size))
            continue;
        std::memcpy(&size, worker.input.constData(), sizeof size);
        if (size > MaxFrameBytes || size < 1) {
            killWorker(worker, QStringLiteral("the decoder's worker process gave a garbled answer"));
            continue;
        }
        if (worker.input.size() < qsizetype(sizeof size + size))
            continue;
        const char *payload = worker.input.constData() + sizeof size;
        const bool ok = payload[0] == 1;
        const QString reason = stringFromUtf16Bytes(payload + 1, qsizetype(size) - 1);
        finishJob(worker, ok, reason);
    }

    if (options.timeoutSeconds <= 0)
        return;
    const auto now = Clock::now();
    for (Worker &worker : workers) {
        if (worker.busy && worker.job.deadline <= now)
            killWorker(worker, QStringLiteral("timed out after %1 s").arg(options.timeoutSeconds));
    }
}

void WorkerPool::Private::waitUntil(const std::function<bool()> &done)
{
    while (!done()) {
        const bool anyBusy
            = std::any_of(workers.begin(), workers.end(), [](const Worker &w) { return w.busy; });
        if (!anyBusy)
            return;
        pump();
    }
}

bool WorkerPool::Private::anyRunning(const std::function<bool(const Job &)> &predicate) const
{
    return std::any_of(
        workers.begin(), workers.end(), [&](const Worker &w) { return w.busy && predicate(w.job); });
}

WorkerPool::Private::Worker *WorkerPool::Private::idleWorker()
{
    for (Worker &worker : workers) {
        if (!worker.busy)
            return &worker;
    }
    return nullptr;
}

WorkerPool::WorkerPool(const Options &options, ResultHandler handler)
    : d(std::make_unique<Private>())
{
    d->options = options;
    d->options.workers = std::max(1, options.workers);
    d->options.timeoutSeconds = std::max(0, options.timeoutSeconds);
    d->handler = std::move(handler);
    d->workers.resize(size_t(d->options.workers));
    QByteArray root = QFile::encodeName(QDir::tempPath() + QStringLiteral("/orvel-thumbs-workers-XXXXXX"));
    if (::mkdtemp(root.data()))
        d->temporaryRoot = QFile::decodeName(root);

    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_handler = killWorkersAndDie;
    sigemptyset(&action.sa_mask);
    for (size_t i = 0; i < std::size(ForwardedSignals); ++i) {
        // Leave a handler that someone else installed (or an ignored signal) alone.
        struct sigaction current;
        if (::sigaction(ForwardedSignals[i], nullptr, &current) == 0 && current.sa_handler == SIG_DFL
            && !(current.sa_flags & SA_SIGINFO)) {
            d->installedHandler[i] = ::sigaction(ForwardedSignals[i], &action, &d->previousActions[i]) == 0;
        }
    }
}

WorkerPool::~WorkerPool()
{
    // Tell every worker first, then wait for them, so they wind down side by side.
    for (Private::Worker &worker : d->workers) {
        if (worker.busy && worker.pid > 0)
            ::kill(-worker.pid, SIGKILL);
        if (worker.fd >= 0)
            ::close(worker.fd);
        worker.fd = -1;
    }
    for (Private::Worker &worker : d->workers)
        d->retire(worker);
    if (!d->temporaryRoot.isEmpty())
        QDir(d->temporaryRoot).removeRecursively();
    for (size_t i = 0; i < std::size(ForwardedSignals); ++i) {
        if (d->installedHandler[i])
            ::sigaction(ForwardedSignals[i], &d->previousActions[i], nullptr);
    }
}

void WorkerPool::submit(qint64 tag, const QString &path, const QString &outputPath)
{
    Private::Job job;
    job.tag = tag;
    job.path = path;
    job.sourceKey = comparisonKey(path);
    job.outputKey = comparisonKey(outputPath);

    auto conflicts = [&job](const Private::Job &running) {
        const bool writesOurs = !running.outputKey.isEmpty()
            && (running.outputKey == job.sourceKey || running.outputKey == job.outputKey);
        const bool readsOurs = running.sourceKey == job.sourceKey
            || (!job.outputKey.isEmpty() && running.sourceKey == job.outputKey);
        return writesOurs || readsOurs;
    };
    d->waitUntil([&] { return !d->anyRunning(conflicts) && d->idleWorker(); });

    // A worker may have died while idle (killed from outside); then a fresh one takes the file.
    for (int attempt = 0; attempt < 2; ++attempt) {
        Private::Worker &worker = *d->idleWorker();
        QString error;
        if (worker.pid <= 0 && !d->spawn(worker, &error)) {
            worker.job = job;
            d->finishJob(worker, false, QStringLiteral("cannot start a worker process: %1").arg(error));
            return;
        }
        if (writeFrame(worker.fd, utf16Bytes(path))) {
            worker.busy = true;
            worker.job = job;
            worker.job.deadline = Clock::now() + std::chrono::seconds(d->options.timeoutSeconds);
            return;
        }
        // The worker's end is gone. Reap it; a new one is started on the next attempt.
        ::kill(-worker.pid, SIGKILL);
        ::close(worker.fd);
        worker.fd = -1;
        int status = 0;
        while (::waitpid(worker.pid, &status, 0) < 0 && errno == EINTR) { }
        d->reaped(worker);
    }
    Private::Worker &worker = *d->idleWorker();
    worker.job = job;
    d->finishJob(worker, false, QStringLiteral("cannot hand the file to a worker process"));
}

void WorkerPool::waitForChangesAt(const QString &path)
{
    if (d->anyRunning([](const Private::Job &) { return true; })) {
        struct stat st;
        if (::lstat(QFile::encodeName(path).constData(), &st) == 0 && S_ISLNK(st.st_mode)) {
            waitForAll();
            return;
        }
        waitForOutputsInside(path);
    }
}

void WorkerPool::waitForOutputsInside(const QString &folder)
{
    const QString key = comparisonKey(folder);
    d->waitUntil([&] {
        return !d->anyRunning([&](const Private::Job &job) { return isAtOrInside(job.outputKey, key); });
    });
}

void WorkerPool::waitForAll()
{
    d->waitUntil([] { return false; });
}

int WorkerPool::runningCount() const
{
    return int(
        std::count_if(d->workers.begin(), d->workers.end(), [](const Private::Worker &w) { return w.busy; }));
}

qint64 WorkerPool::defaultMemoryLimitMiB(int workers)
{
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    const qint64 physical = qint64(pages) * pageSize / (1024 * 1024);
    return std::max<qint64>(1024, physical * 3 / 4 / std::max(1, workers));
}

QList<qint64> WorkerPool::workerProcessIds() const
{
    QList<qint64> busy;
    QList<qint64> idle;
    for (const Private::Worker &worker : d->workers) {
        if (worker.pid > 0)
            (worker.busy ? busy : idle).append(worker.pid);
    }
    return busy + idle;
}

} // namespace orvel
