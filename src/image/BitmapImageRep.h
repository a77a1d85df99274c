// BitmapImageRep: a pixel buffer of any sample layout, decoded lazily from an image file when it has one.
#pragma once

#include "image/BitmapFileType.h"
#include "image/ImageRep.h"

#include <QByteArray>
#include <QImage>
#include <cstdint>
#include <memory>

namespace orvel {

class ImageSource;

/// A bitmap. Its layout is described as the platform describes bitmaps: bits per sample, samples per
/// pixel, planar or meshed, format flags, bytes per row (rows may be padded). The rendering bitmap is
/// 8-bit RGBA, alpha last, premultiplied, rows of 4 × width bytes.
class BitmapImageRep : public ImageRep
{
public:
    enum BitmapFormat : unsigned {
        AlphaFirstBitmapFormat = 1 << 0,
        AlphaNonpremultipliedBitmapFormat = 1 << 1,
        FloatingPointSamplesBitmapFormat = 1 << 2,
    };

    /// A zero-filled bitmap of the given layout; null when the layout is impossible or too large.
    /// bytesPerRow 0 means unpadded rows; bitsPerPixel 0 means bitsPerSample × samplesPerPixel.
    [[nodiscard]] static std::shared_ptr<BitmapImageRep> create(int pixelsWide, int pixelsHigh,
        int bitsPerSample, int samplesPerPixel, bool hasAlpha, bool isPlanar, unsigned bitmapFormat = 0,
        qsizetype bytesPerRow = 0, int bitsPerPixel = 0);
    /// The rendering bitmap: 8-bit RGBA premultiplied, rows of 4 × width bytes, all transparent.
    [[nodiscard]] static std::shared_ptr<BitmapImageRep> createRGBA(int pixelsWide, int pixelsHigh);
    /// A bitmap holding a copy of image: RGBA premultiplied when it has alpha, else 8-bit RGB.
    [[nodiscard]] static std::shared_ptr<BitmapImageRep> fromQImage(const QImage &image);
    /// A bitmap whose pixels are decoded from source when first needed.
    [[nodiscard]] static std::shared_ptr<BitmapImageRep> fromSource(std::shared_ptr<ImageSource> source);
    /// A bitmap decoded from encoded image data (any format libvips reads); null on failure.
    [[nodiscard]] static std::shared_ptr<BitmapImageRep> imageRepWithData(const QByteArray &data);

    ~BitmapImageRep() override;

    Kind kind() const override { return m_cached ? Kind::Cached : Kind::Bitmap; }
    [[nodiscard]] QString className() const override;
    int pixelsWide() const override { return m_width; }
    int pixelsHigh() const override { return m_height; }
    bool hasAlpha() const override { return m_hasAlpha; }
    void setAlpha(bool hasAlpha) { m_hasAlpha = hasAlpha; }
    bool drawInRect(const QRectF &rect) override;

    int bitsPerSample() const { return m_bitsPerSample; }
    int samplesPerPixel() const { return m_samplesPerPixel; }
    int bitsPerPixel() const { return m_bitsPerPixel; }
    qsizetype bytesPerRow() const { return m_bytesPerRow; }
    qsizetype bytesPerPlane() const { return m_bytesPerRow * m_height; }
    bool isPlanar() const { return m_planar; }
    int numberOfPlanes() const { return m_planar ? m_samplesPerPixel : 1; }
    unsigned bitmapFormat() const { return m_bitmapFormat; }
    /// True when the pixels are not decoded yet.
    bool isLazy() const { return !m_pixels && m_source; }
    /// Why decoding or drawing the pixels failed; empty when it did not.
    [[nodiscard]] QString decodeError() const;

    /// The first plane's bytes, decoding the source first if needed; null when decoding failed.
    unsigned char *bitmapData();
    /// The bytes of one plane (meshed bitmaps have one); null when out of range or not decoded.
    unsigned char *planeData(int plane);

    /// A copy of the raw pixel bytes; empty when there are none.
    [[nodiscard]] QByteArray data();
    /// The pixels as a QImage (RGBA premultiplied or RGB888) sharing the buffer when the layout allows,
    /// else converted; null for layouts that cannot be shown (16-bit, planar, float).
    [[nodiscard]] QImage toQImage();

    /// The bitmap encoded as a file of the given type; compression is the factor 0…1. Empty for an
    /// unknown type or when encoding fails.
    [[nodiscard]] QByteArray representationUsingType(int fileType, float compression);
    /// TIFF data, LZW compressed when lzw is set.
    [[nodiscard]] QByteArray TIFFRepresentation(bool lzw = false);
    /// The file extension of a bitmap file type; null for an unknown type.
    [[nodiscard]] static QString pathExtensionForBitmapImageFileType(int fileType);

    /// Marks the bitmap as the destination of focused drawing (a cached representation).
    void setCached(bool cached) { m_cached = cached; }

    // --- Filters (BitmapFilters.cpp) -----------------------------------------------------------
    // In-place filters on the sample buffer. They act only on a filterable bitmap (canFilter) and
    // leave any other layout unchanged; alpha is never changed except by makeTransparentSample1.

    /// Maps a convolution value (quotient + offset) to the value stored, before clamping to 0…255.
    using MatrixCallback = int (*)(int value);
    /// Maps a sample value 0…255 to a new value (the low byte is kept).
    using SampleCallback = int (*)(int value);
    /// Called once per pixel with its first byte, the colour-sample count and reversed coordinates.
    using PixelCallback = void (*)(unsigned char *pixel, int colourSamples, int x, int y);
    /// Fills table from the histogram of channel (samplesPerPixel for all colour samples together);
    /// answers whether the table is to be applied.
    using StatisticalCallback
        = bool (*)(BitmapImageRep &bitmap, int channel, const uint32_t *histogram, unsigned char *table);
    /// The table entry for value given the minimum and maximum found.
    using NormalizeCallback = int (*)(int value, int min, int max);

    /// One meshed plane of 8-bit integer samples, whole bytes per pixel, alpha (if any) last and
    /// premultiplied.
    bool canFilter() const;
    void sharpenLight();
    void sharpenMedium();
    void sharpenStrong();
    /// 3×3 convolution of the interior pixels with nine row-major weights; the border is kept.
    void applyMatrixFilter(
        const int32_t *matrix, int32_t divisor, int32_t offset, MatrixCallback callback = nullptr);
    /// count kernels of size × size weights (size odd, at least 3), each applied to the unchanged samples.
    void applyMatrixesFilter(const int32_t *matrixes, int count, int size, int32_t divisor, int32_t offset,
        MatrixCallback callback = nullptr);
    void scaleWithDivisor(float divisor, float offset);
    /// Maps every colour sample through a 256-byte table (alpha is kept).
    void applyTransformationTable(const unsigned char *table);
    void applySampleFilter(SampleCallback callback);
    void applyPixelFilter(PixelCallback callback);
    void applyStatisticalFilter(StatisticalCallback callback, bool mono);
    void applyNormalizeFilter(NormalizeCallback callback, bool mono);
    void applyInterlaceFilter(unsigned shift);
    void clear(unsigned char value);
    void grayScale(bool thresholdMode, unsigned threshhold);
    void edgeDetect(bool addToImage);
    void medianFilter(unsigned size);
    void makeTransparentGray(float grey, float threshhold);
    void makeTransparentRed(float red, float green, float blue, float threshhold);
    void makeTransparentSample1(float sample1, float sample2, float sample3, float sample4, float threshhold);
    void tintGray(float grey);
    void tintRed(float red, float green, float blue);
    void tintSample1(float sample1, float sample2, float sample3, float sample4);
    /// Statistics of the region rect (rows counted from the first row in memory); any output may be
    /// null. False when the bitmap cannot be filtered or rect is not inside it.
    bool entropy(float *entropy, float *entropySquare, float *brightness, QRectF rect);
    /// A new 8-bit bitmap with alpha holding the receiver's pixels; null unless canFilter.
    [[nodiscard]] std::shared_ptr<BitmapImageRep> bitmapImageRepWithAlpha();

    // --- Effects (ImageEffects.cpp) ------------------------------------------------------------
    /// A copy of the bitmap with its own buffer; null when the pixels cannot be read.
    [[nodiscard]] std::shared_ptr<BitmapImageRep> copy();
    /// Byte inverters. They take the rows as packed (width × samples bytes) whatever bytesPerRow says,
    /// and invert the colour bytes of each pixel; each answers the receiver.
    BitmapImageRep &invertGrey();
    BitmapImageRep &invertGreyAlpha();
    BitmapImageRep &invertRGB();
    BitmapImageRep &invertRGBA();
    /// An inverted copy for 1 to 4 samples per pixel; null otherwise.
    [[nodiscard]] std::shared_ptr<BitmapImageRep> negativeImageRep();

private:
    BitmapImageRep() = default;
    bool decode();

    struct Free
    {
        void operator()(unsigned char *p) const noexcept;
    };
    std::unique_ptr<unsigned char[], Free> m_pixels;
    std::shared_ptr<ImageSource> m_source;
    bool m_decodeFailed = false;
    int m_width = 0;
    int m_height = 0;
    int m_bitsPerSample = 8;
    int m_samplesPerPixel = 4;
    int m_bitsPerPixel = 32;
    qsizetype m_bytesPerRow = 0;
    bool m_planar = false;
    bool m_hasAlpha = true;
    bool m_cached = false;
    unsigned m_bitmapFormat = 0;

    friend class ImageSource;
};

using BitmapImageRepPtr = std::shared_ptr<BitmapImageRep>;

} // namespace orvel
