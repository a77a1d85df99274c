// Image: images from pasteboards (clipboard and drag contents) and TIFF data put on them.
//
// A pasteboard is a QMimeData. The platform's pasteboard types travel as MIME types:
//   "public.jpeg-2000"                              -> "image/jp2"
//   "public.jpeg"                                   -> "image/jpeg"
//   "public.png", the older PNG pasteboard type     -> "image/png"
//   TIFF ("public.tiff")                            -> "image/tiff"
//   PDF ("com.adobe.pdf")                           -> "application/pdf"
//   PostScript ("com.adobe.encapsulated-postscript")-> "application/postscript"
//   icon family "CorePasteboardFlavorType 0x69636E73" -> "image/x-icns"
//   file names                                      -> "text/uri-list" holding only local file URLs
//   URL                                             -> "text/uri-list", its first URL
// Qt's own in-process picture (QMimeData::imageData) is a decoded bitmap and counts as image data,
// as TIFF does.
#include "image/Image.h"

#include <QImage>
#include <QMimeData>
#include <QUrl>

#include <array>

namespace orvel {

namespace {

const QString kJPEG2000 = QStringLiteral("image/jp2");
const QString kJPEG = QStringLiteral("image/jpeg");
const QString kPNG = QStringLiteral("image/png");
const QString kTIFF = QStringLiteral("image/tiff");
const QString kPDF = QStringLiteral("application/pdf");
const QString kPostScript = QStringLiteral("application/postscript");
const QString kIconFamily = QStringLiteral("image/x-icns");

/// The MIME type that stands for a pasteboard type; MIME types pass unchanged.
QString mimeTypeForPasteboardType(const QString &type)
{
    static const std::array<std::pair<const char *, const QString *>, 11> names { {
        { "public.jpeg-2000", &kJPEG2000 },
        { "public.jpeg", &kJPEG },
        { "public.png", &kPNG },
        { "Apple PNG pasteboard type", &kPNG },
        { "public.tiff", &kTIFF },
        { "NSTIFFPboardType", &kTIFF },
        { "com.adobe.pdf", &kPDF },
        { "Apple PDF pasteboard type", &kPDF },
        { "com.adobe.encapsulated-postscript", &kPostScript },
        { "NSPostScriptPboardType", &kPostScript },
        { "CorePasteboardFlavorType 0x69636E73", &kIconFamily },
    } };
    for (const auto &[name, mime] : names) {
        if (type == QLatin1StringView(name))
            return *mime;
    }
    return type;
}

/// The local paths of the pasteboard's file names: its URL list when every URL in it is a local
/// file; empty otherwise.
QStringList fileNames(const QMimeData *pasteboard)
{
    QStringList paths;
    if (!pasteboard->hasUrls())
        return paths;
    const QList<QUrl> urls = pasteboard->urls();
    for (const QUrl &url : urls) {
        if (!url.isLocalFile())
            return {};
        paths.append(url.toLocalFile());
    }
    return paths;
}

/// The pasteboard's single URL (the first of its list); an invalid URL when it has none.
QUrl pasteboardURL(const QMimeData *pasteboard)
{
    const QList<QUrl> urls = pasteboard->hasUrls() ? pasteboard->urls() : QList<QUrl>();
    return urls.isEmpty() ? QUrl() : urls.first();
}

ImagePtr imageFromData(const QMimeData *pasteboard, const QString &mime)
{
    if (!pasteboard->hasFormat(mime))
        return nullptr;
    const QByteArray data = pasteboard->data(mime);
    return data.isEmpty() ? nullptr : Image::initWithData(data);
}

} // namespace

ImagePtr Image::initWithPasteboardIcon(const QMimeData *pasteboard)
{
    if (!pasteboard)
        return nullptr;
    const QStringList paths = fileNames(pasteboard);
    if (paths.size() == 1 && isImageFile(paths.first()))
        return imageAtPath(paths.first());
    if (pasteboard->hasFormat(kIconFamily)) {
        // Icon data that does not decode is passed over in favour of the pasteboard's other forms.
        if (BitmapImageRepPtr rep = BitmapImageRep::imageRepWithData(pasteboard->data(kIconFamily))) {
            ImagePtr image = imageWithRepresentation(rep);
            if (image)
                image->setSize(QSizeF(rep->pixelsWide(), rep->pixelsHigh()));
            return image;
        }
    }
    return initWithPasteboard(pasteboard);
}

ImagePtr Image::initWithPasteboard(const QMimeData *pasteboard)
{
    if (!pasteboard)
        return nullptr;
    for (const QString &mime : { kPNG, kJPEG, kTIFF, kPDF, kPostScript }) {
        if (ImagePtr image = imageFromData(pasteboard, mime))
            return image;
    }
    if (pasteboard->hasImage()) {
        const QImage picture = qvariant_cast<QImage>(pasteboard->imageData());
        if (ImagePtr image = imageWithCGImageRef(picture))
            return image;
    }
    // Pictures in other formats that other programs offer (JPEG 2000, WebP, BMP ...).
    const QStringList formats = pasteboard->formats();
    for (const QString &mime : formats) {
        if (mime.startsWith(QLatin1StringView("image/")) && mime != kIconFamily) {
            if (ImagePtr image = imageFromData(pasteboard, mime))
                return image;
        }
    }
    const QStringList paths = fileNames(pasteboard);
    if (paths.size() == 1 && (isImageFile(paths.first()) || isPDFFile(paths.first()))) {
        // Decoded now, so that a file that turns out unreadable gives no image.
        ImagePtr image = imageAtPath(paths.first());
        if (image && image->isReallyValid())
            return image;
    }
    return nullptr;
}

bool Image::canProbablyInitWithPasteboard(const QMimeData *pasteboard)
{
    if (!pasteboard)
        return false;
    for (const QString &mime : { kJPEG2000, kJPEG, kPNG, kTIFF, kPDF, kPostScript, kIconFamily }) {
        if (pasteboard->hasFormat(mime))
            return true;
    }
    if (pasteboard->hasImage())
        return true;
    const QStringList paths = fileNames(pasteboard);
    if (!paths.isEmpty())
        return paths.size() == 1 && isImageFile(paths.first());
    const QUrl url = pasteboardURL(pasteboard);
    if (url.isValid())
        return url.isLocalFile() && isImageFile(url.toLocalFile());
    return false;
}

void Image::pasteboardProvideDataForType(QMimeData *pasteboard, const QString &type) const
{
    if (!pasteboard || mimeTypeForPasteboardType(type) != kTIFF)
        return;
    const QByteArray tiff = TIFFRepresentation();
    if (!tiff.isEmpty())
        pasteboard->setData(kTIFF, tiff);
}

} // namespace orvel
