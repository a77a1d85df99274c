// The fast comparison and search family on raw arrays and strings.
#include "strings/FastCompare.h"

#include <QRandomGenerator>
#include <QString>
#include <QVarLengthArray>
#include <gtest/gtest.h>

using namespace orvel;

namespace {

const char16_t *units(const QString &s) { return QStringView(s).utf16(); }

TEST(FastCompare, DifferenceAtFirstMismatchElseLengthDifference)
{
    const QString abc = "abc", abd = "abd", ab = "ab";
    EXPECT_EQ(fastCompareUnichars(units(abc), 3, units(abd), 3), 'c' - 'd');
    EXPECT_EQ(fastCompareUnichars(units(abc), 3, units(ab), 2), 1);
    EXPECT_EQ(fastCompareUnichars(units(ab), 2, units(abc), 3), -1);
    EXPECT_EQ(fastCompareUnicharsWithChars(units(abc), 3, "abd", 3), -1);
    EXPECT_EQ(fastCompareChars("b", 1, "a", 1), 1);
}

TEST(FastCompare, HighBytesWidenAsSignedValues)
{
    const char16_t ff80[] = { 0xFF80 };
    EXPECT_EQ(fastCompareUnicharsWithChars(ff80, 1, "\x80", 1), 0);
    // As signed bytes 0x80 (-128) sorts before 'a'.
    EXPECT_LT(fastCompareChars("\x80", 1, "a", 1), 0);
}

TEST(FastCompare, CaseInsensitiveGoesThroughUpperTable)
{
    const QString a = "Straße", b = "STRASSE", c = "STRAßE", d = "strasse";
    EXPECT_EQ(fastCaseInsensitiveCompareUnichars(units(a), a.size(), units(c), c.size()), 0);
    EXPECT_NE(fastCaseInsensitiveCompareUnichars(units(a), a.size(), units(b), b.size()), 0);
    EXPECT_EQ(fastCaseInsensitiveCompareUnicharsWithChars(units(d), d.size(), "STRASSE", 7), 0);
    EXPECT_EQ(fastCaseInsensitiveCompareChars("Hello", 5, "hELLO", 5), 0);
    EXPECT_EQ(
        fastCompareUnicharsUsingConversionTable(units(a), a.size(), units(c), c.size(), nullptr), 't' - 'T');
    EXPECT_EQ(
        fastCompareUnicharsUsingConversionTable(units(a), a.size(), units(c), c.size(), upperCharsTable()),
        0);
}

TEST(FastContains, LeftmostOccurrenceOrNull)
{
    const QString hay = "abcabcABC";
    const QString bc = "bc", BC = "BC", empty = "", tooLong = "abcabcABCx";
    EXPECT_EQ(fastContainsUnichars(units(hay), hay.size(), units(bc), 2), units(hay) + 1);
    EXPECT_EQ(fastContainsUnichars(units(hay), hay.size(), units(BC), 2), units(hay) + 7);
    EXPECT_EQ(fastCaseInsensitiveContainsUnichars(units(hay), hay.size(), units(BC), 2), units(hay) + 1);
    EXPECT_EQ(fastContainsUnichars(units(hay), hay.size(), units(empty), 0), nullptr);
    EXPECT_EQ(fastContainsUnichars(units(hay), hay.size(), units(tooLong), tooLong.size()), nullptr);
    EXPECT_EQ(fastUnicharsContainChars(units(hay), hay.size(), "cA", 2), units(hay) + 5);
    EXPECT_EQ(fastCaseInsensitiveUnicharsContainChars(units(hay), hay.size(), "CA", 2), units(hay) + 2);
    EXPECT_EQ(positionOfCharacters("CA", 2, units(hay), hay.size(), true), nullptr);
    EXPECT_EQ(positionOfCharacters("CA", 2, units(hay), hay.size(), false), units(hay) + 2);
}

TEST(FastContains, MatchAtTheVeryEndAndLongNeedleOffTheStack)
{
    QString hay(1000, u'x');
    hay += QString(300, u'y');
    const QString needle = QString(1, u'X') + QString(300, u'Y');
    EXPECT_EQ(fastCaseInsensitiveContainsUnichars(units(hay), hay.size(), units(needle), needle.size()),
        units(hay) + 999);
}

TEST(FastContains, LongSearchesFindTheSameLeftmostOccurrenceAsAScan)
{
    // A tiny alphabet of units sharing a low byte or mapping to ASCII exercises the skip table's collisions.
    const char16_t alphabet[]
        = { u'a', u'A', 0x0161, 0x0160, u'b', 0x0162, u's', u'S', 0x017F }; // ſ upper-cases to 'S'
    QRandomGenerator rng(99);
    const ConversionTable upper = upperCharsTable();
    for (int round = 0; round < 3000; ++round) {
        const qsizetype hayLen = 200 + rng.bounded(600), needleLen = 4 + rng.bounded(6);
        QVarLengthArray<char16_t, 1024> hay(hayLen), needle(needleLen);
        for (char16_t &c : hay)
            c = alphabet[rng.bounded(9)];
        for (char16_t &c : needle)
            c = alphabet[rng.bounded(9)];
        const char16_t *expected = nullptr;
        for (qsizetype i = 0; i + needleLen <= hayLen && !expected; ++i) {
            qsizetype k = 0;
            while (k < needleLen && upper[hay[i + k]] == upper[needle[k]])
                ++k;
            if (k == needleLen)
                expected = hay.data() + i;
        }
        ASSERT_EQ(fastCaseInsensitiveContainsUnichars(hay.data(), hayLen, needle.data(), needleLen), expected)
            << round;
    }
}

TEST(RepComparison, SkipsNonMembersOnBothSides)
{
    const std::tuple<const char16_t *, const char16_t *, bool, bool, bool, bool> cases[] = {
        // a        b       equal  noCase prefix prefixNoCase
        { u"a-b", u"ab", true, true, true, true },
        { u"abc", u"a-b", false, false, true, true },
        { u"a-b", u"abc", false, false, false, false },
        { u"A.B", u"ab", false, true, false, true },
        { u"--", u"", true, true, true, true },
        { u"ab", u"ax", false, false, false, false },
    };
    const CharacterSetRep rep = alphaNumCharacterSetRep();
    for (const auto &[a, b, equal, equalNoCase, prefix, prefixNoCase] : cases) {
        const std::string name
            = QString::fromUtf16(a).toStdString() + " / " + QString::fromUtf16(b).toStdString();
        EXPECT_EQ(equalStringsUsingCharacterSetRep(a, b, rep), equal) << name;
        EXPECT_EQ(equalStringsNoCaseUsingCharacterSetRep(a, b, rep), equalNoCase) << name;
        EXPECT_EQ(hasPrefixUsingCharacterSetRep(a, b, rep), prefix) << name;
        EXPECT_EQ(hasPrefixNoCaseUsingCharacterSetRep(a, b, rep), prefixNoCase) << name;
    }
}

TEST(EqualStrings, ConversionTableAndLengths)
{
    EXPECT_TRUE(equalStringsUsingConversionTable(u"Äpfel", u"äPFEL", upperCharsTable()));
    EXPECT_FALSE(equalStringsUsingConversionTable(u"Äpfel", u"äPFEL", nullptr));
    EXPECT_TRUE(equalStringsUsingConversionTable(u"Äpfel", u"apfel", lowerUmlautsCharsTable()));
    EXPECT_FALSE(equalStringsUsingConversionTable(u"ab", u"abc", upperCharsTable()));
    EXPECT_TRUE(equalStringsUsingConversionTable(QString(), u"", upperCharsTable()));
}

TEST(EqualStrings, NoCaseFamily)
{
    EXPECT_TRUE(isEqualToStringNoCase(u"Köln", "KÖLN"));
    EXPECT_FALSE(isEqualToStringNoCase(u"Köln", "KOLN"));
    EXPECT_FALSE(isEqualToStringNoCase(u"a", QString()));
    EXPECT_TRUE(isAsciiEqualToStringNoCase(u"Müller", "MULLER"));
    EXPECT_TRUE(isAsciiEqualToStringNoCase(u"x中", "X日")); // both without an ASCII base: spaces
    EXPECT_TRUE(isNonUmlautedEqualToStringNoCase(u"Müller", "MULLER"));
    EXPECT_FALSE(isNonUmlautedEqualToStringNoCase(u"x中", "X日"));
    EXPECT_TRUE(rangeIsEqualTo(u"the Cat sat", 4, 3, "Cat"));
    EXPECT_TRUE(rangeIsEqualToNoCase(u"the Cat sat", 4, 3, "cAT"));
    EXPECT_TRUE(rangeIsAsciiEqualToNoCase(u"die Größe", 4, 5, "GRO E"));
    EXPECT_TRUE(rangeIsNonUmlautedEqualToNoCase(u"die Größe", 4, 5, "GROßE"));
    EXPECT_FALSE(rangeIsEqualToNoCase(u"abc", 2, 3, "cde")); // range beyond the end
    EXPECT_TRUE(hasPrefixNoCase(u"README.md", "readme"));
    EXPECT_TRUE(hasSuffixNoCase(u"photo.JPG", ".jpg"));
}

TEST(FindCharacter, KeepsTheUpperCaseQuirk)
{
    // The text, the character, where the search starts, case-insensitive, and where it is found.
    const std::tuple<const char16_t *, char16_t, qsizetype, bool, qsizetype> cases[] = {
        { u"bat", u'a', 0, false, NotFound }, // case-sensitive 'a' looks for 'A'
        { u"bAt", u'a', 0, false, 1 }, { u"bat", u'a', 0, true, 1 }, { u"bAt", u'a', 0, true, 1 },
        { u"bAt", u'A', 0, false, 1 }, { u"bat", u'A', 0, false, NotFound },
        { u"a.b.c", u'.', 2, false, 3 }, // no case: exact
        { u"a.b.c", u'.', 5, false, NotFound }, { u"a.b.c", u'.', 99, false, NotFound },
        { u"", u'.', 0, false, NotFound }, { u"straße", 0x00DF, 0, false, 4 }, // ß has no one-unit upper case
    };
    for (const auto &[text, ch, start, caseInsensitive, expected] : cases) {
        const std::string name = QString::fromUtf16(text).toStdString();
        EXPECT_EQ(findCharacter(text, ch, start, caseInsensitive), expected) << name << int(ch);
        EXPECT_EQ(containsCharacter(text, ch, start, caseInsensitive), expected != NotFound) << name;
    }
}

} // namespace
