// The Help menu's actions and the pages they open; the bundle's information, folders and plug-ins.
#include "support/HelpActions.h"
#include "support/BundleFolders.h"
#include "support/UrlCatcher.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>
#include <QSysInfo>
#include <QUrlQuery>
#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;
using orvel::test::UrlCatcher;

// Installs the help book before any test makes the main bundle, which looks for its folders once.
class HelpBook : public ::testing::Environment
{
public:
    void SetUp() override
    {
        const QString book = qEnvironmentVariable("XDG_DATA_HOME") + u"/orvel-thumbs/help"_s;
        QDir().mkpath(book);
        QFile::copy(u"" ORVEL_SOURCE_DIR "/docs/help/index.html"_s, book + u"/index.html"_s);
    }
};
[[maybe_unused]] ::testing::Environment *const helpBook = ::testing::AddGlobalTestEnvironment(new HelpBook);

TEST(SystemVersion, TakesTheLeadingNumbersOfAKernelReleaseAndLeavesTheOutputsAloneOnFailure)
{
    const std::tuple<const char *, unsigned, unsigned, unsigned> cases[]
        = { { "6.1.0-13-amd64", 6, 1, 0 }, { "5.15.90.1-microsoft-standard-WSL2", 5, 15, 90 },
              { "4.19", 4, 19, 0 }, { "6.5-rc3", 6, 5, 0 }, { "6", 77, 77, 77 }, { "", 77, 77, 77 },
              { "v6.1.0", 77, 77, 77 }, { "99999999999.1.1", 77, 77, 77 } };
    for (const auto &[release, wantMajor, wantMinor, wantBugFix] : cases) {
        unsigned major = 77, minor = 77, bugFix = 77;
        EXPECT_EQ(HelpActions::parseSystemVersion(QString::fromLatin1(release), &major, &minor, &bugFix),
            wantMajor != 77)
            << release;
        EXPECT_EQ(std::tuple(major, minor, bugFix), std::tuple(wantMajor, wantMinor, wantBugFix)) << release;
    }
}

TEST(SystemVersion, IsTheRunningKernelsAndOutParametersAreOptional)
{
    unsigned major = 0, minor = 0, bugFix = 0;
    ASSERT_TRUE(HelpActions::getSystemVersion(&major, &minor, &bugFix));
    EXPECT_TRUE(QSysInfo::kernelVersion().startsWith(u"%1.%2"_s.arg(major).arg(minor)))
        << QSysInfo::kernelVersion();
    EXPECT_EQ(HelpActions::systemVersion(), u"%1.%2.%3"_s.arg(major).arg(minor).arg(bugFix));
}

TEST(Distribution, IsThePrettyNameOfOsRelease)
{
    EXPECT_EQ(
        HelpActions::prettyNameOfOsRelease("NAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 "
                                           "(bookworm)\"\nID=debian\n"),
        u"Debian GNU/Linux 12 (bookworm)"_s);
    EXPECT_EQ(HelpActions::prettyNameOfOsRelease("PRETTY_NAME='Fedora Linux 39'\n"), u"Fedora Linux 39"_s);
    EXPECT_EQ(HelpActions::prettyNameOfOsRelease("NAME=Nothing\n"), QString());
}

TEST(HelpActions, PagesOpenOnTheMakersServers)
{
    UrlCatcher catcher;
    EXPECT_TRUE(HelpActions::website());
    EXPECT_TRUE(HelpActions::support());
    EXPECT_TRUE(HelpActions::downloads());
    EXPECT_TRUE(HelpActions::forum());
    const QString web = u"" ORVEL_WEB_SERVER ""_s;
    EXPECT_EQ(catcher.urls,
        (QList<QUrl> { QUrl(web + u"/"_s), QUrl(web + u"/support/"_s), QUrl(web + u"/download/"_s),
            QUrl(u"" ORVEL_FORUM_SERVER "/"_s) }));
    EXPECT_FALSE(HelpActions::launchStringURL(u"no address"_s));
}

TEST(HelpActions, FeedbackNamesProductVersionDistributionAndProcessor)
{
    UrlCatcher catcher;
    ASSERT_TRUE(HelpActions::feedback());
    const QUrlQuery query(catcher.urls.value(0));
    EXPECT_EQ(catcher.urls.value(0).path(), u"/redirect.php"_s);
    const QString subject = query.queryItemValue(u"subject"_s, QUrl::FullyDecoded);
    EXPECT_TRUE(subject.startsWith(u"Orvel Thumbnails " ORVEL_VERSION ", "_s)) << subject;
    EXPECT_TRUE(subject.endsWith(
        u' ' + HelpActions::systemVersion() + u" ("_s + QSysInfo::currentCpuArchitecture() + u')'))
        << subject;

    // A subject with query characters stays one parameter.
    catcher.urls.clear();
    ASSERT_TRUE(HelpActions::launchFeedbackURL(u"https://orvel.org/f?s=%@&n=%@&e=%@"_s, u"a&b=c d"_s));
    EXPECT_TRUE(catcher.urls.value(0)
                    .toString(QUrl::FullyEncoded)
                    .startsWith(u"https://orvel.org/f?s=a%26b%3Dc%20d%20"_s))
        << catcher.urls.value(0).toString();
}

TEST(HelpActions, HelpAndReleaseNotesOpenTheInstalledHelpBook)
{
    UrlCatcher catcher;
    const QString index = HelpActions::helpBookIndex();
    ASSERT_FALSE(index.isEmpty()) << "the help book is installed under XDG_DATA_HOME before the tests";
    EXPECT_TRUE(index.endsWith(u"/orvel-thumbs/help/index.html"_s)) << index;
    ASSERT_TRUE(HelpActions::showHelp());
    ASSERT_TRUE(HelpActions::releaseNotes());
    ASSERT_EQ(catcher.urls.size(), 2);
    EXPECT_EQ(catcher.urls.at(0), QUrl::fromLocalFile(index));
    EXPECT_EQ(catcher.urls.at(1).toLocalFile(), index);
    EXPECT_EQ(catcher.urls.at(1).fragment(), u"_whatsnew"_s);
    // The anchor exists in the page the release notes open.
    EXPECT_TRUE(orvel::test::readBytes(index).contains("id=\"_whatsnew\""));
}

TEST(BundleInfo, MainBundleCarriesTheApplicationsNameVersionAndIdentifier)
{
    const Bundle &bundle = Bundle::mainBundle();
    EXPECT_EQ(bundle.getShortVersionString(), u"" ORVEL_VERSION ""_s);
    EXPECT_EQ(bundle.bundleIdentifier(), u"org.orvel.Thumbnails"_s);
    EXPECT_EQ(bundle.bundleSignature(), quint32('O') << 24 | quint32('r') << 16 | quint32('T') << 8 | 'h');

    const Bundle other(u"org.example.x"_s, u"/orvel-missing"_s,
        { { u"CFBundleSignature"_s, u"TOOLONG"_s }, { u"CFBundleName"_s, u"../x"_s } });
    EXPECT_EQ(other.bundleSignature(), 0u);
    EXPECT_FALSE(other.objectForInfoDictionaryKey(u"CFBundleVersion"_s).isValid());
    EXPECT_EQ(temporaryDirectory(other), QString()) << "a name with a slash makes no folder";
}

TEST(BundleFolders, TemporaryFolderIsMadeOnceAndLogFileLiesInTheLibrary)
{
    const QString folder = temporaryDirectory(Bundle::mainBundle());
    EXPECT_EQ(folder, qEnvironmentVariable("XDG_CACHE_HOME") + u"/TemporaryItems/Orvel Thumbnails"_s);
    EXPECT_TRUE(QFileInfo(folder).isDir());
    ASSERT_TRUE(orvel::test::writeBytes(folder + u"/kept"_s, "x"));
    EXPECT_EQ(temporaryDirectory(Bundle::mainBundle()), folder);
    EXPECT_TRUE(QFileInfo::exists(folder + u"/kept"_s));

    EXPECT_EQ(logFile(Bundle::mainBundle()),
        qEnvironmentVariable("XDG_DATA_HOME") + u"/Logs/org.orvel.Thumbnails.log"_s);
    EXPECT_EQ(logFile(Bundle(QString(), u"/x"_s)), QString());
}

TEST(BundlePlugins, FindsQtPluginsAndFiltersByClass)
{
    orvel::test::TempDir dir;
    ASSERT_TRUE(QFile::copy(u"" ORVEL_TEST_PLUGIN ""_s, dir.file("libsample.so")));
    ASSERT_TRUE(orvel::test::writeBytes(dir.file("notes.txt"), "not a plug-in"));
    ASSERT_TRUE(
        orvel::test::writeBytes(dir.file("libfake.so"), "\x7f" + QByteArray("ELF").leftJustified(100, '\0')));
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"sub.so"_s));

    EXPECT_EQ(Bundle::OrvelWebKitBundle(), nullptr) << "no web part until a plug-in brings one";

    const Bundle::PluginList all = Bundle::loadPluginsAtPath(dir.path());
    ASSERT_EQ(all.size(), 1);
    EXPECT_EQ(all.first()->fileName(), dir.file("libsample.so"));
    EXPECT_FALSE(all.first()->isLoaded()) << "finding a plug-in loads no code";

    EXPECT_EQ(Bundle::loadPluginsOfClass(u"OrvelSamplePlugin"_s, dir.path()).size(), 1);
    EXPECT_EQ(Bundle::loadPluginsOfClass(u"OrvelSampleBase"_s, dir.path()).size(), 0) << "exactly the class";
    EXPECT_EQ(Bundle::loadPluginsOfClassName(u"OrvelSampleBase"_s, dir.path()).size(), 1)
        << "contains the class";

    EXPECT_TRUE(Bundle::loadBundleIfAvailable(dir.file("libsample.so")));
    EXPECT_FALSE(Bundle::loadBundleIfAvailable(dir.file("notes.txt")));
    EXPECT_FALSE(Bundle::loadBundleIfAvailable(dir.file("missing.so")));

    // The plug-in's data named it the toolkit's web part: now it is a loaded bundle.
    const Bundle *web = Bundle::OrvelWebKitBundle();
    ASSERT_NE(web, nullptr);
    EXPECT_EQ(web, Bundle::bundleWithIdentifier(u"org.orvel.kit.web"_s));
    EXPECT_EQ(web->bundleName(), u"Sample Web Part"_s);
    EXPECT_EQ(web->resourcePath(), dir.path());
}

TEST(BundlePlugins, BundlesByIdentifierAndSystemLibraries)
{
    EXPECT_EQ(Bundle::bundleWithIdentifier(u"org.orvel.Thumbnails"_s), &Bundle::mainBundle());
    EXPECT_EQ(Bundle::bundleWithIdentifier(u"org.orvel.nothing"_s), nullptr);

    // A plain shared library of the system loads; a missing one is logged and answers NO.
    EXPECT_TRUE(QFileInfo(Bundle::systemFrameworksPath() + u"/libz.so.1"_s).exists());
    EXPECT_TRUE(Bundle::loadSystemFrameworkIfAvailable(u"libz.so.1"_s));
    EXPECT_FALSE(Bundle::loadSystemFrameworkIfAvailable(u"libno-such-library.so"_s));
    EXPECT_FALSE(Bundle::loadPrivateSystemFrameworkIfAvailable(u"libz.so.1"_s));
}
