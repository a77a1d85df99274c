// LoginItems: starting the application when the user logs in, and opening it at a scheduled time.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

namespace orvel {

class UserDefaults;

/// The application as the session starts it.
struct LaunchIdentity
{
    /// The desktop entry name, such as "org.orvel.Thumbnails": names the autostart entry and,
    /// with ".launcher", the scheduled-launch units.
    QString identifier;
    /// The name shown for the entry ("Orvel Thumbnails").
    QString name;
    /// The absolute path of the program, and the arguments it is started with.
    QString program;
    QStringList arguments;

    /// The desktop application: "org.orvel.Thumbnails", "Orvel Thumbnails" and the running program
    /// (none before the QCoreApplication is made).
    [[nodiscard]] static LaunchIdentity application();

    /// identifier + ".launcher": what the service manager knows the scheduled launch by.
    [[nodiscard]] QString label() const { return identifier + QStringLiteral(".launcher"); }
};

/// The login item is an XDG autostart entry, $XDG_CONFIG_HOME/autostart/<identifier>.desktop, whose
/// command marks the launch (ProcessInfo::launchedAsLoginItem() tells). The scheduled launch is a
/// systemd user timer and service, $XDG_CONFIG_HOME/systemd/user/<label>.timer and .service, firing
/// every month on the date's day of the month at its hour and minute (local time). Without a user
/// service manager the units are written but not loaded, and the call answers NO.
///
/// Blocking: the service manager and crontab run as child tasks and are waited for. Nothing raises.
class LoginItems
{
public:
    /// Always false: nothing here runs confined.
    [[nodiscard]] static bool isSandboxed() { return false; }

    /// Writes the autostart entry unless there is one for the application; false when there was
    /// one (nothing changes) or it cannot be written.
    static bool addToLoginItems(const LaunchIdentity &application = LaunchIdentity::application());
    /// Removes the application's autostart entry; true when none is left.
    static bool removeFromLoginItems(const LaunchIdentity &application = LaunchIdentity::application());
    /// Whether the autostart entry is there and enabled (not "Hidden", not disabled for GNOME).
    [[nodiscard]] static bool isLoginItem(const LaunchIdentity &application = LaunchIdentity::application());
    /// Removes the entry, then for yes adds a fresh one (with the current program); answers the last step.
    static bool setLoginItem(bool yes, const LaunchIdentity &application = LaunchIdentity::application());

    /// Schedules the application to be opened on date's day of every month at its hour and minute:
    ///  1. once (until the settings flag "DidDisableCronTab" is set in defaults), reads the user's
    ///     cron table with "crontab -l"; entries that end with the program's file name, left by
    ///     older versions, are rewritten away in step 4, and with none the flag is set at once;
    ///  2. stops and removes the previous schedule;
    ///  3. with a date, writes the timer and service and starts the timer; answers whether that
    ///     worked (without a date the answer is false: the call only unschedules);
    ///  4. feeds the kept cron lines to "crontab -"; when that ran, the answer becomes true, and the
    ///     flag is set.
    /// error, when given, says why the timer could not be started.
    static bool scheduleLaunchAt(const std::optional<QDateTime> &date, UserDefaults &defaults,
        const LaunchIdentity &application = LaunchIdentity::application(), QString *error = nullptr);

    /// The settings key of the one-time cron clean-up.
    static constexpr const char *DidDisableCronTabKey = "DidDisableCronTab";

    /// Where the application's autostart entry, timer and service are.
    [[nodiscard]] static QString autostartPath(const LaunchIdentity &application);
    [[nodiscard]] static QString timerPath(const LaunchIdentity &application);
    [[nodiscard]] static QString servicePath(const LaunchIdentity &application);

    /// The timer's calendar expression for date (local time): "*-*-DD HH:MM:00".
    [[nodiscard]] static QString calendarExpression(const QDateTime &date);
    /// argument quoted for a desktop entry's Exec key when it needs it.
    [[nodiscard]] static QString quotedExecArgument(const QString &argument);
};

} // namespace orvel
