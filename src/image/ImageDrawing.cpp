// Drawing and rendering: the drawing rules, focused drawing, rendering into bitmaps, square icons.
//
// Coordinates are Qt's: the origin is at the top left and y grows downwards, which is what the
// platform calls a flipped coordinate system. Pictures drawn in it come out upright as they are.
#include "image/Image.h"

#include "image/PDFImageRep.h"
#include "support/Log.h"

#include <QPainter>
#include <cmath>
#include <exception>

namespace orvel {

namespace {

bool isBitmapKind(const ImageRepPtr &rep)
{
    return rep->kind() == ImageRep::Kind::Bitmap || rep->kind() == ImageRep::Kind::Cached;
}

QPainter *currentPainter()
{
    GraphicsContext *context = GraphicsContext::current();
    return context && context->painter() && context->painter()->isActive() ? context->painter() : nullptr;
}

void fillReplacing(QRectF rect, QColor colour)
{
    QPainter *painter = currentPainter();
    if (!painter)
        return;
    painter->save();
    painter->setCompositionMode(QPainter::CompositionMode_Source);
    painter->fillRect(rect, colour);
    painter->restore();
}

} // namespace

bool Image::drawRepresentation(const ImageRepPtr &rep, QRectF rect) const
{
    if (!rep || !currentPainter())
        return false;
    if (m_background.alpha() > 0)
        fillReplacing(rect, m_background);
    return rep->drawInRect(rect);
}

bool drawImageInRect(const Image &image, QRectF rect)
{
    const ImageRepPtr rep = image.bestRepresentationForRect(rect);
    if (!rep)
        return false;
    const QString name = rep->className();
    if (!isBitmapKind(rep) && name != QLatin1String("NSIconRefImageRep")
        && name != QLatin1String("NSCoreUIImageRep")) {
        // Vector documents are always rendered on white.
        Image &mutableImage = const_cast<Image &>(image);
        const QColor old = image.backgroundColor();
        mutableImage.setBackgroundColor(Qt::white);
        const bool drawn = image.drawRepresentation(rep, rect);
        mutableImage.setBackgroundColor(old);
        return drawn;
    }
    if (rep->hasAlpha()) {
        // A caller's background colour (white for JPEG output) shows through transparent parts.
        fillReplacing(rect, image.backgroundColor());
        QPainter *painter = currentPainter();
        if (!painter)
            return false;
        painter->save();
        painter->setCompositionMode(QPainter::CompositionMode_SourceOver);
        const bool drawn = rep->drawInRect(rect);
        painter->restore();
        return drawn;
    }
    return image.drawRepresentation(rep, rect);
}

void Image::drawInRect(QRectF rect, QRectF fromRect, CompositingOperation op, double fraction) const
{
    QPainter *painter = currentPainter();
    if (!painter || rect.isEmpty())
        return;
    const QSizeF whole = size();
    if (fromRect.isEmpty())
        fromRect = QRectF(QPointF(0, 0), whole);
    if (fromRect.isEmpty())
        return;
    const ImageRepPtr rep = bestRepresentationForRect(rect);
    if (!rep)
        return;
    painter->save();
    painter->setCompositionMode(compositionModeFor(op));
    painter->setOpacity(painter->opacity() * std::clamp(fraction, 0.0, 1.0));
    // The part fromRect lands on rect: the whole image is drawn scaled alike, clipped to rect.
    const double sx = rect.width() / fromRect.width();
    const double sy = rect.height() / fromRect.height();
    const QRectF full(
        rect.x() - fromRect.x() * sx, rect.y() - fromRect.y() * sy, whole.width() * sx, whole.height() * sy);
    if (full != rect)
        painter->setClipRect(rect, Qt::IntersectClip);
    if (!isBitmapKind(rep) && m_background.alpha() > 0)
        painter->fillRect(rect, m_background);
    rep->drawInRect(full);
    painter->restore();
}

void Image::drawAtPoint(QPointF point, QRectF fromRect, CompositingOperation op, double fraction) const
{
    const QSizeF drawn = fromRect.isEmpty() ? size() : fromRect.size();
    drawInRect(QRectF(point, drawn), fromRect, op, fraction);
}

void Image::drawBestRepresentationInRect(QRectF rect) const
{
    drawRepresentation(bestRepresentationForRect(rect), rect);
}

void drawFlippedInRect(
    const Image &image, CompositingOperation op, double fraction, QRectF rect, QRectF fromRect)
{
    QPainter *painter = currentPainter();
    if (!painter)
        return;
    // A y-up system needs a flip about the rectangle to draw upright; Qt's y-down system is the
    // flipped one already, so only the state is saved and the drawing rule applies as it is.
    painter->save();
    GraphicsContext *context = GraphicsContext::current();
    if (op == CompositingOperation::SourceOver && fraction >= 1.0 && fromRect.isNull() && !image.hasAlpha()
        && context->isDrawingToScreen())
        image.drawRepresentation(image.bestRepresentationForRect(rect), rect);
    else
        image.drawInRect(rect, fromRect, op, fraction);
    painter->restore();
}

void Image::drawFlippedAtPoint(QPointF point, CompositingOperation op, double fraction) const
{
    orvel::drawFlippedInRect(*this, op, fraction, QRectF(point, size()), QRectF());
}

void Image::drawFlippedInRect(QRectF rect, CompositingOperation op, double fraction) const
{
    orvel::drawFlippedInRect(*this, op, fraction, rect, QRectF());
}

namespace {

// Steps 2 and 3 of the flipped drawing rule, without the flip.
void drawByRule(const Image &image, QRectF rect, QRectF fromRect, CompositingOperation op, double fraction)
{
    GraphicsContext *context = GraphicsContext::current();
    if (op == CompositingOperation::SourceOver && fraction >= 1.0 && fromRect.isNull() && !image.hasAlpha()
        && context && context->isDrawingToScreen())
        image.drawRepresentation(image.bestRepresentationForRect(rect), rect);
    else
        image.drawInRect(rect, fromRect, op, fraction);
}

} // namespace

QRectF Image::drawCenteredInRect(QRectF rect, QRectF fromRect, CompositingOperation op, double fraction) const
{
    const QSizeF drawn = fromRect.size().isEmpty() ? size() : fromRect.size();
    const QRectF target(rect.x() + (rect.width() - drawn.width()) * 0.5,
        rect.y() + (rect.height() - drawn.height()) * 0.5, drawn.width(), drawn.height());
    if (isFlipped() && !hasAlpha())
        orvel::drawFlippedInRect(*this, op, fraction, target, fromRect);
    else
        drawByRule(*this, target, fromRect, op, fraction);
    return target;
}

void Image::drawInRect(QRectF rect, QRectF fromRect, CompositingOperation op, double fraction,
    bool tileHorizontal, bool tileVertical, bool center) const
{
    QSizeF tile = fromRect.size().isEmpty() ? size() : fromRect.size();
    if (tile.width() <= 0 || tile.height() <= 0)
        return;
    if (!tileHorizontal && !tileVertical) {
        drawInRect(rect, fromRect, op, fraction);
        return;
    }
    if (!tileHorizontal)
        tile.setWidth(rect.width());
    if (!tileVertical)
        tile.setHeight(rect.height());
    auto start = [center](double origin, double extent, double step, bool tiled) {
        if (!center || !tiled)
            return origin;
        long n = long(std::ceil(extent / step));
        if (n % 2 == 0)
            ++n; // an odd count puts one tile in the middle
        return origin - (n * step - extent) / 2.0;
    };
    const double x0 = start(rect.x(), rect.width(), tile.width(), tileHorizontal);
    const double y0 = start(rect.y(), rect.height(), tile.height(), tileVertical);
    for (double x = x0; x < rect.right(); x += tile.width())
        for (double y = y0; y < rect.bottom(); y += tile.height()) {
            const QRectF cell(x, y, tile.width(), tile.height());
            drawCenteredInRect(cell, fromRect, op, fraction);
        }
}

void Image::drawScaledInRect(QRectF rect, bool flip, CompositingOperation op, double fraction) const
{
    Image &self = const_cast<Image &>(*this);
    const bool scaled = scalesWhenResized();
    if (!scaled)
        self.setScalesWhenResized(true);
    if (flip)
        orvel::drawFlippedInRect(*this, op, fraction, rect, QRectF());
    else
        drawByRule(*this, rect, QRectF(), op, fraction);
    if (!scaled)
        self.setScalesWhenResized(false);
}

void Image::drawScaledInRect(
    QRectF rect, bool flip, CompositingOperation op, double fraction, const QColor *shadow) const
{
    GraphicsContext *context = GraphicsContext::current();
    QPainter *painter = currentPainter();
    if (!shadow || !context || !context->isDrawingToScreen() || !painter) {
        drawScaledInRect(rect, flip, op, fraction);
        return;
    }
    // QPainter has no shadow state: the shadow is the image's shape in the shadow colour, offset and
    // softened, drawn under it.
    const QRect device = painter->transform().mapRect(rect).toAlignedRect();
    if (device.isEmpty())
        return;
    QImage shape(device.size(), QImage::Format_RGBA8888_Premultiplied);
    shape.fill(Qt::transparent);
    {
        QPainter p(&shape);
        GraphicsContext scratch(&p);
        GraphicsContext::Scope scope(scratch);
        drawScaledInRect(QRectF(QPointF(0, 0), device.size()), false, CompositingOperation::SourceOver, 1.0);
        p.setCompositionMode(QPainter::CompositionMode_SourceIn);
        p.fillRect(shape.rect(), *shadow);
    }
    const QImage blurred = shape
                               .scaled(std::max(1, shape.width() / 3), std::max(1, shape.height() / 3),
                                   Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                               .scaled(shape.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    painter->save();
    painter->resetTransform();
    painter->drawImage(device.translated(2, 3), blurred);
    painter->restore();
    drawScaledInRect(rect, flip, op, fraction);
}

void Image::drawScaledInRectWithShadow(QRectF rect, bool flip, CompositingOperation op, bool withShadow) const
{
    const QColor shadow = imageShadow();
    drawScaledInRect(rect, flip, op, 1.0, withShadow ? &shadow : nullptr);
}

QColor Image::imageShadow() { return QColor(0, 0, 0, 96); }

// --- Focused drawing ---------------------------------------------------------------------------

bool Image::lockFocus()
{
    if (m_focusPainter)
        return false;
    const QSizeF s = size();
    const int w = int(std::ceil(s.width()));
    const int h = int(std::ceil(s.height()));
    if (w <= 0 || h <= 0)
        return false;
    BitmapImageRepPtr rep = std::static_pointer_cast<BitmapImageRep>(cachedImageRep());
    if (!rep || rep->pixelsWide() != w || rep->pixelsHigh() != h) {
        rep = BitmapImageRep::createRGBA(w, h);
        if (!rep)
            return false;
        rep->setCached(true);
        rep->setSize(s);
        addRepresentation(rep);
    }
    m_focusImage = rep->toQImage();
    m_focusPainter = std::make_unique<QPainter>(&m_focusImage);
    m_focusContext = std::make_unique<GraphicsContext>(m_focusPainter.get());
    GraphicsContext::saveGraphicsState();
    GraphicsContext::setCurrent(m_focusContext.get());
    return true;
}

void Image::unlockFocus()
{
    if (!m_focusPainter)
        return;
    GraphicsContext::restoreGraphicsState();
    m_focusPainter->end();
    m_focusContext.reset();
    m_focusPainter.reset();
    m_focusImage = QImage();
}

// --- Rendering ---------------------------------------------------------------------------------

QString Image::drawError() const
{
    if (!m_loadError.isEmpty())
        return m_loadError;
    for (const ImageRepPtr &rep : m_reps) {
        if (rep->kind() == ImageRep::Kind::Bitmap) {
            const QString why = std::static_pointer_cast<BitmapImageRep>(rep)->decodeError();
            if (!why.isEmpty())
                return why;
        } else if (rep->kind() == ImageRep::Kind::EPS) {
            const QString why = std::static_pointer_cast<orvel::EPSImageRep>(rep)->conversionError();
            if (!why.isEmpty())
                return why;
        }
    }
    return {};
}

ImagePtr Image::bitmapImageWithPixelSize(QSizeF size, bool shouldAntialias, int interpolation) const
{
    if (!(size.width() > 0) || !(size.height() > 0))
        return nullptr;
    const int w = int(size.width()); // truncated, as the bytes per row are
    const int h = int(size.height());
    BitmapImageRepPtr rep = BitmapImageRep::createRGBA(w, h);
    if (!rep)
        return nullptr;
    QImage target = rep->toQImage(); // shares the bitmap's buffer
    bool drawn = false;
    {
        QPainter painter(&target);
        GraphicsContext context(&painter);
        GraphicsContext::Scope scope(context);
        context.setShouldAntialias(shouldAntialias);
        context.setImageInterpolation(interpolation);
        try {
            drawn = drawImageInRect(*this, QRectF(0, 0, size.width(), size.height()));
        } catch (const std::exception &e) {
            logException(QStringLiteral("bitmapImageWithPixelSize:shouldAntialias:interpolation:"),
                QStringLiteral("NSImage"), QStringLiteral("std::exception"), QString::fromUtf8(e.what()));
        }
    }
    if (!drawn)
        return nullptr;
    auto result = std::make_shared<Image>(size);
    rep->setSize(size);
    result->addRepresentation(rep);
    return result;
}

QByteArray Image::TIFFRepresentationWithPixelSize(QSizeF size, bool shouldAntialias, int interpolation) const
{
    const ImagePtr bitmap = bitmapImageWithPixelSize(size, shouldAntialias, interpolation);
    return bitmap ? bitmap->TIFFRepresentation() : QByteArray();
}

ImagePtr Image::bitmapImageWithSize(QSizeF size, bool shouldAntialias, int interpolation) const
{
    if (!(size.width() > 0) || !(size.height() > 0))
        return nullptr;
    ImagePtr result = bitmapImageWithPixelSize(
        QSizeF(std::ceil(size.width()), std::ceil(size.height())), shouldAntialias, interpolation);
    if (result)
        result->setSize(size);
    return result;
}

QByteArray Image::TIFFRepresentationWithSize(QSizeF size, bool shouldAntialias, int interpolation) const
{
    const ImagePtr bitmap = bitmapImageWithSize(size, shouldAntialias, interpolation);
    return bitmap ? bitmap->TIFFRepresentation() : QByteArray();
}

ImagePtr Image::bitmapImageWithSize(QSizeF size) const
{
    if (!(size.width() > 0) || !(size.height() > 0))
        return nullptr;
    ImagePtr result = initWithImage(*this, size);
    if (!result)
        return nullptr;
    // The focused drawing's cached bitmap becomes the image's one plain bitmap.
    if (const BitmapImageRepPtr rep = std::static_pointer_cast<BitmapImageRep>(result->cachedImageRep()))
        rep->setCached(false);
    return result;
}

ImagePtr Image::bitmapImage() const { return initWithData(TIFFRepresentation()); }

ImagePtr Image::initWithImage(const Image &image, QSizeF size)
{
    auto result = std::make_shared<Image>(size);
    if (!result->lockFocus())
        return nullptr;
    try {
        drawImageInRect(image, QRectF(QPointF(0, 0), size));
    } catch (const std::exception &e) {
        result->unlockFocus();
        logException(QStringLiteral("initWithImage:size:"), QStringLiteral("NSImage"),
            QStringLiteral("std::exception"), QString::fromUtf8(e.what()));
        return nullptr;
    }
    result->unlockFocus();
    return result;
}

ImagePtr Image::initWithImageFromRect(const Image &image, QRectF fromRect, QSizeF size)
{
    auto result = std::make_shared<Image>(size);
    if (!result->lockFocus())
        return nullptr;
    image.drawInRect(QRectF(QPointF(0, 0), size), fromRect, CompositingOperation::SourceOver, 1.0);
    result->unlockFocus();
    return result;
}

ImagePtr Image::initWithImageFromRect(const Image &image, QRectF fromRect)
{
    return initWithImageFromRect(image, fromRect, fromRect.size());
}

ImagePtr Image::imageWithSize(QSizeF size) const { return initWithImage(*this, size); }

ImagePtr Image::thumbForSize(QSizeF box) const { return imageWithSize(thumbSize(box)); }

void Image::scaleToThumbSize(QSizeF box)
{
    setScalesWhenResized(true);
    setSize(thumbSize(box));
}

ImagePtr Image::squareImage() const
{
    const QSizeF s = size();
    const double side = std::max(s.width(), s.height());
    if (!(side > 0))
        return nullptr;
    auto result = std::make_shared<Image>(QSizeF(side, side));
    if (!result->lockFocus())
        return nullptr;
    bool drawn = false;
    try {
        // Centred and unscaled; the margins are not rounded and stay transparent.
        drawn = drawImageInRect(
            *this, QRectF((side - s.width()) * 0.5, (side - s.height()) * 0.5, s.width(), s.height()));
    } catch (const std::exception &e) {
        result->unlockFocus();
        logException(QStringLiteral("squareImage"), QStringLiteral("NSImage"),
            QStringLiteral("std::exception"), QString::fromUtf8(e.what()));
        return nullptr;
    }
    result->unlockFocus();
    return drawn ? result : nullptr;
}

ImagePtr Image::imageFromRect(QRectF rect, double fraction) const
{
    auto result = std::make_shared<Image>(rect.size());
    if (!result->lockFocus())
        return nullptr;
    drawInRect(QRectF(QPointF(0, 0), rect.size()), rect, CompositingOperation::SourceOver, fraction);
    result->unlockFocus();
    return result;
}

} // namespace orvel
