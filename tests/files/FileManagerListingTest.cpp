// Creating, listing, removing, unique names, rotating archives, modification dates and writing on real
// folders.
#include "files/FileManager.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::fileMode;
using orvel::test::readBytes;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

FileTime fileTime(qint64 seconds, qint64 nanoseconds)
{
    return FileTime(std::chrono::seconds(seconds) + std::chrono::nanoseconds(nanoseconds));
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

bool makeLink(const QString &target, const QString &link) { return QFile::link(target, link); }

void setAge(const QString &path, int secondsAgo)
{
    const auto now = std::chrono::time_point_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now());
    ASSERT_TRUE(FileManager::setFileModificationDate(now - std::chrono::seconds(secondsAgo), path));
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

    EXPECT_EQ(sorted(FileManager::directoryContentsAtPathMatchingExtension(dir.path(), u"jpg"_s)),
        QStringList({ u"a.JPG"_s, u"b.jpg"_s, u"d.tar.Jpg"_s }));
    EXPECT_EQ(FileManager::directoryContentsAtPathMatchingExtension(dir.path(), u"PNG"_s, true),
        QStringList({ dir.file(u"c.png"_s) }));
    // Names without an extension, a leading dot included, match the empty extension.
    EXPECT_EQ(sorted(FileManager::directoryContentsAtPathMatchingExtension(dir.path(), u""_s)),
        QStringList({ u".jpg"_s, u"jpg"_s }));
    EXPECT_EQ(sorted(FileManager::directoryContentsAtPathMatchingWildcard(dir.path(), u"?.JPG"_s)),
        (QStringList { u"a.JPG"_s, u"b.jpg"_s }))
        << "wildcards ignore case too";
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
}

TEST(FileManagerListing, FlatAndDeepListingsSortFilesFromFoldersAndDropBrokenLinks)
{
    TempDir dir;
    const QString top = dir.path();
    ASSERT_TRUE(writeBytes(dir.file(u"a.txt"_s), "a"));
    ASSERT_TRUE(writeBytes(dir.file(u".dot"_s), "d"));
    ASSERT_TRUE(FileManager::createPath(dir.file(u"App.app/Contents"_s)));
    ASSERT_TRUE(writeBytes(dir.file(u"App.app/Contents/Info.plist"_s), "i"));
    ASSERT_TRUE(makeLink(dir.file(u"missing"_s), dir.file(u"broken"_s)));
    ASSERT_TRUE(makeLink(dir.file(u"App.app"_s), dir.file(u"linked"_s)));

    EXPECT_EQ(sorted(FileManager::directoryFilesAtPath(top, false)), (QStringList { u".dot"_s, u"a.txt"_s }));
    EXPECT_EQ(
        sorted(FileManager::directoryFoldersAtPath(top, false)), (QStringList { u"App.app"_s, u"linked"_s }));
    EXPECT_EQ(sorted(FileManager::deepDirectoryFilesAtPath(top)),
        sorted({ dir.file(u".dot"_s), dir.file(u"a.txt"_s), dir.file(u"App.app/Contents/Info.plist"_s),
            dir.file(u"linked/Contents/Info.plist"_s) }));
    EXPECT_TRUE(FileManager::deepDirectoryContentsAtPath(dir.file(u"nothing"_s)).isEmpty());
}

/// The deep listing the slow way: flat listings walked folder by folder, loops kept apart.
void walkFolderByFolder(const QString &folder, std::vector<FileIdentity> &ancestors, QStringList &out)
{
    for (const QString &name : FileManager::directoryContentsAtPath(folder, false)) {
        const QString full = folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
        bool isDirectory = false;
        if (!FileManager::fileExistsAtPath(full, &isDirectory))
            continue;
        out.append(full);
        const std::optional<FileIdentity> identity = FileManager::fileIdentityAtPath(full);
        if (!isDirectory || std::find(ancestors.begin(), ancestors.end(), *identity) != ancestors.end())
            continue;
        ancestors.push_back(*identity);
        walkFolderByFolder(full, ancestors, out);
        ancestors.pop_back();
    }
}

TEST(FileManagerListing, DeepListingIsTheFlatListingsWalkedInTheSameOrder)
{
    TempDir dir;
    for (const QString &folder : { u"t/a/x"_s, u"t/b"_s, u"t/ü"_s })
        ASSERT_TRUE(FileManager::createPath(dir.file(folder)));
    for (int i = 0; i < 40; ++i)
        ASSERT_TRUE(writeBytes(dir.file(u"t/%1/f%2"_s.arg(i % 2 ? u"a/x"_s : u"ü"_s).arg(i)), "f"));
    ASSERT_TRUE(writeBytes(dir.file(u"t/.dot"_s), "d"));
    ASSERT_TRUE(makeLink(dir.file(u"t/a/x/f1"_s), dir.file(u"t/b/to-file"_s)));
    ASSERT_TRUE(makeLink(dir.file(u"t/a"_s), dir.file(u"t/b/to-folder"_s)));
    ASSERT_TRUE(makeLink(u".."_s, dir.file(u"t/a/x/up"_s)));
    ASSERT_TRUE(makeLink(u"gone"_s, dir.file(u"t/b/broken"_s)));
    // A name that is not UTF-8 cannot be handed on as a path, so no listing has it.
    const QByteArray undecodable = QFile::encodeName(dir.file(u"t/b/"_s)) + "bad\xff";
    const int fd = ::open(undecodable.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0);
    ::close(fd);

    for (const QString &top : { dir.file(u"t"_s), dir.file(u"t/"_s) }) {
        std::vector<FileIdentity> ancestors { *FileManager::fileIdentityAtPath(top) };
        QStringList expected;
        walkFolderByFolder(top, ancestors, expected);
        EXPECT_EQ(expected.size(), 70); // the link to a folder entered once, the loop not at all
        EXPECT_EQ(FileManager::deepDirectoryContentsAtPath(top), expected) << top;
    }
    ::unlink(undecodable.constData()); // the temporary folder's clean-up cannot name it
}

TEST(FileManagerListing, VisibleFilesIgnoreDotFilesAndTheInvisibleFlagAndLinkLoopsEnd)
{
    TempDir dir;
    ASSERT_TRUE(FileManager::createPath(dir.file(u"sub/.git"_s)));
    ASSERT_TRUE(makeLink(u".."_s, dir.file(u"sub/up"_s)));
    ASSERT_TRUE(makeLink(u"."_s, dir.file(u"self"_s)));
    ASSERT_TRUE(writeBytes(dir.file(u"sub/.git/config"_s), "c"));
    ASSERT_TRUE(writeBytes(dir.file(u"sub/Icon"_s), "i"));
    ASSERT_TRUE(setFinderFlagsOfFile(dir.file(u"sub/Icon"_s), FinderFlag::IsInvisible));
    EXPECT_FALSE(FileManager::directoryContainsFilesAtPath(dir.path(), true));
    EXPECT_TRUE(FileManager::directoryContainsFilesAtPath(dir.path(), false));
}

TEST(FileManagerCreating, CreatesFilesFoldersAndMovesAPreviousFolder)
{
    TempDir dir;
    EXPECT_TRUE(FileManager::createPathAndFile(dir.file(u"x/y/new.txt"_s)));
    ASSERT_TRUE(writeBytes(dir.file(u"x/y/new.txt"_s), "kept"));
    EXPECT_TRUE(FileManager::createFile(dir.file(u"x/y/new.txt"_s)));
    EXPECT_EQ(readBytes(dir.file(u"x/y/new.txt"_s)), "kept");
    EXPECT_FALSE(FileManager::createFile(dir.file(u"none/file"_s)));

    EXPECT_TRUE(FileManager::createPathAndWriteObject(
        QVariantMap { { u"k"_s, 1 } }, dir.file(u"p/list.plist"_s), true));
    EXPECT_TRUE(readBytes(dir.file(u"p/list.plist"_s)).contains("<key>k</key>"));
    EXPECT_FALSE(FileManager::createPathAndWriteObject(QVariant(3.5), dir.file(u"p/n"_s), true));

    // The previous folder moves with its contents; an existing new path refuses.
    EXPECT_TRUE(FileManager::createPath(dir.file(u"moved"_s), dir.file(u"x"_s)));
    EXPECT_EQ(readBytes(dir.file(u"moved/y/new.txt"_s)), "kept");
    EXPECT_FALSE(FileManager::fileExistsAtPath(dir.file(u"x"_s)));
    EXPECT_FALSE(FileManager::createPath(dir.file(u"moved"_s), dir.file(u"p"_s)));
    EXPECT_TRUE(FileManager::createPath(dir.file(u"fresh"_s), dir.file(u"gone"_s)));
    EXPECT_TRUE(FileManager::isDirectoryAtPath(dir.file(u"fresh"_s)));

    ASSERT_TRUE(writeBytes(dir.file(u"tmp"_s), "file in the way"));
    EXPECT_TRUE(FileManager::createWritableTemporaryPath(dir.file(u"tmp"_s)));
    EXPECT_TRUE(FileManager::isDirectoryAtPath(dir.file(u"tmp"_s)));
}

TEST(FileManagerRemoving, RemovesTreesWithoutFollowingLinks)
{
    TempDir dir;
    TempDir outside;
    ASSERT_TRUE(writeBytes(outside.file(u"precious"_s), "p"));
    ASSERT_TRUE(FileManager::createPath(dir.file(u"tree/deep/er"_s)));
    ASSERT_TRUE(writeBytes(dir.file(u"tree/deep/er/f"_s), "f"));
    ASSERT_TRUE(makeLink(outside.path(), dir.file(u"tree/out"_s)));
    ASSERT_TRUE(makeLink(outside.path(), dir.file(u"linkToFolder"_s)));

    EXPECT_TRUE(FileManager::removePath(dir.file(u"tree"_s)));
    EXPECT_TRUE(FileManager::removePath(dir.file(u"linkToFolder"_s)));
    EXPECT_FALSE(FileManager::fileKindAtPath(dir.file(u"tree"_s), false));
    EXPECT_EQ(readBytes(outside.file(u"precious"_s)), "p");
    EXPECT_TRUE(FileManager::removePath(dir.file(u"never-there"_s)));
    EXPECT_FALSE(FileManager::removePath(QString()));

    ASSERT_TRUE(writeBytes(dir.file(u"one"_s), "1"));
    ASSERT_TRUE(writeBytes(dir.file(u"two"_s), "2"));
    EXPECT_FALSE(FileManager::renamePath(dir.file(u"one"_s), u"two"_s));
    EXPECT_FALSE(FileManager::renamePath(dir.file(u"one"_s), u"../escape"_s));
    EXPECT_TRUE(FileManager::renamePath(dir.file(u"one"_s), u"three"_s));
    EXPECT_EQ(readBytes(dir.file(u"three"_s)), "1");
    FileManager::directory(dir.path(), { u"two"_s, u"three"_s, u"absent"_s });
    EXPECT_TRUE(FileManager::directoryContentsAtPath(dir.path(), false).isEmpty());
}

TEST(FileManagerRemoving, UniqueNamesCountUpAndKeepTheExtension)
{
    TempDir dir;
    EXPECT_EQ(FileManager::nonExistingFilenameAtPath(dir.file(u"a.txt"_s)), dir.file(u"a.txt"_s));
    ASSERT_TRUE(writeBytes(dir.file(u"a.txt"_s), "a"));
    EXPECT_EQ(FileManager::nonExistingFilenameAtPath(dir.file(u"a.txt"_s)), dir.file(u"a-1.txt"_s));
    ASSERT_TRUE(writeBytes(dir.file(u"README"_s), "r"));
    EXPECT_EQ(FileManager::nonExistingFilenameAtPath(dir.file(u"README"_s)), dir.file(u"README-1"_s));
    // A broken link takes its name, so it is not handed out again.
    ASSERT_TRUE(makeLink(dir.file(u"nowhere"_s), dir.file(u"README-1"_s)));
    EXPECT_EQ(FileManager::nonExistingFilenameAtPath(dir.file(u"README"_s)), dir.file(u"README-2"_s));

    const QString longName = QString(250, u'n') + u".jpeg"_s;
    ASSERT_TRUE(writeBytes(dir.file(longName), "l"));
    const QString unique = FileManager::nonExistingFilenameAtPath(dir.file(longName));
    EXPECT_EQ(unique, dir.file(QString(250 - 2 - 5, u'n') + u"-1.jpeg"_s));
    EXPECT_TRUE(writeBytes(unique, "fits"));
}

TEST(FileManagerRemoving, RotatingArchivesKeepTheNewestMaximum)
{
    TempDir dir;
    for (int i = 0; i < 5; ++i) {
        const QString path = dir.file(u"Backup %1.zip"_s.arg(i));
        ASSERT_TRUE(writeBytes(path, "z"));
        setAge(path, 100 - i * 10); // Backup 4 is the newest
    }
    ASSERT_TRUE(writeBytes(dir.file(u"other.zip"_s), "o"));
    const QString next = FileManager::archiveDirectoryContentsAtPath(dir.path(), u"Backup"_s, 3);
    EXPECT_TRUE(
        QRegularExpression(u"^Backup \\d{4}-\\d\\d-\\d\\d \\d\\d-\\d\\d-\\d\\d$"_s).match(next).hasMatch())
        << next.toStdString();
    EXPECT_EQ(sorted(FileManager::directoryContentsAtPath(dir.path(), false)),
        (QStringList { u"Backup 2.zip"_s, u"Backup 3.zip"_s, u"Backup 4.zip"_s, u"other.zip"_s }));
    EXPECT_TRUE(FileManager::archiveDirectoryContentsAtPath(dir.path(), u"Backup"_s, 0).isNull());
    EXPECT_TRUE(FileManager::archiveDirectoryContentsAtPath(dir.path(), QString(), 3).isNull());
}

TEST(FileManagerWriting, ReplacesOrAppendsAndIgnoresAFullDisk)
{
    TempDir dir;
    const QString path = dir.file(u"log.txt"_s);
    EXPECT_TRUE(FileManager::writeData("first line\n", path, false));
    EXPECT_TRUE(FileManager::writeString(u"second\n"_s, path, true));
    EXPECT_EQ(readBytes(path), "first line\nsecond\n");
    EXPECT_TRUE(FileManager::writeData("new", path, false));
    EXPECT_EQ(readBytes(path), "new");
    EXPECT_FALSE(FileManager::writeData(QByteArray(), path, false));
    EXPECT_FALSE(FileManager::writeString(QString(u""_s), path, true));
    EXPECT_FALSE(FileManager::writeData("x", dir.file(u"no/folder"_s), false));
    // A write that fails on the way still answers YES, as callers have always been told.
    EXPECT_TRUE(FileManager::writeData("lost", u"/dev/full"_s, true));
}
