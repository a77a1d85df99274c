// Writing data into a file in place, replacing or appending.
#include "files/FileManager.h"
#include "files/FileManager_p.h"

#include <fcntl.h>
#include <unistd.h>

namespace orvel {

bool FileManager::writeData(const QByteArray &data, const QString &path, bool append)
{
    QByteArray native;
    if (data.isNull() || !detail::nativePath(path, &native) || !createFile(path))
        return false;
    const int fd = open(native.constData(), O_WRONLY | O_CLOEXEC | O_NOCTTY | (append ? O_APPEND : O_TRUNC));
    if (fd < 0)
        return false;
    // Errors while writing are not reported: callers treat this as a best-effort log or note.
    const char *p = data.constData();
    qsizetype left = data.size();
    while (left > 0) {
        const ssize_t n = write(fd, p, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        p += n;
        left -= n;
    }
    close(fd);
    return true;
}

bool FileManager::writeString(const QString &text, const QString &path, bool append)
{
    if (text.isEmpty())
        return false;
    return writeData(text.toLocal8Bit(), path, append);
}

} // namespace orvel
