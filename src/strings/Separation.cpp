// Word, component and line separation over separator reps, with the rule that keeps numbers whole.
#include "strings/Separation.h"
#include "strings/CharacterClasses_p.h"

namespace orvel {

namespace {

using detail::RepBits;

const RepBits &wordSeparatorBits()
{
    static const RepBits rep = [] {
        RepBits r;
        r.addWhere(detail::isWhitespaceAndNewlineClass);
        r.add({ 0x0020, 0x002C, 0x002E, 0x003B, 0x003A, 0x0027, 0x0022, 0x0021, 0x003F, 0x0028, 0x0029,
            0x003D, 0x002F, 0x005C, 0x002A, 0x002B, 0x002D, 0x005F, 0x0025, 0x2030, 0x0026, 0x007B, 0x007D,
            0x005B, 0x005D, 0x007C, 0x003C, 0x003E, 0x0023, 0x0040, 0x005E, 0x00B4, 0x0060, 0x2018, 0x2019,
            0x201A, 0x201C, 0x201D, 0x00A8, 0x201E, 0x00A7, 0x00AB, 0x00BB, 0x00A9, 0x00AE, 0x2039, 0x203A,
            0x00B1, 0x2014, 0x02C6, 0x2122, 0x00BD, 0x00BC, 0x00B9, 0x00B2, 0x00B3, 0x00B0, 0x00A6, 0x007E,
            0xFFFD, 0x00A4, 0x000C, 0x00A0, 0x000A, 0x000D, 0x2028, 0x2029, 0x0003, 0xFFFC, 0x0009, 0xFEFF,
            0x2013, 0x0000 });
        // Surrogate halves and the upper private-use area; each range stops one short of its last
        // unit (U+DFFF and U+F8FF stay word units), a bound that is kept as it is.
        r.addRange(0xD800, 0xDFFE);
        r.addRange(0xF400, 0xF8FE);
        for (char32_t c = 0; c < 0xFFFF; ++c) {
            const char16_t u = char16_t(c);
            if (detail::isPunctuationClass(u) || detail::isIllegalClass(u) || detail::isControlClass(u)
                || detail::isSymbolClass(u))
                r.add(u);
        }
        return r;
    }();
    return rep;
}

const RepBits &componentSeparatorBits()
{
    static const RepBits rep = [] {
        RepBits r;
        r.add({ u'.', u',', u':', u';', u'!', u'?', 0x000A, 0x000D, 0x000C, 0xFFFC, 0xFEFF, 0x2029, 0x2028,
            0x0003 });
        return r;
    }();
    return rep;
}

inline bool isAsciiDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// The break rule shared by words and components.
inline bool isBreak(const char16_t *s, qsizetype n, qsizetype i, CharacterSetRep set)
{
    const char16_t c = s[i];
    if (!isCharacterPartOfSet(set, c))
        return false;
    if ((c == u',' || c == u'.') && i > 0 && i < n - 1 && isAsciiDigit(s[i - 1]) && isAsciiDigit(s[i + 1]))
        return false;
    return true;
}

// Calls word(start, end) for every word of at least minLen units and, in separator mode,
// separator(start, end) for every run of breaks. Answers whether any break was seen.
template <typename Word, typename Separator>
bool scanWords(const char16_t *s, qsizetype n, CharacterSetRep set, bool withSeparators, int minLen,
    bool wildcard, Word word, Separator separator)
{
    if (minLen < 1)
        minLen = 1;
    bool sawBreak = false;
    qsizetype start = 0;
    qsizetype i = 0;
    while (i < n) {
        if (!isBreak(s, n, i, set)) {
            if (wildcard && s[i] == u'[') {
                qsizetype j = i + 1;
                while (j < n && s[j] != u']')
                    ++j;
                i = j < n ? j + 1 : n;
            } else {
                ++i;
            }
            continue;
        }
        sawBreak = true;
        if (i - start >= minLen)
            word(start, i);
        if (withSeparators) {
            qsizetype j = i + 1;
            while (j < n && isBreak(s, n, j, set))
                ++j;
            separator(i, j);
            i = j;
        } else {
            ++i;
        }
        start = i;
    }
    if (n - start >= minLen)
        word(start, n);
    return sawBreak;
}

template <typename Component>
qsizetype scanComponents(const char16_t *s, qsizetype n, CharacterSetRep set, Component component)
{
    qsizetype count = 0;
    qsizetype start = 0;
    qsizetype i = 0;
    while (i < n) {
        if (!isBreak(s, n, i, set)) {
            ++i;
            continue;
        }
        qsizetype j = i + 1;
        while (j < n && isBreak(s, n, j, set))
            ++j;
        component(start, i, j);
        ++count;
        start = i = j;
    }
    if (start < n) {
        component(start, n, n);
        ++count;
    }
    return count;
}

bool validRange(QStringView s, qsizetype location, qsizetype length)
{
    return location >= 0 && length >= 0 && location <= s.size() && length <= s.size() - location;
}

} // namespace

CharacterSetRep defaultWordSeparators() { return wordSeparatorBits().data(); }
CharacterSetRep defaultComponentSeparators() { return componentSeparatorBits().data(); }

CharacterSetRep defaultSentenceSeparators()
{
    static const RepBits rep = [] {
        RepBits r = componentSeparatorBits();
        r.remove(u',');
        r.remove(u';');
        return r;
    }();
    return rep.data();
}

CharacterSetRep defaultLineSeparators()
{
    static const RepBits rep = [] {
        RepBits r;
        r.add({ 0x000D, 0x000A, 0x000C, 0x2029, 0x2028, 0x0003, 0xFFFC });
        return r;
    }();
    return rep.data();
}

void initSeparators()
{
    defaultWordSeparators();
    defaultComponentSeparators();
    defaultSentenceSeparators();
    defaultLineSeparators();
}

qsizetype wordsOfCharacters(const char16_t *units, qsizetype length, CharacterSetRep separators,
    bool withSeparators, int minLen, bool wildcard, QList<SeparationRange> *ranges)
{
    if (!units || length <= 0)
        return 0;
    if (!separators)
        separators = defaultWordSeparators();
    qsizetype count = 0;
    scanWords(
        units, length, separators, withSeparators, minLen, wildcard,
        [&](qsizetype a, qsizetype b) {
            ++count;
            if (ranges)
                ranges->append({ a, b - a });
        },
        [&](qsizetype a, qsizetype b) {
            ++count;
            if (ranges)
                ranges->append({ a, (b - a) | SeparatorRangeFlag });
        });
    return count;
}

qsizetype numberOfWordsOfCharacters(const char16_t *units, qsizetype length)
{
    return wordsOfCharacters(units, length, nullptr, false, 1, false, nullptr);
}

QStringList wordsUsingSeparators(const QString &s, CharacterSetRep separators, bool withSeparators,
    int minLen, bool wildcard, bool *hyphenated)
{
    if (hyphenated)
        *hyphenated = false;
    QStringList out;
    if (s.isEmpty())
        return out;
    if (!separators)
        separators = defaultWordSeparators();
    const QStringView view(s);
    const char16_t *u = view.utf16();
    const qsizetype n = s.size();
    out.reserve(n / 8);
    const CharacterSetRep alpha = alphaCharacterSetRep();
    qsizetype words = 0;
    bool allHyphen = true, allDot = true, allSingleLetters = true;
    const bool sawBreak = scanWords(
        u, n, separators, withSeparators, minLen, wildcard,
        [&](qsizetype a, qsizetype b) {
            ++words;
            out.append(s.mid(a, b - a));
            if (b < n) {
                allHyphen = allHyphen && u[b] == u'-';
                allDot = allDot && u[b] == u'.';
            }
            allSingleLetters = allSingleLetters && b - a == 1 && isCharacterPartOfSet(alpha, u[a]);
        },
        [&](qsizetype a, qsizetype b) { out.append(s.mid(a, b - a)); });
    if (!sawBreak && words == 1)
        return QStringList { s }; // no break at all: the receiver itself
    if (hyphenated)
        *hyphenated = words >= 2 && (allHyphen || (allDot && allSingleLetters));
    return out;
}

QStringList wordsUsingSeparators(
    const QString &s, CharacterSetRep separators, bool withSeparators, int minLen)
{
    return wordsUsingSeparators(s, separators, withSeparators, minLen, false, nullptr);
}

QStringList wordsUsingDefaultSeparation(const QString &s, bool *hyphenated)
{
    return wordsUsingSeparators(s, nullptr, false, 1, false, hyphenated);
}

qsizetype numberOfWordsUsingSeparators(QStringView s, CharacterSetRep separators, int minLen, bool wildcard)
{
    return wordsOfCharacters(s.utf16(), s.size(), separators, false, minLen, wildcard, nullptr);
}

qsizetype numberOfWordsUsingDefaultSeparation(QStringView s, int minLen)
{
    return numberOfWordsUsingSeparators(s, nullptr, minLen, false);
}

qsizetype numberOfWordsInRange(
    QStringView s, qsizetype location, qsizetype length, CharacterSetRep separators, int minLen)
{
    if (!validRange(s, location, length))
        return 0;
    return numberOfWordsUsingSeparators(s.sliced(location, length), separators, minLen, false);
}

qsizetype componentsOfCharacters(
    const char16_t *units, qsizetype length, CharacterSetRep separators, QList<SeparationRange> *ranges)
{
    if (!units || length <= 0)
        return 0;
    if (!separators)
        separators = defaultComponentSeparators();
    return scanComponents(units, length, separators, [&](qsizetype a, qsizetype, qsizetype end) {
        if (ranges)
            ranges->append({ a, end - a });
    });
}

qsizetype numberOfComponentsOfCharacters(const char16_t *units, qsizetype length, CharacterSetRep separators)
{
    return componentsOfCharacters(units, length, separators, nullptr);
}

QStringList componentsUsingSeparators(const QString &s, CharacterSetRep separators, bool withSeparators)
{
    QStringList out;
    if (s.isEmpty())
        return out;
    if (!separators)
        separators = defaultComponentSeparators();
    out.reserve(s.size() / 16);
    scanComponents(
        QStringView(s).utf16(), s.size(), separators, [&](qsizetype a, qsizetype breakAt, qsizetype end) {
            if (breakAt > a)
                out.append(s.mid(a, breakAt - a));
            if (withSeparators && end > breakAt)
                out.append(s.mid(breakAt, end - breakAt));
        });
    return out;
}

QStringList componentsUsingDefaultSeparation(const QString &s)
{
    return componentsUsingSeparators(s, nullptr, false);
}

qsizetype numberOfComponentsUsingSeparators(QStringView s, CharacterSetRep separators)
{
    return componentsOfCharacters(s.utf16(), s.size(), separators, nullptr);
}

qsizetype numberOfComponentsInRange(
    QStringView s, qsizetype location, qsizetype length, CharacterSetRep separators)
{
    if (!validRange(s, location, length))
        return 0;
    return numberOfComponentsUsingSeparators(s.sliced(location, length), separators);
}

qsizetype numberOfParagraphs(
    QStringView s, qsizetype *words, qsizetype location, qsizetype length, int minLen)
{
    if (words)
        *words = 0;
    if (!validRange(s, location, length))
        return 0;
    const QStringView r = s.sliced(location, length);
    const CharacterSetRep lineBreaks = defaultLineSeparators();
    const CharacterSetRep white = whiteCharacterSetRep();
    qsizetype paragraphs = 0;
    bool blank = true;
    for (qsizetype i = 0; i <= r.size(); ++i) {
        if (i == r.size() || isCharacterPartOfSet(lineBreaks, r[i].unicode())) {
            paragraphs += blank ? 0 : 1;
            blank = true;
        } else if (!isCharacterPartOfSet(white, r[i].unicode())) {
            blank = false;
        }
    }
    if (words)
        *words = numberOfWordsUsingSeparators(r, nullptr, minLen, false);
    return paragraphs;
}

QString stringByEllipsizingAfterNCharacters(const QString &s, qsizetype k)
{
    if (k <= 0 || k >= s.size())
        return s;
    const CharacterSetRep alnum = alphaNumCharacterSetRep();
    const QStringView v(s);
    qsizetype i = k;
    while (i >= 0 && isCharacterPartOfSet(alnum, v[i].unicode()))
        --i;
    while (i >= 0 && !isCharacterPartOfSet(alnum, v[i].unicode()))
        --i;
    if (i < 0)
        return s;
    return s.left(i + 1) + QStringLiteral("...");
}

QString stringByEllipsizingAfterNWords(const QString &s, qsizetype k)
{
    if (k <= 0 || s.size() <= k)
        return s;
    QList<SeparationRange> ranges;
    const qsizetype count
        = wordsOfCharacters(QStringView(s).utf16(), s.size(), nullptr, false, 1, false, &ranges);
    if (count <= k)
        return s;
    const SeparationRange &last = ranges.at(k - 1);
    return s.left(last.location + last.length) + QStringLiteral("...");
}

QString stringByEllipsizingNLines(const QString &s, qsizetype lines, qsizetype k)
{
    if (s.isEmpty() || lines <= 0)
        return s;
    // Every break ends a line; empty lines are skipped, which also makes CR LF one break.
    QStringList kept;
    const QStringView v(s);
    qsizetype start = 0;
    for (qsizetype i = 0; i <= v.size() && kept.size() < lines; ++i) {
        if (i < v.size() && !detail::isLineBreakUnit(v[i].unicode()))
            continue;
        if (i > start)
            kept.append(stringByEllipsizingAfterNCharacters(s.mid(start, i - start), k));
        start = i + 1;
    }
    return kept.join(u'\n');
}

} // namespace orvel
