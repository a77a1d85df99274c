// Not API: building character-set reps from Qt's Unicode data, shared by the string toolkit's files.
#pragma once

#include "strings/CharacterTables.h"

#include <QChar>
#include <array>
#include <initializer_list>

namespace orvel::detail {

/// The units that end a line for the line-based string operations (configuration lines, ellipsizing
/// by lines): the newlines, form feed, end of text, the object replacement character, the byte-order
/// mark and the Unicode line and paragraph separators.
inline bool isLineBreakUnit(char16_t c)
{
    switch (c) {
    case 0x000A:
    case 0x000D:
    case 0x000C:
    case 0x0003:
    case 0xFFFC:
    case 0xFEFF:
    case 0x2028:
    case 0x2029:
        return true;
    default:
        return false;
    }
}

/// A rep under construction: the 8,192 bytes of a character-set rep.
struct RepBits
{
    std::array<unsigned char, CharacterSetRepSize> bytes {};

    void add(char16_t c) { bytes[c >> 3] |= static_cast<unsigned char>(1u << (c & 7)); }
    void remove(char16_t c) { bytes[c >> 3] &= static_cast<unsigned char>(~(1u << (c & 7))); }
    bool has(char16_t c) const { return (bytes[c >> 3] >> (c & 7)) & 1u; }
    void add(std::initializer_list<char16_t> units)
    {
        for (char16_t c : units)
            add(c);
    }
    /// Adds every unit 0 ... 65535 for which pred(unit) holds.
    template <typename Pred> void addWhere(Pred pred)
    {
        for (char32_t c = 0; c <= 0xFFFF; ++c)
            if (pred(char16_t(c)))
                add(char16_t(c));
    }
    void addRange(char16_t first, char16_t last)
    {
        for (char32_t c = first; c <= last; ++c)
            add(char16_t(c));
    }
    CharacterSetRep data() const { return bytes.data(); }
};

// The platform character classes, each defined by Unicode general categories (Qt's tables).

/// White space: category Zs and U+0009.
bool isWhitespaceClass(char16_t c);
/// White space and line breaks: categories Zs, Zl, Zp, U+000A ... U+000D and U+0085 (and U+0009).
bool isWhitespaceAndNewlineClass(char16_t c);
/// Punctuation: categories Pc, Pd, Ps, Pe, Pi, Pf, Po.
bool isPunctuationClass(char16_t c);
/// Symbols: categories Sm, Sc, Sk, So.
bool isSymbolClass(char16_t c);
/// Control and format characters: categories Cc and Cf.
bool isControlClass(char16_t c);
/// Units that are not characters: category Cn (unassigned and non-characters such as U+FFFE).
bool isIllegalClass(char16_t c);

} // namespace orvel::detail
