// WorkerPool: runs the thumbnail job in worker processes, in parallel and with a time limit per file.
// The frames exchanged with the workers are in WorkerProtocol.h.
#include "app/batch/WorkerPool.h"

#include "app/batch/WorkerProcess_p.h"
#include "app/shared/WorkerProtocol.h"
#include "files/FileManager.h"
#include "files/LinkResolution.h"
#include "support/Log.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace orvel {

namespace {

using Clock = std::chrono::steady_clock;
using namespace detail;

/// What a worker's start is taken to cost until one has been measured.
constexpr Clock::duration DefaultStartCost = std::chrono::milliseconds(100);
using namespace Qt::StringLiterals;

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
        Clock::time_point started;
    };

    /// A slot of the pool: empty (no process), starting (a process that has not said it is
    /// ready and has no file), idle or busy.
    struct Worker
    {
        std::unique_ptr<WorkerProcess> process;
        bool busy = false;
        bool ready = false;
        Clock::time_point spawnedAt;
        Job job;
        QByteArray input;

        bool isStarting() const { return process && !ready && !busy; }
        bool isIdle() const { return process && ready && !busy; }
    };

    Options options;
    ResultHandler handler;
    std::vector<Worker> workers;
    // Holds one temporary folder per worker process; empty when it could not be made.
    QString temporaryRoot;
    int spawned = 0;
    struct sigaction previousActions[std::size(ForwardedSignals)] = {};
    bool installedHandler[std::size(ForwardedSignals)] = {};

    // What decides when another worker is started (see the header).
    Clock::duration startCost = DefaultStartCost;
    Clock::duration timedJobs {};
    qint64 timedJobCount = 0;
    qint64 filesLeft = -1;
    // The time files have waited for a busy worker since a worker last waited for a file or
    // another was started.
    Clock::duration backlog {};
    bool growthFailed = false;

    bool spawn(Worker &worker, QString *error);
    void finishJob(
        Worker &worker, bool ok, const QString &reason, bool skipped = false, qint64 bytesWritten = 0);
    void workerDied(Worker &worker);
    void killWorker(Worker &worker, const QString &reason);
    void dropWorker(Worker &worker);
    void readFrom(Worker &worker);
    void markReady(Worker &worker);
    void pump(Clock::time_point wake = Clock::time_point::max());
    void waitUntil(const std::function<bool()> &done);
    bool anyRunning(const std::function<bool(const Job &)> &predicate) const;
    Worker *takeableWorker();
    bool shouldGrow() const;
    void grow();
};

bool WorkerPool::Private::spawn(Worker &worker, QString *error)
{
    std::vector<QByteArray> arguments { QFile::encodeName(options.executable) };
    for (const QString &argument : options.worker.toArguments())
        arguments.push_back(argument.toLocal8Bit());
    ++spawned;
    const QString folder
        = temporaryRoot.isEmpty() ? QString() : temporaryRoot + u'/' + QString::number(spawned);
    worker.process = WorkerProcess::start(arguments.front(), arguments, folder, error);
    worker.busy = false;
    worker.ready = false;
    worker.spawnedAt = Clock::now();
    worker.input.clear();
    return worker.process != nullptr;
}

void WorkerPool::Private::finishJob(
    Worker &worker, bool ok, const QString &reason, bool skipped, qint64 bytesWritten)
{
    Result result;
    result.bytesWritten = ok ? bytesWritten : 0;
    result.tag = worker.job.tag;
    result.path = worker.job.path;
    result.ok = ok;
    result.skipped = !ok && skipped;
    result.reason = ok ? QString() : (reason.isEmpty() ? u"no thumbnail made"_s : reason);
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
    // A worker that closed its end but goes on running cannot be trusted with another file.
    const std::optional<siginfo_t> exit = worker.process->closeAndWaitForExit(std::chrono::seconds(2));
    worker.process.reset();
    QString reason = u"the decoder stopped answering"_s;
    if (exit && (exit->si_code == CLD_KILLED || exit->si_code == CLD_DUMPED))
        reason = u"the decoder crashed (%1)"_s.arg(signalText(exit->si_status));
    else if (exit && exit->si_code == CLD_EXITED)
        reason = u"the decoder exited unexpectedly (exit status %1)"_s.arg(exit->si_status);
    finishJob(worker, false, reason);
}

/// Kills a busy worker with everything it started; its job answers NO for reason.
void WorkerPool::Private::killWorker(Worker &worker, const QString &reason)
{
    worker.process.reset();
    finishJob(worker, false, reason);
}

/// Ends a worker without a file (one that died or misbehaved while starting): its slot is empty
/// again. A worker that cannot start is not tried again as an extra one.
void WorkerPool::Private::dropWorker(Worker &worker)
{
    if (!worker.ready)
        growthFailed = true;
    worker.process.reset();
    worker.ready = false;
    worker.input.clear();
}

void WorkerPool::Private::markReady(Worker &worker)
{
    if (worker.ready)
        return;
    worker.ready = true;
    const Clock::time_point now = Clock::now();
    startCost = now - worker.spawnedAt;
    // A file handed over while the worker was starting begins now.
    if (worker.busy)
        worker.job.started = now;
}

/// Reads what a busy or starting worker sent and deals with every whole frame of it.
void WorkerPool::Private::readFrom(Worker &worker)
{
    char buffer[4096];
    const ssize_t n = ::read(worker.process->channel(), buffer, sizeof buffer);
    if (n < 0 && errno == EINTR)
        return;
    if (n <= 0) {
        if (worker.busy)
            workerDied(worker);
        else
            dropWorker(worker);
        return;
    }
    worker.input.append(buffer, n);
    for (;;) {
        quint32 size = 0;
        if (worker.input.size() < qsizetype(sizeof size))
            return;
        std::memcpy(&size, worker.input.constData(), sizeof size);
        if (size > MaxFrameBytes || size < 1) {
            if (worker.busy)
                killWorker(worker, QStringLiteral("the decoder's worker process gave a garbled answer"));
            else
                dropWorker(worker);
            return;
        }
        if (worker.input.size() < qsizetype(sizeof size + size))
            return;
        const QByteArray payload = worker.input.mid(sizeof size, size);
        worker.input.remove(0, qsizetype(sizeof size + size));
        if (payload[0] == WorkerReady) {
            markReady(worker);
            continue;
        }
        if (!worker.busy) {
            dropWorker(worker); // an answer to nothing
            return;
        }
        if (payload[0] == AnswerMade) {
            timedJobs += Clock::now() - worker.job.started;
            ++timedJobCount;
            finishJob(
                worker, true, QString(), false, bytesWrittenInAnswer(payload.constData(), payload.size()));
            return;
        }
        const QString reason = stringFromUtf16Bytes(payload.constData() + 1, payload.size() - 1);
        timedJobs += Clock::now() - worker.job.started;
        ++timedJobCount;
        finishJob(worker, false, reason, payload[0] == AnswerSkipped);
        return;
    }
}

/// Waits until wake for the next answer, readiness, death or deadline of a worker and deals
/// with it.
void WorkerPool::Private::pump(Clock::time_point wake)
{
    std::vector<pollfd> fds;
    std::vector<Worker *> polled;
    Clock::time_point earliest = wake;
    bool anyBusy = false;
    for (Worker &worker : workers) {
        if (!worker.busy && !worker.isStarting())
            continue;
        fds.push_back({ worker.process->channel(), POLLIN, 0 });
        polled.push_back(&worker);
        anyBusy = anyBusy || worker.busy;
        if (worker.busy && options.timeoutSeconds > 0)
            earliest = std::min(earliest, worker.job.deadline);
    }
    if (!anyBusy)
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
        if (fds[i].revents != 0)
            readFrom(*polled[i]);
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

/// The worker that takes the next file now: an idle one; else, when no worker is busy (so none
/// will become free), one still starting, else an empty slot. Null while the file must wait.
WorkerPool::Private::Worker *WorkerPool::Private::takeableWorker()
{
    for (Worker &worker : workers) {
        if (worker.isIdle())
            return &worker;
    }
    if (std::any_of(workers.begin(), workers.end(), [](const Worker &w) { return w.busy; }))
        return nullptr;
    for (Worker &worker : workers) {
        if (worker.isStarting())
            return &worker;
    }
    for (Worker &worker : workers) {
        if (!worker.process)
            return &worker;
    }
    return nullptr;
}

/// Whether the pool has room for another worker and the work in sight pays for starting one:
/// every started worker is ready and busy, none is starting, and when the number of files left
/// is known, one worker's share of them is expected to take longer than a start.
bool WorkerPool::Private::shouldGrow() const
{
    if (growthFailed)
        return false;
    int live = 0;
    bool emptySlot = false;
    for (const Worker &worker : workers) {
        if (!worker.process)
            emptySlot = true;
        else if (!worker.busy || !worker.ready)
            return false;
        else
            ++live;
    }
    if (!emptySlot || live == 0)
        return false;
    if (filesLeft < 0 || timedJobCount == 0)
        return true;
    const Clock::duration perFile = timedJobs / timedJobCount;
    // The file waiting and those after it.
    return perFile * (filesLeft + 1) / live > startCost;
}

void WorkerPool::Private::grow()
{
    for (Worker &worker : workers) {
        if (worker.process)
            continue;
        QString error;
        if (!spawn(worker, &error)) {
            worker.process.reset();
            growthFailed = true;
            logMessage(u"cannot start another worker process: %1"_s.arg(error));
        }
        return;
    }
}

WorkerPool::WorkerPool(const Options &options, ResultHandler handler)
    : d(std::make_unique<Private>())
{
    d->options = options;
    d->options.workers = std::max(1, options.workers);
    d->options.timeoutSeconds = std::max(0, options.timeoutSeconds);
    if (d->options.worker.threads <= 0)
        d->options.worker.threads = std::max(1, QThread::idealThreadCount() / d->options.workers);
    if (d->options.worker.memoryLimitMiB < 0)
        d->options.worker.memoryLimitMiB = defaultMemoryLimitMiB(d->options.workers);
    d->options.worker.parentPid = ::getpid();
    d->options.worker.timeoutSeconds = d->options.timeoutSeconds;
    d->handler = std::move(handler);
    d->workers.resize(size_t(d->options.workers));
    QByteArray root = QFile::encodeName(QDir::tempPath() + QStringLiteral("/orvel-thumbs-workers-XXXXXX"));
    if (::mkdtemp(root.data()))
        d->temporaryRoot = QFile::decodeName(root);

    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_handler = detail::killWorkersAndDie;
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
    // Busy workers are killed at once; idle ones are told to leave (their input closed) first
    // and waited for side by side.
    for (Private::Worker &worker : d->workers) {
        // One still starting has nothing to finish.
        if (worker.busy || worker.isStarting())
            worker.process.reset();
        else if (worker.process)
            ::shutdown(worker.process->channel(), SHUT_RDWR);
    }
    for (Private::Worker &worker : d->workers) {
        if (worker.process)
            worker.process->closeAndWaitForExit(std::chrono::seconds(2));
        worker.process.reset();
    }
    if (!d->temporaryRoot.isEmpty())
        QDir(d->temporaryRoot).removeRecursively();
    for (size_t i = 0; i < std::size(ForwardedSignals); ++i) {
        if (d->installedHandler[i])
            ::sigaction(ForwardedSignals[i], &d->previousActions[i], nullptr);
    }
}

void WorkerPool::submit(
    qint64 tag, const QString &path, const QString &outputPath, const QString &outputFolder)
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
    if (d->filesLeft > 0)
        --d->filesLeft;

    // Wait for a worker to take the file. While every started worker is busy with the queue
    // behind them, the time spent waiting adds up; once it is worth a worker's start, another
    // worker is started (see the header).
    Private::Worker *chosen = nullptr;
    Clock::duration &backlog = d->backlog;
    for (bool first = true;; first = false) {
        const bool conflict = d->anyRunning(conflicts);
        if (!conflict && (chosen = d->takeableWorker())) {
            // A worker that waited for the file: the workers keep up.
            if (first && chosen->isIdle())
                backlog = {};
            break;
        }
        if (!std::any_of(
                d->workers.begin(), d->workers.end(), [](const Private::Worker &w) { return w.busy; }))
            break; // nothing to wait for: no conflict can remain, and some slot is free
        const bool growing = !conflict && d->shouldGrow();
        if (growing && backlog >= d->startCost) {
            d->grow();
            backlog = {};
            continue;
        }
        const Clock::time_point before = Clock::now();
        d->pump(growing ? before + (d->startCost - backlog) : Clock::time_point::max());
        if (growing)
            backlog += Clock::now() - before;
    }
    if (!chosen)
        chosen = d->takeableWorker();

    // A worker may have died while idle (killed from outside); then a fresh one takes the file.
    Private::Worker &worker = *chosen;
    for (int attempt = 0; attempt < 2; ++attempt) {
        QString error;
        if (!worker.process && !d->spawn(worker, &error)) {
            worker.job = job;
            d->finishJob(worker, false, u"cannot start a worker process: %1"_s.arg(error));
            return;
        }
        if (writeFrame(worker.process->channel(), requestFrame(path, outputFolder))) {
            worker.busy = true;
            worker.job = job;
            worker.job.started = Clock::now();
            worker.job.deadline = worker.job.started + std::chrono::seconds(d->options.timeoutSeconds);
            return;
        }
        // The worker's end is gone; a new one is started on the next attempt.
        worker.process.reset();
    }
    worker.job = job;
    d->finishJob(worker, false, u"cannot hand the file to a worker process"_s);
}

void WorkerPool::setFilesLeft(qint64 count) { d->filesLeft = count; }

int WorkerPool::startedWorkerCount() const { return d->spawned; }

void WorkerPool::waitForChangesAt(const QString &path)
{
    if (d->anyRunning([](const Private::Job &) { return true; })) {
        if (FileManager::fileKindAtPath(path, false) == FileKind::SymbolicLink) {
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
        if (worker.process)
            (worker.busy ? busy : idle).append(worker.process->pid());
    }
    return busy + idle;
}

} // namespace orvel
