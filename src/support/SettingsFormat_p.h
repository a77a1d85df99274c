// Not API: the typed text format of the settings file, and the value conversions of the store.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

namespace orvel::detail {

/// Parses settings text into key/value pairs. Malformed lines are skipped.
QMap<QString, QVariant> parseSettings(const QByteArray &text);
/// The settings text for the values (keys in the map's order).
QByteArray formatSettings(const QMap<QString, QVariant> &values);

/// One value in the file's syntax ("128", "0.8", "true", "\"x\"", "[1, 2]").
QString formatValue(const QVariant &value);
/// Parses one value in the file's syntax; an invalid QVariant when text is not exactly one value.
QVariant parseValue(QStringView text);

/// The value in one of the store's types (qint64, double, bool, QString, QVariantList, QVariantMap);
/// an invalid QVariant for a value the store cannot hold.
QVariant normalisedValue(const QVariant &value);

} // namespace orvel::detail
