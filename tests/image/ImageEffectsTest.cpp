// The image-level filters and effects: forwarding to every bitmap representation, documents, the alpha
// copy made for colour-keyed transparency, negatives, tinting through Porter–Duff operations, reflections.
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <QPainter>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

using Bytes = std::vector<unsigned char>;

BitmapImageRepPtr bitmap(int w, int h, int spp, bool alpha, const Bytes &bytes)
{
    auto rep = BitmapImageRep::create(w, h, 8, spp, alpha, false);
    memcpy(rep->bitmapData(), bytes.data(), std::min(bytes.size(), size_t(rep->bytesPerPlane())));
    return rep;
}

Bytes bytesOf(BitmapImageRep &rep) { return Bytes(rep.bitmapData(), rep.bitmapData() + rep.bytesPerPlane()); }

// A 3×3 bitmap of spp samples: every colour sample 80, the centre's 100; alpha (when present) 255.
BitmapImageRepPtr plus(int spp, bool alpha)
{
    Bytes data(size_t(9 * spp));
    for (int i = 0; i < 9 * spp; ++i)
        data[size_t(i)] = (alpha && i % spp == spp - 1) ? 255 : (i / spp == 4 ? 100 : 80);
    return bitmap(3, 3, spp, alpha, data);
}

int centre(const ImageRepPtr &rep, int c)
{
    auto bitmap = std::static_pointer_cast<BitmapImageRep>(rep);
    return bitmap->bitmapData()[4 * (bitmap->bitsPerPixel() / 8) + c];
}

// An opaque picture: the top half red, the bottom half blue.
ImagePtr twoBands(int w, int h)
{
    QImage picture(w, h, QImage::Format_RGBA8888_Premultiplied);
    picture.fill(Qt::red);
    QPainter(&picture).fillRect(0, h / 2, w, h - h / 2, Qt::blue);
    return Image::imageWithRepresentation(BitmapImageRep::fromQImage(picture));
}

QColor pixel(const BitmapImageRepPtr &rep, int x, int y)
{
    const unsigned char *p = rep->bitmapData() + y * rep->bytesPerRow() + x * 4;
    return QColor(p[0], p[1], p[2], p[3]);
}

} // namespace

TEST(ImageFilters, ReachEveryFilterableBitmapRepresentation)
{
    auto image = std::make_shared<Image>(QSizeF(3, 3));
    EXPECT_FALSE(image->canFilter());
    image->addRepresentation(BitmapImageRep::create(3, 3, 16, 4, true, false));
    EXPECT_FALSE(image->canFilter());
    image->addRepresentation(plus(4, true));
    image->addRepresentation(plus(3, false));
    EXPECT_TRUE(image->canFilter()); // one filterable bitmap is enough
    image->sharpenStrong(); // 5·100 − 4·80
    const auto &reps = image->representations();
    EXPECT_EQ(centre(reps[1], 0), 180);
    EXPECT_EQ(centre(reps[1], 3), 255);
    EXPECT_EQ(centre(reps[2], 2), 180);
    image->tintGray(0.1f); // + 26
    EXPECT_EQ(centre(reps[1], 1), 206);
    EXPECT_EQ(centre(reps[2], 1), 206);
}

TEST(ImageFilters, MakeTransparentReplacesABitmapWithoutAlphaAtTheEnd)
{
    auto image = std::make_shared<Image>(QSizeF(3, 3));
    const BitmapImageRepPtr opaque = plus(3, false);
    const BitmapImageRepPtr withAlpha = plus(4, true);
    image->addRepresentation(opaque);
    image->addRepresentation(withAlpha);
    // The 80s become clear, the centre (d = 20, a = 400 ÷ 26 = 15) fades, its colours to 100 · 15 ÷ 255.
    image->makeTransparentGray(80.0f / 255.0f, 0.1f);
    const auto &reps = image->representations();
    ASSERT_EQ(reps.size(), 2u);
    EXPECT_EQ(reps[0], withAlpha);
    auto added = std::static_pointer_cast<BitmapImageRep>(reps[1]);
    EXPECT_NE(added, opaque);
    EXPECT_TRUE(added->hasAlpha());
    EXPECT_EQ(added->samplesPerPixel(), 4);
    for (const auto &rep : reps) {
        EXPECT_EQ(std::static_pointer_cast<BitmapImageRep>(rep)->bitmapData()[3], 0);
        EXPECT_EQ(centre(rep, 3), 15);
        EXPECT_EQ(centre(rep, 0), 5);
    }
}

TEST(ImageEffects, DocumentsAreNotFilteredHaveNoNegativeAndAreTintedAsABitmap)
{
    TempDir dir;
    const QString pdf = dir.file(u"page.pdf"_s);
    ASSERT_TRUE(writeTestPdf(pdf, 20, 10, Qt::blue));
    ImagePtr image = Image::initByReferencingFile(pdf);
    ASSERT_TRUE(image);
    ASSERT_EQ(image->representations().size(), 1u);
    const ImageRepPtr page = image->representations().front();
    EXPECT_FALSE(image->canFilter());
    image->sharpenStrong();
    image->medianFilter(3);
    image->makeTransparentGray(0, 0.5f);
    image->grayScale(false, 0);
    ASSERT_EQ(image->representations().size(), 1u);
    EXPECT_EQ(image->representations().front(), page);
    EXPECT_EQ(image->negativeImage(), nullptr);

    image->tintWithColor(QColor(255, 0, 0), CompositingOperation::SourceAtop);
    ASSERT_EQ(image->representations().size(), 1u);
    ASSERT_TRUE(image->bitmapImageRep());
    EXPECT_EQ(pixel(image->bitmapImageRep(), 5, 5), QColor(255, 0, 0, 255));
}

TEST(ImageEffects, NegativesAreCopiesOfTheFirstRepresentationOnly)
{
    auto grey = bitmap(2, 1, 1, false, Bytes { 0, 200 });
    auto negative = grey->negativeImageRep();
    ASSERT_TRUE(negative);
    EXPECT_EQ(bytesOf(*negative), (Bytes { 255, 55 }));
    EXPECT_EQ(bytesOf(*grey), (Bytes { 0, 200 }));
    EXPECT_EQ(bitmap(1, 1, 5, true, Bytes(5, 1))->negativeImageRep(), nullptr);

    auto image = std::make_shared<Image>(QSizeF(2, 1));
    EXPECT_EQ(image->negativeImage(), nullptr);
    image->addRepresentation(bitmap(2, 1, 3, false, Bytes { 1, 2, 3, 4, 5, 6 }));
    image->addRepresentation(grey);
    ImagePtr negativeImage = image->negativeImage();
    ASSERT_TRUE(negativeImage);
    ASSERT_EQ(negativeImage->representations().size(), 1u);
    EXPECT_EQ(negativeImage->size(), QSizeF(2, 1));
    EXPECT_EQ(bytesOf(*negativeImage->bitmapImageRep()), (Bytes { 254, 253, 252, 251, 250, 249 }));
}

TEST(ImageEffects, TintComposesOnPremultipliedPixels)
{
    ImagePtr image = twoBands(4, 4);
    // A nil colour answers the very same image.
    EXPECT_EQ(image->tintedImageWithColor(QColor(), CompositingOperation::SourceOver), image);
    ImagePtr tinted = image->tintedImageWithColor(QColor(0, 255, 0, 128), CompositingOperation::SourceOver);
    ASSERT_TRUE(tinted);
    ASSERT_NE(tinted, image);
    // Source-over: green·(128/255) + red·(1 − 128/255).
    EXPECT_TRUE(colourNear(pixel(tinted->bitmapImageRep(), 0, 0), QColor(127, 128, 0, 255), 1))
        << pixel(tinted->bitmapImageRep(), 0, 0).name(QColor::HexArgb).toStdString();
    EXPECT_EQ(pixel(image->bitmapImageRep(), 0, 0), QColor(255, 0, 0, 255)); // the original is untouched

    // Source-atop keeps transparent pixels transparent; copy does not.
    auto clear = Image::imageWithRepresentation(BitmapImageRep::createRGBA(2, 2));
    clear->tintWithColor(Qt::yellow, CompositingOperation::SourceAtop);
    EXPECT_EQ(pixel(clear->bitmapImageRep(), 1, 1).alpha(), 0);
    clear->tintWithColor(Qt::yellow, CompositingOperation::Copy);
    EXPECT_EQ(pixel(clear->bitmapImageRep(), 1, 1), QColor(255, 255, 0, 255));
}

TEST(ImageEffects, ReflectionAddsAMirroredFadingStripBelow)
{
    ImagePtr image = twoBands(100, 80);
    ImagePtr same = image->imageByAddingReflection(0.0f);
    ASSERT_TRUE(same);
    EXPECT_EQ(same->size(), QSizeF(100, 80));
    EXPECT_EQ(image->imageByAddingReflection(-0.5f), nullptr);
    ImagePtr reflected = image->imageByAddingReflection(0.5f);
    ASSERT_TRUE(reflected);
    EXPECT_EQ(reflected->size(), QSizeF(100, 120));
    const BitmapImageRepPtr rep = reflected->bitmapImageRep();
    ASSERT_TRUE(rep);
    EXPECT_EQ(QSize(rep->pixelsWide(), rep->pixelsHigh()), QSize(100, 120));
    EXPECT_EQ(pixel(rep, 10, 0), QColor(255, 0, 0, 255));
    EXPECT_EQ(pixel(rep, 10, 79), QColor(0, 0, 255, 255));
    // Just below the seam: the picture's bottom row (blue) at about 0.2 opacity, premultiplied.
    const QColor seam = pixel(rep, 10, 80);
    EXPECT_EQ(seam.red(), 0);
    EXPECT_NEAR(seam.alpha(), 51, 3);
    EXPECT_EQ(seam.blue(), seam.alpha());
    // The bottom of the strip has faded to almost nothing.
    EXPECT_LE(pixel(rep, 10, 119).alpha(), 2);
}
