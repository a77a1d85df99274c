// Locks and flags: the immutable attribute, owner permissions, the busy type code and lock files.
#include "files/FileManager.h"
#include "files/FileManager_p.h"
#include "files/PropertyList.h"
#include "support/Failure.h"
#include "support/ProcessInfo.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <pwd.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

constexpr FileTypeCode BusyTypeCode = 0x62726F6B; // 'brok'

struct Descriptor
{
    int fd = -1;
    ~Descriptor()
    {
        if (fd >= 0)
            close(fd);
    }
};

/// Opens the item (a file or a folder, links followed) for the attribute calls.
bool openForFlags(const QString &path, Descriptor *out)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return false;
    out->fd = open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    return out->fd >= 0;
}

std::optional<int> attributeFlags(int fd)
{
    int flags = 0;
    if (ioctl(fd, FS_IOC_GETFLAGS, &flags) != 0)
        return std::nullopt;
    return flags;
}

bool setImmutableFlag(int fd, bool flag, QString *error)
{
    std::optional<int> flags = attributeFlags(fd);
    if (!flags)
        return failure(error, qt_error_string(errno));
    const int wanted = flag ? (*flags | FS_IMMUTABLE_FL) : (*flags & ~FS_IMMUTABLE_FL);
    if (wanted != *flags && ioctl(fd, FS_IOC_SETFLAGS, &wanted) != 0) {
        const int code = errno;
        return failure(error,
            code == EPERM ? u"changing the immutable attribute needs the CAP_LINUX_IMMUTABLE privilege"_s
                          : qt_error_string(code));
    }
    return true;
}

QString loginName()
{
    char buffer[4096];
    passwd entry;
    passwd *found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer, sizeof buffer, &found) != 0 || !found)
        return QString();
    return QString::fromLocal8Bit(found->pw_name);
}

} // namespace

bool FileManager::isFileLockedAtPath(const QString &path)
{
    const std::optional<struct stat> st = detail::statusAtPath(path);
    if (!st)
        return false;
    return isFileImmutableAtPath(path) || (st->st_mode & 0600) != 0600;
}

bool FileManager::setFileLocked(bool flag, const QString &path)
{
    QByteArray native;
    const std::optional<struct stat> st = detail::statusAtPath(path);
    if (!st || !detail::nativePath(path, &native))
        return false;
    Descriptor item;
    const bool canOpen = openForFlags(path, &item);
    if (flag) {
        if (chmod(native.constData(), st->st_mode & 07777 & ~0200u) != 0)
            return false;
        // Without the privilege the permission alone makes the lock.
        if (canOpen)
            setImmutableFlag(item.fd, true, nullptr);
        return true;
    }
    // An immutable item refuses every change, its permissions included: clear the attribute first.
    if (canOpen && isFileImmutableAtPath(path) && !setImmutableFlag(item.fd, false, nullptr))
        return false;
    return chmod(native.constData(), (st->st_mode & 07777) | 0600) == 0;
}

bool FileManager::isFileImmutableAtPath(const QString &path)
{
    Descriptor item;
    if (!openForFlags(path, &item))
        return false;
    const std::optional<int> flags = attributeFlags(item.fd);
    return flags && (*flags & FS_IMMUTABLE_FL);
}

bool FileManager::setFileImmutable(bool flag, const QString &path, QString *error)
{
    // Kept as callers know it: on an item that is not immutable the call does nothing and succeeds.
    if (!isFileImmutableAtPath(path))
        return true;
    Descriptor item;
    if (!openForFlags(path, &item))
        return failure(error, qt_error_string(errno));
    return setImmutableFlag(item.fd, flag, error);
}

bool FileManager::isFileBusyAtPath(const QString &path)
{
    return fileHFSTypeCodeAtPath(path) == BusyTypeCode;
}

bool FileManager::setFileBusy(bool flag, const QString &path)
{
    return setFileHFSTypeCode(flag ? BusyTypeCode : 0, path);
}

QString FileManager::lockFileAtPath(const QString &path, bool overrideLock)
{
    if (path.isEmpty())
        return QString();
    const QString lockPath = path + u".lock"_s;
    if (!overrideLock) {
        const std::optional<QVariant> existing = propertyListFromFile(lockPath);
        if (existing && existing->typeId() == QMetaType::QVariantMap)
            return QString();
    }
    const QVariantMap lock { { u"userName"_s, loginName() },
        { u"processNumber"_s, qint64(ProcessInfo::processNumber()) } };
    if (!createPathAndWriteObject(lock, lockPath, true))
        return QString();
    return lockPath;
}

bool FileManager::unlockFileAtPath(const QString &lockPath)
{
    const std::optional<QVariant> lock = propertyListFromFile(lockPath);
    if (!lock || lock->typeId() != QMetaType::QVariantMap)
        return false;
    const QVariantMap map = lock->toMap();
    const QVariant number = map.value(u"processNumber"_s);
    bool isNumber = false;
    const qint64 process = number.toLongLong(&isNumber);
    const QVariant user = map.value(u"userName"_s);
    if (user.typeId() != QMetaType::QString || user.toString() != loginName() || !isNumber
        || process != ProcessInfo::processNumber())
        return false;
    return unlinkFileAtPath(lockPath);
}

} // namespace orvel
