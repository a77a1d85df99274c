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

namespace {

// A 2001-01-01 time with nanoseconds, which a microsecond or second clock would lose.
const FileTime ModifiedAt = FileTime(std::chrono::seconds(978307200) + std::chrono::nanoseconds(123456789));

/// One item of a shared folder, read with one key, and what it must answer (an invalid value: nil).
struct ResourceCase
{
    const char *name;
    ResourceKey key;
    QString item;
    QVariant expected;
};

void PrintTo(const ResourceCase &c, std::ostream *os) { *os << c.name; }

class Resources : public testing::TestWithParam<ResourceCase>
{
protected:
    static void SetUpTestSuite()
    {
        dir = new TempDir;
        const auto at = [](const char *name) { return dir->file(QString::fromUtf8(name)); };
        ASSERT_TRUE(writeBytes(at("f.txt"), "hello"));
        ASSERT_TRUE(FileManager::setFileModificationDate(ModifiedAt, at("f.txt")));
        ASSERT_TRUE(FileManager::setFinderLabel(5, at("f.txt")));
        ASSERT_TRUE(FileManager::setFileHFSTypeCode(fileTypeCodeFromString(u"TEXT"), at("f.txt")));
        ASSERT_TRUE(writeBytes(at(".dot"), ""));
        ASSERT_TRUE(writeBytes(at("invisible"), ""));
        ASSERT_TRUE(setFinderFlagsOfFile(at("invisible"), FinderFlag::IsInvisible));
        ASSERT_TRUE(FileManager::createPath(at("folder")));
        ASSERT_TRUE(QFile::link(at("folder"), at("folder-link")));
        ASSERT_TRUE(QFile::link(at("f.txt"), at("f-link")));
        ASSERT_TRUE(QFile::link(at("gone"), at("broken")));
        // The mirroring marks the extensions it hides in the Finder info; the key reads that mark.
        ASSERT_TRUE(FileManager::createPath(at("source")) && FileManager::createPath(at("mirror")));
        ASSERT_TRUE(writeBytes(at("source/shown.txt"), "s"));
        ASSERT_TRUE(FileManager::updatePath(at("source"), at("mirror"), false, true));
    }
    static void TearDownTestSuite()
    {
        delete dir;
        dir = nullptr;
    }
    static TempDir *dir;
};

TempDir *Resources::dir = nullptr;

TEST_P(Resources, AnswerTheLinuxValueOfEachKey)
{
    const ResourceCase &c = GetParam();
    QString error = u"left from before"_s;
    const QString path = c.item.isEmpty() ? QString() : dir->file(c.item);
    const QVariant value = FileManager::getResourceForKey(c.key, path, &error);
    if (!c.expected.isValid()) {
        EXPECT_FALSE(value.isValid());
        // An empty path is no failure worth a reason; anything else says why.
        EXPECT_EQ(error.isEmpty(), c.item.isEmpty()) << error;
        return;
    }
    EXPECT_TRUE(error.isEmpty()) << error;
    ASSERT_EQ(value.metaType(), c.expected.metaType());
    if (c.expected.metaType() == QMetaType::fromType<FileTime>())
        EXPECT_EQ(value.value<FileTime>(), c.expected.value<FileTime>());
    else
        EXPECT_EQ(value, c.expected);
}

using K = ResourceKey;
INSTANTIATE_TEST_SUITE_P(FileManagerAttributes, Resources,
    testing::Values(
        ResourceCase { "modified", K::ContentModificationDate, u"f.txt"_s, QVariant::fromValue(ModifiedAt) },
        ResourceCase {
            "modifiedThroughLink", K::ContentModificationDate, u"f-link"_s, QVariant::fromValue(ModifiedAt) },
        ResourceCase { "size", K::FileSize, u"f.txt"_s, qint64(5) },
        ResourceCase { "regular", K::IsRegularFile, u"f.txt"_s, true },
        ResourceCase { "linkToFolder", K::IsDirectory, u"folder-link"_s, true },
        ResourceCase { "linkItself", K::IsSymbolicLink, u"folder-link"_s, true },
        ResourceCase { "brokenLinkItself", K::IsSymbolicLink, u"broken"_s, true },
        ResourceCase { "dotName", K::IsHidden, u".dot"_s, true },
        ResourceCase { "invisibleFlag", K::IsHidden, u"invisible"_s, true },
        ResourceCase { "visible", K::IsHidden, u"f.txt"_s, false },
        ResourceCase { "extensionHidden", K::HasHiddenExtension, u"mirror/shown.txt"_s, true },
        ResourceCase { "label", K::LabelNumber, u"f.txt"_s, 5 },
        ResourceCase { "noLabel", K::LabelNumber, u"folder"_s, 0 },
        ResourceCase {
            "typeCode", K::TypeCode, u"f.txt"_s, QVariant::fromValue(fileTypeCodeFromString(u"TEXT")) },
        ResourceCase { "mutable", K::IsUserImmutable, u"f.txt"_s, false },
        ResourceCase { "missing", K::FileSize, u"none"_s, QVariant() },
        ResourceCase { "brokenLinkFollowed", K::ContentModificationDate, u"broken"_s, QVariant() },
        ResourceCase { "emptyPath", K::IsDirectory, QString(), QVariant() }),
    [](const testing::TestParamInfo<ResourceCase> &info) { return std::string(info.param.name); });

} // namespace

TEST(FileManagerAttributes, CreationDateResourceIsTheBirthTimeOrSaysWhyNot)
{
    TempDir dir;
    const QString path = dir.file(u"f"_s);
    ASSERT_TRUE(writeBytes(path, "f"));
    QString error;
    const QVariant born = FileManager::getResourceForKey(ResourceKey::CreationDate, path, &error);
    const std::optional<FileTime> expected = FileManager::fileCreationDateAtPath(path);
    ASSERT_EQ(born.isValid(), expected.has_value()) << error;
    if (expected)
        EXPECT_EQ(born.value<FileTime>(), *expected);
    else
        EXPECT_FALSE(error.isEmpty());
}
