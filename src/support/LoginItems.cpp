// LoginItems: starting the application when the user logs in, and opening it at a scheduled time.
#include "support/LoginItems.h"

#include "support/Log.h"
#include "support/ProcessInfo.h"
#include "support/UserDefaults.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

// A child task never gets longer than this; crontab and systemctl answer in well under a second.
constexpr int TaskTimeoutMs = 30000;
// An autostart entry larger than this is not one of ours.
constexpr qint64 MaxEntryBytes = 64 * 1024;

struct TaskResult
{
    bool started = false;
    int exitCode = -1;
    QByteArray output;
    QByteArray errorOutput;
    bool succeeded() const { return started && exitCode == 0; }
};

/// Runs program (looked up in PATH) with arguments in the current folder, feeding it input when
/// given, and waits for it to end.
TaskResult runTask(
    const QString &name, const QStringList &arguments, const std::optional<QByteArray> &input = {})
{
    TaskResult result;
    const QString program = QStandardPaths::findExecutable(name);
    if (program.isEmpty()) {
        result.errorOutput = name.toLocal8Bit() + ": not found";
        return result;
    }
    QProcess task;
    task.setWorkingDirectory(u"."_s);
    task.start(program, arguments);
    if (!task.waitForStarted(TaskTimeoutMs)) {
        result.errorOutput = task.errorString().toLocal8Bit();
        return result;
    }
    result.started = true;
    if (input)
        task.write(*input);
    task.closeWriteChannel();
    if (!task.waitForFinished(TaskTimeoutMs)) {
        task.kill();
        task.waitForFinished(1000);
        result.errorOutput = name.toLocal8Bit() + ": no answer";
        return result;
    }
    result.output = task.readAllStandardOutput();
    result.errorOutput = task.readAllStandardError().trimmed();
    result.exitCode = task.exitStatus() == QProcess::NormalExit ? task.exitCode() : -1;
    return result;
}

// $XDG_CONFIG_HOME (~/.config), read on every call: the standard folders of the files module are
// cached for the process, and that module builds on this one.
QString configFolder() { return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation); }

/// value escaped for a desktop entry's string value.
QString desktopString(const QString &value)
{
    QString escaped;
    for (QChar c : value) {
        if (c == u'\\')
            escaped += u"\\\\"_s;
        else if (c == u'\n')
            escaped += u"\\n"_s;
        else if (c == u'\t')
            escaped += u"\\t"_s;
        else if (c == u'\r')
            escaped += u"\\r"_s;
        else
            escaped += c;
    }
    return escaped;
}

/// argument for a systemd command line: always quoted, specifiers and variables kept literal.
QString systemdArgument(const QString &argument)
{
    QString quoted = u"\""_s;
    for (QChar c : argument) {
        if (c == u'\\' || c == u'"')
            quoted += u'\\';
        else if (c == u'%' || c == u'$')
            quoted += c; // "%%" and "$$" are the characters themselves
        quoted += c;
    }
    return quoted + u'"';
}

bool hasControlCharacters(const QStringList &texts)
{
    for (const QString &text : texts) {
        for (QChar c : text) {
            if (c.unicode() < 0x20 || c.unicode() == 0x7f)
                return true;
        }
    }
    return false;
}

bool writeFile(const QString &path, const QString &text)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(text.toUtf8());
    return file.commit();
}

/// Whether the trimmed line ends with the program's file name (an entry an older version made).
bool isOldEntry(const QString &line, const QString &executableName)
{
    return !executableName.isEmpty() && line.trimmed().endsWith(executableName);
}

} // namespace

LaunchIdentity LaunchIdentity::application()
{
    LaunchIdentity identity;
    identity.identifier = u"org.orvel.Thumbnails"_s;
    identity.name = u"Orvel Thumbnails"_s;
    identity.program = QCoreApplication::instance() ? QCoreApplication::applicationFilePath() : QString();
    return identity;
}

QString LoginItems::autostartPath(const LaunchIdentity &application)
{
    return configFolder() + u"/autostart/"_s + application.identifier + u".desktop"_s;
}

QString LoginItems::timerPath(const LaunchIdentity &application)
{
    return configFolder() + u"/systemd/user/"_s + application.label() + u".timer"_s;
}

QString LoginItems::servicePath(const LaunchIdentity &application)
{
    return configFolder() + u"/systemd/user/"_s + application.label() + u".service"_s;
}

QString LoginItems::quotedExecArgument(const QString &argument)
{
    static const QString reserved = u" \t\n\"'\\><~|&;$*?#()`"_s;
    QString escaped;
    bool quote = argument.isEmpty();
    for (QChar c : argument) {
        quote = quote || reserved.contains(c);
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            escaped += u'\\';
        escaped += c;
        if (c == u'%')
            escaped += u'%'; // not a field code
    }
    return quote ? u'"' + escaped + u'"' : escaped;
}

QString LoginItems::calendarExpression(const QDateTime &date)
{
    const QDateTime local = date.toLocalTime();
    return u"*-*-%1 %2:%3:00"_s.arg(local.date().day(), 2, 10, QChar(u'0'))
        .arg(local.time().hour(), 2, 10, QChar(u'0'))
        .arg(local.time().minute(), 2, 10, QChar(u'0'));
}

bool LoginItems::addToLoginItems(const LaunchIdentity &application)
{
    const QString path = autostartPath(application);
    if (application.identifier.isEmpty() || application.program.isEmpty() || QFileInfo::exists(path))
        return false;
    if (hasControlCharacters(QStringList(application.arguments) << application.program))
        return false;
    QString command = u"env %1=%2 "_s.arg(
        QLatin1String(ProcessInfo::LauncherVariable), QLatin1String(ProcessInfo::LoginItemLauncher));
    command += quotedExecArgument(application.program);
    for (const QString &argument : application.arguments)
        command += u' ' + quotedExecArgument(argument);
    const QString entry
        = u"[Desktop Entry]\n"
          "Type=Application\n"
          "Name=%1\n"
          "Exec=%2\n"
          "Terminal=false\n"
          "X-GNOME-Autostart-enabled=true\n"_s.arg(desktopString(application.name), desktopString(command));
    return writeFile(path, entry);
}

bool LoginItems::removeFromLoginItems(const LaunchIdentity &application)
{
    const QString path = autostartPath(application);
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return true;
    return QFile::remove(path);
}

bool LoginItems::isLoginItem(const LaunchIdentity &application)
{
    QFile file(autostartPath(application));
    if (!file.open(QIODevice::ReadOnly) || file.size() > MaxEntryBytes)
        return false;
    bool inEntry = false;
    bool sawEntry = false;
    for (const QByteArray &raw : file.readAll().split('\n')) {
        const QByteArray line = raw.trimmed();
        if (line.startsWith('[')) {
            inEntry = line == "[Desktop Entry]";
            sawEntry = sawEntry || inEntry;
        } else if (inEntry && (line == "Hidden=true" || line == "X-GNOME-Autostart-enabled=false")) {
            return false;
        }
    }
    return sawEntry;
}

bool LoginItems::setLoginItem(bool yes, const LaunchIdentity &application)
{
    if (isSandboxed() && !isLoginItem(application))
        return yes ? addToLoginItems(application) : true;
    const bool removed = removeFromLoginItems(application);
    return yes ? addToLoginItems(application) : removed;
}

bool LoginItems::scheduleLaunchAt(const std::optional<QDateTime> &date, UserDefaults &defaults,
    const LaunchIdentity &application, QString *error)
{
    if (isSandboxed())
        return false;
    const QString key = QString::fromLatin1(DidDisableCronTabKey);
    const QString executableName = QFileInfo(application.program).fileName();

    // 1. Entries that older versions put in the user's cron table.
    QStringList cronLines;
    bool rewriteCronTable = false;
    if (!defaults.boolForKey(key, false)) {
        const TaskResult listing = runTask(u"crontab"_s, { u"-l"_s });
        if (listing.started) {
            // "no crontab for user" comes on standard error: an empty table.
            cronLines = QString::fromLocal8Bit(listing.output).split(u'\n');
            for (QString &line : cronLines) {
                if (line.endsWith(u'\r'))
                    line.chop(1);
            }
            rewriteCronTable = std::any_of(cronLines.cbegin(), cronLines.cend(),
                [&](const QString &line) { return isOldEntry(line, executableName); });
            if (!rewriteCronTable)
                defaults.setObject(true, key);
            defaults.synchronize();
        }
    }

    // 2. The previous schedule goes first.
    const QString timer = timerPath(application);
    const QString service = servicePath(application);
    const QString timerUnit = application.label() + u".timer"_s;
    if (QFileInfo::exists(timer)) {
        (void)runTask(u"systemctl"_s, { u"--user"_s, u"disable"_s, u"--now"_s, timerUnit });
        QFile::remove(timer);
        QFile::remove(service);
        (void)runTask(u"systemctl"_s, { u"--user"_s, u"daemon-reload"_s });
    }

    // 3. The new one.
    bool scheduled = false;
    if (date && date->isValid()) {
        QString command = systemdArgument(application.program);
        for (const QString &argument : application.arguments)
            command += u' ' + systemdArgument(argument);
        const bool usable = !application.identifier.isEmpty() && QFileInfo(application.program).isAbsolute()
            && !hasControlCharacters(
                QStringList(application.arguments) << application.program << application.name);
        const QString serviceText
            = u"[Unit]\n"
              "Description=Open %1 at its scheduled time\n"
              "\n"
              "[Service]\n"
              "Type=simple\n"
              "ExecStart=%2\n"_s.arg(QString(application.name).replace(u'%', u"%%"_s), command);
        const QString timerText
            = u"[Unit]\n"
              "Description=Open %1 at its scheduled time\n"
              "\n"
              "[Timer]\n"
              "OnCalendar=%2\n"
              "Unit=%3\n"
              "\n"
              "[Install]\n"
              "WantedBy=timers.target\n"_s.arg(QString(application.name).replace(u'%', u"%%"_s),
                  calendarExpression(*date), application.label() + u".service"_s);
        if (!usable || !writeFile(service, serviceText) || !writeFile(timer, timerText)) {
            if (error)
                *error = u"the timer could not be written to %1"_s.arg(QFileInfo(timer).absolutePath());
        } else {
            (void)runTask(u"systemctl"_s, { u"--user"_s, u"daemon-reload"_s });
            const TaskResult enabled
                = runTask(u"systemctl"_s, { u"--user"_s, u"enable"_s, u"--now"_s, timerUnit });
            scheduled = enabled.succeeded();
            if (!scheduled && error)
                *error = enabled.errorOutput.isEmpty() ? u"systemctl --user enable failed"_s
                                                       : QString::fromLocal8Bit(enabled.errorOutput);
        }
    }

    // 4. The cron table without the old entries.
    if (rewriteCronTable) {
        QStringList kept;
        for (const QString &line : std::as_const(cronLines)) {
            if (!isOldEntry(line, executableName))
                kept << line;
        }
        QString table = kept.join(u'\n');
        while (table.endsWith(u'\n'))
            table.chop(1);
        if (!table.isEmpty())
            table += u'\n';
        const TaskResult rewrite = runTask(u"crontab"_s, { u"-"_s }, table.toLocal8Bit());
        if (rewrite.succeeded()) {
            scheduled = true;
            defaults.setObject(true, key);
            defaults.synchronize();
        } else {
            logMessage(u"crontab -: %1"_s.arg(QString::fromLocal8Bit(rewrite.errorOutput)));
        }
    }
    return scheduled;
}

} // namespace orvel
