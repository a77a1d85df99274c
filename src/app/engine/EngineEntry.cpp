// orvel-thumbs-engine.so: the worker side of orvel-thumbs, loaded by its worker processes and by
// its thumbnailer mode only.
#include "app/engine/DesktopThumbnailer.h"
#include "app/engine/ThumbnailWorker.h"
#include "app/shared/WorkerOptions.h"

#include <QFile>
#include <QStringList>

#include <cstdio>

/// Runs a worker with the worker arguments (what follows the program name, "--worker" first), in
/// a process that has its QCoreApplication.
extern "C" __attribute__((visibility("default"))) int orvel_thumbs_worker_main(
    int argc, const char *const *argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    QString error;
    const std::optional<orvel::WorkerOptions> options
        = orvel::WorkerOptions::fromArguments(arguments, &error);
    if (!options) {
        std::fprintf(stderr, "orvel-thumbs-engine: %s\n", qUtf8Printable(error));
        return 2;
    }
    return orvel::ThumbnailWorker::run(*options);
}

/// Runs the thumbnailer mode: source (a local path, in the file system's encoding) to a PNG at
/// output of at most size pixels, under the limits given (0 for none). Answers the exit status.
extern "C" __attribute__((visibility("default"))) int orvel_thumbs_thumbnailer_main(const char *source,
    const char *output, int size, int timeoutSeconds, long long memoryLimitMiB, int verbose)
{
    orvel::DesktopThumbnailer::Limits limits;
    limits.timeoutSeconds = timeoutSeconds;
    limits.memoryLimitMiB = memoryLimitMiB;
    limits.verbose = verbose != 0;
    return orvel::DesktopThumbnailer::run(QFile::decodeName(source), QFile::decodeName(output), size, limits);
}
