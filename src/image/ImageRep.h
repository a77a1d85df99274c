// ImageRep: one representation of an image (a bitmap, a PDF page, a PostScript document).
#pragma once

#include <QRectF>
#include <QSizeF>
#include <QString>
#include <memory>

class QPainter;

namespace orvel {

/// One form of an image's content. An Image holds one or more representations.
class ImageRep
{
public:
    enum class Kind { Bitmap, PDF, EPS, PICT, Cached, Other };

    virtual ~ImageRep();

    virtual Kind kind() const = 0;
    /// The platform class name of the representation (used by the drawing rules that test names).
    [[nodiscard]] virtual QString className() const = 0;

    /// The size in points.
    [[nodiscard]] QSizeF size() const { return m_size; }
    void setSize(QSizeF size) { m_size = size; }
    /// Pixel width and height; 0 for representations without pixels (PDF, EPS).
    virtual int pixelsWide() const { return 0; }
    virtual int pixelsHigh() const { return 0; }
    virtual bool hasAlpha() const { return true; }

    /// Draws the whole representation into rect of the current graphics context.
    /// Answers false when nothing could be drawn.
    virtual bool drawInRect(const QRectF &rect) = 0;

    bool isBitmap() const { return kind() == Kind::Bitmap; }

protected:
    ImageRep() = default;
    QSizeF m_size;
};

using ImageRepPtr = std::shared_ptr<ImageRep>;

} // namespace orvel
