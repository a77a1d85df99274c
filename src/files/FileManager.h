// Core file operations: listing folders, creating folders, reading and setting modification dates.
#pragma once

#include "files/FinderInfo.h"

#include <QFileDevice>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QUrl>
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

    // ---- Archives, mirroring and location files ----------------------------------------------

    /// Zips the file or folder at source into a zip archive at target, as a Mac's archive utility
    /// does: a folder's contents (with keepParent, the folder itself) stored by their relative paths,
    /// links as links, and each item's resource fork and Finder info in an AppleDouble entry
    /// "__MACOSX/DIR/._NAME". The archive replaces target whole or not at all.
    static bool compressFileAtPath(const QString &source, const QString &target, bool keepParent = false);

    /// Zips the named files and folders (relative to folder, folders with everything in them, links
    /// followed) into target; with append, the entries of an existing archive at target are kept,
    /// those of the same names replaced. False for an empty list, a missing folder, a name that
    /// leaves the folder, or an existing target that is no readable zip archive when appending.
    static bool compressFiles(
        const QStringList &names, const QString &folder, const QString &target, bool append = false);

    /// Unzips the archive at source into targetFolder (created when missing), restoring forks and
    /// Finder info from the "__MACOSX" entries. An archive with an entry that would land outside
    /// the folder (an absolute path, "..", a link leading out or a path through a link), or that
    /// would expand beyond a sane size or ratio, is refused before anything is written. Items are
    /// unpacked into a hidden folder inside targetFolder and moved into place only when all of
    /// them are complete, so a failure leaves no half-written file.
    static bool decompressFileAtPath(const QString &source, const QString &targetFolder);

    /// Mirrors the folder source into the folder target: an entry that is a folder in both is
    /// updated recursively; a file in target is replaced when overwrite is set or the source is
    /// newer; a missing entry is copied (folders whole). Nothing in target is removed that is not
    /// replaced, and each replacement takes its place by a rename, so every file is either old or
    /// new. With hideFileExtensions, each file entry's extension is marked hidden. True when every
    /// copy and recursion succeeded.
    static bool updatePath(const QString &source, const QString &target, bool overwrite = false,
        bool hideFileExtensions = false);

    /// The location file's extension for url ("webloc", "ftploc", "mailloc", "newsloc", "vncloc",
    /// "fileloc" or "inetloc"); null for an empty string.
    [[nodiscard]] static QString pathExtensionForInternetLocation(const QString &url);
    /// The same for a parsed URL: a file URL gives "fileloc", else the scheme decides.
    [[nodiscard]] static QString pathExtensionForInternetLocation(const QUrl &url);

    /// Writes a location file at path: the property list {"URL": url} and, in the fork, the
    /// resources 'TEXT' 256 and 'url ' 256 (the URL in UTF-8) with a 'drag' 128 listing them; then
    /// sets the type code of the URL's kind. Answers whether the type code was set; false for an
    /// empty URL.
    static bool createInternetLocation(const QString &url, const QString &path);
    static bool createInternetLocation(const QUrl &url, const QString &path);

    /// Writes the internet shortcut "[InternetShortCut]\nURL=<url>\n" at path, atomically.
    static bool createURL(const QString &url, const QString &path);

    /// Every extension and quoted type code accepted as a location file.
    [[nodiscard]] static QStringList InternetLocationTypes();

    /// Whether type is a location file's type code or extension (case ignored) a location file's
    /// extension.
    [[nodiscard]] static bool isInternetLocationExtension(QStringView extension, FileTypeCode type);

    /// isInternetLocationExtension() for the file's extension and type code.
    [[nodiscard]] static bool isInternetLocationFile(const QString &path);

    /// The URL that the location file at path leads to: a ".url" shortcut's "URL=" line, the fork's
    /// 'url ' or 'TEXT' resource, the property list's "URL", or a freedesktop.org link's "URL" key
    /// (a ".desktop" file of Type=Link); null when path is no location file or holds no URL.
    [[nodiscard]] static QString resolveInternetLocation(const QString &path);
};

/// The POSIX mode bits (0777 at most) for Qt permission flags; owner and user flags both count as
/// the owner's.
unsigned int posixModeFromPermissions(QFileDevice::Permissions permissions);

} // namespace orvel
