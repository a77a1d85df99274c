// Type and creator codes in the Finder info extended attribute of real files.
#include "files/FinderInfo.h"

#include "testlib/TestSupport.h"

#include <QFile>
#include <gtest/gtest.h>

#include <sys/xattr.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;

namespace {

constexpr FileTypeCode JPEG = 0x4A504547; // 'JPEG'
constexpr FileTypeCode Creator = 0x3842494D; // '8BIM'

/// A plain file in a temporary folder, with its Finder info read and written as raw bytes.
class FinderInfoFile : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(orvel::test::writeBytes(file, "x")); }
    QByteArray raw() const
    {
        QByteArray buffer(64, '\0');
        const ssize_t n = getxattr(path(), FinderInfoAttributeName, buffer.data(), 64);
        return n < 0 ? QByteArray() : buffer.left(n);
    }
    bool setRaw(const QByteArray &bytes) const
    {
        return setxattr(path(), FinderInfoAttributeName, bytes.constData(), size_t(bytes.size()), 0) == 0;
    }
    const char *path() const { return encoded.constData(); }

    TempDir dir;
    QString file = dir.file(u"f.jpg"_s);
    QByteArray encoded = QFile::encodeName(file);
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

TEST_F(FinderInfoFile, SettingCodesWritesThemBigEndianKeepingTheOtherBytes)
{
    ASSERT_TRUE(setHFSTypeCodeOfFile(file, JPEG));
    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));
    EXPECT_EQ(raw(), QByteArray("JPEG8BIM") + QByteArray(24, '\0'));
    EXPECT_EQ(HFSTypeOfFile(file), u"'JPEG'"_s);
    EXPECT_EQ(HFSTypeCodeOfFile(file), JPEG);
    EXPECT_EQ(HFSCreatorCodeOfFile(file), Creator);
    ASSERT_TRUE(setHFSTypeCodeOfFile(file, 0));
    EXPECT_EQ(HFSTypeOfFile(file), u""_s) << "a zero type is no type";
    EXPECT_EQ(HFSCreatorCodeOfFile(file), Creator);

    QByteArray expected(32, '\0');
    for (int i = 0; i < 32; ++i)
        expected[i] = char(0xE0 + i % 16);
    ASSERT_TRUE(setRaw(expected));
    ASSERT_TRUE(setHFSTypeCodeOfFile(file, JPEG));
    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));
    EXPECT_EQ(raw(), expected.replace(0, 8, "JPEG8BIM"));
}

TEST_F(FinderInfoFile, MissingOrShortAttributeReadsAsPaddedWithZeros)
{
    EXPECT_EQ(HFSTypeOfFile(file), u""_s);
    EXPECT_EQ(HFSTypeCodeOfFile(file), 0u);
    EXPECT_EQ(HFSTypeCodeOfFile(dir.file(u"missing"_s)), 0u);
    EXPECT_FALSE(setHFSTypeCodeOfFile(dir.file(u"missing"_s), JPEG));

    ASSERT_TRUE(setRaw("TEXT"));
    EXPECT_EQ(HFSTypeOfFile(file), u"'TEXT'"_s);
    EXPECT_EQ(HFSCreatorCodeOfFile(file), 0u);
    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));
    EXPECT_EQ(raw(), QByteArray("TEXT8BIM") + QByteArray(24, '\0'));
}
