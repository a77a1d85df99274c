// HFS type and creator codes and Finder flags, kept in the 32-byte Finder info of the extended
// attribute "user.com.apple.FinderInfo" (type code in bytes 0-3, creator in bytes 4-7, flags in
// bytes 8-9, all big-endian), or in the file's AppleDouble companion "._NAME" where the file system
// takes no such attribute.
#pragma once

#include <QString>
#include <QStringView>
#include <QtGlobal>

#include <optional>

namespace orvel {

/// A four-character code ('JPEG') in an unsigned 32-bit integer, first character in the high byte.
using FileTypeCode = quint32;

/// The name of the extended attribute that holds a file's Finder info.
inline constexpr char FinderInfoAttributeName[] = "user.com.apple.FinderInfo";

/// 'JPEG' -> "'JPEG'": the four characters (one byte each, Latin-1) in single quotes; 0 gives "".
[[nodiscard]] QString fileTypeCodeToString(FileTypeCode code);

/// "'JPEG'" or "JPEG" -> the code; anything else (other lengths, characters above U+00FF) gives 0.
FileTypeCode fileTypeCodeFromString(QStringView s);

/// The Finder flags of a file (bytes 8-9 of its Finder info).
namespace FinderFlag {
enum : quint16 {
    IsOnDesk = 0x0001,
    Color = 0x000E, ///< the label, three bits
    IsShared = 0x0040,
    HasNoINITs = 0x0080,
    HasBeenInited = 0x0100,
    HasCustomIcon = 0x0400,
    IsStationery = 0x0800,
    NameLocked = 0x1000,
    HasBundle = 0x2000,
    IsInvisible = 0x4000,
    IsAlias = 0x8000,
};
} // namespace FinderFlag

/// The 32 bytes of the file's Finder info: the attribute when the file has it, else the
/// AppleDouble companion's entry, else zeros; nullopt when the file cannot be read.
[[nodiscard]] std::optional<QByteArray> finderInfoOfFile(const QString &path);

/// Replaces the 32 bytes of Finder info (info is cut or padded with zeros to 32). It goes to the
/// attribute, or to the AppleDouble companion when the file system refuses the attribute; false
/// when neither can be written.
bool setFinderInfoOfFile(const QString &path, const QByteArray &info);

/// The type code of the file as a quoted string ("'JPEG'"); "" when the file has no Finder info
/// or a zero type.
[[nodiscard]] QString HFSTypeOfFile(const QString &path);

/// The type code of the file; 0 when it has none or the attribute cannot be read.
FileTypeCode HFSTypeCodeOfFile(const QString &path);

/// The creator code of the file; 0 when it has none or the attribute cannot be read.
FileTypeCode HFSCreatorCodeOfFile(const QString &path);

/// Sets the type code, keeping the other 28 bytes of the Finder info; creates the attribute (all
/// other bytes zero) when the file has none, or writes the AppleDouble companion when the file
/// system takes no attribute. Answers false for a missing file or when neither can be written.
bool setHFSTypeCodeOfFile(const QString &path, FileTypeCode type);

/// Sets the creator code, as setHFSTypeCodeOfFile() sets the type.
bool setHFSCreatorCodeOfFile(const QString &path, FileTypeCode creator);

/// The Finder flags of the file (FinderFlag values); 0 when it has none or cannot be read.
quint16 finderFlagsOfFile(const QString &path);

/// Sets the Finder flags, keeping the rest of the Finder info, as setHFSTypeCodeOfFile() does.
bool setFinderFlagsOfFile(const QString &path, quint16 flags);

/// Whether the Finder shows the file with a custom icon (its 'icns' resource -16455).
bool hasCustomIconOfFile(const QString &path);

/// Sets or clears the custom-icon flag alone.
bool setHasCustomIconOfFile(const QString &path, bool flag);

} // namespace orvel
