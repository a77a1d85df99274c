// ThumbnailSettings: the settings the thumbnail job reads, and where its thumbnail goes.
#pragma once

#include <QString>

namespace orvel {

class UserDefaults;

/// The thumbnail job's settings as one reading of the store gives them, each key with the default
/// that stands when it is missing. Kept apart from the job so that the batch runner can name the
/// outputs without loading the decoders.
struct ThumbnailSettings
{
    qint64 filetype = 3;
    qint64 width = 128;
    qint64 height = 128;
    qint64 interpolation = 3;
    qint64 create = 0;
    qint64 sharpen = 0;
    QString extension;
    qint64 extensionFormat = 1;

    static ThumbnailSettings read(const UserDefaults &defaults);

    /// The extension of the output format; null for an unknown format code.
    QString fileExtension() const;
    /// The thumbnail's path for the source at path by the naming rule (1 suffix, 0 prefix,
    /// anything else a sub-folder), whatever the create mode.
    QString outputPathFor(const QString &path) const;
    /// outputPathFor(path) when the job writes a thumbnail file (create mode 0 or 1 and a known
    /// format); empty otherwise.
    QString thumbnailPathFor(const QString &path) const;
};

} // namespace orvel
