// ImageEffects: tinting through a compositing operation, negatives, and a mirrored reflection; the
// bitmap byte inverters beneath them.
#include "image/Image.h"

#include "support/Log.h"

#include <QLinearGradient>
#include <QPainter>
#include <cstring>
#include <exception>

namespace orvel {

namespace {

bool isBitmapKind(const ImageRepPtr &rep)
{
    return rep && (rep->kind() == ImageRep::Kind::Bitmap || rep->kind() == ImageRep::Kind::Cached);
}

// Inverts the first `inverted` bytes of every pixel of `samples` bytes. The rows are taken as packed
// (width × samples bytes each, from the first byte), whatever bytesPerRow says: padded bitmaps come out
// shifted. The walk never goes past the end of the buffer.
void invertPacked(BitmapImageRep &bitmap, int samples, int inverted)
{
    unsigned char *data = bitmap.bitmapData();
    if (!data)
        return;
    const qint64 row = qint64(bitmap.pixelsWide()) * samples;
    const qint64 total = row * bitmap.pixelsHigh();
    if (total > qint64(bitmap.bytesPerPlane()) * bitmap.numberOfPlanes())
        return;
    for (qint64 i = 0; i < total; i += samples)
        for (int j = 0; j < inverted; ++j)
            data[i + j] = static_cast<unsigned char>(~data[i + j]);
}

// A QImage over the bitmap's own buffer that QPainter can paint on, or a null image.
QImage paintableImage(BitmapImageRep &bitmap)
{
    unsigned char *bits = bitmap.bitmapData();
    if (!bits)
        return {};
    QImage image = bitmap.toQImage();
    if (image.isNull() || image.constBits() != bits)
        return {};
    const QImage::Format format = image.format();
    if (format == QImage::Format_RGBA8888_Premultiplied
            ? !bitmap.hasAlpha()
            : format != QImage::Format_RGB888 && format != QImage::Format_RGBX8888)
        return {};
    return image;
}

bool fill(QImage &image, const QColor &colour, CompositingOperation op)
{
    QPainter painter(&image);
    if (!painter.isActive())
        return false;
    painter.setCompositionMode(compositionModeFor(op));
    painter.fillRect(QRectF(0, 0, image.width(), image.height()), colour);
    return true;
}

} // namespace

// --- Bitmap effects ----------------------------------------------------------------------------

std::shared_ptr<BitmapImageRep> BitmapImageRep::copy()
{
    const unsigned char *bits = bitmapData();
    if (!bits)
        return nullptr;
    auto result = create(m_width, m_height, m_bitsPerSample, m_samplesPerPixel, m_hasAlpha, m_planar,
        m_bitmapFormat, m_bytesPerRow, m_bitsPerPixel);
    if (!result)
        return nullptr;
    memcpy(result->m_pixels.get(), bits, size_t(bytesPerPlane() * numberOfPlanes()));
    result->setSize(size());
    return result;
}

BitmapImageRep &BitmapImageRep::invertGrey()
{
    invertPacked(*this, 1, 1);
    return *this;
}

BitmapImageRep &BitmapImageRep::invertGreyAlpha()
{
    invertPacked(*this, 2, 1);
    return *this;
}

BitmapImageRep &BitmapImageRep::invertRGB()
{
    invertPacked(*this, 3, 3);
    return *this;
}

BitmapImageRep &BitmapImageRep::invertRGBA()
{
    invertPacked(*this, 4, 3);
    return *this;
}

std::shared_ptr<BitmapImageRep> BitmapImageRep::negativeImageRep()
{
    if (m_samplesPerPixel < 1 || m_samplesPerPixel > 4)
        return nullptr;
    auto result = copy();
    if (!result)
        return nullptr;
    switch (m_samplesPerPixel) {
    case 1:
        result->invertGrey();
        break;
    case 2:
        result->invertGreyAlpha();
        break;
    case 3:
        result->invertRGB();
        break;
    default:
        result->invertRGBA();
        break;
    }
    return result;
}

// --- Image effects -----------------------------------------------------------------------------

void Image::tintWithColor(const QColor &colour, CompositingOperation op)
{
    if (!colour.isValid())
        return;
    // The colour is composited straight into every bitmap that QPainter can paint on in place; an image
    // without one (a document, an odd layout) is first rendered into an 8-bit RGBA bitmap of its
    // pixel size, which then replaces its representations.
    bool painted = false;
    const std::vector<ImageRepPtr> reps = representations();
    for (const ImageRepPtr &rep : reps) {
        if (!isBitmapKind(rep))
            continue;
        QImage target = paintableImage(*std::static_pointer_cast<BitmapImageRep>(rep));
        if (!target.isNull())
            painted = fill(target, colour, op) || painted;
    }
    if (painted || reps.empty())
        return;
    const QSizeF pixels = pixelSize();
    const ImagePtr rendered = bitmapImageWithPixelSize(pixels, true, InterpolationHigh);
    const BitmapImageRepPtr bitmap = rendered ? rendered->bitmapImageRep() : nullptr;
    if (!bitmap)
        return;
    QImage target = paintableImage(*bitmap);
    if (target.isNull() || !fill(target, colour, op))
        return;
    bitmap->setSize(size());
    removeAllRepresentations();
    addRepresentation(bitmap);
}

ImagePtr Image::tintedImageWithColor(const QColor &colour, CompositingOperation op)
{
    if (!colour.isValid())
        return weak_from_this().lock();
    // A copy with bitmaps of its own, so that tinting it leaves the receiver alone.
    auto result = std::make_shared<Image>(size());
    for (const ImageRepPtr &rep : representations()) {
        if (isBitmapKind(rep)) {
            BitmapImageRepPtr bitmap = std::static_pointer_cast<BitmapImageRep>(rep)->copy();
            if (!bitmap)
                return nullptr;
            result->addRepresentation(std::move(bitmap));
        } else {
            result->addRepresentation(rep);
        }
    }
    result->setName(name());
    result->setBackgroundColor(backgroundColor());
    result->setFlipped(isFlipped());
    result->setScalesWhenResized(scalesWhenResized());
    result->tintWithColor(colour, op);
    return result;
}

ImagePtr Image::negativeImage() const
{
    const std::vector<ImageRepPtr> &reps = representations();
    if (reps.empty() || !isBitmapKind(reps.front()))
        return nullptr;
    BitmapImageRepPtr negative = std::static_pointer_cast<BitmapImageRep>(reps.front())->negativeImageRep();
    if (!negative)
        return nullptr;
    auto result = std::make_shared<Image>(size());
    result->addRepresentation(std::move(negative));
    return result;
}

ImagePtr Image::imageByAddingReflection(float fraction) const
{
    const QSizeF s = size();
    const double w = s.width();
    const double h = s.height();
    const double total = (double(fraction) + 1.0) * h;
    const double strip = total - h;
    if (!(w >= 1) || !(h > 0) || !(strip >= 0) || !(total < 1e9) || !(w < 1e9))
        return nullptr;
    BitmapImageRepPtr bitmap
        = BitmapImageRep::create(int(w), int(total), 8, 4, true, false, 0, qsizetype(4.0 * w));
    if (!bitmap)
        return nullptr;
    QImage target = bitmap->toQImage(); // shares the bitmap's buffer
    if (target.isNull())
        return nullptr;
    try {
        QPainter painter(&target);
        GraphicsContext context(&painter);
        GraphicsContext::Scope scope(context);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(QRectF(0, 0, w, total), Qt::transparent);
        // Qt's y runs downwards: the picture takes the top h rows and the strip lies below it, 0.2
        // opaque white at the seam fading to clear at the bottom.
        QLinearGradient gradient(0, h, 0, total);
        gradient.setColorAt(0, QColor::fromRgbF(1, 1, 1, 0.2f));
        gradient.setColorAt(1, Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.fillRect(QRectF(0, h, w, strip), gradient);
        // The picture mirrored about the seam, kept only where the gradient is and with its alpha.
        painter.save();
        painter.translate(0, 2 * h);
        painter.scale(1, -1);
        drawInRect(QRectF(0, 0, w, h), QRectF(), CompositingOperation::SourceIn, 1.0);
        painter.restore();
        drawInRect(QRectF(0, 0, w, h), QRectF(), CompositingOperation::SourceOver, 1.0);
    } catch (const std::exception &e) {
        logException(QStringLiteral("imageByAddingReflection:"), QStringLiteral("NSImage"),
            QStringLiteral("std::exception"), QString::fromUtf8(e.what()));
        return nullptr;
    }
    auto result = std::make_shared<Image>(QSizeF(w, total));
    bitmap->setSize(QSizeF(w, total));
    result->addRepresentation(bitmap);
    return result;
}

} // namespace orvel
