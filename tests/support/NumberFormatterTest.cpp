// Number and byte-size formatting, with the separators of several locales and of LC_NUMERIC.
#include "support/NumberFormatter.h"

#include "testlib/TestSupport.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <climits>

using namespace Qt::StringLiterals;

using namespace orvel;

namespace {

struct LocaleCase
{
    QLocale::Language language;
    QLocale::Territory territory;
    /// The unit texts of the toolkit's table in the locale's language; "_" stands for the number.
    QString bytes, kilo, mega, tera;
};

/// Each test runs with its locale as the default and puts the previous one back.
class NumberFormatting : public ::testing::TestWithParam<LocaleCase>
{
protected:
    const test::DefaultLocale m_locale { QLocale(GetParam().language, GetParam().territory) };

    /// text with "," and "." read as the locale's grouping and decimal separators, "-" as its minus.
    static QString local(QString text)
    {
        const QLocale locale;
        QString result;
        for (QChar c : text)
            result += c == u',' ? locale.groupSeparator()
                : c == u'.'     ? locale.decimalPoint()
                : c == u'-'     ? locale.negativeSign()
                                : QString(c);
        return result;
    }
    static QString unit(const QString &text, const QString &number)
    {
        return QString(text).replace(u'_', number);
    }
};

TEST_P(NumberFormatting, SizesChangeUnitAtEachPowerOf1024)
{
    const LocaleCase &c = GetParam();
    EXPECT_EQ(NumberFormatter::stringForSize(1023), unit(c.bytes, u"1023"_s));
    EXPECT_EQ(NumberFormatter::stringForSize(1024), unit(c.kilo, u"1"_s));
    EXPECT_EQ(NumberFormatter::stringForSize(1536), unit(c.kilo, local(u"1.5"_s)));
    // 1023.999 rounds to 1,024 at one decimal place: the unit changes only at 2^20.
    EXPECT_EQ(NumberFormatter::stringForSize(1048575), unit(c.kilo, local(u"1,024"_s)));
    EXPECT_EQ(NumberFormatter::stringForSize(1048576), unit(c.mega, u"1"_s));
    EXPECT_EQ(NumberFormatter::stringForSize(quint64(1) << 40), unit(c.tera, u"1"_s));
    EXPECT_EQ(NumberFormatter::stringForSize(~quint64(0)), unit(c.tera, local(u"16,777,216"_s)));
}

TEST_P(NumberFormatting, WholeNumbersGroupByThreeAndTheIntPathGoesThroughAFloat)
{
    EXPECT_EQ(NumberFormatter::stringForInt(16777217), local(u"16,777,216"_s));
    EXPECT_EQ(NumberFormatter::stringForInteger(16777217), local(u"16,777,217"_s));
    EXPECT_EQ(NumberFormatter::stringForInt(INT_MIN), local(u"-2,147,483,648"_s));
    EXPECT_EQ(NumberFormatter::stringForInteger(LLONG_MIN), local(u"-9,223,372,036,854,775,808"_s));
}

TEST_P(NumberFormatting, FractionsKeepTwoPlacesRoundedHalfToEven)
{
    EXPECT_EQ(NumberFormatter::stringForFloat(1234.5f), local(u"1,234.5"_s));
    EXPECT_EQ(NumberFormatter::stringForFloat(0.125f), local(u"0.12"_s));
    EXPECT_EQ(NumberFormatter::stringForFloat(0.375f), local(u"0.38"_s));
    EXPECT_EQ(NumberFormatter::stringForFloat(999.999f), local(u"1,000"_s));
    // Whatever rounds to zero is the zero section, never "-0".
    EXPECT_EQ(NumberFormatter::stringForFloat(-0.001f), u"0"_s);
}

INSTANTIATE_TEST_SUITE_P(Locales, NumberFormatting,
    ::testing::Values(
        LocaleCase { QLocale::English, QLocale::UnitedStates, u"_ bytes"_s, u"_ KB"_s, u"_ MB"_s, u"_ TB"_s },
        LocaleCase { QLocale::German, QLocale::Germany, u"_ Byte"_s, u"_ KB"_s, u"_ MB"_s, u"_ TB"_s },
        LocaleCase {
            QLocale::French, QLocale::France, u"_ octets"_s, u"_\u00a0Ko"_s, u"_\u00a0Mo"_s, u"_\u00a0To"_s },
        LocaleCase { QLocale::German, QLocale::Switzerland, u"_ Byte"_s, u"_ KB"_s, u"_ MB"_s, u"_ TB"_s }));

TEST(NumberFormatter, PatternsOfOneTwoAndThreeSectionsWithQuotedText)
{
    NumberFormatter padded(u"0000.00 'kg'");
    padded.setLocalizesFormat(false);
    EXPECT_EQ(padded.stringFromNumber(3.1), u"0003.10 kg"_s);
    EXPECT_EQ(padded.stringFromNumber(-12345.678), u"-12345.68 kg"_s);

    NumberFormatter accounting(u"'#'#,##0;(#,##0)");
    accounting.setLocalizesFormat(false);
    EXPECT_EQ(accounting.stringFromNumber(qint64(1234567)), u"#1,234,567"_s);
    EXPECT_EQ(accounting.stringFromNumber(qint64(-1234)), u"(1,234)"_s);
    EXPECT_EQ(accounting.stringFromNumber(0.2), u"#0"_s);

    NumberFormatter words(u"#;'none';'minus '#' it''s'");
    words.setLocalizesFormat(false);
    EXPECT_EQ(words.stringFromNumber(qint64(0)), u"none"_s);
    EXPECT_EQ(words.stringFromNumber(qint64(-3)), u"minus 3 it's"_s);
    EXPECT_EQ(words.stringFromNumber(std::numeric_limits<double>::infinity()), u"\u221e"_s);
    EXPECT_EQ(words.stringFromNumber(std::nan("")), u"NaN"_s);

    // Unlocalised, the separators stay as written whatever the locale.
    NumberFormatter plain(u"#,###.#");
    plain.setLocalizesFormat(false);
    plain.setLocale(QLocale(QLocale::German));
    EXPECT_EQ(plain.stringFromNumber(1234.56), u"1,234.6"_s);
    plain.setLocalizesFormat(true);
    EXPECT_EQ(plain.stringFromNumber(1234.56), u"1.234,6"_s);
    EXPECT_EQ(plain.stringFromNumber(1e20), u"100.000.000.000.000.000.000"_s);
}

TEST(NumberFormatter, ABrokenPatternFormatsNothingAndTheConveniencesAnswerEmptyText)
{
    for (const QString &format :
        { u""_s, u"abc"_s, u"#.#.#"_s, u"#.#,#"_s, u"#,"_s, u"#;#;#;#"_s, u"'#"_s, u"# x #"_s }) {
        NumberFormatter formatter;
        EXPECT_FALSE(formatter.setFormat(format)) << format;
        EXPECT_FALSE(formatter.isValid()) << format;
        EXPECT_TRUE(formatter.stringFromNumber(1.5).isNull()) << format;
        for (const QString &text :
            { stringForInt(formatter, 5), stringForInteger(formatter, 5), stringForFloat(formatter, 5) }) {
            EXPECT_TRUE(text.isEmpty()) << format;
            EXPECT_FALSE(text.isNull()) << format;
        }
        EXPECT_TRUE(formatter.setFormat(u"#"_s));
        EXPECT_EQ(stringForInt(formatter, 5), u"5"_s);
    }
}

// Run in a child process by the test below, with the environment it sets.
TEST(NumberFormatterChild, PrintsWithTheSystemLocale)
{
    if (qEnvironmentVariableIsEmpty("ORVEL_NUMBER_CHILD"))
        GTEST_SKIP() << "run by SystemLocaleSeparatorsFollowLcNumeric";
    std::printf("[%s|%s]\n", qPrintable(NumberFormatter::stringForSize(quint64(1536) << 20)),
        qPrintable(NumberFormatter::stringForInteger(1234567)));
}

TEST(NumberFormatter, SystemLocaleSeparatorsFollowLcNumeric)
{
    struct Case
    {
        QString numeric, language, expected;
    };
    const QStringList unset { u"ORVEL_NUMBER_CHILD=1"_s, u"LC_ALL="_s, u"LANGUAGE="_s, u"LC_MESSAGES="_s };
    for (const Case &c : {
             Case { u"de_DE.UTF-8"_s, u"en_US.UTF-8"_s, u"[1,5 GB|1.234.567]"_s },
             Case { u"C"_s, u"fr_FR.UTF-8"_s, u"[1.5\u00a0Go|1,234,567]"_s },
         }) {
        QByteArray out;
        const int status = test::runProgram(QCoreApplication::applicationFilePath(),
            { u"--gtest_filter=NumberFormatterChild.*"_s }, &out, nullptr, 60000,
            unset + QStringList { u"LC_NUMERIC="_s + c.numeric, u"LANG="_s + c.language });
        ASSERT_EQ(status, 0) << out.constData();
        EXPECT_TRUE(QString::fromUtf8(out).contains(c.expected)) << c.numeric << ": " << out.constData();
    }
}

} // namespace
