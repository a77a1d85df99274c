// The batch runner in this process: parsing and typing of options, the worker options, the progress
// line, the defaults subcommand, and the settings schema against its help and the README.
#include "app/batch/CommandLine.h"
#include "app/batch/DefaultsCommand.h"
#include "app/batch/Progress.h"
#include "app/shared/LocalizedText.h"
#include "app/shared/ThumbnailSettings.h"
#include "app/shared/WorkerOptions.h"
#include "support/UserDefaults.h"

#include "testlib/TestSupport.h"

#include <QMap>
#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;

TEST(CommandLine, SetValuesAreTypedByTheirLook)
{
    const struct
    {
        const char *text;
        QVariant expected;
    } cases[] = {
        { "5", QVariant(qint64(5)) },
        { "-3", QVariant(qint64(-3)) },
        { "0.5", QVariant(0.5) },
        { ".25", QVariant(0.25) },
        { "1e3", QVariant(1000.0) },
        { "99999999999999999999", QVariant(1e20) },
        { "true", QVariant(true) },
        { "True", QVariant(u"True"_s) },
        { "_thumb", QVariant(u"_thumb"_s) },
        { "12px", QVariant(u"12px"_s) },
        { "", QVariant(QString()) },
    };
    for (const auto &c : cases) {
        const QVariant value = typedSettingValue(QString::fromLatin1(c.text));
        EXPECT_EQ(value.typeId(), c.expected.typeId()) << c.text;
        EXPECT_EQ(value, c.expected) << c.text;
    }
}

TEST(CommandLine, OptionsSetTheirKeysAndTheLastOneWins)
{
    const QList<QPair<QStringList, QVariantMap>> cases = {
        { { u"-f"_s, u"PNG"_s, u"--size=64x48"_s, u"-Q"_s, u"55"_s, u"--interpolation"_s, u"none"_s,
              u"--folder"_s, u"small"_s, u"--create"_s, u"thumbnail+icon"_s, u"--sharpen"_s, u"medium"_s,
              u"pics"_s },
            { { u"filetype"_s, qint64(4) }, { u"width"_s, qint64(64) }, { u"height"_s, qint64(48) },
                { u"sizing"_s, qint64(0) }, { u"quality"_s, 0.55 }, { u"Antialiasing"_s, qint64(1) },
                { u"extensionFormat"_s, qint64(2) }, { u"extension"_s, u"small"_s },
                { u"create"_s, qint64(1) }, { u"sharpen"_s, qint64(2) } } },
        { { u"--scale"_s, u"25"_s, u"--prefix"_s, u"t_"_s, u"x"_s },
            { { u"sizing"_s, qint64(1) }, { u"scale"_s, 0.25 }, { u"extensionFormat"_s, qint64(0) },
                { u"extension"_s, u"t_"_s } } },
        { { u"-s"_s, u"200"_s, u"--suffix="_s, u"x"_s },
            { { u"width"_s, qint64(200) }, { u"height"_s, qint64(200) }, { u"sizing"_s, qint64(0) },
                { u"extensionFormat"_s, qint64(1) }, { u"extension"_s, QString() } } },
        { { u"--set"_s, u"width=10"_s, u"-s"_s, u"20x30"_s, u"--set"_s, u"height=5"_s, u"--set-string"_s,
              u"extension=2024"_s, u"--set=quality=0.9"_s, u"p"_s },
            { { u"width"_s, qint64(20) }, { u"height"_s, qint64(5) }, { u"sizing"_s, qint64(0) },
                { u"extension"_s, u"2024"_s }, { u"quality"_s, 0.9 } } },
    };
    for (const auto &[arguments, expected] : cases) {
        const CommandLineOptions o = parseCommandLine(arguments);
        ASSERT_TRUE(o.error.isEmpty()) << o.error;
        EXPECT_EQ(o.settings, expected) << arguments.join(u' ');
        for (auto it = expected.cbegin(); it != expected.cend(); ++it)
            EXPECT_EQ(o.settings.value(it.key()).typeId(), it.value().typeId()) << it.key();
    }
}

TEST(CommandLine, RunOptionsAndPaths)
{
    CommandLineOptions o = parseCommandLine(
        { u"-j3"_s, u"--timeout=0"_s, u"--quiet"_s, u"a"_s, u"--"_s, u"-b"_s, u"--verbose"_s });
    ASSERT_TRUE(o.error.isEmpty()) << o.error.toStdString();
    EXPECT_EQ(o.jobs, 3);
    EXPECT_EQ(o.timeoutSeconds, 0);
    EXPECT_TRUE(o.quiet);
    EXPECT_FALSE(o.verbose);
    EXPECT_EQ(o.paths, (QStringList { u"a"_s, u"-b"_s, u"--verbose"_s }));

    o = parseCommandLine({ u"--jobs"_s, u"2"_s, u"-"_s });
    EXPECT_EQ(o.jobs, 2);
    EXPECT_EQ(o.timeoutSeconds, 120);
    EXPECT_EQ(o.paths, QStringList { u"-"_s });

    EXPECT_EQ(parseCommandLine({ u"x"_s, u"--help"_s, u"--bogus"_s }).mode, CommandLineOptions::Mode::Help);
    EXPECT_EQ(parseCommandLine({ u"--max-depth=1"_s, u"x"_s }).maxDepth, 1);
    EXPECT_EQ(parseCommandLine({ u"x"_s }).maxDepth, -1);
    // The short options GNU tools have: -q quiet, -v verbose, -V version (-Q is the quality).
    o = parseCommandLine({ u"-q"_s, u"-v"_s, u"x"_s });
    EXPECT_TRUE(o.quiet && o.verbose);
    EXPECT_EQ(parseCommandLine({ u"-V"_s }).mode, CommandLineOptions::Mode::Version);
    o = parseCommandLine({ u"defaults"_s, u"read"_s });
    EXPECT_EQ(o.mode, CommandLineOptions::Mode::Defaults);
    EXPECT_EQ(o.defaultsArguments, QStringList { u"read"_s });
    EXPECT_EQ(parseCommandLine({ u"./defaults"_s }).mode, CommandLineOptions::Mode::Run);
}

TEST(CommandLine, TheThumbnailerModeTakesAPathOrAFileUriAndASize)
{
    CommandLineOptions o = parseCommandLine({ u"--thumbnailer"_s, u"-s"_s, u"300x200"_s,
        u"file:///home/u/My%20Pictures/%C3%A9t%C3%A9.jpg"_s, u"/tmp/out.png"_s });
    ASSERT_EQ(o.mode, CommandLineOptions::Mode::Thumbnailer) << o.error.toStdString();
    EXPECT_EQ(o.thumbnailerSource, u"/home/u/My Pictures/été.jpg"_s);
    EXPECT_EQ(o.thumbnailerOutput, u"/tmp/out.png"_s);
    EXPECT_EQ(o.thumbnailerSize, 300);
    // A path stays a path, whatever it looks like.
    o = parseCommandLine({ u"a:b.png"_s, u"out.png"_s, u"--thumbnailer"_s });
    EXPECT_EQ(o.thumbnailerSource, u"a:b.png"_s);
    EXPECT_EQ(o.thumbnailerSize, CommandLineOptions::DefaultThumbnailerSize);
}

TEST(CommandLine, UsageErrorsAreReported)
{
    const QList<QPair<QStringList, QString>> bad = {
        { { u"--quiet"_s }, u"no PATH given"_s },
        { { u"--bogus"_s, u"x"_s }, u"unknown option --bogus"_s },
        { { u"x"_s, u"--jobs"_s }, u"--jobs needs a value"_s },
        { { u"-jmany"_s, u"x"_s }, u"invalid value 'many' for --jobs (expected 1 to 256)"_s },
        { { u"--timeout"_s, u"-1"_s, u"x"_s },
            u"invalid value '-1' for --timeout (expected whole seconds, 0 for no limit)"_s },
        { { u"--format"_s, u"webp"_s, u"x"_s },
            u"invalid value 'webp' for --format (expected tiff, tif, bmp, gif, jpeg, jpg, png, jp2, jpeg2000)"_s },
        { { u"--size"_s, u"10x"_s, u"x"_s },
            u"invalid value '10x' for --size (expected WIDTHxHEIGHT or SIZE in pixels)"_s },
        { { u"--scale"_s, u"150"_s, u"x"_s },
            u"invalid value '150' for --scale (expected a percentage above 0, at most 100)"_s },
        { { u"--quality"_s, u"101"_s, u"x"_s }, u"invalid value '101' for --quality (expected 0 to 100)"_s },
        { { u"--set"_s, u"=5"_s, u"x"_s }, u"--set needs KEY=VALUE, not '=5'"_s },
        { { u"--set"_s, u"widht=5"_s, u"x"_s },
            u"unknown setting 'widht' (the settings are filetype, width, height, sizing, scale, quality, "
            u"Antialiasing, sharpen, extension, extensionFormat, create, QuitWhenDone)"_s },
        { { u"--quiet=yes"_s, u"x"_s }, u"--quiet=yes takes no value"_s },
        // Values are checked against the key's type and range.
        { { u"--set"_s, u"filetype=png"_s, u"x"_s },
            u"filetype takes a whole number from 0 to 5, not 'png' (try --format png)"_s },
        { { u"--set"_s, u"quality=1.5"_s, u"x"_s }, u"quality takes a number from 0 to 1, not '1.5'"_s },
        { { u"--set"_s, u"QuitWhenDone=yes"_s, u"x"_s }, u"QuitWhenDone takes true or false, not 'yes'"_s },
        // The thumbnailer mode takes a source, an output and a size, and nothing it would not use.
        { { u"--thumbnailer"_s, u"--files-from"_s, u"list"_s, u"a"_s, u"b"_s },
            u"--thumbnailer takes two paths, SOURCE and OUTPUT"_s },
        { { u"--thumbnailer"_s, u"--format"_s, u"png"_s, u"a"_s, u"b"_s },
            u"--thumbnailer reads no settings; only -s sets its size"_s },
        { { u"--thumbnailer"_s, u"file://host/a.png"_s, u"b"_s },
            u"--thumbnailer reads local files only, not file://host/a.png"_s },
    };
    for (const auto &[arguments, error] : bad) {
        const CommandLineOptions o = parseCommandLine(arguments);
        EXPECT_EQ(o.error, error) << arguments.join(u' ');
        EXPECT_EQ(o.mode, CommandLineOptions::Mode::Run);
    }
}

TEST(CommandLine, WorkerArgumentsCarryEverySettingWithItsType)
{
    const QVariantMap settings = { { u"width"_s, qint64(-64) }, { u"quality"_s, 0.1 + 0.2 },
        { u"height"_s, 1e300 }, { u"QuitWhenDone"_s, false }, { u"extension"_s, u"42"_s },
        { u"sharpen"_s, u"true"_s }, { u"create"_s, u"a=b c"_s } };
    WorkerOptions written;
    written.settings = settings;
    written.threads = 3;
    written.memoryLimitMiB = 512;
    QString error;
    const std::optional<WorkerOptions> o = WorkerOptions::fromArguments(written.toArguments(), &error);
    ASSERT_TRUE(o) << error;
    EXPECT_EQ(o->threads, 3);
    EXPECT_EQ(o->memoryLimitMiB, 512);
    ASSERT_EQ(o->settings.keys(), settings.keys());
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        EXPECT_EQ(o->settings.value(it.key()).typeId(), it.value().typeId()) << it.key();
        EXPECT_EQ(o->settings.value(it.key()), it.value()) << it.key();
    }
}

TEST(Progress, LineFitsEveryWidthAndShowsWhatItCanFromStartToEnd)
{
    const orvel::test::DefaultLocale c(QLocale::c());
    Progress::Status status;
    status.done = 12;
    status.total = 40;
    status.totalKnown = true;
    status.currentFile = u"/photos/2024/holiday/IMG_20240812_153012_very_long_name.jpg"_s;
    status.elapsedSeconds = 4;
    for (int columns = 1; columns <= 200; ++columns) {
        const QString line = Progress::formatLine(status, columns);
        EXPECT_LT(line.size(), columns) << columns;
        if (columns > 10) {
            EXPECT_TRUE(line.startsWith(u"12/40"_s)) << columns;
        }
    }
    // 12 of 40 in 4 s: 3 files a second, 28 to go in 9 s.
    EXPECT_EQ(Progress::formatLine(status, 200),
        u"12/40 30% [======>             ] 3.0 files/s 0:09 left  IMG_20240812_153012_very_long_name.jpg"_s);
    // Without a total counted ahead: a count and no bar.
    status.totalKnown = false;
    EXPECT_EQ(
        Progress::formatLine(status, 80), u"12 done 3.0 files/s  IMG_20240812_153012_very_long_name.jpg"_s);

    // The bar is full when done (even past the total) and empty at the start.
    status = {};
    status.totalKnown = true;
    EXPECT_EQ(Progress::formatLine(status, 80), u"0/0 100% [                    ] 0.0 files/s"_s);
    status.total = 4000;
    status.elapsedSeconds = 60;
    status.done = 40;
    EXPECT_EQ(
        Progress::formatLine(status, 80), u"40/4000 1% [>                   ] 0.7 files/s 1:39:00 left"_s);
    status.total = 7;
    status.done = 7 * 10;
    EXPECT_TRUE(Progress::formatLine(status, 80).startsWith(u"70/70 100% [====="_s)) << "done beyond total";

    EXPECT_EQ(Progress::elideMiddle(u"abcdefghij"_s, 10), u"abcdefghij"_s);
    EXPECT_EQ(Progress::elideMiddle(u"abcdefghij"_s, 9), u"abc...hij"_s);
    EXPECT_EQ(Progress::elideMiddle(u"abcdefghij"_s, 2), u".."_s);
}

TEST(Progress, SummaryCountsThumbnailsIconsAndFailures)
{
    const orvel::test::DefaultLocale c(QLocale::c());
    EXPECT_EQ(
        Progress::formatSummary(12, 0, 2, 1, 3.24), u"12 thumbnails made, 2 skipped, 1 failed, 3.2 s"_s);
    EXPECT_EQ(Progress::formatSummary(0, 1, 0, 0, 1), u"1 icon set, 0 failed, 1.0 s"_s);
    EXPECT_EQ(Progress::formatSummary(2, 3, 0, 0, 1), u"2 thumbnails made, 3 icons set, 0 failed, 1.0 s"_s);
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

    EXPECT_EQ(DefaultsCommand::run({ u"write"_s, u"--force"_s, u"zoom"_s, u"2"_s }, store, &out, &err), 0);

    // Every setting in effect, the defaults marked, then the other keys stored.
    EXPECT_EQ(DefaultsCommand::run({ u"read"_s }, store, &out, &err), 0);
    EXPECT_EQ(out,
        u"filetype = 3 (default)\nwidth = 64\nheight = 128 (default)\nsizing = 0 (default)\n"
        u"scale = 1.0 (default)\nquality = 0.5\nAntialiasing = 3 (default)\nsharpen = 0 (default)\n"
        u"extension = -5\nextensionFormat = 1 (default)\ncreate = 0 (default)\nQuitWhenDone = false\nzoom = 2\n"_s);
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
    // A key that is not set: read and delete answer 1 and say which.
    EXPECT_EQ(DefaultsCommand::run({ u"delete"_s, u"width"_s }, store, &out, &err), 0);
    for (const char16_t *verb : { u"read", u"delete" }) {
        err.clear();
        EXPECT_EQ(DefaultsCommand::run({ QString::fromUtf16(verb), u"width"_s }, store, &out, &err), 1);
        EXPECT_TRUE(err.contains(u"the key width is not set"_s)) << err;
    }
}

TEST(DefaultsCommand, BadWritesAreUsageErrorsAndChangeNothing)
{
    TempDir dir;
    UserDefaults store(dir.file(u"t.conf"_s));
    // Malformed commands show the usage; the thumbnail settings take only values of their type and
    // range, and other keys need --force.
    const QList<QPair<QStringList, QString>> bad = {
        { {}, u"Usage:"_s },
        { { u"list"_s }, u"Usage:"_s },
        { { u"write"_s, u"width"_s, u"-int"_s }, u"Usage:"_s },
        { { u"write"_s, u"width"_s, u"-int"_s, u"12x"_s }, u"Usage:"_s },
        { { u"write"_s, u"width"_s, u"-float"_s, u"inf"_s }, u"Usage:"_s },
        { { u"write"_s, u"width"_s, u"-bool"_s, u"maybe"_s }, u"Usage:"_s },
        { { u"write"_s, u"width"_s, u"-date"_s, u"1"_s }, u"Usage:"_s },
        { { u"read"_s, u"a"_s, u"b"_s }, u"Usage:"_s },
        { { u"write"_s, u"colour"_s, u"red"_s },
            u"defaults: unknown setting 'colour' (write it anyway with defaults write --force)\n"_s },
        { { u"write"_s, u"width"_s, u"-string"_s, u"abc"_s },
            u"defaults: width takes a whole number from 1 to 1000000, not 'abc'\n"_s },
        { { u"write"_s, u"create"_s, u"-int"_s, u"3"_s },
            u"defaults: create takes a whole number from 0 to 2, not '3'\n"_s },
    };
    for (const auto &[arguments, reason] : bad) {
        QString out, err;
        EXPECT_EQ(DefaultsCommand::run(arguments, store, &out, &err), 2) << arguments.join(u' ');
        EXPECT_TRUE(err.contains(reason)) << err;
    }
    EXPECT_TRUE(store.keys().isEmpty());
    QString out, err;
    EXPECT_EQ(
        DefaultsCommand::run({ u"write"_s, u"--force"_s, u"colour"_s, u"red"_s }, store, &out, &err), 0);
    EXPECT_EQ(DefaultsCommand::run({ u"write"_s, u"width"_s, u"64"_s }, store, &out, &err), 0);
    EXPECT_EQ(store.objectForKey(u"colour"_s), QVariant(u"red"_s));
    EXPECT_EQ(store.objectForKey(u"width"_s), QVariant(qint64(64))); // text read by the key's type
}

TEST(SettingsSchema, ReadingAStoreGivesItsValuesOrTheDefaults)
{
    TempDir dir;
    UserDefaults store(dir.file(u"t.conf"_s));
    ThumbnailSettings defaults = ThumbnailSettings::read(store);
    EXPECT_EQ(defaults.extension, u"_thumb"_s);
    // Written and read back, every value keeps its type; codes outside their enums stay raw.
    defaults.width = 77;
    defaults.scale = 0.25f;
    defaults.create = 7;
    defaults.extensionFormat = -3;
    defaults.sharpen = 9;
    defaults.write(store);
    const ThumbnailSettings read = ThumbnailSettings::read(store);
    EXPECT_EQ(read.width, 77);
    EXPECT_FLOAT_EQ(read.scale, 0.25f);
    EXPECT_EQ(store.objectForKey(u"width"_s).typeId(), QMetaType::LongLong);
    EXPECT_EQ(read.createMode(), std::nullopt);
    EXPECT_EQ(read.namingRule(), ThumbnailSettings::NamingRule::SubFolder);
    EXPECT_EQ(read.sharpening(), ThumbnailSettings::Sharpening::None);
    EXPECT_EQ(read.thumbnailPathFor(u"/a/p.png"_s), QString());
    EXPECT_EQ(read.outputPathFor(u"/a/p.png"_s), u"/a/_thumb/p.jpg"_s);
}

TEST(SettingsSchema, TheNamingRuleKnowsTheThumbnailsItCouldHaveWritten)
{
    ThumbnailSettings s;
    const auto could = [&s](qint64 rule, const QString &naming, const char16_t *path) {
        s.extensionFormat = rule;
        s.extension = naming;
        return s.couldHaveWritten(QString::fromUtf16(path));
    };
    EXPECT_TRUE(could(1, u"_thumb"_s, u"/a/photo_thumb.jpg"));
    EXPECT_TRUE(could(1, u"_thumb"_s, u"/a/photo_thumb.jp2")); // any output format, not just today's
    EXPECT_FALSE(could(1, u"_thumb"_s, u"/a/photo_thumb.JPG")); // thumbnails are written in lower case
    EXPECT_FALSE(could(1, u"_thumb"_s, u"/a/_thumb.jpg")); // the naming string alone names no source
    EXPECT_FALSE(could(1, QString(), u"/a/photo.jpg"));
    EXPECT_TRUE(could(0, u"t_"_s, u"/a/t_photo.png"));
    EXPECT_FALSE(could(0, u"t_"_s, u"/a/photo_t_.png"));
    EXPECT_TRUE(could(2, u"small"_s, u"/a/small/photo.gif"));
    EXPECT_FALSE(could(2, u"small"_s, u"/a/small/notes.txt"));
    EXPECT_FALSE(could(2, u"small"_s, u"/a/big/small.gif"));
}

TEST(SettingsSchema, AnOutputFolderTakesTheSourcesFolderPlaceInEveryNamingRule)
{
    ThumbnailSettings s;
    s.filetype = 4;
    s.extension = u"_t"_s;
    const struct
    {
        qint64 rule;
        const char16_t *folder;
        const char16_t *expected;
    } cases[] = {
        { 1, u"/out/pics", u"/out/pics/photo.x_t.png" }, { 0, u"/out/pics", u"/out/pics/_tphoto.x.png" },
        { 2, u"/out/pics", u"/out/pics/_t/photo.x.png" }, { 2, u"/", u"/_t/photo.x.png" },
        { 1, u"", u"/src/a.b/photo.x_t.png" }, // no folder: beside the source, as ever
    };
    for (const auto &c : cases) {
        s.extensionFormat = c.rule;
        EXPECT_EQ(s.outputPathFor(u"/src/a.b/photo.x.jpg"_s, QString::fromUtf16(c.folder)),
            QString::fromUtf16(c.expected))
            << c.rule << ' ' << QString::fromUtf16(c.folder).toStdString();
    }
    s.create = 2; // an icon is the source's own: no thumbnail path, folder or not
    EXPECT_TRUE(s.thumbnailPathFor(u"/src/photo.jpg"_s, u"/out"_s).isEmpty());
}

TEST(CommandLineLanguage, TheEnvironmentChoosesAsOnLinuxAndEnglishIsTheFallback)
{
    const struct
    {
        const char *lcAll, *lcMessages, *lang, *language;
        QLocale::Language expected;
    } cases[] = {
        { "", "", "fr_CA", "", QLocale::French },
        { "fr_FR.UTF-8", "", "de_DE.UTF-8", "", QLocale::French }, // LC_ALL first
        { "", "fr_FR", "de_DE", "", QLocale::French }, // then LC_MESSAGES
        { "", "", "de_DE", "it:fr:de", QLocale::French }, // LANGUAGE's first language with a table
        { "", "", "C.UTF-8", "fr", QLocale::C }, // the C locale ignores LANGUAGE
        { "", "", "ja_JP.UTF-8", "", QLocale::C }, // no table: English
        { "", "", "de_DE", "en:de", QLocale::C },
    };
    for (const auto &c : cases) {
        test::EnvironmentOverride lcAll("LC_ALL", QString::fromLatin1(c.lcAll));
        test::EnvironmentOverride lcMessages("LC_MESSAGES", QString::fromLatin1(c.lcMessages));
        test::EnvironmentOverride lang("LANG", QString::fromLatin1(c.lang));
        test::EnvironmentOverride language("LANGUAGE", QString::fromLatin1(c.language));
        const QLocale::Language chosen = messageLocaleFromEnvironment().language();
        EXPECT_EQ(chosen == QLocale::English ? QLocale::C : chosen, c.expected)
            << c.lcAll << '|' << c.lcMessages << '|' << c.lang << '|' << c.language;
    }
}

TEST(CommandLineLanguage, TheTextsComeInTheChosenLanguageAndEveryHelpLineFitsEightyColumns)
{
    const struct
    {
        QLocale::Language language;
        const char16_t *usageError, *helpLine, *summary;
    } cases[] = {
        { QLocale::German, u"unbekannte Option --frobnicate",
            u"\n  -h, --help               diese Hilfe ausgeben\n",
            u"1 Miniatur erstellt, 0 fehlgeschlagen, " },
        { QLocale::French, u"option --frobnicate inconnue",
            u"\n  -h, --help               afficher cette aide\n", u"1 vignette créée, 0 en échec, " },
    };
    for (const auto &c : cases) {
        useTextLanguageOf(QLocale(c.language));
        EXPECT_EQ(parseCommandLine({ u"--frobnicate"_s, u"x"_s }).error, QString::fromUtf16(c.usageError));
        const QString help = usageText();
        EXPECT_TRUE(help.contains(QString::fromUtf16(c.helpLine))) << help;
        EXPECT_TRUE(Progress::formatSummary(1, 0, 0, 0, 1).startsWith(QString::fromUtf16(c.summary)));
        for (const QString &line : (help + DefaultsCommand::usageText()).split(u'\n'))
            EXPECT_LE(line.size(), 80) << line;
    }
    useTextLanguageOf(QLocale::c());
}

// The README's settings table (| `key`, `key` | type | default | meaning |) says what the schema says.
TEST(SettingsSchema, TheReadmeTableGivesEachKeyItsTypeAndDefault)
{
    const QString text = QString::fromUtf8(test::readBytes(QStringLiteral(ORVEL_SOURCE_DIR "/README.md")));
    const qsizetype start = text.indexOf(u"\n## Settings\n"_s);
    ASSERT_GE(start, 0);
    QMap<QString, QPair<QString, QString>> documented;
    static const QRegularExpression row(u"^\\| (`[^|]+`) \\| (\\w+) \\| `?([^|`]*?)`? \\|"_s);
    for (const QString &line : text.mid(start, text.indexOf(u"\n## "_s, start + 1) - start).split(u'\n')) {
        const QRegularExpressionMatch m = row.match(line);
        for (QString key : m.hasMatch() ? m.captured(1).split(u", "_s) : QStringList())
            documented.insert(key.remove(u'`'), { m.captured(2), m.captured(3) });
    }
    QStringList keys;
    for (const SettingKey &key : settingKeys()) {
        keys << key.key();
        EXPECT_EQ(documented.value(key.key()), qMakePair(key.typeName(), key.defaultText())) << key.key();
    }
    keys.sort();
    EXPECT_EQ(documented.keys(), keys);
}

TEST(SettingsSchema, TheHelpReadmeCompletionsAndManualPageKnowEveryOptionAndSettingAndWork)
{
    const QString data = QStringLiteral(ORVEL_SOURCE_DIR "/data/");
    // Every long option that --help lists.
    const QRegularExpression option(u"^ {2,6}(?:-\\w, )?(--[a-z-]+)"_s, QRegularExpression::MultilineOption);
    QStringList options;
    for (auto it = option.globalMatch(usageText()); it.hasNext();)
        options << it.next().captured(1);
    EXPECT_GE(options.size(), 20);
    // A whole word: --set is not found in --set-string, nor scale in --scale.
    const auto names = [](const QString &text, const QString &name) {
        return QRegularExpression(u"(^|[^\\w-])"_s + QRegularExpression::escape(name) + u"($|[^\\w-])"_s)
            .match(text)
            .hasMatch();
    };
    for (const char *file : { "../README.md", "completion/orvel-thumbs.bash", "completion/_orvel-thumbs",
             "man/orvel-thumbs.1" }) {
        // The manual page's text with groff's escaped dashes as plain ones.
        const QString text
            = QString::fromUtf8(test::readBytes(data + QLatin1String(file))).replace(u"\\-"_s, u"-"_s);
        ASSERT_FALSE(text.isEmpty()) << file;
        for (const QString &option : options)
            EXPECT_TRUE(names(text, option)) << file << ": " << option;
        for (const SettingKey &key : settingKeys())
            EXPECT_TRUE(names(text, key.key())) << file << ": " << key.key();
    }
    for (const SettingKey &key : settingKeys())
        EXPECT_TRUE(usageText().contains(u"  %1 "_s.arg(key.key()))) << key.key();
    // The bash completion completes in a real bash, and both pages render without a warning.
    QByteArray out;
    ASSERT_EQ(test::runProgram(u"bash"_s,
                  { u"-c"_s,
                      u"source '%1completion/orvel-thumbs.bash'; COMP_WORDS=(orvel-thumbs --set wi); "
                      "COMP_CWORD=2; _orvel_thumbs; echo \"${COMPREPLY[@]}\""_s.arg(data) },
                  &out),
        0);
    EXPECT_EQ(out, "width=\n");
    for (const QString &page : { u"man/orvel-thumbs.1"_s, u"man/orvel-thumbnails.1"_s }) {
        QByteArray err;
        EXPECT_EQ(
            test::runProgram(u"groff"_s, { u"-man"_s, u"-ww"_s, u"-z"_s, data + page }, nullptr, &err), 0);
        EXPECT_TRUE(err.isEmpty()) << page << ": " << err.constData();
    }
}
