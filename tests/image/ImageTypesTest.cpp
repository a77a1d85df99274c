// Tests of the classification of paths and the mapping of types and contents to extensions.
#include "files/FinderInfo.h"
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <gtest/gtest.h>
#include <vips/vips8>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;

namespace {

bool hasVipsOperation(const char *nickname) { return vips_type_find("VipsOperation", nickname) != 0; }

/// Gives the file an HFS type code; false when this file system keeps no user extended attributes.
bool setType(const QString &path, const char *code)
{
    return setHFSTypeCodeOfFile(path, fileTypeCodeFromString(QString::fromLatin1(code)));
}

} // namespace

TEST(ImageFileTypes, HoldTheCommonFormatsAndTheirTypeCodesButNoDocumentsOrTables)
{
    const QStringList &types = Image::ImageFileTypes();
    EXPECT_TRUE(types.contains(u"tiff"_s) && types.contains(u"'PNGf'"_s));
    for (const char *absent : { "pdf", "csv", "mat", "img", "v", "", ".jpg", "svg.gz" })
        EXPECT_FALSE(types.contains(QLatin1StringView(absent), Qt::CaseInsensitive)) << absent;
    EXPECT_FALSE(types.contains(u"'PDF '"_s));
}

TEST(ImageClassification, ExtensionsIgnoreCaseButTypeCodesKeepIt)
{
    EXPECT_TRUE(Image::isImageExtension(u"PnG"_s, QString()));
    EXPECT_TRUE(Image::isImageExtension(u"dat"_s, u"'JPEG'"_s));
    EXPECT_FALSE(Image::isImageExtension(u"dat"_s, u"'jpeg'"_s));
    EXPECT_TRUE(Image::isImageExtension(u"JPG"_s, u"'xxxx'"_s));
    EXPECT_FALSE(Image::isImageExtension(QString(), u"'xxxx'"_s));
    // A prefix or a longer form of an entry is no match.
    EXPECT_FALSE(Image::isImageExtension(u"jp"_s, QString()));
    EXPECT_FALSE(Image::isImageExtension(u"pngx"_s, QString()));
    EXPECT_TRUE(Image::isPDFExtension(QString(), u"'PDF '"_s));
    EXPECT_FALSE(Image::isPDFExtension(QString(), u"'pdf '"_s));
    EXPECT_FALSE(Image::isPDFExtension(u"pdfd"_s, QString()));
    for (const char *web : { "JPEG", "Jpe", "jp2", "GIF", "png" })
        EXPECT_TRUE(Image::isWebImageExtension(QLatin1StringView(web))) << web;
    for (const char *other : { "tiff", "jpeg2", "jp", "webp", "" })
        EXPECT_FALSE(Image::isWebImageExtension(QLatin1StringView(other))) << other;
}

TEST(ImageClassification, ExtraEntriesMakeJPEAndPostScriptFamilyImages)
{
    TempDir dir;
    const QString photo = dir.file(u"photo.JPE"_s);
    ASSERT_TRUE(orvel::test::writeTestImage(photo + u".jpg"_s, 8, 8));
    ASSERT_TRUE(QFile::rename(photo + u".jpg"_s, photo));
    EXPECT_TRUE(Image::isImageFile(photo));

    const QString drawing = dir.file(u"drawing.Ai"_s);
    ASSERT_TRUE(orvel::test::writeTestEps(drawing, 20, 10, Qt::red));
    EXPECT_TRUE(Image::isImageFile(drawing));
    EXPECT_TRUE(Image::isPDFFile(drawing));
    EXPECT_TRUE(Image::isPostScriptFile(drawing));
    EXPECT_FALSE(Image::isRealPDFFile(drawing));
}

TEST(ImageClassification, PathExtensionIsTheLastDotOfTheLastComponent)
{
    EXPECT_TRUE(Image::isImageFile(u"/no/such/folder/archive.tar.png"_s));
    EXPECT_TRUE(Image::isImageFile(u"/no/such/folder.png/"_s));
    EXPECT_FALSE(Image::isImageFile(u"/no/such/folder.png/readme"_s));
    EXPECT_FALSE(Image::isImageFile(u"/no/such/.png"_s));
    EXPECT_FALSE(Image::isImageFile(u"/no/such/photo."_s));
    EXPECT_FALSE(Image::isImageFile(QString()));
    EXPECT_TRUE(Image::isPDFBundle(u"/x/Report.PDFD/"_s));
    EXPECT_FALSE(Image::isPDFBundle(u"/x/.pdfd"_s));
}

TEST(ImageClassification, FileTypeCodesClassifyFilesWithUnknownExtensions)
{
    TempDir dir;
    const QString mystery = dir.file(u"mystery.dat"_s), document = dir.file(u"document.bin"_s);
    for (const QString &path : { mystery, document })
        ASSERT_TRUE(orvel::test::writeBytes(path, "data"));
    if (!setType(mystery, "JPEG"))
        GTEST_SKIP() << "the temporary folder's file system keeps no user extended attributes";
    ASSERT_TRUE(setType(document, "PDF "));

    EXPECT_TRUE(Image::isImageFile(mystery));
    EXPECT_FALSE(Image::isPDFFile(mystery));
    EXPECT_TRUE(Image::isPDFFile(document));
    EXPECT_TRUE(Image::isRealPDFFile(document));
    EXPECT_FALSE(Image::isPostScriptFile(document));
}

struct ModernFormat
{
    const char *extension;
    const char *loader;
};

using ModernFormats = testing::TestWithParam<ModernFormat>;

TEST_P(ModernFormats, CountAsImagesWhenTheInstalledLibvipsLoadsThem)
{
    const ModernFormat format = GetParam();
    if (!hasVipsOperation(format.loader))
        GTEST_SKIP() << "no " << format.loader << " in this libvips";
    TempDir dir;
    const QString path = dir.file(u"picture."_s + QLatin1StringView(format.extension));
    if (QLatin1StringView(format.extension) == QLatin1StringView("svg")) {
        ASSERT_TRUE(orvel::test::writeBytes(path,
            "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"8\" "
            "height=\"8\"><rect width=\"8\" height=\"8\"/></svg>\n"));
    } else if (!orvel::test::writeTestImage(path, 16, 16)) {
        GTEST_SKIP() << "this libvips cannot write " << format.extension;
    }
    EXPECT_TRUE(Image::isImageFile(path));
    EXPECT_TRUE(Image::isImageExtension(QString::fromLatin1(format.extension).toUpper(), QString()));
    EXPECT_TRUE(Image::isUTIImageFile(path));
}

INSTANTIATE_TEST_SUITE_P(Loaders, ModernFormats,
    testing::Values(ModernFormat { "webp", "webpload" }, ModernFormat { "heic", "heifload" },
        ModernFormat { "avif", "heifload" }, ModernFormat { "jxl", "jxlload" },
        ModernFormat { "svg", "svgload" }),
    [](const testing::TestParamInfo<ModernFormat> &info) { return std::string(info.param.extension); });

TEST(ImageClassification, UTIImageFileNeedsAnImageTypeThatLibvipsReads)
{
    TempDir dir;
    const QString png = dir.file(u"picture.png"_s);
    ASSERT_TRUE(orvel::test::writeTestImage(png, 8, 8));
    EXPECT_TRUE(Image::isUTIImageFile(png));

    // Named like a picture but holding text: no loader takes it.
    const QString fake = dir.file(u"fake.png"_s);
    ASSERT_TRUE(orvel::test::writeBytes(fake, "this is not a picture\n"));
    EXPECT_FALSE(Image::isUTIImageFile(fake));

    // libvips reads PDF, but a PDF is a document, not an image.
    const QString pdf = dir.file(u"page.pdf"_s);
    ASSERT_TRUE(orvel::test::writeTestPdf(pdf, 72, 72, Qt::blue));
    EXPECT_FALSE(Image::isUTIImageFile(pdf));

    EXPECT_FALSE(Image::isUTIImageFile(dir.file(u"missing.png"_s)));
}

TEST(PathToPDF, PrefersTheFileNamedLikeTheBundleThenAnyPDFThenTheBundle)
{
    TempDir dir;
    const QString bundle = dir.file(u"Report.PDFD"_s);
    ASSERT_TRUE(QDir().mkpath(bundle));
    EXPECT_EQ(Image::pathToPDF(bundle), bundle);
    ASSERT_TRUE(orvel::test::writeBytes(bundle + u"/notes.txt"_s, "notes"));
    ASSERT_TRUE(orvel::test::writeBytes(bundle + u"/Appendix.PDF"_s, "%PDF-1.4\n"));
    EXPECT_EQ(Image::pathToPDF(bundle), bundle + u"/Appendix.PDF"_s);
    ASSERT_TRUE(orvel::test::writeBytes(bundle + u"/Report.pdf"_s, "%PDF-1.4\n"));
    EXPECT_EQ(Image::pathToPDF(bundle + u'/'), bundle + u"/Report.pdf"_s);

    // A folder that is no PDF bundle is left alone, whatever it holds.
    const QString folder = dir.file(u"Report"_s);
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(orvel::test::writeBytes(folder + u"/Report.pdf"_s, "%PDF-1.4\n"));
    EXPECT_EQ(Image::pathToPDF(folder), folder);
}

TEST(PathExtensionForType, MapsCodesAndMIMETypes)
{
    // The type and the extension it gives (nullptr: none).
    const std::pair<const char *, const char *> cases[] = { { "'8BPS'", "psd" }, { "'jp2 '", "jp2" },
        { "'jpeg'", nullptr }, { "'ABCD'", nullptr }, { "", nullptr }, { "png", "png" }, { "'PNGf", "'PNGf" },
        { "a/b/c", "a/b/c" }, { "image/x", nullptr }, { "image/x-q", nullptr }, { "image/x-qq", "qq" },
        { "image/png", "png" }, { "image/vnd.adobe.photoshop", "psd" }, { "application/PostScript", "ps" },
        // A subtype found inside a longer known one counts, case ignored; a longer one must match whole.
        { "image/x-ANYMAP", "pnm" }, { "image/x-xwindowdumps", "xwindowdumps" }, { "image/svg-xml", "svg" },
        { "image/svg+xml", "svg+xml" }, { "image/foo.", nullptr } };
    for (const auto &[type, extension] : cases) {
        const QString result = Image::pathExtensionForType(QString::fromLatin1(type));
        EXPECT_EQ(result, extension ? QString::fromLatin1(extension) : QString()) << type;
        EXPECT_EQ(result.isNull(), !extension) << type;
    }
}

TEST(PathExtensionForData, FindsTheFirstSignatureInListOrderAnywhereInTheFirstKilobyte)
{
    EXPECT_EQ(Image::pathExtensionForData(QByteArray(100, 'x') + "GIF89a"), u"gif"_s);
    EXPECT_TRUE(Image::pathExtensionForData(QByteArray(1020, 'x') + "GIF89a").isNull());
    EXPECT_TRUE(Image::pathExtensionForData("GIF").isNull());
    EXPECT_TRUE(Image::pathExtensionForData(QByteArray(2048, '\0')).isNull());
    EXPECT_EQ(Image::pathExtensionForData("JFIF....%PDF-1.4"), u"pdf"_s);
    EXPECT_EQ(Image::pathExtensionForData(QByteArray("\x89PNG\r\n\x1a\n....TIFF")), u"png"_s);
    EXPECT_EQ(Image::pathExtensionForData("8BPS....Photoshop 3.0"), u"psd"_s);
    EXPECT_TRUE(Image::pathExtensionForData("PNG without its first byte").isNull());
}
