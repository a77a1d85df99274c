// The settings store: typed values in a text file, read back with the store's conversions and with
// the caller's defaults for missing keys.
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <memory>

namespace orvel {

/// A settings store kept by QSettings in a file of its own typed text format, so that every value
/// keeps its type from one process to the next:
///
///     # comment
///     width = 128                  an integer (64-bit)
///     quality = 0.8                a real: always written with "." or an exponent (1.0, 1e+20), or inf,
///     -inf, nan QuitWhenDone = true          a bool (true/false) extension = "_thumb"         a string, with
///     the escapes \" \\ \n \r \t \b \f \/ \uXXXX recent = ["a", 2, {"k": 1.5}]   lists and maps in JSON,
///     their numbers typed as above
///
/// One key per line; a key is made of letters, digits and "_.-/" or is a quoted string. Blank lines,
/// "#" lines and malformed lines are skipped when reading. Keys are QSettings keys: "/" separates
/// groups, so removing the key "a" also removes "a/b". A missing or unreadable file is an empty store.
///
/// Each read looks at the file again (QSettings re-reads it when its size or time changed), so a change
/// written by another process is seen. Changes are written at the next read, by synchronize() and when
/// the store is destroyed: atomically (a temporary file renamed over the old one, its permissions kept)
/// and merged with the file's current contents under a lock file. A store may be used from several
/// threads.
class UserDefaults
{
public:
    /// The standard store: QSettings at the XDG configuration location ($XDG_CONFIG_HOME, default ~/.config),
    /// file "orvel/thumbnails.conf" (the desktop application and the command line share it).
    static UserDefaults &standard();

    /// A store in a given file (tests, tools).
    explicit UserDefaults(const QString &filePath);
    ~UserDefaults();
    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;

    [[nodiscard]] QString filePath() const;

    // Raw access. Values are QVariant of type qint64 (integer), double (float/real), bool, QString, or
    // QVariantList/QVariantMap.
    /// The value for key; an invalid QVariant when missing. The argument domain wins over the file.
    [[nodiscard]] QVariant objectForKey(const QString &key) const;
    /// Stores value, converted to the store's types (other integer types to qint64, float to the double
    /// of its shortest decimal form,
    /// QByteArray to a UTF-8 string, QStringList to a list, dates to ISO 8601 strings); an invalid
    /// value, or one with no such form, removes the key.
    void setObject(const QVariant &value, const QString &key);
    void removeObjectForKey(const QString &key);
    /// Sorted, file and argument domain together.
    [[nodiscard]] QStringList keys() const;
    /// Every key with its value, the argument domain winning.
    [[nodiscard]] QVariantMap dictionaryRepresentation() const;
    /// Writes pending changes and reads the file again; false on failure (the changes stay pending).
    bool synchronize();

    /// A volatile domain searched first and never written (the command line's --set overrides).
    void setArgumentDomain(const QVariantMap &values);
    [[nodiscard]] QVariantMap argumentDomain() const;

    // The store's own conversions (missing -> false/0/0.0/null): integers and reals convert to each
    // other (truncating to integer, saturating at the integer's limits, NaN gives 0), bools are 0/1,
    // strings convert by their leading number after blanks ("7" -> 7, "3.9x" -> 3 / 3.9, "abc" -> 0),
    // a string "YES"/"yes"/"true"/"TRUE"/"Y" (any case) is a true bool, another string is true when its
    // leading number is not 0; lists and maps convert to 0/false. stringForKey answers the string, or
    // the decimal text of a number/bool (true "1", 0.5 "0.5", 2.0 "2"), else a null QString.
    bool boolForKey(const QString &key) const;
    qint64 integerForKey(const QString &key) const;
    float floatForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;
    [[nodiscard]] QString stringForKey(const QString &key) const;

    // With fallbacks: a missing key gives the default; a present key the store's conversion, even
    // when the value does not convert (a list gives false/0). Only doubleForKey falls back to the
    // default for a value that has no double value (a list or a map).
    bool boolForKey(const QString &key, bool defaultValue) const;
    qint64 integerForKey(const QString &key, qint64 defaultValue) const;
    float floatForKey(const QString &key, float defaultValue) const;
    double doubleForKey(const QString &key, double defaultValue) const;
    /// stringForKey(key), or the default when that is null (missing key, list or map).
    [[nodiscard]] QString stringForKey(const QString &key, const QString &defaultValue) const;
    [[nodiscard]] QVariant objectForKey(const QString &key, const QVariant &defaultValue) const;
    /// Stores the string as it is.
    void setString(const QString &value, const QString &key);
    /// An invalid/null QVariant removes the key; any other value is stored as by setObject().
    void setValue(const QVariant &value, const QString &key);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace orvel
