// Not API: the vCard syntax layer that the reader builds on (lines, folding, parameters, the value
// encodings and escapes).
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>
#include <QStringDecoder>
#include <QVarLengthArray>

#include <climits>
#include <memory>

namespace orvel::vcard {

using Bytes = QByteArrayView;

// Names and parameters are ASCII keywords; this runs for every one of them against each keyword.
inline char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; }

inline bool equalsNoCase(Bytes a, Bytes b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (asciiLower(a[i]) != asciiLower(b[i]))
            return false;
    }
    return true;
}

inline bool startsWithNoCase(Bytes a, Bytes prefix)
{
    return a.size() >= prefix.size() && equalsNoCase(a.first(prefix.size()), prefix);
}

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }

inline Bytes trimmed(Bytes b)
{
    while (!b.isEmpty() && (isBlank(b.front()) || b.front() == '\r' || b.front() == '\n'))
        b = b.sliced(1);
    while (!b.isEmpty() && (isBlank(b.back()) || b.back() == '\r' || b.back() == '\n'))
        b.chop(1);
    return b;
}

// Physical lines: a line ends at CR LF, LF or a lone CR.
class LineSource
{
public:
    explicit LineSource(Bytes data)
        : m_data(data)
    {
    }

    bool atEnd() const { return m_pos >= m_data.size(); }
    /// The first byte of the next line, or -1 at the end.
    int peek() const { return atEnd() ? -1 : static_cast<unsigned char>(m_data[m_pos]); }
    qsizetype position() const { return m_pos; }
    void rewind(qsizetype position) { m_pos = position; }

    /// The next line without its break; *ended tells whether a break followed it.
    Bytes next(bool *ended)
    {
        const char *begin = m_data.data() + m_pos;
        const char *end = m_data.data() + m_data.size();
        const char *p = begin;
        while (p != end && *p != '\n' && *p != '\r')
            ++p;
        const Bytes line(begin, p - begin);
        *ended = p != end;
        if (p != end && *p == '\r')
            ++p;
        if (p != end && *p == '\n')
            ++p;
        m_pos = p - m_data.data();
        return line;
    }

private:
    Bytes m_data;
    qsizetype m_pos = 0;
};

// One logical line: physical lines joined where the next one starts with a blank. RFC-style
// unfolding drops that blank; vCard 2.1 folds at white space and keeps it.
struct LogicalLine
{
    Bytes text; // into the data or into the buffer
    bool ended = true; // the input did not stop inside the line
    bool oversize = false;
};

/// Reads the next logical line. A line longer than VCardLimits::MaxPropertyBytes is marked
/// oversize and its text dropped, though all of it is consumed.
LogicalLine readLogicalLine(LineSource &source, QByteArray &buffer, bool keepFoldBlank);

struct Parameters
{
    bool quotedPrintable = false;
    bool base64 = false;
    bool uriValue = false;
    int pref = INT_MAX; // the lower, the more preferred
    Bytes charset;
    Bytes serviceType;
    QVarLengthArray<Bytes, 8> types;

    bool hasType(Bytes type) const
    {
        for (Bytes t : types) {
            if (equalsNoCase(t, type))
                return true;
        }
        return false;
    }
};

struct Property
{
    Bytes group;
    Bytes name;
    Parameters parameters;
    Bytes value;
};

/// Splits "group.NAME;PARAM=V;BARE:value"; false for a line without a colon.
bool parseProperty(Bytes line, Property &property);

/// Quoted-printable decoded; an "=" that starts no escape is kept.
QByteArray decodeQuotedPrintable(Bytes in);
/// Base64 as cards carry it: folded, sometimes with blanks, maybe without padding or in the URL-safe
/// alphabet. Characters outside the alphabet are skipped and "=" ends the data.
QByteArray decodeBase64(Bytes in);

// Decodes value bytes to text by charset, with one decoder per charset name for the whole read.
class TextDecoder
{
public:
    QString decode(Bytes bytes, Bytes charset)
    {
        if (!charset.isEmpty() && !equalsNoCase(charset, "UTF-8") && !equalsNoCase(charset, "UTF8")) {
            if (QStringDecoder *decoder = decoderFor(charset)) {
                decoder->resetState();
                return decoder->decode(bytes);
            }
        }
        if (bytes.isValidUtf8())
            return QString::fromUtf8(bytes);
        // Not UTF-8, and no (known) charset said what it is: most likely a Windows code page.
        if (QStringDecoder *decoder = decoderFor("windows-1252"))
            return decoder->decode(bytes);
        return QString::fromLatin1(bytes);
    }

private:
    QStringDecoder *decoderFor(Bytes charset)
    {
        const QByteArray key = charset.toByteArray().toLower();
        if (const auto it = m_decoders.constFind(key); it != m_decoders.cend())
            return it->get();
        auto decoder = std::make_shared<QStringDecoder>(key.constData(), QStringConverter::Flag::Stateless);
        if (!decoder->isValid())
            decoder.reset();
        // Hostile input may name many charsets: keep a few, make the others afresh.
        if (m_decoders.size() < 16)
            m_decoders.insert(key, decoder);
        else
            m_spare = decoder;
        return decoder.get();
    }

    QHash<QByteArray, std::shared_ptr<QStringDecoder>> m_decoders;
    std::shared_ptr<QStringDecoder> m_spare;
};

/// The escapes of text values removed: \n and \N are line breaks, \, \; \\ \: the character. vCard
/// 2.1 only knows \; (a backslash there is mostly part of the text, as in a Windows path).
QString unescaped(const QString &text, bool v21);
/// The components of a structured value (N, ADR, ORG), split at the semicolons no backslash
/// escapes, each unescaped and trimmed; at most 16.
QVarLengthArray<QString, 8> components(const QString &text, bool v21);

} // namespace orvel::vcard
