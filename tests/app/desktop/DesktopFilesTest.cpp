// Tests of the desktop integration files: validated by the desktop's own tools, and every
// MIME type offered is one that the application reads.
#include "app/desktop/IsolatedJob.h"
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSettings>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

QString desktopFile() { return QString::fromUtf8(ORVEL_DESKTOP_FILE); }

QString desktopEntry(const QString &key)
{
    const QString text = QString::fromUtf8(readBytes(desktopFile()));
    for (const QString &line : text.split(u'\n')) {
        if (line.startsWith(key + u'='))
            return line.mid(key.size() + 1);
    }
    return {};
}

TEST(DesktopFiles, TheDesktopFileIsValid)
{
    if (QStandardPaths::findExecutable(u"desktop-file-validate"_s).isEmpty())
        GTEST_SKIP() << "desktop-file-validate is not installed (package desktop-file-utils)";
    QByteArray out;
    QByteArray err;
    EXPECT_EQ(runProgram(u"desktop-file-validate"_s, { desktopFile() }, &out, &err), 0)
        << out.toStdString() << err.toStdString();
    EXPECT_TRUE(out.isEmpty()) << out.toStdString();
}

TEST(DesktopFiles, TheMetainfoIsValid)
{
    if (QStandardPaths::findExecutable(u"appstreamcli"_s).isEmpty())
        GTEST_SKIP() << "appstreamcli is not installed (package appstream)";
    QByteArray out;
    QByteArray err;
    EXPECT_EQ(runProgram(u"appstreamcli"_s,
                  { u"validate"_s, u"--no-net"_s, QString::fromUtf8(ORVEL_METAINFO_FILE) }, &out, &err),
        0)
        << out.toStdString() << err.toStdString();
}

TEST(DesktopFiles, TheProgramTakesFilesAndRunsTheInstalledBinary)
{
    const QString exec = desktopEntry(u"Exec"_s);
    EXPECT_TRUE(exec.endsWith(u"/orvel-thumbnails %F"_s)) << exec;
    EXPECT_EQ(desktopEntry(u"Icon"_s), u"org.orvel.Thumbnails"_s);
}

TEST(DesktopFiles, EveryOfferedTypeIsOneTheApplicationReads)
{
    const QStringList types = desktopEntry(u"MimeType"_s).split(u';', Qt::SkipEmptyParts);
    ASSERT_GE(types.size(), 10);
    EXPECT_TRUE(types.contains(u"inode/directory"_s));
    QMimeDatabase mimes;
    for (const QString &name : types) {
        if (name == u"inode/directory")
            continue;
        const QMimeType type = mimes.mimeTypeForName(name);
        ASSERT_TRUE(type.isValid()) << name;
        const QStringList suffixes = type.suffixes();
        const bool readable = std::any_of(suffixes.cbegin(), suffixes.cend(), [](const QString &suffix) {
            return Image::isImageExtension(suffix, QString()) || Image::isPDFExtension(suffix, QString())
                || Image::isPostScriptExtension(suffix);
        });
        EXPECT_TRUE(readable) << name << " (" << suffixes.join(u' ') << ")";
    }
    // And the everyday ones are all there.
    for (const char *everyday :
        { "image/jpeg", "image/png", "image/gif", "image/tiff", "image/webp", "application/pdf" })
        EXPECT_TRUE(types.contains(QString::fromLatin1(everyday))) << everyday;
}

TEST(DesktopFiles, InstallingIntoAPrefixPutsEverythingWhereDesktopsLook)
{
    TempDir prefix;
    QByteArray out;
    QByteArray err;
    ASSERT_EQ(runProgram(QString::fromUtf8(ORVEL_CMAKE_COMMAND),
                  { u"--install"_s, QString::fromUtf8(ORVEL_BUILD_DIR), u"--prefix"_s, prefix.path() }, &out,
                  &err, 120000),
        0)
        << err.toStdString();
    const QString installed = prefix.file(u"share/applications/org.orvel.Thumbnails.desktop"_s);
    const QString entry = QString::fromUtf8(readBytes(installed));
    // The desktop file runs the program installed beside it, under the prefix given now.
    const QString program = prefix.file(u"bin/orvel-thumbnails"_s);
    EXPECT_TRUE(entry.contains(u"\nExec="_s + program + u" %F\n"_s)) << entry;
    EXPECT_TRUE(QFileInfo(program).isExecutable());
    EXPECT_TRUE(QFileInfo(prefix.file(u"bin/orvel-thumbs"_s)).isExecutable());
    for (const char *file : { "share/metainfo/org.orvel.Thumbnails.metainfo.xml",
             "share/icons/hicolor/scalable/apps/org.orvel.Thumbnails.svg",
             "share/icons/hicolor/48x48/apps/org.orvel.Thumbnails.png",
             "share/icons/hicolor/256x256/apps/org.orvel.Thumbnails.png" })
        EXPECT_TRUE(QFile::exists(prefix.file(QString::fromLatin1(file)))) << file;
    EXPECT_EQ(loadImage(prefix.file(u"share/icons/hicolor/48x48/apps/org.orvel.Thumbnails.png"_s)).size(),
        QSize(48, 48));
}

} // namespace
