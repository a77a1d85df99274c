// Turning free-form date text into a date: HTTP header dates, single date values of unknown format,
// and the first plausible numeric date among the words of a document.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>

namespace orvel {

// Results are invalid QDateTime values (nil) when nothing parses. A date without a zone in its
// text is in local time.

/// Parses text against a strftime-style format: %a %A weekday, %b %B month (English names, full or
/// three letters, any case; weekdays are read, not checked), %d %m %H %M %S one or two digits, %Y up
/// to four digits, %y two digits (00-68 are 2000-2068, 69-99 are 1969-1999, as POSIX strptime has
/// it), %Z %z a zone (GMT, UTC, UT, Z, +hhmm, +hh:mm, or one of the common North American and
/// Central European abbreviations), %% a percent sign. A space matches one or more white units;
/// letters match in any case. After the format, a fraction of a second (".123") and a zone offset
/// are read when present and the rest is ignored.
QDateTime dateWithCalendarFormat(QStringView text, QStringView format);
/// Reads a date out of loosely written English text (grammar in DateParsing.cpp); nil when the text
/// names no month.
QDateTime dateWithNaturalLanguageString(QStringView text);

/// RFC 1123, RFC 850 and asctime dates; nil for an empty or unreadable value.
QDateTime dateFromHTTPHeaderValue(QStringView s);
/// A single date value in one of many formats, chosen by counting '.', ':', '-' and '/'; logs
/// "Unknown date: <s>" (warning, category "orvel.strings") when a non-blank value does not parse.
QDateTime date(QStringView s);
/// The first day/month/year triple standing in consecutive words (day and month two digits, year
/// 1950-2050 before or after them), at midnight; nil when there is none.
QDateTime documentDate(const QString &s);

} // namespace orvel
