// File operations: creating and listing folders, dates, attributes, locks, comments and labels,
// removing and writing.
#pragma once

#include "files/FinderInfo.h"

#include <QFileDevice>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QUrl>
#include <QVariant>
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

/// The owner, group and permission bits of an item. A name is empty when the system knows none
/// for the number.
struct FilePermissions
{
    QString ownerAccountName;
    QString groupOwnerAccountName;
    quint32 ownerAccountID = 0;
    quint32 groupOwnerAccountID = 0;
    quint32 posixPermissions = 0;
    friend bool operator==(const FilePermissions &, const FilePermissions &) = default;
};

/// What identifies an item: its device and inode, and the path it was found at.
struct FileReference
{
    FileIdentity identity;
    QString path;
};

/// The properties of an item that FileManager::getResourceForKey() reads, each with the value type
/// it answers and where Linux keeps it.
enum class ResourceKey {
    ContentModificationDate, ///< FileTime: the modification time
    ContentAccessDate, ///< FileTime: the access time
    AttributeModificationDate, ///< FileTime: the status change time
    CreationDate, ///< FileTime: the birth time, where the file system records one
    FileSize, ///< qint64: the size in bytes (of a folder, what the file system reports)
    IsRegularFile, ///< bool
    IsDirectory, ///< bool
    IsSymbolicLink, ///< bool: whether the path itself is a link (the only key not following links)
    IsHidden, ///< bool: the name starts with "." or the Finder info has the invisible flag
    HasHiddenExtension, ///< bool: the Finder info's extended flag that hides the name's extension
    IsUserImmutable, ///< bool: the immutable attribute (false where the file system has none)
    LabelNumber, ///< int: the label of the Finder info, 0 (none) to 7
    TypeCode, ///< FileTypeCode: the type code of the Finder info, 0 when it has none
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

    // Creating

    /// Answers true when something exists at path (links followed); otherwise creates an empty file
    /// there and answers whether that worked. The folder above must exist.
    static bool createFile(const QString &path);
    /// createFile() after creating the folders above path.
    static bool createPathAndFile(const QString &path);
    /// Creates the folders above path and writes object there: a QVariantMap or QVariantList as an
    /// XML property list (so is a QStringList), a QByteArray as it is, a QString as UTF-8 text. atomically
    /// writes a complete file or nothing; otherwise the file is written in place. Other types answer false.
    static bool createPathAndWriteObject(const QVariant &object, const QString &path, bool atomically);
    /// Answers false when something exists at path. Otherwise a folder at previousPath is renamed
    /// to path (a plain file there is left alone), else a new folder is created at path.
    static bool createPath(const QString &path, const QString &previousPath);
    /// Removes whatever is at path, creates a folder there and answers whether the caller may write
    /// into it.
    static bool createWritableTemporaryPath(const QString &path);

    // Listing. The flat lists keep the order of directoryContentsAtPath(); entries that do not
    // exist (broken links, entries gone meanwhile) are dropped, links are followed to tell files
    // from folders.

    /// The entries that are not folders.
    [[nodiscard]] static QStringList directoryFilesAtPath(const QString &path, bool fullPath);
    /// The entries that are folders (or links to folders).
    [[nodiscard]] static QStringList directoryFoldersAtPath(const QString &path, bool fullPath);
    /// Every file and folder below path, pre-order, as full paths: a folder comes before its
    /// contents. Links to folders are followed, but a folder already on the way down (a link loop)
    /// is listed and not entered again.
    [[nodiscard]] static QStringList deepDirectoryContentsAtPath(const QString &path);
    /// The files of deepDirectoryContentsAtPath(), every folder searched.
    [[nodiscard]] static QStringList deepDirectoryFilesAtPath(const QString &path);
    /// The folders of deepDirectoryContentsAtPath().
    [[nodiscard]] static QStringList deepDirectoryFoldersAtPath(const QString &path);
    /// The entries whose name matches wildcard ("*", "?", "[...]"), case ignored.
    [[nodiscard]] static QStringList directoryContentsAtPathMatchingWildcard(
        const QString &path, const QString &wildcard, bool fullPath = false);
    /// Whether a file (not a folder) exists anywhere below path. With onlyVisible, entries whose
    /// name starts with "." and entries with the invisible Finder flag are passed over. A folder
    /// already on the way down is not searched again.
    [[nodiscard]] static bool directoryContainsFilesAtPath(const QString &path, bool onlyVisible);

    // Dates

    /// The file's creation (birth) time, links followed; nullopt when the file system does not
    /// record one or the file cannot be found.
    [[nodiscard]] static std::optional<FileTime> fileCreationDateAtPath(const QString &path);
    /// Linux cannot set a file's birth time: answers true only when date is the creation time the
    /// file already has, and false otherwise, changing nothing.
    static bool setFileCreationDate(std::optional<FileTime> date, const QString &path);
    /// Sets both dates in one go, or neither: a missing date leaves that one as it is; with no date
    /// at all, or a creation date that cannot be given (see setFileCreationDate()), answers false.
    static bool setFileCreationDate(
        std::optional<FileTime> creation, std::optional<FileTime> modification, const QString &path);

    // Attributes

    /// The value of one property of the item at path (links followed, but for IsSymbolicLink), of
    /// the type ResourceKey names; FileTime values are held with QVariant::fromValue(). error (when
    /// given) is cleared first, so it is empty after success and for an empty path, which answers
    /// an invalid QVariant; one that cannot be read answers it too, with the reason in error.
    [[nodiscard]] static QVariant getResourceForKey(
        ResourceKey key, const QString &path, QString *error = nullptr);
    /// Bytes free to an ordinary user on the file system that holds path; 0 when it cannot be told.
    [[nodiscard]] static quint64 freeDiskSpaceAtPath(const QString &path);
    /// The type code of the file's Finder info; 0 when it has none.
    [[nodiscard]] static FileTypeCode fileHFSTypeCodeAtPath(const QString &path);
    /// Sets the type code of the file's Finder info, keeping the rest of it.
    static bool setFileHFSTypeCode(FileTypeCode code, const QString &path);
    /// Owner, group and permission bits of the item (links followed); without executable the three
    /// execute bits are cleared. nullopt when the item cannot be found.
    [[nodiscard]] static std::optional<FilePermissions> permissionsAtPath(
        const QString &path, bool executable);
    /// permissionsAtPath() of the folder that holds path.
    [[nodiscard]] static std::optional<FilePermissions> permissionsAtPathByDeletingLastPathComponent(
        const QString &path, bool executable);
    /// Whether path itself is a symbolic link (broken or not).
    [[nodiscard]] static bool isSymbolicLinkAtPath(const QString &path);
    /// Whether a folder is at path (links followed).
    [[nodiscard]] static bool isDirectoryAtPath(const QString &path);
    /// For a path inside a volume folder (/media/USER/NAME, /run/media/USER/NAME or /mnt/NAME),
    /// whether that volume folder exists; true for every other path and for the volume roots
    /// themselves.
    [[nodiscard]] static bool isVolumeMountedAtPath(const QString &path);
    /// Whether the item shows a custom icon: a folder holding "Icon\r", a folder directly in the
    /// home folder or in "/" (never a package, a folder with an extension), or the custom-icon flag
    /// of the Finder info.
    [[nodiscard]] static bool existsCustomIconForPath(const QString &path);
    /// existsCustomIconForPath() where the caller already knows whether path is a folder.
    [[nodiscard]] static bool existsCustomIconForPath(const QString &path, bool isDirectory);
    /// Fills ref with what identifies the item at path (links followed); false when nothing is there.
    static bool getFSRef(FileReference *ref, const QString &path);
    /// The path of the item ref names, as long as that path still leads to the same item; null
    /// otherwise.
    [[nodiscard]] static QString getPathFromFSRef(const FileReference &ref);
    /// "'fldr'" for a folder, else the quoted type code of the file; null when it has none (or
    /// '????').
    [[nodiscard]] static QString fileTypeForWorkspace(const QString &path);

    // Locks and flags

    /// Whether the item is immutable or its owner lacks read or write permission.
    [[nodiscard]] static bool isFileLockedAtPath(const QString &path);
    /// Locking takes the owner's write permission away and makes the item immutable where the
    /// process may (setting the immutable attribute needs a privilege, so without one the lock is
    /// the permission alone); unlocking clears the immutable attribute and gives the owner read and
    /// write permission.
    static bool setFileLocked(bool flag, const QString &path);
    /// Whether the item has the Linux immutable attribute.
    [[nodiscard]] static bool isFileImmutableAtPath(const QString &path);
    /// Answers true at once, changing nothing, when the item is not immutable now: the call clears
    /// the attribute but never sets it on a mutable item (kept as callers rely on it). Otherwise
    /// sets the attribute to flag; false with a reason when the process lacks the privilege.
    static bool setFileImmutable(bool flag, const QString &path, QString *error = nullptr);
    /// Whether the file's type code is 'brok', the mark of a file being written.
    [[nodiscard]] static bool isFileBusyAtPath(const QString &path);
    /// Sets the type code to 'brok', or clears it.
    static bool setFileBusy(bool flag, const QString &path);
    /// Writes the lock file path + ".lock" (a property list of the user's login name and this
    /// process's number) and answers its path; without overrideLock an existing lock file that
    /// reads as a dictionary makes it answer null.
    [[nodiscard]] static QString lockFileAtPath(const QString &path, bool overrideLock);
    /// Removes the lock file at lockPath when this user and this process wrote it; false otherwise.
    static bool unlockFileAtPath(const QString &lockPath);

    // Comments and labels, kept where other file managers look for them: the comment in the
    // extended attribute "user.xdg.comment", the label in the colour bits of the Finder info.
    // The asynchronous forms gather requests on the event loop of the main thread and write them
    // in batches 0.2 s after the last request.

    /// The item's comment; null when it has none. useScript has no effect here, the attribute is
    /// always read.
    [[nodiscard]] static QString finderComment(const QString &path, bool useScript = true);
    /// Sets the comment (an empty or null comment removes it); the item must exist.
    static bool setFinderComment(const QString &comment, const QString &path);
    /// With asynchronous, queues the comment and answers true at once (the item must exist).
    static bool setFinderComment(const QString &comment, const QString &path, bool asynchronous);
    /// Writes up to 25 queued comments of files (in path order) and, when some remain, runs again
    /// 0.2 s later.
    static void setFileComments();
    /// setFileComments() for the queued comments of folders.
    static void setContainerComments();
    /// The label number (0 none, 1 to 7 a colour) of the item; 0 when it has none.
    [[nodiscard]] static int finderLabel(const QString &path);
    /// Sets the label number (0 to 7).
    static bool setFinderLabel(int label, const QString &path);
    /// With asynchronous, queues the label and answers true at once (the item must exist).
    static bool setFinderLabel(int label, const QString &path, bool asynchronous);
    /// Writes up to 10 queued labels and, when some remain, runs again 0.2 s later.
    static void setFinderLabels();
    /// How many comments and labels wait to be written.
    [[nodiscard]] static qsizetype pendingFinderRequests();

    // Aliases: Linux has none, so nothing is an alias; links are resolved elsewhere.

    /// Answers path itself, setting isDirectory (when given) to whether it leads to a folder.
    [[nodiscard]] static QString resolveAlias(const QString &path, bool noUI, bool *isDirectory = nullptr);
    /// Answers false, setting isDirectory (when given) to whether path leads to a folder.
    static bool isAliasFileAtPath(const QString &path, bool *isDirectory = nullptr);

    // Removing and renaming

    /// Removes the item at path, a folder with everything in it (links are removed, never
    /// followed). True when nothing is there afterwards; logs "Couldn't remove path %@" otherwise.
    static bool removePath(const QString &path);
    /// unlink() of path.
    static bool unlinkFileAtPath(const QString &path);
    /// Renames the item at path to newName within its folder.
    static bool renamePath(const QString &path, const QString &newName);
    /// path when nothing exists there; otherwise the first of "NAME-1.EXT", "NAME-2.EXT", … that
    /// does not exist, the name cut so that the last component stays within 250 characters.
    [[nodiscard]] static QString nonExistingFilenameAtPath(const QString &path);
    /// Removes the oldest entries of the folder whose names start with prefix until at most
    /// maxNumberOfArchives remain, and answers the name for the next archive: prefix plus
    /// " yyyy-MM-dd HH-mm-ss" of the local time. Null for a zero maximum or an empty prefix.
    [[nodiscard]] static QString archiveDirectoryContentsAtPath(
        const QString &path, const QString &prefix, int maxNumberOfArchives);
    /// Removes each of names inside folder that exists, logging "Removed: %@" for each removed.
    static void directory(const QString &folder, const QStringList &names);
    /// Logs "Removed: %@" with path.
    static void didRemoveFile(const QString &path);

    // Writing

    /// Writes data to path (creating the file when missing), at its end with append, else in place
    /// of its contents. Null data or an empty path answer false, as does a file that cannot be
    /// opened; an error while writing is ignored and still answers true, as callers expect.
    static bool writeData(const QByteArray &data, const QString &path, bool append);
    /// writeData() of text in the locale's encoding; an empty text answers false.
    static bool writeString(const QString &text, const QString &path, bool append);

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

/// Orders two paths newest first by modification date: negative when a is newer than b.
[[nodiscard]] int sortByModificationDate(const QString &a, const QString &b);

/// The POSIX mode bits (0777 at most) for Qt permission flags; owner and user flags both count as
/// the owner's.
unsigned int posixModeFromPermissions(QFileDevice::Permissions permissions);

} // namespace orvel
