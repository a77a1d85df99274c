// The movie type list, loop modes, and the frame a movie's thumbnail is taken from, on real movies.
#include "testlib/MovieMakers.h"

#include "files/FinderInfo.h"
#include "movie/FFmpegLibrary.h"
#include "movie/Movie.h"
#include "testlib/TestSupport.h"

#include <QFile>
#include <QSet>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <tuple>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

QImage pixelsOf(const ImagePtr &image)
{
    const auto rep = image ? image->bitmapImageRep() : nullptr;
    return rep ? rep->toQImage().convertToFormat(QImage::Format_RGBA8888) : QImage();
}

// The picture shows second `second` and not either neighbour.
::testing::AssertionResult showsSecond(const QImage &picture, int second)
{
    if (picture.isNull())
        return ::testing::AssertionFailure() << "no picture";
    const QColor seen = centreColour(picture);
    if (!colourNear(seen, colourOfSecond(second), 12))
        return ::testing::AssertionFailure()
            << "centre is " << seen.name().toStdString() << ", second " << second << " is "
            << colourOfSecond(second).name().toStdString();
    for (int other : { second - 1, second + 1 }) {
        if (other >= 0 && colourNear(seen, colourOfSecond(other), 12))
            return ::testing::AssertionFailure() << "looks like second " << other;
    }
    return ::testing::AssertionSuccess();
}

// What thumbnailImageForMovieWithFile answers, its out parameters starting at 7.
struct Thumbnail
{
    ImagePtr image;
    QSizeF size { 7, 7 };
    double duration = 7;
    QString error;
};

Thumbnail thumbnailOf(const QString &path)
{
    Thumbnail t;
    t.image = Movie::thumbnailImageForMovieWithFile(path, &t.size, &t.duration, &t.error);
    return t;
}

// Whether a library whose file name contains name is mapped into this process.
bool isMapped(const char *name)
{
    QFile maps(u"/proc/self/maps"_s);
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(name);
}

// In the child: unless ok, reports what failed and ends the child.
void check(bool ok, const char *what)
{
    if (ok)
        return;
    std::fprintf(stderr, "failed: %s\n", what);
    std::fflush(stderr);
    std::_Exit(1);
}

} // namespace

TEST(MovieTypes, TheInstalledDemuxersComeFirstThenTheClassicTypesNotYetListed)
{
    const QStringList platform = Movie::movieFileTypes();
    const QStringList &types = Movie::QuickTimeFileTypes();
    for (const char *common : { "mp4", "mkv", "webm", "avi", "mov" })
        EXPECT_TRUE(platform.contains(QLatin1StringView(common))) << common;
    ASSERT_GE(types.size(), platform.size());
    EXPECT_EQ(types.mid(0, platform.size()), platform);
    // The classic strings follow in order without the demuxers' ones; "m4v" may be one of those.
    const QStringList appended = types.mid(platform.size());
    EXPECT_EQ(appended.first(), u"'MPG '"_s);
    EXPECT_EQ(appended.last(), platform.contains(u"m4v"_s) ? u"'MPGv'"_s : u"m4v"_s);
    EXPECT_EQ(QSet<QString>(types.begin(), types.end()).size(), types.size()) << "no string twice";
    // Entries differing in case only are both kept, in their order.
    EXPECT_LT(appended.indexOf(u"MQV"_s), appended.indexOf(u"mqv"_s));
    EXPECT_GE(appended.indexOf(u"MQV"_s), 0);
}

TEST(MovieTypes, AFileCountsByItsExtensionIgnoringCaseOrItsFinderTypeCodeKeepingIt)
{
    EXPECT_TRUE(Movie::isQuickTimeExtension(u"Mp4"_s, QString()));
    EXPECT_TRUE(Movie::isQuickTimeExtension(u"MPG"_s, QString()));
    EXPECT_TRUE(Movie::isQuickTimeExtension(QString(), u"'mpg4'"_s));
    EXPECT_FALSE(Movie::isQuickTimeExtension(QString(), u"'MPG4'"_s));
    EXPECT_FALSE(Movie::isQuickTimeExtension(u"txt"_s, QString()));
    EXPECT_FALSE(Movie::isQuickTimeExtension(u"jpg"_s, u"'JPEG'"_s));
    TempDir dir;
    const QString plain = dir.file(u"clip"_s);
    ASSERT_TRUE(writeBytes(plain, "x"));
    EXPECT_FALSE(Movie::isQuickTimeFile(plain));
    if (!setHFSTypeCodeOfFile(plain, fileTypeCodeFromString(u"'MPGv'")))
        GTEST_SKIP() << "no user extended attributes on " << dir.path();
    EXPECT_TRUE(Movie::isQuickTimeFile(plain));
    EXPECT_TRUE(Movie::isQuickTimeFile(dir.file(u"holiday.MKV"_s)));
    EXPECT_FALSE(Movie::isQuickTimeFile(dir.file(u".mp4"_s)));
}

TEST(MovieLoopMode, SetsBothAttributesAndReadsThemBack)
{
    TempDir dir;
    const QString path = dir.file(u"loop.mp4"_s);
    ASSERT_TRUE(writeSecondsMovie(path, 1.0));
    const MoviePtr movie = Movie::initWithFile(path);
    ASSERT_TRUE(movie);
    // mode: loops, back and forth, the mode read back; unknown modes mean no loop.
    const std::tuple<int, bool, bool, int> modes[]
        = { { 1, true, false, 1 }, { 2, false, true, 2 }, { 0, false, false, 0 }, { 3, false, false, 0 } };
    for (const auto &[mode, loops, backAndForth, reported] : modes) {
        movie->setLoopMode(mode);
        EXPECT_EQ(movie->loops(), loops) << mode;
        EXPECT_EQ(movie->loopsBackAndForth(), backAndForth) << mode;
        EXPECT_EQ(movie->loopMode(), reported) << mode;
    }
}

struct MovieCase
{
    const char *name;
    const char *file;
    const char *codec; // ffmpeg arguments, space-separated; empty: H.264 with a single key frame
    double duration = 0;
    int second = 0; // floor(min(max(duration / 2, 0), 15))
};

void PrintTo(const MovieCase &c, std::ostream *os) { *os << c.name; }

QStringList arguments(const char *text) { return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts); }

using MovieThumbnailFrame = ::testing::TestWithParam<MovieCase>;

TEST_P(MovieThumbnailFrame, IsTheFrameAtHalfTheDurationCappedAtFifteenSecondsInWholeSeconds)
{
    const MovieCase &c = GetParam();
    TempDir dir;
    const QString path = dir.file(QString::fromLatin1(c.file));
    ASSERT_TRUE(writeSecondsMovie(path, c.duration, 48, 32, c.duration > 20 ? 4 : 10, arguments(c.codec)));
    const Thumbnail t = thumbnailOf(path);
    ASSERT_TRUE(t.image);
    EXPECT_TRUE(showsSecond(pixelsOf(t.image), c.second));
    EXPECT_NEAR(t.duration, c.duration, 0.05);
    EXPECT_EQ(t.size, QSizeF(48, 32));
}

INSTANTIATE_TEST_SUITE_P(Durations, MovieThumbnailFrame,
    ::testing::Values(MovieCase { "h264_3_6s", "a.mp4", "", 3.6, 1 },
        MovieCase { "h264_100s", "a.mp4", "", 100, 15 },
        MovieCase { "mpeg4", "clip.avi", "-c:v mpeg4 -q:v 2 -g 25", 7, 3 },
        MovieCase {
            "vp9", "clip.webm", "-c:v libvpx-vp9 -crf 10 -b:v 0 -deadline realtime -cpu-used 8", 7, 3 }),
    [](const auto &info) { return std::string(info.param.name); });

// At 30000/1001 fps a whole second falls between frames; with B-frames the frame on screen may be one
// the decoder skips on its way there. Every frame has its own colour (colourOfSecond(n)).
using MovieBFrames = ::testing::TestWithParam<MovieCase>;

TEST_P(MovieBFrames, TheFrameOnScreenIsTheLastOneStartingAtOrBeforeTheTime)
{
    TempDir dir;
    const QString path = dir.file(QString::fromLatin1(GetParam().file));
    ASSERT_TRUE(writeNumberedFramesMovie(path, 300, u"30000/1001"_s, arguments(GetParam().codec)));
    const MoviePtr movie = Movie::initWithFile(path);
    ASSERT_TRUE(movie);
    EXPECT_NEAR(movie->movieDuration(), 300 * 1.001 / 30, 0.05);
    // Out of order, so requests seek back; 4 s is frame 119 (from 3.9706 s), 5.005 s exactly frame 150.
    const std::pair<double, int> cases[] = { { 4.0, 119 }, { 5.005, 150 }, { 1.0, 29 }, { 7.0, 209 },
        { 6.5, 194 }, { 2.0, 59 }, { 9.0, 269 }, { 3.0, 89 }, { 8.0, 239 } };
    for (const auto &[seconds, frame] : cases)
        EXPECT_TRUE(showsSecond(movie->frameImageAtTime(seconds), frame)) << seconds << " s";
    // Past the end the last frame stays on screen, whatever its kind.
    EXPECT_TRUE(showsSecond(movie->frameImageAtTime(13.0), 299));
    // floor(min(10 s / 2, 15)) = 5 s, which is 149.85 frame times in.
    EXPECT_TRUE(showsSecond(pixelsOf(movie->thumbnailImage()), 149));
}

INSTANTIATE_TEST_SUITE_P(Formats, MovieBFrames,
    ::testing::Values(MovieCase { "h264", "clip.mp4",
                          "-c:v libx264 -preset veryfast -x264-params "
                          "keyint=100000:scenecut=0:bframes=3:b-adapt=0:b-pyramid=none" },
        MovieCase { "mpeg2", "clip.mkv", "-c:v mpeg2video -q:v 2 -g 300 -bf 2" },
        // As cameras record: a key frame every second, so most times fall a few frames after one.
        MovieCase { "h264keyframes", "clip.mov",
            "-c:v libx264 -preset veryfast -x264-params "
            "keyint=30:min-keyint=30:scenecut=0:bframes=3:b-adapt=0:b-pyramid=normal" },
        MovieCase { "hevckeyframes", "clip.mp4",
            "-c:v libx265 -preset ultrafast -x265-params "
            "keyint=30:min-keyint=30:bframes=3:log-level=error" }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(MovieSize, AnamorphicPixelsAreStretchedAsAPlayerShowsThem)
{
    TempDir dir;
    const QString path = dir.file(u"wide.mp4"_s);
    ASSERT_TRUE(writeSecondsMovie(path, 2.0, 32, 24, 10, {}, { u"-vf"_s, u"setsar=2"_s }));
    const Thumbnail t = thumbnailOf(path);
    ASSERT_TRUE(t.image);
    EXPECT_EQ(t.image->pixelSize(), QSizeF(64, 24));
    EXPECT_TRUE(showsSecond(pixelsOf(t.image), 1));
}

TEST(MovieSize, RotationMetadataTurnsTheFrameAsFFmpegShowsIt)
{
    TempDir dir;
    const QString plain = dir.file(u"plain.mp4"_s), path = dir.file(u"turned.mp4"_s);
    // A frame whose left half is dark. The muxer writes the rotation only when the stream is copied.
    ASSERT_TRUE(runFFmpeg(
        arguments("-f lavfi -i color=c=white:s=48x32:r=10:d=1,drawbox=x=0:y=0:w=24:h=32:c=black:t=fill "
                  "-c:v libx264 -pix_fmt yuv420p")
        << plain));
    ASSERT_TRUE(
        runFFmpeg(QStringList { u"-i"_s, plain } + arguments("-c copy -metadata:s:v:0 rotate=90") << path));
    const MoviePtr movie = Movie::initWithFile(path);
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->movieSize(), QSizeF(32, 48));
    const QImage frame = movie->frameImageAtTime(0);
    ASSERT_EQ(frame.size(), QSize(32, 48));
    // Where the ffmpeg tool, rotating automatically, puts the dark half: at the bottom.
    EXPECT_GT(qGray(frame.pixel(16, 8)), 200);
    EXPECT_LT(qGray(frame.pixel(16, 40)), 60);
}

TEST(MoviePoster, AnAudioFileWithCoverArtGivesTheCover)
{
    TempDir dir;
    const QString cover = dir.file(u"cover.png"_s), path = dir.file(u"song.mp3"_s);
    ASSERT_TRUE(writeSolidImage(cover, 40, 30, QColor(200, 40, 90)));
    ASSERT_TRUE(runFFmpeg(arguments("-f lavfi -i sine=d=2 -i")
        << cover
        << arguments("-map 0 -map 1 -c:a libmp3lame -c:v copy -disposition:v attached_pic -id3v2_version 3")
        << path));
    const Thumbnail t = thumbnailOf(path);
    ASSERT_TRUE(t.image);
    EXPECT_EQ(t.image->pixelSize(), QSizeF(40, 30));
    EXPECT_TRUE(colourNear(centreColour(pixelsOf(t.image)), QColor(200, 40, 90), 6));
    EXPECT_NEAR(t.duration, 2.0, 0.1);
}

TEST(MovieFailures, FilesWithoutAPictureAnswerNilAndZeroOutParameters)
{
    TempDir dir;
    const QString audio = dir.file(u"tone.m4a"_s), empty = dir.file(u"empty.mp4"_s),
                  noise = dir.file(u"noise.avi"_s), cut = dir.file(u"cut.mp4"_s),
                  huge = dir.file(u"huge.y4m"_s);
    ASSERT_TRUE(runFFmpeg({ u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s, audio }));
    ASSERT_TRUE(writeBytes(empty, {}) && writeBytes(noise, QByteArray(20000, '\x5a')));
    ASSERT_TRUE(writeSecondsMovie(cut, 4.0));
    ASSERT_TRUE(writeBytes(cut, readBytes(cut).left(readBytes(cut).size() / 2)));
    // A raw stream header declaring a 16000 × 16000 picture, followed by a few bytes of it.
    ASSERT_TRUE(writeBytes(huge,
        QByteArray("YUV4MPEG2 W16000 H16000 F25:1 Ip A1:1 C420jpeg\nFRAME\n") + QByteArray(4096, '\x80')));

    const std::pair<QString, QString> cases[]
        = { { audio, u"no picture in the file"_s }, { empty, u"empty file"_s },
              { noise, u"not a movie FFmpeg can read"_s }, { cut, u"not a movie FFmpeg can read"_s },
              { huge, u"the movie's picture is too large (16000 × 16000)"_s },
              { dir.file(u"missing.mp4"_s), u"not a regular file"_s } };
    for (const auto &[path, reason] : cases) {
        const Thumbnail t = thumbnailOf(path);
        EXPECT_FALSE(t.image) << path;
        EXPECT_EQ(t.error, reason) << path;
        EXPECT_TRUE(path == audio || path == huge || (t.size == QSizeF(0, 0) && t.duration == 0.0)) << path;
    }
}

// Loading FFmpeg: each runs in a fresh process, so that no earlier test has loaded it; the child
// reports a failed check on standard error and by its exit status.

TEST(MovieLibrary, WithoutFFmpegTheClassicTypesStillAnswerAndOpeningSaysWhy)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Any regular file reaches the loading; this executable is one that the child cannot leave behind.
    const QString path = u"/proc/self/exe"_s;
    EXPECT_EXIT(
        {
            check(movie_detail::setFFmpegLibraryFolder(u"/nonexistent/orvel-nowhere"_s),
                "the folder is refused before any load");
            check(Movie::movieFileTypes().isEmpty(), "no demuxer types without FFmpeg");
            const QStringList &types = Movie::QuickTimeFileTypes();
            check(types.size() == 113 && types.first() == u"'MPG '"_s && types.last() == u"m4v"_s,
                "the classic types make the whole list");
            check(Movie::isQuickTimeExtension(u"MP4"_s, {}) && !Movie::isQuickTimeExtension(u"mkv"_s, {}),
                "classification by the classic types");
            QString error;
            check(!Movie::initWithFile(path, &error), "a movie opened without FFmpeg");
            const Thumbnail t = thumbnailOf(path);
            check(!t.image && t.size.isNull() && t.duration == 0.0 && t.error == error,
                "the thumbnail answers nil with the same reason");
            check(!movie_detail::isFFmpegLoaded(), "reported as loaded");
            std::fprintf(stderr, "%s\n", qPrintable(error));
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "FFmpeg is not available: .*orvel-nowhere/libavutil\\.so\\.[0-9]+");
}

TEST(MovieLibrary, IsLoadedOnlyWhenTheTypesOfFFmpegOrAMovieAreNeeded)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            // Classic types, files without an extension and files that are not there need no FFmpeg.
            for (const char *name : { "/x/clip.avi", "/x/song.MP3", "/x/movie.m4v", "/x/README" })
                (void)Movie::isQuickTimeFile(QString::fromLatin1(name));
            check(Movie::isQuickTimeFile(u"/x/clip.avi"_s), "a classic extension counts");
            check(!Movie::initWithFile(u"/no/such/file.mp4"_s), "a missing file opened");
            check(
                !(movie_detail::isFFmpegLoaded() || isMapped("libavcodec.so") || isMapped("libavformat.so")),
                "loaded before it was needed");
            // A suffix only FFmpeg knows needs its demuxer list.
            check(Movie::isQuickTimeFile(u"/x/clip.mkv"_s), "a demuxer's extension counts");
            check(movie_detail::isFFmpegLoaded() && isMapped("libavformat.so"),
                "the demuxer list loads FFmpeg");
            check(!movie_detail::setFFmpegLibraryFolder(u"/nowhere"_s), "the folder changed after the load");
            std::fprintf(stderr, "all checks passed\n");
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "all checks passed");
}
