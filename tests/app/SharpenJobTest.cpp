// Sharpening in the thumbnail job: a lossless thumbnail of a picture that fits the box equals the
// kernel applied by hand, pixel for pixel; the command line's --sharpen reaches the job.
#include "app/engine/IconService.h"
#include "app/engine/ThumbnailJob.h"
#include "support/UserDefaults.h"
#include "testlib/TestSupport.h"

#include <QFileInfo>
#include <gtest/gtest.h>
#include <random>
#include <vips/vips8>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

constexpr int W = 7, H = 5;

// An opaque W×H RGB picture of fixed random samples, written as PNG by libvips.
std::vector<unsigned char> writePicture(const QString &path)
{
    std::mt19937 random(42);
    std::vector<unsigned char> rgb(W * H * 3);
    for (auto &b : rgb)
        b = static_cast<unsigned char>(random() & 0xff);
    vips::VImage::new_from_memory(rgb.data(), rgb.size(), W, H, 3, VIPS_FORMAT_UCHAR)
        .write_to_file(path.toUtf8().constData());
    return rgb;
}

// The picture through centre·c − the four edge neighbours, divided by d (truncating), clamped;
// border pixels as they were.
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
    const QImage image = loadImage(path);
    std::vector<unsigned char> rgb;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            rgb.insert(rgb.end(),
                { static_cast<unsigned char>(qRed(p)), static_cast<unsigned char>(qGreen(p)),
                    static_cast<unsigned char>(qBlue(p)) });
        }
    return rgb;
}

struct Level
{
    int setting, centre, divisor;
};

class SharpenJob : public ::testing::TestWithParam<Level>
{
protected:
    void SetUp() override
    {
        qputenv("XDG_CACHE_HOME", cache.path().toUtf8());
        defaults = std::make_unique<UserDefaults>(settings.file(u"thumbnails.conf"_s));
        defaults->setObject(4, u"filetype"_s);
    }
    TempDir dir, settings, cache;
    std::unique_ptr<UserDefaults> defaults;
};

} // namespace

TEST_P(SharpenJob, PngThumbnailEqualsTheKernelAppliedByHand)
{
    const QString source = dir.file(u"picture.png"_s);
    const auto picture = writePicture(source);
    defaults->setObject(GetParam().setting, u"sharpen"_s);
    QString why;
    ASSERT_TRUE(ThumbnailJob::processFile(source, defaults.get(), &why)) << why.toStdString();
    const auto expected
        = GetParam().divisor ? sharpenedByHand(picture, GetParam().centre, GetParam().divisor) : picture;
    EXPECT_EQ(rgbOf(dir.file(u"picture_thumb.png"_s)), expected);
}

INSTANTIATE_TEST_SUITE_P(ThumbnailJob, SharpenJob,
    ::testing::Values(Level { 3, 5, 1 }, Level { 2, 6, 2 }, Level { 1, 8, 4 }, Level { 0, 0, 0 },
        Level { 4, 0, 0 }, Level { -1, 0, 0 }));

TEST(SharpenJobIcon, TheIconIsMadeFromTheSharpenedThumbnail)
{
    TempDir dir, settings, cache;
    qputenv("XDG_CACHE_HOME", cache.path().toUtf8());
    UserDefaults defaults(settings.file(u"thumbnails.conf"_s));
    defaults.setObject(4, u"filetype"_s);
    defaults.setObject(1, u"create"_s);
    const QString source = dir.file(u"picture.png"_s);
    writePicture(source);
    const QString out = dir.file(u"picture_thumb.png"_s);
    const QString icon = IconService::cachePathForFile(out, IconService::CacheSize::Normal);
    ASSERT_TRUE(ThumbnailJob::processFile(source, &defaults));
    const QImage plain = loadImage(icon);
    defaults.setObject(3, u"sharpen"_s);
    ASSERT_TRUE(ThumbnailJob::processFile(source, &defaults));
    const QImage sharp = loadImage(icon);
    ASSERT_FALSE(plain.isNull());
    ASSERT_FALSE(sharp.isNull());
    EXPECT_NE(plain, sharp);
}

TEST(SharpenCommandLine, SharpenStrongReachesTheJob)
{
    TempDir dir;
    const QString source = dir.file(u"picture.png"_s);
    const auto picture = writePicture(source);
    const int code
        = runThumbs(dir, { u"--quiet"_s, u"--format"_s, u"png"_s, u"--sharpen"_s, u"strong"_s, source });
    ASSERT_EQ(code, 0);
    EXPECT_EQ(rgbOf(dir.file(u"picture_thumb.png"_s)), sharpenedByHand(picture, 5, 1));
}
