// Geometry and drawing: box fitting, scaling, pixel size and validity; centred and tiled drawing,
// parts of images, representation choice and kinds.
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace orvel;
using namespace orvel::test;

namespace {

// A w × h picture of the colour, with the part (when given) in a second colour.
ImagePtr solid(int w, int h, QColor colour, QRect part = {}, QColor second = {})
{
    QImage q(w, h, QImage::Format_RGBA8888);
    q.fill(colour);
    QPainter(&q).fillRect(part, second);
    return Image::imageWithRepresentation(BitmapImageRep::fromQImage(q));
}

// Runs draw with a w × h transparent canvas as the current context and answers the canvas.
QImage canvas(int w, int h, const std::function<void()> &draw)
{
    QImage target(w, h, QImage::Format_RGBA8888_Premultiplied);
    target.fill(Qt::transparent);
    QPainter painter(&target);
    GraphicsContext context(&painter);
    GraphicsContext::Scope scope(context);
    context.setImageInterpolation(InterpolationNone);
    draw();
    return target;
}

} // namespace

TEST(ImageDrawing, CentredDrawingKeepsTheSizeAndAnswersTheRectangle)
{
    ImagePtr red = solid(10, 6, Qt::red);
    QRectF drawn;
    const QImage out = canvas(30, 30, [&] {
        drawn
            = red->drawCenteredInRect(QRectF(0, 0, 30, 30), QRectF(), CompositingOperation::SourceOver, 1.0);
    });
    EXPECT_EQ(drawn, QRectF(10, 12, 10, 6));
    EXPECT_EQ(out.pixelColor(15, 14), QColor(Qt::red));
    EXPECT_EQ(out.pixelColor(9, 14).alpha(), 0);
}

TEST(ImageDrawing, CentredTilingPutsATileInTheMiddle)
{
    // Two colours side by side make the tile's phase visible.
    ImagePtr tile = solid(10, 10, Qt::red, QRect(5, 0, 5, 10), Qt::blue);
    const QImage out = canvas(25, 10, [&] {
        tile->drawInRect(
            QRectF(0, 0, 25, 10), QRectF(), CompositingOperation::SourceOver, 1.0, true, false, true);
    });
    // Three tiles starting at -2.5: the middle one spans 7.5 to 17.5.
    EXPECT_EQ(out.pixelColor(14, 5), QColor(Qt::blue));
    EXPECT_EQ(out.pixelColor(1, 5), QColor(Qt::red)); // the first tile starts 2.5 pixels early
    EXPECT_EQ(out.pixelColor(4, 5), QColor(Qt::blue));
}

TEST(ImageDrawing, PartsOfImagesAreDrawnFromTheirRectangle)
{
    ImagePtr image = solid(20, 20, Qt::red, QRect(10, 0, 10, 10), Qt::green);
    ImagePtr part = image->imageFromRect(QRectF(10, 0, 10, 10), 1.0);
    ASSERT_TRUE(part);
    EXPECT_EQ(part->size(), QSizeF(10, 10));
    const QImage pixels = std::static_pointer_cast<BitmapImageRep>(part->cachedImageRep())->toQImage();
    EXPECT_EQ(pixels.pixelColor(5, 5), QColor(Qt::green));
    ImagePtr faded = image->imageFromRect(QRectF(0, 10, 10, 10), 0.5);
    const QImage half = std::static_pointer_cast<BitmapImageRep>(faded->cachedImageRep())->toQImage();
    EXPECT_NEAR(half.pixelColor(5, 5).alpha(), 128, 2);
    EXPECT_EQ(Image::initWithImageFromRect(*image, QRectF(0, 0, 10, 10), QSizeF(4, 4))->size(), QSizeF(4, 4));
}

TEST(ImageDrawing, RepresentationChoiceKindsAndAlpha)
{
    auto image = Image::initWithSize(QSizeF(64, 64));
    auto small = BitmapImageRep::createRGBA(32, 32);
    auto large = BitmapImageRep::createRGBA(256, 256);
    auto medium = BitmapImageRep::createRGBA(100, 100);
    image->addRepresentation(small);
    image->addRepresentation(large);
    image->addRepresentation(medium);
    EXPECT_EQ(image->bestRepresentationForRect(QRectF(0, 0, 64, 64)), medium);
    EXPECT_EQ(image->bestRepresentationForRect(QRectF(0, 0, 20, 20)), small);
    EXPECT_EQ(image->bestRepresentationForRect(QRectF(0, 0, 900, 900)), large);
    EXPECT_TRUE(image->isBitmapImage());
    EXPECT_TRUE(image->hasAlpha());
    EXPECT_EQ(image->bounds(), QRectF(0, 0, 256, 256));
    image->removeAllRepresentations();
    EXPECT_FALSE(image->hasAlpha());
    EXPECT_EQ(image->bounds(), QRectF(0, 0, 64, 64));
    QImage opaque(4, 4, QImage::Format_RGB888);
    EXPECT_FALSE(Image::imageWithRepresentation(BitmapImageRep::fromQImage(opaque))->hasAlpha());
}

TEST(ImageDrawing, FocusedDrawingMakesABitmapOfTheImage)
{
    ImagePtr red = solid(8, 8, Qt::red);
    ImagePtr copy = red->bitmapImageWithSize(QSizeF(4, 4));
    ASSERT_TRUE(copy);
    ASSERT_TRUE(copy->bitmapImageRep());
    EXPECT_EQ(copy->bitmapImageRep()->toQImage().pixelColor(2, 2), QColor(Qt::red));
    EXPECT_FALSE(red->bitmapImageWithSize(QSizeF(0, 4)));
    ImagePtr thumb = solid(400, 100, Qt::blue)->thumbForSize(QSizeF(100, 100));
    EXPECT_EQ(thumb->size(), QSizeF(100, 25));
    EXPECT_EQ(GraphicsContext::current(), nullptr); // every focus was released
}

TEST(ImageGeometry, ThumbFitsIntoTheBoxWithoutEnlarging)
{
    const struct
    {
        QSizeF box, source, expected;
    } cases[] = { { { 128, 128 }, { 100, 50 }, { 100, 50 } }, { { 128, 128 }, { 200, 400 }, { 64, 128 } },
        { { 128, 128 }, { 1000, 3 }, { 128, 1 } }, { { 128, 64 }, { 256, 128 }, { 128, 64 } },
        { { 128, 128 }, { 100.5, 60.25 }, { 100.5, 60.25 } }, { { 128, 128 }, { 129, 128 }, { 128, 127 } },
        { { 128, 128 }, { 384, 200 }, { 128, 66 } } };
    for (const auto &c : cases)
        EXPECT_EQ(Image::thumb(c.box, c.source), c.expected) << c.source.width() << "×" << c.source.height();
}

TEST(ImageGeometry, ScaledSizeRoundsDownAndIgnoresNonPositiveFactors)
{
    auto image = Image::imageWithRepresentation(BitmapImageRep::createRGBA(101, 51));
    EXPECT_EQ(image->scaledSize(0.5), QSizeF(50, 25));
    EXPECT_EQ(image->scaledSize(0.01), QSizeF(1, 0));
    EXPECT_EQ(image->scaledSize(0), QSizeF(101, 51));
    auto square = Image::imageWithRepresentation(BitmapImageRep::createRGBA(50, 50));
    EXPECT_EQ(square->scaledSize(0.01), QSizeF(0, 0));
}

TEST(ImageGeometry, PixelSizeIsThatOfTheWidestRepresentation)
{
    auto image = Image::initWithSize(QSizeF(10, 10));
    image->addRepresentation(BitmapImageRep::createRGBA(64, 30));
    image->addRepresentation(BitmapImageRep::createRGBA(512, 20));
    image->addRepresentation(BitmapImageRep::createRGBA(512, 99)); // a tie: the first one wins
    EXPECT_EQ(image->pixelSize(), QSizeF(512, 20));
    EXPECT_EQ(image->size(), QSizeF(10, 10));
    EXPECT_EQ(Image::initWithSize(QSizeF(7, 3))->pixelSize(), QSizeF(7, 3));
}

TEST(ImageGeometry, ValidityNeedsASizeAndARepresentation)
{
    EXPECT_FALSE(Image::initWithSize(QSizeF(10, 10))->isReallyValid());
    auto image = Image::imageWithRepresentation(BitmapImageRep::createRGBA(4, 4));
    EXPECT_TRUE(image->isReallyValid());
    image->setSize(QSizeF(0, 4));
    EXPECT_FALSE(image->isReallyValid());
    EXPECT_DOUBLE_EQ(Image::initWithSize(QSizeF(30, 0))->aspectRatio(), 0.0);
}
