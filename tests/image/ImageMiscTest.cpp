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

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;

namespace {

/// A w×h test picture encoded in the format of the extension.
QByteArray encodedPicture(const char *extension, int w, int h)
{
    TempDir dir;
    const QString path = dir.file(u"picture."_s + QLatin1StringView(extension));
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
    return u"org.orvel.test."_s + QLatin1StringView(stem) + u'.' + QFileInfo(dir.path()).fileName();
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
    text.setText(u"/tmp/picture.png"_s);
    EXPECT_FALSE(Image::canProbablyInitWithPasteboard(&text));
    EXPECT_FALSE(Image::canProbablyInitWithPasteboard(nullptr));
}

TEST(ImagePasteboard, OnlyASingleImageFileOrFileURLIsProbablyAnImage)
{
    TempDir dir;
    const QString png = dir.file(u"a.png"_s);
    const QString other = dir.file(u"b.png"_s);
    const QString text = dir.file(u"notes.txt"_s);
    auto decides = [](const QList<QUrl> &urls) {
        QMimeData pasteboard;
        pasteboard.setUrls(urls);
        return Image::canProbablyInitWithPasteboard(&pasteboard);
    };
    EXPECT_TRUE(decides(fileUrls({ png })));
    EXPECT_FALSE(decides(fileUrls({ png, other })));
    EXPECT_FALSE(decides(fileUrls({ text })));
    EXPECT_FALSE(decides({ QUrl(u"https://example.org/picture.png"_s) }));
    EXPECT_FALSE(decides({}));
}

TEST(ImagePasteboard, DecodesTheFirstTypeThatHoldsAPicture)
{
    QMimeData pasteboard;
    pasteboard.setData(u"image/png"_s, "not a PNG at all");
    pasteboard.setData(u"image/tiff"_s, encodedPicture("tif", 24, 12));
    pasteboard.setData(u"image/jpeg"_s, encodedPicture("jpg", 30, 10));
    const ImagePtr image = Image::initWithPasteboard(&pasteboard);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(30, 10));
}

TEST(ImagePasteboard, DecodesQtPicturesAndOtherImageFormats)
{
    QMimeData picture;
    picture.setImageData(QImage(20, 5, QImage::Format_ARGB32));
    QMimeData gif;
    gif.setData(u"image/gif"_s, encodedPicture("gif", 7, 9));
    const ImagePtr fromPicture = Image::initWithPasteboard(&picture);
    const ImagePtr fromGif = Image::initWithPasteboard(&gif);
    ASSERT_TRUE(fromPicture && fromGif);
    EXPECT_EQ(fromPicture->size(), QSizeF(20, 5));
    EXPECT_EQ(fromGif->size(), QSizeF(7, 9));
}

TEST(ImagePasteboard, DecodesASingleImageFileButNotOtherFiles)
{
    TempDir dir;
    const QString png = dir.file(u"a.png"_s);
    ASSERT_TRUE(orvel::test::writeTestImage(png, 16, 8));
    const QString broken = dir.file(u"broken.png"_s);
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
    const QString png = dir.file(u"a.png"_s);
    ASSERT_TRUE(orvel::test::writeTestImage(png, 16, 8));

    QMimeData file;
    file.setUrls(fileUrls({ png }));
    file.setData(u"image/x-icns"_s, encodedPicture("png", 32, 32));
    ImagePtr image = Image::initWithPasteboardIcon(&file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->name(), png);
    EXPECT_EQ(image->size(), QSizeF(16, 8));

    QMimeData icon;
    icon.setData(u"image/x-icns"_s, encodedPicture("png", 32, 16));
    icon.setData(u"image/png"_s, encodedPicture("png", 5, 5));
    image = Image::initWithPasteboardIcon(&icon);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(32, 16));

    // Icon data that does not decode gives way to the pasteboard's picture.
    icon.setData(u"image/x-icns"_s, "icns");
    image = Image::initWithPasteboardIcon(&icon);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(5, 5));
}

TEST(ImagePasteboard, ProvidesTIFFDataOnlyForTheTIFFType)
{
    TempDir dir;
    const QString png = dir.file(u"a.png"_s);
    ASSERT_TRUE(orvel::test::writeTestImage(png, 12, 6));
    const ImagePtr image = Image::imageAtPath(png);
    ASSERT_TRUE(image);

    for (const char *type : { "image/tiff", "public.tiff" }) {
        QMimeData pasteboard;
        image->pasteboardProvideDataForType(&pasteboard, QLatin1StringView(type));
        const ImagePtr back = Image::initWithData(pasteboard.data(u"image/tiff"_s));
        ASSERT_TRUE(back) << type;
        EXPECT_EQ(back->size(), QSizeF(12, 6));
    }
    QMimeData png2;
    image->pasteboardProvideDataForType(&png2, u"image/png"_s);
    EXPECT_TRUE(png2.formats().isEmpty());
}

TEST(ImagePasteboard, ReadsTheSystemClipboard)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    ASSERT_TRUE(clipboard);
    auto *data = new QMimeData;
    data->setData(u"image/png"_s, encodedPicture("png", 9, 4));
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
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(u"dot.png"_s), 8, 4));
    const Bundle bundle(identifier("shared", dir), dir.path());
    const ImagePtr first = Image::cachedImageNamedInBundle(u"dot"_s, bundle);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->name(), u"dot"_s);
    EXPECT_EQ(first->size(), QSizeF(8, 4));
    EXPECT_EQ(Image::cachedImageNamedInBundle(u"dot"_s, bundle), first);
    // Keyed by the identifier, not by where the bundle's files are.
    TempDir elsewhere;
    EXPECT_EQ(Image::cachedImageNamedInBundle(u"dot"_s, Bundle(identifier("shared", dir), elsewhere.path())),
        first);
    EXPECT_FALSE(
        Image::cachedImageNamedInBundle(u"dot"_s, Bundle(identifier("other", dir), elsewhere.path())));
    // Without the cache every call loads anew.
    const ImagePtr uncached = Image::imageNamedInBundle(u"dot"_s, bundle);
    ASSERT_TRUE(uncached);
    EXPECT_NE(uncached, first);
    EXPECT_NE(uncached, Image::imageNamedInBundle(u"dot"_s, bundle));
    EXPECT_EQ(uncached->name(), u"dot"_s);
}

TEST(ImageCache, MissesAreNotRememberedAndBundlesNeedAnIdentifier)
{
    TempDir dir;
    const Bundle bundle(identifier("later", dir), dir.path());
    EXPECT_FALSE(Image::cachedImageNamedInBundle(u"later"_s, bundle));
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(u"later.png"_s), 3, 3));
    EXPECT_TRUE(Image::cachedImageNamedInBundle(u"later"_s, bundle));

    const Bundle anonymous(QString(), dir.path());
    EXPECT_TRUE(Image::imageNamedInBundle(u"later"_s, anonymous));
    EXPECT_FALSE(Image::cachedImageNamedInBundle(u"later"_s, anonymous));
}

TEST(ImageCache, ThreadsAskingAtOnceShareOneImage)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(u"race.png"_s), 4, 4));
    const Bundle bundle(identifier("race", dir), dir.path());
    std::vector<ImagePtr> results(8);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < results.size(); ++i)
        threads.emplace_back([&, i] { results[i] = Image::cachedImageNamedInBundle(u"race"_s, bundle); });
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
        const QString picture = m_dir.file(u"picture.png"_s);
        ASSERT_TRUE(orvel::test::writeTestImage(picture, 24, 12));
        const QString qrc = m_dir.file(u"named.qrc"_s);
        ASSERT_TRUE(orvel::test::writeBytes(qrc,
            u"<RCC><qresource prefix=\"/orvel\"><file alias=\"orvel-test-named.png\">%1</file>"
            "</qresource></RCC>\n"_s.arg(picture)
                .toUtf8()));
        const QString rcc = QLibraryInfo::path(QLibraryInfo::LibraryExecutablesPath) + u"/rcc"_s;
        m_resource = m_dir.file(u"named.rcc"_s);
        if (orvel::test::runProgram(rcc, { u"--binary"_s, u"-o"_s, m_resource, qrc }) != 0)
            GTEST_SKIP() << "Qt's resource compiler did not run";
        ASSERT_TRUE(QResource::registerResource(m_resource));
    }
    void TearDown() override { QResource::unregisterResource(m_resource); }

    TempDir m_dir;
    QString m_resource;
};

TEST_F(MainBundleImages, NamedImagesComeFromTheMainBundle)
{
    const ImagePtr a = Image::imageNamed(u"orvel-test-named"_s);
    ASSERT_TRUE(a);
    EXPECT_EQ(a->name(), u"orvel-test-named"_s);
    EXPECT_EQ(a->size(), QSizeF(24, 12));
    EXPECT_NE(Image::imageNamed(u"orvel-test-named"_s), a);
    EXPECT_FALSE(Image::imageNamed(u"orvel-test-no-such-image"_s));
    EXPECT_FALSE(Image::cachedImageNamed(u"orvel-test-no-such-image"_s));
}

TEST_F(MainBundleImages, SizedCopiesShareTheCachedRepresentations)
{
    const ImagePtr cached = Image::cachedImageNamed(u"orvel-test-named"_s);
    ASSERT_TRUE(cached);
    EXPECT_EQ(Image::cachedImageNamed(u"orvel-test-named"_s), cached);

    const ImagePtr small = Image::cachedImageNamed(u"orvel-test-named"_s, QSizeF(12, 6));
    ASSERT_TRUE(small);
    EXPECT_NE(small, cached);
    EXPECT_EQ(small->size(), QSizeF(12, 6));
    EXPECT_TRUE(small->scalesWhenResized());
    EXPECT_EQ(small->representations(), cached->representations());
    EXPECT_EQ(cached->size(), QSizeF(24, 12));
}
