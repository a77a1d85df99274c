// Tests of IconService: real entries written to a thumbnail cache in a temporary folder.
#include "app/engine/IconService.h"
#include "testlib/TestSupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QRandomGenerator>
#include <QUrl>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <utime.h>

using namespace Qt::StringLiterals;

using orvel::IconService;
using Size = IconService::CacheSize;
using namespace orvel::test;

namespace {

const QList<QPair<Size, QString>> Folders = {
    { Size::Normal, u"normal"_s },
    { Size::Large, u"large"_s },
    { Size::XLarge, u"x-large"_s },
    { Size::XXLarge, u"xx-large"_s },
};

QImage filledImage(int w, int h, QColor colour, QImage::Format format = QImage::Format_RGBA8888_Premultiplied)
{
    QImage image(w, h, format);
    image.fill(colour);
    return image;
}

class IconServiceTest : public ::testing::Test
{
protected:
    QString cacheHome() const { return m_cache.file(u"cache"_s); }
    QString thumbnails() const { return cacheHome() + u"/thumbnails"_s; }

    // A real source file whose modification time is fixed at mtime.
    QString makeSource(const QString &name, time_t mtime = 1000000000)
    {
        const QString path = m_files.file(name);
        EXPECT_TRUE(writeBytes(path, QByteArray(1234, 'x')));
        const utimbuf times { mtime, mtime };
        EXPECT_EQ(::utime(QFile::encodeName(path).constData(), &times), 0);
        return path;
    }

    TempDir m_files;
    TempDir m_cache;
    EnvironmentOverride m_cacheHome { "XDG_CACHE_HOME", cacheHome() };
};

TEST_F(IconServiceTest, KeysEntriesByTheEscapedFileUri)
{
    const QString dir = m_files.path() + u"/Fotos März 2024"_s;
    const QString path = dir + u"/Bild #1 (Kopie) ü€.jpg"_s;
    // Built by another route than the service's: QUrl's own encoding of a local file.
    const QString expectedUri = QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
    ASSERT_TRUE(expectedUri.contains(u"%20"_s));
    EXPECT_EQ(IconService::uriForFile(path), expectedUri);
    EXPECT_EQ(IconService::uriForFile(u"/tmp/a b/\u00e9+x.png"_s), u"file:///tmp/a%20b/%C3%A9+x.png"_s);

    const QString md5 = QString::fromLatin1(
        QCryptographicHash::hash(expectedUri.toUtf8(), QCryptographicHash::Md5).toHex());
    for (const auto &[size, folder] : Folders)
        EXPECT_EQ(
            IconService::cachePathForFile(path, size), thumbnails() + u'/' + folder + u'/' + md5 + u".png"_s);

    // A relative or unclean path names the same file, hence the same entry.
    const QString saved = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_files.path()));
    EXPECT_EQ(IconService::uriForFile(u"./x/../Fotos März 2024//Bild #1 (Kopie) ü€.jpg"_s), expectedUri);
    QDir::setCurrent(saved);

    EXPECT_TRUE(IconService::uriForFile(QString()).isEmpty());
    EXPECT_TRUE(IconService::cachePathForFile(QString(), Size::Normal).isEmpty());
}

TEST_F(IconServiceTest, WritesEveryEntryPrivatelyWithItsTextChunksAndTransparencyAndNothingElse)
{
    const QString source = makeSource(u"photo with spaces é.jpg"_s, 1000000000);
    // Left half clear, right half half-transparent red, premultiplied as the engine's pictures are.
    QImage image = filledImage(1000, 1000, Qt::transparent);
    QPainter(&image).fillRect(500, 0, 500, 1000, QColor(255, 0, 0, 128));
    const mode_t oldMask = ::umask(0);
    const bool ok = IconService::setIconForFile(image, source, 4);
    ::umask(oldMask);
    ASSERT_TRUE(ok);

    EXPECT_EQ(fileMode(cacheHome()), 0700u);
    EXPECT_EQ(fileMode(thumbnails()), 0700u);
    const QString uri = QString::fromLatin1(QUrl::fromLocalFile(source).toEncoded());
    QStringList expected;
    for (const auto &[size, folder] : Folders) {
        SCOPED_TRACE(folder.toStdString());
        const QString path = IconService::cachePathForFile(source, size);
        EXPECT_EQ(fileMode(thumbnails() + u'/' + folder), 0700u);
        EXPECT_EQ(fileMode(path), 0600u);
        expected << folder + u'/' + QFileInfo(path).fileName();
        QImageReader reader(path);
        EXPECT_EQ(reader.format(), "png");
        // QImageReader::text() cuts keys at their first colon; the image read keeps them whole.
        const QImage entry = reader.read();
        EXPECT_EQ(entry.text(u"Thumb::URI"_s), uri);
        EXPECT_EQ(entry.text(u"Thumb::MTime"_s), u"1000000000"_s);
        EXPECT_EQ(entry.text(u"Thumb::Size"_s), u"1234"_s);
        const int w = entry.width();
        EXPECT_EQ(entry.pixelColor(w / 8, w / 2).alpha(), 0);
        EXPECT_TRUE(colourNear(entry.pixelColor(w * 7 / 8, w / 2), QColor(255, 0, 0, 128), 2));
    }
    expected.sort();
    EXPECT_EQ(filesBelow(thumbnails()), expected); // no temporary file left behind
}

TEST_F(IconServiceTest, ScalesDownToEachSizeButNeverUp)
{
    const QString source = makeSource(u"s.tif"_s);
    struct Case
    {
        QSize image;
        QList<QSize> entries;
    };
    const QList<Case> cases = {
        { { 300, 300 }, { { 128, 128 }, { 256, 256 }, { 300, 300 }, { 300, 300 } } },
        { { 90, 700 }, { { 16, 128 }, { 33, 256 }, { 66, 512 }, { 90, 700 } } },
        { { 3000, 2 }, { { 128, 1 }, { 256, 1 }, { 512, 1 }, { 1024, 1 } } },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(u"%1x%2"_s.arg(c.image.width()).arg(c.image.height()).toStdString());
        ASSERT_TRUE(
            IconService::setIconForFile(filledImage(c.image.width(), c.image.height(), Qt::green), source));
        for (qsizetype i = 0; i < Folders.size(); ++i)
            EXPECT_EQ(
                QImageReader(IconService::cachePathForFile(source, Folders[i].first)).size(), c.entries[i]);
    }
}

TEST_F(IconServiceTest, MissingSourceNullImageOrUnwritableCacheWriteNothing)
{
    EXPECT_FALSE(IconService::setIconForFile(filledImage(200, 200, Qt::red), m_files.file(u"gone.jpg"_s)));
    EXPECT_FALSE(IconService::setIconForFile(QImage(), makeSource(u"there.jpg"_s)));
    EXPECT_FALSE(IconService::setIconForFile(filledImage(200, 200, Qt::red), QString()));
    EXPECT_FALSE(QFileInfo::exists(thumbnails()));
    const QString source = makeSource(u"u.jpg"_s);
    const QString blocker = m_cache.file(u"not-a-folder"_s);
    ASSERT_TRUE(writeBytes(blocker, "plain file"));
    const EnvironmentOverride blocked("XDG_CACHE_HOME", blocker);
    EXPECT_FALSE(IconService::setIconForFile(filledImage(300, 300, Qt::red), source));
    EXPECT_EQ(readBytes(blocker), QByteArray("plain file"));
    EXPECT_EQ(filesBelow(m_cache.path()), QStringList { u"not-a-folder"_s });
}

TEST_F(IconServiceTest, FailedWriteLeavesNoPartialEntryNorOlderOne)
{
    const QString source = makeSource(u"big.jpg"_s);
    ASSERT_TRUE(IconService::setIconForFile(filledImage(2000, 2000, Qt::red), source));

    // Noise does not compress: the 1024-pixel entry (about 4 MB) cannot be written under a 600 kB
    // file-size limit while the 128-pixel one (about 64 kB) can.
    QImage noise(2000, 2000, QImage::Format_RGB32);
    for (int y = 0; y < noise.height(); ++y)
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(noise.scanLine(y)), noise.width());
    auto *previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit saved {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
    rlimit limited = saved;
    limited.rlim_cur = 600 * 1024;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
    const bool ok = IconService::setIconForFile(noise, source);
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previous);

    EXPECT_FALSE(ok);
    const QString xxl = IconService::cachePathForFile(source, Size::XXLarge);
    EXPECT_FALSE(QFileInfo::exists(xxl)); // the older red entry is gone too, not left to show the old icon
    const QImage normal(IconService::cachePathForFile(source, Size::Normal));
    ASSERT_EQ(normal.size(), QSize(128, 128));
    EXPECT_FALSE(colourNear(normal.pixelColor(64, 64), Qt::red, 10)
        && colourNear(normal.pixelColor(3, 3), Qt::red, 10));
    for (const QString &f : filesBelow(thumbnails()))
        EXPECT_TRUE(f.endsWith(u".png"_s)) << f.toStdString();
}

TEST_F(IconServiceTest, ReplacingAndRemovingEntries)
{
    const QString source = makeSource(u"r.jpg"_s, 1000000000);
    ASSERT_TRUE(IconService::setIconForFile(filledImage(256, 256, Qt::red), source));
    const utimbuf later { 1200000000, 1200000000 };
    ASSERT_EQ(::utime(QFile::encodeName(source).constData(), &later), 0);
    ASSERT_TRUE(IconService::setIconForFile(filledImage(256, 256, Qt::green), source));

    const QImage entry(IconService::cachePathForFile(source, Size::Large));
    EXPECT_EQ(entry.text(u"Thumb::MTime"_s), u"1200000000"_s);
    EXPECT_TRUE(colourNear(entry.pixelColor(10, 10), Qt::green, 1));

    // Another file's entries are not touched by a removal.
    const QString other = makeSource(u"other.jpg"_s);
    ASSERT_TRUE(IconService::setIconForFile(filledImage(64, 64, Qt::red), other));
    EXPECT_TRUE(IconService::removeIconOfFile(source));
    for (const auto &[size, folder] : Folders) {
        EXPECT_FALSE(QFileInfo::exists(IconService::cachePathForFile(source, size))) << folder.toStdString();
        EXPECT_TRUE(QFileInfo::exists(IconService::cachePathForFile(other, size))) << folder.toStdString();
    }
    EXPECT_TRUE(IconService::removeIconOfFile(source)); // nothing left is still "none left"
}

} // namespace
