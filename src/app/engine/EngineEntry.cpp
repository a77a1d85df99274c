// orvel-thumbs-engine.so: the worker side of orvel-thumbs, loaded by its worker processes only.
#include "app/engine/ThumbnailWorker.h"
#include "app/shared/WorkerOptions.h"

#include <QStringList>

#include <cstdio>

/// Runs a worker with the worker arguments (what follows the program name, "--worker" first), in
/// a process that has its QCoreApplication. The one symbol the module exports.
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
