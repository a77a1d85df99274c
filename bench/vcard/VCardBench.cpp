// Reads a file of vCards into persons and their metadata, timed; and writes such a file, a mix of
// the styles that address books, phones and mail services export, from a fixed seed.
//   vcard_bench --write FILE [CARDS]     make the file (default 10,000 cards)
//   vcard_bench FILE [RUNS]              read it RUNS times (default 5), print the median CPU seconds
#include "extras/VCardReader.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

using namespace orvel;

namespace {

// A small linear congruential generator: the same file on every machine and library.
class Random
{
public:
    unsigned next(unsigned n)
    {
        m_state = m_state * 6364136223846793005ULL + 1442695040888963407ULL;
        return unsigned(m_state >> 33) % n;
    }
    template <class T, size_t N> const T &pick(const T (&items)[N]) { return items[next(N)]; }

private:
    unsigned long long m_state = 20261122;
};

const char *const FirstNames[] = { "Mara", "Jürgen", "Ana", "Søren", "Chloé", "Kenji", "Olga", "Liam", "Zoë",
    "Ahmed", "Ingrid", "Pedro", "Mei", "Noah", "Élodie", "Tomasz" };
const char *const LastNames[] = { "Holt", "Müller", "Lima", "Østergaard", "Dubois", "Tanaka", "Ivanova",
    "Walsh", "García", "Nowak", "Okafor", "Lindqvist", "Rossi", "Chen", "Bakker", "Kowalski" };
const char *const Companies[] = { "Widgets, Inc.", "Bäckerei Schmidt", "Acme; Tools", "Nordlys AS",
    "Café du Port", "Tanaka Shoji", "Lumen Labs", "Harbour & Sons" };
const char *const Streets[] = { "1 Main St", "Hauptstraße 5", "Rua das Flores, 12", "Strandvejen 100",
    "12 rue de la Paix", "Calle Mayor 3" };
const char *const Cities[] = { "Springfield", "Berlin", "São Paulo", "København", "Paris", "Madrid" };
const char *const Notes[] = { "Met at the fair, 2019. Likes tea; hates coffee.",
    "Ruft lieber abends an. Geburtstag im Mai, Geschenkidee: Bücher über Segeln und alte Karten.",
    "Contato da conferência; enviar proposta até sexta-feira.", "" };

QByteArray escaped(QByteArray s) { return s.replace("\\", "\\\\").replace(",", "\\,").replace(";", "\\;"); }

QByteArray quotedPrintable(const QByteArray &s)
{
    QByteArray out;
    int column = 0;
    for (unsigned char c : s) {
        QByteArray piece = (c >= 33 && c <= 126 && c != '=') || c == ' '
            ? QByteArray(1, char(c))
            : "=" + QByteArray::number(c, 16).toUpper().rightJustified(2, '0');
        if (column + piece.size() > 72) {
            out += "=\r\n";
            column = 0;
        }
        out += piece;
        column += int(piece.size());
    }
    return out;
}

// Folds a line at 75 bytes, as 3.0 exporters do (a fold may split a UTF-8 sequence).
QByteArray folded(const QByteArray &line)
{
    QByteArray out;
    for (qsizetype i = 0; i < line.size(); i += 74)
        out += (i ? " " : "") + line.mid(i, i ? 74 : 75) + "\r\n", i += i ? 0 : 1;
    return out;
}

QByteArray picture(Random &r, int bytes)
{
    QByteArray data(bytes, '\0');
    for (char &c : data)
        c = char(r.next(256));
    return data.toBase64();
}

QByteArray macCard(Random &r, int i)
{
    const QByteArray first = r.pick(FirstNames), last = r.pick(LastNames), org = r.pick(Companies);
    QByteArray c = "BEGIN:VCARD\r\nVERSION:3.0\r\nPRODID:-//Apple Inc.//macOS 13.4//EN\r\n";
    c += "N:" + escaped(last) + ";" + escaped(first) + ";;;\r\nFN:" + first + " " + last + "\r\n";
    c += "ORG:" + escaped(org) + ";\r\n";
    c += "EMAIL;type=INTERNET;type=WORK;type=pref:" + first.toLower().toPercentEncoding() + "."
        + QByteArray::number(i) + "@work.example\r\n";
    c += "item1.EMAIL;type=INTERNET:" + QByteArray::number(i)
        + "@home.example\r\nitem1.X-ABLabel:_$!<Other>!$_\r\n";
    c += "TEL;type=CELL;type=VOICE;type=pref:+1 555 " + QByteArray::number(1000 + r.next(9000)) + "\r\n";
    c += "TEL;type=WORK;type=VOICE:+1 555 " + QByteArray::number(1000 + r.next(9000)) + "\r\n";
    c += folded("item2.ADR;type=HOME;type=pref:;;" + escaped(r.pick(Streets)) + ";" + escaped(r.pick(Cities))
        + ";;" + QByteArray::number(10000 + r.next(89999)) + ";USA");
    c += "item2.X-ABADR:us\r\nitem3.URL;type=pref:https://example.org/~" + QByteArray::number(i)
        + "\r\nitem3.X-ABLabel:_$!<HomePage>!$_\r\n";
    c += "IMPP;X-SERVICE-TYPE=AIM;type=HOME;type=pref:aim:user" + QByteArray::number(i) + "\r\n";
    if (const QByteArray note = r.pick(Notes); !note.isEmpty())
        c += folded("NOTE:" + escaped(note));
    c += "BDAY;value=date:19" + QByteArray::number(50 + r.next(50)) + "-0" + QByteArray::number(1 + r.next(9))
        + "-1" + QByteArray::number(r.next(10)) + "\r\n";
    if (r.next(10) == 0)
        c += folded("PHOTO;ENCODING=b;TYPE=JPEG:" + picture(r, 2000 + int(r.next(3000))));
    if (r.next(8) == 0)
        c += "X-ABShowAs:COMPANY\r\n";
    return c + "END:VCARD\r\n";
}

QByteArray phoneCard(Random &r, int i)
{
    const QByteArray first = r.pick(FirstNames), last = r.pick(LastNames);
    QByteArray c = "BEGIN:VCARD\r\nVERSION:2.1\r\n";
    c += "N;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" + quotedPrintable(last + ";" + first) + ";;;\r\n";
    c += "FN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" + quotedPrintable(first + " " + last) + "\r\n";
    c += "TEL;CELL;PREF:+49 170 " + QByteArray::number(1000000 + r.next(8999999)) + "\r\n";
    c += "TEL;HOME:+49 30 " + QByteArray::number(100000 + r.next(899999)) + "\r\n";
    c += "EMAIL;HOME:p" + QByteArray::number(i) + "@mail.example\r\n";
    if (const QByteArray note = r.pick(Notes); !note.isEmpty())
        c += "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" + quotedPrintable(note) + "\r\n";
    return c + "END:VCARD\r\n";
}

QByteArray webMailCard(Random &r, int i)
{
    const QByteArray first = r.pick(FirstNames), last = r.pick(LastNames);
    QByteArray c = "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + first + " " + last + "\r\n";
    c += "N:" + escaped(last) + ";" + escaped(first) + ";;;\r\n";
    c += "EMAIL;TYPE=INTERNET;TYPE=HOME:w" + QByteArray::number(i) + "@gmail.example\r\n";
    c += "EMAIL;TYPE=INTERNET:w" + QByteArray::number(i) + "@corp.example\r\n";
    c += "TEL;TYPE=CELL:+55 11 9" + QByteArray::number(1000 + r.next(8999)) + "-5678\r\n";
    c += "ADR;TYPE=HOME:;;" + escaped(r.pick(Streets)) + ";" + escaped(r.pick(Cities))
        + ";;01000-000;Brasil\r\n";
    c += "ORG:" + escaped(r.pick(Companies)) + "\r\n";
    c += "item1.URL:http\\://w" + QByteArray::number(i) + ".example\r\nitem1.X-ABLabel:_$!<HomePage>!$_\r\n";
    return c + "CATEGORIES:myContacts\r\nEND:VCARD\r\n";
}

// Outlook writes 2.1 with the Windows code page, and quoted-printable for what is not ASCII.
QByteArray outlookCard(Random &r, int i)
{
    const auto cp1252 = [](const char *utf8) { return QString::fromUtf8(utf8).toLatin1(); };
    const QByteArray first = cp1252(r.pick(FirstNames)), last = cp1252(r.pick(LastNames));
    QByteArray c = "BEGIN:VCARD\r\nVERSION:2.1\r\n";
    c += "N;LANGUAGE=de;CHARSET=Windows-1252;ENCODING=QUOTED-PRINTABLE:" + quotedPrintable(last + ";" + first)
        + "\r\n";
    c += "FN;CHARSET=Windows-1252;ENCODING=QUOTED-PRINTABLE:" + quotedPrintable(first + " " + last) + "\r\n";
    c += "ORG;CHARSET=Windows-1252;ENCODING=QUOTED-PRINTABLE:" + quotedPrintable(cp1252(r.pick(Companies)))
        + "\r\n";
    c += "TEL;WORK;VOICE:(030) " + QByteArray::number(1000 + r.next(8999)) + "\r\n";
    c += "ADR;WORK;PREF;ENCODING=QUOTED-PRINTABLE;CHARSET=Windows-1252:;;"
        + quotedPrintable(cp1252(r.pick(Streets)).replace(";", "") + "\r\nHinterhaus;"
            + cp1252(r.pick(Cities)) + ";;10115;Deutschland")
        + "\r\n";
    c += "NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=Windows-1252:"
        + quotedPrintable(cp1252(r.pick(Notes)) + " \x80 5") + "\r\n";
    c += "EMAIL;PREF;INTERNET:o" + QByteArray::number(i) + "@outlook.example\r\n";
    return c + "X-MS-OL-DEFAULT-POSTAL-ADDRESS:2\r\nREV:20240101T120000Z\r\nEND:VCARD\r\n";
}

QByteArray companyCard(Random &r, int i)
{
    QByteArray c = "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:org\r\n";
    const QByteArray org = r.pick(Companies);
    c += "FN:" + escaped(org) + "\r\nORG:" + escaped(org) + "\r\n";
    c += "EMAIL;PREF=2:info" + QByteArray::number(i) + "@company.example\r\n";
    c += "EMAIL;PREF=1:sales" + QByteArray::number(i) + "@company.example\r\n";
    c += "TEL;VALUE=uri;TYPE=\"work,voice\":tel:+44-20-7946-" + QByteArray::number(1000 + r.next(8999))
        + "\r\n";
    c += "URL:https://company" + QByteArray::number(i) + ".example\r\n";
    return c + "END:VCARD\r\n";
}

// The process's CPU time: on a shared machine wall time says more about the neighbours.
double cpuSeconds()
{
    timespec t {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

QByteArray makeFile(int cards)
{
    Random r;
    QByteArray out;
    for (int i = 0; i < cards; ++i) {
        const unsigned kind = r.next(100);
        out += kind < 40 ? macCard(r, i)
            : kind < 65  ? phoneCard(r, i)
            : kind < 85  ? webMailCard(r, i)
            : kind < 95  ? outlookCard(r, i)
                         : companyCard(r, i);
    }
    return out;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc >= 3 && QByteArray(argv[1]) == "--write") {
        QFile file(QString::fromLocal8Bit(argv[2]));
        const QByteArray data = makeFile(argc >= 4 ? atoi(argv[3]) : 10000);
        if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size())
            return std::fprintf(stderr, "cannot write %s\n", argv[2]), 1;
        return 0;
    }
    if (argc < 2)
        return std::fprintf(stderr, "usage: vcard_bench --write FILE [CARDS] | vcard_bench FILE [RUNS]\n"), 2;
    const int runs = argc >= 3 ? std::max(1, atoi(argv[2])) : 5;
    std::vector<double> seconds;
    qsizetype cards = 0, emails = 0, phones = 0, textUnits = 0;
    for (int run = 0; run < runs; ++run) {
        const double start = cpuSeconds();
        QFile file(QString::fromLocal8Bit(argv[1]));
        if (!file.open(QIODevice::ReadOnly))
            return std::fprintf(stderr, "cannot read %s\n", argv[1]), 1;
        const QList<Person> people = readVCards(file.readAll());
        cards = emails = phones = textUnits = 0;
        for (const Person &person : people) {
            const QVariantMap metadata = person.metaData();
            ++cards;
            emails += metadata.value(kMDItemEmailAddresses.toString()).toStringList().size();
            phones += metadata.value(kMDItemPhoneNumbers.toString()).toStringList().size();
            textUnits += metadata.value(kMDItemTextContent.toString()).toString().size();
        }
        seconds.push_back(cpuSeconds() - start);
    }
    std::sort(seconds.begin(), seconds.end());
    std::printf("cards %lld emails %lld phones %lld text %lld cpu-seconds %.4f\n", (long long)cards,
        (long long)emails, (long long)phones, (long long)textUnits, seconds[seconds.size() / 2]);
    return 0;
}
