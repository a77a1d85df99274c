// Mirroring one folder into another: newer or missing items copied over, nothing else removed.
#include "files/FileManager.h"

#include "files/FileManager_p.h"
#include "files/FinderInfo.h"
#include "files/NativePath_p.h"
#include "files/Staging_p.h"

#include <QFile>
#include <QtEndian>

#include <sys/stat.h>
#include <unistd.h>

namespace orvel {

namespace {

bool setExtensionHidden(const QString &path)
{
    std::optional<QByteArray> info = finderInfoOfFile(path);
    if (!info)
        return false;
    const quint16 flags = qFromBigEndian<quint16>(info->constData() + detail::ExtendedFinderFlagsOffset);
    if (flags & detail::ExtensionHiddenFlag)
        return true;
    qToBigEndian(
        quint16(flags | detail::ExtensionHiddenFlag), info->data() + detail::ExtendedFinderFlagsOffset);
    return setFinderInfoOfFile(path, *info);
}

bool isNewer(const struct stat &a, const struct stat &b)
{
    return a.st_mtim.tv_sec > b.st_mtim.tv_sec
        || (a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec > b.st_mtim.tv_nsec);
}

/// Copies source to a hidden name beside target, then renames it over target: a reader, or a
/// failure half-way, sees the old item or the new one, never a part.
bool replaceWithCopy(const QByteArray &source, const QByteArray &target)
{
    const qsizetype slash = target.lastIndexOf('/');
    const QByteArray staged = target.left(slash + 1) + '.' + target.mid(slash + 1) + ".orvel-copy";
    detail::removeTree(staged);
    if (!detail::copyTree(source, staged)) {
        detail::removeTree(staged);
        return false;
    }
    if (::rename(staged.constData(), target.constData()) != 0) {
        detail::removeTree(staged);
        return false;
    }
    return true;
}

bool update(
    const QByteArray &source, const QByteArray &target, bool overwrite, bool hideExtensions, int depth)
{
    // Deeper than any real tree: a folder that contains itself through a link.
    if (depth > 256)
        return false;
    bool ok = true;
    for (const QString &name : FileManager::directoryContentsAtPath(QFile::decodeName(source), false)) {
        const QByteArray n = QFile::encodeName(name);
        const QByteArray from = source + '/' + n;
        const QByteArray to = target + '/' + n;
        struct stat t;
        const bool exists = ::stat(to.constData(), &t) == 0;
        if (exists && S_ISDIR(t.st_mode)) {
            ok = update(from, to, overwrite, hideExtensions, depth + 1) && ok;
            continue;
        }
        struct stat s;
        if (::stat(from.constData(), &s) != 0 && ::lstat(from.constData(), &s) != 0) {
            ok = false;
            continue;
        }
        if (!exists || overwrite || isNewer(s, t)) {
            if (!replaceWithCopy(from, to)) {
                ok = false;
                continue;
            }
        }
        if (hideExtensions && !S_ISDIR(s.st_mode))
            setExtensionHidden(QFile::decodeName(to));
    }
    return ok;
}

} // namespace

bool FileManager::updatePath(
    const QString &source, const QString &target, bool overwrite, bool hideFileExtensions)
{
    QByteArray from, to;
    bool sourceIsFolder = false, targetIsFolder = false;
    if (!detail::nativePath(source, &from) || !detail::nativePath(target, &to)
        || !fileExistsAtPath(source, &sourceIsFolder) || !sourceIsFolder
        || !fileExistsAtPath(target, &targetIsFolder) || !targetIsFolder)
        return false;
    return update(from, to, overwrite, hideFileExtensions, 0);
}

} // namespace orvel
