// Path strings beside the nearest Qt facility, in the same run, on 100,000 generated paths of the
// kinds a batch over a user's folders meets.
#include "files/PathExtensions.h"

#include <QDir>
#include <QRandomGenerator>
#include <QStringList>
#include <benchmark/benchmark.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Count = 100000;

const QString &pick(QRandomGenerator &rng, const QStringList &list)
{
    return list.at(int(rng.bounded(qsizetype(list.size()))));
}

/// A file name as cameras, scanners and people make them; %1 is a number.
QString fileName(QRandomGenerator &rng)
{
    static const QStringList names = { u"IMG_%1.JPG"_s, u"DSC%1.jpg"_s, u"Scan %1.pdf"_s,
        u"report-final (%1).docx"_s, u"Café %1.png"_s, u"clip%1.mp4"_s, u"Screenshot 2026-11-%1.png"_s,
        u"photo_%1.heic"_s, u"Übersicht %1.tiff"_s, u"page-%1.eps"_s };
    return QString(pick(rng, names)).replace(u"%1"_s, QString::number(rng.bounded(10000)));
}

/// Folders under a home, a mounted disk or a server share; every third path carries the leftovers of
/// joining paths by hand: "//", "/./", "/../" or a trailing "/".
QString messyOrCleanPath(QRandomGenerator &rng, QString *folder)
{
    static const QStringList roots = { u"/home/ann"_s, u"/home/bob"_s, u"/media/ann/USB Stick"_s,
        u"/srv/photos"_s, u"/mnt/nas/family"_s, u"/home/ann/.cache"_s };
    static const QStringList folders
        = { u"Pictures"_s, u"2024"_s, u"Holiday Trip"_s, u"Bücher"_s, u"Projects"_s, u"src"_s, u"Documents"_s,
              u"Scans"_s, u"Musik"_s, u"thumbnails"_s, u"raw"_s, u"Camera Roll"_s, u"Old"_s, u"exports"_s };
    QString path = pick(rng, roots);
    const int depth = 1 + int(rng.bounded(5));
    for (int i = 0; i < depth; ++i)
        path += u'/' + pick(rng, folders);
    *folder = path;
    const bool messy = rng.bounded(3) == 0;
    if (messy) {
        const QStringList leftovers = { u"//"_s, u"/./"_s, u"/../"_s + pick(rng, folders) + u'/' };
        const qsizetype slash = path.lastIndexOf(u'/');
        path.replace(slash, 1, pick(rng, leftovers));
    }
    path += u'/' + fileName(rng);
    if (messy && rng.bounded(2))
        path += u'/';
    return path;
}

struct Corpus
{
    QStringList paths;
    QStringList directories; // for each path: an ancestor folder, a sibling's or a far one
    QStringList titles; // text to turn into a file name
};

const Corpus &corpus()
{
    static const Corpus c = [] {
        QRandomGenerator rng(4101);
        Corpus k;
        // Titles of documents, mails and pages, as a program names files after them.
        static const QStringList titles = { u"Holiday in Provence: day %1/3, the lavender fields"_s,
            u"~draft %1~ annual report for the board"_s, u"Résumé of Jeanne Dupont, Lyon %1"_s,
            u"...notes from the planning meeting %1"_s, u"Meeting notes %1 with the design team"_s,
            u"Q%1 figures: final numbers for the region"_s, u"Cafe\u0301 de Flore, Paris %1 (photos)"_s,
            u"Invoice %1 from the hardware store.pdf"_s };
        // One list after the other, so that each lies in memory in order, as a folder listing's
        // names do, rather than interleaved with the others; the folders of the paths come from a
        // second run of the generator over the same sequence.
        QRandomGenerator again = rng;
        QString folder;
        for (int i = 0; i < Count; ++i)
            k.paths << messyOrCleanPath(rng, &folder);
        QRandomGenerator choice(4102);
        for (int i = 0; i < Count; ++i) {
            (void)messyOrCleanPath(again, &folder);
            switch (choice.bounded(3)) {
            case 0:
                k.directories << folder;
                break;
            case 1:
                k.directories << folder.left(folder.lastIndexOf(u'/')) + u"/Other"_s;
                break;
            default:
                k.directories << u"/home/ann/Documents/Archive"_s;
            }
        }
        for (int i = 0; i < Count; ++i)
            k.titles << QString(pick(rng, titles)).replace(u"%1"_s, QString::number(rng.bounded(1000)));
        return k;
    }();
    return c;
}

void setCounters(benchmark::State &state) { state.SetItemsProcessed(state.iterations() * Count); }

void Standardize_Orvel(benchmark::State &state)
{
    const QStringList &paths = corpus().paths;
    for (auto _ : state)
        for (const QString &path : paths)
            benchmark::DoNotOptimize(standardizedPath(path));
    setCounters(state);
}

void Standardize_Qt(benchmark::State &state)
{
    const QStringList &paths = corpus().paths;
    for (auto _ : state)
        for (const QString &path : paths)
            benchmark::DoNotOptimize(QDir::cleanPath(path));
    setCounters(state);
}

void RelativePath_Orvel(benchmark::State &state)
{
    const Corpus &c = corpus();
    for (auto _ : state)
        for (int i = 0; i < Count; ++i)
            benchmark::DoNotOptimize(relativePathToDirectory(c.paths.at(i), c.directories.at(i)));
    setCounters(state);
}

void RelativePath_Qt(benchmark::State &state)
{
    const Corpus &c = corpus();
    for (auto _ : state)
        for (int i = 0; i < Count; ++i)
            benchmark::DoNotOptimize(QDir(c.directories.at(i)).relativeFilePath(c.paths.at(i)));
    setCounters(state);
}

void Filename_Orvel(benchmark::State &state)
{
    const QStringList &titles = corpus().titles;
    for (auto _ : state)
        for (const QString &title : titles)
            benchmark::DoNotOptimize(stringByCreatingFilename(title));
    setCounters(state);
}

/// The same result from Qt's own string operations: compose, trim both ends, replace.
QString qtFilename(const QString &title)
{
    static const auto trimmed = [](QChar c) { return c == u'.' || c == u'/' || c == u':' || c == u'~'; };
    QString s = title.normalized(QString::NormalizationForm_C);
    qsizetype begin = 0;
    qsizetype end = s.size();
    while (begin < end && trimmed(s.at(begin)))
        ++begin;
    while (end > begin && trimmed(s.at(end - 1)))
        --end;
    s = s.mid(begin, end - begin);
    return s.replace(u'/', u'-').replace(u':', u'-').replace(u'~', u'-');
}

void Filename_Qt(benchmark::State &state)
{
    const QStringList &titles = corpus().titles;
    for (auto _ : state)
        for (const QString &title : titles)
            benchmark::DoNotOptimize(qtFilename(title));
    setCounters(state);
}

} // namespace

BENCHMARK(Standardize_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(Standardize_Qt)->Unit(benchmark::kMillisecond);
BENCHMARK(RelativePath_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(RelativePath_Qt)->Unit(benchmark::kMillisecond);
BENCHMARK(Filename_Orvel)->Unit(benchmark::kMillisecond);
BENCHMARK(Filename_Qt)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
