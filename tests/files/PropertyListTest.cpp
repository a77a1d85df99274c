// Property lists: XML round trips, binary reading, and hostile input answered with nullopt.
#include "files/PropertyList.h"

#include "testlib/TestSupport.h"

#include <QDateTime>
#include <QFile>
#include <QPoint>
#include <QtEndian>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

/// A binary property list of the given objects (each already encoded), object 0 at the top.
QByteArray binaryList(const QList<QByteArray> &objects, int refSize = 1)
{
    QByteArray data = "bplist00";
    QList<quint32> offsets;
    for (const QByteArray &object : objects) {
        offsets.append(quint32(data.size()));
        data += object;
    }
    const quint64 table = quint64(data.size());
    for (quint32 offset : offsets) {
        const quint32 be = qToBigEndian(offset);
        data += QByteArray(reinterpret_cast<const char *>(&be), 4);
    }
    QByteArray trailer(32, '\0');
    trailer[6] = 4;
    trailer[7] = char(refSize);
    qToBigEndian(quint64(objects.size()), trailer.data() + 8);
    qToBigEndian(table, trailer.data() + 24);
    return data + trailer;
}

QByteArray reference(quint32 ref, int size)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(ref, bytes.data());
    return bytes.right(size);
}

} // namespace

TEST(PropertyList, EveryTypeSurvivesAnXmlRoundTripThroughAFile)
{
    TempDir dir;
    const QDateTime when = QDateTime::fromString(u"2024-02-29T12:34:56Z"_s, Qt::ISODate);
    const QVariantMap value { { u"userName"_s, u"zoë"_s }, { u"processNumber"_s, qint64(4242) },
        { u"negative"_s, qint64(-7) }, { u"ratio"_s, 0.25 }, { u"flag"_s, true },
        { u"bytes"_s, QByteArray("\0\1\2<&>", 6) }, { u"when"_s, when },
        { u"nested"_s, QVariantList { u"a"_s, QVariantMap { { u"k"_s, false } }, QVariantList {} } } };
    ASSERT_TRUE(writePropertyListToFile(value, dir.file(u"lock.plist"_s)));
    const auto read = propertyListFromFile(dir.file(u"lock.plist"_s));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->toMap(), value);
}

TEST(PropertyList, ReadsABinaryList)
{
    // {"a": 5, "list": ["xy", true]}
    const QByteArray data = binaryList({ "\xD2\x01\x02\x03\x04",
        "\x51"
        "a",
        "\x54list", "\x10\x05", "\xA2\x05\x06", "\x52xy", "\x09" });
    const auto read = propertyListFromData(data);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->toMap(),
        (QVariantMap { { u"a"_s, qint64(5) }, { u"list"_s, QVariantList { u"xy"_s, true } } }));
}

TEST(PropertyList, HostileOrBrokenInputAnswersNullopt)
{
    // Arrays nested far deeper than any real list, in both formats.
    QByteArray deepXml = "<?xml version=\"1.0\"?><plist version=\"1.0\">";
    deepXml += QByteArray("<array>").repeated(200000) + QByteArray("</array>").repeated(200000) + "</plist>";
    EXPECT_FALSE(propertyListFromData(deepXml));

    QList<QByteArray> chain;
    for (quint32 i = 0; i < 100000; ++i)
        chain.append(i + 1 < 100000 ? "\xA1" + reference(i + 1, 4) : QByteArray("\x08"));
    EXPECT_FALSE(propertyListFromData(binaryList(chain, 4)));

    // An array that holds itself, a reference past the objects, a truncated file, plain garbage.
    EXPECT_FALSE(propertyListFromData(binaryList({ "\xA1\x00" })));
    EXPECT_FALSE(propertyListFromData(binaryList({ "\xA1\x07" })));
    const QByteArray good = binaryList({ "\xA1\x01", "\x08" });
    ASSERT_TRUE(propertyListFromData(good));
    for (qsizetype cut = 1; cut < good.size(); ++cut)
        EXPECT_FALSE(propertyListFromData(good.left(cut))) << cut;
    EXPECT_FALSE(propertyListFromData("<plist><dict><key>a</key>"));
    EXPECT_FALSE(propertyListFromData(QByteArray(1000, '\xff')));
}

TEST(PropertyList, AHugeFileIsRefusedAndAFailedWriteKeepsTheOldFile)
{
    TempDir dir;
    const QString huge = dir.file(u"huge.plist"_s);
    QFile file(huge);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\"?><plist><string>");
    ASSERT_TRUE(file.resize(MaxPropertyListSize + 100));
    file.close();
    EXPECT_FALSE(propertyListFromFile(huge));
    EXPECT_FALSE(propertyListFromFile(dir.file(u"missing.plist"_s)));

    const QString path = dir.file(u"kept.plist"_s);
    ASSERT_TRUE(writePropertyListToFile(QVariantMap { { u"a"_s, 1 } }, path));
    QString error;
    EXPECT_FALSE(writePropertyListToFile(QVariant::fromValue(QPoint(1, 2)), path, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(propertyListFromFile(path)->toMap().value(u"a"_s), qint64(1));
    EXPECT_FALSE(writePropertyListToFile(QVariantMap { { u"a"_s, 1 } }, u"/dev/full"_s));
}

TEST(PropertyList, SharedReferencesAreCountedAsOftenAsTheyAreNamed)
{
    // Twenty arrays each naming the next fifteen times: 15^20 values from 400 bytes, within the depth limit.
    QList<QByteArray> bomb;
    for (quint32 i = 0; i < 20; ++i)
        bomb.append("\xAF\x10\x0F" + reference(i + 1, 1).repeated(15));
    bomb.append("\x09");
    EXPECT_FALSE(propertyListFromData(binaryList(bomb)));

    // One string named nine times through three arrays: 13 values, the limit met exactly.
    const QByteArray shared = binaryList({ "\xA3\x01\x01\x01", "\xA3\x02\x02\x02", "\x51x" });
    const auto read = propertyListFromData(shared, { .maxNodes = 13 });
    ASSERT_TRUE(read);
    EXPECT_EQ(read->toList().at(2).toList(), (QVariantList { u"x"_s, u"x"_s, u"x"_s }));
    EXPECT_FALSE(propertyListFromData(shared, { .maxNodes = 12 }));
    EXPECT_FALSE(propertyListFromData(shared, { .maxDepth = 1 }));
    // A dictionary's keys are not values: {"k": ["x", "x", "x"]} is five.
    const QByteArray dict = binaryList({ "\xD1\x01\x02", "\x51k", "\xA3\x03\x03\x03", "\x51x" });
    EXPECT_TRUE(propertyListFromData(dict, { .maxNodes = 5 }));
    EXPECT_FALSE(propertyListFromData(dict, { .maxNodes = 4 }));

    // XML shares nothing, yet is held to the same count.
    const QByteArray xml
        = "<plist version=\"1.0\"><array>" + QByteArray("<true/>").repeated(12) + "</array></plist>";
    EXPECT_TRUE(propertyListFromData(xml, { .maxNodes = 13 }));
    EXPECT_FALSE(propertyListFromData(xml, { .maxNodes = 12 }));
}
