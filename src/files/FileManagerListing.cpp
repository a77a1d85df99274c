// Listing folders: files or folders only, deep listings guarded against link loops, wildcards.
#include "files/FileManager.h"
#include "files/FileManager_p.h"
#include "strings/Wildcard.h"

#include <QFile>

#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace orvel {

namespace {

struct DirCloser
{
    void operator()(DIR *dir) const noexcept { closedir(dir); }
};

enum class Wanted { Files = 1, Folders = 2, Both = 3 };

bool wants(Wanted wanted, bool folder)
{
    return int(wanted) & (folder ? int(Wanted::Folders) : int(Wanted::Files));
}

QStringList flatListing(const QString &path, bool fullPath, Wanted wanted)
{
    QStringList result;
    for (const QString &name : FileManager::directoryContentsAtPath(path, false)) {
        const QString full = detail::appendComponent(path, name);
        bool isDirectory = false;
        if (FileManager::fileExistsAtPath(full, &isDirectory) && wants(wanted, isDirectory))
            result.append(fullPath ? full : name);
    }
    return result;
}

/// The entries of a folder read for a deep listing, in the order the file system lists them: the
/// names one after another in one buffer (each ended by a NUL), so that a folder of thousands of
/// entries costs a few allocations rather than one per entry.
struct FolderEntries
{
    struct Entry
    {
        qsizetype offset;
        qsizetype length;
        bool isDirectory;
        bool isAscii;
    };
    QByteArray names;
    std::vector<Entry> entries;
};

/// Reads the entries of the folder at native that exist ("." and ".." and broken links left out).
/// The entry type that the folder itself records spares a status call for everything but links
/// and the entries of file systems that record none. An unreadable folder, or a listing cut short,
/// gives none.
FolderEntries readFolder(const QByteArray &native)
{
    FolderEntries read;
    const int fd = open(native.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return read;
    const std::unique_ptr<DIR, DirCloser> dir(fdopendir(fd));
    if (!dir) {
        close(fd);
        return read;
    }
    for (;;) {
        errno = 0;
        const dirent *entry = readdir(dir.get());
        if (!entry) {
            if (errno != 0)
                read.entries.clear();
            break;
        }
        const char *name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        bool isDirectory = entry->d_type == DT_DIR;
        if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN) {
            struct stat st;
            if (fstatat(fd, name, &st, 0) != 0)
                continue;
            isDirectory = S_ISDIR(st.st_mode);
        }
        const qsizetype length = qsizetype(strlen(name));
        bool ascii = true;
        for (qsizetype i = 0; i < length && ascii; ++i)
            ascii = uchar(name[i]) < 0x80;
        read.entries.push_back({ read.names.size(), length, isDirectory, ascii });
        read.names.append(name, length + 1);
    }
    return read;
}

/// Appends the entries below folder (native: its file-system bytes). ancestors holds the folders on
/// the way down (folder itself included), so that a link back to one of them is listed but not
/// entered a second time.
void deepListing(const QString &folder, const QByteArray &native, Wanted wanted,
    std::vector<FileIdentity> &ancestors, QStringList &out)
{
    const FolderEntries read = readFolder(native);
    const bool slash = folder.endsWith(u'/');
    for (const FolderEntries::Entry &entry : read.entries) {
        const char *name = read.names.constData() + entry.offset;
        QString full;
        if (entry.isAscii) {
            full.reserve(folder.size() + 1 + entry.length);
            full.append(folder);
            if (!slash)
                full.append(u'/');
            full.append(QLatin1StringView(name, entry.length));
        } else {
            const QByteArray bytes(name, entry.length);
            const QString decoded = QFile::decodeName(bytes);
            // A name that does not survive the trip through text names no file as a path: leave
            // it out, as a listing of paths cannot hand it on.
            if (QFile::encodeName(decoded) != bytes)
                continue;
            full = detail::appendComponent(folder, decoded);
        }
        if (wants(wanted, entry.isDirectory))
            out.append(full);
        if (!entry.isDirectory)
            continue;
        QByteArray child = native;
        if (!child.endsWith('/'))
            child.append('/');
        child.append(name, entry.length);
        struct stat st;
        if (stat(child.constData(), &st) != 0 || !S_ISDIR(st.st_mode))
            continue;
        const FileIdentity identity { quint64(st.st_dev), quint64(st.st_ino) };
        if (std::find(ancestors.begin(), ancestors.end(), identity) != ancestors.end())
            continue;
        ancestors.push_back(identity);
        deepListing(full, child, wanted, ancestors, out);
        ancestors.pop_back();
    }
}

QStringList deepListing(const QString &path, Wanted wanted)
{
    QByteArray native;
    const std::optional<FileIdentity> top = FileManager::fileIdentityAtPath(path);
    if (!top || !detail::nativePath(path, &native))
        return {};
    std::vector<FileIdentity> ancestors { *top };
    QStringList out;
    deepListing(path, native, wanted, ancestors, out);
    return out;
}

bool containsFiles(const QString &folder, bool onlyVisible, std::vector<FileIdentity> &ancestors)
{
    for (const QString &name : FileManager::directoryContentsAtPath(folder, false)) {
        if (onlyVisible && name.startsWith(u'.'))
            continue;
        const QString full = detail::appendComponent(folder, name);
        if (onlyVisible && (finderFlagsOfFile(full) & FinderFlag::IsInvisible))
            continue;
        const std::optional<struct stat> st = detail::statusAtPath(full);
        if (!st)
            continue;
        if (!S_ISDIR(st->st_mode))
            return true;
        const FileIdentity identity { quint64(st->st_dev), quint64(st->st_ino) };
        if (std::find(ancestors.begin(), ancestors.end(), identity) != ancestors.end())
            continue;
        ancestors.push_back(identity);
        const bool found = containsFiles(full, onlyVisible, ancestors);
        ancestors.pop_back();
        if (found)
            return true;
    }
    return false;
}

} // namespace

QStringList FileManager::directoryFilesAtPath(const QString &path, bool fullPath)
{
    return flatListing(path, fullPath, Wanted::Files);
}

QStringList FileManager::directoryFoldersAtPath(const QString &path, bool fullPath)
{
    return flatListing(path, fullPath, Wanted::Folders);
}

QStringList FileManager::deepDirectoryContentsAtPath(const QString &path)
{
    return deepListing(path, Wanted::Both);
}

QStringList FileManager::deepDirectoryFilesAtPath(const QString &path)
{
    return deepListing(path, Wanted::Files);
}

QStringList FileManager::deepDirectoryFoldersAtPath(const QString &path)
{
    return deepListing(path, Wanted::Folders);
}

QStringList FileManager::directoryContentsAtPathMatchingWildcard(
    const QString &path, const QString &wildcard, bool fullPath)
{
    QStringList matching;
    for (const QString &name : directoryContentsAtPath(path, false)) {
        if (isCaseInsensitiveLikeWildcard(name, wildcard))
            matching.append(fullPath ? detail::appendComponent(path, name) : name);
    }
    return matching;
}

bool FileManager::directoryContainsFilesAtPath(const QString &path, bool onlyVisible)
{
    const std::optional<FileIdentity> top = fileIdentityAtPath(path);
    if (!top)
        return false;
    std::vector<FileIdentity> ancestors { *top };
    return containsFiles(path, onlyVisible, ancestors);
}

} // namespace orvel
