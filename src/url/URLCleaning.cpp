// Reducing an address to a canonical key: session identifiers, analytics, empty parameters, index
// pages, anchors, doubled slashes; and classifying addresses by the pattern tables.
#include "url/URLStrings.h"

#include "strings/CharacterTables.h"
#include "strings/FastCompare.h"
#include "url/URLTables_p.h"

#include <QVarLengthArray>

#include <array>
#include <bit>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

using namespace Qt::StringLiterals;

namespace orvel {

using namespace url_p;

namespace {

inline bool isSeparator(char16_t c) { return c == u'&' || c == u';' || c == u'?'; }

inline const char16_t *unitsOf(QStringView s) { return reinterpret_cast<const char16_t *>(s.utf16()); }

// The first occurrence of an ASCII needle at or after from, case ignored through lowerCharsTable
// (the needle is given in lower case); -1 when there is none.
qsizetype indexOfNoCase(QStringView s, QLatin1StringView needle, qsizetype from = 0)
{
    const ConversionTable lower = lowerCharsTable();
    const char16_t *u = unitsOf(s);
    const qsizetype n = s.size();
    const qsizetype m = needle.size();
    const char16_t first = char16_t(needle[0].unicode());
    for (qsizetype i = from < 0 ? 0 : from; i + m <= n; ++i) {
        if (lower[u[i]] != first)
            continue;
        qsizetype k = 1;
        while (k < m && lower[u[i + k]] == char16_t(needle[k].unicode()))
            ++k;
        if (k == m)
            return i;
    }
    return -1;
}

inline bool containsNoCase(QStringView s, QLatin1StringView needle) { return indexOfNoCase(s, needle) >= 0; }

// The first "id=" (case ignored), found through the few "=" of an address.
qsizetype indexOfIdEquals(QStringView s)
{
    const ConversionTable lower = lowerCharsTable();
    for (qsizetype e = s.indexOf(u'='); e >= 0; e = s.indexOf(u'=', e + 1))
        if (e >= 2 && lower[s[e - 2].unicode()] == u'i' && lower[s[e - 1].unicode()] == u'd')
            return e - 2;
    return -1;
}

// The separators ("&", ";", "?") of a string: keys are looked for only right after them, so each
// key test costs the number of separators, not the string's length.
struct Separators : QVarLengthArray<qsizetype, 32>
{
    // The lower-cased first units of the keys after the separators, as bits: a key whose first unit
    // is not among them is rejected without looking at the string. Removing a key never adds one.
    quint64 firstUnits[2] = { 0, 0 };
    bool mayStartWith(char16_t lower) const
    {
        return lower < 128 && ((firstUnits[lower >> 6] >> (lower & 63)) & 1);
    }
};

Separators separatorsOf(QStringView s)
{
    Separators seps;
    const char16_t *u = unitsOf(s);
    const qsizetype n = s.size() - 1; // a separator in the last unit has no key after it
    const ConversionTable lower = lowerCharsTable();
    auto add = [&](qsizetype i) {
        seps.append(i);
        const char16_t next = lower[u[i + 1]];
        if (next < 128)
            seps.firstUnits[next >> 6] |= quint64(1) << (next & 63);
    };
    qsizetype i = 0;
#if defined(__SSE2__)
    // Eight units at a time: compare with the three separators, then visit the matches' bits.
    const __m128i amp = _mm_set1_epi16('&'), semi = _mm_set1_epi16(';'), question = _mm_set1_epi16('?');
    for (; i + 8 <= n; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(u + i));
        const __m128i hit = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi16(v, amp), _mm_cmpeq_epi16(v, semi)), _mm_cmpeq_epi16(v, question));
        for (unsigned mask = unsigned(_mm_movemask_epi8(hit)); mask; mask &= mask - 1)
            if ((std::countr_zero(mask) & 1) == 0)
                add(i + std::countr_zero(mask) / 2);
    }
#endif
    // "&" (38), ";" (59) and "?" (63) as bits of one word: one comparison and one shift per unit.
    constexpr quint64 separatorBits = (quint64(1) << '&') | (quint64(1) << ';') | (quint64(1) << '?');
    for (; i < n; ++i)
        if (u[i] < 64 && ((separatorBits >> u[i]) & 1))
            add(i);
    return seps;
}

inline bool keyAt(QStringView s, qsizetype at, QLatin1StringView key, bool ci)
{
    if (at + key.size() > s.size())
        return false;
    const char16_t *u = unitsOf(s) + at;
    if (ci) {
        static const ConversionTable lower = lowerCharsTable();
        for (qsizetype k = 0; k < key.size(); ++k)
            if (lower[u[k]] != lower[key[k].unicode()])
                return false;
    } else {
        for (qsizetype k = 0; k < key.size(); ++k)
            if (u[k] != key[k].unicode())
                return false;
    }
    return true;
}

// The separator before the first occurrence of key that follows "&", ";" or "?", looking at the
// separators from index `from` of seps; -1 when there is none. A key at position 0 never counts.
qsizetype findKey(QStringView s, const Separators &seps, QLatin1StringView key, bool ci, qsizetype from = 0)
{
    const char16_t first = key[0].unicode();
    if (!seps.mayStartWith(first >= u'A' && first <= u'Z' ? char16_t(first + 32) : first))
        return -1;
    for (qsizetype k = from; k < seps.size(); ++k)
        if (keyAt(s, seps[k] + 1, key, ci))
            return k;
    return -1;
}

// Where the value of the key after separator p ends: the next "&" or "?" (and ";" after a ";"), or
// the end of the string.
qsizetype valueEnd(QStringView s, qsizetype p)
{
    const char16_t *u = unitsOf(s);
    const bool semicolon = u[p] == u';';
    for (qsizetype i = p + 1; i < s.size(); ++i) {
        const char16_t c = u[i];
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

// The same for the separator seps[k], keeping seps in step with the string.
void removeKeyAt(QString &s, Separators &seps, qsizetype k)
{
    const qsizetype p = seps[k];
    const qsizetype end = valueEnd(s, p);
    if (end < s.size() && end + 1 < s.size()) {
        const qsizetype removed = end - p;
        s.remove(p + 1, removed);
        qsizetype w = k + 1;
        for (qsizetype r = k + 1; r < seps.size(); ++r)
            if (seps[r] > end)
                seps[w++] = seps[r] - removed;
        seps.resize(w);
    } else {
        s.truncate(p);
        seps.resize(k);
    }
}

bool removeKey(QString &s, Separators &seps, QLatin1StringView key, bool ci)
{
    const qsizetype k = findKey(s, seps, key, ci);
    if (k < 0)
        return false;
    removeKeyAt(s, seps, k);
    return true;
}

enum PageKind : unsigned { StaticPage = 1, ScriptPage = 2, ForumPage = 4, ServerPage = 8 };

// The positions of "?" in s: those among the separators, and a last unit.
QVarLengthArray<qsizetype, 8> questionMarks(QStringView s, const Separators &seps)
{
    QVarLengthArray<qsizetype, 8> marks;
    for (const qsizetype p : seps)
        if (s[p] == u'?')
            marks.append(p);
    if (s.endsWith(u'?'))
        marks.append(s.size() - 1);
    return marks;
}

unsigned classifyPage(QStringView s, const Separators &seps)
{
    // Which page extensions stand right before some "?" (case ignored).
    bool html = false, php = false, asp = false;
    for (const qsizetype q : questionMarks(s, seps)) {
        const QStringView before = s.first(q);
        auto endsWith
            = [&](QLatin1StringView suffix) { return before.endsWith(suffix, Qt::CaseInsensitive); };
        html = html || endsWith(".html"_L1) || endsWith(".htm"_L1);
        php = php || endsWith(".php"_L1);
        asp = asp || endsWith(".asp"_L1) || endsWith(".aspx"_L1);
    }
    if (html)
        return StaticPage;
    if (php)
        return ScriptPage | (topicPatterns().matches(s) ? ForumPage : 0u);
    return asp ? ServerPage : 0u;
}

// The session keys in the order a pass tries them, with the condition under which each counts.
enum class When : quint8 {
    IdPresent,
    ForumWithoutId,
    Always,
    StaticOrScript,
    StaticWithoutCache,
    ScriptOrServer,
    Forum,
    DiscussionHost,
    AfterIds
};

struct SessionKey
{
    QLatin1StringView key;
    bool ci;
    bool needsLetter; // only with a letter in the value (see valueHasLetter)
    When when;
};

constexpr SessionKey sessionKeys[] = {
    { "phpsessionid="_L1, true, false, When::IdPresent },
    { "phpsessid="_L1, true, false, When::IdPresent },
    { "jsessionid="_L1, true, false, When::IdPresent },
    { "jsessid="_L1, true, false, When::IdPresent },
    { "sessionid="_L1, true, false, When::IdPresent },
    { "wgsessid="_L1, true, false, When::IdPresent },
    { "sessid="_L1, true, false, When::IdPresent },
    { "affid="_L1, false, false, When::IdPresent },
    { "REFFID="_L1, false, false, When::IdPresent },
    { "cid="_L1, false, true, When::IdPresent },
    { "p_sid="_L1, false, true, When::IdPresent },
    { "sid="_L1, false, true, When::IdPresent },
    { "s="_L1, false, false, When::ForumWithoutId },
    { "ccbill="_L1, false, false, When::Always },
    { "nats="_L1, false, false, When::Always },
    { "_fb_noscript="_L1, false, false, When::Always },
    { "pi="_L1, false, false, When::StaticOrScript },
    { "cache="_L1, true, false, When::StaticOrScript },
    { "CMP="_L1, false, false, When::StaticWithoutCache },
    { "ATT="_L1, false, false, When::StaticWithoutCache },
    { "lsrc="_L1, true, false, When::ScriptOrServer },
    { "highlight="_L1, true, false, When::Forum },
    { "hilit="_L1, false, false, When::Forum },
    { "ei="_L1, false, false, When::DiscussionHost },
    { "random="_L1, true, false, When::AfterIds },
};
constexpr int SessionKeyCount = int(std::size(sessionKeys));
constexpr int CacheKey = 17;

inline char16_t asciiLower(char16_t c) { return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c; }

// The keys by their lower-cased first unit, so each separator is compared with a few keys only.
struct KeyDispatch
{
    std::array<std::array<quint8, 8>, 128> ids {};
    std::array<quint8, 128> counts {};
};

const KeyDispatch &keyDispatch()
{
    static const KeyDispatch dispatch = [] {
        KeyDispatch d;
        for (int id = 0; id < SessionKeyCount; ++id) {
            const char16_t first = asciiLower(sessionKeys[id].key[0].unicode());
            d.ids[first][d.counts[first]++] = quint8(id);
        }
        return d;
    }();
    return dispatch;
}

// "cid=", "p_sid=" and "sid=" count only when a letter stands in the value, looked for from the
// fourth unit after the separator p. For "p_sid=" that unit is still inside the key, so it always
// counts; kept as it stands.
bool valueHasLetter(QStringView s, qsizetype p)
{
    const CharacterSetRep alpha = alphaCharacterSetRep();
    const qsizetype end = valueEnd(s, p);
    for (qsizetype i = p + 4; i < end; ++i)
        if (isCharacterPartOfSet(alpha, s[i].unicode()))
            return true;
    return false;
}

// One pass: removes the first key found in the fixed order (its leftmost occurrence); answers
// whether one went. One walk over the separators finds every key's leftmost occurrence; the
// conditions are then asked in order, each only when its key is there.
bool removeOneSessionKey(
    QString &s, Separators &seps, int &pageKind, bool &step1RemovedBefore, qsizetype &idAt)
{
    if (seps.isEmpty())
        return false;
    const KeyDispatch &dispatch = keyDispatch();
    const ConversionTable lower = lowerCharsTable();
    std::array<qsizetype, SessionKeyCount> found;
    found.fill(-1);
    bool any = false;
    for (qsizetype k = 0; k < seps.size(); ++k) {
        const qsizetype at = seps[k] + 1;
        const char16_t first = lower[s[at].unicode()];
        if (first >= 128)
            continue;
        for (int j = 0; j < dispatch.counts[first]; ++j) {
            const int id = dispatch.ids[first][j];
            const SessionKey &key = sessionKeys[id];
            if (found[id] < 0 && keyAt(s, at, key.key, key.ci)
                && (!key.needsLetter || valueHasLetter(s, seps[k]))) {
                found[id] = k;
                any = true;
            }
        }
    }
    if (!any)
        return false;

    // Whether the address holds "id=" anywhere, asked only when a key depends on it. idAt remembers
    // where it was last seen (-2: not looked for yet; -1: nowhere, and then never again, since
    // removing a key never makes an "id=" that was not there).
    int ids = -1;
    auto idPresent = [&] {
        if (ids < 0) {
            if (idAt == -2 || (idAt >= 0 && !keyAt(s, idAt, "id="_L1, true)))
                idAt = indexOfIdEquals(s);
            ids = idAt >= 0;
        }
        return ids == 1;
    };
    // The page's kind, classified when a key first needs it (it depends on the page, not on keys).
    auto kindOf = [&] {
        if (pageKind < 0)
            pageKind = int(classifyPage(s, seps));
        return unsigned(pageKind);
    };
    for (int id = 0; id < SessionKeyCount; ++id) {
        if (found[id] < 0)
            continue;
        bool counts = false;
        switch (sessionKeys[id].when) {
        case When::IdPresent:
            counts = idPresent();
            break;
        case When::ForumWithoutId:
            counts = (kindOf() & ForumPage) && !idPresent() && s.contains("&p="_L1);
            break;
        case When::Always:
            counts = true;
            break;
        case When::StaticOrScript:
            counts = kindOf() & (StaticPage | ScriptPage);
            break;
        case When::StaticWithoutCache:
            counts = (kindOf() & StaticPage) && found[CacheKey] < 0;
            break;
        case When::ScriptOrServer:
            counts = kindOf() & (ScriptPage | ServerPage);
            break;
        case When::Forum:
            counts = kindOf() & ForumPage;
            break;
        case When::DiscussionHost:
            counts = containsNoCase(s, QLatin1StringView(discussionGroupHost()));
            break;
        case When::AfterIds:
            counts = step1RemovedBefore || idPresent();
            break;
        }
        if (counts) {
            removeKeyAt(s, seps, found[id]);
            if (sessionKeys[id].when == When::IdPresent)
                step1RemovedBefore = true;
            return true;
        }
    }
    return false;
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

// Trailing "/" trimmed and every unit lower-cased, in one copy at most (none when s owns its text
// alone: then the units are changed where they are).
QString trimmedLowerCased(QString s)
{
    const ConversionTable lower = lowerCharsTable();
    const char16_t *u = unitsOf(s);
    qsizetype n = s.size();
    while (n > 0 && u[n - 1] == u'/')
        --n;
    qsizetype i = 0;
    while (i < n && lower[u[i]] == u[i])
        ++i;
    if (i < n && s.isDetached()) {
        char16_t *o = reinterpret_cast<char16_t *>(s.data());
        for (; i < n; ++i)
            o[i] = lower[o[i]];
        s.truncate(n);
        return s;
    }
    if (i == n)
        return n == s.size() ? s : s.first(n);
    QString out(n, Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    std::memcpy(o, u, size_t(i) * sizeof(char16_t));
    for (; i < n; ++i)
        o[i] = lower[u[i]];
    return out;
}

// Whether stringURLByRemovingEmptyParams can change s, told from its separators alone: an empty value
// ends right before a separator or at the end, and a key needs a separator before it.
bool mayHaveEmptyParams(QStringView s, const Separators &seps)
{
    if (seps.isEmpty())
        return false;
    const char16_t *u = unitsOf(s);
    const qsizetype n = s.size();
    for (qsizetype k = 0; k < seps.size(); ++k) {
        const qsizetype p = seps[k];
        if ((k > 0 && u[p - 1] == u'=') || (u[p] == u'?' && u[p + 1] == u'&'))
            return true;
    }
    return (u[n - 1] == u'=' && n - 1 > seps[0])
        || (n >= 2 && isSeparator(u[n - 1]) && u[n - 2] == u'=' && n - 2 > seps[0]);
}

void removeSessionIDs(QString &out, Separators &seps)
{
    // Every key stands after a separator; without one there is nothing to remove or cut.
    if (out.size() < 3 || (seps.isEmpty() && !out.endsWith(u'?')))
        return;
    int kind = -1;
    bool step1RemovedBefore = false;
    qsizetype idAt = -2;
    for (int pass = 0; pass < MaxSessionPasses; ++pass)
        if (!removeOneSessionKey(out, seps, kind, step1RemovedBefore, idAt))
            break;
    // A login or registration form, or a widget page: its query is state, not address.
    for (const qsizetype q : questionMarks(out, seps)) {
        auto before = [&](QLatin1StringView suffix) {
            return q >= suffix.size() && keyAt(out, q - suffix.size(), suffix, false);
        };
        if (before("/login"_L1) || before("/register"_L1)
            || (before(".html"_L1) && keyAt(out, q + 1, "widgetType="_L1, false))) {
            out.truncate(q);
            while (!seps.isEmpty() && seps.last() >= q)
                seps.removeLast();
            break;
        }
    }
}

void removeAnalytics(QString &out, Separators &seps)
{
    // The keys stand after separators, so a "utm_" anywhere else changes nothing.
    if (findKey(out, seps, "utm_"_L1, true) < 0)
        return;
    for (QLatin1StringView key : { "utm_source="_L1, "utm_medium="_L1, "utm_campaign="_L1, "utm_term="_L1,
             "utm_content="_L1, "utm_nooverride="_L1 })
        removeKey(out, seps, key, true);
}

} // namespace

QString stringURLByRemovingSessionIDs(const QString &s)
{
    QString out = s;
    Separators seps = separatorsOf(s);
    removeSessionIDs(out, seps);
    return out.size() == s.size() ? s : out;
}

QString stringURLByRemovingAnalytics(const QString &s)
{
    QString out = s;
    Separators seps = separatorsOf(s);
    removeAnalytics(out, seps);
    return out.size() == s.size() ? s : out;
}

QString stringURLByRemovingQueryParam(const QString &s, QStringView key)
{
    if (key.isEmpty())
        return s;
    for (const qsizetype p : separatorsOf(s)) {
        const QStringView candidate = QStringView(s).sliced(p + 1);
        if (candidate.startsWith(key, Qt::CaseInsensitive)) {
            QString out = s;
            removeKeyAt(out, p);
            return out;
        }
    }
    return s;
}

QString stringURLByRemovingEmptyParams(const QString &s)
{
    const char16_t *u = unitsOf(s);
    const qsizetype n = s.size();
    // Most addresses have no empty parameter: find the first one before copying anything.
    qsizetype firstSeparator = -1;
    qsizetype start = -1;
    for (qsizetype i = 0; i < n && start < 0; ++i) {
        if (isSeparator(u[i])) {
            if (firstSeparator < 0)
                firstSeparator = i;
        } else if (u[i] == u'=' && firstSeparator >= 0 && (i + 1 == n || isSeparator(u[i + 1]))) {
            start = firstSeparator;
        }
    }
    if (start < 0)
        return s.contains("?&"_L1) ? QString(s).replace("?&"_L1, "?"_L1) : s;
    QString out(n, Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    std::memcpy(o, u, size_t(start) * sizeof(char16_t));
    qsizetype length = start;
    qsizetype lastSeparator = -1; // in out
    for (qsizetype i = start; i < n; ++i) {
        const char16_t c = u[i];
        if (c == u'=' && lastSeparator >= 0 && (i + 1 == n || isSeparator(u[i + 1]))) {
            length = lastSeparator + 1;
            if (i + 1 < n)
                ++i; // the separator after the empty value goes with it
            continue;
        }
        if (isSeparator(c))
            lastSeparator = length;
        o[length++] = c;
    }
    out.resize(length);
    out.replace("?&"_L1, "?"_L1);
    return out;
}

QString stringURLByRemovingIndexPages(const QString &s)
{
    const qsizetype n = s.size();
    // Every suffix begins with "/index.", so the suffix tests alone decide; most addresses have no
    // "/" at any of the three places a suffix could begin.
    if (n < 10 || !(s[n - 10] == u'/' || (n >= 11 && s[n - 11] == u'/') || (n >= 12 && s[n - 12] == u'/')))
        return s;
    if (n >= 12)
        for (QLatin1StringView suffix : { "/index.shtml"_L1, "/index.phtml"_L1, "/index.jhtml"_L1 })
            if (keyAt(s, n - 12, suffix, true))
                return s.first(n - 12);
    if (n >= 11 && keyAt(s, n - 11, "/index.html"_L1, true))
        return s.first(n - 11);
    for (QLatin1StringView suffix :
        { "/index.htm"_L1, "/index.php"_L1, "/index.chm"_L1, "/index.asp"_L1, "/index.cgi"_L1 })
        if (keyAt(s, n - 10, suffix, true))
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
    const char16_t *u = unitsOf(s);
    const qsizetype n = s.size();
    // The common address has nothing to drop: find the first unit that goes before copying.
    qsizetype i = 0;
    bool query = false;
#if defined(__SSE2__)
    // Eight units at a time, up to the first block holding a "?", a ";" or a "/" after a "/".
    if (n > 8) {
        const __m128i slash = _mm_set1_epi16('/'), question = _mm_set1_epi16('?'), semi = _mm_set1_epi16(';');
        for (i = 1; i + 8 <= n; i += 8) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(u + i));
            const __m128i before = _mm_loadu_si128(reinterpret_cast<const __m128i *>(u + i - 1));
            const __m128i stop
                = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(v, question), _mm_cmpeq_epi16(v, semi)),
                    _mm_and_si128(_mm_cmpeq_epi16(v, slash), _mm_cmpeq_epi16(before, slash)));
            if (_mm_movemask_epi8(stop))
                break;
        }
        i = i > 0 ? i - 1 : 0; // the scalar loop below looks at the block again from its start
    }
#endif
    for (; i < n; ++i) {
        const char16_t c = u[i];
        if (c == u'?' || c == u';') {
            query = true;
            break;
        }
        if (c == u'/' && i > 0 && u[i - 1] == u'/' && (i < 2 || u[i - 2] != u':'))
            break;
    }
    if (query || (i == n && !s.endsWith("/."_L1) && !s.endsWith("/.."_L1) && s != "."_L1 && s != ".."_L1))
        return s;
    QString out(n, Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    std::memcpy(o, u, size_t(i) * sizeof(char16_t));
    qsizetype length = i;
    for (; i < n; ++i) {
        const char16_t c = u[i];
        if (c == u'?' || c == u';') {
            query = true;
            break;
        }
        // A "/" after a "/" goes, unless a ":" stands before that one ("http://" survives).
        if (c == u'/' && i > 0 && u[i - 1] == u'/' && (i < 2 || u[i - 2] != u':'))
            continue;
        o[length++] = c;
    }
    if (query) {
        std::memcpy(o + length, u + i, size_t(n - i) * sizeof(char16_t));
        length += n - i;
    } else {
        for (bool cut = true; cut;) {
            const QStringView now(o, length);
            cut = true;
            if (now.endsWith("/."_L1))
                length -= 2;
            else if (now.endsWith("/.."_L1))
                length -= 3;
            else if (now == "."_L1 || now == ".."_L1)
                length = 0;
            else
                cut = false;
        }
    }
    if (length == n)
        return s;
    out.resize(length);
    return out;
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
    Separators seps = separatorsOf(out);
    if (sessionIDs)
        removeSessionIDs(out, seps);
    if (analytics)
        removeAnalytics(out, seps);
    if (emptyParams && mayHaveEmptyParams(out, seps))
        out = stringURLByRemovingEmptyParams(out);
    if (!seps.isEmpty()) {
        // The patent search's own pages: its host right after "//" (or "//www.").
        qsizetype host = 0;
        for (qsizetype i = 1; i < qMin<qsizetype>(out.size(), 16); ++i)
            if (out[i] == u'/' && out[i - 1] == u'/') {
                host = i + 1;
                break;
            }
        if (keyAt(out, host, "www."_L1, true))
            host += 4;
        if (keyAt(out, host, QLatin1StringView(patentSearchHost()), true))
            out = stringURLByRemovingQueryParam(out, u"ved=");
    }
    if (indexPages) {
        if (sessionIDs && out.size() >= 15 && out.endsWith("/?page=main.php"_L1))
            out.chop(14);
        else
            out = stringURLByRemovingIndexPages(out);
    }
    if (keyAt(out, 0, "http://www."_L1, true))
        out.remove(7, 4);
    else if (keyAt(out, 0, "https://www."_L1, true))
        out.replace(0, 12, "http://"_L1);
    else if (keyAt(out, 0, "https:"_L1, true))
        out.replace(0, 6, "http:"_L1);
    return trimmedLowerCased(std::move(out));
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
    return bookmarkingHosts().matchesHost(host);
}

namespace {

// "adserver" or "ads." at the start or after a unit other than E, O, P (either case): 'uploads.'
// and 'downloads.' are no advertisements.
bool hasAdWord(QStringView s, QLatin1StringView word)
{
    qsizetype i = 0;
    while ((i = indexOfNoCase(s, word, i)) >= 0) {
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
