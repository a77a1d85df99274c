// CommandLine: the arguments of orvel-thumbs, their parsing into options, and the batch run.
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
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
        Worker, ///< a worker process of the batch (hidden)
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
    /// Memory limit of each worker process in MiB; 0 means none, -1 the default share.
    qint64 memoryLimitMiB = -1;
    bool quiet = false;
    bool verbose = false;

    QStringList defaultsArguments;
    /// Image-processing threads of a worker process.
    int workerThreads = 1;
};

/// Parses the arguments that follow the program name. Never fails silently: a usage error is
/// returned in error, with Mode::Run.
CommandLineOptions parseCommandLine(const QStringList &arguments);

/// The value of a --set option, typed: a whole number is a qint64, a decimal number a double,
/// true or false a bool, anything else the text itself.
QVariant typedSettingValue(const QString &text);

/// Options that give a worker (or any parser of this command line) exactly these settings,
/// types included.
QStringList settingArguments(const QVariantMap &settings);

/// The settings keys that --set accepts.
const QStringList &knownSettingKeys();

/// The text of --help.
QString usageText();

/// The number of worker processes used when -j is not given: the processor cores this process
/// may run on.
int defaultJobCount();

/// Runs orvel-thumbs with the arguments that follow the program name; answers the exit status.
/// executable is the program itself, started again for the worker processes.
int runCommandLine(const QStringList &arguments, const QString &executable, const QString &version);

} // namespace orvel
