// The Help menu's actions and the system facts that feedback reports.
#include "support/HelpActions.h"

#include "support/Bundle.h"
#include "support/Log.h"
#include "url/URLStrings.h"

#include <QDesktopServices>
#include <QFile>
#include <QSysInfo>
#include <QUrl>

#include <sys/utsname.h>

namespace orvel {

bool HelpActions::parseSystemVersion(QStringView release, unsigned *major, unsigned *minor, unsigned *bugFix)
{
    unsigned numbers[3] = { 0, 0, 0 };
    qsizetype at = 0;
    int found = 0;
    for (; found < 3; ++found) {
        const qsizetype start = at;
        quint64 value = 0;
        while (at < release.size() && release[at].isDigit() && release[at].unicode() < 128) {
            value = value * 10 + (release[at].unicode() - u'0');
            if (value > 0xffffffffu)
                return false;
            ++at;
        }
        if (at == start)
            break;
        numbers[found] = unsigned(value);
        if (at >= release.size() || release[at] != u'.') {
            ++found;
            break;
        }
        ++at;
    }
    if (found < 2)
        return false;
    if (major)
        *major = numbers[0];
    if (minor)
        *minor = numbers[1];
    if (bugFix)
        *bugFix = numbers[2];
    return true;
}

bool HelpActions::getSystemVersion(unsigned *major, unsigned *minor, unsigned *bugFix)
{
    struct utsname names
    {
    };
    if (uname(&names) != 0)
        return false;
    return parseSystemVersion(QString::fromLocal8Bit(names.release), major, minor, bugFix);
}

QString HelpActions::systemVersion()
{
    unsigned major = 0, minor = 0, bugFix = 0;
    if (!getSystemVersion(&major, &minor, &bugFix))
        return QString();
    return QStringLiteral("%1.%2.%3").arg(major).arg(minor).arg(bugFix);
}

QString HelpActions::prettyNameOfOsRelease(const QByteArray &text)
{
    for (const QByteArray &rawLine : text.split('\n')) {
        QByteArrayView line = QByteArrayView(rawLine).trimmed();
        if (!line.startsWith("PRETTY_NAME="))
            continue;
        QByteArrayView value = line.sliced(12);
        if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'')
            && value.back() == value.front())
            value = value.sliced(1, value.size() - 2);
        QString name = QString::fromUtf8(value);
        // Shell quoting inside double quotes: \" \\ \$ \`.
        name.replace(QStringLiteral("\\\""), QStringLiteral("\""))
            .replace(QStringLiteral("\\$"), QStringLiteral("$"))
            .replace(QStringLiteral("\\`"), QStringLiteral("`"))
            .replace(QStringLiteral("\\\\"), QStringLiteral("\\"));
        return name.isEmpty() ? QString() : name;
    }
    return QString();
}

QString HelpActions::distributionName()
{
    for (const char *path : { "/etc/os-release", "/usr/lib/os-release" }) {
        QFile file(QString::fromLatin1(path));
        if (file.open(QIODevice::ReadOnly)) {
            // The file is a few lines; a bigger one is not read whole.
            const QString name = prettyNameOfOsRelease(file.read(64 * 1024));
            if (!name.isEmpty())
                return name;
        }
    }
    return QString();
}

bool HelpActions::launchStringURL(const QString &url)
{
    if (url.isEmpty())
        return false;
    const QUrl address(url);
    if (!address.isValid() || address.scheme().isEmpty())
        return false;
    return QDesktopServices::openUrl(address);
}

QString HelpActions::feedbackSubject(const QString &subject)
{
    QString result = subject;
    const QString version
        = Bundle::mainBundle().infoDictionary().value(QStringLiteral("CFBundleVersion")).toString();
    if (!version.isEmpty())
        result += u' ' + version;
    const QString system = systemVersion();
    if (!system.isEmpty()) {
        const QString distribution = distributionName();
        result += QStringLiteral(", %1 %2 (%3)")
                      .arg(distribution.isEmpty() ? QStringLiteral("Linux") : distribution, system,
                          QSysInfo::currentCpuArchitecture());
    }
    return result;
}

bool HelpActions::launchFeedbackURL(const QString &format, const QString &subject, bool appStore)
{
    // Kept for the callers' sake: no address book is asked either way, so name and e-mail stay empty.
    Q_UNUSED(appStore);
    // Besides what an address may not carry, whatever would end or split the query parameter (a
    // distribution named "A & B" or "#1") is escaped.
    const QString escaped
        = stringByAddingPercentEscapesToURL(feedbackSubject(subject), "UTF-8", QStringView(), u"#&+;=?");
    QString url = format;
    for (const QString &value : { escaped, QString(), QString() }) {
        const qsizetype at = url.indexOf(u"%@");
        if (at < 0)
            break;
        url.replace(at, 2, value);
    }
    return launchHelpURL(url);
}

QString HelpActions::webServer()
{
    QString server = QStringLiteral(ORVEL_WEB_SERVER);
    while (server.endsWith(u'/'))
        server.chop(1);
    return server;
}

QString HelpActions::forumServer()
{
    QString server = QStringLiteral(ORVEL_FORUM_SERVER);
    while (server.endsWith(u'/'))
        server.chop(1);
    return server;
}

bool HelpActions::website() { return launchHelpURL(webServer() + u'/'); }
bool HelpActions::support() { return launchHelpURL(webServer() + QStringLiteral("/support/")); }
bool HelpActions::forum() { return launchHelpURL(forumServer() + u'/'); }
bool HelpActions::downloads() { return launchHelpURL(webServer() + QStringLiteral("/download/")); }

bool HelpActions::feedback()
{
    const Bundle &bundle = Bundle::mainBundle();
    const QString name = bundle.localizedBundleName();
    return launchFeedbackURL(
        webServer() + QStringLiteral("/redirect.php?id=contact&subject=%@&name=%@&email=%@"),
        name.isEmpty() ? bundle.bundleName() : name);
}

QString HelpActions::helpBookIndex()
{
    const QString book
        = Bundle::mainBundle().infoDictionary().value(QStringLiteral("CFBundleHelpBookName")).toString();
    if (book.isEmpty())
        return QString();
    return Bundle::mainBundle().pathForFileResource(book + QStringLiteral("/index.html"));
}

bool HelpActions::showHelp()
{
    const QString index = helpBookIndex();
    if (index.isEmpty()) {
        logMessage(QStringLiteral("Help book not found."));
        return false;
    }
    return launchHelpURL(QUrl::fromLocalFile(index).toString(QUrl::FullyEncoded));
}

bool HelpActions::releaseNotes()
{
    const QString index = helpBookIndex();
    if (index.isEmpty()) {
        logMessage(QStringLiteral("Help book not found."));
        return false;
    }
    QUrl page = QUrl::fromLocalFile(index);
    page.setFragment(QStringLiteral("_whatsnew"));
    return launchHelpURL(page.toString(QUrl::FullyEncoded));
}

} // namespace orvel
