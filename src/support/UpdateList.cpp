// Reading the update list through the file toolkit's property lists, within limits that fit a
// short dictionary of versions.
#include "support/UpdateList_p.h"

#include "files/PropertyList.h"
#include "strings/FastCompare.h"

namespace orvel {

std::optional<QVariantMap> readUpdateList(const QByteArray &bytes, const UpdateListLimits &limits)
{
    const std::optional<QVariant> list = propertyListFromData(
        bytes, PropertyListLimits { limits.maxBytes, limits.maxDepth, limits.maxNodes });
    if (!list || list->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    QVariantMap result;
    const QVariantMap map = list->toMap();
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        if (it.value().typeId() == QMetaType::QString)
            result.insert(it.key(), it.value());
    }
    return result;
}

bool isNewVersion(const QVariantMap &list, const QString &product, const QString &localVersion)
{
    const QString serverVersion = list.value(product).toString();
    if (serverVersion.isEmpty() || localVersion.isEmpty())
        return false;
    return !isEqualToStringNoCase(serverVersion, localVersion);
}

} // namespace orvel
