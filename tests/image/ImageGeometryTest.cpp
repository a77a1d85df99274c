// Thumbnail geometry: box fitting, scaling, pixel size and validity.
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace orvel;

struct FitCase
{
    QSizeF box, source, expected;
};

class ThumbFit : public ::testing::TestWithParam<FitCase>
{
};

TEST_P(ThumbFit, FitsIntoTheBoxWithoutEnlarging)
{
    const FitCase c = GetParam();
    EXPECT_EQ(Image::thumb(c.box, c.source), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, ThumbFit,
    ::testing::Values(FitCase { { 128, 128 }, { 100, 50 }, { 100, 50 } },
        FitCase { { 128, 128 }, { 400, 200 }, { 128, 64 } },
        FitCase { { 128, 128 }, { 200, 400 }, { 64, 128 } },
        FitCase { { 128, 128 }, { 1000, 3 }, { 128, 1 } }, FitCase { { 128, 64 }, { 256, 128 }, { 128, 64 } },
        FitCase { { 128, 128 }, { 100.5, 60.25 }, { 100.5, 60.25 } },
        FitCase { { 128, 128 }, { 3, 1000 }, { 1, 128 } },
        FitCase { { 128, 128 }, { 129, 128 }, { 128, 127 } }));

TEST(ImageGeometry, ScaledSizeRoundsDownAndIgnoresNonPositiveFactors)
{
    auto image = Image::imageWithRepresentation(BitmapImageRep::createRGBA(101, 51));
    EXPECT_EQ(image->scaledSize(0.5), QSizeF(50, 25));
    EXPECT_EQ(image->scaledSize(0.01), QSizeF(1, 0));
    EXPECT_EQ(image->scaledSize(0), QSizeF(101, 51));
    EXPECT_EQ(image->scaledSize(-1), QSizeF(101, 51));
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
    EXPECT_DOUBLE_EQ(Image::initWithSize(QSizeF(30, 20))->aspectRatio(), 1.5);
    EXPECT_DOUBLE_EQ(Image::initWithSize(QSizeF(30, 0))->aspectRatio(), 0.0);
}
