// Zip archives of real trees: forks and Finder info through "__MACOSX", read by Info-ZIP's tools
// and from archives they wrote; hostile and broken archives; mirroring with a failure half-way.
#include "files/FileManager.h"
#include "files/FinderInfo.h"
#include "files/ResourceFork.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvel;
using orvel::test::readBytes;
using orvel::test::runProgram;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

constexpr FileTypeCode TEXT = 0x54455854, ILHT = 0x696c6874;

/// Every path below folder, relative and sorted, links not followed.
QStringList treeOf(const QString &folder)
{
    QStringList out;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (it.hasNext())
        out << QDir(folder).relativeFilePath(it.next());
    out.sort();
    return out;
}

/// Runs a Python script that writes a zip archive at path with the zipfile module.
bool makeZipWithPython(const QString &path, const QString &body)
{
    const QString script
        = u"import sys, zipfile, zlib\nz = zipfile.ZipFile(sys.argv[1], 'w', zipfile.ZIP_DEFLATED)\n"_s
        + u"def link(name, target):\n    i = zipfile.ZipInfo(name)\n    i.create_system = 3\n"_s
        + u"    i.external_attr = (0o120777 << 16)\n    z.writestr(i, target)\n"_s + body
        + u"\nz.close()\n"_s;
    QByteArray err;
    const int code = runProgram(u"python3"_s, { u"-c"_s, script, path }, nullptr, &err);
    if (code != 0)
        ADD_FAILURE() << "python3: " << err.toStdString();
    return code == 0;
}

class Archives : public testing::Test
{
protected:
    TempDir dir;
    QString tree = dir.file(u"Tree"_s);
    QString zip = dir.file(u"out.zip"_s);
    QString into = dir.file(u"into"_s);

    void makeTree()
    {
        ASSERT_TRUE(QDir().mkpath(tree + u"/sub/deeper"_s));
        ASSERT_TRUE(writeBytes(tree + u"/a.txt"_s, "alpha"));
        ASSERT_TRUE(writeBytes(tree + u"/sub/b.bin"_s, QByteArray(300000, 'b') + "end"));
        ASSERT_TRUE(writeBytes(tree + u"/sub/deeper/Grüße.txt"_s, "umlauts"));
        ASSERT_TRUE(writeBytes(tree + u"/empty"_s, ""));
        ASSERT_EQ(symlink("sub/b.bin", QFile::encodeName(tree + u"/link"_s).constData()), 0);
        auto fork = ResourceFork::resourceForkForWritingAtPath(tree + u"/a.txt"_s);
        ASSERT_NE(fork, nullptr);
        ASSERT_TRUE(fork->addData("https://example.org/", TEXT, 256));
        ASSERT_TRUE(setHFSTypeCodeOfFile(tree + u"/a.txt"_s, ILHT));
    }
};

} // namespace

TEST_F(Archives, AZipCarriesForksAsAMacWritesThemAndUnzipRestoresThem)
{
    makeTree();
    ASSERT_TRUE(FileManager::compressFileAtPath(tree, zip, true));

    QByteArray listing;
    ASSERT_EQ(runProgram(u"unzip"_s, { u"-l"_s, zip }, &listing), 0);
    for (const char *entry : { "Tree/a.txt", "Tree/sub/b.bin", "Tree/sub/deeper/", "__MACOSX/Tree/._a.txt" })
        EXPECT_TRUE(listing.contains(entry)) << entry << " missing in\n" << listing.toStdString();
    EXPECT_FALSE(listing.contains("._b.bin")) << "a file with no fork and no Finder info has no entry";
    EXPECT_EQ(runProgram(u"unzip"_s, { u"-qt"_s, zip }), 0) << "Info-ZIP finds every entry's CRC right";

    ASSERT_TRUE(FileManager::decompressFileAtPath(zip, into));
    EXPECT_EQ(treeOf(into + u"/Tree"_s), treeOf(tree));
    EXPECT_FALSE(QFile::exists(into + u"/__MACOSX"_s)) << "the metadata goes back into the files";
    EXPECT_EQ(readBytes(into + u"/Tree/sub/b.bin"_s), readBytes(tree + u"/sub/b.bin"_s));
    EXPECT_EQ(QFile::symLinkTarget(into + u"/Tree/link"_s), into + u"/Tree/sub/b.bin"_s);
    auto fork = ResourceFork::resourceForkForReadingAtPath(into + u"/Tree/a.txt"_s);
    ASSERT_NE(fork, nullptr);
    EXPECT_EQ(fork->dataForType(TEXT, 256), "https://example.org/");
    EXPECT_EQ(HFSTypeCodeOfFile(into + u"/Tree/a.txt"_s), ILHT);
    EXPECT_EQ(QDir(into).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList { u"Tree"_s })
        << "no staging folder is left behind";

    // And an archive Info-ZIP wrote unzips the same.
    QByteArray err;
    ASSERT_EQ(runProgram(u"sh"_s, { u"-c"_s, u"cd \"$0\" && zip -r -q -y \"$1\" Tree"_s, dir.path(), zip },
                  nullptr, &err),
        0)
        << err.toStdString();
    ASSERT_TRUE(FileManager::decompressFileAtPath(zip, dir.file(u"again"_s)));
    EXPECT_EQ(treeOf(dir.file(u"again/Tree"_s)), treeOf(tree));
    EXPECT_TRUE(QFileInfo(dir.file(u"again/Tree/link"_s)).isSymLink());
}

TEST_F(Archives, WithoutKeepParentAFoldersContentsAreTheTopAndCompanionsBecomeMetadata)
{
    makeTree();
    // A companion left by a Mac on this volume is the file's fork, not a file of its own.
    ASSERT_TRUE(QFile::rename(tree + u"/sub/b.bin"_s, tree + u"/sub/c.bin"_s));
    ASSERT_TRUE(writeBytes(tree + u"/sub/b.bin"_s, "b"));
    ASSERT_TRUE(setHFSTypeCodeOfFile(tree + u"/empty"_s, TEXT));
    ASSERT_TRUE(FileManager::compressFileAtPath(tree, zip));
    QByteArray listing;
    ASSERT_EQ(runProgram(u"unzip"_s, { u"-Z1"_s, zip }, &listing), 0);
    const QList<QByteArray> names = listing.trimmed().split('\n');
    EXPECT_TRUE(names.contains("a.txt"));
    EXPECT_TRUE(names.contains("__MACOSX/._a.txt"));
    EXPECT_FALSE(names.contains("Tree/"));

    ASSERT_TRUE(FileManager::compressFileAtPath(tree + u"/a.txt"_s, dir.file(u"one.zip"_s)));
    ASSERT_TRUE(FileManager::decompressFileAtPath(dir.file(u"one.zip"_s), into));
    EXPECT_EQ(treeOf(into), QStringList { u"a.txt"_s });
}

TEST_F(Archives, CompressFilesZipsNamesAndAppendsReplacingTheSameNames)
{
    makeTree();
    EXPECT_FALSE(FileManager::compressFiles({}, tree, zip));
    EXPECT_FALSE(FileManager::compressFiles({ u"../x"_s }, tree, zip)) << "a name may not leave the folder";
    EXPECT_FALSE(FileManager::compressFiles({ u"a.txt"_s }, dir.file(u"none"_s), zip));

    ASSERT_TRUE(FileManager::compressFiles({ u"a.txt"_s, u"sub"_s }, tree, zip));
    ASSERT_TRUE(writeBytes(tree + u"/a.txt"_s, "changed"));
    ASSERT_TRUE(writeBytes(tree + u"/new.txt"_s, "new"));
    ASSERT_TRUE(FileManager::compressFiles({ u"a.txt"_s, u"new.txt"_s }, tree, zip, true));

    QByteArray listing;
    ASSERT_EQ(runProgram(u"unzip"_s, { u"-Z1"_s, zip }, &listing), 0);
    QList<QByteArray> names = listing.trimmed().split('\n');
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names,
        (QList<QByteArray> {
            "a.txt", "new.txt", "sub/", "sub/b.bin", "sub/deeper/", "sub/deeper/Grüße.txt" }));
    QByteArray a;
    ASSERT_EQ(runProgram(u"unzip"_s, { u"-p"_s, zip, u"a.txt"_s }, &a), 0);
    EXPECT_EQ(a, "changed");

    // Without append the archive starts afresh; a target that is no zip cannot be appended to.
    ASSERT_TRUE(FileManager::compressFiles({ u"new.txt"_s }, tree, zip));
    ASSERT_EQ(runProgram(u"unzip"_s, { u"-Z1"_s, zip }, &listing), 0);
    EXPECT_EQ(listing.trimmed(), "new.txt");
    ASSERT_TRUE(writeBytes(dir.file(u"text.zip"_s), "not a zip"));
    EXPECT_FALSE(FileManager::compressFiles({ u"a.txt"_s }, tree, dir.file(u"text.zip"_s), true));
    EXPECT_EQ(readBytes(dir.file(u"text.zip"_s)), "not a zip")
        << "a failed write leaves the target as it was";
}

TEST(HostileArchives, AreRefusedBeforeAnythingIsWritten)
{
    // Statements on the ZipFile z (and link(name, target)).
    const std::pair<const char *, const char *> cases[] = {
        { "DotDot", "z.writestr('ok.txt', 'x')\nz.writestr('../../outside', 'x')" },
        { "DotDotInside", "z.writestr('ok/../../../outside', 'x')" },
        { "Absolute", "z.writestr(zipfile.ZipInfo('OUTSIDE'), 'x')" },
        { "LinkOut", "link('l', '../../..')\nz.writestr('ok.txt', 'x')" },
        { "AbsoluteLink", "link('l', '/etc/passwd')" },
        { "LinkThroughALink", "link('b', '.')\nlink('a', 'b/..')" },
        { "WriteThroughALink", "link('l', 'sub')\nz.writestr('l/x', 'x')" },
        { "MetadataThroughALink", "link('l', 'sub')\nz.writestr('__MACOSX/l/._x', 'x')" },
        { "Bomb",
            "i = zipfile.ZipInfo('zeros', (2020, 1, 1, 0, 0, 0))\ni.compress_type = zipfile.ZIP_DEFLATED\n"
            "with z.open(i, 'w', force_zip64=True) as f:\n"
            "    for i in range(160): f.write(bytes(1 << 20))" }
    };
    for (const auto &[name, python] : cases) {
        TempDir dir;
        const QString zip = dir.file(u"hostile.zip"_s);
        const QString into = dir.file(u"a/b/into"_s);
        ASSERT_TRUE(QDir().mkpath(into));
        ASSERT_TRUE(writeBytes(into + u"/keep.txt"_s, "mine"));
        ASSERT_TRUE(
            makeZipWithPython(zip, QString::fromUtf8(python).replace(u"OUTSIDE"_s, dir.file(u"outside"_s))))
            << name;

        EXPECT_FALSE(FileManager::decompressFileAtPath(zip, into)) << name;
        EXPECT_EQ(treeOf(dir.path()),
            (QStringList { u"a"_s, u"a/b"_s, u"a/b/into"_s, u"a/b/into/keep.txt"_s, u"hostile.zip"_s }))
            << name << ": nothing is written, inside the folder or out";
        EXPECT_EQ(readBytes(into + u"/keep.txt"_s), "mine") << name;
    }
}

TEST_F(Archives, BrokenArchivesAnswerNoAndLeaveTheFolderAsItWas)
{
    makeTree();
    ASSERT_TRUE(FileManager::compressFileAtPath(tree, zip, true));
    const QByteArray whole = readBytes(zip);
    ASSERT_TRUE(QDir().mkpath(into));
    ASSERT_TRUE(writeBytes(into + u"/keep.txt"_s, "mine"));
    for (qsizetype cut : { qsizetype(0), qsizetype(10), whole.size() / 3, whole.size() / 2 }) {
        ASSERT_TRUE(writeBytes(dir.file(u"cut.zip"_s), whole.left(cut)));
        EXPECT_FALSE(FileManager::decompressFileAtPath(dir.file(u"cut.zip"_s), into)) << "cut at " << cut;
        EXPECT_EQ(treeOf(into), QStringList { u"keep.txt"_s }) << "cut at " << cut;
    }
    QByteArray corrupt = whole;
    corrupt[corrupt.size() / 3] = char(corrupt.at(corrupt.size() / 3) ^ 0x55);
    ASSERT_TRUE(writeBytes(dir.file(u"bad.zip"_s), corrupt));
    (void)FileManager::decompressFileAtPath(dir.file(u"bad.zip"_s), into); // may or may not notice
    EXPECT_FALSE(FileManager::decompressFileAtPath(dir.file(u"missing.zip"_s), into));
    EXPECT_FALSE(FileManager::compressFileAtPath(dir.file(u"missing"_s), zip));
    EXPECT_FALSE(FileManager::compressFileAtPath(tree, dir.path()))
        << "a folder is not replaced by an archive";
}

// ---- Mirroring ---------------------------------------------------------------------------------

class Mirroring : public testing::Test
{
protected:
    TempDir dir;
    QString source = dir.file(u"source"_s);
    QString target = dir.file(u"target"_s);

    static void age(const QString &path, int seconds)
    {
        const auto when = std::chrono::system_clock::now() - std::chrono::seconds(seconds);
        ASSERT_TRUE(FileManager::setFileModificationDate(FileTime(when), path));
    }

    /// Source and target with the same 100 files in two folders; the target's copies older.
    void makeTrees()
    {
        for (int i = 0; i < 100; ++i) {
            const QString name = (i % 2 ? u"odd/"_s : u"even/"_s) + QString::number(i);
            ASSERT_TRUE(QDir().mkpath(source + u"/odd"_s) && QDir().mkpath(target + u"/odd"_s));
            ASSERT_TRUE(QDir().mkpath(source + u"/even"_s) && QDir().mkpath(target + u"/even"_s));
            ASSERT_TRUE(writeBytes(source + u'/' + name, "old " + QByteArray::number(i)));
            ASSERT_TRUE(writeBytes(target + u'/' + name, "old " + QByteArray::number(i)));
            age(source + u'/' + name, 100);
            age(target + u'/' + name, 100);
        }
    }
};

TEST_F(Mirroring, NewerAndMissingItemsAreCopiedAndNothingElseIsTouched)
{
    makeTrees();
    for (int i = 0; i < 100; i += 10)
        ASSERT_TRUE(writeBytes(source + (i % 2 ? u"/odd/"_s : u"/even/"_s) + QString::number(i), "new"));
    ASSERT_TRUE(QDir().mkpath(source + u"/fresh/inner"_s));
    ASSERT_TRUE(writeBytes(source + u"/fresh/inner/f"_s, "f"));
    ASSERT_TRUE(writeBytes(target + u"/even/only-in-target"_s, "keep"));
    ASSERT_TRUE(writeBytes(target + u"/even/2"_s, "target's own, newer"));
    const auto untouched = FileManager::fileIdentityAtPath(target + u"/even/4"_s);

    ASSERT_TRUE(FileManager::updatePath(source, target));
    for (int i = 0; i < 100; i += 10)
        EXPECT_EQ(readBytes(target + u"/even/"_s + QString::number(i)), "new") << i;
    EXPECT_EQ(readBytes(target + u"/even/2"_s), "target's own, newer") << "a newer target stays";
    EXPECT_EQ(FileManager::fileIdentityAtPath(target + u"/even/4"_s), untouched)
        << "an unchanged file is not rewritten";
    EXPECT_EQ(readBytes(target + u"/even/only-in-target"_s), "keep");
    EXPECT_EQ(readBytes(target + u"/fresh/inner/f"_s), "f");
    EXPECT_EQ(treeOf(target).size(), treeOf(source).size() + 1) << "no temporary name is left";

    ASSERT_TRUE(FileManager::updatePath(source, target, true, true));
    EXPECT_EQ(readBytes(target + u"/even/2"_s), "old 2") << "overwrite replaces whatever is there";
    const std::optional<QByteArray> info = finderInfoOfFile(target + u"/even/2"_s);
    ASSERT_TRUE(info);
    EXPECT_TRUE(info->at(25) & 0x10) << "the extension is marked hidden";
    EXPECT_FALSE(FileManager::updatePath(dir.file(u"none"_s), target));
}

TEST_F(Mirroring, AFailureHalfWayLeavesEveryFileOldOrNew)
{
    makeTrees();
    // Files past 64 KiB cannot be written under this limit: those copies fail half-way.
    const QByteArray big(200 * 1024, 'n');
    for (int i = 1; i < 100; i += 10)
        ASSERT_TRUE(writeBytes(source + u"/odd/"_s + QString::number(i), big));
    for (int i = 3; i < 100; i += 10)
        ASSERT_TRUE(writeBytes(source + u"/odd/"_s + QString::number(i), "small and new"));
    rlimit old {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 64 * 1024;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool ok = FileManager::updatePath(source, target);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, previous);

    EXPECT_FALSE(ok);
    for (int i = 1; i < 100; i += 10)
        EXPECT_EQ(readBytes(target + u"/odd/"_s + QString::number(i)), "old " + QByteArray::number(i));
    for (int i = 3; i < 100; i += 10)
        EXPECT_EQ(readBytes(target + u"/odd/"_s + QString::number(i)), "small and new");
    EXPECT_EQ(treeOf(target), treeOf(source)) << "no partial copy is left under a temporary name";
}
