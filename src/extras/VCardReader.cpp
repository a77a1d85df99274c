// The vCard reader. Lines are split, unfolded and decoded as bytes (so a fold inside a multi-byte
// character or a quoted-printable soft break joins up again); each value is then decoded to text
// in its charset, and only then are structured values split and escapes removed, because in some
// charsets (Shift-JIS) a backslash byte can be the second half of a character.
#include "extras/VCardReader.h"

#include "extras/Names_p.h"
#include "extras/VCardSyntax_p.h"

#include "strings/StringExtensions.h"

#include <QDate>
#include <QStringDecoder>
#include <QUrl>
#include <QVarLengthArray>

#include <array>
#include <climits>
#include <memory>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

using namespace vcard;

// A label written by a Mac ("_$!<HomePage>!$_") made readable ("home page"); others as they are.
QString readableLabel(const QString &label)
{
    if (!label.startsWith(u"_$!<"_s) || !label.endsWith(u">!$_"_s))
        return label;
    const QStringView inner = QStringView(label).sliced(4, label.size() - 8);
    QString out;
    for (qsizetype i = 0; i < inner.size(); ++i) {
        if (inner[i].isUpper() && i > 0 && inner[i - 1].isLower())
            out.append(u' ');
        out.append(inner[i].toLower());
    }
    return out;
}

bool isHomePageLabel(const QString &label) { return label == u"_$!<HomePage>!$_"_s; }

// The multi-valued properties a card fills.
enum Multi { Emails, Phones, Urls, Addresses, Aim, Icq, Jabber, Yahoo, Msn, MultiCount };
constexpr std::array<QStringView, MultiCount> MultiProperty { PersonProperty::Email, PersonProperty::Phone,
    PersonProperty::URLs, PersonProperty::Address, PersonProperty::AIMInstant, PersonProperty::ICQInstant,
    PersonProperty::JabberInstant, PersonProperty::YahooInstant, PersonProperty::MSNInstant };

// Collects one card's properties into a person.
class CardBuilder
{
public:
    explicit CardBuilder(TextDecoder &decoder, bool unicodeInput)
        : m_decoder(decoder)
        , m_unicodeInput(unicodeInput)
    {
    }

    bool isV21() const { return m_version == 21; }
    void add(const Property &property);
    Person finish();

private:
    struct Values
    {
        MultiValue values;
        int bestPref = INT_MAX;
        QString bestIdentifier;
        QStringList texts; // the first string values, to drop repeats
    };
    struct Grouped
    {
        Multi multi;
        qsizetype index;
        QByteArray group;
    };

    QString text(const Property &property) const;
    QByteArray data(const Property &property) const;
    void addValue(Multi multi, const Property &property, const QVariant &value, const QString &label);
    void setText(QStringView name, const QString &value)
    {
        if (!value.isEmpty())
            m_person.setValue(name, value);
    }

    TextDecoder &m_decoder;
    bool m_unicodeInput;
    int m_version = 30;
    Person m_person;
    std::array<Values, MultiCount> m_multis;
    QList<Grouped> m_grouped;
    QList<std::pair<QByteArray, QString>> m_groupLabels; // a card has a few groups
    QString m_fullName;
    bool m_hasNameParts = false;
    std::optional<int> m_flags;
};

QString CardBuilder::text(const Property &property) const
{
    const Parameters &p = property.parameters;
    QString text;
    if (p.quotedPrintable)
        text = m_decoder.decode(decodeQuotedPrintable(property.value), p.charset);
    else if (p.base64)
        text = m_decoder.decode(decodeBase64(property.value), p.charset);
    else // a file read as UTF-16 is UTF-8 by now, whatever charset its lines claim
        text = m_decoder.decode(property.value, m_unicodeInput ? Bytes() : p.charset);
    // Quoted-printable line breaks are mostly CR LF (=0D=0A); the person's texts break with LF.
    if (text.contains(u'\r')) {
        text.replace(u"\r\n"_s, u"\n"_s);
        text.replace(u'\r', u'\n');
    }
    return text;
}

QByteArray CardBuilder::data(const Property &property) const
{
    return property.parameters.quotedPrintable ? decodeQuotedPrintable(property.value)
                                               : decodeBase64(property.value);
}

void CardBuilder::addValue(Multi multi, const Property &property, const QVariant &value, const QString &label)
{
    Values &v = m_multis[multi];
    // The same text given twice (an address as IMPP and as X-AIM, say) is listed once. Only the
    // first values are compared, so that a hostile card with thousands costs no quadratic time.
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        if (v.texts.contains(text))
            return;
        if (v.texts.size() < 32)
            v.texts.append(text);
    }
    const QString identifier = v.values.addValue(value, label);
    if (property.parameters.pref < v.bestPref) {
        v.bestPref = property.parameters.pref;
        v.bestIdentifier = identifier;
    }
    if (!property.group.isEmpty())
        m_grouped.append(Grouped { multi, v.values.count() - 1, property.group.toByteArray().toLower() });
}

QString phoneLabel(const Parameters &p)
{
    const bool fax = p.hasType("FAX");
    if (fax && p.hasType("HOME"))
        return u"home fax"_s;
    if (fax && p.hasType("WORK"))
        return u"work fax"_s;
    if (fax)
        return u"fax"_s;
    if (p.hasType("IPHONE"))
        return u"iPhone"_s;
    if (p.hasType("CELL") || p.hasType("MOBILE"))
        return u"mobile"_s;
    if (p.hasType("PAGER"))
        return u"pager"_s;
    if (p.hasType("MAIN"))
        return u"main"_s;
    if (p.hasType("CAR"))
        return u"car"_s;
    if (p.hasType("HOME"))
        return u"home"_s;
    if (p.hasType("WORK"))
        return u"work"_s;
    if (p.hasType("OTHER"))
        return u"other"_s;
    return QString();
}

QString placeLabel(const Parameters &p)
{
    if (p.hasType("HOME"))
        return u"home"_s;
    if (p.hasType("WORK"))
        return u"work"_s;
    if (p.hasType("OTHER"))
        return u"other"_s;
    return QString();
}

// The property of an instant-messaging service named by a parameter or a URI scheme.
std::optional<Multi> instantService(Bytes name)
{
    if (equalsNoCase(name, "AIM"))
        return Aim;
    if (equalsNoCase(name, "ICQ"))
        return Icq;
    if (equalsNoCase(name, "JABBER") || equalsNoCase(name, "XMPP") || equalsNoCase(name, "GOOGLETALK"))
        return Jabber;
    if (equalsNoCase(name, "YAHOO") || equalsNoCase(name, "YMSGR"))
        return Yahoo;
    if (equalsNoCase(name, "MSN") || equalsNoCase(name, "MSNIM"))
        return Msn;
    return std::nullopt;
}

// A date as cards write it: 1980-05-01, 19800501, either with a time after "T"; other text is kept.
QVariant birthday(const QString &text)
{
    int digits[8];
    int n = 0;
    for (QChar c : QStringView(text).left(text.indexOf(u'T'))) {
        if (c.isDigit() && c.unicode() < 128 && n < 8)
            digits[n++] = c.unicode() - '0';
        else if (c != u'-')
            return text;
    }
    if (n != 8)
        return text;
    const int year = digits[0] * 1000 + digits[1] * 100 + digits[2] * 10 + digits[3];
    const QDate date(year, digits[4] * 10 + digits[5], digits[6] * 10 + digits[7]);
    return date.isValid() ? QVariant(date) : QVariant(text);
}

// "scheme:..." as a URI starts: a letter, then letters, digits, "+", "-" or ".", then a colon.
bool hasScheme(Bytes value)
{
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    if (value.isEmpty() || !isLetter(value[0]))
        return false;
    for (char c : value.sliced(1)) {
        if (c == ':')
            return true;
        if (!isLetter(c) && !(c >= '0' && c <= '9') && c != '+' && c != '-' && c != '.')
            return false;
    }
    return false;
}

void CardBuilder::add(const Property &property)
{
    const Bytes name = property.name;
    const bool v21 = m_version == 21;
    if (equalsNoCase(name, "VERSION")) {
        const Bytes v = trimmed(property.value);
        m_version = v == "2.1" ? 21 : v == "4.0" ? 40 : 30;
    } else if (equalsNoCase(name, "N")) {
        const auto parts = components(text(property), v21);
        static constexpr std::array<QStringView, 5> Names { PersonProperty::Last, PersonProperty::First,
            PersonProperty::Middle, PersonProperty::Title, PersonProperty::Suffix };
        for (qsizetype i = 0; i < std::min<qsizetype>(parts.size(), Names.size()); ++i)
            setText(Names[i], parts[i]);
        for (qsizetype i = 0; i < std::min<qsizetype>(parts.size(), 3); ++i)
            m_hasNameParts = m_hasNameParts || !parts[i].isEmpty();
    } else if (equalsNoCase(name, "FN")) {
        m_fullName = stringByTrimmingWhiteSpaces(unescaped(text(property), v21));
    } else if (equalsNoCase(name, "NICKNAME")) {
        setText(PersonProperty::Nickname, stringByTrimmingWhiteSpaces(unescaped(text(property), v21)));
    } else if (equalsNoCase(name, "ORG")) {
        const auto parts = components(text(property), v21);
        setText(PersonProperty::Organization, parts.value(0));
        setText(PersonProperty::Department, parts.value(1));
    } else if (equalsNoCase(name, "TITLE")) {
        setText(PersonProperty::JobTitle, stringByTrimmingWhiteSpaces(unescaped(text(property), v21)));
    } else if (equalsNoCase(name, "NOTE")) {
        setText(PersonProperty::Note, stringByTrimmingWhiteSpaces(unescaped(text(property), v21)));
    } else if (equalsNoCase(name, "EMAIL")) {
        const QString address = stringByTrimmingWhiteSpaces(unescaped(text(property), v21));
        if (!address.isEmpty())
            addValue(Emails, property, address, placeLabel(property.parameters));
    } else if (equalsNoCase(name, "TEL")) {
        QString number = stringByTrimmingWhiteSpaces(unescaped(text(property), v21));
        if (number.startsWith(u"tel:"_s, Qt::CaseInsensitive))
            number = number.sliced(4);
        if (!number.isEmpty())
            addValue(Phones, property, number, phoneLabel(property.parameters));
    } else if (equalsNoCase(name, "URL")) {
        const QString url = stringByTrimmingWhiteSpaces(unescaped(text(property), v21));
        if (!url.isEmpty())
            addValue(Urls, property, url, placeLabel(property.parameters));
    } else if (equalsNoCase(name, "ADR")) {
        const auto parts = components(text(property), v21);
        QStringList street;
        for (qsizetype i = 0; i < std::min<qsizetype>(parts.size(), 3); ++i) {
            if (!parts[i].isEmpty())
                street.append(parts[i]);
        }
        QVariantMap address;
        const auto put = [&](QStringView key, const QString &value) {
            if (!value.isEmpty())
                address.insert(nameString(key), value);
        };
        put(AddressKey::Street, street.join(u'\n'));
        put(AddressKey::City, parts.value(3));
        put(AddressKey::State, parts.value(4));
        put(AddressKey::ZIP, parts.value(5));
        put(AddressKey::Country, parts.value(6));
        if (!address.isEmpty())
            addValue(Addresses, property, address, placeLabel(property.parameters));
    } else if (equalsNoCase(name, "IMPP")) {
        const QString uri = stringByTrimmingWhiteSpaces(unescaped(text(property), v21));
        const qsizetype colon = uri.indexOf(u':');
        const QByteArray scheme = uri.left(std::max<qsizetype>(colon, 0)).toLatin1();
        const std::optional<Multi> service = instantService(
            property.parameters.serviceType.isEmpty() ? Bytes(scheme) : property.parameters.serviceType);
        const QString handle = uri.sliced(colon + 1);
        if (service && !handle.isEmpty())
            addValue(*service, property, handle, placeLabel(property.parameters));
    } else if (startsWithNoCase(name, "X-") && instantService(name.sliced(2))) {
        const QString handle = stringByTrimmingWhiteSpaces(unescaped(text(property), v21));
        if (!handle.isEmpty())
            addValue(*instantService(name.sliced(2)), property, handle, placeLabel(property.parameters));
    } else if (equalsNoCase(name, "BDAY")) {
        const QString day = stringByTrimmingWhiteSpaces(text(property));
        if (!day.isEmpty())
            m_person.setValue(PersonProperty::Birthday, birthday(day));
    } else if (equalsNoCase(name, "PHOTO")) {
        const Bytes value = trimmed(property.value);
        if (property.parameters.base64) {
            m_person.setValue(PersonProperty::Photo, data(property));
        } else if (startsWithNoCase(value, "data:")) {
            // data:image/jpeg;base64,... (vCard 4.0)
            const qsizetype comma = value.indexOf(',');
            if (comma > 0) {
                const Bytes header = value.first(comma);
                const Bytes payload = value.sliced(comma + 1);
                const bool base64 = header.size() >= 7 && equalsNoCase(header.last(7), ";base64");
                m_person.setValue(PersonProperty::Photo,
                    base64 ? decodeBase64(payload) : QByteArray::fromPercentEncoding(payload.toByteArray()));
            }
        } else if (property.parameters.uriValue || hasScheme(value)) {
            const QUrl url(text(property), QUrl::TolerantMode);
            if (url.isValid())
                m_person.setValue(PersonProperty::Photo, url);
        } else if (!value.isEmpty()) {
            // Base64 without its ENCODING parameter, as some exporters write it.
            m_person.setValue(PersonProperty::Photo, decodeBase64(value));
        }
    } else if (equalsNoCase(name, "X-ABSHOWAS")) {
        const Bytes v = trimmed(property.value);
        if (equalsNoCase(v, "COMPANY"))
            m_flags = (m_flags.value_or(0) & ~Person::ShowAsMask) | Person::ShowAsCompany;
        else if (equalsNoCase(v, "PERSON"))
            m_flags = (m_flags.value_or(0) & ~Person::ShowAsMask) | Person::ShowAsPerson;
    } else if (equalsNoCase(name, "KIND")) {
        const Bytes v = trimmed(property.value);
        if (equalsNoCase(v, "ORG") || equalsNoCase(v, "ORGANIZATION"))
            m_flags = (m_flags.value_or(0) & ~Person::ShowAsMask) | Person::ShowAsCompany;
    } else if (equalsNoCase(name, "X-ABLABEL")) {
        if (!property.group.isEmpty())
            m_groupLabels.append({ property.group.toByteArray().toLower(), unescaped(text(property), v21) });
    }
}

Person CardBuilder::finish()
{
    // A Mac labels a value by a following X-ABLabel of the same group ("item1.").
    QString homePage;
    for (const Grouped &g : std::as_const(m_grouped)) {
        const auto label = std::find_if(m_groupLabels.crbegin(), m_groupLabels.crend(),
            [&](const std::pair<QByteArray, QString> &l) { return l.first == g.group; });
        if (label == m_groupLabels.crend())
            continue;
        MultiValue &values = m_multis[g.multi].values;
        values.setLabelAtIndex(g.index, readableLabel(label->second));
        if (g.multi == Urls && homePage.isNull() && isHomePageLabel(label->second))
            homePage = values.valueAtIndex(g.index).toString();
    }
    if (!homePage.isNull())
        m_person.setValue(PersonProperty::HomePage, homePage);
    for (int i = 0; i < MultiCount; ++i) {
        Values &v = m_multis[i];
        if (v.values.isEmpty())
            continue;
        if (!v.bestIdentifier.isNull())
            v.values.setPrimaryIdentifier(v.bestIdentifier);
        m_person.setValue(MultiProperty[i], v.values);
    }
    // A card with no name parts (a phone's or a web mail's, often) is named by its full name,
    // unless that only repeats the organisation of a company card.
    if (!m_hasNameParts && !m_fullName.isEmpty()
        && m_fullName != m_person.valueForProperty(PersonProperty::Organization).toString())
        m_person.setValue(PersonProperty::First, m_fullName);
    if (m_flags)
        m_person.setValue(kABPersonFlags, *m_flags);
    return std::move(m_person);
}

bool isCardDelimiter(const Property &property, Bytes keyword)
{
    return property.group.isEmpty() && equalsNoCase(property.name, keyword)
        && equalsNoCase(trimmed(property.value), "VCARD");
}

// Reads one card after its BEGIN line, up to its END line or the end of the data.
Person readCard(LineSource &source, QByteArray &buffer, TextDecoder &decoder, bool unicodeInput)
{
    CardBuilder card(decoder, unicodeInput);
    qsizetype count = 0;
    int nesting = 0; // cards inside the card (a vCard 2.1 AGENT), skipped
    Property property;
    QByteArray extended;
    while (!source.atEnd()) {
        LogicalLine line = readLogicalLine(source, buffer, card.isV21());
        if (line.oversize || !parseProperty(line.text, property))
            continue;
        if (isCardDelimiter(property, "BEGIN")) {
            ++nesting;
            continue;
        }
        if (isCardDelimiter(property, "END")) {
            if (nesting-- == 0)
                break;
            continue;
        }
        if (nesting > 0 || ++count > VCardLimits::MaxPropertiesPerCard)
            continue;

        // A quoted-printable value goes on past a line ending in "=" (a soft line break); a vCard
        // 2.1 base64 value past its line, up to an empty line, whether or not the lines are indented.
        const Parameters &p = property.parameters;
        const bool softBreak = p.quotedPrintable && property.value.endsWith('=');
        const bool binary21 = card.isV21() && p.base64;
        if (softBreak || binary21) {
            extended.resize(0);
            extended.append(property.value);
            Bytes last = property.value;
            while (!source.atEnd() && !(softBreak && !last.endsWith('='))) {
                const qsizetype mark = source.position();
                bool ended = true;
                const Bytes next = source.next(&ended);
                if (binary21 && (next.isEmpty() || next.contains(':') || next.contains(';'))) {
                    if (!next.isEmpty())
                        source.rewind(mark); // the next property
                    break;
                }
                // Past the limit the value's lines are still consumed, but no longer kept.
                if (line.oversize || extended.size() + next.size() > VCardLimits::MaxPropertyBytes) {
                    line.oversize = true;
                    extended.resize(0);
                } else {
                    if (softBreak)
                        extended.chop(1);
                    extended.append(next);
                }
                line.ended = ended;
                last = next;
            }
            if (line.oversize)
                continue;
            property.value = extended;
        }
        // Input cut short: a line it ends inside, or a picture it may end inside, is not kept.
        if (source.atEnd() && (!line.ended || p.base64 || startsWithNoCase(trimmed(property.value), "data:")))
            break;
        card.add(property);
    }
    return card.finish();
}

} // namespace

QList<Person> readVCards(QByteArrayView data, qsizetype maxCards)
{
    QList<Person> people;
    if (data.isEmpty() || maxCards <= 0)
        return people;

    // UTF-16 (with a byte-order mark, or recognised by its zero bytes) is read as UTF-8.
    QByteArray converted;
    bool unicodeInput = false;
    const auto utf16 = [&](QStringConverter::Encoding encoding, qsizetype skip) {
        QStringDecoder decoder(encoding);
        converted = QString(decoder.decode(data.sliced(skip))).toUtf8();
        data = converted;
        unicodeInput = true;
    };
    if (data.startsWith("\xFF\xFE"))
        utf16(QStringConverter::Utf16LE, 2);
    else if (data.startsWith("\xFE\xFF"))
        utf16(QStringConverter::Utf16BE, 2);
    else if (data.size() >= 2 && data[0] != 0 && data[1] == 0)
        utf16(QStringConverter::Utf16LE, 0);
    else if (data.size() >= 2 && data[0] == 0 && data[1] != 0)
        utf16(QStringConverter::Utf16BE, 0);
    else if (data.startsWith("\xEF\xBB\xBF"))
        data = data.sliced(3);

    LineSource source(data);
    QByteArray buffer;
    TextDecoder decoder;
    Property property;
    while (!source.atEnd() && people.size() < maxCards) {
        const LogicalLine line = readLogicalLine(source, buffer, false);
        if (!line.oversize && parseProperty(line.text, property) && isCardDelimiter(property, "BEGIN"))
            people.append(readCard(source, buffer, decoder, unicodeInput));
    }
    return people;
}

} // namespace orvel
