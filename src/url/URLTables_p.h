// Not API: the URL module's pattern tables and the matcher that searches them.
#pragma once

#include <QStringView>
#include <QtGlobal>

#include <span>
#include <vector>

namespace orvel::url_p {

/// A fixed list of lower-case ASCII substrings (two units or more), searched case-insensitively
/// through lowerCharsTable. The entries are indexed by their first two units, so a search reads the
/// text once and compares only the entries that could start at each position: linear in the text's
/// length whatever the table's size.
class PatternTable
{
public:
    PatternTable(std::span<const char *const> entries, qsizetype minimumLength = 0);

    /// True when s has at least the minimum length and contains an entry.
    bool matches(QStringView s) const;
    /// The position of the leftmost occurrence of any entry, or -1.
    qsizetype indexIn(QStringView s) const;
    /// True when an entry begins the host or one of its labels (after a "."): "so.com" matches
    /// "so.com" and "www.so.com" but not "espresso.com".
    bool matchesHost(QStringView host) const;
    std::span<const char *const> entries() const { return m_entries; }
    qsizetype minimumLength() const { return m_minimumLength; }

private:
    std::span<const char *const> m_entries;
    qsizetype m_minimumLength;
    std::vector<quint16> m_offsets; // 128 * 128 + 1 bucket starts into m_ids
    std::vector<quint16> m_ids;
};

// The tables, built on first use (thread-safely) and read-only after. Their entries live in
// src/url/tables/, one file per table.
const PatternTable &searchEngineHosts(); // 71 host patterns
const PatternTable &bookmarkingHosts(); // 31 host patterns
const PatternTable &cachePatterns(); // 18
const PatternTable &translationPatterns(); // 9
const PatternTable &recaptchaPatterns(); // 2, from 27 units
const PatternTable &topicPatterns(); // 5, from 13 units
const PatternTable &forumPatterns(); // 5
const PatternTable &adSensePatterns(); // from 12 units
const PatternTable &imageAdPatterns(); // 13, from 12 units
const PatternTable &ads1Patterns(); // 68, from 5 units
const PatternTable &ads2Patterns(); // 13
const PatternTable &adHostPatterns(); // 10, from 9 units
const PatternTable &adArchiveHosts(); // 2 advertising archives, which ads2 must not flag

/// One portal of the second redirect group: its host and the link prefixes it redirects through.
struct PortalRedirector
{
    const char *host;
    const char *redirectPrefix; // must carry "bu=http"
    const char *trackingPrefixes[2]; // must carry "u=http"
};

// The hosts that select a redirect group, and the addresses each group knows.
const PatternTable &groupAEngineHosts();
const PatternTable &groupAPortalLinks(); // 5
std::span<const PortalRedirector> groupBPortals(); // 4
const PatternTable &groupBShoppingHosts(); // 2
const PatternTable &groupCMetaSearchHosts();
const PatternTable &groupCPartnerLinks(); // 3
const PatternTable &groupDEngineHosts(); // 3
const PatternTable &groupDClickHosts(); // the click-tracking host whose links give nil
const PatternTable &groupEEngineHosts(); // 3 country domains
const PatternTable &groupEUrlUrlSites(); // 2 country sites serving "/url?url="
const PatternTable &groupEDomainVariants(); // 2, each followed by "/url?q="
const PatternTable &groupEScholarHosts();
const PatternTable &groupEVideoLinks();
const PatternTable &groupEBlogTabLinks();
const char *groupEBlogRoot();
const char *groupFMedicalHostSuffix();
const char *groupGLegalHostSuffix();
const char *discussionGroupHost(); // its "ei=" parameter is a session key
const char *patentSearchHost(); // its "ved=" parameter is tracking

} // namespace orvel::url_p
