// The settings store on real files: fallbacks, conversions, types across instances, the file format.
#include "support/UserDefaults.h"

#include "testlib/TestSupport.h"

#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::readBytes;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

/// A store in a fresh file. reread() opens a copy of the file under another name, which makes
/// QSettings parse it anew (it shares what it has read among the objects of one file).
struct Store
{
    TempDir dir;
    UserDefaults defaults { dir.file("settings.conf") };
    int copies = 0;

    std::unique_ptr<UserDefaults> reread()
    {
        EXPECT_TRUE(defaults.synchronize());
        const QString copy = dir.file(u"copy%1.conf"_s.arg(++copies));
        EXPECT_TRUE(QFile::copy(defaults.filePath(), copy));
        return std::make_unique<UserDefaults>(copy);
    }
};

} // namespace

TEST(UserDefaults, OnlyAMissingKeyGivesTheDefault)
{
    Store s;
    EXPECT_TRUE(s.defaults.boolForKey("QuitWhenDone", true));
    EXPECT_EQ(s.defaults.integerForKey("width", 128), 128);
    EXPECT_EQ(s.defaults.floatForKey("quality", 0.8f), 0.8f);
    EXPECT_EQ(s.defaults.doubleForKey("scale", 2.5), 2.5);
    EXPECT_EQ(s.defaults.stringForKey("extension", "_thumb"), "_thumb");
    EXPECT_EQ(s.defaults.objectForKey("x", QVariant(7)), QVariant(7));

    EXPECT_FALSE(s.defaults.boolForKey("QuitWhenDone"));
    EXPECT_EQ(s.defaults.integerForKey("width"), 0);
    EXPECT_EQ(s.defaults.doubleForKey("scale"), 0.0);
    EXPECT_TRUE(s.defaults.stringForKey("extension").isNull());
    EXPECT_FALSE(s.defaults.objectForKey("x").isValid());

    // A present value wins over the default even when it is zero, false or empty.
    s.defaults.setObject(qint64(0), "width");
    s.defaults.setObject(false, "QuitWhenDone");
    s.defaults.setString("", "extension");
    EXPECT_EQ(s.defaults.integerForKey("width", 128), 0);
    EXPECT_FALSE(s.defaults.boolForKey("QuitWhenDone", true));
    EXPECT_EQ(s.defaults.stringForKey("extension", "_thumb"), "");
}

TEST(UserDefaults, OnlyDoubleFallsBackForAValueWithoutANumber)
{
    Store s;
    s.defaults.setObject(QVariantList { 1, 2 }, "list");
    s.defaults.setObject(QVariantMap { { "a", 1 } }, "map");
    for (const char *key : { "list", "map" }) {
        EXPECT_FALSE(s.defaults.boolForKey(key, true)) << key;
        EXPECT_EQ(s.defaults.integerForKey(key, 128), 0) << key;
        EXPECT_EQ(s.defaults.floatForKey(key, 1.5f), 0.0f) << key;
        EXPECT_EQ(s.defaults.doubleForKey(key, 2.5), 2.5) << key;
        EXPECT_EQ(s.defaults.stringForKey(key, "d"), "d") << key;
    }
    // A string that holds no number still has a double value: 0.
    s.defaults.setString("abc", "text");
    EXPECT_EQ(s.defaults.doubleForKey("text", 2.5), 0.0);
    EXPECT_EQ(s.defaults.integerForKey("text", 5), 0);
}

TEST(UserDefaults, StringsConvertByTheirLeadingNumber)
{
    Store s;
    const struct
    {
        const char *text;
        qint64 integer;
        double real;
        bool boolean;
    } cases[] = {
        { "7", 7, 7.0, true },
        { "3.9x", 3, 3.9, true },
        { "  -12abc", -12, -12.0, true },
        { "abc", 0, 0.0, false },
        { "", 0, 0.0, false },
        { "0", 0, 0.0, false },
        { "1e3", 1, 1000.0, true },
        { ".5", 0, 0.5, true },
        { "+4", 4, 4.0, true },
        { "99999999999999999999", std::numeric_limits<qint64>::max(), 1e20, true },
        { "YES", 0, 0.0, true },
        { "yes", 0, 0.0, true },
        { "true", 0, 0.0, true },
        { "TRUE", 0, 0.0, true },
        { "Y", 0, 0.0, true },
        { "no", 0, 0.0, false },
    };
    for (const auto &c : cases) {
        s.defaults.setString(c.text, "k");
        EXPECT_EQ(s.defaults.integerForKey("k", -1), c.integer) << c.text;
        EXPECT_DOUBLE_EQ(s.defaults.doubleForKey("k", -1), c.real) << c.text;
        EXPECT_FLOAT_EQ(s.defaults.floatForKey("k", -1), float(c.real)) << c.text;
        EXPECT_EQ(s.defaults.boolForKey("k", !c.boolean), c.boolean) << c.text;
        EXPECT_EQ(s.defaults.stringForKey("k", "d"), c.text);
    }
}

TEST(UserDefaults, NumbersAndBoolsConvertToEachOther)
{
    Store s;
    s.defaults.setObject(3.9, "real");
    s.defaults.setObject(-3.9, "negative");
    s.defaults.setObject(1e300, "huge");
    s.defaults.setObject(std::nan(""), "nan");
    s.defaults.setObject(5, "int");
    s.defaults.setObject(true, "bool");
    s.defaults.setObject(0.5, "half");
    EXPECT_EQ(s.defaults.integerForKey("real"), 3);
    EXPECT_EQ(s.defaults.integerForKey("negative"), -3);
    EXPECT_EQ(s.defaults.integerForKey("huge"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(s.defaults.integerForKey("nan"), 0);
    EXPECT_EQ(s.defaults.doubleForKey("int"), 5.0);
    EXPECT_EQ(s.defaults.integerForKey("bool"), 1);
    EXPECT_EQ(s.defaults.doubleForKey("bool"), 1.0);
    EXPECT_TRUE(s.defaults.boolForKey("half"));
    EXPECT_EQ(s.defaults.stringForKey("bool"), "1");
    EXPECT_EQ(s.defaults.stringForKey("half"), "0.5");
    EXPECT_EQ(s.defaults.stringForKey("int"), "5");
}

TEST(UserDefaults, TypesSurviveTheFile)
{
    Store s;
    s.defaults.setObject(128, "width");
    s.defaults.setObject(1.0, "scale");
    s.defaults.setObject(0.8f, "quality");
    s.defaults.setObject(-1e-300, "tiny");
    s.defaults.setObject(std::numeric_limits<double>::infinity(), "inf");
    s.defaults.setObject(true, "QuitWhenDone");
    s.defaults.setString("128", "extension");
    const QString tricky = u"a \"quoted\" \\ line\nnext\t\u00e9 \U0001F600 \u0001"_s;
    s.defaults.setString(tricky, "my key = odd");
    const QVariantMap nested { { "list", QVariantList { 1, 2.0, "three", false } },
        { "empty", QVariantMap() } };
    s.defaults.setObject(nested, "nested");

    const auto again = s.reread();
    const QVariant width = again->objectForKey("width");
    EXPECT_EQ(width.typeId(), QMetaType::LongLong);
    EXPECT_EQ(width.toLongLong(), 128);
    EXPECT_EQ(again->objectForKey("scale"), QVariant(1.0));
    EXPECT_EQ(again->objectForKey("scale").typeId(), QMetaType::Double);
    EXPECT_EQ(again->objectForKey("quality"), QVariant(0.8))
        << "a float is kept by its shortest decimal form";
    EXPECT_EQ(again->floatForKey("quality", 0), 0.8f);
    EXPECT_EQ(again->objectForKey("tiny"), QVariant(-1e-300));
    EXPECT_EQ(again->objectForKey("inf"), QVariant(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(again->objectForKey("QuitWhenDone").typeId(), QMetaType::Bool);
    EXPECT_EQ(again->objectForKey("extension"), QVariant(u"128"_s));
    EXPECT_EQ(again->objectForKey("my key = odd"), QVariant(tricky));
    EXPECT_EQ(again->objectForKey("nested"), QVariant(nested));
    EXPECT_EQ(again->objectForKey("nested").toMap()["list"].toList()[1].typeId(), QMetaType::Double);
    EXPECT_EQ(again->keys(), s.defaults.keys());
}

TEST(UserDefaults, FileIsReadableText)
{
    Store s;
    s.defaults.setObject(128, "width");
    s.defaults.setObject(1.0, "scale");
    s.defaults.setObject(true, "QuitWhenDone");
    s.defaults.setString("_thumb", "extension");
    ASSERT_TRUE(s.defaults.synchronize());
    const QByteArray text = readBytes(s.defaults.filePath());
    for (const char *line :
        { "\nwidth = 128\n", "\nscale = 1.0\n", "\nQuitWhenDone = true\n", "\nextension = \"_thumb\"\n" })
        EXPECT_TRUE(text.contains(line)) << line << " in\n" << text.toStdString();
}

TEST(UserDefaults, MalformedLinesAreSkipped)
{
    TempDir dir;
    const QString path = dir.file("settings.conf");
    ASSERT_TRUE(writeBytes(path,
        "# comment\r\nwidth = 128\r\ngarbage line\nheight =\nname = \"unterminated\n"
        "list = [1, 2\nx = 12abc\n= 5\nquality=0.8   \n\xff\xfe = 1\ny = \"\\q\"\n"
        "sizing = 1 2\n\"quoted key\" = [ ]\n"));
    UserDefaults defaults(path);
    EXPECT_EQ(defaults.keys(), QStringList({ "quality", "quoted key", "width" }));
    EXPECT_EQ(defaults.integerForKey("width", 0), 128);
    EXPECT_EQ(defaults.doubleForKey("quality", 0), 0.8);
    EXPECT_EQ(defaults.integerForKey("height", 16), 16);

    // Writing keeps what could be read.
    defaults.setObject(3, "sharpen");
    ASSERT_TRUE(defaults.synchronize());
    ASSERT_TRUE(QFile::copy(path, dir.file("copy.conf")));
    EXPECT_EQ(UserDefaults(dir.file("copy.conf")).keys(),
        QStringList({ "quality", "quoted key", "sharpen", "width" }));
}

TEST(UserDefaults, ChangeByAnotherWriterIsSeen)
{
    Store s;
    s.defaults.setObject(100, "width");
    ASSERT_TRUE(s.defaults.synchronize());
    ASSERT_TRUE(writeBytes(s.defaults.filePath(), "width = 640\nheight = 480\n"));
    EXPECT_EQ(s.defaults.integerForKey("width", 0), 640);
    EXPECT_EQ(s.defaults.integerForKey("height", 0), 480);
}

TEST(UserDefaults, MissingFileIsAnEmptyStoreUntilPendingChangesAreWrittenWhenTheStoreGoes)
{
    TempDir dir;
    const QString path = dir.file("not/yet/settings.conf");
    {
        UserDefaults defaults(path);
        EXPECT_TRUE(defaults.keys().isEmpty());
        EXPECT_TRUE(defaults.dictionaryRepresentation().isEmpty());
        defaults.setObject(42, "width");
    }
    EXPECT_TRUE(readBytes(path).contains("\nwidth = 42\n"));
}

TEST(UserDefaults, SynchronizeReportsAFailedWrite)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file("file"), "x"));
    UserDefaults defaults(dir.file("file/settings.conf"));
    defaults.setObject(1, "a");
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(defaults.integerForKey("a", 7), 1) << "the change stays pending";
}

TEST(UserDefaults, SetValueNullRemovesTheKeyButAnEmptyKeyNothing)
{
    Store s;
    s.defaults.setValue(64, "width");
    EXPECT_EQ(s.defaults.integerForKey("width", 128), 64);
    s.defaults.setValue(QVariant(), "width");
    EXPECT_EQ(s.defaults.integerForKey("width", 128), 128);
    s.defaults.setValue(QVariant::fromValue(nullptr), "height");
    s.defaults.setValue(32, "height");
    s.defaults.setValue(QVariant::fromValue(nullptr), "height");
    EXPECT_FALSE(s.defaults.objectForKey("height").isValid());
    EXPECT_FALSE(s.reread()->objectForKey("width").isValid());
    // An empty key never empties the store.
    s.defaults.setObject(1, "a");
    s.defaults.removeObjectForKey("");
    s.defaults.setValue(QVariant(), "");
    EXPECT_EQ(s.defaults.keys(), QStringList({ "a" }));
}

TEST(UserDefaults, ArgumentDomainComesFirstAndIsNeverWritten)
{
    Store s;
    s.defaults.setObject(100, "width");
    s.defaults.setArgumentDomain({ { "width", 300 }, { "extension", "-small" } });
    EXPECT_EQ(s.defaults.integerForKey("width", 0), 300);
    EXPECT_EQ(s.defaults.objectForKey("width").typeId(), QMetaType::LongLong);
    EXPECT_EQ(s.defaults.stringForKey("extension", "_thumb"), "-small");
    EXPECT_EQ(s.defaults.keys(), QStringList({ "extension", "width" }));
    EXPECT_EQ(s.defaults.dictionaryRepresentation().value("width"), QVariant(qint64(300)));

    const auto again = s.reread();
    EXPECT_EQ(again->integerForKey("width", 0), 100);
    EXPECT_FALSE(again->objectForKey("extension").isValid());
    s.defaults.setArgumentDomain({});
    EXPECT_EQ(s.defaults.integerForKey("width", 0), 100);
}

TEST(UserDefaults, StandardStoreLivesInTheXdgConfigFolder)
{
    TempDir config;
    const QByteArray previous = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
    UserDefaults &standard = UserDefaults::standard();
    if (previous.isNull())
        qunsetenv("XDG_CONFIG_HOME");
    else
        qputenv("XDG_CONFIG_HOME", previous);

    EXPECT_EQ(standard.filePath(), config.path() + "/orvel/thumbnails.conf");
    EXPECT_EQ(&standard, &UserDefaults::standard());
    standard.setObject(256, "width");
    ASSERT_TRUE(standard.synchronize());
    EXPECT_TRUE(readBytes(config.file("orvel/thumbnails.conf")).contains("\nwidth = 256\n"));
    standard.removeObjectForKey("width");
    EXPECT_TRUE(standard.synchronize());
}
