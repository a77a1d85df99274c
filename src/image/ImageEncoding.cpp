// Encoding images: bitmap file types with a compression factor, TIFF data, the most faithful form.
#include "image/Image.h"

#include "image/PDFImageRep.h"

#include <cmath>

namespace orvel {

BitmapImageRepPtr Image::createBitmapImageRepIfNecessary() const
{
    if (BitmapImageRepPtr rep = bitmapImageRep())
        return rep;
    // No bitmap: render the image at its pixel size (the bitmap its TIFF data would hold).
    const QSizeF pixels = pixelSize();
    const ImagePtr rendered = bitmapImageWithPixelSize(
        QSizeF(std::ceil(pixels.width()), std::ceil(pixels.height())), true, InterpolationHigh);
    return rendered ? rendered->bitmapImageRep() : nullptr;
}

QByteArray Image::representationUsingType(int fileType, float compression) const
{
    ImageRepPtr best = bestRepresentationForRect(QRectF(QPointF(0, 0), size()));
    if (!best)
        return {};
    BitmapImageRepPtr bitmap
        = best->kind() == ImageRep::Kind::Bitmap || best->kind() == ImageRep::Kind::Cached
        ? std::static_pointer_cast<BitmapImageRep>(best)
        : createBitmapImageRepIfNecessary();
    if (!bitmap)
        return {};
    return bitmap->representationUsingType(fileType, compression);
}

QByteArray Image::TIFFRepresentation(bool lzw) const
{
    const BitmapImageRepPtr bitmap = createBitmapImageRepIfNecessary();
    return bitmap ? bitmap->TIFFRepresentation(lzw) : QByteArray();
}

QByteArray Image::bestRepresentationAndFileExtension(QString *extension) const
{
    auto answer = [extension](QByteArray data, const char *ext) {
        if (extension)
            *extension = QString::fromLatin1(ext);
        return data;
    };
    if (const std::shared_ptr<orvel::PDFImageRep> pdf = PDFImageRep())
        return answer(pdf->PDFRepresentation(), "pdf");
    if (const std::shared_ptr<orvel::EPSImageRep> eps = EPSImageRep())
        return answer(eps->EPSRepresentation(), "eps");
    if (PICTImageRep())
        return answer({}, "pict"); // no PICT representations are made on this platform
    return answer(TIFFRepresentation(true), "tiff");
}

QByteArray Image::bestRepresentation() const { return bestRepresentationAndFileExtension(nullptr); }

QString Image::pathExtensionForBestRepresentation() const
{
    QString extension;
    (void)bestRepresentationAndFileExtension(&extension); // only the extension is wanted
    return extension;
}

QByteArray Image::snapshotData() const
{
    const BitmapImageRepPtr bitmap = createBitmapImageRepIfNecessary();
    return bitmap ? bitmap->representationUsingType(JPEGFileType, 0.75f) : QByteArray();
}

} // namespace orvel
