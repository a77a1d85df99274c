// ThumbnailWorker: the worker process of a batch, which makes the thumbnails that WorkerPool hands it.
#pragma once

#include "app/shared/WorkerOptions.h"

namespace orvel {

namespace ThumbnailWorker {

/// Reads files from standard input, makes their thumbnails with options.settings over the stored
/// ones and answers on standard output until the input ends (the frames of WorkerProtocol.h).
/// options.threads is the number of image-processing threads; options.verbose lets the libraries'
/// messages through; a positive options.memoryLimitMiB caps the process's data (an allocation
/// beyond it fails, and a library that cannot go on without it ends the worker: that file fails,
/// the batch goes on). Answers the exit status of the worker process.
[[nodiscard]] int run(const WorkerOptions &options);

} // namespace ThumbnailWorker

} // namespace orvel
