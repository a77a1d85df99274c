// Movies on the command line: a thumbnail of the chosen frame with the usual settings; files that
// have no picture to give fail with a reason.
#include "../movie/MovieTestSupport.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace orvel::test;

TEST(MovieJob, ADroppedMovieGivesAThumbnailOfTheFrameAtItsMiddle)
{
    TempDir dir, home;
    const QString movie = dir.file(QStringLiteral("clip.mp4"));
    ASSERT_TRUE(writeSecondsMovie(movie, 10.0, 96, 64));
    QByteArray err;
    EXPECT_EQ(runThumbs(home,
                  { QStringLiteral("--quiet"), QStringLiteral("-f"), QStringLiteral("png"),
                      QStringLiteral("-s"), QStringLiteral("48"), movie },
                  nullptr, &err),
        0)
        << err.constData();
    const QImage thumb = loadImage(dir.file(QStringLiteral("clip_thumb.png")));
    ASSERT_FALSE(thumb.isNull());
    EXPECT_EQ(thumb.size(), QSize(48, 32));
    EXPECT_TRUE(colourNear(centreColour(thumb), colourOfSecond(5), 14));
}

TEST(MovieJob, MoviesInAFolderFollowTheNamingAndFormatSettings)
{
    TempDir dir, home;
    ASSERT_TRUE(writeSecondsMovie(dir.file(QStringLiteral("a.webm")), 3.0, 40, 30, 10,
        { QStringLiteral("-c:v"), QStringLiteral("libvpx-vp9"), QStringLiteral("-deadline"),
            QStringLiteral("realtime"), QStringLiteral("-cpu-used"), QStringLiteral("8") }));
    ASSERT_TRUE(writeSecondsMovie(dir.file(QStringLiteral("b.avi")), 4.0, 40, 30, 10,
        { QStringLiteral("-c:v"), QStringLiteral("mpeg4"), QStringLiteral("-q:v"), QStringLiteral("2") }));
    QByteArray err;
    EXPECT_EQ(runThumbs(home,
                  { QStringLiteral("--quiet"), QStringLiteral("--folder"), QStringLiteral("small"),
                      QStringLiteral("-f"), QStringLiteral("jpeg"), dir.path() },
                  nullptr, &err),
        0)
        << err.constData();
    const QImage a = loadImage(dir.file(QStringLiteral("small/a.jpg")));
    const QImage b = loadImage(dir.file(QStringLiteral("small/b.jpg")));
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
    ASSERT_TRUE(runFFmpeg({ QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
        QStringLiteral("sine=d=1"), dir.file(QStringLiteral("tone.m4a")) }));
    ASSERT_TRUE(writeBytes(dir.file(QStringLiteral("noise.mp4")), QByteArray(30000, '\x17')));
    ASSERT_TRUE(writeBytes(dir.file(QStringLiteral("zero.mov")), {}));
    const QString cut = dir.file(QStringLiteral("cut.mkv"));
    ASSERT_TRUE(writeSecondsMovie(cut, 5.0, 64, 48));
    ASSERT_TRUE(writeBytes(cut, readBytes(cut).left(300)));

    QByteArray err;
    EXPECT_EQ(
        runThumbs(home, { QStringLiteral("--quiet"), QStringLiteral("--timeout"), QStringLiteral("20"), d },
            nullptr, &err),
        1);
    for (const char *name : { "tone.m4a", "noise.mp4", "zero.mov", "cut.mkv" }) {
        const QByteArray line = (d + u'/' + QString::fromLatin1(name) + QStringLiteral(": ")).toUtf8();
        const qsizetype at = err.indexOf(line);
        ASSERT_GE(at, 0) << name << "\n" << err.constData();
        const QByteArray reason = err.mid(at + line.size(), err.indexOf('\n', at) - at - line.size());
        EXPECT_FALSE(reason.trimmed().isEmpty()) << name;
        EXPECT_FALSE(reason.contains("timed out") || reason.contains("crash"))
            << name << ": " << reason.constData();
    }
    EXPECT_TRUE(QDir(d).entryList({ QStringLiteral("*_thumb*") }, QDir::Files).isEmpty());
}

TEST(MovieJob, FFmpegsOwnLogIsQuietUnlessVerbose)
{
    TempDir dir, home;
    const QString noise = dir.file(QStringLiteral("noise.avi"));
    ASSERT_TRUE(writeBytes(noise, QByteArray("RIFF\x10\0\0\0AVI LIST", 16) + QByteArray(5000, '\x33')));
    QByteArray quiet, verbose;
    EXPECT_EQ(runThumbs(home, { QStringLiteral("--quiet"), noise }, nullptr, &quiet), 1);
    // Only the one line that says why the file failed.
    EXPECT_EQ(quiet.count('\n'), 1) << quiet.constData();
    EXPECT_EQ(
        runThumbs(home, { QStringLiteral("--quiet"), QStringLiteral("--verbose"), noise }, nullptr, &verbose),
        1);
    EXPECT_GT(verbose.count('\n'), 1) << verbose.constData();
}
