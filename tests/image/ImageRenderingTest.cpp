// Loading and rendering: decoded thumbnails of files, their limits, metadata and what bad files give;
// documents on white, square icons, orientation, colour conversion and the lazy decoding of large
// pictures. (Transparency on the background colour and interpolation are checked through the
// thumbnail job, which draws with them.)
#include "image/Image.h"
#include "image/PDFImageRep.h"
#include "testlib/TestSupport.h"

#include <gtest/gtest.h>
#include <vips/vips8>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

// A w × h sRGB picture of one colour.
vips::VImage solidPicture(int w, int h, std::vector<double> rgb)
{
    using vips::VImage;
    return VImage::black(w, h, VImage::option()->set("bands", 3))
        .new_from_image(rgb)
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

QColor pixelOf(const ImagePtr &image, int x, int y)
{
    BitmapImageRepPtr rep = image->bitmapImageRep();
    if (!rep)
        rep = std::static_pointer_cast<BitmapImageRep>(image->cachedImageRep());
    return rep ? rep->toQImage().pixelColor(x, y) : QColor();
}

} // namespace

TEST(ImageLoading, ThumbnailForFileReportsSizeAndMetadataWithoutDecoding)
{
    TempDir dir;
    const QString path = dir.file(u"wide.png"_s);
    ASSERT_TRUE(writeTestImage(path, 300, 100, true));
    QVariantMap properties;
    ImagePtr image = Image::thumbnailForFile(path, 32767, true, true, &properties);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(300, 100));
    EXPECT_TRUE(image->hasAlpha());
    EXPECT_TRUE(image->bitmapImageRep()->isLazy());
    EXPECT_EQ(properties.value(u"PixelWidth"_s).toInt(), 300);
    // The long side is limited to the maximum pixel size.
    ImagePtr small = Image::thumbnailForFile(path, 150);
    ASSERT_TRUE(small);
    EXPECT_EQ(small->pixelSize(), QSizeF(150, 50));
}

TEST(ImageLoading, BadFilesGiveNilAReasonAndEmptyProperties)
{
    TempDir dir;
    const QString empty = dir.file(u"empty.png"_s), junk = dir.file(u"junk.png"_s),
                  bomb = dir.file(u"bomb.png"_s);
    ASSERT_TRUE(writeBytes(empty, {}));
    ASSERT_TRUE(writeBytes(junk, QByteArray(4096, 'x')));
    // A decompression bomb is refused from its header, before any decoding.
    ASSERT_TRUE(writeBytes(bomb, pngDeclaring(200000, 200000)));
    const std::pair<QString, QString> cases[] = { { QString(), u"empty path"_s },
        { dir.file(u"missing.png"_s), u"not a picture that can be decoded"_s },
        { empty, u"not a picture that can be decoded"_s }, { junk, u"not a picture that can be decoded"_s },
        { bomb, u"picture too large (200000 × 200000 pixels)"_s } };
    for (const auto &[path, reason] : cases) {
        QVariantMap properties { { u"stale"_s, 1 } };
        QString why;
        EXPECT_FALSE(Image::thumbnailForFile(path, 32767, true, true, &properties, &why)) << path;
        EXPECT_TRUE(properties.isEmpty()) << path;
        EXPECT_EQ(why, reason) << path;
    }
}

TEST(ImageLoading, ReferencedFilesAreReadWhenFirstNeeded)
{
    TempDir dir;
    const QString path = dir.file(u"late.png"_s);
    ImagePtr image = Image::initByReferencingFile(path);
    ASSERT_TRUE(image); // nothing is read yet
    ASSERT_TRUE(writeTestImage(path, 20, 10));
    EXPECT_EQ(image->size(), QSizeF(20, 10));
    ImagePtr missing = Image::initByReferencingFile(dir.file(u"nope.pdf"_s));
    EXPECT_FALSE(missing->isReallyValid());
    EXPECT_FALSE(missing->loadError().isEmpty());
    EXPECT_FALSE(Image::initByReferencingFile(QString()));
}

TEST(ImageLoading, DataAndPicturesBecomeImages)
{
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"a.gif"_s), 12, 8));
    ImagePtr fromData = Image::initWithData(readBytes(dir.file(u"a.gif"_s)));
    ASSERT_TRUE(fromData);
    EXPECT_EQ(fromData->size(), QSizeF(12, 8));
    ImagePtr downloaded = Image::initWithDownloadedData(readBytes(dir.file(u"a.gif"_s)));
    ASSERT_TRUE(downloaded);
    EXPECT_FALSE(downloaded->bitmapImageRep()->isLazy());
    EXPECT_FALSE(Image::initWithDownloadedData(QByteArray("GIF89a")));
    QImage picture(7, 3, QImage::Format_RGB32);
    EXPECT_EQ(Image::imageWithCGImageRef(picture)->size(), QSizeF(7, 3));
    EXPECT_FALSE(Image::imageWithCGImageRef(QImage()));
}

TEST(ImageRendering, DocumentsAreRenderedOnWhite)
{
    TempDir dir;
    const QString path = dir.file(u"page.pdf"_s);
    // A page whose lower half is blue and whose upper half is left unpainted.
    QByteArray ps
        = "%!PS\n<< /PageSize [200 100] >> setpagedevice\n0 0 1 setrgbcolor 0 0 200 50 rectfill showpage\n";
    ASSERT_TRUE(writeBytes(dir.file(u"in.ps"_s), ps));
    ASSERT_EQ(runProgram(u"gs"_s,
                  u"-q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pdfwrite"_s.split(u' ')
                      << u"-sOutputFile="_s + path << dir.file(u"in.ps"_s)),
        0);
    ImagePtr image = Image::initByReferencingFile(path);
    ASSERT_TRUE(image && image->isReallyValid());
    EXPECT_EQ(image->size(), QSizeF(200, 100));
    EXPECT_TRUE(image->isPDFImage());
    ImagePtr bitmap = image->bitmapImageWithPixelSize(QSizeF(100, 50), true, 3);
    ASSERT_TRUE(bitmap);
    EXPECT_TRUE(colourNear(pixelOf(bitmap, 50, 10), Qt::white, 2));
    EXPECT_TRUE(colourNear(pixelOf(bitmap, 50, 40), Qt::blue, 2));
}

TEST(ImageRendering, PostScriptIsDrawnStraightToPixelsAndMadeIntoPDFOnlyWhenAsked)
{
    TempDir dir;
    const QString path = dir.file(u"box.eps"_s);
    ASSERT_TRUE(writeTestEps(path, 60, 30, Qt::green));
    ImagePtr image = Image::initByReferencingFile(path);
    ASSERT_TRUE(image && image->isReallyValid());
    EXPECT_EQ(image->size(), QSizeF(60, 30));
    ASSERT_TRUE(image->EPSImageRep());
    ImagePtr bitmap = image->bitmapImageWithPixelSize(QSizeF(60, 30), true, 3);
    ASSERT_TRUE(bitmap);
    EXPECT_TRUE(colourNear(pixelOf(bitmap, 30, 15), Qt::green, 3));
    EXPECT_FALSE(image->EPSImageRep()->PDFImageRep());
    ASSERT_TRUE(image->EPSImageRep()->initializePDFImageRep());
    EXPECT_TRUE(image->EPSImageRep()->PDFRepresentation().startsWith("%PDF"));
    EXPECT_EQ(image->pathExtensionForBestRepresentation(), u"eps"_s);
}

TEST(ImageRendering, PostScriptPageOneIsDrawnSmoothlyAndWhatComesAfterItIsNotRun)
{
    TempDir dir;
    // Red up to 102.5 points (pixel 20.5 at this scale), blue after it; page 2 would fail.
    const QString path = dir.file(u"two.ps"_s);
    ASSERT_TRUE(writeBytes(path,
        "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 200 100\n%%Pages: 2\n%%Page: 1 1\n"
        "1 0 0 setrgbcolor 0 0 102.5 100 rectfill 0 0 1 setrgbcolor 102.5 0 97.5 100 rectfill showpage\n"
        "%%Page: 2 2\nnosuchoperator showpage\n"));
    ImagePtr image = Image::initByReferencingFile(path);
    ASSERT_TRUE(image && image->isReallyValid());
    ImagePtr bitmap = image->bitmapImageWithPixelSize(QSizeF(40, 20), true, 3);
    ASSERT_TRUE(bitmap) << image->drawError().toStdString();
    EXPECT_TRUE(colourNear(pixelOf(bitmap, 5, 10), Qt::red, 6));
    EXPECT_TRUE(colourNear(pixelOf(bitmap, 35, 10), Qt::blue, 6));
    // The edge pixel is a blend, not a hard step.
    const QColor edge = pixelOf(bitmap, 20, 10);
    EXPECT_GT(edge.red(), 60) << edge.name().toStdString();
    EXPECT_GT(edge.blue(), 60) << edge.name().toStdString();
}

TEST(ImageRendering, PostScriptThatNeverEndsIsStoppedByTheTimeLimit)
{
    TempDir dir;
    const QString path = dir.file(u"loop.ps"_s);
    ASSERT_TRUE(writeBytes(path, "%!PS\n%%BoundingBox: 0 0 10 10\n{ } loop\n"));
    const int old = EPSImageRep::conversionTimeLimit();
    EPSImageRep::setConversionTimeLimit(1);
    ImagePtr image = Image::initByReferencingFile(path);
    ASSERT_TRUE(image && image->isReallyValid());
    EXPECT_FALSE(image->bitmapImageWithPixelSize(QSizeF(10, 10), true, 3));
    EXPECT_EQ(image->drawError(), u"PostScript conversion timed out after 1 s"_s);
    EPSImageRep::setConversionTimeLimit(old);
}

TEST(ImageRendering, SquareImageCentresThePictureOnTransparency)
{
    auto image = Image::imageWithRepresentation(BitmapImageRep::fromQImage([] {
        QImage q(200, 100, QImage::Format_RGB888);
        q.fill(Qt::red);
        return q;
    }()));
    ImagePtr square = image->squareImage();
    ASSERT_TRUE(square);
    EXPECT_EQ(square->size(), QSizeF(200, 200));
    EXPECT_EQ(pixelOf(square, 100, 49).alpha(), 0);
    EXPECT_TRUE(colourNear(pixelOf(square, 100, 50), Qt::red, 0));
    EXPECT_FALSE(Image::initWithSize(QSizeF(0, 0))->squareImage());
    EXPECT_FALSE(image->bitmapImageWithPixelSize(QSizeF(0, 5), true, 3));
}

TEST(ImageRendering, LargePicturesAreNotDecodedWholeForASmallThumbnail)
{
    TempDir dir;
    const QString path = dir.file(u"big.jpg"_s);
    ASSERT_TRUE(writeTestImage(path, 3000, 2000));
    ImagePtr image = Image::thumbnailForFile(path, 32767, true, true);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixelSize(), QSizeF(3000, 2000));
    ImagePtr thumb = image->bitmapImageWithPixelSize(image->thumbSize(QSizeF(128, 128)), true, 3);
    ASSERT_TRUE(thumb);
    EXPECT_EQ(thumb->pixelSize(), QSizeF(128, 85));
    EXPECT_TRUE(image->bitmapImageRep()->isLazy()); // the whole picture was never decoded
    // The ramps survive the scaling: red grows left to right.
    EXPECT_LT(pixelOf(thumb, 2, 42).red(), 20);
    EXPECT_GT(pixelOf(thumb, 125, 42).red(), 235);
    // Code that needs every pixel still gets them.
    ASSERT_TRUE(image->bitmapImageRep()->bitmapData());
    EXPECT_FALSE(image->bitmapImageRep()->isLazy());
}

TEST(ImageRendering, OrientationIsAppliedAndColoursAreConvertedToSRGB)
{
    TempDir dir;
    using vips::VImage;
    // 40×20, left half red and right half blue, stored with orientation 6 (rotate 90° clockwise to view).
    VImage img = solidPicture(20, 20, { 255, 0, 0 })
                     .join(solidPicture(20, 20, { 0, 0, 255 }), VIPS_DIRECTION_HORIZONTAL);
    img.set(VIPS_META_ORIENTATION, 6);
    const QString rotated = dir.file(u"rotated.jpg"_s);
    img.write_to_file(rotated.toUtf8().constData(), VImage::option()->set("Q", 95));
    ImagePtr image = Image::thumbnailForFile(rotated, 32767, true, true);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixelSize(), QSizeF(20, 40));
    ImagePtr bitmap = image->bitmapImageWithPixelSize(QSizeF(20, 40), true, 3);
    ASSERT_TRUE(bitmap);
    EXPECT_TRUE(colourNear(pixelOf(bitmap, 10, 5), Qt::red, 40));
    EXPECT_TRUE(colourNear(pixelOf(bitmap, 10, 35), Qt::blue, 40));
    EXPECT_EQ(Image::thumbnailForFile(rotated, 32767, true, false)->pixelSize(), QSizeF(40, 20));

    // A CMYK JPEG comes out in the right sRGB colour.
    const QString cmyk = dir.file(u"cmyk.jpg"_s);
    solidPicture(16, 16, { 230, 120, 30 })
        .icc_transform("cmyk", VImage::option()->set("input_profile", "srgb"))
        .write_to_file(cmyk.toUtf8().constData(), VImage::option()->set("Q", 95));
    ImagePtr fromCmyk = Image::thumbnailForFile(cmyk, 32767, true, true);
    ASSERT_TRUE(fromCmyk);
    ImagePtr drawn = fromCmyk->bitmapImageWithPixelSize(QSizeF(16, 16), true, 3);
    ASSERT_TRUE(drawn);
    EXPECT_TRUE(colourNear(pixelOf(drawn, 8, 8), QColor(230, 120, 30), 25))
        << pixelOf(drawn, 8, 8).name().toStdString();
}

TEST(ImageRendering, APictureThatFailsToDecodeGivesNoBitmapAndAReason)
{
    TempDir dir;
    const QString path = dir.file(u"cut.jpg"_s);
    ASSERT_TRUE(writeTestImage(path, 800, 600));
    // Cut just after the start of its picture data: a damaged file with nothing to show.
    QByteArray bytes = readBytes(path);
    ASSERT_TRUE(writeBytes(path, bytes.left(bytes.indexOf("\xFF\xDA") + 30)));
    ImagePtr image = Image::thumbnailForFile(path, 32767, true, true);
    ASSERT_TRUE(image); // the header is fine
    EXPECT_FALSE(image->bitmapImageWithPixelSize(QSizeF(128, 96), true, 3));
    EXPECT_FALSE(image->drawError().isEmpty());
}
