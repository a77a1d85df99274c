// Login items, scheduled launch and the process operations, with the real session tools.
#include "support/LoginItems.h"
#include "support/ProcessInfo.h"
#include "support/UserDefaults.h"

#include "testlib/TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>
#include <gtest/gtest.h>

#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::EnvironmentOverride;
using orvel::test::readBytes;
using orvel::test::runProgram;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

const QString ChildVariable = u"ORVEL_PROCESS_CHILD"_s;

/// Runs this program as a child in that mode (see ProcessInfoChild); answers its standard output.
QString runChild(const QString &mode, const QStringList &environment = {}, QByteArray *err = nullptr)
{
    QByteArray out;
    const int status
        = runProgram(QCoreApplication::applicationFilePath(), { u"--gtest_filter=ProcessInfoChild.*"_s },
            &out, err, 60000, QStringList { ChildVariable + u'=' + mode } + environment);
    EXPECT_EQ(status, 0) << mode << ": " << out.constData();
    return QString::fromUtf8(out);
}

/// The answer a child printed between "<<" and ">>".
QString answer(const QString &output)
{
    const qsizetype start = output.indexOf(u"<<"_s);
    const qsizetype end = output.indexOf(u">>"_s, start);
    return start < 0 || end < 0 ? QString() : output.mid(start + 2, end - start - 2);
}

/// A configuration folder of the test's own, and an application in it with a unique identifier.
struct Session
{
    TempDir dir;
    EnvironmentOverride config { "XDG_CONFIG_HOME", dir.file(u"config"_s) };
    LaunchIdentity app { u"org.orvel.test%1"_s.arg(::getpid()), u"Orvel Test"_s,
        QCoreApplication::applicationFilePath(), {} };
};

bool hasTool(const QString &name) { return !QStandardPaths::findExecutable(name).isEmpty(); }

} // namespace

// The modes of the child process that the tests below start.
TEST(ProcessInfoChild, Run)
{
    const QString mode = qEnvironmentVariable("ORVEL_PROCESS_CHILD");
    if (mode.isEmpty())
        GTEST_SKIP() << "started by the tests of this file";
    if (mode == u"launch") {
        std::printf("<<login=%d launchd=%d parent=%d>>\n", ProcessInfo::launchedAsLoginItem(),
            ProcessInfo::launchedByLaunchd(),
            ProcessInfo::launchedByProcess(qEnvironmentVariable("ORVEL_PARENT")));
    } else if (mode == u"entry") {
        // Started by the autostart entry: says so in the file named last, as nobody reads its output.
        writeBytes(QCoreApplication::arguments().last(),
            ProcessInfo::launchedAsLoginItem() ? "login item" : "not a login item");
    } else if (mode.startsWith(u"stderr:")) {
        const QStringList paths = mode.mid(7).split(u'|');
        EXPECT_TRUE(ProcessInfo::redirectStandardErrorToFile(paths[0]));
        std::fputs("first\n", stderr);
        EXPECT_FALSE(ProcessInfo::redirectStandardErrorToFile(u"/dev/null/cannot"_s));
        std::fputs("still first\n", stderr);
        EXPECT_TRUE(ProcessInfo::redirectStandardErrorToFile(paths[1]));
        std::fputs("second\n", stderr);
        std::printf("<<done>>\n");
    }
}

TEST(ProcessInfo, KillSendsAnInterruptOnlyToAnotherLiveProcess)
{
    for (qint64 pid : { qint64(0), qint64(-1), qint64(::getpid()), qint64(1) << 40 })
        EXPECT_FALSE(ProcessInfo::killProcessWithIdentifier(pid)) << pid;

    QProcess sleeper;
    sleeper.start(u"sleep"_s, { u"30"_s });
    ASSERT_TRUE(sleeper.waitForStarted());
    const qint64 pid = sleeper.processId();
    EXPECT_TRUE(ProcessInfo::killProcessWithIdentifier(pid));
    ASSERT_TRUE(sleeper.waitForFinished(10000));
    EXPECT_EQ(sleeper.exitStatus(), QProcess::CrashExit); // ended by the signal
    // Reaped: no such process any more.
    EXPECT_FALSE(ProcessInfo::killProcessWithIdentifier(pid));
}

TEST(ProcessInfo, StandardErrorIsAppendedToTheChosenFileMadeWithItsFolders)
{
    TempDir dir;
    const QString first = dir.file(u"Logs/deeper/first.log"_s);
    const QString second = dir.file(u"second.log"_s);
    ASSERT_TRUE(writeBytes(second, "kept\n"));
    EXPECT_EQ(answer(runChild(u"stderr:"_s + first + u'|' + second)), u"done"_s);
    EXPECT_EQ(readBytes(first), "first\nstill first\n");
    EXPECT_EQ(readBytes(second), "kept\nsecond\n");
}

TEST(ProcessInfo, TellsWhoStartedIt)
{
    const QString parent = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    EXPECT_EQ(
        answer(runChild(u"launch"_s, { u"ORVEL_PARENT="_s + parent })), u"login=0 launchd=0 parent=1"_s);
    EXPECT_EQ(answer(runChild(u"launch"_s, { u"ORVEL_PARENT=launchd"_s, u"ORVEL_LAUNCHED_BY=autostart"_s })),
        u"login=1 launchd=0 parent=0"_s);
    // An invocation inherited from a service does not make the service manager the launcher.
    EXPECT_EQ(
        answer(runChild(u"launch"_s, { u"ORVEL_PARENT=systemd"_s, u"INVOCATION_ID=0123456789abcdef"_s })),
        u"login=0 launchd=0 parent=0"_s);
}

TEST(LoginItems, TheAutostartEntryIsValidAndStartsTheProgramAsALoginItem)
{
    Session session;
    const QString marker = session.dir.file(u"started by \"autostart\" $HOME 100%"_s);
    session.app.arguments = { u"--gtest_filter=ProcessInfoChild.*"_s, marker };
    EXPECT_FALSE(LoginItems::isLoginItem(session.app));
    ASSERT_TRUE(LoginItems::addToLoginItems(session.app));
    EXPECT_TRUE(LoginItems::isLoginItem(session.app));
    const QString entry = LoginItems::autostartPath(session.app);
    EXPECT_EQ(entry, session.dir.file(u"config/autostart/"_s) + session.app.identifier + u".desktop"_s);
    // There is one already: nothing changes.
    EXPECT_FALSE(LoginItems::addToLoginItems(session.app));

    if (!hasTool(u"desktop-file-validate"_s) || !hasTool(u"gio"_s))
        GTEST_SKIP() << "desktop-file-validate or gio is missing (desktop-file-utils, libglib2.0-bin)";
    QByteArray out;
    EXPECT_EQ(runProgram(u"desktop-file-validate"_s, { entry }, &out), 0) << out.constData();

    // gio runs the entry's command, a name full of quoting traps; not into a pipe, which it outlives.
    const EnvironmentOverride mode("ORVEL_PROCESS_CHILD", u"entry"_s);
    QProcess gio;
    gio.setStandardOutputFile(QProcess::nullDevice());
    gio.setStandardErrorFile(QProcess::nullDevice());
    gio.start(u"gio"_s, { u"launch"_s, entry });
    ASSERT_TRUE(gio.waitForFinished(30000));
    ASSERT_EQ(gio.exitCode(), 0);
    for (int i = 0; i < 300 && !QFile::exists(marker); ++i)
        QThread::msleep(50);
    EXPECT_EQ(readBytes(marker), "login item") << readBytes(entry).constData();
}

TEST(LoginItems, SetLoginItemReplacesTheEntryAndTheEntryCanBeDisabled)
{
    Session session;
    ASSERT_TRUE(LoginItems::addToLoginItems(session.app));
    session.app.program = u"/opt/orvel/moved/orvel-thumbnails"_s;
    EXPECT_TRUE(LoginItems::setLoginItem(true, session.app));
    EXPECT_TRUE(
        readBytes(LoginItems::autostartPath(session.app)).contains("/opt/orvel/moved/orvel-thumbnails"));

    // Switched off in the desktop's settings: still there, no longer a login item.
    QByteArray text = readBytes(LoginItems::autostartPath(session.app));
    ASSERT_TRUE(writeBytes(LoginItems::autostartPath(session.app), text + "Hidden=true\n"));
    EXPECT_FALSE(LoginItems::isLoginItem(session.app));

    EXPECT_TRUE(LoginItems::setLoginItem(false, session.app));
    EXPECT_FALSE(QFile::exists(LoginItems::autostartPath(session.app)));
    EXPECT_TRUE(LoginItems::removeFromLoginItems(session.app));

    // Garbage where the entry belongs is no login item; a file for the folder makes adding fail.
    ASSERT_TRUE(writeBytes(LoginItems::autostartPath(session.app), QByteArray(100000, '[')));
    EXPECT_FALSE(LoginItems::isLoginItem(session.app));
    ASSERT_TRUE(QDir(session.dir.file(u"config/autostart"_s)).removeRecursively());
    ASSERT_TRUE(writeBytes(session.dir.file(u"config/autostart"_s), "not a folder"));
    EXPECT_FALSE(LoginItems::addToLoginItems(session.app));
    EXPECT_FALSE(LoginItems::setLoginItem(true, session.app));
}

TEST(LoginItems, ScheduledLaunchIsAMonthlyTimerReplacedByTheNextCall)
{
    Session session;
    UserDefaults defaults(session.dir.file(u"settings.conf"_s));
    defaults.setObject(
        true, QString::fromLatin1(LoginItems::DidDisableCronTabKey)); // the cron table is another test's
    const QDateTime first(QDate(2026, 3, 7), QTime(6, 5, 59));
    QString error;
    const bool loaded = LoginItems::scheduleLaunchAt(first, defaults, session.app, &error);
    // A running user manager reads its own configuration, not this test's: only its absence is known.
    const bool manager
        = runProgram(u"systemctl"_s, { u"--user"_s, u"show-environment"_s }, nullptr, nullptr, 10000) == 0;
    if (!manager) {
        EXPECT_FALSE(loaded);
        EXPECT_FALSE(error.isEmpty());
    }
    const QString timer = LoginItems::timerPath(session.app);
    ASSERT_TRUE(QFile::exists(timer));
    ASSERT_TRUE(QFile::exists(LoginItems::servicePath(session.app)));
    EXPECT_TRUE(readBytes(timer).contains("\nOnCalendar=*-*-07 06:05:00\n"));

    QByteArray err;
    const int verified = runProgram(u"systemd-analyze"_s, { u"verify"_s, timer }, nullptr, &err);
    if (err.contains("Failed to initialize manager") || !hasTool(u"systemd-analyze"_s))
        std::fprintf(stderr, "systemd-analyze cannot run here: units not verified\n");
    else
        EXPECT_EQ(verified, 0) << err.constData();

    const QDateTime second(QDate(2026, 4, 30), QTime(23, 59));
    EXPECT_FALSE(LoginItems::scheduleLaunchAt(second, defaults, session.app) && !manager);
    EXPECT_TRUE(readBytes(timer).contains("\nOnCalendar=*-*-30 23:59:00\n"));
    EXPECT_FALSE(readBytes(timer).contains("*-*-07"));

    // Without a date: unscheduled, and NO.
    EXPECT_FALSE(LoginItems::scheduleLaunchAt(std::nullopt, defaults, session.app));
    EXPECT_FALSE(QFile::exists(timer));
    EXPECT_FALSE(QFile::exists(LoginItems::servicePath(session.app)));

    // Nowhere to write the units: NO with the reason.
    ASSERT_TRUE(QDir(session.dir.file(u"config/systemd"_s)).removeRecursively());
    ASSERT_TRUE(writeBytes(session.dir.file(u"config/systemd"_s), "not a folder"));
    error.clear();
    EXPECT_FALSE(LoginItems::scheduleLaunchAt(second, defaults, session.app, &error));
    EXPECT_FALSE(error.isEmpty());
}

/// The current user's cron table, put back as it was when the test ends.
class CronTable : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!hasTool(u"crontab"_s))
            GTEST_SKIP() << "no crontab here (Debian package cron)";
        QByteArray err;
        m_hadTable = runProgram(u"crontab"_s, { u"-l"_s }, &m_saved, &err) == 0;
        if (!m_hadTable && !err.contains("no crontab"))
            GTEST_SKIP() << "the user's cron table cannot be read: " << err.constData();
        m_touched = true;
    }
    void TearDown() override
    {
        if (m_touched && m_hadTable)
            EXPECT_EQ(install(m_saved), 0);
        else if (m_touched)
            runProgram(u"crontab"_s, { u"-r"_s });
    }

    static int install(const QByteArray &table)
    {
        QProcess crontab;
        crontab.start(u"crontab"_s, { u"-"_s });
        crontab.write(table);
        crontab.closeWriteChannel();
        crontab.waitForFinished();
        return crontab.exitStatus() == QProcess::NormalExit ? crontab.exitCode() : -1;
    }
    static QByteArray current()
    {
        QByteArray out;
        runProgram(u"crontab"_s, { u"-l"_s }, &out);
        return out;
    }
    bool cleanedUp(UserDefaults &defaults) const
    {
        return LoginItems::scheduleLaunchAt(std::nullopt, defaults, m_app);
    }

    TempDir m_dir;
    const EnvironmentOverride m_config { "XDG_CONFIG_HOME", m_dir.file(u"config"_s) };
    UserDefaults m_defaults { m_dir.file(u"settings.conf"_s) };
    LaunchIdentity m_app { u"org.orvel.test%1"_s.arg(::getpid()), u"Orvel Test"_s,
        u"/opt/orvel/orvel-cron-test-%1"_s.arg(::getpid()), {} };
    const QString m_flag = QString::fromLatin1(LoginItems::DidDisableCronTabKey);

private:
    QByteArray m_saved;
    bool m_hadTable = false;
    bool m_touched = false;
};

TEST_F(CronTable, OldEntriesAreRewrittenAwayOnceAndARefusedTableIsTriedAgain)
{
    const QByteArray other = "17 3 * * 1 /usr/bin/true --weekly\n";
    const QByteArray ours = "0 9 * * * open " + m_app.program.toUtf8() + "  \n";
    // Nothing of ours in the table: the flag is set at once, and nothing is written.
    UserDefaults clean(m_dir.file(u"clean.conf"_s));
    ASSERT_EQ(install(other), 0);
    EXPECT_FALSE(cleanedUp(clean));
    EXPECT_TRUE(clean.boolForKey(m_flag));

    // crontab refuses a broken table, so root's is written in place: the rewrite fails, flag unset.
    const QString spool = u"/var/spool/cron/crontabs/root"_s;
    if (::getuid() == 0 && writeBytes(spool, "this is not a cron line\n" + ours)) {
        EXPECT_FALSE(cleanedUp(m_defaults));
        EXPECT_FALSE(m_defaults.boolForKey(m_flag));
        EXPECT_TRUE(current().contains(m_app.program.toUtf8()));
    }

    // No date: only the clean-up, which answers YES once it has rewritten the table.
    ASSERT_EQ(install("# kept comment\n" + other + ours), 0);
    EXPECT_TRUE(cleanedUp(m_defaults));
    EXPECT_TRUE(current().endsWith("# kept comment\n" + other)) << current().constData();
    EXPECT_TRUE(m_defaults.boolForKey(m_flag));

    // Set once, never read again: a new old-style entry stays.
    ASSERT_EQ(install(other + ours), 0);
    EXPECT_FALSE(cleanedUp(m_defaults));
    EXPECT_TRUE(current().contains(m_app.program.toUtf8()));
}
