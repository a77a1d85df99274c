// Core file operations on top of the POSIX calls, which give the listing order and nanosecond times.
#include "files/FileManager.h"

#include "files/FileManager_p.h"
#include "strings/FastCompare.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace orvel {

using detail::appendComponent;
using detail::extensionOfName;
using detail::parentFolder;
using detail::statusAtPath;

namespace {

struct DirCloser
{
    void operator()(DIR *d) const noexcept { closedir(d); }
};

} // namespace

unsigned int posixModeFromPermissions(QFileDevice::Permissions p)
{
    unsigned int mode = 0;
    if (p & (QFileDevice::ReadOwner | QFileDevice::ReadUser))
        mode |= S_IRUSR;
    if (p & (QFileDevice::WriteOwner | QFileDevice::WriteUser))
        mode |= S_IWUSR;
    if (p & (QFileDevice::ExeOwner | QFileDevice::ExeUser))
        mode |= S_IXUSR;
    if (p & QFileDevice::ReadGroup)
        mode |= S_IRGRP;
    if (p & QFileDevice::WriteGroup)
        mode |= S_IWGRP;
    if (p & QFileDevice::ExeGroup)
        mode |= S_IXGRP;
    if (p & QFileDevice::ReadOther)
        mode |= S_IROTH;
    if (p & QFileDevice::WriteOther)
        mode |= S_IWOTH;
    if (p & QFileDevice::ExeOther)
        mode |= S_IXOTH;
    return mode;
}

QStringList FileManager::directoryContentsAtPath(const QString &path, bool fullPath)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return {};
    std::unique_ptr<DIR, DirCloser> dir(opendir(native.constData()));
    if (!dir)
        return {};
    QStringList entries;
    for (;;) {
        errno = 0;
        const dirent *entry = readdir(dir.get());
        if (!entry) {
            if (errno != 0)
                return {}; // A listing cut short is not the folder's contents.
            break;
        }
        const char *name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        const QString decoded = QFile::decodeName(name);
        entries.append(fullPath ? appendComponent(path, decoded) : decoded);
    }
    return entries;
}

QStringList FileManager::directoryContentsAtPathMatchingExtension(
    const QString &path, const QString &extension, bool fullPath)
{
    const QStringList names = directoryContentsAtPath(path, false);
    QStringList matching;
    for (const QString &name : names) {
        if (isEqualToStringNoCase(extensionOfName(name), extension))
            matching.append(fullPath ? appendComponent(path, name) : name);
    }
    return matching;
}

bool FileManager::createPathToFile(
    const QString &filePath, std::optional<QFileDevice::Permissions> attributes)
{
    if (filePath.isEmpty())
        return false;
    return createPath(parentFolder(filePath), attributes);
}

bool FileManager::createPath(const QString &path, std::optional<QFileDevice::Permissions> attributes)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return false;
    bool isDirectory = false;
    if (fileExistsAtPath(path, &isDirectory))
        return isDirectory;

    // Create from the top down, then apply the permissions from the bottom up, so that permissions
    // without the owner's write bit do not stop the creation of the folders below.
    std::vector<QByteArray> created;
    qsizetype pos = 0;
    while (pos < native.size()) {
        qsizetype next = native.indexOf('/', pos);
        if (next < 0)
            next = native.size();
        if (next > pos) {
            const QByteArray prefix = native.left(next);
            if (mkdir(prefix.constData(), 0777) == 0) {
                created.push_back(prefix);
            } else {
                struct stat st;
                if (errno != EEXIST || stat(prefix.constData(), &st) != 0 || !S_ISDIR(st.st_mode))
                    return false;
            }
        }
        pos = next + 1;
    }
    if (attributes) {
        const mode_t mode = posixModeFromPermissions(*attributes);
        for (auto it = created.rbegin(); it != created.rend(); ++it) {
            if (chmod(it->constData(), mode) != 0)
                return false;
        }
    }
    return true;
}

std::optional<FileTime> FileManager::fileModificationDateAtPath(const QString &path)
{
    const std::optional<struct stat> st = statusAtPath(path);
    return st ? std::optional(detail::timePointFromTimespec<FileTime>(st->st_mtim)) : std::nullopt;
}

bool FileManager::setFileModificationDate(std::optional<FileTime> date, const QString &path)
{
    QByteArray native;
    if (!date || !detail::nativePath(path, &native))
        return false;
    timespec times[2];
    times[0].tv_sec = 0;
    times[0].tv_nsec = UTIME_OMIT;
    times[1] = detail::timespecFromTimePoint(*date);
    return utimensat(AT_FDCWD, native.constData(), times, 0) == 0;
}

bool FileManager::fileExistsAtPath(const QString &path, bool *isDirectory)
{
    const std::optional<struct stat> st = statusAtPath(path);
    if (isDirectory)
        *isDirectory = st && S_ISDIR(st->st_mode);
    return st.has_value();
}

std::optional<FileKind> FileManager::fileKindAtPath(const QString &path, bool followLinks)
{
    const std::optional<struct stat> st = statusAtPath(path, followLinks);
    if (!st)
        return std::nullopt;
    if (S_ISREG(st->st_mode))
        return FileKind::Regular;
    if (S_ISDIR(st->st_mode))
        return FileKind::Directory;
    if (S_ISLNK(st->st_mode))
        return FileKind::SymbolicLink;
    return FileKind::Other;
}

std::optional<FileIdentity> FileManager::fileIdentityAtPath(const QString &path)
{
    const std::optional<struct stat> st = statusAtPath(path);
    if (!st)
        return std::nullopt;
    return FileIdentity { quint64(st->st_dev), quint64(st->st_ino) };
}

bool FileManager::isSameFileAtPaths(const QString &a, const QString &b)
{
    const std::optional<FileIdentity> first = fileIdentityAtPath(a);
    return first && first == fileIdentityAtPath(b);
}

} // namespace orvel
