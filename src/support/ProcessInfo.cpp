// ProcessInfo: the running process: how it was started, its number, other processes, its error stream.
#include "support/ProcessInfo.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvel {

qint32 ProcessInfo::processNumber() { return qint32(::getpid()); }

bool ProcessInfo::killProcessWithIdentifier(qint64 pid)
{
    if (pid < 1 || pid > INT_MAX || pid == ::getpid())
        return false;
    if (::kill(pid_t(pid), 0) != 0)
        return false;
    return ::kill(pid_t(pid), SIGINT) == 0;
}

bool ProcessInfo::redirectStandardErrorToFile(const QString &path)
{
    // The file that standard error goes to, kept open while it does.
    static std::mutex mutex;
    static int kept = -1;

    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    if (!QDir().mkpath(info.absolutePath()))
        return false;
    const int fd = ::open(QFile::encodeName(info.absoluteFilePath()).constData(),
        O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY, 0644);
    if (fd < 0)
        return false;
    ::lseek(fd, 0, SEEK_END);
    std::lock_guard lock(mutex);
    int result;
    do
        result = ::dup2(fd, STDERR_FILENO);
    while (result < 0 && errno == EINTR);
    if (result < 0) {
        ::close(fd);
        return false;
    }
    if (kept >= 0)
        ::close(kept);
    kept = fd;
    return true;
}

QString ProcessInfo::processName(qint64 pid)
{
    if (pid < 1)
        return QString();
    QFile comm(u"/proc/%1/comm"_s.arg(pid));
    if (!comm.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromLocal8Bit(comm.read(64)).trimmed();
}

QString ProcessInfo::programName(qint64 pid)
{
    if (pid < 1)
        return QString();
    return QFileInfo(QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(pid))).fileName();
}

bool ProcessInfo::launchedByLaunchd()
{
    // Children of a service inherit its $INVOCATION_ID; only the service's own process has the
    // manager (the user's "systemd --user", or the system's) as its parent.
    return !qEnvironmentVariableIsEmpty("INVOCATION_ID") && processName(::getppid()) == u"systemd";
}

bool ProcessInfo::launchedByProcess(const QString &launcher)
{
    if (launcher.isEmpty())
        return false;
    if (qEnvironmentVariable(LauncherVariable) == launcher)
        return true;
    const pid_t parent = ::getppid();
    return processName(parent) == launcher || programName(parent) == launcher;
}

bool ProcessInfo::launchedAsLoginItem() { return launchedByProcess(QString::fromLatin1(LoginItemLauncher)); }

} // namespace orvel
