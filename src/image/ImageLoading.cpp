// Loading images: decoded thumbnails of image files, referenced files, downloaded data, pictures.
#include "image/Image.h"

#include "image/VipsBridge_p.h"
#include "support/Failure.h"

namespace orvel {

ImagePtr Image::thumbnailForFile(const QString &path, int maxPixelSize, bool alwaysFromImage,
    bool withTransform, QVariantMap *properties, QString *error)
{
    if (properties)
        properties->clear();
    if (path.isEmpty())
        return failure<ImagePtr>(error, QStringLiteral("empty path"));
    // libvips decodes the picture itself; embedded previews are never used, so alwaysFromImage
    // changes nothing here. Pixels are decoded when first drawn, at the scale the drawing needs.
    (void)alwaysFromImage;
    std::shared_ptr<ImageSource> source = ImageSource::open(path, maxPixelSize, withTransform, error);
    if (!source)
        return nullptr;
    if (properties)
        *properties = source->properties();
    return imageWithRepresentation(BitmapImageRep::fromSource(std::move(source)));
}

ImagePtr Image::thumbnailForFile(const QString &path, int maxPixelSize)
{
    return thumbnailForFile(path, maxPixelSize, false, false, nullptr, nullptr);
}

ImagePtr Image::imageAtPath(const QString &path)
{
    ImagePtr image = initByReferencingFile(path);
    if (image)
        image->setName(path);
    return image;
}

ImagePtr Image::initWithDownloadedData(const QByteArray &data)
{
    // The data arrives complete: loaded in one step, it is accepted when the picture decodes whole.
    BitmapImageRepPtr rep = BitmapImageRep::imageRepWithData(data);
    if (!rep || rep->pixelsWide() < 1 || rep->pixelsHigh() < 1 || !rep->bitmapData())
        return nullptr;
    auto image = std::make_shared<Image>(QSizeF(rep->pixelsWide(), rep->pixelsHigh()));
    image->addRepresentation(rep);
    return image;
}

ImagePtr Image::imageWithCGImageRef(const QImage &picture)
{
    if (picture.isNull() || picture.width() <= 0 || picture.height() <= 0)
        return nullptr;
    return imageWithRepresentation(BitmapImageRep::fromQImage(picture));
}

} // namespace orvel
