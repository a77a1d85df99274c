// Reading and writing the fields of the Finder info, in its attribute or the AppleDouble companion.
#include "files/FinderInfo.h"

#include "files/AppleDouble.h"
#include "files/ExtendedAttributes_p.h"
#include "files/NativePath_p.h"

#include <QByteArray>

#include <QtEndian>

#include <optional>

namespace orvel {

namespace {

constexpr qsizetype FinderInfoSize = 32;
constexpr qsizetype TypeOffset = 0;
constexpr qsizetype CreatorOffset = 4;
constexpr qsizetype FlagsOffset = 8;

/// The Finder info's bytes, padded with zeros to 32: the attribute's when the file has it, else the
/// AppleDouble companion's, else zeros; nullopt for an unreadable file. A longer attribute is kept
/// whole, so that writing it back loses nothing.
std::optional<QByteArray> readFinderInfo(const QString &path)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return std::nullopt;
    std::optional<QByteArray> info
        = detail::readExtendedAttribute(native, FinderInfoAttributeName, 64 * 1024);
    if (!info)
        return std::nullopt;
    if (info->isEmpty()) {
        const std::optional<AppleDouble> ad = AppleDouble::readForFile(path);
        if (ad)
            *info = ad->finderInfo();
    }
    if (info->size() < FinderInfoSize)
        *info = info->leftJustified(FinderInfoSize, '\0');
    return info;
}

/// Writes the Finder info to the attribute, or to the AppleDouble companion when the file system
/// refuses the attribute.
bool writeFinderInfo(const QString &path, const QByteArray &info)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return false;
    switch (detail::writeExtendedAttribute(native, FinderInfoAttributeName, info)) {
    case detail::AttributeWrite::Written:
        return true;
    case detail::AttributeWrite::NoFile:
        return false;
    case detail::AttributeWrite::Refused:
        break;
    }
    std::optional<AppleDouble> ad = AppleDouble::readForFile(path);
    if (!ad)
        return false;
    ad->setFinderInfo(info);
    return AppleDouble::writeForFile(path, *ad);
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
    qToBigEndian(code, info->data() + offset);
    return writeFinderInfo(path, *info);
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

std::optional<QByteArray> finderInfoOfFile(const QString &path)
{
    std::optional<QByteArray> info = readFinderInfo(path);
    if (info)
        info->truncate(FinderInfoSize);
    return info;
}

bool setFinderInfoOfFile(const QString &path, const QByteArray &info)
{
    std::optional<QByteArray> current = readFinderInfo(path);
    if (!current)
        return false;
    current->replace(0, FinderInfoSize, info.left(FinderInfoSize).leftJustified(FinderInfoSize, '\0'));
    return writeFinderInfo(path, *current);
}

quint16 finderFlagsOfFile(const QString &path)
{
    const std::optional<QByteArray> info = readFinderInfo(path);
    return info ? qFromBigEndian<quint16>(info->constData() + FlagsOffset) : 0;
}

bool setFinderFlagsOfFile(const QString &path, quint16 flags)
{
    std::optional<QByteArray> info = readFinderInfo(path);
    if (!info)
        return false;
    qToBigEndian(flags, info->data() + FlagsOffset);
    return writeFinderInfo(path, *info);
}

bool hasCustomIconOfFile(const QString &path)
{
    return (finderFlagsOfFile(path) & FinderFlag::HasCustomIcon) != 0;
}

bool setHasCustomIconOfFile(const QString &path, bool flag)
{
    const std::optional<QByteArray> info = readFinderInfo(path);
    if (!info)
        return false;
    const quint16 flags = qFromBigEndian<quint16>(info->constData() + FlagsOffset);
    return setFinderFlagsOfFile(
        path, flag ? (flags | FinderFlag::HasCustomIcon) : (flags & ~quint16(FinderFlag::HasCustomIcon)));
}

} // namespace orvel
