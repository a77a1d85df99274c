// Image: named images from resource bundles, and the process-wide caches that share them.
#include "image/Image.h"

#include "support/Bundle.h"

#include <QFile>
#include <QHash>

#include <mutex>

namespace orvel {

namespace {

// The caches are created on first use and never emptied, so a cached image is shared by every
// caller. Thumbnail jobs may run on several threads at once, hence the lock around each lookup.
std::mutex &cacheMutex()
{
    static std::mutex mutex;
    return mutex;
}

/// Image name to image.
QHash<QString, ImagePtr> &namedImageCache()
{
    static QHash<QString, ImagePtr> cache;
    return cache;
}

/// Bundle identifier to image name to image.
QHash<QString, QHash<QString, ImagePtr>> &bundleImageCache()
{
    static QHash<QString, QHash<QString, ImagePtr>> cache;
    return cache;
}

ImagePtr imageForResource(const QString &path, const QString &name)
{
    if (path.isEmpty())
        return nullptr;
    ImagePtr image;
    if (path.startsWith(QLatin1StringView(":/"))) {
        // Compiled-in resources are no files that a decoder could open: decode their bytes.
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            image = Image::initWithData(file.readAll());
    } else {
        image = Image::imageAtPath(path);
    }
    if (image)
        image->setName(name);
    return image;
}

} // namespace

ImagePtr Image::imageNamed(const QString &name)
{
    if (name.isEmpty())
        return nullptr;
    return imageForResource(Bundle::mainBundle().pathForImageResource(name), name);
}

ImagePtr Image::cachedImageNamed(const QString &name)
{
    if (name.isEmpty())
        return nullptr;
    // Loading only references the file, so holding the lock meanwhile costs little and makes sure
    // that two threads asking at once share one image.
    const std::lock_guard lock(cacheMutex());
    QHash<QString, ImagePtr> &cache = namedImageCache();
    if (const auto found = cache.constFind(name); found != cache.constEnd())
        return found.value();
    ImagePtr image = imageNamed(name);
    if (image)
        cache.insert(name, image);
    return image;
}

ImagePtr Image::cachedImageNamed(const QString &name, QSizeF size)
{
    const ImagePtr cached = cachedImageNamed(name);
    if (!cached)
        return nullptr;
    // A copy sharing the representations, so that resizing it leaves the cached image alone.
    auto copy = std::make_shared<Image>();
    for (const ImageRepPtr &rep : cached->representations())
        copy->addRepresentation(rep);
    copy->setName(cached->name());
    copy->setBackgroundColor(cached->backgroundColor());
    copy->setFlipped(cached->isFlipped());
    copy->setScalesWhenResized(true);
    copy->setSize(size);
    return copy;
}

ImagePtr Image::cachedImageNamedInBundle(const QString &name, const Bundle &bundle)
{
    const QString identifier = bundle.bundleIdentifier();
    if (identifier.isEmpty() || name.isEmpty())
        return nullptr;
    const std::lock_guard lock(cacheMutex());
    QHash<QString, ImagePtr> &images = bundleImageCache()[identifier];
    if (const auto found = images.constFind(name); found != images.constEnd())
        return found.value();
    ImagePtr image = imageNamedInBundle(name, bundle);
    if (image)
        images.insert(name, image);
    return image;
}

ImagePtr Image::imageNamedInBundle(const QString &name, const Bundle &bundle)
{
    if (name.isEmpty())
        return nullptr;
    return imageForResource(bundle.pathForImageResource(name), name);
}

} // namespace orvel
