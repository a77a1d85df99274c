// Not API: the libvips side of the image module (lazy sources, pixel conversion, encoders).
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QVariantMap>
#include <memory>
#include <vips/vips8>

namespace orvel {

class BitmapImageRep;

/// Makes sure libvips is started (idempotent, thread-safe).
bool ensureVips();

/// An image file opened through libvips: its header is read at once, its pixels only when asked for.
/// Pixels come out in sRGB, 8 bits per sample, alpha premultiplied, the orientation applied when asked.
class ImageSource
{
public:
    /// Opens a file; null (with a one-line reason in error) when libvips cannot read it.
    [[nodiscard]] static std::shared_ptr<ImageSource> open(
        const QString &path, int maxPixelSize, bool withTransform, QString *error = nullptr);
    /// The same over encoded data held in memory.
    [[nodiscard]] static std::shared_ptr<ImageSource> openData(
        const QByteArray &data, int maxPixelSize, bool withTransform, QString *error = nullptr);

    /// The pixel size of the decoded picture: oriented, the long side limited to the maximum.
    int width() const { return m_width; }
    int height() const { return m_height; }
    bool hasAlpha() const { return m_hasAlpha; }
    /// The file's metadata (pixel size, orientation, depth, colour model, resolution, loader).
    [[nodiscard]] QVariantMap properties() const { return m_properties; }
    [[nodiscard]] QString lastError() const { return m_error; }

    /// Decodes the whole picture into rep (premultiplied RGBA when it has alpha, else RGB).
    bool decodeInto(BitmapImageRep &rep);
    /// The picture scaled to exactly w × h with the Lanczos filter, decoded at the smallest scale
    /// that keeps the result (shrink-on-load to at least twice the target first). Null on failure.
    [[nodiscard]] QImage renderScaled(int w, int h);

private:
    ImageSource() = default;
    bool start(int maxPixelSize, bool withTransform, QString *error);
    bool decodeOnce(BitmapImageRep &rep);
    QImage renderScaledOnce(int w, int h);
    bool readHeader(int maxPixelSize, bool withTransform);
    vips::VImage load(double shrink, bool sequential) const;
    /// After a decode failed: whether the file holds the start of its picture data, so that a
    /// decoder told to go on past damage gives rows of the picture; switches that on when so.
    bool tolerateDamage();
    vips::VImage finish(vips::VImage image) const;

    QString m_path;
    QByteArray m_data;
    QString m_loader;
    int m_rawWidth = 0;
    int m_rawHeight = 0;
    int m_orientation = 1;
    bool m_applyOrientation = true;
    int m_width = 0;
    int m_height = 0;
    bool m_hasAlpha = false;
    QVariantMap m_properties;
    QString m_error;
    // Decode what a truncated or damaged file holds instead of failing on it.
    bool m_tolerateDamage = false;
};

/// Wraps a premultiplied 8-bit RGBA or RGB buffer (rows may be padded) as a libvips image without copying.
vips::VImage vipsImageFromBuffer(
    const unsigned char *data, int width, int height, int bands, qsizetype bytesPerRow);
/// Resizes a premultiplied 8-bit image to exactly w × h with the Lanczos filter.
[[nodiscard]] QImage lanczosResize(const QImage &image, int w, int h);
/// Copies a libvips image of 8-bit RGB or RGBA into a QImage (RGB888 or RGBA8888_Premultiplied).
/// The pixels of image (3 or 4 bands of 8 bits); with tolerateDamage, a loader's complaints on the
/// way are warnings.
[[nodiscard]] QImage qimageFromVips(vips::VImage image, bool tolerateDamage = false);
/// Encodes straight-alpha 8-bit RGB(A) pixels in a bitmap file type; empty for an unknown type or failure.
[[nodiscard]] QByteArray encodeWithVips(
    vips::VImage image, int fileType, float compression, bool tiffLzw = false);
/// The one-line text of the last libvips error (the library's own message, trimmed).
[[nodiscard]] QString vipsErrorText(const vips::VError &error);

} // namespace orvel
