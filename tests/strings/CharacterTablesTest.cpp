// Character-set reps and conversion tables: contents for the units that are easy to get wrong.
#include "strings/CharacterTables.h"

#include <gtest/gtest.h>

using namespace orvel;

namespace {

TEST(ConversionTables, EntriesOfTheTrickyUnitsMatchTheirRules)
{
    const struct
    {
        char16_t unit, lower, upper, umlauts, lowerUmlauts, upperUmlauts;
    } cases[] = {
        { u'a', u'a', u'A', u'a', u'a', u'A' }, { u'A', u'a', u'A', u'A', u'a', u'A' },
        { 0x00E4, 0x00E4, 0x00C4, u'a', u'a', u'A' }, // ä
        { 0x00C9, 0x00E9, 0x00C9, u'E', u'e', u'E' }, // É
        { 0x00D8, 0x00F8, 0x00D8, 0x00D8, 0x00F8, 0x00D8 }, // Ø has no decomposition
        { 0x00DF, 0x00DF, 0x00DF, 0x00DF, 0x00DF, 0x00DF }, // ß upper-cases to "SS": kept
        { 0x0130, 0x0130, 0x0130, u'I', u'i', u'I' }, // İ lower-cases to two units: kept
        { 0x01C5, 0x01C5, 0x01C5, 0x01C5, 0x01C5, 0x01C5 }, // ǅ title case: in neither case class
        { 0x01C4, 0x01C6, 0x01C4, 0x01C4, 0x01C6, 0x01C4 }, // Ǆ
        { 0x03C2, 0x03C2, 0x03A3, 0x03C2, 0x03C2, 0x03A3 }, // final sigma
        { 0x0301, 0x0301, 0x0301, 0x0301, 0x0301, 0x0301 }, // a lone combining mark keeps its entry
        { 0xD800, 0xD800, 0xD800, 0xD800, 0xD800, 0xD800 }, // surrogate halves are single units
        { 0xFF21, 0xFF41, 0xFF21, 0xFF21, 0xFF41, 0xFF21 }, // full-width A
    };
    for (const auto &c : cases) {
        EXPECT_EQ(int(lowerCharsTable()[c.unit]), int(c.lower)) << int(c.unit);
        EXPECT_EQ(int(upperCharsTable()[c.unit]), int(c.upper)) << int(c.unit);
        EXPECT_EQ(int(umlautsCharsTable()[c.unit]), int(c.umlauts)) << int(c.unit);
        EXPECT_EQ(int(lowerUmlautsCharsTable()[c.unit]), int(c.lowerUmlauts)) << int(c.unit);
        EXPECT_EQ(int(upperUmlautsCharsTable()[c.unit]), int(c.upperUmlauts)) << int(c.unit);
    }
}

TEST(CharacterSetReps, MembershipFollowsTheClasses)
{
    const struct
    {
        char16_t unit;
        bool space, white, alpha, alphaNum, digit, lower, upper;
    } cases[] = {
        // clang-format off
        // unit   space  white  alpha  alnum  digit  lower  upper
        { u' ',   true,  true,  false, false, false, false, false },
        { 0x0000, true,  true,  false, false, false, false, false },
        { 0x000A, false, true,  false, false, false, false, false },
        { 0xFFFC, false, true,  false, false, false, false, false },
        { 0x00A0, true,  true,  false, false, false, false, false },
        { u'q',   false, false, true,  true,  false, true,  false },
        { u'Q',   false, false, true,  true,  false, false, true },
        { 0x01C5, false, false, true,  true,  false, false, false },
        { 0x0301, false, false, true,  true,  false, false, false }, // marks count as letters
        { u'5',   false, false, false, true,  true,  false, false },
        { 0x0663, false, false, false, true,  true,  false, false }, // Arabic-Indic three
        { 0x00BD, false, false, false, true,  false, false, false }, // ½ is a number, not a digit
        { u'-',   false, false, false, false, false, false, false },
        { 0xD834, false, false, false, false, false, false, false },
        // clang-format on
    };
    for (const auto &c : cases) {
        const int u = int(c.unit);
        EXPECT_EQ(isCharacterPartOfSet(spaceCharacterSetRep(), c.unit), c.space) << u;
        EXPECT_EQ(isCharacterPartOfSet(whiteCharacterSetRep(), c.unit), c.white) << u;
        EXPECT_EQ(isCharacterPartOfSet(alphaCharacterSetRep(), c.unit), c.alpha) << u;
        EXPECT_EQ(isCharacterPartOfSet(alphaNumCharacterSetRep(), c.unit), c.alphaNum) << u;
        EXPECT_EQ(isCharacterPartOfSet(digitCharacterSetRep(), c.unit), c.digit) << u;
        EXPECT_EQ(isCharacterPartOfSet(lowerCharacterSetRep(), c.unit), c.lower) << u;
        EXPECT_EQ(isCharacterPartOfSet(upperCharacterSetRep(), c.unit), c.upper) << u;
        EXPECT_FALSE(isCharacterPartOfSet(emptyCharacterSetRep(), c.unit)) << u;
    }
}

TEST(CharacterSetReps, FirstAndLastAlphaCharacter)
{
    EXPECT_EQ(int(firstAlphaCharacter()), int(u'A'));
    const char16_t last = lastAlphaCharacter();
    EXPECT_TRUE(isCharacterPartOfSet(alphaCharacterSetRep(), last));
    for (char32_t c = char32_t(last) + 1; c <= 0xFFFF; ++c)
        ASSERT_FALSE(isCharacterPartOfSet(alphaCharacterSetRep(), char16_t(c))) << int(c);
}

TEST(EncodingConverters, RoundTripUtf8AndRefuseWhatDoesNotFit)
{
    const char text[] = "Gr\xC3\xBC\xC3\x9F"
                        "e";
    char16_t units[16];
    ASSERT_EQ(convertUTF8ToUnicode(text, qsizetype(sizeof text - 1), units, 16), 5);
    EXPECT_EQ(units[2], 0x00FC);
    char back[16];
    ASSERT_EQ(convertUnicodeToUTF8(units, 5, back, 16), qsizetype(sizeof text - 1));
    EXPECT_EQ(std::string(back, sizeof text - 1), std::string(text));
    EXPECT_EQ(convertUTF8ToUnicode(text, qsizetype(sizeof text - 1), units, 3), 0);
    EXPECT_EQ(convertUTF8ToUnicode("\xC3", 1, units, 16), 0);
    EXPECT_EQ(convertEncodingToUnicode("ISO-8859-1", "\xE4", 1, units, 16), 1);
    EXPECT_EQ(units[0], 0x00E4);
    EXPECT_EQ(convertEncodingToUnicode("no-such-encoding", "a", 1, units, 16), 0);
}

} // namespace
