// Redirect unwrapping: the address behind a link found on a search engine's or portal's page. The
// base's host picks one group of rules (the hosts are in tables/redirect_group_*.inc).
#include "url/URL.h"
#include "url/URLStrings.h"
#include "url/URLTables_p.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace orvel {

using namespace url_p;

namespace {

constexpr auto CI = Qt::CaseInsensitive;

// The text from start to the first stop after it (or the end).
QString upTo(const QString &s, qsizetype start, QLatin1StringView stop)
{
    const qsizetype end = s.indexOf(stop, start, CI);
    return s.sliced(start, (end < 0 ? s.size() : end) - start);
}

// The text from the "http" inside the marker's occurrence (the marker ends with "http") to stop.
QString httpFrom(const QString &s, QLatin1StringView marker, QLatin1StringView stop = {})
{
    const qsizetype i = s.indexOf(marker, 0, CI);
    if (i < 0)
        return QString();
    const qsizetype start = i + marker.size() - 4;
    return stop.isEmpty() ? s.sliced(start) : upTo(s, start, stop);
}

QString unescapedUTF8(const QString &s)
{
    const QString out = stringByReplacingPercentEscapesOfURL(s, "UTF-8");
    return out.isNull() ? s : out;
}

bool isRemote(const QString &s) { return URL(QUrl(s, QUrl::TolerantMode)).isRemoteWebKitURL(); }

bool hostEndsWith(const QString &host, const char *suffix)
{
    return host.endsWith(QLatin1StringView(suffix), CI);
}

using Candidate = std::optional<QString>; // nullopt: the link gives nil

Candidate groupA(const QString &link)
{
    if (groupAPortalLinks().matches(link))
        return std::nullopt;
    if (link.contains("&furl=http"_L1, CI)) {
        const QString target = httpFrom(link, "&furl=http"_L1, "&"_L1);
        if (target.isEmpty() || !isRemote(target))
            return std::nullopt;
        return target;
    }
    return link;
}

Candidate groupB(const QString &link, const PortalRedirector &portal)
{
    if (link.contains(QLatin1StringView(portal.redirectPrefix), CI)) {
        if (!link.contains("bu=http"_L1, CI))
            return std::nullopt;
        return httpFrom(link, "bu=http"_L1, "&qte="_L1);
    }
    for (const char *prefix : portal.trackingPrefixes)
        if (link.contains(QLatin1StringView(prefix), CI)) {
            if (!link.contains("u=http"_L1, CI))
                return std::nullopt;
            return httpFrom(link, "u=http"_L1);
        }
    if (link.contains(QLatin1StringView(portal.host), CI) || groupBShoppingHosts().matches(link))
        return std::nullopt;
    return link;
}

Candidate groupC(const QString &link)
{
    if (link.contains("redirpaid.htm?"_L1, CI) || groupCPartnerLinks().matches(link))
        return std::nullopt;
    if (link.contains("redirfree.htm?"_L1, CI)) {
        // The target is the last address in the link, ended by its time or page parameter.
        const qsizetype start = link.lastIndexOf("http://"_L1, -1, CI);
        if (start < 0)
            return std::nullopt;
        qsizetype end = link.indexOf("&time="_L1, start, CI);
        if (end < 0)
            end = link.indexOf("&pg="_L1, start, CI);
        if (end < 0)
            return std::nullopt;
        return link.sliced(start, end - start);
    }
    if (link.contains("&rawto=http"_L1, CI))
        return httpFrom(link, "&rawto=http"_L1);
    for (QLatin1StringView marker : { "ClickHandler.ashx?ru="_L1, "ClickHandler.ashx?du="_L1 }) {
        const qsizetype i = link.indexOf(marker, 0, CI);
        if (i >= 0)
            return unescapedUTF8(upTo(link, i + marker.size(), "&"_L1));
    }
    return link;
}

Candidate groupD(const QString &link)
{
    if (groupDClickHosts().matches(link))
        return std::nullopt;
    QString target;
    const qsizetype http = link.indexOf("/http/"_L1, 0, CI);
    if (http >= 0 && groupDEngineHosts().matches(link)) {
        target = "http://"_L1 + link.sliced(http + 6);
    } else if (link.contains("&rurl=http"_L1, CI)) {
        target = httpFrom(link, "&rurl=http"_L1, "&"_L1);
    } else if (link.contains("%26rurl=http"_L1, CI)) {
        target = unescapedUTF8(httpFrom(link, "%26rurl=http"_L1, "%26"_L1));
    } else if (link.contains("?u=http"_L1, CI)) {
        target = httpFrom(link, "?u=http"_L1, "&"_L1);
    } else if (link.contains("&r=http"_L1, CI) || link.contains("/*-http"_L1, CI)
        || link.contains("/**http"_L1, CI)) {
        for (QLatin1StringView marker : { "&r=http"_L1, "/*-http"_L1, "/**http"_L1 })
            if (link.contains(marker, CI)) {
                target = httpFrom(link, marker);
                break;
            }
        // The old form writes "http%3A//host": a ninth unit other than "/" means the scheme is missing.
        if (target.size() < 9 || target.at(8) != u'/')
            target.prepend("http://"_L1);
    } else if (link.contains("/RU=http"_L1, CI)) {
        target = unescapedUTF8(httpFrom(link, "/RU=http"_L1, "/"_L1));
    } else {
        return std::nullopt;
    }
    target.replace("%3a"_L1, ":"_L1, CI);
    target.replace("%23"_L1, "#"_L1);
    return target;
}

Candidate groupE(const QString &link, const QString &host, bool accept)
{
    if (accept && groupEBlogTabLinks().matches(link))
        return std::nullopt;
    QString target = link;
    const qsizetype urlUrl = link.indexOf("/url?url="_L1, 0, CI);
    qsizetype q = link.startsWith("/url?q="_L1, CI) ? 7 : -1;
    if (q < 0)
        for (const char *domain : groupEDomainVariants().entries()) {
            const QString marker = QLatin1StringView(domain) + "/url?q="_L1;
            const qsizetype i = link.indexOf(marker, 0, CI);
            if (i >= 0) {
                q = i + marker.size();
                break;
            }
        }
    if (urlUrl >= 0 && groupEUrlUrlSites().matches(host)) {
        target = link.sliced(urlUrl + 9);
    } else if (q >= 0) {
        target = upTo(link, q, "&sa="_L1);
    } else if (groupEScholarHosts().matches(link) && link.contains("url?q=http"_L1, CI)) {
        target = httpFrom(link, "url?q=http"_L1);
    } else if (link.contains("/imgres?imgurl="_L1, CI)) {
        const qsizetype i = link.indexOf("imgrefurl="_L1, 0, CI);
        if (i < 0)
            return std::nullopt;
        target = upTo(link, i + 10, "&"_L1);
        if (!isRemote(target))
            return std::nullopt;
    } else if (link.contains("url?sa="_L1, CI)) {
        const qsizetype i = link.indexOf("q=http"_L1, 0, CI);
        if (i < 0)
            return std::nullopt;
        target = upTo(link, i + 2, "&"_L1);
    } else if (link.contains("/codesearch"_L1, CI)) {
        if (!link.contains("ct=rc"_L1, CI) || !link.contains("cs_p="_L1, CI) || !isRemote(link))
            return std::nullopt;
    }
    if (accept && groupEVideoLinks().matches(target))
        return std::nullopt;
    if (accept && target.endsWith(QLatin1StringView(groupEBlogRoot()), CI))
        return std::nullopt;
    return target;
}

Candidate groupF(const QString &link)
{
    if (!link.contains("/cgi-bin/query-meta?"_L1, CI))
        return link;
    if (!link.contains("&url=http"_L1, CI))
        return std::nullopt;
    return httpFrom(link, "&url=http"_L1, "&rid="_L1);
}

Candidate groupG(const QString &link)
{
    if (!link.contains("Refer.aspx?Type=WebResult"_L1, CI))
        return link;
    if (!link.contains("&url=http"_L1, CI))
        return std::nullopt;
    return httpFrom(link, "&url=http"_L1);
}

Candidate unwrap(const QString &link, const QUrl &base, bool accept)
{
    const QString host = base.host();
    if (host.isEmpty())
        return link;
    if (groupAEngineHosts().matches(host))
        return groupA(link);
    for (const PortalRedirector &portal : groupBPortals())
        if (host.contains(QLatin1StringView(portal.host), CI))
            return groupB(link, portal);
    if (groupCMetaSearchHosts().matches(host))
        return groupC(link);
    if (groupDEngineHosts().matches(host))
        return groupD(link);
    if (groupEEngineHosts().matches(host))
        return groupE(link, host, accept);
    if (hostEndsWith(host, groupFMedicalHostSuffix()))
        return groupF(link);
    if (hostEndsWith(host, groupGLegalHostSuffix()))
        return groupG(link);
    return link;
}

} // namespace

QUrl resolveStringURL(const QString &link, const QUrl &base, bool accept)
{
    if (link.isEmpty())
        return QUrl();
    if (accept && (stringURLIsCached(link) || stringURLIsTranslation(link) || stringURLIsRecaptcha(link)))
        return QUrl();
    const Candidate candidate = unwrap(link, base, accept);
    if (!candidate)
        return QUrl();
    const QString unescaped = stringByReplacingStandardPercentEscapesOfURL(*candidate);
    if (unescaped.isEmpty())
        return QUrl();
    const URL page(base);
    if (!accept) {
        const QUrl url = page.URLRelativeTo(unescaped);
        return url.isValid() ? url : page.URLRelativeTo(*candidate);
    }
    if (unescaped.startsWith(u'.') || unescaped.startsWith(u'/') || !unescaped.contains("://"_L1))
        return QUrl();
    QUrl url = page.URLRelativeTo(unescaped);
    if (!url.isValid())
        url = page.URLRelativeTo(*candidate);
    const URL result(url);
    if (!result.isRemoteWebKitURL() || result.isSearchEngine() || stringURLIsCached(url.toString()))
        return QUrl();
    return url;
}

QUrl acceptStringURL(const QString &link, const QUrl &base) { return resolveStringURL(link, base, true); }

} // namespace orvel
