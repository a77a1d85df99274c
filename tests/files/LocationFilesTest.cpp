// Location files of every kind written and read back, shortcuts and desktop links, and location
// files that are broken or hostile.
#include "files/FileManager.h"
#include "files/FinderInfo.h"
#include "files/PropertyList.h"
#include "files/ResourceFork.h"

#include "testlib/TestSupport.h"

#include <QFile>
#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

using namespace Qt::StringLiterals;
using namespace orvel;
using orvel::test::readBytes;
using orvel::test::runProgram;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

constexpr FileTypeCode TEXT = 0x54455854, URL = 0x75726c20, DRAG = 0x64726167;

} // namespace

TEST(LocationFiles, EveryKindIsWrittenWithItsTypeAndForkAndResolvesBack)
{
    // The URL, the extension and the type code of its kind.
    const std::tuple<const char *, const char *, const char *> kinds[]
        = { { "http://example.org/a?b=c", "webloc", "'ilht'" },
              { "HTTPS://Example.org/", "webloc", "'ilht'" },
              { "ftp://files.example.org/pub/", "ftploc", "'ilft'" },
              { "mailto:someone@example.org", "mailloc", "'ilma'" },
              { "nntp://news.example.org/comp.lang.c", "newsloc", "'ilnw'" },
              { "vnc://host:5900", "vncloc", "'ilge'" }, { "file:///tmp/a%20b.txt", "fileloc", "'ilfi'" },
              { "https://example.org/ünïcode/ß", "webloc", "'ilht'" } };
    for (const auto &[urlText, extensionText, type] : kinds) {
        SCOPED_TRACE(urlText);
        TempDir dir;
        const QString url = QString::fromUtf8(urlText);
        const QString extension = FileManager::pathExtensionForInternetLocation(url);
        EXPECT_EQ(extension, QString::fromUtf8(extensionText));
        EXPECT_EQ(FileManager::pathExtensionForInternetLocation(QUrl(url)), extension);
        const QString path = dir.file(u"Link."_s + extension);

        ASSERT_TRUE(FileManager::createInternetLocation(url, path));
        EXPECT_EQ(HFSTypeOfFile(path), QString::fromUtf8(type));
        EXPECT_TRUE(FileManager::isInternetLocationFile(path));
        EXPECT_EQ(FileManager::resolveInternetLocation(path), url);

        const auto fork = ResourceFork::resourceForkForReadingAtPath(path);
        ASSERT_NE(fork, nullptr);
        EXPECT_EQ(fork->dataForType(TEXT, 256), url.toUtf8());
        EXPECT_EQ(fork->dataForType(URL, 256), url.toUtf8());
        const std::optional<QVariant> plist = propertyListFromFile(path);
        ASSERT_TRUE(plist);
        EXPECT_EQ(plist->toMap().value(u"URL"_s).toString(), url);

        // A copy without its fork and type still leads there through the property list.
        const QString bare = dir.file(u"Bare."_s + extension);
        ASSERT_TRUE(writeBytes(bare, readBytes(path)));
        EXPECT_EQ(FileManager::resolveInternetLocation(bare), url);
    }
}

TEST(LocationFiles, TheDragResourceListsTheTextAndURLResources)
{
    TempDir dir;
    const QString path = dir.file(u"a.webloc"_s);
    ASSERT_TRUE(FileManager::createInternetLocation(QUrl(u"https://example.org/"_s), path));
    const auto fork = ResourceFork::resourceForkForReadingAtPath(path);
    ASSERT_NE(fork, nullptr);
    // Header (1 at 0, count 2 at 26), then 24 bytes per resource: type at 0, ID at 6, host order.
    QByteArray expected(32 + 2 * 24, '\0');
    const auto put = [&](int at, auto value) { std::memcpy(expected.data() + at, &value, sizeof value); };
    put(0, quint64(1));
    put(26, quint16(2));
    put(32, TEXT);
    put(32 + 6, quint16(256));
    put(56, URL);
    put(56 + 6, quint16(256));
    EXPECT_EQ(fork->dataForType(DRAG, 128), expected);
    EXPECT_FALSE(FileManager::createInternetLocation(QString(), dir.file(u"b.webloc"_s)));
    EXPECT_FALSE(QFile::exists(dir.file(u"b.webloc"_s)));
    EXPECT_TRUE(FileManager::pathExtensionForInternetLocation(QString()).isNull());
}

TEST(LocationFiles, ShortcutsAndDesktopLinksResolve)
{
    TempDir dir;
    ASSERT_TRUE(FileManager::createURL(u"https://example.org/x"_s, dir.file(u"a.url"_s)));
    EXPECT_EQ(readBytes(dir.file(u"a.url"_s)), "[InternetShortCut]\nURL=https://example.org/x\n");
    EXPECT_EQ(FileManager::resolveInternetLocation(dir.file(u"a.url"_s)), u"https://example.org/x"_s);

    const struct
    {
        const char *name;
        QByteArray text;
        const char *url; ///< null: no URL
    } cases[] = {
        { "windows.URL", "[InternetShortcut]\r\nIDList=\r\nurl= http://w.example/ \r\n",
            "http://w.example/" },
        { "one-line.url", "  http://one.example/\n", "http://one.example/" },
        { "two-lines.url", "http://one.example/\nhttp://two.example/\n", nullptr },
        { "empty.url", "", nullptr },
        { "link.desktop", "# c\n[Desktop Entry]\nName=L\nType=Link\nURL=https://d.example/a\\sb\n",
            "https://d.example/a b" },
        { "app.desktop", "[Desktop Entry]\nType=Application\nExec=x\nURL=https://d.example/\n", nullptr },
        { "other-group.desktop", "[Desktop Action x]\nType=Link\nURL=https://d.example/\n", nullptr },
        { "binary.url", QByteArray("\xff\xfe\0\0URL", 7), nullptr },
    };
    for (const auto &c : cases) {
        const QString path = dir.file(QString::fromUtf8(c.name));
        ASSERT_TRUE(writeBytes(path, c.text));
        EXPECT_EQ(FileManager::resolveInternetLocation(path), c.url ? QString::fromUtf8(c.url) : QString())
            << c.name;
    }

    // A shortcut by type code alone: 'LINK' on a file of any name.
    const QString typed = dir.file(u"shortcut"_s);
    ASSERT_TRUE(writeBytes(typed, "[InternetShortcut]\nURL=http://typed.example/\n"));
    EXPECT_TRUE(FileManager::resolveInternetLocation(typed).isNull()) << "no extension, no type";
    ASSERT_TRUE(setHFSTypeCodeOfFile(typed, 0x4c494e4b));
    EXPECT_EQ(FileManager::resolveInternetLocation(typed), u"http://typed.example/"_s);
}

TEST(LocationFiles, BinaryPropertyListsOfAMacAreRead)
{
    TempDir dir;
    const QString path = dir.file(u"mac.webloc"_s);
    QByteArray err;
    ASSERT_EQ(
        runProgram(u"python3"_s,
            { u"-c"_s,
                u"import plistlib, sys\nopen(sys.argv[1], 'wb').write(plistlib.dumps({'URL': 'https://mac.example/'}, fmt=plistlib.FMT_BINARY))"_s,
                path },
            nullptr, &err),
        0)
        << err.toStdString();
    ASSERT_TRUE(readBytes(path).startsWith("bplist00"));
    EXPECT_EQ(FileManager::resolveInternetLocation(path), u"https://mac.example/"_s);
}

TEST(LocationFiles, BrokenLocationFilesGiveNil)
{
    TempDir dir;
    const std::pair<const char *, QByteArray> cases[] = {
        { "garbage.webloc", "not a property list at all" },
        { "number.webloc", "<plist version=\"1.0\"><dict><key>URL</key><integer>7</integer></dict></plist>" },
        { "array.inetloc", "<plist version=\"1.0\"><array><string>http://x/</string></array></plist>" },
        { "no-url.webloc",
            "<plist version=\"1.0\"><dict><key>url</key><string>http://x/</string></dict></plist>" },
        { "huge.url", "URL=" + QByteArray(2 * 1024 * 1024, 'a') },
    };
    for (const auto &[name, bytes] : cases) {
        const QString path = dir.file(QString::fromUtf8(name));
        ASSERT_TRUE(writeBytes(path, bytes));
        EXPECT_TRUE(FileManager::resolveInternetLocation(path).isNull()) << name;
    }
    // A fork that is no resource file is passed over for the property list.
    const QString forked = dir.file(u"forked.webloc"_s);
    ASSERT_TRUE(writePropertyListToFile(QVariantMap { { u"URL"_s, u"http://plist.example/"_s } }, forked));
    ASSERT_TRUE(writeBytes(dir.file(u"._forked.webloc"_s), "\x00\x05\x16\x07garbage"));
    EXPECT_EQ(FileManager::resolveInternetLocation(forked), u"http://plist.example/"_s);

    EXPECT_TRUE(FileManager::resolveInternetLocation(dir.file(u"missing.webloc"_s)).isNull());
    EXPECT_TRUE(FileManager::resolveInternetLocation(dir.path()).isNull());
    ASSERT_TRUE(writeBytes(dir.file(u"plain.txt"_s), "URL=http://x/\n"));
    EXPECT_TRUE(FileManager::resolveInternetLocation(dir.file(u"plain.txt"_s)).isNull())
        << "no location file";
    EXPECT_TRUE(FileManager::isInternetLocationExtension(u"WebLoc", 0));
    EXPECT_FALSE(FileManager::isInternetLocationExtension(u"desktop", 0));
}
