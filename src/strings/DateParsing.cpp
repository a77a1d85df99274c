// Date parsing: a small strftime-style format reader, the format choice of date(), a natural-
// language fallback and the document-date scan.
#include "strings/DateParsing.h"

#include "strings/Separation.h"
#include "strings/StringCharacters.h"
#include "strings/StringExtensions.h"

#include <QLoggingCategory>
#include <QTimeZone>
#include <array>
#include <optional>

namespace orvel {

namespace {

Q_LOGGING_CATEGORY(stringsLog, "orvel.strings")

constexpr std::array<const char16_t *, 12> MonthNames = { u"january", u"february", u"march", u"april", u"may",
    u"june", u"july", u"august", u"september", u"october", u"november", u"december" };
constexpr std::array<const char16_t *, 7> WeekdayNames
    = { u"monday", u"tuesday", u"wednesday", u"thursday", u"friday", u"saturday", u"sunday" };

inline bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }
inline bool isWhite(QChar c) { return c == u' ' || c == u'\t' || c.unicode() == 0x00A0; }
inline char16_t lowerAscii(char16_t c) { return (c >= u'A' && c <= u'Z') ? char16_t(c + 32) : c; }

// Matches one of names (full, or its first three letters) at the start of s; answers its index and
// sets *used to the units read.
int matchName(QStringView s, const char16_t *const *names, int count, qsizetype *used)
{
    for (int i = 0; i < count; ++i) {
        const QStringView full(names[i]);
        for (qsizetype len : { full.size(), qsizetype(3) }) {
            if (s.size() < len)
                continue;
            bool same = true;
            for (qsizetype k = 0; k < len && same; ++k)
                same = lowerAscii(s[k].unicode()) == full[k].unicode();
            // A three-letter form must not be the start of a longer word ("Marching").
            if (same && (len == full.size() || s.size() == len || !s[len].isLetter())) {
                *used = len;
                return i;
            }
        }
    }
    return -1;
}

int twoDigitYear(int y) { return y < 69 ? 2000 + y : 1900 + y; }

// Reads up to maxDigits digits (at least minDigits); -1 when there are too few.
int readNumber(QStringView s, qsizetype *pos, int minDigits, int maxDigits)
{
    int value = 0, digits = 0;
    while (*pos < s.size() && digits < maxDigits && isDigit(s[*pos])) {
        value = value * 10 + (s[*pos].unicode() - u'0');
        ++*pos;
        ++digits;
    }
    return digits >= minDigits ? value : -1;
}

// A zone: GMT, UTC, UT, Z, +hhmm, +hh:mm, +hh, or a common abbreviation; offset in seconds.
std::optional<int> readZone(QStringView s, qsizetype *pos)
{
    const QStringView rest = s.sliced(*pos);
    if (!rest.isEmpty() && (rest[0] == u'+' || rest[0] == u'-')) {
        const int sign = rest[0] == u'-' ? -1 : 1;
        qsizetype p = *pos + 1;
        const int hh = readNumber(s, &p, 2, 2);
        if (hh < 0 || hh > 14)
            return std::nullopt;
        int mm = 0;
        if (p < s.size() && s[p] == u':')
            ++p;
        if (p < s.size() && isDigit(s[p])) {
            mm = readNumber(s, &p, 2, 2);
            if (mm < 0 || mm > 59)
                return std::nullopt;
        }
        *pos = p;
        return sign * (hh * 3600 + mm * 60);
    }
    struct Named
    {
        const char16_t *name;
        int hours;
    };
    static constexpr Named zones[]
        = { { u"GMT", 0 }, { u"UTC", 0 }, { u"UT", 0 }, { u"EST", -5 }, { u"EDT", -4 }, { u"CST", -6 },
              { u"CDT", -5 }, { u"MST", -7 }, { u"MDT", -6 }, { u"PST", -8 }, { u"PDT", -7 }, { u"CEST", 2 },
              { u"CET", 1 }, { u"MESZ", 2 }, { u"MEZ", 1 }, { u"BST", 1 }, { u"Z", 0 } };
    for (const Named &z : zones) {
        const QStringView name(z.name);
        if (rest.size() >= name.size() && rest.first(name.size()).compare(name, Qt::CaseInsensitive) == 0
            && (rest.size() == name.size() || !rest[name.size()].isLetter())) {
            *pos += name.size();
            // "GMT+0100" style: an offset may follow the name.
            if (*pos < s.size() && (s[*pos] == u'+' || s[*pos] == u'-')) {
                qsizetype p = *pos;
                if (const auto extra = readZone(s, &p)) {
                    *pos = p;
                    return z.hours * 3600 + *extra;
                }
            }
            return z.hours * 3600;
        }
    }
    return std::nullopt;
}

QDateTime makeDate(int year, int month, int day, int hour, int minute, int second, std::optional<int> zone)
{
    const QDate d(year, month, day);
    if (!d.isValid() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59)
        return QDateTime();
    const QTime t(hour, minute, second);
    if (zone)
        return QDateTime(d, t, QTimeZone(*zone));
    return QDateTime(d, t);
}

void logUnknown(QStringView s)
{
    qCWarning(stringsLog).noquote() << QStringLiteral("Unknown date: %1").arg(s);
}

} // namespace

QDateTime dateWithCalendarFormat(QStringView text, QStringView format)
{
    int year = -1, month = -1, day = -1, hour = 0, minute = 0, second = 0;
    std::optional<int> zone;
    qsizetype p = 0;
    for (qsizetype f = 0; f < format.size(); ++f) {
        const QChar fc = format[f];
        if (fc != u'%' || f + 1 >= format.size()) {
            if (isWhite(fc)) {
                if (p >= text.size() || !isWhite(text[p]))
                    return QDateTime();
                while (p < text.size() && isWhite(text[p]))
                    ++p;
            } else {
                if (p >= text.size() || lowerAscii(text[p].unicode()) != lowerAscii(fc.unicode()))
                    return QDateTime();
                ++p;
            }
            continue;
        }
        const char16_t d = format[++f].unicode();
        qsizetype used = 0;
        int value = 0;
        switch (d) {
        case u'a':
        case u'A':
            if (matchName(text.sliced(p), WeekdayNames.data(), 7, &used) < 0)
                return QDateTime();
            p += used;
            break;
        case u'b':
        case u'B':
            value = matchName(text.sliced(p), MonthNames.data(), 12, &used);
            if (value < 0)
                return QDateTime();
            month = value + 1;
            p += used;
            break;
        case u'd':
        case u'e':
            if ((day = readNumber(text, &p, 1, 2)) < 0)
                return QDateTime();
            break;
        case u'm':
            if ((month = readNumber(text, &p, 1, 2)) < 0)
                return QDateTime();
            break;
        case u'Y':
            if ((year = readNumber(text, &p, 1, 4)) < 0)
                return QDateTime();
            break;
        case u'y':
            if ((value = readNumber(text, &p, 2, 2)) < 0)
                return QDateTime();
            year = twoDigitYear(value);
            break;
        case u'H':
            if ((hour = readNumber(text, &p, 1, 2)) < 0)
                return QDateTime();
            break;
        case u'M':
            if ((minute = readNumber(text, &p, 1, 2)) < 0)
                return QDateTime();
            break;
        case u'S':
            if ((second = readNumber(text, &p, 1, 2)) < 0)
                return QDateTime();
            break;
        case u'Z':
        case u'z':
            zone = readZone(text, &p);
            if (!zone)
                return QDateTime();
            break;
        case u'%':
            if (p >= text.size() || text[p] != u'%')
                return QDateTime();
            ++p;
            break;
        default:
            return QDateTime(); // a directive this reader does not know
        }
    }
    // What follows the format: an optional fraction of a second and zone offset, then anything.
    if (p < text.size() && text[p] == u'.' && p + 1 < text.size() && isDigit(text[p + 1])) {
        ++p;
        while (p < text.size() && isDigit(text[p]))
            ++p;
    }
    if (!zone && p < text.size() && (text[p] == u'Z' || text[p] == u'+' || text[p] == u'-')) {
        qsizetype q = p;
        if (const auto z = readZone(text, &q))
            zone = z;
    }
    if (year < 0 || month < 0 || day < 0)
        return QDateTime();
    return makeDate(year, month, day, hour, minute, second, zone);
}

// The natural-language grammar. The text is read as tokens separated by white space and commas:
//
//   token   := group | time | month | weekday | meridian | word
//   group   := number (sep number){0,2}     sep := "/" | "." | "-"
//   time    := number ":" number (":" number)?
//   month   := an English month name, full or its first three letters, any case
//   weekday := an English weekday name, full or three letters (read and ignored)
//   meridian:= "am" | "pm" (after a time: 12-hour clock)
//   word    := anything else (ignored)
//
// A group of three numbers is year-month-day when the first has four digits, else month/day/year
// (American order, as written in English text) unless the first number is above 12, which makes
// it day/month/year; a two-digit year follows the %y rule. A group of two numbers is month/day, or
// day/month when the first is above 12. A lone number of four digits is the year, of one or two
// digits the day (the first such number only); longer numbers are ignored. The first date part
// found wins; later ones are ignored. A month must be known (from a name or a group), otherwise the
// result is nil; a missing day is the 1st, a missing year the current one, a missing time midnight,
// in local time.
QDateTime dateWithNaturalLanguageString(QStringView text)
{
    int year = -1, month = -1, day = -1, hour = 0, minute = 0, second = 0;
    bool sawTime = false;
    qsizetype i = 0;
    const qsizetype n = text.size();
    auto isSeparator = [](QChar c) { return c.isSpace() || c == u','; };
    while (i < n) {
        while (i < n && isSeparator(text[i]))
            ++i;
        qsizetype j = i;
        while (j < n && !isSeparator(text[j]))
            ++j;
        const QStringView token = text.sliced(i, j - i);
        i = j;
        if (token.isEmpty())
            continue;
        if (isDigit(token[0])) {
            // Numbers split by separators, or a time of day.
            int numbers[3] = { -1, -1, -1 };
            qsizetype digits[3] = { 0, 0, 0 };
            int count = 0;
            char16_t sep = 0;
            qsizetype p = 0;
            bool ok = true;
            while (p < token.size() && count < 3) {
                const qsizetype start = p;
                const int v = readNumber(token, &p, 1, 8);
                if (v < 0) {
                    ok = false;
                    break;
                }
                digits[count] = p - start;
                numbers[count++] = v;
                if (p >= token.size())
                    break;
                const char16_t c = token[p].unicode();
                if (c != u'/' && c != u'.' && c != u'-' && c != u':') {
                    ok = false;
                    break;
                }
                if (sep && sep != c) {
                    ok = false;
                    break;
                }
                sep = c;
                ++p;
            }
            if (!ok || p < token.size())
                continue;
            if (sep == u':') {
                if (sawTime || count < 2 || numbers[0] > 23 || numbers[1] > 59
                    || (count == 3 && numbers[2] > 59))
                    continue;
                sawTime = true;
                hour = numbers[0];
                minute = numbers[1];
                second = count == 3 ? numbers[2] : 0;
                continue;
            }
            if (count == 1) {
                if (digits[0] == 4 && year < 0)
                    year = numbers[0];
                else if (digits[0] <= 2 && day < 0 && numbers[0] >= 1 && numbers[0] <= 31)
                    day = numbers[0];
                continue;
            }
            if (month >= 0)
                continue;
            int a = numbers[0], b = numbers[1];
            if (count == 3 && digits[0] == 4) {
                year = a, month = b, day = numbers[2];
                continue;
            }
            if (a > 12)
                std::swap(a, b);
            month = a;
            day = b;
            if (count == 3)
                year = digits[2] == 2 ? twoDigitYear(numbers[2]) : numbers[2];
            continue;
        }
        qsizetype used = 0;
        if (const int m = matchName(token, MonthNames.data(), 12, &used); m >= 0 && used == token.size()) {
            if (month < 0)
                month = m + 1;
            continue;
        }
        if (sawTime
            && (token.compare(u"pm", Qt::CaseInsensitive) == 0
                || token.compare(u"am", Qt::CaseInsensitive) == 0)) {
            const bool pm = token[0].toLower() == u'p';
            if (hour >= 1 && hour <= 12)
                hour = (hour % 12) + (pm ? 12 : 0);
            continue;
        }
        // Weekday names and any other word are read and ignored.
    }
    if (month < 0)
        return QDateTime();
    if (day < 0)
        day = 1;
    if (year < 0)
        year = QDate::currentDate().year();
    return makeDate(year, month, day, hour, minute, second, std::nullopt);
}

QDateTime dateFromHTTPHeaderValue(QStringView s)
{
    if (s.isEmpty())
        return QDateTime();
    for (const char16_t *format :
        { u"%a, %d %b %Y %H:%M:%S %Z", u"%A, %d-%b-%y %H:%M:%S %Z", u"%a %b %d %H:%M:%S %Y" }) {
        const QDateTime d = dateWithCalendarFormat(s, format);
        if (d.isValid())
            return d;
    }
    return QDateTime();
}

namespace {

QDateTime parseDate(const QString &given)
{
    // 1. Cut before the first of ";[]{}()" and trim.
    QString text = given;
    if (const qsizetype cut = findOneOf(text, u";[]{}()"); cut != NotFound)
        text = text.left(cut);
    text = stringByTrimmingWhiteSpaces(text);
    if (text.isEmpty())
        return QDateTime();

    // 2. The counts that choose the format.
    const qsizetype L = text.size();
    const qsizetype D = countCharacter(text, u'.'), C = countCharacter(text, u':'),
                    H = countCharacter(text, u'-'), S = countCharacter(text, u'/');
    const bool hasLetter = containsAlphaCharacter(text);
    auto finalResult = [&](const char16_t *format) {
        const QDateTime d = dateWithCalendarFormat(text, format);
        if (!d.isValid())
            logUnknown(given);
        return d;
    };
    auto dashAt4 = [&] { return text.indexOf(u'-') == 4; };

    // 3. Eight digits.
    if (L == 8 && D == 0 && C == 0 && H == 0 && S == 0 && isDigitString(text)) {
        if (text[0] == u'2')
            return finalResult(u"%Y%m%d");
        if (text[4] == u'2')
            return finalResult(u"%d%m%Y");
    }
    // 4. Dotted date.
    if (D == 2 && (L == 8 || L == 10)) {
        if (L == 10)
            return finalResult(text[4] == u'.' ? u"%Y.%m.%d" : u"%d.%m.%Y");
        return finalResult(u"%d.%m.%y");
    }
    // 5. Dotted date with time.
    if (D == 2 && L == 19 && C == 2)
        return finalResult(u"%d.%m.%Y %H:%M:%S");

    QDateTime result;
    if (C != 2) {
        // 6. No full time of day.
        if (H != 2) {
            if (C == 0 && D == 0 && H == 0 && S == 2 && L >= 8 && L <= 10)
                result = dateWithCalendarFormat(text, text.indexOf(u'/') == 4 ? u"%Y/%m/%d" : u"%d/%m/%Y");
            else if (D == 2 && C == 1 && S == 0 && H == 0 && !hasLetter)
                result = dateWithCalendarFormat(text, u"%d.%m.%Y %H:%M");
        } else if (D <= 1 && C >= 3 && L >= 12) {
            // ISO date-times with a zone offset.
            result = dateWithCalendarFormat(text, dashAt4() ? u"%Y-%m-%dT%H:%M:%S" : u"%d-%m-%YT%H:%M:%S");
        } else if (C == 1 && !hasLetter) {
            result = dateWithCalendarFormat(text, u"%d-%m-%Y %H:%M");
        } else if (C == 0 && D == 0 && L >= 8 && L <= 10) {
            result = dateWithCalendarFormat(text, dashAt4() ? u"%Y-%m-%d" : u"%d-%m-%Y");
        }
    } else {
        // 7. A time with seconds: German and similar month spellings become the English ones first.
        for (const auto &[from, to] : { std::pair { u"Mrz", u"Mar" }, std::pair { u"Mai", u"May" },
                 std::pair { u"Mart", u"Mar" }, std::pair { u"Okt", u"Oct" }, std::pair { u"Dez", u"Dec" } })
            text = stringByReplacingString(text, from, to);
        result = dateWithCalendarFormat(text, u"%a, %d %b %Y %H:%M:%S %Z");
        if (!result.isValid()) {
            if (H != 2) {
                if (S == 2) {
                    result = dateWithCalendarFormat(text, u"%d/%m/%Y %H:%M:%S %Z");
                    if (!result.isValid())
                        result = dateWithCalendarFormat(text, u"%d/%m/%Y %H:%M:%S");
                } else {
                    result = dateWithCalendarFormat(text, u"%a %b %d %H:%M:%S %Y");
                }
            } else if (hasLetter) {
                result = dateWithCalendarFormat(text, u"%A, %d-%b-%y %H:%M:%S %Z");
            } else {
                result
                    = dateWithCalendarFormat(text, dashAt4() ? u"%Y-%m-%d %H:%M:%S" : u"%d-%m-%Y %H:%M:%S");
            }
        }
    }
    if (result.isValid())
        return result;

    // 8. Natural-language fallback; " 1 1" gives a day when the text ends in a word.
    if (H == 2)
        text.replace(u'-', u'/');
    const char16_t last = lastCharacter(text);
    if (!(last <= 255 && isDigit(QChar(last))))
        text += QStringLiteral(" 1 1");
    result = dateWithNaturalLanguageString(text);
    if (!result.isValid())
        logUnknown(given);
    return result;
}

} // namespace

QDateTime date(QStringView s)
{
    const QString given = s.toString();
    try {
        return parseDate(given);
    } catch (...) {
        logUnknown(given);
        return QDateTime();
    }
}

QDateTime documentDate(const QString &s)
{
    const QStringList words = wordsUsingDefaultSeparation(s);
    int n = 0, y = 0, first = 0, second = 0, year = 0;
    bool yearFirst = false;
    for (const QString &word : words) {
        const qsizetype len = word.size();
        if ((len != 2 && len != 4) || !isDigitString(word)) {
            n = y = 0;
            continue;
        }
        // isDigitString admits every decimal digit; only ASCII digits make a number here.
        bool ok = false;
        const int v = word.toInt(&ok);
        if (!ok) {
            n = y = 0;
            continue;
        }
        if (len == 2) {
            if (v < 1 || v > 31) {
                n = y = 0;
                continue;
            }
            (n == 0 ? first : second) = v;
            if (n > 0 && second > 12 && first > 12) {
                n = y = 0;
                continue;
            }
            ++n;
        } else {
            if ((n != 0 && n != 2) || v < 1950 || v > 2050) {
                n = y = 0;
                continue;
            }
            year = v;
            yearFirst = n == 0;
            ++y;
        }
        if (y == 1 && n == 2) {
            int dayOf, monthOf;
            if (second > 12)
                monthOf = first, dayOf = second;
            else if (first > 12)
                dayOf = first, monthOf = second;
            else if (yearFirst)
                monthOf = first, dayOf = second;
            else
                dayOf = first, monthOf = second;
            const QDate d(year, monthOf, dayOf);
            if (d.isValid())
                return QDateTime(d, QTime(0, 0));
            continue; // not a real day: keep the counts and read on
        }
        if (n >= 3 || y >= 2)
            n = y = 0;
    }
    return QDateTime();
}

} // namespace orvel
