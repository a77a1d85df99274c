// PDFImageRep and EPSImageRep: vector representations, rendered through Poppler (PostScript by way
// of a PDF made by Ghostscript).
#pragma once

#include "image/ImageRep.h"

#include <QByteArray>
#include <QImage>
#include <memory>
#include <mutex>

namespace Poppler {
class Document;
}

namespace orvel {

/// The first page of a PDF document. Drawn on white at the destination's own resolution.
class PDFImageRep : public ImageRep
{
public:
    /// A representation of the document's first page; null (with a reason in error) when the data is
    /// not a readable PDF, is locked, or has no page.
    [[nodiscard]] static std::shared_ptr<PDFImageRep> imageRepWithData(
        const QByteArray &data, QString *error = nullptr);
    ~PDFImageRep() override;

    Kind kind() const override { return Kind::PDF; }
    [[nodiscard]] QString className() const override { return QStringLiteral("NSPDFImageRep"); }
    bool hasAlpha() const override { return true; }
    bool drawInRect(const QRectF &rect) override;

    /// The document's bytes.
    [[nodiscard]] QByteArray PDFRepresentation() const { return m_data; }
    /// The page's rectangle in points.
    [[nodiscard]] QRectF bounds() const { return QRectF(QPointF(0, 0), size()); }
    int pageCount() const;
    /// The first page rendered to exactly w × h pixels on white; null on failure.
    [[nodiscard]] QImage renderPage(int w, int h) const;

private:
    PDFImageRep() = default;
    QByteArray m_data;
    std::unique_ptr<Poppler::Document> m_document;
    mutable std::mutex m_mutex; // Poppler documents are not reentrant
};

/// A PostScript, EPS or Illustrator document. Converted to a PDF by Ghostscript (-dSAFER, with a time
/// limit) when first drawn or measured without a bounding box; the PDF form is kept.
class EPSImageRep : public ImageRep
{
public:
    /// A representation of the document; null when the data is not PostScript.
    [[nodiscard]] static std::shared_ptr<EPSImageRep> imageRepWithData(
        const QByteArray &data, QString *error = nullptr);
    ~EPSImageRep() override;

    Kind kind() const override { return Kind::EPS; }
    [[nodiscard]] QString className() const override { return QStringLiteral("NSEPSImageRep"); }
    bool hasAlpha() const override { return true; }
    bool drawInRect(const QRectF &rect) override;

    /// The document's bytes.
    [[nodiscard]] QByteArray EPSRepresentation() const { return m_data; }
    /// The bounding box in points, as the document declares it; empty when it declares none.
    [[nodiscard]] QRectF boundingBox() const { return m_boundingBox; }
    /// The kept PDF form, or null when it was not made yet.
    [[nodiscard]] std::shared_ptr<orvel::PDFImageRep> PDFImageRep() const;
    /// The kept PDF form, converting the document first if needed; null when conversion failed.
    [[nodiscard]] std::shared_ptr<orvel::PDFImageRep> initializePDFImageRep();
    /// The PDF data of the kept form; empty when there is none.
    [[nodiscard]] QByteArray PDFRepresentation() const;
    /// Why the conversion failed; empty when it did not.
    [[nodiscard]] QString conversionError() const { return m_error; }

    /// Seconds Ghostscript may take to convert one document.
    static int conversionTimeLimit();
    static void setConversionTimeLimit(int seconds);

private:
    EPSImageRep() = default;
    QByteArray m_data;
    QRectF m_boundingBox;
    std::shared_ptr<orvel::PDFImageRep> m_pdf;
    bool m_triedConversion = false;
    QString m_error;
};

/// Converts PostScript data to PDF with Ghostscript; empty (with a reason) on failure or time-out.
[[nodiscard]] QByteArray convertPostScriptToPDF(
    const QByteArray &postScript, bool encapsulated, int timeLimitSeconds, QString *error = nullptr);

/// Draws page 1 of PostScript data, the part inside the bounding box given (in points), with
/// Ghostscript at exactly the pixel size given (white paper); null (with a reason) on failure or time-out.
[[nodiscard]] QImage renderPostScriptPage(const QByteArray &postScript, QRectF boundingBox, QSize pixels,
    int timeLimitSeconds, QString *error = nullptr);

} // namespace orvel
