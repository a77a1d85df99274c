// Type and creator codes in the Finder info; resource forks of real files, in the extended attribute
// and in the AppleDouble companion; forks and companions laid out byte by byte as a Mac writes them;
// hostile forks.
#include "files/ResourceFork.h"
#include "files/AppleDouble.h"
#include "files/FinderInfo.h"

#include "testlib/TestSupport.h"

#include <QFile>
#include <QtEndian>
#include <gtest/gtest.h>

#include <functional>
#include <sys/stat.h>
#include <sys/xattr.h>

using namespace Qt::StringLiterals;
using namespace orvel;
using orvel::test::TempDir;

namespace {

constexpr FileTypeCode TEXT = 0x54455854, URL = 0x75726c20, DRAG = 0x64726167, ICNS = 0x69636e73;
constexpr FileTypeCode JPEG = 0x4A504547, Creator = 0x3842494D; // '8BIM'

QByteArray be32(quint32 v)
{
    QByteArray b(4, '\0');
    qToBigEndian(v, b.data());
    return b;
}
QByteArray be16(quint16 v)
{
    QByteArray b(2, '\0');
    qToBigEndian(v, b.data());
    return b;
}

/// A resource file laid out by hand: one resource per type, the map after the data, no names.
QByteArray handMadeFork(const QList<std::tuple<QByteArray, qint16, QByteArray>> &resources)
{
    QByteArray data;
    QByteArray types = be16(quint16(resources.size() - 1));
    QByteArray references;
    const int referencesAt = 2 + 8 * int(resources.size());
    for (const auto &[type, id, bytes] : resources) {
        types += type + be16(0) + be16(quint16(referencesAt + references.size()));
        references
            += be16(quint16(id)) + be16(0xffff) + char(0) + be32(quint32(data.size())).mid(1) + be32(0);
        data += be32(quint32(bytes.size())) + bytes;
    }
    const QByteArray typeList = types + references;
    const quint32 mapLength = 28 + quint32(typeList.size());
    const QByteArray header
        = be32(256) + be32(256 + quint32(data.size())) + be32(quint32(data.size())) + be32(mapLength);
    const QByteArray map
        = header + be32(0) + be16(0) + be16(0) + be16(28) + be16(quint16(mapLength)) + typeList;
    return header + QByteArray(240, '\0') + data + map;
}

QByteArray attribute(const QString &path, const char *name)
{
    QByteArray buffer(128 * 1024, '\0');
    const ssize_t n
        = getxattr(QFile::encodeName(path).constData(), name, buffer.data(), size_t(buffer.size()));
    return n < 0 ? QByteArray() : buffer.left(n);
}

bool setAttribute(const QString &path, const char *name, const QByteArray &value)
{
    return setxattr(QFile::encodeName(path).constData(), name, value.constData(), size_t(value.size()), 0)
        == 0;
}

class ResourceForkFile : public testing::Test
{
protected:
    TempDir dir;
    QString file = dir.file(u"f.txt"_s);
    QString companion = dir.file(u"._f.txt"_s);
};

} // namespace

TEST(FinderInfo, CodesAndTheirQuotedStrings)
{
    EXPECT_EQ(fileTypeCodeToString(JPEG), u"'JPEG'"_s);
    EXPECT_EQ(fileTypeCodeToString(0x50444620), u"'PDF '"_s);
    EXPECT_EQ(fileTypeCodeToString(0), u""_s);
    EXPECT_EQ(fileTypeCodeFromString(u"'JPEG'"), JPEG);
    EXPECT_EQ(fileTypeCodeFromString(u"JPEG"), JPEG);
    for (const char16_t *bad : { u"", u"''", u"JPG", u"'JPG'", u"'JPEGX'", u"JPEGX", u"'\u20acPEG'" })
        EXPECT_EQ(fileTypeCodeFromString(bad), 0u) << QString::fromUtf16(bad);
    // Bytes above 0x7f survive the trip through the string.
    EXPECT_EQ(fileTypeCodeFromString(fileTypeCodeToString(0xA9ff0001)), 0xA9ff0001u);
}

TEST_F(ResourceForkFile, SettingCodesWritesThemBigEndianKeepingTheOtherBytes)
{
    ASSERT_TRUE(orvel::test::writeBytes(file, "x"));
    ASSERT_TRUE(setHFSTypeCodeOfFile(file, JPEG));
    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));
    EXPECT_EQ(attribute(file, FinderInfoAttributeName), QByteArray("JPEG8BIM") + QByteArray(24, '\0'));
    EXPECT_EQ(HFSTypeOfFile(file), u"'JPEG'"_s);
    EXPECT_EQ(HFSCreatorCodeOfFile(file), Creator);
    ASSERT_TRUE(setHFSTypeCodeOfFile(file, 0));
    EXPECT_EQ(HFSTypeOfFile(file), u""_s) << "a zero type is no type";
    EXPECT_EQ(HFSCreatorCodeOfFile(file), Creator);

    QByteArray expected(32, '\0');
    for (int i = 0; i < 32; ++i)
        expected[i] = char(0xE0 + i % 16);
    ASSERT_TRUE(setAttribute(file, FinderInfoAttributeName, expected));
    ASSERT_TRUE(setHFSTypeCodeOfFile(file, JPEG));
    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));
    EXPECT_EQ(attribute(file, FinderInfoAttributeName), expected.replace(0, 8, "JPEG8BIM"));
}

TEST_F(ResourceForkFile, MissingOrShortFinderInfoReadsAsPaddedWithZeros)
{
    ASSERT_TRUE(orvel::test::writeBytes(file, "x"));
    EXPECT_EQ(HFSTypeCodeOfFile(file), 0u);
    EXPECT_FALSE(setHFSTypeCodeOfFile(dir.file(u"missing"_s), JPEG));

    ASSERT_TRUE(setAttribute(file, FinderInfoAttributeName, "TEXT"));
    EXPECT_EQ(HFSTypeOfFile(file), u"'TEXT'"_s);
    EXPECT_EQ(HFSCreatorCodeOfFile(file), 0u);
    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));
    EXPECT_EQ(attribute(file, FinderInfoAttributeName), QByteArray("TEXT8BIM") + QByteArray(24, '\0'));
}

TEST_F(ResourceForkFile, AddReplaceRemoveAndReadBackInTheAttribute)
{
    EXPECT_EQ(ResourceFork::resourceForkForReadingAtPath(file), nullptr) << "no file, no fork";
    // Names of 256 characters and missing folders cannot be opened for writing.
    EXPECT_EQ(ResourceFork::resourceForkForWritingAtPath(dir.file(QString(256, u'n'))), nullptr);
    EXPECT_EQ(ResourceFork::resourceForkForWritingAtPath(dir.file(u"missing/f"_s)), nullptr);
    EXPECT_EQ(ResourceFork::resourceForkForWritingAtPath(QString()), nullptr);
    {
        auto fork = ResourceFork::resourceForkForWritingAtPath(file);
        ASSERT_NE(fork, nullptr);
        EXPECT_TRUE(QFile::exists(file)) << "opening for writing makes the file";
        EXPECT_TRUE(fork->addData("first", TEXT, 256));
        EXPECT_TRUE(fork->addData("https://example.org/", URL, 256));
        EXPECT_TRUE(fork->addData("second", TEXT, 256)) << "the same type and ID is replaced";
        EXPECT_TRUE(fork->addData(QByteArray(""), TEXT, -1)) << "empty data is data";
        EXPECT_FALSE(fork->addData(QByteArray(), TEXT, 7)) << "null data is refused";
        EXPECT_TRUE(fork->removeType(DRAG, 128)) << "removing what is not there answers yes";
        EXPECT_EQ(fork->storage(), ResourceFork::Storage::Attribute);
    }
    EXPECT_FALSE(QFile::exists(companion));

    // Opening again, for writing, finds the fork that is there.
    auto fork = ResourceFork::resourceForkForReadingAtPath(file);
    ASSERT_NE(fork, nullptr);
    EXPECT_EQ(fork->dataForType(TEXT, 256), "second");
    EXPECT_EQ(fork->dataForType(URL, 256), "https://example.org/");
    EXPECT_TRUE(fork->dataForType(TEXT, -1).isEmpty());
    EXPECT_FALSE(fork->dataForType(TEXT, -1).isNull());
    EXPECT_TRUE(fork->dataForType(TEXT, 1).isNull());
    EXPECT_FALSE(fork->addData("x", TEXT, 2)) << "a fork opened for reading takes nothing";
    EXPECT_FALSE(fork->removeType(TEXT, 256));

    auto writable = ResourceFork::initForWritingAtPath(file);
    ASSERT_TRUE(writable);
    ASSERT_TRUE(writable->removeType(TEXT, 256));
    const QByteArray raw = attribute(file, ResourceFork::AttributeName);
    EXPECT_EQ(raw, writable->data());
    const auto reread = ResourceFork::fromData(raw);
    ASSERT_TRUE(reread);
    EXPECT_EQ(
        reread->resources(), (std::vector<std::pair<FileTypeCode, qint16>> { { URL, 256 }, { TEXT, -1 } }));
}

TEST_F(ResourceForkFile, AForkTooLargeForAnAttributeMovesToTheCompanionAndBack)
{
    auto fork = ResourceFork::resourceForkForWritingAtPath(file);
    ASSERT_NE(fork, nullptr);
    ASSERT_TRUE(fork->addData("small", TEXT, 1));
    ASSERT_FALSE(attribute(file, ResourceFork::AttributeName).isEmpty());

    // Past what any Linux attribute takes (64 KiB), whatever the file system.
    QByteArray big(200 * 1024, '\0');
    for (qsizetype i = 0; i < big.size(); ++i)
        big[i] = char(i * 7 % 251);
    ASSERT_TRUE(fork->addData(big, ICNS, -16455));
    EXPECT_EQ(fork->storage(), ResourceFork::Storage::AppleDouble);
    EXPECT_TRUE(attribute(file, ResourceFork::AttributeName).isEmpty()) << "the old attribute would hide it";
    const std::optional<AppleDouble> ad = AppleDouble::readForFile(file);
    ASSERT_TRUE(ad);
    EXPECT_EQ(ad->resourceFork(), fork->data());

    auto reader = ResourceFork::resourceForkForReadingAtPath(file);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->dataForType(ICNS, -16455), big);
    EXPECT_EQ(reader->dataForType(TEXT, 1), "small");

    ASSERT_TRUE(fork->removeType(ICNS, -16455));
    EXPECT_EQ(fork->storage(), ResourceFork::Storage::Attribute);
    EXPECT_FALSE(QFile::exists(companion)) << "a companion with nothing left to say is removed";

    // A link in the companion's place is neither followed nor replaced.
    const QString elsewhere = dir.file(u"elsewhere"_s);
    ASSERT_TRUE(AppleDouble::writeForFile(elsewhere, *ad));
    ASSERT_TRUE(QFile::link(u"._elsewhere"_s, companion));
    EXPECT_FALSE(AppleDouble::readForFile(file));
    EXPECT_FALSE(fork->addData(big, ICNS, -16455));
    EXPECT_EQ(orvel::test::readBytes(dir.file(u"._elsewhere"_s)), ad->toBytes());
}

TEST_F(ResourceForkFile, StringsArePascalStringsOfAtMost255Characters)
{
    auto fork = ResourceFork::resourceForkForWritingAtPath(file);
    ASSERT_NE(fork, nullptr);
    EXPECT_FALSE(fork->addString(QString(256, u'a'), TEXT, 1));
    EXPECT_TRUE(fork->dataForType(TEXT, 1).isNull());
    ASSERT_TRUE(fork->addString(QString(255, u'b'), TEXT, 1));
    const QByteArray stored = fork->dataForType(TEXT, 1);
    ASSERT_EQ(stored.size(), 256);
    EXPECT_EQ(quint8(stored[0]), 255);
    EXPECT_EQ(stored.mid(1), QByteArray(255, 'b'));
    ASSERT_TRUE(fork->addString(u"Grüße €", TEXT, 2));
    EXPECT_EQ(fork->dataForType(TEXT, 2), QByteArray("\x07Gr??e ?"));
}

TEST_F(ResourceForkFile, AWebLocationAndItsFinderInfoAsAMacLeavesThemOnAForeignVolume)
{
    // The fork of a web location: 'drag' 128 listing 'TEXT' 256 and 'url ' 256.
    const QByteArray url = "https://example.org/a?b=c";
    QByteArray drag = QByteArray(32, '\0');
    drag[7] = 1;
    drag[26] = 2;
    for (const char *type : { "TEXT", "url " })
        drag += QByteArray(type) + QByteArray(2, '\0') + be16(256) + QByteArray(16, '\0');
    const QByteArray fork
        = handMadeFork({ { "drag", 128, drag }, { "TEXT", 256, url }, { "url ", 256, url } });

    // The companion: filler, the Finder info with the Mac's attribute block after its 32 bytes, the fork.
    const QByteArray finderInfo = QByteArray("ilhtMACS") + be16(0x0400) + QByteArray(22, '\0');
    const QByteArray attributeBlock
        = QByteArray(2, '\0') + "ATTR" + QByteArray(28, '\x11') + QByteArray(3700, '\0');
    const QByteArray entry9 = finderInfo + attributeBlock;
    const quint32 entry9At = 26 + 2 * 12, forkAt = entry9At + quint32(entry9.size());
    const QByteArray bytes = be32(0x00051607) + be32(0x00020000) + "Mac OS X        " + be16(2) + be32(9)
        + be32(entry9At) + be32(quint32(entry9.size())) + be32(2) + be32(forkAt) + be32(quint32(fork.size()))
        + entry9 + fork;
    ASSERT_TRUE(orvel::test::writeBytes(file, "<plist/>"));
    ASSERT_TRUE(orvel::test::writeBytes(companion, bytes));

    auto reader = ResourceFork::resourceForkForReadingAtPath(file);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->storage(), ResourceFork::Storage::AppleDouble);
    EXPECT_EQ(reader->dataForType(DRAG, 128), drag);
    EXPECT_EQ(reader->dataForType(TEXT, 256), url);
    EXPECT_EQ(reader->dataForType(URL, 256), url);
    EXPECT_EQ(HFSTypeOfFile(file), u"'ilht'"_s);
    EXPECT_EQ(HFSCreatorCodeOfFile(file), 0x4d414353u);
    EXPECT_TRUE(hasCustomIconOfFile(file));

    // Writing through keeps what the Mac put after the Finder info.
    auto writer = ResourceFork::resourceForkForWritingAtPath(file);
    ASSERT_NE(writer, nullptr);
    ASSERT_TRUE(writer->addData(QByteArray(100 * 1024, 'i'), ICNS, -16455));
    const std::optional<AppleDouble> ad = AppleDouble::readForFile(file);
    ASSERT_TRUE(ad);
    EXPECT_EQ(ad->entry(AppleDouble::FinderInfoEntry), entry9);
    EXPECT_EQ(ad->toBytes().mid(24, 14), bytes.mid(24, 14)) << "the Finder info stays at offset 50";
    EXPECT_EQ(ResourceFork::resourceForkForReadingAtPath(file)->dataForType(URL, 256), url);
}

TEST_F(ResourceForkFile, FinderInfoGoesToTheCompanionWhereTheFileTakesNoAttribute)
{
    // Linux keeps user attributes off special files: a pipe stands for such a file system.
    const QString pipe = dir.file(u"pipe"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    ASSERT_TRUE(setHFSTypeCodeOfFile(pipe, JPEG));
    ASSERT_TRUE(setHasCustomIconOfFile(pipe, true));
    EXPECT_TRUE(attribute(pipe, FinderInfoAttributeName).isEmpty());
    const std::optional<AppleDouble> ad = AppleDouble::readForFile(pipe);
    ASSERT_TRUE(ad);
    EXPECT_EQ(ad->finderInfo(), QByteArray("JPEG\0\0\0\0\x04\0", 10) + QByteArray(22, '\0'));
    EXPECT_EQ(HFSTypeOfFile(pipe), u"'JPEG'"_s);
    EXPECT_EQ(finderFlagsOfFile(pipe), FinderFlag::HasCustomIcon);
    ASSERT_TRUE(setFinderFlagsOfFile(pipe, FinderFlag::IsInvisible | 0x0004));
    EXPECT_FALSE(hasCustomIconOfFile(pipe));
    EXPECT_EQ(finderFlagsOfFile(pipe), 0x4004);
}

namespace {
// Offsets in the hand-made fork: map at 256 + 15 (data), type list at map + 28.
constexpr int Map = 256 + 15, Types = Map + 28, Refs = Types + 2 + 16;
void put16(QByteArray &b, int at, quint16 v) { b.replace(at, 2, be16(v)); }
void put32(QByteArray &b, int at, quint32 v) { b.replace(at, 4, be32(v)); }
} // namespace

TEST_F(ResourceForkFile, AHostileForkIsRefusedWholeAndLeftAsItIs)
{
    // Each case damages a well-formed two-type fork.
    const struct
    {
        const char *name;
        std::function<void(QByteArray &)> damage;
    } cases[] = { { "truncated header", [](QByteArray &b) { b.truncate(12); } },
        { "truncated map", [](QByteArray &b) { b.chop(1); } },
        { "data past the end", [](QByteArray &b) { put32(b, 8, 0x7fffffff); } },
        { "map past the end", [](QByteArray &b) { put32(b, 4, 0xfffffff0); } },
        { "map shorter than its header", [](QByteArray &b) { put32(b, 12, 20); } },
        { "data over the map", [](QByteArray &b) { put32(b, 8, 40); } },
        { "type list in the map header", [](QByteArray &b) { put16(b, Map + 24, 4); } },
        { "type list past the map", [](QByteArray &b) { put16(b, Map + 24, 0xfff0); } },
        { "32768 types", [](QByteArray &b) { put16(b, Types, 0x7fff); } },
        { "negative type count", [](QByteArray &b) { put16(b, Types, 0x8000); } },
        { "65536 references", [](QByteArray &b) { put16(b, Types + 2 + 4, 0xffff); } },
        { "references over the type items", [](QByteArray &b) { put16(b, Types + 2 + 6, 4); } },
        { "two types share a list", [](QByteArray &b) { put16(b, Types + 2 + 8 + 6, 18); } },
        { "data offset past the data", [](QByteArray &b) { b[Refs + 12 + 5] = char(0x7f); } },
        { "length past the data", [](QByteArray &b) { put32(b, 256 + 7, 0xffffffff); } },
        { "two resources share data", [](QByteArray &b) { b[Refs + 12 + 7] = 0; } },
        { "name past the map", [](QByteArray &b) { put16(b, Refs + 2, 0x0100); } },
        { "name list in the map header", [](QByteArray &b) { put16(b, Map + 26, 2); } } };
    const QByteArray good = handMadeFork({ { "TEXT", 1, "abc" }, { "url ", 2, "defg" } });
    ASSERT_TRUE(ResourceFork::fromData(good));
    ASSERT_TRUE(orvel::test::writeBytes(file, "x"));
    for (const auto &c : cases) {
        QByteArray bad = good;
        c.damage(bad);
        EXPECT_FALSE(ResourceFork::fromData(bad)) << c.name;
        ASSERT_TRUE(setAttribute(file, ResourceFork::AttributeName, bad));
        EXPECT_EQ(ResourceFork::resourceForkForReadingAtPath(file), nullptr) << c.name;
        EXPECT_EQ(ResourceFork::resourceForkForWritingAtPath(file), nullptr) << c.name;
        EXPECT_EQ(attribute(file, ResourceFork::AttributeName), bad) << c.name;
    }
}

TEST(AppleDouble, DamagedCompanionsAreRefusedOddButSoundOnesRead)
{
    AppleDouble ad;
    ad.setFinderInfo("TEXTttxt");
    ad.setResourceFork("fork");
    const QByteArray good = ad.toBytes();
    ASSERT_TRUE(AppleDouble::fromBytes(good));
    EXPECT_EQ(AppleDouble::fromBytes(good)->resourceFork(), "fork");

    const auto damaged
        = [&good](int at, const QByteArray &with) { return QByteArray(good).replace(at, with.size(), with); };
    EXPECT_FALSE(AppleDouble::fromBytes(good.left(25)));
    EXPECT_FALSE(AppleDouble::fromBytes(damaged(0, be32(0x00051600)))) << "an AppleSingle file";
    EXPECT_FALSE(AppleDouble::fromBytes(damaged(4, be32(0x00030000))));
    EXPECT_FALSE(AppleDouble::fromBytes(damaged(24, be16(0xffff)))) << "more descriptors than bytes";
    EXPECT_FALSE(AppleDouble::fromBytes(damaged(26 + 12 + 8, be32(5)))) << "an entry past the end";
    EXPECT_FALSE(AppleDouble::fromBytes(damaged(26 + 4, be32(0)))) << "an entry over the descriptors";
    EXPECT_FALSE(AppleDouble::fromBytes(damaged(26 + 12, be32(0)))) << "entry number 0";
    // The same bytes claimed over and over would multiply a small file.
    AppleDouble large;
    large.setEntry(AppleDouble::FinderInfoEntry, QByteArray(1000, 'f'));
    large.setResourceFork("fork");
    QByteArray shared = large.toBytes();
    put32(shared, 26 + 12 + 4, 50);
    put32(shared, 26 + 12 + 8, 1000);
    ASSERT_EQ(shared.size(), 1054);
    EXPECT_FALSE(AppleDouble::fromBytes(shared));

    const std::optional<AppleDouble> one = AppleDouble::fromBytes(damaged(4, be32(0x00010000)));
    ASSERT_TRUE(one) << "version 1 is read";
    EXPECT_EQ(one->finderInfo().left(8), "TEXTttxt");
    // A second entry of a number already seen is ignored.
    QByteArray twice = good;
    put32(twice, 26 + 12, 9);
    put32(twice, 26 + 12 + 8, 0);
    const std::optional<AppleDouble> first = AppleDouble::fromBytes(twice);
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->resourceFork().isNull());
    EXPECT_EQ(first->finderInfo().left(4), "TEXT");

    EXPECT_EQ(AppleDouble::pathForFile(u"/a/b.png"_s), u"/a/._b.png"_s);
    EXPECT_EQ(AppleDouble::pathForFile(u"b"_s), u"._b"_s);
    EXPECT_TRUE(AppleDouble::pathForFile(u"/a/"_s).isEmpty());
}
