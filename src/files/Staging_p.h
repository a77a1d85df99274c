// Not API: temporary files and folders beside a target, renamed into its place once complete.
#pragma once

#include <QByteArray>

namespace orvel::detail {

/// A hidden temporary file in the folder of target (native path), open for writing with the
/// permissions a new file gets; removed at destruction unless commit() renamed it over target.
class StagedFile
{
public:
    explicit StagedFile(const QByteArray &target);
    ~StagedFile();
    StagedFile(const StagedFile &) = delete;
    StagedFile &operator=(const StagedFile &) = delete;

    /// The descriptor to write to; -1 when the file could not be made.
    [[nodiscard]] int fd() const { return m_fd; }
    [[nodiscard]] const QByteArray &path() const { return m_path; }
    /// Flushes the file to the disk, closes it and renames it over the target.
    bool commit();

private:
    QByteArray m_target;
    QByteArray m_path;
    int m_fd = -1;
};

/// A new hidden folder "NAME.XXXXXX" in folder (native path); an empty array on failure.
QByteArray makeStagingFolder(const QByteArray &folder, const char *name);

/// Removes a file, a link or a whole folder (links inside are removed, not followed).
bool removeTree(const QByteArray &path);

/// Copies the file at source (a regular file, read through links) to target, with its permissions
/// and modification time; false on any short read or write.
bool copyFileContents(const QByteArray &source, const QByteArray &target);

/// Copies a file, a link (as a link) or a folder with everything in it to target, which must not
/// exist. Forks and Finder info in extended attributes go along.
bool copyTree(const QByteArray &source, const QByteArray &target);

} // namespace orvel::detail
