// Creating files and folders on demand.
#include "files/AtomicFile.h"
#include "files/FileManager.h"
#include "files/FileManager_p.h"
#include "files/PropertyList.h"

#include <QFile>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace orvel {

bool FileManager::createFile(const QString &path)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return false;
    if (fileExistsAtPath(path))
        return true;
    // O_EXCL: a file made by someone else between the test and here is left as it is.
    const int fd = open(native.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        return errno == EEXIST;
    close(fd);
    return true;
}

bool FileManager::createPathAndFile(const QString &path)
{
    return createPathToFile(path) && createFile(path);
}

bool FileManager::createPathAndWriteObject(const QVariant &object, const QString &path, bool atomically)
{
    QByteArray data;
    switch (object.typeId()) {
    case QMetaType::QVariantMap:
    case QMetaType::QVariantList:
        data = xmlPropertyListData(object);
        if (data.isEmpty())
            return false;
        break;
    case QMetaType::QByteArray:
        data = object.toByteArray();
        break;
    case QMetaType::QString:
        data = object.toString().toUtf8();
        break;
    default:
        return false;
    }
    if (!createPathToFile(path))
        return false;
    if (atomically)
        return writeFileAtomically(path, data);
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(data) == data.size()
        && file.flush();
}

bool FileManager::createPath(const QString &path, const QString &previousPath)
{
    QByteArray native;
    if (!detail::nativePath(path, &native) || fileKindAtPath(path, false))
        return false;
    QByteArray previous;
    bool isDirectory = false;
    if (detail::nativePath(previousPath, &previous) && fileExistsAtPath(previousPath, &isDirectory)
        && isDirectory) {
        return createPathToFile(path) && rename(previous.constData(), native.constData()) == 0;
    }
    return createPath(path);
}

bool FileManager::createWritableTemporaryPath(const QString &path)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return false;
    if (fileKindAtPath(path, false) && !removePath(path))
        return false;
    return createPath(path) && access(native.constData(), W_OK) == 0;
}

} // namespace orvel
