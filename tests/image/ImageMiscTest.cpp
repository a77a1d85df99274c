// Tests of images from pasteboards and of the named-image caches.
#include "image/Image.h"
#include "support/Bundle.h"
#include "testlib/TestSupport.h"

#include <QFileInfo>
#include <QLibraryInfo>
#include <QMimeData>
#include <QResource>
#include <QUrl>
#include <gtest/gtest.h>

#include <functional>
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

/// A pasteboard holding the given data under the given types.
std::unique_ptr<QMimeData> pasteboard(std::initializer_list<std::pair<const char *, QByteArray>> data)
{
    auto board = std::make_unique<QMimeData>();
    for (const auto &[type, bytes] : data)
        board->setData(QLatin1StringView(type), bytes);
    return board;
}

/// The size of the image made from the pasteboard (icon first when asked); empty when there is none.
QSizeF pastedSize(const QMimeData &board, bool icon = false)
{
    const ImagePtr image = icon ? Image::initWithPasteboardIcon(&board) : Image::initWithPasteboard(&board);
    return image ? image->size() : QSizeF();
}

/// A bundle identifier of its own for each test run: the caches outlive a test (and --gtest_repeat).
QString identifier(const char *stem, const TempDir &dir)
{
    return u"org.orvel.test."_s + QLatin1StringView(stem) + u'.' + QFileInfo(dir.path()).fileName();
}

} // namespace

TEST(ImagePasteboard, KnownImageDataOrASingleImageFileIsProbablyAnImage)
{
    const auto probably = [](const std::function<void(QMimeData &)> &fill) {
        QMimeData pasteboard;
        fill(pasteboard);
        return Image::canProbablyInitWithPasteboard(&pasteboard);
    };
    for (const char *mime : { "image/jp2", "application/pdf", "application/postscript", "image/x-icns" })
        EXPECT_TRUE(probably([&](QMimeData &p) { p.setData(QLatin1StringView(mime), "bytes"); })) << mime;
    EXPECT_TRUE(probably([](QMimeData &p) { p.setImageData(QImage(4, 4, QImage::Format_RGB32)); }));
    EXPECT_FALSE(probably([](QMimeData &p) { p.setText(u"/tmp/picture.png"_s); }));
    EXPECT_FALSE(Image::canProbablyInitWithPasteboard(nullptr));

    TempDir dir;
    const QString png = dir.file(u"a.png"_s);
    EXPECT_TRUE(probably([&](QMimeData &p) { p.setUrls(fileUrls({ png })); }));
    EXPECT_FALSE(probably([&](QMimeData &p) { p.setUrls(fileUrls({ png, dir.file(u"b.png"_s) })); }));
    EXPECT_FALSE(probably([&](QMimeData &p) { p.setUrls(fileUrls({ dir.file(u"notes.txt"_s) })); }));
    EXPECT_FALSE(probably([](QMimeData &p) { p.setUrls({ QUrl(u"https://example.org/picture.png"_s) }); }));
}

TEST(ImagePasteboard, DecodesTheFirstTypeThatHoldsAPictureThenASingleFile)
{
    // PNG, JPEG and TIFF are tried in that order, then a Qt picture, then other image types.
    EXPECT_EQ(pastedSize(*pasteboard(
                  { { "image/png", "not a PNG at all" }, { "image/tiff", encodedPicture("tif", 24, 12) },
                      { "image/jpeg", encodedPicture("jpg", 30, 10) } })),
        QSizeF(30, 10));
    const auto picture = pasteboard({ { "image/gif", encodedPicture("gif", 7, 9) } });
    EXPECT_EQ(pastedSize(*picture), QSizeF(7, 9));
    picture->setImageData(QImage(20, 5, QImage::Format_ARGB32));
    EXPECT_EQ(pastedSize(*picture), QSizeF(20, 5));

    TempDir dir;
    const QString png = dir.file(u"a.png"_s), broken = dir.file(u"broken.png"_s);
    ASSERT_TRUE(orvel::test::writeTestImage(png, 16, 8));
    ASSERT_TRUE(orvel::test::writeBytes(broken, "truncated"));
    QMimeData file;
    file.setUrls(fileUrls({ png }));
    EXPECT_EQ(pastedSize(file), QSizeF(16, 8));
    file.setUrls(fileUrls({ broken }));
    EXPECT_FALSE(Image::initWithPasteboard(&file));
    EXPECT_FALSE(Image::initWithPasteboard(nullptr));
}

TEST(ImagePasteboard, IconPrefersTheSingleImageFileThenTheIconFamily)
{
    TempDir dir;
    const QString png = dir.file(u"a.png"_s);
    ASSERT_TRUE(orvel::test::writeTestImage(png, 16, 8));
    const auto file = pasteboard({ { "image/x-icns", encodedPicture("png", 32, 32) } });
    file->setUrls(fileUrls({ png }));
    ImagePtr image = Image::initWithPasteboardIcon(file.get());
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(16, 8));

    const auto icon = pasteboard(
        { { "image/x-icns", encodedPicture("png", 32, 16) }, { "image/png", encodedPicture("png", 5, 5) } });
    EXPECT_EQ(pastedSize(*icon, true), QSizeF(32, 16));
    // Icon data that does not decode gives way to the pasteboard's picture.
    icon->setData(u"image/x-icns"_s, "icns");
    EXPECT_EQ(pastedSize(*icon, true), QSizeF(5, 5));
}

TEST(ImagePasteboard, ProvidesTIFFDataOnlyForTheTIFFType)
{
    const ImagePtr image = Image::imageWithRepresentation(BitmapImageRep::createRGBA(12, 6));
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

TEST(ImageCache, BundleImagesAreSharedPerIdentifierAndName)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(u"dot.png"_s), 8, 4));
    const Bundle bundle(identifier("shared", dir), dir.path());
    const ImagePtr first = Image::cachedImageNamedInBundle(u"dot"_s, bundle);
    ASSERT_TRUE(first);
    EXPECT_EQ(Image::cachedImageNamedInBundle(u"dot"_s, bundle), first);
    // Keyed by the identifier, not by where the bundle's files are.
    TempDir elsewhere;
    EXPECT_EQ(Image::cachedImageNamedInBundle(u"dot"_s, Bundle(identifier("shared", dir), elsewhere.path())),
        first);
    EXPECT_FALSE(
        Image::cachedImageNamedInBundle(u"dot"_s, Bundle(identifier("other", dir), elsewhere.path())));
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
    // The main bundle looks in the resource folder ":/orvel" first: a resource file registered here fills it.
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

TEST_F(MainBundleImages, NamedImagesComeFromTheMainBundleAndSizedCopiesShareTheCachedRepresentations)
{
    const ImagePtr a = Image::imageNamed(u"orvel-test-named"_s);
    ASSERT_TRUE(a);
    EXPECT_EQ(a->size(), QSizeF(24, 12));
    EXPECT_FALSE(Image::cachedImageNamed(u"orvel-test-no-such-image"_s));

    const ImagePtr cached = Image::cachedImageNamed(u"orvel-test-named"_s);
    ASSERT_TRUE(cached);
    EXPECT_EQ(Image::cachedImageNamed(u"orvel-test-named"_s), cached);
    const ImagePtr small = Image::cachedImageNamed(u"orvel-test-named"_s, QSizeF(12, 6));
    ASSERT_TRUE(small);
    EXPECT_EQ(small->size(), QSizeF(12, 6));
    EXPECT_EQ(small->representations(), cached->representations());
    EXPECT_EQ(cached->size(), QSizeF(24, 12));
}
