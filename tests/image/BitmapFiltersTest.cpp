// The bitmap filters on small hand-worked bitmaps, then the image-level filters and effects: forwarding
// to every representation, documents, colour-keyed transparency, negatives, tinting, reflections.
#include "image/BitmapImageRep.h"
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <QByteArray>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <tuple>
#include <vector>

using namespace Qt::StringLiterals;
using namespace orvel;
using namespace orvel::test;

namespace {

using Bytes = std::vector<unsigned char>;
using Rep = BitmapImageRep;

// A meshed 8-bit w × h bitmap of spp samples holding pixels, each row padded with `pad` bytes of 0xEE.
BitmapImageRepPtr bitmap(int w, int h, int spp, bool alpha, const Bytes &pixels, int pad = 0)
{
    auto rep = Rep::create(w, h, 8, spp, alpha, false, 0, qsizetype(w) * spp + pad);
    if (!rep)
        return nullptr;
    unsigned char *data = rep->bitmapData();
    memset(data, 0xEE, size_t(rep->bytesPerRow() * h));
    for (int y = 0; y < h; ++y)
        memcpy(data + y * rep->bytesPerRow(), pixels.data() + size_t(y * w * spp), size_t(w * spp));
    return rep;
}

Bytes bytesOf(Rep &rep)
{
    return Bytes(rep.bitmapData(), rep.bitmapData() + rep.bytesPerRow() * rep.pixelsHigh());
}

Bytes noise(size_t n, unsigned seed, int levels = 256, int step = 1)
{
    std::mt19937 random(seed);
    Bytes b(n);
    for (auto &v : b)
        v = static_cast<unsigned char>(int(random() % unsigned(levels)) * step);
    return b;
}

// n bytes first, first + step, … (wrapping).
Bytes ramp(int n, int first = 0, int step = 1)
{
    Bytes b(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        b[size_t(i)] = static_cast<unsigned char>(first + i * step);
    return b;
}

// b with the bytes at the given offsets replaced.
Bytes with(Bytes b, std::initializer_list<std::pair<size_t, int>> changes)
{
    for (auto [i, v] : changes)
        b[i] = static_cast<unsigned char>(v);
    return b;
}

// The steps applied one after the other.
std::function<void(Rep &)> all(std::initializer_list<std::function<void(Rep &)>> steps)
{
    return [list = std::vector(steps)](Rep &r) {
        for (const auto &step : list)
            step(r);
    };
}

const std::vector<int32_t> box25(25, 1);
constexpr int32_t centreOnly[9] = { 0, 0, 0, 0, 1, 0, 0, 0, 0 };

struct Example
{
    const char *name;
    int w, h, spp;
    bool alpha;
    Bytes before; // the pixels, rows packed
    std::function<void(Rep &)> apply;
    Bytes after; // the whole buffer, padding included
    int pad = 0;
};

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

// What the filters' callbacks (plain functions) saw.
std::vector<std::array<int, 4>> pixelCalls;
std::vector<int> statisticalChannels;

} // namespace

TEST(BitmapFilters, ExamplesGiveTheHandWorkedBytes)
{
    const Example examples[] = {
        // The callback gets quotient + offset (15, 105, 205) and its answer is clamped.
        { "CallbackIsClamped", 5, 3, 1, false, with(Bytes(15), { { 6, 10 }, { 7, 100 }, { 8, 200 } }),
            [](Rep &r) {
                r.applyMatrixFilter(centreOnly, 1, 5, [](int v) {
                    return v == 15 ? -3 : v == 105 ? 77 : v + 100;
                });
            },
            with(Bytes(15), { { 7, 77 }, { 8, 255 } }) },
        { "EvenOrOneSizedKernelsAndDivisorZeroAreRefused", 5, 5, 1, false, ramp(25, 0, 4),
            all({ [](Rep &r) { r.applyMatrixesFilter(box25.data(), 1, 4, 1, 0); },
                [](Rep &r) { r.applyMatrixesFilter(box25.data(), 1, 1, 1, 0); },
                [](Rep &r) { r.applyMatrixesFilter(box25.data(), 1, 5, 0, 0); } }),
            ramp(25, 0, 4) },
        // trunc(v ÷ 2 + 0.5) then trunc(2v − 9.5), clamped, alpha skipped; factors 1 and 0 change nothing.
        { "ScaleWithDivisorRoundsAndClamps", 3, 1, 4, true, { 3, 5, 200, 77, 0, 1, 255, 255, 9, 10, 11, 12 },
            all({ [](Rep &r) { r.scaleWithDivisor(2.0f, 0.0f); },
                [](Rep &r) { r.scaleWithDivisor(0.5f, -10.0f); }, [](Rep &r) { r.scaleWithDivisor(1, 0); },
                [](Rep &r) { r.scaleWithDivisor(0, 5); } }),
            { 0, 0, 190, 77, 0, 0, 246, 255, 0, 0, 2, 12 } },
        { "SampleFilterKeepsTheLowByteOfColours", 2, 1, 4, true, { 0, 1, 254, 40, 255, 2, 3, 50 },
            [](Rep &r) { r.applySampleFilter([](int v) { return v + 257; }); },
            { 1, 2, 255, 40, 0, 3, 4, 50 } },
        // Eleven bytes per row (eight at a time, then the rest), the padding untouched.
        { "TableMapsEveryByteOfAnOpaqueRow", 11, 1, 3, false, ramp(33),
            [](Rep &r) { r.applyTransformationTable(ramp(256, 255, -1).data()); },
            with(ramp(35, 255, -1), { { 33, 0xEE }, { 34, 0xEE } }), 2 },
        // (255·i − 255·50) ÷ 50: 75 → 127, 60 → 51.
        { "NormalizeStretchesToFullScale", 2, 2, 3, false,
            { 50, 50, 50, 100, 100, 100, 50, 100, 75, 100, 50, 60 },
            [](Rep &r) { r.applyNormalizeFilter(nullptr, false); },
            { 0, 0, 0, 255, 255, 255, 0, 255, 127, 255, 0, 51 } },
        // Mono: the pixel means 20 and 40 bound the table, whose entries are not clamped: 10 → −127 → 129.
        { "NormalizeMonoUsesPixelMeans", 2, 1, 2, false, { 10, 30, 40, 40 },
            [](Rep &r) { r.applyNormalizeFilter(nullptr, true); }, { 129, 127, 255, 255 } },
        { "NormalizeLeavesAFlatPicture", 2, 1, 1, false, { 9, 9 },
            [](Rep &r) { r.applyNormalizeFilter([](int, int, int) { return 0; }, false); }, { 9, 9 } },
        // Rows count from the bottom, so the first and third rows in memory are odd; alpha is kept.
        { "InterlaceDarkensOddRows", 1, 4, 2, true, { 200, 9, 200, 9, 200, 9, 200, 9 },
            [](Rep &r) { r.applyInterlaceFilter(2); }, { 50, 9, 200, 9, 50, 9, 200, 9 } },
        { "InterlaceShiftOver7Clears", 2, 3, 1, false, { 1, 2, 3, 4, 5, 6 },
            [](Rep &r) { r.applyInterlaceFilter(8); }, { 1, 2, 0, 0, 5, 6 } },
        { "ClearSetsColourSamplesOnly", 2, 1, 4, true, { 1, 2, 3, 4, 5, 6, 7, 8 },
            [](Rep &r) { r.clear(42); }, { 42, 42, 42, 4, 42, 42, 42, 8, 0xEE }, 1 },
        // Luminance 124.31 → 124: a threshold of 124 gives black, 11/200/35 (125.18 → 125) white.
        { "GrayScaleIsRoundedLuminance", 1, 1, 4, true, { 10, 200, 30, 255 },
            [](Rep &r) { r.grayScale(false, 0); }, { 124, 124, 124, 255 } },
        { "GrayScaleThresholdAtTheLuminance", 2, 1, 3, false, { 10, 200, 30, 11, 200, 35 },
            [](Rep &r) { r.grayScale(true, 124); }, { 0, 0, 0, 255, 255, 255 } },
        { "GrayScaleOfFourColoursIsTheMean", 1, 1, 4, false, { 10, 20, 30, 41 },
            [](Rep &r) { r.grayScale(false, 0); }, { 25, 25, 25, 25 } },
        // Gx = 180 − 120 = 60, Gy = 240 − 60 = 180: the larger over three is 60 (added: 50 + 60).
        { "EdgeDetectMapsTheGradient", 3, 3, 1, false, ramp(9, 10, 10), [](Rep &r) { r.edgeDetect(false); },
            with(ramp(9, 10, 10), { { 4, 60 } }) },
        { "EdgeDetectAddsTheGradient", 3, 3, 1, false, ramp(9, 10, 10), [](Rep &r) { r.edgeDetect(true); },
            with(ramp(9, 10, 10), { { 4, 110 } }) },
        // Gy = 765 → 255; 250 + 255 is capped and the alpha kept.
        { "EdgeDetectCapsTheSum", 3, 3, 2, true,
            { 0, 1, 0, 2, 0, 3, 0, 4, 250, 5, 0, 6, 255, 7, 255, 8, 255, 9 },
            [](Rep &r) { r.edgeDetect(true); },
            { 0, 1, 0, 2, 0, 3, 0, 4, 255, 5, 0, 6, 255, 7, 255, 8, 255, 9 } },
        // Key 100, threshold 0.1 → T = 26. d = 0 → a = 0; d = 10 → a = 100 ÷ 26 = 3 and the colours
        // scaled by 3 ÷ 255; d = 100 → a ≥ 255: kept; d = 4 gives a = 0, not below alpha 0: kept.
        { "MakeTransparentFadesBySquaredDistance", 4, 1, 4, true,
            { 100, 100, 100, 255, 110, 100, 95, 255, 200, 100, 100, 255, 104, 100, 100, 0 },
            [](Rep &r) { r.makeTransparentGray(100.0f / 255.0f, 0.1f); },
            { 0, 0, 0, 0, 1, 1, 1, 3, 200, 100, 100, 255, 104, 100, 100, 0 } },
        { "MakeTransparentNeedsAlpha", 1, 1, 3, false, { 100, 100, 100 },
            [](Rep &r) { r.makeTransparentGray(100.0f / 255.0f, 0.1f); }, { 100, 100, 100 } },
        // Threshold 0 becomes 1: d = 2 → a = 4, the grey 52 · 4 ÷ 200.
        { "MakeTransparentThresholdZeroIsOne", 1, 1, 2, true, { 52, 200 },
            [](Rep &r) { r.makeTransparentRed(50.0f / 255.0f, 0, 0, 0.0f); }, { 1, 4 } },
        // 0.5 → 127.5 + 0.5 → 128 added, up to 255; 0.1 → 26.
        { "TintAddsRoundedAmounts", 2, 1, 4, true, { 100, 200, 0, 7, 1, 2, 3, 8 },
            [](Rep &r) { r.tintRed(0.5f, 0.5f, 0.0f); }, { 228, 255, 0, 7, 129, 130, 3, 8 } },
        { "InvertRGBAKeepsAlpha", 2, 1, 4, true, { 0, 10, 255, 128, 1, 2, 3, 4 }, &Rep::invertRGBA,
            { 255, 245, 0, 128, 254, 253, 252, 4 } },
        { "InvertGreyAlphaKeepsAlpha", 2, 1, 2, true, { 5, 6, 7, 8 }, &Rep::invertGreyAlpha,
            { 250, 6, 248, 8 } },
        // Rows are taken as packed even when padded: the first 12 bytes are inverted, padding included.
        { "InvertRGBTakesRowsAsPacked", 2, 2, 3, false, Bytes(12), &Rep::invertRGB,
            { 255, 255, 255, 255, 255, 255, 0x11, 0x11, 255, 255, 255, 255, 0, 0, 0xEE, 0xEE }, 2 }
    };
    for (const Example &e : examples) {
        auto rep = bitmap(e.w, e.h, e.spp, e.alpha, e.before, e.pad);
        ASSERT_TRUE(rep) << e.name;
        e.apply(*rep);
        EXPECT_EQ(bytesOf(*rep), e.after) << e.name;
    }
}

namespace {

// A kernel by hand: Σ weight · sample (row above first) ÷ divisor + offset, clamped; interior colours only.
Bytes convolvedByHand(const Bytes &before, int w, int h, qsizetype row, const int32_t *kernel, int size,
    int32_t divisor, int32_t offset)
{
    Bytes out = before;
    const int half = size / 2;
    for (int y = half; y < h - half; ++y)
        for (int x = half; x < w - half; ++x)
            for (int c = 0; c < 3; ++c) {
                int64_t sum = 0;
                for (int i = 0; i < size * size; ++i)
                    sum += int64_t(kernel[i])
                        * before[size_t((y - half + i / size) * row + (x - half + i % size) * 4 + c)];
                out[size_t(y * row + x * 4 + c)]
                    = static_cast<unsigned char>(std::clamp<int64_t>(sum / divisor + offset, 0, 255));
            }
    return out;
}

} // namespace

TEST(BitmapFilters, ConvolutionsMatchTheSumDoneByHandOnEveryPathKeepingAlphaBorderAndPadding)
{
    // 16-, 32- and 64-bit sums; divisors 1, powers of two, others, negative; fast paths and the callback's.
    const Bytes pixels = noise(9 * 7 * 4, 11);
    const auto check = [&](const std::function<void(Rep &, Rep::MatrixCallback)> &apply,
                           const int32_t *kernel, int size, int32_t divisor, int32_t offset) {
        for (const Rep::MatrixCallback callback :
            { Rep::MatrixCallback(nullptr), +[](int v) { return v; } }) {
            auto rep = bitmap(9, 7, 4, true, pixels, 3);
            const Bytes before = bytesOf(*rep);
            apply(*rep, callback);
            EXPECT_EQ(bytesOf(*rep),
                convolvedByHand(before, 9, 7, rep->bytesPerRow(), kernel, size, divisor, offset))
                << "size " << size << " divisor " << divisor << " weight " << kernel[0] << " callback "
                << bool(callback);
        }
    };
    const int32_t sharpen[3][9] = { { 0, -1, 0, -1, 5, -1, 0, -1, 0 }, { 0, -1, 0, -1, 6, -1, 0, -1, 0 },
        { 0, -1, 0, -1, 8, -1, 0, -1, 0 } };
    check([](Rep &r, auto) { r.sharpenStrong(); }, sharpen[0], 3, 1, 0);
    check([](Rep &r, auto) { r.sharpenMedium(); }, sharpen[1], 3, 2, 0);
    check([](Rep &r, auto) { r.sharpenLight(); }, sharpen[2], 3, 4, 0);
    const int32_t kernels[3][9] = { { 1, 2, 1, 2, 4, 2, 1, 2, 1 }, { 100, 0, -50, 0, 30, 0, 0, 0, 1 },
        { 8000000, -3, 0, 0, 1, 0, 0, 0, -8000000 } };
    for (const auto &kernel : kernels)
        for (int32_t divisor : { 1, 4, 7, -2 })
            check(
                [&](Rep &r, auto cb) { r.applyMatrixFilter(kernel, divisor, 3, cb); }, kernel, 3, divisor, 3);
    // Two 5×5 kernels, of which the second remains; the second scaled for 32-bit sums.
    for (int32_t scale : { 1, 1000 }) {
        std::vector<int32_t> five(50);
        for (size_t i = 0; i < five.size(); ++i)
            five[i] = (int32_t((i * 7919) % 23) - 9) * (i >= 25 ? scale : 1);
        for (int32_t divisor : { 1, 8, 5 })
            check([&](Rep &r, auto cb) { r.applyMatrixesFilter(five.data(), 2, 5, divisor, -4, cb); },
                five.data() + 25, 5, divisor, -4);
    }
}

TEST(BitmapFilters, BitmapsWithoutInteriorPixelsAreUnchanged)
{
    for (auto [w, h] : { std::pair { 2, 2 }, std::pair { 1, 5 }, std::pair { 5, 2 } }) {
        auto rep = bitmap(w, h, 4, true, ramp(w * h * 4, 0, 37));
        const Bytes before = bytesOf(*rep);
        rep->sharpenStrong();
        rep->edgeDetect(false);
        rep->medianFilter(3);
        EXPECT_EQ(bytesOf(*rep), before) << w << "×" << h;
    }
}

TEST(BitmapFilters, EveryFilterLeavesABitmapOfARefusedLayoutUnchanged)
{
    // Sixteen bits, planar, floating point, alpha first.
    const std::tuple<int, bool, unsigned> layouts[] = { { 16, false, 0 }, { 8, true, 0 },
        { 32, false, Rep::FloatingPointSamplesBitmapFormat }, { 8, false, Rep::AlphaFirstBitmapFormat } };
    for (const auto &[bitsPerSample, planar, format] : layouts) {
        SCOPED_TRACE(
            testing::Message() << bitsPerSample << " bits, planar " << planar << ", format " << format);
        auto rep = Rep::create(5, 5, bitsPerSample, 4, true, planar, format);
        ASSERT_TRUE(rep);
        for (qsizetype i = 0; i < rep->bytesPerPlane() * rep->numberOfPlanes(); ++i)
            rep->bitmapData()[i] = static_cast<unsigned char>(i * 13 + 5);
        const QByteArray before = rep->data();
        EXPECT_FALSE(rep->canFilter());
        const int32_t k[25] = { 1 };
        rep->sharpenStrong();
        rep->applyMatrixesFilter(k, 1, 5, 1, 0);
        rep->scaleWithDivisor(2, 1);
        rep->applySampleFilter([](int v) { return v + 1; });
        rep->applyPixelFilter([](unsigned char *p, int, int, int) { p[0] = 0; });
        rep->applyStatisticalFilter([](Rep &, int, const uint32_t *, unsigned char *) { return true; }, true);
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
}

TEST(BitmapFilters, PixelFilterCountsCoordinatesDownFromTheFirstPixel)
{
    pixelCalls.clear();
    auto rep = bitmap(3, 2, 4, true, Bytes(24, 0), 4);
    rep->applyPixelFilter([](unsigned char *p, int count, int x, int y) {
        pixelCalls.push_back({ count, x, y, p[3] });
        p[0] = static_cast<unsigned char>(10 * x + y);
    });
    EXPECT_EQ(pixelCalls,
        (std::vector<std::array<int, 4>> { { 3, 2, 1, 0 }, { 3, 1, 1, 0 }, { 3, 0, 1, 0 }, { 3, 2, 0, 0 },
            { 3, 1, 0, 0 }, { 3, 0, 0, 0 } }));
    const Bytes after = bytesOf(*rep);
    EXPECT_EQ(after[0], 21); // the first pixel in memory is (2, 1)
    EXPECT_EQ(after[16], 20);
}

TEST(BitmapFilters, StatisticalFilterVisitsChannelsFromTheLastAndMapsOnlyThatChannel)
{
    statisticalChannels.clear();
    auto rep = bitmap(2, 1, 4, true, Bytes { 10, 20, 30, 99, 10, 21, 31, 98 });
    rep->applyStatisticalFilter(
        [](Rep &, int channel, const uint32_t *histogram, unsigned char *table) {
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

    // Mono: one call, channel = samplesPerPixel, the histogram of every colour sample but not alpha.
    rep->applyStatisticalFilter(
        [](Rep &, int channel, const uint32_t *histogram, unsigned char *table) {
            statisticalChannels.push_back(channel);
            EXPECT_EQ(histogram[10], 2u);
            EXPECT_EQ(histogram[99], 0u);
            for (int i = 0; i < 256; ++i)
                table[i] = static_cast<unsigned char>(i / 2);
            return true;
        },
        true);
    EXPECT_EQ(statisticalChannels, (std::vector<int> { 2, 1, 0, 4 }));
    EXPECT_EQ(bytesOf(*rep), (Bytes { 5, 100, 15, 99, 5, 100, 15, 98 }));
}

TEST(BitmapFilters, MedianMatchesSortingEachNeighbourhood)
{
    // The mean of the two middle-lower values, sorted[m − 1] and sorted[m] with m = n² ÷ 2.
    for (int n : { 3, 5, 7 }) {
        auto rep = bitmap(11, 9, 4, true, noise(11 * 9 * 4, unsigned(n), 7, 40), 1); // many ties
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
        rep->medianFilter(4); // even and one-pixel sizes are refused
        rep->medianFilter(1);
        EXPECT_EQ(bytesOf(*rep), expected) << "size " << n;
    }
}

TEST(BitmapFilters, EntropyMeasuresTheRegionWithItsByteOffsetQuirk)
{
    // Grey + alpha: read from byte x·C = 1, every 2 bytes: 200 and 255. Mean 227, deviation 55 ÷ 2 = 27,
    // variance 1513 ÷ 2 = 756.
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
    EXPECT_EQ(rgba->size(), QSizeF(20, 10));
    EXPECT_EQ(bytesOf(*rgba), (Bytes { 1, 2, 3, 255, 4, 5, 6, 255 }));
}

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
    EXPECT_EQ(image->imageByAddingReflection(0.0f)->size(), QSizeF(100, 80));
    EXPECT_EQ(image->imageByAddingReflection(-0.5f), nullptr);
    ImagePtr reflected = image->imageByAddingReflection(0.5f);
    ASSERT_TRUE(reflected);
    EXPECT_EQ(reflected->size(), QSizeF(100, 120));
    const BitmapImageRepPtr rep = reflected->bitmapImageRep();
    ASSERT_TRUE(rep);
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
