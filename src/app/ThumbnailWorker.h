// ThumbnailWorker: the worker process of a batch, which makes the thumbnails that WorkerPool hands it.
#pragma once

#include <QVariantMap>

namespace orvel {

namespace ThumbnailWorker {

/// Reads files from standard input, makes their thumbnails with settings over the stored ones,
/// answers on standard output until the input ends (the frames of WorkerProtocol_p.h). threads
/// is the number of image-processing threads; verbose lets the libraries' messages through;
/// memoryLimitMiB, when positive, caps the process's data (an allocation beyond it fails, and a
/// library that cannot go on without it ends the worker: that file fails, the batch goes on).
/// Answers the exit status of the worker process.
int run(const QVariantMap &settings, int threads, bool verbose, qint64 memoryLimitMiB = 0);

} // namespace ThumbnailWorker

} // namespace orvel
