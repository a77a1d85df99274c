// The libvips side of the image module: lazy sources, pixel conversion and the encoders.
#include "image/VipsBridge_p.h"

#include "image/BitmapImageRep.h"
#include "image/JpegScaledDecoder_p.h"
#include "image/PngScaledDecoder_p.h"
#include "support/Failure.h"

#include <QFile>
#include <algorithm>
#include <cmath>
#include <mutex>

using vips::VError;
using vips::VImage;

namespace orvel {

namespace {

// Pictures with more source pixels than this are refused before decoding: a decompression bomb
// (a tiny file declaring gigapixels) must not exhaust the machine.
constexpr double MaxSourcePixels = 4294967296.0; // 2^32
// Whole decodes (not streamed into a small thumbnail) are limited further: 4 bytes a pixel.
constexpr double MaxDecodedPixels = 536870912.0; // 2^29, 2 GiB of RGBA

// vips_foreign_find_load() answers a class name ("VipsForeignLoadJpegFile"); the nickname
// ("jpegload_file" or "jpegload") without its source suffix says which options the loader takes.
QString stripLoaderSuffix(const char *className)
{
    const char *nick = vips_nickname_find(g_type_from_name(className));
    QString name = QString::fromLatin1(nick ? nick : className);
    for (const char *suffix : { "_buffer", "_source", "_file" })
        if (name.endsWith(QLatin1String(suffix)))
            name.chop(qstrlen(suffix));
    return name;
}

// Loaders that hold the whole picture in memory whatever is asked of them (GIF's canvas, the
// ImageMagick, HEIF, JPEG 2000 and JPEG XL decoders): for them a streamed thumbnail costs a whole
// decode, so the whole-decode limit applies from the header on. A 77-byte GIF whose one frame is
// placed far off its screen grows the GIF canvas to gigapixels.
bool decodesWhole(const QString &loader)
{
    for (const char *name : { "gifload", "magickload", "heifload", "jp2kload", "jxlload" })
        if (loader == QLatin1String(name))
            return true;
    return false;
}

// The power of two (at most 8) a JPEG is shrunk by on load, given the whole shrink wanted.
int jpegShrinkFactor(double shrink)
{
    int s = 1;
    while (s < 8 && s * 2 <= shrink)
        s *= 2;
    return s;
}

int clampInt(long long v, int lo, int hi) { return int(std::clamp<long long>(v, lo, hi)); }

} // namespace

bool ensureVips()
{
    static const bool started = [] {
        if (vips_init("orvel") != 0)
            return false;
        return true;
    }();
    return started;
}

QString vipsErrorText(const VError &error)
{
    QString text = QString::fromUtf8(error.what()).trimmed();
    vips_error_clear();
    // libvips prefixes each line with the operation's name; the first line says what went wrong.
    qsizetype nl = text.indexOf(u'\n');
    if (nl > 0)
        text.truncate(nl);
    return text.isEmpty() ? QStringLiteral("the decoder failed") : text;
}

std::shared_ptr<ImageSource> ImageSource::open(
    const QString &path, int maxPixelSize, bool withTransform, QString *error)
{
    std::shared_ptr<ImageSource> source(new ImageSource);
    source->m_path = path;
    return source->start(maxPixelSize, withTransform, error) ? source : nullptr;
}

std::shared_ptr<ImageSource> ImageSource::openData(
    const QByteArray &data, int maxPixelSize, bool withTransform, QString *error)
{
    if (data.isEmpty())
        return failure<std::shared_ptr<ImageSource>>(error, QStringLiteral("no data"));
    std::shared_ptr<ImageSource> source(new ImageSource);
    source->m_data = data;
    return source->start(maxPixelSize, withTransform, error) ? source : nullptr;
}

bool ImageSource::start(int maxPixelSize, bool withTransform, QString *error)
{
    if (!ensureVips())
        m_error = QStringLiteral("the image library could not start");
    else if (const char *loader = m_data.isEmpty()
            ? vips_foreign_find_load(QFile::encodeName(m_path).constData())
            : vips_foreign_find_load_buffer(m_data.constData(), size_t(m_data.size())))
        m_loader = stripLoaderSuffix(loader);
    else
        m_error = QStringLiteral("not a picture that can be decoded");
    vips_error_clear();
    if (m_loader.isEmpty())
        return failure(error, m_error);
    // Some loaders (GIF's) read the whole file with the header.
    if (!readHeader(maxPixelSize, withTransform)
        && !(tolerateDamage() && readHeader(maxPixelSize, withTransform)))
        return failure(error, m_error);
    return true;
}

bool ImageSource::readHeader(int maxPixelSize, bool withTransform)
{
    try {
        VImage header = load(1.0, false);
        m_rawWidth = header.width();
        m_rawHeight = header.height();
        if (m_rawWidth <= 0 || m_rawHeight <= 0) {
            m_error = QStringLiteral("the picture is empty");
            return false;
        }
        const double limit = decodesWhole(m_loader) ? MaxDecodedPixels : MaxSourcePixels;
        if (double(m_rawWidth) * double(m_rawHeight) > limit) {
            m_error = QStringLiteral("picture too large (%1 × %2 pixels)").arg(m_rawWidth).arg(m_rawHeight);
            return false;
        }
        if (header.get_typeof(VIPS_META_ORIENTATION) != 0)
            m_orientation = std::clamp(header.get_int(VIPS_META_ORIENTATION), 1, 8);
        m_applyOrientation = withTransform;
        const bool swap = withTransform && m_orientation >= 5;
        int w = swap ? m_rawHeight : m_rawWidth;
        int h = swap ? m_rawWidth : m_rawHeight;
        const int longSide = std::max(w, h);
        if (maxPixelSize > 0 && longSide > maxPixelSize) {
            const double scale = double(maxPixelSize) / longSide;
            w = std::max(1, int(std::lround(w * scale)));
            h = std::max(1, int(std::lround(h * scale)));
        }
        m_width = w;
        m_height = h;
        m_hasAlpha = header.has_alpha();

        const VipsInterpretation interpretation = header.interpretation();
        QString model = QStringLiteral("RGB");
        if (interpretation == VIPS_INTERPRETATION_B_W || interpretation == VIPS_INTERPRETATION_GREY16)
            model = QStringLiteral("Gray");
        else if (interpretation == VIPS_INTERPRETATION_CMYK)
            model = QStringLiteral("CMYK");
        else if (interpretation == VIPS_INTERPRETATION_LAB || interpretation == VIPS_INTERPRETATION_LABS)
            model = QStringLiteral("Lab");
        int depth = 8;
        switch (header.format()) {
        case VIPS_FORMAT_USHORT:
        case VIPS_FORMAT_SHORT:
            depth = 16;
            break;
        case VIPS_FORMAT_UINT:
        case VIPS_FORMAT_INT:
        case VIPS_FORMAT_FLOAT:
            depth = 32;
            break;
        case VIPS_FORMAT_DOUBLE:
            depth = 64;
            break;
        default:
            break;
        }
        m_properties = {
            { QStringLiteral("PixelWidth"), m_rawWidth },
            { QStringLiteral("PixelHeight"), m_rawHeight },
            { QStringLiteral("Orientation"), m_orientation },
            { QStringLiteral("HasAlpha"), m_hasAlpha },
            { QStringLiteral("Depth"), depth },
            { QStringLiteral("ColorModel"), model },
            { QStringLiteral("DPIWidth"), header.xres() * 25.4 },
            { QStringLiteral("DPIHeight"), header.yres() * 25.4 },
            { QStringLiteral("Loader"), m_loader },
        };
        if (header.get_typeof(VIPS_META_ICC_NAME) != 0)
            m_properties.insert(QStringLiteral("HasProfile"), true);
        return true;
    } catch (const VError &e) {
        m_error = vipsErrorText(e);
        return false;
    }
}

namespace {

quint32 bigEndian32(const QByteArray &d, qsizetype at)
{
    return quint32(uchar(d[at])) << 24 | quint32(uchar(d[at + 1])) << 16 | quint32(uchar(d[at + 2])) << 8
        | uchar(d[at + 3]);
}

/// Where the picture data of a JPEG, PNG or GIF begins (its first scan, image data chunk or
/// image), found by walking the format's own segments; -1 when the data never gets there.
qsizetype pictureDataStart(const QByteArray &d, const QString &loader)
{
    if (loader == u"jpegload") {
        qsizetype at = 2; // after the start-of-image marker
        while (at + 4 <= d.size() && uchar(d[at]) == 0xFF) {
            const uchar marker = uchar(d[at + 1]);
            const qsizetype length = qsizetype(uchar(d[at + 2])) << 8 | uchar(d[at + 3]);
            if (marker == 0xDA) // start of scan
                return at + 2 + length;
            at += 2 + length;
        }
    } else if (loader == u"pngload") {
        qsizetype at = 8; // after the signature
        while (at + 8 <= d.size()) {
            if (d.mid(at + 4, 4) == "IDAT")
                return at + 8;
            at += 12 + qsizetype(bigEndian32(d, at));
        }
    } else if (loader == u"gifload" && d.size() >= 13) {
        qsizetype at = 13; // after the header and the screen descriptor
        if (uchar(d[10]) & 0x80)
            at += 3 * (qsizetype(2) << (uchar(d[10]) & 7)); // the global colour table
        while (at < d.size()) {
            if (uchar(d[at]) == 0x2C) // an image
                return at + 10;
            if (uchar(d[at]) != 0x21 || at + 2 > d.size()) // neither image nor extension
                return -1;
            at += 2; // extension introducer and label, then its sub-blocks up to an empty one
            while (at < d.size() && uchar(d[at]) != 0)
                at += 1 + uchar(d[at]);
            ++at;
        }
    }
    return -1;
}

} // namespace

bool ImageSource::tolerateDamage()
{
    if (m_tolerateDamage)
        return false; // tried already
    QByteArray data = m_data;
    if (data.isEmpty()) {
        QFile file(m_path);
        if (file.open(QIODevice::ReadOnly))
            data = file.read(64 * 1024 * 1024);
    }
    // At least a little of the first scan, chunk or image must be there: a file cut right after
    // its header has nothing to show and keeps failing.
    constexpr qsizetype MinimumPictureData = 256;
    const qsizetype start = pictureDataStart(data, m_loader);
    if (start < 0 || data.size() - start < MinimumPictureData)
        return false;
    vips_error_clear();
    m_tolerateDamage = true;
    return true;
}

VImage ImageSource::load(double shrink, bool sequential) const
{
    // Pixels of a JPEG come straight from libjpeg at the reduced scale where it can.
    VImage direct;
    if (sequential && m_loader == QLatin1String("jpegload")
        && loadScaledJpeg(m_path, m_data, jpegShrinkFactor(shrink), m_tolerateDamage, direct))
        return direct;
    vips::VOption *options
        = VImage::option()
              ->set("access", sequential ? VIPS_ACCESS_SEQUENTIAL : VIPS_ACCESS_RANDOM)
              ->set("fail_on", m_tolerateDamage ? VIPS_FAIL_ON_NONE : VIPS_FAIL_ON_TRUNCATED);
    // Shrink-on-load where the loader offers it: JPEG by powers of two, WebP and SVG by any factor.
    if (shrink >= 2.0 && m_loader == QLatin1String("jpegload")) {
        options->set("shrink", jpegShrinkFactor(shrink));
    } else if (shrink > 1.0
        && (m_loader == QLatin1String("webpload") || m_loader == QLatin1String("svgload"))) {
        options->set("scale", 1.0 / shrink);
    }
    if (!m_data.isEmpty())
        return VImage::new_from_buffer(m_data.constData(), size_t(m_data.size()), "", options);
    return VImage::new_from_file(QFile::encodeName(m_path).constData(), options);
}

// Colour to sRGB, 8 bits per sample, at most RGBA: ICC profiles and CMYK are converted so colours are right.
VImage ImageSource::finish(VImage image) const
{
    const VipsInterpretation interpretation = image.interpretation();
    const bool hasProfile = image.get_typeof(VIPS_META_ICC_NAME) != 0;
    if (hasProfile || interpretation == VIPS_INTERPRETATION_CMYK) {
        try {
            image = image.icc_transform("srgb",
                VImage::option()
                    ->set("embedded", true)
                    ->set("input_profile", interpretation == VIPS_INTERPRETATION_CMYK ? "cmyk" : "srgb")
                    ->set("intent", VIPS_INTENT_PERCEPTUAL)
                    ->set("depth", 8));
        } catch (const VError &) {
            vips_error_clear(); // a broken profile: fall back to the plain conversion below
        }
    }
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB || image.format() != VIPS_FORMAT_UCHAR) {
        try {
            image = image.colourspace(VIPS_INTERPRETATION_sRGB);
        } catch (const VError &) {
            vips_error_clear(); // no colour meaning (multiband data): show the first bands as they are
        }
    }
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    if (image.bands() == 1)
        image = VImage::bandjoin({ image, image, image });
    else if (image.bands() == 2)
        image = VImage::bandjoin({ image[0], image[0], image[0], image[1] });
    else if (image.bands() > 4)
        image = image.extract_band(0, VImage::option()->set("n", 4));
    return image;
}

namespace {

VImage roundToUchar(VImage image)
{
    if (image.format() == VIPS_FORMAT_UCHAR)
        return image;
    return image.linear(1.0, 0.5).cast(VIPS_FORMAT_UCHAR);
}

VImage exactSize(VImage image, int w, int h)
{
    if (image.width() == w && image.height() == h)
        return image;
    return image.embed(0, 0, w, h, VImage::option()->set("extend", VIPS_EXTEND_COPY));
}

// libvips reports a decoder error inside a threaded pipeline (a truncated JPEG, say) as a warning
// and fills the tile; the error text still lands in the error buffer, so that is checked too.
/// The pixels of image; an error libvips reports on the way fails it, unless damage is tolerated,
/// where the loader's complaints about the damage are only warnings.
void *writeChecked(VImage image, size_t *size, bool tolerateDamage)
{
    vips_error_clear();
    void *memory = image.write_to_memory(size);
    const char *pending = vips_error_buffer();
    if (tolerateDamage && memory)
        vips_error_clear();
    else if (pending && *pending) {
        g_free(memory);
        throw VError(pending);
    }
    return memory;
}

VImage orient(VImage image, int orientation)
{
    if (orientation <= 1)
        return image;
    image = image.copy();
    image.set(VIPS_META_ORIENTATION, orientation);
    return image.autorot();
}

} // namespace

bool ImageSource::decodeInto(BitmapImageRep &rep)
{
    if (decodeOnce(rep))
        return true;
    return tolerateDamage() && decodeOnce(rep);
}

bool ImageSource::decodeOnce(BitmapImageRep &rep)
{
    if (double(m_width) * double(m_height) > MaxDecodedPixels) {
        m_error
            = QStringLiteral("picture too large to decode whole (%1 × %2 pixels)").arg(m_width).arg(m_height);
        return false;
    }
    try {
        const bool swap = m_applyOrientation && m_orientation >= 5;
        const int tw = swap ? m_height : m_width;
        const int th = swap ? m_width : m_height;
        const double shrink = std::min(double(m_rawWidth) / tw, double(m_rawHeight) / th) / 2.0;
        VImage image = finish(load(shrink, true));
        const bool alpha = image.bands() == 4;
        if (alpha)
            image = image.premultiply();
        if (image.width() != tw || image.height() != th)
            image = exactSize(image.resize(double(tw) / image.width(),
                                  VImage::option()
                                      ->set("vscale", double(th) / image.height())
                                      ->set("kernel", VIPS_KERNEL_LANCZOS3)),
                tw, th);
        image = roundToUchar(image);
        if (m_applyOrientation)
            image = orient(image, m_orientation);
        size_t size = 0;
        void *memory = writeChecked(image, &size, m_tolerateDamage);
        if (!memory) {
            m_error = QStringLiteral("out of memory");
            return false;
        }
        rep.m_pixels.reset(static_cast<unsigned char *>(memory));
        rep.m_width = image.width();
        rep.m_height = image.height();
        rep.m_bitsPerSample = 8;
        rep.m_samplesPerPixel = alpha ? 4 : 3;
        rep.m_bitsPerPixel = alpha ? 32 : 24;
        rep.m_bytesPerRow = qsizetype(rep.m_width) * rep.m_samplesPerPixel;
        rep.m_planar = false;
        rep.m_hasAlpha = alpha;
        rep.m_bitmapFormat = 0;
        return true;
    } catch (const VError &e) {
        m_error = vipsErrorText(e);
        return false;
    }
}

QImage ImageSource::renderScaled(int w, int h)
{
    if (w <= 0 || h <= 0)
        return {};
    QImage image = renderScaledOnce(w, h);
    if (image.isNull() && tolerateDamage())
        image = renderScaledOnce(w, h);
    return image;
}

QImage ImageSource::renderScaledOnce(int w, int h)
{
    try {
        const bool swap = m_applyOrientation && m_orientation >= 5;
        const int tw = swap ? h : w;
        const int th = swap ? w : h;
        // Leave at least a factor of two for the final Lanczos step.
        const double shrink = std::min(double(m_rawWidth) / tw, double(m_rawHeight) / th) / 2.0;
        // A PNG is shrunk as libpng decodes its rows, in integers, unless it needs what libvips does.
        using Png = PngScaledDecoder;
        ShrunkPicture small;
        const Png::Outcome png = m_loader != u"pngload"
            ? Png::Outcome::Unsupported
            : Png::decode(m_path, m_data, tw, th, MaxSourcePixels,
                m_tolerateDamage ? Png::Damage::Tolerate : Png::Damage::Fail, &small, &m_error);
        if (png == Png::Outcome::Failed)
            return {};
        const bool shrunk = png == Png::Outcome::Decoded;
        VImage image = shrunk ? vipsImageFromBuffer(small.pixels.data(), small.width, small.height,
                           small.bands, small.width * small.bands)
                              : finish(load(shrink, true));
        const bool alpha = image.bands() == 4;
        if (alpha && !shrunk) // the shrunk PNG is premultiplied already
            image = image.premultiply();
        if (!shrunk && m_loader == QLatin1String("jpegload") && image.bands() == 3
            && image.format() == VIPS_FORMAT_UCHAR && double(image.width()) * image.height() <= 4194304.0) {
            // A JPEG decoded at a reduced scale is small: resampled directly, for a fraction of what
            // the library's threaded resize costs on it.
            size_t size = 0;
            std::unique_ptr<void, decltype(&g_free)> pixels(
                writeChecked(image, &size, m_tolerateDamage), g_free);
            unsigned char *resampled = lanczos3Resample(
                static_cast<const unsigned char *>(pixels.get()), image.width(), image.height(), 3, tw, th);
            if (!resampled)
                throw VError("out of memory");
            image
                = VImage::new_from_memory_steal(resampled, size_t(tw) * th * 3, tw, th, 3, VIPS_FORMAT_UCHAR);
        } else {
            // The shrunk picture's last column and row may stand for fewer source pixels than a box.
            const double across = shrunk ? double(m_rawWidth) / small.factor : image.width();
            const double down = shrunk ? double(m_rawHeight) / small.factor : image.height();
            image = image.resize(
                tw / across, VImage::option()->set("vscale", th / down)->set("kernel", VIPS_KERNEL_LANCZOS3));
        }
        image = roundToUchar(exactSize(image, tw, th));
        if (m_applyOrientation)
            image = orient(image, m_orientation);
        return qimageFromVips(image, m_tolerateDamage);
    } catch (const VError &e) {
        m_error = vipsErrorText(e);
        return {};
    }
}

VImage vipsImageFromBuffer(const unsigned char *data, int width, int height, int bands, qsizetype bytesPerRow)
{
    const qsizetype tight = qsizetype(width) * bands;
    if (bytesPerRow == tight)
        return VImage::new_from_memory(const_cast<unsigned char *>(data), size_t(tight) * height, width,
            height, bands, VIPS_FORMAT_UCHAR);
    // Padded rows: libvips wants them tight, so copy into a buffer that the new image owns.
    auto *rows = static_cast<unsigned char *>(malloc(size_t(tight) * height));
    if (!rows)
        throw vips::VError("out of memory");
    for (int y = 0; y < height; ++y)
        memcpy(rows + size_t(y) * tight, data + qsizetype(y) * bytesPerRow, size_t(tight));
    return VImage::new_from_memory_steal(
        rows, size_t(tight) * height, width, height, bands, VIPS_FORMAT_UCHAR);
}

QImage qimageFromVips(VImage image, bool tolerateDamage)
{
    const int bands = image.bands();
    if ((bands != 3 && bands != 4) || image.format() != VIPS_FORMAT_UCHAR)
        return {};
    size_t size = 0;
    void *memory = writeChecked(image, &size, tolerateDamage);
    if (!memory)
        return {};
    const int w = image.width();
    const int h = image.height();
    return QImage(
        static_cast<uchar *>(memory), w, h, qsizetype(w) * bands,
        bands == 4 ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGB888,
        [](void *p) { g_free(p); }, memory);
}

QImage lanczosResize(const QImage &source, int w, int h)
{
    if (source.isNull() || w <= 0 || h <= 0)
        return {};
    QImage image = source;
    const bool alpha = image.hasAlphaChannel();
    const QImage::Format format = alpha ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGB888;
    if (image.format() != format)
        image = image.convertToFormat(format);
    try {
        VImage in = vipsImageFromBuffer(
            image.constBits(), image.width(), image.height(), alpha ? 4 : 3, image.bytesPerLine());
        VImage out = in.resize(double(w) / image.width(),
            VImage::option()->set("vscale", double(h) / image.height())->set("kernel", VIPS_KERNEL_LANCZOS3));
        // The result must not refer to image's buffer once this function returns.
        return qimageFromVips(roundToUchar(exactSize(out, w, h)));
    } catch (const VError &e) {
        vips_error_clear(); // the answer is empty; the message is not kept
        return {};
    }
}

QByteArray encodeWithVips(VImage image, int fileType, float compression, bool tiffLzw)
{
    const double factor = double(compression);
    const int quality = clampInt(std::lround(factor * 100.0), 1, 100);
    const int effort = clampInt(std::lround(9.0 * (1.0 - factor)), 0, 9);
    try {
        image = image.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
        VipsBlob *blob = nullptr;
        switch (fileType) {
        case TIFFFileType: {
            vips::VOption *o = VImage::option()->set("strip", true);
            if (tiffLzw)
                o->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_LZW)
                    ->set("predictor", VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL);
            else if (factor < 1.0)
                o->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE)
                    ->set("level", std::max(1, effort))
                    ->set("predictor", VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL);
            blob = image.tiffsave_buffer(o);
            break;
        }
        case BMPFileType:
            blob = image.magicksave_buffer(VImage::option()->set("format", "bmp")->set("strip", true));
            break;
        case GIFFileType:
            blob = image.gifsave_buffer(VImage::option()
                                            ->set("effort", clampInt(1 + std::lround(factor * 9.0), 1, 10))
                                            ->set("bitdepth", 8)
                                            ->set("strip", true));
            break;
        case JPEGFileType:
            if (image.bands() == 4) // no alpha in JPEG: compose on white
                image
                    = image
                          .flatten(VImage::option()->set("background", std::vector<double> { 255, 255, 255 }))
                          .cast(VIPS_FORMAT_UCHAR);
            blob = image.jpegsave_buffer(
                VImage::option()->set("Q", quality)->set("optimize_coding", true)->set("strip", true));
            break;
        case PNGFileType:
            blob = image.pngsave_buffer(VImage::option()->set("compression", effort)->set("strip", true));
            break;
        case JPEG2000FileType:
            blob = image.jp2ksave_buffer(
                VImage::option()->set("Q", quality)->set("lossless", factor >= 1.0)->set("strip", true));
            break;
        default:
            return {};
        }
        if (!blob)
            return {};
        size_t size = 0;
        const void *bytes = vips_blob_get(blob, &size);
        QByteArray data(static_cast<const char *>(bytes), qsizetype(size));
        vips_area_unref(VIPS_AREA(blob));
        return data;
    } catch (const VError &e) {
        vips_error_clear(); // the answer is empty; the message is not kept
        return {};
    }
}

} // namespace orvel
