// Core file operations: listing folders, creating folders, reading and setting modification dates.
#pragma once

#include <QFileDevice>
#include <QString>
#include <QStringList>
#include <chrono>
#include <optional>

namespace orvel {

/// A file time with the nanosecond precision of the file system.
using FileTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

/// What is at a path, as the file system tells it.
enum class FileKind { Regular, Directory, SymbolicLink, Other };

/// A file's identity on this system: two paths with equal identities lead to the same file.
struct FileIdentity
{
    quint64 device = 0;
    quint64 inode = 0;
    friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};

/// File-manager operations. All are static, keep no state, never throw, and answer empty, nullopt or
/// false on failure. Paths are POSIX paths; an empty path or one holding a NUL character is a failure.
class FileManager
{
public:
    /// Every entry of the folder in the order the file system lists it (not sorted), hidden entries
    /// and broken links included, only "." and ".." skipped; with fullPath each entry is the folder
    /// path plus "/" plus the name, else the bare name. An unreadable or missing folder gives an
    /// empty list.
    [[nodiscard]] static QStringList directoryContentsAtPath(const QString &path, bool fullPath);

    /// The entries of directoryContentsAtPath() whose extension equals extension, case ignored.
    /// The extension is the text after the last "." of the name; a name starting with its only "."
    /// (".profile") has none, and matches an empty extension.
    [[nodiscard]] static QStringList directoryContentsAtPathMatchingExtension(
        const QString &path, const QString &extension, bool fullPath = false);

    /// createPath() of the folder that holds filePath.
    static bool createPathToFile(
        const QString &filePath, std::optional<QFileDevice::Permissions> attributes = {});

    /// Answers whether a folder exists at path afterwards. When something exists there already,
    /// answers whether it is a folder (a plain file gives false) and changes nothing; otherwise creates
    /// the folder and every missing folder above it, giving each new folder the permissions in
    /// attributes (exactly, umask aside) when they are given.
    static bool createPath(const QString &path, std::optional<QFileDevice::Permissions> attributes = {});

    /// The file's modification time with nanoseconds (links followed); nullopt when it cannot be read.
    [[nodiscard]] static std::optional<FileTime> fileModificationDateAtPath(const QString &path);

    /// Sets the file's modification time alone (the access time is left as it is; links followed).
    /// A missing date or an empty path answers false and changes nothing.
    static bool setFileModificationDate(std::optional<FileTime> date, const QString &path);

    /// Whether something exists at path, following links (a broken link does not exist); isDirectory,
    /// when given, is set to whether it is a folder.
    static bool fileExistsAtPath(const QString &path, bool *isDirectory = nullptr);

    /// The kind of what is at path, links followed unless followLinks is false (then a link
    /// answers SymbolicLink); nullopt when nothing can be found there (a broken link followed).
    [[nodiscard]] static std::optional<FileKind> fileKindAtPath(const QString &path, bool followLinks = true);

    /// The device and inode of the file at path, links followed; nullopt when it cannot be found.
    [[nodiscard]] static std::optional<FileIdentity> fileIdentityAtPath(const QString &path);

    /// Whether both paths lead to one file that exists (links followed).
    [[nodiscard]] static bool isSameFileAtPaths(const QString &a, const QString &b);
};

/// The POSIX mode bits (0777 at most) for Qt permission flags; owner and user flags both count as
/// the owner's.
unsigned int posixModeFromPermissions(QFileDevice::Permissions permissions);

} // namespace orvel
