// Folder listing, folder creation and modification dates on real files.
#include "files/FileManager.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace orvel;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

mode_t modeOf(const QString &path)
{
    struct stat st = {};
    stat(QFile::encodeName(path).constData(), &st);
    return st.st_mode & 07777;
}

/// Restores a folder's mode when the test ends, so that the temporary folder can be removed.
struct ModeRestorer
{
    QString path;
    mode_t mode;
    ~ModeRestorer() { chmod(QFile::encodeName(path).constData(), mode); }
};

FileTime fileTime(qint64 seconds, qint64 nanoseconds)
{
    return FileTime(std::chrono::seconds(seconds) + std::chrono::nanoseconds(nanoseconds));
}

} // namespace

TEST(FileManager, ListsEverythingInFileSystemOrderIncludingHiddenAndBrokenLinks)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file("b.txt"), "b"));
    ASSERT_TRUE(writeBytes(dir.file(".hidden"), "h"));
    ASSERT_TRUE(QDir(dir.path()).mkdir("sub"));
    ASSERT_TRUE(QFile::link(dir.file("nowhere"), dir.file("dangling")));

    const QStringList names = FileManager::directoryContentsAtPath(dir.path(), false);
    const QStringList unsorted
        = QDir(dir.path())
              .entryList(
                  QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    EXPECT_EQ(names, unsorted);
    QStringList sorted = names;
    sorted.sort();
    EXPECT_EQ(sorted, QStringList({ ".hidden", "b.txt", "dangling", "sub" }));

    const QStringList full = FileManager::directoryContentsAtPath(dir.path() + "/", true);
    ASSERT_EQ(full.size(), names.size());
    for (qsizetype i = 0; i < names.size(); ++i)
        EXPECT_EQ(full.at(i), dir.path() + "/" + names.at(i));
}

TEST(FileManager, ListingOfMissingPlainOrMisnamedFolderIsEmpty)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file("file"), "x"));
    EXPECT_TRUE(FileManager::directoryContentsAtPath(dir.file("missing"), false).isEmpty());
    EXPECT_TRUE(FileManager::directoryContentsAtPath(dir.file("file"), true).isEmpty());
    EXPECT_TRUE(FileManager::directoryContentsAtPath(QString(), false).isEmpty());
    // A NUL would cut the path short at the folder itself.
    EXPECT_TRUE(FileManager::directoryContentsAtPath(dir.path() + QChar(0) + "x", false).isEmpty());
}

TEST(FileManager, ListingOfUnreadableFolderIsEmpty)
{
    TempDir dir;
    const QString locked = dir.file("locked");
    ASSERT_TRUE(QDir(dir.path()).mkdir("locked"));
    ASSERT_TRUE(writeBytes(locked + "/inside", "x"));
    ModeRestorer restore { locked, 0755 };
    ASSERT_EQ(chmod(QFile::encodeName(locked).constData(), 0), 0);
    if (access(QFile::encodeName(locked).constData(), R_OK) == 0)
        GTEST_SKIP() << "running with privileges that read a folder of mode 000";
    EXPECT_TRUE(FileManager::directoryContentsAtPath(locked, false).isEmpty());
}

TEST(FileManager, MatchesExtensionIgnoringCase)
{
    TempDir dir;
    for (const char *name : { "a.JPG", "b.jpg", "c.png", "jpg", ".jpg", "d.tar.Jpg" })
        ASSERT_TRUE(writeBytes(dir.file(name), "x"));

    QStringList names = FileManager::directoryContentsAtPathMatchingExtension(dir.path(), "jpg");
    names.sort();
    EXPECT_EQ(names, QStringList({ "a.JPG", "b.jpg", "d.tar.Jpg" }));

    const QStringList full = FileManager::directoryContentsAtPathMatchingExtension(dir.path(), "PNG", true);
    EXPECT_EQ(full, QStringList({ dir.file("c.png") }));

    // Names without an extension, a leading dot included, match the empty extension.
    QStringList bare = FileManager::directoryContentsAtPathMatchingExtension(dir.path(), "");
    bare.sort();
    EXPECT_EQ(bare, QStringList({ ".jpg", "jpg" }));
}

TEST(FileManager, CreatePathAnswersForWhatIsAlreadyThere)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file("file"), "x"));
    EXPECT_FALSE(FileManager::createPath(dir.file("file")));
    EXPECT_FALSE(FileManager::createPath(dir.file("file/sub")));
    EXPECT_FALSE(FileManager::createPath(QString()));

    ASSERT_TRUE(QDir(dir.path()).mkdir("folder"));
    chmod(QFile::encodeName(dir.file("folder")).constData(), 0700);
    EXPECT_TRUE(FileManager::createPath(dir.file("folder"), QFileDevice::Permissions(0x7777)));
    EXPECT_EQ(modeOf(dir.file("folder")), 0700u) << "an existing folder is left as it is";
}

TEST(FileManager, CreatePathMakesEveryMissingFolderWithThePermissions)
{
    TempDir dir;
    const mode_t previous = umask(022);
    const QString deep = dir.file("a/b/c");
    const auto all = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner
        | QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup | QFileDevice::ReadOther
        | QFileDevice::WriteOther | QFileDevice::ExeOther;
    const bool created = FileManager::createPath(deep, all);
    umask(previous);
    ASSERT_TRUE(created);
    for (const QString &folder : { dir.file("a"), dir.file("a/b"), deep })
        EXPECT_EQ(modeOf(folder), 0777u) << folder.toStdString() << ": set exactly, not masked";

    EXPECT_TRUE(FileManager::createPathToFile(dir.file("x/y/thumb.png")));
    bool isDirectory = false;
    EXPECT_TRUE(FileManager::fileExistsAtPath(dir.file("x/y"), &isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_FALSE(FileManager::fileExistsAtPath(dir.file("x/y/thumb.png")));
}

TEST(FileManager, CreatePathRefusesAPathWithANul)
{
    TempDir dir;
    EXPECT_FALSE(FileManager::createPath(dir.file("new") + QChar(0) + "/more"));
    EXPECT_FALSE(QFileInfo::exists(dir.file("new")));
}

TEST(FileManager, ModificationDateRoundTripsWithNanosecondsAndLeavesAccessTime)
{
    TempDir dir;
    const QString file = dir.file("f");
    ASSERT_TRUE(writeBytes(file, "x"));
    const timespec access[2] = { { 1000000000, 111 }, { 0, UTIME_OMIT } };
    ASSERT_EQ(utimensat(AT_FDCWD, QFile::encodeName(file).constData(), access, 0), 0);

    for (const FileTime t :
        { fileTime(1600000000, 123456789), fileTime(-86401, 999999999), fileTime(0, 1) }) {
        ASSERT_TRUE(FileManager::setFileModificationDate(t, file));
        EXPECT_EQ(FileManager::fileModificationDateAtPath(file), t);
    }
    struct stat st = {};
    ASSERT_EQ(stat(QFile::encodeName(file).constData(), &st), 0);
    EXPECT_EQ(st.st_atim.tv_sec, 1000000000);
    EXPECT_EQ(st.st_atim.tv_nsec, 111);
}

TEST(FileManager, MissingDateOrPathChangesNothing)
{
    TempDir dir;
    const QString file = dir.file("f");
    ASSERT_TRUE(writeBytes(file, "x"));
    const FileTime t = fileTime(1500000000, 5);
    ASSERT_TRUE(FileManager::setFileModificationDate(t, file));

    EXPECT_FALSE(FileManager::setFileModificationDate(std::nullopt, file));
    EXPECT_EQ(FileManager::fileModificationDateAtPath(file), t);
    EXPECT_FALSE(FileManager::setFileModificationDate(t, QString()));
    EXPECT_FALSE(FileManager::setFileModificationDate(t, dir.file("missing")));
    EXPECT_EQ(FileManager::fileModificationDateAtPath(dir.file("missing")), std::nullopt);
    EXPECT_EQ(FileManager::fileModificationDateAtPath(QString()), std::nullopt);
}

TEST(FileManager, ExistenceFollowsLinks)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder"));
    ASSERT_TRUE(QFile::link(dir.file("folder"), dir.file("toFolder")));
    ASSERT_TRUE(QFile::link(dir.file("nowhere"), dir.file("dangling")));
    bool isDirectory = false;
    EXPECT_TRUE(FileManager::fileExistsAtPath(dir.file("toFolder"), &isDirectory));
    EXPECT_TRUE(isDirectory);
    isDirectory = true;
    EXPECT_FALSE(FileManager::fileExistsAtPath(dir.file("dangling"), &isDirectory));
    EXPECT_FALSE(isDirectory);
}
