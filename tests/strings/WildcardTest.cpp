// Wildcard matching in both dialects, the classifier and the length bounds.
#include "strings/Wildcard.h"

#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;

namespace {

struct MatchCase
{
    const char16_t *text, *pattern;
    bool plain, plainNoCase, unix, unixNoCase;
};

class WildcardMatch : public ::testing::TestWithParam<MatchCase>
{
};

TEST_P(WildcardMatch, AllFourEntryPoints)
{
    const MatchCase c = GetParam();
    const QStringView t(c.text), p(c.pattern);
    EXPECT_EQ(isLikeWildcard(t, p), c.plain);
    EXPECT_EQ(isCaseInsensitiveLikeWildcard(t, p), c.plainNoCase);
    EXPECT_EQ(isLikeUnixWildcard(t, p), c.unix);
    EXPECT_EQ(isCaseInsensitiveLikeUnixWildcard(t, p), c.unixNoCase);
}

// Worked examples of each rule and its quirks, case, umlauts and empty strings.
// clang-format off
INSTANTIATE_TEST_SUITE_P(Cases, WildcardMatch, ::testing::Values(
    //          text           pattern          plain  plainCI unix   unixCI
    MatchCase { u"report.txt", u"*.txt",        true,  true,  true,  true },
    MatchCase { u"report.txt", u"*.TXT",        false, true,  false, true },
    MatchCase { u"",           u"*",            false, false, false, false },
    MatchCase { u"a",          u"",             false, false, false, false },
    MatchCase { u"abc",        u"a?c",          true,  true,  true,  true },
    MatchCase { u"ac",         u"a?c",          false, false, false, false },
    MatchCase { u"ab",         u"a",            false, false, false, false },
    MatchCase { u"abab",       u"*ab",          true,  true,  true,  true },
    MatchCase { u"aba",        u"*ab",          false, false, false, false },
    MatchCase { u"abab",       u"*[ab]b",       false, false, true,  true },
    MatchCase { u"a[1]",       u"a[1]",         true,  true,  false, false },
    MatchCase { u"A",          u"[a-c]",        false, false, false, true },
    MatchCase { u"c",          u"[a-c]",        false, false, true,  true },
    MatchCase { u"a",          u"[^a]",         false, false, false, false },
    MatchCase { u"a",          u"[^]",          false, false, true,  true },  // an empty negated class takes any unit
    MatchCase { u"a",          u"[a-]",         false, false, true,  true },
    MatchCase { u"b",          u"[a-]",         false, false, false, true },  // "-]" ranges up to "]": "A-]" holds "B"
    MatchCase { u"^",          u"[-{]",         false, false, true,  true },  // a leading "-" ranges from the "["
    MatchCase { u"|",          u"[a|e|i]",      false, false, false, false }, // "|" only separates members
    MatchCase { u"x",          u"[",            false, false, false, false },
    MatchCase { u"b",          u"[abc",         false, false, true,  true },  // unclosed class ends with the pattern
    MatchCase { u"ÄRGER",      u"är*",          false, true,  false, true },
    MatchCase { u"file10.jpg", u"file[0-9][0-9].*", false, false, true, true }));
// clang-format on

TEST(WildcardMatch, HostilePatternsAnswerWithoutExhaustingStackOrTime)
{
    const QString text = QString(20000, u'a') + u'b';
    QString pattern;
    for (int i = 0; i < 5000; ++i)
        pattern += u"*a"_s;
    EXPECT_FALSE(isLikeWildcard(text, pattern + u'c'));
    EXPECT_TRUE(isCaseInsensitiveLikeUnixWildcard(text, pattern + u"[B]"_s));
}

TEST(WildcardTypes, ClassifiesAfterCompaction)
{
    const std::pair<const char16_t *, int> cases[] = { { u"abc", 0 }, { u"a?c", 1 }, { u"abc*", 2 },
        { u"*abc", 3 }, { u"*abc*", 4 }, { u"a*c", 5 }, { u"a**c", 5 }, { u"*a?", 5 }, { u"*a*b*", 5 },
        { u"[ab]*c*", 6 }, { u"[ab]*c", 6 }, { u"[ab]c*", 7 }, { u"*[ab]c", 8 }, { u"[ab]c", 9 },
        { u"[ab]", 9 }, { u"a]", 10 }, { u"*", 10 }, { u"[a", 10 }, { u"[a[b]]", 10 }, { u"*[]*", 10 },
        { u"[^]", 10 }, { u"???", 10 }, { u"", 0 } };
    for (const auto &[pattern, type] : cases)
        EXPECT_EQ(wildcardType(pattern), type) << QString::fromUtf16(pattern);
}

TEST(WildcardTypes, CompactionRewritesInPlaceAndGivesTheLiteralPart)
{
    char16_t p[] = u"**ab**";
    qsizetype out[2];
    EXPECT_EQ(optimizeWildcard(p, p + 6, out, 1), WildcardContains);
    EXPECT_EQ(QString::fromUtf16(p, 4), "*ab*");
    EXPECT_EQ(out[0], 1);
    EXPECT_EQ(out[1], 2);
    char16_t q[] = u"*[a|b]c";
    EXPECT_EQ(optimizeWildcard(q, q + 7, out, 1), WildcardClassesSuffix);
    EXPECT_EQ(QString::fromUtf16(q, 6), "*[ab]c");
    EXPECT_EQ(out[0], 1);
    EXPECT_EQ(out[1], 5);
    char16_t r[] = u"a*";
    EXPECT_EQ(optimizeWildcard(r, r + 2, out, 2), WildcardInvalid); // fewer literal units than asked
}

TEST(WildcardLength, BoundsOfUnixPatterns)
{
    auto minOf = [](QStringView s) { return minWildcardLen(s.utf16(), s.utf16() + s.size()); };
    auto maxOf = [](QStringView s) { return maxWildcardLen(s.utf16(), s.utf16() + s.size()); };
    EXPECT_EQ(maxOf(u"a[bc]d"), 3);
    EXPECT_EQ(maxOf(u"a*d"), NotFound);
    EXPECT_EQ(maxOf(u""), 0);
    EXPECT_EQ(minOf(u"a*[bc]?"), 3);
    EXPECT_EQ(wildcardLength(u"**"), 0);
    EXPECT_EQ(minOf(u"ab[cd"), 3); // an unclosed class stops at the end
}

TEST(WildcardTables, OptionsAndInclusion)
{
    EXPECT_TRUE(isUnicharTablePartOfConversionTable(upperCharsTable(), upperUmlautsCharsTable()));
    EXPECT_TRUE(isUnicharTablePartOfConversionTable(umlautsCharsTable(), lowerUmlautsCharsTable()));
    EXPECT_FALSE(isUnicharTablePartOfConversionTable(upperUmlautsCharsTable(), upperCharsTable()));
    EXPECT_FALSE(isUnicharTablePartOfConversionTable(upperCharsTable(), lowerUmlautsCharsTable()));
    EXPECT_FALSE(isUnicharTablePartOfConversionTable(nullptr, upperCharsTable()));
}

TEST(WildcardSeparation, QueryWordsKeepTheirWildcards)
{
    const CharacterSetRep seps = defaultWildcardSeparators();
    for (char16_t c : { u'*', u'?', u'[', u']' })
        EXPECT_FALSE(isCharacterPartOfSet(seps, c));
    EXPECT_TRUE(isCharacterPartOfSet(seps, u'-'));
    EXPECT_EQ(wordsUsingWildcardSeparation("find re*rt [a b]x? now"),
        QStringList({ "find", "re*rt", "[a b]x?", "now" }));
    EXPECT_EQ(numberOfWordsUsingWildcardSeparation(u"find re*rt [a b]x? now"), 4);
    EXPECT_EQ(wordsUsingWildcardSeparation("x[y z"), QStringList { "x[y z" }); // an unclosed class runs on
}

} // namespace
