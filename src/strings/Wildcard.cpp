// Wildcard matching (plain and Unix dialects), pattern compaction and classification.
#include "strings/Wildcard.h"
#include "strings/CharacterClasses_p.h"
#include "strings/Separation.h"

#include <QVarLengthArray>
#include <atomic>

namespace orvel {

namespace {

struct Raw
{
    char16_t operator()(char16_t c) const { return c; }
};
struct Through
{
    ConversionTable table;
    char16_t operator()(char16_t c) const { return table[c]; }
};

// Matches one class against the (mapped) text unit t; p points at "[". Answers the pattern position
// after the class, or null when the class does not accept t.
const char16_t *matchClass(const char16_t *p, const char16_t *pe, char16_t t)
{
    if (p + 1 >= pe)
        return nullptr; // "[" is the pattern's last unit
    ++p;
    bool negated = false;
    if (*p == u'^') {
        negated = true;
        ++p;
    }
    bool matched = false;
    while (p < pe && *p != u']') {
        if (*p == u'-' && p + 1 < pe) {
            // The range's lower bound is the unit just before "-" (which may be "[" or "^").
            const char16_t lower = p[-1];
            const char16_t upper = p[1];
            matched = lower <= t && t <= upper;
            p += 2;
        } else if (*p == u'|') {
            ++p;
        } else {
            matched = *p == t;
            ++p;
        }
        if (matched)
            break;
    }
    if (matched == negated)
        return nullptr;
    if (matched)
        while (p < pe && *p != u']')
            ++p;
    // A class the pattern ends in before its "]" simply ends there.
    return p < pe ? p + 1 : p;
}

// Both dialects. Every element other than "*" consumes exactly one text unit, so only the most
// recent "*" ever needs to be retried one unit further on: the earliest match of each stretch
// between stars leaves the most text for the rest. This answers what trying every split would,
// in O(text x pattern) time and without recursion, so hostile patterns cannot exhaust the stack.
template <bool Unix, typename Map>
bool matches(const char16_t *t, const char16_t *te, const char16_t *p, const char16_t *pe, Map map)
{
    const char16_t *starP = nullptr;
    const char16_t *starT = nullptr;
    while (t < te) {
        if (p < pe && *p == u'*') {
            while (p < pe && *p == u'*')
                ++p;
            if (p == pe)
                return true;
            starP = p;
            starT = t;
            continue;
        }
        if (p < pe) {
            const char16_t unit = map(*t);
            const char16_t *next = nullptr;
            if (*p == u'?')
                next = p + 1;
            else if (Unix && *p == u'[')
                next = matchClass(p, pe, unit);
            else if (*p == unit)
                next = p + 1;
            if (next) {
                p = next;
                ++t;
                continue;
            }
        }
        if (!starP)
            return false;
        p = starP;
        t = ++starT;
    }
    while (p < pe && *p == u'*')
        ++p;
    return p == pe;
}

using Scratch = QVarLengthArray<char16_t, 256>;

bool entry(QStringView text, QStringView pattern, bool unixDialect, bool caseInsensitive)
{
    if (text.isEmpty() || pattern.isEmpty())
        return false;
    if (pattern.size() == 1 && pattern[0] == u'*')
        return true;
    const char16_t *t = text.utf16();
    const char16_t *te = t + text.size();
    if (!caseInsensitive) {
        const char16_t *p = pattern.utf16();
        return unixDialect ? stringMatchesUnixWildcard(t, te, p, p + pattern.size())
                           : stringMatchesWildcard(t, te, p, p + pattern.size());
    }
    lowerCharsTable();
    const ConversionTable upper = upperCharsTable();
    // The pattern is mapped once; text units are mapped as they are compared.
    Scratch mapped(pattern.size());
    std::copy(pattern.utf16(), pattern.utf16() + pattern.size(), mapped.data());
    prepareWildcardUsingUnicharTable(mapped.data(), mapped.data() + mapped.size(), upper);
    const char16_t *p = mapped.constData();
    const char16_t *pe = p + mapped.size();
    return unixDialect ? stringMatchesUnixWildcardUsingUnicharTable(t, te, p, pe, upper)
                       : stringMatchesWildcardUsingUnicharTable(t, te, p, pe, upper);
}

std::atomic<double> fuzzyAnalogy { 0.75 };

} // namespace

bool isLikeWildcard(QStringView text, QStringView pattern) { return entry(text, pattern, false, false); }
bool isCaseInsensitiveLikeWildcard(QStringView text, QStringView pattern)
{
    return entry(text, pattern, false, true);
}
bool isLikeUnixWildcard(QStringView text, QStringView pattern) { return entry(text, pattern, true, false); }
bool isCaseInsensitiveLikeUnixWildcard(QStringView text, QStringView pattern)
{
    return entry(text, pattern, true, true);
}

bool stringMatchesWildcard(
    const char16_t *text, const char16_t *textEnd, const char16_t *pattern, const char16_t *patternEnd)
{
    return matches<false>(text, textEnd, pattern, patternEnd, Raw {});
}

bool stringMatchesWildcardUsingUnicharTable(const char16_t *text, const char16_t *textEnd,
    const char16_t *pattern, const char16_t *patternEnd, ConversionTable table)
{
    if (!table)
        return stringMatchesWildcard(text, textEnd, pattern, patternEnd);
    return matches<false>(text, textEnd, pattern, patternEnd, Through { table });
}

bool stringMatchesUnixWildcard(
    const char16_t *text, const char16_t *textEnd, const char16_t *pattern, const char16_t *patternEnd)
{
    return matches<true>(text, textEnd, pattern, patternEnd, Raw {});
}

bool stringMatchesUnixWildcardUsingUnicharTable(const char16_t *text, const char16_t *textEnd,
    const char16_t *pattern, const char16_t *patternEnd, ConversionTable table)
{
    if (!table)
        return stringMatchesUnixWildcard(text, textEnd, pattern, patternEnd);
    return matches<true>(text, textEnd, pattern, patternEnd, Through { table });
}

void prepareWildcardUsingUnicharTable(char16_t *begin, char16_t *end, ConversionTable table)
{
    if (!table)
        return;
    for (char16_t *p = begin; p < end; ++p)
        *p = table[*p];
}

int optimizeWildcard(char16_t *begin, char16_t *end, qsizetype out[2], qsizetype minimumLiteralUnits)
{
    out[0] = 0;
    out[1] = 0;
    char16_t *w = begin;
    const char16_t *r = begin;
    qsizetype stars = 0, questionMarks = 0, literals = 0, classes = 0;
    while (r < end) {
        const char16_t c = *r;
        if (c == u'*') {
            if (w == begin || w[-1] != u'*') {
                *w++ = c;
                ++stars;
            }
            ++r;
        } else if (c == u'?') {
            *w++ = c;
            ++questionMarks;
            ++r;
        } else if (c == u']') {
            return WildcardInvalid;
        } else if (c == u'[') {
            *w++ = *r++;
            bool hasMember = false;
            while (r < end && *r != u']') {
                if (*r == u'[')
                    return WildcardInvalid;
                if (*r == u'|') {
                    ++r;
                    continue;
                }
                hasMember = hasMember || (*r != u'-' && *r != u'^');
                *w++ = *r++;
            }
            if (r == end)
                return WildcardInvalid; // the pattern ends inside the class
            *w++ = *r++;
            if (hasMember) {
                ++literals;
                ++classes;
            }
        } else {
            *w++ = *r++;
            ++literals;
        }
    }
    const qsizetype length = w - begin;
    out[1] = length;
    if (literals == 0 || (stars > 0 && literals < minimumLiteralUnits))
        return WildcardInvalid;
    const bool first = begin[0] == u'*';
    const bool last = begin[length - 1] == u'*';
    if (classes == 0) {
        if (stars == 0)
            return questionMarks ? WildcardQuestionMarks : WildcardLiteral;
        if (questionMarks)
            return WildcardGeneral;
        if (stars == 1 && first) {
            out[0] = 1, out[1] = literals;
            return WildcardSuffix;
        }
        if (stars == 1 && last) {
            out[0] = 0, out[1] = literals;
            return WildcardPrefix;
        }
        if (stars == 2 && first && last) {
            out[0] = 1, out[1] = literals;
            return WildcardContains;
        }
        return WildcardGeneral;
    }
    if (stars == 0)
        return WildcardClasses;
    if (stars == 1 && first) {
        out[0] = 1, out[1] = length - 1;
        return WildcardClassesSuffix;
    }
    if (stars == 1 && last) {
        out[0] = 0, out[1] = length - 1;
        return WildcardClassesPrefix;
    }
    return WildcardClassesGeneral;
}

int wildcardType(QStringView pattern)
{
    if (pattern.isEmpty())
        return WildcardLiteral;
    Scratch copy(pattern.size());
    std::copy(pattern.utf16(), pattern.utf16() + pattern.size(), copy.data());
    qsizetype out[2];
    return optimizeWildcard(copy.data(), copy.data() + copy.size(), out, 1);
}

qsizetype minWildcardLen(const char16_t *begin, const char16_t *end)
{
    qsizetype count = 0;
    for (const char16_t *p = begin; p < end; ++p) {
        if (*p == u'*')
            continue;
        if (*p == u'[')
            while (p + 1 < end && *p != u']') // bounded by the end, so an unclosed class cannot overrun
                ++p;
        ++count;
    }
    return count;
}

qsizetype maxWildcardLen(const char16_t *begin, const char16_t *end)
{
    for (const char16_t *p = begin; p < end; ++p)
        if (*p == u'*')
            return NotFound;
    return minWildcardLen(begin, end);
}

qsizetype wildcardLength(QStringView pattern)
{
    return minWildcardLen(pattern.utf16(), pattern.utf16() + pattern.size());
}

ConversionTable unicharTableForWildcardComparison(int options)
{
    switch (options & 3) {
    case WildcardIgnoreCase:
        return upperCharsTable();
    case WildcardIgnoreDiacritics:
        return umlautsCharsTable();
    case WildcardIgnoreCase | WildcardIgnoreDiacritics:
        return upperUmlautsCharsTable();
    default:
        return nullptr;
    }
}

bool isUnicharTablePartOfConversionTable(ConversionTable a, ConversionTable b)
{
    if (!a || !b)
        return false;
    if (a == b)
        return true;
    if (a == lowerCharsTable() && b == lowerUmlautsCharsTable())
        return true;
    if (a == upperCharsTable() && b == upperUmlautsCharsTable())
        return true;
    return a == umlautsCharsTable() && (b == lowerUmlautsCharsTable() || b == upperUmlautsCharsTable());
}

double minWildcardFuzzyAnalogy() { return fuzzyAnalogy.load(std::memory_order_relaxed); }
void setMinWildcardFuzzyAnalogy(double value) { fuzzyAnalogy.store(value, std::memory_order_relaxed); }

CharacterSetRep defaultWildcardSeparators()
{
    static const detail::RepBits rep = [] {
        detail::RepBits r;
        std::copy(defaultWordSeparators(), defaultWordSeparators() + CharacterSetRepSize, r.bytes.begin());
        for (char16_t c : { u'*', u'?', u'[', u']' })
            r.remove(c);
        return r;
    }();
    return rep.data();
}

QStringList wordsUsingWildcardSeparation(const QString &s, bool *hyphenated)
{
    return wordsUsingSeparators(s, defaultWildcardSeparators(), false, 1, true, hyphenated);
}

qsizetype numberOfWordsUsingWildcardSeparation(QStringView s)
{
    return numberOfWordsUsingSeparators(s, defaultWildcardSeparators(), 1, true);
}

void initWildcardSeparators() { defaultWildcardSeparators(); }
void initWildcardTables() { upperUmlautsCharsTable(); }

void initSeparatorsAndTables()
{
    initSeparators();
    initWildcardSeparators();
    initWildcardTables();
}

} // namespace orvel
