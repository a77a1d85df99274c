// Type and creator codes in the Finder info extended attribute of real files.
#include "files/FinderInfo.h"

#include "testlib/TestSupport.h"

#include <QFile>
#include <gtest/gtest.h>

#include <sys/xattr.h>

using namespace orvel;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

constexpr FileTypeCode JPEG = 0x4A504547; // 'JPEG'
constexpr FileTypeCode Creator = 0x3842494D; // '8BIM'

QByteArray rawFinderInfo(const QString &path)
{
    QByteArray buffer(64, '\0');
    const ssize_t n
        = getxattr(QFile::encodeName(path).constData(), FinderInfoAttributeName, buffer.data(), 64);
    return n < 0 ? QByteArray() : buffer.left(n);
}

bool setRawFinderInfo(const QString &path, const QByteArray &bytes)
{
    return setxattr(QFile::encodeName(path).constData(), FinderInfoAttributeName, bytes.constData(),
               size_t(bytes.size()), 0)
        == 0;
}

} // namespace

TEST(FinderInfo, CodesAndTheirQuotedStrings)
{
    EXPECT_EQ(fileTypeCodeToString(JPEG), "'JPEG'");
    EXPECT_EQ(fileTypeCodeToString(0x50444620), "'PDF '");
    EXPECT_EQ(fileTypeCodeToString(0), "");
    EXPECT_EQ(fileTypeCodeFromString(u"'JPEG'"), JPEG);
    EXPECT_EQ(fileTypeCodeFromString(u"JPEG"), JPEG);
    EXPECT_EQ(fileTypeCodeFromString(u"'PDF '"), 0x50444620u);
    for (const char16_t *bad : { u"", u"''", u"JPG", u"'JPG'", u"'JPEGX'", u"JPEGX", u"'\u20acPEG'" })
        EXPECT_EQ(fileTypeCodeFromString(bad), 0u) << QString::fromUtf16(bad).toStdString();
    // Bytes above 0x7f survive the trip through the string.
    EXPECT_EQ(fileTypeCodeFromString(fileTypeCodeToString(0xA9ff0001)), 0xA9ff0001u);
}

TEST(FinderInfo, FileWithoutTheAttributeHasNoCodes)
{
    TempDir dir;
    const QString file = dir.file("plain.jpg");
    ASSERT_TRUE(writeBytes(file, "x"));
    EXPECT_EQ(HFSTypeOfFile(file), "");
    EXPECT_EQ(HFSTypeCodeOfFile(file), 0u);
    EXPECT_EQ(HFSCreatorCodeOfFile(file), 0u);
    EXPECT_EQ(HFSTypeCodeOfFile(dir.file("missing")), 0u);
    EXPECT_FALSE(setHFSTypeCodeOfFile(dir.file("missing"), JPEG));
}

TEST(FinderInfo, SettingCodesCreatesBigEndianAttribute)
{
    TempDir dir;
    const QString file = dir.file("f");
    ASSERT_TRUE(writeBytes(file, "x"));
    ASSERT_TRUE(setHFSTypeCodeOfFile(file, JPEG));
    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));

    EXPECT_EQ(rawFinderInfo(file), QByteArray("JPEG8BIM") + QByteArray(24, '\0'));
    EXPECT_EQ(HFSTypeOfFile(file), "'JPEG'");
    EXPECT_EQ(HFSTypeCodeOfFile(file), JPEG);
    EXPECT_EQ(HFSCreatorCodeOfFile(file), Creator);

    ASSERT_TRUE(setHFSTypeCodeOfFile(file, 0));
    EXPECT_EQ(HFSTypeOfFile(file), "") << "a zero type is no type";
    EXPECT_EQ(HFSCreatorCodeOfFile(file), Creator);
}

TEST(FinderInfo, SettingACodeKeepsTheOtherBytes)
{
    TempDir dir;
    const QString file = dir.file("f");
    ASSERT_TRUE(writeBytes(file, "x"));
    QByteArray original(32, '\0');
    for (int i = 0; i < 32; ++i)
        original[i] = char(0xE0 + i % 16);
    ASSERT_TRUE(setRawFinderInfo(file, original));

    ASSERT_TRUE(setHFSTypeCodeOfFile(file, JPEG));
    QByteArray expected = original;
    expected.replace(0, 4, "JPEG");
    EXPECT_EQ(rawFinderInfo(file), expected);

    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));
    expected.replace(4, 4, "8BIM");
    EXPECT_EQ(rawFinderInfo(file), expected);
}

TEST(FinderInfo, ShortAttributeReadsAsPaddedWithZeros)
{
    TempDir dir;
    const QString file = dir.file("f");
    ASSERT_TRUE(writeBytes(file, "x"));
    ASSERT_TRUE(setRawFinderInfo(file, "TEXT"));
    EXPECT_EQ(HFSTypeOfFile(file), "'TEXT'");
    EXPECT_EQ(HFSCreatorCodeOfFile(file), 0u);
    ASSERT_TRUE(setHFSCreatorCodeOfFile(file, Creator));
    EXPECT_EQ(rawFinderInfo(file), QByteArray("TEXT8BIM") + QByteArray(24, '\0'));
}
