// Not API: reading and writing one extended attribute, shared by the Finder info and the fork code.
#pragma once

#include <QByteArray>

#include <optional>

namespace orvel::detail {

/// The attribute's value: a null array when the file has no such attribute or its file system
/// keeps none, nullopt when the file cannot be read (missing, no permission) or the value is
/// longer than maxSize.
std::optional<QByteArray> readExtendedAttribute(
    const QByteArray &native, const char *name, qsizetype maxSize);

/// How writing an attribute went.
enum class AttributeWrite {
    Written,
    Refused, ///< the file is there but will not take the value: too large, no user attributes, read-only
    NoFile, ///< the file is missing or a folder on its way is
};

AttributeWrite writeExtendedAttribute(const QByteArray &native, const char *name, const QByteArray &value);

/// Removes the attribute; true when it is gone (or never was there).
bool removeExtendedAttribute(const QByteArray &native, const char *name);

} // namespace orvel::detail
