// Tests of the command line: parsing and typing of options, the progress line, the defaults
// subcommand and whole runs of orvel-thumbs as a child process.
#include "app/batch/CommandLine.h"
#include "app/batch/DefaultsCommand.h"
#include "app/batch/Progress.h"
#include "app/shared/WorkerOptions.h"
#include "support/UserDefaults.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::runThumbs;
using orvel::test::TempDir;

namespace {

CommandLineOptions parse(const QStringList &arguments) { return parseCommandLine(arguments); }

struct TypedCase
{
    const char *text;
    QVariant expected;
};

} // namespace

TEST(CommandLine, SetValuesAreTypedByTheirLook)
{
    const TypedCase cases[] = {
        { "5", QVariant(qint64(5)) },
        { "-3", QVariant(qint64(-3)) },
        { "+7", QVariant(qint64(7)) },
        { "0.5", QVariant(0.5) },
        { "1.", QVariant(1.0) },
        { ".25", QVariant(0.25) },
        { "1e3", QVariant(1000.0) },
        { "99999999999999999999", QVariant(1e20) },
        { "true", QVariant(true) },
        { "false", QVariant(false) },
        { "True", QVariant(u"True"_s) },
        { "_thumb", QVariant(u"_thumb"_s) },
        { "1.2.3", QVariant(u"1.2.3"_s) },
        { "12px", QVariant(u"12px"_s) },
        { "", QVariant(QString()) },
    };
    for (const TypedCase &c : cases) {
        const QVariant value = typedSettingValue(QString::fromLatin1(c.text));
        EXPECT_EQ(value.typeId(), c.expected.typeId()) << c.text;
        EXPECT_EQ(value, c.expected) << c.text;
    }
}

TEST(CommandLine, FriendlyOptionsSetTheirKeys)
{
    const CommandLineOptions o = parse({ u"-f"_s, u"PNG"_s, u"--size=64x48"_s, u"-q"_s, u"55"_s,
        u"--interpolation"_s, u"none"_s, u"--folder"_s, u"small"_s, u"--create"_s, u"thumbnail+icon"_s,
        u"--sharpen"_s, u"medium"_s, u"pics"_s });
    ASSERT_TRUE(o.error.isEmpty()) << o.error.toStdString();
    const QVariantMap expected = {
        { u"filetype"_s, qint64(4) },
        { u"width"_s, qint64(64) },
        { u"height"_s, qint64(48) },
        { u"sizing"_s, qint64(0) },
        { u"quality"_s, 0.55 },
        { u"Antialiasing"_s, qint64(1) },
        { u"extensionFormat"_s, qint64(2) },
        { u"extension"_s, u"small"_s },
        { u"create"_s, qint64(1) },
        { u"sharpen"_s, qint64(2) },
    };
    EXPECT_EQ(o.settings, expected);
    EXPECT_EQ(o.paths, QStringList { u"pics"_s });
}

TEST(CommandLine, ScaleSquareSizeAndNamingOptions)
{
    CommandLineOptions o = parse({ u"--scale"_s, u"25"_s, u"--prefix"_s, u"t_"_s, u"x"_s });
    EXPECT_EQ(o.settings.value(u"sizing"_s), QVariant(qint64(1)));
    EXPECT_DOUBLE_EQ(o.settings.value(u"scale"_s).toDouble(), 0.25);
    EXPECT_EQ(o.settings.value(u"extensionFormat"_s), QVariant(qint64(0)));
    EXPECT_EQ(o.settings.value(u"extension"_s), QVariant(u"t_"_s));

    o = parse({ u"-s"_s, u"200"_s, u"--suffix="_s, u"x"_s });
    EXPECT_EQ(o.settings.value(u"width"_s), QVariant(qint64(200)));
    EXPECT_EQ(o.settings.value(u"height"_s), QVariant(qint64(200)));
    EXPECT_EQ(o.settings.value(u"extensionFormat"_s), QVariant(qint64(1)));
    EXPECT_EQ(o.settings.value(u"extension"_s), QVariant(QString()));
}

TEST(CommandLine, LaterSettingsWinAndSetStringKeepsText)
{
    const CommandLineOptions o = parse({ u"--set"_s, u"width=10"_s, u"-s"_s, u"20x30"_s, u"--set"_s,
        u"height=5"_s, u"--set-string"_s, u"extension=2024"_s, u"--set=quality=0.9"_s, u"p"_s });
    ASSERT_TRUE(o.error.isEmpty()) << o.error.toStdString();
    EXPECT_EQ(o.settings.value(u"width"_s), QVariant(qint64(20)));
    EXPECT_EQ(o.settings.value(u"height"_s), QVariant(qint64(5)));
    EXPECT_EQ(o.settings.value(u"extension"_s), QVariant(u"2024"_s));
    EXPECT_EQ(o.settings.value(u"quality"_s), QVariant(0.9));
}

TEST(CommandLine, RunOptionsAndPaths)
{
    CommandLineOptions o
        = parse({ u"-j3"_s, u"--timeout=0"_s, u"--quiet"_s, u"a"_s, u"--"_s, u"-b"_s, u"--verbose"_s });
    ASSERT_TRUE(o.error.isEmpty()) << o.error.toStdString();
    EXPECT_EQ(o.jobs, 3);
    EXPECT_EQ(o.timeoutSeconds, 0);
    EXPECT_TRUE(o.quiet);
    EXPECT_FALSE(o.verbose);
    EXPECT_EQ(o.paths, (QStringList { u"a"_s, u"-b"_s, u"--verbose"_s }));

    o = parse({ u"--jobs"_s, u"2"_s, u"-"_s });
    EXPECT_EQ(o.jobs, 2);
    EXPECT_EQ(o.timeoutSeconds, 120);
    EXPECT_EQ(o.paths, QStringList { u"-"_s });

    EXPECT_EQ(parse({ u"x"_s, u"--help"_s, u"--bogus"_s }).mode, CommandLineOptions::Mode::Help);
    EXPECT_EQ(parse({ u"--version"_s }).mode, CommandLineOptions::Mode::Version);
    o = parse({ u"defaults"_s, u"read"_s });
    EXPECT_EQ(o.mode, CommandLineOptions::Mode::Defaults);
    EXPECT_EQ(o.defaultsArguments, QStringList { u"read"_s });
    EXPECT_EQ(parse({ u"./defaults"_s }).mode, CommandLineOptions::Mode::Run);
}

TEST(CommandLine, UsageErrorsAreReported)
{
    const QList<QStringList> bad = {
        {},
        { u"--quiet"_s },
        { u"--bogus"_s, u"x"_s },
        { u"-z"_s, u"x"_s },
        { u"x"_s, u"--jobs"_s },
        { u"--jobs"_s, u"0"_s, u"x"_s },
        { u"-jmany"_s, u"x"_s },
        { u"--timeout"_s, u"-1"_s, u"x"_s },
        { u"--format"_s, u"webp"_s, u"x"_s },
        { u"--size"_s, u"0x10"_s, u"x"_s },
        { u"--size"_s, u"10x"_s, u"x"_s },
        { u"--scale"_s, u"0"_s, u"x"_s },
        { u"--scale"_s, u"150"_s, u"x"_s },
        { u"--quality"_s, u"101"_s, u"x"_s },
        { u"--interpolation"_s, u"cubic"_s, u"x"_s },
        { u"--create"_s, u"both"_s, u"x"_s },
        { u"--sharpen"_s, u"4"_s, u"x"_s },
        { u"--set"_s, u"width"_s, u"x"_s },
        { u"--set"_s, u"=5"_s, u"x"_s },
        { u"--set"_s, u"widht=5"_s, u"x"_s },
        { u"--quiet=yes"_s, u"x"_s },
        { u"--worker-threads"_s, u"2"_s, u"x"_s },
    };
    for (const QStringList &arguments : bad) {
        const CommandLineOptions o = parse(arguments);
        EXPECT_FALSE(o.error.isEmpty()) << arguments.join(u' ').toStdString();
        EXPECT_EQ(o.mode, CommandLineOptions::Mode::Run);
    }
}

TEST(CommandLine, WorkerArgumentsCarryEverySettingWithItsType)
{
    const QVariantMap settings = {
        { u"width"_s, qint64(-64) },
        { u"scale"_s, 2.0 },
        { u"quality"_s, 0.1 + 0.2 },
        { u"height"_s, 1e300 },
        { u"QuitWhenDone"_s, false },
        { u"extension"_s, u"42"_s },
        { u"sharpen"_s, u"true"_s },
        { u"create"_s, u"a=b c"_s },
    };
    WorkerOptions written;
    written.settings = settings;
    written.threads = 3;
    written.memoryLimitMiB = 512;
    QString error;
    const std::optional<WorkerOptions> o = WorkerOptions::fromArguments(written.toArguments(), &error);
    ASSERT_TRUE(o) << error;
    EXPECT_EQ(o->threads, 3);
    EXPECT_EQ(o->memoryLimitMiB, 512);
    EXPECT_FALSE(o->verbose);
    ASSERT_EQ(o->settings.keys(), settings.keys());
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        EXPECT_EQ(o->settings.value(it.key()).typeId(), it.value().typeId()) << it.key();
        EXPECT_EQ(o->settings.value(it.key()), it.value()) << it.key();
    }
}

TEST(Progress, LineFitsEveryWidthAndShowsWhatItCan)
{
    Progress::Status status;
    status.done = 12;
    status.total = 40;
    status.currentFile = u"/photos/2024/holiday/IMG_20240812_153012_very_long_name.jpg"_s;
    status.elapsedSeconds = 4;
    for (int columns = 1; columns <= 200; ++columns) {
        const QString line = Progress::formatLine(status, columns);
        EXPECT_LT(line.size(), columns) << columns;
        if (columns > 10) {
            EXPECT_TRUE(line.startsWith(u"12/40"_s)) << columns;
        }
    }
    const QString wide = Progress::formatLine(status, 200);
    EXPECT_EQ(wide, u"12/40 [======>             ] 3.0 files/s  IMG_20240812_153012_very_long_name.jpg"_s);
    const QString narrow = Progress::formatLine(status, 50);
    EXPECT_TRUE(narrow.contains(u"..."_s)) << narrow.toStdString();
    EXPECT_TRUE(narrow.endsWith(u"name.jpg"_s)) << narrow.toStdString();
}

TEST(Progress, BarIsFullWhenDoneAndEmptyAtTheStart)
{
    Progress::Status status;
    status.done = 3;
    status.total = 3;
    EXPECT_EQ(Progress::formatLine(status, 80), u"3/3 [====================] 0.0 files/s"_s);
    status.done = 0;
    status.total = 0;
    EXPECT_EQ(Progress::formatLine(status, 80), u"0/0 [                    ] 0.0 files/s"_s);
    status.total = 7;
    status.elapsedSeconds = 0.5;
    status.done = 7 * 10;
    EXPECT_TRUE(Progress::formatLine(status, 80).startsWith(u"70/70 [====="_s)) << "done beyond total";
}

TEST(Progress, ElisionKeepsBothEnds)
{
    EXPECT_EQ(Progress::elideMiddle(u"abcdefghij"_s, 10), u"abcdefghij"_s);
    EXPECT_EQ(Progress::elideMiddle(u"abcdefghij"_s, 9), u"abc...hij"_s);
    EXPECT_EQ(Progress::elideMiddle(u"abcdefghij"_s, 8), u"ab...hij"_s);
    EXPECT_EQ(Progress::elideMiddle(u"abcdefghij"_s, 2), u".."_s);
}

TEST(Progress, SummaryCountsThumbnailsIconsAndFailures)
{
    EXPECT_EQ(Progress::formatSummary(12, 0, 1, 3.24), u"12 thumbnails made, 1 failed, 3.2 s"_s);
    EXPECT_EQ(Progress::formatSummary(1, 0, 0, 0), u"1 thumbnail made, 0 failed, 0.0 s"_s);
    EXPECT_EQ(Progress::formatSummary(0, 0, 2, 1), u"0 thumbnails made, 2 failed, 1.0 s"_s);
    EXPECT_EQ(Progress::formatSummary(0, 1, 0, 1), u"1 icon set, 0 failed, 1.0 s"_s);
    EXPECT_EQ(Progress::formatSummary(2, 3, 0, 1), u"2 thumbnails made, 3 icons set, 0 failed, 1.0 s"_s);
}

TEST(DefaultsCommand, WriteReadAndDeleteOnAStore)
{
    TempDir dir;
    UserDefaults store(dir.file(u"t.conf"_s));
    QString out;
    QString err;
    EXPECT_EQ(DefaultsCommand::run({ u"write"_s, u"width"_s, u"-int"_s, u"64"_s }, store, &out, &err), 0);
    EXPECT_EQ(DefaultsCommand::run({ u"write"_s, u"extension"_s, u"-5"_s }, store, &out, &err), 0);
    EXPECT_EQ(
        DefaultsCommand::run({ u"write"_s, u"QuitWhenDone"_s, u"-bool"_s, u"NO"_s }, store, &out, &err), 0);
    EXPECT_EQ(
        DefaultsCommand::run({ u"write"_s, u"quality"_s, u"-float"_s, u"0.5"_s }, store, &out, &err), 0);
    EXPECT_EQ(store.objectForKey(u"width"_s), QVariant(qint64(64)));
    EXPECT_EQ(store.objectForKey(u"extension"_s), QVariant(u"-5"_s));
    EXPECT_EQ(store.objectForKey(u"QuitWhenDone"_s), QVariant(false));
    EXPECT_EQ(store.objectForKey(u"quality"_s), QVariant(0.5));

    EXPECT_EQ(DefaultsCommand::run({ u"read"_s }, store, &out, &err), 0);
    EXPECT_EQ(out, u"QuitWhenDone = false\nextension = -5\nquality = 0.5\nwidth = 64\n"_s);
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
}

TEST(DefaultsCommand, BadWritesAreUsageErrorsAndChangeNothing)
{
    TempDir dir;
    UserDefaults store(dir.file(u"t.conf"_s));
    const QList<QStringList> bad = {
        {},
        { u"list"_s },
        { u"write"_s, u"width"_s },
        { u"write"_s, u"width"_s, u"-int"_s },
        { u"write"_s, u"width"_s, u"-int"_s, u"12x"_s },
        { u"write"_s, u"width"_s, u"-float"_s, u"inf"_s },
        { u"write"_s, u"width"_s, u"-bool"_s, u"maybe"_s },
        { u"write"_s, u"width"_s, u"-date"_s, u"1"_s },
        { u"write"_s, u"width"_s, u"1"_s, u"2"_s, u"3"_s },
        { u"read"_s, u"a"_s, u"b"_s },
        { u"delete"_s },
    };
    for (const QStringList &arguments : bad) {
        QString out;
        QString err;
        EXPECT_EQ(DefaultsCommand::run(arguments, store, &out, &err), 2)
            << arguments.join(u' ').toStdString();
        EXPECT_TRUE(err.contains(u"usage:"_s)) << err.toStdString();
    }
    EXPECT_TRUE(store.keys().isEmpty());
}

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
    EXPECT_EQ(out, "extension = _small\nwidth = 96\n");

    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"delete"_s, u"width"_s }), 0);
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"read"_s, u"width"_s }, &out, &err), 1);
    EXPECT_TRUE(out.isEmpty());
    EXPECT_TRUE(err.contains("width")) << err.toStdString();
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"delete"_s, u"width"_s }), 1);
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"write"_s, u"width"_s, u"-int"_s, u"wide"_s }), 2);
}

TEST(CommandLineRun, UsageErrorsExitWithTwoAndSayWhy)
{
    TempDir dir;
    QByteArray err;
    EXPECT_EQ(runThumbs(dir, {}, nullptr, &err), 2);
    EXPECT_TRUE(err.contains("no PATH")) << err.toStdString();
    EXPECT_EQ(runThumbs(dir, { u"--frobnicate"_s, dir.path() }, nullptr, &err), 2);
    EXPECT_TRUE(err.contains("--frobnicate")) << err.toStdString();
    EXPECT_EQ(runThumbs(dir, { u"-f"_s, u"webp"_s, dir.path() }, nullptr, &err), 2);
    EXPECT_FALSE(QDir(dir.path()).entryList(QDir::Files).size() > 0);
}

TEST(CommandLineRun, HelpAndVersion)
{
    TempDir dir;
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
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(u"good.png"_s), 40, 30));
    ASSERT_TRUE(orvel::test::writeBytes(dir.file(u"notes.txt"_s), "hello"));
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

TEST(CommandLineRun, SettingsOnTheCommandLineApplyToThisRunOnly)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(u"pic.png"_s), 300, 200));
    QByteArray out;
    EXPECT_EQ(runThumbs(dir,
                  { u"--verbose"_s, u"--set"_s, u"filetype=4"_s, u"--set"_s, u"extension=_t"_s, u"-s"_s,
                      u"60"_s, dir.file(u"pic.png"_s) },
                  &out),
        0);
    EXPECT_EQ(out, QFile::encodeName(dir.file(u"pic_t.png"_s)) + "\n");
    const QImage thumb = orvel::test::loadImage(dir.file(u"pic_t.png"_s));
    EXPECT_EQ(thumb.size(), QSize(60, 40));
    EXPECT_FALSE(QFile::exists(dir.file(u"config/orvel/thumbnails.conf"_s)))
        << "--set must not write the store";

    // The stored settings apply when nothing overrides them.
    EXPECT_EQ(runThumbs(dir, { u"defaults"_s, u"write"_s, u"width"_s, u"-int"_s, u"30"_s }), 0);
    EXPECT_EQ(runThumbs(dir, { u"--quiet"_s, dir.file(u"pic.png"_s) }), 0);
    EXPECT_EQ(orvel::test::loadImage(dir.file(u"pic_thumb.jpg"_s)).size(), QSize(30, 20));
}

TEST(CommandLineRun, TheBatchRunnerLoadsNoDecodersAndNeedsItsEngine)
{
    const QString executable = orvel::test::thumbsExecutable();
    ASSERT_FALSE(executable.isEmpty());
    // The libraries the executable itself needs: none of the decoders' (only its workers load them).
    QByteArray dynamic;
    ASSERT_EQ(orvel::test::runProgram(u"readelf"_s, { u"-d"_s, executable }, &dynamic), 0);
    for (const char *library : { "libvips", "libpoppler", "libavcodec", "libavformat", "libQt6Gui" })
        EXPECT_FALSE(dynamic.contains(library)) << library << " is loaded by the batch runner";
    // The engine links the decoders but not FFmpeg, which it opens when a movie comes.
    QByteArray engine;
    ASSERT_EQ(orvel::test::runProgram(u"readelf"_s,
                  { u"-d"_s, QFileInfo(executable).absolutePath() + u"/orvel-thumbs-engine.so"_s }, &engine),
        0);
    EXPECT_TRUE(engine.contains("libvips")) << engine.constData();
    EXPECT_FALSE(engine.contains("libavcodec")) << engine.constData();

    // A copy without its engine beside it says so once and makes nothing.
    TempDir dir;
    const QString lonely = dir.file(u"bin/orvel-thumbs"_s);
    ASSERT_TRUE(QDir().mkpath(dir.file(u"bin"_s)));
    ASSERT_TRUE(QFile::copy(executable, lonely));
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(u"pic.png"_s), 40, 30));
    QByteArray err;
    EXPECT_EQ(orvel::test::runProgram(lonely, { dir.file(u"pic.png"_s) }, nullptr, &err, 60000,
                  { u"XDG_CONFIG_HOME="_s + dir.file(u"config"_s) }),
        1);
    EXPECT_TRUE(
        err.startsWith("orvel-thumbs: the thumbnail engine orvel-thumbs-engine.so is missing beside "))
        << err.toStdString();
    EXPECT_EQ(err.count('\n'), 1) << err.toStdString();
    EXPECT_FALSE(QFile::exists(dir.file(u"pic_thumb.jpg"_s)));
}
