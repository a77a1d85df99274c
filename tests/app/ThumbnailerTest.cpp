// orvel-thumbs as a file manager's thumbnailer: run through the Exec line of its thumbnailer entry,
// filled in as a file manager fills it, directly and inside the sandbox such callers use.
#include "testlib/MovieMakers.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;
using namespace orvel::test;

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

/// A source of the table: how to make it, the size asked for, the thumbnail's size and the colour
/// at its centre (none for the picture, whose alpha falls from opaque at the left to clear at the right).
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
    ASSERT_EQ(thumbnail.width(), source.expected.width());
    ASSERT_EQ(thumbnail.height(), source.expected.height());
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
    ASSERT_TRUE(writeTestImage(dir.file(u"cut.jpg"_s), 600, 400));
    const QByteArray jpeg = readBytes(dir.file(u"cut.jpg"_s));
    ASSERT_TRUE(writeBytes(dir.file(u"cut.jpg"_s), jpeg.left(jpeg.indexOf("\xFF\xDA") + 30)));
    ASSERT_TRUE(writeBytes(dir.file(u"words.png"_s), "not a picture at all"));
    ASSERT_TRUE(writeBytes(dir.file(u"bomb.png"_s), pngDeclaring(300000, 300000)));
    ASSERT_TRUE(writeTestImage(dir.file(u"good.png"_s), 50, 50));
    ASSERT_TRUE(QDir().mkpath(dir.file(u"out"_s)));
    // Broken, hostile, missing and not a file; then a good source with nowhere to go.
    const std::pair<QString, QString> cases[]
        = { { u"cut.jpg"_s, u"out/t.png"_s }, { u"words.png"_s, u"out/t.png"_s },
              { u"bomb.png"_s, u"out/t.png"_s }, { u"missing.png"_s, u"out/t.png"_s },
              { u"out"_s, u"out/t.png"_s }, { u"good.png"_s, u"no/t.png"_s } };
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
    for (const QStringList &write : { QStringList { u"filetype"_s, u"-int"_s, u"3"_s },
             QStringList { u"width"_s, u"-int"_s, u"20"_s }, QStringList { u"create"_s, u"-int"_s, u"1"_s } })
        ASSERT_EQ(runThumbs(home, QStringList { u"defaults"_s, u"write"_s } + write), 0);
    ASSERT_TRUE(writeTestImage(dir.file(u"photo name.png"_s), 400, 100));
    // A file URI (%u), as some file managers hand the source over.
    const QString uri = QUrl::fromLocalFile(dir.file(u"photo name.png"_s)).toString(QUrl::FullyEncoded);
    ASSERT_TRUE(uri.contains(u"%20"_s));
    QByteArray err;
    EXPECT_EQ(
        runThumbs(home, { u"--thumbnailer"_s, u"-s"_s, u"200"_s, uri, dir.file(u"t.png"_s) }, nullptr, &err),
        0)
        << err.toStdString();
    EXPECT_EQ(loadImage(dir.file(u"t.png"_s)).width(), 200);
    EXPECT_EQ(loadImage(dir.file(u"t.png"_s)).height(), 50);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), (QStringList { u"photo name.png"_s, u"t.png"_s }));
    EXPECT_FALSE(QFileInfo::exists(home.file(u"cache/thumbnails"_s)));
}

} // namespace
