// Not API: PNG pictures decoded a row at a time and box-shrunk as the rows come, for thumbnails.
#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace orvel {

/// A small picture made from a PNG: 8 bits per sample, RGB or premultiplied RGBA, rows tight.
struct ShrunkPicture
{
    std::vector<unsigned char> pixels;
    int width = 0;
    int height = 0;
    int bands = 0; // 3 or 4
    int factor = 1; // source pixels per side of a box; the last column and row may have fewer
};

/// Decodes PNGs through libpng one row at a time, never holding the whole picture: each row is
/// made 8-bit RGB or RGBA, premultiplied, and summed into a box shrink by a whole factor.
class PngScaledDecoder
{
public:
    enum class Outcome {
        Decoded, ///< the picture is in the result
        Unsupported, ///< a file this shortcut does not render as the general path would: use that one
        Failed, ///< the file is damaged (or unreadable); the reason is in the error
    };
    enum class Damage {
        Fail, ///< any decoder error fails the decode
        Tolerate, ///< rows decoded before an error are kept, the rest left transparent black
    };

    /// Shrinks the PNG at path (or held in data, when that is not empty) by the largest whole factor
    /// that leaves at least twice targetWidth × targetHeight, for a final resize to that size.
    /// Interlaced files, files with a colour profile, files with more than maxSourcePixels and
    /// targets that leave nothing to shrink are Unsupported.
    [[nodiscard]] static Outcome decode(const QString &path, const QByteArray &data, int targetWidth,
        int targetHeight, double maxSourcePixels, Damage damage, ShrunkPicture *result,
        QString *error = nullptr);

    /// The whole factor decode() shrinks a width × height picture by for the target (1: none).
    [[nodiscard]] static int shrinkFactor(int width, int height, int targetWidth, int targetHeight);
};

} // namespace orvel
