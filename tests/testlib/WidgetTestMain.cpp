// Main of the tests that need widgets: a QApplication on the offscreen platform, libvips started, the
// user's settings, cache, data and runtime folders in a temporary folder, and no session bus unless a
// test starts one.
#include "testlib/TestSupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <vips/vips8>

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    orvel::test::keepLeakDetectionToThisProcess();
    QTemporaryDir home;
    if (!home.isValid())
        return 2;
    // Before anything asks for a folder: the settings store, the socket and the help book are found
    // through these.
    for (const char *name : { "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR" }) {
        const QString folder = home.filePath(QString::fromLatin1(name).toLower());
        QDir().mkpath(folder);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(name, QFile::encodeName(folder));
    }
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");

    QApplication app(argc, argv);
    if (VIPS_INIT(argv[0]) != 0)
        return 2;
    vips_cache_set_max(0);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
