// The query scanner: terminators, the case rule, empty values, its four uses and replacing a value.
#include "url/URL.h"
#include "url/URLStrings.h"

#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

TEST(QueryParams, ValuesKeysAndWhatIsFound)
{
    const struct
    {
        const char16_t *url, *name, *value; // null value: none
        bool present;
    } cases[] = {
        // A value runs to "&", ";" or the end; "?" and "#" end nothing.
        { u"http://h/p?a=1&b=2;c=3", u"b", u"2", true },
        { u"http://h/p?a=1&b=2;c=3", u"c", u"3", true },
        { u"http://h/?a=1?b=2#x", u"a", u"1?b=2#x", true },
        // Keys compare whole and with case.
        { u"http://h/p?Bb=1&b=2&ab=3", u"B", nullptr, false },
        { u"http://h/p?Bb=1&b=2&ab=3", u"b", u"2", true },
        { u"http://h/p?Bb=1&b=2&ab=3", u"bb", nullptr, false },
        // An empty value is present but no value; a later non-empty value of the key is found.
        { u"http://h/p?b=&c=3", u"b", nullptr, true },
        { u"?b=&b=2", u"b", u"2", true },
        // A key starts at the first alphanumeric unit and runs to "=", over "&" too; one without "=" ends the
        // scan.
        { u"?&&--x=1", u"x", u"1", true },
        { u"?ü=ja", u"ü", u"ja", true },
        { u"?flag&x=1", u"x", nullptr, false },
        { u"?flag&x=1", u"flag&x", u"1", true },
        { u"?x=1&flag", u"flag", nullptr, false },
        // No "?"; a name of as many units as the scanned text "?abc=" is never found.
        { u"http://h/a=1", u"a", nullptr, false },
        { u"?abc=", u"abcd=", nullptr, false },
        { u"?abc=", u"abc", nullptr, true },
    };
    for (const auto &c : cases) {
        const QString url = QString::fromUtf16(c.url);
        const QStringView name(c.name);
        EXPECT_EQ(queryParamNamed(url, name), c.value ? QString::fromUtf16(c.value) : QString())
            << url << name.toString();
        EXPECT_EQ(containsQueryParamNamed(url, name), c.present) << url << name.toString();
    }
    EXPECT_EQ(numberOfQueryParams(u"a=1"_s), 0);
    EXPECT_TRUE(queryParamNamed(u"?ab="_s, u"").isNull());
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
}

TEST(QueryParams, URLFormsScanTheQueryFromItsStart)
{
    const URL url(QUrl(u"http://h/p?a=1&b=%20x&c="_s));
    EXPECT_EQ(url.queryParamNamed(u"a"), u"1"_s);
    EXPECT_EQ(url.queryParamNamed(u"b"), u"%20x"_s);
    EXPECT_TRUE(url.containsQueryParamNamed(u"c"));
    EXPECT_EQ(url.numberOfQueryParams(), 3);
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
