// Path strings: fitting the file system, legal file names, numeric-aware ordering, relative paths,
// containment, standardisation, extensions, colon-separated (HFS) forms and temporary locations.
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace orvel {

// Paths are POSIX path strings with "/" as separator. Transformations that find nothing to change
// answer the receiver itself (the same shared text).

// --- Fitting the file system ----------------------------------------------------------------------

/// The bytes a file-system representation may take, its terminating zero included.
inline constexpr qsizetype FileSystemRepresentationLimit = 250;
/// The longest extension that createFileSystemRepresentationAndAppendExtension() makes room for.
inline constexpr qsizetype MaximumPathExtensionLength = 17;

/// Deletes trailing characters until the UTF-8 form (the file system's encoding here) fits 250
/// bytes with its terminating zero. A surrogate pair is deleted whole, never cut in half; a lone
/// surrogate counts as the three bytes of its replacement character.
void createFileSystemRepresentation(QString &s);
/// With an extension of 1 to 17 units: shortened to fit 249 minus its length, then "." and the
/// extension appended unless s already ends with exactly that. Any other extension is ignored and
/// the 250-byte rule applies alone.
void createFileSystemRepresentationAndAppendExtension(QString &s, QStringView extension);
/// The shortened copy; null for a null receiver, an empty receiver as it is.
[[nodiscard]] QString stringByCreatingFileSystemRepresentation(const QString &s);
[[nodiscard]] QString stringByCreatingFileSystemRepresentationByAppendingExtension(
    const QString &s, QStringView extension);

// --- File names -----------------------------------------------------------------------------------

/// Deletes the leading and the trailing run of ".", "/", ":" and "~"; inner ones stay.
void trimInvalidFilenameCharacters(QString &s);
/// Composes the text (Unicode NFC), trims as above, then replaces every remaining "/", ":" and "~"
/// by "-": "..a/b:c~.." becomes "a-b-c".
void createFilename(QString &s);
[[nodiscard]] QString stringByTrimmingInvalidFilenameCharacters(const QString &s);
[[nodiscard]] QString stringByCreatingFilename(const QString &s);

// --- Ordering -------------------------------------------------------------------------------------

// Numeric-aware comparison of the whole strings (not only their last components, despite the name):
// runs of ASCII digits compare as numbers of any length ("file9" < "file10", "007" equals "7"),
// other units by their difference. The result is negative, zero or positive: the difference of the
// first differing units, -1 or +1 for differing numbers, else the difference of the lengths (so
// "a7" against "a007" gives -2). A null argument gives -1; an empty side gives the length difference.

qsizetype compareWithLastPathComponent(QStringView s, QStringView other);
/// The same with both units mapped through upperCharsTable.
qsizetype caseInsensitiveCompareWithLastPathComponent(QStringView s, QStringView other);
/// The same through upperUmlautsCharsTable: case and accents ignored.
qsizetype nonUmlautedCaseInsensitiveCompareWithLastPathComponent(QStringView s, QStringView other);

// --- Relations between paths ----------------------------------------------------------------------

/// The path of s seen from directory: "./c" for /a/b/c from /a/b, "../x" for /a/x from /a/b, "./"
/// for the directory itself. Both are standardised first: "~" expanded, "." and empty components
/// dropped, ".." taken back lexically in absolute paths (links are not consulted).
[[nodiscard]] QString relativePathToDirectory(QStringView s, QStringView directory);

/// Whether s is directory or lies inside it: s starts with directory (exactly, case-sensitive,
/// trailing "/" of directory ignored) and ends there or goes on with "/". Nothing lies in the root
/// folder: a directory of "/" or "" answers false, on purpose. A null directory answers false, and so
/// does the very same string: s and directory viewing the same units (the same data and length, as an
/// implicitly shared copy of a QString does). An equal text in other storage is inside.
bool pathIsInDirectory(QStringView s, QStringView directory);
/// pathIsInDirectory() against each folder in order, skipping those that are the very same string as
/// s (same data and length); true at the first match.
bool pathIsInDirectories(QStringView s, const QStringList &directories);

/// The folder part: "" for "", the parent folder for a path without a trailing "/", and for one with
/// it the path without that "/" (a trailing slash marks a folder, its own folder part); "/" gives "".
[[nodiscard]] QString stringByDeletingFileComponent(const QString &s);

// --- Standardisation ------------------------------------------------------------------------------

/// The components of s with "", "." and every "/" but a leading one removed, and each ".." taken
/// back together with the component before it; a ".." at the front goes alone, and one right after the
/// leading "/" takes the "/" with it. A leading "/" is kept as its own first component.
[[nodiscard]] QStringList standardizedPathComponents(QStringView s);
/// The standardised components joined by "/": "/a/./b//../c" gives "/a/c", "a/../../b" gives "b".
/// Kept as they are: "/" gives "" and "/.." gives "" (the root is taken back too).
[[nodiscard]] QString standardizedPath(const QString &s);

// --- Extensions -----------------------------------------------------------------------------------

/// The extension of the last component: the text after its last "."; none ("") for a name without
/// a dot or one whose only dot leads it (".profile"). Trailing "/" are ignored.
[[nodiscard]] QString pathExtension(QStringView s);
/// s with "." and extension appended unless its extension already equals it, case ignored.
[[nodiscard]] QString stringByAppendingPathExtensionIfNecessary(const QString &s, QStringView extension);
/// s with its extension replaced by extension unless it already equals it exactly.
[[nodiscard]] QString stringByReplacingPathExtensionWith(const QString &s, QStringView extension);
/// 1 to 17 units, every one alphanumeric.
bool isValidPathExtension(QStringView s);
/// The extension cut before the first of "?&;=#" when that is valid, else "".
[[nodiscard]] QString validPathExtension(QStringView s);
/// Whether extensions holds the path's extension, case ignored.
bool pathMatchingExtensions(QStringView s, const QStringList &extensions);
/// Whether types holds the path's extension (case ignored) or, exactly, the file's type code as
/// HFSTypeOfFile() writes it ("'JPEG'"). An empty path or list answers false.
bool pathMatchingExtensionsOrTypes(const QString &s, const QStringList &types);

// --- Colon-separated (HFS) forms ------------------------------------------------------------------

/// The name that the colon-separated form gives the root folder's volume.
inline constexpr char16_t RootVolumeName[] = u"Computer";

/// The colon-separated form of a POSIX path. Linux has no HFS volumes, so the form is made as a
/// Mac would make it for a mounted disk: the root folder is the volume RootVolumeName, a removable
/// volume mounted at /media/USER/NAME or /run/media/USER/NAME is the volume NAME; components are
/// separated by ":", a ":" inside a name becomes "/", and a folder's trailing "/" a trailing ":".
/// "/home/ann/a:b" gives "Computer:home:ann:a/b", "/" gives "Computer:". A relative path gives the
/// relative form, led by ":" ("a/b" gives ":a:b"); text without "/" comes back as it is.
[[nodiscard]] QString HFSPath(const QString &s);
/// The POSIX form. null gives null, "" gives "". A path starting with "/" or "~" is taken as POSIX and
/// its tilde expanded. Text with ":" is taken as colon-separated: the volume RootVolumeName is "/",
/// any other volume NAME is /run/media/USER/NAME when that exists, else /media/USER/NAME; "/" inside
/// names becomes ":", an empty inner component ("a::b") goes up one folder, and a relative form
/// (":a:b") is taken from the root. Any other text gets "/" put in front.
[[nodiscard]] QString POSIXPath(const QString &s);

// --- Temporary locations --------------------------------------------------------------------------

/// Whether the path is a temporary location: it starts with "/tmp" (a plain prefix: "/tmpfoo" counts),
/// with "/var/tmp/" or with the process's temporary folder ($TMPDIR, else /tmp) and a "/"; or it is an
/// attachment that a mail program saved to open it. Mail programs here keep those in the system's
/// temporary folder (covered above) or, as Claws Mail and Sylpheed do, in "mimetmp" inside their
/// hidden folder of the user's home (~/.claws-mail/mimetmp/): such a path counts when its
/// tilde-abbreviated form is "~/.NAME/mimetmp/" and more. A null path answers false.
bool isTemporaryPath(QStringView s);

} // namespace orvel
