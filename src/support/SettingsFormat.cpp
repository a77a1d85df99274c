// The settings file format: one "key = value" per line, values in a typed, JSON-like syntax.
#include "support/SettingsFormat_p.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <charconv>
#include <cmath>
#include <limits>

namespace orvel::detail {

namespace {

constexpr int MaxNesting = 64;

bool isBareKeyCharacter(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= u'a' && u <= u'z') || (u >= u'A' && u <= u'Z') || (u >= u'0' && u <= u'9') || u == u'_'
        || u == u'.' || u == u'-' || u == u'/';
}

QString quoted(const QString &s)
{
    QString out;
    out.reserve(s.size() + 2);
    out += u'"';
    for (QChar c : s) {
        switch (c.unicode()) {
        case u'"':
            out += QLatin1String("\\\"");
            break;
        case u'\\':
            out += QLatin1String("\\\\");
            break;
        case u'\n':
            out += QLatin1String("\\n");
            break;
        case u'\r':
            out += QLatin1String("\\r");
            break;
        case u'\t':
            out += QLatin1String("\\t");
            break;
        default:
            if (c.unicode() < 0x20 || c.unicode() == 0x7f || c.unicode() == 0x2028 || c.unicode() == 0x2029)
                out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                out += c;
        }
    }
    out += u'"';
    return out;
}

QString formatReal(double d)
{
    if (std::isnan(d))
        return QStringLiteral("nan");
    if (std::isinf(d))
        return d > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    QString s = QString::number(d, 'g', QLocale::FloatingPointShortest);
    // A real always shows it is one, so that 1.0 reads back as a real and not as the integer 1.
    if (!s.contains(u'.') && !s.contains(u'e'))
        s += QLatin1String(".0");
    return s;
}

/// Recursive-descent reader of one value.
class ValueParser
{
public:
    explicit ValueParser(QStringView text)
        : m_text(text)
    {
    }

    QVariant parseWhole()
    {
        QVariant v = value(0);
        skipSpace();
        if (!v.isValid() || m_pos != m_text.size())
            return QVariant();
        return v;
    }

    /// A key: bare characters or a quoted string; null when there is none.
    QString key()
    {
        skipSpace();
        if (peek() == u'"')
            return string();
        const qsizetype start = m_pos;
        while (m_pos < m_text.size() && isBareKeyCharacter(m_text.at(m_pos)))
            ++m_pos;
        if (m_pos == start)
            return QString();
        return m_text.mid(start, m_pos - start).toString();
    }

    bool expect(QChar c)
    {
        skipSpace();
        if (peek() != c)
            return false;
        ++m_pos;
        return true;
    }

    QStringView rest() const { return m_text.mid(m_pos); }

private:
    QChar peek() const { return m_pos < m_text.size() ? m_text.at(m_pos) : QChar(); }

    void skipSpace()
    {
        while (m_pos < m_text.size() && (m_text.at(m_pos) == u' ' || m_text.at(m_pos) == u'\t'))
            ++m_pos;
    }

    bool word(QLatin1String w)
    {
        if (!m_text.mid(m_pos).startsWith(w))
            return false;
        const qsizetype end = m_pos + w.size();
        if (end < m_text.size() && m_text.at(end).isLetterOrNumber())
            return false;
        m_pos = end;
        return true;
    }

    QVariant value(int depth)
    {
        if (depth > MaxNesting)
            return QVariant();
        skipSpace();
        const QChar c = peek();
        if (c == u'"') {
            QString s = string();
            return s.isNull() ? QVariant() : QVariant(s);
        }
        if (c == u'[')
            return list(depth);
        if (c == u'{')
            return map(depth);
        if (word(QLatin1String("true")))
            return QVariant(true);
        if (word(QLatin1String("false")))
            return QVariant(false);
        if (word(QLatin1String("nan")))
            return QVariant(std::numeric_limits<double>::quiet_NaN());
        if (word(QLatin1String("inf")))
            return QVariant(std::numeric_limits<double>::infinity());
        if (word(QLatin1String("-inf")))
            return QVariant(-std::numeric_limits<double>::infinity());
        return number();
    }

    QVariant number()
    {
        const qsizetype start = m_pos;
        if (peek() == u'-')
            ++m_pos;
        const qsizetype digitsStart = m_pos;
        while (peek().isDigit() && peek().unicode() < 0x80)
            ++m_pos;
        if (m_pos == digitsStart)
            return QVariant();
        bool real = false;
        if (peek() == u'.') {
            ++m_pos;
            const qsizetype fraction = m_pos;
            while (peek().unicode() >= u'0' && peek().unicode() <= u'9')
                ++m_pos;
            if (m_pos == fraction)
                return QVariant();
            real = true;
        }
        if (peek() == u'e' || peek() == u'E') {
            ++m_pos;
            if (peek() == u'+' || peek() == u'-')
                ++m_pos;
            const qsizetype exponent = m_pos;
            while (peek().unicode() >= u'0' && peek().unicode() <= u'9')
                ++m_pos;
            if (m_pos == exponent)
                return QVariant();
            real = true;
        }
        const QStringView digits = m_text.mid(start, m_pos - start);
        bool ok = false;
        if (!real) {
            const qint64 i = digits.toLongLong(&ok);
            if (ok)
                return QVariant(i);
        }
        // Too large for an integer: kept as the nearest real.
        const double d = QLocale::c().toDouble(digits, &ok);
        if (!ok && !std::isinf(d))
            return QVariant();
        return QVariant(d);
    }

    QString string()
    {
        if (peek() != u'"')
            return QString();
        ++m_pos;
        QString out(0, Qt::Uninitialized); // Empty, not null: "" is a value.
        while (m_pos < m_text.size()) {
            const QChar c = m_text.at(m_pos++);
            if (c == u'"')
                return out;
            if (c != u'\\') {
                out += c;
                continue;
            }
            if (m_pos >= m_text.size())
                return QString();
            const QChar e = m_text.at(m_pos++);
            switch (e.unicode()) {
            case u'"':
                out += u'"';
                break;
            case u'\\':
                out += u'\\';
                break;
            case u'/':
                out += u'/';
                break;
            case u'n':
                out += u'\n';
                break;
            case u'r':
                out += u'\r';
                break;
            case u't':
                out += u'\t';
                break;
            case u'b':
                out += u'\b';
                break;
            case u'f':
                out += u'\f';
                break;
            case u'u': {
                if (m_pos + 4 > m_text.size())
                    return QString();
                bool ok = false;
                const ushort code = m_text.mid(m_pos, 4).toUShort(&ok, 16);
                if (!ok)
                    return QString();
                m_pos += 4;
                out += QChar(code);
                break;
            }
            default:
                return QString();
            }
        }
        return QString(); // Unterminated.
    }

    QVariant list(int depth)
    {
        ++m_pos; // '['
        QVariantList items;
        skipSpace();
        if (peek() == u']') {
            ++m_pos;
            return items;
        }
        for (;;) {
            QVariant item = value(depth + 1);
            if (!item.isValid())
                return QVariant();
            items.append(item);
            skipSpace();
            if (peek() == u',') {
                ++m_pos;
                continue;
            }
            if (peek() == u']') {
                ++m_pos;
                return items;
            }
            return QVariant();
        }
    }

    QVariant map(int depth)
    {
        ++m_pos; // '{'
        QVariantMap entries;
        skipSpace();
        if (peek() == u'}') {
            ++m_pos;
            return entries;
        }
        for (;;) {
            skipSpace();
            const QString k = string();
            if (k.isNull() || !expect(u':'))
                return QVariant();
            QVariant item = value(depth + 1);
            if (!item.isValid())
                return QVariant();
            entries.insert(k, item);
            skipSpace();
            if (peek() == u',') {
                ++m_pos;
                continue;
            }
            if (peek() == u'}') {
                ++m_pos;
                return entries;
            }
            return QVariant();
        }
    }

    QStringView m_text;
    qsizetype m_pos = 0;
};

QString formatKey(const QString &key)
{
    bool bare = !key.isEmpty();
    for (QChar c : key)
        bare = bare && isBareKeyCharacter(c);
    return bare ? key : quoted(key);
}

} // namespace

QVariant normalisedValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return QVariant(value.toBool());
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return QVariant(value.toLongLong());
    case QMetaType::ULong:
    case QMetaType::ULongLong: {
        const qulonglong u = value.toULongLong();
        if (u > qulonglong(std::numeric_limits<qint64>::max()))
            return QVariant(double(u));
        return QVariant(qint64(u));
    }
    case QMetaType::Float: {
        // The float's shortest decimal form, so that 0.8f is kept as 0.8 and still reads back as 0.8f.
        const float f = value.toFloat();
        if (!std::isfinite(f))
            return QVariant(double(f));
        char text[32];
        const std::to_chars_result r = std::to_chars(text, text + sizeof text, f);
        double d = f;
        std::from_chars(text, r.ptr, d);
        return QVariant(d);
    }
    case QMetaType::Double:
        return QVariant(value.toDouble());
    case QMetaType::QString:
        return value.toString().isNull() ? QVariant(QString(0, Qt::Uninitialized)) : value;
    case QMetaType::QByteArray:
        return QVariant(QString::fromUtf8(value.toByteArray()));
    case QMetaType::QDateTime:
        return QVariant(value.toDateTime().toString(Qt::ISODateWithMs));
    case QMetaType::QDate:
        return QVariant(value.toDate().toString(Qt::ISODate));
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        QVariantList out;
        for (const QVariant &item : value.toList()) {
            const QVariant n = normalisedValue(item);
            if (n.isValid())
                out.append(n);
        }
        return out;
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        QVariantMap out;
        const QVariantMap in = value.toMap();
        for (auto it = in.cbegin(); it != in.cend(); ++it) {
            const QVariant n = normalisedValue(it.value());
            if (n.isValid())
                out.insert(it.key(), n);
        }
        return out;
    }
    default:
        if (value.isValid() && value.canConvert<QString>())
            return QVariant(value.toString());
        return QVariant();
    }
}

QString formatValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::LongLong:
        return QString::number(value.toLongLong());
    case QMetaType::Double:
        return formatReal(value.toDouble());
    case QMetaType::QString:
        return quoted(value.toString());
    case QMetaType::QVariantList: {
        QStringList items;
        for (const QVariant &item : value.toList())
            items.append(formatValue(item));
        return u'[' + items.join(QLatin1String(", ")) + u']';
    }
    case QMetaType::QVariantMap: {
        QStringList items;
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            items.append(quoted(it.key()) + QLatin1String(": ") + formatValue(it.value()));
        return u'{' + items.join(QLatin1String(", ")) + u'}';
    }
    default: {
        const QVariant n = normalisedValue(value);
        return n.isValid() && n.typeId() != value.typeId() ? formatValue(n) : QString();
    }
    }
}

QVariant parseValue(QStringView text) { return ValueParser(text).parseWhole(); }

QMap<QString, QVariant> parseSettings(const QByteArray &text)
{
    QMap<QString, QVariant> values;
    const QString decoded = QString::fromUtf8(text);
    for (QStringView line : QStringView(decoded).split(u'\n')) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        const QStringView trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(u'#'))
            continue;
        ValueParser parser(trimmed);
        const QString key = parser.key();
        if (key.isEmpty() || !parser.expect(u'='))
            continue;
        const QVariant value = parseValue(parser.rest());
        if (value.isValid())
            values.insert(key, value);
    }
    return values;
}

QByteArray formatSettings(const QMap<QString, QVariant> &values)
{
    QString out = QStringLiteral(
        "# Orvel Thumbnails settings: key = value (integer, real, true/false, \"string\", [list], {map})\n");
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        const QString value = formatValue(it.value());
        if (value.isEmpty())
            continue;
        out += formatKey(it.key()) + QLatin1String(" = ") + value + u'\n';
    }
    return out.toUtf8();
}

} // namespace orvel::detail
