// The update check: an asynchronous download under a size and time limit, then one of two dialogs.
#include "support/UpdateCheck.h"

#include "support/HelpActions.h"
#include "support/Log.h"
#include "support/UpdateList_p.h"
#include "support/UserDefaults.h"

#include <QApplication>
#include <QMessageBox>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPushButton>

#include <initializer_list>

namespace orvel {

namespace {

const QString &tableName()
{
    static const QString name = QStringLiteral("Bundle");
    return name;
}

QString dialogText(const QString &english)
{
    return Bundle::toolkitBundle().localizedStringForKey(english, QString(), tableName());
}

// Fills each "%@" of format with the next argument, in order, as the tables write them.
QString fillPlaceholders(const QString &format, std::initializer_list<QString> arguments)
{
    QString result;
    qsizetype from = 0;
    for (const QString &argument : arguments) {
        const qsizetype at = format.indexOf(u"%@", from);
        if (at < 0)
            break;
        result += QStringView(format).sliced(from, at - from);
        result += argument;
        from = at + 2;
    }
    result += QStringView(format).sliced(from);
    return result;
}

// Dialogs need widgets; a program without them (a command line) gets the answer in its log.
bool canShowDialogs() { return qobject_cast<QApplication *>(QCoreApplication::instance()) != nullptr; }

} // namespace

UpdateCheck::UpdateCheck(const Bundle &bundle, QObject *parent)
    : QObject(parent)
    , m_bundle(bundle)
    , m_server(defaultServerAddress())
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &UpdateCheck::abandon);
}

UpdateCheck::~UpdateCheck()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
}

UpdateCheck &UpdateCheck::shared()
{
    static UpdateCheck *check = new UpdateCheck(Bundle::mainBundle(), qApp);
    return *check;
}

bool UpdateCheck::checkForNewVersion() { return shared().start(); }

QUrl UpdateCheck::defaultServerAddress()
{
    const QUrl configured(UserDefaults::standard().stringForKey(QStringLiteral("UpdateServer")));
    if (configured.isValid() && (configured.scheme() == u"https" || configured.scheme() == u"http")
        && !configured.host().isEmpty())
        return configured;
    return QUrl(QStringLiteral(ORVEL_WEB_SERVER));
}

QUrl UpdateCheck::updateListAddress(const QUrl &server)
{
    QUrl address = server;
    QString path = server.path();
    while (path.endsWith(u'/'))
        path.chop(1);
    address.setPath(path + QStringLiteral("/Updates.plist"));
    address.setQuery(QString());
    address.setFragment(QString());
    return address;
}

bool UpdateCheck::start()
{
    if (m_running)
        return false;
    m_running = true;
    m_failed = false;
    m_body.clear();

    QNetworkRequest request(updateListAddress(m_server));
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(5);
    request.setTransferTimeout(m_timeLimit);
    m_reply = m_network.get(request);
    // Keeps what Qt holds unread small; readBody() moves it into m_body as it comes.
    m_reply->setReadBufferSize(64 * 1024);
    connect(m_reply, &QNetworkReply::readyRead, this, &UpdateCheck::readBody);
    connect(m_reply, &QNetworkReply::finished, this, &UpdateCheck::downloadFinished);
    m_deadline.start(m_timeLimit);
    return true;
}

void UpdateCheck::readBody()
{
    if (!m_reply || m_failed)
        return;
    const qint64 available = m_reply->bytesAvailable();
    if (m_body.size() + available > m_maxBodySize) {
        // Too big to be a list of versions; the rest is not read.
        m_failed = true;
        m_reply->abort();
        return;
    }
    m_body += m_reply->read(available);
}

void UpdateCheck::abandon()
{
    if (!m_reply)
        return;
    m_failed = true;
    m_reply->abort();
}

void UpdateCheck::downloadFinished()
{
    m_deadline.stop();
    if (!m_reply)
        return;
    readBody();
    // A body found too big here aborts the reply, which may have reported its end already.
    if (!m_reply)
        return;
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    const bool ok = !m_failed && reply->error() == QNetworkReply::NoError;
    reply->disconnect(this);
    reply->deleteLater();

    const std::optional<QVariantMap> list = ok ? readUpdateList(m_body) : std::nullopt;
    m_body.clear();
    const QString product = m_bundle.bundleName();
    const QString localVersion
        = m_bundle.infoDictionary().value(QStringLiteral("CFBundleVersion")).toString();
    if (!list || !isNewVersion(*list, product, localVersion)) {
        showUpToDate();
        return;
    }
    const QString download = list->value(QStringLiteral("Download")).toString();
    if (download.isEmpty()) {
        finish(true);
        return;
    }
    showNewVersion(list->value(product).toString(), QUrl(download));
}

void UpdateCheck::showNewVersion(const QString &serverVersion, const QUrl &download)
{
    if (!canShowDialogs()) {
        logMessage(
            QStringLiteral("%1 %2: %3").arg(m_bundle.bundleName(), serverVersion, download.toString()));
        finish(true);
        return;
    }
    auto *box = new QMessageBox(QMessageBox::Information,
        dialogText(QStringLiteral("A New Version is Available")),
        fillPlaceholders(dialogText(QStringLiteral("A new version of %@ is available (%@). Would you like to "
                                                   "download the new version now?")),
            { m_bundle.bundleName(), serverVersion }),
        QMessageBox::NoButton, m_dialogParent);
    box->setObjectName(QStringLiteral("newVersionDialog"));
    QPushButton *downloadButton
        = box->addButton(dialogText(QStringLiteral("Download")), QMessageBox::AcceptRole);
    box->addButton(dialogText(QStringLiteral("Cancel")), QMessageBox::RejectRole);
    box->setDefaultButton(downloadButton);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::ApplicationModal);
    connect(box, &QMessageBox::finished, this, [this, box, downloadButton, download] {
        // The address comes from the network: only a web page is opened, never a file or a program.
        if (box->clickedButton() == downloadButton
            && (download.scheme() == u"https" || download.scheme() == u"http"))
            HelpActions::launchStringURL(download.toString(QUrl::FullyEncoded));
        finish(true);
    });
    box->show();
}

void UpdateCheck::showUpToDate()
{
    const QString localVersion
        = m_bundle.infoDictionary().value(QStringLiteral("CFBundleVersion")).toString();
    if (!canShowDialogs()) {
        finish(false);
        return;
    }
    auto *box
        = new QMessageBox(QMessageBox::Information, dialogText(QStringLiteral("Your software is up-to-date")),
            fillPlaceholders(dialogText(QStringLiteral("You are running %@ %@. No newer version was found.")),
                { m_bundle.bundleName(), localVersion }),
            QMessageBox::NoButton, m_dialogParent);
    box->setObjectName(QStringLiteral("upToDateDialog"));
    box->setDefaultButton(box->addButton(dialogText(QStringLiteral("OK")), QMessageBox::AcceptRole));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::ApplicationModal);
    connect(box, &QMessageBox::finished, this, [this] { finish(false); });
    box->show();
}

void UpdateCheck::finish(bool newVersion)
{
    m_running = false;
    Q_EMIT finished(newVersion);
}

} // namespace orvel
