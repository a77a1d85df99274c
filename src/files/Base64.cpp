// Base64 through Qt's codec, with the white space of wrapped text taken out first.
#include "files/Base64.h"

#include <QStringDecoder>

namespace orvel {

using namespace Qt::StringLiterals;

QString encodebase64(const QString &s) { return encodedBase64Data(s.toUtf8()); }

QString encodedBase64Data(const QByteArray &data) { return QString::fromLatin1(data.toBase64()); }

QByteArray decodedBase64Data(const QString &s)
{
    QByteArray compact;
    compact.reserve(s.size());
    for (QChar c : s) {
        if (c == u' ' || c == u'\t' || c == u'\r' || c == u'\n')
            continue;
        // Anything beyond ASCII is outside the alphabet; let the decoder refuse it.
        compact.append(c.unicode() < 0x80 ? char(c.unicode()) : '*');
    }
    auto result = QByteArray::fromBase64Encoding(compact, QByteArray::AbortOnBase64DecodingErrors);
    if (!result)
        return QByteArray();
    // An empty text decodes to an empty (not a null) array.
    return result.decoded.isNull() ? QByteArray("") : result.decoded;
}

QString decodebase64(const QString &s) { return decodebase64UsingEncoding(s, QStringConverter::Utf8); }

QString decodebase64UsingEncoding(const QString &s, QStringConverter::Encoding encoding)
{
    const QByteArray bytes = decodedBase64Data(s);
    if (bytes.isNull())
        return QString();
    QStringDecoder decoder(encoding);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return QString();
    return text.isNull() ? u""_s : text;
}

} // namespace orvel
