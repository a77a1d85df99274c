// A bundle: an identifier and the folders its resources are looked up in.
#pragma once

#include <QString>
#include <QStringList>

namespace orvel {

/// An identifier and a folder of resources (a directory path or a Qt resource prefix such as
/// ":/orvel"). A bundle is a plain value; looking up a resource reads the folder each time.
class Bundle
{
public:
    Bundle(const QString &identifier, const QString &resourcePath);

    /// The application's bundle: identifier "org.orvel.thumbnails"; resources in ":/orvel" (compiled
    /// in), then in the installed data folder "orvel-thumbs" (under the XDG data folders, or
    /// share/orvel-thumbs beside the executable's folder).
    static const Bundle &mainBundle();

    QString bundleIdentifier() const;
    /// The first resource folder that exists (the given one when none does).
    QString resourcePath() const;

    /// The path of the image resource called name (with or without an extension; without one, tries png, svg, jpg, jpeg, gif, tiff, tif, bmp, webp in that order); empty when there is none.
    /// A name with an extension that is not found as it is is also tried with those extensions
    /// added ("icon.small" -> "icon.small.png"). Each extension is tried in lower, then upper case.
    QString pathForImageResource(const QString &name) const;

    /// The image file extensions tried by pathForImageResource(), in order.
    static const QStringList &imageResourceExtensions();

private:
    Bundle(const QString &identifier, const QStringList &resourcePaths);

    QString m_identifier;
    QStringList m_resourcePaths;
};

} // namespace orvel
