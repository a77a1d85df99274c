// The vCard syntax layer: physical and logical lines, parameters, quoted-printable, base64,
// charsets and escapes.
#include "extras/VCardSyntax_p.h"

#include "extras/VCardReader.h"

#include "strings/StringExtensions.h"

#include <array>

using namespace Qt::StringLiterals;

namespace orvel::vcard {

LogicalLine readLogicalLine(LineSource &source, QByteArray &buffer, bool keepFoldBlank)
{
    LogicalLine line;
    line.text = source.next(&line.ended);
    line.oversize = line.text.size() > VCardLimits::MaxPropertyBytes;
    if (!isBlank(char(source.peek())))
        return line;
    buffer.resize(0); // keeps the capacity for the next folded line
    if (!line.oversize)
        buffer.append(line.text);
    while (isBlank(char(source.peek()))) {
        Bytes part = source.next(&line.ended);
        if (!keepFoldBlank)
            part = part.sliced(1);
        if (line.oversize || buffer.size() + part.size() > VCardLimits::MaxPropertyBytes)
            line.oversize = true;
        else
            buffer.append(part);
    }
    if (line.oversize)
        buffer.resize(0);
    line.text = buffer;
    return line;
}

namespace {

Bytes unquoted(Bytes b)
{
    b = trimmed(b);
    if (b.size() >= 2 && b.front() == '"' && b.back() == '"')
        b = b.sliced(1, b.size() - 2);
    return b;
}

void addParameter(Parameters &p, Bytes key, Bytes values)
{
    // Parameter values may be lists, quoted as a whole or one by one: TYPE=home,work, TYPE="home,work".
    const auto eachValue = [&](auto &&use) {
        const Bytes list = unquoted(values);
        qsizetype start = 0;
        for (qsizetype i = 0; i <= list.size(); ++i) {
            if (i == list.size() || list[i] == ',') {
                if (const Bytes v = unquoted(list.sliced(start, i - start)); !v.isEmpty())
                    use(v);
                start = i + 1;
            }
        }
    };
    const auto encoding = [&](Bytes v) {
        if (equalsNoCase(v, "QUOTED-PRINTABLE"))
            p.quotedPrintable = true;
        else if (equalsNoCase(v, "BASE64") || equalsNoCase(v, "B"))
            p.base64 = true;
    };
    const auto type = [&](Bytes v) {
        if (equalsNoCase(v, "PREF"))
            p.pref = std::min(p.pref, 1);
        else if (p.types.size() < 16)
            p.types.append(v);
    };
    if (key.isEmpty()) {
        // vCard 2.1 lets a parameter be its bare value: TEL;HOME;VOICE, EMAIL;QUOTED-PRINTABLE.
        eachValue([&](Bytes v) {
            if (equalsNoCase(v, "QUOTED-PRINTABLE") || equalsNoCase(v, "BASE64"))
                encoding(v);
            else if (!equalsNoCase(v, "8BIT") && !equalsNoCase(v, "7BIT"))
                type(v);
        });
    } else if (equalsNoCase(key, "TYPE")) {
        eachValue(type);
    } else if (equalsNoCase(key, "ENCODING")) {
        eachValue(encoding);
    } else if (equalsNoCase(key, "CHARSET")) {
        p.charset = unquoted(values);
    } else if (equalsNoCase(key, "PREF")) {
        bool ok = false;
        const int rank = unquoted(values).toInt(&ok);
        if (ok && rank > 0)
            p.pref = std::min(p.pref, rank);
    } else if (equalsNoCase(key, "VALUE")) {
        const Bytes v = unquoted(values);
        p.uriValue = equalsNoCase(v, "URI") || equalsNoCase(v, "URL");
    } else if (equalsNoCase(key, "X-SERVICE-TYPE")) {
        p.serviceType = unquoted(values);
    }
}

} // namespace

bool parseProperty(Bytes line, Property &property)
{
    qsizetype i = 0;
    while (i < line.size() && isBlank(line[i]))
        ++i;
    const qsizetype nameStart = i;
    while (i < line.size() && line[i] != ';' && line[i] != ':')
        ++i;
    if (i == line.size())
        return false;
    Bytes name = trimmed(line.sliced(nameStart, i - nameStart));
    const qsizetype dot = name.lastIndexOf('.');
    property.group = dot < 0 ? Bytes() : name.first(dot);
    property.name = name.sliced(dot + 1);
    property.parameters = Parameters();
    int count = 0;
    while (line[i] == ';') {
        const qsizetype start = ++i;
        qsizetype equals = -1;
        bool quoted = false;
        while (i < line.size() && (quoted || (line[i] != ';' && line[i] != ':'))) {
            if (line[i] == '"')
                quoted = !quoted;
            else if (line[i] == '=' && equals < 0 && !quoted)
                equals = i;
            ++i;
        }
        if (i == line.size())
            return false;
        if (++count <= VCardLimits::MaxParameters) {
            if (equals < 0)
                addParameter(property.parameters, Bytes(), line.sliced(start, i - start));
            else
                addParameter(property.parameters, trimmed(line.sliced(start, equals - start)),
                    line.sliced(equals + 1, i - equals - 1));
        }
    }
    property.value = line.sliced(i + 1);
    return true;
}

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace

QByteArray decodeQuotedPrintable(Bytes in)
{
    QByteArray out;
    out.reserve(in.size());
    for (qsizetype i = 0; i < in.size(); ++i) {
        const char c = in[i];
        if (c != '=') {
            out.append(c);
            continue;
        }
        if (i + 2 < in.size() && hexDigit(in[i + 1]) >= 0 && hexDigit(in[i + 2]) >= 0) {
            out.append(char(hexDigit(in[i + 1]) * 16 + hexDigit(in[i + 2])));
            i += 2;
        } else if (i + 1 < in.size() && (in[i + 1] == '\r' || in[i + 1] == '\n')) {
            // A soft line break left inside the value.
            ++i;
            if (in[i] == '\r' && i + 1 < in.size() && in[i + 1] == '\n')
                ++i;
        } else if (i + 1 < in.size()) {
            out.append(c); // not an escape: kept as written
        }
    }
    return out;
}

QByteArray decodeBase64(Bytes in)
{
    static const auto Table = [] {
        std::array<signed char, 256> t {};
        t.fill(-1);
        const char *alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (int i = 0; i < 64; ++i)
            t[static_cast<unsigned char>(alphabet[i])] = static_cast<signed char>(i);
        t['-'] = 62; // the URL-safe alphabet, as some exporters write it
        t['_'] = 63;
        return t;
    }();
    QByteArray out(in.size() / 4 * 3 + 3, Qt::Uninitialized);
    char *o = out.data();
    unsigned bits = 0;
    int count = 0;
    for (char c : in) {
        if (c == '=')
            break;
        const int v = Table[static_cast<unsigned char>(c)];
        if (v < 0)
            continue;
        bits = (bits << 6) | unsigned(v);
        if (++count == 4) {
            *o++ = char(bits >> 16);
            *o++ = char(bits >> 8);
            *o++ = char(bits);
            bits = 0;
            count = 0;
        }
    }
    if (count == 2) {
        *o++ = char(bits >> 4);
    } else if (count == 3) {
        *o++ = char(bits >> 10);
        *o++ = char(bits >> 2);
    }
    out.truncate(o - out.constData());
    return out;
}

QString unescaped(const QString &text, bool v21)
{
    if (!text.contains(u'\\'))
        return text;
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != u'\\' || i + 1 == text.size()) {
            out.append(c);
            continue;
        }
        const QChar n = text[i + 1];
        if (n == u';' || (!v21 && (n == u',' || n == u'\\' || n == u':'))) {
            out.append(n);
            ++i;
        } else if (!v21 && (n == u'n' || n == u'N')) {
            out.append(u'\n');
            ++i;
        } else {
            out.append(c);
        }
    }
    return out;
}

QVarLengthArray<QString, 8> components(const QString &text, bool v21)
{
    QVarLengthArray<QString, 8> parts;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] == u'\\') {
            ++i;
            continue;
        }
        if (i >= text.size() || text[i] == u';') {
            parts.append(stringByTrimmingWhiteSpaces(unescaped(text.mid(start, i - start), v21)));
            start = i + 1;
            if (parts.size() == 16)
                break;
        }
    }
    return parts;
}

} // namespace orvel::vcard
