// Configuration lines, rotation, bracket counts, trimming, counting, replacing and line access.
#include "strings/StringExtensions.h"

#include "strings/CharacterClasses_p.h"
#include "strings/FastCompare.h"
#include "strings/Separation.h"

namespace orvel {

namespace {

using detail::isLineBreakUnit;

QString trimmedBy(const QString &s, CharacterSetRep rep)
{
    if (!rep || s.isEmpty())
        return s;
    const QStringView v(s);
    qsizetype a = 0, b = v.size();
    while (a < b && isCharacterPartOfSet(rep, v[a].unicode()))
        ++a;
    while (b > a && isCharacterPartOfSet(rep, v[b - 1].unicode()))
        --b;
    if (a == 0 && b == v.size())
        return s;
    return s.mid(a, b - a);
}

// Yields every line of s between default line separators, CR LF being one break.
template <typename Visit> void forEachLine(QStringView s, Visit visit)
{
    const CharacterSetRep breaks = defaultLineSeparators();
    qsizetype start = 0;
    qsizetype index = 0;
    for (qsizetype i = 0; i < s.size(); ++i) {
        const char16_t c = s[i].unicode();
        if (!isCharacterPartOfSet(breaks, c))
            continue;
        if (!visit(index++, start, i))
            return;
        if (c == 0x000D && i + 1 < s.size() && s[i + 1] == u'\n')
            ++i;
        start = i + 1;
    }
    if (start < s.size())
        visit(index, start, s.size());
}

} // namespace

QStringList configLines(QStringView s)
{
    QStringList out;
    const CharacterSetRep white = whiteCharacterSetRep();
    qsizetype start = 0;
    for (qsizetype i = 0; i <= s.size(); ++i) {
        if (i < s.size() && !isLineBreakUnit(s[i].unicode()))
            continue;
        qsizetype a = start, b = i;
        start = i + 1;
        while (a < b && isCharacterPartOfSet(white, s[a].unicode()))
            ++a;
        if (a < b && s[a] == u'#')
            continue;
        while (b > a && isCharacterPartOfSet(white, s[b - 1].unicode()))
            --b;
        // A line of a single character is dropped too.
        if (b - a >= 2)
            out.append(s.sliced(a, b - a).toString());
    }
    return out;
}

QString configValueForKey(QStringView line, QStringView key)
{
    if (key.isEmpty() || line.size() <= key.size())
        return QString();
    if (!hasPrefixNoCase(line, key.toString()))
        return QString();
    const CharacterSetRep white = whiteCharacterSetRep();
    if (!isCharacterPartOfSet(white, line[key.size()].unicode()))
        return QString();
    QStringView rest = line.sliced(key.size());
    qsizetype a = 0, b = rest.size();
    while (a < b && isCharacterPartOfSet(white, rest[a].unicode()))
        ++a;
    while (b > a && isCharacterPartOfSet(white, rest[b - 1].unicode()))
        --b;
    if (a == b)
        return QString();
    return rest.sliced(a, b - a).toString();
}

QString stringByRotating(const QString &s, int n)
{
    const int shift = ((n % 26) + 26) % 26;
    if (s.isEmpty() || shift == 0)
        return s;
    QString out(s.size(), Qt::Uninitialized);
    const QStringView v(s);
    for (qsizetype i = 0; i < v.size(); ++i) {
        char16_t c = v[i].unicode();
        if (c >= u'a' && c <= u'z')
            c = char16_t(u'a' + (c - u'a' + shift) % 26);
        else if (c >= u'A' && c <= u'Z')
            c = char16_t(u'A' + (c - u'A' + shift) % 26);
        out[i] = QChar(c);
    }
    return out;
}

QString stringByRotating13(const QString &s) { return stringByRotating(s, 13); }

bool countLT(QStringView s, qsizetype *lt, qsizetype *gt)
{
    qsizetype l = 0, g = 0;
    for (QChar c : s) {
        l += c == u'<';
        g += c == u'>';
    }
    if (lt)
        *lt = l;
    if (gt)
        *gt = g;
    return l == g && l != 0;
}

QString stringByTrimmingQuotes(const QString &s)
{
    if (s.isEmpty())
        return s;
    const QStringView v(s);
    auto isQuote = [](QChar c) { return c == u'"' || c == u'\''; };
    qsizetype a = 0, b = v.size();
    while (a < b && isQuote(v[a]))
        ++a;
    while (b > a && isQuote(v[b - 1]))
        --b;
    if (a == 0 && b == v.size())
        return s;
    return s.mid(a, b - a);
}

QString stringByTrimmingWhiteSpaces(const QString &s) { return trimmedBy(s, whiteCharacterSetRep()); }
QString stringByTrimmingSpaces(const QString &s) { return trimmedBy(s, spaceCharacterSetRep()); }
QString stringByTrimmingCharactersInRep(const QString &s, CharacterSetRep rep) { return trimmedBy(s, rep); }

QString stringByRemovingDigits(const QString &s)
{
    const CharacterSetRep digits = digitCharacterSetRep();
    for (QChar c : s)
        if (isCharacterPartOfSet(digits, c.unicode())) {
            QString out;
            out.reserve(s.size());
            for (QChar d : s)
                if (!isCharacterPartOfSet(digits, d.unicode()))
                    out.append(d);
            return out;
        }
    return s;
}

QString stringByReplacingCharacter(const QString &s, char16_t from, char16_t to)
{
    if (from == to || !s.contains(QChar(from)))
        return s;
    QString out = s;
    out.replace(QChar(from), QChar(to));
    return out;
}

QString stringByReplacingString(const QString &s, QStringView from, QStringView to)
{
    if (from.isEmpty() || !s.contains(from))
        return s;
    QString out = s;
    out.replace(from.toString(), to.toString());
    return out;
}

qsizetype countCharacter(QStringView s, char16_t ch) { return s.count(QChar(ch)); }

qsizetype findOneOf(QStringView s, QStringView chars)
{
    for (qsizetype i = 0; i < s.size(); ++i)
        if (chars.contains(s[i]))
            return i;
    return NotFound;
}

char16_t firstCharacter(QStringView s) { return s.isEmpty() ? 0 : s.front().unicode(); }
char16_t lastCharacter(QStringView s) { return s.isEmpty() ? 0 : s.back().unicode(); }

QStringList lines(const QString &s)
{
    QStringList out;
    forEachLine(s, [&](qsizetype, qsizetype a, qsizetype b) {
        out.append(s.mid(a, b - a));
        return true;
    });
    return out;
}

qsizetype numberOfLines(QStringView s)
{
    qsizetype n = 0;
    forEachLine(s, [&](qsizetype, qsizetype, qsizetype) {
        ++n;
        return true;
    });
    return n;
}

QString lineAtIndex(const QString &s, qsizetype i)
{
    QString found;
    forEachLine(s, [&](qsizetype index, qsizetype a, qsizetype b) {
        if (index != i)
            return true;
        found = s.mid(a, b - a);
        if (found.isNull())
            found = QString(""); // an empty line is a line, not "none"
        return false;
    });
    return found;
}

QString wordAtIndex(const QString &s, qsizetype i)
{
    if (i < 0)
        return QString();
    QList<SeparationRange> ranges;
    wordsOfCharacters(QStringView(s).utf16(), s.size(), nullptr, false, 1, false, &ranges);
    if (i >= ranges.size())
        return QString();
    return s.mid(ranges[i].location, ranges[i].length);
}

} // namespace orvel
