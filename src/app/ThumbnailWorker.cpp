// ThumbnailWorker: the worker process of a batch, which makes the thumbnails that WorkerPool hands it.
#include "app/ThumbnailWorker.h"

#include "app/ThumbnailJob.h"
#include "app/WorkerProtocol_p.h"
#include "movie/Movie.h"
#include "support/Log.h"
#include "support/UserDefaults.h"

#include <vips/vips8>

#include <algorithm>
#include <exception>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace orvel {

namespace {

void dropLibraryMessage(const gchar *, GLogLevelFlags, const gchar *, gpointer) { }

} // namespace

int ThumbnailWorker::run(const QVariantMap &settings, int threads, bool verbose)
{
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

    if (VIPS_INIT("orvel-thumbs") != 0)
        return 3;
    // The pool already runs one worker per core; more threads per worker would only compete.
    vips_concurrency_set(std::max(1, threads));
    vips_cache_set_max(0);
    setLogToStandardError(verbose);
    routeToolkitQtMessages();
    Movie::setLibraryLogging(verbose);
    Movie::setDecodingThreads(std::max(1, threads));
    if (!verbose) {
        g_log_set_handler("VIPS",
            GLogLevelFlags(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO), dropLibraryMessage,
            nullptr);
    }

    UserDefaults &defaults = UserDefaults::standard();
    defaults.setArgumentDomain(settings);

    QByteArray request;
    while (detail::readFrame(channel, &request)) {
        const QString path = detail::stringFromUtf16Bytes(request.constData(), request.size());
        QString reason;
        bool ok = false;
        try {
            ok = ThumbnailJob::processFile(path, &defaults, &reason);
        } catch (const std::exception &e) {
            ok = false;
            reason = QStringLiteral("internal error: %1").arg(QString::fromLocal8Bit(e.what()));
        } catch (...) {
            ok = false;
            reason = QStringLiteral("internal error");
        }
        QByteArray answer(1, ok ? '\1' : '\0');
        answer += detail::utf16Bytes(ok ? QString() : reason);
        if (!detail::writeFrame(channel, answer))
            break;
    }
    ::close(channel);
    return 0;
}

} // namespace orvel
