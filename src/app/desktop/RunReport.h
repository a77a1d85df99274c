// RunReport: what a run of the desktop application came to, and telling the user about it.
#pragma once

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace orvel {

/// The outcome of one run: from the first path opened while idle until nothing is left to do.
struct RunResults
{
    struct Failure
    {
        QString path;
        QString reason;
    };

    /// The files (and paths) that got no thumbnail, in the order they were met.
    QList<Failure> failures;
    /// The files that got their thumbnail or icon.
    qint64 made = 0;
    /// Whether the user stopped the run.
    bool cancelled = false;

    /// One line saying how the run went, for a title: "2 files got no thumbnail".
    [[nodiscard]] QString summary() const;
    /// The failures one a line ("name: reason"), at most limit of them and then a line saying
    /// how many more there are; fullPaths writes the whole paths instead of the names.
    [[nodiscard]] QString listing(int limit, bool fullPaths = false) const;
};

/// Sends a notification through the desktop's notification service
/// (org.freedesktop.Notifications on the session bus) when there is one.
class DesktopNotifier : public QObject
{
    Q_OBJECT

public:
    static constexpr const char *Service = "org.freedesktop.Notifications";

    explicit DesktopNotifier(const QDBusConnection &bus, QObject *parent = nullptr);

    /// Whether a notification service is on the bus now.
    [[nodiscard]] bool isAvailable() const;

    /// Sends a notification without waiting; done (when given) is called from the event loop
    /// with true once the service has taken it, false when it refused or did not answer. Answers
    /// false at once (done not called) when no service is on the bus.
    bool notify(const QString &summary, const QString &body, std::function<void(bool)> done = {});

    /// The number of notifications sent and not answered yet.
    int pendingCount() const { return m_pending; }

private:
    QDBusConnection m_bus;
    int m_pending = 0;
};

} // namespace orvel
