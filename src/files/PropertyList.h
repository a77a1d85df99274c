// Property lists: reading XML or binary property lists into QVariant values, writing them as XML.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <optional>

namespace orvel {

/// The largest property list read, in bytes: lock files, location files and update lists are small.
inline constexpr qint64 MaxPropertyListSize = 16 * 1024 * 1024;
/// The deepest nesting of arrays and dictionaries read or written.
inline constexpr int MaxPropertyListDepth = 64;
/// The most values a property list read may hold. A binary list names its members by reference, so
/// a few hundred bytes can name one array from many places and expand to billions of values.
inline constexpr qint64 MaxPropertyListNodes = 1'000'000;

/// What a property list read may grow into: its size in bytes, the nesting of its arrays and
/// dictionaries (the outermost one counts 1), and the values it expands to (every array,
/// dictionary and plain value counts one, a shared one as often as it is named; keys not counted).
struct PropertyListLimits
{
    qint64 maxBytes = MaxPropertyListSize;
    int maxDepth = MaxPropertyListDepth;
    qint64 maxNodes = MaxPropertyListNodes;
};

/// The value of an XML or binary property list: a QVariantMap for a dictionary, a QVariantList for an
/// array, then QString, qint64, double, bool, QByteArray (data) and QDateTime (UTC). nullopt when the
/// bytes are not a property list or pass one of the limits; a binary list is measured before it is
/// parsed, so one that would expand beyond them costs no more than its own size.
[[nodiscard]] std::optional<QVariant> propertyListFromData(
    const QByteArray &data, const PropertyListLimits &limits = {});

/// propertyListFromData() of the file's contents; nullopt when it cannot be read or is too large
/// (a larger file is not read at all).
[[nodiscard]] std::optional<QVariant> propertyListFromFile(const QString &path);

/// The XML property list of value, built from the types propertyListFromData() answers (and from
/// QStringList, int, uint and the other integers, which become integers); an empty array when a
/// value of another type or too deep a nesting is met.
[[nodiscard]] QByteArray xmlPropertyListData(const QVariant &value);

/// Writes xmlPropertyListData() of value to path, complete or not at all (the old file stays on
/// failure). Answers false with a reason in error (when given) on failure.
bool writePropertyListToFile(const QVariant &value, const QString &path, QString *error = nullptr);

} // namespace orvel
