// Whole-string transformations and predicates: one table load or bit test per unit.
#include "strings/StringCharacters.h"

#include <limits>

namespace orvel {

namespace {

// Applies table to every unit; a new string is made only once a unit changes.
QString mapUnits(const QString &s, ConversionTable table)
{
    const qsizetype n = s.size();
    const char16_t *u = QStringView(s).utf16();
    qsizetype i = 0;
    while (i < n && table[u[i]] == u[i])
        ++i;
    if (i == n)
        return s;
    QString out(n, Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    std::copy(u, u + i, o);
    for (; i < n; ++i)
        o[i] = table[u[i]];
    return out;
}

template <typename Map> QString asciiMapped(const QString &s, Map map)
{
    if (s.isEmpty())
        return s;
    const QString composed = s.normalized(QString::NormalizationForm_C);
    QString out(composed.size(), Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    const char16_t *u = QStringView(composed).utf16();
    for (qsizetype i = 0; i < composed.size(); ++i)
        o[i] = map(u[i]);
    return out;
}

} // namespace

QString stringByApplyingConversionTable(const QString &s, ConversionTable table)
{
    if (!table || s.isEmpty())
        return s;
    return mapUnits(s, table);
}

QString nonUmlautedString(const QString &s) { return s.isEmpty() ? s : mapUnits(s, umlautsCharsTable()); }
QString lowercaseNonUmlautedString(const QString &s)
{
    return s.isEmpty() ? s : mapUnits(s, lowerUmlautsCharsTable());
}
QString uppercaseNonUmlautedString(const QString &s)
{
    return s.isEmpty() ? s : mapUnits(s, upperUmlautsCharsTable());
}
QString asciiString(const QString &s) { return asciiMapped(s, toAscii); }
QString lowercaseAsciiString(const QString &s) { return asciiMapped(s, toLowerAscii); }
QString uppercaseAsciiString(const QString &s) { return asciiMapped(s, toUpperAscii); }

QString optimizedString(const QString &s)
{
    if (s.isEmpty())
        return s;
    return QString(s.constData(), s.size());
}

QString stringByRemovingCharactersInRep(const QString &s, CharacterSetRep rep)
{
    if (!rep || s.isEmpty())
        return s;
    const char16_t *u = QStringView(s).utf16();
    const qsizetype n = s.size();
    qsizetype i = 0;
    while (i < n && !isCharacterPartOfSet(rep, u[i]))
        ++i;
    if (i == n)
        return s;
    QString out;
    out.reserve(n - 1);
    out.append(QStringView(u, i));
    for (; i < n; ++i)
        if (!isCharacterPartOfSet(rep, u[i]))
            out.append(QChar(u[i]));
    return out;
}

static bool allBelow128(QStringView s)
{
    for (QChar c : s)
        if (c.unicode() >= 128)
            return false;
    return true;
}

bool isAsciiString(QStringView s) { return allBelow128(s); }

namespace {

template <typename Pred> bool allUnits(QStringView s, Pred pred)
{
    const char16_t *u = QStringView(s).utf16();
    for (qsizetype i = 0; i < s.size(); ++i)
        if (!pred(u[i]))
            return false;
    return true;
}

} // namespace

bool isUmlautedString(QStringView s)
{
    const ConversionTable t = umlautsCharsTable();
    return !allUnits(s, [t](char16_t c) { return t[c] == c; });
}

bool isLowerCaseString(QStringView s)
{
    const ConversionTable t = lowerCharsTable();
    return allUnits(s, [t](char16_t c) { return t[c] == c; });
}

bool isUpperCaseString(QStringView s)
{
    const ConversionTable t = upperCharsTable();
    return allUnits(s, [t](char16_t c) { return t[c] == c; });
}

bool characterPartOfSet(const char16_t *units, qsizetype length, CharacterSetRep rep)
{
    if (!rep || !units)
        return false;
    for (qsizetype i = 0; i < length; ++i)
        if (isCharacterPartOfSet(rep, units[i]))
            return true;
    return false;
}

qsizetype countCharactersPartOfSet(const char16_t *units, qsizetype length, CharacterSetRep rep)
{
    if (!rep || !units)
        return 0;
    qsizetype count = 0;
    for (qsizetype i = 0; i < length; ++i)
        count += isCharacterPartOfSet(rep, units[i]);
    return count;
}

bool charactersPartOfSet(const char16_t *units, qsizetype length, CharacterSetRep rep, bool resultIfEmpty)
{
    if (!rep)
        return false;
    if (!units || length <= 0)
        return resultIfEmpty;
    for (qsizetype i = 0; i < length; ++i)
        if (!isCharacterPartOfSet(rep, units[i]))
            return false;
    return true;
}

bool containsCharacterPartOfCharacterSetRep(QStringView s, CharacterSetRep rep)
{
    return characterPartOfSet(s.utf16(), s.size(), rep);
}
bool containsAlphaNumCharacter(QStringView s)
{
    return containsCharacterPartOfCharacterSetRep(s, alphaNumCharacterSetRep());
}
bool containsAlphaCharacter(QStringView s)
{
    return containsCharacterPartOfCharacterSetRep(s, alphaCharacterSetRep());
}
bool containsWhiteCharacter(QStringView s)
{
    return containsCharacterPartOfCharacterSetRep(s, whiteCharacterSetRep());
}
bool containsDigitCharacter(QStringView s)
{
    return containsCharacterPartOfCharacterSetRep(s, digitCharacterSetRep());
}

qsizetype countCharactersPartOfCharacterSetRep(QStringView s, CharacterSetRep rep)
{
    return countCharactersPartOfSet(s.utf16(), s.size(), rep);
}
qsizetype countAlphaNumCharacters(QStringView s)
{
    return countCharactersPartOfCharacterSetRep(s, alphaNumCharacterSetRep());
}
qsizetype countAlphaCharacters(QStringView s)
{
    return countCharactersPartOfCharacterSetRep(s, alphaCharacterSetRep());
}
qsizetype countWhiteCharacters(QStringView s)
{
    return countCharactersPartOfCharacterSetRep(s, whiteCharacterSetRep());
}
qsizetype countDigitCharacters(QStringView s)
{
    return countCharactersPartOfCharacterSetRep(s, digitCharacterSetRep());
}

bool isSpaceString(QStringView s)
{
    return charactersPartOfSet(s.utf16(), s.size(), spaceCharacterSetRep(), true);
}
bool isWhiteString(QStringView s)
{
    return charactersPartOfSet(s.utf16(), s.size(), whiteCharacterSetRep(), true);
}
bool isDigitString(QStringView s)
{
    return charactersPartOfSet(s.utf16(), s.size(), digitCharacterSetRep(), false);
}
bool isAlphaString(QStringView s)
{
    return charactersPartOfSet(s.utf16(), s.size(), alphaCharacterSetRep(), false);
}
bool isAlphaNumString(QStringView s)
{
    return charactersPartOfSet(s.utf16(), s.size(), alphaNumCharacterSetRep(), false);
}

bool onlyWhiteCharacters(const char16_t *units, qsizetype length)
{
    return charactersPartOfSet(units, length, whiteCharacterSetRep(), true);
}

bool isMashedWordCharacters(const char16_t *units, qsizetype length)
{
    if (!units || length < 3)
        return false;
    const CharacterSetRep upper = upperCharacterSetRep();
    const CharacterSetRep lower = lowerCharacterSetRep();
    if (!isCharacterPartOfSet(upper, units[0]))
        return false;
    qsizetype i = 1;
    while (i < length && isCharacterPartOfSet(lower, units[i]))
        ++i;
    if (i == 1 || i >= length - 1) // no lower-case run, or the capital would be the last unit
        return false;
    return isCharacterPartOfSet(upper, units[i]) && isCharacterPartOfSet(lower, units[i + 1]);
}

bool isMashedWord(QStringView s) { return isMashedWordCharacters(s.utf16(), s.size()); }

bool containsCharacters(QStringView s, unsigned mask)
{
    mask &= 0xFF;
    if (mask == 0 || s.isEmpty())
        return false;
    unsigned seen = 0;
    for (QChar qc : s) {
        switch (qc.unicode()) {
        case u'.':
            seen |= ContainsDot;
            break;
        case u'@':
            seen |= ContainsAt;
            break;
        case u'/':
            seen |= ContainsSlash;
            break;
        case u'?':
            seen |= ContainsQuestionMark;
            break;
        case u';':
            seen |= ContainsSemicolon;
            break;
        case u'_':
            seen |= ContainsUnderscore;
            break;
        case u'*':
            seen |= ContainsAsterisk;
            break;
        case u'$':
            seen |= ContainsDollar;
            break;
        default:
            continue;
        }
        if ((seen & mask) == mask)
            return true;
    }
    return false;
}

qint64 integerValue(QStringView s)
{
    const CharacterSetRep white = whiteCharacterSetRep();
    qsizetype i = 0;
    const qsizetype n = s.size();
    const char16_t *u = QStringView(s).utf16();
    while (i < n && isCharacterPartOfSet(white, u[i]))
        ++i;
    bool negative = false;
    if (i < n && (u[i] == u'+' || u[i] == u'-'))
        negative = u[i++] == u'-';
    qint64 value = 0;
    constexpr qint64 Max = std::numeric_limits<qint64>::max();
    for (; i < n && u[i] >= u'0' && u[i] <= u'9'; ++i) {
        const int d = u[i] - u'0';
        if (value > (Max - d) / 10)
            return negative ? std::numeric_limits<qint64>::min() : Max;
        value = value * 10 + d;
    }
    return negative ? -value : value;
}

bool boolValue(QStringView s)
{
    if (integerValue(s) != 0)
        return true;
    return s.compare(u"true", Qt::CaseInsensitive) == 0 || s.compare(u"yes", Qt::CaseInsensitive) == 0
        || s.compare(u"on", Qt::CaseInsensitive) == 0;
}

} // namespace orvel
