// NumberFormatter: numbers and byte counts as text, with the user's grouping and decimal separators.
#include "support/NumberFormatter.h"

#include "support/Bundle.h"

#include <charconv>
#include <cmath>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

// A minus sign written in a pattern, kept apart from the text around it until the locale is known.
constexpr char16_t MinusPlaceholder = u'\uE000';

/// The sections of format split at the ';'s outside quotes; empty when a quote is left open.
std::vector<QStringView> splitSections(QStringView format)
{
    std::vector<QStringView> sections;
    bool quoted = false;
    qsizetype start = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        if (format[i] == u'\'')
            quoted = !quoted;
        else if (format[i] == u';' && !quoted) {
            sections.push_back(format.mid(start, i - start));
            start = i + 1;
        }
    }
    if (quoted)
        return {};
    sections.push_back(format.mid(start));
    return sections;
}

/// digits rounded half to even at places decimal places (carrying into integer when needed).
void roundHalfEven(QString &integer, QString &fraction, int places)
{
    if (fraction.size() <= places)
        return;
    const char16_t first = fraction[places].unicode();
    bool up = first > u'5';
    if (first == u'5') {
        bool beyondHalf = false;
        for (qsizetype i = places + 1; i < fraction.size() && !beyondHalf; ++i)
            beyondHalf = fraction[i] != u'0';
        const QChar last = places > 0 ? fraction[places - 1] : (integer.isEmpty() ? u'0' : integer.back());
        up = beyondHalf || (last.unicode() - u'0') % 2 == 1;
    }
    fraction.truncate(places);
    if (!up)
        return;
    QString digits = integer + fraction;
    qsizetype i = digits.size() - 1;
    for (; i >= 0 && digits[i] == u'9'; --i)
        digits[i] = u'0';
    if (i >= 0)
        digits[i] = QChar(digits[i].unicode() + 1);
    else
        digits.prepend(u'1');
    integer = digits.left(digits.size() - places);
    fraction = digits.right(places);
}

} // namespace

NumberFormatter::NumberFormatter()
    : NumberFormatter(u"#,##0.###")
{
}

NumberFormatter::NumberFormatter(QStringView format) { setFormat(format); }

bool NumberFormatter::setFormat(QStringView format)
{
    m_format = format.toString();
    m_sections.clear();
    const std::vector<QStringView> parts = splitSections(format);
    if (format.isEmpty() || parts.empty() || parts.size() > 3)
        return false;
    std::vector<Section> sections;
    for (size_t index = 0; index < parts.size(); ++index) {
        const QStringView part = parts[index];
        // The zero section of three may be text alone ("'none'").
        const bool mayBeText = parts.size() == 3 && index == 1;
        Section section;
        enum { Prefix, Number, Suffix } where = Prefix;
        bool quoted = false;
        bool inFraction = false;
        bool grouped = false;
        int digitPlaces = 0;
        int sinceGroup = 0;
        for (qsizetype i = 0; i < part.size(); ++i) {
            const QChar c = part[i];
            if (c == u'\'') {
                // '' is a quote, inside or outside a quoted text.
                if (i + 1 < part.size() && part[i + 1] == u'\'') {
                    (where == Prefix ? section.prefix : section.suffix) += u'\'';
                    ++i;
                } else {
                    quoted = !quoted;
                }
                if (where == Number)
                    where = Suffix;
                continue;
            }
            const bool special = !quoted && (c == u'#' || c == u'0' || c == u',' || c == u'.');
            if (!special) {
                if (where == Number)
                    where = Suffix;
                const QChar literal = !quoted && c == u'-' ? QChar(MinusPlaceholder) : c;
                (where == Prefix ? section.prefix : section.suffix) += literal;
                continue;
            }
            if (where == Suffix)
                return false; // digits again after the suffix began
            where = Number;
            if (c == u'.') {
                if (inFraction)
                    return false;
                inFraction = true;
            } else if (c == u',') {
                if (inFraction)
                    return false;
                grouped = true;
                sinceGroup = 0;
            } else {
                ++digitPlaces;
                if (inFraction) {
                    ++section.maxFractionDigits;
                    if (c == u'0')
                        ++section.minFractionDigits;
                } else {
                    ++sinceGroup;
                    if (c == u'0')
                        ++section.minIntegerDigits;
                }
            }
        }
        if ((digitPlaces == 0 && !mayBeText) || (grouped && sinceGroup == 0))
            return false;
        section.groupingSize = grouped ? sinceGroup : 0;
        section.hasDigits = digitPlaces > 0;
        sections.push_back(section);
    }
    if (sections.size() == 1) {
        Section negative = sections[0];
        negative.prefix.prepend(QChar(MinusPlaceholder));
        sections = { sections[0], sections[0], negative };
    } else if (sections.size() == 2) {
        sections = { sections[0], sections[0], sections[1] };
    }
    m_sections = std::move(sections);
    return true;
}

QString NumberFormatter::render(
    const Section &section, QStringView integerDigits, QStringView fractionDigits) const
{
    const QLocale locale = this->locale();
    const QString group = m_localizesFormat ? locale.groupSeparator() : u","_s;
    const QString decimal = m_localizesFormat ? locale.decimalPoint() : u"."_s;
    const QString minus = m_localizesFormat ? locale.negativeSign() : u"-"_s;

    while (!integerDigits.isEmpty() && integerDigits.front() == u'0')
        integerDigits = integerDigits.mid(1);
    while (fractionDigits.size() > section.minFractionDigits && fractionDigits.back() == u'0')
        fractionDigits.chop(1);
    QString integer = integerDigits.toString();
    const qsizetype integerPlaces = std::max<qsizetype>(section.minIntegerDigits, 1);
    if (integer.size() < integerPlaces)
        integer.prepend(QString(integerPlaces - integer.size(), u'0'));
    QString fraction = fractionDigits.toString();
    if (fraction.size() < section.minFractionDigits)
        fraction.append(QString(section.minFractionDigits - fraction.size(), u'0'));

    QString text = section.prefix;
    text.replace(QChar(MinusPlaceholder), minus);
    if (!section.hasDigits)
        return text;
    if (section.groupingSize > 0) {
        const qsizetype first = integer.size() % section.groupingSize;
        text += integer.left(first);
        for (qsizetype i = first; i < integer.size(); i += section.groupingSize) {
            if (i > 0)
                text += group;
            text += QStringView(integer).mid(i, section.groupingSize);
        }
    } else {
        text += integer;
    }
    if (!fraction.isEmpty())
        text += decimal + fraction;
    QString suffix = section.suffix;
    return text + suffix.replace(QChar(MinusPlaceholder), minus);
}

QString NumberFormatter::formatDigits(bool negative, QString integerDigits, QString fractionDigits) const
{
    const Section &section = m_sections[negative ? 2 : 0];
    roundHalfEven(integerDigits, fractionDigits, section.maxFractionDigits);
    const auto isZero = [](const QString &digits) {
        return std::all_of(digits.begin(), digits.end(), [](QChar c) { return c == u'0'; });
    };
    if (isZero(integerDigits) && isZero(fractionDigits))
        return render(m_sections[1], {}, {});
    return render(section, integerDigits, fractionDigits);
}

QString NumberFormatter::stringFromNumber(double value) const
{
    if (!isValid())
        return QString();
    if (std::isnan(value))
        return u"NaN"_s;
    if (std::isinf(value)) {
        const Section &section = m_sections[value < 0 ? 2 : 0];
        QString text = section.prefix + u"\u221e"_s + section.suffix;
        return text.replace(QChar(MinusPlaceholder), m_localizesFormat ? locale().negativeSign() : u"-"_s);
    }
    // The shortest decimal that reads back as the value: what a person would have written.
    char buffer[400];
    const std::to_chars_result end
        = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value), std::chars_format::fixed);
    if (end.ec != std::errc())
        return QString();
    const QString digits = QString::fromLatin1(buffer, end.ptr - buffer);
    const qsizetype point = digits.indexOf(u'.');
    return formatDigits(std::signbit(value), point < 0 ? digits : digits.left(point),
        point < 0 ? QString() : digits.mid(point + 1));
}

QString NumberFormatter::stringFromNumber(qint64 value) const
{
    if (!isValid())
        return QString();
    // The magnitude as unsigned, so that the most negative value has one too.
    const quint64 magnitude = value < 0 ? 0 - quint64(value) : quint64(value);
    return formatDigits(value < 0, QString::number(magnitude), QString());
}

const NumberFormatter &NumberFormatter::intFormatter()
{
    static const NumberFormatter formatter = [] {
        NumberFormatter made(u"#,###;0;-#,###");
        made.setAllowsFloats(false);
        return made;
    }();
    return formatter;
}

const NumberFormatter &NumberFormatter::integerFormatter() { return intFormatter(); }

const NumberFormatter &NumberFormatter::floatFormatter()
{
    static const NumberFormatter formatter(u"#,###.##;0;-#,###.##");
    return formatter;
}

QString NumberFormatter::stringForInt(int value)
{
    return orvel::stringForFloat(intFormatter(), float(value));
}

QString NumberFormatter::stringForInteger(qint64 value)
{
    return orvel::stringForInteger(integerFormatter(), value);
}

QString NumberFormatter::stringForFloat(float value)
{
    return orvel::stringForFloat(floatFormatter(), value);
}

namespace {

/// A unit text in the user's language: the application's own table may translate it; the toolkit's
/// table does otherwise.
QString unitText(const QString &key)
{
    const QString toolkit = Bundle::toolkitBundle().localizedStringForKey(key, QString(), u"Bundle"_s);
    return Bundle::mainBundle().localizedStringForKey(key, toolkit, QString());
}

} // namespace

QString NumberFormatter::stringForSize(quint64 bytes)
{
    if (bytes < 1024)
        return unitText(u"%d bytes"_s).replace(u"%d"_s, QString::number(bytes));
    // The scaling is done in single precision, and the unit changes only at the next power of 1024:
    // 1048575 bytes are "1,024 KB".
    float value = 0;
    QString unit;
    if (bytes >> 40 != 0) {
        value = float(bytes) * 0x1p-40f;
        unit = u"%@ TB"_s;
    } else if (bytes >= quint64(1) << 30) {
        value = float(bytes) * 0x1p-30f;
        unit = u"%@ GB"_s;
    } else if (bytes >= quint64(1) << 20) {
        value = float(bytes) * 0x1p-20f;
        unit = u"%@ MB"_s;
    } else {
        value = float(bytes) * 0x1p-10f;
        unit = u"%@ KB"_s;
    }
    static const NumberFormatter sizeFormatter(u"#,###.#;0;-#,###.#");
    return unitText(unit).replace(u"%@"_s, orvel::stringForFloat(sizeFormatter, value));
}

QString stringForInt(const NumberFormatter &formatter, int value)
{
    const QString text = formatter.stringFromNumber(qint64(value));
    return text.isNull() ? u""_s : text;
}

QString stringForInteger(const NumberFormatter &formatter, qint64 value)
{
    const QString text = formatter.stringFromNumber(value);
    return text.isNull() ? u""_s : text;
}

QString stringForFloat(const NumberFormatter &formatter, float value)
{
    const QString text = formatter.stringFromNumber(double(value));
    return text.isNull() ? u""_s : text;
}

} // namespace orvel
