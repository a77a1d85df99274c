// The update check against a real HTTP server on loopback; the update list's reader on hostile lists.
#include "support/UpdateCheck.h"
#include "support/UpdateList_p.h"
#include "support/UserDefaults.h"

#include "support/UrlCatcher.h"
#include "testlib/TestSupport.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <gtest/gtest.h>

using namespace orvel;
using orvel::test::processEventsUntil;
using orvel::test::UrlCatcher;
using namespace Qt::StringLiterals;

namespace {

// A small HTTP/1.1 server on loopback: every request gets the answer its mode says.
class LoopbackServer : public QObject
{
public:
    enum class Mode { Body, NotFound, RedirectLoop, Drip, Endless };

    explicit LoopbackServer(Mode mode, QByteArray body = {})
        : m_mode(mode)
        , m_body(std::move(body))
    {
        EXPECT_TRUE(m_server.listen(QHostAddress::LocalHost));
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(socket); });
        });
    }

    QUrl address() const { return QUrl(u"http://127.0.0.1:%1"_s.arg(m_server.serverPort())); }
    int requests() const { return m_requests; }
    QByteArray lastPath() const { return m_lastPath; }
    qint64 bytesSent() const { return m_sent; }

private:
    void serve(QTcpSocket *socket)
    {
        // Requests come whole on loopback, one at a time.
        ++m_requests;
        m_lastPath = socket->readAll().split(' ').value(1);
        switch (m_mode) {
        case Mode::Body:
            socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/xml\r\nContent-Length: "
                + QByteArray::number(m_body.size()) + "\r\n\r\n" + m_body);
            break;
        case Mode::NotFound:
            socket->write("HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\n\r\nnot found");
            break;
        case Mode::RedirectLoop:
            socket->write("HTTP/1.1 302 Found\r\nLocation: /Updates.plist\r\nContent-Length: 0\r\n\r\n");
            break;
        case Mode::Drip: {
            // A valid list, one byte at a time, slower than any time limit allows.
            socket->write(
                "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(m_body.size()) + "\r\n\r\n");
            auto *timer = new QTimer(socket);
            connect(timer, &QTimer::timeout, socket, [this, socket, position = qsizetype(0)]() mutable {
                if (position < m_body.size())
                    socket->write(m_body.mid(position++, 1));
            });
            timer->start(200);
            break;
        }
        case Mode::Endless: {
            // 100 MB announced, sent as fast as the client takes it.
            socket->write("HTTP/1.1 200 OK\r\nContent-Length: 104857600\r\n\r\n");
            const QByteArray chunk(64 * 1024, '<');
            const auto more = [this, socket, chunk] {
                if (socket->bytesToWrite() < 256 * 1024 && m_sent < 104857600) {
                    socket->write(chunk);
                    m_sent += chunk.size();
                }
            };
            connect(socket, &QTcpSocket::bytesWritten, socket, more);
            more();
            break;
        }
        }
    }

    Mode m_mode;
    QByteArray m_body;
    QTcpServer m_server;
    QByteArray m_lastPath;
    int m_requests = 0;
    qint64 m_sent = 0;
};

QByteArray xmlList(const QString &version, const QString &download = u"https://orvel.org/download/"_s)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                     "<key>Orvel Thumbnails</key><string>"
        + version.toUtf8() + "</string><key>Other App</key><string>9.9</string>";
    if (!download.isEmpty())
        xml += "<key>Download</key><string>" + download.toUtf8() + "</string>";
    return xml + "</dict></plist>\n";
}

QMessageBox *visibleDialog()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *box = qobject_cast<QMessageBox *>(widget);
        if (box && box->isVisible())
            return box;
    }
    return nullptr;
}

// Waits for the check's dialog, presses the button called buttonText and answers what it showed.
struct DialogSeen
{
    QString name, title, text;
};
DialogSeen pressInDialog(const QString &buttonText)
{
    DialogSeen seen;
    if (!processEventsUntil([] { return visibleDialog() != nullptr; }))
        return seen;
    QMessageBox *box = visibleDialog();
    seen = { box->objectName(), box->windowTitle(), box->text() };
    for (QAbstractButton *button : box->buttons()) {
        if (button->text() == buttonText)
            button->click();
    }
    return seen;
}

// One check for a product at localVersion against server; answer stays nullopt until it ends.
struct CheckRun
{
    explicit CheckRun(const QUrl &server, const QString &localVersion = u"1.2"_s, int timeLimit = 3000)
        : check(Bundle(u"org.orvel.Thumbnails"_s, u"/orvel-no-resources"_s,
            { { u"CFBundleName"_s, u"Orvel Thumbnails"_s }, { u"CFBundleVersion"_s, localVersion } }))
    {
        check.setServerAddress(server);
        check.setTimeLimit(timeLimit);
        QObject::connect(&check, &UpdateCheck::finished, [this](bool newVersion) { answer = newVersion; });
    }
    bool wait()
    {
        return processEventsUntil([this] { return answer.has_value(); }, 20000);
    }

    UpdateCheck check;
    std::optional<bool> answer;
};

} // namespace

TEST(UpdateCheck, ComparesTheListedVersionAndAnswersWithTheRightDialog)
{
    const std::tuple<QByteArray, bool, const char *> cases[] = { // list, new version, the dialog shown
        { xmlList(u"1.3"_s), true, "newVersionDialog" }, { xmlList(u"1.2"_s), false, "upToDateDialog" },
        { xmlList(u"2.0"_s, QString()), true, "" }, // no download page: no dialog
        { "<html><body>Welcome</body></html>", false, "upToDateDialog" }
    };
    for (const auto &[list, newVersion, dialog] : cases) {
        SCOPED_TRACE(dialog);
        UrlCatcher catcher;
        LoopbackServer server(LoopbackServer::Mode::Body, list);
        CheckRun run(server.address());
        ASSERT_TRUE(run.check.start());
        EXPECT_TRUE(run.check.isRunning());
        EXPECT_FALSE(run.check.start()) << "a second request while one runs is ignored";
        const DialogSeen seen = *dialog ? pressInDialog(newVersion ? u"Cancel"_s : u"OK"_s) : DialogSeen {};
        ASSERT_TRUE(run.wait());
        EXPECT_EQ(*run.answer, newVersion);
        EXPECT_EQ(seen.name, QString::fromLatin1(dialog));
        if (seen.name == u"upToDateDialog") {
            EXPECT_EQ(seen.text, u"You are running Orvel Thumbnails 1.2. No newer version was found."_s);
        }
        EXPECT_EQ(server.requests(), 1);
        EXPECT_EQ(server.lastPath(), "/Updates.plist");
        EXPECT_TRUE(catcher.urls.isEmpty()) << "Cancel opens nothing";
        EXPECT_FALSE(run.check.isRunning());
    }
}

TEST(UpdateCheck, DownloadOpensTheListedWebPageAndNothingElse)
{
    for (const QString &page : { u"https://orvel.org/download/?v=1.3"_s, u"file:///bin/sh"_s }) {
        UrlCatcher catcher;
        LoopbackServer server(LoopbackServer::Mode::Body, xmlList(u"1.3"_s, page));
        CheckRun run(server.address());
        ASSERT_TRUE(run.check.start());
        EXPECT_EQ(pressInDialog(u"Download"_s).title, u"A New Version is Available"_s);
        ASSERT_TRUE(run.wait());
        EXPECT_TRUE(*run.answer);
        EXPECT_EQ(catcher.urls, page.startsWith(u"https"_s) ? QList<QUrl> { QUrl(page) } : QList<QUrl> {});
    }
}

// Every failure is reported as up to date, within the time limit (1.5 s here) plus a margin.
TEST(UpdateCheck, FailuresEndUpToDateWithinTheTimeLimit)
{
    for (const auto &[mode, body] : { std::pair { LoopbackServer::Mode::NotFound, QByteArray() },
             std::pair { LoopbackServer::Mode::RedirectLoop, QByteArray() },
             std::pair { LoopbackServer::Mode::Drip, xmlList(u"2.0"_s) }, // one byte at a time
             std::pair { LoopbackServer::Mode::Endless, QByteArray() } }) { // a hundred megabytes
        SCOPED_TRACE(int(mode));
        LoopbackServer server(mode, body);
        CheckRun run(server.address(), u"1.2"_s, 1500);
        QElapsedTimer clock;
        clock.start();
        ASSERT_TRUE(run.check.start());
        EXPECT_LT(clock.elapsed(), 500) << "start() must not wait for the server";
        EXPECT_EQ(pressInDialog(u"OK"_s).name, u"upToDateDialog"_s);
        ASSERT_TRUE(run.wait());
        EXPECT_FALSE(*run.answer);
        EXPECT_LT(clock.elapsed(), 6000);
        // The endless body was abandoned after about a megabyte, not read to its end.
        EXPECT_LT(server.bytesSent(), 16 * 1024 * 1024);
    }
}

TEST(UpdateCheck, ServerSettingOverridesTheBuiltInServerWhenItIsAWebAddress)
{
    UserDefaults::standard().setString(u"http://127.0.0.1:9/updates/"_s, u"UpdateServer"_s);
    EXPECT_EQ(UpdateCheck::updateListAddress(UpdateCheck::defaultServerAddress()),
        QUrl(u"http://127.0.0.1:9/updates/Updates.plist"_s));
    UserDefaults::standard().setString(u"file:///etc"_s, u"UpdateServer"_s);
    EXPECT_EQ(UpdateCheck::defaultServerAddress(), QUrl(u"" ORVEL_WEB_SERVER ""_s));
    UserDefaults::standard().removeObjectForKey(u"UpdateServer"_s);
}

// ---- The update list's reader (hostile property lists in general are the file toolkit's tests) --

TEST(UpdateList, KeepsTheStringsOfADictionaryWithinLimitsOfItsOwn)
{
    EXPECT_EQ(readUpdateList("<plist version=\"1.0\"><dict><key>a</key><integer>1</integer><key>b</key>"
                             "<string>2</string></dict></plist>"),
        (QVariantMap { { u"b"_s, u"2"_s } }));
    // Fine for a property list, not for a list of versions: larger, deeper, or with more values.
    EXPECT_FALSE(readUpdateList(xmlList(QString(2 << 20, u'1'))));
    const auto nested = [](int depth, int values) {
        return "<plist version=\"1.0\"><dict><key>a</key>" + QByteArray("<array>").repeated(depth)
            + QByteArray("<true/>").repeated(values) + QByteArray("</array>").repeated(depth)
            + "</dict></plist>";
    };
    EXPECT_TRUE(readUpdateList(nested(13, 9900)));
    EXPECT_FALSE(readUpdateList(nested(17, 1)));
    EXPECT_FALSE(readUpdateList(nested(1, 10001)));
    EXPECT_FALSE(readUpdateList(QByteArray()));
    EXPECT_FALSE(readUpdateList("<plist version=\"1.0\"><array><string>2.0</string></array></plist>"));
}

TEST(UpdateList, VersionsCompareAsTextIgnoringCaseNotAsNumbers)
{
    const std::tuple<QString, QString, bool> cases[] = { { u"1.3"_s, u"1.2"_s, true },
        { u"1.2"_s, u"1.3"_s, true }, { u"1.2"_s, u"1.2.0"_s, true }, { u"1.10"_s, u"1.9"_s, true },
        { u"1.2b3"_s, u"1.2B3"_s, false }, { u"ÄRA 1"_s, u"ära 1"_s, false }, { QString(), u"1.2"_s, false },
        { u"1.2"_s, QString(), false } };
    EXPECT_FALSE(isNewVersion({ { u"Other App"_s, u"2.0"_s } }, u"Orvel Thumbnails"_s, u"1.2"_s));
    for (const auto &[server, local, isNew] : cases) {
        const QVariantMap list { { u"Orvel Thumbnails"_s, server } };
        EXPECT_EQ(isNewVersion(list, u"Orvel Thumbnails"_s, local), isNew) << server << " vs " << local;
    }
}
