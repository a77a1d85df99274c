// The settings store on QSettings with the typed text format, and the store's value conversions.
#include "support/UserDefaults.h"

#include "support/SettingsFormat_p.h"

#include <QIODevice>
#include <QLocale>
#include <QMutex>
#include <QSettings>
#include <QStandardPaths>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale.h>

namespace orvel {

namespace {

bool readSettings(QIODevice &device, QSettings::SettingsMap &map)
{
    map = detail::parseSettings(device.readAll());
    return true; // Malformed lines are skipped, never fatal.
}

bool writeSettings(QIODevice &device, const QSettings::SettingsMap &map)
{
    const QByteArray text = detail::formatSettings(map);
    return device.write(text) == text.size();
}

QSettings::Format settingsFormat()
{
    static const QSettings::Format format
        = QSettings::registerFormat(QStringLiteral("conf"), readSettings, writeSettings);
    return format;
}

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f' || c == u'\v';
}

bool isAsciiDigit(QChar c) { return c.unicode() >= u'0' && c.unicode() <= u'9'; }

/// The integer that the text starts with after blanks: an optional sign and decimal digits,
/// saturating at the limits; 0 when there is none.
qint64 leadingInteger(QStringView s)
{
    qsizetype i = 0;
    while (i < s.size() && isBlank(s.at(i)))
        ++i;
    bool negative = false;
    if (i < s.size() && (s.at(i) == u'-' || s.at(i) == u'+'))
        negative = s.at(i++) == u'-';
    quint64 magnitude = 0;
    const quint64 limit = negative ? quint64(std::numeric_limits<qint64>::max()) + 1
                                   : quint64(std::numeric_limits<qint64>::max());
    for (; i < s.size() && isAsciiDigit(s.at(i)); ++i) {
        const quint64 digit = s.at(i).unicode() - u'0';
        if (magnitude > (limit - digit) / 10) {
            magnitude = limit;
            break;
        }
        magnitude = magnitude * 10 + digit;
    }
    if (negative)
        return magnitude == limit ? std::numeric_limits<qint64>::min() : -qint64(magnitude);
    return qint64(magnitude);
}

/// The decimal number that the text starts with after blanks (sign, digits, fraction, exponent);
/// 0 when there is none.
double leadingDouble(QStringView s)
{
    qsizetype i = 0;
    while (i < s.size() && isBlank(s.at(i)))
        ++i;
    const qsizetype start = i;
    if (i < s.size() && (s.at(i) == u'-' || s.at(i) == u'+'))
        ++i;
    qsizetype digits = 0;
    for (; i < s.size() && isAsciiDigit(s.at(i)); ++i)
        ++digits;
    if (i < s.size() && s.at(i) == u'.') {
        ++i;
        for (; i < s.size() && isAsciiDigit(s.at(i)); ++i)
            ++digits;
    }
    if (digits == 0)
        return 0.0;
    if (i < s.size() && (s.at(i) == u'e' || s.at(i) == u'E')) {
        qsizetype j = i + 1;
        if (j < s.size() && (s.at(j) == u'-' || s.at(j) == u'+'))
            ++j;
        if (j < s.size() && isAsciiDigit(s.at(j))) {
            while (j < s.size() && isAsciiDigit(s.at(j)))
                ++j;
            i = j;
        }
    }
    // strtod in the C locale: Qt applications run with the user's locale, whose decimal mark may differ.
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    const QByteArray number = s.mid(start, i - start).toLatin1();
    return strtod_l(number.constData(), nullptr, cLocale);
}

qint64 integerFromDouble(double d)
{
    if (std::isnan(d))
        return 0;
    if (d >= 9223372036854775808.0)
        return std::numeric_limits<qint64>::max();
    if (d < -9223372036854775808.0)
        return std::numeric_limits<qint64>::min();
    return qint64(d);
}

bool isNumber(const QVariant &v)
{
    switch (v.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

bool isReal(const QVariant &v) { return v.typeId() == QMetaType::Double || v.typeId() == QMetaType::Float; }

qint64 toInteger(const QVariant &v)
{
    if (v.typeId() == QMetaType::QString)
        return leadingInteger(v.toString());
    if (isReal(v))
        return integerFromDouble(v.toDouble());
    if (isNumber(v))
        return v.toLongLong();
    return 0;
}

double toDouble(const QVariant &v)
{
    if (v.typeId() == QMetaType::QString)
        return leadingDouble(v.toString());
    if (isNumber(v))
        return v.toDouble();
    return 0.0;
}

bool toBool(const QVariant &v)
{
    if (v.typeId() == QMetaType::QString) {
        const QString s = v.toString().trimmed();
        for (QLatin1String yes : { QLatin1String("yes"), QLatin1String("true"), QLatin1String("y") }) {
            if (s.compare(yes, Qt::CaseInsensitive) == 0)
                return true;
        }
        return leadingDouble(s) != 0.0;
    }
    if (isReal(v))
        return v.toDouble() != 0.0;
    if (isNumber(v))
        return v.toLongLong() != 0;
    return false;
}

QString toString(const QVariant &v)
{
    if (v.typeId() == QMetaType::QString)
        return v.toString();
    if (v.typeId() == QMetaType::Bool)
        return v.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    if (isReal(v))
        return QString::number(v.toDouble(), 'g', QLocale::FloatingPointShortest);
    if (isNumber(v))
        return QString::number(v.toLongLong());
    return QString();
}

} // namespace

struct UserDefaults::Private
{
    explicit Private(const QString &path)
        : filePath(path)
        , settings(newSettings())
    {
    }

    std::unique_ptr<QSettings> newSettings() const
    {
        auto s = std::make_unique<QSettings>(filePath, settingsFormat());
        s->setAtomicSyncRequired(true);
        // No thread's event loop may sync it behind the store's lock: it writes when the store says.
        s->moveToThread(nullptr);
        return s;
    }

    /// QSettings keeps the first error it meets for good; a fresh object (sharing the same file and
    /// its pending changes) lets the next attempt report for itself.
    void clearError()
    {
        if (settings->status() != QSettings::NoError) {
            std::unique_ptr<QSettings> fresh = newSettings();
            settings.swap(fresh);
        }
    }

    /// The value for key (the caller holds the lock); invalid when missing.
    QVariant lookup(const QString &key) const
    {
        if (key.isEmpty())
            return QVariant();
        const auto argument = arguments.constFind(key);
        if (argument != arguments.cend())
            return *argument;
        settings->sync();
        return settings->value(key);
    }

    const QString filePath;
    mutable QMutex mutex;
    std::unique_ptr<QSettings> settings;
    QVariantMap arguments;
};

UserDefaults &UserDefaults::standard()
{
    static UserDefaults store(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/orvel/thumbnails.conf"));
    return store;
}

UserDefaults::UserDefaults(const QString &filePath)
    : d(std::make_unique<Private>(filePath))
{
}

UserDefaults::~UserDefaults() = default;

QString UserDefaults::filePath() const { return d->filePath; }

QVariant UserDefaults::objectForKey(const QString &key) const
{
    QMutexLocker lock(&d->mutex);
    return d->lookup(key);
}

void UserDefaults::setObject(const QVariant &value, const QString &key)
{
    if (key.isEmpty())
        return;
    const QVariant stored = detail::normalisedValue(value);
    QMutexLocker lock(&d->mutex);
    if (stored.isValid())
        d->settings->setValue(key, stored);
    else
        d->settings->remove(key);
}

void UserDefaults::removeObjectForKey(const QString &key)
{
    // QSettings::remove("") would empty the whole store.
    if (key.isEmpty())
        return;
    QMutexLocker lock(&d->mutex);
    d->settings->remove(key);
}

QStringList UserDefaults::keys() const
{
    QMutexLocker lock(&d->mutex);
    d->settings->sync();
    QStringList all = d->settings->allKeys();
    for (auto it = d->arguments.cbegin(); it != d->arguments.cend(); ++it) {
        if (!all.contains(it.key()))
            all.append(it.key());
    }
    all.sort();
    return all;
}

QVariantMap UserDefaults::dictionaryRepresentation() const
{
    QMutexLocker lock(&d->mutex);
    d->settings->sync();
    QVariantMap all;
    for (const QString &key : d->settings->allKeys())
        all.insert(key, d->settings->value(key));
    for (auto it = d->arguments.cbegin(); it != d->arguments.cend(); ++it)
        all.insert(it.key(), it.value());
    return all;
}

bool UserDefaults::synchronize()
{
    QMutexLocker lock(&d->mutex);
    d->clearError();
    d->settings->sync(); // Creates the file's folder when needed.
    return d->settings->status() == QSettings::NoError;
}

void UserDefaults::setArgumentDomain(const QVariantMap &values)
{
    QVariantMap normalised;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        const QVariant v = detail::normalisedValue(it.value());
        if (v.isValid() && !it.key().isEmpty())
            normalised.insert(it.key(), v);
    }
    QMutexLocker lock(&d->mutex);
    d->arguments = normalised;
}

QVariantMap UserDefaults::argumentDomain() const
{
    QMutexLocker lock(&d->mutex);
    return d->arguments;
}

bool UserDefaults::boolForKey(const QString &key) const { return toBool(objectForKey(key)); }

qint64 UserDefaults::integerForKey(const QString &key) const { return toInteger(objectForKey(key)); }

float UserDefaults::floatForKey(const QString &key) const { return float(toDouble(objectForKey(key))); }

double UserDefaults::doubleForKey(const QString &key) const { return toDouble(objectForKey(key)); }

QString UserDefaults::stringForKey(const QString &key) const { return toString(objectForKey(key)); }

bool UserDefaults::boolForKey(const QString &key, bool defaultValue) const
{
    const QVariant v = objectForKey(key);
    return v.isValid() ? toBool(v) : defaultValue;
}

qint64 UserDefaults::integerForKey(const QString &key, qint64 defaultValue) const
{
    const QVariant v = objectForKey(key);
    return v.isValid() ? toInteger(v) : defaultValue;
}

float UserDefaults::floatForKey(const QString &key, float defaultValue) const
{
    const QVariant v = objectForKey(key);
    return v.isValid() ? float(toDouble(v)) : defaultValue;
}

double UserDefaults::doubleForKey(const QString &key, double defaultValue) const
{
    // The one getter that also falls back for a present value without a number in it (a list or map).
    const QVariant v = objectForKey(key);
    if (!v.isValid() || !(isNumber(v) || v.typeId() == QMetaType::QString))
        return defaultValue;
    return toDouble(v);
}

QString UserDefaults::stringForKey(const QString &key, const QString &defaultValue) const
{
    const QString s = stringForKey(key);
    return s.isNull() ? defaultValue : s;
}

QVariant UserDefaults::objectForKey(const QString &key, const QVariant &defaultValue) const
{
    const QVariant v = objectForKey(key);
    return v.isValid() ? v : defaultValue;
}

void UserDefaults::setString(const QString &value, const QString &key) { setObject(QVariant(value), key); }

void UserDefaults::setValue(const QVariant &value, const QString &key)
{
    if (!value.isValid() || value.isNull())
        removeObjectForKey(key);
    else
        setObject(value, key);
}

} // namespace orvel
