// DesktopThumbnailer: orvel-thumbs as a file manager's thumbnailer, one file to one PNG.
#include "app/engine/DesktopThumbnailer.h"

#include "app/engine/ThumbnailJob.h"
#include "app/shared/ThumbnailSettings.h"
#include "files/AtomicFile.h"
#include "files/FileManager.h"
#include "image/BitmapFileType.h"
#include "image/Image.h"
#include "movie/Movie.h"
#include "support/Failure.h"
#include "support/Log.h"

#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

/// Interpolation code for the scaling: high (Lanczos), the job's default.
constexpr int HighInterpolation = int(ThumbnailSettings::Interpolation::High);

/// The compression factor handed to the encoder; PNG is lossless, so only the effort depends on it.
constexpr float PNGCompression = 0.8f;

void dropLibraryMessage(const gchar *, GLogLevelFlags, const gchar *, gpointer) { }

/// The thumbnail's pixel size within a size × size box.
QSizeF thumbnailSize(const Image &image, int size)
{
    const QSizeF box(size, size);
    QSizeF source = image.pixelSize();
    const double longer = std::max(source.width(), source.height());
    // A document is drawn, not resampled: it grows to fill the box as well as shrinks.
    if (image.isScalableImage() && longer > 0 && longer < size)
        source = QSizeF(std::max(1.0, std::round(source.width() * size / longer)),
            std::max(1.0, std::round(source.height() * size / longer)));
    return Image::thumb(box, source);
}

} // namespace

bool DesktopThumbnailer::makeThumbnail(const QString &source, const QString &output, int size, QString *error)
{
    if (size < 1)
        return failure(error, u"the size must be at least one pixel"_s);
    // A pipe or a device would block the decoder reading it until the time limit.
    const std::optional<FileKind> kind = FileManager::fileKindAtPath(source);
    if (!kind)
        return failure(error, u"no such file"_s);
    if (*kind != FileKind::Regular)
        return failure(error, u"not a regular file"_s);
    QString why;
    const ImagePtr image = ThumbnailJob::loadSource(source, &why);
    if (!image)
        return failure(error, why);
    image->setScalesWhenResized(true);
    if (!image->isReallyValid()) {
        why = image->loadError();
        return failure(error, why.isEmpty() ? u"the image is empty"_s : why);
    }
    const ImagePtr thumbnail
        = image->bitmapImageWithPixelSize(thumbnailSize(*image, size), true, HighInterpolation);
    if (!thumbnail) {
        why = image->drawError();
        return failure(error, why.isEmpty() ? u"the image could not be drawn"_s : why);
    }
    const QByteArray png = thumbnail->representationUsingType(PNGFileType, PNGCompression);
    if (png.isEmpty())
        return failure(error, u"the PNG encoder failed"_s);
    if (!writeFileAtomically(output, png, &why))
        return failure(error, u"cannot write %1: %2"_s.arg(output, why));
    return true;
}

int DesktopThumbnailer::run(const QString &source, const QString &output, int size, const Limits &limits)
{
    // A decoder that crashes on a hostile file must not leave a core dump in the file manager's way.
    const rlimit noCore = { 0, 0 };
    ::setrlimit(RLIMIT_CORE, &noCore);
#ifndef __SANITIZE_ADDRESS__
    // (AddressSanitizer's shadow memory counts as data: a sanitizer build runs without the limit.)
    if (limits.memoryLimitMiB > 0) {
        const rlim_t bytes = rlim_t(limits.memoryLimitMiB) * 1024 * 1024;
        const rlimit data = { bytes, bytes };
        ::setrlimit(RLIMIT_DATA, &data);
    }
#endif
    // A file that hangs a decoder ends the process before the file manager waits forever; the
    // output is written in one rename at the very end, so nothing half-made is left behind.
    if (limits.timeoutSeconds > 0)
        ::alarm(unsigned(limits.timeoutSeconds));

    if (VIPS_INIT("orvel-thumbs") != 0) {
        std::fprintf(stderr, "orvel-thumbs: cannot start libvips\n");
        return 1;
    }
    // One file: no operation cache worth filling.
    vips_cache_set_max(0);
    setLogToStandardError(limits.verbose);
    routeToolkitQtMessages();
    Movie::setLibraryLogging(limits.verbose);
    if (!limits.verbose)
        g_log_set_handler("VIPS",
            GLogLevelFlags(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO), dropLibraryMessage,
            nullptr);

    QString error;
    bool made = false;
    try {
        made = makeThumbnail(source, output, size, &error);
    } catch (const std::exception &e) {
        error = u"internal error: %1"_s.arg(QString::fromLocal8Bit(e.what()));
    } catch (...) {
        error = u"internal error"_s;
    }
    if (!made)
        std::fprintf(stderr, "orvel-thumbs: %s: %s\n", qUtf8Printable(source), qUtf8Printable(error));
    return made ? 0 : 1;
}

} // namespace orvel
