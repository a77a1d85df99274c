// The update check: the application's version against the list on the maker's web server.
#pragma once

#include "support/Bundle.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QWidget>

QT_BEGIN_NAMESPACE
class QNetworkReply;
QT_END_NAMESPACE

namespace orvel {

/// Fetches the update list ("/Updates.plist" on the server, a property list dictionary: each
/// product's name -> its current version, "Download" -> the download page) and compares the
/// entry for the bundle's "CFBundleName" with its "CFBundleVersion" as text, ignoring case. A
/// difference either way is a new version: a dialog offers the download (no dialog when the list
/// names no "Download" page). Every failure (no connection, time limit, an unreadable or hostile
/// list, no entry, equal versions) ends in the "up-to-date" dialog.
///
/// The check runs beside the event loop: start() returns at once and finished() reports the
/// answer once the dialog is closed. The download is read in pieces, never more than
/// maxBodySize() bytes, and the whole check is abandoned after timeLimit(), however slowly
/// the server keeps sending.
class UpdateCheck : public QObject
{
    Q_OBJECT

public:
    static constexpr int DefaultTimeLimit = 15000;
    static constexpr qsizetype DefaultMaxBodySize = 1 << 20;

    /// A check for bundle's product and version; dialog texts come from the toolkit's "Bundle" table.
    explicit UpdateCheck(const Bundle &bundle, QObject *parent = nullptr);
    ~UpdateCheck() override;

    /// The application's check (the main bundle, the configured server), made on first use.
    static UpdateCheck &shared();
    /// Starts the application's check; false when one is running already (the request is ignored).
    static bool checkForNewVersion();

    /// The "UpdateServer" setting when it holds an http or https address, else the build's web
    /// server (ORVEL_WEB_SERVER, https://orvel.org unless configured otherwise).
    [[nodiscard]] static QUrl defaultServerAddress();
    /// The address of the list on server: its path with "/Updates.plist" appended.
    [[nodiscard]] static QUrl updateListAddress(const QUrl &server);

    void setServerAddress(const QUrl &server) { m_server = server; }
    [[nodiscard]] QUrl serverAddress() const { return m_server; }
    /// The longest the download may take, in milliseconds.
    void setTimeLimit(int milliseconds) { m_timeLimit = milliseconds; }
    [[nodiscard]] int timeLimit() const { return m_timeLimit; }
    void setMaxBodySize(qsizetype bytes) { m_maxBodySize = bytes; }
    [[nodiscard]] qsizetype maxBodySize() const { return m_maxBodySize; }
    /// The window the dialogs are shown over (none by default).
    void setDialogParent(QWidget *parent) { m_dialogParent = parent; }

    /// Starts a check; false, and nothing done, while one is running (download or dialog).
    bool start();
    [[nodiscard]] bool isRunning() const { return m_running; }

Q_SIGNALS:
    /// The check is done: true when the server listed another version (whatever the user then
    /// chose), false when the up-to-date dialog was shown.
    void finished(bool newVersion);

private:
    void readBody();
    void downloadFinished();
    void abandon();
    void showNewVersion(const QString &serverVersion, const QUrl &download);
    void showUpToDate();
    void finish(bool newVersion);

    Bundle m_bundle;
    QUrl m_server;
    int m_timeLimit = DefaultTimeLimit;
    qsizetype m_maxBodySize = DefaultMaxBodySize;
    QPointer<QWidget> m_dialogParent;
    QNetworkAccessManager m_network;
    QPointer<QNetworkReply> m_reply;
    QTimer m_deadline;
    QByteArray m_body;
    bool m_failed = false;
    bool m_running = false;
};

} // namespace orvel
