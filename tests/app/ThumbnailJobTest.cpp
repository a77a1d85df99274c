// The thumbnail job in this process, on real files with real settings: one setting at a time, the
// create modes, documents, movies, sharpening against the kernel applied by hand, and bad input.
#include "app/engine/ThumbnailJob.h"
#include "app/engine/ClassicIcon.h"
#include "app/engine/IconService.h"
#include "files/FileManager.h"
#include "files/ResourceFork.h"
#include "support/UserDefaults.h"
#include "testlib/MovieMakers.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QtEndian>
#include <gtest/gtest.h>
#include <random>
#include <vips/vips8>

using namespace Qt::StringLiterals;
using namespace orvel;
using namespace orvel::test;

namespace {

/// Sources, a settings store and a thumbnail cache of the test's own; the job runs in this process.
class JobFixture
{
public:
    JobFixture() { qputenv("XDG_CACHE_HOME", QFile::encodeName(m_cache.path())); }
    UserDefaults &defaults() { return m_defaults; }
    void set(const QString &key, const QVariant &value) { m_defaults.setObject(value, key); }
    void set(const QVariantMap &settings)
    {
        for (auto it = settings.cbegin(); it != settings.cend(); ++it)
            set(it.key(), it.value());
    }
    /// The job on path (a name in the folder, or a path); answers YES or NO, why receives the reason.
    bool run(const QString &path, QString *why = nullptr)
    {
        return ThumbnailJob::processFile(QDir(m_dir.path()).absoluteFilePath(path), &m_defaults, why);
    }
    QString file(const QString &name) const { return m_dir.file(name); }
    /// Every entry of the folder, hidden ones included, sorted.
    QStringList entries() const
    {
        return QDir(m_dir.path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }

private:
    TempDir m_dir, m_settings, m_cache;
    UserDefaults m_defaults { m_settings.file(u"thumbnails.conf"_s) };
};

QSize sizeOf(const QString &path) { return loadImage(path).size(); }

/// One source, one change of the settings, and what the job then makes, or why it makes nothing.
struct SettingCase
{
    const char *name;
    QVariantMap settings;
    QSize source;
    const char16_t *output; ///< the file made, null when none
    QSize size;
    const char16_t *reason = nullptr;
};

void PrintTo(const SettingCase &c, std::ostream *os) { *os << c.name; }

class ThumbnailJobSetting : public ::testing::TestWithParam<SettingCase>, protected JobFixture
{
};

} // namespace

TEST_P(ThumbnailJobSetting, MakesWhatTheSettingSays)
{
    const SettingCase &c = GetParam();
    ASSERT_TRUE(writeTestImage(file(u"photo.png"_s), c.source.width(), c.source.height()));
    set(c.settings);
    QString why;
    EXPECT_EQ(run(u"photo.png"_s, &why), c.output != nullptr) << why;
    if (c.output) {
        EXPECT_EQ(sizeOf(file(QString::fromUtf16(c.output))), c.size);
    } else {
        EXPECT_EQ(why, QString::fromUtf16(c.reason));
        EXPECT_EQ(entries(), QStringList { u"photo.png"_s }); // nothing written
    }
}

INSTANTIATE_TEST_SUITE_P(ThumbnailJob, ThumbnailJobSetting,
    ::testing::Values(SettingCase { "box", { { u"width"_s, 64 }, { u"height"_s, 16 } }, { 301, 101 },
                          u"photo_thumb.jpg", { 47, 16 } },
        SettingCase { "scale", { { u"sizing"_s, 1 }, { u"scale"_s, 0.5 } }, { 301, 101 }, u"photo_thumb.jpg",
            { 150, 50 } },
        SettingCase { "scale to nothing", { { u"sizing"_s, 1 }, { u"scale"_s, 0.001 } }, { 301, 101 },
            nullptr, {}, u"the thumbnail would be 0 × 0 pixels" },
        SettingCase { "tiff", { { u"filetype"_s, 0 } }, { 200, 100 }, u"photo_thumb.tiff", { 128, 64 } },
        SettingCase { "bmp", { { u"filetype"_s, 1 } }, { 200, 100 }, u"photo_thumb.bmp", { 128, 64 } },
        SettingCase { "gif", { { u"filetype"_s, 2 } }, { 200, 100 }, u"photo_thumb.gif", { 128, 64 } },
        SettingCase { "jpeg 2000", { { u"filetype"_s, 5 } }, { 200, 100 }, u"photo_thumb.jp2", { 128, 64 } },
        SettingCase {
            "unknown format", { { u"filetype"_s, 9 } }, { 20, 20 }, nullptr, {}, u"unknown output format 9" },
        SettingCase { "unknown create mode", { { u"create"_s, 3 } }, { 20, 20 }, nullptr, {},
            u"unknown create mode 3" },
        // The create mode is compared as a 32-bit integer: 2^32 reads as 0.
        SettingCase { "create mode of 2^32", { { u"create"_s, qint64(1) << 32 } }, { 20, 20 },
            u"photo_thumb.jpg", { 20, 20 } }),
    [](const auto &info) {
        QString name = QString::fromLatin1(info.param.name);
        name.replace(QRegularExpression(u"[^A-Za-z0-9]"_s), u"_"_s);
        return name.toStdString();
    });

namespace {

class ThumbnailJobTest : public ::testing::Test, protected JobFixture
{
};

constexpr FileTypeCode IconFamily = 0x69636e73; // 'icns'

bool writeNoisyPng(const QString &path, int side)
{
    QImage noise(side, side, QImage::Format_RGB32);
    for (int y = 0; y < side; ++y)
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(noise.scanLine(y)), side);
    return noise.save(path, "PNG");
}

/// The file has the custom-icon flag and an icon family of PNG members of exactly these sides.
void expectClassicIcon(const QString &path, const QList<int> &sides)
{
    SCOPED_TRACE(path.toStdString());
    EXPECT_TRUE(hasCustomIconOfFile(path));
    const auto fork = ResourceFork::resourceForkForReadingAtPath(path);
    ASSERT_NE(fork, nullptr);
    const QByteArray family = fork->dataForType(IconFamily, ClassicIcon::ResourceID);
    ASSERT_GE(family.size(), 8);
    EXPECT_EQ(family.left(4), "icns");
    EXPECT_EQ(qFromBigEndian<quint32>(family.constData() + 4), quint32(family.size()));
    QList<int> found;
    for (qsizetype at = 8; at + 8 <= family.size();) {
        const quint32 length = qFromBigEndian<quint32>(family.constData() + at + 4);
        ASSERT_GE(length, 8u);
        ASSERT_LE(at + qsizetype(length), family.size());
        const QImage member = QImage::fromData(family.mid(at + 8, length - 8), "PNG");
        found << (member.width() == member.height() ? member.width() : -1);
        at += length;
    }
    EXPECT_EQ(found, sides);
}

} // namespace

TEST_F(ThumbnailJobTest, JpegOutputPutsTransparencyOnWhite)
{
    ASSERT_TRUE(writeSolidImage(file(u"clear.png"_s), 20, 20, QColor(0, 0, 255, 0)));
    ASSERT_TRUE(run(u"clear.png"_s));
    EXPECT_TRUE(colourNear(loadImage(file(u"clear_thumb.jpg"_s)).pixelColor(10, 10), Qt::white, 3));
}

TEST_F(ThumbnailJobTest, IconModesWriteTheThumbnailCacheAndTheClassicIconAndKeepTheSourceDate)
{
    ASSERT_TRUE(writeTestImage(file(u"p.png"_s), 60, 30));
    const std::optional<FileTime> before = FileManager::fileModificationDateAtPath(file(u"p.png"_s));
    set(u"create"_s, 2);
    ASSERT_TRUE(run(u"p.png"_s));
    EXPECT_EQ(entries().filter(u"_thumb"_s), QStringList()) << "nothing is written but the icon";
    EXPECT_EQ(FileManager::fileModificationDateAtPath(file(u"p.png"_s)), before);
    EXPECT_TRUE(
        QFileInfo::exists(IconService::cachePathForFile(file(u"p.png"_s), IconService::CacheSize::Normal)));
    expectClassicIcon(file(u"p.png"_s), { 16, 32 });

    set(u"create"_s, 1);
    ASSERT_TRUE(run(u"p.png"_s));
    EXPECT_TRUE(QFileInfo::exists(
        IconService::cachePathForFile(file(u"p_thumb.jpg"_s), IconService::CacheSize::Normal)));
    expectClassicIcon(file(u"p_thumb.jpg"_s), { 16, 32 });

    // A large icon family goes to the companion file.
    ASSERT_TRUE(writeTestImage(file(u"wide.png"_s), 1200, 600));
    set(u"create"_s, 2);
    ASSERT_TRUE(run(u"wide.png"_s));
    expectClassicIcon(file(u"wide.png"_s), { 16, 32, 64, 128, 256, 512, 1024 });
    // A thumbnail written again over one with an icon in its companion starts without one. (Noise
    // makes an icon family too large for an attribute.)
    ASSERT_TRUE(writeNoisyPng(file(u"n.png"_s), 300));
    set(u"create"_s, 1);
    ASSERT_TRUE(run(u"n.png"_s));
    ASSERT_TRUE(QFileInfo::exists(file(u"._n_thumb.jpg"_s)));
    set(u"create"_s, 0);
    ASSERT_TRUE(run(u"n.png"_s));
    EXPECT_FALSE(QFileInfo::exists(file(u"._n_thumb.jpg"_s)));
    EXPECT_FALSE(hasCustomIconOfFile(file(u"n_thumb.jpg"_s)));
}

TEST_F(ThumbnailJobTest, DamagedPicturesGiveWhatDecodes)
{
    set(u"filetype"_s, 4);
    for (const QString &format : { u"jpg"_s, u"png"_s, u"gif"_s }) {
        const QString whole = file(u"whole."_s + format);
        const QString cut = file(u"cut."_s + format);
        ASSERT_TRUE(writeTestImage(whole, 300, 200));
        const QByteArray bytes = readBytes(whole);
        ASSERT_TRUE(writeBytes(cut, bytes.left(bytes.size() * 6 / 10)));
        QString why;
        ASSERT_TRUE(run(cut, &why)) << format << ": " << why;
        ASSERT_TRUE(run(whole));
        // The rows that were there are the picture's; what is missing is as the decoder leaves it.
        const QImage fromCut = loadImage(file(u"cut_thumb.png"_s));
        const QImage fromWhole = loadImage(file(u"whole_thumb.png"_s));
        ASSERT_EQ(fromCut.size(), QSize(128, 85)) << format;
        EXPECT_TRUE(colourNear(fromCut.pixelColor(20, 5), fromWhole.pixelColor(20, 5), 24)) << format;
    }
}

TEST_F(ThumbnailJobTest, DocumentsAndMoviesGiveTheirPictureAndWhereTheNameTellsNothingTheContentDecides)
{
    ASSERT_TRUE(writeTestImage(file(u"photo.jpg"_s), 60, 40));
    ASSERT_TRUE(writeTestImage(file(u"scan.tif"_s), 60, 40));
    ASSERT_TRUE(writeTestPdf(file(u"doc.pdf"_s), 300, 600, Qt::red, 2));
    ASSERT_TRUE(writeTestEps(file(u"art.EPS"_s), 100, 50, Qt::blue));
    ASSERT_TRUE(writeSecondsMovie(file(u"clip.mp4"_s), 10.0, 96, 64));
    set(u"filetype"_s, 4);
    ASSERT_TRUE(run(u"art.EPS"_s));
    EXPECT_EQ(sizeOf(file(u"art_thumb.png"_s)), QSize(100, 50));

    const QList<QPair<QString, QString>> renamed
        = { { u"photo.jpg"_s, u"DSC0001"_s }, { u"scan.tif"_s, u"scan.img"_s },
              { u"doc.pdf"_s, u"doc2.download"_s }, { u"clip.mp4"_s, u"clip2.part"_s } };
    for (const auto &[from, to] : renamed) {
        ASSERT_TRUE(QFile::copy(file(from), file(to)));
        QString why;
        EXPECT_TRUE(run(to, &why)) << to << ": " << why;
    }
    EXPECT_EQ(sizeOf(file(u"DSC0001_thumb.png"_s)), QSize(60, 40));
    EXPECT_TRUE(colourNear(loadImage(file(u"doc2_thumb.png"_s)).pixelColor(32, 64), Qt::red, 12));
    // A movie gives the frame at half its length.
    EXPECT_TRUE(colourNear(centreColour(loadImage(file(u"clip2_thumb.png"_s))), colourOfSecond(5), 14));
    // A known extension still decides: a PNG named .jpg is a picture, a text named .txt is none.
    ASSERT_TRUE(writeTestImage(file(u"really-png.png"_s), 30, 20));
    ASSERT_TRUE(QFile::rename(file(u"really-png.png"_s), file(u"really-png.jpg"_s)));
    EXPECT_TRUE(run(u"really-png.jpg"_s));
    ASSERT_TRUE(writeBytes(file(u"notes.txt"_s), "hello"));
    QString why;
    EXPECT_EQ(ThumbnailJob::run(file(u"notes.txt"_s), &defaults(), &why), ThumbnailJob::Outcome::Skipped);
}

TEST_F(ThumbnailJobTest, PostScriptGivesItsFirstPageThoughGhostscriptComplainsAfterIt)
{
    // As TeX writes it with hyperlinks: page 1 links to a destination on page 2, which Ghostscript
    // cannot resolve when it converts page 1 alone.
    ASSERT_TRUE(writeBytes(file(u"paper.ps"_s),
        "%!PS-Adobe-2.0\n%%Pages: 2\n%%Page: 1 1\n"
        "[ /Rect [72 700 200 720] /Border [0 0 0] /Dest /sec2 /Subtype /Link /ANN pdfmark\n"
        "1 0 0 setrgbcolor 0 0 612 792 rectfill showpage\n%%Page: 2 2\n"
        "[ /Dest /sec2 /View [/XYZ 0 0 null] /DEST pdfmark\n0 0 1 setrgbcolor 0 0 612 792 rectfill "
        "showpage\n"));
    QString why;
    ASSERT_TRUE(run(u"paper.ps"_s, &why)) << why;
    EXPECT_TRUE(colourNear(loadImage(file(u"paper_thumb.jpg"_s)).pixelColor(50, 60), Qt::red, 12));
    // A real error still answers NO, with Ghostscript's own words.
    ASSERT_TRUE(writeBytes(file(u"broken.ps"_s), "%!PS\nnosuchoperator\nshowpage\n"));
    EXPECT_FALSE(run(u"broken.ps"_s, &why));
    EXPECT_TRUE(why.startsWith(
        u"Ghostscript could not convert the PostScript document: Error: /undefined in nosuchoperator"_s))
        << why;
}

TEST_F(ThumbnailJobTest, OriginalsAreNeverReplacedAndBadFilesSayWhy)
{
    ASSERT_TRUE(writeTestImage(file(u"photo.jpg"_s), 40, 40));
    const QByteArray original = readBytes(file(u"photo.jpg"_s));
    set(u"extension"_s, QString());
    QString why;
    EXPECT_FALSE(run(u"photo.jpg"_s, &why)); // the output path is the source itself
    EXPECT_EQ(readBytes(file(u"photo.jpg"_s)), original);
    EXPECT_EQ(why, u"the thumbnail would replace its source "_s + file(u"photo.jpg"_s));

    set(u"extension"_s, u"_thumb"_s);
    ASSERT_TRUE(writeBytes(file(u"empty.jpg"_s), ""));
    ASSERT_TRUE(runFFmpeg({ u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=d=1"_s, file(u"tone.m4a"_s) }));
    ASSERT_TRUE(writeBytes(file(u"noise.mp4"_s), QByteArray(30000, '\x17')));
    const QList<QPair<QString, QString>> bad = {
        { u"empty.jpg"_s, u"not a picture that can be decoded"_s },
        { u"missing.png"_s, u"not a picture that can be decoded"_s },
        { u"tone.m4a"_s, u"no picture in the file"_s },
        { u"noise.mp4"_s, u"not a movie FFmpeg can read"_s },
    };
    for (const auto &[name, reason] : bad) {
        why.clear();
        EXPECT_FALSE(run(name, &why)) << name;
        EXPECT_EQ(why, reason);
    }
    // A write that fails leaves what was there: here the output name is taken by a folder.
    ASSERT_TRUE(QDir().mkpath(file(u"photo_thumb.jpg"_s)));
    EXPECT_FALSE(run(u"photo.jpg"_s, &why));
    EXPECT_TRUE(QFileInfo(file(u"photo_thumb.jpg"_s)).isDir());
    EXPECT_TRUE(why.startsWith(u"cannot write "_s + file(u"photo_thumb.jpg"_s) + u": "_s)) << why;
}

TEST_F(ThumbnailJobTest, QualityAndInterpolationReachTheOutput)
{
    ASSERT_TRUE(writeTestImage(file(u"p.png"_s), 512, 512));
    set(u"quality"_s, 0.1);
    ASSERT_TRUE(run(u"p.png"_s));
    const qint64 low = QFileInfo(file(u"p_thumb.jpg"_s)).size();
    set(u"quality"_s, 1.0);
    ASSERT_TRUE(run(u"p.png"_s));
    EXPECT_LT(low, QFileInfo(file(u"p_thumb.jpg"_s)).size());

    // A fine checkerboard: nearest sampling keeps black and white, Lanczos averages to grey.
    QImage checker(256, 256, QImage::Format_RGB888);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            checker.setPixelColor(x, y, (x + y) % 2 ? Qt::white : Qt::black);
    ASSERT_TRUE(checker.save(file(u"c.png"_s)));
    set(u"filetype"_s, 4);
    set(u"Antialiasing"_s, 1);
    ASSERT_TRUE(run(u"c.png"_s));
    const int nearest = loadImage(file(u"c_thumb.png"_s)).pixelColor(40, 40).red();
    EXPECT_TRUE(nearest == 0 || nearest == 255) << nearest;
    set(u"Antialiasing"_s, 3);
    ASSERT_TRUE(run(u"c.png"_s));
    EXPECT_NEAR(loadImage(file(u"c_thumb.png"_s)).pixelColor(40, 40).red(), 128, 16);
}

namespace {

constexpr int W = 7, H = 5;

/// An opaque W×H RGB picture of fixed random samples, written as PNG by libvips.
std::vector<unsigned char> writeNoise(const QString &path)
{
    std::mt19937 random(42);
    std::vector<unsigned char> rgb(W * H * 3);
    for (auto &b : rgb)
        b = static_cast<unsigned char>(random() & 0xff);
    vips::VImage::new_from_memory(rgb.data(), rgb.size(), W, H, 3, VIPS_FORMAT_UCHAR)
        .write_to_file(path.toUtf8().constData());
    return rgb;
}

/// The picture through centre·c − the four edge neighbours, divided by d (truncating), clamped;
/// border pixels as they were.
std::vector<unsigned char> sharpenedByHand(const std::vector<unsigned char> &in, int c, int d)
{
    std::vector<unsigned char> out = in;
    for (int y = 1; y < H - 1; ++y)
        for (int x = 1; x < W - 1; ++x)
            for (int k = 0; k < 3; ++k) {
                const auto s
                    = [&](int dx, int dy) { return int(in[size_t(((y + dy) * W + x + dx) * 3 + k)]); };
                const int q = (c * s(0, 0) - s(-1, 0) - s(1, 0) - s(0, -1) - s(0, 1)) / d;
                out[size_t((y * W + x) * 3 + k)] = static_cast<unsigned char>(std::clamp(q, 0, 255));
            }
    return out;
}

std::vector<unsigned char> rgbOf(const QString &path)
{
    const QImage image = loadImage(path).convertToFormat(QImage::Format_RGB888);
    std::vector<unsigned char> rgb;
    for (int y = 0; y < image.height(); ++y)
        rgb.insert(rgb.end(), image.constScanLine(y), image.constScanLine(y) + image.width() * 3);
    return rgb;
}

struct Level
{
    int setting, centre, divisor;
};

class SharpenJob : public ::testing::TestWithParam<Level>, protected JobFixture
{
};

} // namespace

TEST_P(SharpenJob, PngThumbnailEqualsTheKernelAppliedByHand)
{
    const auto picture = writeNoise(file(u"picture.png"_s));
    set(u"filetype"_s, 4);
    set(u"sharpen"_s, GetParam().setting);
    QString why;
    ASSERT_TRUE(run(u"picture.png"_s, &why)) << why;
    const auto expected
        = GetParam().divisor ? sharpenedByHand(picture, GetParam().centre, GetParam().divisor) : picture;
    EXPECT_EQ(rgbOf(file(u"picture_thumb.png"_s)), expected);
}

INSTANTIATE_TEST_SUITE_P(ThumbnailJob, SharpenJob,
    ::testing::Values(Level { 3, 5, 1 }, Level { 2, 6, 2 }, Level { 1, 8, 4 }, Level { 0, 0, 0 },
        Level { 4, 0, 0 }, Level { -1, 0, 0 }));

TEST_F(ThumbnailJobTest, TheIconIsMadeFromTheSharpenedThumbnail)
{
    writeNoise(file(u"picture.png"_s));
    set(u"filetype"_s, 4);
    set(u"create"_s, 1);
    const QString icon
        = IconService::cachePathForFile(file(u"picture_thumb.png"_s), IconService::CacheSize::Normal);
    ASSERT_TRUE(run(u"picture.png"_s));
    const QImage plain = loadImage(icon);
    set(u"sharpen"_s, 3);
    ASSERT_TRUE(run(u"picture.png"_s));
    ASSERT_FALSE(plain.isNull());
    EXPECT_NE(plain, loadImage(icon));
}
