// Runs one archive or mirroring operation of the file manager on real folders and prints its wall
// time in seconds, for archives-vs-tools.sh to hold against rsync, zip and unzip.
#include "files/FileManager.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdio>
#include <cstring>

int main(int argc, char **argv)
{
    if (argc < 4) {
        std::fprintf(stderr,
            "usage: archives_bench mirror SOURCE TARGET | zip FOLDER ARCHIVE | unzip ARCHIVE FOLDER\n");
        return 2;
    }
    const QString a = QString::fromLocal8Bit(argv[2]);
    const QString b = QString::fromLocal8Bit(argv[3]);
    const auto start = std::chrono::steady_clock::now();
    bool ok = false;
    if (std::strcmp(argv[1], "mirror") == 0) {
        ok = orvel::FileManager::updatePath(a, b);
    } else if (std::strcmp(argv[1], "zip") == 0) {
        // As zip -r -q ARCHIVE NAME is run in the folder's parent.
        const qsizetype slash = a.lastIndexOf(u'/');
        ok = orvel::FileManager::compressFiles({ a.mid(slash + 1) }, a.left(slash), b);
    } else if (std::strcmp(argv[1], "unzip") == 0) {
        ok = orvel::FileManager::decompressFileAtPath(a, b);
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::printf("%.3f\n", took.count());
    return ok ? 0 : 1;
}
