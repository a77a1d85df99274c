// ThumbnailJob: one file in, one thumbnail (or custom icon) out, as the settings say.
#include "app/engine/ThumbnailJob.h"

#include "app/engine/ClassicIcon.h"
#include "app/engine/IconService.h"
#include "app/shared/ThumbnailSettings.h"
#include "files/AppleDouble.h"
#include "files/AtomicFile.h"
#include "files/FileManager.h"
#include "image/Image.h"
#include "movie/Movie.h"
#include "support/Failure.h"
#include "support/Log.h"
#include "support/UserDefaults.h"

#include <QFile>
#include <QMimeDatabase>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

/// The long side a picture is decoded at: the largest an image source gives, so the picture is
/// decoded whole (orientation applied) and sized by the job afterwards.
constexpr int WholePicturePixelSize = 32767;

/// The icon option that leaves out the elements of older icon formats; the icon service keeps it
/// for the caller's interface.
constexpr int ExcludeClassicIconElements = 4;

using Failure = std::optional<QString>;

/// The answer for a file that is none of the kinds the job reads.
const QString NotASourceText = u"not an image, PDF, PostScript or movie file"_s;
/// The answer for the AppleDouble companion of another file, which only looks like a picture.
const QString CompanionText = u"the Finder info and resource fork of another file"_s;

/// Whether path is an AppleDouble companion "._NAME": such a name with the format's magic.
bool isAppleDoubleCompanion(const QString &path)
{
    if (!path.mid(path.lastIndexOf(u'/') + 1).startsWith(u"._"_s))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray magic = file.read(4);
    return magic.size() == 4 && qFromBigEndian<quint32>(magic.constData()) == AppleDouble::Magic;
}

/// Gives the file its icon: the thumbnail-cache entries Linux file managers show and the classic
/// icon a Mac shows. The classic icon left out (a place where its companion file cannot be written,
/// say) is said in the log, and the file still counts as done: it has the icon Linux shows.
void giveIcon(const QImage &square, const QString &path)
{
    IconService::setIconForFile(square, path, ExcludeClassicIconElements);
    QString why;
    if (!ClassicIcon::setIconForFile(square, path, &why))
        logMessage(u"%1: the classic custom icon was left out: %2"_s.arg(path, why));
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

QString drawFailure(const ImagePtr &image)
{
    const QString why = image->drawError();
    return why.isEmpty() ? u"the image could not be drawn"_s : why;
}

/// Loads a file whose name tells nothing the job reads (photo.jpeg.1, scan.img, a JPEG saved
/// without extension): its content decides, as libvips' loaders and the MIME database know it.
ImagePtr loadByContent(const QString &path, QString *error)
{
    if (QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchContent).name().startsWith(u"video/"_s))
        return Movie::thumbnailImageForMovieWithFile(path, nullptr, nullptr, error);
    switch (Image::contentKindOfFile(path)) {
    case Image::ContentKind::Document:
        return Image::initByReferencingFile(path);
    case Image::ContentKind::Picture:
        return Image::thumbnailForFile(path, WholePicturePixelSize, true, true, nullptr, error);
    case Image::ContentKind::None:
        break;
    }
    *error = NotASourceText;
    return nullptr;
}

/// Gives the source its own icon, made from the whole picture; the file's date is kept as it was.
/// Succeeds whatever setting the icon answered.
Failure giveSourceItsIcon(const ImagePtr &image, const QString &path)
{
    const std::optional<FileTime> date = FileManager::fileModificationDateAtPath(path);
    const ImagePtr square = image->squareImage();
    if (!square)
        return drawFailure(image);
    giveIcon(pictureOf(square), path);
    if (date)
        FileManager::setFileModificationDate(date, path);
    return std::nullopt;
}

/// The thumbnail's pixel size: the source scaled, or fitted into the box.
QSizeF thumbnailSize(const ImagePtr &image, const ThumbnailSettings &s)
{
    if (s.scalesBySize())
        return image->scaledSize(double(s.scale));
    return image->thumbSize(QSizeF(double(s.width), double(s.height)));
}

/// Sharpens the rendered bitmap in place.
void sharpen(const ImagePtr &thumbnail, ThumbnailSettings::Sharpening sharpening)
{
    switch (sharpening) {
    case ThumbnailSettings::Sharpening::Strong:
        thumbnail->sharpenStrong();
        break;
    case ThumbnailSettings::Sharpening::Medium:
        thumbnail->sharpenMedium();
        break;
    case ThumbnailSettings::Sharpening::Light:
        thumbnail->sharpenLight();
        break;
    case ThumbnailSettings::Sharpening::None:
        break;
    }
}

/// Encodes the thumbnail and writes it to its path, never over its own source.
Failure writeThumbnail(
    const ImagePtr &thumbnail, const QString &path, const ThumbnailSettings &s, const QString &outputFolder)
{
    const QString out = s.outputPathFor(path, outputFolder);
    if (s.namingRule() == ThumbnailSettings::NamingRule::SubFolder || !outputFolder.isEmpty())
        FileManager::createPathToFile(out); // its answer is not checked: the write says what matters
    if (FileManager::isSameFileAtPaths(out, path))
        return u"the thumbnail would replace its source %1"_s.arg(out);

    const QByteArray data = thumbnail->representationUsingType(int(s.filetype), s.quality);
    if (data.isEmpty()) {
        const QString extension = s.fileExtension();
        return extension.isNull() ? u"unknown output format %1"_s.arg(s.filetype)
                                  : u"the %1 encoder failed"_s.arg(extension);
    }
    QString error;
    // Replaced whole or not at all, but not flushed: two flushes would cost a busy disk more than
    // making the thumbnail, which can always be made again.
    if (!writeFileAtomicallyUnflushed(out, data, &error))
        return u"cannot write %1: %2"_s.arg(out, error);
    // The new file took the old one's place and, like any new file, has no fork or Finder info of
    // its own: a companion left from the old one would lend it the old one's icon on a Mac.
    if (const std::optional<AppleDouble> old = AppleDouble::readForFile(out); old && !old->isEmpty())
        AppleDouble::writeForFile(out, AppleDouble());
    if (s.createMode() == ThumbnailSettings::CreateMode::ThumbnailAndIcon) // the icon's answer is ignored
        giveIcon(pictureOf(thumbnail->squareImage()), out);
    return std::nullopt;
}

Failure makeThumbnail(
    const QString &path, const ThumbnailSettings &s, ThumbnailJob::Mode mode, const QString &outputFolder)
{
    if (isAppleDoubleCompanion(path))
        return CompanionText;
    QString error;
    const ImagePtr image = ThumbnailJob::loadSource(path, &error);
    if (!image)
        return error;
    image->setScalesWhenResized(true);
    if (!image->isReallyValid()) {
        const QString why = image->loadError();
        return why.isEmpty() ? u"the image is empty"_s : why;
    }
    if (s.filetype == JPEGFileType)
        image->setBackgroundColor(Qt::white); // JPEG has no alpha: transparent parts become white

    const std::optional<ThumbnailSettings::CreateMode> create = s.createMode();
    if (!create)
        return u"unknown create mode %1"_s.arg(s.create);
    const bool dryRun = mode == ThumbnailJob::Mode::DryRun;
    if (*create == ThumbnailSettings::CreateMode::Icon)
        return dryRun ? Failure() : giveSourceItsIcon(image, path);

    const QSizeF size = thumbnailSize(image, s);
    const auto interpolation = ThumbnailSettings::Interpolation(s.interpolation);
    const ImagePtr thumbnail = image->bitmapImageWithPixelSize(
        size, interpolation != ThumbnailSettings::Interpolation::None, int(s.interpolation));
    if (!thumbnail) {
        if (!(size.width() >= 1) || !(size.height() >= 1))
            return u"the thumbnail would be %1 × %2 pixels"_s.arg(size.width()).arg(size.height());
        return drawFailure(image);
    }
    // With create mode 1 the icon is made from the sharpened thumbnail.
    sharpen(thumbnail, s.sharpening());
    if (dryRun) {
        const QString out = s.outputPathFor(path, outputFolder);
        return FileManager::isSameFileAtPaths(out, path)
            ? Failure(u"the thumbnail would replace its source %1"_s.arg(out))
            : Failure();
    }
    return writeThumbnail(thumbnail, path, s, outputFolder);
}

} // namespace

ImagePtr ThumbnailJob::loadSource(const QString &path, QString *error)
{
    ImagePtr image;
    if (Image::isPDFFile(path))
        image = Image::initByReferencingFile(path);
    else if (Image::isImageFile(path))
        image = Image::thumbnailForFile(path, WholePicturePixelSize, true, true, nullptr, error);
    else if (Movie::isQuickTimeFile(path))
        image = Movie::thumbnailImageForMovieWithFile(path, nullptr, nullptr, error);
    else
        image = loadByContent(path, error);
    if (!image && error->isEmpty())
        *error = u"unreadable file"_s;
    return image;
}

QString ThumbnailJob::outputPathForFile(
    const QString &path, UserDefaults *defaults, const QString &outputFolder)
{
    return ThumbnailSettings::read(defaults ? *defaults : UserDefaults::standard())
        .thumbnailPathFor(path, outputFolder);
}

bool ThumbnailJob::processFile(const QString &path, UserDefaults *defaults, QString *error)
{
    return run(path, defaults, error) == Outcome::Made;
}

ThumbnailJob::Outcome ThumbnailJob::run(
    const QString &path, UserDefaults *defaults, QString *error, Mode mode, const QString &outputFolder)
{
    const ThumbnailSettings settings
        = ThumbnailSettings::read(defaults ? *defaults : UserDefaults::standard());
    const Failure failed = makeThumbnail(path, settings, mode, outputFolder);
    if (!failed)
        return Outcome::Made;
    (void)failure(error, *failed);
    return *failed == NotASourceText || *failed == CompanionText ? Outcome::Skipped : Outcome::Failed;
}

} // namespace orvel
