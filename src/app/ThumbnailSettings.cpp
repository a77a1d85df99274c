// ThumbnailSettings: the settings the thumbnail job reads, and where its thumbnail goes.
#include "app/ThumbnailSettings.h"

#include "image/BitmapFileType.h"
#include "support/UserDefaults.h"

namespace orvel {

namespace {

// The last path component less its extension. A name whose only dot leads it (".hidden") has none.
QString deletingPathExtension(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    const qsizetype dot = path.lastIndexOf(u'.');
    if (dot > slash + 1)
        return path.left(dot);
    return path;
}

QString folderOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    if (slash < 0)
        return QString();
    return slash == 0 ? QStringLiteral("/") : path.left(slash);
}

QString lastComponent(const QString &path) { return path.mid(path.lastIndexOf(u'/') + 1); }

QString appendingComponent(const QString &folder, const QString &name)
{
    if (folder.isEmpty())
        return name;
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

} // namespace

ThumbnailSettings ThumbnailSettings::read(const UserDefaults &d)
{
    ThumbnailSettings s;
    s.filetype = d.integerForKey(QStringLiteral("filetype"), 3);
    s.width = d.integerForKey(QStringLiteral("width"), 128);
    s.height = d.integerForKey(QStringLiteral("height"), 128);
    s.interpolation = d.integerForKey(QStringLiteral("Antialiasing"), 3);
    s.create = d.integerForKey(QStringLiteral("create"), 0);
    s.sharpen = d.integerForKey(QStringLiteral("sharpen"), 0);
    s.extension = d.stringForKey(QStringLiteral("extension"), QStringLiteral("_thumb"));
    s.extensionFormat = d.integerForKey(QStringLiteral("extensionFormat"), 1);
    return s;
}

QString ThumbnailSettings::fileExtension() const { return bitmapFileTypeExtension(int(filetype)); }

QString ThumbnailSettings::outputPathFor(const QString &path) const
{
    const QString suffix = u'.' + fileExtension();
    if (int(extensionFormat) == 1)
        return deletingPathExtension(path) + extension + suffix;
    if (int(extensionFormat) == 0)
        return folderOf(path) + u'/' + extension + deletingPathExtension(lastComponent(path)) + suffix;
    return appendingComponent(
        appendingComponent(folderOf(path), extension), deletingPathExtension(lastComponent(path)) + suffix);
}

QString ThumbnailSettings::thumbnailPathFor(const QString &path) const
{
    if (fileExtension().isNull() || (int(create) != 0 && int(create) != 1))
        return QString();
    return outputPathFor(path);
}

} // namespace orvel
