// Not API: path and status helpers shared by the files of FileManager.
#pragma once

#include "files/NativePath_p.h"

#include <QString>
#include <QStringView>
#include <optional>
#include <sys/stat.h>

namespace orvel::detail {

/// Where the Finder info keeps its extended flags (bytes 24-25, big-endian), and the one of them
/// that hides a name's extension.
inline constexpr qsizetype ExtendedFinderFlagsOffset = 24;
inline constexpr quint16 ExtensionHiddenFlag = 0x0010;

/// The status of what is at path, links followed unless followLinks is false; nullopt when
/// nothing can be found there or the path cannot name a file.
inline std::optional<struct stat> statusAtPath(const QString &path, bool followLinks = true)
{
    QByteArray native;
    if (!nativePath(path, &native))
        return std::nullopt;
    struct stat st;
    if ((followLinks ? stat(native.constData(), &st) : lstat(native.constData(), &st)) != 0)
        return std::nullopt;
    return st;
}

/// folder + "/" + name, without doubling a trailing slash.
inline QString appendComponent(const QString &folder, const QString &name)
{
    if (folder.endsWith(u'/'))
        return folder + name;
    return folder + u'/' + name;
}

/// The extension of a file name: the text after its last "."; none when that dot starts the name.
inline QStringView extensionOfName(QStringView name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0)
        return {};
    return name.mid(dot + 1);
}

/// The last component of path, trailing slashes ignored.
inline QString lastComponent(const QString &path)
{
    qsizetype end = path.size();
    while (end > 1 && path.at(end - 1) == u'/')
        --end;
    const qsizetype slash = path.lastIndexOf(u'/', end - 1);
    return path.mid(slash + 1, end - slash - 1);
}

/// The folder holding path: trailing slashes dropped, then the last component; "/" for a
/// top-level item, "" for a bare name.
inline QString parentFolder(const QString &path)
{
    qsizetype end = path.size();
    while (end > 1 && path.at(end - 1) == u'/')
        --end;
    const qsizetype slash = path.lastIndexOf(u'/', end - 1);
    if (slash < 0)
        return QString();
    qsizetype parentEnd = slash;
    while (parentEnd > 0 && path.at(parentEnd - 1) == u'/')
        --parentEnd;
    if (parentEnd == 0)
        return QStringLiteral("/");
    return path.left(parentEnd);
}

} // namespace orvel::detail
