// The string toolkit beside the nearest Qt facility doing the same work, in the same run.
#include "strings/DateParsing.h"
#include "strings/FastCompare.h"
#include "strings/Separation.h"
#include "strings/Wildcard.h"

#include <QDateTime>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStringList>
#include <benchmark/benchmark.h>

using namespace orvel;

namespace {

// A reproducible text of mixed-case European words, numbers and punctuation.
QString makeText(qsizetype units)
{
    static const QStringList words = { "Grüße", "report", "Straße", "MÜLLER", "café", "Thumbnail", "3.14",
        "well-known", "Ærø", "naïve", "PDF", "1,000", "über", "Été", "quick", "BROWN", "fox", "jumps" };
    static const QStringList glue = { " ", ", ", ". ", "; ", " (", ") ", "\n", " - " };
    QRandomGenerator rng(42);
    QString text;
    text.reserve(units + 32);
    while (text.size() < units) {
        text += words.at(int(rng.bounded(qsizetype(words.size()))));
        text += glue.at(int(rng.bounded(qsizetype(glue.size()))));
    }
    text.truncate(units);
    return text;
}

// The same text with the case of every ASCII letter swapped: equal case-insensitively, same length,
// its own buffer.
QString swappedCase(const QString &text)
{
    QString out = text;
    for (QChar &c : out)
        if (c.unicode() < 128 && c.isLetter())
            c = c.isUpper() ? c.toLower() : c.toUpper();
    return out;
}

QStringList makeFileNames(int count)
{
    QRandomGenerator rng(7);
    static const QStringList stems
        = { "img_", "IMG_", "report", "Report-final", "scan", "holiday photo ", "Übersicht" };
    static const QStringList extensions = { ".jpg", ".JPG", ".png", ".txt", ".pdf", ".jpeg", ".TXT" };
    QStringList names;
    for (int i = 0; i < count; ++i)
        names << stems.at(int(rng.bounded(qsizetype(stems.size())))) + QString::number(rng.bounded(10000))
                + extensions.at(int(rng.bounded(qsizetype(extensions.size()))));
    return names;
}

// Case-insensitive comparison of equal texts written in different cases (the whole length is read).

void CompareNoCase_Orvel(benchmark::State &state)
{
    const QString a = makeText(state.range(0));
    const QString b = swappedCase(a);
    for (auto _ : state)
        benchmark::DoNotOptimize(fastCaseInsensitiveCompareUnichars(
            QStringView(a).utf16(), a.size(), QStringView(b).utf16(), b.size()));
}

void CompareNoCase_Qt(benchmark::State &state)
{
    const QString a = makeText(state.range(0));
    const QString b = swappedCase(a);
    for (auto _ : state)
        benchmark::DoNotOptimize(a.compare(b, Qt::CaseInsensitive));
}

// Case-insensitive search for a needle placed at the end of a long text.

void SearchNoCase_Orvel(benchmark::State &state)
{
    const QString hay = makeText(state.range(0)) + "THUMBNAIL-Cache";
    const QString needle = "thumbnail-cache";
    for (auto _ : state)
        benchmark::DoNotOptimize(fastCaseInsensitiveContainsUnichars(
            QStringView(hay).utf16(), hay.size(), QStringView(needle).utf16(), needle.size()));
}

void SearchNoCase_Qt(benchmark::State &state)
{
    const QString hay = makeText(state.range(0)) + "THUMBNAIL-Cache";
    const QString needle = "thumbnail-cache";
    for (auto _ : state)
        benchmark::DoNotOptimize(hay.indexOf(needle, 0, Qt::CaseInsensitive));
}

// Wildcard matching of 1,000 file names; Qt's expression is compiled once, outside the loop.

const char16_t PlainPattern[] = u"*REPORT*.txt";
const char16_t UnixPattern[] = u"img_[0-9][0-9]*.JP*G";

void WildcardPlainNoCase_Orvel(benchmark::State &state)
{
    const QStringList names = makeFileNames(1000);
    for (auto _ : state) {
        int hits = 0;
        for (const QString &n : names)
            hits += isCaseInsensitiveLikeWildcard(n, PlainPattern);
        benchmark::DoNotOptimize(hits);
    }
}

void WildcardPlainNoCase_Qt(benchmark::State &state)
{
    const QStringList names = makeFileNames(1000);
    const QRegularExpression re(
        QRegularExpression::wildcardToRegularExpression(
            QString::fromUtf16(PlainPattern), QRegularExpression::DefaultWildcardConversion),
        QRegularExpression::CaseInsensitiveOption);
    re.optimize();
    for (auto _ : state) {
        int hits = 0;
        for (const QString &n : names)
            hits += re.match(n).hasMatch();
        benchmark::DoNotOptimize(hits);
    }
}

void WildcardUnixNoCase_Orvel(benchmark::State &state)
{
    const QStringList names = makeFileNames(1000);
    for (auto _ : state) {
        int hits = 0;
        for (const QString &n : names)
            hits += isCaseInsensitiveLikeUnixWildcard(n, UnixPattern);
        benchmark::DoNotOptimize(hits);
    }
}

void WildcardUnixNoCase_Qt(benchmark::State &state)
{
    const QStringList names = makeFileNames(1000);
    const QRegularExpression re = QRegularExpression::fromWildcard(
        QString::fromUtf16(UnixPattern), Qt::CaseInsensitive, QRegularExpression::DefaultWildcardConversion);
    re.optimize();
    for (auto _ : state) {
        int hits = 0;
        for (const QString &n : names)
            hits += re.match(n).hasMatch();
        benchmark::DoNotOptimize(hits);
    }
}

// Word separation of a large text into a list of strings.

void WordSeparation_Orvel(benchmark::State &state)
{
    const QString text = makeText(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(wordsUsingDefaultSeparation(text));
}

void WordSeparation_Qt(benchmark::State &state)
{
    const QString text = makeText(state.range(0));
    // Separators: anything that is not a letter, mark or number (so '3.14' splits here, which only
    // makes Qt's work smaller).
    const QRegularExpression re(QStringLiteral("[^\\p{L}\\p{M}\\p{N}]+"));
    re.optimize();
    for (auto _ : state)
        benchmark::DoNotOptimize(text.split(re, Qt::SkipEmptyParts));
}

// date() on a mix of formats, beside QDateTime::fromString trying the same formats in turn.

const QStringList &dateMix()
{
    static const QStringList mix = { "20100315", "15.03.2010", "2010.03.15", "15.03.2010 10:20:30",
        "2010-03-15", "15-03-2010", "2010/03/15", "2010-03-15T10:20:30+01:00",
        "Mon, 15 Mar 2010 10:20:30 GMT", "15.03.2010 10:20" };
    return mix;
}

void Dates_Orvel(benchmark::State &state)
{
    for (auto _ : state)
        for (const QString &s : dateMix())
            benchmark::DoNotOptimize(date(s));
}

void Dates_Qt(benchmark::State &state)
{
    static const QStringList formats
        = { "yyyyMMdd", "dd.MM.yyyy", "yyyy.MM.dd", "dd.MM.yyyy HH:mm:ss", "yyyy-MM-dd", "dd-MM-yyyy",
              "yyyy/MM/dd", "yyyy-MM-ddTHH:mm:sst", "ddd, dd MMM yyyy HH:mm:ss t", "dd.MM.yyyy HH:mm" };
    for (auto _ : state)
        for (const QString &s : dateMix())
            for (const QString &f : formats) {
                const QDateTime d = QDateTime::fromString(s, f);
                if (d.isValid()) {
                    benchmark::DoNotOptimize(d);
                    break;
                }
            }
}

void Sanity(benchmark::State &state)
{
    // Both sides of each pair must answer alike on the benchmark data, or the comparison means nothing.
    const QStringList names = makeFileNames(1000);
    const QRegularExpression plain(
        QRegularExpression::wildcardToRegularExpression(
            QString::fromUtf16(PlainPattern), QRegularExpression::DefaultWildcardConversion),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpression unixRe = QRegularExpression::fromWildcard(
        QString::fromUtf16(UnixPattern), Qt::CaseInsensitive, QRegularExpression::DefaultWildcardConversion);
    int a = 0, b = 0, c = 0, d = 0;
    for (const QString &n : names) {
        a += isCaseInsensitiveLikeWildcard(n, PlainPattern);
        b += plain.match(n).hasMatch();
        c += isCaseInsensitiveLikeUnixWildcard(n, UnixPattern);
        d += unixRe.match(n).hasMatch();
    }
    int parsed = 0;
    for (const QString &s : dateMix())
        parsed += date(s).isValid();
    if (a != b || c != d || a == 0 || c == 0 || parsed != dateMix().size())
        state.SkipWithError("the two sides disagree on the benchmark data");
    for (auto _ : state)
        benchmark::DoNotOptimize(a);
    state.counters["plainHits"] = a;
    state.counters["unixHits"] = c;
}

} // namespace

BENCHMARK(Sanity)->Iterations(1);
BENCHMARK(CompareNoCase_Orvel)->Arg(64)->Arg(4096);
BENCHMARK(CompareNoCase_Qt)->Arg(64)->Arg(4096);
BENCHMARK(SearchNoCase_Orvel)->Arg(64)->Arg(65536);
BENCHMARK(SearchNoCase_Qt)->Arg(64)->Arg(65536);
BENCHMARK(WildcardPlainNoCase_Orvel);
BENCHMARK(WildcardPlainNoCase_Qt);
BENCHMARK(WildcardUnixNoCase_Orvel);
BENCHMARK(WildcardUnixNoCase_Qt);
BENCHMARK(WordSeparation_Orvel)->Arg(1 << 20);
BENCHMARK(WordSeparation_Qt)->Arg(1 << 20);
BENCHMARK(Dates_Orvel);
BENCHMARK(Dates_Qt);

BENCHMARK_MAIN();
