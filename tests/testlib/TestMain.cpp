// Shared main of every test executable: a GUI application on the offscreen platform, libvips started.
#include "testlib/TestSupport.h"

#include <QGuiApplication>
#include <gtest/gtest.h>
#include <vips/vips8>

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    orvel::test::keepLeakDetectionToThisProcess();
    QGuiApplication app(argc, argv);
    if (VIPS_INIT(argv[0]) != 0)
        return 2;
    vips_cache_set_max(0);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
