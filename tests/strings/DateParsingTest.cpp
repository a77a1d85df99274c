// Date parsing: each format branch of date(), HTTP dates, the fallback and the document-date scan.
#include "strings/DateParsing.h"

#include "testlib/TestSupport.h"

#include <QTimeZone>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;

namespace {

// The warnings of the string toolkit while a LogCapture lives.
QStringList logged;

struct LogCapture
{
    LogCapture() { logged.clear(); }
    ~LogCapture() { qInstallMessageHandler(previous); }

    const QtMessageHandler previous
        = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &message) {
              if (context.category && QByteArray(context.category) == "orvel.strings")
                  logged.append(message);
          });
};

struct DateCase
{
    const char16_t *text;
    int year, month, day, hour, minute, second;
    std::optional<int> offset; // seconds east of UTC, when the text has a zone
};

class DateFormats : public ::testing::TestWithParam<DateCase>
{
};

TEST_P(DateFormats, ParsesByTheCounts)
{
    const DateCase c = GetParam();
    LogCapture log;
    const QDateTime d = date(c.text);
    ASSERT_TRUE(d.isValid()) << QString::fromUtf16(c.text);
    EXPECT_EQ(d.date(), QDate(c.year, c.month, c.day)) << QString::fromUtf16(c.text);
    EXPECT_EQ(d.time(), QTime(c.hour, c.minute, c.second)) << QString::fromUtf16(c.text);
    if (c.offset) {
        EXPECT_EQ(d.offsetFromUtc(), *c.offset) << QString::fromUtf16(c.text);
    } else {
        EXPECT_EQ(d.timeSpec(), Qt::LocalTime) << QString::fromUtf16(c.text);
    }
    EXPECT_TRUE(logged.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Branches, DateFormats,
    ::testing::Values(DateCase { u"20100315", 2010, 3, 15, 0, 0, 0, {} }, // %Y%m%d
        DateCase { u"15032010", 2010, 3, 15, 0, 0, 0, {} }, // %d%m%Y: fifth character '2'
        DateCase { u"15.03.2010", 2010, 3, 15, 0, 0, 0, {} }, // %d.%m.%Y
        DateCase { u"2010.03.15", 2010, 3, 15, 0, 0, 0, {} }, // %Y.%m.%d
        DateCase { u"15.03.10", 2010, 3, 15, 0, 0, 0, {} }, // %d.%m.%y
        DateCase { u"01.02.75", 1975, 2, 1, 0, 0, 0, {} }, // two-digit years from 69 are 19xx
        DateCase { u"15.03.2010 10:20:30", 2010, 3, 15, 10, 20, 30, {} }, // %d.%m.%Y %H:%M:%S
        DateCase { u"2010/03/15", 2010, 3, 15, 0, 0, 0, {} }, // %Y/%m/%d
        DateCase { u"15/3/2010", 2010, 3, 15, 0, 0, 0, {} }, // %d/%m/%Y
        DateCase { u"2010-03-15", 2010, 3, 15, 0, 0, 0, {} }, // %Y-%m-%d
        DateCase { u"15-03-2010", 2010, 3, 15, 0, 0, 0, {} }, // %d-%m-%Y
        DateCase { u"15-03-2010 10:20", 2010, 3, 15, 10, 20, 0, {} }, // %d-%m-%Y %H:%M
        DateCase { u"2010-03-15T10:20:30+01:00", 2010, 3, 15, 10, 20, 30, 3600 }, // ISO with offset
        DateCase { u"15-03-2010T10:20:30.250+05:30", 2010, 3, 15, 10, 20, 30, 19800 },
        DateCase {
            u"Mon, 15 Mrz 2010 10:20:30 +0100", 2010, 3, 15, 10, 20, 30, 3600 }, // after "Mrz" -> "Mar"
        DateCase { u"Sat, 15 Okt 2011 08:00:00 GMT", 2011, 10, 15, 8, 0, 0, 0 },
        DateCase { u"15/03/2010 10:20:30 EST", 2010, 3, 15, 10, 20, 30, -5 * 3600 },
        DateCase { u"Mon Mar 15 10:20:30 2010", 2010, 3, 15, 10, 20, 30, {} }, // asctime
        DateCase { u"Monday, 15-Mar-10 10:20:30 GMT", 2010, 3, 15, 10, 20, 30, 0 },
        DateCase { u"2010-03-15 10:20:30", 2010, 3, 15, 10, 20, 30, {} },
        DateCase { u"  2010-03-15 ; modified", 2010, 3, 15, 0, 0, 0, {} }, // cut before ';', trimmed
        DateCase {
            u"Created 15.03.2010 (draft)", 2010, 3, 15, 0, 0, 0, {} }, // fallback reads the dotted group
        DateCase { u"2010 March", 2010, 3, 1, 0, 0, 0, {} }, // fallback with " 1 1" appended
        DateCase { u"March 3, 2011 at 4:05 pm", 2011, 3, 3, 16, 5, 0, {} }, // fallback, 12-hour time
        DateCase { u"2010-03-15 noon", 2010, 3, 15, 0, 0, 0, {} })); // fallback: '-' becomes '/'

TEST(Dates, UnknownTextIsNilWithOneLogLineAndBlankTextWithout)
{
    for (const QString &text : { u"12345678"_s, // eight digits without a '2' in place: fallback, no month
             u"32.13.2010"_s, // dotted, final, not a day
             u"20101315"_s, // %Y%m%d, final, month 13
             u"hello world"_s, u"99:99:99 ::"_s,
             QString(100000, u'9') + u':' + QString(100000, u'-') }) { // hostile: answers quickly
        LogCapture log;
        EXPECT_FALSE(date(text).isValid()) << text.left(20);
        EXPECT_EQ(logged, QStringList { u"Unknown date: "_s + text }) << text.left(20);
    }
    LogCapture log;
    EXPECT_FALSE(date(u" \t\n ").isValid());
    EXPECT_FALSE(date(u"(only a remark)").isValid());
    EXPECT_TRUE(logged.isEmpty());
}

TEST(HttpDates, ThreeFormats)
{
    const QDateTime rfc1123 = dateFromHTTPHeaderValue(u"Sun, 06 Nov 1994 08:49:37 GMT");
    const QDateTime rfc850 = dateFromHTTPHeaderValue(u"Sunday, 06-Nov-94 08:49:37 GMT");
    const QDateTime asctime = dateFromHTTPHeaderValue(u"Sun Nov  6 08:49:37 1994");
    const QDateTime expected(QDate(1994, 11, 6), QTime(8, 49, 37), QTimeZone(0));
    EXPECT_EQ(rfc1123, expected);
    EXPECT_EQ(rfc850, expected);
    EXPECT_EQ(asctime.date(), expected.date());
    EXPECT_EQ(asctime.time(), expected.time());
    EXPECT_FALSE(dateFromHTTPHeaderValue(u"").isValid());
    EXPECT_FALSE(dateFromHTTPHeaderValue(u"yesterday").isValid());
    EXPECT_FALSE(dateFromHTTPHeaderValue(u"Sun, 31 Feb 1994 08:49:37 GMT").isValid());
}

TEST(DocumentDates, FirstPlausibleTriple)
{
    const std::pair<const char16_t *, QDate> cases[] = {
        { u"Report 03 04 2010 final", QDate(2010, 4, 3) }, // day month year
        { u"Report 2010 03 04", QDate(2010, 3, 4) }, // year month day
        { u"13 14 2010", QDate() }, // both above 12
        { u"on 04 13 2010", QDate(2010, 4, 13) }, // second above 12: month day
        { u"on 13 04 2010", QDate(2010, 4, 13) }, // first above 12: day month
        { u"31 02 2010 then 01 03 2011", QDate(2011, 3, 1) }, // 31 Feb is no day: read on
        { u"3 04 2010", QDate() }, // a one-digit word resets
        { u"05 06 1949", QDate() }, // year out of range
        { u"page 12 of 40, 05.06.2010", QDate() }, // digit rule: one word "05.06.2010"
        { u"Invoice 2011 Nr 12 07 08 2012", QDate() }, // a third number breaks the run
        { u"Invoice Nr 7 12 07 2012", QDate(2012, 7, 12) },
    };
    for (const auto &[text, expected] : cases) {
        const QDateTime d = documentDate(QString::fromUtf16(text));
        EXPECT_EQ(d.date(), expected) << QString::fromUtf16(text);
        EXPECT_EQ(d.time(), expected.isValid() ? QTime(0, 0) : QTime()) << QString::fromUtf16(text);
    }
}

} // namespace
