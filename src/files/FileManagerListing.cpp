// Listing folders: files or folders only, deep listings guarded against link loops, wildcards.
#include "files/FileManager.h"
#include "files/FileManager_p.h"
#include "strings/Wildcard.h"

#include <vector>

namespace orvel {

namespace {

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

/// Appends the entries below folder. ancestors holds the folders on the way down (folder itself
/// included), so that a link back to one of them is not entered a second time.
void deepListing(const QString &folder, Wanted wanted, std::vector<FileIdentity> &ancestors, QStringList &out)
{
    for (const QString &name : FileManager::directoryContentsAtPath(folder, false)) {
        const QString full = detail::appendComponent(folder, name);
        const std::optional<struct stat> st = detail::statusAtPath(full);
        if (!st)
            continue;
        const bool isDirectory = S_ISDIR(st->st_mode);
        if (wants(wanted, isDirectory))
            out.append(full);
        if (!isDirectory)
            continue;
        const FileIdentity identity { quint64(st->st_dev), quint64(st->st_ino) };
        if (std::find(ancestors.begin(), ancestors.end(), identity) != ancestors.end())
            continue;
        ancestors.push_back(identity);
        deepListing(full, wanted, ancestors, out);
        ancestors.pop_back();
    }
}

QStringList deepListing(const QString &path, Wanted wanted)
{
    const std::optional<FileIdentity> top = FileManager::fileIdentityAtPath(path);
    if (!top)
        return {};
    std::vector<FileIdentity> ancestors { *top };
    QStringList out;
    deepListing(path, wanted, ancestors, out);
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
