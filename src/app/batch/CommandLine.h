// CommandLine: the arguments of orvel-thumbs and their parsing into options.
#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace orvel {

/// Everything a command line asks for, as parsed by parseCommandLine().
struct CommandLineOptions
{
    enum class Mode {
        Run, ///< make thumbnails of paths
        Help, ///< print the usage
        Version, ///< print the version
        Defaults, ///< the defaults subcommand; its arguments are in defaultsArguments
        Worker, ///< a worker process of the batch (hidden); its arguments are the whole command line
        Thumbnailer, ///< one PNG of thumbnailerSize from thumbnailerSource at thumbnailerOutput
    };

    Mode mode = Mode::Run;
    /// Usage error; when set, nothing else is meaningful and the exit status is 2.
    QString error;

    QStringList paths;
    /// Settings for this run only, typed (qint64, double, bool or QString), the last one given winning.
    QVariantMap settings;
    /// Worker processes; 0 means one per processor core.
    int jobs = 0;
    /// Time limit per file in seconds; 0 means none.
    int timeoutSeconds = 120;
    /// How deep folders are walked (see FolderWalk::processPath); negative for all the way.
    int maxDepth = -1;
    /// Memory limit of each worker process in MiB; 0 means none, -1 the default share.
    qint64 memoryLimitMiB = -1;
    bool quiet = false;
    bool verbose = false;
    /// List what would be made, and what would be skipped or fail and why; write nothing.
    bool dryRun = false;
    /// A file naming further paths, one a line ("-" for standard input); empty for none.
    QString filesFrom;
    /// The paths of filesFrom end with NUL characters instead of line breaks.
    bool nullSeparated = false;
    /// Leave a file alone whose thumbnail exists and is newer than it.
    bool skipUpToDate = false;
    /// The folder the thumbnails go into, mirroring the walked folders; empty for beside the sources.
    QString outputDir;

    QStringList defaultsArguments;

    /// The thumbnailer mode's source, a local path (a file: URI is taken as its path).
    QString thumbnailerSource;
    /// Where the thumbnailer mode writes its PNG.
    QString thumbnailerOutput;
    /// The longest side of the thumbnailer mode's PNG, in pixels (-s).
    int thumbnailerSize = DefaultThumbnailerSize;
    /// The size of a file manager's "normal" thumbnails, used when -s is not given.
    static constexpr int DefaultThumbnailerSize = 128;
};

/// Parses the arguments that follow the program name. Never fails silently: a usage error is
/// returned in error, with Mode::Run.
[[nodiscard]] CommandLineOptions parseCommandLine(const QStringList &arguments);

/// The text of --help, its options and settings written from the tables they are parsed with.
[[nodiscard]] QString usageText();

/// The number of worker processes used when -j is not given: the processor cores this process
/// may run on.
[[nodiscard]] int defaultJobCount();

/// Runs orvel-thumbs with the arguments that follow the program name; answers the exit status.
/// executable is the program itself, started again for the worker processes.
[[nodiscard]] int runCommandLine(
    const QStringList &arguments, const QString &executable, const QString &version);

} // namespace orvel
