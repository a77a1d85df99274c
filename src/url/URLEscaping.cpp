// Percent escaping and unescaping: the toolkit's two dialects, and the encoding-aware forms built on
// Qt's string encoders.
#include "url/URLStrings.h"

#include <QStringDecoder>
#include <QStringEncoder>

#include <array>
#include <bit>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#include <string_view>

namespace orvel {

namespace {

constexpr char16_t lowerHex[] = u"0123456789abcdef";
constexpr char upperHex[] = "0123456789ABCDEF";

// Which ASCII units each dialect escapes: bit 0 standard, bit 1 ASCII.
constexpr std::array<quint8, 128> escapeTable = [] {
    std::array<quint8, 128> t {};
    for (int c = 0; c < 128; ++c) {
        const bool alnum = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        t[c] = alnum ? 0 : 2;
    }
    for (char c : std::string_view(" #$%&+/:;=?@"))
        t[c] |= 1;
    return t;
}();

inline bool escapedIn(char16_t c, quint8 bit) { return c < 128 && (escapeTable[c] & bit); }

// For each dialect and ASCII unit, what it becomes: up to three units packed from the low end, the
// count in the top sixteen bits.
constexpr std::array<std::array<quint64, 128>, 2> escapeCodes = [] {
    std::array<std::array<quint64, 128>, 2> codes {};
    for (int dialect = 0; dialect < 2; ++dialect)
        for (int c = 0; c < 128; ++c)
            codes[dialect][c] = (escapeTable[c] & (dialect == 0 ? 1 : 2)) ? (quint64(3) << 48)
                    | (quint64(lowerHex[c & 15]) << 32) | (quint64(lowerHex[c >> 4]) << 16) | u'%'
                                                                          : (quint64(1) << 48) | quint64(c);
    return codes;
}();

constexpr std::array<qint8, 128> hexTable = [] {
    std::array<qint8, 128> t {};
    for (auto &v : t)
        v = -1;
    for (int c = 0; c < 10; ++c)
        t['0' + c] = qint8(c);
    for (int c = 0; c < 6; ++c)
        t['a' + c] = t['A' + c] = qint8(10 + c);
    return t;
}();

inline int hexValue(char16_t c) { return c < 128 ? hexTable[c] : -1; }

// The values the standard dialect decodes ("?" is decided per string).
constexpr std::array<bool, 128> standardDecodedTable = [] {
    std::array<bool, 128> t {};
    for (char c : std::string_view("\t\n\r $%&'+/:;=@~"))
        t[c] = true;
    return t;
}();

inline bool standardDecoded(int v) { return v < 128 && standardDecodedTable[v]; }

// Characters that may not stand in an address as they are (besides controls and non-ASCII).
inline bool illegalInURL(char16_t c)
{
    if (c <= 0x20 || c >= 0x7f)
        return true;
    switch (c) {
    case u'"':
    case u'<':
    case u'>':
    case u'\\':
    case u'^':
    case u'`':
    case u'{':
    case u'|':
    case u'}':
        return true;
    default:
        return false;
    }
}

} // namespace

QString stringByAddingPercentEscapesToURL(const QString &s, bool standard)
{
    const quint8 bit = standard ? 1 : 2;
    const char16_t *u = reinterpret_cast<const char16_t *>(s.utf16());
    const qsizetype n = s.size();
    qsizetype first = 0;
    while (first < n && !escapedIn(u[first], bit))
        ++first;
    if (first == n)
        return s;
    // One pass into a buffer of the largest size the result can have (and one unit more, for the
    // last four-unit store), cut to size at the end.
    QString out(first + 3 * (n - first) + 1, Qt::Uninitialized);
    char16_t *const begin = reinterpret_cast<char16_t *>(out.data());
    std::memcpy(begin, u, size_t(first) * sizeof(char16_t));
    char16_t *o = begin + first;
    // Branch-free: each unit stores its code (up to three units, and its length in the fourth) and
    // the output advances by that length.
    const std::array<quint64, 128> &codes = escapeCodes[standard ? 0 : 1];
    for (qsizetype i = first; i < n; ++i) {
        const char16_t c = u[i];
        const quint64 code = c < 128 ? codes[c] : (quint64(1) << 48) | c;
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
        std::memcpy(o, &code, sizeof code);
#else
        o[0] = char16_t(code);
        o[1] = char16_t(code >> 16);
        o[2] = char16_t(code >> 32);
#endif
        o += code >> 48;
    }
    out.resize(o - begin);
    return out;
}

QString stringByAddingStandardPercentEscapesToURL(const QString &s)
{
    return stringByAddingPercentEscapesToURL(s, true);
}
QString stringByAddingASCIIPercentEscapesToURL(const QString &s)
{
    return stringByAddingPercentEscapesToURL(s, false);
}

QString stringByAddingPercentEscapesToURL(const QString &s, const char *encoding)
{
    return stringByAddingPercentEscapesToURL(s, encoding, QStringView(), QStringView(u""));
}

QString stringByAddingPercentEscapesToURL(const QString &s, const char *encoding, QStringView leaveUnescaped)
{
    return stringByAddingPercentEscapesToURL(s, encoding, leaveUnescaped, QStringView(u""));
}

QString stringByAddingPercentEscapesToURL(
    const QString &s, const char *encoding, QStringView leaveUnescaped, QStringView toBeEscaped)
{
    if (s.isNull() || !encoding)
        return QString();
    if (toBeEscaped.isNull())
        toBeEscaped = u":?&;@";
    QStringEncoder encoder(encoding, QStringConverter::Flag::Stateless);
    if (!encoder.isValid())
        return QString();
    auto escaped = [&](char16_t c) {
        if (leaveUnescaped.contains(QChar(c)))
            return false;
        return illegalInURL(c) || toBeEscaped.contains(QChar(c));
    };
    QString out;
    out.reserve(s.size() + s.size() / 4);
    const qsizetype n = s.size();
    qsizetype i = 0;
    while (i < n) {
        if (!escaped(s.at(i).unicode())) {
            out.append(s.at(i));
            ++i;
            continue;
        }
        // A run of units to escape is encoded in one piece, so surrogate pairs and multi-unit
        // sequences stay together.
        qsizetype j = i + 1;
        while (j < n && escaped(s.at(j).unicode()))
            ++j;
        const QByteArray bytes = encoder.encode(QStringView(s).sliced(i, j - i));
        if (encoder.hasError())
            return QString();
        for (const char b : bytes) {
            const auto v = static_cast<unsigned char>(b);
            out.append(u'%');
            out.append(QLatin1Char(upperHex[v >> 4]));
            out.append(QLatin1Char(upperHex[v & 15]));
        }
        i = j;
    }
    return out;
}

namespace {

// Writes the unit at in[i] (decoded when it starts an escape of the dialect) to to; answers how
// many input units it took.
inline qsizetype decodeOne(
    const char16_t *in, qsizetype i, qsizetype length, char16_t &to, bool standard, bool questionMark)
{
    const char16_t c = in[i];
    if (c == u'%' && i + 2 < length) {
        const int hi = hexValue(in[i + 1]);
        const int lo = hexValue(in[i + 2]);
        const int v = hi * 16 + lo;
        if ((hi | lo) >= 0 && (standard ? (standardDecoded(v) || (v == '?' && !questionMark)) : v < 128)) {
            to = char16_t(v);
            return 3;
        }
    }
    to = c;
    return 1;
}

// Decodes in[from, length) into out (which may be in itself: the output never overtakes the input)
// and answers the output length; questionMark tells whether the whole text holds a literal "?".
qsizetype decodeEscapes(
    const char16_t *in, qsizetype from, qsizetype length, char16_t *out, bool standard, bool questionMark)
{
    qsizetype o = from;
    qsizetype i = from;
#if defined(__SSE2__)
    // With separate buffers, eight units at a time up to the next "%": a block is stored whole and the
    // output advances by the units before its first "%".
    if (out != in) {
        const __m128i percent = _mm_set1_epi16('%');
        while (i + 8 <= length) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + i));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(out + o), v);
            const unsigned mask = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi16(v, percent)));
            if (!mask) {
                i += 8;
                o += 8;
                continue;
            }
            const int k = std::countr_zero(mask) / 2;
            i += k;
            o += k;
            i += decodeOne(in, i, length, out[o++], standard, questionMark);
        }
    }
#endif
    while (i < length)
        i += decodeOne(in, i, length, out[o++], standard, questionMark);
    return o;
}

} // namespace

qsizetype convertPercentEscapesOfURL(char16_t *units, qsizetype length, bool standard)
{
    if (!units || length < 3)
        return length < 0 ? 0 : length;
    const QStringView all(units, length);
    const qsizetype first = all.indexOf(u'%');
    if (first < 0)
        return length;
    return decodeEscapes(units, first, length, units, standard, standard && all.contains(u'?'));
}

namespace {

QString replacingEscapes(const QString &s, bool standard)
{
    const qsizetype first = s.size() < 3 ? -1 : s.indexOf(u'%');
    if (first < 0)
        return s;
    QString out(s.size(), Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    const char16_t *u = reinterpret_cast<const char16_t *>(s.utf16());
    std::memcpy(o, u, size_t(first) * sizeof(char16_t));
    const qsizetype n = decodeEscapes(u, first, s.size(), o, standard, standard && s.contains(u'?'));
    if (n == s.size())
        return s;
    out.resize(n);
    return out;
}

} // namespace

QString stringByReplacingStandardPercentEscapesOfURL(const QString &s) { return replacingEscapes(s, true); }
QString stringByReplacingASCIIPercentEscapesOfURL(const QString &s) { return replacingEscapes(s, false); }

QString stringByReplacingPercentEscapesOfURL(const QString &s, const char *encoding)
{
    if (s.isNull() || !encoding)
        return QString();
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    if (!decoder.isValid())
        return QString();
    if (!s.contains(u'%'))
        return s;
    QString out;
    out.reserve(s.size());
    QByteArray bytes;
    const qsizetype n = s.size();
    qsizetype i = 0;
    while (i < n) {
        if (s.at(i) != u'%') {
            out.append(s.at(i));
            ++i;
            continue;
        }
        // A run of escapes is one byte sequence in the encoding.
        bytes.clear();
        while (i < n && s.at(i) == u'%') {
            if (i + 2 >= n)
                return QString();
            const int hi = hexValue(s.at(i + 1).unicode());
            const int lo = hexValue(s.at(i + 2).unicode());
            if (hi < 0 || lo < 0)
                return QString();
            bytes.append(char(hi * 16 + lo));
            i += 3;
        }
        out.append(decoder.decode(bytes));
        if (decoder.hasError())
            return QString();
    }
    return out;
}

QString stringByReplacingPercentEscapesOfURL(const QString &s)
{
    return stringByReplacingPercentEscapesOfURL(s, "UTF-8");
}

} // namespace orvel
