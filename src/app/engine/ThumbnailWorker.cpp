// ThumbnailWorker: the worker process of a batch, which makes the thumbnails that WorkerPool hands it.
#include "app/engine/ThumbnailWorker.h"

#include "app/engine/ThumbnailJob.h"
#include "app/shared/WorkerProtocol.h"
#include "movie/Movie.h"
#include "support/Log.h"
#include "support/UserDefaults.h"

#include <QFileInfo>
#include <vips/vips8>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace orvel {

namespace {

void dropLibraryMessage(const gchar *, GLogLevelFlags, const gchar *, gpointer) { }

// The answer channel while a file is being made, for the fatal-error handler below.
std::atomic<int> pendingAnswerChannel { -1 };

// GLib ends the process on a fatal error (an allocation it cannot make, most often past the memory
// limit). The file's answer says why first, so the batch reports more than a signal.
void answerFatalLibraryError(const gchar *domain, GLogLevelFlags, const gchar *message, gpointer)
{
    const int channel = pendingAnswerChannel.exchange(-1);
    if (channel >= 0) {
        QByteArray answer(1, '\0');
        answer += detail::utf16Bytes(
            QStringLiteral("the decoder gave up (%1: %2)")
                .arg(QString::fromUtf8(domain ? domain : "library"), QString::fromUtf8(message)));
        detail::writeFrame(channel, answer);
    } else {
        std::fprintf(stderr, "orvel-thumbs worker: %s\n", message);
    }
    std::_Exit(4);
}

// When the current file started, in seconds on the steady clock; 0 between files.
std::atomic<qint64> fileStartedAt { 0 };

qint64 steadySeconds()
{
    return std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Ends the worker's process group (the worker and every task it started) when the process that
/// started the worker is gone, or when a file runs far past the time limit: the parent kills its
/// workers itself, but not when it is killed first (SIGKILL, an out-of-memory kill, a logout), and
/// a worker must never go on burning a core for nobody. Checked from a thread of its own, a few
/// times a second; the parent-death signal would fire when the parent's spawning thread ends, which
/// for the desktop application is a short-lived one.
void watchParent(qint64 parentPid, int timeoutSeconds)
{
    constexpr int Grace = 10; // seconds past the limit before the worker gives up on its parent
    std::thread([parentPid, timeoutSeconds] {
        for (;;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            const bool orphaned = parentPid > 0 && qint64(::getppid()) != parentPid;
            const qint64 started = fileStartedAt.load();
            const bool overran
                = timeoutSeconds > 0 && started > 0 && steadySeconds() - started > timeoutSeconds + Grace;
            if (orphaned || overran)
                ::kill(0, SIGKILL);
        }
    }).detach();
}

} // namespace

int ThumbnailWorker::run(const WorkerOptions &options)
{
    const int threads = std::max(1, options.threads);
    const bool verbose = options.verbose;
    const qint64 memoryLimitMiB = options.memoryLimitMiB;
    // Keep the channel on a private descriptor; standard input becomes /dev/null and standard
    // output goes to standard error, so nothing that the job or a task it starts prints can get
    // into the answers.
    const int channel = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    if (channel < 0)
        return 3;
    const int devNull = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (devNull >= 0) {
        ::dup2(devNull, STDIN_FILENO);
        ::close(devNull);
    }
    ::dup2(STDERR_FILENO, STDOUT_FILENO);

    // A decoder that crashes on a hostile file must not leave a core dump beside it.
    const rlimit noCore = { 0, 0 };
    ::setrlimit(RLIMIT_CORE, &noCore);
#ifndef __SANITIZE_ADDRESS__
    // (AddressSanitizer's shadow memory counts as data: a sanitizer build runs without the limit.)
    if (memoryLimitMiB > 0) {
        const rlim_t bytes = rlim_t(memoryLimitMiB) * 1024 * 1024;
        const rlimit data = { bytes, bytes };
        ::setrlimit(RLIMIT_DATA, &data);
    }
#else
    (void)memoryLimitMiB;
#endif

    if (VIPS_INIT("orvel-thumbs") != 0)
        return 3;
    // The pool already runs one worker per core; more threads per worker would only compete.
    vips_concurrency_set(threads);
    vips_cache_set_max(0);
    setLogToStandardError(verbose);
    routeToolkitQtMessages();
    Movie::setLibraryLogging(verbose);
    Movie::setDecodingThreads(threads);
    if (!verbose) {
        g_log_set_handler("VIPS",
            GLogLevelFlags(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO), dropLibraryMessage,
            nullptr);
    }

    for (const char *domain : { "GLib", "GLib-GObject", "VIPS" })
        g_log_set_handler(domain, GLogLevelFlags(G_LOG_LEVEL_ERROR | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION),
            answerFatalLibraryError, nullptr);

    UserDefaults &defaults = UserDefaults::standard();
    defaults.setArgumentDomain(options.settings);
    watchParent(options.parentPid, options.timeoutSeconds);

    // Loaded and ready: until it says so, the pool gives this worker a file only when no other
    // can take it, so no file waits for a start it need not.
    if (!detail::writeFrame(channel, QByteArray(1, detail::WorkerReady))) {
        ::close(channel);
        return 0;
    }
    QByteArray request;
    while (detail::readFrame(channel, &request)) {
        QString path;
        QString outputFolder;
        detail::readRequest(request, &path, &outputFolder);
        QString reason;
        ThumbnailJob::Outcome outcome = ThumbnailJob::Outcome::Failed;
        pendingAnswerChannel.store(channel);
        fileStartedAt.store(steadySeconds());
        try {
            outcome = ThumbnailJob::run(path, &defaults, &reason,
                options.dryRun ? ThumbnailJob::Mode::DryRun : ThumbnailJob::Mode::Write, outputFolder);
        } catch (const std::exception &e) {
            reason = QStringLiteral("internal error: %1").arg(QString::fromLocal8Bit(e.what()));
        } catch (...) {
            reason = QStringLiteral("internal error");
        }
        fileStartedAt.store(0);
        if (pendingAnswerChannel.exchange(-1) < 0)
            break; // answered by the fatal-error handler
        QByteArray answer;
        if (outcome == ThumbnailJob::Outcome::Made) {
            // The size of the thumbnail as it is now, right after the job wrote it; none for an icon.
            const QString output
                = options.dryRun ? QString() : ThumbnailJob::outputPathForFile(path, &defaults, outputFolder);
            answer = detail::madeAnswer(output.isEmpty() ? 0 : QFileInfo(output).size());
        } else {
            answer = QByteArray(
                1, outcome == ThumbnailJob::Outcome::Skipped ? detail::AnswerSkipped : detail::AnswerFailed);
            answer += detail::utf16Bytes(reason);
        }
        if (!detail::writeFrame(channel, answer))
            break;
    }
    ::close(channel);
    return 0;
}

} // namespace orvel
