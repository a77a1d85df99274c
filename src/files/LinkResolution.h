// Following the link or alias that names a file, and resolving the symbolic links in a path.
#pragma once

#include <QString>

namespace orvel {

/// path resolved once: an alias file would be replaced by its target (Linux has none), else the
/// symbolic links in it are resolved (stringByResolvingSymlinksInPath()). Never null for a non-empty
/// path: a broken link or a missing file gives the path itself with its resolvable part resolved.
/// An empty path gives a null string.
[[nodiscard]] QString stringByResolvingLinkOfPath(const QString &path);

/// path with every symbolic link in it resolved and standardised: the longest prefix that exists
/// is made canonical (so ".." after a link leads to the parent of the link's target), the rest is
/// appended with "." and ".." removed and no "//" or trailing "/". A leading "~" or "~/" stands for
/// the home folder; a relative path is taken from the current folder. A path that does not exist
/// comes back standardised; "" gives "".
[[nodiscard]] QString stringByResolvingSymlinksInPath(const QString &path);

/// path with every prefix resolved, so that a link to a folder used as a folder in the middle of a
/// path is followed too: the symbolic links of the whole path are resolved, then the path is rebuilt
/// from its standardised components, a prefix that is (still) a link being replaced by its resolved
/// target. A link loop is left as it stands. "" gives "".
[[nodiscard]] QString stringByResolvingLinksInPath(const QString &path);

/// Answers whether the item at path exists (links followed), setting isFolder (when given) to
/// whether it is a folder. There are no alias files on Linux, so this is all that an alias check
/// needs. An empty path answers false; a path that has no file-system form (a NUL character in it)
/// is logged and answers false.
bool getAliasFSRef(const QString &path, bool *isFolder);

} // namespace orvel
