// Writing a whole file so that readers see the old contents or the new ones, never a part.
#pragma once

#include <QByteArray>
#include <QString>

namespace orvel {

/// Writes data to path complete or not at all: a temporary file in the same folder, then renamed over any
/// existing file, keeping the existing file's permissions (new files get 0666 & ~umask). On failure nothing
/// of the old file is lost and no temporary file is left; error (when given) gets a one-line reason
/// (e.g. "Permission denied", "No space left on device"). A path that is a symlink writes through to its
/// target. Only a plain file is ever replaced: a folder, device or pipe at path answers false. The new file
/// is flushed to the disk before it takes the old one's place.
bool writeFileAtomically(const QString &path, const QByteArray &data, QString *error = nullptr);

/// How far writeFileAtomicallyUnflushed's guarantee goes: readers still see the old contents or the
/// new ones, never a part, and failures leave the old file, as with writeFileAtomically. Nothing is
/// flushed to the disk, so after a power loss the file may be the old one, or empty where there was
/// none. For output that can be made again (thumbnails of a batch), where two flushes a file would
/// cost more than making it.
bool writeFileAtomicallyUnflushed(const QString &path, const QByteArray &data, QString *error = nullptr);

} // namespace orvel
