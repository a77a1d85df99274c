// Encoding: the six bitmap file types, the compression factor, alpha, TIFF data and bad requests.
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <gtest/gtest.h>
#include <vips/vips8>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

BitmapImageRepPtr gradient(int w, int h, bool alpha)
{
    QImage q(w, h, alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            q.setPixelColor(
                x, y, QColor(x * 255 / (w - 1), y * 255 / (h - 1), 90, alpha ? (x < w / 2 ? 0 : 255) : 255));
    return BitmapImageRep::fromQImage(q);
}

vips::VImage decode(const QByteArray &data)
{
    // new_from_buffer does not copy: decode now, while data is alive.
    return vips::VImage::new_from_buffer(data.constData(), size_t(data.size()), "").copy_memory();
}

} // namespace

TEST(ImageEncoding, EveryFileTypeIsWrittenInItsFormatAndDecodesBackToTheSamePicture)
{
    const struct
    {
        int type;
        const char *extension;
        QByteArray signature;
    } formats[] = { { TIFFFileType, "tiff", "II*" }, { BMPFileType, "bmp", "BM" },
        { GIFFileType, "gif", "GIF8" }, { JPEGFileType, "jpg", "\xff\xd8\xff" },
        { PNGFileType, "png", "\x89PNG" }, { JPEG2000FileType, "jp2", QByteArray("\0\0\0\x0cjP", 6) } };
    BitmapImageRepPtr rep = gradient(48, 32, false);
    for (const auto &f : formats) {
        EXPECT_EQ(
            BitmapImageRep::pathExtensionForBitmapImageFileType(f.type), QLatin1StringView(f.extension));
        const QByteArray data = rep->representationUsingType(f.type, 0.9f);
        ASSERT_TRUE(data.startsWith(f.signature))
            << f.extension << ": " << data.left(8).toHex().toStdString();
        vips::VImage back = decode(data);
        EXPECT_EQ(back.width(), 48);
        EXPECT_NEAR(back.getpoint(40, 5)[0], 40 * 255 / 47, f.type == GIFFileType ? 40 : 12) << f.extension;
    }
    for (int type : { 6, -1 }) {
        EXPECT_TRUE(rep->representationUsingType(type, 0.9f).isEmpty());
        EXPECT_TRUE(BitmapImageRep::pathExtensionForBitmapImageFileType(type).isNull());
    }
}

TEST(ImageEncoding, TheCompressionFactorControlsJpegQuality)
{
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"p.png"_s), 256, 256));
    auto rep = BitmapImageRep::fromQImage(loadImage(dir.file(u"p.png"_s)));
    const QByteArray low = rep->representationUsingType(JPEGFileType, 0.1f);
    const QByteArray high = rep->representationUsingType(JPEGFileType, 1.0f);
    EXPECT_LT(low.size(), high.size());
    // PNG and TIFF stay lossless at any factor; a lower factor compresses harder.
    const QByteArray pngFast = rep->representationUsingType(PNGFileType, 1.0f);
    const QByteArray pngSmall = rep->representationUsingType(PNGFileType, 0.0f);
    EXPECT_LE(pngSmall.size(), pngFast.size());
    EXPECT_EQ(decode(pngSmall).getpoint(100, 100), decode(pngFast).getpoint(100, 100));
}

TEST(ImageEncoding, AlphaIsWrittenOnlyWhenThePictureHasTransparency)
{
    BitmapImageRepPtr withAlpha = gradient(20, 10, true);
    vips::VImage png = decode(withAlpha->representationUsingType(PNGFileType, 0.8f));
    EXPECT_EQ(png.bands(), 4);
    EXPECT_EQ(png.getpoint(2, 2)[3], 0);
    // The rendering bitmap of an opaque picture has an alpha channel that says nothing: left out.
    BitmapImageRepPtr opaque = BitmapImageRep::createRGBA(20, 10);
    QImage q = opaque->toQImage();
    q.fill(QColor(10, 20, 30));
    EXPECT_EQ(decode(opaque->representationUsingType(PNGFileType, 0.8f)).bands(), 3);
    // JPEG has no alpha: transparent parts are composed on white.
    vips::VImage jpeg = decode(withAlpha->representationUsingType(JPEGFileType, 1.0f));
    EXPECT_EQ(jpeg.bands(), 3);
    EXPECT_GT(jpeg.getpoint(2, 5)[2], 240);
}

TEST(ImageEncoding, LayoutsThatCannotBeShownGiveNoData)
{
    auto planar = BitmapImageRep::create(8, 8, 8, 3, false, true);
    ASSERT_TRUE(planar);
    EXPECT_TRUE(planar->representationUsingType(PNGFileType, 0.8f).isEmpty());
    EXPECT_FALSE(BitmapImageRep::create(0, 8, 8, 4, true, false));
    EXPECT_FALSE(BitmapImageRep::create(8, 8, 8, 4, true, false, 0, 16)); // rows shorter than the pixels
    auto padded = BitmapImageRep::create(5, 2, 8, 4, true, false, 0, 24);
    ASSERT_TRUE(padded);
    EXPECT_EQ(padded->bytesPerRow(), 24);
}

TEST(ImageEncoding, ImagesEncodeTheirBestBitmapAndTiffData)
{
    auto image = Image::imageWithRepresentation(gradient(30, 20, false));
    const QByteArray tiff = image->TIFFRepresentation();
    EXPECT_TRUE(tiff.startsWith("II*") || tiff.startsWith("MM"));
    QString extension;
    const QByteArray best = image->bestRepresentationAndFileExtension(&extension);
    EXPECT_EQ(extension, u"tiff"_s);
    EXPECT_EQ(decode(best).width(), 30);
    EXPECT_EQ(decode(image->snapshotData()).width(), 30);
    ImagePtr again = image->bitmapImage();
    ASSERT_TRUE(again);
    EXPECT_EQ(again->pixelSize(), QSizeF(30, 20));
    EXPECT_TRUE(Image::initWithSize(QSizeF(4, 4))->representationUsingType(PNGFileType, 0.8f).isEmpty());
}
