// NumberFormatter: numbers and byte counts as text, with the user's grouping and decimal separators.
#pragma once

#include <QLocale>
#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

namespace orvel {

/// Formats numbers by a pattern of up to three sections, "positive;zero;negative", such as
/// "#,###.##;0;-#,###.##". In a section, '#' is an optional digit and '0' a required one; ',' in the
/// integer part groups the digits by the count of digit places after it; '.' starts the fraction,
/// whose digit places are the most decimal places shown ('0's the fewest). Anything else, and text in
/// single quotes, is copied as it stands ('' is a quote). A value whose integer part is zero shows a
/// "0" before the decimal separator. Values are rounded half to even, on their shortest decimal form.
/// The zero section is used for every value that rounds to zero; with one section the negative one
/// is the positive one behind a minus sign, with two the zero one is the positive one.
///
/// When the format is localised (the default), the grouping separator, the decimal separator and a
/// minus sign written in the pattern come from the formatter's locale; else they are ",", "." and
/// "-". Digits are always 0 to 9. The locale is QLocale() at the time of each call unless one was
/// set: QLocale::setDefault() when the program made one, else the system locale, whose separators
/// Qt takes from LC_ALL, then LC_NUMERIC, then LANG (so LC_NUMERIC=de_DE.UTF-8 gives "1.234,5"
/// whatever language the interface speaks).
///
/// A formatter is a plain value; the shared ones are made once, thread-safely, and never change.
class NumberFormatter
{
public:
    /// A formatter with the format "#,##0.###".
    NumberFormatter();
    /// A formatter with format; one that is not a pattern gives an invalid formatter.
    explicit NumberFormatter(QStringView format);

    /// Sets the pattern; false when format is not one (empty, more than three sections, a positive or
    /// negative section without a digit place (the zero section may be text alone), a second '.', a ',' in
    /// the fraction or ending the integer part, an unclosed quote), and the formatter then formats nothing
    /// until a valid one is set.
    bool setFormat(QStringView format);
    [[nodiscard]] QString format() const { return m_format; }
    bool isValid() const { return !m_sections.empty(); }

    void setLocalizesFormat(bool localizes) { m_localizesFormat = localizes; }
    bool localizesFormat() const { return m_localizesFormat; }
    /// Whether text read as a number may have a fraction; formatting follows the pattern's places.
    void setAllowsFloats(bool allows) { m_allowsFloats = allows; }
    bool allowsFloats() const { return m_allowsFloats; }
    /// The locale of the separators; unset, QLocale() at the time of each call.
    void setLocale(const QLocale &locale) { m_locale = locale; }
    [[nodiscard]] QLocale locale() const { return m_locale.value_or(QLocale()); }

    /// value as text; a null string when the formatter is invalid. Not-a-number is "NaN", the
    /// infinities "∞" in the positive or negative section.
    [[nodiscard]] QString stringFromNumber(double value) const;
    /// value as text, exactly (no detour through floating point); null when the formatter is invalid.
    [[nodiscard]] QString stringFromNumber(qint64 value) const;

    /// The shared whole-number formatter, "#,###;0;-#,###", no fractions; intFormatter() and
    /// integerFormatter() answer the same object.
    static const NumberFormatter &intFormatter();
    static const NumberFormatter &integerFormatter();
    /// The shared fraction formatter, "#,###.##;0;-#,###.##".
    static const NumberFormatter &floatFormatter();

    /// value through the whole-number formatter as a 32-bit float: beyond 2^24 in magnitude the last
    /// digits are those of the float (16777217 shows as 16,777,216), kept so on purpose.
    [[nodiscard]] static QString stringForInt(int value);
    /// value through the whole-number formatter, exactly.
    [[nodiscard]] static QString stringForInteger(qint64 value);
    /// value through the fraction formatter: at most two decimal places.
    [[nodiscard]] static QString stringForFloat(float value);
    /// A byte count for people: "%d bytes" below 1024, else the count in binary KB, MB, GB or TB (1 KB
    /// is 1024 bytes) with at most one decimal place, as "%@ KB". The unit texts are looked up in the
    /// main bundle's default strings table, then in the toolkit's table "Bundle", so that they are
    /// translated. The count is converted to a 32-bit float and scaled in single precision.
    [[nodiscard]] static QString stringForSize(quint64 bytes);

private:
    struct Section
    {
        QString prefix;
        QString suffix;
        int minIntegerDigits = 0;
        int minFractionDigits = 0;
        int maxFractionDigits = 0;
        int groupingSize = 0;
        bool hasDigits = true;
    };

    QString formatDigits(bool negative, QString integerDigits, QString fractionDigits) const;
    QString render(const Section &section, QStringView integerDigits, QStringView fractionDigits) const;

    QString m_format;
    /// Positive, zero, negative; empty when the format is not a pattern.
    std::vector<Section> m_sections;
    bool m_localizesFormat = true;
    bool m_allowsFloats = true;
    std::optional<QLocale> m_locale;
};

// The conveniences on any formatter: the value as a number through stringFromNumber(), the empty
// string (never a null one) when the formatter cannot format it.
[[nodiscard]] QString stringForInt(const NumberFormatter &formatter, int value);
[[nodiscard]] QString stringForInteger(const NumberFormatter &formatter, qint64 value);
[[nodiscard]] QString stringForFloat(const NumberFormatter &formatter, float value);

} // namespace orvel
