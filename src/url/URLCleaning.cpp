// Reducing an address to a canonical key: session identifiers, analytics, empty parameters, index
// pages, anchors, doubled slashes; and classifying addresses by the pattern tables.
#include "url/URLStrings.h"

#include "strings/CharacterTables.h"
#include "strings/FastCompare.h"
#include "url/URLTables_p.h"

using namespace Qt::StringLiterals;

namespace orvel {

using namespace url_p;

namespace {

inline bool isSeparator(QChar c) { return c == u'&' || c == u';' || c == u'?'; }

inline Qt::CaseSensitivity sensitivity(bool ci) { return ci ? Qt::CaseInsensitive : Qt::CaseSensitive; }

inline bool containsNoCase(QStringView s, QLatin1StringView needle)
{
    return s.contains(needle, Qt::CaseInsensitive);
}

// The position of the separator before the first occurrence of key at or after from that follows
// "&", ";" or "?"; -1 when there is none. A key at position 0 never counts.
qsizetype findKey(QStringView s, QLatin1StringView key, bool ci, qsizetype from = 1)
{
    qsizetype i = from < 1 ? 1 : from;
    while ((i = s.indexOf(key, i, sensitivity(ci))) > 0) {
        if (isSeparator(s[i - 1]))
            return i - 1;
        ++i;
    }
    return -1;
}

// Where the value of the key after separator p ends: the next "&" or "?" (and ";" after a ";"), or
// the end of the string.
qsizetype valueEnd(QStringView s, qsizetype p)
{
    const bool semicolon = s[p] == u';';
    for (qsizetype i = p + 1; i < s.size(); ++i) {
        const QChar c = s[i];
        if (c == u'&' || c == u'?' || (semicolon && c == u';'))
            return i;
    }
    return s.size();
}

// Removes the key after separator p with its value and the unit that ends it (the separator at p
// stays), or cuts the string at p when nothing follows the value.
void removeKeyAt(QString &s, qsizetype p)
{
    const qsizetype end = valueEnd(s, p);
    if (end < s.size() && end + 1 < s.size())
        s.remove(p + 1, end - p);
    else
        s.truncate(p);
}

bool removeKey(QString &s, QLatin1StringView key, bool ci)
{
    const qsizetype p = findKey(s, key, ci);
    if (p < 0)
        return false;
    removeKeyAt(s, p);
    return true;
}

// "cid=", "p_sid=" and "sid=" count only when a letter stands in the value, looked for from the
// fourth unit after the separator. For "p_sid=" that unit is still inside the key, so it always
// counts; kept as it stands.
bool removeKeyWithLetter(QString &s, QLatin1StringView key)
{
    const CharacterSetRep alpha = alphaCharacterSetRep();
    qsizetype from = 1;
    qsizetype p;
    while ((p = findKey(s, key, false, from)) >= 0) {
        const qsizetype end = valueEnd(s, p);
        for (qsizetype i = p + 4; i < end; ++i)
            if (isCharacterPartOfSet(alpha, s[i].unicode())) {
                removeKeyAt(s, p);
                return true;
            }
        from = p + 2;
    }
    return false;
}

enum PageKind : unsigned { StaticPage = 1, ScriptPage = 2, ForumPage = 4, ServerPage = 8 };

unsigned classifyPage(QStringView s)
{
    if (containsNoCase(s, ".html?"_L1) || containsNoCase(s, ".htm?"_L1))
        return StaticPage;
    if (containsNoCase(s, ".php?"_L1))
        return ScriptPage | (topicPatterns().matches(s) ? ForumPage : 0u);
    if (containsNoCase(s, ".asp?"_L1) || containsNoCase(s, ".aspx?"_L1))
        return ServerPage;
    return 0;
}

// One pass: removes the first key found in the fixed order; answers whether one went.
bool removeOneSessionKey(QString &s, unsigned kind, bool &step1RemovedBefore)
{
    static constexpr QLatin1StringView sessionKeys[] = { "phpsessionid="_L1, "phpsessid="_L1,
        "jsessionid="_L1, "jsessid="_L1, "sessionid="_L1, "wgsessid="_L1, "sessid="_L1 };
    const bool step1 = containsNoCase(s, "id="_L1);
    if (step1) {
        bool removed = false;
        for (QLatin1StringView key : sessionKeys)
            if ((removed = removeKey(s, key, true)))
                break;
        removed = removed || removeKey(s, "affid="_L1, false) || removeKey(s, "REFFID="_L1, false)
            || removeKeyWithLetter(s, "cid="_L1) || removeKeyWithLetter(s, "p_sid="_L1)
            || removeKeyWithLetter(s, "sid="_L1);
        if (removed) {
            step1RemovedBefore = true;
            return true;
        }
    } else if ((kind & ForumPage) && s.contains("&p="_L1) && removeKey(s, "s="_L1, false)) {
        return true;
    }
    if (removeKey(s, "ccbill="_L1, false) || removeKey(s, "nats="_L1, false)
        || removeKey(s, "_fb_noscript="_L1, false))
        return true;
    if (kind & (StaticPage | ScriptPage)) {
        if (removeKey(s, "pi="_L1, false) || removeKey(s, "cache="_L1, true))
            return true;
        if ((kind & StaticPage) && findKey(s, "cache="_L1, true) < 0
            && (removeKey(s, "CMP="_L1, false) || removeKey(s, "ATT="_L1, false)))
            return true;
    }
    if ((kind & (ScriptPage | ServerPage)) && removeKey(s, "lsrc="_L1, true))
        return true;
    if ((kind & ForumPage) && (removeKey(s, "highlight="_L1, true) || removeKey(s, "hilit="_L1, false)))
        return true;
    if (containsNoCase(s, QLatin1StringView(discussionGroupHost())) && removeKey(s, "ei="_L1, false))
        return true;
    return (step1 || step1RemovedBefore) && removeKey(s, "random="_L1, true);
}

// Real addresses carry one or two session keys; a hostile one with thousands would make the
// pass-by-pass removal quadratic, so the passes stop at this many.
constexpr int MaxSessionPasses = 64;

QString trimTrailingSlashes(const QString &s)
{
    qsizetype n = s.size();
    while (n > 0 && s[n - 1] == u'/')
        --n;
    return n == s.size() ? s : s.first(n);
}

QString lowerCased(const QString &s)
{
    const ConversionTable lower = lowerCharsTable();
    const char16_t *u = reinterpret_cast<const char16_t *>(s.utf16());
    const qsizetype n = s.size();
    qsizetype i = 0;
    while (i < n && lower[u[i]] == u[i])
        ++i;
    if (i == n)
        return s;
    QString out = s;
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    for (; i < n; ++i)
        o[i] = lower[o[i]];
    return out;
}

bool hasPrefixCI(QStringView s, QLatin1StringView prefix)
{
    return s.startsWith(prefix, Qt::CaseInsensitive);
}

} // namespace

QString stringURLByRemovingSessionIDs(const QString &s)
{
    if (s.size() < 3 || !s.contains(u'='))
        return s;
    QString out = s;
    const unsigned kind = classifyPage(s);
    bool step1RemovedBefore = false;
    for (int pass = 0; pass < MaxSessionPasses; ++pass)
        if (!removeOneSessionKey(out, kind, step1RemovedBefore))
            break;
    for (bool cut = true; cut;) {
        cut = false;
        for (const auto &[marker, keep] : { std::pair { "/login?"_L1, 6 }, std::pair { "/register?"_L1, 9 },
                 std::pair { ".html?widgetType="_L1, 5 } }) {
            const qsizetype i = out.indexOf(marker);
            if (i >= 0) {
                out.truncate(i + keep);
                cut = true;
            }
        }
    }
    return out.size() == s.size() ? s : out;
}

QString stringURLByRemovingAnalytics(const QString &s)
{
    if (!containsNoCase(s, "utm_"_L1))
        return s;
    QString out = s;
    for (QLatin1StringView key : { "utm_source="_L1, "utm_medium="_L1, "utm_campaign="_L1, "utm_term="_L1,
             "utm_content="_L1, "utm_nooverride="_L1 })
        removeKey(out, key, true);
    return out.size() == s.size() ? s : out;
}

QString stringURLByRemovingQueryParam(const QString &s, QStringView key)
{
    if (key.isEmpty())
        return s;
    qsizetype i = 1;
    while ((i = s.indexOf(key, i, Qt::CaseInsensitive)) > 0) {
        if (isSeparator(s[i - 1])) {
            QString out = s;
            removeKeyAt(out, i - 1);
            return out;
        }
        ++i;
    }
    return s;
}

QString stringURLByRemovingEmptyParams(const QString &s)
{
    if (!s.contains(u'='))
        return s;
    QString out;
    out.reserve(s.size());
    qsizetype lastSeparator = -1; // in out
    const qsizetype n = s.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = s[i];
        if (c == u'=' && lastSeparator >= 0 && (i + 1 == n || isSeparator(s[i + 1]))) {
            out.truncate(lastSeparator + 1);
            if (i + 1 < n)
                ++i; // the separator after the empty value goes with it
            continue;
        }
        if (isSeparator(c))
            lastSeparator = out.size();
        out.append(c);
    }
    out.replace("?&"_L1, "?"_L1);
    return out == s ? s : out;
}

QString stringURLByRemovingIndexPages(const QString &s)
{
    const qsizetype n = s.size();
    if (n < 10 || !containsNoCase(s, "/index."_L1))
        return s;
    if (n >= 12)
        for (QLatin1StringView suffix : { "/index.shtml"_L1, "/index.phtml"_L1, "/index.jhtml"_L1 })
            if (s.endsWith(suffix, Qt::CaseInsensitive))
                return s.first(n - 12);
    if (n >= 11 && s.endsWith("/index.html"_L1, Qt::CaseInsensitive))
        return s.first(n - 11);
    for (QLatin1StringView suffix :
        { "/index.htm"_L1, "/index.php"_L1, "/index.chm"_L1, "/index.asp"_L1, "/index.cgi"_L1 })
        if (s.endsWith(suffix, Qt::CaseInsensitive))
            return s.first(n - 10);
    return s;
}

QString stringURLWithoutAnchor(const QString &s)
{
    const qsizetype hash = s.indexOf(u'#');
    if (hash < 0)
        return s;
    if (s.size() - hash > 2 && (s[hash + 1] == u'!' || s[hash + 1] == u'/'))
        return s; // a client-side route, part of the address
    return s.first(hash);
}

QString standardizedStringURL(const QString &s)
{
    const qsizetype n = s.size();
    QString out;
    out.reserve(n);
    bool query = false;
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = s[i];
        if (!query) {
            if (c == u'?' || c == u';')
                query = true;
            else if (c == u'/' && i > 0 && s[i - 1] == u'/' && (i < 2 || s[i - 2] != u':'))
                continue;
        }
        out.append(c);
    }
    if (!query) {
        for (bool cut = true; cut;) {
            cut = false;
            if (out.endsWith("/."_L1)) {
                out.chop(2);
                cut = true;
            } else if (out.endsWith("/.."_L1)) {
                out.chop(3);
                cut = true;
            } else if (out == "."_L1 || out == ".."_L1) {
                out.clear();
            }
        }
    }
    if (out.isEmpty())
        return s.isNull() ? s : QString(""_L1);
    return out.size() == n ? s : out;
}

QString simplifiedStringURLByRemovingSessionIDs(
    const QString &s, bool sessionIDs, bool analytics, bool indexPages, bool emptyParams, bool anchors)
{
    if (s.isEmpty())
        return s;
    QString out = stringByReplacingStandardPercentEscapesOfURL(s);
    if (anchors)
        out = stringURLWithoutAnchor(out);
    out = standardizedStringURL(out);
    if (sessionIDs)
        out = stringURLByRemovingSessionIDs(out);
    if (analytics)
        out = stringURLByRemovingAnalytics(out);
    if (emptyParams)
        out = stringURLByRemovingEmptyParams(out);
    if (containsNoCase(out, QLatin1StringView(patentSearchHost())))
        out = stringURLByRemovingQueryParam(out, u"ved=");
    if (indexPages) {
        if (sessionIDs && out.size() >= 15 && out.endsWith("/?page=main.php"_L1))
            out.chop(14);
        else
            out = stringURLByRemovingIndexPages(out);
    }
    if (hasPrefixCI(out, "http://www."_L1))
        out.remove(7, 4);
    else if (hasPrefixCI(out, "https://www."_L1))
        out.replace(0, 12, "http://"_L1);
    else if (hasPrefixCI(out, "https:"_L1))
        out.replace(0, 6, "http:"_L1);
    return lowerCased(trimTrailingSlashes(out));
}

QString simplifiedStringURL(const QString &s)
{
    return simplifiedStringURLByRemovingSessionIDs(s, true, true, true, true, true);
}

bool isEqualToStringURL(const QString &s, const QString &other)
{
    if (s.isNull() || other.isNull())
        return false;
    const QString a = trimTrailingSlashes(standardizedStringURL(stringURLWithoutAnchor(s)));
    const QString b = trimTrailingSlashes(standardizedStringURL(stringURLWithoutAnchor(other)));
    return a.size() == b.size() && isEqualToStringNoCase(a, b);
}

bool stringURLIsCached(QStringView s) { return cachePatterns().matches(s); }
bool stringURLIsTranslation(QStringView s) { return translationPatterns().matches(s); }
bool stringURLIsRecaptcha(QStringView s) { return recaptchaPatterns().matches(s); }
bool stringURLIsTopicOrThread(QStringView s) { return topicPatterns().matches(s); }
bool stringURLIsForum(QStringView s) { return forumPatterns().matches(s); }
bool stringURLIsImageAd(QStringView s) { return imageAdPatterns().matches(s); }
bool stringURLIsAdSense(QStringView s)
{
    return adSensePatterns().matches(s) || imageAdPatterns().matches(s);
}

bool stringURLIsBookmarklet(QStringView s)
{
    qsizetype start = s.indexOf("://"_L1);
    start = start < 0 ? 0 : start + 3;
    qsizetype end = start;
    while (end < s.size() && s[end] != u'/' && s[end] != u'?' && s[end] != u'#')
        ++end;
    QStringView host = s.sliced(start, end - start);
    const qsizetype at = host.lastIndexOf(u'@');
    if (at >= 0)
        host = host.sliced(at + 1);
    return bookmarkingHosts().matches(host);
}

namespace {

// "adserver" or "ads." at the start or after a unit other than E, O, P (either case): 'uploads.'
// and 'downloads.' are no advertisements.
bool hasAdWord(QStringView s, QLatin1StringView word)
{
    qsizetype i = 0;
    while ((i = s.indexOf(word, i, Qt::CaseInsensitive)) >= 0) {
        if (i == 0)
            return true;
        switch (s[i - 1].unicode()) {
        case u'E':
        case u'O':
        case u'P':
        case u'e':
        case u'o':
        case u'p':
            break;
        default:
            return true;
        }
        ++i;
    }
    return false;
}

bool lastComponentIsAd(QStringView s)
{
    qsizetype end = s.size();
    for (qsizetype i = 0; i < s.size(); ++i)
        if (s[i] == u'?' || s[i] == u'#') {
            end = i;
            break;
        }
    const QStringView path = s.first(end);
    const QStringView last = path.sliced(path.lastIndexOf(u'/') + 1);
    if (last.size() < 8)
        return false;
    if (last.size() >= 11 && last.contains("counter"_L1) && last.contains("htm"_L1, Qt::CaseInsensitive))
        return true;
    return last.startsWith("banner."_L1, Qt::CaseInsensitive);
}

} // namespace

bool stringURLIsAdvertisementIncludingCommonHosts(QStringView s, bool includingCommonHosts)
{
    if (s.size() < 4)
        return false;
    if (stringURLIsAdSense(s) || ads1Patterns().matches(s))
        return true;
    if (!adArchiveHosts().matches(s) && !s.contains("/adsk/"_L1) && ads2Patterns().matches(s))
        return true;
    if (hasAdWord(s, "adserver"_L1) || hasAdWord(s, "ads."_L1))
        return true;
    if (includingCommonHosts && adHostPatterns().matches(s))
        return true;
    return lastComponentIsAd(s);
}

bool stringURLIsAdvertisement(QStringView s)
{
    return stringURLIsAdvertisementIncludingCommonHosts(s, false);
}

} // namespace orvel
