// The vCard reader on real exports and on broken and hostile input past every limit.
#include "extras/VCardReader.h"

#include "testlib/TestSupport.h"

#include <QDate>
#include <QStringEncoder>
#include <QUrl>

#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

QByteArray card(const QByteArray &lines, const char *version = "3.0")
{
    return "BEGIN:VCARD\r\nVERSION:" + QByteArray(version) + "\r\n" + lines + "END:VCARD\r\n";
}

std::optional<Person> read(const QByteArray &lines, const char *version = "3.0")
{
    return Person::initWithVCardRepresentation(card(lines, version));
}

// A property as the record shows it.
QString shown(const Person &p, QStringView property)
{
    return p.stringForProperty(property, p.valueForProperty(property));
}

QString first(const QByteArray &data, QStringView property)
{
    const std::optional<Person> p = Person::initWithVCardRepresentation(data);
    return p ? shown(*p, property) : u"(nil)"_s;
}

// A person read through a real file.
std::optional<Person> readFile(const QByteArray &card)
{
    const test::TempDir dir;
    const QString path = dir.file(u"card.vcf"_s);
    if (!test::writeBytes(path, card))
        return std::nullopt;
    return Person::initWithContentsOfFile(path);
}

/// A named input and what is read from it.
struct ReadCase
{
    const char *what;
    QByteArray data;
    QString expected;
};

TEST(NoteText, FoldingEscapesAndEncodingsDecodeAsWritten)
{
    const ReadCase cases[] = {
        { "CR LF space", card("NOTE:Long li\r\n ne\r\n"), "Long line" },
        { "lone CR", card("NOTE:Long li\r ne\r"), "Long line" },
        { "inside a UTF-8 sequence",
            card("NOTE:Gr\xC3\r\n \xBC\xC3\r\n \x9F"
                 "e\r\n"),
            u"Grüße"_s },
        { "2.1 keeps the blank", card("NOTE:two\r\n words\r\n", "2.1"), "two words" },
        { "escapes", card("NOTE:a\\nb\\, c\\; d\\\\e\\qf\r\n"), "a\nb, c; d\\e\\qf" },
        { "2.1 backslashes stay", card("NOTE:C:\\new\\; x\r\n", "2.1"), "C:\\new; x" },
        { "soft breaks", card("NOTE;ENCODING=QUOTED-PRINTABLE:a=3Db=\r\nc=\r\n=C3=A9\r\n"), u"a=bcé"_s },
        { "bare 2.1 encoding", card("NOTE;QUOTED-PRINTABLE:x=20y\r\n", "2.1"), "x y" },
        { "broken escape kept", card("NOTE;ENCODING=QUOTED-PRINTABLE:100=% =ZZ\r\n"), "100=% =ZZ" },
        { "windows-1251", card("NOTE;CHARSET=windows-1251:\xC8\xE2\xE0\xED\r\n"), u"Иван"_s },
        { "quoted-printable CR LF in a code page",
            card("NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=Windows-1252:5 =80=0D=0A=\r\nnext\r\n", "2.1"),
            u"5 €\nnext"_s },
        { "base64 text", card("NOTE;ENCODING=b:SGVsbG8=\r\n"), "Hello" },
        { "invalid UTF-8 read as a code page", card("NOTE:caf\xE9 \x80\r\n"), u"café €"_s },
        { "unknown charset", card("NOTE;CHARSET=x-nonesuch:na\xEFve\r\n"), u"naïve"_s },
    };
    for (const ReadCase &c : cases)
        EXPECT_EQ(first(c.data, PersonProperty::Note), c.expected) << c.what;
}

TEST(StructuredValues, EscapedSeparatorsStayInTheirComponent)
{
    const std::optional<Person> p = read("N:O\\;Brien;Ann\\, Jo;;;\r\n"
                                         "ORG:Smith\\, Jones \\; Co;Law\\;Tax\r\n");
    ASSERT_TRUE(p);
    EXPECT_EQ(p->valueForProperty(PersonProperty::Last).toString(), "O;Brien");
    EXPECT_EQ(p->valueForProperty(PersonProperty::First).toString(), "Ann, Jo");
    EXPECT_EQ(p->valueForProperty(PersonProperty::Organization).toString(), "Smith, Jones ; Co");
    EXPECT_EQ(p->valueForProperty(PersonProperty::Department).toString(), "Law;Tax");
    EXPECT_EQ(first(card("ADR:;;Flat 1\\, 2 High St;Leeds;;LS1 1AA;UK\r\n"), PersonProperty::Address),
        "Flat 1, 2 High St\nLeeds LS1 1AA\nUK");
}

TEST(StructuredValues, ShiftJisBackslashByteIsNoEscape)
{
    // 表 is 0x95 0x5C and ソ is 0x83 0x5C in Shift-JIS: the second byte is a backslash.
    const QByteArray n = "N;CHARSET=SHIFT_JIS:\x95\x5C;\x83\x5C\x83\x74\x83\x67\r\n";
    const std::optional<Person> p = read(n, "2.1");
    ASSERT_TRUE(p);
    EXPECT_EQ(p->proposedName(), u"ソフト 表"_s);
}

TEST(Utf16Files, ByteOrderMarkEitherWayAndNone)
{
    const QString text
        = u"BEGIN:VCARD\r\nVERSION:3.0\r\nN:Ødegård;Åse\r\nNOTE;CHARSET=windows-1252:Ü\r\nEND:VCARD\r\n"_s;
    QStringEncoder le(QStringEncoder::Utf16LE), be(QStringEncoder::Utf16BE);
    const QByteArray little = le.encode(text), big = be.encode(text);
    for (const QByteArray &data : { "\xFF\xFE" + little, "\xFE\xFF" + big, little }) {
        const std::optional<Person> p = Person::initWithVCardRepresentation(data);
        ASSERT_TRUE(p);
        EXPECT_EQ(p->proposedName(), u"Åse Ødegård"_s);
        EXPECT_EQ(p->valueForProperty(PersonProperty::Note).toString(), u"Ü"_s);
    }
}

TEST(PrimaryByParameter, MarksTheRightValue)
{
    const ReadCase cases[] = {
        { "none: the first", card("EMAIL:a@x\r\nEMAIL:b@x\r\n"), "a@x" },
        { "TYPE=pref", card("EMAIL:a@x\r\nEMAIL;TYPE=pref:b@x\r\n"), "b@x" },
        { "list with pref", card("EMAIL:a@x\r\nEMAIL;TYPE=\"home,pref\":b@x\r\n"), "b@x" },
        { "lowest PREF", card("EMAIL;PREF=3:a@x\r\nEMAIL;PREF=1:b@x\r\nEMAIL;PREF=2:c@x\r\n", "4.0"), "b@x" },
        { "bare PREF", card("EMAIL;INTERNET:a@x\r\nEMAIL;PREF;INTERNET:b@x\r\n", "2.1"), "b@x" },
        { "bad PREF ignored", card("EMAIL:a@x\r\nEMAIL;PREF=zero:b@x\r\n", "4.0"), "a@x" },
    };
    for (const ReadCase &c : cases) {
        const std::optional<Person> p = Person::initWithVCardRepresentation(c.data);
        ASSERT_TRUE(p) << c.what;
        EXPECT_EQ(p->primaryEmail(), c.expected) << c.what;
    }
}

TEST(Parameters, ListsQuotesAndCase)
{
    const std::optional<Person> p = read("tel;type=home,work;x-note=\"a;b:c\":555\r\n"
                                         "ITEM7.Email;Type=Work:w@x\r\nitem7.x-ablabel:Office\r\n"
                                         "X-ABShowAs:company\r\nORG:Acme\r\nN:Doe;Jo\r\n");
    ASSERT_TRUE(p);
    EXPECT_EQ(p->phoneNumbers(), QStringList { "555" });
    EXPECT_EQ(shown(*p, PersonProperty::Phone), "home: 555");
    EXPECT_EQ(shown(*p, PersonProperty::Email), "Office: w@x");
    EXPECT_EQ(p->proposedName(), "Acme - Jo Doe");

    const std::optional<Person> org
        = read("KIND:org\r\nFN:Widgets Ltd\r\nTEL;VALUE=uri;TYPE=\"work,voice\":tel:+44-20-7946\r\n", "4.0");
    ASSERT_TRUE(org);
    EXPECT_TRUE(org->showAsCompany());
    EXPECT_EQ(shown(*org, PersonProperty::Phone), "work: +44-20-7946");
}

// Every form decodes to the same bytes (base64 with both 62 and 63); the next property is still read.
TEST(EmbeddedPhoto, EveryFormDecodesToTheBytes)
{
    const struct
    {
        const char *what;
        QByteArray lines;
        const char *version;
    } cases[] = {
        { "3.0 folded", "PHOTO;ENCODING=b:SGVs\r\n bG8hP//+\r\n", "3.0" },
        { "unpadded, URL-safe", "PHOTO;ENCODING=b:SGVsbG8hP__-\r\n", "3.0" },
        { "padded with blanks", "PHOTO;ENCODING=b:SGVs bG8h P//+ \r\n", "3.0" },
        { "2.1 indented, blank line", "PHOTO;BASE64:\r\n  SGVsbG8h\r\n  P//+\r\n\r\n", "2.1" },
        { "2.1 not indented, up to the next property", "PHOTO;ENCODING=BASE64;TYPE=JPEG:SGVsbG8h\r\nP//+\r\n",
            "2.1" },
        { "no ENCODING parameter", "PHOTO;TYPE=JPEG:SGVsbG8hP//+\r\n", "3.0" },
        { "4.0 data URI, any case", "PHOTO:DATA:image/jpeg;BASE64,SGVsbG8hP//+\r\n", "3.0" },
    };
    for (const auto &c : cases) {
        const std::optional<Person> p = read(c.lines + "NOTE:after\r\n", c.version);
        ASSERT_TRUE(p) << c.what;
        EXPECT_EQ(p->valueForProperty(PersonProperty::Photo).toByteArray(), QByteArray("Hello!?\xFF\xFE"))
            << c.what;
        EXPECT_EQ(p->valueForProperty(PersonProperty::Note).toString(), "after") << c.what;
    }
}

TEST(Values, DatesInstantMessagingAndLabels)
{
    const std::optional<Person> p
        = read("BDAY:19800501T000000Z\r\nX-ICQ;TYPE=WORK:12345\r\nIMPP:msnim:mara@msn.example\r\n"
               "IMPP:ymsgr:mara\r\nIMPP:sip:mara@voip.example\r\nX-JABBER:mara@jabber.example\r\n"
               "item1.URL:https\\://a.example\r\nitem1.X-ABLabel:_$!<HomePage>!$_\r\n"
               "item2.TEL:1\r\nitem2.X-ABLabel:_$!<WorkFAX>!$_\r\nTEL;WORK;FAX:2\r\nTEL;CELL:3\r\n");
    ASSERT_TRUE(p);
    EXPECT_EQ(p->valueForProperty(PersonProperty::Birthday).toDate(), QDate(1980, 5, 1));
    EXPECT_EQ(first(card("BDAY:--0501\r\n"), PersonProperty::Birthday), "--0501"); // no year: kept as text
    EXPECT_EQ(first(card("BDAY:1980-02-30\r\n"), PersonProperty::Birthday), "1980-02-30");
    EXPECT_EQ(ABValuesForKey(*p, PersonProperty::ICQInstant), QStringList { "12345" });
    EXPECT_EQ(ABValuesForKey(*p, PersonProperty::YahooInstant), QStringList { "mara" });
    EXPECT_EQ(ABValuesForKey(*p, PersonProperty::JabberInstant), QStringList { "mara@jabber.example" });
    EXPECT_EQ(shown(*p, PersonProperty::URLs), "home page: https://a.example");
    EXPECT_EQ(shown(*p, PersonProperty::Phone), "work fax: 1\nwork fax: 2\nmobile: 3");
    EXPECT_EQ(p->valueForProperty(PersonProperty::HomePage).toString(), "https://a.example");
}

TEST(BrokenInput, NilOrWhatCouldBeRead)
{
    const QString nil = u"(nil)"_s;
    const ReadCase cases[] = {
        { "empty", "", nil },
        { "no BEGIN", "VERSION:3.0\r\nN:Holt;Mara\r\nEND:VCARD\r\n", nil },
        { "binary", QByteArray("\x00\x01\xFF\xFE\x00\x00\x0A", 7), nil },
        { "no END", "BEGIN:VCARD\r\nN:Holt;Mara\r\nEMAIL:m@x\r\n", "Mara Holt" },
        { "cut inside the last line", "BEGIN:VCARD\r\nN:Holt;Mara\r\nNICKNAME:Mo", "Mara Holt" },
        { "cut inside a picture", "BEGIN:VCARD\r\nFN:Mara\r\nPHOTO;ENCODING=b:/9j/4AAQ\r\n", "Mara" },
        { "lines without a colon", "junk\r\nBEGIN:VCARD\r\nN\r\nN;x\r\n;;;\r\nN:Holt;Mara\r\nEND:VCARD",
            "Mara Holt" },
        { "QP soft break at the end", "BEGIN:VCARD\r\nN:A;B\r\nNOTE;QUOTED-PRINTABLE:x=", "B A" },
        { "nested AGENT card skipped",
            "BEGIN:VCARD\r\nVERSION:2.1\r\nAGENT:\r\nBEGIN:VCARD\r\nN:Agent;Secret\r\nEND:VCARD\r\n"
            "N:Holt;Mara\r\nEND:VCARD\r\n",
            "Mara Holt" },
        { "empty card", "BEGIN:VCARD\r\nEND:VCARD\r\n", QString() },
    };
    for (const ReadCase &c : cases) {
        const std::optional<Person> p = Person::initWithVCardRepresentation(c.data);
        EXPECT_EQ(p ? p->proposedName() : nil, c.expected) << c.what;
        EXPECT_EQ(p && p->proposedName().isNull(), c.expected.isNull()) << c.what;
    }
}

TEST(Limits, PictureBeyondTheFileLimitLeavesTheRest)
{
    const QByteArray picture
        = (QByteArray(74, 'A') + "\r\n ").repeated(VCardLimits::MaxFileBytes / 77 + 10000) + "AAAA\r\n";
    const std::optional<Person> p
        = readFile("BEGIN:VCARD\r\nVERSION:3.0\r\nN:Holt;Mara\r\nPHOTO;ENCODING=b;TYPE=JPEG:" + picture
            + "EMAIL:m@x\r\nEND:VCARD\r\n");
    ASSERT_TRUE(p);
    EXPECT_EQ(p->proposedName(), "Mara Holt");
    EXPECT_FALSE(p->valueForProperty(PersonProperty::Photo).isValid());
}

TEST(Limits, OverlongValuesAreConsumedAndSkipped)
{
    // Past the limit the lines of a continued value must still be taken as its own, not as properties.
    const qsizetype rows = VCardLimits::MaxPropertyBytes / 13 + 10; // 13 bytes of each kept
    const QByteArray line = "NOTE:" + QByteArray(VCardLimits::MaxPropertyBytes, 'x') + "\r\n";
    const QByteArray picture = "PHOTO;BASE64:\r\n" + (QByteArray(13, 'A') + "\r\n").repeated(rows) + "\r\n";
    const QByteArray note
        = "NOTE;QUOTED-PRINTABLE:=\r\n" + QByteArray("EMAIL:bogus@x=\r\n").repeated(rows) + "end\r\n";
    const std::optional<Person> p = read(line + "EMAIL:m@x\r\n" + picture + note + "N:Holt;Mara\r\n", "2.1");
    ASSERT_TRUE(p);
    EXPECT_FALSE(p->valueForProperty(PersonProperty::Photo).isValid());
    EXPECT_FALSE(p->valueForProperty(PersonProperty::Note).isValid());
    EXPECT_EQ(p->emailAdresses(), QStringList { "m@x" });
    EXPECT_EQ(p->proposedName(), "Mara Holt");
}

TEST(Limits, TooManyPropertiesKeepTheFirstOnes)
{
    QByteArray data = "BEGIN:VCARD\r\nN:Holt;Mara\r\n";
    for (int i = 0; i < 10 * VCardLimits::MaxPropertiesPerCard; ++i)
        data += "EMAIL:" + QByteArray::number(i) + "@x\r\n";
    data += "NOTE:past the limit\r\nEND:VCARD\r\nBEGIN:VCARD\r\nN:Two;B\r\nEND:VCARD\r\n";
    const QList<Person> people = readVCards(data);
    ASSERT_EQ(people.size(), 2);
    EXPECT_EQ(people.at(0).emailAdresses()->size(), VCardLimits::MaxPropertiesPerCard - 1);
    EXPECT_FALSE(people.at(0).valueForProperty(PersonProperty::Note).isValid());
    EXPECT_EQ(people.at(1).proposedName(), "B Two");
}

TEST(Limits, ManyCardsAndNestingStayLinear)
{
    QByteArray data;
    for (int i = 0; i < 200 * 1000; ++i)
        data += "BEGIN:VCARD\n";
    EXPECT_EQ(readVCards(data).size(), 1); // each BEGIN nests in the first card
    data = QByteArray("BEGIN:VCARD\nEND:VCARD\n").repeated(50 * 1000);
    EXPECT_EQ(readVCards(data).size(), 50 * 1000);
    EXPECT_EQ(readVCards(data, 10).size(), 10);
}

QByteArray crlf(QByteArray text) { return text.replace("\n", "\r\n"); }

TEST(ExportedCards, MacContacts)
{
    const std::optional<Person> p = readFile(crlf(
        "BEGIN:VCARD\nVERSION:3.0\nPRODID:-//Apple Inc.//macOS 13.4//EN\nN:Holt;Mara;Jo;Dr.;\n"
        "FN:Dr. Mara Jo Holt\nNICKNAME:Mo\nORG:Widgets\\, Inc.;Research\nTITLE:Engineer\n"
        "EMAIL;type=INTERNET;type=HOME:mara@home.example\n"
        "EMAIL;type=INTERNET;type=WORK;type=pref:mara@widgets.example\n"
        "TEL;type=CELL;type=VOICE;type=pref:+1 555 0100\nTEL;type=WORK;type=VOICE:+1 555 0101\n"
        "item1.TEL:+1 555 0102\nitem1.X-ABLabel:_$!<Other>!$_\nitem3.URL;type=pref:https://mara.example\n"
        "item4.URL:https://blog.example\nitem4.X-ABLabel:Blog\nitem3.X-ABLabel:_$!<HomePage>!$_\n"
        "X-ABShowAs:COMPANY\nEND:VCARD\n"));
    ASSERT_TRUE(p);
    EXPECT_EQ(p->proposedName(), "Widgets, Inc. - Mara Jo Holt");
    EXPECT_TRUE(p->showAsCompany());
    EXPECT_EQ(p->primaryEmail(), "mara@widgets.example");
    EXPECT_EQ(shown(*p, PersonProperty::Phone), "mobile: +1 555 0100\nwork: +1 555 0101\nother: +1 555 0102");
    EXPECT_EQ(p->homePage(), "https://mara.example");
}

TEST(ExportedCards, FullNameAloneNamesThePersonAndAReferencedPhotoIsKeptAsItsAddress)
{
    const std::optional<Person> p = readFile(
        "BEGIN:VCARD\nVERSION:3.0\nFN:Kim\nTEL:123\nPHOTO;VALUE=uri:https://pics.example/b.jpg\nEND:VCARD\n");
    ASSERT_TRUE(p);
    EXPECT_EQ(p->proposedName(), "Kim");
    EXPECT_EQ(p->valueForProperty(PersonProperty::Photo).toUrl(), QUrl(u"https://pics.example/b.jpg"_s));
}

TEST(Files, MissingOrEmptyFileIsNilAndOfSeveralCardsTheFirstIsThePerson)
{
    const test::TempDir dir;
    EXPECT_FALSE(Person::initWithContentsOfFile(dir.file(u"none.vcf"_s)));
    EXPECT_FALSE(Person::initWithContentsOfFile(QString()));
    EXPECT_FALSE(Person::initWithContentsOfFile(dir.path()));
    EXPECT_FALSE(readFile(QByteArray()));
    EXPECT_EQ(readFile("BEGIN:VCARD\nN:One;A\nEND:VCARD\nBEGIN:VCARD\nN:Two;B\nEND:VCARD\n")->proposedName(),
        "A One");
}

} // namespace
