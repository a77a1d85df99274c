// SingleInstance: makes one running instance of the desktop application take the launches that follow.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

class QLocalServer;
class QThread;

namespace orvel {

/// The first launch becomes the running instance; a later launch hands its paths to it (or,
/// without paths, its request to show the panel) and ends. On a session bus this is D-Bus
/// org.freedesktop.Application under the application's id (Activate, Open with file URIs);
/// without one, a local socket in the user's runtime folder.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    /// The application's id: the D-Bus name, the desktop file's name.
    [[nodiscard]] static QString defaultApplicationId();

    /// An instance found on the session bus, or through the local socket when there is none.
    explicit SingleInstance(const QString &applicationId = defaultApplicationId(), QObject *parent = nullptr);
    /// An instance found on bus (the local socket when bus is not connected).
    SingleInstance(const QString &applicationId, const QDBusConnection &bus, QObject *parent = nullptr);
    ~SingleInstance() override;

    /// Tries to become the running instance; answers false when another one runs already.
    bool listen();
    /// Hands paths (absolute) to the running instance, or asks it to show its panel when paths
    /// is empty. Answers whether it took them.
    bool handOver(const QStringList &paths);

    /// "dbus" or "socket" once listen() has succeeded, else empty.
    [[nodiscard]] QString transport() const { return m_transport; }
    /// The D-Bus object path of the application's id ("/org/orvel/Thumbnails").
    [[nodiscard]] QString objectPath() const;
    /// The local socket used without a session bus.
    [[nodiscard]] QString socketPath() const;

    /// Entry points of the org.freedesktop.Application interface.
    void activate();
    void open(const QStringList &uris);

Q_SIGNALS:
    /// Another launch handed over these paths, in its order.
    void openRequested(const QStringList &paths);
    /// Another launch without paths: show the panel.
    void activateRequested();

private:
    bool listenOnBus();
    bool listenOnSocket();
    void readConnection();

    QString m_applicationId;
    QDBusConnection m_bus;
    QString m_transport;
    QLocalServer *m_server = nullptr;
    QThread *m_busThread = nullptr;
    QObject *m_receiver = nullptr;
};

} // namespace orvel
