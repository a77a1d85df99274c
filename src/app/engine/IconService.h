// IconService: custom icons for files, kept as the file's entries in the freedesktop.org thumbnail cache.
#pragma once

#include <QImage>
#include <QString>

namespace orvel {

/// Gives files custom icons. Linux file managers show a file's entry in the shared thumbnail cache
/// ($XDG_CACHE_HOME/thumbnails) as its icon, so setting an icon means writing those entries.
class IconService
{
public:
    /// The cache sizes, each the longest side in pixels of the entries in its folder.
    enum class CacheSize { Normal = 128, Large = 256, XLarge = 512, XXLarge = 1024 };

    /// Gives the file at path the square image as its icon: writes the file's entries in the thumbnail
    /// cache ($XDG_CACHE_HOME/thumbnails, default ~/.cache/thumbnails) at the normal, large, x-large and
    /// xx-large sizes. options is kept for the caller's interface and ignored. Answers whether every
    /// entry was written; a null image or a missing file answers false and writes nothing.
    static bool setIconForFile(const QImage &image, const QString &path, int options = 0);

    /// The cache file of path at a size (md5 of the file URI, hex, ".png"); empty for an empty path.
    [[nodiscard]] static QString cachePathForFile(const QString &path, CacheSize size);

    /// The file URI used as the cache key (absolute, percent-encoded as the thumbnail standard requires);
    /// empty for an empty path.
    [[nodiscard]] static QString uriForFile(const QString &path);

    /// Removes every cached entry of path; answers whether none is left.
    static bool removeIconOfFile(const QString &path);
};

} // namespace orvel
