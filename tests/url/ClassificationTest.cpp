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

// The matcher lowers the text and indexes entries by two units: each entry lower-case ASCII, listed once.
TEST(PatternTables, HoldLowerCaseAsciiEntriesOfTwoUnitsOrMoreOnceEach)
{
    for (const auto table : { searchEngineHosts, bookmarkingHosts, cachePatterns, translationPatterns,
             recaptchaPatterns, topicPatterns, forumPatterns, adSensePatterns, imageAdPatterns, ads1Patterns,
             ads2Patterns, adHostPatterns, adArchiveHosts, groupAPortalLinks, groupCPartnerLinks,
             groupDEngineHosts, groupEEngineHosts }) {
        QSet<QByteArray> seen;
        for (const char *e : table().entries()) {
            const QByteArray entry(e);
            EXPECT_TRUE(entry.size() >= 2 && entry == entry.toLower() && !seen.contains(entry)) << e;
            for (char ch : entry)
                EXPECT_TRUE(ch > 0x20 && ch < 0x7f) << e;
            seen.insert(entry);
            EXPECT_EQ(table().indexIn(QString::fromLatin1(entry).toUpper()), 0) << e;
        }
    }
}

// The indexed matcher agrees with a plain search of every entry on random texts made of entry pieces.
TEST(PatternTable, AgreesWithAPlainSearchOfEveryEntry)
{
    const PatternTable &table = ads1Patterns();
    QStringList pieces { u"/"_s, u"ä"_s, u"K"_s, u"\u212A"_s, u"?x="_s };
    for (const char *e : table.entries()) {
        const QString entry = QString::fromLatin1(e);
        pieces << entry << entry.left(entry.size() - 1) << entry.mid(1).toUpper();
    }
    QRandomGenerator rng(11);
    for (int round = 0; round < 3000; ++round) {
        QString text;
        for (int i = int(rng.bounded(6)); i > 0; --i)
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

TEST(Predicates, AnswerForTheirTables)
{
    const std::tuple<bool (*)(QStringView), const char16_t *, bool> cases[] = {
        { stringURLIsCached, u"https://webcache.googleusercontent.com/search?q=cache:x", true },
        { stringURLIsCached, u"http://a.org/cache/x", false },
        { stringURLIsTranslation, u"https://www-example-com.translate.goog/?_x_tr_sl=de", true },
        { stringURLIsRecaptcha, u"https://www.google.com/recaptcha/api/noscript?k=1", true },
        { stringURLIsRecaptcha, u"https://www.google.com/recaptcha/api/fallback?k=1", false },
        { stringURLIsTopicOrThread, u"http://f.org/ShowThread.php?t=1", true },
        { stringURLIsTopicOrThread, u"viewtopic.ph", false },
        { stringURLIsForum, u"http://phpBB.a.org/", true },
        { stringURLIsForum, u"http://a.org/blog", false },
        { stringURLIsAdSense, u"https://googleads.g.doubleclick.net/pagead/ads?x", true },
        { stringURLIsAdSense, u"https://tpc.googlesyndication.com/simgad/1", true }, // image ad
        { stringURLIsImageAd, u"http://a.com/ads/per_site/1.gif", true },
        { stringURLIsBookmarklet, u"https://getpocket.com/save?url=x", true },
        { stringURLIsBookmarklet, u"https://a.org/?share=getpocket.com", false },
        { stringURLIsBookmarklet, u"http://me@www.addtoany.com:80/share", true },
        { stringURLIsBookmarklet, u"https://remix.com/", false },
    };
    for (const auto &[predicate, url, expected] : cases)
        EXPECT_EQ(predicate(url), expected) << QString::fromUtf16(url);
}

TEST(Advertisement, RulesWithAndWithoutTheCommonHosts)
{
    const std::tuple<const char16_t *, bool, bool> cases[] = {
        // the address; plain; with the common hosts
        { u"http://a.org/ads.html", true, true },
        { u"ads.", true, true },
        { u"ads", false, false }, // below 4 units
        { u"http://x.org/Adserver/1", true, true },
        { u"http://cdn.x.org/ad/top.gif", true, true },
        { u"https://adsoftheworld.com/ad/1", false, false }, // an archive of advertising
        { u"http://x.org/adsk/ad/1", false, false },
        { u"https://ib.adnxs.com/getuid", false, true }, // the common hosts only with the flag
        { u"http://x.org/img/banner.gif", true, true },
        { u"http://x.org/img/banner.", false, false },
        { u"http://x.org/counter.html?x", true, true },
        { u"http://x.org/Counter.html", false, false },
        { u"http://x.org/news/2026/story.html", false, false },
    };
    for (const auto &[url, plain, withHosts] : cases) {
        EXPECT_EQ(stringURLIsAdvertisement(url), plain) << QString::fromUtf16(url);
        EXPECT_EQ(stringURLIsAdvertisementIncludingCommonHosts(url, true), withHosts)
            << QString::fromUtf16(url);
    }
}

TEST(Advertisement, HugeInputAnswers)
{
    const QString huge = u"uploads."_s.repeated(1 << 17);
    EXPECT_FALSE(stringURLIsAdvertisementIncludingCommonHosts(huge, true));
    EXPECT_TRUE(stringURLIsAdvertisement(huge + u"/ads."_s));
}

} // namespace
