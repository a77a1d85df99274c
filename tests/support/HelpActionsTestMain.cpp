// Main of the update-check and help tests: a QApplication (dialogs) on the offscreen platform, with
// the user's folders in a temporary place that holds the installed help book.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Set before anything looks the folders up: they are read once.
    QTemporaryDir home;
    if (!home.isValid())
        return 2;
    for (const char *name : { "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME" }) {
        const QString folder = home.filePath(QString::fromLatin1(name).toLower());
        QDir().mkpath(folder);
        qputenv(name, QFile::encodeName(folder));
    }
    const QString help = home.filePath(QStringLiteral("xdg_data_home/orvel-thumbs/help"));
    if (!QDir().mkpath(help)
        || !QFile::copy(
            QStringLiteral(ORVEL_SOURCE_DIR "/docs/help/index.html"), help + QStringLiteral("/index.html")))
        return 2;
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
