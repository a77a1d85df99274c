// Loading: decoded thumbnails of files, their limits and metadata, and what bad files give.
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

TEST(ImageLoading, ThumbnailForFileReportsSizeAndMetadataWithoutDecoding)
{
    TempDir dir;
    const QString path = dir.file(u"wide.png"_s);
    ASSERT_TRUE(writeTestImage(path, 300, 100, true));
    QVariantMap properties;
    ImagePtr image = Image::thumbnailForFile(path, 32767, true, true, &properties);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(300, 100));
    EXPECT_TRUE(image->hasAlpha());
    EXPECT_TRUE(image->bitmapImageRep()->isLazy());
    EXPECT_EQ(properties.value(u"PixelWidth"_s).toInt(), 300);
    EXPECT_EQ(properties.value(u"HasAlpha"_s).toBool(), true);
    // The long side is limited to the maximum pixel size.
    ImagePtr small = Image::thumbnailForFile(path, 150);
    ASSERT_TRUE(small);
    EXPECT_EQ(small->pixelSize(), QSizeF(150, 50));
    ASSERT_TRUE(small->bitmapImageRep()->bitmapData());
    EXPECT_EQ(small->bitmapImageRep()->pixelsWide(), 150);
}

TEST(ImageLoading, BadFilesGiveNilAReasonAndEmptyProperties)
{
    TempDir dir;
    const QString empty = dir.file(u"empty.png"_s), junk = dir.file(u"junk.png"_s),
                  bomb = dir.file(u"bomb.png"_s);
    ASSERT_TRUE(writeBytes(empty, {}));
    ASSERT_TRUE(writeBytes(junk, QByteArray(4096, 'x')));
    // A decompression bomb is refused from its header, before any decoding.
    ASSERT_TRUE(writeBytes(bomb, pngDeclaring(200000, 200000)));
    const std::pair<QString, QString> cases[] = { { QString(), u"empty path"_s },
        { dir.file(u"missing.png"_s), u"not a picture that can be decoded"_s },
        { empty, u"not a picture that can be decoded"_s }, { junk, u"not a picture that can be decoded"_s },
        { bomb, u"picture too large (200000 × 200000 pixels)"_s } };
    for (const auto &[path, reason] : cases) {
        QVariantMap properties { { u"stale"_s, 1 } };
        QString why;
        EXPECT_FALSE(Image::thumbnailForFile(path, 32767, true, true, &properties, &why)) << path;
        EXPECT_TRUE(properties.isEmpty()) << path;
        EXPECT_EQ(why, reason) << path;
    }
}

TEST(ImageLoading, ReferencedFilesAreReadWhenFirstNeeded)
{
    TempDir dir;
    const QString path = dir.file(u"late.png"_s);
    ImagePtr image = Image::initByReferencingFile(path);
    ASSERT_TRUE(image); // nothing is read yet
    ASSERT_TRUE(writeTestImage(path, 20, 10));
    EXPECT_EQ(image->size(), QSizeF(20, 10));
    EXPECT_TRUE(image->isReallyValid());
    ImagePtr missing = Image::initByReferencingFile(dir.file(u"nope.pdf"_s));
    EXPECT_FALSE(missing->isReallyValid());
    EXPECT_FALSE(missing->loadError().isEmpty());
    EXPECT_FALSE(Image::initByReferencingFile(QString()));
}

TEST(ImageLoading, DataAndPicturesBecomeImages)
{
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"a.gif"_s), 12, 8));
    ImagePtr fromData = Image::initWithData(readBytes(dir.file(u"a.gif"_s)));
    ASSERT_TRUE(fromData);
    EXPECT_EQ(fromData->size(), QSizeF(12, 8));
    ImagePtr downloaded = Image::initWithDownloadedData(readBytes(dir.file(u"a.gif"_s)));
    ASSERT_TRUE(downloaded);
    EXPECT_FALSE(downloaded->bitmapImageRep()->isLazy());
    EXPECT_FALSE(Image::initWithDownloadedData(QByteArray("GIF89a")));
    QImage picture(7, 3, QImage::Format_RGB32);
    EXPECT_EQ(Image::imageWithCGImageRef(picture)->size(), QSizeF(7, 3));
    EXPECT_FALSE(Image::imageWithCGImageRef(QImage()));
}
