// The settings store on real files: fallbacks, conversions, types across instances, the file format.
#include "support/UserDefaults.h"

#include "testlib/TestSupport.h"

#include <QFile>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::readBytes;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

/// A store in a fresh file; reread() opens a copy under another name, which QSettings parses anew.
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
    EXPECT_EQ(s.defaults.doubleForKey("scale", 2.5), 2.5);
    EXPECT_EQ(s.defaults.stringForKey("extension", "_thumb"), "_thumb");

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
    s.defaults.setObject(QVariantMap { { "a", 1 } }, "map");
    EXPECT_FALSE(s.defaults.boolForKey("map", true));
    EXPECT_EQ(s.defaults.integerForKey("map", 128), 0);
    EXPECT_EQ(s.defaults.floatForKey("map", 1.5f), 0.0f);
    EXPECT_EQ(s.defaults.doubleForKey("map", 2.5), 2.5);
    EXPECT_EQ(s.defaults.stringForKey("map", "d"), "d");
}

TEST(UserDefaults, StringsConvertByTheirLeadingNumber)
{
    Store s;
    // The text, and it read as an integer, a real number and a bool.
    const std::tuple<const char *, qint64, double, bool> cases[] = { { "7", 7, 7.0, true },
        { "3.9x", 3, 3.9, true }, { "  -12abc", -12, -12.0, true }, { "abc", 0, 0.0, false },
        { "", 0, 0.0, false }, { "0", 0, 0.0, false }, { "1e3", 1, 1000.0, true }, { ".5", 0, 0.5, true },
        { "99999999999999999999", std::numeric_limits<qint64>::max(), 1e20, true }, { "YES", 0, 0.0, true },
        { "no", 0, 0.0, false } };
    for (const auto &[text, integer, real, boolean] : cases) {
        s.defaults.setString(text, "k");
        EXPECT_EQ(s.defaults.integerForKey("k", -1), integer) << text;
        EXPECT_DOUBLE_EQ(s.defaults.doubleForKey("k", -1), real) << text;
        EXPECT_FLOAT_EQ(s.defaults.floatForKey("k", -1), float(real)) << text;
        EXPECT_EQ(s.defaults.boolForKey("k", !boolean), boolean) << text;
        EXPECT_EQ(s.defaults.stringForKey("k", "d"), text);
    }
}

TEST(UserDefaults, NumbersAndBoolsConvertToEachOther)
{
    Store s;
    // The store after setting key "k" to value.
    const auto holding = [&](const QVariant &value) -> UserDefaults & {
        s.defaults.setObject(value, "k");
        return s.defaults;
    };
    EXPECT_EQ(holding(3.9).integerForKey("k"), 3);
    EXPECT_EQ(holding(1e300).integerForKey("k"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(holding(std::nan("")).integerForKey("k"), 0);
    EXPECT_EQ(holding(5).stringForKey("k"), "5");
    EXPECT_EQ(holding(true).integerForKey("k"), 1);
    EXPECT_TRUE(holding(0.5).boolForKey("k"));
    EXPECT_EQ(holding(0.5).stringForKey("k"), "0.5");
}

TEST(UserDefaults, TypesSurviveTheFileWhichIsReadableText)
{
    Store s;
    s.defaults.setObject(128, "width");
    s.defaults.setObject(1.0, "scale");
    s.defaults.setObject(0.8f, "quality");
    s.defaults.setObject(std::numeric_limits<double>::infinity(), "inf");
    s.defaults.setObject(true, "QuitWhenDone");
    s.defaults.setString("128", "extension");
    const QString tricky = u"a \"quoted\" \\ line\nnext\t\u00e9 \U0001F600 \u0001"_s;
    s.defaults.setString(tricky, "my key = odd");
    const QVariantMap nested { { "list", QVariantList { 1, 2.0, "three", false } },
        { "empty", QVariantMap() } };
    s.defaults.setObject(nested, "nested");

    const auto again = s.reread();
    EXPECT_EQ(again->objectForKey("width"), QVariant(qint64(128)));
    EXPECT_EQ(again->objectForKey("width").typeId(), QMetaType::LongLong);
    EXPECT_EQ(again->objectForKey("scale").typeId(), QMetaType::Double);
    EXPECT_EQ(again->objectForKey("quality"), QVariant(0.8))
        << "a float is kept by its shortest decimal form";
    EXPECT_EQ(again->objectForKey("inf"), QVariant(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(again->objectForKey("QuitWhenDone").typeId(), QMetaType::Bool);
    EXPECT_EQ(again->objectForKey("extension"), QVariant(u"128"_s));
    EXPECT_EQ(again->objectForKey("my key = odd"), QVariant(tricky));
    EXPECT_EQ(again->objectForKey("nested"), QVariant(nested));
    EXPECT_EQ(again->objectForKey("nested").toMap()["list"].toList()[1].typeId(), QMetaType::Double);
    const QByteArray text = readBytes(s.defaults.filePath());
    for (const char *line :
        { "\nwidth = 128\n", "\nscale = 1.0\n", "\nQuitWhenDone = true\n", "\nextension = \"128\"\n" })
        EXPECT_TRUE(text.contains(line)) << line << " in\n" << text.toStdString();
}

TEST(UserDefaults, MalformedLinesAreSkippedAndWritingKeepsWhatCouldBeRead)
{
    Store s;
    ASSERT_TRUE(writeBytes(s.defaults.filePath(),
        "# comment\r\nwidth = 128\r\ngarbage line\nheight =\nname = \"unterminated\n"
        "list = [1, 2\nx = 12abc\n= 5\nquality=0.8   \n\xff\xfe = 1\ny = \"\\q\"\n"
        "sizing = 1 2\n\"quoted key\" = [ ]\n"));
    EXPECT_EQ(s.defaults.keys(), QStringList({ "quality", "quoted key", "width" }));
    EXPECT_EQ(s.defaults.integerForKey("width", 0), 128);
    EXPECT_EQ(s.defaults.doubleForKey("quality", 0), 0.8);
    EXPECT_EQ(s.defaults.integerForKey("height", 16), 16);
    s.defaults.setObject(3, "sharpen");
    EXPECT_EQ(s.reread()->keys(), QStringList({ "quality", "quoted key", "sharpen", "width" }));
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
    UserDefaults &standard = [&]() -> UserDefaults & {
        const orvel::test::EnvironmentOverride home("XDG_CONFIG_HOME", config.path());
        return UserDefaults::standard();
    }();

    EXPECT_EQ(standard.filePath(), config.path() + "/orvel/thumbnails.conf");
    EXPECT_EQ(&standard, &UserDefaults::standard());
    standard.setObject(256, "width");
    ASSERT_TRUE(standard.synchronize());
    EXPECT_TRUE(readBytes(config.file("orvel/thumbnails.conf")).contains("\nwidth = 256\n"));
    standard.removeObjectForKey("width");
    EXPECT_TRUE(standard.synchronize());
}
