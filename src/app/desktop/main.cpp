// orvel-thumbnails: the desktop application. Makes thumbnails of the files it is opened with, or
// shows its preferences panel.
#include "app/desktop/DesktopApplication.h"
#include "app/desktop/IsolatedJob.h"
#include "support/Log.h"

#include <QApplication>
#include <QByteArray>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <cstdio>

int main(int argc, char **argv)
{
    // Answered before the application object exists, so they need no display.
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--")
            break;
        if (argument == "--help" || argument == "-h") {
            std::fputs("Usage: orvel-thumbnails [PATH]...\n"
                       "Makes thumbnails of PATH... with the stored settings, or shows the preferences\n"
                       "panel when no PATH is given. A running instance takes the paths of later launches.\n"
                       "The command line without a display is orvel-thumbs.\n",
                stdout);
            return 0;
        }
        if (argument == "--version") {
            std::fputs("orvel-thumbnails " ORVEL_VERSION "\n", stdout);
            return 0;
        }
    }

    QApplication app(argc, argv);
    orvel::routeToolkitQtMessages();
    QApplication::setApplicationName(QStringLiteral("Orvel Thumbnails"));
    QApplication::setApplicationVersion(QStringLiteral(ORVEL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.orvel.Thumbnails"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("org.orvel.Thumbnails")));
    // Qt's own texts (the buttons of message boxes, the file dialog, the fields' context menus) in
    // the user's language, when Qt's translations are installed; the application's own come from
    // its strings tables.
    QTranslator qtTexts;
    if (qtTexts.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
            QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qtTexts);

    orvel::DesktopApplication::Options options;
    options.workerExecutable = orvel::IsolatedJob::defaultExecutable();
    orvel::DesktopApplication application(options);
    return application.run(orvel::launchPaths(QApplication::arguments().mid(1)));
}
