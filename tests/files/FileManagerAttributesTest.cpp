// Dates, attributes, custom icons, locks and flags on real files; comments in "user.xdg.comment" and
// labels in the Finder info, at once and batched on the event loop.
#include "files/FileManager.h"
#include "files/PropertyList.h"
#include "support/ProcessInfo.h"

#include "testlib/TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
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

/// Runs the event loop until done() holds or ten seconds pass; answers done().
template <typename Done> bool spinUntil(Done done)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return done();
}

bool userAttributesWork(const TempDir &dir)
{
    const QString probe = dir.file(u"probe"_s);
    writeBytes(probe, "p");
    const bool works = FileManager::setFinderComment(u"x"_s, probe);
    QFile::remove(probe);
    return works;
}

} // namespace

TEST(FileManagerAttributes, CreationDateIsTheBirthTimeAndCannotBeMoved)
{
    TempDir dir;
    const QString path = dir.file(u"f"_s);
    ASSERT_TRUE(writeBytes(path, "f"));
    const std::optional<FileTime> born = FileManager::fileCreationDateAtPath(path);
    QString error;
    const QVariant resource = FileManager::getResourceForKey(ResourceKey::CreationDate, path, &error);
    EXPECT_EQ(resource.isValid(), born.has_value());
    EXPECT_EQ(error.isEmpty(), born.has_value()) << "no birth time says why";
    if (!born)
        GTEST_SKIP() << "this file system records no birth time";
    EXPECT_EQ(resource.value<FileTime>(), *born);
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
    EXPECT_EQ(FileManager::permissionsAtPath(path, false)->posixPermissions, 0644u);
    EXPECT_EQ(FileManager::permissionsAtPathByDeletingLastPathComponent(path, true)->posixPermissions,
        fileMode(dir.path()));
    EXPECT_FALSE(FileManager::permissionsAtPath(dir.file(u"none"_s), true));

    EXPECT_EQ(FileManager::fileTypeForWorkspace(path), QString());
    ASSERT_TRUE(FileManager::setFileHFSTypeCode(fileTypeCodeFromString(u"'APPL'"), path));
    EXPECT_EQ(FileManager::fileHFSTypeCodeAtPath(path), fileTypeCodeFromString(u"APPL"));
    EXPECT_EQ(FileManager::fileTypeForWorkspace(path), u"'APPL'"_s);
    EXPECT_EQ(FileManager::fileTypeForWorkspace(dir.path()), u"'fldr'"_s);
    ASSERT_TRUE(FileManager::setFileBusy(true, path));
    EXPECT_EQ(HFSTypeOfFile(path), u"'brok'"_s);
    EXPECT_TRUE(FileManager::isFileBusyAtPath(path));
    ASSERT_TRUE(FileManager::setFileBusy(false, path));
    EXPECT_FALSE(FileManager::isFileBusyAtPath(path));

    ASSERT_TRUE(QFile::link(path, dir.file(u"link"_s)));
    EXPECT_TRUE(FileManager::isSymbolicLinkAtPath(dir.file(u"link"_s)));
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

TEST(FileManagerAttributes, ResourcesAnswerTheLinuxValueOfEachKey)
{
    TempDir dir;
    const auto at = [&dir](const char *name) { return dir.file(QString::fromUtf8(name)); };
    // A 2001-01-01 time with nanoseconds, which a microsecond or second clock would lose.
    const FileTime modifiedAt
        = FileTime(std::chrono::seconds(978307200) + std::chrono::nanoseconds(123456789));
    ASSERT_TRUE(writeBytes(at("f.txt"), "hello"));
    ASSERT_TRUE(FileManager::setFileModificationDate(modifiedAt, at("f.txt")));
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

    using K = ResourceKey;
    const QVariant modified = QVariant::fromValue(modifiedAt);
    // The item read with the key and what it must answer (an invalid value: nil).
    const struct
    {
        ResourceKey key;
        const char *item;
        QVariant expected;
    } cases[] = { { K::ContentModificationDate, "f.txt", modified },
        { K::ContentModificationDate, "f-link", modified }, { K::FileSize, "f.txt", qint64(5) },
        { K::IsRegularFile, "f.txt", true }, { K::IsDirectory, "folder-link", true },
        { K::IsSymbolicLink, "folder-link", true }, { K::IsSymbolicLink, "broken", true },
        { K::IsHidden, ".dot", true }, { K::IsHidden, "invisible", true }, { K::IsHidden, "f.txt", false },
        { K::HasHiddenExtension, "mirror/shown.txt", true }, { K::LabelNumber, "f.txt", 5 },
        { K::LabelNumber, "folder", 0 },
        { K::TypeCode, "f.txt", QVariant::fromValue(fileTypeCodeFromString(u"TEXT")) },
        { K::IsUserImmutable, "f.txt", false }, { K::FileSize, "none", QVariant() },
        { K::ContentModificationDate, "broken", QVariant() }, { K::IsDirectory, "", QVariant() } };
    for (const auto &c : cases) {
        QString error = u"left from before"_s;
        const QString path = *c.item ? at(c.item) : QString();
        const QVariant value = FileManager::getResourceForKey(c.key, path, &error);
        const auto where = [&] { return c.item + std::string(" key ") + std::to_string(int(c.key)); };
        if (!c.expected.isValid()) {
            EXPECT_FALSE(value.isValid()) << where();
            // An empty path is no failure worth a reason; anything else says why.
            EXPECT_EQ(error.isEmpty(), path.isEmpty()) << where() << ": " << error;
            continue;
        }
        EXPECT_TRUE(error.isEmpty()) << where() << ": " << error;
        ASSERT_EQ(value.metaType(), c.expected.metaType()) << where();
        if (c.expected.metaType() == QMetaType::fromType<FileTime>())
            EXPECT_EQ(value.value<FileTime>(), c.expected.value<FileTime>()) << where();
        else
            EXPECT_EQ(value, c.expected) << where();
    }
}

TEST(FileManagerComments, ACommentIsTheFreedesktopAttribute)
{
    TempDir dir;
    if (!userAttributesWork(dir))
        GTEST_SKIP() << "this file system keeps no user attributes";
    const QString path = dir.file(u"photo.jpg"_s);
    ASSERT_TRUE(writeBytes(path, "j"));
    EXPECT_TRUE(FileManager::finderComment(path).isNull());
    ASSERT_TRUE(FileManager::setFinderComment(u"Sommer am See – ☀"_s, path));
    EXPECT_EQ(FileManager::finderComment(path), u"Sommer am See – ☀"_s);
    QByteArray out;
    ASSERT_EQ(
        test::runProgram(u"getfattr"_s, { u"--only-values"_s, u"-n"_s, u"user.xdg.comment"_s, path }, &out),
        0);
    EXPECT_EQ(QString::fromUtf8(out), u"Sommer am See – ☀"_s);
    ASSERT_TRUE(FileManager::setFinderComment(QString(), path));
    EXPECT_TRUE(FileManager::finderComment(path).isNull());
    EXPECT_FALSE(FileManager::setFinderComment(u"c"_s, dir.file(u"none"_s)));
    EXPECT_FALSE(FileManager::setFinderComment(u"c"_s, dir.file(u"none"_s), true));
}

TEST(FileManagerComments, ThirtyQuickCommentsRunAsABatchOf25ThenOneOf5)
{
    TempDir dir;
    if (!userAttributesWork(dir))
        GTEST_SKIP() << "this file system keeps no user attributes";
    QStringList paths;
    for (int i = 0; i < 30; ++i) {
        paths << dir.file(u"f%1"_s.arg(i, 2, 10, QChar(u'0')));
        ASSERT_TRUE(writeBytes(paths.last(), "f"));
    }
    auto commented = [&] {
        return std::count_if(paths.begin(), paths.end(),
            [](const QString &p) { return !FileManager::finderComment(p).isNull(); });
    };
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(FileManager::setFinderComment(u"comment %1"_s.arg(i), paths[i], true));
    EXPECT_EQ(commented(), 0);
    ASSERT_EQ(FileManager::pendingFinderRequests(), 30);

    ASSERT_TRUE(spinUntil([] { return FileManager::pendingFinderRequests() < 30; }));
    EXPECT_GE(clock.elapsed(), 190);
    EXPECT_EQ(FileManager::pendingFinderRequests(), 5);
    EXPECT_EQ(commented(), 25);
    // The first 25 in path order went first.
    EXPECT_EQ(FileManager::finderComment(paths[24]), u"comment 24"_s);
    EXPECT_TRUE(FileManager::finderComment(paths[25]).isNull());

    ASSERT_TRUE(spinUntil([] { return FileManager::pendingFinderRequests() == 0; }));
    EXPECT_EQ(commented(), 30);
}

TEST(FileManagerComments, LabelsAreTheColourBitsOfTheFinderInfo)
{
    TempDir dir;
    const QString path = dir.file(u"f"_s);
    ASSERT_TRUE(writeBytes(path, "f"));
    ASSERT_TRUE(setFinderFlagsOfFile(path, FinderFlag::HasCustomIcon | FinderFlag::IsInvisible));
    EXPECT_EQ(FileManager::finderLabel(path), 0);
    ASSERT_TRUE(FileManager::setFinderLabel(6, path));
    EXPECT_EQ(FileManager::finderLabel(path), 6);
    EXPECT_EQ(finderFlagsOfFile(path), FinderFlag::HasCustomIcon | FinderFlag::IsInvisible | (6 << 1));
    EXPECT_FALSE(FileManager::setFinderLabel(8, path));
    EXPECT_FALSE(FileManager::setFinderLabel(-1, path));
    EXPECT_FALSE(FileManager::setFinderLabel(1, dir.file(u"none"_s)));

    // Queued labels: the same path twice keeps the last; batches of ten.
    QStringList paths;
    for (int i = 0; i < 12; ++i) {
        paths << dir.file(u"l%1"_s.arg(i, 2, 10, QChar(u'0')));
        ASSERT_TRUE(writeBytes(paths.last(), "l"));
        ASSERT_TRUE(FileManager::setFinderLabel(i % 7 + 1, paths.last(), true));
    }
    ASSERT_TRUE(FileManager::setFinderLabel(2, path, true));
    ASSERT_TRUE(FileManager::setFinderLabel(3, path, true));
    EXPECT_EQ(FileManager::pendingFinderRequests(), 13);
    ASSERT_TRUE(spinUntil([] { return FileManager::pendingFinderRequests() < 13; }));
    EXPECT_EQ(FileManager::pendingFinderRequests(), 3);
    ASSERT_TRUE(spinUntil([] { return FileManager::pendingFinderRequests() == 0; }));
    EXPECT_EQ(FileManager::finderLabel(path), 3);
    EXPECT_EQ(FileManager::finderLabel(paths[11]), 11 % 7 + 1);
}
