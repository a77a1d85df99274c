// Standard folders from the environment, QStandardPaths for the user folders of user-dirs.dirs.
#include "files/StandardDirectories.h"

#include <QDir>
#include <QStandardPaths>

namespace orvel {

namespace {

using namespace Qt::StringLiterals;

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

/// folder + "/" + name, without doubling the "/".
QString joined(const QString &folder, QStringView name)
{
    while (name.startsWith(u'/'))
        name = name.sliced(1);
    if (name.isEmpty())
        return folder;
    QString out = folder;
    if (!out.endsWith(u'/'))
        out += u'/';
    return out.append(name);
}

/// An XDG base folder: the variable when it holds an absolute path, else the folder in the home.
QString xdgBase(const char *variable, QStringView inHome)
{
    const QString value = qEnvironmentVariable(variable);
    if (value.startsWith(u'/'))
        return withoutTrailingSlash(value);
    return joined(homeDirectory(), inHome);
}

/// A user folder of user-dirs.dirs, or the folder of that name in the home.
QString userFolder(QStandardPaths::StandardLocation location, QStringView inHome)
{
    const QString found = QStandardPaths::writableLocation(location);
    if (found.startsWith(u'/'))
        return withoutTrailingSlash(found);
    return joined(homeDirectory(), inHome);
}

/// What marks the application's own folder of a Flatpak sandbox in a path.
QString sandboxMarker()
{
    const QString id = qEnvironmentVariable("FLATPAK_ID");
    return id.isEmpty() ? u"/.var/app/"_s : u"/.var/app/"_s + id;
}

} // namespace

QString temporaryDirectory() { return u"/tmp"_s; }

QString homeDirectory() { return QDir::homePath(); }

QString pathInHomeDirectory(QStringView name) { return joined(homeDirectory(), name); }

QString desktopDirectory()
{
    static const QString folder = userFolder(QStandardPaths::DesktopLocation, u"Desktop");
    return folder;
}

QString downloadsDirectory()
{
    static const QString folder = userFolder(QStandardPaths::DownloadLocation, u"Downloads");
    return folder;
}

QString libraryDirectory()
{
    static const QString folder = xdgBase("XDG_DATA_HOME", u".local/share");
    return folder;
}

QString pathInLibraryDirectory(QStringView name) { return joined(libraryDirectory(), name); }

QString preferencesDirectory()
{
    static const QString folder = xdgBase("XDG_CONFIG_HOME", u".config");
    return folder;
}

QString pathInPreferencesDirectory(QStringView name) { return joined(preferencesDirectory(), name); }

QString cachesDirectory()
{
    static const QString folder = xdgBase("XDG_CACHE_HOME", u".cache");
    return folder;
}

QString pathInCachesDirectory(QStringView name) { return joined(cachesDirectory(), name); }

QString applicationSupportDirectory()
{
    static const QString folder = xdgBase("XDG_DATA_HOME", u".local/share");
    return folder;
}

QString pathInApplicationSupportDirectory(QStringView name)
{
    return joined(applicationSupportDirectory(), name);
}

QString userHomeDirectory()
{
    static const QString folder = [] {
        const QString home = homeDirectory();
        const qsizetype at = home.indexOf(sandboxMarker());
        return at > 0 ? home.left(at) : home;
    }();
    return folder;
}

QString pathInUserHome(QStringView name) { return joined(userHomeDirectory(), name); }

QString pathInUserLibrary(QStringView name)
{
    static const QString folder = [] {
        const QString host = qEnvironmentVariable("HOST_XDG_DATA_HOME");
        if (host.startsWith(u'/'))
            return withoutTrailingSlash(host);
        const QString library = libraryDirectory();
        if (library.contains(sandboxMarker()))
            return joined(userHomeDirectory(), u".local/share");
        return library;
    }();
    return joined(folder, name);
}

} // namespace orvel
