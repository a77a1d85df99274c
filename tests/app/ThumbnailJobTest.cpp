// The thumbnail job on real files with real settings: sizes, naming, create modes, formats, failures.
#include "app/engine/ThumbnailJob.h"
#include "app/engine/IconService.h"
#include "files/FileManager.h"
#include "support/UserDefaults.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>
#include <vips/vips8>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

class ThumbnailJobTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qputenv("XDG_CACHE_HOME", cache.path().toUtf8());
        defaults = std::make_unique<UserDefaults>(settings.file(u"thumbnails.conf"_s));
    }
    void set(const char *key, const QVariant &value) { defaults->setObject(value, QString::fromLatin1(key)); }
    bool run(const QString &path, QString *why = nullptr)
    {
        return ThumbnailJob::processFile(path, defaults.get(), why);
    }
    QString file(const char *name) const { return dir.file(QString::fromLatin1(name)); }
    static QSize sizeOf(const QString &path)
    {
        try {
            vips::VImage img = vips::VImage::new_from_file(path.toUtf8().constData());
            return QSize(img.width(), img.height());
        } catch (const vips::VError &) {
            return {};
        }
    }
    QStringList entries() const
    {
        return QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }

    TempDir dir, settings, cache;
    std::unique_ptr<UserDefaults> defaults;
};

} // namespace

TEST_F(ThumbnailJobTest, DefaultsMakeAJpegThatFitsA128Box)
{
    ASSERT_TRUE(writeTestImage(file("photo.png"), 400, 200));
    ASSERT_TRUE(run(file("photo.png")));
    EXPECT_EQ(sizeOf(file("photo_thumb.jpg")), QSize(128, 64));
    EXPECT_TRUE(readBytes(file("photo_thumb.jpg")).startsWith("\xFF\xD8"));
}

TEST_F(ThumbnailJobTest, NamingRulesPlaceTheThumbnail)
{
    ASSERT_TRUE(writeTestImage(file("photo.png"), 40, 20));
    set("extensionFormat", 0);
    ASSERT_TRUE(run(file("photo.png")));
    EXPECT_TRUE(QFileInfo::exists(file("_thumbphoto.jpg")));
    set("extensionFormat", 5); // any rule but 0 and 1 is the sub-folder
    set("extension", u"small"_s);
    ASSERT_TRUE(run(file("photo.png")));
    EXPECT_TRUE(QFileInfo::exists(file("small/photo.jpg")));
    set("extensionFormat", 1);
    set("extension", u"-t"_s);
    set("filetype", 4);
    ASSERT_TRUE(run(file("photo.png")));
    EXPECT_TRUE(QFileInfo::exists(file("photo-t.png")));
    EXPECT_EQ(ThumbnailJob::outputPathForFile(u"/a/b/c.d.png"_s, defaults.get()), u"/a/b/c.d-t.png"_s);
}

TEST_F(ThumbnailJobTest, SizesFollowTheBoxOrTheScaleWithoutEnlarging)
{
    ASSERT_TRUE(writeTestImage(file("small.png"), 50, 30));
    ASSERT_TRUE(writeTestImage(file("big.png"), 301, 101));
    ASSERT_TRUE(run(file("small.png")));
    EXPECT_EQ(sizeOf(file("small_thumb.jpg")), QSize(50, 30));
    set("width", 64);
    set("height", 16);
    ASSERT_TRUE(run(file("big.png")));
    EXPECT_EQ(sizeOf(file("big_thumb.jpg")), QSize(47, 16));
    set("sizing", 1);
    set("scale", 0.5);
    ASSERT_TRUE(run(file("big.png")));
    EXPECT_EQ(sizeOf(file("big_thumb.jpg")), QSize(150, 50));
    set("scale", 0.001); // a side rounds down to 0: nothing is written
    ASSERT_TRUE(QFile::remove(file("big_thumb.jpg")));
    QString why;
    EXPECT_FALSE(run(file("big.png"), &why));
    EXPECT_FALSE(QFileInfo::exists(file("big_thumb.jpg")));
    EXPECT_FALSE(why.isEmpty());
}

TEST_F(ThumbnailJobTest, JpegOutputPutsTransparencyOnWhitePngKeepsIt)
{
    ASSERT_TRUE(writeSolidImage(file("clear.png"), 20, 20, QColor(0, 0, 255, 0)));
    ASSERT_TRUE(run(file("clear.png")));
    EXPECT_TRUE(colourNear(loadImage(file("clear_thumb.jpg")).pixelColor(10, 10), Qt::white, 3));
    set("filetype", 4);
    ASSERT_TRUE(run(file("clear.png")));
    EXPECT_EQ(loadImage(file("clear_thumb.png")).pixelColor(10, 10).alpha(), 0);
}

TEST_F(ThumbnailJobTest, EveryOutputFormatIsWrittenAndUnknownOnesFail)
{
    ASSERT_TRUE(writeTestImage(file("p.png"), 200, 100));
    const char *extensions[] = { "tiff", "bmp", "gif", "jpg", "png", "jp2" };
    for (int type = 0; type <= 5; ++type) {
        set("filetype", type);
        ASSERT_TRUE(run(file("p.png"))) << type;
        EXPECT_EQ(sizeOf(file("p_thumb.") + QString::fromLatin1(extensions[type]).mid(0)), QSize(128, 64))
            << type;
    }
    set("filetype", 9);
    const QStringList before = entries();
    QString why;
    EXPECT_FALSE(run(file("p.png"), &why));
    EXPECT_EQ(entries(), before);
    EXPECT_TRUE(why.contains(u"format"_s));
}

TEST_F(ThumbnailJobTest, UnknownCreateModesDoNothing)
{
    ASSERT_TRUE(writeTestImage(file("p.png"), 20, 20));
    for (int mode : { 3, -1 }) {
        set("create", mode);
        EXPECT_FALSE(run(file("p.png")));
    }
    EXPECT_EQ(entries(), QStringList { u"p.png"_s });
}

TEST_F(ThumbnailJobTest, IconModesWriteTheThumbnailCacheAndKeepTheSourceDate)
{
    ASSERT_TRUE(writeTestImage(file("p.png"), 60, 30));
    const std::optional<FileTime> before = FileManager::fileModificationDateAtPath(file("p.png"));
    set("create", 2);
    ASSERT_TRUE(run(file("p.png")));
    EXPECT_EQ(entries(), QStringList { u"p.png"_s });
    EXPECT_EQ(FileManager::fileModificationDateAtPath(file("p.png")), before);
    EXPECT_TRUE(
        QFileInfo::exists(IconService::cachePathForFile(file("p.png"), IconService::CacheSize::Normal)));

    set("create", 1);
    ASSERT_TRUE(run(file("p.png")));
    EXPECT_TRUE(QFileInfo::exists(file("p_thumb.jpg")));
    EXPECT_TRUE(QFileInfo::exists(
        IconService::cachePathForFile(file("p_thumb.jpg"), IconService::CacheSize::Normal)));
}

TEST_F(ThumbnailJobTest, DocumentsTakeThePdfPath)
{
    ASSERT_TRUE(writeTestPdf(file("doc.pdf"), 300, 600, Qt::red, 2));
    ASSERT_TRUE(writeTestEps(file("art.EPS"), 100, 50, Qt::blue));
    ASSERT_TRUE(run(file("doc.pdf")));
    EXPECT_EQ(sizeOf(file("doc_thumb.jpg")), QSize(64, 128));
    EXPECT_TRUE(colourNear(loadImage(file("doc_thumb.jpg")).pixelColor(32, 64), Qt::red, 12));
    ASSERT_TRUE(run(file("art.EPS")));
    EXPECT_EQ(sizeOf(file("art_thumb.jpg")), QSize(100, 50));
}

TEST_F(ThumbnailJobTest, OriginalsAreNeverReplacedAndBadFilesSayWhy)
{
    ASSERT_TRUE(writeTestImage(file("photo.jpg"), 40, 40));
    const QByteArray original = readBytes(file("photo.jpg"));
    set("extension", QString());
    QString why;
    EXPECT_FALSE(run(file("photo.jpg"), &why)); // the output path is the source itself
    EXPECT_EQ(readBytes(file("photo.jpg")), original);
    EXPECT_TRUE(why.contains(u"replace"_s)) << why.toStdString();

    set("extension", u"_thumb"_s);
    ASSERT_TRUE(writeBytes(file("notes.txt"), "hello"));
    ASSERT_TRUE(writeBytes(file("broken.png"), "\x89PNG\r\n\x1a\n garbage"));
    ASSERT_TRUE(writeBytes(file("empty.jpg"), ""));
    for (const char *name : { "notes.txt", "broken.png", "empty.jpg", "missing.png" }) {
        why.clear();
        EXPECT_FALSE(run(file(name), &why)) << name;
        EXPECT_FALSE(why.isEmpty()) << name;
    }
    // A write that fails leaves what was there: here the output name is taken by a folder.
    ASSERT_TRUE(QDir().mkpath(file("photo_thumb.jpg")));
    why.clear();
    EXPECT_FALSE(run(file("photo.jpg"), &why));
    EXPECT_TRUE(QFileInfo(file("photo_thumb.jpg")).isDir());
    EXPECT_TRUE(why.contains(u"cannot write"_s)) << why.toStdString();
}

TEST_F(ThumbnailJobTest, QualityAndInterpolationReachTheOutput)
{
    ASSERT_TRUE(writeTestImage(file("p.png"), 512, 512));
    set("quality", 0.1);
    ASSERT_TRUE(run(file("p.png")));
    const qint64 low = QFileInfo(file("p_thumb.jpg")).size();
    set("quality", 1.0);
    ASSERT_TRUE(run(file("p.png")));
    EXPECT_LT(low, QFileInfo(file("p_thumb.jpg")).size());

    // A fine checkerboard: nearest sampling keeps black and white, Lanczos averages to grey.
    QImage checker(256, 256, QImage::Format_RGB888);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            checker.setPixelColor(x, y, (x + y) % 2 ? Qt::white : Qt::black);
    ASSERT_TRUE(checker.save(file("c.png")));
    set("filetype", 4);
    set("Antialiasing", 1);
    ASSERT_TRUE(run(file("c.png")));
    const int nearest = loadImage(file("c_thumb.png")).pixelColor(40, 40).red();
    EXPECT_TRUE(nearest == 0 || nearest == 255) << nearest;
    set("Antialiasing", 3);
    ASSERT_TRUE(run(file("c.png")));
    EXPECT_NEAR(loadImage(file("c_thumb.png")).pixelColor(40, 40).red(), 128, 16);
}
