// QUrl extensions: credentials and schemes, base directories, query parameters, link resolution with
// scheme repairs, HTTP phrases and predicates.
#include "url/URL.h"

#include "strings/StringExtensions.h"
#include "url/URLStrings.h"
#include "url/URLTables_p.h"

#include <QCoreApplication>
#include <QDir>

#include <mutex>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

inline const char16_t *unitsOf(const QString &s) { return reinterpret_cast<const char16_t *>(s.utf16()); }

// The host as it stands in an address (an IPv6 address in brackets).
QString authorityHost(const QUrl &url)
{
    const QString host = url.host(QUrl::FullyEncoded);
    return host.contains(u':') ? u'[' + host + u']' : host;
}

} // namespace

QUrl URL::URLWithSchemeHostUserPassword(
    const QUrl &url, const QString &scheme, const QString &host, const QString &user, const QString &password)
{
    // The path with its parameters, query and fragment, as encoded text.
    const QString rest = url.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::FullyEncoded);
    const int port = url.port();
    const bool credentials = !user.isEmpty() && !password.isEmpty();
    QString text = scheme + "://"_L1;
    if (credentials)
        text += user + u':' + password + u'@';
    text += host;
    if (port >= 0)
        text += u':' + QString::number(port);
    text += rest;
    const QUrl result(text);
    return result.isValid() ? result : QUrl();
}

QUrl URL::URLForUser(const QString &user, const QString &password) const
{
    if (user.isEmpty() || password.isEmpty())
        return m_url;
    auto escaped = [](QString s) { return s.replace(u'@', "%40"_L1).replace(u'#', "%23"_L1); };
    return URLWithSchemeHostUserPassword(
        m_url, m_url.scheme(), authorityHost(m_url), escaped(user), escaped(password));
}

QUrl URL::URLWithScheme(const QString &scheme) const
{
    if (scheme.isEmpty())
        return m_url;
    return QUrl(scheme + u':' + m_url.toString(QUrl::RemoveScheme | QUrl::FullyEncoded));
}

bool URL::isScheme(QStringView scheme, unsigned classes)
{
    if (scheme.isNull())
        return false;
    auto is = [&](QLatin1StringView name) { return scheme.compare(name, Qt::CaseInsensitive) == 0; };
    return ((classes & WebScheme) && (is("http"_L1) || is("https"_L1)))
        || ((classes & FileTransferScheme) && (is("ftp"_L1) || is("ftps"_L1) || is("sftp"_L1)))
        || ((classes & FeedScheme) && is("feed"_L1)) || ((classes & FileScheme) && is("file"_L1));
}

bool URL::isScheme(unsigned classes) const
{
    const QString scheme = m_url.scheme();
    return !scheme.isEmpty() && isScheme(scheme, classes);
}

bool URL::isRemoteWebKitURL() const
{
    return m_url.isValid() && isScheme(WebScheme) && !m_url.host().isEmpty();
}

bool URL::isWebKitURL() const
{
    const QString scheme = m_url.scheme();
    return m_url.isValid()
        && (isScheme(WebScheme | FileScheme) || scheme.compare("about"_L1, Qt::CaseInsensitive) == 0
            || scheme.compare("data"_L1, Qt::CaseInsensitive) == 0);
}

bool URL::isSearchEngine() const
{
    const QString host = m_url.host();
    return !host.isEmpty() && url_p::searchEngineHosts().matchesHost(host);
}

bool URL::filterLink(QStringView link)
{
    if (link.isEmpty() || link == u"#")
        return false;
    static constexpr QLatin1StringView ignored[] = { "javascript:"_L1, "vbscript:"_L1, "livescript:"_L1,
        "data:"_L1, "about:"_L1, "blob:"_L1, "view-source:"_L1, "chrome:"_L1, "chrome-extension:"_L1,
        "moz-extension:"_L1, "resource:"_L1, "tel:"_L1, "sms:"_L1, "callto:"_L1, "skype:"_L1, "whatsapp:"_L1,
        // Placeholders of page templates that were never filled in.
        "{{"_L1, "${"_L1, "<%"_L1 };
    for (QLatin1StringView prefix : ignored)
        if (link.startsWith(prefix, Qt::CaseInsensitive))
            return false;
    for (QChar c : link)
        if (c.unicode() < 0x20 || c.unicode() == 0x7f)
            return false;
    return true;
}

namespace {

// "/a/b/" -> "/a", "/a" -> "/", "a" -> "".
QString deletingLastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    const qsizetype slash = path.lastIndexOf(u'/');
    if (slash < 0)
        return QString(""_L1);
    return slash == 0 ? QString("/"_L1) : path.first(slash);
}

bool lastComponentHasExtension(const QString &path)
{
    const QStringView last = QStringView(path).sliced(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = last.lastIndexOf(u'.');
    return dot > 0 && dot + 1 < last.size();
}

} // namespace

QString URL::baseDirectory(const QUrl &url, bool standardize)
{
    QString path = url.path(QUrl::FullyEncoded);
    QString parameters;
    const qsizetype semicolon = path.indexOf(u';');
    if (semicolon >= 0) {
        parameters = path.sliced(semicolon + 1);
        path.truncate(semicolon);
    }
    if (path.isEmpty())
        return QString("/"_L1);
    if (url.isLocalFile() || url.scheme().compare("file"_L1, Qt::CaseInsensitive) == 0) {
        path = deletingLastPathComponent(path);
    } else if (path.endsWith(u'/')) {
        if (path.size() > 1)
            path.chop(1);
    } else if (lastComponentHasExtension(path) || !url.query().isEmpty() || !parameters.isEmpty()) {
        path = deletingLastPathComponent(path);
    }
    if (standardize && !path.isEmpty())
        path = QDir::cleanPath(path);
    return path.isEmpty() ? QString("/"_L1) : path;
}

bool URL::isBaseDirectory() const
{
    QString path = m_url.path(QUrl::FullyEncoded);
    if (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    if (path.isEmpty())
        path = "/"_L1;
    return baseDirectory(m_url, false) == path;
}

QString URL::queryParamNamed(QStringView name) const
{
    const QString q = m_url.query(QUrl::FullyEncoded);
    return orvel::queryParamNamed(
        unitsOf(q), q.size(), reinterpret_cast<const char16_t *>(name.utf16()), name.size());
}

bool URL::containsQueryParamNamed(QStringView name) const
{
    const QString q = m_url.query(QUrl::FullyEncoded);
    return orvel::containsQueryParamNamed(
        unitsOf(q), q.size(), reinterpret_cast<const char16_t *>(name.utf16()), name.size());
}

QHash<QString, QString> URL::queryParams() const
{
    const QString q = m_url.query(QUrl::FullyEncoded);
    return orvel::queryParams(unitsOf(q), q.size());
}

qsizetype URL::numberOfQueryParams() const
{
    const QString q = m_url.query(QUrl::FullyEncoded);
    return orvel::numberOfQueryParams(unitsOf(q), q.size());
}

namespace {

bool startsWithCI(QStringView s, QLatin1StringView prefix)
{
    return s.startsWith(prefix, Qt::CaseInsensitive);
}

// Damaged schemes as they are found on pages, chosen by the first unit; one repair at most. A null
// answer rejects the link.
QString repairedScheme(const QString &link)
{
    switch (link.at(0).toLower().unicode()) {
    case u'm':
        if (startsWithCI(link, "mailto://"_L1))
            return link.size() < 10 ? QString() : "mailto:"_L1 + link.sliced(9);
        if (startsWithCI(link, "mailto:http://"_L1))
            return link.sliced(7);
        break;
    case u'h':
        if (startsWithCI(link, "hhttp:"_L1) && link.contains("http:"_L1, Qt::CaseInsensitive))
            return link.sliced(1);
        if (startsWithCI(link, "http://http://"_L1))
            return link.sliced(7);
        if (startsWithCI(link, "http:// http://"_L1))
            return link.sliced(8);
        break;
    case u'f':
        if (startsWithCI(link, "feed:http:"_L1))
            return link.sliced(5);
        if (startsWithCI(link, "feed:"_L1) && (link.size() < 6 || link.at(5) != u'/'))
            return "http://"_L1 + link.sliced(5);
        break;
    case u'e':
        if (startsWithCI(link, "emailto:"_L1))
            return link.sliced(1);
        break;
    case u't':
        if (startsWithCI(link, "ttp://"_L1))
            return u'h' + link;
        break;
    case u':':
        if (startsWithCI(link, ":http://"_L1))
            return link.sliced(1);
        break;
    default:
        break;
    }
    return link;
}

// "scheme://" where the scheme is made of letters and ":" only ("feed:http://" too).
bool isAbsoluteLink(QStringView link)
{
    const qsizetype marker = link.indexOf("://"_L1);
    if (marker <= 0)
        return false;
    for (QChar c : link.first(marker))
        if (!((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u':'))
            return false;
    return true;
}

// Parses text as an address; what does not parse is escaped in the encoding and tried again (a
// quote written as "%22" is first turned back, so that it is not escaped twice).
QUrl parseEscaping(QString text, const char *encoding)
{
    QUrl url(text, QUrl::StrictMode);
    if (url.isValid())
        return url;
    if (text.contains(u'"'))
        text.replace("%22"_L1, "\""_L1);
    const QString escaped = stringByAddingPercentEscapesToURL(text, encoding);
    if (escaped.isNull())
        return QUrl();
    url.setUrl(escaped, QUrl::StrictMode);
    if (!url.isValid())
        url.setUrl(escaped, QUrl::TolerantMode);
    return url.isValid() ? url : QUrl();
}

// "." and ".." segments resolved, in one pass (each unit is copied and removed at most once).
QString removeDotSegments(QStringView path)
{
    QString out;
    out.reserve(path.size());
    auto popSegment = [&out] { out.truncate(qMax<qsizetype>(0, out.lastIndexOf(u'/'))); };
    qsizetype i = 0;
    const qsizetype n = path.size();
    while (i < n) {
        const QStringView rest = path.sliced(i);
        if (rest.startsWith("../"_L1)) {
            i += 3;
        } else if (rest.startsWith("./"_L1) || rest.startsWith("/./"_L1)) {
            i += 2;
        } else if (rest == "/."_L1) {
            out += u'/';
            break;
        } else if (rest.startsWith("/../"_L1)) {
            i += 3;
            popSegment();
        } else if (rest == "/.."_L1) {
            popSegment();
            out += u'/';
            break;
        } else if (rest == "."_L1 || rest == ".."_L1) {
            break;
        } else {
            qsizetype next = path.indexOf(u'/', i + 1);
            if (next < 0)
                next = n;
            out += path.sliced(i, next - i);
            i = next;
        }
    }
    return out;
}

} // namespace

QUrl URL::URLRelativeTo(
    const QString &linkText, bool trimAnchor, const char *encoding, bool standardize) const
{
    if (linkText.isNull())
        return QUrl();
    QString link = linkText;
    if (trimAnchor && !m_url.isLocalFile())
        link = stringURLWithoutAnchor(link);
    link = stringByTrimmingWhiteSpaces(link);
    if (link.isEmpty())
        return QUrl();
    link = repairedScheme(link);
    if (link.isEmpty())
        return QUrl();

    for (QLatin1StringView prefix :
        { "aim:"_L1, "icq:"_L1, "irc:"_L1, "mailto:"_L1, "message:"_L1, "ymsgr:"_L1 })
        if (startsWithCI(link, prefix)) {
            const QUrl url(link);
            return url.isValid() ? url : QUrl();
        }
    if (!filterLink(link))
        return QUrl();

    QUrl result;
    if (link.startsWith("//"_L1)) {
        result = parseEscaping(m_url.scheme() + u':' + link, encoding);
    } else if (isAbsoluteLink(link)) {
        result = parseEscaping(link, encoding);
    } else if (m_url.isLocalFile()) {
        QString path;
        if (link.startsWith(u'/'))
            path = link;
        else if (link.startsWith(u'~'))
            path = QDir::homePath() + link.sliced(1);
        else {
            const QString basePath = m_url.toLocalFile();
            path = basePath.first(basePath.lastIndexOf(u'/') + 1) + link;
        }
        result = QUrl::fromLocalFile(QDir::cleanPath(path));
    } else {
        const QUrl relative = parseEscaping(link, encoding);
        if (relative.isValid())
            result = m_url.resolved(relative);
    }
    if (!result.isValid() || result.isEmpty())
        return QUrl();

    if (!m_url.userName().isEmpty() && !m_url.password().isEmpty()
        && result.scheme().compare(m_url.scheme(), Qt::CaseInsensitive) == 0
        && result.host().compare(m_url.host(), Qt::CaseInsensitive) == 0) {
        result.setUserName(m_url.userName(QUrl::FullyEncoded), QUrl::StrictMode);
        result.setPassword(m_url.password(QUrl::FullyEncoded), QUrl::StrictMode);
    }
    if (standardize) {
        // Each round removes every dot segment it can; the loop stops as soon as nothing changes.
        for (int round = 0; round < 8; ++round) {
            const QString path = result.path(QUrl::FullyEncoded);
            if (!path.contains("./"_L1) && !path.contains("/."_L1))
                break;
            const QString standardized = removeDotSegments(path);
            if (standardized == path)
                break;
            result.setPath(standardized, QUrl::TolerantMode);
        }
    }
    return result;
}

// ---- HTTP ----

namespace {

struct Phrase
{
    int code;
    const char *text;
};

// The phrases are the English source texts; QT_TRANSLATE_NOOP marks them for lupdate under the
// context the application's translations carry them in.
constexpr Phrase httpPhrases[] = {
    { 100, QT_TRANSLATE_NOOP("HTTPStatus", "Continue") },
    { 101, QT_TRANSLATE_NOOP("HTTPStatus", "Switching Protocols") },
    { 200, QT_TRANSLATE_NOOP("HTTPStatus", "OK") },
    { 201, QT_TRANSLATE_NOOP("HTTPStatus", "Created") },
    { 202, QT_TRANSLATE_NOOP("HTTPStatus", "Accepted") },
    { 203, QT_TRANSLATE_NOOP("HTTPStatus", "Non-Authoritative Information") },
    { 204, QT_TRANSLATE_NOOP("HTTPStatus", "No Content") },
    { 205, QT_TRANSLATE_NOOP("HTTPStatus", "Reset Content") },
    { 206, QT_TRANSLATE_NOOP("HTTPStatus", "Partial Content") },
    { 207, QT_TRANSLATE_NOOP("HTTPStatus", "Multi-Status") },
    { 226, QT_TRANSLATE_NOOP("HTTPStatus", "IM Used") },
    { 300, QT_TRANSLATE_NOOP("HTTPStatus", "Multiple Choices") },
    { 301, QT_TRANSLATE_NOOP("HTTPStatus", "Moved Permanently") },
    { 302, QT_TRANSLATE_NOOP("HTTPStatus", "Moved Temporarily") },
    { 303, QT_TRANSLATE_NOOP("HTTPStatus", "See Other") },
    { 304, QT_TRANSLATE_NOOP("HTTPStatus", "Not Modified") },
    { 305, QT_TRANSLATE_NOOP("HTTPStatus", "Use Proxy") },
    { 307, QT_TRANSLATE_NOOP("HTTPStatus", "Temporary Redirect") },
    { 400, QT_TRANSLATE_NOOP("HTTPStatus", "Bad Request") },
    { 401, QT_TRANSLATE_NOOP("HTTPStatus", "Authorization Required") },
    { 402, QT_TRANSLATE_NOOP("HTTPStatus", "Payment Required") },
    { 403, QT_TRANSLATE_NOOP("HTTPStatus", "Forbidden") },
    { 404, QT_TRANSLATE_NOOP("HTTPStatus", "Not Found") },
    { 405, QT_TRANSLATE_NOOP("HTTPStatus", "Method Not Allowed") },
    { 406, QT_TRANSLATE_NOOP("HTTPStatus", "Not Acceptable") },
    { 407, QT_TRANSLATE_NOOP("HTTPStatus", "Proxy Authentication Required") },
    { 408, QT_TRANSLATE_NOOP("HTTPStatus", "Request Timeout") },
    { 409, QT_TRANSLATE_NOOP("HTTPStatus", "Conflict") },
    { 410, QT_TRANSLATE_NOOP("HTTPStatus", "Gone") },
    { 411, QT_TRANSLATE_NOOP("HTTPStatus", "Length Required") },
    { 412, QT_TRANSLATE_NOOP("HTTPStatus", "Precondition Failed") },
    { 413, QT_TRANSLATE_NOOP("HTTPStatus", "Request Entity Too Large") },
    { 414, QT_TRANSLATE_NOOP("HTTPStatus", "Request-URI Too Long") },
    { 415, QT_TRANSLATE_NOOP("HTTPStatus", "Unsupported Media Type") },
    { 416, QT_TRANSLATE_NOOP("HTTPStatus", "Requested Range Not Satisfiable") },
    { 417, QT_TRANSLATE_NOOP("HTTPStatus", "Expectation Failed") },
    { 422, QT_TRANSLATE_NOOP("HTTPStatus", "Unprocessable Entity") },
    { 423, QT_TRANSLATE_NOOP("HTTPStatus", "Locked") },
    { 424, QT_TRANSLATE_NOOP("HTTPStatus", "Failed Dependency") },
    { 426, QT_TRANSLATE_NOOP("HTTPStatus", "Upgrade Required") },
    { 500, QT_TRANSLATE_NOOP("HTTPStatus", "Internal Server Error") },
    { 501, QT_TRANSLATE_NOOP("HTTPStatus", "Not Implemented") },
    { 502, QT_TRANSLATE_NOOP("HTTPStatus", "Bad Gateway") },
    { 503, QT_TRANSLATE_NOOP("HTTPStatus", "Service Unavailable") },
    { 504, QT_TRANSLATE_NOOP("HTTPStatus", "Gateway Timeout") },
    { 505, QT_TRANSLATE_NOOP("HTTPStatus", "HTTP Version Not Supported") },
    { 507, QT_TRANSLATE_NOOP("HTTPStatus", "Insufficient Storage") },
    { 509, QT_TRANSLATE_NOOP("HTTPStatus", "Bandwidth Limit Exceeded") },
    { 510, QT_TRANSLATE_NOOP("HTTPStatus", "Disconnected") },
};
static_assert(std::size(httpPhrases) == 49);

struct PhraseLookup
{
    std::mutex mutex;
    std::function<QString(const QString &)> lookup;
};

PhraseLookup &phraseLookup()
{
    static PhraseLookup instance;
    return instance;
}

} // namespace

void URL::setLocalizedStringLookup(std::function<QString(const QString &)> lookup)
{
    PhraseLookup &p = phraseLookup();
    const std::lock_guard lock(p.mutex);
    p.lookup = std::move(lookup);
}

QString URL::messageForHTTPError(int code)
{
    for (const Phrase &phrase : httpPhrases) {
        if (phrase.code != code)
            continue;
        const QString english = QString::fromLatin1(phrase.text);
        std::function<QString(const QString &)> lookup;
        {
            PhraseLookup &p = phraseLookup();
            const std::lock_guard lock(p.mutex);
            lookup = p.lookup;
        }
        if (lookup) {
            const QString localized = lookup(english);
            return localized.isEmpty() ? english : localized;
        }
        return QCoreApplication::translate("HTTPStatus", phrase.text);
    }
    return QString();
}

bool URL::isHTTPStatusCodeOkay(int code) { return code < 300 && !(code >= 201 && code <= 206); }

bool URL::isHTTPStatusCodeTemporaryError(int code)
{
    switch (code) {
    case 307:
    case 408:
    case 500:
    case 502:
    case 503:
    case 504:
    case 507:
    case 509:
    case 510:
        return true;
    default:
        return false;
    }
}

bool URL::isTemporaryURLError(int error)
{
    return error == URLErrorTimedOut || error == URLErrorNetworkConnectionLost
        || error == URLErrorNotConnectedToInternet || error == URLErrorBadServerResponse;
}

int URL::HTTPStatusCodeForURLError(int error)
{
    switch (error) {
    case URLErrorZeroByteResource:
        return 204;
    case URLErrorUserAuthenticationRequired:
    case URLErrorUserCancelledAuthentication:
        return 401;
    case URLErrorRedirectToNonExistentLocation:
    case URLErrorHTTPTooManyRedirects:
        return 302;
    case URLErrorTimedOut:
        return 408;
    case URLErrorNoPermissionsToReadFile:
        return 403;
    case URLErrorFileDoesNotExist:
        return 404;
    default:
        return 0;
    }
}

} // namespace orvel
