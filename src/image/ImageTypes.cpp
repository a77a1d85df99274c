// Image: classification of paths as images, PDF and PostScript-family documents, and the mapping of
// type codes, MIME types and file contents to file extensions.
#include "image/Image.h"
#include "image/ImageTypes_p.h"
#include "image/VipsBridge_p.h"

#include "files/FileManager.h"
#include "files/FinderInfo.h"
#include "strings/FastCompare.h"

#include <QFileInfo>
#include <QMimeDatabase>
#include <QMimeType>
#include <QSet>

#include <algorithm>
#include <array>

namespace orvel {

namespace {

// Extension and type comparisons: extensions ignore case (through the upper-case table, as every
// case-insensitive comparison of the toolkit does), HFS type codes are exact.
bool sameExtension(const QString &a, QStringView b) { return isEqualToStringNoCase(b, a); }

// Loaders whose files are not pictures a user would drop, or that another library reads for us:
// - csvload, matrixload, matload: numbers in text or Matlab files, not pictures;
// - rawload: headerless pixel dumps, no suffix and nothing to recognise them by;
// - analyzeload: medical volumes whose ".img" is far more often a disk image;
// - pdfload: PDF documents are classified and drawn separately (Poppler);
// - openslideload: gigapixel microscope scans, several of them spread over sidecar files, whose
//   suffixes (".scn", ".bif", ".vms") mostly belong to unrelated formats.
constexpr std::array kLeftOutLoaders { "csvload", "matrixload", "matload", "rawload", "analyzeload",
    "pdfload", "openslideload" };

// Suffixes that a kept loader lists but that mostly name something else: vipsload's ".v" is far
// more often Verilog or Coq source than a libvips image (".vips" stays).
constexpr std::array kLeftOutSuffixes { "v" };

// The raster formats that the ImageMagick-backed loader reads and that the other loaders do not
// list; magickload has no suffix list of its own, it sniffs the contents.
constexpr std::array kMagickFormats { "bmp", "dib", "ico", "cur", "psd", "tga", "pcx", "dcx", "xpm", "xbm",
    "xwd", "pbm", "pgm", "ppm", "pnm", "pam", "sgi", "ras", "dds", "pict", "pct", "wbmp", "mng", "jng" };

struct HFSTypeRow
{
    const char *type;
    const char *extension;
};

// The HFS type codes and their extensions, searched in order. The "'.SGI'" row stands twice on
// purpose: the table is kept exactly as it has always been.
constexpr std::array<HFSTypeRow, 16> kHFSTypes { {
    { "'PDF '", "pdf" },
    { "'TIFF'", "tiff" },
    { "'BMPf'", "bmp" },
    { "'BMP '", "bmp" },
    { "'GIFf'", "gif" },
    { "'JPEG'", "jpeg" },
    { "'PICT'", "pict" },
    { "'PNGf'", "png" },
    { "'qtif'", "qtif" },
    { "'TPIC'", "tga" },
    { "'.SGI'", "sgi" },
    { "'8BPS'", "psd" },
    { "'PNTG'", "pntg" },
    { "'jp2 '", "jp2" },
    { "'.SGI'", "sgi" },
    { "'FPix'", "fpix" },
} };

struct MIMESubtypeRow
{
    const char *subtype;
    const char *extension;
};

constexpr std::array<MIMESubtypeRow, 14> kMIMESubtypes { {
    { "postscript", "ps" },
    { "photoshop", "psd" },
    { "portable-anymap", "pnm" },
    { "portable-bitmap", "pbm" },
    { "portable-graymap", "pgm" },
    { "portable-pixmap", "ppm" },
    { "xbitmap", "xbm" },
    { "xpixmap", "xpm" },
    { "xwindowdump", "xwd" },
    { "svg-xml", "svg" },
    { "cis-cod", "cod" },
    { "vasa", "mcf" },
    { "cmu-raster", "ras" },
    { "freehand", "fh" },
} };

struct Signature
{
    QByteArrayView bytes;
    const char *extension;
};

const std::array<Signature, 9> kSignatures { {
    { "%PDF", "pdf" },
    { "ftypjp2", "jp2" },
    { "\x89PNG", "png" },
    { "GIF87", "gif" },
    { "GIF89", "gif" },
    { "JFIF", "jpeg" },
    { "JPEG", "jpeg" },
    { "TIFF", "tiff" },
    { "Photoshop", "psd" },
} };

struct LoaderScan
{
    QStringList extensions;
    QSet<QString> seen;
    bool magick = false;

    void add(const QString &extension)
    {
        if (!extension.isEmpty() && !seen.contains(extension)) {
            seen.insert(extension);
            extensions.append(extension);
        }
    }
};

void *scanLoader(void *item, void *a, void *)
{
    auto *cls = static_cast<VipsForeignClass *>(item);
    auto *scan = static_cast<LoaderScan *>(a);
    const QByteArray nickname = VIPS_OBJECT_CLASS(cls)->nickname;
    for (const char *leftOut : kLeftOutLoaders) {
        if (nickname.startsWith(leftOut))
            return nullptr;
    }
    if (nickname.startsWith("magickload"))
        scan->magick = true;
    for (const char *const *suffix = cls->suffs; suffix && *suffix; ++suffix) {
        QString extension = QString::fromUtf8(*suffix).toLower();
        if (extension.startsWith(u'.'))
            extension.remove(0, 1);
        // A double suffix such as ".svg.gz" can never equal a path's (last) extension.
        if (extension.contains(u'.'))
            continue;
        if (std::any_of(kLeftOutSuffixes.begin(), kLeftOutSuffixes.end(),
                [&](const char *leftOut) { return extension == QLatin1StringView(leftOut); }))
            continue;
        scan->add(extension);
    }
    return nullptr;
}

QStringList buildImageFileTypes()
{
    QStringList types;
    if (ensureVips()) {
        LoaderScan scan;
        // Loaders are visited by falling priority, so the usual formats come first.
        vips_foreign_map("VipsForeignLoad", scanLoader, &scan, nullptr);
        if (scan.magick) {
            for (const char *format : kMagickFormats)
                scan.add(QString::fromLatin1(format));
        }
        // Lower case is enough: extensions are always compared ignoring case.
        types = scan.extensions;
        QSet<QString> codes;
        for (const HFSTypeRow &row : kHFSTypes) {
            const QString code = QString::fromLatin1(row.type);
            if (scan.seen.contains(QString::fromLatin1(row.extension)) && !codes.contains(code)) {
                codes.insert(code);
                types.append(code);
            }
        }
    }
    types << QStringLiteral("jpe") << QStringLiteral("JPE") << QStringLiteral("ps") << QStringLiteral("PS")
          << QStringLiteral("eps") << QStringLiteral("EPS") << QStringLiteral("ai") << QStringLiteral("AI");
    return types;
}

} // namespace

QString pathExtensionOfPath(QStringView path)
{
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == u'/')
        --end;
    const QStringView trimmed = path.left(end);
    const QStringView name = trimmed.mid(trimmed.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    // A name that starts with its only dot (".bashrc") is hidden, not extended.
    if (dot <= 0)
        return QString();
    return name.mid(dot + 1).toString();
}

const QStringList &Image::ImageFileTypes()
{
    static const QStringList types = buildImageFileTypes();
    return types;
}

QStringList Image::PDFFileTypes()
{
    return { QStringLiteral("'PDF '"), QStringLiteral("pdf"), QStringLiteral("PDF"), QStringLiteral("ps"),
        QStringLiteral("PS"), QStringLiteral("eps"), QStringLiteral("EPS"), QStringLiteral("ai"),
        QStringLiteral("AI") };
}

QStringList Image::PDFBundleTypes() { return { QStringLiteral("pdfd"), QStringLiteral("PDFD") }; }

bool Image::isImageExtension(const QString &extension, const QString &type)
{
    const QStringList &types = ImageFileTypes();
    if (!type.isEmpty()) {
        for (const QString &entry : types) {
            if (sameExtension(entry, extension) || entry == type)
                return true;
        }
        return false;
    }
    for (const QString &entry : types) {
        if (sameExtension(entry, extension))
            return true;
    }
    return false;
}

bool Image::isImageFile(const QString &path)
{
    if (path.isEmpty())
        return false;
    return isImageExtension(pathExtensionOfPath(path), HFSTypeOfFile(path));
}

bool Image::isWebImageExtension(const QString &extension)
{
    if (extension.size() == 3) {
        for (const char *web : { "jpg", "jpe", "jp2", "gif", "png" }) {
            if (extension.compare(QLatin1StringView(web), Qt::CaseInsensitive) == 0)
                return true;
        }
        return false;
    }
    return extension.size() == 4 && extension.compare(QLatin1StringView("jpeg"), Qt::CaseInsensitive) == 0;
}

bool Image::isUTIImageFile(const QString &path)
{
    if (path.isEmpty())
        return false;
    // Only regular files: sniffing a FIFO or a device would block or read forever.
    const QFileInfo info(path);
    if (!info.isFile())
        return false;
    const QMimeType mime = QMimeDatabase().mimeTypeForFile(info, QMimeDatabase::MatchDefault);
    if (!mime.isValid() || mime.isDefault())
        return false;
    bool isImage = mime.name().startsWith(QLatin1StringView("image/"));
    if (!isImage) {
        const QStringList ancestors = mime.allAncestors();
        isImage = std::any_of(ancestors.begin(), ancestors.end(),
            [](const QString &ancestor) { return ancestor.startsWith(QLatin1StringView("image/")); });
    }
    if (!isImage || !ensureVips())
        return false;
    if (vips_foreign_find_load(QFile::encodeName(path).constData()))
        return true;
    vips_error_clear();
    return false;
}

bool Image::isPostScriptExtension(const QString &extension)
{
    return sameExtension(QStringLiteral("ps"), extension) || sameExtension(QStringLiteral("eps"), extension)
        || sameExtension(QStringLiteral("ai"), extension);
}

bool Image::isPostScriptFile(const QString &path) { return isPostScriptExtension(pathExtensionOfPath(path)); }

bool Image::isPDFExtension(const QString &extension, const QString &type)
{
    return type == QLatin1StringView("'PDF '") || sameExtension(QStringLiteral("pdf"), extension)
        || isPostScriptExtension(extension);
}

bool Image::isPDFFile(const QString &path)
{
    if (path.isEmpty())
        return false;
    return isPDFExtension(pathExtensionOfPath(path), HFSTypeOfFile(path));
}

bool Image::isRealPDFExtension(const QString &extension, const QString &type)
{
    return sameExtension(QStringLiteral("pdf"), extension) || type == QLatin1StringView("'PDF '");
}

bool Image::isRealPDFFile(const QString &path)
{
    if (path.isEmpty())
        return false;
    return isRealPDFExtension(pathExtensionOfPath(path), HFSTypeOfFile(path));
}

bool Image::isPDFBundleExtension(const QString &extension)
{
    return sameExtension(QStringLiteral("pdfd"), extension);
}

bool Image::isPDFBundle(const QString &path) { return isPDFBundleExtension(pathExtensionOfPath(path)); }

QString Image::pathToPDF(const QString &path)
{
    if (!isPDFBundle(path))
        return path;
    QString folder = path;
    while (folder.size() > 1 && folder.endsWith(u'/'))
        folder.chop(1);
    const QString name = folder.mid(folder.lastIndexOf(u'/') + 1);
    const QString extension = pathExtensionOfPath(name);
    const QString inner
        = folder + u'/' + name.left(name.size() - extension.size() - 1) + QLatin1StringView(".pdf");
    if (QFileInfo::exists(inner))
        return inner;
    const QStringList pdfs
        = FileManager::directoryContentsAtPathMatchingExtension(folder, QStringLiteral("pdf"), false);
    if (!pdfs.isEmpty())
        return folder + u'/' + pdfs.first();
    return path;
}

QString Image::pathExtensionForType(const QString &type)
{
    if (type.isEmpty())
        return QString();
    if (type.size() == 6 && type.front() == u'\'' && type.back() == u'\'') {
        for (const HFSTypeRow &row : kHFSTypes) {
            if (type == QLatin1StringView(row.type))
                return QString::fromLatin1(row.extension);
        }
        return QString();
    }
    if (type.count(u'/') != 1)
        return type;
    QString subtype = type.mid(type.indexOf(u'/') + 1);
    if (subtype.size() < 2)
        return QString();
    if (subtype.startsWith(QLatin1StringView("x-")))
        subtype.remove(0, 2);
    if (subtype.size() < 2)
        return QString();
    const qsizetype dot = subtype.lastIndexOf(u'.');
    if (dot >= 0)
        subtype = subtype.mid(dot + 1);
    // "image/foo." leaves nothing to look up; an empty fragment would otherwise match every row.
    if (subtype.isEmpty())
        return QString();
    for (const MIMESubtypeRow &row : kMIMESubtypes) {
        const QLatin1StringView known(row.subtype);
        const bool matches = subtype.size() < known.size() ? known.contains(subtype, Qt::CaseInsensitive)
                                                           : subtype.compare(known, Qt::CaseInsensitive) == 0;
        if (matches)
            return QString::fromLatin1(row.extension);
    }
    return subtype;
}

QString Image::pathExtensionForData(const QByteArray &data)
{
    if (data.size() < 4)
        return QString();
    const QByteArrayView head = QByteArrayView(data).first(std::min<qsizetype>(data.size(), 1024));
    for (const Signature &signature : kSignatures) {
        if (head.contains(signature.bytes))
            return QString::fromLatin1(signature.extension);
    }
    return QString();
}

} // namespace orvel
