// ThumbnailJob: one file in, one thumbnail (or custom icon) out, as the settings say.
#include "app/ThumbnailJob.h"

#include "app/IconService.h"
#include "app/ThumbnailSettings.h"
#include "files/AtomicFile.h"
#include "files/FileManager.h"
#include "image/Image.h"
#include "movie/Movie.h"
#include "support/UserDefaults.h"

#include <QFile>

#include <sys/stat.h>

namespace orvel {

namespace {

bool isSameFile(const QString &a, const QString &b)
{
    struct stat sa = {}, sb = {};
    if (::stat(QFile::encodeName(a).constData(), &sa) != 0
        || ::stat(QFile::encodeName(b).constData(), &sb) != 0)
        return false;
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

// The pixels of an image made by focused drawing or rendering, for the icon service.
QImage pictureOf(const ImagePtr &image)
{
    if (!image)
        return {};
    BitmapImageRepPtr rep = std::static_pointer_cast<BitmapImageRep>(image->cachedImageRep());
    if (!rep)
        rep = image->createBitmapImageRepIfNecessary();
    return rep ? rep->toQImage().copy() : QImage();
}

bool fail(QString *reason, const QString &why)
{
    if (reason)
        *reason = why;
    return false;
}

} // namespace

QString ThumbnailJob::outputPathForFile(const QString &path, UserDefaults *defaults)
{
    return ThumbnailSettings::read(defaults ? *defaults : UserDefaults::standard()).thumbnailPathFor(path);
}

bool ThumbnailJob::processFile(const QString &path, UserDefaults *defaults, QString *reason)
{
    UserDefaults &d = defaults ? *defaults : UserDefaults::standard();

    // Classify and load: PDF and the PostScript family first, then pictures, then movies (whose
    // chosen frame stands in for the picture).
    ImagePtr image;
    QString error;
    if (Image::isPDFFile(path))
        image = Image::initByReferencingFile(path);
    else if (Image::isImageFile(path))
        image = Image::thumbnailForFile(path, 32767, true, true, nullptr, &error);
    else if (Movie::isQuickTimeFile(path))
        image = Movie::thumbnailImageForMovieWithFile(path, nullptr, nullptr, &error);
    else
        return fail(reason, QStringLiteral("not an image, PDF, PostScript or movie file"));
    if (!image)
        return fail(reason, error.isEmpty() ? QStringLiteral("unreadable file") : error);

    image->setScalesWhenResized(true);
    if (!image->isReallyValid()) {
        const QString why = image->loadError();
        return fail(reason, why.isEmpty() ? QStringLiteral("the image is empty") : why);
    }

    const ThumbnailSettings s = ThumbnailSettings::read(d);
    const QString extension = s.fileExtension();
    if (s.filetype == JPEGFileType)
        image->setBackgroundColor(Qt::white); // JPEG has no alpha: transparent parts become white

    switch (qint32(s.create)) {
    case 2: {
        // The source's own icon, from the whole picture; the file's date is kept as it was.
        const std::optional<FileTime> date = FileManager::fileModificationDateAtPath(path);
        const ImagePtr square = image->squareImage();
        if (!square) {
            const QString why = image->drawError();
            return fail(reason, why.isEmpty() ? QStringLiteral("the image could not be drawn") : why);
        }
        IconService::setIconForFile(pictureOf(square), path, 4);
        if (date)
            FileManager::setFileModificationDate(date, path);
        return true; // whatever setting the icon answered
    }
    case 0:
    case 1:
        break;
    default:
        return fail(reason, QStringLiteral("unknown create mode %1").arg(s.create));
    }

    QSizeF size;
    if (d.integerForKey(QStringLiteral("sizing"), 0) != 0)
        size = image->scaledSize(double(d.floatForKey(QStringLiteral("scale"), 1.0f)));
    else
        size = image->thumbSize(QSizeF(double(s.width), double(s.height)));

    const ImagePtr thumbnail
        = image->bitmapImageWithPixelSize(size, s.interpolation != 1, int(s.interpolation));
    if (!thumbnail) {
        if (!(size.width() >= 1) || !(size.height() >= 1))
            return fail(reason,
                QStringLiteral("the thumbnail would be %1 × %2 pixels").arg(size.width()).arg(size.height()));
        const QString why = image->drawError();
        return fail(reason, why.isEmpty() ? QStringLiteral("the image could not be drawn") : why);
    }

    // Sharpen the rendered bitmap in place; any other value leaves it as it is. With "create" 1 the
    // icon below is made from the sharpened thumbnail.
    switch (int(s.sharpen)) {
    case 3:
        thumbnail->sharpenStrong();
        break;
    case 2:
        thumbnail->sharpenMedium();
        break;
    case 1:
        thumbnail->sharpenLight();
        break;
    default:
        break;
    }

    const QString out = s.outputPathFor(path);
    if (int(s.extensionFormat) != 0 && int(s.extensionFormat) != 1)
        FileManager::createPathToFile(out); // its answer is not checked: the write says what matters
    if (isSameFile(out, path))
        return fail(reason, QStringLiteral("the thumbnail would replace its source %1").arg(out));

    const float quality = d.floatForKey(QStringLiteral("quality"), 0.8f);
    const QByteArray data = thumbnail->representationUsingType(int(s.filetype), quality);
    if (data.isEmpty())
        return fail(reason,
            extension.isNull() ? QStringLiteral("unknown output format %1").arg(s.filetype)
                               : QStringLiteral("the %1 encoder failed").arg(extension));
    if (!writeFileAtomically(out, data, &error))
        return fail(reason, QStringLiteral("cannot write %1: %2").arg(out, error));

    if (s.create == 1)
        IconService::setIconForFile(pictureOf(thumbnail->squareImage()), out, 4); // its answer is ignored
    return true;
}

} // namespace orvel
