// PNGs shrunk while libpng decodes them: the same thumbnails as the general libvips route for every
// colour type, premultiplied averaging, damaged and hostile files, and the files left to libvips.
#include "image/PngScaledDecoder_p.h"
#include "image/VipsBridge_p.h"
#include "testlib/TestSupport.h"

#include <QImage>
#include <gtest/gtest.h>

#include <functional>

using namespace Qt::StringLiterals;
using namespace orvel;
using namespace orvel::test;
using vips::VImage;
using Outcome = PngScaledDecoder::Outcome;
using Damage = PngScaledDecoder::Damage;

namespace {

constexpr double Limit = 4294967296.0;

// 301 × 199 (boxes cut at the edges): red and green ramps, blue 40-pixel squares, alpha falling rightwards.
VImage picture()
{
    VImage xy = VImage::xyz(301, 199);
    VImage squares = (((xy[0] / 40).floor() + (xy[1] / 40).floor()) % 2) * 255;
    return VImage::bandjoin(
        { xy[0] * (255.0 / 300), xy[1] * (255.0 / 198), squares, 255 - xy[0] * (255.0 / 300) })
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

bool save(VImage image, const QString &path, VipsInterpretation interpretation, const char *options = "")
{
    image.copy(VImage::option()->set("interpretation", interpretation))
        .write_to_file((path + QLatin1String(options)).toUtf8().constData());
    return true;
}

// The route the decoder replaces: sRGB 8 bits, premultiplied, Lanczos 3, rounded.
QImage reference(const QString &path, int w, int h)
{
    VImage in = VImage::new_from_file(path.toUtf8().constData()).colourspace(VIPS_INTERPRETATION_sRGB);
    if (in.bands() == 4)
        in = in.premultiply();
    VImage out = in.resize(double(w) / in.width(), VImage::option()->set("vscale", double(h) / in.height()));
    return qimageFromVips(out.linear(1.0, 0.5).cast(VIPS_FORMAT_UCHAR).extract_area(0, 0, w, h));
}

struct ColourType
{
    const char *name;
    std::function<bool(const QString &)> write;
};

class PngScaledDecode : public testing::TestWithParam<ColourType>
{
};

} // namespace

TEST_P(PngScaledDecode, GivesTheThumbnailOfTheGeneralRoute)
{
    TempDir dir;
    const QString path = dir.file(u"picture.png"_s);
    ASSERT_TRUE(GetParam().write(path));
    ShrunkPicture fromFile;
    ShrunkPicture fromData;
    ASSERT_EQ(PngScaledDecoder::decode(path, {}, 50, 33, Limit, Damage::Fail, &fromFile), Outcome::Decoded);
    ASSERT_EQ(PngScaledDecoder::decode({}, readBytes(path), 50, 33, Limit, Damage::Fail, &fromData),
        Outcome::Decoded);
    EXPECT_EQ(fromFile.pixels, fromData.pixels);
    EXPECT_EQ(QSize(fromFile.width, fromFile.height), QSize(101, 67)); // shrunk by 3, rounded up

    const QImage fast = ImageSource::open(path, 0, true)->renderScaled(50, 33);
    const QImage slow = reference(path, 50, 33);
    ASSERT_EQ(fast.format(), slow.format());
    ASSERT_EQ(fast.size(), slow.size());
    const auto wrap = [](const QImage &q) {
        return vipsImageFromBuffer(q.constBits(), q.width(), q.height(), q.depth() / 8, q.bytesPerLine());
    };
    const VImage difference = (wrap(fast).cast(VIPS_FORMAT_FLOAT) - wrap(slow)).abs();
    // The box pre-shrink softens edges a little; a shift, a lost row or wrong premultiplication costs far
    // more.
    EXPECT_LE(difference.avg(), 5.0);
    EXPECT_LE(difference.max(), 64);
}

INSTANTIATE_TEST_SUITE_P(ColourTypes, PngScaledDecode,
    testing::Values(ColourType { "Grey",
                        [](const QString &p) { return save(picture()[0], p, VIPS_INTERPRETATION_B_W); } },
        ColourType { "GreyAlpha",
            [](const QString &p) {
                return save(picture()[0].bandjoin(picture()[3]), p, VIPS_INTERPRETATION_B_W);
            } },
        ColourType { "Rgb",
            [](const QString &p) {
                return save(
                    picture().extract_band(0, VImage::option()->set("n", 3)), p, VIPS_INTERPRETATION_sRGB);
            } },
        ColourType { "Rgba", [](const QString &p) { return save(picture(), p, VIPS_INTERPRETATION_sRGB); } },
        ColourType { "Rgba16",
            [](const QString &p) {
                return save((picture() * 257).cast(VIPS_FORMAT_USHORT), p, VIPS_INTERPRETATION_RGB16);
            } },
        ColourType { "PaletteWithTransparency",
            [](const QString &p) {
                QImage image(301, 199, QImage::Format_Indexed8);
                for (int i = 0; i < 256; ++i)
                    image.setColor(i, qRgba(i, 255 - i, 128, 255 - i));
                for (int y = 0; y < image.height(); ++y)
                    for (int x = 0; x < image.width(); ++x)
                        image.setPixel(x, y, uint((x + y) * 255 / 498));
                return image.save(p, "PNG");
            } }),
    [](const testing::TestParamInfo<ColourType> &info) { return std::string(info.param.name); });

TEST(PngScaledDecodeAlpha, SoftEdgesAverageWithoutFringes)
{
    // Red fading out over fully transparent green: averaged premultiplied, no green reaches a visible pixel.
    TempDir dir;
    const QString path = dir.file(u"fade.png"_s);
    VImage x = VImage::xyz(400, 12)[0];
    VImage alpha = (255 - (x - 150) * 2).cast(VIPS_FORMAT_UCHAR);
    VImage visible = alpha > 0;
    ASSERT_TRUE(save(VImage::bandjoin({ visible, visible ^ 255, VImage::black(400, 12), alpha }), path,
        VIPS_INTERPRETATION_sRGB));
    ShrunkPicture small;
    ASSERT_EQ(PngScaledDecoder::decode(path, {}, 20, 1, Limit, Damage::Fail, &small), Outcome::Decoded);
    ASSERT_EQ(small.bands, 4);
    for (size_t i = 0; i < small.pixels.size(); i += 4) {
        EXPECT_EQ(small.pixels[i], small.pixels[i + 3]) << "pixel " << i / 4;
        EXPECT_EQ(small.pixels[i + 1], 0) << "pixel " << i / 4;
    }
}

TEST(PngScaledDecodeDamage, ATruncatedFileGivesItsRowsOnlyWhenDamageIsTolerated)
{
    TempDir dir;
    const QString whole = dir.file(u"whole.png"_s);
    const QString cut = dir.file(u"cut.png"_s);
    ASSERT_TRUE(writeTestImage(whole, 300, 200));
    const QByteArray bytes = readBytes(whole);
    ASSERT_TRUE(writeBytes(cut, bytes.left(bytes.size() * 6 / 10)));
    ShrunkPicture full;
    ShrunkPicture part;
    ASSERT_EQ(PngScaledDecoder::decode(whole, {}, 50, 33, Limit, Damage::Fail, &full), Outcome::Decoded);
    EXPECT_EQ(PngScaledDecoder::decode(cut, {}, 50, 33, Limit, Damage::Fail, &part), Outcome::Failed);
    ASSERT_EQ(PngScaledDecoder::decode(cut, {}, 50, 33, Limit, Damage::Tolerate, &part), Outcome::Decoded);
    ASSERT_EQ(part.pixels.size(), full.pixels.size());
    const size_t row = size_t(part.width) * 3;
    EXPECT_TRUE(std::equal(part.pixels.begin(), part.pixels.begin() + row, full.pixels.begin()));
    EXPECT_TRUE(
        std::all_of(part.pixels.end() - row, part.pixels.end(), [](unsigned char v) { return v == 0; }));
    // The source turns damage tolerance on after a failure; a file cut after its header still fails.
    EXPECT_EQ(ImageSource::open(cut, 0, true)->renderScaled(50, 33).size(), QSize(50, 33));
    ASSERT_TRUE(writeBytes(cut, bytes.left(bytes.indexOf("IDAT") + 30)));
    EXPECT_TRUE(ImageSource::open(cut, 0, true)->renderScaled(50, 33).isNull());
}

TEST(PngScaledDecodeDamage, HostileHeadersAllocateNothingBig)
{
    ShrunkPicture small;
    const auto decode = [&](quint32 w, quint32 h) {
        return PngScaledDecoder::decode({}, pngDeclaring(w, h), 8, 8, Limit, Damage::Tolerate, &small);
    };
    EXPECT_EQ(decode(0, 10), Outcome::Failed);
    EXPECT_EQ(decode(100000, 100000), Outcome::Unsupported);
    EXPECT_EQ(decode(30000, 30000), Outcome::Failed);
    EXPECT_EQ(decode(1u << 30, 2), Outcome::Failed);
}

TEST(PngScaledDecodeFallback, InterlacedAndProfiledFilesAreLeftToTheGeneralRoute)
{
    TempDir dir;
    const QString interlaced = dir.file(u"interlaced.png"_s);
    const QString profiled = dir.file(u"profiled.png"_s);
    ASSERT_TRUE(save(picture(), interlaced, VIPS_INTERPRETATION_sRGB, "[interlace]"));
    picture().icc_transform("p3").write_to_file(profiled.toUtf8().constData());
    for (const QString &path : { interlaced, profiled }) {
        ShrunkPicture small;
        EXPECT_EQ(
            PngScaledDecoder::decode(path, {}, 50, 33, Limit, Damage::Fail, &small), Outcome::Unsupported);
        EXPECT_EQ(ImageSource::open(path, 0, true)->renderScaled(50, 33).size(), QSize(50, 33)) << path;
    }
    // Nothing to shrink: a target more than half the picture is left to the general route too.
    const QString plain = dir.file(u"plain.png"_s);
    ASSERT_TRUE(save(picture(), plain, VIPS_INTERPRETATION_sRGB));
    ShrunkPicture small;
    EXPECT_EQ(
        PngScaledDecoder::decode(plain, {}, 200, 100, Limit, Damage::Fail, &small), Outcome::Unsupported);
}
