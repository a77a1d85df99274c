// Temporary files and folders that take a target's place by a rename, and the copies made into them.
#include "files/Staging_p.h"

#include <QRandomGenerator>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace orvel::detail {

namespace {

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    if (slash == 0)
        return QByteArrayLiteral("/");
    return path.left(slash);
}

QByteArray nameOf(const QByteArray &path) { return path.mid(path.lastIndexOf('/') + 1); }

mode_t currentUmask()
{
    // umask can only be read by setting it; the value is put back at once.
    const mode_t mask = ::umask(022);
    ::umask(mask);
    return mask;
}

bool writeAll(int fd, const char *data, size_t size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= size_t(n);
    }
    return true;
}

/// Copies the user's extended attributes (forks, Finder info, comments) from one descriptor to
/// another; attributes the target refuses are let go, as a plain copy would.
void copyAttributes(int from, int to)
{
    char names[4096];
    const ssize_t length = ::flistxattr(from, names, sizeof names);
    if (length <= 0)
        return;
    QByteArray value;
    for (ssize_t i = 0; i < length;) {
        const char *name = names + i;
        i += ssize_t(strnlen(name, size_t(length - i))) + 1;
        if (strncmp(name, "user.", 5) != 0)
            continue;
        const ssize_t size = ::fgetxattr(from, name, nullptr, 0);
        if (size < 0 || size > 64 * 1024 * 1024)
            continue;
        value.resize(qsizetype(size));
        const ssize_t got = ::fgetxattr(from, name, value.data(), size_t(size));
        if (got >= 0)
            (void)::fsetxattr(to, name, value.constData(), size_t(got), 0);
    }
}

struct DirCloser
{
    void operator()(DIR *d) const noexcept { closedir(d); }
};

} // namespace

StagedFile::StagedFile(const QByteArray &target)
    : m_target(target)
{
    const QByteArray folder = folderOf(target);
    for (int attempt = 0; attempt < 16 && m_fd < 0; ++attempt) {
        m_path = folder + "/." + nameOf(target) + '.'
            + QByteArray::number(QRandomGenerator::global()->generate(), 36);
        m_fd = ::open(m_path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (m_fd < 0 && errno != EEXIST)
            break;
    }
    if (m_fd < 0)
        m_path.clear();
}

StagedFile::~StagedFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
    if (!m_path.isEmpty())
        ::unlink(m_path.constData());
}

bool StagedFile::commit()
{
    if (m_fd < 0)
        return false;
    const bool synced = ::fsync(m_fd) == 0;
    const bool closed = ::close(m_fd) == 0;
    m_fd = -1;
    if (!synced || !closed || ::rename(m_path.constData(), m_target.constData()) != 0)
        return false;
    m_path.clear();
    return true;
}

QByteArray makeStagingFolder(const QByteArray &folder, const char *name)
{
    QByteArray pattern = folder + "/." + name + ".XXXXXX";
    if (!::mkdtemp(pattern.data()))
        return QByteArray();
    return pattern;
}

bool removeTree(const QByteArray &path)
{
    struct stat st;
    if (::lstat(path.constData(), &st) != 0)
        return errno == ENOENT;
    if (!S_ISDIR(st.st_mode))
        return ::unlink(path.constData()) == 0 || errno == ENOENT;
    // Folders left without write or search permission by an archive must still be emptied.
    if ((st.st_mode & 0700) != 0700)
        (void)::chmod(path.constData(), st.st_mode | 0700);
    bool ok = true;
    if (std::unique_ptr<DIR, DirCloser> dir { ::opendir(path.constData()) }) {
        while (const dirent *e = ::readdir(dir.get())) {
            if (strcmp(e->d_name, ".") == 0 || strcmp(e->d_name, "..") == 0)
                continue;
            ok = removeTree(path + '/' + e->d_name) && ok;
        }
    }
    return ::rmdir(path.constData()) == 0 && ok;
}

bool copyFileContents(const QByteArray &source, const QByteArray &target)
{
    const int in = ::open(source.constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (in < 0)
        return false;
    struct stat st;
    if (::fstat(in, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(in);
        return false;
    }
    const int out = ::open(target.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
        st.st_mode & 0777 & ~currentUmask());
    if (out < 0) {
        ::close(in);
        return false;
    }
    bool ok = true;
    bool fallback = false;
    off_t done = 0;
    // copy_file_range lets the kernel (or the file system, by sharing extents) do the copy.
    while (done < st.st_size) {
        const ssize_t n = ::copy_file_range(in, nullptr, out, nullptr, size_t(st.st_size - done), 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP)
            && done == 0) {
            fallback = true;
            break;
        }
        if (n <= 0) {
            ok = false; // an error, or the file shrank while it was copied
            break;
        }
        done += n;
    }
    if (fallback) {
        std::unique_ptr<char[]> buffer(new char[1 << 20]);
        done = 0;
        for (;;) {
            const ssize_t n = ::read(in, buffer.get(), 1 << 20);
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0 || (n > 0 && !writeAll(out, buffer.get(), size_t(n)))) {
                ok = false;
                break;
            }
            if (n == 0)
                break;
            done += n;
        }
        ok = ok && done == st.st_size;
    }
    if (ok) {
        copyAttributes(in, out);
        const timespec times[2] = { st.st_atim, st.st_mtim };
        ok = ::futimens(out, times) == 0;
    }
    ok = ::close(out) == 0 && ok;
    ::close(in);
    if (!ok)
        ::unlink(target.constData());
    return ok;
}

bool copyTree(const QByteArray &source, const QByteArray &target)
{
    struct stat st;
    if (::lstat(source.constData(), &st) != 0)
        return false;
    if (S_ISLNK(st.st_mode)) {
        QByteArray link(4096, '\0');
        const ssize_t n = ::readlink(source.constData(), link.data(), size_t(link.size()));
        if (n < 0 || n >= link.size())
            return false;
        link.truncate(n);
        return ::symlink(link.constData(), target.constData()) == 0;
    }
    if (S_ISREG(st.st_mode))
        return copyFileContents(source, target);
    if (!S_ISDIR(st.st_mode))
        return false;
    if (::mkdir(target.constData(), 0700) != 0)
        return false;
    bool ok = true;
    if (std::unique_ptr<DIR, DirCloser> dir { ::opendir(source.constData()) }) {
        while (const dirent *e = ::readdir(dir.get())) {
            if (strcmp(e->d_name, ".") == 0 || strcmp(e->d_name, "..") == 0)
                continue;
            if (!copyTree(source + '/' + e->d_name, target + '/' + e->d_name)) {
                ok = false;
                break;
            }
        }
    } else {
        ok = false;
    }
    const int in = ::open(source.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const int out = ::open(target.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (in >= 0 && out >= 0) {
        copyAttributes(in, out);
        const timespec times[2] = { st.st_atim, st.st_mtim };
        (void)::futimens(out, times);
    }
    if (in >= 0)
        ::close(in);
    if (out >= 0)
        ::close(out);
    (void)::chmod(target.constData(), st.st_mode & 07777 & ~currentUmask());
    return ok;
}

} // namespace orvel::detail
