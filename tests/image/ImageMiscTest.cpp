// Tests of images from pasteboards and of the named-image caches.
#include "image/Image.h"
#include "support/Bundle.h"
#include "testlib/TestSupport.h"

#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QMimeData>
#include <QResource>
#include <QUrl>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace orvel;
using orvel::test::TempDir;

namespace {

/// A w×h test picture encoded in the format of the extension.
QByteArray encodedPicture(const char *extension, int w, int h)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("picture.") + QLatin1StringView(extension));
    return orvel::test::writeTestImage(path, w, h) ? orvel::test::readBytes(path) : QByteArray();
}

QList<QUrl> fileUrls(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    return urls;
}

/// A bundle identifier of its own for each test run: the caches outlive a test (and --gtest_repeat).
QString identifier(const char *stem, const TempDir &dir)
{
    return QStringLiteral("org.orvel.test.") + QLatin1StringView(stem) + u'.'
        + QFileInfo(dir.path()).fileName();
}

} // namespace

TEST(ImagePasteboard, ImageDataOfAnyKnownTypeIsProbablyAnImage)
{
    for (const char *mime : { "image/jp2", "image/jpeg", "image/png", "image/tiff", "application/pdf",
             "application/postscript", "image/x-icns" }) {
        QMimeData pasteboard;
        pasteboard.setData(QLatin1StringView(mime), "bytes");
        EXPECT_TRUE(Image::canProbablyInitWithPasteboard(&pasteboard)) << mime;
    }
    QMimeData picture;
    picture.setImageData(QImage(4, 4, QImage::Format_RGB32));
    EXPECT_TRUE(Image::canProbablyInitWithPasteboard(&picture));

    QMimeData text;
    text.setText(QStringLiteral("/tmp/picture.png"));
    EXPECT_FALSE(Image::canProbablyInitWithPasteboard(&text));
    EXPECT_FALSE(Image::canProbablyInitWithPasteboard(nullptr));
}

TEST(ImagePasteboard, OnlyASingleImageFileOrFileURLIsProbablyAnImage)
{
    TempDir dir;
    const QString png = dir.file(QStringLiteral("a.png"));
    const QString other = dir.file(QStringLiteral("b.png"));
    const QString text = dir.file(QStringLiteral("notes.txt"));
    auto decides = [](const QList<QUrl> &urls) {
        QMimeData pasteboard;
        pasteboard.setUrls(urls);
        return Image::canProbablyInitWithPasteboard(&pasteboard);
    };
    EXPECT_TRUE(decides(fileUrls({ png })));
    EXPECT_FALSE(decides(fileUrls({ png, other })));
    EXPECT_FALSE(decides(fileUrls({ text })));
    EXPECT_FALSE(decides({ QUrl(QStringLiteral("https://example.org/picture.png")) }));
    EXPECT_FALSE(decides({}));
}

TEST(ImagePasteboard, DecodesTheFirstTypeThatHoldsAPicture)
{
    QMimeData pasteboard;
    pasteboard.setData(QStringLiteral("image/png"), "not a PNG at all");
    pasteboard.setData(QStringLiteral("image/tiff"), encodedPicture("tif", 24, 12));
    pasteboard.setData(QStringLiteral("image/jpeg"), encodedPicture("jpg", 30, 10));
    const ImagePtr image = Image::initWithPasteboard(&pasteboard);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(30, 10));
}

TEST(ImagePasteboard, DecodesQtPicturesAndOtherImageFormats)
{
    QMimeData picture;
    picture.setImageData(QImage(20, 5, QImage::Format_ARGB32));
    QMimeData gif;
    gif.setData(QStringLiteral("image/gif"), encodedPicture("gif", 7, 9));
    const ImagePtr fromPicture = Image::initWithPasteboard(&picture);
    const ImagePtr fromGif = Image::initWithPasteboard(&gif);
    ASSERT_TRUE(fromPicture && fromGif);
    EXPECT_EQ(fromPicture->size(), QSizeF(20, 5));
    EXPECT_EQ(fromGif->size(), QSizeF(7, 9));
}

TEST(ImagePasteboard, DecodesASingleImageFileButNotOtherFiles)
{
    TempDir dir;
    const QString png = dir.file(QStringLiteral("a.png"));
    ASSERT_TRUE(orvel::test::writeTestImage(png, 16, 8));
    const QString broken = dir.file(QStringLiteral("broken.png"));
    ASSERT_TRUE(orvel::test::writeBytes(broken, "truncated"));

    QMimeData pasteboard;
    pasteboard.setUrls(fileUrls({ png }));
    const ImagePtr image = Image::initWithPasteboard(&pasteboard);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(16, 8));

    QMimeData unreadable;
    unreadable.setUrls(fileUrls({ broken }));
    EXPECT_FALSE(Image::initWithPasteboard(&unreadable));
    QMimeData empty;
    EXPECT_FALSE(Image::initWithPasteboard(&empty));
}

TEST(ImagePasteboard, IconPrefersTheSingleImageFileThenTheIconFamily)
{
    TempDir dir;
    const QString png = dir.file(QStringLiteral("a.png"));
    ASSERT_TRUE(orvel::test::writeTestImage(png, 16, 8));

    QMimeData file;
    file.setUrls(fileUrls({ png }));
    file.setData(QStringLiteral("image/x-icns"), encodedPicture("png", 32, 32));
    ImagePtr image = Image::initWithPasteboardIcon(&file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->name(), png);
    EXPECT_EQ(image->size(), QSizeF(16, 8));

    QMimeData icon;
    icon.setData(QStringLiteral("image/x-icns"), encodedPicture("png", 32, 16));
    icon.setData(QStringLiteral("image/png"), encodedPicture("png", 5, 5));
    image = Image::initWithPasteboardIcon(&icon);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(32, 16));

    // Icon data that does not decode gives way to the pasteboard's picture.
    icon.setData(QStringLiteral("image/x-icns"), "icns");
    image = Image::initWithPasteboardIcon(&icon);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(5, 5));
}

TEST(ImagePasteboard, ProvidesTIFFDataOnlyForTheTIFFType)
{
    TempDir dir;
    const QString png = dir.file(QStringLiteral("a.png"));
    ASSERT_TRUE(orvel::test::writeTestImage(png, 12, 6));
    const ImagePtr image = Image::imageAtPath(png);
    ASSERT_TRUE(image);

    for (const char *type : { "image/tiff", "public.tiff" }) {
        QMimeData pasteboard;
        image->pasteboardProvideDataForType(&pasteboard, QLatin1StringView(type));
        const ImagePtr back = Image::initWithData(pasteboard.data(QStringLiteral("image/tiff")));
        ASSERT_TRUE(back) << type;
        EXPECT_EQ(back->size(), QSizeF(12, 6));
    }
    QMimeData png2;
    image->pasteboardProvideDataForType(&png2, QStringLiteral("image/png"));
    EXPECT_TRUE(png2.formats().isEmpty());
}

TEST(ImagePasteboard, ReadsTheSystemClipboard)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    ASSERT_TRUE(clipboard);
    auto *data = new QMimeData;
    data->setData(QStringLiteral("image/png"), encodedPicture("png", 9, 4));
    clipboard->setMimeData(data);
    const QMimeData *pasteboard = clipboard->mimeData();
    EXPECT_TRUE(Image::canProbablyInitWithPasteboard(pasteboard));
    const ImagePtr image = Image::initWithPasteboard(pasteboard);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(9, 4));
    clipboard->clear();
}

TEST(ImageCache, BundleImagesAreSharedPerIdentifierAndName)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("dot.png")), 8, 4));
    const Bundle bundle(identifier("shared", dir), dir.path());
    const ImagePtr first = Image::cachedImageNamedInBundle(QStringLiteral("dot"), bundle);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->name(), QStringLiteral("dot"));
    EXPECT_EQ(first->size(), QSizeF(8, 4));
    EXPECT_EQ(Image::cachedImageNamedInBundle(QStringLiteral("dot"), bundle), first);
    // Keyed by the identifier, not by where the bundle's files are.
    TempDir elsewhere;
    EXPECT_EQ(Image::cachedImageNamedInBundle(
                  QStringLiteral("dot"), Bundle(identifier("shared", dir), elsewhere.path())),
        first);
    EXPECT_FALSE(Image::cachedImageNamedInBundle(
        QStringLiteral("dot"), Bundle(identifier("other", dir), elsewhere.path())));
    // Without the cache every call loads anew.
    const ImagePtr uncached = Image::imageNamedInBundle(QStringLiteral("dot"), bundle);
    ASSERT_TRUE(uncached);
    EXPECT_NE(uncached, first);
    EXPECT_NE(uncached, Image::imageNamedInBundle(QStringLiteral("dot"), bundle));
    EXPECT_EQ(uncached->name(), QStringLiteral("dot"));
}

TEST(ImageCache, MissesAreNotRememberedAndBundlesNeedAnIdentifier)
{
    TempDir dir;
    const Bundle bundle(identifier("later", dir), dir.path());
    EXPECT_FALSE(Image::cachedImageNamedInBundle(QStringLiteral("later"), bundle));
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("later.png")), 3, 3));
    EXPECT_TRUE(Image::cachedImageNamedInBundle(QStringLiteral("later"), bundle));

    const Bundle anonymous(QString(), dir.path());
    EXPECT_TRUE(Image::imageNamedInBundle(QStringLiteral("later"), anonymous));
    EXPECT_FALSE(Image::cachedImageNamedInBundle(QStringLiteral("later"), anonymous));
}

TEST(ImageCache, ThreadsAskingAtOnceShareOneImage)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("race.png")), 4, 4));
    const Bundle bundle(identifier("race", dir), dir.path());
    std::vector<ImagePtr> results(8);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < results.size(); ++i)
        threads.emplace_back(
            [&, i] { results[i] = Image::cachedImageNamedInBundle(QStringLiteral("race"), bundle); });
    for (std::thread &thread : threads)
        thread.join();
    ASSERT_TRUE(results[0]);
    for (const ImagePtr &result : results)
        EXPECT_EQ(result, results[0]);
}

class MainBundleImages : public testing::Test
{
protected:
    // The main bundle looks in the compiled-in resource folder ":/orvel" first; a resource file
    // made here and registered at run time puts a picture there.
    void SetUp() override
    {
        const QString picture = m_dir.file(QStringLiteral("picture.png"));
        ASSERT_TRUE(orvel::test::writeTestImage(picture, 24, 12));
        const QString qrc = m_dir.file(QStringLiteral("named.qrc"));
        ASSERT_TRUE(orvel::test::writeBytes(qrc,
            QStringLiteral("<RCC><qresource prefix=\"/orvel\"><file alias=\"orvel-test-named.png\">%1</file>"
                           "</qresource></RCC>\n")
                .arg(picture)
                .toUtf8()));
        const QString rcc = QLibraryInfo::path(QLibraryInfo::LibraryExecutablesPath) + QStringLiteral("/rcc");
        m_resource = m_dir.file(QStringLiteral("named.rcc"));
        if (orvel::test::runProgram(
                rcc, { QStringLiteral("--binary"), QStringLiteral("-o"), m_resource, qrc })
            != 0)
            GTEST_SKIP() << "Qt's resource compiler did not run";
        ASSERT_TRUE(QResource::registerResource(m_resource));
    }
    void TearDown() override { QResource::unregisterResource(m_resource); }

    TempDir m_dir;
    QString m_resource;
};

TEST_F(MainBundleImages, NamedImagesComeFromTheMainBundle)
{
    const ImagePtr a = Image::imageNamed(QStringLiteral("orvel-test-named"));
    ASSERT_TRUE(a);
    EXPECT_EQ(a->name(), QStringLiteral("orvel-test-named"));
    EXPECT_EQ(a->size(), QSizeF(24, 12));
    EXPECT_NE(Image::imageNamed(QStringLiteral("orvel-test-named")), a);
    EXPECT_FALSE(Image::imageNamed(QStringLiteral("orvel-test-no-such-image")));
    EXPECT_FALSE(Image::cachedImageNamed(QStringLiteral("orvel-test-no-such-image")));
}

TEST_F(MainBundleImages, SizedCopiesShareTheCachedRepresentations)
{
    const ImagePtr cached = Image::cachedImageNamed(QStringLiteral("orvel-test-named"));
    ASSERT_TRUE(cached);
    EXPECT_EQ(Image::cachedImageNamed(QStringLiteral("orvel-test-named")), cached);

    const ImagePtr small = Image::cachedImageNamed(QStringLiteral("orvel-test-named"), QSizeF(12, 6));
    ASSERT_TRUE(small);
    EXPECT_NE(small, cached);
    EXPECT_EQ(small->size(), QSizeF(12, 6));
    EXPECT_TRUE(small->scalesWhenResized());
    EXPECT_EQ(small->representations(), cached->representations());
    EXPECT_EQ(cached->size(), QSizeF(24, 12));
}
