// Lists a folder deeply with the file manager and prints every path, one a line, as `find DIR`
// does, for listing-vs-find.sh to hold against find.
#include "files/FileManager.h"

#include <QByteArray>
#include <QString>
#include <QStringEncoder>
#include <QStringList>

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: listing_bench FOLDER\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const QStringList paths = orvel::FileManager::deepDirectoryContentsAtPath(folder);
    // find prints the folder itself first; so does this, to write the same lines. The lines are
    // gathered in one buffer and written in large blocks, as find's buffered output does.
    std::puts(argv[1]);
    QStringEncoder utf8(QStringEncoder::Utf8);
    QByteArray out(1 << 17, Qt::Uninitialized);
    char *end = out.data();
    for (const QString &path : paths) {
        // At most three bytes per UTF-16 unit, and the newline.
        if (end - out.data() + 3 * path.size() + 1 > out.size()) {
            std::fwrite(out.constData(), 1, size_t(end - out.data()), stdout);
            end = out.data();
            if (3 * path.size() + 1 > out.size())
                out.resize(3 * path.size() + 1);
        }
        end = utf8.appendToBuffer(end, path);
        *end++ = '\n';
    }
    std::fwrite(out.constData(), 1, size_t(end - out.data()), stdout);
    return paths.isEmpty() ? 1 : 0;
}
