// Aliases (none on Linux), removing and renaming items, unique names and rotating archives.
#include "files/FileManager.h"
#include "files/FileManager_p.h"
#include "support/Log.h"

#include <QDateTime>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <ftw.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

int removeEntry(const char *path, const struct stat *, int kind, FTW *)
{
    // Folders come after their contents (FTW_DEPTH); links are removed as links (FTW_PHYS).
    const int result = kind == FTW_DP ? rmdir(path) : unlink(path);
    return result == 0 || errno == ENOENT ? 0 : -1;
}

bool removeItem(const QByteArray &native)
{
    struct stat st;
    if (lstat(native.constData(), &st) != 0)
        return false;
    if (!S_ISDIR(st.st_mode))
        return unlink(native.constData()) == 0;
    return nftw(native.constData(), removeEntry, 32, FTW_DEPTH | FTW_PHYS) == 0;
}

bool somethingAt(const QString &path) { return FileManager::fileKindAtPath(path, false).has_value(); }

} // namespace

QString FileManager::resolveAlias(const QString &path, bool noUI, bool *isDirectory)
{
    Q_UNUSED(noUI);
    bool folder = false;
    fileExistsAtPath(path, &folder);
    if (isDirectory)
        *isDirectory = folder;
    return path;
}

bool FileManager::isAliasFileAtPath(const QString &path, bool *isDirectory)
{
    bool folder = false;
    fileExistsAtPath(path, &folder);
    if (isDirectory)
        *isDirectory = folder;
    return false;
}

bool FileManager::removePath(const QString &path)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return false;
    if (removeItem(native) || !somethingAt(path) || unlinkFileAtPath(path))
        return true;
    logMessage(u"Couldn't remove path %1"_s.arg(path));
    return false;
}

bool FileManager::unlinkFileAtPath(const QString &path)
{
    QByteArray native;
    return detail::nativePath(path, &native) && unlink(native.constData()) == 0;
}

bool FileManager::renamePath(const QString &path, const QString &newName)
{
    QByteArray from;
    QByteArray to;
    if (newName.isEmpty() || newName.contains(u'/') || newName == u"."_s || newName == u".."_s
        || !detail::nativePath(path, &from))
        return false;
    const QString parent = detail::parentFolder(path);
    if (!detail::nativePath(parent.isEmpty() ? newName : detail::appendComponent(parent, newName), &to))
        return false;
    // Never over an existing item.
    return renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0;
}

QString FileManager::nonExistingFilenameAtPath(const QString &path)
{
    if (path.isEmpty() || !somethingAt(path))
        return path;
    const QString name = detail::lastComponent(path);
    const QString folder = path.left(path.lastIndexOf(name));
    const QString extension = detail::extensionOfName(name).toString();
    const QString base = extension.isEmpty() ? name : name.left(name.size() - extension.size() - 1);
    // No upper bound: every number is tried until one is free.
    for (qint64 number = 1;; ++number) {
        const QString suffix = u"-%1"_s.arg(number);
        const qsizetype room = 250 - suffix.size() - (extension.isEmpty() ? 0 : extension.size() + 1);
        const QString cut = base.size() > room ? base.left(std::max<qsizetype>(room, 0)) : base;
        const QString candidate
            = folder + cut + suffix + (extension.isEmpty() ? QString() : u'.' + extension);
        if (!somethingAt(candidate))
            return candidate;
    }
}

QString FileManager::archiveDirectoryContentsAtPath(
    const QString &path, const QString &prefix, int maxNumberOfArchives)
{
    if (maxNumberOfArchives <= 0 || prefix.isEmpty())
        return QString();
    QStringList archives = directoryContentsAtPathMatchingWildcard(path, prefix + u'*', true);
    std::stable_sort(archives.begin(), archives.end(),
        [](const QString &a, const QString &b) { return sortByModificationDate(a, b) < 0; });
    // The newest maxNumberOfArchives stay: the caller's new archive makes one more.
    while (archives.size() > maxNumberOfArchives)
        removePath(archives.takeLast());
    return prefix + QDateTime::currentDateTime().toString(u" yyyy-MM-dd HH-mm-ss"_s);
}

void FileManager::directory(const QString &folder, const QStringList &names)
{
    for (const QString &name : names) {
        const QString path = detail::appendComponent(folder, name);
        if (!name.isEmpty() && somethingAt(path) && removePath(path))
            didRemoveFile(path);
    }
}

void FileManager::didRemoveFile(const QString &path) { logMessage(u"Removed: %1"_s.arg(path)); }

} // namespace orvel
