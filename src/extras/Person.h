// A person record of an address book (read from a vCard) and what a document index needs of it:
// a display name, e-mail addresses, phone numbers, a home page and a metadata dictionary.
#pragma once

#include "extras/MultiValue.h"

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace orvel {

/// The property names of a person record. Text properties hold a QString; the multi-valued ones
/// (marked "multi") a MultiValue.
namespace PersonProperty {
inline constexpr QStringView Organization = u"Organization";
inline constexpr QStringView Department = u"Department";
inline constexpr QStringView JobTitle = u"JobTitle";
inline constexpr QStringView First = u"First";
inline constexpr QStringView Middle = u"Middle";
inline constexpr QStringView Last = u"Last";
inline constexpr QStringView Title = u"Title"; ///< the name's prefix ("Dr.")
inline constexpr QStringView Suffix = u"Suffix";
inline constexpr QStringView Nickname = u"Nickname";
inline constexpr QStringView Email = u"Email"; ///< multi, strings
inline constexpr QStringView Phone = u"Phone"; ///< multi, strings
inline constexpr QStringView HomePage = u"HomePage"; ///< a string
inline constexpr QStringView URLs = u"URLs"; ///< multi, strings
inline constexpr QStringView Address = u"Address"; ///< multi, QVariantMaps keyed by AddressKey
inline constexpr QStringView AIMInstant = u"AIMInstant"; ///< multi, strings
inline constexpr QStringView ICQInstant = u"ICQInstant"; ///< multi, strings
inline constexpr QStringView JabberInstant = u"JabberInstant"; ///< multi, strings
inline constexpr QStringView YahooInstant = u"YahooInstant"; ///< multi, strings
inline constexpr QStringView MSNInstant = u"MSNInstant"; ///< multi, strings
inline constexpr QStringView Note = u"Note";
inline constexpr QStringView Birthday = u"Birthday"; ///< a QDate, or the text when it is no date
/// The picture: a QByteArray when the card embeds it, a QUrl when it refers to one (never fetched).
inline constexpr QStringView Photo = u"Photo";
} // namespace PersonProperty

/// The flags property: an int whose low three bits are the display flags.
inline constexpr QStringView kABPersonFlags = u"ABPersonFlags";

/// The keys of an address dictionary.
namespace AddressKey {
inline constexpr QStringView Street = u"Street"; ///< may hold several lines
inline constexpr QStringView City = u"City";
inline constexpr QStringView State = u"State";
inline constexpr QStringView ZIP = u"ZIP";
inline constexpr QStringView Country = u"Country";
} // namespace AddressKey

// The metadata keys, named as freedesktop.org's desktop search ontologies (the ones Tracker
// indexes) name the same fields.
/// The card's text, one property per line.
inline constexpr QStringView kMDItemTextContent = u"nie:plainTextContent";
/// A QStringList of e-mail addresses.
inline constexpr QStringView kMDItemEmailAddresses = u"nco:emailAddress";
/// A QStringList of phone numbers.
inline constexpr QStringView kMDItemPhoneNumbers = u"nco:phoneNumber";
/// The home page, a QString.
inline constexpr QStringView kMDItemURL = u"nie:url";

class Person
{
public:
    /// How the card is shown: the flags property masked with ShowAsMask.
    enum DisplayFlag { ShowAsPerson = 0, ShowAsCompany = 1, ShowAsMask = 7 };

    Person() = default;

    /// The first card of a vCard file (only the first VCardLimits::MaxFileBytes are read); nil when
    /// the file cannot be read or holds no card.
    static std::optional<Person> initWithContentsOfFile(const QString &path);
    /// The first card of vCard data; nil when it holds none.
    static std::optional<Person> initWithVCardRepresentation(QByteArrayView data);

    /// The property's value (a MultiValue for the multi-valued ones); invalid when it has none.
    QVariant valueForProperty(QStringView property) const;
    /// Sets a value; an invalid value removes the property.
    void setValue(QStringView property, const QVariant &value);
    void setValue(QStringView property, const MultiValue &value);
    /// The names of the properties that have a value, sorted.
    QStringList properties() const;
    bool isEmpty() const { return m_values.isEmpty(); }

    /// A display name: the full name, else the nickname, else the organisation or the primary
    /// e-mail address; "Organisation - Name" when the card is not shown as a person.
    QString proposedName() const;
    /// The primary e-mail address (else the first), or null when it is missing or no string.
    QString primaryEmail() const;
    /// ABValuesForKey of Email. (The spelling is part of the interface.)
    std::optional<QStringList> emailAdresses() const;
    /// ABValuesForKey of Phone.
    std::optional<QStringList> phoneNumbers() const;
    /// The HomePage property's display string, else the first of URLs; null when neither is a string.
    QString homePage() const;
    /// kMDItemTextContent (always), kMDItemEmailAddresses, kMDItemPhoneNumbers and kMDItemURL
    /// (each left out when its value is nil).
    QVariantMap metaData() const;
    /// The display flags equal ShowAsCompany.
    bool showAsCompany() const;
    /// The display flags equal ShowAsPerson (also when the card has no flags).
    bool showAsPerson() const;

    /// The text an address book shows for a property's value: a string as it is, an address as
    /// its lines, a date in ISO form, a multi-value as one "label: value" line per value (just the
    /// value when it has no label); empty for values without text (pictures).
    QString stringForProperty(QStringView property, const QVariant &value) const;

private:
    int displayFlags() const;

    // A card has a dozen properties or so: a short list searched in order beats a hash table.
    struct Entry
    {
        QString property;
        QVariant value;
    };
    QList<Entry> m_values;
    const Entry *find(QStringView property) const;
};

/// The property's string values: nil for a null key, a missing property, an empty multi-value or a
/// single value that is no string; [value] for a single string; for a multi-value its string
/// values in order (the others skipped, so the list may be empty).
std::optional<QStringList> ABValuesForKey(const Person &person, QStringView key);

} // namespace orvel
