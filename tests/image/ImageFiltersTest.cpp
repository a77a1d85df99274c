// The image-level filters: forwarding to every bitmap representation, skipping documents, and the
// alpha copy that colour-keyed transparency puts in place of a bitmap without alpha.
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

// A 3×3 bitmap of spp samples: every colour sample 80, the centre's 100; alpha (when present) 255.
BitmapImageRepPtr plus(int spp, bool alpha)
{
    auto rep = BitmapImageRep::create(3, 3, 8, spp, alpha, false);
    unsigned char *data = rep->bitmapData();
    for (int i = 0; i < 9 * spp; ++i)
        data[i] = (alpha && i % spp == spp - 1) ? 255 : (i / spp == 4 ? 100 : 80);
    return rep;
}

int centre(const ImageRepPtr &rep, int c)
{
    auto bitmap = std::static_pointer_cast<BitmapImageRep>(rep);
    return bitmap->bitmapData()[4 * (bitmap->bitsPerPixel() / 8) + c];
}

} // namespace

TEST(ImageFilters, SharpenReachesEveryBitmapRepresentation)
{
    auto image = std::make_shared<Image>(QSizeF(3, 3));
    image->addRepresentation(plus(4, true));
    image->addRepresentation(plus(3, false));
    ASSERT_TRUE(image->canFilter());
    image->sharpenStrong(); // 5·100 − 4·80
    EXPECT_EQ(centre(image->representations()[0], 0), 180);
    EXPECT_EQ(centre(image->representations()[0], 3), 255);
    EXPECT_EQ(centre(image->representations()[1], 2), 180);
    image->tintGray(0.1f); // + 26
    EXPECT_EQ(centre(image->representations()[0], 1), 206);
    EXPECT_EQ(centre(image->representations()[1], 1), 206);
}

TEST(ImageFilters, OneFilterableBitmapIsEnoughForCanFilter)
{
    auto image = std::make_shared<Image>(QSizeF(3, 3));
    EXPECT_FALSE(image->canFilter());
    image->addRepresentation(BitmapImageRep::create(3, 3, 16, 4, true, false));
    EXPECT_FALSE(image->canFilter());
    image->addRepresentation(plus(1, false));
    EXPECT_TRUE(image->canFilter());
    image->sharpenLight(); // (800 − 320) ÷ 4
    EXPECT_EQ(centre(image->representations()[1], 0), 120);
}

TEST(ImageFilters, DocumentImagesAreLeftAlone)
{
    TempDir dir;
    const QString pdf = dir.file(u"page.pdf"_s);
    ASSERT_TRUE(writeTestPdf(pdf, 72, 72, Qt::blue));
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
    EXPECT_TRUE(image->isPDFImage());
}

TEST(ImageFilters, MakeTransparentReplacesABitmapWithoutAlphaAtTheEnd)
{
    auto image = std::make_shared<Image>(QSizeF(3, 3));
    const BitmapImageRepPtr opaque = plus(3, false);
    const BitmapImageRepPtr withAlpha = plus(4, true);
    image->addRepresentation(opaque);
    image->addRepresentation(withAlpha);
    image->makeTransparentGray(
        80.0f / 255.0f, 0.1f); // the 80s become clear, the centre (d = 20, a = 15) fades
    const auto &reps = image->representations();
    ASSERT_EQ(reps.size(), 2u);
    EXPECT_EQ(reps[0], withAlpha);
    EXPECT_NE(reps[1], opaque);
    auto added = std::static_pointer_cast<BitmapImageRep>(reps[1]);
    EXPECT_TRUE(added->hasAlpha());
    EXPECT_EQ(added->samplesPerPixel(), 4);
    for (const auto &rep : reps) {
        auto b = std::static_pointer_cast<BitmapImageRep>(rep);
        EXPECT_EQ(b->bitmapData()[3], 0); // corner: d = 0
        EXPECT_EQ(centre(rep, 3), 400 / 26); // 15
        EXPECT_EQ(centre(rep, 0), 100 * 15 / 255); // 5
    }
}
