// Zip archives in-process through libarchive: forks and Finder info travel as "__MACOSX/._NAME"
// AppleDouble entries, and extraction checks every entry before it writes anything.
#include "files/FileManager.h"

#include "files/AppleDouble.h"
#include "files/ExtendedAttributes_p.h"
#include "files/FinderInfo.h"
#include "files/NativePath_p.h"
#include "files/ResourceFork.h"
#include "files/Staging_p.h"

#include <QFile>
#include <QHash>
#include <QSet>

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace orvel {

namespace {

/// The folder of Mac metadata in a zip archive.
constexpr char MetadataFolder[] = "__MACOSX/";
/// An archive expands to at most this many bytes...
constexpr qint64 MaximumExpandedSize = qint64(16) * 1024 * 1024 * 1024;
/// ...and to at most this many times its own size, beyond an allowance that any archive may use
/// (a small archive of zeros legitimately expands a thousandfold).
constexpr qint64 MaximumRatio = 200;
constexpr qint64 RatioAllowance = qint64(64) * 1024 * 1024;
constexpr qint64 MaximumEntries = 1000000;
/// Links followed while a link target is resolved inside the archive, as the kernel allows.
constexpr int MaximumLinkHops = 40;
/// Folders nested deeper than this are not walked when zipping.
constexpr int MaximumDepth = 256;
constexpr size_t BufferSize = 1 << 20;

struct ReadCloser
{
    void operator()(archive *a) const noexcept { archive_read_free(a); }
};
struct WriteCloser
{
    void operator()(archive *a) const noexcept { archive_write_free(a); }
};
struct EntryFree
{
    void operator()(archive_entry *e) const noexcept { archive_entry_free(e); }
};
struct DirCloser
{
    void operator()(DIR *d) const noexcept { closedir(d); }
};
using ReadArchive = std::unique_ptr<archive, ReadCloser>;
using WriteArchive = std::unique_ptr<archive, WriteCloser>;
using Entry = std::unique_ptr<archive_entry, EntryFree>;

/// A zip reader over the file at native; null when it cannot be opened as one.
ReadArchive openZip(const QByteArray &native)
{
    ReadArchive a(archive_read_new());
    if (!a || archive_read_support_format_zip(a.get()) != ARCHIVE_OK
        || archive_read_open_filename(a.get(), native.constData(), 64 * 1024) != ARCHIVE_OK)
        return nullptr;
    return a;
}

/// The entry's path as the archive stores it (UTF-8 when it says so, else its raw bytes).
QByteArray entryPath(archive_entry *e)
{
    if (const char *utf8 = archive_entry_pathname_utf8(e))
        return QByteArray(utf8);
    if (const char *raw = archive_entry_pathname(e))
        return QByteArray(raw);
    return QByteArray();
}

/// The entry path made relative and plain: empty and "." components dropped. Null for an
/// absolute path, a ".." component or a path that names nothing.
QByteArray safeRelativePath(const QByteArray &path)
{
    if (path.startsWith('/'))
        return QByteArray();
    QByteArray out;
    for (const QByteArray &c : path.split('/')) {
        if (c.isEmpty() || c == ".")
            continue;
        if (c == "..")
            return QByteArray();
        if (!out.isEmpty())
            out += '/';
        out += c;
    }
    return out;
}

/// What pass one learns of the archive's links: path -> target.
using LinkMap = QHash<QByteArray, QByteArray>;

/// Whether the link at path (relative to the root) leads somewhere inside the root, following the
/// archive's other links on the way as the file system would.
bool linkStaysInside(const QByteArray &path, const LinkMap &links)
{
    std::vector<QByteArray> resolved = [&] {
        std::vector<QByteArray> parts;
        for (const QByteArray &c : path.split('/'))
            parts.push_back(c);
        parts.pop_back();
        return parts;
    }();
    std::vector<QByteArray> pending;
    auto queue = [&pending](const QByteArray &target) {
        const QList<QByteArray> parts = target.split('/');
        for (auto it = parts.crbegin(); it != parts.crend(); ++it)
            pending.push_back(*it);
    };
    const QByteArray first = links.value(path);
    if (first.isEmpty() || first.startsWith('/'))
        return false;
    queue(first);
    int hops = 0;
    while (!pending.empty()) {
        const QByteArray c = pending.back();
        pending.pop_back();
        if (c.isEmpty() || c == ".")
            continue;
        if (c == "..") {
            if (resolved.empty())
                return false;
            resolved.pop_back();
            continue;
        }
        resolved.push_back(c);
        const auto link = links.constFind(QByteArrayList(resolved.begin(), resolved.end()).join('/'));
        if (link != links.cend()) {
            if (++hops > MaximumLinkHops || link->isEmpty() || link->startsWith('/'))
                return false;
            resolved.pop_back();
            queue(*link);
        }
    }
    return true;
}

/// The item that a "__MACOSX/DIR/._NAME" entry describes ("DIR/NAME"); null for other entries.
QByteArray itemOfMetadataEntry(const QByteArray &relative)
{
    const QByteArray inside = relative.mid(qsizetype(strlen(MetadataFolder)));
    const qsizetype slash = inside.lastIndexOf('/');
    const QByteArray name = inside.mid(slash + 1);
    if (!name.startsWith("._") || name.size() <= 2)
        return QByteArray();
    return inside.left(slash + 1) + name.mid(2);
}

bool isMetadataPath(const QByteArray &relative)
{
    return relative == "__MACOSX" || relative.startsWith(MetadataFolder);
}

/// Stores a fork in the file's attribute, or in its AppleDouble companion when the file system
/// will not hold it there.
bool storeResourceFork(const QByteArray &native, const QByteArray &fork)
{
    switch (detail::writeExtendedAttribute(native, ResourceFork::AttributeName, fork)) {
    case detail::AttributeWrite::Written:
        return true;
    case detail::AttributeWrite::NoFile:
        return false;
    case detail::AttributeWrite::Refused:
        break;
    }
    const QString path = QFile::decodeName(native);
    std::optional<AppleDouble> ad = AppleDouble::readForFile(path);
    if (!ad)
        return false;
    ad->setResourceFork(fork);
    return AppleDouble::writeForFile(path, *ad);
}

/// Gives the item at native the fork and Finder info of an AppleDouble entry's bytes. A fork that
/// is not a well-formed resource file is not stored.
void restoreMetadata(const QByteArray &native, const QByteArray &bytes)
{
    struct stat st;
    if (::lstat(native.constData(), &st) != 0 || S_ISLNK(st.st_mode))
        return;
    const std::optional<AppleDouble> ad = AppleDouble::fromBytes(bytes);
    if (!ad)
        return;
    const QByteArray fork = ad->resourceFork();
    if (!fork.isEmpty() && S_ISREG(st.st_mode) && ResourceFork::fromData(fork))
        storeResourceFork(native, fork);
    const QByteArray info = ad->finderInfo();
    if (!info.isEmpty() && info.count('\0') != info.size())
        setFinderInfoOfFile(QFile::decodeName(native), info);
}

/// Moves everything in the folder from into the folder to: folders are merged, anything else
/// takes the place of what is there by a rename. A folder of the user's is never replaced by a
/// file, nor a file by a folder unless it is a plain file or a link.
bool mergeInto(const QByteArray &from, const QByteArray &to)
{
    std::unique_ptr<DIR, DirCloser> dir { ::opendir(from.constData()) };
    if (!dir)
        return false;
    bool ok = true;
    while (const dirent *e = ::readdir(dir.get())) {
        if (strcmp(e->d_name, ".") == 0 || strcmp(e->d_name, "..") == 0)
            continue;
        const QByteArray src = from + '/' + e->d_name;
        const QByteArray dst = to + '/' + e->d_name;
        struct stat s, d;
        if (::lstat(src.constData(), &s) != 0) {
            ok = false;
            continue;
        }
        const bool exists = ::lstat(dst.constData(), &d) == 0;
        if (exists && S_ISDIR(d.st_mode)) {
            ok = (S_ISDIR(s.st_mode) && mergeInto(src, dst)) && ok;
            continue;
        }
        if (exists && S_ISDIR(s.st_mode) && ::unlink(dst.constData()) != 0) {
            ok = false;
            continue;
        }
        ok = ::rename(src.constData(), dst.constData()) == 0 && ok;
    }
    return ok;
}

// ---- Writing ---------------------------------------------------------------------------------

/// One zip archive being written to a staged file.
class ZipWriter
{
public:
    explicit ZipWriter(int fd)
        : m_archive(archive_write_new())
        , m_buffer(new char[BufferSize])
    {
        m_ok = m_archive && archive_write_set_format_zip(m_archive.get()) == ARCHIVE_OK
            && archive_write_set_options(m_archive.get(), "zip:compression=deflate") == ARCHIVE_OK
            && archive_write_open_fd(m_archive.get(), fd) == ARCHIVE_OK;
    }

    [[nodiscard]] bool ok() const { return m_ok; }

    /// The identity of the file being written, which a walk must not take into the archive.
    FileIdentity skip;

    bool addDirectory(const QByteArray &name, const struct stat &st)
    {
        Entry e = newEntry(name.endsWith('/') ? name : name + '/', st);
        archive_entry_set_filetype(e.get(), AE_IFDIR);
        archive_entry_set_size(e.get(), 0);
        return header(e.get());
    }

    bool addLink(const QByteArray &name, const QByteArray &native, const struct stat &st)
    {
        QByteArray target(4096, '\0');
        const ssize_t n = ::readlink(native.constData(), target.data(), size_t(target.size()));
        if (n < 0 || n >= target.size())
            return m_ok = false;
        target.truncate(n);
        Entry e = newEntry(name, st);
        archive_entry_set_filetype(e.get(), AE_IFLNK);
        archive_entry_set_size(e.get(), 0);
        archive_entry_update_symlink_utf8(e.get(), target.constData());
        return header(e.get());
    }

    bool addFile(const QByteArray &name, const QByteArray &native)
    {
        const int fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
        if (fd < 0)
            return m_ok = false;
        struct stat st;
        bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
        if (ok) {
            Entry e = newEntry(name, st);
            archive_entry_set_filetype(e.get(), AE_IFREG);
            archive_entry_set_size(e.get(), st.st_size);
            ok = header(e.get());
            off_t done = 0;
            while (ok && done < st.st_size) {
                const ssize_t n = ::read(fd, m_buffer.get(), BufferSize);
                if (n < 0 && errno == EINTR)
                    continue;
                // A file that shrinks while it is read would give an entry with a false size.
                ok = n > 0 && archive_write_data(m_archive.get(), m_buffer.get(), size_t(n)) == n;
                done += n;
            }
            ok = ok && done == st.st_size;
        }
        ::close(fd);
        return m_ok = m_ok && ok;
    }

    bool addData(const QByteArray &name, const QByteArray &data, const struct stat &st)
    {
        Entry e = newEntry(name, st);
        archive_entry_set_filetype(e.get(), AE_IFREG);
        archive_entry_set_perm(e.get(), 0644);
        archive_entry_set_size(e.get(), data.size());
        return header(e.get())
            && (data.isEmpty()
                || archive_write_data(m_archive.get(), data.constData(), size_t(data.size())) == data.size());
    }

    /// Copies the current entry of reader, data and all.
    bool copyEntry(archive *reader, archive_entry *e)
    {
        if (!header(e))
            return false;
        for (;;) {
            const la_ssize_t n = archive_read_data(reader, m_buffer.get(), BufferSize);
            if (n == 0)
                return true;
            if (n < 0 || archive_write_data(m_archive.get(), m_buffer.get(), size_t(n)) != n)
                return m_ok = false;
        }
    }

    /// The "__MACOSX" entry for the item: its Finder info and, for a file, its fork; nothing
    /// when it has neither.
    bool addMetadata(const QByteArray &name, const QByteArray &native, const struct stat &st)
    {
        const QString path = QFile::decodeName(native);
        AppleDouble ad;
        if (S_ISREG(st.st_mode)) {
            if (const std::unique_ptr<ResourceFork> fork = ResourceFork::resourceForkForReadingAtPath(path))
                ad.setResourceFork(fork->data());
        }
        if (const std::optional<QByteArray> info = finderInfoOfFile(path);
            info && info->count('\0') != info->size())
            ad.setFinderInfo(*info);
        if (ad.isEmpty())
            return true;
        const qsizetype slash = name.lastIndexOf('/');
        const QByteArray folder = name.left(slash + 1);
        QByteArray parents = MetadataFolder;
        if (!addMetadataFolder(parents, st))
            return false;
        for (const QByteArray &c : folder.split('/')) {
            if (c.isEmpty())
                continue;
            parents += c + '/';
            if (!addMetadataFolder(parents, st))
                return false;
        }
        return addData(parents + "._" + name.mid(slash + 1), ad.toBytes(), st);
    }

    bool finish() { return m_ok && archive_write_close(m_archive.get()) == ARCHIVE_OK; }

private:
    Entry newEntry(const QByteArray &name, const struct stat &st)
    {
        Entry e(archive_entry_new());
        archive_entry_update_pathname_utf8(e.get(), name.constData());
        archive_entry_set_perm(e.get(), st.st_mode & 07777);
        archive_entry_set_mtime(e.get(), st.st_mtim.tv_sec, st.st_mtim.tv_nsec);
        return e;
    }

    bool header(archive_entry *e)
    {
        if (m_ok && archive_write_header(m_archive.get(), e) < ARCHIVE_WARN)
            m_ok = false;
        return m_ok;
    }

    bool addMetadataFolder(const QByteArray &name, const struct stat &st)
    {
        if (m_metadataFolders.contains(name))
            return true;
        m_metadataFolders.insert(name);
        struct stat folder = st;
        folder.st_mode = S_IFDIR | 0755;
        return addDirectory(name, folder);
    }

    WriteArchive m_archive;
    std::unique_ptr<char[]> m_buffer;
    QSet<QByteArray> m_metadataFolders;
    bool m_ok = false;
};

/// Whether a name beginning "._" in a folder is the AppleDouble companion of a sibling, whose
/// fork and Finder info go to "__MACOSX" rather than into the archive as a file of its own.
bool isCompanion(const QByteArray &folder, const char *name)
{
    if (strncmp(name, "._", 2) != 0 || name[2] == '\0')
        return false;
    struct stat st;
    return ::lstat((folder + '/' + (name + 2)).constData(), &st) == 0;
}

struct ZipWalk
{
    ZipWriter &zip;
    bool sequester; ///< forks to "__MACOSX", links kept as links
    std::vector<FileIdentity> ancestors;

    /// Adds the item at native as name, a folder with everything in it.
    bool add(const QByteArray &native, const QByteArray &name, int depth)
    {
        struct stat st;
        if ((sequester ? ::lstat(native.constData(), &st) : ::stat(native.constData(), &st)) != 0)
            return false;
        const FileIdentity id { quint64(st.st_dev), quint64(st.st_ino) };
        if (id == zip.skip)
            return true;
        if (S_ISLNK(st.st_mode))
            return zip.addLink(name, native, st);
        if (S_ISREG(st.st_mode))
            return zip.addFile(name, native) && (!sequester || zip.addMetadata(name, native, st));
        if (!S_ISDIR(st.st_mode))
            return true; // devices, pipes and sockets have no place in an archive
        if (depth > MaximumDepth || std::find(ancestors.begin(), ancestors.end(), id) != ancestors.end())
            return false; // a link loop
        if (!name.isEmpty() && !zip.addDirectory(name, st))
            return false;
        if (sequester && !name.isEmpty() && !zip.addMetadata(name, native, st))
            return false;
        return addContents(native, name.isEmpty() ? name : name + '/', id, depth);
    }

    bool addContents(const QByteArray &native, const QByteArray &prefix, FileIdentity id, int depth)
    {
        std::unique_ptr<DIR, DirCloser> dir { ::opendir(native.constData()) };
        if (!dir)
            return false;
        std::vector<QByteArray> names;
        while (const dirent *e = ::readdir(dir.get())) {
            if (strcmp(e->d_name, ".") == 0 || strcmp(e->d_name, "..") == 0)
                continue;
            if (sequester && isCompanion(native, e->d_name))
                continue;
            names.emplace_back(e->d_name);
        }
        dir.reset();
        ancestors.push_back(id);
        bool ok = true;
        for (const QByteArray &n : names) {
            if (!add(native + '/' + n, prefix + n, depth + 1)) {
                ok = false;
                break;
            }
        }
        ancestors.pop_back();
        return ok;
    }
};

/// The archive's entries except those named in replaced (their folder entries too), copied to
/// zip; false when the file is no readable zip archive.
bool copyEntries(const QByteArray &native, ZipWriter &zip, const QSet<QByteArray> &replaced)
{
    ReadArchive reader = openZip(native);
    if (!reader)
        return false;
    archive_entry *e = nullptr;
    for (;;) {
        const int r = archive_read_next_header(reader.get(), &e);
        if (r == ARCHIVE_EOF)
            return true;
        if (r < ARCHIVE_WARN)
            return false;
        QByteArray name = entryPath(e);
        if (name.endsWith('/'))
            name.chop(1);
        if (replaced.contains(name)) {
            archive_read_data_skip(reader.get());
            continue;
        }
        if (!zip.copyEntry(reader.get(), e))
            return false;
    }
}

/// Writes an archive to target through a staged file: make(zip) adds the entries.
template <typename Make> bool writeZip(const QString &target, Make make)
{
    QByteArray native;
    if (!detail::nativePath(target, &native))
        return false;
    struct stat existing;
    if (::stat(native.constData(), &existing) == 0 && !S_ISREG(existing.st_mode))
        return false;
    detail::StagedFile staged(native);
    if (staged.fd() < 0)
        return false;
    ZipWriter zip(staged.fd());
    struct stat st;
    if (::fstat(staged.fd(), &st) == 0)
        zip.skip = FileIdentity { quint64(st.st_dev), quint64(st.st_ino) };
    if (!zip.ok() || !make(zip) || !zip.finish())
        return false;
    return staged.commit();
}

// ---- Reading ---------------------------------------------------------------------------------

/// Pass one over an archive: every entry checked, nothing written. Answers the total of the
/// sizes the entries declare, or -1 when the archive is refused.
qint64 checkArchive(const QByteArray &native)
{
    ReadArchive reader = openZip(native);
    if (!reader)
        return -1;
    LinkMap links;
    std::vector<QByteArray> paths;
    qint64 total = 0;
    archive_entry *e = nullptr;
    for (qint64 count = 0;; ++count) {
        const int r = archive_read_next_header(reader.get(), &e);
        if (r == ARCHIVE_EOF)
            break;
        if (r < ARCHIVE_WARN || count >= MaximumEntries)
            return -1;
        const QByteArray relative = safeRelativePath(entryPath(e));
        if (relative.isNull())
            return -1;
        if (relative.isEmpty()) { // "./": the folder itself
            archive_read_data_skip(reader.get());
            continue;
        }
        if (archive_entry_size_is_set(e)) {
            const la_int64_t size = archive_entry_size(e);
            if (size < 0 || size > MaximumExpandedSize - total)
                return -1;
            total += size;
        }
        if (archive_entry_filetype(e) == AE_IFLNK && !isMetadataPath(relative)) {
            const char *target = archive_entry_symlink_utf8(e);
            if (!target)
                target = archive_entry_symlink(e);
            links.insert(relative, target ? QByteArray(target) : QByteArray());
        }
        if (archive_entry_hardlink(e))
            return -1;
        paths.push_back(relative);
        archive_read_data_skip(reader.get());
    }
    for (auto it = links.cbegin(); it != links.cend(); ++it) {
        if (!linkStaysInside(it.key(), links))
            return -1;
    }
    // Nothing may be written through a link: no entry lies below one.
    for (QByteArray path : paths) {
        if (isMetadataPath(path))
            path = itemOfMetadataEntry(path);
        for (qsizetype slash = path.indexOf('/'); slash > 0; slash = path.indexOf('/', slash + 1)) {
            if (links.contains(path.left(slash)))
                return -1;
        }
    }
    return total;
}

/// Pass two: the entries written under root, the "__MACOSX" ones applied to the items they
/// describe. False when an entry cannot be written or the archive expands beyond limit bytes.
bool extractArchive(const QByteArray &native, const QByteArray &root, qint64 limit)
{
    ReadArchive reader = openZip(native);
    WriteArchive disk(archive_write_disk_new());
    if (!reader || !disk)
        return false;
    archive_write_disk_set_options(disk.get(),
        ARCHIVE_EXTRACT_TIME | ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_SECURE_SYMLINKS
            | ARCHIVE_EXTRACT_SECURE_NODOTDOT);
    QHash<QByteArray, QByteArray> metadata;
    qint64 written = 0;
    archive_entry *e = nullptr;
    for (;;) {
        const int r = archive_read_next_header(reader.get(), &e);
        if (r == ARCHIVE_EOF)
            break;
        if (r < ARCHIVE_WARN)
            return false;
        const QByteArray relative = safeRelativePath(entryPath(e));
        if (relative.isNull())
            return false;
        if (relative.isEmpty())
            continue;
        const auto type = archive_entry_filetype(e);
        if (isMetadataPath(relative)) {
            const QByteArray item = itemOfMetadataEntry(relative);
            if (type != AE_IFREG || item.isEmpty() || archive_entry_size(e) > AppleDouble::MaximumFileSize)
                continue;
            QByteArray bytes;
            char buffer[64 * 1024];
            for (;;) {
                const la_ssize_t n = archive_read_data(reader.get(), buffer, sizeof buffer);
                if (n < 0)
                    return false;
                if (n == 0)
                    break;
                written += n;
                if (written > limit || bytes.size() + n > AppleDouble::MaximumFileSize)
                    return false;
                bytes.append(buffer, n);
            }
            metadata.insert(safeRelativePath(item), bytes);
            continue;
        }
        if (type != AE_IFREG && type != AE_IFDIR && type != AE_IFLNK)
            continue; // no devices or pipes from an archive
        const QByteArray destination = root + '/' + relative;
        archive_entry_copy_pathname(e, destination.constData());
        // Set-user-ID bits are not taken from a downloaded archive; folders stay writable until
        // they are moved into place.
        archive_entry_set_perm(e, (archive_entry_perm(e) & 0777) | (type == AE_IFDIR ? 0700 : 0));
        if (archive_write_header(disk.get(), e) < ARCHIVE_WARN)
            return false;
        if (type == AE_IFREG) {
            const void *block = nullptr;
            size_t size = 0;
            la_int64_t offset = 0;
            for (;;) {
                const int d = archive_read_data_block(reader.get(), &block, &size, &offset);
                if (d == ARCHIVE_EOF)
                    break;
                if (d < ARCHIVE_WARN)
                    return false;
                written += qint64(size);
                if (written > limit)
                    return false;
                if (archive_write_data_block(disk.get(), block, size, offset) < ARCHIVE_WARN)
                    return false;
            }
        }
        if (archive_write_finish_entry(disk.get()) < ARCHIVE_WARN)
            return false;
    }
    if (archive_write_close(disk.get()) != ARCHIVE_OK)
        return false;
    for (auto it = metadata.cbegin(); it != metadata.cend(); ++it) {
        if (!it.key().isEmpty())
            restoreMetadata(root + '/' + it.key(), it.value());
    }
    return true;
}

} // namespace

bool FileManager::compressFileAtPath(const QString &source, const QString &target, bool keepParent)
{
    QByteArray native;
    struct stat st;
    if (!detail::nativePath(source, &native) || ::stat(native.constData(), &st) != 0)
        return false;
    while (native.size() > 1 && native.endsWith('/'))
        native.chop(1);
    const QByteArray name = native.mid(native.lastIndexOf('/') + 1);
    return writeZip(target, [&](ZipWriter &zip) {
        ZipWalk walk { zip, true, {} };
        if (S_ISDIR(st.st_mode) && !keepParent)
            return walk.addContents(
                native, QByteArray(), FileIdentity { quint64(st.st_dev), quint64(st.st_ino) }, 0);
        return walk.add(native, name, 0);
    });
}

bool FileManager::compressFiles(
    const QStringList &names, const QString &folder, const QString &target, bool append)
{
    QByteArray nativeFolder, nativeTarget;
    struct stat st;
    if (names.isEmpty() || !detail::nativePath(folder, &nativeFolder)
        || !detail::nativePath(target, &nativeTarget) || ::stat(nativeFolder.constData(), &st) != 0
        || !S_ISDIR(st.st_mode))
        return false;
    QSet<QByteArray> entries;
    std::vector<QByteArray> relative;
    for (const QString &n : names) {
        QByteArray nativeName;
        if (!detail::nativePath(n, &nativeName))
            return false;
        const QByteArray plain = safeRelativePath(nativeName);
        if (plain.isEmpty())
            return false;
        relative.push_back(plain);
        entries.insert(plain);
    }
    // A relative target is taken from the folder, as the tool run there would take it.
    if (!nativeTarget.startsWith('/'))
        nativeTarget = nativeFolder + '/' + nativeTarget;
    const bool existing = append && ::access(nativeTarget.constData(), F_OK) == 0;
    return writeZip(QFile::decodeName(nativeTarget), [&](ZipWriter &zip) {
        if (existing) {
            // Entries below a named folder are replaced by what the walk finds on the disk now;
            // those whose files are gone stay, as the tool keeps them.
            ReadArchive reader = openZip(nativeTarget);
            if (!reader)
                return false;
            QSet<QByteArray> replaced = entries;
            archive_entry *e = nullptr;
            while (archive_read_next_header(reader.get(), &e) == ARCHIVE_OK) {
                QByteArray p = entryPath(e);
                if (p.endsWith('/'))
                    p.chop(1);
                for (const QByteArray &r : relative) {
                    if (p.startsWith(r + '/') && ::access((nativeFolder + '/' + p).constData(), F_OK) == 0)
                        replaced.insert(p);
                }
            }
            reader.reset();
            if (!copyEntries(nativeTarget, zip, replaced))
                return false;
        }
        ZipWalk walk { zip, false, {} };
        for (const QByteArray &r : relative) {
            if (!walk.add(nativeFolder + '/' + r, r, 0))
                return false;
        }
        return true;
    });
}

bool FileManager::decompressFileAtPath(const QString &source, const QString &targetFolder)
{
    QByteArray native, folder;
    struct stat st;
    if (!detail::nativePath(source, &native) || !detail::nativePath(targetFolder, &folder)
        || ::stat(native.constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return false;
    const qint64 declared = checkArchive(native);
    const qint64 limit = qMin(MaximumExpandedSize, qMax(RatioAllowance, qint64(st.st_size) * MaximumRatio));
    if (declared < 0 || declared > limit)
        return false;
    if (!createPath(targetFolder))
        return false;
    // The staging folder's own path is free of links, so that the check against writing through
    // one looks at the archive's entries alone.
    char *real = ::realpath(folder.constData(), nullptr);
    if (!real)
        return false;
    folder = QByteArray(real);
    ::free(real);
    const QByteArray staging = detail::makeStagingFolder(folder, "unzip");
    if (staging.isEmpty())
        return false;
    const bool ok = extractArchive(native, staging, limit) && mergeInto(staging, folder);
    detail::removeTree(staging);
    return ok;
}

} // namespace orvel
