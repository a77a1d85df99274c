// The one way the system logs its own messages: the system log, and standard error when wanted.
#pragma once

#include <QString>
#include <QStringList>

namespace orvel {

/// Writes one of the system's own messages to the system log (syslog, ident "orvel-thumbs") and to standard
/// error when that is a terminal. Thread-safe; each message reaches standard error as one whole line
/// ("orvel-thumbs: message").
void logMessage(const QString &message);

/// Logs "%@ (%@):\n%@\n%@\n%@" (operation, class, exception name, reason, call-stack lines joined by "\n").
void logException(const QString &operation, const QString &className, const QString &name,
    const QString &reason, const QStringList &callStack = {});

/// Force standard error on/off (command line --verbose/--quiet); until called, standard error gets
/// the messages when it is a terminal.
void setLogToStandardError(bool on);

/// Sends the messages of the toolkit's own Qt logging categories ("orvel." and below; modules that
/// may not depend on this one log through those) to logMessage(), debug messages excepted. Every
/// other category keeps the handler that was installed before. Call once, early in main().
void routeToolkitQtMessages();

} // namespace orvel
