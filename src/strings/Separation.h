// Splitting text into words, components and lines by separator reps, and shortening it with "...".
#pragma once

#include "strings/CharacterTables.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace orvel {

/// A range of units found by the raw-array splitters.
struct SeparationRange
{
    qint64 location = 0;
    qint64 length = 0;
    friend bool operator==(const SeparationRange &, const SeparationRange &) = default;
};

/// Set in the length of a separator run's record (separator-emitting mode), to tell it from a word.
inline constexpr qint64 SeparatorRangeFlag = 0x80000000;

/// Whitespace and newlines, 73 listed punctuation units, surrogates U+D800-U+DFFE, private use
/// U+F400-U+F8FE, and the punctuation, illegal, control and symbol classes.
CharacterSetRep defaultWordSeparators();
/// . , : ; ! ? and the line and page breaks.
CharacterSetRep defaultComponentSeparators();
/// The component separators without "," and ";".
CharacterSetRep defaultSentenceSeparators();
/// CR, LF, FF, U+2029, U+2028, U+0003, U+FFFC.
CharacterSetRep defaultLineSeparators();
/// Builds all four default separator sets now.
void initSeparators();

// The break rule: unit i is a break when it is in the separator set, except that "," and "." are
// not breaks between two ASCII digits, so '3.14', '1,000' and '2.0.1' stay whole.

/// Scans the words of units: maximal runs of non-break units of at least minLen units (0 means 1).
/// Null separators mean the default word separators. With wildcard, a "[" that is not a break makes
/// the scan jump to the next "]" so a bracket class never splits a word. With withSeparators every
/// run of breaks follows its word as a record flagged with SeparatorRangeFlag. Appends to ranges
/// when given; answers the number of records (words and separator runs).
qsizetype wordsOfCharacters(const char16_t *units, qsizetype length, CharacterSetRep separators,
    bool withSeparators, int minLen, bool wildcard, QList<SeparationRange> *ranges);
/// The number of words under the default word separators, minimum length 1.
qsizetype numberOfWordsOfCharacters(const char16_t *units, qsizetype length);

/// The words of s (with the separator runs as their own strings when withSeparators). When there is
/// no break at all and s is long enough the list holds s itself. *hyphenated (optional) is set when
/// at least two words were found and either every word ended at a "-" ('well-known') or every word
/// ended at a "." and each is a single letter ('U.S.A').
[[nodiscard]] QStringList wordsUsingSeparators(const QString &s, CharacterSetRep separators,
    bool withSeparators, int minLen, bool wildcard, bool *hyphenated);
[[nodiscard]] QStringList wordsUsingSeparators(
    const QString &s, CharacterSetRep separators, bool withSeparators = false, int minLen = 1);
[[nodiscard]] QStringList wordsUsingDefaultSeparation(const QString &s, bool *hyphenated = nullptr);
qsizetype numberOfWordsUsingSeparators(QStringView s, CharacterSetRep separators, int minLen, bool wildcard);
qsizetype numberOfWordsUsingDefaultSeparation(QStringView s, int minLen = 1);
/// Words in [location, location + length) of s; 0 for a range outside s.
qsizetype numberOfWordsInRange(
    QStringView s, qsizetype location, qsizetype length, CharacterSetRep separators, int minLen);

/// Components: each runs through the break that ends it and every break right after (a sentence
/// keeps its closing punctuation); the text after the last break is the last one. Null separators
/// mean the default component separators. Appends to ranges when given; answers the count.
qsizetype componentsOfCharacters(
    const char16_t *units, qsizetype length, CharacterSetRep separators, QList<SeparationRange> *ranges);
qsizetype numberOfComponentsOfCharacters(const char16_t *units, qsizetype length, CharacterSetRep separators);
/// The component strings without their break runs (empty ones left out), or with withSeparators
/// each break run following its component as its own string.
[[nodiscard]] QStringList componentsUsingSeparators(
    const QString &s, CharacterSetRep separators, bool withSeparators = false);
[[nodiscard]] QStringList componentsUsingDefaultSeparation(const QString &s);
qsizetype numberOfComponentsUsingSeparators(QStringView s, CharacterSetRep separators);
qsizetype numberOfComponentsInRange(
    QStringView s, qsizetype location, qsizetype length, CharacterSetRep separators);

/// Counts the paragraphs (the lines, between default line separators, that are not blank) and,
/// through *words, the words (default separators, minLen) of [location, location + length).
qsizetype numberOfParagraphs(
    QStringView s, qsizetype *words, qsizetype location, qsizetype length, int minLen);

/// Cut at the last word boundary before position k, with "..." appended; the receiver when k is 0,
/// k is not below the length, or there is no earlier boundary.
[[nodiscard]] QString stringByEllipsizingAfterNCharacters(const QString &s, qsizetype k);
/// Cut after the k-th word, with "..." appended; the receiver when there are not more than k words.
[[nodiscard]] QString stringByEllipsizingAfterNWords(const QString &s, qsizetype k);
/// At most `lines` non-empty lines, each shortened to k characters, joined by "\n".
[[nodiscard]] QString stringByEllipsizingNLines(const QString &s, qsizetype lines, qsizetype k);

} // namespace orvel
