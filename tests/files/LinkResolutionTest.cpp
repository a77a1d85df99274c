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

TEST(LinkResolution, ResolvesChainsDotDotDanglingLinksLoopsAndMissingPartsInEveryPrefix)
{
    TempDir dir;
    // The temporary folder may itself lie behind a link: resolved paths start with its canonical form.
    const QString real = QFileInfo(dir.path()).canonicalFilePath();
    for (const QString &folder : { u"data/images"_s, u"a/b"_s, u"real"_s, u"store/2024/raw"_s })
        ASSERT_TRUE(QDir(dir.path()).mkpath(folder));
    for (const QString &file : { u"data/images/pic.jpg"_s, u"a/x"_s, u"store/2024/raw/a.cr2"_s })
        ASSERT_TRUE(writeBytes(dir.file(file), "x"));
    const QString links[][2] = { { u"data/images/pic.jpg"_s, u"second"_s }, { u"second"_s, u"first"_s },
        { u"../../first"_s, u"data/images/up"_s }, { dir.file(u"a/b"_s), u"ln"_s }, { u"real"_s, u"alias"_s },
        { u"nowhere/file"_s, u"real/dangling"_s }, { u"loopB"_s, u"loopA"_s }, { u"loopA"_s, u"loopB"_s },
        { u"store"_s, u"photos"_s }, { u"photos/2024"_s, u"this-year"_s },
        { u"../../../this-year"_s, u"store/2024/raw/up"_s }, { u"gone"_s, u"dangling"_s } };
    for (const auto &link : links)
        ASSERT_TRUE(QFile::link(link[0], dir.file(link[1]))) << link[1];

    // On Linux, with no alias files, resolving the link of a path resolves every link in it.
    const QString cases[][2] = {
        { u"first"_s, u"/data/images/pic.jpg"_s },
        { u"data/images/up"_s, u"/data/images/pic.jpg"_s },
        { u"ln/../x"_s, u"/a/x"_s }, // ".." after a link leads to the parent of its target
        { u"alias/dangling"_s, u"/real/dangling"_s },
        { u"loopA"_s, u"/loopA"_s },
        { u"dangling/x"_s, u"/dangling/x"_s }, // a broken link stays as it is
        { u"alias/new/./y/../z"_s, u"/real/new/z"_s },
        // Back into existing folders after a missing one, where a link is resolved again.
        { u"missing/../alias"_s, u"/real"_s },
        { u"this-year/raw/up/raw/./a.cr2"_s, u"/store/2024/raw/a.cr2"_s },
        { u"this-year//raw/missing/../a.cr2"_s, u"/store/2024/raw/a.cr2"_s },
    };
    for (const auto &c : cases) {
        EXPECT_EQ(stringByResolvingLinkOfPath(dir.file(c[0])), real + c[1]) << c[0];
        EXPECT_EQ(stringByResolvingSymlinksInPath(dir.file(c[0])), real + c[1]) << c[0];
        EXPECT_EQ(stringByResolvingLinksInPath(dir.file(c[0])), real + c[1]) << c[0];
    }
    EXPECT_EQ(stringByResolvingLinksInPath(u"/"_s), u"/"_s);
    EXPECT_EQ(stringByResolvingLinksInPath(u""_s), u""_s);
}

TEST(LinkResolution, PathsWithoutFilesComeBackStandardised)
{
    EXPECT_EQ(stringByResolvingSymlinksInPath(u"/orvel-missing/./a//b/../c/"_s), u"/orvel-missing/a/c"_s);
    EXPECT_EQ(stringByResolvingSymlinksInPath(u"/orvel-missing/../.."_s), u"/"_s);
    const QString home = QFileInfo(QDir::homePath()).canonicalFilePath();
    EXPECT_EQ(stringByResolvingSymlinksInPath(u"~"_s), home);
    EXPECT_EQ(stringByResolvingSymlinksInPath(u"~/orvel-missing/x"_s), home + u"/orvel-missing/x"_s);
    EXPECT_TRUE(stringByResolvingLinkOfPath(QString()).isNull());
    EXPECT_EQ(stringByResolvingSymlinksInPath(QString()), QString());
}

TEST(LinkResolution, AliasReferenceReportsExistenceAndFolders)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file(u"file"_s), "x"));
    ASSERT_TRUE(QFile::link(dir.path(), dir.file(u"toFolder"_s)));
    bool isFolder = false;
    EXPECT_TRUE(getAliasFSRef(dir.file(u"toFolder"_s), &isFolder));
    EXPECT_TRUE(isFolder);
    EXPECT_TRUE(getAliasFSRef(dir.file(u"file"_s), &isFolder));
    EXPECT_FALSE(isFolder);
    EXPECT_FALSE(getAliasFSRef(dir.file(u"missing"_s), &isFolder));
    EXPECT_FALSE(getAliasFSRef(QString(), &isFolder));
    EXPECT_FALSE(getAliasFSRef(dir.file(u"file"_s) + QChar(0), nullptr)) << "a NUL would name another file";
}
