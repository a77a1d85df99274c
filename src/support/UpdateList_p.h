// The update list and version texts of the update check (not API: shared with its tests).
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace orvel {

/// Limits on an update list: it is a short dictionary of strings, so anything much bigger is hostile.
struct UpdateListLimits
{
    qsizetype maxBytes = 1 << 20;
    int maxDepth = 16;
    qint64 maxNodes = 10000;
};

/// The dictionary of a property list in bytes (XML or binary), its string values as QString and
/// other values left out; nullopt when the bytes are no dictionary or exceed limits (size, nesting,
/// or the node count a binary list would expand to through shared references).
[[nodiscard]] std::optional<QVariantMap> readUpdateList(
    const QByteArray &bytes, const UpdateListLimits &limits = {});

/// Whether the server's version for product differs from the local one. The versions are compared
/// as text, ignoring case, not as numbers: an older version on the server also counts as new.
/// False when either version is empty or the list has no entry for product.
[[nodiscard]] bool isNewVersion(const QVariantMap &list, const QString &product, const QString &localVersion);

} // namespace orvel
