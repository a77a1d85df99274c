// Image: construction, representations, attributes and the lazy reading of a referenced file.
#include "image/Image.h"

#include "image/PDFImageRep.h"
#include "image/VipsBridge_p.h"
#include "support/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <algorithm>

namespace orvel {

Image::Image() = default;

Image::Image(QSizeF size)
    : m_size(size)
    , m_sizeSet(true)
{
}

Image::~Image() { unlockFocus(); }

ImagePtr Image::initWithSize(QSizeF size) { return std::make_shared<Image>(size); }

ImagePtr Image::initByReferencingFile(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    auto image = std::make_shared<Image>();
    image->m_path = path;
    image->m_pendingLoad = true;
    return image;
}

ImagePtr Image::imageWithRepresentation(ImageRepPtr rep)
{
    if (!rep)
        return nullptr;
    auto image = std::make_shared<Image>(rep->size());
    image->addRepresentation(std::move(rep));
    return image;
}

namespace {

// PDF files may carry a few bytes of junk before their header; pictures whose metadata happens to
// hold the text are still pictures.
bool looksLikePDF(const QByteArray &head)
{
    if (head.startsWith("%PDF-"))
        return true;
    const QByteArray first = head.left(1024);
    if (!first.contains("%PDF-"))
        return false;
    ensureVips();
    const bool picture = vips_foreign_find_load_buffer(first.constData(), size_t(first.size())) != nullptr;
    vips_error_clear();
    return !picture;
}

} // namespace

Image::ContentKind Image::contentKindOfFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return ContentKind::None;
    const QByteArray head = file.read(1024);
    if (looksLikePDF(head) || head.startsWith("%!") || head.startsWith("\xC5\xD0\xD3\xC6"))
        return ContentKind::Document;
    ensureVips();
    const char *loader = vips_foreign_find_load(QFile::encodeName(path).constData());
    vips_error_clear();
    if (!loader)
        return ContentKind::None;
    // ImageMagick's loader claims far too much (a movie passes for a TGA picture): it counts only
    // where the MIME database, reading the content, calls the file a picture too.
    if (QByteArrayView(loader).startsWith("magickload")
        && !QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchContent).name().startsWith(u"image/"))
        return ContentKind::None;
    return ContentKind::Picture;
}

namespace {

// The representation that suits data: PDF, PostScript, or a bitmap libvips decodes (orientation applied).
ImageRepPtr representationForData(
    const QByteArray &data, const QString &path, int maxPixelSize, QString *error)
{
    if (looksLikePDF(data))
        return PDFImageRep::imageRepWithData(data, error);
    if (data.startsWith("%!") || data.startsWith("\xC5\xD0\xD3\xC6")) {
        ImageRepPtr rep = EPSImageRep::imageRepWithData(data, error);
        if (!rep && error && error->isEmpty())
            *error = QStringLiteral("unreadable PostScript document");
        return rep;
    }
    std::shared_ptr<ImageSource> source = path.isEmpty()
        ? ImageSource::openData(data, maxPixelSize, true, error)
        : ImageSource::open(path, maxPixelSize, true, error);
    return BitmapImageRep::fromSource(std::move(source));
}

} // namespace

void Image::loadReferencedFile() const
{
    if (!m_pendingLoad)
        return;
    m_pendingLoad = false;
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_loadError = file.errorString();
        return;
    }
    // Documents are read whole; pictures are left to libvips, which reads only what it needs.
    const QByteArray head = file.read(1024);
    QByteArray data;
    const bool document = looksLikePDF(head) || head.startsWith("%!") || head.startsWith("\xC5\xD0\xD3\xC6");
    if (document) {
        data = head + file.readAll();
        if (file.error() != QFileDevice::NoError) {
            m_loadError = file.errorString();
            return;
        }
    } else if (head.isEmpty()) {
        m_loadError = QStringLiteral("the file is empty");
        return;
    }
    file.close();
    ImageRepPtr rep = representationForData(data, document ? QString() : m_path, 0, &m_loadError);
    if (!rep) {
        if (m_loadError.isEmpty())
            m_loadError = QStringLiteral("unreadable file");
        return;
    }
    m_reps.push_back(rep);
    if (!m_sizeSet) {
        m_size = rep->size();
        m_sizeSet = true;
    }
}

QString Image::loadError() const { return m_loadError; }

ImagePtr Image::initWithData(const QByteArray &data)
{
    if (data.isEmpty())
        return nullptr;
    return imageWithRepresentation(representationForData(data, QString(), 0, nullptr));
}

const std::vector<ImageRepPtr> &Image::representations() const
{
    loadReferencedFile();
    return m_reps;
}

void Image::addRepresentation(ImageRepPtr rep)
{
    loadReferencedFile();
    if (!rep)
        return;
    m_reps.push_back(std::move(rep));
}

void Image::removeRepresentation(const ImageRepPtr &rep)
{
    loadReferencedFile();
    m_reps.erase(std::remove(m_reps.begin(), m_reps.end(), rep), m_reps.end());
}

void Image::removeAllRepresentations()
{
    loadReferencedFile();
    while (!m_reps.empty())
        m_reps.pop_back();
}

ImageRepPtr Image::bestRepresentationForRect(QRectF rect) const
{
    const std::vector<ImageRepPtr> &reps = representations();
    if (reps.empty())
        return nullptr;
    // Among bitmaps, the smallest one that covers the rectangle, else the largest; other kinds first come
    // first.
    ImageRepPtr best;
    for (const ImageRepPtr &rep : reps) {
        if (rep->kind() != ImageRep::Kind::Bitmap && rep->kind() != ImageRep::Kind::Cached)
            return best ? best : rep;
        if (!best) {
            best = rep;
            continue;
        }
        const bool covers = rep->pixelsWide() >= rect.width() && rep->pixelsHigh() >= rect.height();
        const bool bestCovers = best->pixelsWide() >= rect.width() && best->pixelsHigh() >= rect.height();
        if (covers && (!bestCovers || rep->pixelsWide() < best->pixelsWide()))
            best = rep;
        else if (!covers && !bestCovers && rep->pixelsWide() > best->pixelsWide())
            best = rep;
    }
    return best;
}

ImageRepPtr Image::imageRepOfKind(ImageRep::Kind kind) const
{
    for (const ImageRepPtr &rep : representations())
        if (rep->kind() == kind)
            return rep;
    return nullptr;
}

std::shared_ptr<PDFImageRep> Image::PDFImageRep() const
{
    return std::static_pointer_cast<orvel::PDFImageRep>(imageRepOfKind(ImageRep::Kind::PDF));
}

std::shared_ptr<EPSImageRep> Image::EPSImageRep() const
{
    return std::static_pointer_cast<orvel::EPSImageRep>(imageRepOfKind(ImageRep::Kind::EPS));
}

ImageRepPtr Image::PICTImageRep() const { return imageRepOfKind(ImageRep::Kind::PICT); }

BitmapImageRepPtr Image::bitmapImageRep() const
{
    return std::static_pointer_cast<BitmapImageRep>(imageRepOfKind(ImageRep::Kind::Bitmap));
}

ImageRepPtr Image::cachedImageRep() const { return imageRepOfKind(ImageRep::Kind::Cached); }

bool Image::isScalableImage() const { return PDFImageRep() || EPSImageRep(); }

bool Image::isPDFImage() const
{
    const std::vector<ImageRepPtr> &reps = representations();
    bool sawPDF = false;
    bool onlyPDF = true;
    for (auto it = reps.rbegin(); it != reps.rend(); ++it) {
        const ImageRep::Kind kind = (*it)->kind();
        if (kind == ImageRep::Kind::Cached)
            continue;
        if (kind == ImageRep::Kind::PDF)
            sawPDF = true;
        else
            onlyPDF = false;
    }
    if (sawPDF && onlyPDF)
        return true;
    return EPSImageRep() != nullptr;
}

bool Image::isIconRefBitmapImage() const { return iconRefBitmapImageRep() != nullptr; }

ImageRepPtr Image::iconRefBitmapImageRep() const
{
    // This platform has no icon-reference bitmaps.
    logMessage(QStringLiteral("Class %1 not found.").arg(QStringLiteral("NSIconRefBitmapImageRep")));
    return nullptr;
}

QSizeF Image::size() const
{
    loadReferencedFile();
    return m_size;
}

void Image::setSize(QSizeF size)
{
    loadReferencedFile();
    m_size = size;
    m_sizeSet = true;
}

bool Image::hasAlpha() const
{
    for (const ImageRepPtr &rep : representations()) {
        const ImageRep::Kind kind = rep->kind();
        if (kind != ImageRep::Kind::Bitmap && kind != ImageRep::Kind::Cached)
            return true;
        if (rep->hasAlpha())
            return true;
    }
    return false;
}

} // namespace orvel
