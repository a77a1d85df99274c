// Thumbnail geometry: validity, pixel size, box fitting and scaling.
#include "image/Image.h"

#include "image/PDFImageRep.h"

#include <cmath>

namespace orvel {

bool Image::isReallyValid() const
{
    const QSizeF s = size();
    return s.width() > 0 && s.height() > 0 && !representations().empty();
}

QSizeF Image::pixelSize() const
{
    int width = 0;
    int height = 0;
    for (const ImageRepPtr &rep : representations()) {
        if (rep->pixelsWide() > width) { // strictly greater: the first one wins a tie
            width = rep->pixelsWide();
            height = rep->pixelsHigh();
        }
    }
    if (width == 0 && height == 0)
        return size();
    return QSizeF(width, height);
}

QSizeF Image::thumb(QSizeF box, QSizeF size)
{
    const double bw = box.width(), bh = box.height();
    const double w = size.width(), h = size.height();
    if (!(w > bw) && !(h > bh))
        return size; // fits: never enlarged, not rounded
    double tw = bw;
    double th = bw / w * h;
    if (th > bh) { // an exact fit by width stays a fit by width
        tw = bh / h * w;
        th = bh;
    }
    tw = std::floor(tw);
    th = std::floor(th);
    if (!(tw > 0))
        tw = 1;
    if (!(th > 0))
        th = 1;
    return QSizeF(tw, th);
}

QSizeF Image::thumbSize(QSizeF box) const { return thumb(box, pixelSize()); }

QSizeF Image::scaledSize(double factor) const
{
    const QSizeF pixels = pixelSize();
    if (!(factor > 0))
        return pixels;
    return QSizeF(std::floor(pixels.width() * factor), std::floor(pixels.height() * factor));
}

double Image::aspectRatio() const
{
    const QSizeF s = size();
    return s.height() > 0 ? s.width() / s.height() : 0.0;
}

QRectF Image::bounds() const
{
    if (const std::shared_ptr<orvel::PDFImageRep> pdf = PDFImageRep())
        return pdf->bounds();
    if (const std::shared_ptr<orvel::EPSImageRep> eps = EPSImageRep())
        if (const std::shared_ptr<orvel::PDFImageRep> pdf = eps->PDFImageRep())
            return pdf->bounds();
    int width = 0;
    int height = 0;
    for (const ImageRepPtr &rep : representations())
        if (rep->pixelsWide() > width) {
            width = rep->pixelsWide();
            height = rep->pixelsHigh();
        }
    if (width > 0 || height > 0)
        return QRectF(0, 0, width, height);
    return QRectF(QPointF(0, 0), size());
}

} // namespace orvel
