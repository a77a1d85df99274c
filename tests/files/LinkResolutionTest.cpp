// Resolving symbolic links in paths, on real links.
#include "files/LinkResolution.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

/// A temporary folder whose canonical path (the temporary folder may itself lie behind a link)
/// is what resolved paths start with.
struct LinkDir
{
    TempDir dir;
    QString real = QFileInfo(dir.path()).canonicalFilePath();
    QString file(const QString &name) const { return dir.file(name); }
    bool link(const QString &target, const QString &name) const { return QFile::link(target, file(name)); }
};

} // namespace

TEST(LinkResolution, FollowsAChainOfRelativeLinks)
{
    LinkDir d;
    ASSERT_TRUE(QDir(d.dir.path()).mkpath("data/images"));
    ASSERT_TRUE(writeBytes(d.file("data/images/pic.jpg"), "x"));
    ASSERT_TRUE(d.link("data/images/pic.jpg", "second"));
    ASSERT_TRUE(d.link("second", "first"));
    ASSERT_TRUE(d.link("../../first", "data/images/up"));

    EXPECT_EQ(stringByResolvingLinkOfPath(d.file("first")), d.real + "/data/images/pic.jpg");
    EXPECT_EQ(stringByResolvingSymlinksInPath(d.file("data/images/up")), d.real + "/data/images/pic.jpg");
}

TEST(LinkResolution, DotDotAfterALinkLeadsToTheParentOfItsTarget)
{
    LinkDir d;
    ASSERT_TRUE(QDir(d.dir.path()).mkpath("a/b"));
    ASSERT_TRUE(writeBytes(d.file("a/x"), "x"));
    ASSERT_TRUE(d.link(d.file("a/b"), "ln"));
    EXPECT_EQ(stringByResolvingSymlinksInPath(d.file("ln/../x")), d.real + "/a/x");
}

TEST(LinkResolution, DanglingLinkGivesItsOwnPathWithTheFolderResolved)
{
    LinkDir d;
    ASSERT_TRUE(QDir(d.dir.path()).mkdir("real"));
    ASSERT_TRUE(d.link("real", "alias"));
    ASSERT_TRUE(d.link("nowhere/file", "real/dangling"));

    EXPECT_EQ(stringByResolvingLinkOfPath(d.file("alias/dangling")), d.real + "/real/dangling");
    EXPECT_EQ(stringByResolvingSymlinksInPath(d.file("alias/dangling")), d.real + "/real/dangling");
}

TEST(LinkResolution, LinkLoopGivesThePathNotAHang)
{
    LinkDir d;
    ASSERT_TRUE(d.link("b", "a"));
    ASSERT_TRUE(d.link("a", "b"));
    EXPECT_EQ(stringByResolvingLinkOfPath(d.file("a")), d.real + "/a");
}

TEST(LinkResolution, MissingPathsComeBackStandardised)
{
    LinkDir d;
    ASSERT_TRUE(QDir(d.dir.path()).mkdir("real"));
    ASSERT_TRUE(d.link("real", "alias"));
    EXPECT_EQ(stringByResolvingSymlinksInPath("/orvel-missing/./a//b/../c/"), "/orvel-missing/a/c");
    EXPECT_EQ(stringByResolvingSymlinksInPath("/orvel-missing/../.."), "/");
    EXPECT_EQ(stringByResolvingSymlinksInPath(d.file("alias/new/./y/../z")), d.real + "/real/new/z");
    // Back into existing folders after a missing one, where a link is resolved again.
    EXPECT_EQ(stringByResolvingSymlinksInPath(d.file("missing/../alias")), d.real + "/real");
    EXPECT_EQ(stringByResolvingLinkOfPath(d.file("gone.jpg")), d.real + "/gone.jpg");
}

TEST(LinkResolution, EmptyPathGivesNull)
{
    EXPECT_TRUE(stringByResolvingLinkOfPath(QString()).isNull());
    EXPECT_TRUE(stringByResolvingLinkOfPath(u""_s).isNull());
    EXPECT_EQ(stringByResolvingSymlinksInPath(QString()), QString());
}

TEST(LinkResolution, TildeStandsForTheHomeFolder)
{
    const QString home = QFileInfo(QDir::homePath()).canonicalFilePath();
    EXPECT_EQ(stringByResolvingSymlinksInPath("~"), home);
    EXPECT_EQ(stringByResolvingSymlinksInPath("~/orvel-missing/x"), home + "/orvel-missing/x");
}

TEST(LinkResolution, AliasReferenceReportsExistenceAndFolders)
{
    LinkDir d;
    ASSERT_TRUE(writeBytes(d.file("file"), "x"));
    ASSERT_TRUE(d.link(d.dir.path(), "toFolder"));
    bool isFolder = false;
    EXPECT_TRUE(getAliasFSRef(d.file("toFolder"), &isFolder));
    EXPECT_TRUE(isFolder);
    EXPECT_TRUE(getAliasFSRef(d.file("file"), &isFolder));
    EXPECT_FALSE(isFolder);
    EXPECT_FALSE(getAliasFSRef(d.file("missing"), &isFolder));
    EXPECT_FALSE(getAliasFSRef(QString(), &isFolder));
    EXPECT_FALSE(getAliasFSRef(d.file("file") + QChar(0), nullptr)) << "a NUL would name another file";
}
