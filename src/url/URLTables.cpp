// The pattern matcher and the tables it searches; the entries themselves live in tables/.
#include "url/URLTables_p.h"

#include "strings/CharacterTables.h"

namespace orvel::url_p {

namespace {

constexpr int Buckets = 128 * 128;

inline int bucketOf(char16_t a, char16_t b) { return int(a) * 128 + int(b); }

} // namespace

PatternTable::PatternTable(std::span<const char *const> entries, qsizetype minimumLength)
    : m_entries(entries)
    , m_minimumLength(minimumLength)
    , m_offsets(Buckets + 1, 0)
{
    // Counting sort of the entries by their first two units (entries are lower-case ASCII of two
    // units or more; tests/url check that).
    std::vector<int> keys;
    keys.reserve(entries.size());
    for (const char *e : entries) {
        const int key = (e[0] && e[1]) ? bucketOf(char16_t(e[0] & 0x7f), char16_t(e[1] & 0x7f)) : -1;
        keys.push_back(key);
        if (key >= 0)
            ++m_offsets[key + 1];
    }
    for (int i = 0; i < Buckets; ++i)
        m_offsets[i + 1] += m_offsets[i];
    m_ids.resize(m_offsets[Buckets]);
    std::vector<quint16> fill(m_offsets.begin(), m_offsets.end() - 1);
    for (size_t i = 0; i < keys.size(); ++i)
        if (keys[i] >= 0)
            m_ids[fill[keys[i]]++] = quint16(i);
}

namespace {

// Whether the entry stands in u[i, n) from i on, through lower.
inline bool entryAt(const char *e, const char16_t *u, qsizetype i, qsizetype n, ConversionTable lower)
{
    while (*e && i < n && lower[u[i]] == char16_t(*e)) {
        ++e;
        ++i;
    }
    return !*e;
}

} // namespace

bool PatternTable::matchesHost(QStringView host) const
{
    const char16_t *u = host.utf16();
    const qsizetype n = host.size();
    const ConversionTable lower = lowerCharsTable();
    for (qsizetype i = 0; i + 1 < n; ++i) {
        if (i > 0 && u[i - 1] != u'.')
            continue;
        const char16_t a = lower[u[i]], b = lower[u[i + 1]];
        if (a >= 128 || b >= 128)
            continue;
        const int key = bucketOf(a, b);
        for (quint16 k = m_offsets[key], end = m_offsets[key + 1]; k < end; ++k)
            if (entryAt(m_entries[m_ids[k]], u, i, n, lower))
                return true;
    }
    return false;
}

qsizetype PatternTable::indexIn(QStringView s) const
{
    const char16_t *u = s.utf16();
    const qsizetype n = s.size();
    if (n < 2 || m_ids.empty())
        return -1;
    const ConversionTable lower = lowerCharsTable();
    char16_t b = lower[u[0]];
    for (qsizetype i = 0; i + 1 < n; ++i) {
        const char16_t a = b;
        b = lower[u[i + 1]];
        if (a >= 128 || b >= 128)
            continue;
        const int key = bucketOf(a, b);
        for (quint16 k = m_offsets[key], end = m_offsets[key + 1]; k < end; ++k)
            if (entryAt(m_entries[m_ids[k]] + 2, u, i + 2, n, lower))
                return i;
    }
    return -1;
}

bool PatternTable::matches(QStringView s) const
{
    if (s.size() < m_minimumLength)
        return false;
    return indexIn(s) >= 0;
}

namespace {

#include "url/tables/redirect_group_a.inc"
#include "url/tables/redirect_group_b.inc"
#include "url/tables/redirect_group_c.inc"
#include "url/tables/redirect_group_d.inc"
#include "url/tables/redirect_group_e.inc"
#include "url/tables/redirect_group_fg.inc"

constexpr const char *searchEngines[] = {
#include "url/tables/search_engines.inc"
};
constexpr const char *bookmarking[] = {
#include "url/tables/bookmarking.inc"
};
constexpr const char *caches[] = {
#include "url/tables/caches.inc"
};
constexpr const char *translations[] = {
#include "url/tables/translations.inc"
};
constexpr const char *recaptcha[] = {
#include "url/tables/recaptcha.inc"
};
constexpr const char *topics[] = {
#include "url/tables/topics.inc"
};
constexpr const char *forums[] = {
#include "url/tables/forums.inc"
};
constexpr const char *adSense[] = {
#include "url/tables/adsense.inc"
};
constexpr const char *imageAds[] = {
#include "url/tables/image_ads.inc"
};
constexpr const char *ads1[] = {
#include "url/tables/ads1.inc"
};
constexpr const char *ads2[] = {
#include "url/tables/ads2.inc"
};
constexpr const char *adHosts[] = {
#include "url/tables/ad_hosts.inc"
};
constexpr const char *adArchives[] = {
#include "url/tables/ad_archives.inc"
};

} // namespace

#define ORVEL_URL_TABLE(function, array, minimum)                                                            \
    const PatternTable &function()                                                                           \
    {                                                                                                        \
        static const PatternTable table(array, minimum);                                                     \
        return table;                                                                                        \
    }

ORVEL_URL_TABLE(searchEngineHosts, searchEngines, 0)
ORVEL_URL_TABLE(bookmarkingHosts, bookmarking, 0)
ORVEL_URL_TABLE(cachePatterns, caches, 0)
ORVEL_URL_TABLE(translationPatterns, translations, 0)
ORVEL_URL_TABLE(recaptchaPatterns, recaptcha, 27)
ORVEL_URL_TABLE(topicPatterns, topics, 13)
ORVEL_URL_TABLE(forumPatterns, forums, 0)
ORVEL_URL_TABLE(adSensePatterns, adSense, 12)
ORVEL_URL_TABLE(imageAdPatterns, imageAds, 12)
ORVEL_URL_TABLE(ads1Patterns, ads1, 5)
ORVEL_URL_TABLE(ads2Patterns, ads2, 0)
ORVEL_URL_TABLE(adHostPatterns, adHosts, 9)
ORVEL_URL_TABLE(adArchiveHosts, adArchives, 0)
ORVEL_URL_TABLE(groupAEngineHosts, groupAEngine, 0)
ORVEL_URL_TABLE(groupAPortalLinks, groupAPortal, 0)
ORVEL_URL_TABLE(groupBShoppingHosts, groupBShopping, 0)
ORVEL_URL_TABLE(groupCMetaSearchHosts, groupCEngine, 0)
ORVEL_URL_TABLE(groupCPartnerLinks, groupCPartners, 0)
ORVEL_URL_TABLE(groupDEngineHosts, groupDEngines, 0)
ORVEL_URL_TABLE(groupDClickHosts, groupDClick, 0)
ORVEL_URL_TABLE(groupEEngineHosts, groupEEngines, 0)
ORVEL_URL_TABLE(groupEUrlUrlSites, groupEUrlUrl, 0)
ORVEL_URL_TABLE(groupEDomainVariants, groupEDomains, 0)
ORVEL_URL_TABLE(groupEScholarHosts, groupEScholar, 0)
ORVEL_URL_TABLE(groupEVideoLinks, groupEVideo, 0)
ORVEL_URL_TABLE(groupEBlogTabLinks, groupEBlogTab, 0)

#undef ORVEL_URL_TABLE

std::span<const PortalRedirector> groupBPortals() { return groupBRows; }
const char *groupEBlogRoot() { return groupEBlogRootAddress; }
const char *groupFMedicalHostSuffix() { return groupFHostSuffix; }
const char *groupGLegalHostSuffix() { return groupGHostSuffix; }
const char *discussionGroupHost() { return discussionGroupHostName; }
const char *patentSearchHost() { return patentSearchHostName; }

} // namespace orvel::url_p
