// Tests of the command line: parsing and typing of options, the progress line, the defaults
// subcommand and whole runs of orvel-thumbs as a child process.
#include "app/CommandLine.h"
#include "app/DefaultsCommand.h"
#include "app/Progress.h"
#include "support/UserDefaults.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/stat.h>

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
        { "True", QVariant(QStringLiteral("True")) },
        { "_thumb", QVariant(QStringLiteral("_thumb")) },
        { "1.2.3", QVariant(QStringLiteral("1.2.3")) },
        { "12px", QVariant(QStringLiteral("12px")) },
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
    const CommandLineOptions o = parse({ QStringLiteral("-f"), QStringLiteral("PNG"),
        QStringLiteral("--size=64x48"), QStringLiteral("-q"), QStringLiteral("55"),
        QStringLiteral("--interpolation"), QStringLiteral("none"), QStringLiteral("--folder"),
        QStringLiteral("small"), QStringLiteral("--create"), QStringLiteral("thumbnail+icon"),
        QStringLiteral("--sharpen"), QStringLiteral("medium"), QStringLiteral("pics") });
    ASSERT_TRUE(o.error.isEmpty()) << o.error.toStdString();
    const QVariantMap expected = {
        { QStringLiteral("filetype"), qint64(4) },
        { QStringLiteral("width"), qint64(64) },
        { QStringLiteral("height"), qint64(48) },
        { QStringLiteral("sizing"), qint64(0) },
        { QStringLiteral("quality"), 0.55 },
        { QStringLiteral("Antialiasing"), qint64(1) },
        { QStringLiteral("extensionFormat"), qint64(2) },
        { QStringLiteral("extension"), QStringLiteral("small") },
        { QStringLiteral("create"), qint64(1) },
        { QStringLiteral("sharpen"), qint64(2) },
    };
    EXPECT_EQ(o.settings, expected);
    EXPECT_EQ(o.paths, QStringList { QStringLiteral("pics") });
}

TEST(CommandLine, ScaleSquareSizeAndNamingOptions)
{
    CommandLineOptions o = parse({ QStringLiteral("--scale"), QStringLiteral("25"),
        QStringLiteral("--prefix"), QStringLiteral("t_"), QStringLiteral("x") });
    EXPECT_EQ(o.settings.value(QStringLiteral("sizing")), QVariant(qint64(1)));
    EXPECT_DOUBLE_EQ(o.settings.value(QStringLiteral("scale")).toDouble(), 0.25);
    EXPECT_EQ(o.settings.value(QStringLiteral("extensionFormat")), QVariant(qint64(0)));
    EXPECT_EQ(o.settings.value(QStringLiteral("extension")), QVariant(QStringLiteral("t_")));

    o = parse(
        { QStringLiteral("-s"), QStringLiteral("200"), QStringLiteral("--suffix="), QStringLiteral("x") });
    EXPECT_EQ(o.settings.value(QStringLiteral("width")), QVariant(qint64(200)));
    EXPECT_EQ(o.settings.value(QStringLiteral("height")), QVariant(qint64(200)));
    EXPECT_EQ(o.settings.value(QStringLiteral("extensionFormat")), QVariant(qint64(1)));
    EXPECT_EQ(o.settings.value(QStringLiteral("extension")), QVariant(QString()));
}

TEST(CommandLine, LaterSettingsWinAndSetStringKeepsText)
{
    const CommandLineOptions o = parse(
        { QStringLiteral("--set"), QStringLiteral("width=10"), QStringLiteral("-s"), QStringLiteral("20x30"),
            QStringLiteral("--set"), QStringLiteral("height=5"), QStringLiteral("--set-string"),
            QStringLiteral("extension=2024"), QStringLiteral("--set=quality=0.9"), QStringLiteral("p") });
    ASSERT_TRUE(o.error.isEmpty()) << o.error.toStdString();
    EXPECT_EQ(o.settings.value(QStringLiteral("width")), QVariant(qint64(20)));
    EXPECT_EQ(o.settings.value(QStringLiteral("height")), QVariant(qint64(5)));
    EXPECT_EQ(o.settings.value(QStringLiteral("extension")), QVariant(QStringLiteral("2024")));
    EXPECT_EQ(o.settings.value(QStringLiteral("quality")), QVariant(0.9));
}

TEST(CommandLine, RunOptionsAndPaths)
{
    CommandLineOptions o
        = parse({ QStringLiteral("-j3"), QStringLiteral("--timeout=0"), QStringLiteral("--quiet"),
            QStringLiteral("a"), QStringLiteral("--"), QStringLiteral("-b"), QStringLiteral("--verbose") });
    ASSERT_TRUE(o.error.isEmpty()) << o.error.toStdString();
    EXPECT_EQ(o.jobs, 3);
    EXPECT_EQ(o.timeoutSeconds, 0);
    EXPECT_TRUE(o.quiet);
    EXPECT_FALSE(o.verbose);
    EXPECT_EQ(
        o.paths, (QStringList { QStringLiteral("a"), QStringLiteral("-b"), QStringLiteral("--verbose") }));

    o = parse({ QStringLiteral("--jobs"), QStringLiteral("2"), QStringLiteral("-") });
    EXPECT_EQ(o.jobs, 2);
    EXPECT_EQ(o.timeoutSeconds, 120);
    EXPECT_EQ(o.paths, QStringList { QStringLiteral("-") });

    EXPECT_EQ(parse({ QStringLiteral("x"), QStringLiteral("--help"), QStringLiteral("--bogus") }).mode,
        CommandLineOptions::Mode::Help);
    EXPECT_EQ(parse({ QStringLiteral("--version") }).mode, CommandLineOptions::Mode::Version);
    o = parse({ QStringLiteral("defaults"), QStringLiteral("read") });
    EXPECT_EQ(o.mode, CommandLineOptions::Mode::Defaults);
    EXPECT_EQ(o.defaultsArguments, QStringList { QStringLiteral("read") });
    EXPECT_EQ(parse({ QStringLiteral("./defaults") }).mode, CommandLineOptions::Mode::Run);
}

TEST(CommandLine, UsageErrorsAreReported)
{
    const QList<QStringList> bad = {
        {},
        { QStringLiteral("--quiet") },
        { QStringLiteral("--bogus"), QStringLiteral("x") },
        { QStringLiteral("-z"), QStringLiteral("x") },
        { QStringLiteral("x"), QStringLiteral("--jobs") },
        { QStringLiteral("--jobs"), QStringLiteral("0"), QStringLiteral("x") },
        { QStringLiteral("-jmany"), QStringLiteral("x") },
        { QStringLiteral("--timeout"), QStringLiteral("-1"), QStringLiteral("x") },
        { QStringLiteral("--format"), QStringLiteral("webp"), QStringLiteral("x") },
        { QStringLiteral("--size"), QStringLiteral("0x10"), QStringLiteral("x") },
        { QStringLiteral("--size"), QStringLiteral("10x"), QStringLiteral("x") },
        { QStringLiteral("--scale"), QStringLiteral("0"), QStringLiteral("x") },
        { QStringLiteral("--scale"), QStringLiteral("150"), QStringLiteral("x") },
        { QStringLiteral("--quality"), QStringLiteral("101"), QStringLiteral("x") },
        { QStringLiteral("--interpolation"), QStringLiteral("cubic"), QStringLiteral("x") },
        { QStringLiteral("--create"), QStringLiteral("both"), QStringLiteral("x") },
        { QStringLiteral("--sharpen"), QStringLiteral("4"), QStringLiteral("x") },
        { QStringLiteral("--set"), QStringLiteral("width"), QStringLiteral("x") },
        { QStringLiteral("--set"), QStringLiteral("=5"), QStringLiteral("x") },
        { QStringLiteral("--set"), QStringLiteral("widht=5"), QStringLiteral("x") },
        { QStringLiteral("--quiet=yes"), QStringLiteral("x") },
        { QStringLiteral("--worker-threads"), QStringLiteral("2"), QStringLiteral("x") },
        { QStringLiteral("--worker"), QStringLiteral("x") },
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
        { QStringLiteral("width"), qint64(-64) },
        { QStringLiteral("scale"), 2.0 },
        { QStringLiteral("quality"), 0.1 + 0.2 },
        { QStringLiteral("height"), 1e300 },
        { QStringLiteral("QuitWhenDone"), false },
        { QStringLiteral("extension"), QStringLiteral("42") },
        { QStringLiteral("sharpen"), QStringLiteral("true") },
        { QStringLiteral("create"), QStringLiteral("a=b c") },
    };
    const CommandLineOptions o = parse(QStringList { QStringLiteral("--worker") } + settingArguments(settings)
        + QStringList { QStringLiteral("--worker-threads"), QStringLiteral("3") });
    ASSERT_TRUE(o.error.isEmpty()) << o.error.toStdString();
    EXPECT_EQ(o.mode, CommandLineOptions::Mode::Worker);
    EXPECT_EQ(o.workerThreads, 3);
    ASSERT_EQ(o.settings.keys(), settings.keys());
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        EXPECT_EQ(o.settings.value(it.key()).typeId(), it.value().typeId()) << it.key().toStdString();
        EXPECT_EQ(o.settings.value(it.key()), it.value()) << it.key().toStdString();
    }
}

TEST(Progress, LineFitsEveryWidthAndShowsWhatItCan)
{
    Progress::Status status;
    status.done = 12;
    status.total = 40;
    status.currentFile = QStringLiteral("/photos/2024/holiday/IMG_20240812_153012_very_long_name.jpg");
    status.elapsedSeconds = 4;
    for (int columns = 1; columns <= 200; ++columns) {
        const QString line = Progress::formatLine(status, columns);
        EXPECT_LT(line.size(), columns) << columns;
        if (columns > 10) {
            EXPECT_TRUE(line.startsWith(QStringLiteral("12/40"))) << columns;
        }
    }
    const QString wide = Progress::formatLine(status, 200);
    EXPECT_EQ(wide,
        QStringLiteral("12/40 [======>             ] 3.0 files/s  IMG_20240812_153012_very_long_name.jpg"));
    const QString narrow = Progress::formatLine(status, 50);
    EXPECT_TRUE(narrow.contains(QStringLiteral("..."))) << narrow.toStdString();
    EXPECT_TRUE(narrow.endsWith(QStringLiteral("name.jpg"))) << narrow.toStdString();
}

TEST(Progress, BarIsFullWhenDoneAndEmptyAtTheStart)
{
    Progress::Status status;
    status.done = 3;
    status.total = 3;
    EXPECT_EQ(Progress::formatLine(status, 80), QStringLiteral("3/3 [====================] 0.0 files/s"));
    status.done = 0;
    status.total = 0;
    EXPECT_EQ(Progress::formatLine(status, 80), QStringLiteral("0/0 [                    ] 0.0 files/s"));
    status.total = 7;
    status.elapsedSeconds = 0.5;
    status.done = 7 * 10;
    EXPECT_TRUE(Progress::formatLine(status, 80).startsWith(QStringLiteral("70/70 [=====")))
        << "done beyond total";
}

TEST(Progress, ElisionKeepsBothEnds)
{
    EXPECT_EQ(Progress::elideMiddle(QStringLiteral("abcdefghij"), 10), QStringLiteral("abcdefghij"));
    EXPECT_EQ(Progress::elideMiddle(QStringLiteral("abcdefghij"), 9), QStringLiteral("abc...hij"));
    EXPECT_EQ(Progress::elideMiddle(QStringLiteral("abcdefghij"), 8), QStringLiteral("ab...hij"));
    EXPECT_EQ(Progress::elideMiddle(QStringLiteral("abcdefghij"), 2), QStringLiteral(".."));
}

TEST(Progress, SummaryCountsThumbnailsIconsAndFailures)
{
    EXPECT_EQ(Progress::formatSummary(12, 0, 1, 3.24), QStringLiteral("12 thumbnails made, 1 failed, 3.2 s"));
    EXPECT_EQ(Progress::formatSummary(1, 0, 0, 0), QStringLiteral("1 thumbnail made, 0 failed, 0.0 s"));
    EXPECT_EQ(Progress::formatSummary(0, 0, 2, 1), QStringLiteral("0 thumbnails made, 2 failed, 1.0 s"));
    EXPECT_EQ(Progress::formatSummary(0, 1, 0, 1), QStringLiteral("1 icon set, 0 failed, 1.0 s"));
    EXPECT_EQ(Progress::formatSummary(2, 3, 0, 1),
        QStringLiteral("2 thumbnails made, 3 icons set, 0 failed, 1.0 s"));
}

TEST(DefaultsCommand, WriteReadAndDeleteOnAStore)
{
    TempDir dir;
    UserDefaults store(dir.file(QStringLiteral("t.conf")));
    QString out;
    QString err;
    EXPECT_EQ(DefaultsCommand::run({ QStringLiteral("write"), QStringLiteral("width"), QStringLiteral("-int"),
                                       QStringLiteral("64") },
                  store, &out, &err),
        0);
    EXPECT_EQ(
        DefaultsCommand::run({ QStringLiteral("write"), QStringLiteral("extension"), QStringLiteral("-5") },
            store, &out, &err),
        0);
    EXPECT_EQ(DefaultsCommand::run({ QStringLiteral("write"), QStringLiteral("QuitWhenDone"),
                                       QStringLiteral("-bool"), QStringLiteral("NO") },
                  store, &out, &err),
        0);
    EXPECT_EQ(DefaultsCommand::run({ QStringLiteral("write"), QStringLiteral("quality"),
                                       QStringLiteral("-float"), QStringLiteral("0.5") },
                  store, &out, &err),
        0);
    EXPECT_EQ(store.objectForKey(QStringLiteral("width")), QVariant(qint64(64)));
    EXPECT_EQ(store.objectForKey(QStringLiteral("extension")), QVariant(QStringLiteral("-5")));
    EXPECT_EQ(store.objectForKey(QStringLiteral("QuitWhenDone")), QVariant(false));
    EXPECT_EQ(store.objectForKey(QStringLiteral("quality")), QVariant(0.5));

    EXPECT_EQ(DefaultsCommand::run({ QStringLiteral("read") }, store, &out, &err), 0);
    EXPECT_EQ(out, QStringLiteral("QuitWhenDone = false\nextension = -5\nquality = 0.5\nwidth = 64\n"));
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
}

TEST(DefaultsCommand, BadWritesAreUsageErrorsAndChangeNothing)
{
    TempDir dir;
    UserDefaults store(dir.file(QStringLiteral("t.conf")));
    const QList<QStringList> bad = {
        {},
        { QStringLiteral("list") },
        { QStringLiteral("write"), QStringLiteral("width") },
        { QStringLiteral("write"), QStringLiteral("width"), QStringLiteral("-int") },
        { QStringLiteral("write"), QStringLiteral("width"), QStringLiteral("-int"), QStringLiteral("12x") },
        { QStringLiteral("write"), QStringLiteral("width"), QStringLiteral("-float"), QStringLiteral("inf") },
        { QStringLiteral("write"), QStringLiteral("width"), QStringLiteral("-bool"),
            QStringLiteral("maybe") },
        { QStringLiteral("write"), QStringLiteral("width"), QStringLiteral("-date"), QStringLiteral("1") },
        { QStringLiteral("write"), QStringLiteral("width"), QStringLiteral("1"), QStringLiteral("2"),
            QStringLiteral("3") },
        { QStringLiteral("read"), QStringLiteral("a"), QStringLiteral("b") },
        { QStringLiteral("delete") },
    };
    for (const QStringList &arguments : bad) {
        QString out;
        QString err;
        EXPECT_EQ(DefaultsCommand::run(arguments, store, &out, &err), 2)
            << arguments.join(u' ').toStdString();
        EXPECT_TRUE(err.contains(QStringLiteral("usage:"))) << err.toStdString();
    }
    EXPECT_TRUE(store.keys().isEmpty());
}

TEST(DefaultsCommand, RoundTripThroughTheExecutableAndTheXdgFolder)
{
    TempDir dir;
    QByteArray out;
    QByteArray err;
    EXPECT_EQ(runThumbs(dir,
                  { QStringLiteral("defaults"), QStringLiteral("write"), QStringLiteral("width"),
                      QStringLiteral("-int"), QStringLiteral("96") }),
        0);
    EXPECT_EQ(runThumbs(dir,
                  { QStringLiteral("defaults"), QStringLiteral("write"), QStringLiteral("extension"),
                      QStringLiteral("_small") }),
        0);
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("config/orvel/thumbnails.conf"))));

    EXPECT_EQ(
        runThumbs(dir, { QStringLiteral("defaults"), QStringLiteral("read"), QStringLiteral("width") }, &out),
        0);
    EXPECT_EQ(out, "96\n");
    EXPECT_EQ(runThumbs(dir, { QStringLiteral("defaults"), QStringLiteral("read") }, &out), 0);
    EXPECT_EQ(out, "extension = _small\nwidth = 96\n");

    EXPECT_EQ(
        runThumbs(dir, { QStringLiteral("defaults"), QStringLiteral("delete"), QStringLiteral("width") }), 0);
    EXPECT_EQ(runThumbs(dir, { QStringLiteral("defaults"), QStringLiteral("read"), QStringLiteral("width") },
                  &out, &err),
        1);
    EXPECT_TRUE(out.isEmpty());
    EXPECT_TRUE(err.contains("width")) << err.toStdString();
    EXPECT_EQ(
        runThumbs(dir, { QStringLiteral("defaults"), QStringLiteral("delete"), QStringLiteral("width") }), 1);
    EXPECT_EQ(runThumbs(dir,
                  { QStringLiteral("defaults"), QStringLiteral("write"), QStringLiteral("width"),
                      QStringLiteral("-int"), QStringLiteral("wide") }),
        2);
}

TEST(CommandLineRun, UsageErrorsExitWithTwoAndSayWhy)
{
    TempDir dir;
    QByteArray err;
    EXPECT_EQ(runThumbs(dir, {}, nullptr, &err), 2);
    EXPECT_TRUE(err.contains("no PATH")) << err.toStdString();
    EXPECT_EQ(runThumbs(dir, { QStringLiteral("--frobnicate"), dir.path() }, nullptr, &err), 2);
    EXPECT_TRUE(err.contains("--frobnicate")) << err.toStdString();
    EXPECT_EQ(runThumbs(dir, { QStringLiteral("-f"), QStringLiteral("webp"), dir.path() }, nullptr, &err), 2);
    EXPECT_FALSE(QDir(dir.path()).entryList(QDir::Files).size() > 0);
}

TEST(CommandLineRun, HelpAndVersion)
{
    TempDir dir;
    QByteArray out;
    EXPECT_EQ(runThumbs(dir, { QStringLiteral("--version") }, &out), 0);
    EXPECT_TRUE(out.startsWith("orvel-thumbs ")) << out.toStdString();
    EXPECT_TRUE(out.endsWith("\n"));
    EXPECT_EQ(runThumbs(dir, { QStringLiteral("-h") }, &out), 0);
    EXPECT_TRUE(out.contains("--jobs")) << out.toStdString();
}

TEST(CommandLineRun, ReportsEachFailureAndExitsWithOne)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("good.png")), 40, 30));
    ASSERT_TRUE(orvel::test::writeBytes(dir.file(QStringLiteral("notes.txt")), "hello"));
    // A pipe would block a decoder until the time limit; nobody ever writes to this one.
    ASSERT_EQ(::mkfifo(QFile::encodeName(dir.file(QStringLiteral("pipe.png"))).constData(), 0600), 0);
    QByteArray out;
    QByteArray err;
    const int status = runThumbs(dir,
        { dir.file(QStringLiteral("good.png")), dir.file(QStringLiteral("notes.txt")),
            dir.file(QStringLiteral("missing.png")), dir.file(QStringLiteral("pipe.png")) },
        &out, &err);
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("good_thumb.jpg"))));
    const QList<QByteArray> lines = err.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 4) << err.toStdString();
    EXPECT_TRUE(lines[0].startsWith(QFile::encodeName(dir.file(QStringLiteral("notes.txt"))) + ": "))
        << err.toStdString();
    EXPECT_EQ(
        lines[1], QFile::encodeName(dir.file(QStringLiteral("missing.png"))) + ": no such file or folder");
    EXPECT_EQ(lines[2], QFile::encodeName(dir.file(QStringLiteral("pipe.png"))) + ": not a regular file");
    EXPECT_TRUE(lines[3].startsWith("1 thumbnail made, 3 failed, ")) << err.toStdString();
    // Not a terminal: no progress bar and no control characters.
    EXPECT_FALSE(err.contains('\r'));
    EXPECT_FALSE(err.contains('\x1b'));
    EXPECT_TRUE(out.isEmpty());

    EXPECT_EQ(
        runThumbs(dir, { QStringLiteral("--quiet"), dir.file(QStringLiteral("good.png")) }, &out, &err), 0);
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
}

TEST(CommandLineRun, SettingsOnTheCommandLineApplyToThisRunOnly)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("pic.png")), 300, 200));
    QByteArray out;
    EXPECT_EQ(runThumbs(dir,
                  { QStringLiteral("--verbose"), QStringLiteral("--set"), QStringLiteral("filetype=4"),
                      QStringLiteral("--set"), QStringLiteral("extension=_t"), QStringLiteral("-s"),
                      QStringLiteral("60"), dir.file(QStringLiteral("pic.png")) },
                  &out),
        0);
    EXPECT_EQ(out, QFile::encodeName(dir.file(QStringLiteral("pic_t.png"))) + "\n");
    const QImage thumb = orvel::test::loadImage(dir.file(QStringLiteral("pic_t.png")));
    EXPECT_EQ(thumb.size(), QSize(60, 40));
    EXPECT_FALSE(QFile::exists(dir.file(QStringLiteral("config/orvel/thumbnails.conf"))))
        << "--set must not write the store";

    // The stored settings apply when nothing overrides them.
    EXPECT_EQ(runThumbs(dir,
                  { QStringLiteral("defaults"), QStringLiteral("write"), QStringLiteral("width"),
                      QStringLiteral("-int"), QStringLiteral("30") }),
        0);
    EXPECT_EQ(runThumbs(dir, { QStringLiteral("--quiet"), dir.file(QStringLiteral("pic.png")) }), 0);
    EXPECT_EQ(orvel::test::loadImage(dir.file(QStringLiteral("pic_thumb.jpg"))).size(), QSize(30, 20));
}

TEST(CommandLineRun, TheBatchRunnerLoadsNoDecodersAndNeedsItsEngine)
{
    const QString executable = orvel::test::thumbsExecutable();
    ASSERT_FALSE(executable.isEmpty());
    // The libraries the executable itself needs: none of the decoders' (only its workers load them).
    QByteArray dynamic;
    ASSERT_EQ(
        orvel::test::runProgram(QStringLiteral("readelf"), { QStringLiteral("-d"), executable }, &dynamic),
        0);
    for (const char *library : { "libvips", "libpoppler", "libavcodec", "libavformat", "libQt6Gui" })
        EXPECT_FALSE(dynamic.contains(library)) << library << " is loaded by the batch runner";
    // The engine links the decoders but not FFmpeg, which it opens when a movie comes.
    QByteArray engine;
    ASSERT_EQ(orvel::test::runProgram(QStringLiteral("readelf"),
                  { QStringLiteral("-d"),
                      QFileInfo(executable).absolutePath() + QStringLiteral("/orvel-thumbs-engine.so") },
                  &engine),
        0);
    EXPECT_TRUE(engine.contains("libvips")) << engine.constData();
    EXPECT_FALSE(engine.contains("libavcodec")) << engine.constData();

    // A copy without its engine beside it says so once and makes nothing.
    TempDir dir;
    const QString lonely = dir.file(QStringLiteral("bin/orvel-thumbs"));
    ASSERT_TRUE(QDir().mkpath(dir.file(QStringLiteral("bin"))));
    ASSERT_TRUE(QFile::copy(executable, lonely));
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("pic.png")), 40, 30));
    QByteArray err;
    EXPECT_EQ(orvel::test::runProgram(lonely, { dir.file(QStringLiteral("pic.png")) }, nullptr, &err, 60000,
                  { QStringLiteral("XDG_CONFIG_HOME=") + dir.file(QStringLiteral("config")) }),
        1);
    EXPECT_TRUE(
        err.startsWith("orvel-thumbs: the thumbnail engine orvel-thumbs-engine.so is missing beside "))
        << err.toStdString();
    EXPECT_EQ(err.count('\n'), 1) << err.toStdString();
    EXPECT_FALSE(QFile::exists(dir.file(QStringLiteral("pic_thumb.jpg"))));
}
