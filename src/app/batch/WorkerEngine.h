// WorkerEngine: the thumbnail engine that a worker process loads, kept out of the batch runner.
#pragma once

#include <QString>
#include <QStringList>

namespace orvel {

/// The decoders, the renderer and the encoders (libvips, Poppler, Qt's GUI module, FFmpeg) come
/// with a couple of hundred shared libraries, whose loading costs a process tens of milliseconds
/// and megabytes of relocated pages. orvel-thumbs walks folders and hands files out without them;
/// only its worker processes (and its thumbnailer mode) load them, as the module
/// orvel-thumbs-engine.so, which holds the thumbnail job and the worker loop (ThumbnailWorker).
namespace WorkerEngine {

/// The module's file name.
inline constexpr char FileName[] = "orvel-thumbs-engine.so";

/// Where the engine of the program in folder executableFolder is: beside it (a build folder),
/// else in the installed library folder relative to it. Empty when neither exists.
[[nodiscard]] QString locate(const QString &executableFolder);

/// Loads the engine of the running program and runs a worker with the worker arguments (what
/// follows the program name, "--worker" first). Answers the worker's exit status; when the
/// engine cannot be loaded, says why on standard error and answers 3.
int runWorker(const QStringList &arguments);

/// Loads the engine of the running program and makes the PNG thumbnail of source at output, at
/// most size pixels on its longer side, in this process (the thumbnailer mode; see
/// DesktopThumbnailer). timeoutSeconds and memoryLimitMiB limit the process (0 for none). Answers
/// the exit status: 0 made, 1 failed, 3 when the engine cannot be loaded.
int runThumbnailer(const QString &source, const QString &output, int size, int timeoutSeconds,
    qint64 memoryLimitMiB, bool verbose);

} // namespace WorkerEngine

} // namespace orvel
