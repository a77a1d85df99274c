// What every fuzz target shares: a Qt application object as the workers have, and scratch files.
#include "FuzzSupport.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

namespace orvel::fuzz {

void startApplication(int *argc, char ***argv)
{
    // The workers draw with QPainter on images and need no display; neither does a fuzzer.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QCoreApplication application(*argc, *argv);
}

QString scratchFile(const QByteArray &bytes, const char *extension)
{
    static QTemporaryDir folder;
    if (!folder.isValid())
        std::abort();
    const QString path = folder.filePath(QStringLiteral("input.") + QLatin1StringView(extension));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        std::abort();
    return path;
}

} // namespace orvel::fuzz
