// Dates, attributes, custom icons, locks and flags on real files.
#include "files/FileManager.h"
#include "files/PropertyList.h"
#include "support/ProcessInfo.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::fileMode;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

/// Whether this process may set the immutable attribute on a file in dir.
bool canSetImmutable(const TempDir &dir)
{
    const QString probe = dir.file(u"probe"_s);
    writeBytes(probe, "p");
    const bool can = test::runProgram(u"chattr"_s, { u"+i"_s, probe }) == 0;
    test::runProgram(u"chattr"_s, { u"-i"_s, probe });
    QFile::remove(probe);
    return can;
}

} // namespace

TEST(FileManagerAttributes, CreationDateIsTheBirthTimeAndCannotBeMoved)
{
    TempDir dir;
    const QString path = dir.file(u"f"_s);
    ASSERT_TRUE(writeBytes(path, "f"));
    const std::optional<FileTime> born = FileManager::fileCreationDateAtPath(path);
    if (!born)
        GTEST_SKIP() << "this file system records no birth time";
    const auto now = std::chrono::system_clock::now();
    EXPECT_LT(std::chrono::abs(now - *born), std::chrono::minutes(1));
    const FileTime earlier = *born - std::chrono::hours(24);
    EXPECT_FALSE(FileManager::setFileCreationDate(earlier, path));
    EXPECT_TRUE(FileManager::setFileCreationDate(born, path));
    // Both or neither: a creation date that cannot be set leaves the modification date alone.
    const std::optional<FileTime> modified = FileManager::fileModificationDateAtPath(path);
    EXPECT_FALSE(FileManager::setFileCreationDate(earlier, earlier, path));
    EXPECT_EQ(FileManager::fileModificationDateAtPath(path), modified);
    EXPECT_TRUE(FileManager::setFileCreationDate(std::nullopt, earlier, path));
    EXPECT_EQ(FileManager::fileModificationDateAtPath(path), earlier);
    EXPECT_FALSE(FileManager::setFileCreationDate(std::nullopt, std::nullopt, path));
}

TEST(FileManagerAttributes, PermissionsTypeCodesAndKinds)
{
    TempDir dir;
    const QString path = dir.file(u"tool"_s);
    ASSERT_TRUE(writeBytes(path, "#!/bin/sh\n"));
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0754), 0);
    const std::optional<FilePermissions> withX = FileManager::permissionsAtPath(path, true);
    ASSERT_TRUE(withX);
    EXPECT_EQ(withX->posixPermissions, 0754u);
    EXPECT_EQ(withX->ownerAccountID, getuid());
    EXPECT_FALSE(withX->ownerAccountName.isEmpty());
    EXPECT_EQ(FileManager::permissionsAtPath(path, false)->posixPermissions, 0644u);
    EXPECT_EQ(FileManager::permissionsAtPathByDeletingLastPathComponent(path, true)->posixPermissions,
        fileMode(dir.path()));
    EXPECT_FALSE(FileManager::permissionsAtPath(dir.file(u"none"_s), true));

    EXPECT_EQ(FileManager::fileTypeForWorkspace(path), QString());
    ASSERT_TRUE(FileManager::setFileHFSTypeCode(fileTypeCodeFromString(u"'APPL'"), path));
    EXPECT_EQ(FileManager::fileHFSTypeCodeAtPath(path), fileTypeCodeFromString(u"APPL"));
    EXPECT_EQ(FileManager::fileTypeForWorkspace(path), u"'APPL'"_s);
    EXPECT_EQ(FileManager::fileTypeForWorkspace(dir.path()), u"'fldr'"_s);
    EXPECT_FALSE(FileManager::isFileBusyAtPath(path));
    ASSERT_TRUE(FileManager::setFileBusy(true, path));
    EXPECT_EQ(HFSTypeOfFile(path), u"'brok'"_s);
    EXPECT_TRUE(FileManager::isFileBusyAtPath(path));
    ASSERT_TRUE(FileManager::setFileBusy(false, path));
    EXPECT_FALSE(FileManager::isFileBusyAtPath(path));

    ASSERT_TRUE(QFile::link(path, dir.file(u"link"_s)));
    EXPECT_TRUE(FileManager::isSymbolicLinkAtPath(dir.file(u"link"_s)));
    EXPECT_FALSE(FileManager::isSymbolicLinkAtPath(path));
    EXPECT_FALSE(FileManager::isAliasFileAtPath(dir.file(u"link"_s)));
    bool isDirectory = true;
    EXPECT_EQ(FileManager::resolveAlias(dir.file(u"link"_s), true, &isDirectory), dir.file(u"link"_s));
    EXPECT_FALSE(isDirectory);
    EXPECT_GT(FileManager::freeDiskSpaceAtPath(dir.path()), 0u);
    EXPECT_EQ(FileManager::freeDiskSpaceAtPath(dir.file(u"none"_s)), 0u);
}

TEST(FileManagerAttributes, ReferencesFollowTheItemNotThePath)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file(u"a"_s), "a"));
    FileReference ref;
    ASSERT_TRUE(FileManager::getFSRef(&ref, dir.file(u"a"_s)));
    EXPECT_EQ(FileManager::getPathFromFSRef(ref), dir.file(u"a"_s));
    // Another file put at the same path is not the item the reference names.
    ASSERT_TRUE(QFile::rename(dir.file(u"a"_s), dir.file(u"b"_s)));
    ASSERT_TRUE(writeBytes(dir.file(u"a"_s), "new"));
    EXPECT_TRUE(FileManager::getPathFromFSRef(ref).isNull());
    EXPECT_FALSE(FileManager::getFSRef(&ref, dir.file(u"none"_s)));
}

TEST(FileManagerAttributes, VolumesAndCustomIcons)
{
    EXPECT_TRUE(FileManager::isVolumeMountedAtPath(u"/home/someone"_s));
    EXPECT_TRUE(FileManager::isVolumeMountedAtPath(u"/mnt"_s));
    EXPECT_FALSE(FileManager::isVolumeMountedAtPath(u"/mnt/no such volume/file"_s));

    TempDir dir;
    ASSERT_TRUE(FileManager::createPath(dir.file(u"plain/inner"_s)));
    ASSERT_TRUE(FileManager::createPath(dir.file(u"Package.app"_s)));
    ASSERT_TRUE(writeBytes(dir.file(u"file"_s), "f"));
    EXPECT_FALSE(FileManager::existsCustomIconForPath(dir.file(u"plain/inner"_s)));
    ASSERT_TRUE(writeBytes(dir.file(u"plain/inner/Icon\r"_s), ""));
    EXPECT_TRUE(FileManager::existsCustomIconForPath(dir.file(u"plain/inner"_s)));
    // A package shows its own icon whatever its flag says; another folder shows its flag.
    ASSERT_TRUE(setHasCustomIconOfFile(dir.file(u"Package.app"_s), true));
    EXPECT_FALSE(FileManager::existsCustomIconForPath(dir.file(u"Package.app"_s)));
    EXPECT_FALSE(FileManager::existsCustomIconForPath(dir.file(u"plain"_s)));
    ASSERT_TRUE(setHasCustomIconOfFile(dir.file(u"plain"_s), true));
    EXPECT_TRUE(FileManager::existsCustomIconForPath(dir.file(u"plain"_s)));
    EXPECT_FALSE(FileManager::existsCustomIconForPath(dir.file(u"file"_s)));
    ASSERT_TRUE(setHasCustomIconOfFile(dir.file(u"file"_s), true));
    EXPECT_TRUE(FileManager::existsCustomIconForPath(dir.file(u"file"_s)));
    EXPECT_FALSE(FileManager::existsCustomIconForPath(dir.file(u"none"_s)));
}

TEST(FileManagerLocks, SettingImmutableOnAMutableFileAnswersYesAndChangesNothing)
{
    TempDir dir;
    const QString path = dir.file(u"f"_s);
    ASSERT_TRUE(writeBytes(path, "f"));
    EXPECT_TRUE(FileManager::setFileImmutable(true, path));
    EXPECT_FALSE(FileManager::isFileImmutableAtPath(path));
    EXPECT_FALSE(FileManager::isFileLockedAtPath(path));

    if (!canSetImmutable(dir))
        GTEST_SKIP() << "setting the immutable attribute needs a privilege this process lacks";
    ASSERT_EQ(test::runProgram(u"chattr"_s, { u"+i"_s, path }), 0);
    EXPECT_TRUE(FileManager::isFileImmutableAtPath(path));
    EXPECT_TRUE(FileManager::isFileLockedAtPath(path));
    EXPECT_TRUE(FileManager::setFileImmutable(false, path));
    EXPECT_FALSE(FileManager::isFileImmutableAtPath(path));
}

TEST(FileManagerLocks, LockingTakesWritePermissionAndUnlockingGivesItBack)
{
    TempDir dir;
    const QString path = dir.file(u"f"_s);
    ASSERT_TRUE(writeBytes(path, "f"));
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0644), 0);
    ASSERT_TRUE(FileManager::setFileLocked(true, path));
    EXPECT_TRUE(FileManager::isFileLockedAtPath(path));
    EXPECT_EQ(fileMode(path), 0444u);
    ASSERT_TRUE(FileManager::setFileLocked(false, path));
    EXPECT_FALSE(FileManager::isFileLockedAtPath(path));
    EXPECT_FALSE(FileManager::isFileImmutableAtPath(path));
    EXPECT_EQ(fileMode(path), 0644u);
    EXPECT_FALSE(FileManager::setFileLocked(true, dir.file(u"none"_s)));
}

TEST(FileManagerLocks, LockFilesBelongToTheirUserAndProcess)
{
    TempDir dir;
    const QString path = dir.file(u"sub/document"_s);
    const QString lock = FileManager::lockFileAtPath(path, false);
    ASSERT_EQ(lock, path + u".lock"_s);
    const QVariantMap written = propertyListFromFile(lock)->toMap();
    EXPECT_EQ(written.value(u"processNumber"_s).toLongLong(), ProcessInfo::processNumber());
    EXPECT_TRUE(FileManager::lockFileAtPath(path, false).isNull());
    EXPECT_EQ(FileManager::lockFileAtPath(path, true), lock);

    // A lock of another user, or of another process, stays.
    QVariantMap foreign = written;
    foreign[u"userName"_s] = u"somebody-else"_s;
    ASSERT_TRUE(writePropertyListToFile(foreign, lock));
    EXPECT_FALSE(FileManager::unlockFileAtPath(lock));
    QVariantMap otherProcess = written;
    otherProcess[u"processNumber"_s] = qint64(ProcessInfo::processNumber()) + 1;
    ASSERT_TRUE(writePropertyListToFile(otherProcess, lock));
    EXPECT_FALSE(FileManager::unlockFileAtPath(lock));
    EXPECT_TRUE(QFile::exists(lock));

    ASSERT_TRUE(writePropertyListToFile(written, lock));
    EXPECT_TRUE(FileManager::unlockFileAtPath(lock));
    EXPECT_FALSE(QFile::exists(lock));
    // A broken lock file is no lock.
    ASSERT_TRUE(writeBytes(lock, "<plist><dict>"));
    EXPECT_EQ(FileManager::lockFileAtPath(path, false), lock);
}
