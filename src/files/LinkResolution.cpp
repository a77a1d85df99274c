// Link resolution by paths: the canonical existing prefix from realpath(3), the rest standardised.
#include "files/LinkResolution.h"

#include "files/NativePath_p.h"
#include "files/PathExtensions.h"
#include "support/Log.h"

#include <QDir>
#include <QList>
#include <QStringView>

#include <cstdlib>
#include <sys/stat.h>

namespace orvel {

namespace {

/// Removes "", "." and ".." components lexically; ".." above the root stays at the root, ".."
/// leading a relative path is kept.
QString standardise(QStringView path)
{
    const bool absolute = path.startsWith(u'/');
    QList<QStringView> kept;
    for (QStringView component : path.split(u'/')) {
        if (component.isEmpty() || component == u".")
            continue;
        if (component == u"..") {
            if (!kept.isEmpty() && kept.constLast() != u"..")
                kept.removeLast();
            else if (!absolute)
                kept.append(component);
            continue;
        }
        kept.append(component);
    }
    QString out;
    if (absolute)
        out = QStringLiteral("/");
    for (qsizetype i = 0; i < kept.size(); ++i) {
        if (i > 0)
            out += u'/';
        out += kept.at(i);
    }
    if (out.isEmpty() && !path.isEmpty())
        out = QStringLiteral(".");
    return out;
}

QString expandTilde(const QString &path)
{
    if (path == u"~")
        return QDir::homePath();
    if (path.startsWith(u"~/"))
        return QDir::homePath() + path.mid(1);
    return path;
}

/// realpath(3) of native, or a null string when some component does not resolve.
QString canonical(const QByteArray &native)
{
    char *resolved = realpath(native.constData(), nullptr);
    if (!resolved)
        return QString();
    QString out = QFile::decodeName(resolved);
    free(resolved);
    return out;
}

} // namespace

bool getAliasFSRef(const QString &path, bool *isFolder)
{
    if (isFolder)
        *isFolder = false;
    if (path.isEmpty())
        return false;
    QByteArray native;
    if (!detail::nativePath(path, &native)) {
        logMessage(QStringLiteral("getFileSystemRepresentation '%1':\n%2\n%3")
                       .arg(path, QStringLiteral("InvalidArgument"),
                           QStringLiteral("the path holds a NUL character")));
        return false;
    }
    struct stat st;
    if (stat(native.constData(), &st) != 0)
        return false;
    if (isFolder)
        *isFolder = S_ISDIR(st.st_mode);
    return true;
}

QString stringByResolvingSymlinksInPath(const QString &path)
{
    if (path.isEmpty())
        return path;
    const QString expanded = expandTilde(path);
    QByteArray native;
    if (!detail::nativePath(expanded, &native))
        return standardise(expanded);

    // Ends of the components of the path, so that the prefixes can be tried longest first.
    QList<qsizetype> ends;
    for (qsizetype i = 0; i < expanded.size(); ++i) {
        if (expanded.at(i) != u'/' && (i + 1 == expanded.size() || expanded.at(i + 1) == u'/'))
            ends.append(i + 1);
    }
    for (qsizetype k = ends.size() - 1; k >= 0; --k) {
        const QString prefix = expanded.left(ends.at(k));
        const QString resolved = canonical(QFile::encodeName(prefix));
        if (resolved.isNull())
            continue;
        if (k == ends.size() - 1)
            return resolved;
        const QString joined = standardise(QString(resolved + u'/' + expanded.mid(ends.at(k))));
        // A ".." after a missing folder can lead back into existing ones ("/a/missing/../b").
        const QString again = canonical(QFile::encodeName(joined));
        return again.isNull() ? joined : again;
    }
    // Nothing resolves: for an absolute path the root does, for a relative one the current folder.
    if (expanded.startsWith(u'/'))
        return standardise(expanded);
    const QString here = canonical(QByteArrayLiteral("."));
    return standardise(here.isNull() ? expanded : here + u'/' + expanded);
}

QString stringByResolvingLinkOfPath(const QString &path)
{
    if (path.isEmpty())
        return QString();
    // Only a file that is not a folder could be an alias; Linux has no alias files, so the check
    // serves to log a path that has no file-system form, and symbolic links are resolved for all.
    bool isFolder = false;
    getAliasFSRef(path, &isFolder);
    const QString resolved = stringByResolvingSymlinksInPath(path);
    return resolved.isNull() ? path : resolved;
}

QString stringByResolvingLinksInPath(const QString &path)
{
    QString partial = path.isNull() ? QString() : QStringLiteral("");
    for (const QString &component : standardizedPathComponents(stringByResolvingSymlinksInPath(path))) {
        if (partial.isEmpty() || partial.endsWith(u'/'))
            partial += component;
        else
            partial += u'/' + component;
        if (partial == u"/")
            continue;
        // Linux has no alias files; what leads elsewhere is a symbolic link. The whole path was
        // resolved above, so a prefix is still one only when the tree changed meanwhile or the link
        // could not be resolved (a loop, which resolves to itself).
        QByteArray native;
        struct stat st;
        if (detail::nativePath(partial, &native) && lstat(native.constData(), &st) == 0
            && S_ISLNK(st.st_mode))
            partial = stringByResolvingSymlinksInPath(partial);
    }
    return partial;
}

} // namespace orvel
