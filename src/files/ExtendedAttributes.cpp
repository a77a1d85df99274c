// One extended attribute read, written or removed, with the errors sorted into what callers need.
#include "files/ExtendedAttributes_p.h"

#include <cerrno>
#include <sys/xattr.h>

namespace orvel::detail {

std::optional<QByteArray> readExtendedAttribute(const QByteArray &native, const char *name, qsizetype maxSize)
{
    // The size may change between asking and reading: try a few times.
    for (int attempt = 0; attempt < 4; ++attempt) {
        const ssize_t size = getxattr(native.constData(), name, nullptr, 0);
        if (size < 0) {
            if (errno == ENODATA || errno == ENOTSUP)
                return QByteArray();
            return std::nullopt;
        }
        if (size > maxSize)
            return std::nullopt;
        QByteArray value(qsizetype(size) + 1, '\0'); // one more: a value that grew meanwhile is read again
        const ssize_t n = getxattr(native.constData(), name, value.data(), size_t(value.size()));
        if (n >= 0 && n <= size) {
            value.truncate(n);
            return value;
        }
        if (n < 0 && errno == ENODATA)
            return QByteArray();
        if (n < 0 && errno != ERANGE)
            return std::nullopt;
    }
    return std::nullopt;
}

AttributeWrite writeExtendedAttribute(const QByteArray &native, const char *name, const QByteArray &value)
{
    if (setxattr(native.constData(), name, value.constData(), size_t(value.size()), 0) == 0)
        return AttributeWrite::Written;
    return errno == ENOENT || errno == ENOTDIR ? AttributeWrite::NoFile : AttributeWrite::Refused;
}

bool removeExtendedAttribute(const QByteArray &native, const char *name)
{
    return removexattr(native.constData(), name) == 0 || errno == ENODATA || errno == ENOTSUP;
}

} // namespace orvel::detail
