// SingleInstance: makes one running instance of the desktop application take the launches that follow.
//
// The local socket carries one request per connection: "open" or "activate", then the paths, each
// followed by a NUL byte (a path cannot hold one), the whole in UTF-8; the sender then closes.
#include "app/desktop/SingleInstance.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <QUrl>

#include <memory>
#include <unistd.h>

namespace orvel {

namespace {

constexpr int HandOverTimeout = 5000;
// A request larger than this is not a list of paths; the connection is dropped.
constexpr qint64 MaxRequestBytes = 64 << 20;

/// Takes the calls of other launches on a thread of its own, so that they are answered at once
/// even while the main thread is busy with a file; the requests reach the main thread queued.
class BusReceiver : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void activateRequested();
    void openRequested(const QStringList &uris);
};

class ApplicationAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(BusReceiver *receiver)
        : QDBusAbstractAdaptor(receiver)
        , m_receiver(receiver)
    {
    }

public Q_SLOTS:
    void Activate(const QVariantMap &) { Q_EMIT m_receiver->activateRequested(); }
    void Open(const QStringList &uris, const QVariantMap &) { Q_EMIT m_receiver->openRequested(uris); }
    void ActivateAction(const QString &, const QVariantList &, const QVariantMap &) { }

private:
    BusReceiver *m_receiver;
};

QStringList localPaths(const QStringList &uris)
{
    QStringList paths;
    for (const QString &uri : uris) {
        const QUrl url(uri);
        if (url.isLocalFile())
            paths << url.toLocalFile();
        else if (uri.startsWith(u'/'))
            paths << uri;
    }
    return paths;
}

} // namespace

QString SingleInstance::defaultApplicationId() { return QStringLiteral("org.orvel.Thumbnails"); }

SingleInstance::SingleInstance(const QString &applicationId, QObject *parent)
    : SingleInstance(applicationId, QDBusConnection::sessionBus(), parent)
{
}

SingleInstance::SingleInstance(const QString &applicationId, const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_applicationId(applicationId)
    , m_bus(bus)
{
}

SingleInstance::~SingleInstance()
{
    if (m_transport == u"dbus") {
        m_bus.unregisterService(m_applicationId);
        m_bus.unregisterObject(objectPath());
    }
    if (m_busThread) {
        m_busThread->quit();
        m_busThread->wait();
        delete m_receiver;
    }
}

QString SingleInstance::objectPath() const
{
    QString path = u'/' + m_applicationId;
    path.replace(u'.', u'/').replace(u'-', u'_');
    return path;
}

QString SingleInstance::socketPath() const
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return QStringLiteral("%1/%2-%3.socket").arg(folder, m_applicationId).arg(::getuid());
}

bool SingleInstance::listen()
{
    if (m_bus.isConnected())
        return listenOnBus();
    return listenOnSocket();
}

bool SingleInstance::listenOnBus()
{
    QDBusConnection &bus = m_bus;
    m_busThread = new QThread(this);
    auto *receiver = new BusReceiver;
    m_receiver = receiver;
    new ApplicationAdaptor(receiver);
    receiver->moveToThread(m_busThread);
    connect(receiver, &BusReceiver::activateRequested, this, &SingleInstance::activate, Qt::QueuedConnection);
    connect(receiver, &BusReceiver::openRequested, this, &SingleInstance::open, Qt::QueuedConnection);
    m_busThread->start();
    if (!bus.registerObject(objectPath(), m_receiver, QDBusConnection::ExportAdaptors))
        return false;
    const auto reply = bus.interface()->registerService(m_applicationId,
        QDBusConnectionInterface::DontQueueService, QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid() || reply.value() != QDBusConnectionInterface::ServiceRegistered) {
        bus.unregisterObject(objectPath());
        return false;
    }
    m_transport = QStringLiteral("dbus");
    return true;
}

bool SingleInstance::listenOnSocket()
{
    const QString path = socketPath();
    {
        QLocalSocket probe;
        probe.connectToServer(path);
        if (probe.waitForConnected(HandOverTimeout / 5))
            return false;
    }
    // Nobody answers: whatever is left there is from an instance that is gone.
    QLocalServer::removeServer(path);
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(path)) {
        delete m_server;
        m_server = nullptr;
        return false;
    }
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::readConnection);
    m_transport = QStringLiteral("socket");
    return true;
}

void SingleInstance::readConnection()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        auto received = std::make_shared<QByteArray>();
        connect(socket, &QLocalSocket::readyRead, this, [socket, received] {
            *received += socket->readAll();
            if (received->size() > MaxRequestBytes) {
                received->clear();
                socket->abort();
            }
        });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket, received] {
            if (received->size() <= MaxRequestBytes)
                *received += socket->readAll();
            const QList<QByteArray> parts = received->split('\0');
            socket->deleteLater();
            if (parts.isEmpty())
                return;
            if (parts.first() == "activate") {
                activate();
            } else if (parts.first() == "open") {
                QStringList paths;
                for (qsizetype i = 1; i < parts.size(); ++i) {
                    if (!parts.at(i).isEmpty())
                        paths << QFile::decodeName(parts.at(i));
                }
                if (!paths.isEmpty())
                    Q_EMIT openRequested(paths);
            }
        });
    }
}

void SingleInstance::activate() { Q_EMIT activateRequested(); }

void SingleInstance::open(const QStringList &uris)
{
    const QStringList paths = localPaths(uris);
    if (!paths.isEmpty())
        Q_EMIT openRequested(paths);
}

bool SingleInstance::handOver(const QStringList &paths)
{
    QDBusConnection &bus = m_bus;
    if (bus.isConnected()) {
        QDBusMessage call = QDBusMessage::createMethodCall(m_applicationId, objectPath(),
            QStringLiteral("org.freedesktop.Application"),
            paths.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
        QStringList uris;
        for (const QString &path : paths)
            uris << QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
        if (paths.isEmpty())
            call << QVariantMap();
        else
            call << uris << QVariantMap();
        const QDBusMessage reply = bus.call(call, QDBus::Block, HandOverTimeout);
        return reply.type() == QDBusMessage::ReplyMessage;
    }

    QLocalSocket socket;
    socket.connectToServer(socketPath());
    if (!socket.waitForConnected(HandOverTimeout))
        return false;
    QByteArray request = paths.isEmpty() ? QByteArray("activate") : QByteArray("open");
    request += '\0';
    for (const QString &path : paths)
        request += QFile::encodeName(path) + '\0';
    socket.write(request);
    if (!socket.waitForBytesWritten(HandOverTimeout) && socket.bytesToWrite() > 0)
        return false;
    socket.disconnectFromServer();
    if (socket.state() != QLocalSocket::UnconnectedState)
        socket.waitForDisconnected(HandOverTimeout);
    return true;
}

} // namespace orvel

#include "SingleInstance.moc"
