// Atomic file replacement: write a hidden temporary file beside the target, flush it, rename it over.
#include "files/AtomicFile.h"

#include "files/NativePath_p.h"
#include "support/Failure.h"

#include <QRandomGenerator>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvel {

namespace {

constexpr int MaxLinkDepth = 40;

QString reasonForErrno(int code) { return qt_error_string(code); }

/// Follows symbolic links at native until it names something that is not a link (or nothing).
/// Answers 0 or an errno value.
int followLinks(QByteArray *native)
{
    for (int depth = 0; depth <= MaxLinkDepth; ++depth) {
        struct stat st;
        if (lstat(native->constData(), &st) != 0)
            return errno == ENOENT ? 0 : errno;
        if (!S_ISLNK(st.st_mode))
            return 0;
        QByteArray target(PATH_MAX, '\0');
        const ssize_t n = readlink(native->constData(), target.data(), size_t(target.size()));
        if (n < 0)
            return errno;
        if (n >= target.size())
            return ENAMETOOLONG;
        target.truncate(n);
        if (!target.startsWith('/')) {
            const qsizetype slash = native->lastIndexOf('/');
            if (slash >= 0)
                target.prepend(native->left(slash + 1));
        }
        *native = target;
    }
    return ELOOP;
}

bool writeAll(int fd, const char *data, qsizetype size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size_t(qMin<qsizetype>(size, 1 << 30)));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= n;
    }
    return true;
}

bool writeReplacing(const QString &path, const QByteArray &data, bool flush, QString *error)
{
    auto fail = [error](const QString &reason) { return failure(error, reason); };

    QByteArray target;
    if (!detail::nativePath(path, &target))
        return fail(reasonForErrno(path.isEmpty() ? ENOENT : EINVAL));
    if (const int e = followLinks(&target))
        return fail(reasonForErrno(e));

    struct stat existing;
    const bool exists = stat(target.constData(), &existing) == 0;
    if (exists && S_ISDIR(existing.st_mode))
        return fail(reasonForErrno(EISDIR));
    if (exists && !S_ISREG(existing.st_mode))
        return fail(QStringLiteral("Not a plain file"));

    const qsizetype slash = target.lastIndexOf('/');
    const QByteArray folder = slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : target.left(slash);
    QByteArray base = slash < 0 ? target : target.mid(slash + 1);
    base.truncate(200); // Room for the prefix and suffix within a 255-byte name.

    // A hidden name beside the target, on the same file system, so that the rename is atomic.
    QByteArray temporary;
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        const QByteArray suffix = QByteArray::number(QRandomGenerator::global()->generate64(), 36);
        temporary = folder + "/." + base + '.' + suffix + ".tmp";
        // The mode is 0666 less the umask, as for any new file.
        fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST)
            return fail(reasonForErrno(errno));
    }
    if (fd < 0)
        return fail(reasonForErrno(EEXIST));

    int failure = 0;
    if (exists) {
        // Ownership first: changing it may clear set-id bits that the mode then restores. Only a
        // privileged writer can give the file back to another user; anyone else keeps their own.
        if (existing.st_uid != geteuid() || existing.st_gid != getegid()) {
            if (fchown(fd, existing.st_uid, existing.st_gid) != 0)
                (void)!fchown(fd, uid_t(-1), existing.st_gid);
        }
        if (fchmod(fd, existing.st_mode & 07777) != 0)
            failure = errno;
    }
    if (!failure && !writeAll(fd, data.constData(), data.size()))
        failure = errno;
    if (!failure && flush && fsync(fd) != 0)
        failure = errno;
    if (::close(fd) != 0 && !failure)
        failure = errno;
    if (!failure && ::rename(temporary.constData(), target.constData()) != 0)
        failure = errno;
    if (failure) {
        ::unlink(temporary.constData());
        return fail(reasonForErrno(failure));
    }

    // Make the rename itself durable; a failure here no longer endangers either version.
    const int dirFd = flush ? ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    if (dirFd >= 0) {
        fsync(dirFd);
        ::close(dirFd);
    }
    return true;
}

} // namespace

bool writeFileAtomically(const QString &path, const QByteArray &data, QString *error)
{
    return writeReplacing(path, data, true, error);
}

bool writeFileAtomicallyUnflushed(const QString &path, const QByteArray &data, QString *error)
{
    return writeReplacing(path, data, false, error);
}

} // namespace orvel
