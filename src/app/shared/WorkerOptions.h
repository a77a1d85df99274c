// WorkerOptions: what a worker process of orvel-thumbs is started with, as arguments and back.
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace orvel {

/// The options of one worker process. Both programs start their workers through WorkerPool, which
/// turns these into the worker's command line; the engine reads them back with fromArguments().
struct WorkerOptions
{
    /// Settings over the stored ones, typed (qint64, double, bool or QString).
    QVariantMap settings;
    /// Image-processing threads; 0 lets the pool share the processor cores among its workers.
    int threads = 0;
    /// Memory limit of the process in MiB; 0 means none, -1 the pool's default share.
    qint64 memoryLimitMiB = -1;
    /// Lets the libraries' messages through.
    bool verbose = false;
    /// Loads and renders every file as for real and writes nothing.
    bool dryRun = false;
    /// The process that started the worker; the worker ends (with everything it started) soon
    /// after that process is gone. 0 for none.
    qint64 parentPid = 0;
    /// The pool's time limit per file in seconds (0 for none): a file that runs far past it ends
    /// the worker even when nobody is left to kill it.
    int timeoutSeconds = 0;

    /// The arguments that follow the program name, "--worker" first.
    [[nodiscard]] QStringList toArguments() const;
    /// Reads what toArguments() wrote; nullopt, with error set when given, for anything else.
    [[nodiscard]] static std::optional<WorkerOptions> fromArguments(
        const QStringList &arguments, QString *error = nullptr);
};

/// The first argument that makes the program a worker.
inline constexpr char16_t WorkerArgument[] = u"--worker";

/// A setting's value as the user wrote it, typed: a whole number is a qint64, a decimal number a
/// double, true or false a bool, anything else the text itself.
[[nodiscard]] QVariant typedSettingValue(const QString &text);

} // namespace orvel
