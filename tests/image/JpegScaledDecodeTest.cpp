// The direct JPEG decoder behind thumbnails: its pixels against libvips' own JPEG loader at every
// scale and colour model, damaged files and hostile headers.
#include "image/JpegScaledDecoder_p.h"
#include "image/VipsBridge_p.h"
#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace orvel;
using namespace orvel::test;
using vips::VImage;

namespace {

// 203 × 151 (odd sizes, so scaled sizes round): ramps in red and green, ripples in blue.
VImage testPicture()
{
    VImage xy = VImage::xyz(203, 151);
    VImage ripples = ((xy[0] + xy[1]) * 9.0).sin() * 100 + 128;
    return (xy[0] * 1.25)
        .bandjoin(xy[1] * 1.6)
        .bandjoin(ripples)
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

QByteArray jpegOf(VImage image, bool progressive = false)
{
    void *bytes = nullptr;
    size_t size = 0;
    image.write_to_buffer(
        ".jpg", &bytes, &size, VImage::option()->set("Q", 90)->set("interlace", progressive));
    QByteArray data(static_cast<const char *>(bytes), qsizetype(size));
    g_free(bytes);
    return data;
}

JpegDecodeResult decode(const QByteArray &jpeg, int scale, bool tolerateDamage, ScaledJpeg &out,
    QString *error = nullptr, double maxPixels = 1e12)
{
    return decodeScaledJpeg(reinterpret_cast<const unsigned char *>(jpeg.constData()), size_t(jpeg.size()),
        scale, tolerateDamage, maxPixels, out, error);
}

double meanDifference(VImage a, VImage b) { return (a.cast(VIPS_FORMAT_FLOAT) - b).abs().avg(); }

struct ScaleCase
{
    const char *name;
    VipsInterpretation model;
    int scale;
};

using JpegScaledDecode = testing::TestWithParam<ScaleCase>;

} // namespace

// The same size and pixels as libvips' loader gives at that shrink, CMYK inks the right way round.
TEST_P(JpegScaledDecode, MatchesTheLibraryLoader)
{
    ASSERT_TRUE(ensureVips());
    VImage picture = testPicture();
    if (GetParam().model == VIPS_INTERPRETATION_CMYK)
        picture = picture.icc_transform("cmyk", VImage::option()->set("input_profile", "srgb"));
    else if (GetParam().model == VIPS_INTERPRETATION_B_W)
        picture = picture.colourspace(VIPS_INTERPRETATION_B_W);
    const QByteArray jpeg = jpegOf(picture);
    VImage expected = VImage::new_from_buffer(
        jpeg.constData(), size_t(jpeg.size()), "", VImage::option()->set("shrink", GetParam().scale));

    ScaledJpeg decoded;
    ASSERT_EQ(decode(jpeg, GetParam().scale, false, decoded), JpegDecodeResult::Decoded);
    ASSERT_EQ(decoded.width, expected.width());
    ASSERT_EQ(decoded.height, expected.height());
    ASSERT_EQ(decoded.bands, expected.bands());
    VImage got = VImage::new_from_memory(decoded.pixels.get(),
        size_t(decoded.width) * decoded.height * decoded.bands, decoded.width, decoded.height, decoded.bands,
        VIPS_FORMAT_UCHAR);
    EXPECT_LT(meanDifference(got, expected), 0.5);
}

INSTANTIATE_TEST_SUITE_P(ColourModelsAndScales, JpegScaledDecode,
    testing::Values(ScaleCase { "RgbWhole", VIPS_INTERPRETATION_sRGB, 1 },
        ScaleCase { "RgbEighth", VIPS_INTERPRETATION_sRGB, 8 },
        ScaleCase { "GreyQuarter", VIPS_INTERPRETATION_B_W, 4 },
        ScaleCase { "CmykWhole", VIPS_INTERPRETATION_CMYK, 1 },
        ScaleCase { "CmykQuarter", VIPS_INTERPRETATION_CMYK, 4 }),
    [](const testing::TestParamInfo<ScaleCase> &info) { return info.param.name; });

TEST(JpegScaledDecodeDamage, TruncatedDataFailsUnlessDamageIsTolerated)
{
    ASSERT_TRUE(ensureVips());
    const QByteArray jpeg = jpegOf(testPicture());
    const QByteArray cut = jpeg.left(jpeg.size() * 3 / 5);
    ScaledJpeg out;
    QString error;
    EXPECT_EQ(decode(cut, 2, false, out, &error), JpegDecodeResult::Failed);
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(out.pixels);
    ASSERT_EQ(decode(cut, 2, true, out), JpegDecodeResult::Decoded);
    EXPECT_EQ(out.width, 101);
}

TEST(JpegScaledDecodeDamage, HostileProgressiveFilesAreRefusedQuickly)
{
    ASSERT_TRUE(ensureVips());
    const QByteArray jpeg = jpegOf(testPicture(), true);
    // The last scan repeated past the scan limit: even with damage tolerated, refused.
    const qsizetype lastScan = jpeg.lastIndexOf("\xFF\xDA");
    ASSERT_GT(lastScan, 0);
    const QByteArray scan = jpeg.mid(lastScan, jpeg.size() - 2 - lastScan);
    QByteArray manyScans = jpeg.left(jpeg.size() - 2) + scan.repeated(1100) + "\xFF\xD9";
    ScaledJpeg out;
    QString error;
    EXPECT_EQ(decode(manyScans, 8, true, out, &error), JpegDecodeResult::Failed);
    EXPECT_TRUE(error.contains(u"scans"_s)) << error;

    // 60000 × 60000 declared: refused before its coefficients are allocated, here and through a source.
    QByteArray huge = jpeg;
    const qsizetype frame = huge.indexOf("\xFF\xC2");
    ASSERT_GT(frame, 0);
    for (int at : { 5, 7 }) {
        huge[frame + at] = char(0xEA);
        huge[frame + at + 1] = char(0x60);
    }
    EXPECT_EQ(decode(huge, 8, true, out), JpegDecodeResult::Failed);
    TempDir dir;
    const QString path = dir.file(u"huge.jpg"_s);
    ASSERT_TRUE(writeBytes(path, huge));
    std::shared_ptr<ImageSource> source = ImageSource::open(path, 0, true);
    ASSERT_TRUE(source);
    EXPECT_TRUE(source->renderScaled(128, 128).isNull());
}

// The direct resampler against the library's Lanczos 3 resize: within a level or two, no shift.
TEST(JpegScaledThumbnail, DirectResamplingMatchesTheLibraryResize)
{
    ASSERT_TRUE(ensureVips());
    VImage picture = testPicture().copy_memory();
    size_t size = 0;
    void *pixels = picture.write_to_memory(&size);
    std::unique_ptr<unsigned char, ScaledJpeg::FreeDeleter> resampled(
        lanczos3Resample(static_cast<const unsigned char *>(pixels), 203, 151, 3, 40, 30));
    g_free(pixels);
    ASSERT_TRUE(resampled);
    VImage expected = picture.resize(
        40.0 / 203, VImage::option()->set("vscale", 30.0 / 151)->set("kernel", VIPS_KERNEL_LANCZOS3));
    VImage got = VImage::new_from_memory(resampled.get(), 40 * 30 * 3, 40, 30, 3, VIPS_FORMAT_UCHAR);
    EXPECT_LT(meanDifference(got, expected.extract_area(0, 0, 40, 30)), 1.0);
}
