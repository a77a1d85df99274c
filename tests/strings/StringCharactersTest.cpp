// Whole-string transformations and predicates.
#include "strings/StringCharacters.h"

#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace orvel;

namespace {

TEST(StringTransformations, ReceiverComesBackWhenNothingChanges)
{
    const QString plain = "plain ascii";
    EXPECT_TRUE(nonUmlautedString(plain).isSharedWith(plain));
    EXPECT_TRUE(lowercaseNonUmlautedString(plain).isSharedWith(plain));
    EXPECT_FALSE(uppercaseNonUmlautedString(plain).isSharedWith(plain));
}

TEST(StringTransformations, TablesAppliedUnitByUnit)
{
    EXPECT_EQ(nonUmlautedString("Crème brûlée"), "Creme brulee");
    EXPECT_EQ(uppercaseNonUmlautedString("Grüße"), "GRUßE");
    EXPECT_EQ(lowercaseNonUmlautedString("ÄÖÜ"), "aou");
    EXPECT_EQ(stringByApplyingConversionTable("İstanbul", lowerCharsTable()), "İstanbul");
    EXPECT_EQ(stringByRemovingCharactersInRep("a1b22c", digitCharacterSetRep()), "abc");
}

TEST(StringTransformations, AsciiComposesFirstAndKeepsTheLength)
{
    // "e" + combining acute composes to one unit before the mapping.
    EXPECT_EQ(asciiString(QString("Cafe\u0301")), "Cafe");
    EXPECT_EQ(asciiString("Straße 中"), "Stra e  ");
    EXPECT_EQ(lowercaseAsciiString("ÉCOLE中"), "ecole ");
    EXPECT_EQ(uppercaseAsciiString("Größe"), "GRO E");
    EXPECT_EQ(asciiString(""), "");
}

TEST(StringPredicates, EmptyStringAnswers)
{
    EXPECT_TRUE(isWhiteString(u""));
    EXPECT_TRUE(isSpaceString(u""));
    EXPECT_FALSE(isDigitString(u""));
    EXPECT_FALSE(isAlphaString(u""));
    EXPECT_TRUE(isAsciiString(u""));
    EXPECT_FALSE(isUmlautedString(u""));
    EXPECT_TRUE(isLowerCaseString(u""));
    EXPECT_TRUE(onlyWhiteCharacters(nullptr, 0));
}

TEST(StringPredicates, ClassesAndCounts)
{
    EXPECT_TRUE(isWhiteString(u" \t\n\u00A0\uFEFF\u0003"));
    EXPECT_FALSE(isSpaceString(u" \n"));
    EXPECT_TRUE(isDigitString(u"0123\u0663"));
    EXPECT_TRUE(isUmlautedString(u"Müller"));
    EXPECT_TRUE(isLowerCaseString(u"straße 1"));
    EXPECT_FALSE(isLowerCaseString(u"Straße"));
    EXPECT_TRUE(isUpperCaseString(u"STRAßE")); // ß has no one-unit upper case
    EXPECT_EQ(countDigitCharacters(u"a1b22c"), 3);
    EXPECT_EQ(countWhiteCharacters(u"a b\tc\n"), 3);
    EXPECT_EQ(countAlphaNumCharacters(u"a-1"), 2);
    EXPECT_TRUE(containsDigitCharacter(u"r2d2"));
    EXPECT_FALSE(containsAlphaCharacter(u"1234"));
    EXPECT_FALSE(containsCharacterPartOfCharacterSetRep(u"abc", nullptr));
    EXPECT_TRUE(containsWhiteCharacter(u"a\u2029"));
}

TEST(MashedWord, CapitalisedPartsRunTogether)
{
    for (const char16_t *yes : { u"McDonald", u"AbCd", u"McDo" })
        EXPECT_TRUE(isMashedWord(yes)) << QString::fromUtf16(yes);
    for (const char16_t *no : { u"Mac", u"McD", u"AbC", u"ABc", u"Abcd", u"ABcd", u"" })
        EXPECT_FALSE(isMashedWord(no)) << QString::fromUtf16(no);
}

TEST(ContainsCharacters, EveryRequestedCharacterMustOccur)
{
    EXPECT_TRUE(containsCharacters(u"a.b@c", ContainsDot | ContainsAt));
    EXPECT_FALSE(containsCharacters(u"a.b", ContainsDot | ContainsAt));
    EXPECT_TRUE(containsCharacters(u"$x_*;?/",
        ContainsDollar | ContainsUnderscore | ContainsAsterisk | ContainsSemicolon | ContainsQuestionMark
            | ContainsSlash));
    EXPECT_FALSE(containsCharacters(u"a.b", 0));
    EXPECT_FALSE(containsCharacters(u"", ContainsDot));
}

TEST(BoolValue, NumbersAndWords)
{
    for (const char16_t *yes : { u"1", u" -3", u"TRUE", u"Yes", u"on", u"12abc" })
        EXPECT_TRUE(boolValue(yes)) << QString::fromUtf16(yes);
    for (const char16_t *no : { u"0", u"", u"false", u"no", u"onx", u"yes ", u"t" })
        EXPECT_FALSE(boolValue(no)) << QString::fromUtf16(no);
    EXPECT_EQ(integerValue(u"  +42x"), 42);
    EXPECT_EQ(integerValue(u"99999999999999999999"), std::numeric_limits<qint64>::max());
}

} // namespace
