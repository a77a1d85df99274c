// The person record's operations: display name, addresses, numbers, home page and metadata.
#include "extras/Person.h"

#include "extras/Names_p.h"
#include "extras/VCardReader.h"

#include <QDate>
#include <QFile>
#include <QUrl>

#include <array>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

bool isString(const QVariant &v) { return v.metaType() == QMetaType::fromType<QString>(); }

// The metadata text lists these properties, in this order.
constexpr std::array<QStringView, 13> MetadataOrder { PersonProperty::First, PersonProperty::Middle,
    PersonProperty::Last, PersonProperty::Nickname, PersonProperty::Organization, PersonProperty::Address,
    PersonProperty::Phone, PersonProperty::AIMInstant, PersonProperty::ICQInstant,
    PersonProperty::JabberInstant, PersonProperty::YahooInstant, PersonProperty::MSNInstant,
    PersonProperty::Note };

// An address as it is written on an envelope: street lines, "City, State ZIP", country.
QString addressLines(const QVariantMap &address)
{
    const auto part = [&](QStringView key) { return address.value(nameString(key)).toString(); };
    QStringList lines;
    if (const QString street = part(AddressKey::Street); !street.isEmpty())
        lines.append(street);
    QString city = part(AddressKey::City);
    if (const QString state = part(AddressKey::State); !state.isEmpty())
        city += (city.isEmpty() ? u""_s : u", "_s) + state;
    if (const QString zip = part(AddressKey::ZIP); !zip.isEmpty())
        city += (city.isEmpty() ? u""_s : u" "_s) + zip;
    if (!city.isEmpty())
        lines.append(city);
    if (const QString country = part(AddressKey::Country); !country.isEmpty())
        lines.append(country);
    return lines.join(u'\n');
}

// The display string of one value that is no multi-value.
QString singleValueString(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QVariantMap:
        return addressLines(value.toMap());
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QUrl:
        return value.toUrl().toString();
    case QMetaType::QByteArray:
        return QString(); // a picture has no text
    default:
        return value.toString();
    }
}

} // namespace

QString nameString(QStringView name)
{
    static constexpr QStringView Constants[] { PersonProperty::Organization, PersonProperty::Department,
        PersonProperty::JobTitle, PersonProperty::First, PersonProperty::Middle, PersonProperty::Last,
        PersonProperty::Title, PersonProperty::Suffix, PersonProperty::Nickname, PersonProperty::Email,
        PersonProperty::Phone, PersonProperty::HomePage, PersonProperty::URLs, PersonProperty::Address,
        PersonProperty::AIMInstant, PersonProperty::ICQInstant, PersonProperty::JabberInstant,
        PersonProperty::YahooInstant, PersonProperty::MSNInstant, PersonProperty::Note,
        PersonProperty::Birthday, PersonProperty::Photo, kABPersonFlags, AddressKey::Street, AddressKey::City,
        AddressKey::State, AddressKey::ZIP, AddressKey::Country, kMDItemTextContent, kMDItemEmailAddresses,
        kMDItemPhoneNumbers, kMDItemURL };
    for (QStringView constant : Constants) {
        if (constant.data() == name.data() && constant.size() == name.size())
            return QString::fromRawData(reinterpret_cast<const QChar *>(constant.data()), constant.size());
    }
    return name.toString();
}

std::optional<Person> Person::initWithContentsOfFile(const QString &path)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.read(VCardLimits::MaxFileBytes);
    if (bytes.isEmpty())
        return std::nullopt;
    return initWithVCardRepresentation(bytes);
}

std::optional<Person> Person::initWithVCardRepresentation(QByteArrayView data)
{
    QList<Person> people = readVCards(data, 1);
    if (people.isEmpty())
        return std::nullopt;
    return std::move(people.first());
}

const Person::Entry *Person::find(QStringView property) const
{
    // Names set from the constants share their text: most lookups match on the pointer.
    for (const Entry &e : m_values) {
        if (e.property.size() == property.size()
            && e.property.constData() == static_cast<const void *>(property.data()))
            return &e;
    }
    for (const Entry &e : m_values) {
        if (e.property == property)
            return &e;
    }
    return nullptr;
}

QVariant Person::valueForProperty(QStringView property) const
{
    const Entry *e = find(property);
    return e ? e->value : QVariant();
}

void Person::setValue(QStringView property, const QVariant &value)
{
    if (Entry *e = const_cast<Entry *>(find(property))) {
        if (value.isValid())
            e->value = value;
        else
            m_values.removeAt(e - m_values.constData());
    } else if (value.isValid()) {
        m_values.append(Entry { nameString(property), value });
    }
}

void Person::setValue(QStringView property, const MultiValue &value)
{
    setValue(property, QVariant::fromValue(value));
}

QStringList Person::properties() const
{
    QStringList names;
    for (const Entry &e : m_values)
        names.append(e.property);
    names.sort();
    return names;
}

QString Person::stringForProperty(QStringView property, const QVariant &value) const
{
    Q_UNUSED(property) // every property's values are shown alike
    const MultiValue *multi = MultiValue::fromVariant(value);
    if (!multi)
        return singleValueString(value);
    QStringList lines;
    for (qsizetype i = 0; i < multi->count(); ++i) {
        const QString text = singleValueString(multi->valueAtIndex(i));
        if (text.isEmpty())
            continue;
        const QString label = multi->labelAtIndex(i);
        lines.append(label.isEmpty() ? text : label + u": "_s + text);
    }
    return lines.join(u'\n');
}

int Person::displayFlags() const { return valueForProperty(kABPersonFlags).toInt() & ShowAsMask; }

bool Person::showAsCompany() const { return displayFlags() == ShowAsCompany; }

bool Person::showAsPerson() const { return displayFlags() == ShowAsPerson; }

QString Person::proposedName() const
{
    // A value that is no string takes part by its display string.
    const auto read = [this](QStringView property) {
        const QVariant v = valueForProperty(property);
        return v.isValid() ? stringForProperty(property, v) : QString();
    };
    const QString organization = read(PersonProperty::Organization);
    const QString first = read(PersonProperty::First);
    const QString middle = read(PersonProperty::Middle);
    const QString last = read(PersonProperty::Last);

    QString name;
    if (!first.isNull() && !last.isNull())
        name = middle.isNull() ? first + u' ' + last : first + u' ' + middle + u' ' + last;
    else if (!first.isNull())
        name = first;
    else if (!last.isNull())
        name = last;
    else
        name = read(PersonProperty::Nickname);

    if (name.isNull())
        return !organization.isNull() ? organization : primaryEmail();
    if (!organization.isNull() && !showAsPerson())
        return organization + u" - "_s + name;
    return name;
}

QString Person::primaryEmail() const
{
    QVariant taken = valueForProperty(PersonProperty::Email);
    if (const MultiValue *emails = MultiValue::fromVariant(taken)) {
        if (emails->isEmpty())
            return QString();
        const QString primary = emails->primaryIdentifier();
        const qsizetype index = primary.isNull() ? NotFound : emails->indexForIdentifier(primary);
        taken = emails->valueAtIndex(index == NotFound ? 0 : index);
    }
    return isString(taken) ? taken.toString() : QString();
}

std::optional<QStringList> Person::emailAdresses() const
{
    return ABValuesForKey(*this, PersonProperty::Email);
}

std::optional<QStringList> Person::phoneNumbers() const
{
    return ABValuesForKey(*this, PersonProperty::Phone);
}

QString Person::homePage() const
{
    const QVariant page = valueForProperty(PersonProperty::HomePage);
    if (page.isValid())
        return stringForProperty(PersonProperty::HomePage, page);
    QVariant taken = valueForProperty(PersonProperty::URLs);
    if (const MultiValue *urls = MultiValue::fromVariant(taken))
        taken = urls->valueAtIndex(0);
    return isString(taken) ? taken.toString() : QString();
}

QVariantMap Person::metaData() const
{
    QString text;
    for (QStringView property : MetadataOrder) {
        const QVariant v = valueForProperty(property);
        if (v.isValid()) {
            text += stringForProperty(property, v);
            text += u'\n';
        }
    }
    QVariantMap metadata;
    metadata.insert(nameString(kMDItemTextContent), text);
    if (const std::optional<QStringList> emails = emailAdresses())
        metadata.insert(nameString(kMDItemEmailAddresses), *emails);
    if (const std::optional<QStringList> phones = phoneNumbers())
        metadata.insert(nameString(kMDItemPhoneNumbers), *phones);
    if (const QString url = homePage(); !url.isNull())
        metadata.insert(nameString(kMDItemURL), url);
    return metadata;
}

std::optional<QStringList> ABValuesForKey(const Person &person, QStringView key)
{
    if (key.isNull())
        return std::nullopt;
    const QVariant v = person.valueForProperty(key);
    if (isString(v))
        return QStringList { v.toString() };
    const MultiValue *multi = MultiValue::fromVariant(v);
    if (!multi || multi->isEmpty())
        return std::nullopt;
    QStringList values;
    for (qsizetype i = 0; i < multi->count(); ++i) {
        const QVariant value = multi->valueAtIndex(i);
        if (isString(value))
            values.append(value.toString());
    }
    return values;
}

} // namespace orvel
