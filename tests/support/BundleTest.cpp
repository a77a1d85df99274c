// Image resources looked up in a bundle's folder.
#include "support/Bundle.h"

#include "testlib/TestSupport.h"

#include <gtest/gtest.h>

using namespace orvel;
using orvel::test::TempDir;
using orvel::test::writeBytes;

TEST(Bundle, FindsImagesByNameInExtensionOrder)
{
    TempDir dir;
    for (const char *name : { "icon.jpg", "icon.svg", "logo.PNG", "badge.small.gif", "notes.txt" })
        ASSERT_TRUE(writeBytes(dir.file(name), "x"));
    const Bundle bundle("org.example.test", dir.path());
    EXPECT_EQ(bundle.pathForImageResource("icon"), dir.file("icon.svg"));
    EXPECT_EQ(bundle.pathForImageResource("icon.jpg"), dir.file("icon.jpg"));
    EXPECT_EQ(bundle.pathForImageResource("logo"), dir.file("logo.PNG"));
    EXPECT_EQ(bundle.pathForImageResource("badge.small"), dir.file("badge.small.gif"));
    EXPECT_EQ(bundle.pathForImageResource("notes"), "");
    EXPECT_EQ(bundle.pathForImageResource("missing"), "");
    EXPECT_EQ(bundle.pathForImageResource(""), "");

    ASSERT_TRUE(writeBytes(dir.file("icon.png"), "x"));
    EXPECT_EQ(bundle.pathForImageResource("icon"), dir.file("icon.png"));
    EXPECT_EQ(Bundle("org.example.none", "/orvel-missing-folder").pathForImageResource("icon"), "");
}
