// Main of the desktop tests: a widget application on the offscreen platform, with the settings,
// cache and runtime folders in a temporary folder and no session bus unless a test starts one.
#include "testlib/TestSupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <vips/vips8>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    orvel::test::keepLeakDetectionToThisProcess();
    QTemporaryDir home;
    if (!home.isValid())
        return 2;
    // Before anything asks for a folder: the settings store and the socket are found through these.
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.filePath(u"config"_s)));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(home.filePath(u"cache"_s)));
    QDir(home.path()).mkdir(u"runtime"_s);
    QFile::setPermissions(
        home.filePath(u"runtime"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home.filePath(u"runtime"_s)));
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");

    QApplication app(argc, argv);
    if (VIPS_INIT(argv[0]) != 0)
        return 2;
    vips_cache_set_max(0);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
