// The query scanner: terminators, the case rule, empty values, its four uses and replacing a value.
#include "url/URL.h"
#include "url/URLStrings.h"

#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

TEST(QueryParams, ValueRunsToAmpersandSemicolonOrEnd)
{
    const QString url = u"http://h/p?a=1&b=2;c=3"_s;
    EXPECT_EQ(queryParamNamed(url, u"a"), u"1"_s);
    EXPECT_EQ(queryParamNamed(url, u"b"), u"2"_s);
    EXPECT_EQ(queryParamNamed(url, u"c"), u"3"_s);
    // "?" and "#" are no terminators.
    EXPECT_EQ(queryParamNamed(u"http://h/?a=1?b=2#x"_s, u"a"), u"1?b=2#x"_s);
}

TEST(QueryParams, KeysAreCaseSensitiveAndCompareWhole)
{
    const QString url = u"http://h/p?Bb=1&b=2&ab=3"_s;
    EXPECT_TRUE(queryParamNamed(url, u"B").isNull());
    EXPECT_EQ(queryParamNamed(url, u"Bb"), u"1"_s);
    EXPECT_EQ(queryParamNamed(url, u"b"), u"2"_s);
    EXPECT_TRUE(queryParamNamed(url, u"bb").isNull());
}

TEST(QueryParams, EmptyValueIsPresentButNoValue)
{
    const QString url = u"http://h/p?b=&c=3"_s;
    EXPECT_TRUE(queryParamNamed(url, u"b").isNull());
    EXPECT_TRUE(containsQueryParamNamed(url, u"b"));
    EXPECT_FALSE(containsQueryParamNamed(url, u"d"));
    // A later non-empty value of the same key is found.
    EXPECT_EQ(queryParamNamed(u"?b=&b=2"_s, u"b"), u"2"_s);
}

TEST(QueryParams, KeysStartAtTheFirstAlphanumericUnit)
{
    // Leading punctuation is skipped; a key runs to "=" whatever it holds.
    EXPECT_EQ(queryParamNamed(u"?&&--x=1"_s, u"x"), u"1"_s);
    EXPECT_EQ(queryParamNamed(u"?ü=ja"_s, u"ü"), u"ja"_s);
    EXPECT_EQ(queryParamNamed(u"?a&b=1"_s, u"a&b"), u"1"_s);
    // A key runs over "&" to the next "="; a key without "=" ends the scan.
    EXPECT_TRUE(queryParamNamed(u"?flag&x=1"_s, u"x").isNull());
    EXPECT_EQ(queryParamNamed(u"?flag&x=1"_s, u"flag&x"), u"1"_s);
    EXPECT_TRUE(queryParamNamed(u"?x=1&flag"_s, u"flag").isNull());
}

TEST(QueryParams, NoQuestionMarkOrTooLongNameIsNotFound)
{
    EXPECT_TRUE(queryParamNamed(u"http://h/a=1"_s, u"a").isNull());
    EXPECT_FALSE(containsQueryParamNamed(u"http://h/a=1"_s, u"a"));
    EXPECT_EQ(numberOfQueryParams(u"a=1"_s), 0);
    EXPECT_TRUE(queryParamNamed(u"?ab="_s, u"").isNull());
    // The scanned text is "?ab=": a name of 4 units or more is never found.
    EXPECT_FALSE(containsQueryParamNamed(u"?abc="_s, u"abcd="));
    EXPECT_TRUE(containsQueryParamNamed(u"?abc="_s, u"abc"));
}

TEST(QueryParams, AllPairsAndTheirCount)
{
    const QString url = u"http://h/?a=1&b=&c=3;a=4&=5"_s;
    const QHash<QString, QString> params = queryParams(url);
    EXPECT_EQ(params.size(), 2);
    EXPECT_EQ(params.value(u"a"_s), u"4"_s);
    EXPECT_EQ(params.value(u"c"_s), u"3"_s);
    // "&=5": the "5" starts a key that has no "=", so the scan ends there.
    EXPECT_EQ(numberOfQueryParams(url), 4);
    EXPECT_TRUE(queryParams(u"http://h/"_s).isEmpty());
}

TEST(QueryParams, ReplacingAValue)
{
    const QString url = QString::fromLatin1("http://h/?a=1&b=22&c=3");
    EXPECT_EQ(stringByReplacingQueryParamNamed(url, u"b", u"x"_s), u"http://h/?a=1&b=x&c=3"_s);
    EXPECT_EQ(stringByReplacingQueryParamNamed(url, u"b", QString()), u"http://h/?a=1&b=&c=3"_s);
    EXPECT_TRUE(stringByReplacingQueryParamNamed(url, u"z", u"x"_s).isSharedWith(url));
}

TEST(QueryParams, URLFormsScanTheQueryFromItsStart)
{
    const URL url(QUrl(u"http://h/p?a=1&b=%20x&c="_s));
    EXPECT_EQ(url.queryParamNamed(u"a"), u"1"_s);
    EXPECT_EQ(url.queryParamNamed(u"b"), u"%20x"_s);
    EXPECT_TRUE(url.containsQueryParamNamed(u"c"));
    EXPECT_EQ(url.numberOfQueryParams(), 3);
    EXPECT_EQ(url.queryParams().size(), 2);
    EXPECT_TRUE(URL(QUrl(u"http://h/"_s)).queryParamNamed(u"a").isNull());
}

TEST(QueryParams, RawArraysScanFromZero)
{
    const char16_t units[] = u"a=1&bb=2";
    EXPECT_EQ(queryParamNamed(units, 8, u"bb", 2), u"2"_s);
    EXPECT_TRUE(queryParamNamed(units, 8, nullptr, 0).isNull());
    EXPECT_EQ(numberOfQueryParams(units, 8), 2);
}

TEST(QueryParams, MegabyteQueryIsScannedOnce)
{
    QString url = u"http://h/?"_s;
    for (int i = 0; i < 50000; ++i)
        url += u"k"_s + QString::number(i) + u"=v&"_s;
    url += u"last=1"_s;
    EXPECT_EQ(queryParamNamed(url, u"last"), u"1"_s);
    EXPECT_EQ(numberOfQueryParams(url), 50001);
    EXPECT_EQ(queryParams(url).size(), 50001);
    EXPECT_TRUE(queryParamNamed(QString(1 << 20, u'='), u"a").isNull());
}

} // namespace
