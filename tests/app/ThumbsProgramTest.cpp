// orvel-thumbs from the outside: the program run as a child process with settings, cache and
// temporary folders of its own, its exit status, its report and what it leaves behind; and as a
// file manager's thumbnailer, through the Exec line of its thumbnailer entry, directly and inside
// the sandbox such callers use.
#include "files/FinderInfo.h"
#include "support/NumberFormatter.h"
#include "testlib/MovieMakers.h"
#include "testlib/TestSupport.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvel::test;

TEST(CommandLineRun, StoredSettingsApplyAndTheCommandLineOverridesThemForOneRunOnly)
{
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"pic.png"_s), 300, 200));
    QByteArray out, err;
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"write"_s, u"width"_s, u"-int"_s, u"30"_s }), 0);
    EXPECT_TRUE(QFile::exists(dir.file(u"config/orvel/thumbnails.conf"_s)));
    EXPECT_EQ(runThumbs(dir,
                  { u"--verbose"_s, u"--set"_s, u"filetype=4"_s, u"--set"_s, u"extension=_t"_s, u"-s"_s,
                      u"60"_s, dir.file(u"pic.png"_s) },
                  &out),
        0);
    EXPECT_EQ(out, QFile::encodeName(dir.file(u"pic_t.png"_s)) + "\n");
    EXPECT_EQ(loadImage(dir.file(u"pic_t.png"_s)).size(), QSize(60, 40));
    // --set wrote nothing to the store: the stored width applies to the next run.
    EXPECT_EQ(runThumbs(dir, { u"--quiet"_s, dir.file(u"pic.png"_s) }, &out, &err), 0);
    EXPECT_TRUE(out.isEmpty() && err.isEmpty()) << err.constData();
    EXPECT_EQ(loadImage(dir.file(u"pic_thumb.jpg"_s)).size(), QSize(30, 20));
}

TEST(CommandLineRun, AUsageErrorExitsWithTwoAndSaysWhy)
{
    TempDir dir;
    QByteArray err;
    ASSERT_TRUE(writeBytes(dir.file(u"plain"_s), "a file"));
    EXPECT_EQ(runThumbs(dir, { u"--output-dir"_s, dir.file(u"plain"_s), dir.path() }, nullptr, &err), 2);
    EXPECT_TRUE(err.contains("plain is a file")) << err.toStdString();
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList { u"plain"_s });
}

TEST(CommandLineRun, SummaryShowsTheSizeWrittenInTheUsersNumberFormat)
{
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"a.png"_s), 900, 700));
    const EnvironmentOverride all("LC_ALL", QString());
    const EnvironmentOverride numeric("LC_NUMERIC", u"de_DE.UTF-8"_s);
    const EnvironmentOverride language("LANG", u"de_DE.UTF-8"_s);
    const EnvironmentOverride messages("LC_MESSAGES", u"C"_s); // German numbers, English words
    QByteArray err;
    ASSERT_EQ(runThumbs(dir, { u"--set"_s, u"filetype=4"_s, dir.file(u"a.png"_s) }, nullptr, &err), 0)
        << err.constData();
    const qint64 written = QFileInfo(dir.file(u"a_thumb.png"_s)).size();
    ASSERT_GT(written, 1024);
    const DefaultLocale german(QLocale(QLocale::German, QLocale::Germany));
    const QString size = orvel::NumberFormatter::stringForSize(quint64(written));
    EXPECT_TRUE(QString::fromUtf8(err).trimmed().endsWith(u" s, "_s + size + u" written"_s))
        << err.constData() << " " << size.toStdString();
    EXPECT_TRUE(QString::fromUtf8(err).contains(QRegularExpression(u", \\d+,\\d s, "_s))) << err.constData();
}

TEST(CommandLineRun, TheBatchRunnerLoadsNoDecodersAndNeedsItsEngine)
{
    const QString executable = thumbsExecutable();
    ASSERT_FALSE(executable.isEmpty());
    // None of the decoders' libraries: only the workers load them.
    QByteArray dynamic;
    ASSERT_EQ(runProgram(u"readelf"_s, { u"-d"_s, executable }, &dynamic), 0);
    for (const char *library : { "libvips", "libpoppler", "libavcodec", "libQt6Gui" })
        EXPECT_FALSE(dynamic.contains(library)) << library << " is loaded by the batch runner";
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
    EXPECT_FALSE(QFile::exists(dir.file(u"pic_thumb.jpg"_s)));
}

TEST(BadInput, EveryBrokenFileFailsAloneWithAReasonAndNothingIsLeftBehind)
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
    // Named beside the folder: a missing file, a text (in a folder it would be passed over) and a
    // pipe, which would block a decoder until the time limit (nobody ever writes to it).
    const QString missing = home.file(u"missing.png"_s), notes = home.file(u"notes.txt"_s),
                  pipe = home.file(u"pipe.png"_s);
    ASSERT_TRUE(writeBytes(notes, "hello"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);

    QByteArray out, err;
    const int status
        = runThumbs(home, { u"--timeout"_s, u"3"_s, u"-j"_s, u"2"_s, missing, notes, d, pipe }, &out, &err);
    EXPECT_EQ(status, 1) << err.constData();
    EXPECT_TRUE(out.isEmpty()) << out.constData();
    EXPECT_TRUE(QFileInfo::exists(d + u"/good_thumb.jpg"_s));
    for (const char *name : { "cut.jpg", "zero.png", "noise.gif", "bomb.png", "fake.pdf", "dangling.jpg" }) {
        const QByteArray line = (d + u'/' + QString::fromLatin1(name) + u": "_s).toUtf8();
        EXPECT_TRUE(err.contains(line)) << name << "\n" << err.constData();
    }
    // The canvas is refused from its header, not after a time-out or an exhausted machine.
    const QStringList reasons = { missing + u": no such file or folder"_s,
        notes + u": not an image, PDF, PostScript or movie file"_s, pipe + u": not a regular file"_s,
        d + u"/forever.ps: timed out after 3 s"_s,
        d + u"/canvas.gif: picture too large (55495 × 28532 pixels)"_s };
    for (const QString &reason : reasons)
        EXPECT_TRUE(err.contains((reason + u'\n').toUtf8())) << err.constData();
    const QList<QByteArray> lines = err.trimmed().split('\n');
    EXPECT_TRUE(lines.first().startsWith(QFile::encodeName(missing))) << err.constData();
    EXPECT_TRUE(lines.last().startsWith("1 thumbnail made, 11 failed, ")) << err.constData();
    // Not a terminal: no progress bar and no control characters.
    EXPECT_FALSE(err.contains('\r') || err.contains('\x1b'));
    // Only the good thumbnail was written, and nothing the killed worker started (Ghostscript) runs on.
    QStringList made
        = QDir(d).entryList(QStringList { u"*thumb*"_s, u".*"_s }, QDir::Files | QDir::Hidden | QDir::System);
    EXPECT_EQ(made, QStringList { u"good_thumb.jpg"_s });
    EXPECT_TRUE(QDir(home.file(u"tmp"_s)).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    QDirIterator processes(u"/proc"_s, QDir::Dirs | QDir::NoDotAndDotDot);
    while (processes.hasNext()) {
        const QString cmdline = QString::fromLocal8Bit(readBytes(processes.next() + u"/cmdline"_s));
        EXPECT_FALSE(cmdline.contains(d)) << cmdline.toStdString();
    }
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

TEST(CommandLineRun, ADryRunWritesNothingAndASecondRunMakesNothingNewAndSkippedIsNotFailed)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"pics"_s));
    ASSERT_TRUE(writeTestImage(dir.file(u"pics/a.png"_s), 40, 30));
    ASSERT_TRUE(writeBytes(dir.file(u"pics/notes.txt"_s), "not a picture"));
    ASSERT_TRUE(writeBytes(dir.file(u"pics/broken.png"_s), "\x89PNG\r\n\x1a\n garbage"));
    const auto listing
        = [&] { return QDir(dir.file(u"pics"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot); };
    const QStringList before = listing();
    const QStringList run { u"--verbose"_s, u"--folder"_s, u"small"_s, dir.file(u"pics"_s) };
    QByteArray out, err;
    EXPECT_EQ(runThumbs(dir, QStringList { u"--dry-run"_s } + run, &out, &err), 1);
    EXPECT_TRUE(out.contains(
        (dir.file(u"pics/a.png"_s) + u" -> "_s + dir.file(u"pics/small/a.jpg"_s) + u'\n').toUtf8()))
        << out.constData();
    EXPECT_TRUE(err.contains((dir.file(u"pics/broken.png"_s) + u": the decoder failed\n"_s).toUtf8()))
        << err.constData();
    EXPECT_TRUE(err.contains("1 thumbnail made, 1 skipped, 1 failed, ")) << err.constData();
    EXPECT_TRUE(err.contains(" (dry run: nothing written)\n")) << err.constData();
    EXPECT_EQ(listing(), before);

    // Made, then again: the second run passes the thumbnail by, and only skips: no failure.
    ASSERT_TRUE(QFile::remove(dir.file(u"pics/broken.png"_s)));
    EXPECT_EQ(runThumbs(dir, run, &out, &err), 0) << err.constData();
    const QStringList made = listing();
    EXPECT_EQ(runThumbs(dir, run, &out, &err), 0) << err.constData();
    EXPECT_TRUE(err.startsWith("1 thumbnail made, 2 skipped, 0 failed, ")) << err.constData();
    EXPECT_TRUE(out.contains("notes.txt: skipped (not an image, PDF, PostScript or movie file)\n"))
        << out.constData();
    EXPECT_EQ(listing(), made);
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

TEST(CommandLineRun, ThumbnailAndIconSaysWhenAnIconCannotBeStoredAndPassesItsCompanionFilesBy)
{
    TempDir dir;
    QImage noise(400, 300, QImage::Format_RGB32);
    for (int y = 0; y < noise.height(); ++y)
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(noise.scanLine(y)), noise.width());
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
    EXPECT_TRUE(orvel::hasCustomIconOfFile(dir.file(u"pic_thumb.png"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"._pic_thumb.png"_s)));
    EXPECT_TRUE(err.contains(
        QFile::encodeName(dir.file(u"kept_thumb.png"_s)) + ": the classic custom icon was left out: "))
        << err.constData();
    EXPECT_FALSE(orvel::hasCustomIconOfFile(dir.file(u"kept_thumb.png"_s)));

    // The companion files are passed by on a run over the folder.
    EXPECT_EQ(runThumbs(dir, { u"--verbose"_s, u"--suffix"_s, u"_2"_s, dir.path() }, &out, &err), 0)
        << err.constData();
    EXPECT_TRUE(out.contains("._pic_thumb.png: skipped")) << out.constData();
    EXPECT_FALSE(QFile::exists(dir.file(u"._pic_thumb_2.jpg"_s)));
}

namespace {

/// Runs orvel-thumbs as runThumbs() does, but as a user who cannot write what the test made read-only:
/// as root, as "nobody", with the folders it must write into (writable, its own) handed to that user.
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

    ASSERT_EQ(runProgram(u"chmod"_s, { u"-R"_s, u"u+w"_s, dir.file(u"pics"_s) }), 0);
}

TEST(OutputFolder, InsideTheWalkedTreeItsFilesAreNotInputs)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkpath(u"pics/sub"_s));
    for (const char16_t *name : { u"pics/a.png", u"pics/sub/b.png" })
        ASSERT_TRUE(writeTestImage(dir.file(QString::fromUtf16(name)), 40, 30));
    // An empty suffix: the outputs have their sources' names, only the folder tells them apart.
    const QStringList run { u"-f"_s, u"png"_s, u"--suffix="_s, u"--output-dir"_s, dir.file(u"pics/thumbs"_s),
        dir.file(u"pics"_s) };

    QByteArray out, err;
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(runThumbs(dir, run, &out, &err), 0) << err.constData();
        EXPECT_EQ(filesBelow(dir.file(u"pics"_s)),
            (QStringList { u"a.png"_s, u"sub/b.png"_s, u"thumbs/pics/a.png"_s, u"thumbs/pics/sub/b.png"_s }))
            << "pass " << pass;
    }
    EXPECT_TRUE(err.startsWith("2 thumbnails made, 2 skipped, 0 failed, ")) << err.constData();
}

TEST(CommandLineLanguage, TheProgramSpeaksTheLanguageLangNamesWhetherTheLocaleIsInstalledOrNot)
{
    TempDir dir;
    QByteArray err;
    EXPECT_EQ(runProgram(thumbsExecutable(), { u"--frobnicate"_s }, nullptr, &err, 60000,
                  { u"LANG=de_DE.UTF-8"_s, u"LC_ALL="_s, u"LC_MESSAGES="_s, u"LANGUAGE="_s,
                      u"XDG_CONFIG_HOME="_s + dir.file(u"config"_s) }),
        2);
    EXPECT_TRUE(err.startsWith("orvel-thumbs: unbekannte Option --frobnicate\n")) << err.constData();
}

namespace {

/// The thumbnailer entry's command as it is installed, its programs in the build folder.
QString entryExecLine()
{
    return readKeyFile(u"" ORVEL_DATA_BUILD_DIR "/thumbnailers/org.orvel.Thumbnails.thumbnailer"_s)
        .value(u"Thumbnailer Entry"_s)
        .value(u"Exec"_s)
        .replace(u"@ORVEL_BINDIR@"_s, QFileInfo(thumbsExecutable()).absolutePath());
}

/// The entry's command with its field codes filled in: %s the size, %i the input, %o the output.
QStringList filledExec(const QString &input, const QString &output, int size)
{
    QStringList command;
    for (const QString &word : entryExecLine().split(u' ', Qt::SkipEmptyParts)) {
        if (word == u"%s")
            command << QString::number(size);
        else if (word == u"%i")
            command << input;
        else if (word == u"%o")
            command << output;
        else
            command << word;
    }
    return command;
}

/// Why no sandbox can be made here; empty when bwrap runs.
QString sandboxUnavailable()
{
    static const QString why = [] {
        if (QStandardPaths::findExecutable(u"bwrap"_s).isEmpty())
            return u"bwrap is not installed (package bubblewrap)"_s;
        QByteArray err;
        if (runProgram(u"bwrap"_s,
                { u"--ro-bind"_s, u"/"_s, u"/"_s, u"--unshare-all"_s, u"--die-with-parent"_s, u"true"_s },
                nullptr, &err)
            != 0)
            return u"bwrap cannot make namespaces here: "_s + QString::fromUtf8(err.trimmed());
        return QString();
    }();
    return why;
}

/// Wraps command as a desktop's thumbnail factory does: the whole file system read-only, a private
/// /tmp, the source bound read-only into it under a name of the caller's (its extension kept), the
/// output's folder writable, no network, no session bus, no home, a bare environment.
QStringList sandboxed(
    const QString &source, const QString &inside, const QString &outputFolder, const QStringList &command)
{
    QStringList arguments { u"--ro-bind"_s, u"/"_s, u"/"_s, u"--dev"_s, u"/dev"_s, u"--proc"_s, u"/proc"_s,
        u"--tmpfs"_s, u"/tmp"_s, u"--ro-bind"_s, source, inside, u"--bind"_s, outputFolder, outputFolder,
        u"--unshare-all"_s, u"--die-with-parent"_s, u"--clearenv"_s, u"--setenv"_s, u"PATH"_s,
        u"/usr/bin:/bin"_s, u"--setenv"_s, u"LANG"_s, u"C.UTF-8"_s, u"--chdir"_s, u"/"_s };
    // A sanitizer build's options belong to the build, not to the environment being modelled.
    for (const char *name : { "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS" }) {
        if (qEnvironmentVariableIsSet(name))
            arguments << u"--setenv"_s << QString::fromLatin1(name) << qEnvironmentVariable(name);
    }
    return arguments + command;
}

/// A source, the size asked for, the thumbnail's size and its centre's colour (none: check the alpha ramp).
struct Source
{
    const char *name;
    std::function<bool(const QString &)> make;
    int size;
    QSize expected;
    QColor centre;
};

const Source Sources[] = {
    { "picture.png", [](const QString &p) { return writeTestImage(p, 300, 200, true); }, 128, { 128, 85 },
        {} },
    { "small.jpg", [](const QString &p) { return writeSolidImage(p, 40, 30, QColor(200, 30, 30)); }, 256,
        { 40, 30 }, QColor(200, 30, 30) },
    { "page.pdf", [](const QString &p) { return writeTestPdf(p, 100, 50, QColor(30, 30, 200)); }, 256,
        { 256, 128 }, QColor(30, 30, 200) },
    { "drawing.eps", [](const QString &p) { return writeTestEps(p, 60, 40, QColor(30, 160, 30)); }, 128,
        { 128, 85 }, QColor(30, 160, 30) },
    { "movie.mp4", [](const QString &p) { return writeSecondsMovie(p, 2.0, 160, 120); }, 128, { 128, 96 },
        colourOfSecond(1) },
};

void PrintTo(const Source &source, std::ostream *os) { *os << source.name; }

class ThumbnailerSource : public testing::TestWithParam<std::tuple<Source, bool>>
{
};

TEST_P(ThumbnailerSource, MakesOnePngOfAtMostTheSizeAndNothingElse)
{
    const auto &[source, inSandbox] = GetParam();
    if (inSandbox && !sandboxUnavailable().isEmpty())
        GTEST_SKIP() << sandboxUnavailable();
    TempDir dir;
    const QString input = dir.file(QString::fromLatin1(source.name));
    ASSERT_TRUE(source.make(input)) << source.name;
    ASSERT_TRUE(QDir().mkpath(dir.file(u"out"_s)));
    const QString output = dir.file(u"out/thumbnail.png"_s);
    const QString inside = inSandbox ? u"/tmp/file-to-thumbnail."_s + QFileInfo(input).suffix() : input;
    QStringList command = filledExec(inside, output, source.size);
    if (inSandbox)
        command = QStringList { u"bwrap"_s } + sandboxed(input, inside, dir.file(u"out"_s), command);

    QByteArray out, err;
    ASSERT_EQ(runProgram(command.first(), command.mid(1), &out, &err), 0) << err.toStdString();
    EXPECT_TRUE(out.isEmpty() && err.isEmpty()) << out.toStdString() << err.toStdString();
    EXPECT_TRUE(readBytes(output).startsWith("\x89PNG\r\n\x1a\n"));
    const QImage thumbnail = loadImage(output);
    ASSERT_EQ(thumbnail.size(), source.expected);
    const int w = thumbnail.width(), h = thumbnail.height();
    const QColor middle = thumbnail.pixelColor(w / 2, h / 2);
    EXPECT_TRUE(source.centre.isValid()
            ? colourNear(middle, source.centre, 40)
            : qAlpha(thumbnail.pixel(0, h / 2)) > 240 && qAlpha(thumbnail.pixel(w - 1, h / 2)) < 16)
        << middle.name(QColor::HexArgb).toStdString();
    EXPECT_EQ(QDir(dir.file(u"out"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList { u"thumbnail.png"_s });
}

INSTANTIATE_TEST_SUITE_P(Kinds, ThumbnailerSource,
    testing::Combine(testing::ValuesIn(Sources), testing::Bool()),
    [](const testing::TestParamInfo<ThumbnailerSource::ParamType> &info) {
        std::string name = std::get<0>(info.param).name;
        std::replace(name.begin(), name.end(), '.', '_');
        return name + (std::get<1>(info.param) ? "_Sandboxed" : "_Direct");
    });

TEST(Thumbnailer, ABadSourceOrPlaceExitsNonZeroAndLeavesNoOutput)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file(u"words.png"_s), "not a picture at all"));
    ASSERT_TRUE(writeBytes(dir.file(u"bomb.png"_s), pngDeclaring(300000, 300000)));
    ASSERT_TRUE(writeTestImage(dir.file(u"good.png"_s), 50, 50));
    ASSERT_TRUE(QDir().mkpath(dir.file(u"out"_s)));
    // Broken, hostile, missing and not a file; then a good source with nowhere to go.
    const std::pair<QString, QString> cases[] = { { u"words.png"_s, u"out/t.png"_s },
        { u"bomb.png"_s, u"out/t.png"_s }, { u"missing.png"_s, u"out/t.png"_s }, { u"out"_s, u"out/t.png"_s },
        { u"good.png"_s, u"no/t.png"_s } };
    for (const auto &[source, output] : cases) {
        const QStringList command = filledExec(dir.file(source), dir.file(output), 128);
        QByteArray out, err;
        EXPECT_EQ(runProgram(command.first(), command.mid(1), &out, &err), 1) << source << " to " << output;
        EXPECT_TRUE(err.startsWith(QFile::encodeName(u"orvel-thumbs: "_s + dir.file(source) + u": "_s)))
            << err.toStdString();
        EXPECT_EQ(err.count('\n'), 1) << err.toStdString();
        EXPECT_TRUE(out.isEmpty());
    }
    EXPECT_TRUE(QDir(dir.file(u"out"_s)).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST(Thumbnailer, ReadsNoSettingsAndWritesNoCacheOrIcon)
{
    TempDir home, dir;
    // Stored settings that would make a small JPEG beside the source, and icons in the cache.
    for (const QStringList &write :
        { QStringList { u"filetype"_s, u"-int"_s, u"3"_s }, QStringList { u"create"_s, u"-int"_s, u"1"_s } })
        ASSERT_EQ(runThumbs(home, QStringList { u"defaults"_s, u"write"_s } + write), 0);
    ASSERT_TRUE(writeTestImage(dir.file(u"photo name.png"_s), 400, 100));
    // A file URI (%u), as some file managers hand the source over.
    const QString uri = QUrl::fromLocalFile(dir.file(u"photo name.png"_s)).toString(QUrl::FullyEncoded);
    QByteArray err;
    EXPECT_EQ(
        runThumbs(home, { u"--thumbnailer"_s, u"-s"_s, u"200"_s, uri, dir.file(u"t.png"_s) }, nullptr, &err),
        0)
        << err.toStdString();
    EXPECT_EQ(loadImage(dir.file(u"t.png"_s)).size(), QSize(200, 50));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), (QStringList { u"photo name.png"_s, u"t.png"_s }));
    EXPECT_FALSE(QFileInfo::exists(home.file(u"cache/thumbnails"_s)));
}

} // namespace
