// Percent escaping and unescaping: both dialects on every ASCII unit, the encoding-aware forms.
#include "url/URLStrings.h"

#include "testlib/TestSupport.h"

#include <QStringDecoder>
#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

QString hex2(int v) { return u"%"_s + QString::number(v, 16).rightJustified(2, u'0'); }

TEST(PercentEscaping, StandardDialectEscapesExactlyTwelveUnitsInLowerCaseHex)
{
    const QString twelve = u" #$%&+/:;=?@"_s;
    for (int c = 0; c < 128; ++c) {
        const QString unit { QChar(char16_t(c)) };
        const QString expected = twelve.contains(unit) ? hex2(c) : unit;
        EXPECT_EQ(stringByAddingStandardPercentEscapesToURL(unit), expected) << c;
    }
    EXPECT_EQ(stringByAddingStandardPercentEscapesToURL(u"ä€"_s), u"ä€"_s);
}

TEST(PercentEscaping, AsciiDialectEscapesEveryAsciiUnitButLettersAndDigits)
{
    for (int c = 0; c < 128; ++c) {
        const QString unit { QChar(char16_t(c)) };
        const bool alnum = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        EXPECT_EQ(stringByAddingASCIIPercentEscapesToURL(unit), alnum ? unit : hex2(c)) << c;
    }
    EXPECT_EQ(stringByAddingASCIIPercentEscapesToURL(u"ä-1"_s), u"ä%2d1"_s);
    // Units beyond ASCII, lone surrogates included, are copied as they are.
    const QString lone = QString(QChar(char16_t(0xD800))) + u"x"_s;
    EXPECT_EQ(stringByAddingASCIIPercentEscapesToURL(lone), lone);
}

TEST(PercentUnescaping, StandardDialectDecodesOnlyItsSetOnEveryAsciiValue)
{
    const QList<int> decoded
        = { '\t', '\n', '\r', ' ', '$', '%', '&', '\'', '+', '/', ':', ';', '=', '@', '~', '?' };
    for (int v = 0; v < 256; ++v) {
        for (const QString &digits : { QString::number(v, 16).rightJustified(2, u'0'),
                 QString::number(v, 16).rightJustified(2, u'0').toUpper() }) {
            const QString escaped = u"x%"_s + digits;
            const QString expected = decoded.contains(v) ? u"x"_s + QChar(char16_t(v)) : escaped;
            EXPECT_EQ(stringByReplacingStandardPercentEscapesOfURL(escaped), expected) << v;
        }
    }
}

TEST(PercentUnescaping, AsciiDialectDecodesEveryValueBelow128)
{
    for (int v = 0; v < 256; ++v) {
        const QString escaped = u"x"_s + hex2(v);
        const QString expected = v < 128 ? u"x"_s + QChar(char16_t(v)) : escaped;
        EXPECT_EQ(stringByReplacingASCIIPercentEscapesOfURL(escaped), expected) << v;
    }
}

TEST(PercentUnescaping, StandardDialectRules)
{
    const std::pair<const char16_t *, const char16_t *> cases[] = { { u"a%2Fb%23c", u"a/b%23c" }, // "#" stays
        { u"p?x%3Fy", u"p?x%3Fy" }, // a literal "?" keeps "%3F"
        { u"ab%2", u"ab%2" }, { u"ab%", u"ab%" }, { u"%", u"%" }, { u"%zz%20", u"%zz " }, { u"%%20", u"% " },
        { u"%C3%A4", u"%C3%A4" } };
    for (const auto &[in, out] : cases)
        EXPECT_EQ(
            stringByReplacingStandardPercentEscapesOfURL(QString::fromUtf16(in)), QString::fromUtf16(out))
            << QString::fromUtf16(in);
}

TEST(PercentUnescaping, IsNotIdempotentBecauseTheOutputIsNotScannedAgain)
{
    const QString once = stringByReplacingStandardPercentEscapesOfURL(u"a%2520b"_s);
    EXPECT_EQ(once, u"a%20b"_s);
    EXPECT_EQ(stringByReplacingStandardPercentEscapesOfURL(once), u"a b"_s);
    EXPECT_EQ(stringByReplacingASCIIPercentEscapesOfURL(u"%2541"_s), u"%41"_s);
    EXPECT_EQ(stringByReplacingASCIIPercentEscapesOfURL(u"%41"_s), u"A"_s);
}

TEST(PercentUnescaping, RawArrayInPlaceAnswersTheNewLength)
{
    char16_t units[] = u"a%20b%2";
    const qsizetype n = convertPercentEscapesOfURL(units, 7, true);
    EXPECT_EQ(QStringView(units, n), u"a b%2");
    char16_t two[] = u"%2";
    EXPECT_EQ(convertPercentEscapesOfURL(two, 2, false), 2);
    EXPECT_EQ(convertPercentEscapesOfURL(nullptr, 5, false), 5);
}

TEST(EncodedEscaping, Utf8EscapesWhatAnAddressCannotCarryInUpperCase)
{
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"http://h/ä ö?q=\"x\"#f"_s, "UTF-8"),
        u"http://h/%C3%A4%20%C3%B6?q=%22x%22#f"_s);
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"a{b}|c"_s, "UTF-8"), u"a%7Bb%7D%7Cc"_s);
    // A surrogate pair is one character: four bytes.
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"😀"_s, "UTF-8"), u"%F0%9F%98%80"_s);
    // What to leave unescaped and what to escape besides.
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"a b"_s, "UTF-8", u" "), u"a b"_s);
    // Without a list of its own the three-list form escapes ":?&;@".
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"a:b?c&d;e@f"_s, "UTF-8", QStringView(), QStringView()),
        u"a%3Ab%3Fc%26d%3Be%40f"_s);
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"a:b/c"_s, "UTF-8", u":", u":/"), u"a:b%2Fc"_s);
}

TEST(EncodedEscaping, OtherEncodingsThroughQtsEncoders)
{
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"é"_s, "ISO-8859-1"), u"%E9"_s);
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"€"_s, "windows-1252"), u"%80"_s);
    EXPECT_TRUE(stringByAddingPercentEscapesToURL(u"é"_s, "no-such-encoding").isNull());
    // A lone surrogate has no bytes in any encoding.
    EXPECT_TRUE(stringByAddingPercentEscapesToURL(QString(QChar(char16_t(0xDC00))), "UTF-8").isNull());
    if (!QStringDecoder("Shift_JIS").isValid())
        GTEST_SKIP() << "this Qt has no Shift_JIS codec";
    EXPECT_EQ(stringByAddingPercentEscapesToURL(u"日本"_s, "Shift_JIS"), u"%93%FA%96%7B"_s);
    EXPECT_EQ(stringByReplacingPercentEscapesOfURL(u"%93%FA%96%7B"_s, "Shift_JIS"), u"日本"_s);
}

TEST(EncodedUnescaping, ReplacesEveryEscapeOrAnswersNil)
{
    EXPECT_EQ(stringByReplacingPercentEscapesOfURL(u"a%20b%23c%3F%C3%A4"_s), u"a b#c?ä"_s);
    EXPECT_EQ(stringByReplacingPercentEscapesOfURL(u"%E9t%E9"_s, "ISO-8859-1"), u"été"_s);
    EXPECT_TRUE(stringByReplacingPercentEscapesOfURL(u"%C3"_s).isNull()); // truncated UTF-8
    EXPECT_TRUE(stringByReplacingPercentEscapesOfURL(u"100%"_s).isNull());
    EXPECT_EQ(stringByReplacingPercentEscapesOfURL(u"none"_s), u"none"_s);
}

TEST(EncodedEscaping, RoundTripsEveryUnitOfAMixedText)
{
    const QString text = u"Grüße/Straße ½ 東京 #1 ~ 100%"_s;
    const QString escaped = stringByAddingPercentEscapesToURL(text, "UTF-8", QStringView(), u"%");
    EXPECT_EQ(stringByReplacingPercentEscapesOfURL(escaped), text);
}

} // namespace
