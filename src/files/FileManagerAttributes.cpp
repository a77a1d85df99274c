// Dates, attributes, custom icons and file references of the items at paths.
#include "files/FileManager.h"
#include "files/FileManager_p.h"
#include "files/PathExtensions.h"
#include "support/Failure.h"

#include <QDir>
#include <QtEndian>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

QString userNameForId(uid_t uid)
{
    char buffer[4096];
    passwd entry;
    passwd *found = nullptr;
    if (getpwuid_r(uid, &entry, buffer, sizeof buffer, &found) != 0 || !found)
        return QString();
    return QString::fromLocal8Bit(found->pw_name);
}

QString groupNameForId(gid_t gid)
{
    char buffer[4096];
    group entry;
    group *found = nullptr;
    if (getgrgid_r(gid, &entry, buffer, sizeof buffer, &found) != 0 || !found)
        return QString();
    return QString::fromLocal8Bit(found->gr_name);
}

QVariant fileTime(const statx_timestamp &t)
{
    const timespec ts { time_t(t.tv_sec), long(t.tv_nsec) };
    return QVariant::fromValue(detail::timePointFromTimespec<FileTime>(ts));
}

/// The value of a key kept in the Finder info of the item at path.
QVariant finderInfoResource(ResourceKey key, const QString &path, QString *error)
{
    const std::optional<QByteArray> info = finderInfoOfFile(path);
    if (!info)
        return failure<QVariant>(error, u"the Finder info of the item cannot be read"_s);
    const auto *bytes = info->constData();
    const quint16 flags = qFromBigEndian<quint16>(bytes + 8);
    switch (key) {
    case ResourceKey::IsHidden:
        return detail::lastComponent(path).startsWith(u'.') || (flags & FinderFlag::IsInvisible);
    case ResourceKey::HasHiddenExtension:
        return bool(
            qFromBigEndian<quint16>(bytes + detail::ExtendedFinderFlagsOffset) & detail::ExtensionHiddenFlag);
    case ResourceKey::LabelNumber:
        return int((flags & FinderFlag::Color) >> 1);
    default:
        return QVariant::fromValue(FileTypeCode(qFromBigEndian<quint32>(bytes)));
    }
}

} // namespace

QVariant FileManager::getResourceForKey(ResourceKey key, const QString &path, QString *error)
{
    if (error)
        error->clear();
    QByteArray native;
    if (path.isEmpty())
        return QVariant();
    if (!detail::nativePath(path, &native))
        return failure<QVariant>(error, u"the path holds a NUL character"_s);
    // One statx call tells whether the item is there and answers every key of its status.
    const int flags = key == ResourceKey::IsSymbolicLink ? AT_SYMLINK_NOFOLLOW : 0;
    struct statx st;
    if (statx(AT_FDCWD, native.constData(), flags, STATX_BASIC_STATS | STATX_BTIME, &st) != 0)
        return failure<QVariant>(error, qt_error_string(errno));
    switch (key) {
    case ResourceKey::ContentModificationDate:
        return fileTime(st.stx_mtime);
    case ResourceKey::ContentAccessDate:
        return fileTime(st.stx_atime);
    case ResourceKey::AttributeModificationDate:
        return fileTime(st.stx_ctime);
    case ResourceKey::CreationDate:
        if (!(st.stx_mask & STATX_BTIME))
            return failure<QVariant>(error, u"the file system records no creation date"_s);
        return fileTime(st.stx_btime);
    case ResourceKey::FileSize:
        return qint64(st.stx_size);
    case ResourceKey::IsRegularFile:
        return S_ISREG(st.stx_mode);
    case ResourceKey::IsDirectory:
        return S_ISDIR(st.stx_mode);
    case ResourceKey::IsSymbolicLink:
        return S_ISLNK(st.stx_mode);
    case ResourceKey::IsUserImmutable:
        return isFileImmutableAtPath(path);
    case ResourceKey::IsHidden:
    case ResourceKey::HasHiddenExtension:
    case ResourceKey::LabelNumber:
    case ResourceKey::TypeCode:
        return finderInfoResource(key, path, error);
    }
    return failure<QVariant>(error, u"unknown resource key"_s);
}

std::optional<FileTime> FileManager::fileCreationDateAtPath(const QString &path)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return std::nullopt;
    struct statx st;
    if (statx(AT_FDCWD, native.constData(), 0, STATX_BTIME, &st) != 0 || !(st.stx_mask & STATX_BTIME))
        return std::nullopt;
    const timespec birth { time_t(st.stx_btime.tv_sec), long(st.stx_btime.tv_nsec) };
    return detail::timePointFromTimespec<FileTime>(birth);
}

bool FileManager::setFileCreationDate(std::optional<FileTime> date, const QString &path)
{
    return date && fileCreationDateAtPath(path) == date;
}

bool FileManager::setFileCreationDate(
    std::optional<FileTime> creation, std::optional<FileTime> modification, const QString &path)
{
    if (path.isEmpty() || (!creation && !modification))
        return false;
    if (creation && !setFileCreationDate(creation, path))
        return false;
    return !modification || setFileModificationDate(modification, path);
}

quint64 FileManager::freeDiskSpaceAtPath(const QString &path)
{
    QByteArray native;
    struct statvfs st;
    if (!detail::nativePath(path, &native) || statvfs(native.constData(), &st) != 0)
        return 0;
    return quint64(st.f_bavail) * quint64(st.f_frsize);
}

FileTypeCode FileManager::fileHFSTypeCodeAtPath(const QString &path)
{
    return path.isEmpty() ? 0 : HFSTypeCodeOfFile(path);
}

bool FileManager::setFileHFSTypeCode(FileTypeCode code, const QString &path)
{
    return !path.isEmpty() && setHFSTypeCodeOfFile(path, code);
}

std::optional<FilePermissions> FileManager::permissionsAtPath(const QString &path, bool executable)
{
    const std::optional<struct stat> st = detail::statusAtPath(path);
    if (!st)
        return std::nullopt;
    FilePermissions permissions;
    permissions.ownerAccountID = st->st_uid;
    permissions.groupOwnerAccountID = st->st_gid;
    permissions.ownerAccountName = userNameForId(st->st_uid);
    permissions.groupOwnerAccountName = groupNameForId(st->st_gid);
    permissions.posixPermissions = st->st_mode & 07777;
    if (!executable)
        permissions.posixPermissions &= ~0111u;
    return permissions;
}

std::optional<FilePermissions> FileManager::permissionsAtPathByDeletingLastPathComponent(
    const QString &path, bool executable)
{
    const QString parent = detail::parentFolder(path);
    return parent.isEmpty() ? std::nullopt : permissionsAtPath(parent, executable);
}

bool FileManager::isSymbolicLinkAtPath(const QString &path)
{
    return fileKindAtPath(path, false) == FileKind::SymbolicLink;
}

bool FileManager::isDirectoryAtPath(const QString &path)
{
    bool isDirectory = false;
    return fileExistsAtPath(path, &isDirectory) && isDirectory;
}

bool FileManager::isVolumeMountedAtPath(const QString &path)
{
    const QString user = userNameForId(geteuid());
    QStringList roots { u"/mnt"_s };
    if (!user.isEmpty())
        roots << u"/media/"_s + user << u"/run/media/"_s + user;
    for (const QString &root : std::as_const(roots)) {
        if (!path.startsWith(root + u'/'))
            continue;
        const QString rest = path.mid(root.size() + 1);
        const QString volume = rest.section(u'/', 0, 0);
        if (volume.isEmpty())
            return true;
        return fileExistsAtPath(root + u'/' + volume);
    }
    return true;
}

bool FileManager::existsCustomIconForPath(const QString &path)
{
    bool isDirectory = false;
    return fileExistsAtPath(path, &isDirectory) && existsCustomIconForPath(path, isDirectory);
}

bool FileManager::existsCustomIconForPath(const QString &path, bool isDirectory)
{
    if (path.isEmpty())
        return false;
    if (isDirectory) {
        if (fileExistsAtPath(detail::appendComponent(path, u"Icon\r"_s)))
            return true;
        if (!pathExtension(path).isEmpty())
            return false;
        // The home folder's own folders and the top-level ones show their icons.
        const QString parent = detail::parentFolder(path);
        if (parent == u"/"_s || isSameFileAtPaths(parent, QDir::homePath()))
            return true;
    }
    return finderFlagsOfFile(path) & FinderFlag::HasCustomIcon;
}

bool FileManager::getFSRef(FileReference *ref, const QString &path)
{
    const std::optional<FileIdentity> identity = fileIdentityAtPath(path);
    if (!identity || !ref)
        return false;
    *ref = FileReference { *identity, path };
    return true;
}

QString FileManager::getPathFromFSRef(const FileReference &ref)
{
    return fileIdentityAtPath(ref.path) == ref.identity ? ref.path : QString();
}

QString FileManager::fileTypeForWorkspace(const QString &path)
{
    if (isDirectoryAtPath(path))
        return u"'fldr'"_s;
    // 0x3F3F3F3F is '????', the code of a file whose type nobody knows.
    const FileTypeCode code = fileHFSTypeCodeAtPath(path);
    if (code == 0 || code == 0x3F3F3F3F)
        return QString();
    return fileTypeCodeToString(code);
}

int sortByModificationDate(const QString &a, const QString &b)
{
    const std::optional<FileTime> first = FileManager::fileModificationDateAtPath(a);
    const std::optional<FileTime> second = FileManager::fileModificationDateAtPath(b);
    // The second path's date against the first's: newer first; a missing date counts as oldest.
    if (second == first)
        return 0;
    return second < first ? -1 : 1;
}

} // namespace orvel
