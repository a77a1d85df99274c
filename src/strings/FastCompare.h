// Allocation-free comparison and search of UTF-16 code-unit arrays through the conversion tables.
#pragma once

#include "strings/CharacterTables.h"
#include "strings/NotFound.h"

#include <QString>
#include <QStringView>

namespace orvel {

// Raw arrays. "Chars" are 8-bit bytes meant for ASCII literals: each byte is widened as a signed
// 8-bit value, so bytes 0x80 and above become U+FF80 ... U+FFFF.
// Compare results: at the first differing position i < min(aLen, bLen) the difference of the two
// (converted) units, else aLen - bLen.

qsizetype fastCompareUnichars(const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen);
qsizetype fastCompareUnicharsWithChars(const char16_t *a, qsizetype aLen, const char *b, qsizetype bLen);
/// Difference of the first differing signed bytes, else the length difference.
qsizetype fastCompareChars(const char *a, qsizetype aLen, const char *b, qsizetype bLen);
/// Compares table[a[i]] with table[b[i]]; a null table compares the raw units.
qsizetype fastCompareUnicharsUsingConversionTable(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, ConversionTable table);
/// Compares through upperCharsTable.
qsizetype fastCaseInsensitiveCompareUnichars(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen);
qsizetype fastCaseInsensitiveCompareUnicharsWithChars(
    const char16_t *a, qsizetype aLen, const char *b, qsizetype bLen);
qsizetype fastCaseInsensitiveCompareChars(const char *a, qsizetype aLen, const char *b, qsizetype bLen);

/// The first unit of the leftmost occurrence of needle in hay, or null (also for an empty needle
/// or one longer than hay).
const char16_t *fastContainsUnichars(
    const char16_t *hay, qsizetype hayLen, const char16_t *needle, qsizetype needleLen);
/// The same through upperCharsTable; the needle is mapped once.
const char16_t *fastCaseInsensitiveContainsUnichars(
    const char16_t *hay, qsizetype hayLen, const char16_t *needle, qsizetype needleLen);
const char16_t *fastUnicharsContainChars(
    const char16_t *hay, qsizetype hayLen, const char *needle, qsizetype needleLen);
const char16_t *fastCaseInsensitiveUnicharsContainChars(
    const char16_t *hay, qsizetype hayLen, const char *needle, qsizetype needleLen);

/// The byte needle's leftmost occurrence in the units, or null.
const char16_t *positionOfCharacters(
    const char *needle, qsizetype needleLen, const char16_t *hay, qsizetype hayLen, bool caseSensitive);
qsizetype compareCharacters(const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen);
qsizetype compareCharacters(const char16_t *a, qsizetype aLen, const char *b, qsizetype bLen);
qsizetype caseInsensitiveCompareCharacters(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen);
qsizetype caseInsensitiveCompareCharacters(const char16_t *a, qsizetype aLen, const char *b, qsizetype bLen);

// Comparisons that look only at the members of a rep: every other unit is skipped on both sides,
// so 'a-b-c' equals 'abc' under the alpha-numeric rep. No-case forms compare through upperCharsTable.
// The prefix forms are true when the second array's members are a prefix of the first's.

bool equalCharsOfCharacterSetRep(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep);
bool equalCharsNoCaseOfCharacterSetRep(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep);
bool hasPrefixCharsOfCharacterSetRep(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep);
bool hasPrefixCharsNoCaseOfCharacterSetRep(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep);
bool equalStringsUsingCharacterSetRep(QStringView a, QStringView b, CharacterSetRep rep);
bool equalStringsNoCaseUsingCharacterSetRep(QStringView a, QStringView b, CharacterSetRep rep);
bool hasPrefixUsingCharacterSetRep(QStringView a, QStringView b, CharacterSetRep rep);
bool hasPrefixNoCaseUsingCharacterSetRep(QStringView a, QStringView b, CharacterSetRep rep);

/// Equal lengths and equal units through table (a null table compares exactly); null strings
/// count as empty.
bool equalStringsUsingConversionTable(QStringView a, QStringView b, ConversionTable table);

// Equality and prefix tests on strings. A null (missing) argument gives false.

/// Same length and equal through upperCharsTable; two empty strings are equal.
bool isEqualToStringNoCase(QStringView s, const QString &other);
/// Unit by unit toUpperAscii(a) == toUpperAscii(b): 'Müller' equals 'MULLER'.
bool isAsciiEqualToStringNoCase(QStringView s, const QString &other);
/// Unit by unit through upperUmlautsCharsTable.
bool isNonUmlautedEqualToStringNoCase(QStringView s, const QString &other);
/// The receiver's units in [location, location + length) compared with other; false when the range
/// does not lie in the receiver or other's length differs.
bool rangeIsEqualTo(QStringView s, qsizetype location, qsizetype length, const QString &other);
bool rangeIsEqualToNoCase(QStringView s, qsizetype location, qsizetype length, const QString &other);
bool rangeIsAsciiEqualToNoCase(QStringView s, qsizetype location, qsizetype length, const QString &other);
bool rangeIsNonUmlautedEqualToNoCase(
    QStringView s, qsizetype location, qsizetype length, const QString &other);
/// False for a missing or empty prefix or one longer than the receiver.
bool hasPrefixNoCase(QStringView s, const QString &prefix);
bool hasSuffixNoCase(QStringView s, const QString &suffix);

/// The index of the first match of ch at or after startAt, or NotFound (also for an empty string or
/// startAt beyond the end). A ch without case is compared exactly. Case-insensitively, upper[unit]
/// == upper[ch] decides. Case-sensitively a ch with case looks for exactly upper[ch]: a search for
/// 'a' finds 'A' and not 'a' — a kept behaviour; use indexOf/fastContainsUnichars for a literal match.
qsizetype findCharacter(QStringView s, char16_t ch, qsizetype startAt = 0, bool caseInsensitive = false);
/// findCharacter(s, ch, startAt, caseInsensitive) != NotFound.
bool containsCharacter(QStringView s, char16_t ch, qsizetype startAt = 0, bool caseInsensitive = false);

} // namespace orvel
