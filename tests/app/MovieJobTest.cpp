// Movies on the command line: a thumbnail of the chosen frame with the usual settings; files that
// have no picture to give fail with a reason.
#include "../movie/MovieTestSupport.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel::test;

TEST(MovieJob, ADroppedMovieGivesAThumbnailOfTheFrameAtItsMiddle)
{
    TempDir dir, home;
    const QString movie = dir.file(u"clip.mp4"_s);
    ASSERT_TRUE(writeSecondsMovie(movie, 10.0, 96, 64));
    QByteArray err;
    EXPECT_EQ(runThumbs(home, { u"--quiet"_s, u"-f"_s, u"png"_s, u"-s"_s, u"48"_s, movie }, nullptr, &err), 0)
        << err.constData();
    const QImage thumb = loadImage(dir.file(u"clip_thumb.png"_s));
    ASSERT_FALSE(thumb.isNull());
    EXPECT_EQ(thumb.size(), QSize(48, 32));
    EXPECT_TRUE(colourNear(centreColour(thumb), colourOfSecond(5), 14));
}

TEST(MovieJob, MoviesInAFolderFollowTheNamingAndFormatSettings)
{
    TempDir dir, home;
    ASSERT_TRUE(writeSecondsMovie(dir.file(u"a.webm"_s), 3.0, 40, 30, 10,
        { u"-c:v"_s, u"libvpx-vp9"_s, u"-deadline"_s, u"realtime"_s, u"-cpu-used"_s, u"8"_s }));
    ASSERT_TRUE(writeSecondsMovie(
        dir.file(u"b.avi"_s), 4.0, 40, 30, 10, { u"-c:v"_s, u"mpeg4"_s, u"-q:v"_s, u"2"_s }));
    QByteArray err;
    EXPECT_EQ(runThumbs(home, { u"--quiet"_s, u"--folder"_s, u"small"_s, u"-f"_s, u"jpeg"_s, dir.path() },
                  nullptr, &err),
        0)
        << err.constData();
    const QImage a = loadImage(dir.file(u"small/a.jpg"_s));
    const QImage b = loadImage(dir.file(u"small/b.jpg"_s));
    ASSERT_FALSE(a.isNull());
    ASSERT_FALSE(b.isNull());
    EXPECT_EQ(a.size(), QSize(40, 30));
    EXPECT_TRUE(colourNear(centreColour(a), colourOfSecond(1), 16));
    EXPECT_TRUE(colourNear(centreColour(b), colourOfSecond(2), 16));
}

TEST(MovieJob, CorruptAndAudioOnlyFilesGiveNoWithAReason)
{
    TempDir dir, home;
    const QString d = dir.path();
    ASSERT_TRUE(runFFmpeg({ u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s, dir.file(u"tone.m4a"_s) }));
    ASSERT_TRUE(writeBytes(dir.file(u"noise.mp4"_s), QByteArray(30000, '\x17')));
    ASSERT_TRUE(writeBytes(dir.file(u"zero.mov"_s), {}));
    const QString cut = dir.file(u"cut.mkv"_s);
    ASSERT_TRUE(writeSecondsMovie(cut, 5.0, 64, 48));
    ASSERT_TRUE(writeBytes(cut, readBytes(cut).left(300)));

    QByteArray err;
    EXPECT_EQ(runThumbs(home, { u"--quiet"_s, u"--timeout"_s, u"20"_s, d }, nullptr, &err), 1);
    for (const char *name : { "tone.m4a", "noise.mp4", "zero.mov", "cut.mkv" }) {
        const QByteArray line = (d + u'/' + QString::fromLatin1(name) + u": "_s).toUtf8();
        const qsizetype at = err.indexOf(line);
        ASSERT_GE(at, 0) << name << "\n" << err.constData();
        const QByteArray reason = err.mid(at + line.size(), err.indexOf('\n', at) - at - line.size());
        EXPECT_FALSE(reason.trimmed().isEmpty()) << name;
        EXPECT_FALSE(reason.contains("timed out") || reason.contains("crash"))
            << name << ": " << reason.constData();
    }
    EXPECT_TRUE(QDir(d).entryList({ u"*_thumb*"_s }, QDir::Files).isEmpty());
}

TEST(MovieJob, FFmpegsOwnLogIsQuietUnlessVerbose)
{
    TempDir dir, home;
    const QString noise = dir.file(u"noise.avi"_s);
    ASSERT_TRUE(writeBytes(noise, QByteArray("RIFF\x10\0\0\0AVI LIST", 16) + QByteArray(5000, '\x33')));
    QByteArray quiet, verbose;
    EXPECT_EQ(runThumbs(home, { u"--quiet"_s, noise }, nullptr, &quiet), 1);
    // Only the one line that says why the file failed.
    EXPECT_EQ(quiet.count('\n'), 1) << quiet.constData();
    EXPECT_EQ(runThumbs(home, { u"--quiet"_s, u"--verbose"_s, noise }, nullptr, &verbose), 1);
    EXPECT_GT(verbose.count('\n'), 1) << verbose.constData();
}
