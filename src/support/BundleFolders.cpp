// A bundle's temporary folder and log file, in the user's standard folders.
#include "support/BundleFolders.h"

#include "files/FileManager.h"
#include "files/StandardDirectories.h"

namespace orvel {

QString temporaryDirectory(const Bundle &bundle)
{
    const QString name = bundle.bundleName();
    if (name.isEmpty() || name.contains(u'/') || name == u"." || name == u"..")
        return QString();
    const QString path = pathInCachesDirectory(QStringLiteral("TemporaryItems/") + name);
    return FileManager::createPath(path) ? path : QString();
}

QString logFile(const Bundle &bundle)
{
    const QString identifier = bundle.bundleIdentifier();
    if (identifier.isEmpty() || identifier.contains(u'/'))
        return QString();
    return pathInLibraryDirectory(QStringLiteral("Logs/%1.log").arg(identifier));
}

} // namespace orvel
