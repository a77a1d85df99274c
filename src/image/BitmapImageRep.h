// BitmapImageRep: a pixel buffer of any sample layout, decoded lazily from an image file when it has one.
#pragma once

#include "image/ImageRep.h"

#include <QByteArray>
#include <QImage>
#include <cstdint>
#include <memory>

namespace orvel {

class ImageSource;

/// Bitmap file types: the output formats and their codes.
enum BitmapImageFileType { TIFFFileType = 0, BMPFileType = 1, GIFFileType = 2, JPEGFileType = 3, PNGFileType = 4, JPEG2000FileType = 5 };

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
    static std::shared_ptr<BitmapImageRep> create(int pixelsWide, int pixelsHigh, int bitsPerSample,
                                                  int samplesPerPixel, bool hasAlpha, bool isPlanar,
                                                  unsigned bitmapFormat = 0, qsizetype bytesPerRow = 0,
                                                  int bitsPerPixel = 0);
    /// The rendering bitmap: 8-bit RGBA premultiplied, rows of 4 × width bytes, all transparent.
    static std::shared_ptr<BitmapImageRep> createRGBA(int pixelsWide, int pixelsHigh);
    /// A bitmap holding a copy of image: RGBA premultiplied when it has alpha, else 8-bit RGB.
    static std::shared_ptr<BitmapImageRep> fromQImage(const QImage &image);
    /// A bitmap whose pixels are decoded from source when first needed.
    static std::shared_ptr<BitmapImageRep> fromSource(std::shared_ptr<ImageSource> source);
    /// A bitmap decoded from encoded image data (any format libvips reads); null on failure.
    static std::shared_ptr<BitmapImageRep> imageRepWithData(const QByteArray &data);

    ~BitmapImageRep() override;

    Kind kind() const override { return m_cached ? Kind::Cached : Kind::Bitmap; }
    QString className() const override;
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
    QString decodeError() const;

    /// The first plane's bytes, decoding the source first if needed; null when decoding failed.
    unsigned char *bitmapData();
    /// The bytes of one plane (meshed bitmaps have one); null when out of range or not decoded.
    unsigned char *planeData(int plane);

    /// A copy of the raw pixel bytes; empty when there are none.
    QByteArray data();
    /// The pixels as a QImage (RGBA premultiplied or RGB888) sharing the buffer when the layout allows,
    /// else converted; null for layouts that cannot be shown (16-bit, planar, float).
    QImage toQImage();

    /// The bitmap encoded as a file of the given type; compression is the factor 0…1. Empty for an
    /// unknown type or when encoding fails.
    QByteArray representationUsingType(int fileType, float compression);
    /// TIFF data, LZW compressed when lzw is set.
    QByteArray TIFFRepresentation(bool lzw = false);
    /// The file extension of a bitmap file type; null for an unknown type.
    static QString pathExtensionForBitmapImageFileType(int fileType);

    /// Marks the bitmap as the destination of focused drawing (a cached representation).
    void setCached(bool cached) { m_cached = cached; }

private:
    BitmapImageRep() = default;
    bool decode();

    struct Free { void operator()(unsigned char *p) const noexcept; };
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
