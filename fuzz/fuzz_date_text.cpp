// Dates in text from files and servers: the natural-language, HTTP, document and format parsers.
#include "FuzzSupport.h"

#include "strings/DateParsing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(orvel::fuzz::bytesOf(data, size));
    orvel::date(text);
    orvel::dateWithNaturalLanguageString(text);
    orvel::dateFromHTTPHeaderValue(text);
    orvel::documentDate(text);
    // The first line is a calendar format, the rest the text it reads.
    const qsizetype newline = text.indexOf(u'\n');
    if (newline >= 0)
        orvel::dateWithCalendarFormat(QStringView(text).mid(newline + 1), QStringView(text).left(newline));
    return 0;
}
