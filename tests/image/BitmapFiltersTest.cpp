// The bitmap filters on small hand-worked bitmaps: convolution arithmetic, borders, alpha, padded
// rows, layout refusals, tables, statistics, median, transparency, tinting and entropy.
#include "image/BitmapImageRep.h"

#include <QByteArray>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace orvel;

namespace {

using Bytes = std::vector<unsigned char>;

// A meshed 8-bit bitmap of w × h pixels of spp samples whose rows hold the given pixel bytes, padded
// with `pad` bytes of 0xEE per row.
BitmapImageRepPtr bitmap(int w, int h, int spp, bool alpha, const Bytes &pixels, int pad = 0)
{
    auto rep = BitmapImageRep::create(w, h, 8, spp, alpha, false, 0, qsizetype(w) * spp + pad);
    if (!rep)
        return nullptr;
    unsigned char *data = rep->bitmapData();
    memset(data, 0xEE, size_t(rep->bytesPerRow() * h));
    for (int y = 0; y < h; ++y)
        memcpy(data + y * rep->bytesPerRow(), pixels.data() + size_t(y * w * spp), size_t(w * spp));
    return rep;
}

Bytes bytesOf(BitmapImageRep &rep)
{
    const unsigned char *data = rep.bitmapData();
    return Bytes(data, data + rep.bytesPerRow() * rep.pixelsHigh());
}

// One sample: pixel (x, y), channel c.
int at(BitmapImageRep &rep, int x, int y, int c)
{
    return rep.bitmapData()[y * rep.bytesPerRow() + x * (rep.bitsPerPixel() / 8) + c];
}

// A 3×3 RGB picture whose centre pixel has four edge neighbours of one value per channel, corners 7.
Bytes plusPattern(const int centre[3], const int edge[3])
{
    Bytes b(27, 7);
    for (int c = 0; c < 3; ++c) {
        b[size_t(4 * 3 + c)] = static_cast<unsigned char>(centre[c]);
        for (int i : { 1, 3, 5, 7 })
            b[size_t(i * 3 + c)] = static_cast<unsigned char>(edge[c]);
    }
    return b;
}

struct SharpenCase
{
    const char *name;
    void (BitmapImageRep::*filter)();
    int expected[3];
};

class SharpenLevels : public ::testing::TestWithParam<SharpenCase>
{
};

} // namespace

TEST_P(SharpenLevels, WorkedExampleChangesOnlyTheCentre)
{
    // Channel 0: centre 100, edges 80; channel 1: 10 / 20 (negative sums clamp to 0); channel 2: 60 / 57.
    const int centre[3] = { 100, 10, 60 }, edge[3] = { 80, 20, 57 };
    const Bytes before = plusPattern(centre, edge);
    auto rep = bitmap(3, 3, 3, false, before);
    (rep.get()->*GetParam().filter)();
    Bytes expected = before;
    for (int c = 0; c < 3; ++c)
        expected[size_t(12 + c)] = static_cast<unsigned char>(GetParam().expected[c]);
    EXPECT_EQ(bytesOf(*rep), expected);
}

INSTANTIATE_TEST_SUITE_P(BitmapFilters, SharpenLevels,
    ::testing::Values(SharpenCase { "Strong", &BitmapImageRep::sharpenStrong, { 180, 0, 72 } },
        SharpenCase { "Medium", &BitmapImageRep::sharpenMedium, { 140, 0, 66 } },
        SharpenCase { "Light", &BitmapImageRep::sharpenLight, { 120, 0, 63 } }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(BitmapFilters, QuotientTruncatesTowardZeroBeforeTheOffset)
{
    // Sums −5 and 7 divided by 4 are −1 and 1 (not −2): 9 and 11 with offset 10.
    const int32_t centreOnly[9] = { 0, 0, 0, 0, 1, 0, 0, 0, 0 };
    const int32_t minus[9] = { 0, 0, 0, 0, -1, 0, 0, 0, 0 };
    auto a = bitmap(3, 3, 1, false, Bytes { 0, 0, 0, 0, 5, 0, 0, 0, 0 });
    a->applyMatrixFilter(minus, 4, 10);
    EXPECT_EQ(at(*a, 1, 1, 0), 9);
    auto b = bitmap(3, 3, 1, false, Bytes { 0, 0, 0, 0, 7, 0, 0, 0, 0 });
    b->applyMatrixFilter(centreOnly, 4, 10);
    EXPECT_EQ(at(*b, 1, 1, 0), 11);
    auto c = bitmap(3, 3, 1, false, Bytes { 0, 0, 0, 0, 7, 0, 0, 0, 0 });
    c->applyMatrixFilter(minus, -3, 0); // −7 ÷ −3 = 2
    EXPECT_EQ(at(*c, 1, 1, 0), 2);
}

TEST(BitmapFilters, WeightsFollowRowMajorOrderWithTheRowAboveFirst)
{
    // A kernel picking the top-right neighbour: the centre takes the value at (x+1, y−1).
    const int32_t topRight[9] = { 0, 0, 1, 0, 0, 0, 0, 0, 0 };
    auto rep = bitmap(3, 3, 1, false, Bytes { 1, 2, 3, 4, 5, 6, 7, 8, 9 });
    rep->applyMatrixFilter(topRight, 1, 0);
    EXPECT_EQ(bytesOf(*rep), (Bytes { 1, 2, 3, 4, 3, 6, 7, 8, 9 }));
}

TEST(BitmapFilters, CallbackGetsQuotientPlusOffsetAndItsResultIsClamped)
{
    const int32_t identity[9] = { 0, 0, 0, 0, 1, 0, 0, 0, 0 };
    auto rep = bitmap(5, 3, 1, false, Bytes { 0, 0, 0, 0, 0, 0, 10, 100, 200, 0, 0, 0, 0, 0, 0 });
    rep->applyMatrixFilter(identity, 1, 5, [](int v) { return v == 15 ? -3 : v == 105 ? 77 : v + 100; });
    EXPECT_EQ(at(*rep, 1, 1, 0), 0); // −3 clamps to 0
    EXPECT_EQ(at(*rep, 2, 1, 0), 77);
    EXPECT_EQ(at(*rep, 3, 1, 0), 255); // 305 clamps to 255
}

TEST(BitmapFilters, SharpenKeepsAlphaBorderAndRowPadding)
{
    // 6×5 RGBA with 3 bytes of padding per row, random samples: compare with a direct evaluation of
    // the formula, and the untouched bytes with their old values.
    std::mt19937 random(7);
    Bytes pixels(6 * 5 * 4);
    for (auto &b : pixels)
        b = static_cast<unsigned char>(random() & 0xff);
    auto rep = bitmap(6, 5, 4, true, pixels, 3);
    const Bytes before = bytesOf(*rep);
    const qsizetype row = rep->bytesPerRow();
    rep->sharpenMedium();
    const Bytes after = bytesOf(*rep);
    for (int y = 0; y < 5; ++y) {
        for (qsizetype i = 0; i < row; ++i) {
            const int x = int(i / 4), c = int(i % 4);
            const size_t k = size_t(y * row + i);
            const bool interior = x >= 1 && x <= 4 && y >= 1 && y <= 3 && c < 3;
            if (!interior) {
                EXPECT_EQ(after[k], before[k]) << "x " << x << " y " << y << " c " << c;
                continue;
            }
            const auto s
                = [&](int dx, int dy) { return int64_t(before[size_t((y + dy) * row + (x + dx) * 4 + c)]); };
            const int64_t q = (6 * s(0, 0) - s(0, -1) - s(-1, 0) - s(1, 0) - s(0, 1)) / 2;
            EXPECT_EQ(after[k], q < 0 ? 0 : q > 255 ? 255 : q) << "x " << x << " y " << y << " c " << c;
        }
    }
}

TEST(BitmapFilters, CallbackAndFastPathsAgree)
{
    // Large weights push the sums past 32 bits' comfort; a 7-wide divisor is not a power of two.
    std::mt19937 random(11);
    Bytes pixels(9 * 7 * 3);
    for (auto &b : pixels)
        b = static_cast<unsigned char>(random() & 0xff);
    // Sums of 16, 32 and 64 bits.
    const int32_t kernels[4][9] = { { 1, 2, 1, 2, 4, 2, 1, 2, 1 }, { 0, -1, 0, -1, 5, -1, 0, -1, 0 },
        { 100, 0, -50, 0, 30, 0, 0, 0, 1 }, { 8000000, -3, 0, 0, 1, 0, 0, 0, -8000000 } };
    for (const auto &kernel : kernels) {
        for (int32_t divisor : { 1, 4, 7, -2 }) {
            auto fast = bitmap(9, 7, 3, false, pixels);
            auto slow = bitmap(9, 7, 3, false, pixels);
            fast->applyMatrixFilter(kernel, divisor, 3);
            slow->applyMatrixFilter(kernel, divisor, 3, [](int v) { return v; });
            EXPECT_EQ(bytesOf(*fast), bytesOf(*slow)) << "divisor " << divisor;
        }
    }
    // Two 5×5 kernels: with the callback both are applied in turn, the second one's result remains.
    for (int32_t scale : { 1, 1000 }) { // 16- and 32-bit sums
        std::vector<int32_t> five(50);
        for (size_t i = 0; i < five.size(); ++i)
            five[i] = (int32_t((i * 7919) % 23) - 9) * (i >= 25 ? scale : 1);
        for (int32_t divisor : { 1, 8, 5 }) {
            auto fast = bitmap(9, 7, 3, false, pixels);
            auto slow = bitmap(9, 7, 3, false, pixels);
            fast->applyMatrixesFilter(five.data(), 2, 5, divisor, -4);
            slow->applyMatrixesFilter(five.data(), 2, 5, divisor, -4, [](int v) { return v; });
            EXPECT_EQ(bytesOf(*fast), bytesOf(*slow)) << "scale " << scale << " divisor " << divisor;
        }
    }
}

TEST(BitmapFilters, SmallAndUniformBitmapsAreUnchanged)
{
    for (auto [w, h] : { std::pair { 2, 2 }, std::pair { 1, 5 }, std::pair { 5, 2 } }) {
        Bytes pixels(size_t(w * h * 4));
        for (size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<unsigned char>(i * 37);
        auto rep = bitmap(w, h, 4, true, pixels);
        const Bytes before = bytesOf(*rep);
        rep->sharpenStrong();
        rep->edgeDetect(false);
        rep->medianFilter(3);
        EXPECT_EQ(bytesOf(*rep), before) << w << "×" << h;
    }
    auto flat = bitmap(4, 4, 4, true, Bytes(64, 90));
    const Bytes before = bytesOf(*flat);
    flat->sharpenLight();
    flat->sharpenMedium();
    flat->sharpenStrong();
    EXPECT_EQ(bytesOf(*flat), before);
}

namespace {

struct LayoutCase
{
    const char *name;
    int bitsPerSample;
    bool planar;
    unsigned format;
};

class RefusedLayouts : public ::testing::TestWithParam<LayoutCase>
{
};

} // namespace

TEST_P(RefusedLayouts, EveryFilterLeavesTheBitmapUnchanged)
{
    const LayoutCase &l = GetParam();
    auto rep = BitmapImageRep::create(5, 5, l.bitsPerSample, 4, true, l.planar, l.format);
    ASSERT_TRUE(rep);
    const qsizetype total = rep->bytesPerPlane() * rep->numberOfPlanes();
    for (qsizetype i = 0; i < total; ++i)
        rep->bitmapData()[i] = static_cast<unsigned char>(i * 13 + 5);
    const QByteArray before = rep->data();
    EXPECT_FALSE(rep->canFilter());
    const int32_t k[25] = { 1 };
    rep->sharpenStrong();
    rep->applyMatrixesFilter(k, 1, 5, 1, 0);
    rep->scaleWithDivisor(2, 1);
    rep->applySampleFilter([](int v) { return v + 1; });
    rep->applyPixelFilter([](unsigned char *p, int, int, int) { p[0] = 0; });
    rep->applyStatisticalFilter(
        [](BitmapImageRep &, int, const uint32_t *, unsigned char *) { return true; }, true);
    rep->applyNormalizeFilter(nullptr, false);
    rep->applyInterlaceFilter(1);
    rep->clear(0);
    rep->grayScale(true, 10);
    rep->edgeDetect(true);
    rep->medianFilter(3);
    rep->makeTransparentGray(0.5f, 1.0f);
    rep->tintGray(0.5f);
    float e = -1;
    EXPECT_FALSE(rep->entropy(&e, nullptr, nullptr, QRectF(0, 0, 5, 5)));
    EXPECT_EQ(e, -1);
    EXPECT_EQ(rep->bitmapImageRepWithAlpha(), nullptr);
    EXPECT_EQ(rep->data(), before);
}

INSTANTIATE_TEST_SUITE_P(BitmapFilters, RefusedLayouts,
    ::testing::Values(LayoutCase { "SixteenBit", 16, false, 0 }, LayoutCase { "Planar", 8, true, 0 },
        LayoutCase { "Float", 32, false, BitmapImageRep::FloatingPointSamplesBitmapFormat },
        LayoutCase { "AlphaFirst", 8, false, BitmapImageRep::AlphaFirstBitmapFormat },
        LayoutCase { "NonPremultiplied", 8, false, BitmapImageRep::AlphaNonpremultipliedBitmapFormat }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(BitmapFilters, MultiKernelConvolutionUsesTheWholeNeighbourhoodAndKeepsTheLastKernel)
{
    // 5×5 grey 0…24: a 5×5 box of ones over 25 gives the centre the mean 12; only the centre is
    // interior. With two kernels the second (picking the top-right corner, 16) is what remains.
    Bytes pixels(25);
    for (int i = 0; i < 25; ++i)
        pixels[size_t(i)] = static_cast<unsigned char>(i * 4);
    std::vector<int32_t> box(25, 1);
    auto rep = bitmap(5, 5, 1, false, pixels);
    rep->applyMatrixesFilter(box.data(), 1, 5, 25, 0);
    Bytes expected = pixels;
    expected[12] = 48;
    EXPECT_EQ(bytesOf(*rep), expected);

    std::vector<int32_t> two(50, 0);
    std::fill(two.begin(), two.begin() + 25, 1);
    two[25 + 4] = 1; // second kernel: the top-right corner, 16
    auto both = bitmap(5, 5, 1, false, pixels);
    both->applyMatrixesFilter(two.data(), 2, 5, 1, 0);
    expected[12] = 16;
    EXPECT_EQ(bytesOf(*both), expected);

    auto refused = bitmap(5, 5, 1, false, pixels);
    refused->applyMatrixesFilter(box.data(), 1, 4, 1, 0);
    refused->applyMatrixesFilter(box.data(), 1, 1, 1, 0);
    refused->applyMatrixesFilter(box.data(), 1, 5, 0, 0);
    EXPECT_EQ(bytesOf(*refused), pixels);
}

TEST(BitmapFilters, ScaleWithDivisorRoundsThroughTheTableAndSkipsAlpha)
{
    auto rep = bitmap(3, 1, 4, true, Bytes { 3, 5, 200, 77, 0, 1, 255, 255, 9, 10, 11, 12 });
    rep->scaleWithDivisor(2.0f, 0.0f); // trunc(v/2 + 0.5)
    EXPECT_EQ(bytesOf(*rep), (Bytes { 2, 3, 100, 77, 0, 1, 128, 255, 5, 5, 6, 12 }));
    rep->scaleWithDivisor(0.5f, -10.0f); // 2v − 9.5 truncated, clamped
    EXPECT_EQ(bytesOf(*rep), (Bytes { 0, 0, 190, 77, 0, 0, 246, 255, 0, 0, 2, 12 }));
    const Bytes before = bytesOf(*rep);
    rep->scaleWithDivisor(1.0f, 0.0f);
    rep->scaleWithDivisor(0.0f, 5.0f);
    EXPECT_EQ(bytesOf(*rep), before);
}

TEST(BitmapFilters, SampleFilterKeepsTheLowByteOnColourSamplesOnly)
{
    auto rep = bitmap(2, 1, 4, true, Bytes { 0, 1, 254, 40, 255, 2, 3, 50 });
    rep->applySampleFilter([](int v) { return v + 257; });
    EXPECT_EQ(bytesOf(*rep), (Bytes { 1, 2, 255, 40, 0, 3, 4, 50 }));
}

TEST(BitmapFilters, TableMapsEveryByteOfAnOpaqueRowButNotThePadding)
{
    // Eleven bytes per row: eight at a time, then the remainder.
    Bytes pixels(33);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<unsigned char>(i);
    auto rep = bitmap(11, 1, 3, false, pixels, 2);
    unsigned char table[256];
    for (int i = 0; i < 256; ++i)
        table[i] = static_cast<unsigned char>(255 - i);
    rep->applyTransformationTable(table);
    const Bytes after = bytesOf(*rep);
    for (size_t i = 0; i < 33; ++i)
        EXPECT_EQ(after[i], 255 - i);
    EXPECT_EQ(after[33], 0xEE);
    EXPECT_EQ(after[34], 0xEE);
}

namespace {
std::vector<std::array<int, 4>> pixelCalls;
std::vector<int> statisticalChannels;
std::vector<uint32_t> firstHistogram;
} // namespace

TEST(BitmapFilters, PixelFilterCountsCoordinatesDownFromTheFirstPixel)
{
    pixelCalls.clear();
    auto rep = bitmap(3, 2, 4, true, Bytes(24, 0), 4);
    rep->applyPixelFilter([](unsigned char *p, int count, int x, int y) {
        pixelCalls.push_back({ count, x, y, p[3] });
        p[0] = static_cast<unsigned char>(10 * x + y);
    });
    ASSERT_EQ(pixelCalls.size(), 6u);
    EXPECT_EQ(pixelCalls.front(), (std::array<int, 4> { 3, 2, 1, 0 }));
    EXPECT_EQ(pixelCalls[2], (std::array<int, 4> { 3, 0, 1, 0 }));
    EXPECT_EQ(pixelCalls.back(), (std::array<int, 4> { 3, 0, 0, 0 }));
    EXPECT_EQ(at(*rep, 0, 0, 0), 21);
    EXPECT_EQ(at(*rep, 2, 1, 0), 0);
    EXPECT_EQ(at(*rep, 0, 1, 0), 20);
}

TEST(BitmapFilters, StatisticalFilterVisitsChannelsFromTheLastAndMapsOnlyThatChannel)
{
    statisticalChannels.clear();
    auto rep = bitmap(2, 1, 4, true, Bytes { 10, 20, 30, 99, 10, 21, 31, 98 });
    rep->applyStatisticalFilter(
        [](BitmapImageRep &, int channel, const uint32_t *histogram, unsigned char *table) {
            statisticalChannels.push_back(channel);
            if (channel != 1)
                return false;
            EXPECT_EQ(histogram[20], 1u);
            EXPECT_EQ(histogram[21], 1u);
            EXPECT_EQ(histogram[10], 0u); // zeroed after channel 2
            table[20] = 200;
            table[21] = 201;
            return true;
        },
        false);
    EXPECT_EQ(statisticalChannels, (std::vector<int> { 2, 1, 0 }));
    EXPECT_EQ(bytesOf(*rep), (Bytes { 10, 200, 30, 99, 10, 201, 31, 98 }));

    firstHistogram.clear();
    rep->applyStatisticalFilter(
        [](BitmapImageRep &, int channel, const uint32_t *histogram, unsigned char *table) {
            statisticalChannels.push_back(channel);
            firstHistogram.assign(histogram, histogram + 256);
            for (int i = 0; i < 256; ++i)
                table[i] = static_cast<unsigned char>(i / 2);
            return true;
        },
        true);
    EXPECT_EQ(statisticalChannels.back(), 4); // samplesPerPixel
    EXPECT_EQ(firstHistogram[10], 2u);
    EXPECT_EQ(firstHistogram[99], 0u); // alpha is not counted
    EXPECT_EQ(bytesOf(*rep), (Bytes { 5, 100, 15, 99, 5, 100, 15, 98 }));
}

TEST(BitmapFilters, NormalizeStretchesTheRangeToFullScale)
{
    auto rep = bitmap(2, 2, 3, false, Bytes { 50, 50, 50, 100, 100, 100, 50, 100, 75, 100, 50, 60 });
    rep->applyNormalizeFilter(nullptr, false);
    // (255·i − 255·50) ÷ 50: 75 → 127, 60 → 51.
    EXPECT_EQ(bytesOf(*rep), (Bytes { 0, 0, 0, 255, 255, 255, 0, 255, 127, 255, 0, 51 }));

    // Mono: pixel means 20 and 40 (of 10/30 and 40/40) bound the table; samples map individually.
    auto mono = bitmap(2, 1, 2, false, Bytes { 10, 30, 40, 40 });
    mono->applyNormalizeFilter(nullptr, true);
    EXPECT_EQ(
        bytesOf(*mono), (Bytes { static_cast<unsigned char>((255 * 10 - 255 * 20) / 20), 127, 255, 255 }));

    auto flat = bitmap(2, 1, 1, false, Bytes { 9, 9 });
    flat->applyNormalizeFilter([](int, int, int) { return 0; }, false);
    EXPECT_EQ(bytesOf(*flat), (Bytes { 9, 9 }));
}

TEST(BitmapFilters, InterlaceDarkensOddRowsCountedFromTheBottom)
{
    // Four rows: from the bottom they are 0..3, so the first and third rows in memory are odd.
    auto rep = bitmap(1, 4, 2, true, Bytes { 200, 9, 200, 9, 200, 9, 200, 9 });
    rep->applyInterlaceFilter(2);
    EXPECT_EQ(bytesOf(*rep), (Bytes { 50, 9, 200, 9, 50, 9, 200, 9 }));
    auto opaque = bitmap(2, 3, 1, false, Bytes { 1, 2, 3, 4, 5, 6 });
    opaque->applyInterlaceFilter(8);
    EXPECT_EQ(bytesOf(*opaque), (Bytes { 1, 2, 0, 0, 5, 6 }));
}

TEST(BitmapFilters, ClearSetsColourSamplesOnly)
{
    auto rep = bitmap(2, 1, 4, true, Bytes { 1, 2, 3, 4, 5, 6, 7, 8 }, 1);
    rep->clear(42);
    EXPECT_EQ(bytesOf(*rep), (Bytes { 42, 42, 42, 4, 42, 42, 42, 8, 0xEE }));
}

TEST(BitmapFilters, GrayScaleUsesRoundedLuminanceOrTheMean)
{
    // 0.299·10 + 0.587·200 + 0.114·30 + 0.5 = 124.31 → 124.
    auto rgb = bitmap(1, 1, 4, true, Bytes { 10, 200, 30, 255 });
    rgb->grayScale(false, 0);
    EXPECT_EQ(bytesOf(*rgb), (Bytes { 124, 124, 124, 255 }));
    auto at124 = bitmap(1, 1, 3, false, Bytes { 10, 200, 30 });
    at124->grayScale(true, 124);
    EXPECT_EQ(bytesOf(*at124), (Bytes { 0, 0, 0 }));
    auto above = bitmap(1, 1, 3, false, Bytes { 10, 200, 30 });
    above->grayScale(true, 123);
    EXPECT_EQ(bytesOf(*above), (Bytes { 255, 255, 255 }));
    // Four colour samples (no alpha): the integer mean (10+20+30+41)/4 = 25.
    auto cmyk = bitmap(1, 1, 4, false, Bytes { 10, 20, 30, 41 });
    cmyk->grayScale(false, 0);
    EXPECT_EQ(bytesOf(*cmyk), (Bytes { 25, 25, 25, 25 }));
}

TEST(BitmapFilters, EdgeDetectTakesTheLargerGradientOverThree)
{
    // Gx = (30+60+90) − (10+40+70) = 60, Gy = (70+80+90) − (10+20+30) = 180: e = 60.
    const Bytes grey { 10, 20, 30, 40, 50, 60, 70, 80, 90 };
    auto map = bitmap(3, 3, 1, false, grey);
    map->edgeDetect(false);
    Bytes expected = grey;
    expected[4] = 60;
    EXPECT_EQ(bytesOf(*map), expected);
    auto added = bitmap(3, 3, 1, false, grey);
    added->edgeDetect(true);
    expected[4] = 110;
    EXPECT_EQ(bytesOf(*added), expected);
    auto capped
        = bitmap(3, 3, 2, true, Bytes { 0, 1, 0, 2, 0, 3, 0, 4, 250, 5, 0, 6, 255, 7, 255, 8, 255, 9 });
    capped->edgeDetect(true); // Gy = 765 → e = 255, 250 + 255 capped; alpha kept
    EXPECT_EQ(at(*capped, 1, 1, 0), 255);
    EXPECT_EQ(at(*capped, 1, 1, 1), 5);
}

TEST(BitmapFilters, MedianAveragesTheTwoMiddleLowerValues)
{
    auto rep = bitmap(3, 3, 1, false, Bytes { 0, 10, 0, 10, 10, 0, 10, 0, 10 });
    rep->medianFilter(3);
    EXPECT_EQ(at(*rep, 1, 1, 0), 5);
    // 5×5 of 0…24 (shuffled): m = 12, the mean of sorted[11] and sorted[12] is (11 + 12) ÷ 2 = 11.
    Bytes pixels(25);
    for (int i = 0; i < 25; ++i)
        pixels[size_t(i)] = static_cast<unsigned char>((i * 7) % 25);
    auto five = bitmap(5, 5, 1, false, pixels);
    five->medianFilter(5);
    Bytes expected = pixels;
    expected[12] = 11;
    EXPECT_EQ(bytesOf(*five), expected);
    five->medianFilter(4);
    five->medianFilter(1);
    EXPECT_EQ(bytesOf(*five), expected);
}

TEST(BitmapFilters, MedianOfRandomPicturesMatchesSortingEachNeighbourhood)
{
    std::mt19937 random(5);
    for (int n : { 3, 5, 7 }) {
        Bytes pixels(11 * 9 * 4);
        for (auto &b : pixels)
            b = static_cast<unsigned char>(random() % 7 * 40); // many ties
        auto rep = bitmap(11, 9, 4, true, pixels, 1);
        const Bytes before = bytesOf(*rep);
        rep->medianFilter(unsigned(n));
        const qsizetype row = rep->bytesPerRow();
        Bytes expected = before;
        const int half = n / 2, m = n * n / 2;
        for (int y = half; y < 9 - half; ++y)
            for (int x = half; x < 11 - half; ++x)
                for (int c = 0; c < 3; ++c) {
                    std::vector<int> v;
                    for (int dy = -half; dy <= half; ++dy)
                        for (int dx = -half; dx <= half; ++dx)
                            v.push_back(before[size_t((y + dy) * row + (x + dx) * 4 + c)]);
                    std::sort(v.begin(), v.end());
                    expected[size_t(y * row + x * 4 + c)]
                        = static_cast<unsigned char>((v[size_t(m - 1)] + v[size_t(m)]) / 2);
                }
        EXPECT_EQ(bytesOf(*rep), expected) << "size " << n;
    }
}

TEST(BitmapFilters, MakeTransparentFadesPixelsNearTheKeyByTheSquaredDistance)
{
    // Key grey 100/255 → 100; threshold 0.1 → T = trunc(25.5 + 0.5) = 26.
    auto rep = bitmap(
        4, 1, 4, true, Bytes { 100, 100, 100, 255, 110, 100, 95, 255, 200, 100, 100, 255, 104, 100, 100, 0 });
    rep->makeTransparentGray(100.0f / 255.0f, 0.1f);
    // d = 0 → a = 0; d = 10 → a = 100 ÷ 26 = 3, colours ·3 ÷ 255; d = 100 → a ≥ 255: kept;
    // d = 4 → a = 0, not below the alpha 0: kept.
    EXPECT_EQ(bytesOf(*rep), (Bytes { 0, 0, 0, 0, 1, 1, 1, 3, 200, 100, 100, 255, 104, 100, 100, 0 }));
    auto opaque = bitmap(1, 1, 3, false, Bytes { 100, 100, 100 });
    opaque->makeTransparentGray(100.0f / 255.0f, 0.1f);
    EXPECT_EQ(bytesOf(*opaque), (Bytes { 100, 100, 100 }));
    // Threshold 0 becomes 1: d = 2 → a = 4.
    auto tight = bitmap(1, 1, 2, true, Bytes { 52, 200 });
    tight->makeTransparentRed(50.0f / 255.0f, 0, 0, 0.0f);
    EXPECT_EQ(bytesOf(*tight), (Bytes { 52 * 4 / 200, 4 }));
}

TEST(BitmapFilters, TintAddsRoundedAmountsPerChannelUpTo255)
{
    auto rep = bitmap(2, 1, 4, true, Bytes { 100, 200, 0, 7, 1, 2, 3, 8 });
    rep->tintRed(0.5f, 0.5f, 0.0f); // 127.5 + 0.5 → 128
    EXPECT_EQ(bytesOf(*rep), (Bytes { 228, 255, 0, 7, 129, 130, 3, 8 }));
    auto grey = bitmap(1, 1, 1, false, Bytes { 10 });
    grey->tintGray(0.1f); // 25.5 + 0.5 → 26
    EXPECT_EQ(bytesOf(*grey), (Bytes { 36 }));
}

TEST(BitmapFilters, EntropyMeasuresTheRegionWithItsByteOffsetQuirk)
{
    // Grey + alpha: the rectangle's first pixel is read at byte x·C = 1 (the alpha of pixel 0), then
    // every 2 bytes: values 200 and 255. Row mean 227; |−27| + |28| = 55 ÷ 2 = 27; 729 + 784 = 1513 ÷ 2 =
    // 756.
    auto rep = bitmap(3, 1, 2, true, Bytes { 10, 200, 20, 255, 30, 255 });
    float e = -1, s = -1, b = -1;
    ASSERT_TRUE(rep->entropy(&e, &s, &b, QRectF(1.9, 0, 2.5, 1)));
    EXPECT_FLOAT_EQ(b, 227.0f / 255.0f);
    EXPECT_FLOAT_EQ(e, 27.0f / 255.0f);
    EXPECT_FLOAT_EQ(s, std::sqrt(756.0f) / 255.0f);

    // RGB over two rows: luminances 76 (red) and 150 (green) in row 0, 29 (blue) and 255 in row 1.
    auto rgb = bitmap(2, 2, 3, false, Bytes { 255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255 });
    ASSERT_TRUE(rgb->entropy(&e, nullptr, &b, QRectF(0, 0, 2, 2)));
    // Row means 113 and 142: total 255, brightness 255 ÷ 2 ÷ 255, mean (255 + 1) ÷ 2 = 128.
    EXPECT_FLOAT_EQ(b, 0.5f);
    // Row 0: (52 + 22) ÷ 2 = 37; row 1: (99 + 127) ÷ 2 = 113; (37 + 113) ÷ 2 = 75.
    EXPECT_FLOAT_EQ(e, 75.0f / 255.0f);

    EXPECT_FALSE(rgb->entropy(&e, &s, &b, QRectF(1, 0, 2, 2)));
    EXPECT_FALSE(rgb->entropy(&e, &s, &b, QRectF(0, 0, 0, 2)));
}

TEST(BitmapFilters, BitmapWithAlphaAddsAnOpaqueAlphaByte)
{
    auto rgb = bitmap(2, 1, 3, false, Bytes { 1, 2, 3, 4, 5, 6 }, 2);
    rgb->setSize(QSizeF(20, 10));
    auto rgba = rgb->bitmapImageRepWithAlpha();
    ASSERT_TRUE(rgba);
    EXPECT_TRUE(rgba->hasAlpha());
    EXPECT_EQ(rgba->samplesPerPixel(), 4);
    EXPECT_EQ(rgba->size(), QSizeF(20, 10));
    EXPECT_EQ(bytesOf(*rgba), (Bytes { 1, 2, 3, 255, 4, 5, 6, 255 }));
    auto again = rgba->bitmapImageRepWithAlpha();
    ASSERT_TRUE(again);
    EXPECT_NE(again, rgba);
    EXPECT_EQ(bytesOf(*again), bytesOf(*rgba));
}
