// Image: a picture of a size in points held as one or more representations, with the toolkit's
// classification, loading, geometry, rendering and encoding operations.
#pragma once

#include "image/BitmapImageRep.h"
#include "image/GraphicsContext.h"
#include "image/ImageRep.h"

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <memory>
#include <optional>
#include <vector>

class QMimeData;

namespace orvel {

class Bundle;
class Image;
class PDFImageRep;
class EPSImageRep;
using ImagePtr = std::shared_ptr<Image>;

/// A picture. Images are shared objects: an operation that answers "the image itself" answers the
/// same pointer. Drawing operations draw into the current GraphicsContext.
class Image : public std::enable_shared_from_this<Image>
{
public:
    Image();
    explicit Image(QSizeF size);
    ~Image();

    // --- Construction ------------------------------------------------------------------------
    /// An empty image of the size in points.
    [[nodiscard]] static ImagePtr initWithSize(QSizeF size);
    /// An image that reads the file when first needed (PDF, PostScript family, or any bitmap file).
    [[nodiscard]] static ImagePtr initByReferencingFile(const QString &path);
    /// An image holding one representation, sized like it.
    [[nodiscard]] static ImagePtr imageWithRepresentation(ImageRepPtr rep);
    /// An image from encoded data (any format libvips reads, PDF, PostScript); null on failure.
    [[nodiscard]] static ImagePtr initWithData(const QByteArray &data);
    /// An image of the size into which image is drawn with drawImageInRect; null on failure.
    [[nodiscard]] static ImagePtr initWithImage(const Image &image, QSizeF size);
    /// An image of the size (or of the rectangle's size) holding the part of image inside rect.
    [[nodiscard]] static ImagePtr initWithImageFromRect(const Image &image, QRectF fromRect, QSizeF size);
    [[nodiscard]] static ImagePtr initWithImageFromRect(const Image &image, QRectF fromRect);
    /// An image whose size in points is the picture's pixel size; null for a null picture.
    [[nodiscard]] static ImagePtr imageWithCGImageRef(const QImage &picture);

    // --- Representations ---------------------------------------------------------------------
    /// The representations, reading a referenced file first if needed.
    const std::vector<ImageRepPtr> &representations() const;
    void addRepresentation(ImageRepPtr rep);
    void removeRepresentation(const ImageRepPtr &rep);
    /// Removes the representations from the last to the first.
    void removeAllRepresentations();
    /// The representation best suited to drawing into rect: the bitmap whose pixel size suits the
    /// rectangle best (the smallest at least as large, else the largest), else the first one.
    [[nodiscard]] ImageRepPtr bestRepresentationForRect(QRectF rect) const;

    [[nodiscard]] std::shared_ptr<orvel::PDFImageRep> PDFImageRep() const;
    [[nodiscard]] std::shared_ptr<orvel::EPSImageRep> EPSImageRep() const;
    [[nodiscard]] ImageRepPtr PICTImageRep() const;
    [[nodiscard]] BitmapImageRepPtr bitmapImageRep() const;
    [[nodiscard]] ImageRepPtr cachedImageRep() const;
    [[nodiscard]] ImageRepPtr imageRepOfKind(ImageRep::Kind kind) const;
    bool isEPSImage() const { return EPSImageRep() != nullptr; }
    bool isPICTImage() const { return PICTImageRep() != nullptr; }
    bool isBitmapImage() const { return bitmapImageRep() != nullptr; }
    bool isScalableImage() const;
    bool isPDFImage() const;
    /// Icon-reference bitmaps do not exist on this platform: logs "Class %@ not found." and answers false.
    bool isIconRefBitmapImage() const;
    [[nodiscard]] ImageRepPtr iconRefBitmapImageRep() const;

    // --- Attributes --------------------------------------------------------------------------
    /// The size in points (reading a referenced file first if needed).
    [[nodiscard]] QSizeF size() const;
    void setSize(QSizeF size);
    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    /// The colour painted under transparent parts when drawn; clear by default.
    [[nodiscard]] QColor backgroundColor() const { return m_background; }
    void setBackgroundColor(QColor colour) { m_background = colour; }
    bool scalesWhenResized() const { return m_scalesWhenResized; }
    void setScalesWhenResized(bool scales) { m_scalesWhenResized = scales; }
    bool isFlipped() const { return m_flipped; }
    void setFlipped(bool flipped) { m_flipped = flipped; }
    /// The file the image references, if it was made by referencing one.
    [[nodiscard]] QString referencedPath() const { return m_path; }
    /// Why the last lazy load of a referenced file failed, for messages; empty when it did not fail.
    [[nodiscard]] QString loadError() const;
    /// Why the image could not be read or drawn, for messages; empty when nothing failed.
    [[nodiscard]] QString drawError() const;

    // --- Geometry ----------------------------------------------------------------------------
    /// Both sides positive and at least one representation.
    bool isReallyValid() const;
    /// The size of the widest representation in pixels; the size in points when that is (0, 0).
    [[nodiscard]] QSizeF pixelSize() const;
    /// Fits size into box keeping the aspect ratio, never enlarging; sides rounded down, at least 1.
    [[nodiscard]] static QSizeF thumb(QSizeF box, QSizeF size);
    [[nodiscard]] QSizeF thumbSize(QSizeF box) const;
    /// pixelSize times factor, rounded down; pixelSize unchanged for a factor of 0 or less.
    [[nodiscard]] QSizeF scaledSize(double factor) const;
    double aspectRatio() const;
    [[nodiscard]] QRectF bounds() const;
    bool hasAlpha() const;

    // --- Rendering ---------------------------------------------------------------------------
    /// Renders into a fresh 8-bit RGBA premultiplied bitmap of exactly the pixel size; null for a side
    /// that is not positive or when the image could not be drawn (drawError() then says why).
    [[nodiscard]] ImagePtr bitmapImageWithPixelSize(
        QSizeF size, bool shouldAntialias, int interpolation) const;
    [[nodiscard]] QByteArray TIFFRepresentationWithPixelSize(
        QSizeF size, bool shouldAntialias, int interpolation) const;
    [[nodiscard]] ImagePtr bitmapImageWithSize(QSizeF size, bool shouldAntialias, int interpolation) const;
    [[nodiscard]] QByteArray TIFFRepresentationWithSize(
        QSizeF size, bool shouldAntialias, int interpolation) const;
    [[nodiscard]] ImagePtr bitmapImageWithSize(QSizeF size) const;
    /// A new image made from the receiver's TIFF data.
    [[nodiscard]] ImagePtr bitmapImage() const;
    [[nodiscard]] ImagePtr imageWithSize(QSizeF size) const;
    [[nodiscard]] ImagePtr thumbForSize(QSizeF box) const;
    void scaleToThumbSize(QSizeF box);
    /// The image centred unscaled on a transparent square whose side is its longer side.
    [[nodiscard]] ImagePtr squareImage() const;
    /// JPEG data at compression 0.75.
    [[nodiscard]] QByteArray snapshotData() const;
    [[nodiscard]] ImagePtr imageFromRect(QRectF rect, double fraction) const;

    // --- Encoding ----------------------------------------------------------------------------
    [[nodiscard]] QByteArray representationUsingType(int fileType, float compression) const;
    [[nodiscard]] BitmapImageRepPtr createBitmapImageRepIfNecessary() const;
    /// TIFF data of the whole image (its bitmap, or a rendering of it); LZW compressed when lzw is set.
    [[nodiscard]] QByteArray TIFFRepresentation(bool lzw = false) const;
    /// The most faithful data of the image and its extension ("pdf", "eps", "pict" or "tiff").
    [[nodiscard]] QByteArray bestRepresentationAndFileExtension(QString *extension) const;
    [[nodiscard]] QByteArray bestRepresentation() const;
    [[nodiscard]] QString pathExtensionForBestRepresentation() const;

    // --- Drawing -----------------------------------------------------------------------------
    /// Fills rect with the background colour, then draws rep into it.
    bool drawRepresentation(const ImageRepPtr &rep, QRectF rect) const;
    /// Draws the part fromRect (the whole image when empty) into rect.
    void drawInRect(QRectF rect, QRectF fromRect, CompositingOperation op, double fraction) const;
    void drawAtPoint(QPointF point, QRectF fromRect, CompositingOperation op, double fraction) const;
    void drawBestRepresentationInRect(QRectF rect) const;
    QRectF drawCenteredInRect(QRectF rect, QRectF fromRect, CompositingOperation op, double fraction) const;
    void drawInRect(QRectF rect, QRectF fromRect, CompositingOperation op, double fraction,
        bool tileHorizontal, bool tileVertical, bool center) const;
    void drawFlippedAtPoint(QPointF point, CompositingOperation op, double fraction = 1.0) const;
    void drawFlippedInRect(QRectF rect, CompositingOperation op, double fraction = 1.0) const;
    void drawScaledInRect(QRectF rect, bool flip, CompositingOperation op, double fraction = 1.0) const;
    void drawScaledInRect(
        QRectF rect, bool flip, CompositingOperation op, double fraction, const QColor *shadow) const;
    void drawScaledInRectWithShadow(QRectF rect, bool flip, CompositingOperation op, bool withShadow) const;
    /// The standard drop shadow for images.
    [[nodiscard]] static QColor imageShadow();

    // --- Focused drawing ---------------------------------------------------------------------
    /// Makes a transparent bitmap of the image's size the current drawing destination.
    bool lockFocus();
    void unlockFocus();

    // --- Classification (class methods) ------------------------------------------------------
    static const QStringList &ImageFileTypes();
    [[nodiscard]] static QStringList PDFFileTypes();
    [[nodiscard]] static QStringList PDFBundleTypes();
    static bool isImageExtension(const QString &extension, const QString &type);
    static bool isImageFile(const QString &path);
    /// What the content of a file is, for a file whose name tells nothing.
    enum class ContentKind { None, Document, Picture };
    /// The kind of the file at path by its first bytes: a document (PDF, PostScript, DOS EPS by
    /// their headers), a picture (a loader of libvips recognises it), or none of them.
    [[nodiscard]] static ContentKind contentKindOfFile(const QString &path);
    static bool isWebImageExtension(const QString &extension);
    static bool isUTIImageFile(const QString &path);
    static bool isPostScriptExtension(const QString &extension);
    static bool isPostScriptFile(const QString &path);
    static bool isPDFExtension(const QString &extension, const QString &type);
    static bool isPDFFile(const QString &path);
    static bool isRealPDFExtension(const QString &extension, const QString &type);
    static bool isRealPDFFile(const QString &path);
    static bool isPDFBundleExtension(const QString &extension);
    static bool isPDFBundle(const QString &path);
    [[nodiscard]] static QString pathToPDF(const QString &path);
    [[nodiscard]] static QString pathExtensionForType(const QString &type);
    [[nodiscard]] static QString pathExtensionForData(const QByteArray &data);

    // --- Loading (class methods) -------------------------------------------------------------
    /// Decodes image 0 of the file, the long side limited to maxPixelSize, orientation applied when
    /// withTransform is set; properties (when given) receive the file's metadata. Null on failure.
    [[nodiscard]] static ImagePtr thumbnailForFile(const QString &path, int maxPixelSize,
        bool alwaysFromImage, bool withTransform, QVariantMap *properties = nullptr,
        QString *error = nullptr);
    [[nodiscard]] static ImagePtr thumbnailForFile(const QString &path, int maxPixelSize);
    [[nodiscard]] static ImagePtr imageAtPath(const QString &path);
    [[nodiscard]] static ImagePtr initWithDownloadedData(const QByteArray &data);

    // --- Pasteboard --------------------------------------------------------------------------
    [[nodiscard]] static ImagePtr initWithPasteboardIcon(const QMimeData *pasteboard);
    [[nodiscard]] static ImagePtr initWithPasteboard(const QMimeData *pasteboard);
    static bool canProbablyInitWithPasteboard(const QMimeData *pasteboard);
    void pasteboardProvideDataForType(QMimeData *pasteboard, const QString &type) const;

    // --- Named images ------------------------------------------------------------------------
    [[nodiscard]] static ImagePtr imageNamed(const QString &name);
    [[nodiscard]] static ImagePtr cachedImageNamed(const QString &name);
    [[nodiscard]] static ImagePtr cachedImageNamed(const QString &name, QSizeF size);
    [[nodiscard]] static ImagePtr cachedImageNamedInBundle(const QString &name, const Bundle &bundle);
    [[nodiscard]] static ImagePtr imageNamedInBundle(const QString &name, const Bundle &bundle);

    // --- Filters (ImageFilters.cpp) ------------------------------------------------------------
    // Each sends the bitmap filter of the same name to every bitmap representation, in order.
    /// True as soon as one bitmap representation can be filtered.
    bool canFilter() const;
    void scaleWithDivisor(float divisor, float offset);
    void applyMatrixFilter(const int32_t *matrix, int32_t divisor, int32_t offset,
        BitmapImageRep::MatrixCallback callback = nullptr);
    void applyMatrixesFilter(const int32_t *matrixes, int count, int size, int32_t divisor, int32_t offset,
        BitmapImageRep::MatrixCallback callback = nullptr);
    void applyStatisticalFilter(BitmapImageRep::StatisticalCallback callback, bool mono);
    void applyNormalizeFilter(BitmapImageRep::NormalizeCallback callback, bool mono);
    void applySampleFilter(BitmapImageRep::SampleCallback callback);
    void applyPixelFilter(BitmapImageRep::PixelCallback callback);
    void applyInterlaceFilter(unsigned shift);
    void grayScale(bool thresholdMode, unsigned threshhold);
    void edgeDetect(bool addToImage);
    void medianFilter(unsigned size);
    void makeTransparentGray(float grey, float threshhold);
    void makeTransparentRed(float red, float green, float blue, float threshhold);
    /// Bitmaps without alpha are first replaced by a copy with alpha, added at the end of the list.
    void makeTransparentSample1(float sample1, float sample2, float sample3, float sample4, float threshhold);
    void tintGray(float grey);
    void tintRed(float red, float green, float blue);
    void tintSample1(float sample1, float sample2, float sample3, float sample4);
    void sharpenLight();
    void sharpenMedium();
    void sharpenStrong();

    // --- Effects (ImageEffects.cpp) ------------------------------------------------------------
    /// Fills the image with colour through op, in place; an invalid colour (nil) does nothing.
    void tintWithColor(const QColor &colour, CompositingOperation op);
    /// A tinted copy; the image itself for an invalid colour; null when it cannot be copied.
    [[nodiscard]] ImagePtr tintedImageWithColor(const QColor &colour, CompositingOperation op);
    /// A new image holding the negative of the first representation; null when there is none.
    [[nodiscard]] ImagePtr negativeImage() const;
    /// A new image with a mirrored reflection strip of fraction × height below the picture.
    [[nodiscard]] ImagePtr imageByAddingReflection(float fraction) const;

private:
    void loadReferencedFile() const;

    mutable std::vector<ImageRepPtr> m_reps;
    mutable QSizeF m_size;
    mutable bool m_sizeSet = false;
    mutable bool m_pendingLoad = false;
    mutable QString m_loadError;
    QString m_path;
    QString m_name;
    QColor m_background = Qt::transparent;
    bool m_scalesWhenResized = true;
    bool m_flipped = false;
    QImage m_focusImage;
    std::unique_ptr<QPainter> m_focusPainter;
    std::unique_ptr<GraphicsContext> m_focusContext;
};

/// Draws image into rect of the current context: vector representations on white, bitmaps with
/// alpha over the image's background colour, others as they are.
/// Answers false when nothing could be drawn (a picture that fails to decode, say).
bool drawImageInRect(const Image &image, QRectF rect);
/// Draws image flipped vertically about rect.
void drawFlippedInRect(
    const Image &image, CompositingOperation op, double fraction, QRectF rect, QRectF fromRect);

} // namespace orvel
