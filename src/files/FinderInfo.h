// HFS type and creator codes, kept in the 32-byte Finder info of the extended attribute
// "user.com.apple.FinderInfo" (type code in bytes 0-3, creator in bytes 4-7, both big-endian).
#pragma once

#include <QString>
#include <QStringView>
#include <QtGlobal>

namespace orvel {

/// A four-character code ('JPEG') in an unsigned 32-bit integer, first character in the high byte.
using FileTypeCode = quint32;

/// The name of the extended attribute that holds a file's Finder info.
inline constexpr char FinderInfoAttributeName[] = "user.com.apple.FinderInfo";

/// 'JPEG' -> "'JPEG'": the four characters (one byte each, Latin-1) in single quotes; 0 gives "".
[[nodiscard]] QString fileTypeCodeToString(FileTypeCode code);

/// "'JPEG'" or "JPEG" -> the code; anything else (other lengths, characters above U+00FF) gives 0.
FileTypeCode fileTypeCodeFromString(QStringView s);

/// The type code of the file as a quoted string ("'JPEG'"); "" when the file has no Finder info
/// or a zero type.
[[nodiscard]] QString HFSTypeOfFile(const QString &path);

/// The type code of the file; 0 when it has none or the attribute cannot be read.
FileTypeCode HFSTypeCodeOfFile(const QString &path);

/// The creator code of the file; 0 when it has none or the attribute cannot be read.
FileTypeCode HFSCreatorCodeOfFile(const QString &path);

/// Sets the type code, keeping the other 28 bytes of the Finder info; creates the attribute (all
/// other bytes zero) when the file has none. Answers false when the attribute cannot be written
/// (missing file, a file system without user extended attributes).
bool setHFSTypeCodeOfFile(const QString &path, FileTypeCode type);

/// Sets the creator code, as setHFSTypeCodeOfFile() sets the type.
bool setHFSCreatorCodeOfFile(const QString &path, FileTypeCode creator);

} // namespace orvel
