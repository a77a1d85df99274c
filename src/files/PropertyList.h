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

/// The value of an XML or binary property list: a QVariantMap for a dictionary, a QVariantList for an
/// array, then QString, qint64, double, bool, QByteArray (data) and QDateTime (UTC). nullopt when the
/// bytes are not a property list, are larger than MaxPropertyListSize or nest deeper than
/// MaxPropertyListDepth.
[[nodiscard]] std::optional<QVariant> propertyListFromData(const QByteArray &data);

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
