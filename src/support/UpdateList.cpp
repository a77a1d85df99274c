// Reading the update list with libplist, after a scan that bounds what the list may grow into.
#include "support/UpdateList_p.h"

#include "strings/FastCompare.h"

#include <plist/plist.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace orvel {

namespace {

// Nesting of <dict> and <array> in an XML list. The parser recurses per level, so a list of a
// million open tags would take the stack with it.
bool xmlWithinLimits(const QByteArray &bytes, const UpdateListLimits &limits)
{
    int depth = 0;
    for (qsizetype i = bytes.indexOf('<'); i >= 0; i = bytes.indexOf('<', i + 1)) {
        const QByteArrayView rest = QByteArrayView(bytes).sliced(i);
        const bool closing = rest.startsWith("</dict") || rest.startsWith("</array");
        const bool opening = rest.startsWith("<dict") || rest.startsWith("<array");
        if (closing) {
            --depth;
        } else if (opening) {
            const qsizetype end = bytes.indexOf('>', i);
            if (end < 0)
                return false;
            if (bytes.at(end - 1) != '/' && ++depth > limits.maxDepth)
                return false;
        }
    }
    return true;
}

// The layout of a binary list: the trailer's table of object offsets. Arrays, sets and dictionaries
// name their members by index, so a small file can name one big array a million times; the parser
// would copy it each time. The scan counts the nodes each object expands to, once per object.
class BinaryScan
{
public:
    BinaryScan(const QByteArray &bytes, const UpdateListLimits &limits)
        : m_data(reinterpret_cast<const uchar *>(bytes.constData()))
        , m_size(bytes.size())
        , m_limits(limits)
    {
    }

    bool withinLimits()
    {
        if (m_size < 8 + 32)
            return false;
        const uchar *trailer = m_data + m_size - 32;
        m_offsetSize = trailer[6];
        m_refSize = trailer[7];
        quint64 top = 0;
        if (!readNumber(trailer + 8, 8, m_count) || !readNumber(trailer + 16, 8, top)
            || !readNumber(trailer + 24, 8, m_tableOffset))
            return false;
        if (m_offsetSize < 1 || m_offsetSize > 8 || m_refSize < 1 || m_refSize > 8 || m_count == 0
            || top >= m_count || m_count > quint64(m_size) || m_tableOffset >= quint64(m_size - 32)
            || (quint64(m_size - 32) - m_tableOffset) / m_offsetSize < m_count)
            return false;
        m_expanded.assign(m_count, Unknown);
        return expand(top, 0) >= 0;
    }

private:
    static constexpr qint64 Unknown = -1;
    static constexpr qint64 Visiting = -2;

    static bool readNumber(const uchar *p, int size, quint64 &value)
    {
        value = 0;
        for (int i = 0; i < size; ++i)
            value = (value << 8) | p[i];
        return true;
    }

    // The node count of object index with everything it names; -1 when a limit is passed, an offset
    // lies outside the objects, or the object names itself.
    qint64 expand(quint64 index, int depth)
    {
        if (depth > m_limits.maxDepth || index >= m_count || m_expanded[index] == Visiting)
            return -1;
        if (m_expanded[index] != Unknown)
            return m_expanded[index];
        quint64 offset = 0;
        readNumber(m_data + m_tableOffset + index * m_offsetSize, m_offsetSize, offset);
        if (offset < 8 || offset >= m_tableOffset)
            return -1;
        const uchar marker = m_data[offset];
        const int type = marker >> 4;
        if (type != 0xA && type != 0xC && type != 0xD)
            return m_expanded[index] = 1;
        quint64 count = marker & 0xF;
        quint64 position = offset + 1;
        if (count == 0xF) {
            // The count follows as an integer object: marker 0x1n, then 2^n bytes.
            if (position >= m_tableOffset || (m_data[position] >> 4) != 0x1 || (m_data[position] & 0xF) > 3)
                return -1;
            const int size = 1 << (m_data[position] & 0xF);
            if (position + 1 + size > m_tableOffset)
                return -1;
            readNumber(m_data + position + 1, size, count);
            position += 1 + size;
        }
        const quint64 references = type == 0xD ? count * 2 : count;
        if (count > quint64(m_size) || (m_tableOffset - position) / m_refSize < references)
            return -1;
        m_expanded[index] = Visiting;
        qint64 total = 1;
        for (quint64 i = 0; i < references; ++i) {
            quint64 child = 0;
            readNumber(m_data + position + i * m_refSize, m_refSize, child);
            const qint64 nodes = expand(child, depth + 1);
            if (nodes < 0 || (total += nodes) > m_limits.maxNodes)
                return -1;
        }
        return m_expanded[index] = total;
    }

    const uchar *m_data;
    qsizetype m_size;
    UpdateListLimits m_limits;
    int m_offsetSize = 0;
    int m_refSize = 0;
    quint64 m_count = 0;
    quint64 m_tableOffset = 0;
    std::vector<qint64> m_expanded;
};

struct PlistDeleter
{
    void operator()(void *node) const noexcept { plist_free(static_cast<plist_t>(node)); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

struct CharsDeleter
{
    void operator()(char *text) const noexcept { std::free(text); }
};
using CharsPtr = std::unique_ptr<char, CharsDeleter>;

} // namespace

std::optional<QVariantMap> readUpdateList(const QByteArray &bytes, const UpdateListLimits &limits)
{
    if (bytes.isEmpty() || bytes.size() > limits.maxBytes)
        return std::nullopt;
    const bool binary = plist_is_binary(bytes.constData(), uint32_t(bytes.size()));
    if (binary ? !BinaryScan(bytes, limits).withinLimits() : !xmlWithinLimits(bytes, limits))
        return std::nullopt;
    plist_t root = nullptr;
    if (binary)
        plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &root);
    else
        plist_from_xml(bytes.constData(), uint32_t(bytes.size()), &root);
    const PlistPtr owner(root);
    if (!root || plist_get_node_type(root) != PLIST_DICT)
        return std::nullopt;

    QVariantMap result;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(root, &iterator);
    const std::unique_ptr<void, decltype(&std::free)> iteratorOwner(iterator, &std::free);
    for (;;) {
        char *rawKey = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(root, iterator, &rawKey, &value);
        const CharsPtr key(rawKey);
        if (!key || !value)
            break;
        if (plist_get_node_type(value) != PLIST_STRING)
            continue;
        char *rawText = nullptr;
        plist_get_string_val(value, &rawText);
        const CharsPtr text(rawText);
        if (text)
            result.insert(QString::fromUtf8(key.get()), QString::fromUtf8(text.get()));
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
