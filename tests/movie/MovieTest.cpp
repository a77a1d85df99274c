// The movie type list, loop modes, and the frame a movie's thumbnail is taken from, on real movies.
#include "testlib/MovieMakers.h"

#include "files/FinderInfo.h"
#include "movie/FFmpegLibrary.h"
#include "movie/Movie.h"
#include "testlib/TestSupport.h"

#include <QFile>
#include <QSet>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

QImage pixelsOf(const ImagePtr &image)
{
    if (!image || !image->bitmapImageRep())
        return {};
    return image->bitmapImageRep()->toQImage().convertToFormat(QImage::Format_RGBA8888);
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

} // namespace

// --- Type list ---------------------------------------------------------------------------------

TEST(MovieTypes, TheInstalledDemuxersComeFirstThenTheClassicTypesNotYetListed)
{
    const QStringList platform = Movie::movieFileTypes();
    const QStringList &types = Movie::QuickTimeFileTypes();
    ASSERT_FALSE(platform.isEmpty());
    for (const char *common : { "mp4", "mkv", "webm", "avi", "mov" })
        EXPECT_TRUE(platform.contains(QLatin1StringView(common))) << common;
    ASSERT_GE(types.size(), platform.size());
    EXPECT_EQ(types.mid(0, platform.size()), platform);

    // The 113 classic strings follow in their order, without the ones the demuxers already gave.
    const QStringList appended = types.mid(platform.size());
    int classicInPlatform = 0;
    for (const QString &s : { u"mpg"_s, u"mp4"_s, u"avi"_s, u"m4v"_s })
        classicInPlatform += platform.contains(s) ? 1 : 0;
    EXPECT_GE(classicInPlatform, 3);
    EXPECT_FALSE(appended.contains(u"mp4"_s));
    EXPECT_EQ(appended.first(), u"'MPG '"_s);
    // The last classic string, "m4v", is one of FFmpeg's own, so the one before it closes the list.
    EXPECT_EQ(appended.last(), platform.contains(u"m4v"_s) ? u"'MPGv'"_s : u"m4v"_s);
    EXPECT_EQ(QSet<QString>(types.begin(), types.end()).size(), types.size()) << "no string twice";
    const qsizetype mqvUpper = appended.indexOf(u"MQV"_s);
    const qsizetype mqvLower = appended.indexOf(u"mqv"_s);
    ASSERT_GE(mqvUpper, 0);
    EXPECT_GT(mqvLower, mqvUpper);
    for (const char *code : { "'MPGa'", "'MPGA'", "'MPGv'", "'MPGV'", "'dvc!'", "'sdp '" })
        EXPECT_TRUE(appended.contains(QLatin1StringView(code))) << code;
    EXPECT_LT(appended.indexOf(u"'MPGA'"_s), appended.indexOf(u"'MPGa'"_s));
    EXPECT_LT(appended.indexOf(u"'MPGa'"_s), appended.indexOf(u"'MPGv'"_s));

    // The 44 type codes are never extensions, so all of them are appended; at most 113 in all.
    EXPECT_EQ(
        std::count_if(appended.begin(), appended.end(), [](const QString &s) { return s.startsWith(u'\''); }),
        44);
    EXPECT_LE(appended.size(), 113);
    EXPECT_EQ(&types, &Movie::QuickTimeFileTypes()) << "the same list on every call";
}

TEST(MovieTypes, ExtensionsIgnoreCaseTypeCodesDoNot)
{
    EXPECT_TRUE(Movie::isQuickTimeExtension(u"Mp4"_s, QString()));
    EXPECT_TRUE(Movie::isQuickTimeExtension(u"MPG"_s, QString()));
    EXPECT_TRUE(Movie::isQuickTimeExtension(u"mpg"_s, QString()));
    EXPECT_TRUE(Movie::isQuickTimeExtension(QString(), u"'mpg4'"_s));
    EXPECT_FALSE(Movie::isQuickTimeExtension(QString(), u"'MPG4'"_s));
    EXPECT_FALSE(Movie::isQuickTimeExtension(u"txt"_s, QString()));
    EXPECT_FALSE(Movie::isQuickTimeExtension(u"jpg"_s, u"'JPEG'"_s));
}

TEST(MovieTypes, AFileCountsByItsExtensionOrItsFinderTypeCode)
{
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

// --- Loop mode ---------------------------------------------------------------------------------

struct LoopCase
{
    int mode;
    bool loops;
    bool backAndForth;
    int reported;
};

class MovieLoopMode : public ::testing::TestWithParam<LoopCase>
{
};

TEST_P(MovieLoopMode, SetsBothAttributesAndReadsThemBack)
{
    static TempDir dir;
    static const QString path = dir.file(u"loop.mp4"_s);
    static const bool made = writeSecondsMovie(path, 1.0);
    ASSERT_TRUE(made);
    const MoviePtr movie = Movie::initWithFile(path);
    ASSERT_TRUE(movie);
    movie->setLoopMode(2); // start from a state every case must overwrite
    movie->setLoopMode(GetParam().mode);
    EXPECT_EQ(movie->loops(), GetParam().loops);
    EXPECT_EQ(movie->loopsBackAndForth(), GetParam().backAndForth);
    EXPECT_EQ(movie->loopMode(), GetParam().reported);
}

INSTANTIATE_TEST_SUITE_P(Modes, MovieLoopMode,
    ::testing::Values(LoopCase { 0, false, false, 0 }, LoopCase { 1, true, false, 1 },
        LoopCase { 2, false, true, 2 }, LoopCase { 3, false, false, 0 }, LoopCase { -1, false, false, 0 }));

// --- Which frame -------------------------------------------------------------------------------

struct FrameCase
{
    double duration;
    int second; // floor(min(max(duration / 2, 0), 15))
};

class MovieThumbnailFrame : public ::testing::TestWithParam<FrameCase>
{
};

TEST_P(MovieThumbnailFrame, IsTheFrameAtHalfTheDurationCappedAtFifteenSecondsInWholeSeconds)
{
    TempDir dir;
    const QString path = dir.file(u"seconds.mp4"_s);
    ASSERT_TRUE(writeSecondsMovie(path, GetParam().duration, 32, 32, GetParam().duration > 20 ? 4 : 10));
    QSizeF size(-1, -1);
    double duration = -1;
    const ImagePtr image = Movie::thumbnailImageForMovieWithFile(path, &size, &duration);
    ASSERT_TRUE(image);
    EXPECT_TRUE(showsSecond(pixelsOf(image), GetParam().second));
    EXPECT_NEAR(duration, GetParam().duration, 0.05);
    EXPECT_EQ(size, QSizeF(32, 32));
    EXPECT_EQ(image->pixelSize(), QSizeF(32, 32));
}

INSTANTIATE_TEST_SUITE_P(Durations, MovieThumbnailFrame,
    ::testing::Values(FrameCase { 1.5, 0 }, FrameCase { 3.6, 1 }, FrameCase { 10, 5 }, FrameCase { 31, 15 },
        FrameCase { 100, 15 }));

TEST(MovieFrames, EveryWholeSecondOfAMovieWithOneKeyFrameIsExact)
{
    TempDir dir;
    const QString path = dir.file(u"seconds.mp4"_s);
    ASSERT_TRUE(writeSecondsMovie(path, 6.0));
    const MoviePtr movie = Movie::initWithFile(path);
    ASSERT_TRUE(movie);
    // Backwards too, so each request has to seek rather than read on.
    for (int second : { 5, 0, 3, 4, 1, 2 })
        EXPECT_TRUE(showsSecond(movie->frameImageAtTime(second), second)) << "second " << second;
    // Between whole seconds the frame on screen is the last one not after the time.
    EXPECT_TRUE(showsSecond(movie->frameImageAtTime(2.95), 2));
}

struct CodecCase
{
    const char *name;
    const char *file;
    QStringList codec;
};

void PrintTo(const CodecCase &c, std::ostream *os) { *os << c.name; }

class MovieCodecs : public ::testing::TestWithParam<CodecCase>
{
};

TEST_P(MovieCodecs, GiveTheFrameTheRulePicks)
{
    TempDir dir;
    const QString path = dir.file(QString::fromLatin1(GetParam().file));
    ASSERT_TRUE(writeSecondsMovie(path, 7.0, 48, 32, 10, GetParam().codec));
    const ImagePtr image = Movie::thumbnailImageForMovieWithFile(path);
    ASSERT_TRUE(image);
    EXPECT_TRUE(showsSecond(pixelsOf(image), 3));
    EXPECT_EQ(image->pixelSize(), QSizeF(48, 32));
}

INSTANTIATE_TEST_SUITE_P(Formats, MovieCodecs,
    ::testing::Values(
        CodecCase { "mpeg4", "clip.avi", { u"-c:v"_s, u"mpeg4"_s, u"-q:v"_s, u"2"_s, u"-g"_s, u"25"_s } },
        CodecCase { "vp9", "clip.webm",
            { u"-c:v"_s, u"libvpx-vp9"_s, u"-crf"_s, u"10"_s, u"-b:v"_s, u"0"_s, u"-deadline"_s,
                u"realtime"_s, u"-cpu-used"_s, u"8"_s } },
        CodecCase {
            "mpeg2", "clip.mkv", { u"-c:v"_s, u"mpeg2video"_s, u"-q:v"_s, u"2"_s, u"-bf"_s, u"2"_s } }),
    [](const auto &info) { return std::string(info.param.name); });

// At 30000/1001 frames per second frame n starts at n × 1001/30000 s, so a whole-second time falls
// between two frames; with B-frames the frame on screen may be one no other frame refers to, which
// the decoder skips on its way to the time. Every frame has its own colour (colourOfSecond(n)).
class MovieBFrames : public ::testing::TestWithParam<CodecCase>
{
};

TEST_P(MovieBFrames, TheFrameOnScreenIsTheLastOneStartingAtOrBeforeTheTime)
{
    TempDir dir;
    const QString path = dir.file(QString::fromLatin1(GetParam().file));
    ASSERT_TRUE(writeNumberedFramesMovie(path, 300, u"30000/1001"_s, GetParam().codec));
    const MoviePtr movie = Movie::initWithFile(path);
    ASSERT_TRUE(movie);
    struct Case
    {
        double seconds;
        int frame;
    };
    // 4 s is 119.88 frame times in: frame 119, which began at 3.9706 s; 5.005 s is frame 150 exactly.
    for (const Case c : { Case { 4.0, 119 }, Case { 5.005, 150 }, Case { 1.0, 29 }, Case { 7.0, 209 },
             Case { 6.5, 194 }, Case { 2.0, 59 }, Case { 9.0, 269 }, Case { 3.0, 89 }, Case { 8.0, 239 } })
        EXPECT_TRUE(showsSecond(movie->frameImageAtTime(c.seconds), c.frame)) << c.seconds << " s";
    // Past the end the last frame stays on screen, whatever its kind.
    EXPECT_TRUE(showsSecond(movie->frameImageAtTime(13.0), 299));
    // floor(min(10 s / 2, 15)) = 5 s, which is 149.85 frame times in.
    EXPECT_TRUE(showsSecond(pixelsOf(movie->thumbnailImage()), 149));
}

INSTANTIATE_TEST_SUITE_P(Formats, MovieBFrames,
    ::testing::Values(CodecCase { "h264", "clip.mp4",
                          { u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"veryfast"_s, u"-x264-params"_s,
                              u"keyint=100000:scenecut=0:bframes=3:b-adapt=0:b-pyramid=none"_s } },
        CodecCase { "h264pyramid", "clip.mkv",
            { u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"veryfast"_s, u"-x264-params"_s,
                u"keyint=100000:scenecut=0:bframes=3:b-adapt=0:b-pyramid=normal"_s } },
        CodecCase { "mpeg2", "clip.mkv",
            { u"-c:v"_s, u"mpeg2video"_s, u"-q:v"_s, u"2"_s, u"-g"_s, u"300"_s, u"-bf"_s, u"2"_s } }),
    [](const auto &info) { return std::string(info.param.name); });

// --- Natural size ------------------------------------------------------------------------------

TEST(MovieSize, AnamorphicPixelsAreStretchedAsAPlayerShowsThem)
{
    TempDir dir;
    const QString path = dir.file(u"wide.mp4"_s);
    ASSERT_TRUE(writeSecondsMovie(path, 2.0, 32, 24, 10, {}, { u"-vf"_s, u"setsar=2"_s }));
    QSizeF size;
    double duration = 0;
    const ImagePtr image = Movie::thumbnailImageForMovieWithFile(path, &size, &duration);
    ASSERT_TRUE(image);
    EXPECT_EQ(size, QSizeF(64, 24));
    EXPECT_EQ(image->pixelSize(), QSizeF(64, 24));
    EXPECT_TRUE(showsSecond(pixelsOf(image), 1));
}

TEST(MovieSize, RotationMetadataTurnsTheFrameAsFFmpegShowsIt)
{
    TempDir dir;
    const QString plain = dir.file(u"plain.mp4"_s);
    const QString path = dir.file(u"turned.mp4"_s);
    // A frame whose left half is dark. The muxer writes the rotation only when the stream is copied.
    ASSERT_TRUE(runFFmpeg({ u"-f"_s, u"lavfi"_s, u"-i"_s,
        u"color=c=white:s=48x32:r=10:d=1,drawbox=x=0:y=0:w=24:h=32:c=black:t=fill"_s, u"-c:v"_s, u"libx264"_s,
        u"-pix_fmt"_s, u"yuv420p"_s, plain }));
    ASSERT_TRUE(
        runFFmpeg({ u"-i"_s, plain, u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s, u"rotate=90"_s, path }));
    const MoviePtr movie = Movie::initWithFile(path);
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->movieSize(), QSizeF(32, 48));
    const QImage frame = movie->frameImageAtTime(0);
    ASSERT_EQ(frame.size(), QSize(32, 48));
    // Where the ffmpeg tool, rotating automatically, puts the dark half: at the bottom.
    EXPECT_GT(qGray(frame.pixel(16, 8)), 200);
    EXPECT_LT(qGray(frame.pixel(16, 40)), 60);
}

// --- Poster image and failures -----------------------------------------------------------------

TEST(MoviePoster, AnAudioFileWithCoverArtGivesTheCover)
{
    TempDir dir;
    const QString cover = dir.file(u"cover.png"_s);
    ASSERT_TRUE(writeSolidImage(cover, 40, 30, QColor(200, 40, 90)));
    const QString path = dir.file(u"song.mp3"_s);
    ASSERT_TRUE(runFFmpeg({ u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=2"_s, u"-i"_s, cover, u"-map"_s, u"0"_s,
        u"-map"_s, u"1"_s, u"-c:a"_s, u"libmp3lame"_s, u"-c:v"_s, u"copy"_s, u"-disposition:v"_s,
        u"attached_pic"_s, u"-id3v2_version"_s, u"3"_s, path }));
    QSizeF size;
    double duration = 0;
    const ImagePtr image = Movie::thumbnailImageForMovieWithFile(path, &size, &duration);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixelSize(), QSizeF(40, 30));
    EXPECT_TRUE(colourNear(centreColour(pixelsOf(image)), QColor(200, 40, 90), 6));
    EXPECT_NEAR(duration, 2.0, 0.1);
}

TEST(MovieFailures, FilesWithoutAPictureAnswerNilAndZeroOutParameters)
{
    TempDir dir;
    const QString audio = dir.file(u"tone.m4a"_s);
    ASSERT_TRUE(runFFmpeg({ u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s, audio }));
    const QString empty = dir.file(u"empty.mp4"_s);
    ASSERT_TRUE(writeBytes(empty, {}));
    const QString noise = dir.file(u"noise.avi"_s);
    ASSERT_TRUE(writeBytes(noise, QByteArray(20000, '\x5a')));
    const QString cut = dir.file(u"cut.mp4"_s);
    ASSERT_TRUE(writeSecondsMovie(cut, 4.0));
    ASSERT_TRUE(writeBytes(cut, readBytes(cut).left(readBytes(cut).size() / 2)));
    // A raw stream header declaring a 16000 × 16000 picture, followed by a few bytes of it.
    const QString huge = dir.file(u"huge.y4m"_s);
    ASSERT_TRUE(writeBytes(huge,
        QByteArray("YUV4MPEG2 W16000 H16000 F25:1 Ip A1:1 C420jpeg\nFRAME\n") + QByteArray(4096, '\x80')));

    for (const QString &path : { audio, empty, noise, cut, huge, dir.file(u"missing.mp4"_s) }) {
        QSizeF size(7, 7);
        double duration = 7;
        QString error;
        EXPECT_FALSE(Movie::thumbnailImageForMovieWithFile(path, &size, &duration, &error)) << path;
        EXPECT_FALSE(error.isEmpty()) << path;
        if (path != audio && path != huge) {
            EXPECT_EQ(size, QSizeF(0, 0)) << path;
            EXPECT_EQ(duration, 0.0) << path;
        }
    }
}

TEST(MovieTime, IsKeptAsSetAndTheDurationIsTheFiles)
{
    TempDir dir;
    const QString path = dir.file(u"time.mkv"_s);
    ASSERT_TRUE(writeSecondsMovie(path, 4.0));
    const MoviePtr movie = Movie::initWithFile(path);
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->movieTime(), 0.0);
    movie->setMovieTime(2.25);
    EXPECT_EQ(movie->movieTime(), 2.25);
    EXPECT_NEAR(movie->movieDuration(), 4.0, 0.05);
    EXPECT_TRUE(movie->hasVideo());
}

// --- Loading FFmpeg ----------------------------------------------------------------------------
// Each of these runs in a fresh process (the test executable started again for the one test), so
// that no earlier test has loaded FFmpeg already. The child reports a failed check on standard
// error and by its exit status.

namespace {

// Whether a library whose file name contains name is mapped into this process.
bool isMapped(const char *name)
{
    QFile maps(u"/proc/self/maps"_s);
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(name);
}

[[noreturn]] void childFails(const char *what)
{
    std::fprintf(stderr, "failed: %s\n", what);
    std::fflush(stderr);
    std::_Exit(1);
}

} // namespace

TEST(MovieLibrary, WithoutFFmpegTheClassicTypesStillAnswerAndOpeningSaysWhy)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Any regular file reaches the loading; this executable is one that the child cannot leave behind.
    const QString path = u"/proc/self/exe"_s;
    EXPECT_EXIT(
        {
            if (!movie_detail::setFFmpegLibraryFolder(u"/nonexistent/orvel-nowhere"_s))
                childFails("the folder is refused before any load");
            if (!Movie::movieFileTypes().isEmpty())
                childFails("no demuxer types without FFmpeg");
            const QStringList &types = Movie::QuickTimeFileTypes();
            if (types.size() != 113 || types.first() != u"'MPG '"_s || types.last() != u"m4v"_s)
                childFails("the classic types make the whole list");
            if (!Movie::isQuickTimeExtension(u"MP4"_s, {}) || Movie::isQuickTimeExtension(u"mkv"_s, {}))
                childFails("classification by the classic types");
            QString error;
            if (Movie::initWithFile(path, &error))
                childFails("a movie opened without FFmpeg");
            QSizeF size(1, 1);
            double duration = 1;
            QString thumbnailError;
            if (Movie::thumbnailImageForMovieWithFile(path, &size, &duration, &thumbnailError)
                || !size.isNull() || duration != 0.0 || thumbnailError != error)
                childFails("the thumbnail answers nil with the same reason");
            if (movie_detail::isFFmpegLoaded())
                childFails("reported as loaded");
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
            if (!Movie::isQuickTimeFile(u"/x/clip.avi"_s))
                childFails("a classic extension counts");
            if (Movie::initWithFile(u"/no/such/file.mp4"_s))
                childFails("a missing file opened");
            if (movie_detail::isFFmpegLoaded() || isMapped("libavcodec.so") || isMapped("libavformat.so"))
                childFails("loaded before it was needed");
            // A suffix only FFmpeg knows needs its demuxer list.
            if (!Movie::isQuickTimeFile(u"/x/clip.mkv"_s))
                childFails("a demuxer's extension counts");
            if (!movie_detail::isFFmpegLoaded() || !isMapped("libavformat.so"))
                childFails("the demuxer list loads FFmpeg");
            if (movie_detail::setFFmpegLibraryFolder(u"/nowhere"_s))
                childFails("the folder changed after the load");
            std::fprintf(stderr, "all checks passed\n");
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "all checks passed");
}
