// Cards as the major exporters write them, read from real files: a Mac's Contacts, Outlook's vCard 2.1,
// a vCard 4.0 company card.
#include "extras/VCardReader.h"

#include "testlib/TestSupport.h"

#include <QDate>
#include <QUrl>

#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

// A person read through a real file.
std::optional<Person> readFile(const QByteArray &card)
{
    const test::TempDir dir;
    const QString path = dir.file(u"card.vcf"_s);
    if (!test::writeBytes(path, card))
        return std::nullopt;
    return Person::initWithContentsOfFile(path);
}

QByteArray crlf(QByteArray text) { return text.replace("\n", "\r\n"); }

QStringList labels(const Person &p, QStringView property)
{
    const QVariant value = p.valueForProperty(property);
    const MultiValue *m = MultiValue::fromVariant(value);
    QStringList out;
    for (qsizetype i = 0; m && i < m->count(); ++i)
        out.append(m->labelAtIndex(i));
    return out;
}

const QByteArray Jpeg = QByteArray::fromHex("ffd8ffe000104a46494600010100000100010000ffd9");

TEST(ExportedCards, MacContacts)
{
    const QByteArray b64 = Jpeg.toBase64();
    const std::optional<Person> p = readFile(
        crlf("BEGIN:VCARD\nVERSION:3.0\nPRODID:-//Apple Inc.//macOS 13.4//EN\nN:Holt;Mara;Jo;Dr.;\n"
             "FN:Dr. Mara Jo Holt\nNICKNAME:Mo\nORG:Widgets\\, Inc.;Research\nTITLE:Engineer\n"
             "EMAIL;type=INTERNET;type=HOME:mara@home.example\n"
             "EMAIL;type=INTERNET;type=WORK;type=pref:mara@widgets.example\n"
             "TEL;type=CELL;type=VOICE;type=pref:+1 555 0100\nTEL;type=WORK;type=VOICE:+1 555 0101\n"
             "item1.TEL:+1 555 0102\nitem1.X-ABLabel:_$!<Other>!$_\n"
             "item2.ADR;type=HOME;type=pref:;;1 Main St\\nApt 2;Springfield;IL;62701;USA\n"
             "item2.X-ABADR:us\nitem3.URL;type=pref:https://mara.example\n"
             "item4.URL:https://blog.example\nitem4.X-ABLabel:Blog\nitem3.X-ABLabel:_$!<HomePage>!$_\n"
             "IMPP;X-SERVICE-TYPE=AIM;type=HOME;type=pref:aim:maraholt\nX-AIM;type=HOME:maraholt\n"
             "IMPP;X-SERVICE-TYPE=Jabber;type=HOME:xmpp:mara@jabber.example\n"
             "NOTE:Met at the fair\\, 2019.\\nLikes tea\\; hates coffee.\nBDAY;value=date:1980-05-01\n"
             "PHOTO;ENCODING=b;TYPE=JPEG:"
            + b64.left(20) + "\n " + b64.mid(20) + "\nX-ABShowAs:COMPANY\nEND:VCARD\n"));
    ASSERT_TRUE(p);
    EXPECT_EQ(p->proposedName(), "Widgets, Inc. - Mara Jo Holt");
    EXPECT_TRUE(p->showAsCompany());
    EXPECT_EQ(p->valueForProperty(PersonProperty::Department).toString(), "Research");
    EXPECT_EQ(p->valueForProperty(PersonProperty::Title).toString(), "Dr.");
    EXPECT_EQ(p->primaryEmail(), "mara@widgets.example");
    EXPECT_EQ(p->emailAdresses(), (QStringList { "mara@home.example", "mara@widgets.example" }));
    EXPECT_EQ(p->phoneNumbers(), (QStringList { "+1 555 0100", "+1 555 0101", "+1 555 0102" }));
    EXPECT_EQ(labels(*p, PersonProperty::Phone), (QStringList { "mobile", "work", "other" }));
    EXPECT_EQ(p->homePage(), "https://mara.example");
    EXPECT_EQ(labels(*p, PersonProperty::URLs), (QStringList { "home page", "Blog" }));
    EXPECT_EQ(ABValuesForKey(*p, PersonProperty::AIMInstant), QStringList { "maraholt" });
    EXPECT_EQ(p->valueForProperty(PersonProperty::Birthday).toDate(), QDate(1980, 5, 1));
    EXPECT_EQ(p->valueForProperty(PersonProperty::Photo).toByteArray(), Jpeg);
    const QVariantMap m = p->metaData();
    EXPECT_EQ(m.value(kMDItemTextContent.toString()).toString(),
        "Mara\nJo\nHolt\nMo\nWidgets, Inc.\nhome: 1 Main St\nApt 2\nSpringfield, IL 62701\nUSA\n"
        "mobile: +1 555 0100\nwork: +1 555 0101\nother: +1 555 0102\nhome: maraholt\n"
        "home: mara@jabber.example\nMet at the fair, 2019.\nLikes tea; hates coffee.\n");
    EXPECT_EQ(m.value(kMDItemURL.toString()).toString(), "https://mara.example");
}

TEST(ExportedCards, Outlook21WindowsCodePage)
{
    const std::optional<Person> p = readFile(
        crlf("BEGIN:VCARD\nVERSION:2.1\nN;LANGUAGE=de;CHARSET=Windows-1252:M\xFCller;G\xFCnter\n"
             "FN;CHARSET=Windows-1252:G\xFCnter M\xFCller\nORG;CHARSET=Windows-1252:B\xE4"
             "ckerei M\xFCller GmbH;Verkauf\nTEL;WORK;VOICE:(030) 1234\n"
             "ADR;WORK;PREF;ENCODING=QUOTED-PRINTABLE;CHARSET=Windows-1252:;;Hauptstra=DFe 5=0D=0A=\n"
             "Hinterhaus;Berlin;;10115;Deutschland\n"
             "NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=Windows-1252:Preis: 5 =80=0D=0A=\nZweite Zeile\n"
             "EMAIL;PREF;INTERNET:g.mueller@baeckerei.example\nX-MS-OL-DEFAULT-POSTAL-ADDRESS:2\n"
             "REV:20240101T120000Z\nEND:VCARD\n"));
    ASSERT_TRUE(p);
    EXPECT_EQ(p->proposedName(), u"Günter Müller"_s);
    EXPECT_EQ(p->valueForProperty(PersonProperty::Organization).toString(), u"Bäckerei Müller GmbH"_s);
    EXPECT_EQ(p->valueForProperty(PersonProperty::Note).toString(), u"Preis: 5 €\nZweite Zeile"_s);
    EXPECT_EQ(p->stringForProperty(PersonProperty::Address, p->valueForProperty(PersonProperty::Address)),
        u"work: Hauptstraße 5\nHinterhaus\nBerlin 10115\nDeutschland"_s);
    EXPECT_EQ(p->primaryEmail(), "g.mueller@baeckerei.example");
}

TEST(ExportedCards, Version4Company)
{
    const std::optional<Person> p = readFile(
        crlf("BEGIN:VCARD\nVERSION:4.0\nKIND:org\nFN:Widgets Ltd\nORG:Widgets Ltd\n"
             "EMAIL;PREF=2:info@widgets.example\nEMAIL;PREF=1:sales@widgets.example\n"
             "TEL;VALUE=uri;TYPE=\"work,voice\":tel:+44-20-7946-0000\nPHOTO:data:image/jpeg;base64,"
            + Jpeg.toBase64() + "\nURL:https://widgets.example\nEND:VCARD\n"));
    ASSERT_TRUE(p);
    EXPECT_TRUE(p->showAsCompany());
    EXPECT_EQ(p->proposedName(), "Widgets Ltd");
    EXPECT_FALSE(p->valueForProperty(PersonProperty::First).isValid());
    EXPECT_EQ(p->phoneNumbers(), QStringList { "+44-20-7946-0000" });
    EXPECT_EQ(labels(*p, PersonProperty::Phone), QStringList { "work" });
    EXPECT_EQ(p->valueForProperty(PersonProperty::Photo).toByteArray(), Jpeg);
    EXPECT_EQ(p->homePage(), "https://widgets.example");
}

TEST(ExportedCards, FullNameAloneNamesThePersonAndAReferencedPhotoIsKeptAsItsAddress)
{
    const std::optional<Person> p = readFile(
        "BEGIN:VCARD\nVERSION:3.0\nFN:Kim\nTEL:123\nPHOTO;VALUE=uri:https://pics.example/b.jpg\nEND:VCARD\n");
    ASSERT_TRUE(p);
    EXPECT_EQ(p->proposedName(), "Kim");
    EXPECT_EQ(p->valueForProperty(PersonProperty::Photo).toUrl(), QUrl(u"https://pics.example/b.jpg"_s));
}

TEST(Files, MissingOrEmptyFileIsNil)
{
    const test::TempDir dir;
    EXPECT_FALSE(Person::initWithContentsOfFile(dir.file(u"none.vcf"_s)));
    EXPECT_FALSE(Person::initWithContentsOfFile(QString()));
    EXPECT_FALSE(Person::initWithContentsOfFile(dir.path()));
    EXPECT_FALSE(readFile(QByteArray()));
}

TEST(Files, SeveralCardsTheFirstIsThePerson)
{
    const QByteArray cards = "BEGIN:VCARD\nN:One;A\nEND:VCARD\nBEGIN:VCARD\nN:Two;B\nEND:VCARD\n"
                             "BEGIN:VCARD\nN:Three;C\nEND:VCARD\n";
    EXPECT_EQ(readFile(cards)->proposedName(), "A One");
    const QList<Person> all = readVCards(cards);
    ASSERT_EQ(all.size(), 3);
    EXPECT_EQ(all.at(2).proposedName(), "C Three");
    EXPECT_EQ(readVCards(cards, 2).size(), 2);
}

} // namespace
