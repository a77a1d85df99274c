// The bitmap filters on small hand-worked bitmaps: convolution arithmetic, borders, alpha, padded
// rows, layout refusals, tables, statistics, median, transparency, tinting, entropy and inverting.
#include "image/BitmapImageRep.h"

#include <QByteArray>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace orvel;

namespace {

using Bytes = std::vector<unsigned char>;
using Rep = BitmapImageRep;

// A meshed 8-bit bitmap of w × h pixels of spp samples whose rows hold the given pixel bytes, padded
// with `pad` bytes of 0xEE per row.
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

// 3×3 RGB: the centre 100/10/60, its four edge neighbours 80/20/57, the corners 7.
const Bytes plus = [] {
    Bytes b(27, 7);
    for (int i : { 1, 3, 5, 7 })
        for (int c = 0; c < 3; ++c)
            b[size_t(i * 3 + c)] = static_cast<unsigned char>(std::array { 80, 20, 57 }[size_t(c)]);
    return with(b, { { 12, 100 }, { 13, 10 }, { 14, 60 } });
}();

// The steps applied one after the other.
std::function<void(Rep &)> all(std::initializer_list<std::function<void(Rep &)>> steps)
{
    return [list = std::vector(steps)](Rep &r) {
        for (const auto &step : list)
            step(r);
    };
}

const std::vector<int32_t> box25(25, 1);
const Bytes dot5 = with(Bytes(9), { { 4, 5 } }), dot7 = with(Bytes(9), { { 4, 7 } });
constexpr int32_t centreOnly[9] = { 0, 0, 0, 0, 1, 0, 0, 0, 0 },
                  minusCentre[9] = { 0, 0, 0, 0, -1, 0, 0, 0, 0 };

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

void PrintTo(const Example &e, std::ostream *os) { *os << e.name; }

using FilterExamples = ::testing::TestWithParam<Example>;

struct LayoutCase
{
    const char *name;
    int bitsPerSample;
    bool planar;
    unsigned format;
};

using RefusedLayouts = ::testing::TestWithParam<LayoutCase>;

// What the filters' callbacks (plain functions) saw.
std::vector<std::array<int, 4>> pixelCalls;
std::vector<int> statisticalChannels;
std::vector<uint32_t> firstHistogram;

} // namespace

TEST_P(FilterExamples, GiveTheHandWorkedBytes)
{
    const Example &e = GetParam();
    auto rep = bitmap(e.w, e.h, e.spp, e.alpha, e.before, e.pad);
    ASSERT_TRUE(rep);
    e.apply(*rep);
    EXPECT_EQ(bytesOf(*rep), e.after);
}

INSTANTIATE_TEST_SUITE_P(BitmapFilters, FilterExamples,
    ::testing::Values(
        // 5c − 4e, (6c − 4e) ÷ 2, (8c − 4e) ÷ 4 on the centre only; negative sums clamp to 0.
        Example { "SharpenStrong", 3, 3, 3, false, plus, &Rep::sharpenStrong,
            with(plus, { { 12, 180 }, { 13, 0 }, { 14, 72 } }) },
        Example { "SharpenMedium", 3, 3, 3, false, plus, &Rep::sharpenMedium,
            with(plus, { { 12, 140 }, { 13, 0 }, { 14, 66 } }) },
        Example { "SharpenLight", 3, 3, 3, false, plus, &Rep::sharpenLight,
            with(plus, { { 12, 120 }, { 13, 0 }, { 14, 63 } }) },
        Example { "UniformIsKeptBySharpening", 4, 4, 4, true, Bytes(64, 90),
            all({ &Rep::sharpenLight, &Rep::sharpenMedium, &Rep::sharpenStrong }), Bytes(64, 90) },
        // The quotient truncates toward zero before the offset: −5 ÷ 4 = −1, 7 ÷ 4 = 1, −7 ÷ −3 = 2.
        Example { "NegativeQuotientTruncates", 3, 3, 1, false, dot5,
            [](Rep &r) { r.applyMatrixFilter(minusCentre, 4, 10); }, with(dot5, { { 4, 9 } }) },
        Example { "PositiveQuotientTruncates", 3, 3, 1, false, dot7,
            [](Rep &r) { r.applyMatrixFilter(centreOnly, 4, 10); }, with(dot7, { { 4, 11 } }) },
        Example { "NegativeDivisor", 3, 3, 1, false, dot7,
            [](Rep &r) { r.applyMatrixFilter(minusCentre, -3, 0); }, with(dot7, { { 4, 2 } }) },
        // Weights are row-major with the row above first: this kernel picks (x + 1, y − 1).
        Example { "WeightsStartWithTheRowAbove", 3, 3, 1, false, ramp(9, 1),
            [](Rep &r) {
                const int32_t topRight[9] = { 0, 0, 1 };
                r.applyMatrixFilter(topRight, 1, 0);
            },
            { 1, 2, 3, 4, 3, 6, 7, 8, 9 } },
        // The callback gets quotient + offset (15, 105, 205) and its answer is clamped.
        Example { "CallbackIsClamped", 5, 3, 1, false, with(Bytes(15), { { 6, 10 }, { 7, 100 }, { 8, 200 } }),
            [](Rep &r) {
                r.applyMatrixFilter(centreOnly, 1, 5, [](int v) {
                    return v == 15 ? -3 : v == 105 ? 77 : v + 100;
                });
            },
            with(Bytes(15), { { 7, 77 }, { 8, 255 } }) },
        // 5×5 grey 0, 4, … 96: a box of ones over 25 gives the only interior pixel the mean 48; with
        // two kernels the second (the top-right corner, 16) is what remains.
        Example { "FiveByFiveBoxIsTheMean", 5, 5, 1, false, ramp(25, 0, 4),
            [](Rep &r) { r.applyMatrixesFilter(box25.data(), 1, 5, 25, 0); },
            with(ramp(25, 0, 4), { { 12, 48 } }) },
        Example { "SecondKernelRemains", 5, 5, 1, false, ramp(25, 0, 4),
            [](Rep &r) {
                std::vector<int32_t> two(50, 0);
                std::fill(two.begin(), two.begin() + 25, 1);
                two[25 + 4] = 1;
                r.applyMatrixesFilter(two.data(), 2, 5, 1, 0);
            },
            with(ramp(25, 0, 4), { { 12, 16 } }) },
        Example { "EvenOrOneSizedKernelsAndDivisorZeroAreRefused", 5, 5, 1, false, ramp(25, 0, 4),
            all({ [](Rep &r) { r.applyMatrixesFilter(box25.data(), 1, 4, 1, 0); },
                [](Rep &r) { r.applyMatrixesFilter(box25.data(), 1, 1, 1, 0); },
                [](Rep &r) { r.applyMatrixesFilter(box25.data(), 1, 5, 0, 0); } }),
            ramp(25, 0, 4) },
        // trunc(v ÷ 2 + 0.5), alpha skipped; then 2v − 9.5 truncated and clamped; 1 and 0 change nothing.
        Example { "ScaleWithDivisorRounds", 3, 1, 4, true, { 3, 5, 200, 77, 0, 1, 255, 255, 9, 10, 11, 12 },
            [](Rep &r) { r.scaleWithDivisor(2.0f, 0.0f); }, { 2, 3, 100, 77, 0, 1, 128, 255, 5, 5, 6, 12 } },
        Example { "ScaleWithDivisorClamps", 3, 1, 4, true, { 2, 3, 100, 77, 0, 1, 128, 255, 5, 5, 6, 12 },
            all({ [](Rep &r) { r.scaleWithDivisor(0.5f, -10.0f); }, [](Rep &r) { r.scaleWithDivisor(1, 0); },
                [](Rep &r) { r.scaleWithDivisor(0, 5); } }),
            { 0, 0, 190, 77, 0, 0, 246, 255, 0, 0, 2, 12 } },
        Example { "SampleFilterKeepsTheLowByteOfColours", 2, 1, 4, true, { 0, 1, 254, 40, 255, 2, 3, 50 },
            [](Rep &r) { r.applySampleFilter([](int v) { return v + 257; }); },
            { 1, 2, 255, 40, 0, 3, 4, 50 } },
        // Eleven bytes per row (eight at a time, then the rest), the padding untouched.
        Example { "TableMapsEveryByteOfAnOpaqueRow", 11, 1, 3, false, ramp(33),
            [](Rep &r) { r.applyTransformationTable(ramp(256, 255, -1).data()); },
            with(ramp(35, 255, -1), { { 33, 0xEE }, { 34, 0xEE } }), 2 },
        // (255·i − 255·50) ÷ 50: 75 → 127, 60 → 51.
        Example { "NormalizeStretchesToFullScale", 2, 2, 3, false,
            { 50, 50, 50, 100, 100, 100, 50, 100, 75, 100, 50, 60 },
            [](Rep &r) { r.applyNormalizeFilter(nullptr, false); },
            { 0, 0, 0, 255, 255, 255, 0, 255, 127, 255, 0, 51 } },
        // Mono: the pixel means 20 and 40 bound the table, whose entries are not clamped: 10 → −127 → 129.
        Example { "NormalizeMonoUsesPixelMeans", 2, 1, 2, false, { 10, 30, 40, 40 },
            [](Rep &r) { r.applyNormalizeFilter(nullptr, true); }, { 129, 127, 255, 255 } },
        Example { "NormalizeLeavesAFlatPicture", 2, 1, 1, false, { 9, 9 },
            [](Rep &r) { r.applyNormalizeFilter([](int, int, int) { return 0; }, false); }, { 9, 9 } },
        // Rows count from the bottom, so the first and third rows in memory are odd; alpha is kept.
        Example { "InterlaceDarkensOddRows", 1, 4, 2, true, { 200, 9, 200, 9, 200, 9, 200, 9 },
            [](Rep &r) { r.applyInterlaceFilter(2); }, { 50, 9, 200, 9, 50, 9, 200, 9 } },
        Example { "InterlaceShiftOver7Clears", 2, 3, 1, false, { 1, 2, 3, 4, 5, 6 },
            [](Rep &r) { r.applyInterlaceFilter(8); }, { 1, 2, 0, 0, 5, 6 } },
        Example { "ClearSetsColourSamplesOnly", 2, 1, 4, true, { 1, 2, 3, 4, 5, 6, 7, 8 },
            [](Rep &r) { r.clear(42); }, { 42, 42, 42, 4, 42, 42, 42, 8, 0xEE }, 1 },
        // 0.299·10 + 0.587·200 + 0.114·30 + 0.5 = 124.31 → 124; a threshold of 124 gives black.
        Example { "GrayScaleIsRoundedLuminance", 1, 1, 4, true, { 10, 200, 30, 255 },
            [](Rep &r) { r.grayScale(false, 0); }, { 124, 124, 124, 255 } },
        Example { "GrayScaleThresholdAtTheLuminance", 1, 1, 3, false, { 10, 200, 30 },
            [](Rep &r) { r.grayScale(true, 124); }, { 0, 0, 0 } },
        Example { "GrayScaleThresholdBelowTheLuminance", 1, 1, 3, false, { 10, 200, 30 },
            [](Rep &r) { r.grayScale(true, 123); }, { 255, 255, 255 } },
        Example { "GrayScaleOfFourColoursIsTheMean", 1, 1, 4, false, { 10, 20, 30, 41 },
            [](Rep &r) { r.grayScale(false, 0); }, { 25, 25, 25, 25 } },
        // Gx = 180 − 120 = 60, Gy = 240 − 60 = 180: the larger over three is 60 (added: 50 + 60).
        Example { "EdgeDetectMapsTheGradient", 3, 3, 1, false, ramp(9, 10, 10),
            [](Rep &r) { r.edgeDetect(false); }, with(ramp(9, 10, 10), { { 4, 60 } }) },
        Example { "EdgeDetectAddsTheGradient", 3, 3, 1, false, ramp(9, 10, 10),
            [](Rep &r) { r.edgeDetect(true); }, with(ramp(9, 10, 10), { { 4, 110 } }) },
        // Gy = 765 → 255; 250 + 255 is capped and the alpha kept.
        Example { "EdgeDetectCapsTheSum", 3, 3, 2, true,
            { 0, 1, 0, 2, 0, 3, 0, 4, 250, 5, 0, 6, 255, 7, 255, 8, 255, 9 },
            [](Rep &r) { r.edgeDetect(true); },
            { 0, 1, 0, 2, 0, 3, 0, 4, 255, 5, 0, 6, 255, 7, 255, 8, 255, 9 } },
        // Key 100, threshold 0.1 → T = 26. d = 0 → a = 0; d = 10 → a = 100 ÷ 26 = 3 and the colours
        // scaled by 3 ÷ 255; d = 100 → a ≥ 255: kept; d = 4 gives a = 0, not below alpha 0: kept.
        Example { "MakeTransparentFadesBySquaredDistance", 4, 1, 4, true,
            { 100, 100, 100, 255, 110, 100, 95, 255, 200, 100, 100, 255, 104, 100, 100, 0 },
            [](Rep &r) { r.makeTransparentGray(100.0f / 255.0f, 0.1f); },
            { 0, 0, 0, 0, 1, 1, 1, 3, 200, 100, 100, 255, 104, 100, 100, 0 } },
        Example { "MakeTransparentNeedsAlpha", 1, 1, 3, false, { 100, 100, 100 },
            [](Rep &r) { r.makeTransparentGray(100.0f / 255.0f, 0.1f); }, { 100, 100, 100 } },
        // Threshold 0 becomes 1: d = 2 → a = 4, the grey 52 · 4 ÷ 200.
        Example { "MakeTransparentThresholdZeroIsOne", 1, 1, 2, true, { 52, 200 },
            [](Rep &r) { r.makeTransparentRed(50.0f / 255.0f, 0, 0, 0.0f); }, { 1, 4 } },
        // 0.5 → 127.5 + 0.5 → 128 added, up to 255; 0.1 → 26.
        Example { "TintAddsRoundedAmounts", 2, 1, 4, true, { 100, 200, 0, 7, 1, 2, 3, 8 },
            [](Rep &r) { r.tintRed(0.5f, 0.5f, 0.0f); }, { 228, 255, 0, 7, 129, 130, 3, 8 } },
        Example { "TintGray", 1, 1, 1, false, { 10 }, [](Rep &r) { r.tintGray(0.1f); }, { 36 } },
        Example { "InvertRGBAKeepsAlpha", 2, 1, 4, true, { 0, 10, 255, 128, 1, 2, 3, 4 }, &Rep::invertRGBA,
            { 255, 245, 0, 128, 254, 253, 252, 4 } },
        Example { "InvertGreyAlphaKeepsAlpha", 2, 1, 2, true, { 5, 6, 7, 8 }, &Rep::invertGreyAlpha,
            { 250, 6, 248, 8 } },
        // Rows are taken as packed even when padded: the first 12 bytes are inverted, padding included.
        Example { "InvertRGBTakesRowsAsPacked", 2, 2, 3, false, Bytes(12), &Rep::invertRGB,
            { 255, 255, 255, 255, 255, 255, 0x11, 0x11, 255, 255, 255, 255, 0, 0, 0xEE, 0xEE }, 2 }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(BitmapFilters, SharpenMatchesTheFormulaAndKeepsAlphaBorderAndRowPadding)
{
    // 6×5 RGBA with 3 bytes of padding per row, random samples, against a direct evaluation.
    auto rep = bitmap(6, 5, 4, true, noise(6 * 5 * 4, 7), 3);
    const Bytes before = bytesOf(*rep);
    const qsizetype row = rep->bytesPerRow();
    rep->sharpenMedium();
    const Bytes after = bytesOf(*rep);
    for (int y = 0; y < 5; ++y) {
        for (qsizetype i = 0; i < row; ++i) {
            const int x = int(i / 4), c = int(i % 4);
            const size_t k = size_t(y * row + i);
            int64_t expected = before[k];
            if (x >= 1 && x <= 4 && y >= 1 && y <= 3 && c < 3) {
                const auto s = [&](int dx, int dy) {
                    return int64_t(before[size_t(qsizetype(k) + dy * row + dx * 4)]);
                };
                expected = std::clamp<int64_t>(
                    (6 * s(0, 0) - s(0, -1) - s(-1, 0) - s(1, 0) - s(0, 1)) / 2, 0, 255);
            }
            EXPECT_EQ(after[k], expected) << "x " << x << " y " << y << " c " << c;
        }
    }
}

TEST(BitmapFilters, CallbackAndFastPathsAgree)
{
    // Sums of 16, 32 and 64 bits; a 7-wide divisor is not a power of two.
    const Bytes pixels = noise(9 * 7 * 3, 11);
    const auto agree = [&](const std::function<void(Rep &, Rep::MatrixCallback)> &apply) {
        auto fast = bitmap(9, 7, 3, false, pixels), slow = bitmap(9, 7, 3, false, pixels);
        apply(*fast, nullptr);
        apply(*slow, [](int v) { return v; });
        return bytesOf(*fast) == bytesOf(*slow);
    };
    const int32_t kernels[4][9] = { { 1, 2, 1, 2, 4, 2, 1, 2, 1 }, { 0, -1, 0, -1, 5, -1, 0, -1, 0 },
        { 100, 0, -50, 0, 30, 0, 0, 0, 1 }, { 8000000, -3, 0, 0, 1, 0, 0, 0, -8000000 } };
    for (const auto &kernel : kernels)
        for (int32_t divisor : { 1, 4, 7, -2 })
            EXPECT_TRUE(agree([&](Rep &r, auto cb) { r.applyMatrixFilter(kernel, divisor, 3, cb); }))
                << "divisor " << divisor;
    // Two 5×5 kernels, the second scaled for 32-bit sums.
    for (int32_t scale : { 1, 1000 }) {
        std::vector<int32_t> five(50);
        for (size_t i = 0; i < five.size(); ++i)
            five[i] = (int32_t((i * 7919) % 23) - 9) * (i >= 25 ? scale : 1);
        for (int32_t divisor : { 1, 8, 5 })
            EXPECT_TRUE(agree([&](Rep &r, auto cb) {
                r.applyMatrixesFilter(five.data(), 2, 5, divisor, -4, cb);
            })) << "scale "
                << scale << " divisor " << divisor;
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

TEST_P(RefusedLayouts, EveryFilterLeavesTheBitmapUnchanged)
{
    const LayoutCase &l = GetParam();
    auto rep = Rep::create(5, 5, l.bitsPerSample, 4, true, l.planar, l.format);
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

INSTANTIATE_TEST_SUITE_P(BitmapFilters, RefusedLayouts,
    ::testing::Values(LayoutCase { "SixteenBit", 16, false, 0 }, LayoutCase { "Planar", 8, true, 0 },
        LayoutCase { "Float", 32, false, Rep::FloatingPointSamplesBitmapFormat },
        LayoutCase { "AlphaFirst", 8, false, Rep::AlphaFirstBitmapFormat },
        LayoutCase { "NonPremultiplied", 8, false, Rep::AlphaNonpremultipliedBitmapFormat }),
    [](const auto &info) { return std::string(info.param.name); });

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
    const Bytes after = bytesOf(*rep);
    EXPECT_EQ(after[0], 21); // the first pixel in memory is (2, 1)
    EXPECT_EQ(after[16], 20);
    EXPECT_EQ(after[24], 0);
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
            firstHistogram.assign(histogram, histogram + 256);
            for (int i = 0; i < 256; ++i)
                table[i] = static_cast<unsigned char>(i / 2);
            return true;
        },
        true);
    EXPECT_EQ(statisticalChannels, (std::vector<int> { 2, 1, 0, 4 }));
    EXPECT_EQ(firstHistogram[10], 2u);
    EXPECT_EQ(firstHistogram[99], 0u);
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
    EXPECT_EQ(rgba->size(), QSizeF(20, 10));
    EXPECT_EQ(bytesOf(*rgba), (Bytes { 1, 2, 3, 255, 4, 5, 6, 255 }));
    auto again = rgba->bitmapImageRepWithAlpha(); // a copy even when there is alpha already
    ASSERT_TRUE(again);
    EXPECT_NE(again, rgba);
    EXPECT_EQ(bytesOf(*again), bytesOf(*rgba));
}
