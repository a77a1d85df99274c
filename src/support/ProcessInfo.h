// ProcessInfo: the running process: how it was started, its number, other processes, its error stream.
#pragma once

#include <QString>

namespace orvel {

/// The running process and its neighbours. Every operation answers; none raises.
class ProcessInfo
{
public:
    /// The environment variable by which a launch tells the program who started it: the login-item
    /// entry sets it to LoginItemLauncher.
    static constexpr const char *LauncherVariable = "ORVEL_LAUNCHED_BY";
    /// The launcher name of the session's autostart, for launchedByProcess().
    static constexpr const char *LoginItemLauncher = "autostart";

    /// The identifier of this process.
    [[nodiscard]] static qint32 processNumber();

    /// Sends SIGINT to the process pid; false, sending nothing, for an identifier below 1, beyond the
    /// system's range or the own one, and when no such process can be signalled (signal 0 fails).
    static bool killProcessWithIdentifier(qint64 pid);

    /// Appends everything later written to standard error to the file at path, made with its
    /// folders when missing. The open file is kept for the life of the process (a previous one is
    /// closed). False, with standard error unchanged, when the file cannot be opened.
    static bool redirectStandardErrorToFile(const QString &path);

    /// Whether the service manager started this process: systemd gave it an invocation
    /// ($INVOCATION_ID) and it is the manager's own child, not a shell's or a desktop's.
    [[nodiscard]] static bool launchedByLaunchd();

    /// Whether launcher started this process: the launch was marked with it ($ORVEL_LAUNCHED_BY, see
    /// LauncherVariable), or the parent process's name or program file name is exactly launcher.
    [[nodiscard]] static bool launchedByProcess(const QString &launcher);

    /// launchedByProcess() of LoginItemLauncher: started by the session's autostart entry.
    [[nodiscard]] static bool launchedAsLoginItem();

    /// The name of process pid as the system knows it (at most 15 characters), empty when unknown.
    [[nodiscard]] static QString processName(qint64 pid);
    /// The file name of the program that process pid runs, empty when it cannot be read.
    [[nodiscard]] static QString programName(qint64 pid);
};

} // namespace orvel
