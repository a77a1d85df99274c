// The fast comparison family: one table load per unit, no allocation up to 256 units.
#include "strings/FastCompare.h"

#include <QVarLengthArray>
#include <algorithm>
#include <cstdint>
#include <iterator>

namespace orvel {

namespace {

// Bytes are meant as ASCII literals; a byte of 0x80 or above is widened as a signed value.
inline char16_t widen(char b) { return char16_t(std::int16_t(static_cast<signed char>(b))); }

// Identity "table" for the templates below.
struct Raw
{
    char16_t operator()(char16_t c) const { return c; }
};
struct Through
{
    ConversionTable table;
    char16_t operator()(char16_t c) const { return table[c]; }
};
struct Widened
{
    char16_t operator()(char b) const { return widen(b); }
};
struct WidenedThrough
{
    ConversionTable table;
    char16_t operator()(char b) const { return table[widen(b)]; }
};

template <typename A, typename B, typename MapA, typename MapB>
qsizetype compareWith(const A *a, qsizetype aLen, const B *b, qsizetype bLen, MapA mapA, MapB mapB)
{
    if (aLen < 0)
        aLen = 0;
    if (bLen < 0)
        bLen = 0;
    const qsizetype n = aLen < bLen ? aLen : bLen;
    for (qsizetype i = 0; i < n; ++i) {
        const int x = mapA(a[i]);
        const int y = mapB(b[i]);
        if (x != y)
            return x - y;
    }
    return aLen - bLen;
}

// Leftmost occurrence of the (already converted) needle; hay units are converted as they are read.
// Short searches scan every start position. Long ones skip ahead by the last two units of the
// window (a Horspool shift on unit pairs, hashed to 12 bits): the shift is the least distance at
// which that pair occurs in the needle, so no occurrence is ever stepped over (pairs that share a
// hash only shorten the shift) and the answer is the same leftmost position.
template <typename Map, typename Key>
const char16_t *scan(
    const char16_t *hay, qsizetype hayLen, const char16_t *needle, qsizetype needleLen, Map map, Key key)
{
    if (!hay || !needle || needleLen <= 0 || needleLen > hayLen)
        return nullptr;
    const qsizetype last = hayLen - needleLen;
    auto matchesAt = [&](qsizetype i) {
        qsizetype k = 0;
        while (k < needleLen && map(hay[i + k]) == needle[k])
            ++k;
        return k == needleLen;
    };
    if (needleLen < 4 || hayLen < 256) {
        const char16_t first = needle[0];
        for (qsizetype i = 0; i <= last; ++i)
            if (map(hay[i]) == first && matchesAt(i))
                return hay + i;
        return nullptr;
    }
    const qsizetype m = needleLen < 255 ? needleLen : 255; // the needle's tail that sets the shifts
    const qsizetype tail = needleLen - m;
    // key(u) must equal map(u) & 31 for every hay unit u; needle units are converted already.
    unsigned char shift[1024];
    std::fill(std::begin(shift), std::end(shift), static_cast<unsigned char>(m - 1));
    for (qsizetype k = 0; k + 1 < m; ++k)
        shift[((needle[tail + k] & 31u) << 5) | (needle[tail + k + 1] & 31u)]
            = static_cast<unsigned char>(m - 2 - k);
    for (qsizetype i = 0; i <= last;) {
        const unsigned s = shift[(key(hay[i + needleLen - 2]) << 5) | key(hay[i + needleLen - 1])];
        if (s) {
            i += s;
            continue;
        }
        if (matchesAt(i))
            return hay + i;
        ++i;
    }
    return nullptr;
}

// Shift keys: the low five bits of the converted unit.
struct RawKey
{
    unsigned operator()(char16_t c) const { return c & 31u; }
};
// For the upper table an ASCII unit keeps its low five bits ('a' and 'A' share them), so the key
// needs no table load there; that shortens the chain of loads each skip waits for.
struct UpperKey
{
    ConversionTable upper;
    unsigned operator()(char16_t c) const { return c < 128 ? (c & 31u) : (upper[c] & 31u); }
};

// Maps a needle once into scratch storage (on the stack up to 256 units). The table of these two
// searches is the upper table, which UpperKey relies on.
using Scratch = QVarLengthArray<char16_t, 256>;

const char16_t *searchMappedUnits(
    const char16_t *hay, qsizetype hayLen, const char16_t *needle, qsizetype needleLen, ConversionTable table)
{
    if (!hay || !needle || needleLen <= 0 || needleLen > hayLen)
        return nullptr;
    Scratch mapped(needleLen);
    for (qsizetype i = 0; i < needleLen; ++i)
        mapped[i] = table[needle[i]];
    return scan(hay, hayLen, mapped.constData(), needleLen, Through { table }, UpperKey { table });
}

const char16_t *searchBytes(
    const char16_t *hay, qsizetype hayLen, const char *needle, qsizetype needleLen, ConversionTable table)
{
    if (!hay || !needle || needleLen <= 0 || needleLen > hayLen)
        return nullptr;
    Scratch mapped(needleLen);
    for (qsizetype i = 0; i < needleLen; ++i)
        mapped[i] = table ? table[widen(needle[i])] : widen(needle[i]);
    if (table)
        return scan(hay, hayLen, mapped.constData(), needleLen, Through { table }, UpperKey { table });
    return scan(hay, hayLen, mapped.constData(), needleLen, Raw {}, RawKey {});
}

ConversionTable caseTable()
{
    // The lower table is built beside the upper one, so that the first case-insensitive call pays
    // for both at once.
    static const ConversionTable upper = [] {
        lowerCharsTable();
        return upperCharsTable();
    }();
    return upper;
}

template <typename Map>
bool repWalk(const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep,
    bool prefix, Map map)
{
    if (!rep)
        return false;
    if (!a)
        aLen = 0;
    if (!b)
        bLen = 0;
    qsizetype i = 0, j = 0;
    for (;;) {
        while (i < aLen && !isCharacterPartOfSet(rep, a[i]))
            ++i;
        while (j < bLen && !isCharacterPartOfSet(rep, b[j]))
            ++j;
        if (i >= aLen)
            return j >= bLen;
        if (j >= bLen)
            return prefix;
        if (map(a[i]) != map(b[j]))
            return false;
        ++i;
        ++j;
    }
}

} // namespace

qsizetype fastCompareUnichars(const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen)
{
    return compareWith(a, aLen, b, bLen, Raw {}, Raw {});
}

qsizetype fastCompareUnicharsWithChars(const char16_t *a, qsizetype aLen, const char *b, qsizetype bLen)
{
    return compareWith(a, aLen, b, bLen, Raw {}, Widened {});
}

qsizetype fastCompareChars(const char *a, qsizetype aLen, const char *b, qsizetype bLen)
{
    return compareWith(
        a, aLen, b, bLen, [](char c) { return int(static_cast<signed char>(c)); },
        [](char c) { return int(static_cast<signed char>(c)); });
}

qsizetype fastCompareUnicharsUsingConversionTable(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, ConversionTable table)
{
    if (!table)
        return fastCompareUnichars(a, aLen, b, bLen);
    return compareWith(a, aLen, b, bLen, Through { table }, Through { table });
}

qsizetype fastCaseInsensitiveCompareUnichars(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen)
{
    const ConversionTable t = caseTable();
    return compareWith(a, aLen, b, bLen, Through { t }, Through { t });
}

qsizetype fastCaseInsensitiveCompareUnicharsWithChars(
    const char16_t *a, qsizetype aLen, const char *b, qsizetype bLen)
{
    const ConversionTable t = caseTable();
    return compareWith(a, aLen, b, bLen, Through { t }, WidenedThrough { t });
}

qsizetype fastCaseInsensitiveCompareChars(const char *a, qsizetype aLen, const char *b, qsizetype bLen)
{
    const ConversionTable t = caseTable();
    return compareWith(a, aLen, b, bLen, WidenedThrough { t }, WidenedThrough { t });
}

const char16_t *fastContainsUnichars(
    const char16_t *hay, qsizetype hayLen, const char16_t *needle, qsizetype needleLen)
{
    return scan(hay, hayLen, needle, needleLen, Raw {}, RawKey {});
}

const char16_t *fastCaseInsensitiveContainsUnichars(
    const char16_t *hay, qsizetype hayLen, const char16_t *needle, qsizetype needleLen)
{
    return searchMappedUnits(hay, hayLen, needle, needleLen, caseTable());
}

const char16_t *fastUnicharsContainChars(
    const char16_t *hay, qsizetype hayLen, const char *needle, qsizetype needleLen)
{
    return searchBytes(hay, hayLen, needle, needleLen, nullptr);
}

const char16_t *fastCaseInsensitiveUnicharsContainChars(
    const char16_t *hay, qsizetype hayLen, const char *needle, qsizetype needleLen)
{
    return searchBytes(hay, hayLen, needle, needleLen, caseTable());
}

const char16_t *positionOfCharacters(
    const char *needle, qsizetype needleLen, const char16_t *hay, qsizetype hayLen, bool caseSensitive)
{
    return caseSensitive ? fastUnicharsContainChars(hay, hayLen, needle, needleLen)
                         : fastCaseInsensitiveUnicharsContainChars(hay, hayLen, needle, needleLen);
}

qsizetype compareCharacters(const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen)
{
    return fastCompareUnichars(a, aLen, b, bLen);
}
qsizetype compareCharacters(const char16_t *a, qsizetype aLen, const char *b, qsizetype bLen)
{
    return fastCompareUnicharsWithChars(a, aLen, b, bLen);
}
qsizetype caseInsensitiveCompareCharacters(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen)
{
    return fastCaseInsensitiveCompareUnichars(a, aLen, b, bLen);
}
qsizetype caseInsensitiveCompareCharacters(const char16_t *a, qsizetype aLen, const char *b, qsizetype bLen)
{
    return fastCaseInsensitiveCompareUnicharsWithChars(a, aLen, b, bLen);
}

bool equalCharsOfCharacterSetRep(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep)
{
    return repWalk(a, aLen, b, bLen, rep, false, Raw {});
}

bool equalCharsNoCaseOfCharacterSetRep(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep)
{
    return repWalk(a, aLen, b, bLen, rep, false, Through { caseTable() });
}

bool hasPrefixCharsOfCharacterSetRep(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep)
{
    return repWalk(a, aLen, b, bLen, rep, true, Raw {});
}

bool hasPrefixCharsNoCaseOfCharacterSetRep(
    const char16_t *a, qsizetype aLen, const char16_t *b, qsizetype bLen, CharacterSetRep rep)
{
    return repWalk(a, aLen, b, bLen, rep, true, Through { caseTable() });
}

bool equalStringsUsingCharacterSetRep(QStringView a, QStringView b, CharacterSetRep rep)
{
    return equalCharsOfCharacterSetRep(a.utf16(), a.size(), b.utf16(), b.size(), rep);
}

bool equalStringsNoCaseUsingCharacterSetRep(QStringView a, QStringView b, CharacterSetRep rep)
{
    return equalCharsNoCaseOfCharacterSetRep(a.utf16(), a.size(), b.utf16(), b.size(), rep);
}

bool hasPrefixUsingCharacterSetRep(QStringView a, QStringView b, CharacterSetRep rep)
{
    return hasPrefixCharsOfCharacterSetRep(a.utf16(), a.size(), b.utf16(), b.size(), rep);
}

bool hasPrefixNoCaseUsingCharacterSetRep(QStringView a, QStringView b, CharacterSetRep rep)
{
    return hasPrefixCharsNoCaseOfCharacterSetRep(a.utf16(), a.size(), b.utf16(), b.size(), rep);
}

bool equalStringsUsingConversionTable(QStringView a, QStringView b, ConversionTable table)
{
    if (a.size() != b.size())
        return false;
    if (a.isEmpty())
        return true;
    if (!table)
        return a == b;
    return fastCompareUnicharsUsingConversionTable(a.utf16(), a.size(), b.utf16(), b.size(), table) == 0;
}

namespace {

template <typename Map> bool equalUnits(QStringView a, QStringView b, Map map)
{
    if (a.size() != b.size())
        return false;
    const char16_t *x = a.utf16();
    const char16_t *y = b.utf16();
    for (qsizetype i = 0; i < a.size(); ++i)
        if (map(x[i]) != map(y[i]))
            return false;
    return true;
}

struct UpperAscii
{
    ConversionTable umlauts;
    char16_t operator()(char16_t c) const
    {
        const char16_t u = umlauts[c];
        if (u > 127)
            return u' ';
        return (u >= u'a' && u <= u'z') ? char16_t(u - 32) : u;
    }
};

bool rangeOf(QStringView s, qsizetype location, qsizetype length, const QString &other, QStringView *out)
{
    if (other.isNull() || location < 0 || length < 0 || location > s.size() || length > s.size() - location
        || other.size() != length)
        return false;
    *out = s.sliced(location, length);
    return true;
}

} // namespace

bool isEqualToStringNoCase(QStringView s, const QString &other)
{
    return !other.isNull() && equalUnits(s, other, Through { caseTable() });
}

bool isAsciiEqualToStringNoCase(QStringView s, const QString &other)
{
    return !other.isNull() && equalUnits(s, other, UpperAscii { umlautsCharsTable() });
}

bool isNonUmlautedEqualToStringNoCase(QStringView s, const QString &other)
{
    return !other.isNull() && equalUnits(s, other, Through { upperUmlautsCharsTable() });
}

bool rangeIsEqualTo(QStringView s, qsizetype location, qsizetype length, const QString &other)
{
    QStringView r;
    return rangeOf(s, location, length, other, &r) && r == QStringView(other);
}

bool rangeIsEqualToNoCase(QStringView s, qsizetype location, qsizetype length, const QString &other)
{
    QStringView r;
    return rangeOf(s, location, length, other, &r) && equalUnits(r, other, Through { caseTable() });
}

bool rangeIsAsciiEqualToNoCase(QStringView s, qsizetype location, qsizetype length, const QString &other)
{
    QStringView r;
    return rangeOf(s, location, length, other, &r)
        && equalUnits(r, other, UpperAscii { umlautsCharsTable() });
}

bool rangeIsNonUmlautedEqualToNoCase(
    QStringView s, qsizetype location, qsizetype length, const QString &other)
{
    QStringView r;
    return rangeOf(s, location, length, other, &r)
        && equalUnits(r, other, Through { upperUmlautsCharsTable() });
}

bool hasPrefixNoCase(QStringView s, const QString &prefix)
{
    if (prefix.isEmpty() || prefix.size() > s.size())
        return false;
    return equalUnits(s.first(prefix.size()), prefix, Through { caseTable() });
}

bool hasSuffixNoCase(QStringView s, const QString &suffix)
{
    if (suffix.isEmpty() || suffix.size() > s.size())
        return false;
    return equalUnits(s.last(suffix.size()), suffix, Through { caseTable() });
}

qsizetype findCharacter(QStringView s, char16_t ch, qsizetype startAt, bool caseInsensitive)
{
    if (startAt < 0)
        startAt = 0;
    if (s.isEmpty() || startAt >= s.size())
        return NotFound;
    const ConversionTable upper = caseTable();
    const char16_t up = upper[ch];
    const char16_t *u = s.utf16();
    const qsizetype n = s.size();
    if (up == lowerCharsTable()[ch] || !caseInsensitive) {
        // Without case: the unit itself. With case, case-sensitively: exactly upper[ch] (kept quirk).
        const char16_t wanted = up == lowerCharsTable()[ch] ? ch : up;
        for (qsizetype i = startAt; i < n; ++i)
            if (u[i] == wanted)
                return i;
        return NotFound;
    }
    for (qsizetype i = startAt; i < n; ++i)
        if (upper[u[i]] == up)
            return i;
    return NotFound;
}

bool containsCharacter(QStringView s, char16_t ch, qsizetype startAt, bool caseInsensitive)
{
    return findCharacter(s, ch, startAt, caseInsensitive) != NotFound;
}

} // namespace orvel
