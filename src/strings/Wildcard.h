// Wildcard matching in two dialects, the pattern classifier and the pattern length bounds.
#pragma once

#include "strings/CharacterTables.h"
#include "strings/NotFound.h"

#include <QString>
#include <QStringList>
#include <QStringView>

namespace orvel {

// Plain dialect: "*" matches any run of units (also none), "?" exactly one, all else itself.
// Unix dialect: also a class "[...]" matching one unit: "^" first negates, members are units or
// ranges "x-y" (unsigned units, inclusive), "|" is a filler, the class ends at the first "]".
// The entry functions answer false when text or pattern is empty (an empty text matches nothing,
// not even "*"); a pattern of exactly "*" matches any other text.

bool isLikeWildcard(QStringView text, QStringView pattern);
bool isCaseInsensitiveLikeWildcard(QStringView text, QStringView pattern);
bool isLikeUnixWildcard(QStringView text, QStringView pattern);
bool isCaseInsensitiveLikeUnixWildcard(QStringView text, QStringView pattern);

// Matchers on [begin, end) unit arrays. The table forms map every text unit through table at
// comparison time; the pattern must already be mapped (prepareWildcardUsingUnicharTable).

bool stringMatchesWildcard(
    const char16_t *text, const char16_t *textEnd, const char16_t *pattern, const char16_t *patternEnd);
bool stringMatchesWildcardUsingUnicharTable(const char16_t *text, const char16_t *textEnd,
    const char16_t *pattern, const char16_t *patternEnd, ConversionTable table);
bool stringMatchesUnixWildcard(
    const char16_t *text, const char16_t *textEnd, const char16_t *pattern, const char16_t *patternEnd);
bool stringMatchesUnixWildcardUsingUnicharTable(const char16_t *text, const char16_t *textEnd,
    const char16_t *pattern, const char16_t *patternEnd, ConversionTable table);
/// Maps every pattern unit through table in place (a null table leaves it).
void prepareWildcardUsingUnicharTable(char16_t *begin, char16_t *end, ConversionTable table);

/// The pattern shapes that wildcardType() tells apart, so that callers can pick a cheaper comparison.
enum WildcardType : int {
    WildcardLiteral = 0, ///< no "*", no "?", no class
    WildcardQuestionMarks = 1, ///< "?" marks only
    WildcardPrefix = 2, ///< 'abc*'
    WildcardSuffix = 3, ///< '*abc'
    WildcardContains = 4, ///< '*abc*'
    WildcardGeneral = 5, ///< any other pattern with "*" and without classes
    WildcardClassesGeneral = 6, ///< classes with several "*" or one in the middle
    WildcardClassesPrefix = 7, ///< classes and one "*" at the end
    WildcardClassesSuffix = 8, ///< classes and one "*" at the start
    WildcardClasses = 9, ///< classes without "*"
    WildcardInvalid = 10, ///< invalid, or no literal unit at all
};

/// Compacts the pattern in place (runs of "*" become one, "|" leaves classes) and answers its type.
/// out[0], out[1] receive the start and length of the literal part (types 2, 3, 4, 7, 8), else
/// (0, compacted length). A "*" pattern with fewer literal units than minimumLiteralUnits is invalid.
int optimizeWildcard(char16_t *begin, char16_t *end, qsizetype out[2], qsizetype minimumLiteralUnits);
/// optimizeWildcard on a copy with a minimum of one literal unit; 0 for an empty string.
int wildcardType(QStringView pattern);
/// The least text length a Unix pattern can match: "*" counts 0, a class 1, every other unit 1.
qsizetype minWildcardLen(const char16_t *begin, const char16_t *end);
/// NotFound as soon as there is a "*", else the same count as minWildcardLen.
qsizetype maxWildcardLen(const char16_t *begin, const char16_t *end);
qsizetype wildcardLength(QStringView pattern);

/// Comparison options: bit 1 ignore case, bit 2 ignore diacritics.
enum WildcardComparisonOption : int { WildcardIgnoreCase = 1, WildcardIgnoreDiacritics = 2 };
/// 0 no table, 1 upperCharsTable, 2 umlautsCharsTable, 3 upperUmlautsCharsTable.
ConversionTable unicharTableForWildcardComparison(int options);
/// True when mapping with b already implies mapping with a.
bool isUnicharTablePartOfConversionTable(ConversionTable a, ConversionTable b);

/// The threshold for fuzzy matchers (default 0.75); nothing in the toolkit consults it.
double minWildcardFuzzyAnalogy();
void setMinWildcardFuzzyAnalogy(double value);

/// The default word separators without "*", "?", "[" and "]", so query words keep their wildcards.
CharacterSetRep defaultWildcardSeparators();
[[nodiscard]] QStringList wordsUsingWildcardSeparation(const QString &s, bool *hyphenated = nullptr);
qsizetype numberOfWordsUsingWildcardSeparation(QStringView s);

void initWildcardSeparators();
/// Builds upperUmlautsCharsTable (and with it the upper and umlauts tables).
void initWildcardTables();
/// initSeparators, initWildcardSeparators and initWildcardTables: all table building up front.
void initSeparatorsAndTables();

} // namespace orvel
