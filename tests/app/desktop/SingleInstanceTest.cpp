// The single-instance hand-over over the local socket and over a private D-Bus session bus.
#include "app/desktop/SingleInstance.h"
#include "DesktopTestSupport.h"
#include "testlib/TestSupport.h"

#include <QDBusConnection>
#include <QLocalSocket>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include <functional>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

QDBusConnection noBus() { return QDBusConnection(u"no bus"_s); }

// Odd characters in paths arrive as they were sent, whatever the transport.
const QStringList oddPaths = { u"/tmp/some folder/pic #1.png"_s, u"/tmp/ä/a%20b?.png"_s };

TEST(SingleInstance, TheObjectPathComesFromTheApplicationId)
{
    EXPECT_EQ(SingleInstance(u"org.orvel.Thumbnails"_s, noBus()).objectPath(), u"/org/orvel/Thumbnails"_s);
    EXPECT_EQ(SingleInstance(u"org.orvel.my-app"_s, noBus()).objectPath(), u"/org/orvel/my_app"_s);
}

// A second instance hands paths, then nothing (an activation), to the first one through transport;
// on a bus the first answers from a thread of its own while its main thread is blocked in the calls.
void expectHandOver(const std::function<QDBusConnection()> &bus, const QString &transport)
{
    const QString id = uniqueApplicationId();
    SingleInstance first(id, bus());
    ASSERT_TRUE(first.listen());
    EXPECT_EQ(first.transport(), transport);
    QSignalSpy opened(&first, &SingleInstance::openRequested);
    QSignalSpy activated(&first, &SingleInstance::activateRequested);

    SingleInstance second(id, bus());
    EXPECT_FALSE(second.listen());
    ASSERT_TRUE(second.handOver(oddPaths));
    ASSERT_TRUE(second.handOver({}));
    EXPECT_EQ(opened.size() + activated.size(), 0);
    ASSERT_TRUE(processEventsUntil([&] { return activated.size() == 1 && opened.size() == 1; }));
    EXPECT_EQ(opened.at(0).at(0).toStringList(), oddPaths);
}

TEST(SingleInstance, WithoutABusASecondInstanceHandsOverThroughTheSocket)
{
    expectHandOver(noBus, u"socket"_s);
}

TEST(SingleInstance, OnASessionBusItIsFoundByItsIdAndAnswersWhileTheMainThreadIsBusy)
{
    PrivateBus bus;
    if (!bus.isRunning())
        GTEST_SKIP() << "dbus-daemon could not be started";
    expectHandOver([&bus] { return bus.connect(); }, u"dbus"_s);
}

TEST(SingleInstance, AStaleSocketIsTakenOverAndAGarbledRequestIgnored)
{
    const QString id = uniqueApplicationId();
    SingleInstance first(id, noBus());
    ASSERT_TRUE(writeBytes(first.socketPath(), "left behind"));
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
    EXPECT_EQ(opened.size() + activated.size(), 0);
}

} // namespace
