// orvel-thumbs from the outside: the program run as a child process with settings, cache and
// temporary folders of its own, its exit status, its report and what it leaves behind.
#include "files/FinderInfo.h"
#include "files/ResourceFork.h"
#include "support/NumberFormatter.h"
#include "testlib/TestSupport.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvel::test;

TEST(DefaultsCommand, RoundTripThroughTheExecutableAndTheXdgFolder)
{
    TempDir dir;
    QByteArray out;
    QByteArray err;
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"write"_s, u"width"_s, u"-int"_s, u"96"_s }), 0);
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"write"_s, u"extension"_s, u"_small"_s }), 0);
    EXPECT_TRUE(QFile::exists(dir.file(u"config/orvel/thumbnails.conf"_s)));

    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"read"_s, u"width"_s }, &out), 0);
    EXPECT_EQ(out, "96\n");
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"read"_s }, &out), 0);
    EXPECT_TRUE(out.contains("\nwidth = 96\nheight = 128 (default)\n")) << out.constData();
    EXPECT_TRUE(out.contains("\nextension = _small\n")) << out.constData();

    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"delete"_s, u"width"_s }), 0);
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"read"_s, u"width"_s }, &out, &err), 1);
    EXPECT_TRUE(out.isEmpty());
    EXPECT_TRUE(err.contains("width")) << err.toStdString();
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"delete"_s, u"width"_s }), 1);
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"write"_s, u"width"_s, u"-int"_s, u"wide"_s }), 2);
}

TEST(CommandLineRun, UsageErrorsExitWithTwoAndSayWhyHelpAndVersionWithZero)
{
    TempDir dir;
    QByteArray err;
    EXPECT_EQ(runThumbs(dir, {}, nullptr, &err), 2);
    EXPECT_TRUE(err.contains("no PATH")) << err.toStdString();
    EXPECT_EQ(runThumbs(dir, { u"--frobnicate"_s, dir.path() }, nullptr, &err), 2);
    EXPECT_TRUE(err.contains("--frobnicate")) << err.toStdString();
    EXPECT_EQ(runThumbs(dir, { u"-f"_s, u"webp"_s, dir.path() }, nullptr, &err), 2);
    EXPECT_FALSE(QDir(dir.path()).entryList(QDir::Files).size() > 0);
    ASSERT_TRUE(writeBytes(dir.file(u"plain"_s), "a file"));
    EXPECT_EQ(runThumbs(dir, { u"--output-dir"_s, dir.file(u"plain"_s), dir.path() }, nullptr, &err), 2);
    EXPECT_TRUE(err.contains("plain is a file")) << err.toStdString();

    QByteArray out;
    EXPECT_EQ(runThumbs(dir, { u"--version"_s }, &out), 0);
    EXPECT_TRUE(out.startsWith("orvel-thumbs ")) << out.toStdString();
    EXPECT_TRUE(out.endsWith("\n"));
    EXPECT_EQ(runThumbs(dir, { u"-h"_s }, &out), 0);
    EXPECT_TRUE(out.contains("--jobs")) << out.toStdString();
}

TEST(CommandLineRun, ReportsEachFailureAndExitsWithOne)
{
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"good.png"_s), 40, 30));
    ASSERT_TRUE(writeBytes(dir.file(u"notes.txt"_s), "hello"));
    // A pipe would block a decoder until the time limit; nobody ever writes to this one.
    ASSERT_EQ(::mkfifo(QFile::encodeName(dir.file(u"pipe.png"_s)).constData(), 0600), 0);
    QByteArray out;
    QByteArray err;
    const int status = runThumbs(dir,
        { dir.file(u"good.png"_s), dir.file(u"notes.txt"_s), dir.file(u"missing.png"_s),
            dir.file(u"pipe.png"_s) },
        &out, &err);
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(QFile::exists(dir.file(u"good_thumb.jpg"_s)));
    const QList<QByteArray> lines = err.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 4) << err.toStdString();
    EXPECT_TRUE(lines[0].startsWith(QFile::encodeName(dir.file(u"notes.txt"_s)) + ": ")) << err.toStdString();
    EXPECT_EQ(lines[1], QFile::encodeName(dir.file(u"missing.png"_s)) + ": no such file or folder");
    EXPECT_EQ(lines[2], QFile::encodeName(dir.file(u"pipe.png"_s)) + ": not a regular file");
    EXPECT_TRUE(lines[3].startsWith("1 thumbnail made, 3 failed, ")) << err.toStdString();
    // Not a terminal: no progress bar and no control characters.
    EXPECT_FALSE(err.contains('\r'));
    EXPECT_FALSE(err.contains('\x1b'));
    EXPECT_TRUE(out.isEmpty());

    EXPECT_EQ(runThumbs(dir, { u"--quiet"_s, dir.file(u"good.png"_s) }, &out, &err), 0);
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
}

TEST(CommandLineRun, SummaryShowsTheSizeWrittenInTheUsersNumberFormat)
{
    TempDir dir;
    const QStringList images { dir.file(u"a.png"_s), dir.file(u"b.png"_s), dir.file(u"c.png"_s) };
    for (const QString &image : images)
        ASSERT_TRUE(writeTestImage(image, 900, 700));
    const EnvironmentOverride all("LC_ALL", QString());
    const EnvironmentOverride numeric("LC_NUMERIC", u"de_DE.UTF-8"_s);
    const EnvironmentOverride language("LANG", u"de_DE.UTF-8"_s);
    const EnvironmentOverride messages("LC_MESSAGES", u"C"_s); // German numbers, English words
    QByteArray err;
    ASSERT_EQ(
        runThumbs(dir, QStringList { u"-j"_s, u"2"_s, u"--set"_s, u"filetype=4"_s } + images, nullptr, &err),
        0)
        << err.constData();
    qint64 written = 0;
    for (const QString &image : images)
        written += QFileInfo(QString(image).replace(u".png"_s, u"_thumb.png"_s)).size();
    ASSERT_GT(written, 1024);
    const QLocale saved;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QString size = orvel::NumberFormatter::stringForSize(quint64(written));
    QLocale::setDefault(saved);
    EXPECT_TRUE(QString::fromUtf8(err).trimmed().endsWith(u" s, "_s + size + u" written"_s))
        << err.constData() << " " << size.toStdString();
    EXPECT_TRUE(QString::fromUtf8(err).contains(QRegularExpression(u", \\d+,\\d s, "_s))) << err.constData();

    // Nothing written: no size.
    ASSERT_EQ(runThumbs(dir, QStringList { u"--dry-run"_s } + images, nullptr, &err), 0);
    EXPECT_TRUE(err.trimmed().endsWith(" s (dry run: nothing written)")) << err.constData();
}

TEST(CommandLineRun, SettingsOnTheCommandLineApplyToThisRunOnly)
{
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"pic.png"_s), 300, 200));
    QByteArray out;
    EXPECT_EQ(runThumbs(dir,
                  { u"--verbose"_s, u"--set"_s, u"filetype=4"_s, u"--set"_s, u"extension=_t"_s, u"-s"_s,
                      u"60"_s, dir.file(u"pic.png"_s) },
                  &out),
        0);
    EXPECT_EQ(out, QFile::encodeName(dir.file(u"pic_t.png"_s)) + "\n");
    const QImage thumb = loadImage(dir.file(u"pic_t.png"_s));
    EXPECT_EQ(thumb.size(), QSize(60, 40));
    EXPECT_FALSE(QFile::exists(dir.file(u"config/orvel/thumbnails.conf"_s)))
        << "--set must not write the store";

    // The stored settings apply when nothing overrides them.
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"write"_s, u"width"_s, u"-int"_s, u"30"_s }), 0);
    EXPECT_EQ(runThumbs(dir, { u"--quiet"_s, dir.file(u"pic.png"_s) }), 0);
    EXPECT_EQ(loadImage(dir.file(u"pic_thumb.jpg"_s)).size(), QSize(30, 20));
}

TEST(CommandLineRun, TheBatchRunnerLoadsNoDecodersAndNeedsItsEngine)
{
    const QString executable = thumbsExecutable();
    ASSERT_FALSE(executable.isEmpty());
    // The libraries the executable itself needs: none of the decoders' (only its workers load them).
    QByteArray dynamic;
    ASSERT_EQ(runProgram(u"readelf"_s, { u"-d"_s, executable }, &dynamic), 0);
    for (const char *library :
        { "libvips", "libpoppler", "libavcodec", "libavformat", "libQt6Gui", "libQt6Widgets" })
        EXPECT_FALSE(dynamic.contains(library)) << library << " is loaded by the batch runner";
    // The engine links the decoders but not FFmpeg, which it opens when a movie comes.
    QByteArray engine;
    ASSERT_EQ(runProgram(u"readelf"_s,
                  { u"-d"_s, QFileInfo(executable).absolutePath() + u"/orvel-thumbs-engine.so"_s }, &engine),
        0);
    EXPECT_TRUE(engine.contains("libvips")) << engine.constData();
    EXPECT_FALSE(engine.contains("libavcodec")) << engine.constData();

    // A copy without its engine beside it says so once and makes nothing.
    TempDir dir;
    const QString lonely = dir.file(u"bin/orvel-thumbs"_s);
    ASSERT_TRUE(QDir().mkpath(dir.file(u"bin"_s)));
    ASSERT_TRUE(QFile::copy(executable, lonely));
    ASSERT_TRUE(writeTestImage(dir.file(u"pic.png"_s), 40, 30));
    QByteArray err;
    EXPECT_EQ(runProgram(lonely, { dir.file(u"pic.png"_s) }, nullptr, &err, 60000,
                  { u"XDG_CONFIG_HOME="_s + dir.file(u"config"_s) }),
        1);
    EXPECT_TRUE(
        err.startsWith("orvel-thumbs: the thumbnail engine orvel-thumbs-engine.so is missing beside "))
        << err.toStdString();
    EXPECT_EQ(err.count('\n'), 1) << err.toStdString();
    EXPECT_FALSE(QFile::exists(dir.file(u"pic_thumb.jpg"_s)));
}

TEST(BadInput, EveryBrokenFileFailsAloneWithAReason)
{
    TempDir dir, home;
    const QString d = dir.path();
    ASSERT_TRUE(writeTestImage(d + u"/good.png"_s, 300, 200));
    ASSERT_TRUE(writeTestImage(d + u"/cut.jpg"_s, 900, 700));
    QByteArray jpeg = readBytes(d + u"/cut.jpg"_s);
    // Cut just after its picture data starts: nothing to show (a longer piece gives what decodes).
    ASSERT_TRUE(writeBytes(d + u"/cut.jpg"_s, jpeg.left(jpeg.indexOf("\xFF\xDA") + 30)));
    ASSERT_TRUE(writeBytes(d + u"/zero.png"_s, {}));
    ASSERT_TRUE(writeBytes(d + u"/noise.gif"_s, QByteArray(5000, '\x5a')));
    ASSERT_TRUE(writeBytes(d + u"/bomb.png"_s, pngDeclaring(300000, 300000)));
    // A 77-byte GIF whose one frame sits at (28261, 28516): its decoder's canvas would grow to
    // 55495 × 28532 pixels, 6 GB.
    ASSERT_TRUE(writeBytes(d + u"/canvas.gif"_s,
        QByteArray::fromBase64(
            "R0lGODlh8AAQAIAAAEdwTCh4yCH/C05FVFNDQVBFMi4wAwEAAAAh+QQFAAAAACxlbmRvYmoQAAACEYyP"
            "qcvtD6OctNqLs968+68UADs=")));
    ASSERT_TRUE(writeBytes(d + u"/forever.ps"_s, "%!PS\n{ } loop\n"));
    ASSERT_TRUE(writeBytes(d + u"/fake.pdf"_s, "%PDF-1.4\n1 0 obj << /Type /Catalog >> endobj\n"));
    ASSERT_TRUE(QFile::link(d + u"/nowhere.jpg"_s, d + u"/dangling.jpg"_s));

    QByteArray out, err;
    const int status = runThumbs(home, { u"--timeout"_s, u"3"_s, u"-j"_s, u"2"_s, d }, &out, &err);
    EXPECT_EQ(status, 1) << err.constData();
    EXPECT_TRUE(QFileInfo::exists(d + u"/good_thumb.jpg"_s));
    for (const char *name : { "cut.jpg", "zero.png", "noise.gif", "bomb.png", "canvas.gif", "forever.ps",
             "fake.pdf", "dangling.jpg" }) {
        const QByteArray line = (d + u'/' + QString::fromLatin1(name) + u": "_s).toUtf8();
        EXPECT_TRUE(err.contains(line)) << name << "\n" << err.constData();
    }
    // Refused from its header, not after a time-out or an exhausted machine.
    EXPECT_TRUE(err.contains((d + u"/canvas.gif: picture too large (55495 × 28532 pixels)"_s).toUtf8()))
        << err.constData();
    // Only the one good thumbnail was written: no partial outputs, no temporary files.
    QStringList made
        = QDir(d).entryList(QStringList { u"*thumb*"_s, u".*"_s }, QDir::Files | QDir::Hidden | QDir::System);
    EXPECT_EQ(made, QStringList { u"good_thumb.jpg"_s });
}

TEST(BadInput, AWorkerPastItsMemoryLimitFailsItsFileWithTheReason)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer's shadow memory rules out a data limit";
#endif
    TempDir dir, home;
    const QString d = dir.path();
    // A GIF whose one frame reaches to (12000, 12000): 144 megapixels, under the header limit, but a
    // 576 MB canvas for the decoder. Beside it a good file, made by the worker that replaces it.
    ASSERT_TRUE(writeBytes(d + u"/a-wide.gif"_s,
        QByteArray::fromBase64(
            "R0lGODlh8AAQAIAAAEdwTCh4yCH/C05FVFNDQVBFMi4wAwEAAAAh+QQFAAAAACwAANAu4C4QAAACEYyP"
            "qcvtD6OctNqLs968+68UADs=")));
    ASSERT_TRUE(writeTestImage(d + u"/b-good.png"_s, 300, 200));

    QByteArray err;
    EXPECT_EQ(runThumbs(home, { u"-j1"_s, u"--memory-limit=256"_s, d }, nullptr, &err), 1);
    EXPECT_TRUE(err.contains((d + u"/a-wide.gif: the decoder gave up (GLib: "_s).toUtf8()))
        << err.constData();
    EXPECT_TRUE(err.contains("failed to allocate")) << err.constData();
    EXPECT_TRUE(QFileInfo::exists(d + u"/b-good_thumb.jpg"_s));

    EXPECT_EQ(runThumbs(home, { u"--memory-limit"_s, u"lots"_s, d }), 2);
}

TEST(BadInput, FFmpegsOwnLogIsQuietUnlessVerbose)
{
    TempDir dir;
    const QString noise = dir.file(u"noise.avi"_s);
    ASSERT_TRUE(writeBytes(noise, QByteArray("RIFF\x10\0\0\0AVI LIST", 16) + QByteArray(5000, '\x33')));
    QByteArray quiet, verbose;
    EXPECT_EQ(runThumbs(dir, { u"--quiet"_s, noise }, nullptr, &quiet), 1);
    // Only the one line that says why the file failed.
    EXPECT_EQ(quiet, (noise + u": no picture in the file\n"_s).toUtf8());
    EXPECT_EQ(runThumbs(dir, { u"--quiet"_s, u"--verbose"_s, noise }, nullptr, &verbose), 1);
    EXPECT_GT(verbose.count('\n'), 1) << verbose.constData();
}

TEST(CommandLineRun, ASecondRunOverAFolderMakesNothingNewAndSkippedIsNotFailed)
{
    for (const QStringList &rule : { QStringList { u"--suffix"_s, u"_t"_s },
             QStringList { u"--prefix"_s, u"t_"_s }, QStringList { u"--folder"_s, u"t"_s } }) {
        TempDir dir;
        ASSERT_TRUE(QDir(dir.path()).mkdir(u"pics"_s));
        ASSERT_TRUE(writeTestImage(dir.file(u"pics/photo.png"_s), 40, 30));
        ASSERT_TRUE(writeBytes(dir.file(u"pics/notes.txt"_s), "not a picture"));
        const QStringList run = rule + QStringList { u"-f"_s, u"png"_s, dir.file(u"pics"_s) };
        QByteArray out, err;
        EXPECT_EQ(runThumbs(dir, run, &out, &err), 0) << err.constData();
        EXPECT_TRUE(err.startsWith("1 thumbnail made, 1 skipped, 0 failed, ")) << err.constData();
        const QStringList made = QDir(dir.file(u"pics"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);

        EXPECT_EQ(runThumbs(dir, QStringList { u"--verbose"_s } + run, &out, &err), 0) << err.constData();
        EXPECT_TRUE(err.startsWith("1 thumbnail made, 2 skipped, 0 failed, "))
            << rule.join(u' ') << err.constData();
        EXPECT_TRUE(out.contains("notes.txt: skipped (not an image, PDF, PostScript or movie file)\n"))
            << out.constData();
        EXPECT_EQ(QDir(dir.file(u"pics"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), made);
    }
}

TEST(CommandLineRun, OnATerminalTheProgressHasItsTotalFromTheStart)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkpath(u"pics/sub"_s));
    for (const char16_t *name : { u"pics/a.png", u"pics/b.png", u"pics/c.png", u"pics/sub/d.png" })
        ASSERT_TRUE(writeTestImage(dir.file(QString::fromUtf16(name)), 40, 30));
    // script(1) gives the program a pseudo-terminal, as a user's shell would.
    const QString command = u"'%1' -j1 '%2'"_s.arg(thumbsExecutable(), dir.file(u"pics"_s));
    QByteArray out;
    ASSERT_EQ(runProgram(u"script"_s, { u"-qec"_s, command, u"/dev/null"_s }, &out, nullptr, 60000,
                  { u"XDG_CONFIG_HOME="_s + dir.file(u"config"_s) }),
        0);
    static const QRegularExpression progress(u"(\\d+)/(\\d+) (\\d+)%"_s);
    int lines = 0;
    for (auto it = progress.globalMatch(QString::fromUtf8(out)); it.hasNext(); ++lines)
        EXPECT_EQ(it.next().captured(2), u"4"_s) << out.constData();
    EXPECT_GE(lines, 1) << out.constData();
    EXPECT_TRUE(out.contains("4 thumbnails made, 0 failed")) << out.constData();
}

TEST(CommandLineRun, ADryRunListsWhatWouldBeMadeAndWritesNothing)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"pics"_s));
    ASSERT_TRUE(writeTestImage(dir.file(u"pics/a.png"_s), 40, 30));
    ASSERT_TRUE(writeBytes(dir.file(u"pics/notes.txt"_s), "not a picture"));
    ASSERT_TRUE(writeBytes(dir.file(u"pics/broken.png"_s), "\x89PNG\r\n\x1a\n garbage"));
    const QStringList before = QDir(dir.file(u"pics"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    QByteArray out, err;
    EXPECT_EQ(
        runThumbs(dir, { u"--dry-run"_s, u"--folder"_s, u"small"_s, dir.file(u"pics"_s) }, &out, &err), 1);
    EXPECT_TRUE(out.contains(
        (dir.file(u"pics/a.png"_s) + u" -> "_s + dir.file(u"pics/small/a.jpg"_s) + u'\n').toUtf8()))
        << out.constData();
    EXPECT_TRUE(out.contains("notes.txt: skipped (not an image, PDF, PostScript or movie file)\n"))
        << out.constData();
    EXPECT_TRUE(err.contains((dir.file(u"pics/broken.png"_s) + u": the decoder failed\n"_s).toUtf8()))
        << err.constData();
    EXPECT_TRUE(err.contains("1 thumbnail made, 1 skipped, 1 failed, ")) << err.constData();
    EXPECT_TRUE(err.contains(" (dry run: nothing written)\n")) << err.constData();
    EXPECT_EQ(QDir(dir.file(u"pics"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
    EXPECT_FALSE(QFileInfo::exists(dir.file(u"cache/thumbnails"_s)));
}

TEST(CommandLineRun, PathsFromAListAndARunTakenUpWhereItStopped)
{
    TempDir dir;
    const QStringList names = { u"a.png"_s, u"b c.png"_s, u"line\nbreak.png"_s };
    for (const QString &name : names)
        ASSERT_TRUE(writeTestImage(dir.file(name), 40, 30));
    // Line by line, and NUL-separated for the name that holds a line break.
    ASSERT_TRUE(writeBytes(
        dir.file(u"list.txt"_s), (dir.file(names[0]) + u'\n' + dir.file(names[1]) + u'\n').toUtf8()));
    ASSERT_TRUE(writeBytes(dir.file(u"list0"_s), (dir.file(names[2]) + QChar(0)).toUtf8()));
    EXPECT_EQ(runThumbs(dir, { u"--quiet"_s, u"--files-from"_s, dir.file(u"list.txt"_s) }), 0);
    EXPECT_EQ(runThumbs(dir, { u"--quiet"_s, u"-0"_s, u"--files-from"_s, dir.file(u"list0"_s) }), 0);
    for (const QString &name : { u"a_thumb.jpg"_s, u"b c_thumb.jpg"_s, u"line\nbreak_thumb.jpg"_s })
        EXPECT_TRUE(QFileInfo::exists(dir.file(name))) << name;

    // Taken up again: only the missing thumbnail and the one older than its source are made.
    ASSERT_TRUE(QFile::remove(dir.file(u"a_thumb.jpg"_s)));
    const QByteArray before = readBytes(dir.file(u"line\nbreak_thumb.jpg"_s));
    QFile source(dir.file(u"b c.png"_s));
    ASSERT_TRUE(source.open(QIODevice::ReadWrite));
    ASSERT_TRUE(
        source.setFileTime(QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime));
    source.close();
    QByteArray out, err;
    EXPECT_EQ(runThumbs(dir,
                  { u"--verbose"_s, u"--skip-up-to-date"_s, dir.file(names[0]), dir.file(names[1]),
                      dir.file(names[2]) },
                  &out, &err),
        0);
    EXPECT_TRUE(err.startsWith("2 thumbnails made, 1 skipped, 0 failed")) << err.constData();
    EXPECT_TRUE(out.contains("break.png: skipped (its thumbnail is up to date)\n")) << out.constData();
    EXPECT_TRUE(QFileInfo::exists(dir.file(u"a_thumb.jpg"_s)));
    EXPECT_EQ(readBytes(dir.file(u"line\nbreak_thumb.jpg"_s)), before);
}

TEST(CommandLineRun, ThumbnailAndIconGivesTheThumbnailAClassicIconAndSaysWhenOneCannotBeStored)
{
    TempDir dir;
    QImage noise(400, 300, QImage::Format_RGB32);
    std::mt19937 random(11);
    for (int y = 0; y < noise.height(); ++y)
        for (int x = 0; x < noise.width(); ++x)
            noise.setPixel(x, y, random() & 0xffffff);
    ASSERT_TRUE(noise.save(dir.file(u"pic.png"_s), "PNG"));
    ASSERT_TRUE(noise.save(dir.file(u"kept.png"_s), "PNG"));
    // The icon family of a noisy thumbnail is too large for an attribute, and this companion is a folder.
    ASSERT_TRUE(QDir().mkdir(dir.file(u"._kept_thumb.png"_s)));
    QByteArray out, err;
    EXPECT_EQ(runThumbs(dir,
                  { u"--verbose"_s, u"--create"_s, u"thumbnail+icon"_s, u"-f"_s, u"png"_s,
                      dir.file(u"pic.png"_s), dir.file(u"kept.png"_s) },
                  &out, &err),
        0)
        << err.constData();
    const QString thumb = dir.file(u"pic_thumb.png"_s);
    EXPECT_TRUE(orvel::hasCustomIconOfFile(thumb));
    const auto fork = orvel::ResourceFork::resourceForkForReadingAtPath(thumb);
    ASSERT_NE(fork, nullptr);
    EXPECT_EQ(fork->dataForType(0x69636e73, -16455).left(4), "icns");
    EXPECT_TRUE(QFile::exists(dir.file(u"._pic_thumb.png"_s)));
    EXPECT_TRUE(err.contains(
        QFile::encodeName(dir.file(u"kept_thumb.png"_s)) + ": the classic custom icon was left out: "))
        << err.constData();
    EXPECT_FALSE(orvel::hasCustomIconOfFile(dir.file(u"kept_thumb.png"_s)));

    // The companion files are passed by on a run over the folder.
    QByteArray again;
    EXPECT_EQ(runThumbs(dir, { u"--verbose"_s, u"--suffix"_s, u"_2"_s, dir.path() }, &out, &again), 0)
        << again.constData();
    EXPECT_TRUE(out.contains("._pic_thumb.png: skipped")) << out.constData();
    EXPECT_FALSE(QFile::exists(dir.file(u"._pic_thumb_2.jpg"_s)));
}

namespace {

/// Every file below folder, relative to it, sorted.
QStringList filesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << QDir(folder).relativeFilePath(it.next());
    files.sort();
    return files;
}

/// Runs orvel-thumbs as runThumbs() does, but as a user who cannot write what the test made
/// read-only: root writes anywhere, so as root the program runs as "nobody", and the folders it
/// must write into (writable, and the program's own) are handed to that user.
int runThumbsUnprivileged(const TempDir &home, const QStringList &args, const QString &writable,
    QByteArray *out = nullptr, QByteArray *err = nullptr)
{
    if (::geteuid() != 0)
        return runThumbs(home, args, out, err);
    constexpr uid_t Nobody = 65534;
    for (const char16_t *name : { u"config", u"cache", u"tmp" })
        QDir().mkpath(home.file(QString::fromUtf16(name)));
    for (const QString &path :
        { home.file(u"config"_s), home.file(u"cache"_s), home.file(u"tmp"_s), writable })
        EXPECT_EQ(::chown(QFile::encodeName(path).constData(), Nobody, Nobody), 0);
    ::chmod(QFile::encodeName(home.path()).constData(), 0755);
    return runProgram(u"setpriv"_s,
        QStringList { u"--reuid=65534"_s, u"--regid=65534"_s, u"--clear-groups"_s, thumbsExecutable() }
            + args,
        out, err, 60000,
        { u"XDG_CONFIG_HOME="_s + home.file(u"config"_s), u"XDG_CACHE_HOME="_s + home.file(u"cache"_s),
            u"TMPDIR="_s + home.file(u"tmp"_s) });
}

} // namespace

TEST(OutputFolder, AReadOnlyTreeIsMirroredUnderItAndASecondRunMakesNothingNew)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkpath(u"pics/sub"_s) && QDir(dir.path()).mkdir(u"w"_s));
    for (const char16_t *name : { u"pics/a.png", u"pics/sub/b.png", u"single.png" })
        ASSERT_TRUE(writeTestImage(dir.file(QString::fromUtf16(name)), 40, 30));
    ASSERT_EQ(
        runProgram(u"chmod"_s, { u"-R"_s, u"a-w"_s, dir.file(u"pics"_s), dir.file(u"single.png"_s) }), 0);
    const QString out = dir.file(u"w/out"_s);
    const QStringList run { u"-f"_s, u"png"_s, u"--output-dir"_s, out, dir.file(u"pics"_s),
        dir.file(u"single.png"_s) };

    QByteArray err;
    EXPECT_EQ(runThumbsUnprivileged(dir, run, dir.file(u"w"_s), nullptr, &err), 0) << err.constData();
    const QStringList made { u"pics/a_thumb.png"_s, u"pics/sub/b_thumb.png"_s, u"single_thumb.png"_s };
    EXPECT_EQ(filesBelow(out), made);
    EXPECT_EQ(filesBelow(dir.file(u"pics"_s)), (QStringList { u"a.png"_s, u"sub/b.png"_s }));
    EXPECT_EQ(fileMode(out + u"/pics/sub"_s) & 0700, 0700u);
    EXPECT_EQ(runThumbsUnprivileged(dir, run, dir.file(u"w"_s), nullptr, &err), 0) << err.constData();
    EXPECT_EQ(filesBelow(out), made);

    // The sub-folder rule, under the output folder, beside each mirrored source.
    EXPECT_EQ(runThumbsUnprivileged(dir,
                  { u"-f"_s, u"png"_s, u"--folder"_s, u"small"_s, u"--output-dir"_s, dir.file(u"w/sub"_s),
                      dir.file(u"pics"_s) },
                  dir.file(u"w"_s), nullptr, &err),
        0)
        << err.constData();
    EXPECT_EQ(
        filesBelow(dir.file(u"w/sub"_s)), (QStringList { u"pics/small/a.png"_s, u"pics/sub/small/b.png"_s }));
    ASSERT_EQ(runProgram(u"chmod"_s, { u"-R"_s, u"u+w"_s, dir.file(u"pics"_s) }), 0);
}

TEST(OutputFolder, InsideTheWalkedTreeItsFilesAreNotInputsAndADryRunNamesItsPaths)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkpath(u"pics/sub"_s));
    for (const char16_t *name : { u"pics/a.png", u"pics/sub/b.png" })
        ASSERT_TRUE(writeTestImage(dir.file(QString::fromUtf16(name)), 40, 30));
    // An empty suffix: the outputs have their sources' names, only the folder tells them apart.
    const QStringList run { u"-f"_s, u"png"_s, u"--suffix="_s, u"--output-dir"_s, dir.file(u"pics/thumbs"_s),
        dir.file(u"pics"_s) };

    QByteArray out, err;
    EXPECT_EQ(runThumbs(dir, QStringList { u"--dry-run"_s } + run, &out, &err), 0) << err.constData();
    EXPECT_TRUE(out.contains(
        (dir.file(u"pics/sub/b.png"_s) + u" -> "_s + dir.file(u"pics/thumbs/pics/sub/b.png"_s) + u'\n')
            .toUtf8()))
        << out.constData();
    EXPECT_FALSE(QFileInfo::exists(dir.file(u"pics/thumbs"_s)));

    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(runThumbs(dir, run, &out, &err), 0) << err.constData();
        EXPECT_EQ(filesBelow(dir.file(u"pics"_s)),
            (QStringList { u"a.png"_s, u"sub/b.png"_s, u"thumbs/pics/a.png"_s, u"thumbs/pics/sub/b.png"_s }))
            << "pass " << pass;
    }
    EXPECT_TRUE(err.startsWith("2 thumbnails made, 2 skipped, 0 failed, ")) << err.constData();

    // Mirrored onto itself, a thumbnail would take its source's place: that file fails instead.
    const QByteArray source = readBytes(dir.file(u"pics/a.png"_s));
    EXPECT_EQ(runThumbs(dir,
                  { u"-f"_s, u"png"_s, u"--suffix="_s, u"--output-dir"_s, dir.path(), u"--max-depth=1"_s,
                      dir.file(u"pics"_s) },
                  &out, &err),
        1);
    EXPECT_TRUE(err.contains("the thumbnail would replace its source")) << err.constData();
    EXPECT_EQ(readBytes(dir.file(u"pics/a.png"_s)), source);
}

namespace {

/// Runs orvel-thumbs as runThumbs() does, in the language that LANG names.
int runThumbsIn(const char *lang, const TempDir &home, const QStringList &args, QByteArray *out = nullptr,
    QByteArray *err = nullptr)
{
    return runProgram(thumbsExecutable(), args, out, err, 60000,
        { u"LANG="_s + QLatin1StringView(lang), u"LC_ALL="_s, u"LC_MESSAGES="_s, u"LANGUAGE="_s,
            u"XDG_CONFIG_HOME="_s + home.file(u"config"_s), u"XDG_CACHE_HOME="_s + home.file(u"cache"_s) });
}

} // namespace

TEST(CommandLineLanguage, GermanAndFrenchFromLangWhetherTheLocaleIsInstalledOrNot)
{
    const struct
    {
        const char *lang;
        const char *usageError;
        const char *helpLine;
        const char *summary;
    } cases[] = {
        { "de_DE.UTF-8", "orvel-thumbs: unbekannte Option --frobnicate\nMehr mit „orvel-thumbs --help“.\n",
            "\n  -h, --help               diese Hilfe ausgeben\n",
            "1 Miniatur erstellt, 0 fehlgeschlagen, " },
        { "fr_FR.UTF-8", "orvel-thumbs: option --frobnicate inconnue\n",
            "\n  -h, --help               afficher cette aide\n", "1 vignette créée, 0 en échec, " },
        { "C", "orvel-thumbs: unknown option --frobnicate\nTry 'orvel-thumbs --help' for more.\n",
            "\n  -h, --help               print this help\n", "1 thumbnail made, 0 failed, " },
    };
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"pic.png"_s), 40, 30));
    for (const auto &c : cases) {
        QByteArray out, err;
        EXPECT_EQ(runThumbsIn(c.lang, dir, { u"--frobnicate"_s, dir.path() }, nullptr, &err), 2);
        EXPECT_TRUE(err.startsWith(c.usageError)) << c.lang << ": " << err.constData();
        EXPECT_EQ(runThumbsIn(c.lang, dir, { u"--help"_s }, &out), 0);
        EXPECT_TRUE(out.contains(c.helpLine)) << c.lang << ": " << out.constData();
        EXPECT_EQ(runThumbsIn(c.lang, dir, { u"--format=png"_s, dir.file(u"pic.png"_s) }, nullptr, &err), 0);
        EXPECT_TRUE(err.startsWith(c.summary)) << c.lang << ": " << err.constData();
    }
}

TEST(CommandLineLanguage, EveryHelpLineFitsEightyColumnsInEveryLanguage)
{
    TempDir dir;
    for (const char *lang : { "C", "de_DE.UTF-8", "fr_FR.UTF-8" }) {
        for (const QStringList &help :
            { QStringList { u"--help"_s }, QStringList { u"defaults"_s, u"--help"_s } }) {
            QByteArray out;
            ASSERT_EQ(runThumbsIn(lang, dir, help, &out), 0) << lang;
            const QStringList lines = QString::fromUtf8(out).split(u'\n');
            EXPECT_GT(lines.size(), 3) << lang;
            for (const QString &line : lines)
                EXPECT_LE(line.size(), 80) << lang << ": " << line.toStdString();
        }
    }
}
