// Logging to syslog and standard error.
#include "support/Log.h"

#include <QtGlobal>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <syslog.h>
#include <unistd.h>

namespace orvel {

namespace {

enum StandardErrorMode { Automatic, Always, Never };
std::atomic<int> standardErrorMode { Automatic };

constexpr char Ident[] = "orvel-thumbs";

bool wantsStandardError()
{
    switch (standardErrorMode.load(std::memory_order_relaxed)) {
    case Always:
        return true;
    case Never:
        return false;
    default:
        static const bool isTerminal = isatty(STDERR_FILENO) == 1;
        return isTerminal;
    }
}

void writeLine(const QByteArray &line)
{
    const char *p = line.constData();
    qsizetype left = line.size();
    while (left > 0) {
        const ssize_t n = ::write(STDERR_FILENO, p, size_t(left));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        p += n;
        left -= n;
    }
}

} // namespace

void logMessage(const QString &message)
{
    const QByteArray utf8 = message.toUtf8();
    static std::once_flag opened;
    std::call_once(opened, [] { openlog(Ident, LOG_PID, LOG_USER); });
    syslog(LOG_NOTICE, "%s", utf8.constData());
    if (wantsStandardError()) {
        // One write per message, so that messages from several threads do not interleave.
        writeLine(QByteArray(Ident) + ": " + utf8 + '\n');
    }
}

void logException(const QString &operation, const QString &className, const QString &name,
    const QString &reason, const QStringList &callStack)
{
    logMessage(QStringLiteral("%1 (%2):\n%3\n%4\n%5")
                   .arg(operation, className, name, reason, callStack.join(u'\n')));
}

namespace {

QtMessageHandler previousHandler = nullptr;

void toolkitMessageHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const bool ours = context.category && std::strncmp(context.category, "orvel.", 6) == 0;
    if (ours && type != QtDebugMsg) {
        logMessage(message);
        return;
    }
    if (previousHandler)
        previousHandler(type, context, message);
}

} // namespace

void routeToolkitQtMessages()
{
    static std::once_flag installed;
    std::call_once(installed, [] { previousHandler = qInstallMessageHandler(toolkitMessageHandler); });
}

void setLogToStandardError(bool on)
{
    standardErrorMode.store(on ? Always : Never, std::memory_order_relaxed);
}

} // namespace orvel
