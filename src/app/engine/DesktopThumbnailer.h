// DesktopThumbnailer: orvel-thumbs as a file manager's thumbnailer, one file to one PNG.
#pragma once

#include <QString>

namespace orvel {

/// What a file manager (GNOME's thumbnail factory, Tumbler, anything that reads the thumbnailer
/// entries in share/thumbnailers) runs per file: the source in, one PNG out, nothing else. No
/// settings are read, no thumbnail cache or icon is written (the file manager keeps its own cache),
/// nothing is printed on success. It runs inside the sandbox such callers wrap it in: a read-only
/// file system except the output's folder, no network, no session bus, no home folder.
namespace DesktopThumbnailer {

/// The limits of one run.
struct Limits
{
    /// Seconds before the process gives up (it is then ended by SIGALRM); 0 for none.
    int timeoutSeconds = 0;
    /// The process's data limit in MiB; 0 for none.
    qint64 memoryLimitMiB = 0;
    /// Lets the libraries' messages through to standard error.
    bool verbose = false;
};

/// Writes the PNG thumbnail of source to output: at most size pixels on its longer side, the
/// aspect ratio and the alpha channel kept. A picture or movie frame smaller than that keeps its
/// size; a document (PDF, PostScript) is drawn to fill it. The file appears whole or not at all.
/// Answers false, with error set when given, when nothing was written.
bool makeThumbnail(const QString &source, const QString &output, int size, QString *error = nullptr);

/// The thumbnailer process: sets the limits, starts the libraries and makes the thumbnail; a
/// failure is one line on standard error. Answers the exit status: 0 made, 1 failed.
[[nodiscard]] int run(const QString &source, const QString &output, int size, const Limits &limits);

} // namespace DesktopThumbnailer

} // namespace orvel
