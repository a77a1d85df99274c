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

using namespace Qt::StringLiterals;

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
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

TEST(AtomicFile, NewFileGetsTheUsualModeAndAReplacementKeepsTheOldOne)
{
    TempDir dir;
    const QString path = dir.file(u"thumb.png"_s);
    const QByteArray data(100000, 'x');
    const mode_t previous = umask(027);
    const bool created = writeFileAtomically(path, data);
    const mode_t createdMode = statOf(path).st_mode & 07777;
    umask(previous);
    ASSERT_TRUE(created);
    EXPECT_EQ(readBytes(path), data);
    EXPECT_EQ(createdMode, 0640u);

    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0604), 0);
    const ino_t oldInode = statOf(path).st_ino;
    ASSERT_TRUE(writeFileAtomically(path, "new"));
    EXPECT_EQ(readBytes(path), "new");
    EXPECT_EQ(statOf(path).st_mode & 07777, 0604u);
    EXPECT_NE(statOf(path).st_ino, oldInode) << "a new file took the old one's place";
    EXPECT_EQ(entriesOf(dir.path()), QStringList({ u"thumb.png"_s }));
}

TEST(AtomicFile, WritesThroughALinkToItsTarget)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"real"_s));
    ASSERT_TRUE(writeBytes(dir.file(u"real/target"_s), "old"));
    ASSERT_TRUE(QFile::link(u"real/target"_s, dir.file(u"link"_s)));
    ASSERT_TRUE(QFile::link(dir.file(u"real/created"_s), dir.file(u"dangling"_s)));

    ASSERT_TRUE(writeFileAtomically(dir.file(u"link"_s), "new"));
    ASSERT_TRUE(writeFileAtomically(dir.file(u"dangling"_s), "made"));
    EXPECT_TRUE(QFileInfo(dir.file(u"link"_s)).isSymLink());
    EXPECT_TRUE(QFileInfo(dir.file(u"dangling"_s)).isSymLink());
    EXPECT_EQ(readBytes(dir.file(u"real/target"_s)), "new");
    EXPECT_EQ(readBytes(dir.file(u"real/created"_s)), "made");
    EXPECT_EQ(entriesOf(dir.file(u"real"_s)), QStringList({ u"created"_s, u"target"_s }));
}

TEST(AtomicFile, RefusesWhatIsNotAPlainFileOrHasNoFolderAndLeavesNothing)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"folder"_s));
    ASSERT_EQ(mkfifo(QFile::encodeName(dir.file(u"pipe"_s)).constData(), 0600), 0);
    const std::pair<QString, QString> cases[] = {
        { dir.file(u"folder"_s), u"Is a directory"_s },
        { dir.file(u"pipe"_s), u"Not a plain file"_s },
        { dir.file(u"missing/out.png"_s), u"No such file or directory"_s },
        { dir.file(u"a"_s) + QChar(0) + u"b"_s, u"Invalid argument"_s },
    };
    for (const auto &[path, reason] : cases) {
        QString error;
        EXPECT_FALSE(writeFileAtomically(path, "x", &error)) << path;
        EXPECT_EQ(error, reason) << path;
    }
    EXPECT_EQ(entriesOf(dir.path()), QStringList({ u"folder"_s, u"pipe"_s }));
}

TEST(AtomicFile, FailingWriteLeavesTheOldFileAndNoTemporary)
{
    // The unflushed writer skips only the flushes: the same guarantees otherwise.
    for (const auto write : { &writeFileAtomically, &writeFileAtomicallyUnflushed }) {
        TempDir dir;
        const QString path = dir.file(u"thumb.tiff"_s);
        ASSERT_TRUE(writeBytes(path, "old"));
        ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0604), 0);

        // A file-size limit makes the write itself fail part way, as a full disk would.
        rlimit previous {};
        ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &previous), 0);
        rlimit small = previous;
        small.rlim_cur = 4096;
        void (*previousHandler)(int) = std::signal(SIGXFSZ, SIG_IGN);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        QString error;
        const bool written = write(path, QByteArray(100000, 'n'), &error);
        setrlimit(RLIMIT_FSIZE, &previous);
        std::signal(SIGXFSZ, previousHandler);

        EXPECT_FALSE(written);
        EXPECT_EQ(error, u"File too large"_s);
        EXPECT_EQ(readBytes(path), "old");
        EXPECT_EQ(entriesOf(dir.path()), QStringList({ u"thumb.tiff"_s }));

        ASSERT_TRUE(write(path, "new", nullptr));
        EXPECT_EQ(readBytes(path), "new");
        EXPECT_EQ(statOf(path).st_mode & 07777, 0604u);
        EXPECT_EQ(entriesOf(dir.path()), QStringList({ u"thumb.tiff"_s }));
    }
}
