// BitmapFileType: the codes of the bitmap output formats and their file extensions.
#pragma once

#include <QString>

namespace orvel {

/// Bitmap file types: the output formats and their codes.
enum BitmapImageFileType {
    TIFFFileType = 0,
    BMPFileType = 1,
    GIFFileType = 2,
    JPEGFileType = 3,
    PNGFileType = 4,
    JPEG2000FileType = 5
};

/// The file extension written for a bitmap file type; null for an unknown code. Kept free of the
/// image module's libraries so that a program that only names outputs need not load them.
[[nodiscard]] inline QString bitmapFileTypeExtension(int fileType)
{
    switch (fileType) {
    case TIFFFileType:
        return QStringLiteral("tiff");
    case BMPFileType:
        return QStringLiteral("bmp");
    case GIFFileType:
        return QStringLiteral("gif");
    case JPEGFileType:
        return QStringLiteral("jpg");
    case PNGFileType:
        return QStringLiteral("png");
    case JPEG2000FileType:
        return QStringLiteral("jp2");
    default:
        return {};
    }
}

} // namespace orvel
