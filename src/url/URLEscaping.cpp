// Percent escaping and unescaping: the toolkit's two dialects, and the encoding-aware forms built on
// Qt's string encoders.
#include "url/URLStrings.h"

#include <QStringDecoder>
#include <QStringEncoder>

namespace orvel {

namespace {

constexpr char16_t lowerHex[] = u"0123456789abcdef";
constexpr char upperHex[] = "0123456789ABCDEF";

inline bool isAsciiAlnum(char16_t c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

inline bool standardEscaped(char16_t c)
{
    switch (c) {
    case u' ':
    case u'#':
    case u'$':
    case u'%':
    case u'&':
    case u'+':
    case u'/':
    case u':':
    case u';':
    case u'=':
    case u'?':
    case u'@':
        return true;
    default:
        return false;
    }
}

inline bool escapedIn(char16_t c, bool standard)
{
    return standard ? standardEscaped(c) : (c < 128 && !isAsciiAlnum(c));
}

inline int hexValue(char16_t c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

// The values the standard dialect decodes ("?" is decided per string).
inline bool standardDecoded(int v)
{
    switch (v) {
    case '\t':
    case '\n':
    case '\r':
    case ' ':
    case '$':
    case '%':
    case '&':
    case '\'':
    case '+':
    case '/':
    case ':':
    case ';':
    case '=':
    case '@':
    case '~':
        return true;
    default:
        return false;
    }
}

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
    const char16_t *u = reinterpret_cast<const char16_t *>(s.utf16());
    const qsizetype n = s.size();
    qsizetype count = 0;
    for (qsizetype i = 0; i < n; ++i)
        count += escapedIn(u[i], standard);
    if (count == 0)
        return s;
    QString out(n + 2 * count, Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = u[i];
        if (escapedIn(c, standard)) {
            *o++ = u'%';
            *o++ = lowerHex[(c >> 4) & 15];
            *o++ = lowerHex[c & 15];
        } else {
            *o++ = c;
        }
    }
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

qsizetype convertPercentEscapesOfURL(char16_t *units, qsizetype length, bool standard)
{
    if (!units || length < 3)
        return length < 0 ? 0 : length;
    bool questionMark = false;
    if (standard)
        for (qsizetype i = 0; i < length && !questionMark; ++i)
            questionMark = units[i] == u'?';
    qsizetype o = 0;
    qsizetype i = 0;
    while (i < length) {
        const char16_t c = units[i];
        if (c == u'%' && i + 2 < length) {
            const int hi = hexValue(units[i + 1]);
            const int lo = hi < 0 ? -1 : hexValue(units[i + 2]);
            if (lo >= 0) {
                const int v = hi * 16 + lo;
                const bool decode = standard ? (standardDecoded(v) || (v == '?' && !questionMark)) : v < 128;
                if (decode) {
                    units[o++] = char16_t(v);
                    i += 3;
                    continue;
                }
            }
        }
        units[o++] = c;
        ++i;
    }
    return o;
}

namespace {

QString replacingEscapes(const QString &s, bool standard)
{
    if (s.size() < 3 || !s.contains(u'%'))
        return s;
    QString out = s;
    const qsizetype n
        = convertPercentEscapesOfURL(reinterpret_cast<char16_t *>(out.data()), out.size(), standard);
    if (n == s.size())
        return s;
    out.truncate(n);
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
