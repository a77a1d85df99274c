// Whole-string transformations and predicates over the character-set reps and conversion tables.
#pragma once

#include "strings/CharacterTables.h"

#include <QString>
#include <QStringView>

namespace orvel {

// Transformations answer the receiver itself (the same shared text) when nothing changes.

/// Replaces every unit c by table[c]; a null table or an empty string answers the receiver.
[[nodiscard]] QString stringByApplyingConversionTable(const QString &s, ConversionTable table);
/// Diacritics removed (umlautsCharsTable).
[[nodiscard]] QString nonUmlautedString(const QString &s);
[[nodiscard]] QString lowercaseNonUmlautedString(const QString &s);
[[nodiscard]] QString uppercaseNonUmlautedString(const QString &s);
/// Composed to NFC, then every unit through toAscii: a unit without an ASCII base becomes a space.
[[nodiscard]] QString asciiString(const QString &s);
[[nodiscard]] QString lowercaseAsciiString(const QString &s);
[[nodiscard]] QString uppercaseAsciiString(const QString &s);
/// A copy that owns its own buffer; an empty string comes back as it is.
[[nodiscard]] QString optimizedString(const QString &s);
/// Every member of rep dropped; a null rep or an empty string answers the receiver.
[[nodiscard]] QString stringByRemovingCharactersInRep(const QString &s, CharacterSetRep rep);

/// Every unit below 128 (true for the empty string).
bool isAsciiString(QStringView s);
/// Some unit differs from its umlauts entry (false for the empty string).
bool isUmlautedString(QStringView s);
/// Every unit equals its lower entry (true for the empty string).
bool isLowerCaseString(QStringView s);
/// Every unit equals its upper entry (true for the empty string).
bool isUpperCaseString(QStringView s);

/// Some unit is a member of rep; false for a null rep or no units.
bool characterPartOfSet(const char16_t *units, qsizetype length, CharacterSetRep rep);
/// The number of units that are members of rep.
qsizetype countCharactersPartOfSet(const char16_t *units, qsizetype length, CharacterSetRep rep);
/// Every unit is a member of rep; resultIfEmpty for no units. A null rep gives false.
bool charactersPartOfSet(const char16_t *units, qsizetype length, CharacterSetRep rep, bool resultIfEmpty);

bool containsCharacterPartOfCharacterSetRep(QStringView s, CharacterSetRep rep);
bool containsAlphaNumCharacter(QStringView s);
bool containsAlphaCharacter(QStringView s);
bool containsWhiteCharacter(QStringView s);
bool containsDigitCharacter(QStringView s);
qsizetype countCharactersPartOfCharacterSetRep(QStringView s, CharacterSetRep rep);
qsizetype countAlphaNumCharacters(QStringView s);
qsizetype countAlphaCharacters(QStringView s);
qsizetype countWhiteCharacters(QStringView s);
qsizetype countDigitCharacters(QStringView s);

// On purpose the empty string is a space and a white string, but not a digit, alpha or alphanumeric one.
bool isSpaceString(QStringView s);
bool isWhiteString(QStringView s);
bool isDigitString(QStringView s);
bool isAlphaString(QStringView s);
bool isAlphaNumString(QStringView s);
/// Every unit is in the white rep (true for length 0).
bool onlyWhiteCharacters(const char16_t *units, qsizetype length);

/// A word whose capitalised parts run together, as 'McDonald': at least 3 units, an upper-case
/// unit, one or more lower-case ones, an upper-case unit that is not the last, and a lower-case unit
/// right after it.
bool isMashedWordCharacters(const char16_t *units, qsizetype length);
bool isMashedWord(QStringView s);

/// Bits of containsCharacters(): every requested character must occur.
enum ContainsCharactersMask : unsigned {
    ContainsDot = 1,
    ContainsAt = 2,
    ContainsSlash = 4,
    ContainsQuestionMark = 8,
    ContainsSemicolon = 16,
    ContainsUnderscore = 32,
    ContainsAsterisk = 64,
    ContainsDollar = 128,
};
/// True when every character of mask occurs in s; a zero mask or an empty string gives false.
bool containsCharacters(QStringView s, unsigned mask);

/// True when the integer value is non-zero, or for a case-insensitive "true", "yes" or "on".
bool boolValue(QStringView s);
/// The leading integer of s (after white space, an optional sign), 0 when there is none; saturates.
qint64 integerValue(QStringView s);

} // namespace orvel
