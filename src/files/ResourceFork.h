// ResourceFork: the classic resource fork of a file, its resources added, read and removed by
// four-character type and 16-bit ID.
#pragma once

#include "files/FinderInfo.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orvel {

/// The resource fork of one file, in the classic resource-file format. Linux has no forks: the fork
/// lives in the extended attribute "user.com.apple.ResourceFork" when the file system takes it, and
/// otherwise (too large for an attribute, no user attributes) in the AppleDouble file "._NAME"
/// beside the file, where a Mac looks for it on foreign volumes. Reading looks at the attribute
/// first. Every change is written at once; a fork that cannot be parsed is never opened, so it is
/// never overwritten either.
class ResourceFork
{
public:
    /// The extended attribute that holds a fork.
    static constexpr char AttributeName[] = "user.com.apple.ResourceFork";
    /// The largest fork read or written: resource data is addressed with 24-bit offsets.
    static constexpr qsizetype MaximumSize = 32 * 1024 * 1024;

    /// Where the fork is kept.
    enum class Storage { Memory, Attribute, AppleDouble };

    /// Opens the fork of the file at path for reading; null when the file has no fork, or one
    /// that is not a well-formed resource file.
    [[nodiscard]] static std::unique_ptr<ResourceFork> resourceForkForReadingAtPath(const QString &path);
    /// Opens the fork of the file at path for writing, creating the file (in an existing folder)
    /// and an empty fork when they are missing. Null when the name has 256 characters or more, the
    /// fork cannot be stored, or the file has a fork that is not well-formed.
    [[nodiscard]] static std::unique_ptr<ResourceFork> resourceForkForWritingAtPath(const QString &path);
    /// resourceForkForReadingAtPath() as a value.
    [[nodiscard]] static std::optional<ResourceFork> initForReadingAtPath(const QString &path);
    /// resourceForkForWritingAtPath() as a value.
    [[nodiscard]] static std::optional<ResourceFork> initForWritingAtPath(const QString &path);
    /// A fork held in memory alone, from the bytes of a resource file (a "__MACOSX" entry, say);
    /// nullopt when they are not well-formed. Changes stay in memory (see data()).
    [[nodiscard]] static std::optional<ResourceFork> fromData(const QByteArray &fork);
    /// An empty fork in memory.
    ResourceFork();

    /// Adds data as the resource type/ID, replacing one that is there. False for null data, a fork
    /// opened for reading, a fork that would grow past MaximumSize, or one that cannot be stored.
    bool addData(const QByteArray &data, FileTypeCode type, qint16 ID);
    /// Adds the string as a Pascal string: a length byte, then the text in ASCII, characters
    /// outside it as '?'. False for strings of more than 255 characters.
    bool addString(QStringView string, FileTypeCode type, qint16 ID);
    /// The data of resource type/ID; a null array when there is none.
    [[nodiscard]] QByteArray dataForType(FileTypeCode type, qint16 ID) const;
    /// Removes resource type/ID; true when it is gone (also when it never was there).
    bool removeType(FileTypeCode type, qint16 ID);

    /// The resources' types and IDs, in the order of the fork's map.
    [[nodiscard]] std::vector<std::pair<FileTypeCode, qint16>> resources() const;
    /// The fork's bytes in the resource-file format.
    [[nodiscard]] QByteArray data() const { return m_bytes; }
    [[nodiscard]] Storage storage() const { return m_storage; }
    [[nodiscard]] bool isWritable() const { return m_writable; }

private:
    struct Entry
    {
        FileTypeCode type;
        qint16 id;
        quint8 attributes;
        qsizetype name; ///< offset of the name's length byte in the fork, -1 for none
        qsizetype data; ///< offset of the data (after its length) in the fork
        qsizetype length;
    };
    static std::optional<std::vector<Entry>> parse(const QByteArray &bytes);
    static std::optional<ResourceFork> open(const QString &path, bool forWriting);
    bool rewrite(const std::vector<Entry> &keep, const Entry *added, const QByteArray &addedData);
    bool store(const QByteArray &bytes);

    QString m_path;
    QByteArray m_bytes;
    std::vector<Entry> m_entries;
    Storage m_storage = Storage::Memory;
    bool m_writable = true;
};

} // namespace orvel
