// The person record's operations on records built in the test: names, e-mail, values, metadata.
#include "extras/Person.h"

#include "testlib/TestSupport.h"

#include <QDate>
#include <QUrl>

#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

MultiValue multi(const QVariantList &values, const QStringList &labels = {})
{
    MultiValue m;
    for (qsizetype i = 0; i < values.size(); ++i)
        m.addValue(values.at(i), labels.value(i));
    return m;
}

QVariant emails(const QVariantList &values, int primary = -1)
{
    MultiValue m = multi(values);
    if (primary >= 0)
        m.setPrimaryIdentifier(m.identifierAtIndex(primary));
    return QVariant::fromValue(m);
}

TEST(ProposedName, FollowsTheNamingRules)
{
    const QVariantMap card { { "Organization", "Widgets" }, { "First", "Mara" }, { "Last", "Holt" } };
    const struct
    {
        const char *what;
        QVariantMap properties; // name -> value (a MultiValue for Email)
        int flags; // -1: no flags property
        QString expected; // null: nil
    } cases[] = {
        { "with middle", { { "First", "Mara" }, { "Middle", "Jo" }, { "Last", "Holt" } }, -1,
            "Mara Jo Holt" },
        { "middle without last", { { "First", "Mara" }, { "Middle", "Jo" } }, -1, "Mara" },
        { "nickname", { { "Nickname", "Mo" }, { "Middle", "Jo" } }, -1, "Mo" },
        { "organisation only", { { "Organization", "Widgets" } }, -1, "Widgets" },
        { "company card", card, 1, "Widgets - Mara Holt" },
        { "person card", card, 0, "Mara Holt" },
        { "no flags: a person", card, -1, "Mara Holt" },
        // Only the low three bits count; 8 | 0 is a person, 2 is neither person nor company.
        { "high flag bits", { { "Organization", "W" }, { "Last", "Holt" } }, 8, "Holt" },
        { "other display flags", { { "Organization", "W" }, { "Last", "Holt" } }, 2, "W - Holt" },
        { "organisation wins over e-mail",
            { { "Organization", "Widgets" }, { "Email", emails({ "a@x.org" }) } }, 1, "Widgets" },
        { "primary e-mail", { { "Email", emails({ "a@x.org", "b@x.org" }, 1) } }, -1, "b@x.org" },
        { "primary e-mail not a string", { { "Email", emails({ "a@x.org", 42 }, 1) } }, -1, QString() },
        { "nothing", {}, -1, QString() },
    };
    for (const auto &c : cases) {
        Person p;
        for (auto it = c.properties.cbegin(); it != c.properties.cend(); ++it)
            p.setValue(it.key(), it.value());
        if (c.flags >= 0)
            p.setValue(kABPersonFlags, c.flags);
        EXPECT_EQ(p.proposedName(), c.expected) << c.what;
        EXPECT_EQ(p.proposedName().isNull(), c.expected.isNull()) << c.what;
        EXPECT_EQ(p.showAsCompany(), c.flags >= 0 && (c.flags & 7) == 1) << c.what;
        EXPECT_EQ(p.showAsPerson(), c.flags < 0 || (c.flags & 7) == 0) << c.what;
    }
}

TEST(PrimaryEmail, PrimaryElseFirstStringsOnly)
{
    Person p;
    EXPECT_TRUE(p.primaryEmail().isNull());
    p.setValue(PersonProperty::Email, emails({ "a@x.org", "b@x.org" }));
    EXPECT_EQ(p.primaryEmail(), "a@x.org");
    // A primary identifier that names no value falls back to the first.
    MultiValue dangling = multi({ "a@x.org", "b@x.org" });
    dangling.setPrimaryIdentifier(u"nonesuch"_s);
    p.setValue(PersonProperty::Email, dangling);
    EXPECT_EQ(p.primaryEmail(), "a@x.org");
    p.setValue(PersonProperty::Email, emails({ 7, "b@x.org" }));
    EXPECT_TRUE(p.primaryEmail().isNull());
    p.setValue(PersonProperty::Email, u"single@x.org"_s);
    EXPECT_EQ(p.primaryEmail(), "single@x.org");
}

TEST(ABValuesForKey, NilEmptyOrTheStrings)
{
    Person p;
    p.setValue(PersonProperty::Note, u"a note"_s);
    p.setValue(PersonProperty::Birthday, QDate(1980, 5, 1));
    p.setValue(PersonProperty::Email, multi({ 1, QUrl(u"mailto:a@x.org"_s) }));
    p.setValue(PersonProperty::Phone, multi({ "555", 3, "556" }));
    p.setValue(PersonProperty::URLs, MultiValue());
    EXPECT_EQ(ABValuesForKey(p, u"Missing"), std::nullopt);
    EXPECT_EQ(ABValuesForKey(p, PersonProperty::URLs), std::nullopt);
    EXPECT_EQ(ABValuesForKey(p, PersonProperty::Birthday), std::nullopt);
    EXPECT_EQ(ABValuesForKey(p, PersonProperty::Note), QStringList { "a note" });
    EXPECT_EQ(ABValuesForKey(p, PersonProperty::Email), QStringList());
    EXPECT_EQ(p.phoneNumbers(), (QStringList { "555", "556" }));
}

TEST(HomePage, HomePagePropertyThenFirstUrl)
{
    Person p;
    EXPECT_TRUE(p.homePage().isNull());
    p.setValue(PersonProperty::URLs, multi({ "https://b.example", "https://c.example" }));
    EXPECT_EQ(p.homePage(), "https://b.example");
    p.setValue(PersonProperty::HomePage, u"https://a.example"_s);
    EXPECT_EQ(p.homePage(), "https://a.example");
    p.setValue(PersonProperty::HomePage, QVariant());
    p.setValue(PersonProperty::URLs, multi({ QUrl(u"https://b.example"_s) }));
    EXPECT_TRUE(p.homePage().isNull());
}

TEST(StringForProperty, AddressLinesAndLabelledValues)
{
    const QVariantMap home { { "Street", "1 Main St\nApt 2" }, { "City", "Springfield" }, { "State", "IL" },
        { "ZIP", "62701" }, { "Country", "USA" } };
    const QVariantMap work { { "City", "Berlin" }, { "ZIP", "10115" } };
    Person p;
    EXPECT_EQ(
        p.stringForProperty(PersonProperty::Address, home), "1 Main St\nApt 2\nSpringfield, IL 62701\nUSA");
    EXPECT_EQ(
        p.stringForProperty(PersonProperty::Address, QVariant::fromValue(multi({ home, work }, { "home" }))),
        "home: 1 Main St\nApt 2\nSpringfield, IL 62701\nUSA\nBerlin 10115");
    EXPECT_EQ(p.stringForProperty(PersonProperty::Birthday, QDate(1980, 5, 1)), "1980-05-01");
    EXPECT_EQ(p.stringForProperty(PersonProperty::Photo, QByteArray("\xFF\xD8")), "");
    EXPECT_EQ(
        p.stringForProperty(PersonProperty::Phone, QVariant::fromValue(multi({ "555", QByteArray("x") }))),
        "555");
}

TEST(MetaData, TextInFixedOrderAndOnlyKeysWithValues)
{
    Person p;
    EXPECT_EQ(p.metaData(), (QVariantMap { { kMDItemTextContent.toString(), "" } }));
    p.setValue(PersonProperty::Note, u"Met at the fair"_s);
    p.setValue(PersonProperty::First, u"Mara"_s);
    p.setValue(PersonProperty::Organization, u"Widgets"_s);
    p.setValue(PersonProperty::JobTitle, u"Engineer"_s); // not part of the text
    p.setValue(PersonProperty::Phone, multi({ "555 1234" }, { "mobile" }));
    p.setValue(PersonProperty::Email, multi({ 42 }));
    p.setValue(PersonProperty::JabberInstant, multi({ "mara@jabber.example" }));
    const QVariantMap m = p.metaData();
    EXPECT_EQ(m.value(kMDItemTextContent.toString()).toString(),
        "Mara\nWidgets\nmobile: 555 1234\nmara@jabber.example\nMet at the fair\n");
    EXPECT_EQ(m.value(kMDItemPhoneNumbers.toString()).toStringList(), QStringList { "555 1234" });
    // No string e-mail: an empty list, still set; no URL: no key.
    ASSERT_TRUE(m.contains(kMDItemEmailAddresses.toString()));
    EXPECT_TRUE(m.value(kMDItemEmailAddresses.toString()).toStringList().isEmpty());
    EXPECT_FALSE(m.contains(kMDItemURL.toString()));
}

} // namespace
