// orvel-thumbnails: the desktop application. Makes thumbnails of the files it is opened with, or
// shows its preferences panel.
#include "app/DesktopApplication.h"
#include "app/IsolatedJob.h"

#include <QApplication>
#include <QIcon>

#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvel Thumbnails"));
    QApplication::setApplicationVersion(QStringLiteral(ORVEL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.orvel.Thumbnails"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("org.orvel.Thumbnails")));

    const QStringList arguments = QApplication::arguments().mid(1);
    for (const QString &argument : arguments) {
        if (argument == u"--")
            break;
        if (argument == u"--help" || argument == u"-h") {
            std::fputs("Usage: orvel-thumbnails [PATH]...\n"
                       "Makes thumbnails of PATH... with the stored settings, or shows the preferences\n"
                       "panel when no PATH is given. A running instance takes the paths of later launches.\n"
                       "The command line without a display is orvel-thumbs.\n",
                stdout);
            return 0;
        }
        if (argument == u"--version") {
            std::fputs("orvel-thumbnails " ORVEL_VERSION "\n", stdout);
            return 0;
        }
    }

    orvel::DesktopApplication::Options options;
    options.workerExecutable = orvel::IsolatedJob::defaultExecutable();
    orvel::DesktopApplication application(options);
    return application.run(orvel::launchPaths(arguments));
}
