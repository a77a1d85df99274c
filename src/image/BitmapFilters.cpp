// BitmapFilters: in-place pixel filters on 8-bit meshed bitmaps (convolutions, tables, statistics,
// greyscale, edges, median, colour-keyed transparency, tinting, entropy).
#include "image/BitmapImageRep.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace orvel {

namespace {

// The sharpening kernels: unity gain, growing edge gain from light to strong.
// The largest kernel and median window: beyond it a call would take unbounded time and memory.
constexpr int MaxKernelSize = 255;

constexpr int32_t SharpenLightKernel[9] = { 0, -1, 0, -1, 8, -1, 0, -1, 0 };
constexpr int32_t SharpenMediumKernel[9] = { 0, -1, 0, -1, 6, -1, 0, -1, 0 };
constexpr int32_t SharpenStrongKernel[9] = { 0, -1, 0, -1, 5, -1, 0, -1, 0 };

inline unsigned char clampByte(int64_t value)
{
    return value <= 0 ? 0 : value >= 255 ? 255 : static_cast<unsigned char>(value);
}

// A float or double truncated toward zero, saturated to the int range (NaN gives 0), so that hostile
// arguments never reach an undefined conversion. In range it is the plain truncation.
inline int truncateToInt(double value)
{
    if (!(value == value))
        return 0;
    if (value >= 2147483647.0)
        return std::numeric_limits<int>::max();
    if (value <= -2147483648.0)
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

// The layout the filters read from the bitmap at each call.
struct Layout
{
    unsigned char *data = nullptr;
    int width = 0;
    int height = 0;
    int pixelBytes = 0; // P
    int colourSamples = 0; // C
    qsizetype rowBytes = 0; // R
    bool alpha = false;
    qsizetype total() const { return rowBytes * height; }
    unsigned char *row(int y) const { return data + qsizetype(y) * rowBytes; }
};

bool layoutOf(BitmapImageRep &bitmap, Layout &layout)
{
    if (!bitmap.canFilter() || bitmap.pixelsWide() <= 0 || bitmap.pixelsHigh() <= 0)
        return false;
    layout.pixelBytes = bitmap.bitsPerPixel() >> 3;
    if (layout.pixelBytes < 1)
        return false;
    layout.data = bitmap.bitmapData();
    if (!layout.data)
        return false;
    layout.width = bitmap.pixelsWide();
    layout.height = bitmap.pixelsHigh();
    layout.rowBytes = bitmap.bytesPerRow();
    layout.alpha = bitmap.hasAlpha();
    layout.colourSamples = layout.alpha ? layout.pixelBytes - 1 : layout.pixelBytes;
    return layout.colourSamples >= 1 || !layout.alpha;
}

// The private working copy the convolutions read from; null when it cannot be allocated.
std::unique_ptr<unsigned char[]> copyOf(const Layout &layout)
{
    std::unique_ptr<unsigned char[]> copy(new (std::nothrow) unsigned char[size_t(layout.total())]);
    if (copy)
        memcpy(copy.get(), layout.data, size_t(layout.total()));
    return copy;
}

// Puts the alpha bytes of the interior columns [first, last) of a row back from the copy after a
// row-wide pass has computed every byte.
void restoreAlpha(const Layout &layout, const unsigned char *from, unsigned char *to, int first, int last)
{
    if (!layout.alpha)
        return;
    const int p = layout.pixelBytes;
    for (int x = first; x < last; ++x)
        to[qsizetype(x) * p + p - 1] = from[qsizetype(x) * p + p - 1];
}

// Truncating division (toward zero) by a power of two 2^shift, branch-free so that loops vectorise.
template <typename Sum> inline Sum dividePow2(Sum sum, int shift, Sum mask)
{
    return Sum((sum + ((sum >> (sizeof(Sum) * 8 - 1)) & mask)) >> shift);
}

enum class Division { One, PowerOfTwo, General };

Division divisionFor(int32_t divisor)
{
    if (divisor == 1)
        return Division::One;
    return divisor > 0 && (divisor & (divisor - 1)) == 0 ? Division::PowerOfTwo : Division::General;
}

// quotient + offset, clamped to a byte. Narrow sums are only used when |sum| + |offset| fits them.
template <typename Sum> inline unsigned char clampSum(Sum q, int32_t offset)
{
    if constexpr (std::is_same_v<Sum, int64_t>) {
        return clampByte(q + offset);
    } else {
        const Sum v = Sum(q + Sum(offset));
        return static_cast<unsigned char>(v < 0 ? 0 : v > 255 ? 255 : v);
    }
}

template <typename Sum, Division mode> inline Sum divide(Sum sum, int32_t divisor, int shift, Sum mask)
{
    if constexpr (mode == Division::One)
        return sum;
    else if constexpr (mode == Division::PowerOfTwo)
        return dividePow2(sum, shift, mask);
    else
        return Sum(sum / divisor);
}

// One row of a convolution without callback: out[i] = clamp(Σ k·in[i + offset] ÷ divisor + offset).
// Accumulates kernel cell by kernel cell over the whole row so that each pass is a simple loop over
// bytes that the compiler vectorises.
template <typename Sum, Division mode>
void convolveRow(const unsigned char *centre, unsigned char *__restrict out, qsizetype n,
    const int32_t *weights, const qsizetype *offsets, int cells, int32_t divisor, int32_t offset,
    Sum *__restrict acc)
{
    std::fill(acc, acc + n, Sum(0));
    for (int k = 0; k < cells; ++k) {
        const Sum w = Sum(weights[k]);
        if (w == 0)
            continue;
        const unsigned char *__restrict in = centre + offsets[k];
        for (qsizetype i = 0; i < n; ++i)
            acc[i] = Sum(acc[i] + w * Sum(in[i]));
    }
    const int shift = mode == Division::PowerOfTwo ? std::countr_zero(uint32_t(divisor)) : 0;
    const Sum mask = Sum(divisor - 1);
    for (qsizetype i = 0; i < n; ++i)
        out[i] = clampSum(divide<Sum, mode>(acc[i], divisor, shift, mask), offset);
}

// One row of a 3×3 convolution without callback in a single pass: nine taps summed, divided, offset
// and clamped, as one plain loop over bytes that the compiler vectorises (16-bit lanes for the
// sharpening kernels).
template <typename Sum, Division mode>
void convolveRow3(const unsigned char *centre, unsigned char *__restrict out, qsizetype n, qsizetype r, int p,
    const int32_t *k, int32_t divisor, int32_t offset)
{
    const unsigned char *__restrict a0 = centre - r - p, *__restrict a1 = centre - r,
                                    *__restrict a2 = centre - r + p;
    const unsigned char *__restrict c0 = centre - p, *__restrict c1 = centre, *__restrict c2 = centre + p;
    const unsigned char *__restrict b0 = centre + r - p, *__restrict b1 = centre + r,
                                    *__restrict b2 = centre + r + p;
    const Sum k0 = Sum(k[0]), k1 = Sum(k[1]), k2 = Sum(k[2]), k3 = Sum(k[3]), k4 = Sum(k[4]), k5 = Sum(k[5]),
              k6 = Sum(k[6]), k7 = Sum(k[7]), k8 = Sum(k[8]);
    const int shift = mode == Division::PowerOfTwo ? std::countr_zero(uint32_t(divisor)) : 0;
    const Sum mask = Sum(divisor - 1);
    for (qsizetype i = 0; i < n; ++i) {
        const Sum sum = Sum(k0 * a0[i] + k1 * a1[i] + k2 * a2[i] + k3 * c0[i] + k4 * c1[i] + k5 * c2[i]
            + k6 * b0[i] + k7 * b1[i] + k8 * b2[i]);
        out[i] = clampSum(divide<Sum, mode>(sum, divisor, shift, mask), offset);
    }
}

// The narrowest sum type that holds every Σ k·sample + offset exactly: 0 for 16 bits, 1 for 32, 2 for 64.
int sumWidth(const int32_t *weights, int cells, int32_t offset)
{
    int64_t total = std::abs(int64_t(offset));
    for (int k = 0; k < cells; ++k)
        total += std::abs(int64_t(weights[k])) * 255;
    return total <= std::numeric_limits<int16_t>::max() ? 0
        : total <= std::numeric_limits<int32_t>::max()  ? 1
                                                        : 2;
}

// Runs one row with the sum type and division mode chosen once per call.
template <typename Sum>
void rowWith(Division division, bool three, const unsigned char *centre, unsigned char *out, qsizetype n,
    qsizetype r, int p, const int32_t *w, const qsizetype *offsets, int cells, int32_t divisor,
    int32_t offset, Sum *acc)
{
    auto run = [&]<Division D>() {
        if (three)
            convolveRow3<Sum, D>(centre, out, n, r, p, w, divisor, offset);
        else
            convolveRow<Sum, D>(centre, out, n, w, offsets, cells, divisor, offset, acc);
    };
    switch (division) {
    case Division::One:
        run.template operator()<Division::One>();
        break;
    case Division::PowerOfTwo:
        run.template operator()<Division::PowerOfTwo>();
        break;
    case Division::General:
        run.template operator()<Division::General>();
        break;
    }
}

// The size × size convolution shared by the 3×3 and N×N filters: interior pixels only, reading the
// copy, writing the bitmap. With a callback every sample is visited in the documented order
// (channel from the last down, kernel by kernel, rows bottom-up, columns left to right); without one
// the order cannot be observed, so whole rows are computed at once and only the last kernel, whose
// result is what remains, is applied.
void convolve(const Layout &layout, const int32_t *kernels, int count, int size, int32_t divisor,
    int32_t offset, BitmapImageRep::MatrixCallback callback)
{
    const int half = size / 2;
    if (layout.width < size || layout.height < size || count < 1)
        return;
    const int cells = size * size;
    const int p = layout.pixelBytes;
    const qsizetype r = layout.rowBytes;
    std::vector<qsizetype> offsets(static_cast<size_t>(cells));
    for (int row = 0; row < size; ++row)
        for (int col = 0; col < size; ++col)
            offsets[size_t(row * size + col)] = -(r + p) * half + qsizetype(row) * r + qsizetype(col) * p;

    const auto copy = copyOf(layout);
    if (!copy)
        return;
    const unsigned char *src = copy.get();
    const int firstColumn = half, endColumn = layout.width - half;
    const int channels = layout.alpha ? p - 1 : p;

    if (callback) {
        for (int c = channels - 1; c >= 0; --c) {
            for (int k = 0; k < count; ++k) {
                const int32_t *w = kernels + qsizetype(k) * cells;
                for (int y = layout.height - 1 - half; y >= half; --y) {
                    for (int x = firstColumn; x < endColumn; ++x) {
                        const qsizetype at = qsizetype(y) * r + qsizetype(x) * p + c;
                        int64_t sum = 0;
                        for (int i = 0; i < cells; ++i)
                            sum += int64_t(w[i]) * src[at + offsets[size_t(i)]];
                        const int64_t q = sum / divisor;
                        layout.data[at] = clampByte(callback(static_cast<int>(q + offset)));
                    }
                }
            }
        }
        return;
    }

    const int32_t *w = kernels + qsizetype(count - 1) * cells;
    const qsizetype n = qsizetype(endColumn - firstColumn) * p;
    const int width = sumWidth(w, cells, offset);
    const Division division = divisionFor(divisor);
    const bool three = size == 3;
    std::vector<int16_t> acc16(width == 0 && !three ? size_t(n) : 0);
    std::vector<int32_t> acc32(width == 1 && !three ? size_t(n) : 0);
    std::vector<int64_t> acc64(width == 2 ? size_t(n) : 0);
    for (int y = layout.height - 1 - half; y >= half; --y) {
        const qsizetype start = qsizetype(y) * r + qsizetype(firstColumn) * p;
        const unsigned char *centre = src + start;
        unsigned char *out = layout.data + start;
        if (width == 0)
            rowWith<int16_t>(division, three, centre, out, n, r, p, w, offsets.data(), cells, divisor, offset,
                acc16.data());
        else if (width == 1)
            rowWith<int32_t>(division, three, centre, out, n, r, p, w, offsets.data(), cells, divisor, offset,
                acc32.data());
        else // 64-bit sums go through the accumulator whatever the size
            rowWith<int64_t>(division, false, centre, out, n, r, p, w, offsets.data(), cells, divisor, offset,
                acc64.data());
        restoreAlpha(layout, src + qsizetype(y) * r, layout.row(y), firstColumn, endColumn);
    }
}

// The comparators of Batcher's odd–even merge sort for `count` values (padded to a power of two with
// values above every sample, whose comparators are then no-ops and left out).
std::vector<std::pair<int, int>> sortingNetwork(int count)
{
    int padded = 1;
    while (padded < count)
        padded *= 2;
    std::vector<std::pair<int, int>> pairs;
    for (int p = 1; p < padded; p += p)
        for (int k = p; k > 0; k /= 2)
            for (int j = k % p; j + k < padded; j += k + k)
                for (int i = 0; i < k && i + j + k < padded; ++i)
                    if ((i + j) / (p + p) == (i + j + k) / (p + p) && i + j + k < count)
                        pairs.emplace_back(i + j, i + j + k);
    return pairs;
}

} // namespace

bool BitmapImageRep::canFilter() const
{
    return numberOfPlanes() == 1 && m_bitsPerSample == 8 && m_bitsPerPixel % 8 == 0 && m_bitmapFormat == 0;
}

void BitmapImageRep::sharpenLight() { applyMatrixFilter(SharpenLightKernel, 4, 0); }
void BitmapImageRep::sharpenMedium() { applyMatrixFilter(SharpenMediumKernel, 2, 0); }
void BitmapImageRep::sharpenStrong() { applyMatrixFilter(SharpenStrongKernel, 1, 0); }

void BitmapImageRep::applyMatrixFilter(
    const int32_t *matrix, int32_t divisor, int32_t offset, MatrixCallback callback)
{
    Layout layout;
    if (!matrix || divisor == 0 || !layoutOf(*this, layout))
        return;
    try {
        convolve(layout, matrix, 1, 3, divisor, offset, callback);
    } catch (const std::bad_alloc &) {
        // No room for the row buffers: the bitmap is left as far as it got.
    }
}

void BitmapImageRep::applyMatrixesFilter(
    const int32_t *matrixes, int count, int size, int32_t divisor, int32_t offset, MatrixCallback callback)
{
    Layout layout;
    // Kernels wider than MaxKernelSize are refused: their cost grows with the square of the size.
    if (!matrixes || count < 1 || size < 3 || size % 2 == 0 || size > MaxKernelSize || divisor == 0
        || !layoutOf(*this, layout))
        return;
    try {
        convolve(layout, matrixes, count, size, divisor, offset, callback);
    } catch (const std::bad_alloc &) {
        // No room for the row buffers: the bitmap is left as far as it got.
    }
}

void BitmapImageRep::applyTransformationTable(const unsigned char *table)
{
    Layout layout;
    if (!table || !layoutOf(*this, layout))
        return;
    const int p = layout.pixelBytes;
    for (int y = layout.height - 1; y >= 0; --y) {
        unsigned char *row = layout.row(y);
        if (!layout.alpha) {
            const qsizetype n = qsizetype(layout.width) * p;
            qsizetype i = 0;
            for (; i + 8 <= n; i += 8) {
                row[i] = table[row[i]];
                row[i + 1] = table[row[i + 1]];
                row[i + 2] = table[row[i + 2]];
                row[i + 3] = table[row[i + 3]];
                row[i + 4] = table[row[i + 4]];
                row[i + 5] = table[row[i + 5]];
                row[i + 6] = table[row[i + 6]];
                row[i + 7] = table[row[i + 7]];
            }
            for (; i < n; ++i)
                row[i] = table[row[i]];
            continue;
        }
        // With alpha the colour samples of each pixel are mapped, whatever their count.
        unsigned char *end = row + qsizetype(layout.width) * p;
        if (p == 4) {
            for (unsigned char *px = row; px < end; px += 4) {
                px[0] = table[px[0]];
                px[1] = table[px[1]];
                px[2] = table[px[2]];
            }
        } else {
            for (unsigned char *px = row; px < end; px += p)
                for (int c = 0; c < p - 1; ++c)
                    px[c] = table[px[c]];
        }
    }
}

void BitmapImageRep::scaleWithDivisor(float divisor, float offset)
{
    if (!canFilter() || divisor == 0.0f || (offset == 0.0f && divisor == 1.0f))
        return;
    unsigned char table[256];
    for (int v = 255; v >= 0; --v) {
        const float value = float(v) / divisor + (offset + 0.5f);
        const int t = truncateToInt(double(value));
        table[v] = t <= 0 ? 0 : t >= 255 ? 255 : static_cast<unsigned char>(t);
    }
    applyTransformationTable(table);
}

void BitmapImageRep::applySampleFilter(SampleCallback callback)
{
    if (!callback || !canFilter())
        return;
    unsigned char table[256];
    for (int v = 255; v >= 0; --v)
        table[v] = static_cast<unsigned char>(callback(v) & 0xff);
    applyTransformationTable(table);
}

void BitmapImageRep::applyPixelFilter(PixelCallback callback)
{
    Layout layout;
    if (!callback || !layoutOf(*this, layout))
        return;
    // The coordinates count down from the first pixel in memory: it gets (W−1, H−1), the last (0, 0).
    for (int y = 0; y < layout.height; ++y) {
        unsigned char *px = layout.row(y);
        for (int x = 0; x < layout.width; ++x, px += layout.pixelBytes)
            callback(px, layout.colourSamples, layout.width - 1 - x, layout.height - 1 - y);
    }
}

void BitmapImageRep::applyStatisticalFilter(StatisticalCallback callback, bool mono)
{
    Layout layout;
    if (!callback || !layoutOf(*this, layout))
        return;
    uint32_t histogram[256] = {};
    unsigned char table[256] = {};
    const int p = layout.pixelBytes;
    const int channels = layout.colourSamples;
    if (mono) {
        for (int y = 0; y < layout.height; ++y) {
            const unsigned char *px = layout.row(y);
            for (int x = 0; x < layout.width; ++x, px += p)
                for (int c = 0; c < channels; ++c)
                    ++histogram[px[c]];
        }
        if (callback(*this, samplesPerPixel(), histogram, table))
            applyTransformationTable(table);
        return;
    }
    for (int c = channels - 1; c >= 0; --c) {
        for (int y = 0; y < layout.height; ++y) {
            const unsigned char *px = layout.row(y) + c;
            for (int x = 0; x < layout.width; ++x, px += p)
                ++histogram[*px];
        }
        if (callback(*this, c, histogram, table)) {
            for (int y = 0; y < layout.height; ++y) {
                unsigned char *px = layout.row(y) + c;
                for (int x = 0; x < layout.width; ++x, px += p)
                    *px = table[*px];
            }
        }
        memset(histogram, 0, sizeof histogram);
        memset(table, 0, sizeof table);
    }
}

void BitmapImageRep::applyNormalizeFilter(NormalizeCallback callback, bool mono)
{
    Layout layout;
    if (!layoutOf(*this, layout))
        return;
    const int p = layout.pixelBytes;
    const int channels = layout.colourSamples;
    int min = 256, max = -1;
    for (int y = 0; y < layout.height && !(min <= 0 && max >= 255); ++y) {
        const unsigned char *px = layout.row(y);
        for (int x = 0; x < layout.width; ++x, px += p) {
            if (mono) {
                int sum = 0;
                for (int c = 0; c < channels; ++c)
                    sum += px[c];
                const int value = sum / channels;
                min = std::min(min, value);
                max = std::max(max, value);
            } else {
                for (int c = 0; c < channels; ++c) {
                    min = std::min(min, int(px[c]));
                    max = std::max(max, int(px[c]));
                }
            }
        }
    }
    if (max == min || max < min)
        return;
    unsigned char table[256];
    // Stored as a byte without clamping: entries outside min…max are never looked up.
    for (int i = 255; i >= 0; --i)
        table[i] = static_cast<unsigned char>(
            callback ? callback(i, min, max) : (255 * i - 255 * min) / (max - min));
    applyTransformationTable(table);
}

void BitmapImageRep::applyInterlaceFilter(unsigned shift)
{
    Layout layout;
    if (!layoutOf(*this, layout))
        return;
    const int p = layout.pixelBytes;
    // Rows count from the bottom: the last row in memory is row 0 and is kept.
    for (int y = layout.height - 2; y >= 0; y -= 2) {
        unsigned char *row = layout.row(y);
        if (!layout.alpha) {
            const qsizetype n = qsizetype(layout.width) * p;
            if (shift <= 7)
                for (qsizetype i = 0; i < n; ++i)
                    row[i] = static_cast<unsigned char>(row[i] >> shift);
            else
                memset(row, 0, size_t(n));
            continue;
        }
        for (int x = 0; x < layout.width; ++x, row += p)
            for (int c = 0; c < p - 1; ++c)
                row[c] = shift <= 7 ? static_cast<unsigned char>(row[c] >> shift) : 0;
    }
}

void BitmapImageRep::clear(unsigned char value)
{
    Layout layout;
    if (!layoutOf(*this, layout))
        return;
    const int p = layout.pixelBytes;
    for (int y = 0; y < layout.height; ++y) {
        unsigned char *row = layout.row(y);
        if (!layout.alpha) {
            memset(row, value, size_t(qsizetype(layout.width) * p));
            continue;
        }
        for (int x = 0; x < layout.width; ++x, row += p)
            memset(row, value, size_t(p - 1));
    }
}

void BitmapImageRep::grayScale(bool thresholdMode, unsigned threshhold)
{
    Layout layout;
    if (!layoutOf(*this, layout) || layout.colourSamples < 1)
        return;
    const int p = layout.pixelBytes;
    const int channels = layout.colourSamples;
    for (int y = 0; y < layout.height; ++y) {
        unsigned char *px = layout.row(y);
        for (int x = 0; x < layout.width; ++x, px += p) {
            unsigned value;
            if (channels == 3) {
                const float l = 0.299f * float(px[0]) + 0.587f * float(px[1]) + 0.114f * float(px[2]) + 0.5f;
                value = static_cast<unsigned>(l);
            } else {
                unsigned sum = 0;
                for (int c = 0; c < channels; ++c)
                    sum += px[c];
                value = sum / unsigned(channels);
            }
            const unsigned char out
                = thresholdMode ? (value > threshhold ? 255 : 0) : static_cast<unsigned char>(value);
            memset(px, out, size_t(channels));
        }
    }
}

void BitmapImageRep::edgeDetect(bool addToImage)
{
    Layout layout;
    if (!layoutOf(*this, layout) || layout.width < 3 || layout.height < 3)
        return;
    const auto copy = copyOf(layout);
    if (!copy)
        return;
    const int p = layout.pixelBytes;
    const qsizetype r = layout.rowBytes;
    const qsizetype n = qsizetype(layout.width - 2) * p;
    for (int y = 1; y < layout.height - 1; ++y) {
        const unsigned char *m = copy.get() + qsizetype(y) * r + p;
        const unsigned char *t = m - r;
        const unsigned char *b = m + r;
        unsigned char *out = layout.row(y) + p;
        for (qsizetype i = 0; i < n; ++i) {
            const int gx = (t[i + p] + m[i + p] + b[i + p]) - (t[i - p] + m[i - p] + b[i - p]);
            const int gy = (b[i - p] + b[i] + b[i + p]) - (t[i - p] + t[i] + t[i + p]);
            const int e = std::max(std::abs(gx), std::abs(gy)) / 3;
            out[i] = static_cast<unsigned char>(std::min(addToImage ? m[i] + e : e, 255));
        }
        restoreAlpha(layout, copy.get() + qsizetype(y) * r, layout.row(y), 1, layout.width - 1);
    }
}

void BitmapImageRep::medianFilter(unsigned size)
{
    Layout layout;
    if (size < 3 || size % 2 == 0 || size > unsigned(MaxKernelSize) || !layoutOf(*this, layout))
        return;
    if (size > unsigned(layout.width) || size > unsigned(layout.height))
        return;
    const auto copy = copyOf(layout);
    if (!copy)
        return;
    try {
        const int n = int(size), half = n / 2, cells = n * n;
        const int p = layout.pixelBytes;
        const qsizetype r = layout.rowBytes;
        std::vector<qsizetype> offsets(static_cast<size_t>(cells));
        for (int row = 0; row < n; ++row)
            for (int col = 0; col < n; ++col)
                offsets[size_t(row * n + col)] = -(r + p) * half + qsizetype(row) * r + qsizetype(col) * p;
        const int m = cells / 2;
        if (n <= 5) {
            // Small neighbourhoods: a whole row at a time through a sorting network of byte-wise min and
            // max, which vectorises. Any correct sort gives the same sorted values as the Shell sort below.
            const auto pairs = sortingNetwork(cells);
            const qsizetype span = qsizetype(layout.width - 2 * half) * p;
            std::vector<unsigned char> lanes(static_cast<size_t>(span * cells));
            for (int y = half; y < layout.height - half; ++y) {
                const qsizetype start = qsizetype(y) * r + qsizetype(half) * p;
                for (int k = 0; k < cells; ++k)
                    memcpy(lanes.data() + k * span, copy.get() + start + offsets[size_t(k)], size_t(span));
                for (const auto &[first, second] : pairs) {
                    unsigned char *__restrict a = lanes.data() + first * span;
                    unsigned char *__restrict b = lanes.data() + second * span;
                    for (qsizetype i = 0; i < span; ++i) {
                        const unsigned char lo = std::min(a[i], b[i]);
                        const unsigned char hi = std::max(a[i], b[i]);
                        a[i] = lo;
                        b[i] = hi;
                    }
                }
                unsigned char *out = layout.data + start;
                const unsigned char *lower = lanes.data() + (m - 1) * span;
                const unsigned char *middle = lanes.data() + m * span;
                for (qsizetype i = 0; i < span; ++i)
                    out[i] = (m % 2 == 1) ? middle[i]
                                          : static_cast<unsigned char>((unsigned(lower[i]) + middle[i]) / 2);
                restoreAlpha(layout, copy.get() + qsizetype(y) * r, layout.row(y), half, layout.width - half);
            }
            return;
        }
        std::vector<int> values(static_cast<size_t>(cells));
        for (int c = layout.colourSamples - 1; c >= 0; --c) {
            for (int y = half; y < layout.height - half; ++y) {
                for (int x = half; x < layout.width - half; ++x) {
                    const qsizetype at = qsizetype(y) * r + qsizetype(x) * p + c;
                    for (int i = 0; i < cells; ++i)
                        values[size_t(i)] = copy[size_t(at + offsets[size_t(i)])];
                    // Shell sort, gaps cells/2 halved each pass, insertion by swapping.
                    for (int gap = cells / 2; gap > 0; gap /= 2)
                        for (int i = gap; i < cells; ++i)
                            for (int j = i - gap; j >= 0 && values[size_t(j)] > values[size_t(j + gap)];
                                 j -= gap)
                                std::swap(values[size_t(j)], values[size_t(j + gap)]);
                    // For odd sizes m is even, so this is the mean of the two middle-lower values, on
                    // purpose.
                    const int result
                        = (m % 2 == 1) ? values[size_t(m)] : (values[size_t(m - 1)] + values[size_t(m)]) / 2;
                    layout.data[at] = static_cast<unsigned char>(result);
                }
            }
        }
    } catch (const std::bad_alloc &) {
        // No room for the row buffers: the bitmap is left as far as it got.
    }
}

void BitmapImageRep::makeTransparentGray(float grey, float threshhold)
{
    makeTransparentRed(grey, grey, grey, threshhold);
}

void BitmapImageRep::makeTransparentRed(float red, float green, float blue, float threshhold)
{
    makeTransparentSample1(red, green, blue, 0.0f, threshhold);
}

void BitmapImageRep::makeTransparentSample1(
    float sample1, float sample2, float sample3, float sample4, float threshhold)
{
    Layout layout;
    if (!layoutOf(*this, layout) || !layout.alpha)
        return;
    const int p = layout.pixelBytes;
    if (p != 2 && p != 4 && p != 5)
        return;
    const int target[4]
        = { truncateToInt(double(sample1) * 255 + 0.5), truncateToInt(double(sample2) * 255 + 0.5),
              truncateToInt(double(sample3) * 255 + 0.5), truncateToInt(double(sample4) * 255 + 0.5) };
    int threshold = truncateToInt(double(threshhold) * 255 + 0.5);
    if (threshold <= 0)
        threshold = 1;
    if (threshold > 255)
        threshold = 255;
    const int channels = p - 1;
    for (int y = 0; y < layout.height; ++y) {
        unsigned char *px = layout.row(y);
        for (int x = 0; x < layout.width; ++x, px += p) {
            int64_t d = 0;
            for (int c = 0; c < channels; ++c)
                d = std::max(d, std::abs(int64_t(px[c]) - target[c]));
            const int64_t a = d * d / threshold;
            const int64_t current = px[channels];
            if (a < current) {
                // Colour scaled with the new alpha, keeping the samples premultiplied.
                for (int c = 0; c < channels; ++c)
                    px[c] = static_cast<unsigned char>(int64_t(px[c]) * a / current);
                px[channels] = static_cast<unsigned char>(a);
            }
        }
    }
}

void BitmapImageRep::tintGray(float grey) { tintRed(grey, grey, grey); }

void BitmapImageRep::tintRed(float red, float green, float blue) { tintSample1(red, green, blue, 0.0f); }

void BitmapImageRep::tintSample1(float sample1, float sample2, float sample3, float sample4)
{
    Layout layout;
    if (!layoutOf(*this, layout) || layout.colourSamples < 1)
        return;
    const float samples[4] = { sample1, sample2, sample3, sample4 };
    std::vector<int> amounts(static_cast<size_t>(layout.colourSamples), 0);
    for (int c = 0; c < std::min(layout.colourSamples, 4); ++c)
        amounts[size_t(c)] = truncateToInt(double(samples[c]) * 255 + 0.5);
    const int p = layout.pixelBytes;
    for (int y = 0; y < layout.height; ++y) {
        unsigned char *px = layout.row(y);
        for (int x = 0; x < layout.width; ++x, px += p)
            for (int c = 0; c < layout.colourSamples; ++c) // a negative amount stops at 0
                px[c] = clampByte(int64_t(px[c]) + amounts[size_t(c)]);
    }
}

bool BitmapImageRep::entropy(float *entropyOut, float *entropySquareOut, float *brightnessOut, QRectF rect)
{
    Layout layout;
    if (!layoutOf(*this, layout))
        return false;
    const auto toInt = [](double v) { return truncateToInt(v); };
    const int rx = toInt(rect.x()), ry = toInt(rect.y()), rw = toInt(rect.width()), rh = toInt(rect.height());
    if (rx < 0 || ry < 0 || rw <= 0 || rh <= 0 || int64_t(rx) + rw > layout.width
        || int64_t(ry) + rh > layout.height)
        return false;
    const int p = layout.pixelBytes;
    const int channels = layout.colourSamples;
    // The first pixel of a row is taken at byte x·C (colour samples, not bytes per pixel), the
    // following ones a pixel apart; kept as it stands. C ≤ P keeps it inside the rectangle's row.
    const auto value = [channels](const unsigned char *px) -> int64_t {
        if (channels == 3)
            return int64_t(rintf(0.299f * float(px[0]) + 0.587f * float(px[1]) + 0.114f * float(px[2])));
        if (channels == 4)
            return int64_t(px[0]) + px[1] + px[2] + px[3];
        return px[0];
    };
    int64_t total = 0;
    for (int y = ry; y < ry + rh; ++y) {
        const unsigned char *px = layout.row(y) + qsizetype(rx) * channels;
        int64_t sum = 0;
        for (int x = 0; x < rw; ++x, px += p)
            sum += value(px);
        if (channels == 4)
            sum >>= 2;
        total += sum / rw;
    }
    if (brightnessOut)
        *brightnessOut = float(total) / float(rh) / 255.0f;
    const int64_t mean = (total + rh / 2) / rh;
    int64_t absolute = 0, square = 0;
    for (int y = ry; y < ry + rh; ++y) {
        const unsigned char *px = layout.row(y) + qsizetype(rx) * channels;
        int64_t sumAbs = 0, sumSq = 0;
        for (int x = 0; x < rw; ++x, px += p) {
            const int64_t b = channels == 4 ? value(px) >> 2 : value(px);
            sumAbs += std::abs(b - mean);
            sumSq += (b - mean) * (b - mean);
        }
        absolute += sumAbs / rw;
        square += sumSq / rw;
    }
    if (entropyOut)
        *entropyOut = float(absolute / rh) / 255.0f;
    if (entropySquareOut)
        *entropySquareOut = square < 1 ? 0.0f : std::sqrt(float(square)) / float(rh) / 255.0f;
    return true;
}

std::shared_ptr<BitmapImageRep> BitmapImageRep::bitmapImageRepWithAlpha()
{
    Layout layout;
    if (!layoutOf(*this, layout))
        return nullptr;
    const int samples = m_hasAlpha ? m_samplesPerPixel : m_samplesPerPixel + 1;
    auto result = create(layout.width, layout.height, 8, samples, true, false);
    if (!result)
        return nullptr;
    unsigned char *out = result->bitmapData();
    const qsizetype outRow = result->bytesPerRow();
    const int outPixel = result->bitsPerPixel() >> 3;
    for (int y = 0; y < layout.height; ++y) {
        const unsigned char *in = layout.row(y);
        unsigned char *o = out + qsizetype(y) * outRow;
        if (samples == m_samplesPerPixel && outPixel == layout.pixelBytes) {
            memcpy(o, in, size_t(qsizetype(layout.width) * layout.pixelBytes));
            continue;
        }
        // Each pixel's colour bytes, then an opaque alpha.
        const int colour = outPixel - 1;
        for (int x = 0; x < layout.width; ++x, in += layout.pixelBytes, o += outPixel) {
            memcpy(o, in, size_t(std::min(colour, layout.pixelBytes)));
            o[colour] = 255;
        }
    }
    result->setSize(size());
    return result;
}

} // namespace orvel
