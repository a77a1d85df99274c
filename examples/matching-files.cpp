// Lists the entries of a folder whose names match a wildcard ("*" and "?"), case ignored, in the
// order the file system gives them.
#include <files/FileManager.h>
#include <strings/Wildcard.h>

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    QTextStream out(stdout);
    if (args.size() != 3) {
        QTextStream(stderr) << "usage: matching-files FOLDER PATTERN\n";
        return 2;
    }
    for (const QString &name : orvel::FileManager::directoryContentsAtPath(args[1], false)) {
        if (orvel::isCaseInsensitiveLikeWildcard(name, args[2]))
            out << name << '\n';
    }
    return 0;
}
