// orvel-thumbs-engine.so: the worker side of orvel-thumbs, loaded by its worker processes only.
#include "app/CommandLine.h"
#include "app/ThumbnailWorker.h"

#include <QStringList>

#include <algorithm>
#include <cstdio>

/// Runs a worker with the worker arguments (what follows the program name, "--worker" first), in
/// a process that has its QCoreApplication. The one symbol the module exports.
extern "C" __attribute__((visibility("default"))) int orvel_thumbs_worker_main(
    int argc, const char *const *argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const orvel::CommandLineOptions options = orvel::parseCommandLine(arguments);
    if (options.mode != orvel::CommandLineOptions::Mode::Worker) {
        std::fprintf(stderr, "orvel-thumbs-engine: %s\n",
            options.error.isEmpty() ? "not a worker command line" : qUtf8Printable(options.error));
        return 2;
    }
    return orvel::ThumbnailWorker::run(options.settings, options.workerThreads, options.verbose,
        std::max<qint64>(0, options.memoryLimitMiB));
}
