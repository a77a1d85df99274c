// Word and component separation, the digit rule, hyphenation and shortening.
#include "strings/Separation.h"

#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace orvel;

namespace {

struct WordsCase
{
    const char16_t *text;
    QStringList words;
    bool hyphenated;
};

class DefaultWords : public ::testing::TestWithParam<WordsCase>
{
};

TEST_P(DefaultWords, SplitAndHyphenation)
{
    const WordsCase c = GetParam();
    bool hyphenated = !c.hyphenated;
    EXPECT_EQ(wordsUsingDefaultSeparation(QString::fromUtf16(c.text), &hyphenated), c.words);
    EXPECT_EQ(hyphenated, c.hyphenated);
    EXPECT_EQ(numberOfWordsUsingDefaultSeparation(c.text), c.words.size());
}

INSTANTIATE_TEST_SUITE_P(Texts, DefaultWords,
    ::testing::Values(
        WordsCase { u"Pi is 3.14, e is 2.71.", { "Pi", "is", "3.14", "e", "is", "2.71" }, false },
        WordsCase { u"1,5", { "1,5" }, false }, WordsCase { u",5", { "5" }, false },
        WordsCase { u"a.b", { "a", "b" }, true }, // single letters ending at "." read as an abbreviation
        WordsCase { u"v2.0.1 and 1,000", { "v2.0.1", "and", "1,000" }, false },
        WordsCase { u"well-known", { "well", "known" }, true },
        WordsCase { u"U.S.A", { "U", "S", "A" }, true },
        WordsCase { u"U.S.Army", { "U", "S", "Army" }, false },
        WordsCase { u"well-known.", { "well", "known" }, false }, WordsCase { u"word", { "word" }, false },
        WordsCase { u"", {}, false }, WordsCase { u"x\u00A9y\u2122z\uFFFDw", { "x", "y", "z", "w" }, false },
        WordsCase { u"a\U0001F600b", { "a", "b" }, false })); // surrogate halves are breaks

TEST(Words, CountsInRangesAndAMinimumLengthDropsShortWords)
{
    EXPECT_EQ(wordsUsingSeparators("a bc def", nullptr, false, 3), QStringList { "def" });
    EXPECT_EQ(numberOfWordsUsingDefaultSeparation(u"a bc def", 2), 2);
    const QString s = "one two three four";
    EXPECT_EQ(numberOfWordsOfCharacters(QStringView(s).utf16(), s.size()), 4);
    EXPECT_EQ(numberOfWordsInRange(s, 4, 9, nullptr, 1), 2);
    EXPECT_EQ(numberOfWordsInRange(s, 10, 99, nullptr, 1), 0);
}

TEST(Words, SeparatorRunsAreFlaggedRecords)
{
    const QString s = "Hi, you!";
    QList<SeparationRange> ranges;
    const qsizetype n = wordsOfCharacters(QStringView(s).utf16(), s.size(), nullptr, true, 1, false, &ranges);
    ASSERT_EQ(n, 4);
    EXPECT_EQ(ranges,
        (QList<SeparationRange> {
            { 0, 2 }, { 2, 2 | SeparatorRangeFlag }, { 4, 3 }, { 7, 1 | SeparatorRangeFlag } }));
    EXPECT_EQ(wordsUsingSeparators(s, nullptr, true), (QStringList { "Hi", ", ", "you", "!" }));
}

TEST(Components, RunThroughTheirBreaks)
{
    const QString s = "One.. Two!  Three";
    QList<SeparationRange> ranges;
    EXPECT_EQ(componentsOfCharacters(QStringView(s).utf16(), s.size(), nullptr, &ranges), 3);
    EXPECT_EQ(ranges, (QList<SeparationRange> { { 0, 5 }, { 5, 5 }, { 10, 7 } }));
    EXPECT_EQ(componentsUsingDefaultSeparation(s), (QStringList { "One", " Two", "  Three" }));
    EXPECT_EQ(
        componentsUsingSeparators(s, nullptr, true), (QStringList { "One", "..", " Two", "!", "  Three" }));
    EXPECT_EQ(numberOfComponentsUsingSeparators(u"Pi is 3.14. Yes", nullptr), 2); // the digit rule
    EXPECT_EQ(numberOfComponentsUsingSeparators(u"a, b; c", defaultSentenceSeparators()), 1);
    EXPECT_EQ(numberOfComponentsInRange(u"a. b. c", 3, 4, nullptr), 2);
}

TEST(Paragraphs, NonBlankLinesAndTheirWords)
{
    qsizetype words = -1;
    const QString s = "First line here\n\n  \r\nSecond one\rthird";
    EXPECT_EQ(numberOfParagraphs(s, &words, 0, s.size(), 1), 3);
    EXPECT_EQ(words, 6);
}

TEST(Ellipsize, AfterNCharactersCutsAtAnEarlierWordBoundary)
{
    const std::tuple<const char16_t *, qsizetype, const char16_t *> cases[] = {
        { u"Hello big world", 12, u"Hello big..." },
        { u"Hello big world", 8, u"Hello..." },
        { u"Hello big world", 9, u"Hello big..." },
        { u"Hello", 5, u"Hello" },
        { u"Helloworld more", 5, u"Helloworld more" },
        { u"Hello, world", 6, u"Hello..." },
        { u"Hello big world", 0, u"Hello big world" },
    };
    for (const auto &[text, k, expected] : cases)
        EXPECT_EQ(
            stringByEllipsizingAfterNCharacters(QString::fromUtf16(text), k), QString::fromUtf16(expected))
            << QString::fromUtf16(text) << " " << k;
}

TEST(Ellipsize, AfterNWordsAndNLines)
{
    const QString s = "one two, three four";
    EXPECT_EQ(stringByEllipsizingAfterNWords(s, 2), "one two...");
    EXPECT_TRUE(stringByEllipsizingAfterNWords(s, 4).isSharedWith(s));
    EXPECT_EQ(stringByEllipsizingAfterNWords("ab", 5), "ab");
    EXPECT_EQ(stringByEllipsizingNLines("first line is long\r\n\r\nsecond\u2028third\nfourth", 3, 10),
        "first line...\nsecond\nthird");
    EXPECT_EQ(stringByEllipsizingNLines("", 3, 10), "");
    EXPECT_EQ(stringByEllipsizingNLines("a\nb", 0, 10), "a\nb");
}

} // namespace
