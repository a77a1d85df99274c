// Standard folders: the lookups are cached for the life of a process, so each environment is tried
// in a fresh run of this executable that writes what it found to a report file.
#include "files/StandardDirectories.h"

#include "testlib/TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QMap>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;

namespace {

/// Runs the reporting test below in a child with env added to this environment; its findings by name.
QMap<QString, QString> foldersIn(const TempDir &dir, QStringList env)
{
    const QString report = dir.file(u"report.txt"_s);
    env << u"ORVEL_FOLDERS_REPORT="_s + report;
    // Whatever this process inherited must not decide for the child.
    for (const char *name :
        { "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "FLATPAK_ID", "HOST_XDG_DATA_HOME" }) {
        const QString prefix = QString::fromLatin1(name) + u'=';
        if (std::none_of(env.begin(), env.end(), [&](const QString &kv) { return kv.startsWith(prefix); }))
            env << prefix;
    }
    QByteArray out;
    const int code = orvel::test::runProgram(QCoreApplication::applicationFilePath(),
        { u"--gtest_filter=StandardFoldersChild.*"_s }, &out, &out, 60000, env);
    EXPECT_EQ(code, 0) << out.constData();
    QMap<QString, QString> found;
    const QStringList lines
        = QString::fromUtf8(orvel::test::readBytes(report)).split(u'\n', Qt::SkipEmptyParts);
    for (const QString &line : lines)
        found.insert(line.section(u'\t', 0, 0), line.section(u'\t', 1));
    return found;
}

} // namespace

TEST(StandardFoldersChild, Report)
{
    const QString report = qEnvironmentVariable("ORVEL_FOLDERS_REPORT");
    if (report.isEmpty())
        GTEST_SKIP() << "runs only as the child of the standard-folder tests";
    // Twice, so that a cache that answered differently the second time would show.
    QString text;
    for (int round = 0; round < 2; ++round) {
        text = u"desktop\t"_s + desktopDirectory() + u"\ndownloads\t"_s + downloadsDirectory()
            + u"\nlibrary\t"_s + pathInLibraryDirectory(u"Logs") + u"\npreferences\t"_s
            + pathInPreferencesDirectory(u"/x.conf") + u"\ncaches\t"_s + cachesDirectory() + u"\nsupport\t"_s
            + applicationSupportDirectory() + u"\nuserHome\t"_s + userHomeDirectory() + u"\nuserLibrary\t"_s
            + pathInUserLibrary(u"Logs") + u"\nhome\t"_s + pathInHomeDirectory(u"a") + u"\ntmp\t"_s
            + temporaryDirectory() + u'\n';
    }
    ASSERT_TRUE(orvel::test::writeBytes(report, text.toUtf8()));
}

TEST(StandardFolders, XdgVariablesAndUserDirsDecide)
{
    TempDir dir;
    const QString home = dir.file(u"home"_s);
    ASSERT_TRUE(QDir().mkpath(dir.file(u"config"_s)));
    ASSERT_TRUE(orvel::test::writeBytes(dir.file(u"config/user-dirs.dirs"_s),
        "# written by xdg-user-dirs-update\nXDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
        "XDG_DOWNLOAD_DIR=\"/srv/downloads/ann\"\n"));
    const auto found = foldersIn(dir,
        { u"HOME="_s + home, u"XDG_CONFIG_HOME="_s + dir.file(u"config/"_s),
            u"XDG_CACHE_HOME="_s + dir.file(u"cache"_s), u"XDG_DATA_HOME="_s + dir.file(u"data"_s) });
    EXPECT_EQ(found.value(u"desktop"_s), home + u"/Schreibtisch"_s);
    EXPECT_EQ(found.value(u"downloads"_s), u"/srv/downloads/ann"_s);
    EXPECT_EQ(found.value(u"library"_s), dir.file(u"data/Logs"_s));
    EXPECT_EQ(found.value(u"preferences"_s), dir.file(u"config/x.conf"_s));
    EXPECT_EQ(found.value(u"caches"_s), dir.file(u"cache"_s));
    EXPECT_EQ(found.value(u"support"_s), dir.file(u"data"_s));
    EXPECT_EQ(found.value(u"userHome"_s), home);
    EXPECT_EQ(found.value(u"home"_s), home + u"/a"_s);
}

TEST(StandardFolders, DefaultsInTheHomeWhenVariablesAreMissingOrRelative)
{
    TempDir dir;
    const QString home = dir.file(u"home"_s);
    const auto found = foldersIn(dir, { u"HOME="_s + home, u"XDG_CACHE_HOME=relative/cache"_s });
    EXPECT_EQ(found.value(u"desktop"_s), home + u"/Desktop"_s);
    EXPECT_EQ(found.value(u"downloads"_s), home + u"/Downloads"_s);
    EXPECT_EQ(found.value(u"caches"_s), home + u"/.cache"_s);
    EXPECT_EQ(found.value(u"preferences"_s), home + u"/.config/x.conf"_s);
    EXPECT_EQ(found.value(u"library"_s), home + u"/.local/share/Logs"_s);
}

TEST(StandardFolders, AFlatpakSandboxLeadsToTheRealHomeAndLibrary)
{
    TempDir dir;
    const QString home = dir.file(u"home"_s);
    const QString sandbox = home + u"/.var/app/org.example.Thumbs"_s;
    const QStringList flatpak { u"HOME="_s + sandbox, u"FLATPAK_ID=org.example.Thumbs"_s,
        u"XDG_DATA_HOME="_s + sandbox + u"/data"_s };
    auto found = foldersIn(dir, flatpak);
    EXPECT_EQ(found.value(u"userHome"_s), home);
    EXPECT_EQ(found.value(u"library"_s), sandbox + u"/data/Logs"_s);
    EXPECT_EQ(found.value(u"userLibrary"_s), home + u"/.local/share/Logs"_s);

    found = foldersIn(dir, flatpak + QStringList { u"HOST_XDG_DATA_HOME=/srv/ann/data"_s });
    EXPECT_EQ(found.value(u"userLibrary"_s), u"/srv/ann/data/Logs"_s);
    // Without the application's id any application's folder marks a sandbox.
    found = foldersIn(dir, { u"HOME="_s + sandbox });
    EXPECT_EQ(found.value(u"userHome"_s), home);
}
