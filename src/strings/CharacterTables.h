// Character-set reps (membership bitmaps over UTF-16 code units) and the five conversion tables.
#pragma once

#include <QtGlobal>

namespace orvel {

/// A character-set rep: 8,192 bytes, one bit per UTF-16 code unit; unit c is a member when bit
/// (c & 7) of byte (c >> 3) is set. Surrogate halves are classified as single units.
using CharacterSetRep = const unsigned char *;
/// A conversion table: 65,536 code units indexed by a code unit, giving its replacement.
using ConversionTable = const char16_t *;

inline constexpr qsizetype CharacterSetRepSize = 8192;
inline constexpr qsizetype ConversionTableSize = 65536;

/// True when unit c is a member of rep (rep must not be null).
inline bool isCharacterPartOfSet(CharacterSetRep rep, char16_t c) noexcept
{
    return (rep[c >> 3] >> (c & 7)) & 1u;
}

// Each rep and table is built once, thread-safely, on first request, and lives until the process
// ends; every call answers the same pointer.

/// No members.
CharacterSetRep emptyCharacterSetRep();
/// White space without line breaks (general category Zs and U+0009), plus U+0000 and U+0009.
CharacterSetRep spaceCharacterSetRep();
/// White space and line breaks, plus the units rich text leaves behind (U+0003, U+FFFC, U+FEFF ...).
CharacterSetRep whiteCharacterSetRep();
/// Letters: general categories L and M.
CharacterSetRep alphaCharacterSetRep();
/// Letters and numbers: general categories L, M and N.
CharacterSetRep alphaNumCharacterSetRep();
/// Decimal digits: general category Nd.
CharacterSetRep digitCharacterSetRep();
/// Lower-case letters: general category Ll.
CharacterSetRep lowerCharacterSetRep();
/// Upper-case letters: general category Lu (title-case letters, Lt, are not members).
CharacterSetRep upperCharacterSetRep();

/// The lowest code unit of the alpha rep (0 when it has none).
char16_t firstAlphaCharacter();
/// The highest code unit of the alpha rep (0 when it has none).
char16_t lastAlphaCharacter();

/// Upper-case letters to lower case (one-unit mappings only).
ConversionTable lowerCharsTable();
/// Lower-case letters to upper case (one-unit mappings only).
ConversionTable upperCharsTable();
/// Letters with their diacritics removed (one-unit results only).
ConversionTable umlautsCharsTable();
/// lower[umlauts[c]].
ConversionTable lowerUmlautsCharsTable();
/// upper[umlauts[c]].
ConversionTable upperUmlautsCharsTable();

char16_t toLower(char16_t c);
char16_t toUpper(char16_t c);
/// umlauts[c]; despite the name the result may still be non-ASCII.
char16_t umlautsToAscii(char16_t c);
char16_t umlautsToLowerAscii(char16_t c);
char16_t umlautsToUpperAscii(char16_t c);
/// umlauts[c] when that is ASCII, else a space.
char16_t toAscii(char16_t c);
/// The ASCII lower case of umlauts[c], or a space when umlauts[c] is not ASCII.
char16_t toLowerAscii(char16_t c);
/// The ASCII upper case of umlauts[c], or a space when umlauts[c] is not ASCII.
char16_t toUpperAscii(char16_t c);

/// Converts UTF-8 bytes to UTF-16 units into out (capacity in units); answers the units written,
/// 0 when the input is invalid UTF-8 or does not fit.
qsizetype convertUTF8ToUnicode(const char *bytes, qsizetype length, char16_t *out, qsizetype capacity);
/// Converts UTF-16 units to UTF-8 into out (capacity in bytes); answers the bytes written, 0 when
/// the input is invalid or does not fit.
qsizetype convertUnicodeToUTF8(const char16_t *units, qsizetype length, char *out, qsizetype capacity);
/// Converts bytes in the named encoding ("ISO-8859-1", "windows-1252", "UTF-8" ...) to UTF-16 units;
/// answers the units written, 0 when the encoding is unknown, the input invalid or too long.
qsizetype convertEncodingToUnicode(
    const char *encoding, const char *bytes, qsizetype length, char16_t *out, qsizetype capacity);

} // namespace orvel
