// Not API: JPEG pictures decoded straight at a reduced scale, for thumbnails.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vips/vips8>

namespace orvel {

/// A JPEG picture decoded into one tightly packed buffer of 8-bit samples.
struct ScaledJpeg
{
    struct FreeDeleter
    {
        void operator()(unsigned char *p) const { std::free(p); }
    };
    /// Rows of width × bands bytes, malloc'd (so a libvips image can take it over).
    std::unique_ptr<unsigned char, FreeDeleter> pixels;
    int width = 0;
    int height = 0;
    /// 1 (grey), 3 (RGB) or 4 (CMYK, not inverted).
    int bands = 0;
    /// The embedded colour profile, empty when there is none.
    QByteArray iccProfile;
};

enum class JpegDecodeResult {
    Decoded,
    /// Damaged or refused (too large, too many scans); the reason is in error.
    Failed,
    /// Something this decoder leaves to the general one (an odd precision, colour model or coding).
    Unsupported,
};

/// Decodes JPEG data at 1/scale (scale 1, 2, 4 or 8) into out. With tolerateDamage, the decoder's
/// complaints about damaged or missing data are ignored and what decodes is kept; without, they
/// fail it. Single-scan pictures whose decoded size exceeds maxPixels are left Unsupported.
[[nodiscard]] JpegDecodeResult decodeScaledJpeg(const unsigned char *data, size_t size, int scale,
    bool tolerateDamage, double maxPixels, ScaledJpeg &out, QString *error = nullptr);

/// The JPEG file at path (read in blocks; or its data, when not empty) decoded at 1/scale as a libvips image
/// that owns its pixels and carries what the library's own loader would give the colour conversion after it:
/// the colour interpretation and the embedded profile. False (image untouched) for what is left to the
/// library's loader: an unusual file, or one too large to hold decoded in one buffer. Throws vips::VError
/// when the picture is damaged (see decodeScaledJpeg) or refused.
bool loadScaledJpeg(
    const QString &path, const QByteArray &data, int scale, bool tolerateDamage, vips::VImage &image);

/// src (inW × inH pixels of bands 8-bit samples, rows tight) resampled to outW × outH with the
/// Lanczos 3 filter, widened by the reduction factor when reducing (centres aligned, edges extended).
/// A malloc'd buffer of outW × outH × bands bytes; null when out of memory.
[[nodiscard]] unsigned char *lanczos3Resample(
    const unsigned char *src, int inW, int inH, int bands, int outW, int outH);

} // namespace orvel
