// ResourceFork: the classic resource-file format read with every offset checked, written whole
// after each change, and kept in an extended attribute or an AppleDouble file.
//
// The format: a 16-byte header (offsets and lengths of the data and the map, then zeros to 256
// bytes); the data, each resource a 4-byte length and its bytes; the map: a copy of the header,
// 4 + 2 reserved bytes, 2 bytes of attributes, the offsets of the type list and of the name list
// from the map's start. The type list holds its count less one and 8-byte items (type, count less
// one, offset of the reference list from the type list's start); a reference is 12 bytes (ID, name
// offset or -1, attributes, 3-byte data offset, 4 reserved). Names are Pascal strings. All numbers
// are big-endian.
#include "files/ResourceFork.h"

#include "files/AppleDouble.h"
#include "files/ExtendedAttributes_p.h"
#include "files/NativePath_p.h"

#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace orvel {

namespace {

constexpr qsizetype HeaderSize = 256; // 16 bytes used, the rest reserved for the system and the application
constexpr qsizetype MapHeaderSize = 28;
constexpr qsizetype TypeItemSize = 8;
constexpr qsizetype ReferenceSize = 12;
constexpr qsizetype MaximumAttributeSize = 64 * 1024; // what Linux takes in one attribute at most
constexpr quint32 MaximumDataOffset = 0xffffff;

quint32 be32(const char *p) { return qFromBigEndian<quint32>(p); }
quint16 be16(const char *p) { return qFromBigEndian<quint16>(p); }
quint32 be24(const char *p)
{
    const auto *u = reinterpret_cast<const uchar *>(p);
    return (quint32(u[0]) << 16) | (quint32(u[1]) << 8) | u[2];
}

void put32(char *p, quint32 v) { qToBigEndian(v, p); }
void put16(char *p, quint16 v) { qToBigEndian(v, p); }

/// True when no two of the ranges [first, second) overlap.
bool apart(std::vector<std::pair<qint64, qint64>> &ranges)
{
    std::sort(ranges.begin(), ranges.end());
    for (size_t i = 1; i < ranges.size(); ++i)
        if (ranges[i].first < ranges[i - 1].second)
            return false;
    return true;
}

/// The last component of path as the file's name; empty when there is none.
QString fileName(const QString &path) { return path.mid(path.lastIndexOf(u'/') + 1); }

} // namespace

ResourceFork::ResourceFork() { rewrite({}, nullptr, QByteArray()); }

std::optional<std::vector<ResourceFork::Entry>> ResourceFork::parse(const QByteArray &bytes)
{
    const qint64 size = bytes.size();
    if (size < 16 || size > MaximumSize)
        return std::nullopt;
    const char *b = bytes.constData();
    const qint64 dataOffset = be32(b), mapOffset = be32(b + 4);
    const qint64 dataLength = be32(b + 8), mapLength = be32(b + 12);
    if (dataOffset < 16 || mapOffset < 16 || dataOffset + dataLength > size || mapOffset + mapLength > size
        || mapLength < MapHeaderSize)
        return std::nullopt;
    // The data and the map are apart.
    if (dataLength > 0 && dataOffset < mapOffset + mapLength && mapOffset < dataOffset + dataLength)
        return std::nullopt;

    const char *map = b + mapOffset;
    const qint64 typeList = be16(map + 24), nameList = be16(map + 26);
    // Lists that start inside the map's own header would read it as types or names.
    if (typeList < MapHeaderSize || typeList + 2 > mapLength || nameList < MapHeaderSize
        || nameList > mapLength)
        return std::nullopt;
    const qint64 typeCount = qint64(qint16(be16(map + typeList))) + 1;
    if (typeCount < 0)
        return std::nullopt;
    const qint64 itemsEnd = typeList + 2 + typeCount * TypeItemSize;
    if (itemsEnd > mapLength)
        return std::nullopt;

    // Every reference list first, so that their sizes are known to fit in the map before any is read.
    std::vector<std::pair<qint64, qint64>> lists;
    for (qint64 t = 0; t < typeCount; ++t) {
        const char *item = map + typeList + 2 + t * TypeItemSize;
        const qint64 start = typeList + be16(item + 6);
        const qint64 end = start + (qint64(be16(item + 4)) + 1) * ReferenceSize;
        if (start < itemsEnd || end > mapLength || (nameList > itemsEnd && end > nameList))
            return std::nullopt;
        lists.emplace_back(start, end);
    }
    if (!apart(lists))
        return std::nullopt;

    std::vector<Entry> entries;
    std::vector<std::pair<qint64, qint64>> blocks;
    for (qint64 t = 0; t < typeCount; ++t) {
        const char *item = map + typeList + 2 + t * TypeItemSize;
        const FileTypeCode type = be32(item);
        const qint64 count = qint64(be16(item + 4)) + 1;
        const qint64 start = typeList + be16(item + 6);
        for (qint64 r = 0; r < count; ++r) {
            const char *ref = map + start + r * ReferenceSize;
            Entry e { type, qint16(be16(ref)), quint8(ref[4]), -1, 0, 0 };
            const quint16 nameOffset = be16(ref + 2);
            if (nameOffset != 0xffff) {
                const qint64 at = nameList + nameOffset;
                if (at + 1 > mapLength || at + 1 + quint8(map[at]) > mapLength)
                    return std::nullopt;
                e.name = qsizetype(mapOffset + at);
            }
            const qint64 at = be24(ref + 5);
            if (at + 4 > dataLength)
                return std::nullopt;
            const qint64 length = be32(b + dataOffset + at);
            if (at + 4 + length > dataLength)
                return std::nullopt;
            blocks.emplace_back(at, at + 4 + length);
            e.data = qsizetype(dataOffset + at + 4);
            e.length = qsizetype(length);
            entries.push_back(e);
        }
    }
    // Shared data is no Resource Manager's work; refusing it also keeps a small fork from posing
    // as a huge one when it is written back.
    if (!apart(blocks))
        return std::nullopt;
    return entries;
}

bool ResourceFork::rewrite(const std::vector<Entry> &keep, const Entry *added, const QByteArray &addedData)
{
    // Types in the order they first appear, each with its references in order; the added resource
    // goes last among those of its type.
    std::vector<FileTypeCode> types;
    auto noteType = [&types](FileTypeCode t) {
        if (std::find(types.begin(), types.end(), t) == types.end())
            types.push_back(t);
    };
    for (const Entry &e : keep)
        noteType(e.type);
    if (added)
        noteType(added->type);

    qint64 dataLength = 0, nameLength = 0, referenceCount = 0;
    auto account = [&](const Entry &e, qsizetype length) {
        dataLength += 4 + length;
        if (e.name >= 0)
            nameLength += 1 + quint8(m_bytes.at(e.name));
        ++referenceCount;
    };
    for (const Entry &e : keep)
        account(e, e.length);
    if (added)
        account(*added, addedData.size());
    const qint64 typeListLength = 2 + qint64(types.size()) * TypeItemSize + referenceCount * ReferenceSize;
    const qint64 mapLength = MapHeaderSize + typeListLength + nameLength;
    if (types.size() > 0x10000 || HeaderSize + dataLength + mapLength > MaximumSize
        || MapHeaderSize + typeListLength > 0xffff || nameLength > 0xffff)
        return false;

    QByteArray out(HeaderSize + dataLength + mapLength, '\0');
    char *o = out.data();
    const qint64 mapOffset = HeaderSize + dataLength;
    for (char *header : { o, o + mapOffset }) {
        put32(header, quint32(HeaderSize));
        put32(header + 4, quint32(mapOffset));
        put32(header + 8, quint32(dataLength));
        put32(header + 12, quint32(mapLength));
    }
    char *map = o + mapOffset;
    put16(map + 24, quint16(MapHeaderSize));
    put16(map + 26, quint16(MapHeaderSize + typeListLength));
    put16(map + MapHeaderSize, quint16(types.size() - 1));

    qint64 dataAt = 0, nameAt = 0;
    qint64 referenceAt = 2 + qint64(types.size()) * TypeItemSize; // from the type list's start
    for (size_t t = 0; t < types.size(); ++t) {
        std::vector<std::pair<const Entry *, QByteArrayView>> ofType;
        for (const Entry &e : keep)
            if (e.type == types[t])
                ofType.emplace_back(&e, QByteArrayView(m_bytes.constData() + e.data, e.length));
        if (added && added->type == types[t])
            ofType.emplace_back(added, QByteArrayView(addedData));

        char *item = map + MapHeaderSize + 2 + qint64(t) * TypeItemSize;
        put32(item, types[t]);
        put16(item + 4, quint16(ofType.size() - 1));
        put16(item + 6, quint16(referenceAt));
        for (const auto &[e, bytes] : ofType) {
            if (dataAt > MaximumDataOffset || ofType.size() > 0x10000)
                return false;
            char *ref = map + MapHeaderSize + referenceAt;
            put16(ref, quint16(e->id));
            put16(ref + 2, 0xffff);
            if (e->name >= 0) {
                const qsizetype length = 1 + quint8(m_bytes.at(e->name));
                put16(ref + 2, quint16(nameAt));
                memcpy(map + MapHeaderSize + typeListLength + nameAt, m_bytes.constData() + e->name,
                    size_t(length));
                nameAt += length;
            }
            ref[4] = char(e->attributes);
            ref[5] = char(dataAt >> 16);
            ref[6] = char(dataAt >> 8);
            ref[7] = char(dataAt);
            put32(o + HeaderSize + dataAt, quint32(bytes.size()));
            if (!bytes.isEmpty())
                memcpy(o + HeaderSize + dataAt + 4, bytes.data(), size_t(bytes.size()));
            dataAt += 4 + bytes.size();
            referenceAt += ReferenceSize;
        }
    }

    std::optional<std::vector<Entry>> entries = parse(out);
    if (!entries || (!m_path.isEmpty() && !store(out)))
        return false;
    m_bytes = out;
    m_entries = std::move(*entries);
    return true;
}

bool ResourceFork::store(const QByteArray &bytes)
{
    QByteArray native;
    if (!detail::nativePath(m_path, &native))
        return false;
    const detail::AttributeWrite written = bytes.size() <= MaximumAttributeSize
        ? detail::writeExtendedAttribute(native, AttributeName, bytes)
        : detail::AttributeWrite::Refused;
    if (written == detail::AttributeWrite::NoFile)
        return false;
    if (written == detail::AttributeWrite::Written) {
        m_storage = Storage::Attribute;
        // A fork left in the companion file is hidden by the attribute; drop it so that it does not
        // travel on with the file. That failing loses nothing.
        std::optional<AppleDouble> ad = AppleDouble::readForFile(m_path);
        if (ad && !ad->resourceFork().isNull()) {
            ad->setResourceFork(QByteArray());
            AppleDouble::writeForFile(m_path, *ad);
        }
        return true;
    }
    std::optional<AppleDouble> ad = AppleDouble::readForFile(m_path);
    if (!ad)
        return false;
    ad->setResourceFork(bytes);
    // An attribute left from before would be read in place of the new fork.
    if (!AppleDouble::writeForFile(m_path, *ad) || !detail::removeExtendedAttribute(native, AttributeName))
        return false;
    m_storage = Storage::AppleDouble;
    return true;
}

std::optional<ResourceFork> ResourceFork::open(const QString &path, bool forWriting)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return std::nullopt;
    if (forWriting) {
        const QString name = fileName(path);
        if (name.isEmpty() || name.size() >= 256)
            return std::nullopt;
        // As creating a fork does, make the file when it is missing.
        const int fd
            = ::open(native.constData(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
        if (fd < 0 && errno != EISDIR)
            return std::nullopt;
        if (fd >= 0)
            ::close(fd);
    }

    ResourceFork fork;
    fork.m_path = path;
    fork.m_writable = forWriting;
    QByteArray bytes;
    const std::optional<QByteArray> attribute
        = detail::readExtendedAttribute(native, AttributeName, MaximumSize);
    if (!attribute)
        return std::nullopt;
    if (!attribute->isEmpty()) {
        bytes = *attribute;
        fork.m_storage = Storage::Attribute;
    } else {
        const std::optional<AppleDouble> ad = AppleDouble::readForFile(path);
        if (!ad)
            return std::nullopt; // a companion that does not parse is neither read nor replaced
        bytes = ad->resourceFork();
        fork.m_storage = Storage::AppleDouble;
    }
    if (bytes.isEmpty()) {
        if (!forWriting)
            return std::nullopt;
        return fork.rewrite({}, nullptr, QByteArray()) ? std::optional<ResourceFork>(std::move(fork))
                                                       : std::nullopt;
    }
    std::optional<std::vector<Entry>> entries = parse(bytes);
    if (!entries)
        return std::nullopt;
    fork.m_bytes = bytes;
    fork.m_entries = std::move(*entries);
    return fork;
}

std::unique_ptr<ResourceFork> ResourceFork::resourceForkForReadingAtPath(const QString &path)
{
    std::optional<ResourceFork> fork = open(path, false);
    return fork ? std::make_unique<ResourceFork>(std::move(*fork)) : nullptr;
}

std::unique_ptr<ResourceFork> ResourceFork::resourceForkForWritingAtPath(const QString &path)
{
    std::optional<ResourceFork> fork = open(path, true);
    return fork ? std::make_unique<ResourceFork>(std::move(*fork)) : nullptr;
}

std::optional<ResourceFork> ResourceFork::initForReadingAtPath(const QString &path)
{
    return open(path, false);
}

std::optional<ResourceFork> ResourceFork::initForWritingAtPath(const QString &path)
{
    return open(path, true);
}

std::optional<ResourceFork> ResourceFork::fromData(const QByteArray &bytes)
{
    std::optional<std::vector<Entry>> entries = parse(bytes);
    if (!entries)
        return std::nullopt;
    ResourceFork fork;
    fork.m_bytes = bytes;
    fork.m_entries = std::move(*entries);
    return fork;
}

bool ResourceFork::addData(const QByteArray &data, FileTypeCode type, qint16 ID)
{
    if (data.isNull() || !m_writable)
        return false;
    std::vector<Entry> keep;
    keep.reserve(m_entries.size());
    for (const Entry &e : m_entries)
        if (e.type != type || e.id != ID)
            keep.push_back(e);
    const Entry added { type, ID, 0, -1, 0, data.size() };
    return rewrite(keep, &added, data);
}

bool ResourceFork::addString(QStringView string, FileTypeCode type, qint16 ID)
{
    if (string.size() > 255)
        return false;
    QByteArray pascal(1, char(string.size()));
    for (QChar c : string)
        pascal.append(c.unicode() < 0x80 ? char(c.unicode()) : '?');
    return addData(pascal, type, ID);
}

QByteArray ResourceFork::dataForType(FileTypeCode type, qint16 ID) const
{
    for (const Entry &e : m_entries)
        if (e.type == type && e.id == ID)
            return e.length == 0 ? QByteArray("") : m_bytes.mid(e.data, e.length);
    return QByteArray();
}

bool ResourceFork::removeType(FileTypeCode type, qint16 ID)
{
    const auto matches = [type, ID](const Entry &e) { return e.type == type && e.id == ID; };
    if (std::none_of(m_entries.begin(), m_entries.end(), matches))
        return true;
    if (!m_writable)
        return false;
    std::vector<Entry> keep;
    for (const Entry &e : m_entries)
        if (!matches(e))
            keep.push_back(e);
    return rewrite(keep, nullptr, QByteArray());
}

std::vector<std::pair<FileTypeCode, qint16>> ResourceFork::resources() const
{
    std::vector<std::pair<FileTypeCode, qint16>> out;
    out.reserve(m_entries.size());
    for (const Entry &e : m_entries)
        out.emplace_back(e.type, e.id);
    return out;
}

} // namespace orvel
