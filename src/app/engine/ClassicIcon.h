// ClassicIcon: a file's own icon as a Mac shows it, an icon family in the file's resource fork.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

namespace orvel {

/// The classic custom icon: an 'icns' resource with ID -16455 in the file's resource fork and the
/// custom-icon flag in its Finder info. On Linux both live in extended attributes or in the
/// AppleDouble companion "._NAME" (see ResourceFork), from where a zip archive, Samba or netatalk
/// carries them to a Mac. Linux file managers show the thumbnail cache instead (IconService).
class ClassicIcon
{
public:
    /// The resource ID a custom icon has.
    static constexpr qint16 ResourceID = -16455;

    /// The icon family ('icns', its length, then members of type, length and data) of a square
    /// image: PNG members of 16 and 32 pixels always, and of 64, 128, 256, 512 and 1024 pixels as
    /// far as the image's side reaches. Empty for a null image.
    [[nodiscard]] static QByteArray iconFamilyData(const QImage &square);

    /// Writes the icon family of the square image as the file's 'icns' -16455 resource and sets the
    /// custom-icon flag. On failure the flag is left as it was and error (when given) says why.
    static bool setIconForFile(const QImage &square, const QString &path, QString *error = nullptr);
};

} // namespace orvel
