// Further string extensions: configuration lines, rotation, bracket counts, trimming, counting,
// replacing and line access, built on the character-set reps and tables.
#pragma once

#include "strings/CharacterTables.h"
#include "strings/NotFound.h"

#include <QString>
#include <QStringList>
#include <QStringView>

namespace orvel {

// As everywhere in the toolkit, a transformation that finds nothing to change answers the
// receiver itself.

/// The meaningful lines of configuration text: every line break ends a line (so CR LF gives an
/// empty line, dropped); leading white space is skipped, "#" lines are comments, trailing white
/// space is trimmed, and only lines of at least two units are kept.
[[nodiscard]] QStringList configLines(QStringView s);
/// The value of `key value` on one line: the key matches case-insensitively and is followed by a
/// white unit; the value is the trimmed rest. Null when any of that fails or the value is empty
/// ('Width=120' has no value for 'width').
[[nodiscard]] QString configValueForKey(QStringView line, QStringView key);

/// Every ASCII letter moved n places forward within its case, wrapping; the receiver for an empty
/// string or n a multiple of 26.
[[nodiscard]] QString stringByRotating(const QString &s, int n);
[[nodiscard]] QString stringByRotating13(const QString &s);

/// Counts "<" and ">" (through the optional pointers); true when both counts are equal and non-zero.
bool countLT(QStringView s, qsizetype *lt, qsizetype *gt);

/// Leading and trailing runs of '"' and '\'' removed.
[[nodiscard]] QString stringByTrimmingQuotes(const QString &s);
/// Units of the white rep removed at both ends.
[[nodiscard]] QString stringByTrimmingWhiteSpaces(const QString &s);
/// Units of the space rep (blanks without line breaks) removed at both ends.
[[nodiscard]] QString stringByTrimmingSpaces(const QString &s);
/// Members of rep removed at both ends; a null rep answers the receiver.
[[nodiscard]] QString stringByTrimmingCharactersInRep(const QString &s, CharacterSetRep rep);
/// Every decimal digit (digit rep) removed.
[[nodiscard]] QString stringByRemovingDigits(const QString &s);
/// Every occurrence of `from` replaced by `to`.
[[nodiscard]] QString stringByReplacingCharacter(const QString &s, char16_t from, char16_t to);
/// Every occurrence of `from` (non-empty) replaced by `to`, left to right, without overlaps.
[[nodiscard]] QString stringByReplacingString(const QString &s, QStringView from, QStringView to);

/// How often ch occurs.
qsizetype countCharacter(QStringView s, char16_t ch);
/// The index of the first unit that is any of chars, or NotFound.
qsizetype findOneOf(QStringView s, QStringView chars);
/// The first / last unit, 0 for an empty string.
char16_t firstCharacter(QStringView s);
char16_t lastCharacter(QStringView s);

/// The lines, split at the default line separators (CR LF counts as one break); an empty string
/// has none, a trailing break adds no empty line.
[[nodiscard]] QStringList lines(const QString &s);
qsizetype numberOfLines(QStringView s);
/// Line i (as lines() counts them), or a null string when there is none.
[[nodiscard]] QString lineAtIndex(const QString &s, qsizetype i);
/// Word i under the default word separators, or a null string when there is none.
[[nodiscard]] QString wordAtIndex(const QString &s, qsizetype i);

} // namespace orvel
