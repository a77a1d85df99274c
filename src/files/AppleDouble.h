// AppleDouble: a file's Finder info and resource fork kept in a companion file "._NAME" beside it,
// as Macs write them on FAT, SMB and NFS volumes and into the "__MACOSX" folder of zip archives.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>
#include <vector>

namespace orvel {

/// The contents of an AppleDouble file (version 2; version 1 is read too): numbered entries of
/// bytes. Entry 9 is the Finder info, whose first 32 bytes are the classic Finder info; a Mac
/// follows them with its extended-attribute block, which is kept as it is. Entry 2 is the resource
/// fork. Entries of other numbers are kept through a read and a write.
class AppleDouble
{
public:
    /// The entry numbers this toolkit uses.
    enum EntryId : quint32 { ResourceForkEntry = 2, FinderInfoEntry = 9 };
    static constexpr quint32 Magic = 0x00051607;
    static constexpr quint32 Version = 0x00020000;
    /// Size of the classic Finder info at the start of entry 9.
    static constexpr qsizetype FinderInfoSize = 32;
    /// The largest companion file read: a resource fork cannot address much more than 16 MiB.
    static constexpr qsizetype MaximumFileSize = 64 * 1024 * 1024;

    struct Entry
    {
        quint32 id = 0;
        QByteArray data;
    };

    /// Parses the bytes of an AppleDouble file; nullopt unless the magic and a known version lead
    /// and every entry lies within the bytes. A second entry with a number already seen is ignored.
    [[nodiscard]] static std::optional<AppleDouble> fromBytes(QByteArrayView bytes);

    /// The file's bytes: header, entry descriptors, then the entries' data, the Finder info first
    /// and the resource fork last (where a Mac puts them).
    [[nodiscard]] QByteArray toBytes() const;

    /// The data of entry id; a null array when there is no such entry.
    [[nodiscard]] QByteArray entry(quint32 id) const;
    /// Sets the data of entry id, adding the entry when it is missing.
    void setEntry(quint32 id, const QByteArray &data);
    void removeEntry(quint32 id);
    [[nodiscard]] const std::vector<Entry> &entries() const { return m_entries; }

    /// The 32 bytes of Finder info (padded with zeros when entry 9 is shorter); null when there is
    /// no entry 9.
    [[nodiscard]] QByteArray finderInfo() const;
    /// Replaces the first 32 bytes of entry 9, keeping whatever follows them.
    void setFinderInfo(const QByteArray &info);

    /// The resource fork; null when there is none or it is empty.
    [[nodiscard]] QByteArray resourceFork() const;
    /// Sets the resource fork; an empty fork removes the entry.
    void setResourceFork(const QByteArray &fork);

    /// True when the file would say nothing: no fork, Finder info all zeros and no other entry.
    [[nodiscard]] bool isEmpty() const;

    /// "._NAME" in the folder of path; empty when path has no last component ("", "/", "a/").
    [[nodiscard]] static QString pathForFile(const QString &path);

    /// The companion of the file at path: an empty AppleDouble when there is none; nullopt when
    /// one is there and cannot be read or parsed, is no plain file (a symbolic link, say: writing
    /// through it would change another file), or is larger than MaximumFileSize.
    [[nodiscard]] static std::optional<AppleDouble> readForFile(const QString &path);

    /// Writes the companion of path atomically, or removes it when ad is empty. error (when
    /// given) receives a one-line reason on failure.
    static bool writeForFile(const QString &path, const AppleDouble &ad, QString *error = nullptr);

private:
    QByteArray m_filler = QByteArray(16, '\0');
    quint32 m_version = Version;
    std::vector<Entry> m_entries;
};

} // namespace orvel
