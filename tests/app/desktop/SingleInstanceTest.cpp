// Tests of the single-instance hand-over, over a private D-Bus session bus and over the local
// socket, and of the desktop application launched as a program.
#include "app/desktop/SingleInstance.h"
#include "DesktopTestSupport.h"
#include "testlib/TestSupport.h"

#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>
#include <QThread>
#include <QUuid>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

QString uniqueId() { return u"org.orvel.ThumbnailsTest.t"_s + QUuid::createUuid().toString(QUuid::Id128); }

QDBusConnection noBus() { return QDBusConnection(u"no bus"_s); }

/// A private session bus, started for the test and ended with it.
class PrivateBus
{
public:
    PrivateBus()
    {
        m_daemon.start(u"dbus-daemon"_s, { u"--session"_s, u"--nofork"_s, u"--print-address=1"_s });
        if (!m_daemon.waitForStarted(5000))
            return;
        processEventsUntil([this] { return m_daemon.canReadLine(); }, 5000);
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }
    ~PrivateBus()
    {
        for (const QString &name : m_connections)
            QDBusConnection::disconnectFromBus(name);
        m_daemon.kill();
        m_daemon.waitForFinished(5000);
    }
    QString address() const { return m_address; }
    QDBusConnection connect()
    {
        const QString name = u"test-%1"_s.arg(m_connections.size());
        m_connections << name;
        return QDBusConnection::connectToBus(m_address, name);
    }

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_connections;
};

TEST(SingleInstance, TheObjectPathComesFromTheApplicationId)
{
    EXPECT_EQ(SingleInstance(u"org.orvel.Thumbnails"_s, noBus()).objectPath(), u"/org/orvel/Thumbnails"_s);
    EXPECT_EQ(SingleInstance(u"org.orvel.my-app"_s, noBus()).objectPath(), u"/org/orvel/my_app"_s);
}

TEST(SingleInstance, WithoutABusASecondInstanceHandsOverThroughTheSocket)
{
    const QString id = uniqueId();
    SingleInstance first(id, noBus());
    ASSERT_TRUE(first.listen());
    EXPECT_EQ(first.transport(), u"socket"_s);
    QSignalSpy opened(&first, &SingleInstance::openRequested);
    QSignalSpy activated(&first, &SingleInstance::activateRequested);

    SingleInstance second(id, noBus());
    EXPECT_FALSE(second.listen());
    const QStringList paths = { u"/tmp/b b.png"_s, u"/tmp/ä/a.png"_s };
    ASSERT_TRUE(second.handOver(paths));
    ASSERT_TRUE(processEventsUntil([&] { return opened.size() == 1; }));
    EXPECT_EQ(opened.at(0).at(0).toStringList(), paths);

    ASSERT_TRUE(second.handOver({}));
    ASSERT_TRUE(processEventsUntil([&] { return activated.size() == 1; }));
    EXPECT_EQ(opened.size(), 1);
}

TEST(SingleInstance, AStaleSocketIsTakenOver)
{
    const QString id = uniqueId();
    SingleInstance probe(id, noBus());
    ASSERT_TRUE(writeBytes(probe.socketPath(), "left behind"));
    SingleInstance first(id, noBus());
    EXPECT_TRUE(first.listen());
    QFile::remove(probe.socketPath());
}

TEST(SingleInstance, AGarbledSocketRequestIsIgnored)
{
    const QString id = uniqueId();
    SingleInstance first(id, noBus());
    ASSERT_TRUE(first.listen());
    QSignalSpy opened(&first, &SingleInstance::openRequested);
    QSignalSpy activated(&first, &SingleInstance::activateRequested);
    QLocalSocket socket;
    socket.connectToServer(first.socketPath());
    ASSERT_TRUE(socket.waitForConnected(5000));
    socket.write(QByteArray("\xff\xfe junk", 7));
    socket.waitForBytesWritten(5000);
    socket.disconnectFromServer();
    processEventsUntil([] { return false; }, 200);
    EXPECT_EQ(opened.size(), 0);
    EXPECT_EQ(activated.size(), 0);
}

TEST(SingleInstance, OnASessionBusTheSecondInstanceCallsOpenAndActivate)
{
    PrivateBus bus;
    if (bus.address().isEmpty())
        GTEST_SKIP() << "dbus-daemon could not be started";
    // The program looks for its own id; the private bus keeps it apart from any other.
    const QString id = SingleInstance::defaultApplicationId();
    SingleInstance first(id, bus.connect());
    ASSERT_TRUE(first.listen());
    EXPECT_EQ(first.transport(), u"dbus"_s);
    QSignalSpy opened(&first, &SingleInstance::openRequested);
    QSignalSpy activated(&first, &SingleInstance::activateRequested);

    // The second launch is the real program, on the same bus.
    QByteArray out;
    QByteArray err;
    const QString path = u"/tmp/some folder/pic #1.png"_s;
    QProcess second;
    second.setProgram(QString::fromUtf8(ORVEL_THUMBNAILS_PATH));
    second.setArguments({ path });
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address());
    second.setProcessEnvironment(env);
    second.start();
    ASSERT_TRUE(processEventsUntil([&] { return second.state() == QProcess::NotRunning; }, 30000));
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    ASSERT_TRUE(processEventsUntil([&] { return opened.size() == 1; }));
    EXPECT_EQ(opened.at(0).at(0).toStringList(), QStringList({ path }));

    SingleInstance third(id, bus.connect());
    EXPECT_FALSE(third.listen());
    // The running instance answers from a thread of its own, even while its main thread is busy
    // (as it is here, blocked in this call).
    EXPECT_TRUE(third.handOver({}));
    EXPECT_EQ(activated.size(), 0);
    ASSERT_TRUE(processEventsUntil([&] { return activated.size() == 1; }));
}

/// The desktop program with its own settings, cache and runtime folders and no session bus.
QProcessEnvironment programEnvironment(const TempDir &home)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
    env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    env.insert(u"XDG_CONFIG_HOME"_s, home.file(u"config"_s));
    env.insert(u"XDG_CACHE_HOME"_s, home.file(u"cache"_s));
    QDir(home.path()).mkdir(u"runtime"_s);
    QFile::setPermissions(home.file(u"runtime"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    env.insert(u"XDG_RUNTIME_DIR"_s, home.file(u"runtime"_s));
    return env;
}

TEST(DesktopProgram, ALaunchByDropWritesTheThumbnailsAndQuitsByItself)
{
    TempDir home;
    TempDir pictures;
    ASSERT_TRUE(writeTestImage(pictures.file(u"one.png"_s), 80, 60));
    QDir(pictures.path()).mkdir(u"more"_s);
    ASSERT_TRUE(writeTestImage(pictures.file(u"more/two.jpg"_s), 60, 80));
    QProcess program;
    program.setProcessEnvironment(programEnvironment(home));
    program.start(
        QString::fromUtf8(ORVEL_THUMBNAILS_PATH), { pictures.file(u"one.png"_s), pictures.file(u"more"_s) });
    ASSERT_TRUE(program.waitForFinished(60000)) << "it did not quit by itself";
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
    EXPECT_TRUE(QFile::exists(pictures.file(u"one_thumb.jpg"_s)));
    EXPECT_TRUE(QFile::exists(pictures.file(u"more/two_thumb.jpg"_s)));
}

TEST(DesktopProgram, WithQuitWhenDoneOffItStaysUntilAnotherLaunchAndTakesItsFiles)
{
    TempDir home;
    TempDir pictures;
    QDir(home.path()).mkpath(u"config/orvel"_s);
    ASSERT_TRUE(
        writeBytes(home.file(u"config/orvel/thumbnails.conf"_s), "QuitWhenDone = false\nfiletype = 4\n"));
    ASSERT_TRUE(writeTestImage(pictures.file(u"first.jpg"_s), 80, 60));
    ASSERT_TRUE(writeTestImage(pictures.file(u"second.jpg"_s), 80, 60));

    QProcess running;
    running.setProcessEnvironment(programEnvironment(home));
    running.start(QString::fromUtf8(ORVEL_THUMBNAILS_PATH), { pictures.file(u"first.jpg"_s) });
    ASSERT_TRUE(running.waitForStarted());
    ASSERT_TRUE(
        processEventsUntil([&] { return QFile::exists(pictures.file(u"first_thumb.png"_s)); }, 60000));
    EXPECT_FALSE(running.waitForFinished(500)) << "it quit although QuitWhenDone is off";

    QProcess second;
    second.setProcessEnvironment(programEnvironment(home));
    second.start(QString::fromUtf8(ORVEL_THUMBNAILS_PATH), { pictures.file(u"second.jpg"_s) });
    ASSERT_TRUE(second.waitForFinished(30000));
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    ASSERT_TRUE(
        processEventsUntil([&] { return QFile::exists(pictures.file(u"second_thumb.png"_s)); }, 60000));
    EXPECT_EQ(running.state(), QProcess::Running);

    running.terminate();
    running.waitForFinished(10000);
}

} // namespace
