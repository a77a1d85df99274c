// BitmapImageRep: pixel buffers of any layout, lazily decoded sources, drawing and encoding.
#include "image/BitmapImageRep.h"

#include "image/GraphicsContext.h"
#include "image/VipsBridge_p.h"

#include <QPainter>
#include <cstdlib>
#include <cstring>

namespace orvel {

namespace {
// Bitmaps larger than this are refused: 4 GiB of samples.
constexpr qint64 MaxBitmapBytes = qint64(1) << 32;
} // namespace

void BitmapImageRep::Free::operator()(unsigned char *p) const noexcept { g_free(p); }

BitmapImageRep::~BitmapImageRep() = default;

QString BitmapImageRep::className() const
{
    return m_cached ? QStringLiteral("NSCachedImageRep") : QStringLiteral("NSBitmapImageRep");
}

std::shared_ptr<BitmapImageRep> BitmapImageRep::create(int pixelsWide, int pixelsHigh, int bitsPerSample,
    int samplesPerPixel, bool hasAlpha, bool isPlanar, unsigned bitmapFormat, qsizetype bytesPerRow,
    int bitsPerPixel)
{
    if (pixelsWide <= 0 || pixelsHigh <= 0 || samplesPerPixel < 1 || samplesPerPixel > 5)
        return nullptr;
    if (bitsPerSample != 1 && bitsPerSample != 2 && bitsPerSample != 4 && bitsPerSample != 8
        && bitsPerSample != 12 && bitsPerSample != 16 && bitsPerSample != 32)
        return nullptr;
    if (hasAlpha && samplesPerPixel < 2)
        return nullptr;
    if ((bitmapFormat & FloatingPointSamplesBitmapFormat) && bitsPerSample != 16 && bitsPerSample != 32)
        return nullptr;
    const int minimumBitsPerPixel = isPlanar ? bitsPerSample : bitsPerSample * samplesPerPixel;
    if (bitsPerPixel == 0)
        bitsPerPixel = minimumBitsPerPixel;
    if (bitsPerPixel < minimumBitsPerPixel)
        return nullptr;
    const qint64 minimumRow = (qint64(pixelsWide) * bitsPerPixel + 7) / 8;
    if (bytesPerRow == 0)
        bytesPerRow = qsizetype(minimumRow);
    if (bytesPerRow < minimumRow)
        return nullptr;
    const int planes = isPlanar ? samplesPerPixel : 1;
    const qint64 total = qint64(bytesPerRow) * pixelsHigh * planes;
    if (total > MaxBitmapBytes)
        return nullptr;
    auto *pixels = static_cast<unsigned char *>(g_try_malloc0(size_t(total)));
    if (!pixels)
        return nullptr;
    std::shared_ptr<BitmapImageRep> rep(new BitmapImageRep);
    rep->m_pixels.reset(pixels);
    rep->m_width = pixelsWide;
    rep->m_height = pixelsHigh;
    rep->m_bitsPerSample = bitsPerSample;
    rep->m_samplesPerPixel = samplesPerPixel;
    rep->m_bitsPerPixel = bitsPerPixel;
    rep->m_bytesPerRow = bytesPerRow;
    rep->m_planar = isPlanar;
    rep->m_hasAlpha = hasAlpha;
    rep->m_bitmapFormat = bitmapFormat;
    rep->setSize(QSizeF(pixelsWide, pixelsHigh));
    return rep;
}

std::shared_ptr<BitmapImageRep> BitmapImageRep::createRGBA(int pixelsWide, int pixelsHigh)
{
    return create(pixelsWide, pixelsHigh, 8, 4, true, false);
}

std::shared_ptr<BitmapImageRep> BitmapImageRep::fromQImage(const QImage &source)
{
    if (source.isNull())
        return nullptr;
    const bool alpha = source.hasAlphaChannel();
    const QImage image
        = source.convertToFormat(alpha ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGB888);
    auto rep = create(image.width(), image.height(), 8, alpha ? 4 : 3, alpha, false);
    if (!rep)
        return nullptr;
    const qsizetype row = rep->m_bytesPerRow;
    for (int y = 0; y < image.height(); ++y)
        memcpy(rep->m_pixels.get() + qsizetype(y) * row, image.constScanLine(y), size_t(row));
    return rep;
}

std::shared_ptr<BitmapImageRep> BitmapImageRep::fromSource(std::shared_ptr<ImageSource> source)
{
    if (!source || source->width() <= 0 || source->height() <= 0)
        return nullptr;
    std::shared_ptr<BitmapImageRep> rep(new BitmapImageRep);
    rep->m_width = source->width();
    rep->m_height = source->height();
    rep->m_hasAlpha = source->hasAlpha();
    rep->m_samplesPerPixel = rep->m_hasAlpha ? 4 : 3;
    rep->m_bitsPerPixel = rep->m_samplesPerPixel * 8;
    rep->m_bytesPerRow = qsizetype(rep->m_width) * rep->m_samplesPerPixel;
    rep->m_source = std::move(source);
    rep->setSize(QSizeF(rep->m_width, rep->m_height));
    return rep;
}

std::shared_ptr<BitmapImageRep> BitmapImageRep::imageRepWithData(const QByteArray &data)
{
    return fromSource(ImageSource::openData(data, 0, true));
}

QString BitmapImageRep::decodeError() const
{
    return m_decodeFailed && m_source ? m_source->lastError() : QString();
}

bool BitmapImageRep::decode()
{
    if (m_pixels)
        return true;
    if (!m_source || m_decodeFailed)
        return false;
    if (!m_source->decodeInto(*this)) {
        m_decodeFailed = true;
        return false;
    }
    return true;
}

unsigned char *BitmapImageRep::bitmapData() { return decode() ? m_pixels.get() : nullptr; }

unsigned char *BitmapImageRep::planeData(int plane)
{
    if (plane < 0 || plane >= numberOfPlanes() || !decode())
        return nullptr;
    return m_pixels.get() + qsizetype(plane) * bytesPerPlane();
}

QByteArray BitmapImageRep::data()
{
    if (!decode())
        return {};
    return QByteArray(reinterpret_cast<const char *>(m_pixels.get()), bytesPerPlane() * numberOfPlanes());
}

QImage BitmapImageRep::toQImage()
{
    if (!decode() || m_planar || (m_bitmapFormat & FloatingPointSamplesBitmapFormat))
        return {};
    uchar *bits = m_pixels.get();
    const bool premultiplied = !(m_bitmapFormat & AlphaNonpremultipliedBitmapFormat);
    const bool alphaFirst = m_bitmapFormat & AlphaFirstBitmapFormat;
    if (m_bitsPerSample == 8 && !alphaFirst) {
        // Layouts QImage describes directly share the buffer: drawing into the QImage draws into the bitmap.
        if (m_samplesPerPixel == 4 && m_bitsPerPixel == 32)
            return QImage(bits, m_width, m_height, m_bytesPerRow,
                premultiplied ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGBA8888);
        if (m_samplesPerPixel == 3 && !m_hasAlpha && m_bitsPerPixel == 24)
            return QImage(bits, m_width, m_height, m_bytesPerRow, QImage::Format_RGB888);
        if (m_samplesPerPixel == 3 && !m_hasAlpha && m_bitsPerPixel == 32)
            return QImage(bits, m_width, m_height, m_bytesPerRow, QImage::Format_RGBX8888);
        if (m_samplesPerPixel == 1 && m_bitsPerPixel == 8)
            return QImage(bits, m_width, m_height, m_bytesPerRow, QImage::Format_Grayscale8);
    }
    if (m_bitsPerSample == 16 && !alphaFirst && m_samplesPerPixel == 4 && m_bitsPerPixel == 64)
        return QImage(bits, m_width, m_height, m_bytesPerRow,
            premultiplied ? QImage::Format_RGBA64_Premultiplied : QImage::Format_RGBA64);
    if (m_bitsPerSample != 8 || (m_samplesPerPixel != 2 && m_samplesPerPixel != 4))
        return {};
    // Grey with alpha, or alpha first: convert sample by sample into a new RGBA image.
    QImage out(
        m_width, m_height, premultiplied ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGBA8888);
    if (out.isNull())
        return {};
    const int step = m_bitsPerPixel / 8;
    for (int y = 0; y < m_height; ++y) {
        const uchar *in = bits + qsizetype(y) * m_bytesPerRow;
        uchar *o = out.scanLine(y);
        for (int x = 0; x < m_width; ++x, in += step, o += 4) {
            if (m_samplesPerPixel == 2) {
                const uchar g = alphaFirst ? in[1] : in[0];
                o[0] = o[1] = o[2] = g;
                o[3] = alphaFirst ? in[0] : in[1];
            } else {
                o[0] = in[1];
                o[1] = in[2];
                o[2] = in[3];
                o[3] = in[0];
            }
        }
    }
    return out;
}

bool BitmapImageRep::drawInRect(const QRectF &rect)
{
    GraphicsContext *context = GraphicsContext::current();
    if (!context || !context->painter() || !context->painter()->isActive())
        return false;
    QPainter *painter = context->painter();
    const int interpolation = context->imageInterpolation();
    const bool high = interpolation == InterpolationDefault || interpolation == InterpolationHigh;
    const QTransform transform = painter->transform();
    const bool plainScale
        = transform.type() <= QTransform::TxScale && transform.m11() > 0 && transform.m22() > 0;
    const QRectF device = transform.mapRect(rect);
    const int dw = qRound(device.width());
    const int dh = qRound(device.height());
    if (dw <= 0 || dh <= 0)
        return true;
    if (high && plainScale && (dw != m_width || dh != m_height)) {
        // Lanczos at the destination's own pixel size; a source not decoded yet is decoded at the
        // smallest scale that keeps the result, never whole.
        const QImage scaled = isLazy() ? m_source->renderScaled(dw, dh) : lanczosResize(toQImage(), dw, dh);
        if (!scaled.isNull()) {
            painter->save();
            painter->resetTransform();
            painter->drawImage(QRectF(device.topLeft(), QSizeF(dw, dh)), scaled);
            painter->restore();
            return true;
        }
        if (m_source && !m_pixels) {
            m_decodeFailed = true;
            return false;
        }
    }
    const QImage image = toQImage();
    if (image.isNull())
        return false;
    painter->drawImage(rect, image);
    return true;
}

QByteArray BitmapImageRep::representationUsingType(int fileType, float compression)
{
    if (pathExtensionForBitmapImageFileType(fileType).isNull())
        return {};
    QImage image = toQImage();
    if (image.isNull())
        return {};
    // An opaque bitmap is written without an alpha channel, whatever its layout.
    bool alpha = m_hasAlpha && image.hasAlphaChannel();
    if (alpha) {
        const QImage probe = image.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
        alpha = false;
        for (int y = 0; y < probe.height() && !alpha; ++y) {
            const uchar *p = probe.constScanLine(y);
            for (int x = 0; x < probe.width(); ++x)
                if (p[4 * x + 3] != 255) {
                    alpha = true;
                    break;
                }
        }
    }
    image = image.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    try {
        vips::VImage vimage = vipsImageFromBuffer(
            image.constBits(), image.width(), image.height(), alpha ? 4 : 3, image.bytesPerLine());
        return encodeWithVips(vimage, fileType, compression);
    } catch (const vips::VError &e) {
        vips_error_clear(); // the encoder's answer is empty data; its message is not kept
        return {};
    }
}

QByteArray BitmapImageRep::TIFFRepresentation(bool lzw)
{
    QImage image = toQImage();
    if (image.isNull())
        return {};
    const bool alpha = m_hasAlpha && image.hasAlphaChannel();
    image = image.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    try {
        vips::VImage vimage = vipsImageFromBuffer(
            image.constBits(), image.width(), image.height(), alpha ? 4 : 3, image.bytesPerLine());
        return encodeWithVips(vimage, TIFFFileType, 1.0f, lzw);
    } catch (const vips::VError &e) {
        vips_error_clear(); // the encoder's answer is empty data; its message is not kept
        return {};
    }
}

QString BitmapImageRep::pathExtensionForBitmapImageFileType(int fileType)
{
    return bitmapFileTypeExtension(fileType);
}

} // namespace orvel
