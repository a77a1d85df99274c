// AppleDouble files: parsing, writing, and the companion "._NAME" of a file on disk.
#include "files/AppleDouble.h"

#include "files/AtomicFile.h"
#include "files/NativePath_p.h"
#include "support/Failure.h"

#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

constexpr qsizetype HeaderSize = 26; // magic, version, filler, entry count
constexpr qsizetype DescriptorSize = 12; // id, offset, length
constexpr quint32 VersionOne = 0x00010000;

quint32 be32(QByteArrayView bytes, qsizetype at) { return qFromBigEndian<quint32>(bytes.data() + at); }

void appendBe32(QByteArray &out, quint32 value)
{
    char b[4];
    qToBigEndian(value, b);
    out.append(b, 4);
}

/// Reads the whole file at native when it is a plain file of at most maxSize bytes. A missing
/// file gives a null array; anything else that fails nullopt.
std::optional<QByteArray> readSmallFile(const QByteArray &native, qsizetype maxSize)
{
    // A link in the companion's place is refused: it could lead a write to another file.
    const int fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW);
    if (fd < 0)
        return errno == ENOENT || errno == ENOTDIR ? std::optional<QByteArray>(QByteArray()) : std::nullopt;
    struct stat st;
    std::optional<QByteArray> result;
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size <= maxSize) {
        QByteArray bytes(qsizetype(st.st_size), '\0');
        qsizetype done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::read(fd, bytes.data() + done, size_t(bytes.size() - done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                break;
            done += n;
        }
        // A file that shrank meanwhile is taken as it now stands; its parse decides.
        bytes.truncate(done);
        result = bytes;
    }
    ::close(fd);
    return result;
}

} // namespace

std::optional<AppleDouble> AppleDouble::fromBytes(QByteArrayView bytes)
{
    if (bytes.size() < HeaderSize || be32(bytes, 0) != Magic)
        return std::nullopt;
    AppleDouble ad;
    ad.m_version = be32(bytes, 4);
    if (ad.m_version != Version && ad.m_version != VersionOne)
        return std::nullopt;
    ad.m_filler = bytes.sliced(8, 16).toByteArray();
    const quint16 count = qFromBigEndian<quint16>(bytes.data() + 24);
    if (HeaderSize + qsizetype(count) * DescriptorSize > bytes.size())
        return std::nullopt;
    const qint64 descriptorsEnd = HeaderSize + qint64(count) * DescriptorSize;
    quint64 total = 0;
    for (quint16 i = 0; i < count; ++i) {
        const qsizetype at = HeaderSize + qsizetype(i) * DescriptorSize;
        const quint32 id = be32(bytes, at);
        const quint64 offset = be32(bytes, at + 4);
        const quint64 length = be32(bytes, at + 8);
        if (id == 0 || offset + length > quint64(bytes.size()))
            return std::nullopt;
        // No writer points an entry into the descriptors; and entries that share their bytes
        // would let a small file claim many copies of itself, so together they fit in the file.
        total += length;
        if ((length > 0 && qint64(offset) < descriptorsEnd) || total > quint64(bytes.size()))
            return std::nullopt;
        if (!ad.entry(id).isNull())
            continue;
        ad.m_entries.push_back({ id, bytes.sliced(qsizetype(offset), qsizetype(length)).toByteArray() });
    }
    return ad;
}

QByteArray AppleDouble::toBytes() const
{
    // The Finder info first, the fork last, the others in their order between.
    std::vector<const Entry *> order;
    for (const Entry &e : m_entries)
        if (e.id == FinderInfoEntry)
            order.push_back(&e);
    for (const Entry &e : m_entries)
        if (e.id != FinderInfoEntry && e.id != ResourceForkEntry)
            order.push_back(&e);
    for (const Entry &e : m_entries)
        if (e.id == ResourceForkEntry)
            order.push_back(&e);

    QByteArray out;
    appendBe32(out, Magic);
    appendBe32(out, m_version);
    out.append(m_filler.left(16).leftJustified(16, '\0'));
    out.append(char(order.size() >> 8)).append(char(order.size() & 0xff));
    quint32 offset = quint32(HeaderSize + qsizetype(order.size()) * DescriptorSize);
    for (const Entry *e : order) {
        appendBe32(out, e->id);
        appendBe32(out, offset);
        appendBe32(out, quint32(e->data.size()));
        offset += quint32(e->data.size());
    }
    for (const Entry *e : order)
        out.append(e->data);
    return out;
}

QByteArray AppleDouble::entry(quint32 id) const
{
    for (const Entry &e : m_entries)
        if (e.id == id)
            return e.data.isNull() ? QByteArray("") : e.data;
    return QByteArray();
}

void AppleDouble::setEntry(quint32 id, const QByteArray &data)
{
    for (Entry &e : m_entries) {
        if (e.id == id) {
            e.data = data;
            return;
        }
    }
    m_entries.push_back({ id, data });
}

void AppleDouble::removeEntry(quint32 id)
{
    std::erase_if(m_entries, [id](const Entry &e) { return e.id == id; });
}

QByteArray AppleDouble::finderInfo() const
{
    const QByteArray data = entry(FinderInfoEntry);
    if (data.isNull())
        return QByteArray();
    return data.left(FinderInfoSize).leftJustified(FinderInfoSize, '\0');
}

void AppleDouble::setFinderInfo(const QByteArray &info)
{
    QByteArray data = entry(FinderInfoEntry);
    if (data.size() < FinderInfoSize)
        data = data.leftJustified(FinderInfoSize, '\0');
    data.replace(0, FinderInfoSize, info.left(FinderInfoSize).leftJustified(FinderInfoSize, '\0'));
    setEntry(FinderInfoEntry, data);
}

QByteArray AppleDouble::resourceFork() const
{
    const QByteArray fork = entry(ResourceForkEntry);
    return fork.isEmpty() ? QByteArray() : fork;
}

void AppleDouble::setResourceFork(const QByteArray &fork)
{
    if (fork.isEmpty())
        removeEntry(ResourceForkEntry);
    else
        setEntry(ResourceForkEntry, fork);
}

bool AppleDouble::isEmpty() const
{
    for (const Entry &e : m_entries) {
        if (e.id == ResourceForkEntry && !e.data.isEmpty())
            return false;
        if (e.id == FinderInfoEntry && e.data.count('\0') != e.data.size())
            return false;
        if (e.id != ResourceForkEntry && e.id != FinderInfoEntry)
            return false;
    }
    return true;
}

QString AppleDouble::pathForFile(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    const QString name = path.mid(slash + 1);
    if (name.isEmpty() || name == u"."_s || name == u".."_s)
        return QString();
    return path.left(slash + 1) + u"._"_s + name;
}

std::optional<AppleDouble> AppleDouble::readForFile(const QString &path)
{
    QByteArray native;
    const QString companion = pathForFile(path);
    if (companion.isEmpty() || !detail::nativePath(companion, &native))
        return std::nullopt;
    const std::optional<QByteArray> bytes = readSmallFile(native, MaximumFileSize);
    if (!bytes)
        return std::nullopt;
    if (bytes->isNull())
        return AppleDouble();
    return fromBytes(*bytes);
}

bool AppleDouble::writeForFile(const QString &path, const AppleDouble &ad, QString *error)
{
    const QString companion = pathForFile(path);
    QByteArray native;
    if (companion.isEmpty() || !detail::nativePath(companion, &native))
        return failure(error, u"no file name in %1"_s.arg(path));
    if (ad.isEmpty()) {
        if (::unlink(native.constData()) == 0 || errno == ENOENT)
            return true;
        return failure(error, u"cannot remove %1: %2"_s.arg(companion, qt_error_string(errno)));
    }
    QString why;
    if (!writeFileAtomically(companion, ad.toBytes(), &why))
        return failure(error, u"cannot write %1: %2"_s.arg(companion, why));
    return true;
}

} // namespace orvel
