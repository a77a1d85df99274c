// RunReport: what a run of the desktop application came to, and telling the user about it.
#include "app/desktop/RunReport.h"

#include "app/desktop/LocalizedText.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFileInfo>
#include <QGuiApplication>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

// How long the notification service may take to answer before the report falls back to a
// dialog, in milliseconds.
constexpr int NotifyTimeout = 5000;

} // namespace

QString RunResults::summary() const
{
    if (failures.size() == 1)
        return localizedText(QStringLiteral("1 file got no thumbnail"));
    return localizedText(QStringLiteral("%1 files got no thumbnail")).arg(failures.size());
}

QString RunResults::listing(int limit, bool fullPaths) const
{
    QStringList lines;
    for (const Failure &failure : failures) {
        if (lines.size() == limit) {
            lines << localizedText(QStringLiteral("and %1 more")).arg(failures.size() - limit);
            break;
        }
        const QString name = fullPaths ? failure.path : QFileInfo(failure.path).fileName();
        lines << u"%1: %2"_s.arg(name.isEmpty() ? failure.path : name, failure.reason);
    }
    return lines.join(u'\n');
}

DesktopNotifier::DesktopNotifier(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
}

bool DesktopNotifier::isAvailable() const
{
    if (!m_bus.isConnected() || !m_bus.interface())
        return false;
    return m_bus.interface()->isServiceRegistered(QString::fromLatin1(Service)).value();
}

bool DesktopNotifier::notify(const QString &summary, const QString &body, std::function<void(bool)> done)
{
    if (!isAvailable())
        return false;
    QDBusMessage call = QDBusMessage::createMethodCall(QString::fromLatin1(Service),
        u"/org/freedesktop/Notifications"_s, QString::fromLatin1(Service), u"Notify"_s);
    // The body may hold markup, so the names and reasons in it are escaped.
    QVariantMap hints;
    hints.insert(u"desktop-entry"_s, QGuiApplication::desktopFileName());
    call << QGuiApplication::applicationDisplayName() << 0u << u"org.orvel.Thumbnails"_s << summary
         << body.toHtmlEscaped() << QStringList() << hints << qint32(-1);
    ++m_pending;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, NotifyTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, done](QDBusPendingCallWatcher *w) {
        --m_pending;
        const bool delivered = !w->isError();
        w->deleteLater();
        if (done)
            done(delivered);
    });
    return true;
}

} // namespace orvel
