// Standard Base64 (alphabet A-Z a-z 0-9 + /, "=" padding) for text and bytes.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringConverter>

namespace orvel {

/// The Base64 form of the text's UTF-8 bytes, padded, on one line.
[[nodiscard]] QString encodebase64(const QString &s);
/// The Base64 form of the bytes, padded, on one line.
[[nodiscard]] QString encodedBase64Data(const QByteArray &data);

/// The bytes that Base64 text stands for. White space (the line breaks of mail bodies) is skipped;
/// the final padding may be left out. Any other character outside the alphabet, or padding inside the
/// text, gives a null array.
[[nodiscard]] QByteArray decodedBase64Data(const QString &s);
/// The decoded bytes read as UTF-8 text; null when the Base64 or the UTF-8 is invalid.
[[nodiscard]] QString decodebase64(const QString &s);
/// The decoded bytes read in the given encoding; null when the Base64 or the bytes are invalid.
[[nodiscard]] QString decodebase64UsingEncoding(const QString &s, QStringConverter::Encoding encoding);

} // namespace orvel
