// Property lists through libplist: limits checked before and while converting, XML written atomically.
#include "files/PropertyList.h"

#include "files/AtomicFile.h"
#include "support/Failure.h"

#include <QDateTime>
#include <QFile>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <plist/plist.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

// Dates in property lists count from the first of January 2001, UTC.
constexpr qint64 ReferenceDateOffset = 978307200;

struct PlistFree
{
    void operator()(plist_t node) const noexcept { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

/// The deepest nesting of <dict> and <array> elements in XML text, counted before libplist sees it:
/// its XML reader recurses once per level, so a hostile file nested a million deep would exhaust
/// the stack. Comments and CDATA can only make the count larger, never let too deep a file pass.
int xmlNestingDepth(const QByteArray &xml)
{
    int depth = 0;
    int deepest = 0;
    const char *p = xml.constData();
    const char *end = p + xml.size();
    for (; p < end; ++p) {
        if (*p != '<')
            continue;
        const auto rest = QByteArrayView(p + 1, end - p - 1);
        const bool closing = rest.startsWith('/');
        const auto name = closing ? rest.sliced(1) : rest;
        if (!name.startsWith("dict") && !name.startsWith("array"))
            continue;
        const qsizetype close = rest.indexOf('>');
        if (close < 0)
            break;
        if (closing)
            depth = std::max(0, depth - 1);
        else if (rest.at(close - 1) != '/')
            deepest = std::max(deepest, ++depth);
    }
    return deepest;
}

/// Whether a binary property list stays within limits once its shared references are expanded:
/// its nesting depth and the values it stands for, counted without recursion and without parsing
/// it. Each object is measured once and its measure reused wherever it is named, so a list whose
/// containers share children costs time linear in its size. False for a malformed structure too (a
/// reference past the objects, an object inside itself).
bool binaryWithinLimits(const QByteArray &data, const PropertyListLimits &limits)
{
    const auto *bytes = reinterpret_cast<const uchar *>(data.constData());
    const qint64 size = data.size();
    if (size < 8 + 32)
        return false;
    const uchar *trailer = bytes + size - 32;
    auto bigEndian = [](const uchar *p, int width) {
        quint64 v = 0;
        for (int i = 0; i < width; ++i)
            v = (v << 8) | p[i];
        return v;
    };
    const int offsetSize = trailer[6];
    const int refSize = trailer[7];
    const quint64 count = bigEndian(trailer + 8, 8);
    const quint64 top = bigEndian(trailer + 16, 8);
    const quint64 tableOffset = bigEndian(trailer + 24, 8);
    // Every object a list holds is named at least once from the top, so more objects than values
    // allowed is too many before anything is followed; this also bounds the memory of the walk.
    if (offsetSize < 1 || offsetSize > 8 || refSize < 1 || refSize > 8 || count == 0 || top >= count
        || tableOffset >= quint64(size) - 32
        || count > (quint64(size) - 32 - tableOffset) / quint64(offsetSize)
        || count > quint64(std::max<qint64>(limits.maxNodes, 1)))
        return false;
    auto offsetOf = [&](quint64 i) { return bigEndian(bytes + tableOffset + i * offsetSize, offsetSize); };

    // For a container, the object references it holds; empty for anything else.
    auto children = [&](quint64 object, std::vector<quint64> *out) {
        out->clear();
        const quint64 at = offsetOf(object);
        if (at >= tableOffset)
            return false;
        const uchar marker = bytes[at];
        const int kind = marker >> 4;
        if (kind != 0xA && kind != 0xD && kind != 0xC)
            return true;
        quint64 n = marker & 0xF;
        quint64 refs = at + 1;
        if (n == 0xF) {
            if (refs >= tableOffset || (bytes[refs] >> 4) != 0x1)
                return false;
            const int width = 1 << (bytes[refs] & 0xF);
            if (width > 8 || refs + 1 + width > tableOffset)
                return false;
            n = bigEndian(bytes + refs + 1, width);
            refs += 1 + width;
        }
        const quint64 total = kind == 0xD ? n * 2 : n;
        if (n > tableOffset || total > (tableOffset - refs) / quint64(refSize))
            return false;
        out->reserve(total);
        for (quint64 i = 0; i < total; ++i) {
            const quint64 ref = bigEndian(bytes + refs + i * refSize, refSize);
            if (ref >= count)
                return false;
            // A dictionary's keys are names, not values.
            if (kind != 0xD || i >= n)
                out->push_back(ref);
        }
        return true;
    };

    // Iterative depth-first walk. depthOf: 0 = not seen, -1 = on the current path (a cycle), else
    // the depth of the object's subtree; nodesOf: the values the object expands to.
    std::vector<int> depthOf(count, 0);
    std::vector<qint64> nodesOf(count, 0);
    struct Frame
    {
        quint64 object;
        std::vector<quint64> kids;
        size_t next = 0;
        int deepest = 0;
        qint64 nodes = 1;
    };
    std::vector<Frame> stack;
    std::vector<quint64> kids;
    if (!children(top, &kids))
        return false;
    stack.push_back({ top, kids });
    depthOf[top] = -1;
    while (!stack.empty()) {
        Frame &frame = stack.back();
        if (frame.next < frame.kids.size()) {
            const quint64 kid = frame.kids[frame.next++];
            if (depthOf[kid] == -1)
                return false;
            if (depthOf[kid] == 0) {
                if (!children(kid, &kids))
                    return false;
                if (!kids.empty()) {
                    if (int(stack.size()) >= limits.maxDepth)
                        return false;
                    depthOf[kid] = -1;
                    stack.push_back({ kid, kids });
                    continue;
                }
                depthOf[kid] = 1;
                nodesOf[kid] = 1;
            }
            frame.deepest = std::max(frame.deepest, depthOf[kid]);
            if ((frame.nodes += nodesOf[kid]) > limits.maxNodes)
                return false;
            continue;
        }
        const int depth = frame.deepest + 1;
        const qint64 nodes = frame.nodes;
        depthOf[frame.object] = depth;
        nodesOf[frame.object] = nodes;
        stack.pop_back();
        if (stack.empty())
            return depth <= limits.maxDepth && nodes <= limits.maxNodes;
        stack.back().deepest = std::max(stack.back().deepest, depth);
        if ((stack.back().nodes += nodes) > limits.maxNodes)
            return false;
    }
    return false;
}

/// The value of node, nested depth deep; each value taken from budget, which must not run out
/// (an XML list cannot share values, but is bounded by the same count).
std::optional<QVariant> toVariant(plist_t node, int depth, int maxDepth, qint64 *budget)
{
    if (!node || depth > maxDepth || --*budget < 0)
        return std::nullopt;
    switch (plist_get_node_type(node)) {
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        for (;;) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            if (!value) {
                free(key);
                break;
            }
            const QString name = QString::fromUtf8(key);
            free(key);
            auto converted = toVariant(value, depth + 1, maxDepth, budget);
            if (!converted) {
                free(it);
                return std::nullopt;
            }
            map.insert(name, *converted);
        }
        free(it);
        return map;
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t n = plist_array_get_size(node);
        for (uint32_t i = 0; i < n; ++i) {
            auto converted = toVariant(plist_array_get_item(node, i), depth + 1, maxDepth, budget);
            if (!converted)
                return std::nullopt;
            list.append(*converted);
        }
        return list;
    }
    case PLIST_STRING:
    case PLIST_KEY: {
        uint64_t length = 0;
        const char *text = plist_get_string_ptr(node, &length);
        return QString::fromUtf8(text, qsizetype(length));
    }
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return bool(value);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return qint64(value);
    }
    case PLIST_UID: {
        uint64_t value = 0;
        plist_get_uid_val(node, &value);
        return qint64(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char *data = plist_get_data_ptr(node, &length);
        return QByteArray(data, qsizetype(length));
    }
    case PLIST_DATE: {
        int32_t sec = 0;
        int32_t usec = 0;
        plist_get_date_val(node, &sec, &usec);
        const qint64 ms = (qint64(sec) + ReferenceDateOffset) * 1000 + usec / 1000;
        return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
    }
    case PLIST_NONE:
        break;
    }
    return std::nullopt;
}

PlistPtr fromVariant(const QVariant &value, int depth)
{
    if (depth > MaxPropertyListDepth)
        return nullptr;
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        PlistPtr dict(plist_new_dict());
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            PlistPtr item = fromVariant(it.value(), depth + 1);
            if (!item)
                return nullptr;
            plist_dict_set_item(dict.get(), it.key().toUtf8().constData(), item.release());
        }
        return dict;
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        PlistPtr array(plist_new_array());
        for (const QVariant &element : value.toList()) {
            PlistPtr item = fromVariant(element, depth + 1);
            if (!item)
                return nullptr;
            plist_array_append_item(array.get(), item.release());
        }
        return array;
    }
    case QMetaType::QString:
        return PlistPtr(plist_new_string(value.toString().toUtf8().constData()));
    case QMetaType::Bool:
        return PlistPtr(plist_new_bool(value.toBool()));
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return PlistPtr(plist_new_uint(uint64_t(value.toLongLong())));
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return PlistPtr(plist_new_uint(value.toULongLong()));
    case QMetaType::Double:
    case QMetaType::Float:
        return PlistPtr(plist_new_real(value.toDouble()));
    case QMetaType::QByteArray: {
        const QByteArray data = value.toByteArray();
        return PlistPtr(plist_new_data(data.constData(), uint64_t(data.size())));
    }
    case QMetaType::QDateTime: {
        const QDateTime date = value.toDateTime();
        if (!date.isValid())
            return nullptr;
        const qint64 ms = date.toMSecsSinceEpoch() - ReferenceDateOffset * 1000;
        const qint64 sec = ms >= 0 ? ms / 1000 : (ms - 999) / 1000;
        if (sec < INT32_MIN || sec > INT32_MAX)
            return nullptr;
        return PlistPtr(plist_new_date(int32_t(sec), int32_t((ms - sec * 1000) * 1000)));
    }
    default:
        return nullptr;
    }
}

} // namespace

std::optional<QVariant> propertyListFromData(const QByteArray &data, const PropertyListLimits &limits)
{
    if (data.isEmpty() || data.size() > limits.maxBytes || data.size() > MaxPropertyListSize)
        return std::nullopt;
    const bool binary = plist_is_binary(data.constData(), uint32_t(data.size()));
    if (binary ? !binaryWithinLimits(data, limits) : xmlNestingDepth(data) > limits.maxDepth)
        return std::nullopt;
    plist_t root = nullptr;
    if (binary)
        plist_from_bin(data.constData(), uint32_t(data.size()), &root);
    else
        plist_from_xml(data.constData(), uint32_t(data.size()), &root);
    const PlistPtr owner(root);
    qint64 budget = limits.maxNodes;
    return toVariant(root, 1, limits.maxDepth, &budget);
}

std::optional<QVariant> propertyListFromFile(const QString &path)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    // Read one byte past the limit, so that a file that grows while read is caught too.
    const QByteArray data = file.read(MaxPropertyListSize + 1);
    return propertyListFromData(data);
}

QByteArray xmlPropertyListData(const QVariant &value)
{
    const PlistPtr root = fromVariant(value, 1);
    if (!root)
        return {};
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    QByteArray result(xml, qsizetype(length));
    plist_to_xml_free(xml);
    return result;
}

bool writePropertyListToFile(const QVariant &value, const QString &path, QString *error)
{
    const QByteArray xml = xmlPropertyListData(value);
    if (xml.isEmpty())
        return failure(error, u"not a property list value"_s);
    return writeFileAtomically(path, xml, error);
}

} // namespace orvel
