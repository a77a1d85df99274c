// Atomic file writing: complete replacement, kept permissions, and no debris after real failures.
#include "files/AtomicFile.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace orvel;
using orvel::test::readBytes;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

struct stat statOf(const QString &path)
{
    struct stat st = {};
    lstat(QFile::encodeName(path).constData(), &st);
    return st;
}

QStringList entriesOf(const QString &folder)
{
    QStringList names
        = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    names.sort();
    return names;
}

/// Sets the umask for the life of the object.
struct UmaskScope
{
    explicit UmaskScope(mode_t mask)
        : previous(umask(mask))
    {
    }
    ~UmaskScope() { umask(previous); }
    mode_t previous;
};

} // namespace

TEST(AtomicFile, NewFileGetsTheUsualModeAndNothingElseIsLeft)
{
    TempDir dir;
    const QString path = dir.file("new.png");
    const QByteArray data(100000, 'x');
    {
        UmaskScope mask(027);
        ASSERT_TRUE(writeFileAtomically(path, data));
    }
    EXPECT_EQ(readBytes(path), data);
    EXPECT_EQ(statOf(path).st_mode & 07777, 0640u);
    EXPECT_EQ(entriesOf(dir.path()), QStringList({ "new.png" }));
}

TEST(AtomicFile, ReplacesByRenameKeepingPermissions)
{
    TempDir dir;
    const QString path = dir.file("thumb.jpg");
    ASSERT_TRUE(writeBytes(path, "old contents that are longer"));
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0604), 0);
    const ino_t oldInode = statOf(path).st_ino;

    UmaskScope mask(022);
    QString error = "untouched";
    ASSERT_TRUE(writeFileAtomically(path, "new", &error));
    EXPECT_EQ(error, "untouched");
    EXPECT_EQ(readBytes(path), "new");
    EXPECT_EQ(statOf(path).st_mode & 07777, 0604u);
    EXPECT_NE(statOf(path).st_ino, oldInode) << "a new file took the old one's place";
    EXPECT_EQ(entriesOf(dir.path()), QStringList({ "thumb.jpg" }));
}

TEST(AtomicFile, WritesThroughALinkToItsTarget)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir("real"));
    ASSERT_TRUE(writeBytes(dir.file("real/target"), "old"));
    ASSERT_TRUE(QFile::link("real/target", dir.file("link")));
    ASSERT_TRUE(QFile::link(dir.file("real/created"), dir.file("dangling")));

    ASSERT_TRUE(writeFileAtomically(dir.file("link"), "new"));
    EXPECT_TRUE(QFileInfo(dir.file("link")).isSymLink());
    EXPECT_EQ(readBytes(dir.file("real/target")), "new");

    ASSERT_TRUE(writeFileAtomically(dir.file("dangling"), "made"));
    EXPECT_TRUE(QFileInfo(dir.file("dangling")).isSymLink());
    EXPECT_EQ(readBytes(dir.file("real/created")), "made");
    EXPECT_EQ(entriesOf(dir.file("real")), QStringList({ "created", "target" }));
}

TEST(AtomicFile, RefusesWhatIsNotAPlainFile)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder"));
    ASSERT_EQ(mkfifo(QFile::encodeName(dir.file("pipe")).constData(), 0600), 0);
    QString error;
    EXPECT_FALSE(writeFileAtomically(dir.file("folder"), "x", &error));
    EXPECT_EQ(error, "Is a directory");
    EXPECT_TRUE(QFileInfo(dir.file("folder")).isDir());

    EXPECT_FALSE(writeFileAtomically(dir.file("pipe"), "x", &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(S_ISFIFO(statOf(dir.file("pipe")).st_mode));
    EXPECT_EQ(entriesOf(dir.path()), QStringList({ "folder", "pipe" }));
}

TEST(AtomicFile, MissingFolderOrEmptyPathFails)
{
    TempDir dir;
    QString error;
    EXPECT_FALSE(writeFileAtomically(dir.file("missing/out.png"), "x", &error));
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_TRUE(entriesOf(dir.path()).isEmpty());
    EXPECT_FALSE(writeFileAtomically(QString(), "x", &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(writeFileAtomically(dir.file("a") + QChar(0) + "b", "x"));
    EXPECT_TRUE(entriesOf(dir.path()).isEmpty());
}

TEST(AtomicFile, FailingWriteLeavesTheOldFileAndNoTemporary)
{
    TempDir dir;
    const QString path = dir.file("thumb.tiff");
    ASSERT_TRUE(writeBytes(path, "old"));

    // A file-size limit makes the write itself fail part way, as a full disk would.
    rlimit previous {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &previous), 0);
    rlimit small = previous;
    small.rlim_cur = 4096;
    void (*previousHandler)(int) = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    QString error;
    const bool written = writeFileAtomically(path, QByteArray(100000, 'n'), &error);
    setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousHandler);

    EXPECT_FALSE(written);
    EXPECT_EQ(error, "File too large");
    EXPECT_EQ(readBytes(path), "old");
    EXPECT_EQ(entriesOf(dir.path()), QStringList({ "thumb.tiff" }));
}

TEST(AtomicFile, ReadOnlyFolderFailsLeavingTheOldFile)
{
    TempDir dir;
    const QString folder = dir.file("ro");
    ASSERT_TRUE(QDir(dir.path()).mkdir("ro"));
    ASSERT_TRUE(writeBytes(folder + "/thumb.png", "old"));
    ASSERT_EQ(chmod(QFile::encodeName(folder).constData(), 0555), 0);
    struct Restore
    {
        QByteArray path;
        ~Restore() { chmod(path.constData(), 0755); }
    } restore { QFile::encodeName(folder) };
    if (access(restore.path.constData(), W_OK) == 0)
        GTEST_SKIP() << "running with privileges that write into a folder of mode 555";

    QString error;
    EXPECT_FALSE(writeFileAtomically(folder + "/thumb.png", "new", &error));
    EXPECT_EQ(error, "Permission denied");
    EXPECT_EQ(readBytes(folder + "/thumb.png"), "old");
    EXPECT_EQ(entriesOf(folder), QStringList({ "thumb.png" }));
}
