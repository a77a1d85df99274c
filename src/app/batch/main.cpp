// orvel-thumbs: makes thumbnails of the files and folders on its command line.
#include "app/batch/CommandLine.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    // No display is needed; should anything touch the GUI module, it must not look for one.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication app(argc, argv);
    return orvel::runCommandLine(QCoreApplication::arguments().mid(1),
        QCoreApplication::applicationFilePath(), QStringLiteral(ORVEL_VERSION));
}
