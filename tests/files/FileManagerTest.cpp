// Folder listing, folder creation and modification dates on real files.
#include "files/FileManager.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::fileMode;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

FileTime fileTime(qint64 seconds, qint64 nanoseconds)
{
    return FileTime(std::chrono::seconds(seconds) + std::chrono::nanoseconds(nanoseconds));
}

} // namespace

TEST(FileManager, ListsEverythingInFileSystemOrderAndExistenceFollowsLinks)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file(u"b.txt"_s), "b"));
    ASSERT_TRUE(writeBytes(dir.file(u".hidden"_s), "h"));
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"sub"_s));
    ASSERT_TRUE(QFile::link(dir.file(u"nowhere"_s), dir.file(u"dangling"_s)));
    ASSERT_TRUE(QFile::link(dir.file(u"sub"_s), dir.file(u"toSub"_s)));

    const QStringList names = FileManager::directoryContentsAtPath(dir.path(), false);
    EXPECT_EQ(names,
        QDir(dir.path())
            .entryList(
                QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted));
    EXPECT_EQ(names.size(), 5);
    const QStringList full = FileManager::directoryContentsAtPath(dir.path() + u"/"_s, true);
    ASSERT_EQ(full.size(), names.size());
    for (qsizetype i = 0; i < names.size(); ++i)
        EXPECT_EQ(full.at(i), dir.path() + u"/"_s + names.at(i));

    // A missing folder, a plain file, no path, and a NUL that would cut the path short at the folder.
    for (const QString &path :
        { dir.file(u"missing"_s), dir.file(u"b.txt"_s), QString(), dir.path() + QChar(0) + u"x"_s })
        EXPECT_TRUE(FileManager::directoryContentsAtPath(path, true).isEmpty()) << path;

    // Existence follows links: a link to a folder is a folder, a broken link is nothing.
    bool isDirectory = false;
    EXPECT_TRUE(FileManager::fileExistsAtPath(dir.file(u"toSub"_s), &isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_FALSE(FileManager::fileExistsAtPath(dir.file(u"dangling"_s), &isDirectory));
    EXPECT_FALSE(isDirectory);
}

TEST(FileManager, MatchesExtensionIgnoringCase)
{
    TempDir dir;
    for (const char *name : { "a.JPG", "b.jpg", "c.png", "jpg", ".jpg", "d.tar.Jpg" })
        ASSERT_TRUE(writeBytes(dir.file(QString::fromLatin1(name)), "x"));

    QStringList names = FileManager::directoryContentsAtPathMatchingExtension(dir.path(), u"jpg"_s);
    names.sort();
    EXPECT_EQ(names, QStringList({ u"a.JPG"_s, u"b.jpg"_s, u"d.tar.Jpg"_s }));
    EXPECT_EQ(FileManager::directoryContentsAtPathMatchingExtension(dir.path(), u"PNG"_s, true),
        QStringList({ dir.file(u"c.png"_s) }));
    // Names without an extension, a leading dot included, match the empty extension.
    QStringList bare = FileManager::directoryContentsAtPathMatchingExtension(dir.path(), u""_s);
    bare.sort();
    EXPECT_EQ(bare, QStringList({ u".jpg"_s, u"jpg"_s }));
}

TEST(FileManager, CreatePathMakesEveryMissingFolderAndAnswersForWhatIsThere)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file(u"file"_s), "x"));
    EXPECT_FALSE(FileManager::createPath(dir.file(u"file"_s)));
    EXPECT_FALSE(FileManager::createPath(dir.file(u"file/sub"_s)));
    EXPECT_FALSE(FileManager::createPath(QString()));
    EXPECT_FALSE(FileManager::createPath(dir.file(u"new"_s) + QChar(0) + u"/more"_s));
    EXPECT_FALSE(QFileInfo::exists(dir.file(u"new"_s)));

    ASSERT_TRUE(QDir(dir.path()).mkdir(u"folder"_s));
    chmod(QFile::encodeName(dir.file(u"folder"_s)).constData(), 0700);
    EXPECT_TRUE(FileManager::createPath(dir.file(u"folder"_s), QFileDevice::Permissions(0x7777)));
    EXPECT_EQ(fileMode(dir.file(u"folder"_s)), 0700u) << "an existing folder is left as it is";

    // Every missing folder is made with the permissions.
    const mode_t previous = umask(022);
    const QString deep = dir.file(u"a/b/c"_s);
    const bool created = FileManager::createPath(deep, QFileDevice::Permissions(0x7777));
    umask(previous);
    ASSERT_TRUE(created);
    for (const QString &folder : { dir.file(u"a"_s), dir.file(u"a/b"_s), deep })
        EXPECT_EQ(fileMode(folder), 0777u) << folder << ": set exactly, not masked";

    EXPECT_TRUE(FileManager::createPathToFile(dir.file(u"x/y/thumb.png"_s)));
    bool isDirectory = false;
    EXPECT_TRUE(FileManager::fileExistsAtPath(dir.file(u"x/y"_s), &isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_FALSE(FileManager::fileExistsAtPath(dir.file(u"x/y/thumb.png"_s)));
}

TEST(FileManager, ModificationDateRoundTripsWithNanosecondsAndLeavesAccessTime)
{
    TempDir dir;
    const QString file = dir.file(u"f"_s);
    ASSERT_TRUE(writeBytes(file, "x"));
    const timespec access[2] = { { 1000000000, 111 }, { 0, UTIME_OMIT } };
    ASSERT_EQ(utimensat(AT_FDCWD, QFile::encodeName(file).constData(), access, 0), 0);

    for (const FileTime t :
        { fileTime(-86401, 999999999), fileTime(0, 1), fileTime(1600000000, 123456789) }) {
        ASSERT_TRUE(FileManager::setFileModificationDate(t, file));
        EXPECT_EQ(FileManager::fileModificationDateAtPath(file), t);
    }
    struct stat st = {};
    ASSERT_EQ(stat(QFile::encodeName(file).constData(), &st), 0);
    EXPECT_EQ(st.st_atim.tv_sec, 1000000000);
    EXPECT_EQ(st.st_atim.tv_nsec, 111);

    // A missing date or path changes nothing.
    EXPECT_FALSE(FileManager::setFileModificationDate(std::nullopt, file));
    EXPECT_EQ(FileManager::fileModificationDateAtPath(file), fileTime(1600000000, 123456789));
    EXPECT_FALSE(FileManager::setFileModificationDate(fileTime(5, 5), QString()));
    EXPECT_FALSE(FileManager::setFileModificationDate(fileTime(5, 5), dir.file(u"missing"_s)));
    EXPECT_EQ(FileManager::fileModificationDateAtPath(dir.file(u"missing"_s)), std::nullopt);
    EXPECT_EQ(FileManager::fileModificationDateAtPath(QString()), std::nullopt);
}
