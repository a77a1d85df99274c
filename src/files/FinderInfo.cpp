// Reading and writing the code fields of the Finder info extended attribute.
#include "files/FinderInfo.h"

#include "files/NativePath_p.h"

#include <QByteArray>

#include <optional>
#include <sys/xattr.h>

namespace orvel {

namespace {

constexpr qsizetype FinderInfoSize = 32;
constexpr qsizetype TypeOffset = 0;
constexpr qsizetype CreatorOffset = 4;

/// The attribute's bytes, padded with zeros to 32; a file without the attribute gives 32 zeros,
/// an unreadable file nullopt.
std::optional<QByteArray> readFinderInfo(const QString &path)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return std::nullopt;
    QByteArray info(FinderInfoSize, '\0');
    for (int attempt = 0; attempt < 4; ++attempt) {
        const ssize_t n
            = getxattr(native.constData(), FinderInfoAttributeName, info.data(), size_t(info.size()));
        if (n >= 0) {
            info.truncate(n);
            if (info.size() < FinderInfoSize)
                info.append(FinderInfoSize - info.size(), '\0');
            return info;
        }
        if (errno == ENODATA)
            return QByteArray(FinderInfoSize, '\0');
        if (errno != ERANGE)
            return std::nullopt;
        // Longer than it should be: keep all of it so that writing back loses nothing.
        const ssize_t size = getxattr(native.constData(), FinderInfoAttributeName, nullptr, 0);
        if (size < 0)
            return std::nullopt;
        info.resize(qMax<qsizetype>(size, FinderInfoSize));
    }
    return std::nullopt;
}

FileTypeCode codeAt(const QByteArray &info, qsizetype offset)
{
    const auto *b = reinterpret_cast<const uchar *>(info.constData() + offset);
    return (FileTypeCode(b[0]) << 24) | (FileTypeCode(b[1]) << 16) | (FileTypeCode(b[2]) << 8)
        | FileTypeCode(b[3]);
}

bool setCodeAt(const QString &path, qsizetype offset, FileTypeCode code)
{
    std::optional<QByteArray> info = readFinderInfo(path);
    if (!info)
        return false;
    for (int i = 0; i < 4; ++i)
        (*info)[offset + i] = char((code >> (24 - 8 * i)) & 0xff);
    const QByteArray native = QFile::encodeName(path);
    return setxattr(native.constData(), FinderInfoAttributeName, info->constData(), size_t(info->size()), 0)
        == 0;
}

} // namespace

QString fileTypeCodeToString(FileTypeCode code)
{
    if (code == 0)
        return QString();
    QString s(6, u'\'');
    for (int i = 0; i < 4; ++i)
        s[1 + i] = QChar(char16_t((code >> (24 - 8 * i)) & 0xff));
    return s;
}

FileTypeCode fileTypeCodeFromString(QStringView s)
{
    if (s.size() == 6 && s.front() == u'\'' && s.back() == u'\'')
        s = s.mid(1, 4);
    if (s.size() != 4)
        return 0;
    FileTypeCode code = 0;
    for (QChar c : s) {
        if (c.unicode() > 0xff)
            return 0;
        code = (code << 8) | c.unicode();
    }
    return code;
}

QString HFSTypeOfFile(const QString &path) { return fileTypeCodeToString(HFSTypeCodeOfFile(path)); }

FileTypeCode HFSTypeCodeOfFile(const QString &path)
{
    const std::optional<QByteArray> info = readFinderInfo(path);
    return info ? codeAt(*info, TypeOffset) : 0;
}

FileTypeCode HFSCreatorCodeOfFile(const QString &path)
{
    const std::optional<QByteArray> info = readFinderInfo(path);
    return info ? codeAt(*info, CreatorOffset) : 0;
}

bool setHFSTypeCodeOfFile(const QString &path, FileTypeCode type)
{
    return setCodeAt(path, TypeOffset, type);
}

bool setHFSCreatorCodeOfFile(const QString &path, FileTypeCode creator)
{
    return setCodeAt(path, CreatorOffset, creator);
}

} // namespace orvel
