// Zip archives unpacked into a scratch folder: whatever the bytes, nothing may be written outside
// it, and a refused archive leaves it empty.
#include "FuzzSupport.h"

#include "files/FileManager.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <ftw.h>

namespace {

/// The names in a folder, as bytes: entries need not be UTF-8, which QDir would not find again.
QList<QByteArray> namesIn(const QByteArray &folder)
{
    QList<QByteArray> names;
    if (DIR *d = opendir(folder.constData())) {
        while (const dirent *e = readdir(d)) {
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
                names << QByteArray(e->d_name);
        }
        closedir(d);
    }
    return names;
}

void removeAll(const QByteArray &path)
{
    nftw(
        path.constData(), [](const char *p, const struct stat *, int, FTW *) { return std::remove(p), 0; },
        16, FTW_DEPTH | FTW_PHYS);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString archive = orvel::fuzz::scratchFile(orvel::fuzz::bytesOf(data, size), "zip");
    const QByteArray folder = QFile::encodeName(QFileInfo(archive).absolutePath());
    const QByteArray into = folder + "/into";
    removeAll(into);
    const bool unpacked = orvel::FileManager::decompressFileAtPath(archive, QFile::decodeName(into));
    for (const QByteArray &name : namesIn(folder)) {
        if (name != "input.zip" && name != "into")
            std::abort(); // something was written beside the target folder
    }
    if (!unpacked && !namesIn(into).isEmpty())
        std::abort(); // a refused archive left something behind
    removeAll(into);
    return 0;
}
