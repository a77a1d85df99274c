// The pattern tables: their shape, the matcher against a plain search, and the predicates.
#include "url/URLStrings.h"
#include "url/URLTables_p.h"

#include "testlib/TestSupport.h"

#include <QRandomGenerator>
#include <QSet>
#include <gtest/gtest.h>

using namespace orvel;
using namespace orvel::url_p;
using namespace Qt::StringLiterals;

namespace {

struct TableCase
{
    const char *name;
    const PatternTable &(*table)();
    qsizetype size; // 0: any
    qsizetype minimumLength;
};

void PrintTo(const TableCase &c, std::ostream *os) { *os << c.name; }

class Tables : public ::testing::TestWithParam<TableCase>
{
};

TEST_P(Tables, HaveTheirSizeAndLowerCaseAsciiEntriesOfTwoUnitsOrMore)
{
    const TableCase c = GetParam();
    const PatternTable &table = c.table();
    if (c.size) {
        EXPECT_EQ(qsizetype(table.entries().size()), c.size);
    }
    EXPECT_EQ(table.minimumLength(), c.minimumLength);
    QSet<QByteArray> seen;
    for (const char *e : table.entries()) {
        const QByteArray entry(e);
        EXPECT_GE(entry.size(), 2) << e;
        EXPECT_EQ(entry, entry.toLower()) << e;
        for (char ch : entry)
            EXPECT_TRUE(ch > 0x20 && ch < 0x7f) << e;
        EXPECT_FALSE(seen.contains(entry)) << "twice: " << e;
        seen.insert(entry);
        // Every entry is found by its own table, in any case.
        EXPECT_TRUE(table.indexIn(QString::fromLatin1(entry).toUpper()) == 0) << e;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Tables,
    ::testing::Values(TableCase { "searchEngines", searchEngineHosts, 71, 0 },
        TableCase { "bookmarking", bookmarkingHosts, 31, 0 }, TableCase { "caches", cachePatterns, 18, 0 },
        TableCase { "translations", translationPatterns, 9, 0 },
        TableCase { "recaptcha", recaptchaPatterns, 2, 27 }, TableCase { "topics", topicPatterns, 5, 13 },
        TableCase { "forums", forumPatterns, 5, 0 }, TableCase { "adSense", adSensePatterns, 0, 12 },
        TableCase { "imageAd", imageAdPatterns, 13, 12 }, TableCase { "ads1", ads1Patterns, 68, 5 },
        TableCase { "ads2", ads2Patterns, 13, 0 }, TableCase { "hosts", adHostPatterns, 10, 9 },
        TableCase { "archives", adArchiveHosts, 2, 0 }, TableCase { "groupAPortal", groupAPortalLinks, 5, 0 },
        TableCase { "groupCPartners", groupCPartnerLinks, 3, 0 },
        TableCase { "groupD", groupDEngineHosts, 3, 0 }, TableCase { "groupE", groupEEngineHosts, 3, 0 }));

// The indexed matcher answers the leftmost position a plain case-insensitive search of every entry
// finds, on random texts built from pieces of the entries.
TEST(PatternTable, AgreesWithAPlainSearchOfEveryEntry)
{
    const PatternTable &table = ads1Patterns();
    QStringList pieces;
    for (const char *e : table.entries()) {
        const QString entry = QString::fromLatin1(e);
        pieces << entry << entry.left(entry.size() - 1) << entry.mid(1).toUpper();
    }
    pieces << u"/"_s << u"ä"_s << u"K"_s << u"\u212A"_s << u"?x="_s;
    QRandomGenerator rng(11);
    for (int round = 0; round < 3000; ++round) {
        QString text;
        const int n = int(rng.bounded(6));
        for (int i = 0; i < n; ++i)
            text += pieces.at(int(rng.bounded(qsizetype(pieces.size()))));
        qsizetype expected = -1;
        for (const char *e : table.entries()) {
            const qsizetype at = text.toLower().indexOf(QLatin1StringView(e));
            if (at >= 0 && (expected < 0 || at < expected))
                expected = at;
        }
        ASSERT_EQ(table.indexIn(text), expected) << text;
    }
}

struct PredicateCase
{
    bool (*predicate)(QStringView);
    const char16_t *url;
    bool expected;
};

class Predicates : public ::testing::TestWithParam<PredicateCase>
{
};

TEST_P(Predicates, Answer)
{
    EXPECT_EQ(GetParam().predicate(GetParam().url), GetParam().expected)
        << QString::fromUtf16(GetParam().url);
}

INSTANTIATE_TEST_SUITE_P(Tables, Predicates,
    ::testing::Values(
        PredicateCase { stringURLIsCached, u"https://webcache.googleusercontent.com/search?q=cache:x", true },
        PredicateCase { stringURLIsCached, u"http://cc.bingj.com/cache.aspx?d=1&w=2", true },
        PredicateCase { stringURLIsCached, u"http://a.org/cache/x", false },
        PredicateCase {
            stringURLIsTranslation, u"https://www-example-com.translate.goog/?_x_tr_sl=de", true },
        PredicateCase { stringURLIsTranslation, u"http://a.org/translate?hl=de&u=x", true },
        PredicateCase { stringURLIsRecaptcha, u"https://www.google.com/recaptcha/api/noscript?k=1", true },
        PredicateCase { stringURLIsRecaptcha, u"https://www.google.com/recaptcha/api/fallback?k=1", false },
        PredicateCase { stringURLIsTopicOrThread, u"http://f.org/ShowThread.php?t=1", true },
        PredicateCase { stringURLIsTopicOrThread, u"viewtopic.ph", false },
        PredicateCase { stringURLIsForum, u"http://phpBB.a.org/", true },
        PredicateCase { stringURLIsForum, u"http://a.org/blog", false },
        PredicateCase { stringURLIsAdSense, u"https://googleads.g.doubleclick.net/pagead/ads?x", true },
        PredicateCase { stringURLIsAdSense, u"https://tpc.googlesyndication.com/simgad/1", true }, // image ad
        PredicateCase { stringURLIsImageAd, u"http://a.com/ads/per_site/1.gif", true },
        PredicateCase { stringURLIsImageAd, u"http://a.org/", false },
        PredicateCase { stringURLIsBookmarklet, u"https://getpocket.com/save?url=x", true },
        PredicateCase { stringURLIsBookmarklet, u"https://a.org/?share=getpocket.com", false },
        PredicateCase { stringURLIsBookmarklet, u"http://me@www.addtoany.com:80/share", true },
        PredicateCase { stringURLIsBookmarklet, u"https://remix.com/", false }));

struct AdCase
{
    const char16_t *url;
    bool plain, withHosts;
};

class Advertisement : public ::testing::TestWithParam<AdCase>
{
};

TEST_P(Advertisement, Rules)
{
    const AdCase c = GetParam();
    EXPECT_EQ(stringURLIsAdvertisement(c.url), c.plain) << QString::fromUtf16(c.url);
    EXPECT_EQ(stringURLIsAdvertisementIncludingCommonHosts(c.url, true), c.withHosts)
        << QString::fromUtf16(c.url);
}

INSTANTIATE_TEST_SUITE_P(Urls, Advertisement,
    ::testing::Values(AdCase { u"http://a.org/uploads.html", false, false },
        AdCase { u"http://a.org/downloads.html", false, false },
        AdCase { u"http://a.org/ads.html", true, true }, AdCase { u"ads.", true, true },
        AdCase { u"ads", false, false }, // below 4 units
        AdCase { u"http://x.org/Adserver/1", true, true }, AdCase { u"http://x.org/reklama/1", true, true },
        AdCase { u"http://cdn.x.org/ad/top.gif", true, true },
        AdCase { u"https://adsoftheworld.com/ad/1", false, false }, // an archive of advertising
        AdCase { u"http://x.org/adsk/ad/1", false, false },
        AdCase { u"http://x.org/p/ADFRAME2.php", true, true },
        AdCase { u"https://ib.adnxs.com/getuid", false, true }, // the common hosts only with the flag
        AdCase { u"http://x.org/img/banner.gif", true, true },
        AdCase { u"http://x.org/img/banner.", false, false },
        AdCase { u"http://x.org/counter.html?x", true, true },
        AdCase { u"http://x.org/Counter.html", false, false },
        AdCase { u"http://x.org/news/2026/story.html", false, false }));

TEST(Advertisement, HugeInputAnswers)
{
    const QString huge = u"uploads."_s.repeated(1 << 17);
    EXPECT_FALSE(stringURLIsAdvertisementIncludingCommonHosts(huge, true));
    EXPECT_TRUE(stringURLIsAdvertisement(huge + u"/ads."_s));
}

} // namespace
