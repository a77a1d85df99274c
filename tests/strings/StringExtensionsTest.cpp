// Configuration lines, rotation, bracket counts, trimming and line access.
#include "strings/StringExtensions.h"

#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace orvel;

namespace {

TEST(ConfigLines, CommentsBlankAndOneLetterLinesDropped)
{
    EXPECT_EQ(configLines(u"a=1\n# c\n  b=2  \nx\n"), (QStringList { "a=1", "b=2" }));
    EXPECT_EQ(configLines(u"one 1\r\ntwo 2\u2028\t# three\uFEFFfour 4"),
        (QStringList { "one 1", "two 2", "four 4" }));
    EXPECT_EQ(configLines(u"  ab#c  "), QStringList { "ab#c" });
    EXPECT_TRUE(configLines(u"\n\n#\n").isEmpty());
}

TEST(ConfigValue, KeyThenWhiteThenValue)
{
    const std::tuple<const char16_t *, const char16_t *, QString> cases[] = {
        // null: no value
        { u"Width 120", u"width", "120" },
        { u"WIDTH \t 120 px  ", u"width", "120 px" },
        { u"Width=120", u"width", QString() },
        { u"Widths 120", u"width", QString() },
        { u"Width", u"width", QString() },
        { u"Width 120", u"", QString() },
        { u"Height 120", u"width", QString() },
    };
    for (const auto &[line, key, value] : cases) {
        const QString v = configValueForKey(line, key);
        EXPECT_EQ(v, value) << QString::fromUtf16(line);
        EXPECT_EQ(v.isNull(), value.isNull()) << QString::fromUtf16(line);
    }
}

TEST(Rotation, WithinEachCaseWrapping)
{
    EXPECT_EQ(stringByRotating("Zz!", 27), "Aa!");
    EXPECT_EQ(stringByRotating13("Hello, World"), "Uryyb, Jbeyq");
    EXPECT_EQ(stringByRotating13(stringByRotating13("Grüße")), "Grüße");
    EXPECT_EQ(stringByRotating("abc", -1), "zab");
}

TEST(CountLT, EqualAndNonZero)
{
    qsizetype lt = -1, gt = -1;
    EXPECT_TRUE(countLT(u"<a><b>", &lt, &gt));
    EXPECT_EQ(lt, 2);
    EXPECT_EQ(gt, 2);
    EXPECT_FALSE(countLT(u"", &lt, &gt));
    EXPECT_EQ(lt, 0);
    EXPECT_EQ(gt, 0);
    EXPECT_FALSE(countLT(u"a<b", nullptr, nullptr));
}

TEST(Trimming, QuotesWhiteSpaceAndDigits)
{
    EXPECT_EQ(stringByTrimmingQuotes("\"'quoted'\""), "quoted");
    EXPECT_EQ(stringByTrimmingQuotes("'\"'"), "");
    EXPECT_EQ(stringByTrimmingQuotes("it's"), "it's");
    const QString bare = "bare";
    EXPECT_TRUE(stringByTrimmingQuotes(bare).isSharedWith(bare));
    EXPECT_EQ(stringByTrimmingWhiteSpaces(QString::fromUtf16(u"\uFEFF\u00A0 text\u0003\n")), "text");
    EXPECT_EQ(stringByTrimmingSpaces(" text\n "), "text\n");
    EXPECT_EQ(stringByRemovingDigits("r2d2 c3po"), "rd cpo");
    EXPECT_EQ(stringByReplacingCharacter("a-b-c", u'-', u'/'), "a/b/c");
    EXPECT_EQ(stringByReplacingString("Mrz 2010 Mrz", u"Mrz", u"Mar"), "Mar 2010 Mar");
}

TEST(Access, CountsFindsAndLines)
{
    EXPECT_EQ(countCharacter(u"15.03.2010", u'.'), 2);
    EXPECT_EQ(findOneOf(u"Created 15.03 (draft)", u";[]{}()"), 14);
    EXPECT_EQ(findOneOf(u"plain", u";[]"), NotFound);
    EXPECT_EQ(lastCharacter(u"abc"), u'c');
    EXPECT_EQ(firstCharacter(u""), 0);
    EXPECT_EQ(lines("one\r\ntwo\n\nthree\n"), (QStringList { "one", "two", "", "three" }));
    EXPECT_EQ(numberOfLines(u"one\r\ntwo\n\nthree\n"), 4);
    EXPECT_EQ(lineAtIndex("one\r\ntwo\n\nthree", 2), "");
    EXPECT_FALSE(lineAtIndex("one\r\ntwo\n\nthree", 2).isNull());
    EXPECT_TRUE(lineAtIndex("one", 1).isNull());
    EXPECT_EQ(wordAtIndex("Pi is 3.14", 2), "3.14");
    EXPECT_TRUE(wordAtIndex("Pi is 3.14", 3).isNull());
}

} // namespace
