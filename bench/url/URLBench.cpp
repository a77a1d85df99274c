// The URL toolkit beside the nearest Qt facility doing the same (or more) work, in the same run, on
// 100,000 generated addresses of the kinds a link harvester meets.
#include "url/URLStrings.h"
#include "url/URLTables_p.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStringList>
#include <QUrl>
#include <QUrlQuery>
#include <benchmark/benchmark.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

template <typename T> const T &pick(QRandomGenerator &rng, const QList<T> &list)
{
    return list.at(int(rng.bounded(qsizetype(list.size()))));
}

QString token(QRandomGenerator &rng, int length)
{
    static const char alphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789ABCDEF";
    QString s;
    for (int i = 0; i < length; ++i)
        s += QLatin1Char(alphabet[rng.bounded(int(sizeof alphabet - 1))]);
    return s;
}

// A page address: host, path (index pages, scripts, forum threads, doubled slashes, dot segments),
// a query with ordinary, session and tracking parameters, sometimes empty ones, and an anchor.
QString pageAddress(QRandomGenerator &rng)
{
    static const QStringList schemes = { u"http://"_s, u"https://"_s, u"https://www."_s, u"HTTP://WWW."_s };
    static const QStringList hosts = { u"news.example.com"_s, u"shop-example.de"_s, u"forum.example.org"_s,
        u"blog.example.net"_s, u"example.co.uk"_s, u"docs.example.io"_s, u"city-example.fr"_s };
    static const QStringList paths = { u"/2026/11/23/story-%1.html"_s, u"/products/item.php"_s,
        u"/forum/viewtopic.php"_s, u"/dir/%1/index.html"_s, u"/a//b/./c/%1/"_s, u"/search.aspx"_s,
        u"/catalog/%1/index.php"_s, u"/wiki/Article_%1"_s, u"/en/docs/../guide/%1"_s, u"/"_s };
    static const QStringList params = { u"id=%1"_s, u"page=%1"_s, u"t=%1&p=%1"_s, u"q=term+%1"_s,
        u"lang=en"_s, u"sort=date"_s, u"ref=home"_s, u"PHPSESSID=%2"_s, u"jsessionid=%2"_s, u"sid=%2"_s,
        u"sessionid=%2"_s, u"utm_source=newsletter"_s, u"utm_medium=email&utm_campaign=nov%1"_s,
        u"utm_term=shoes"_s, u"empty="_s, u"highlight=word"_s, u"cache=1"_s };
    static const QStringList anchors
        = { u""_s, u""_s, u"#top"_s, u"#comments"_s, u"#!/route/%1"_s, u"#section-2"_s };
    auto filled = [&rng](QString s) {
        return s.replace(u"%1"_s, QString::number(rng.bounded(100000))).replace(u"%2"_s, token(rng, 16));
    };
    QString url = pick(rng, schemes) + pick(rng, hosts) + filled(pick(rng, paths));
    const int count = int(rng.bounded(5));
    for (int i = 0; i < count; ++i) {
        url += i == 0 ? u'?' : u'&';
        url += filled(pick(rng, params));
    }
    return url + filled(pick(rng, anchors));
}

// Every fifth address is a link as found on a result page: a redirector wrapping a page address, or
// an advertisement.
QString harvestedLink(QRandomGenerator &rng)
{
    const QString page = pageAddress(rng);
    switch (rng.bounded(10)) {
    case 0:
        return u"https://www.google.com/url?q="_s + QString::fromLatin1(QUrl::toPercentEncoding(page))
            + u"&sa=U&ved=2ahUKEwi"_s + token(rng, 12);
    case 1:
        return u"https://r.search.yahoo.com/_ylt="_s + token(rng, 20) + u"/RV=2/RE=1/RO=10/RU="_s
            + QString::fromLatin1(QUrl::toPercentEncoding(page)) + u"/RK=2/RS="_s + token(rng, 24);
    case 2:
        return u"https://googleads.g.doubleclick.net/pagead/ads?client=ca-pub-"_s + token(rng, 16)
            + u"&output=html"_s;
    case 3:
        return u"http://cdn.example.com/ads/banner_"_s + token(rng, 6) + u".gif"_s;
    default:
        return page;
    }
}

const QStringList &addresses()
{
    static const QStringList list = [] {
        QRandomGenerator rng(2026);
        QStringList l;
        l.reserve(100000);
        for (int i = 0; i < 100000; ++i)
            l << (i % 5 == 0 ? harvestedLink(rng) : pageAddress(rng));
        return l;
    }();
    return list;
}

const QStringList &escapedAddresses()
{
    static const QStringList list = [] {
        QStringList l;
        l.reserve(addresses().size());
        for (const QString &s : addresses())
            l << stringByAddingStandardPercentEscapesToURL(s);
        return l;
    }();
    return list;
}

void setCounters(benchmark::State &state, qsizetype items)
{
    state.SetItemsProcessed(state.iterations() * items);
}

// ---- Canonical key ----

void Simplify_Orvel(benchmark::State &state)
{
    const QStringList &urls = addresses();
    for (auto _ : state)
        for (const QString &url : urls)
            benchmark::DoNotOptimize(simplifiedStringURL(url));
    setCounters(state, urls.size());
}

void Simplify_Qt(benchmark::State &state)
{
    static const QStringList keys = { u"PHPSESSID"_s, u"jsessionid"_s, u"sid"_s, u"sessionid"_s,
        u"utm_source"_s, u"utm_medium"_s, u"utm_campaign"_s, u"utm_term"_s, u"utm_content"_s };
    const QStringList &urls = addresses();
    for (auto _ : state)
        for (const QString &text : urls) {
            QUrl url = QUrl(text).adjusted(
                QUrl::NormalizePathSegments | QUrl::StripTrailingSlash | QUrl::RemoveFragment);
            if (url.hasQuery()) {
                QUrlQuery query(url);
                for (const QString &key : keys)
                    query.removeAllQueryItems(key);
                url.setQuery(query);
            }
            benchmark::DoNotOptimize(url.toString());
        }
    setCounters(state, urls.size());
}

// ---- One query parameter ----

void QueryParam_Orvel(benchmark::State &state)
{
    const QStringList &urls = addresses();
    for (auto _ : state)
        for (const QString &url : urls)
            benchmark::DoNotOptimize(queryParamNamed(url, u"id"));
    setCounters(state, urls.size());
}

void QueryParam_Qt(benchmark::State &state)
{
    const QStringList &urls = addresses();
    const QString id = u"id"_s;
    for (auto _ : state)
        for (const QString &url : urls) {
            const qsizetype q = url.indexOf(u'?');
            if (q < 0)
                continue;
            const QUrlQuery query(url.sliced(q + 1));
            benchmark::DoNotOptimize(query.queryItemValue(id));
        }
    setCounters(state, urls.size());
}

// ---- Escaping and unescaping ----

void Escape_Orvel(benchmark::State &state)
{
    const QStringList &urls = addresses();
    for (auto _ : state)
        for (const QString &url : urls)
            benchmark::DoNotOptimize(stringByAddingStandardPercentEscapesToURL(url));
    setCounters(state, urls.size());
}

void Escape_Qt(benchmark::State &state)
{
    const QStringList &urls = addresses();
    for (auto _ : state)
        for (const QString &url : urls)
            benchmark::DoNotOptimize(QUrl::toPercentEncoding(url));
    setCounters(state, urls.size());
}

// Unescaping the addresses as harvested (a fifth of them carry escaped targets), and every address
// fully escaped first (dense: about one unit in four starts an escape).

void unescapeOrvel(benchmark::State &state, const QStringList &urls)
{
    for (auto _ : state)
        for (const QString &url : urls)
            benchmark::DoNotOptimize(stringByReplacingStandardPercentEscapesOfURL(url));
    setCounters(state, urls.size());
}

void unescapeQt(benchmark::State &state, const QStringList &urls)
{
    // Qt's decoder reads bytes: the conversion is made once, outside the loop, in its favour.
    QList<QByteArray> bytes;
    for (const QString &url : urls)
        bytes << url.toUtf8();
    for (auto _ : state)
        for (const QByteArray &url : bytes)
            benchmark::DoNotOptimize(QUrl::fromPercentEncoding(url));
    setCounters(state, bytes.size());
}

void Unescape_Orvel(benchmark::State &state) { unescapeOrvel(state, addresses()); }
void Unescape_Qt(benchmark::State &state) { unescapeQt(state, addresses()); }
void UnescapeDense_Orvel(benchmark::State &state) { unescapeOrvel(state, escapedAddresses()); }
void UnescapeDense_Qt(benchmark::State &state) { unescapeQt(state, escapedAddresses()); }

// ---- Advertisement test ----

void Advertisement_Orvel(benchmark::State &state)
{
    const QStringList &urls = addresses();
    qsizetype ads = 0;
    for (auto _ : state)
        for (const QString &url : urls)
            ads += stringURLIsAdvertisement(url);
    setCounters(state, urls.size());
    state.counters["ads"] = double(ads) / double(state.iterations());
}

// The same tables as one case-insensitive alternation, plus the "ads."/"adserver" word rule.
QRegularExpression advertisementExpression()
{
    QStringList alternatives;
    for (const url_p::PatternTable *table : { &url_p::adSensePatterns(), &url_p::imageAdPatterns(),
             &url_p::ads1Patterns(), &url_p::ads2Patterns() })
        for (const char *entry : table->entries())
            alternatives << QRegularExpression::escape(QString::fromLatin1(entry));
    alternatives << u"(?:^|[^eop])(?:ads\\.|adserver)"_s;
    QRegularExpression re(alternatives.join(u'|'), QRegularExpression::CaseInsensitiveOption);
    re.optimize();
    return re;
}

void Advertisement_Qt(benchmark::State &state)
{
    const QRegularExpression re = advertisementExpression();
    const QStringList &urls = addresses();
    qsizetype ads = 0;
    for (auto _ : state)
        for (const QString &url : urls)
            ads += re.match(url).hasMatch();
    setCounters(state, urls.size());
    state.counters["ads"] = double(ads) / double(state.iterations());
}

// ---- Growth with the address's length ----

QString longAddress(qsizetype units)
{
    QRandomGenerator rng(5);
    QString url = u"https://www.example.com/a//b/./c/index.html?"_s;
    while (url.size() < units)
        url += u"k"_s + QString::number(rng.bounded(1000)) + u"=v%20"_s + token(rng, 6) + u'&';
    return url + u"sid=abc&utm_source=x#top"_s;
}

void SimplifyLength_Orvel(benchmark::State &state)
{
    const QString url = longAddress(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(simplifiedStringURL(url));
    state.SetComplexityN(state.range(0));
}

void QueryParamLength_Orvel(benchmark::State &state)
{
    const QString url = longAddress(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(queryParamNamed(url, u"sid"));
    state.SetComplexityN(state.range(0));
}

void AdvertisementLength_Orvel(benchmark::State &state)
{
    const QString url = longAddress(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(stringURLIsAdvertisementIncludingCommonHosts(url, true));
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(Simplify_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(Simplify_Qt)->Unit(benchmark::kMillisecond);
BENCHMARK(QueryParam_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(QueryParam_Qt)->Unit(benchmark::kMillisecond);
BENCHMARK(Escape_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(Escape_Qt)->Unit(benchmark::kMillisecond);
BENCHMARK(Unescape_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(Unescape_Qt)->Unit(benchmark::kMillisecond);
BENCHMARK(UnescapeDense_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(UnescapeDense_Qt)->Unit(benchmark::kMillisecond);
BENCHMARK(Advertisement_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(Advertisement_Qt)->Unit(benchmark::kMillisecond);
BENCHMARK(SimplifyLength_Orvel)->RangeMultiplier(8)->Range(64, 1 << 18)->Complexity(benchmark::oN);
BENCHMARK(QueryParamLength_Orvel)->RangeMultiplier(8)->Range(64, 1 << 18)->Complexity(benchmark::oN);
BENCHMARK(AdvertisementLength_Orvel)->RangeMultiplier(8)->Range(64, 1 << 18)->Complexity(benchmark::oN);

BENCHMARK_MAIN();
