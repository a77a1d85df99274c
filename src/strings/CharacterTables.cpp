// Character-set reps and conversion tables, built once from Qt's Unicode data.
#include "strings/CharacterTables.h"
#include "strings/CharacterClasses_p.h"

#include <QString>
#include <QStringDecoder>
#include <QStringEncoder>
#include <algorithm>
#include <atomic>
#include <cctype>

namespace orvel {

namespace detail {

static QChar::Category categoryOf(char16_t c) { return QChar::category(char32_t(c)); }

bool isWhitespaceClass(char16_t c) { return c == 0x0009 || categoryOf(c) == QChar::Separator_Space; }

bool isWhitespaceAndNewlineClass(char16_t c)
{
    switch (categoryOf(c)) {
    case QChar::Separator_Space:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return (c >= 0x0009 && c <= 0x000D) || c == 0x0085;
    }
}

bool isPunctuationClass(char16_t c)
{
    const QChar::Category k = categoryOf(c);
    return k >= QChar::Punctuation_Connector && k <= QChar::Punctuation_Other;
}

bool isSymbolClass(char16_t c)
{
    const QChar::Category k = categoryOf(c);
    return k >= QChar::Symbol_Math && k <= QChar::Symbol_Other;
}

bool isControlClass(char16_t c)
{
    const QChar::Category k = categoryOf(c);
    return k == QChar::Other_Control || k == QChar::Other_Format;
}

bool isIllegalClass(char16_t c) { return categoryOf(c) == QChar::Other_NotAssigned; }

} // namespace detail

namespace {

using detail::RepBits;

bool isLetterClass(char16_t c)
{
    // Letters and marks: the marks belong so that a decomposed letter stays one word.
    const QChar::Category k = QChar::category(char32_t(c));
    return (k >= QChar::Letter_Uppercase && k <= QChar::Letter_Other)
        || (k >= QChar::Mark_NonSpacing && k <= QChar::Mark_Enclosing);
}

bool isNumberClass(char16_t c)
{
    const QChar::Category k = QChar::category(char32_t(c));
    return k >= QChar::Number_DecimalDigit && k <= QChar::Number_Other;
}

// The reps live in static storage: building them can neither fail nor be seen half done
// (function-local statics are initialised once, thread-safely).
const RepBits &letterRep()
{
    static const RepBits rep = [] {
        RepBits r;
        r.addWhere(isLetterClass);
        return r;
    }();
    return rep;
}

const RepBits &lowercaseRep()
{
    static const RepBits rep = [] {
        RepBits r;
        r.addWhere([](char16_t c) { return QChar::category(char32_t(c)) == QChar::Letter_Lowercase; });
        return r;
    }();
    return rep;
}

const RepBits &uppercaseRep()
{
    // Lu only: title-case letters (Lt) stay outside, so the case tables leave them as they are.
    static const RepBits rep = [] {
        RepBits r;
        r.addWhere([](char16_t c) { return QChar::category(char32_t(c)) == QChar::Letter_Uppercase; });
        return r;
    }();
    return rep;
}

using Table = std::array<char16_t, ConversionTableSize>;

// Builds a base table: the identity, except that a member of the source class gets the result of
// the transformation when that result is exactly one code unit (full mappings longer than one unit,
// as 'ß' to "SS", leave the entry as it is). The loop stops one short of U+FFFF, whose entry keeps
// the identity value.
template <typename Transform> Table buildBaseTable(const RepBits &source, Transform transform)
{
    Table t;
    for (char32_t c = 0; c <= 0xFFFF; ++c)
        t[c] = char16_t(c);
    for (char32_t c = 0; c < 0xFFFF; ++c) {
        if (!source.has(char16_t(c)))
            continue;
        const QString mapped = transform(char16_t(c));
        if (mapped.size() == 1)
            t[c] = mapped.at(0).unicode();
    }
    return t;
}

QString foldDiacritics(char16_t c)
{
    // Diacritic folding: decompose canonically, drop the combining marks, compose again.
    // Units without a canonical decomposition fold to themselves, except a lone mark, which folds
    // to nothing and so keeps its own entry.
    const QChar ch(c);
    if (ch.decompositionTag() != QChar::Canonical)
        return QString(ch);
    const QString nfd = QString(ch).normalized(QString::NormalizationForm_D);
    QString kept;
    for (QChar u : nfd)
        if (u.category() != QChar::Mark_NonSpacing && u.category() != QChar::Mark_Enclosing)
            kept.append(u);
    return kept.normalized(QString::NormalizationForm_C);
}

const Table &lowerTable()
{
    // Full lower-case mapping on a one-unit string, without a locale ('İ' lowers to two units).
    static const Table t
        = buildBaseTable(uppercaseRep(), [](char16_t c) { return QString(QChar(c)).toLower(); });
    return t;
}

const Table &upperTable()
{
    // Full upper-case mapping on a one-unit string, without a locale ('ß' and 'ﬁ' upper to two units).
    static const Table t
        = buildBaseTable(lowercaseRep(), [](char16_t c) { return QString(QChar(c)).toUpper(); });
    return t;
}

const Table &umlautsTable()
{
    static const Table t = buildBaseTable(letterRep(), foldDiacritics);
    return t;
}

Table compose(const Table &outer, const Table &inner)
{
    Table t;
    for (char32_t c = 0; c < 0xFFFF; ++c)
        t[c] = outer[inner[c]];
    t[0xFFFF] = 0xFFFF;
    return t;
}

} // namespace

CharacterSetRep emptyCharacterSetRep()
{
    static const RepBits rep;
    return rep.data();
}

CharacterSetRep spaceCharacterSetRep()
{
    static const RepBits rep = [] {
        RepBits r;
        r.addWhere(detail::isWhitespaceClass);
        r.add({ 0x0000, 0x0009 });
        return r;
    }();
    return rep.data();
}

CharacterSetRep whiteCharacterSetRep()
{
    // Counts U+0003, U+FFFC (an attachment's placeholder) and U+FEFF as blank, so that text pasted
    // from rich documents trims cleanly.
    static const RepBits rep = [] {
        RepBits r;
        r.addWhere(detail::isWhitespaceAndNewlineClass);
        r.add({ 0x0000, 0x000C, 0x000A, 0x000D, 0x2028, 0x2029, 0x0003, 0xFFFC, 0x0009, 0xFEFF, 0x00A0 });
        return r;
    }();
    return rep.data();
}

CharacterSetRep alphaCharacterSetRep() { return letterRep().data(); }

CharacterSetRep alphaNumCharacterSetRep()
{
    static const RepBits rep = [] {
        RepBits r;
        r.addWhere([](char16_t c) { return isLetterClass(c) || isNumberClass(c); });
        return r;
    }();
    return rep.data();
}

CharacterSetRep digitCharacterSetRep()
{
    static const RepBits rep = [] {
        RepBits r;
        r.addWhere([](char16_t c) { return QChar::category(char32_t(c)) == QChar::Number_DecimalDigit; });
        return r;
    }();
    return rep.data();
}

CharacterSetRep lowerCharacterSetRep() { return lowercaseRep().data(); }
CharacterSetRep upperCharacterSetRep() { return uppercaseRep().data(); }

char16_t firstAlphaCharacter()
{
    // 0 means "not yet computed"; when the rep has no member the scan simply runs again.
    static std::atomic<char16_t> cached { 0 };
    char16_t c = cached.load(std::memory_order_relaxed);
    if (c != 0)
        return c;
    const RepBits &rep = letterRep();
    for (char32_t u = 0; u <= 0xFFFF; ++u)
        if (rep.has(char16_t(u))) {
            cached.store(char16_t(u), std::memory_order_relaxed);
            return char16_t(u);
        }
    return 0;
}

char16_t lastAlphaCharacter()
{
    static std::atomic<char16_t> cached { 0 };
    char16_t c = cached.load(std::memory_order_relaxed);
    if (c != 0)
        return c;
    const RepBits &rep = letterRep();
    for (int u = 0xFFFF; u >= 0; --u)
        if (rep.has(char16_t(u))) {
            cached.store(char16_t(u), std::memory_order_relaxed);
            return char16_t(u);
        }
    return 0;
}

ConversionTable lowerCharsTable() { return lowerTable().data(); }
ConversionTable upperCharsTable() { return upperTable().data(); }
ConversionTable umlautsCharsTable() { return umlautsTable().data(); }

ConversionTable lowerUmlautsCharsTable()
{
    static const Table t = compose(lowerTable(), umlautsTable());
    return t.data();
}

ConversionTable upperUmlautsCharsTable()
{
    static const Table t = compose(upperTable(), umlautsTable());
    return t.data();
}

char16_t toLower(char16_t c) { return lowerCharsTable()[c]; }
char16_t toUpper(char16_t c) { return upperCharsTable()[c]; }
char16_t umlautsToAscii(char16_t c) { return umlautsCharsTable()[c]; }
char16_t umlautsToLowerAscii(char16_t c) { return lowerUmlautsCharsTable()[c]; }
char16_t umlautsToUpperAscii(char16_t c) { return upperUmlautsCharsTable()[c]; }

char16_t toAscii(char16_t c)
{
    const char16_t u = umlautsCharsTable()[c];
    return u < 128 ? u : u' ';
}

char16_t toLowerAscii(char16_t c)
{
    const char16_t u = umlautsCharsTable()[c];
    return u > 127 ? u' ' : char16_t(std::tolower(int(u)));
}

char16_t toUpperAscii(char16_t c)
{
    const char16_t u = umlautsCharsTable()[c];
    return u > 127 ? u' ' : char16_t(std::toupper(int(u)));
}

qsizetype convertUTF8ToUnicode(const char *bytes, qsizetype length, char16_t *out, qsizetype capacity)
{
    return convertEncodingToUnicode("UTF-8", bytes, length, out, capacity);
}

qsizetype convertUnicodeToUTF8(const char16_t *units, qsizetype length, char *out, qsizetype capacity)
{
    if (!units || !out || length < 0 || capacity < 0)
        return 0;
    QStringEncoder encoder(QStringEncoder::Utf8, QStringConverter::Flag::Stateless);
    const QByteArray bytes = encoder.encode(QStringView(units, length));
    if (encoder.hasError() || bytes.size() > capacity)
        return 0;
    std::copy(bytes.cbegin(), bytes.cend(), out);
    return bytes.size();
}

qsizetype convertEncodingToUnicode(
    const char *encoding, const char *bytes, qsizetype length, char16_t *out, qsizetype capacity)
{
    if (!encoding || !bytes || !out || length < 0 || capacity < 0)
        return 0;
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    if (!decoder.isValid())
        return 0;
    const QString text = decoder.decode(QByteArrayView(bytes, length));
    if (decoder.hasError() || text.size() > capacity)
        return 0;
    const QStringView view(text);
    std::copy(view.utf16(), view.utf16() + view.size(), out);
    return text.size();
}

} // namespace orvel
