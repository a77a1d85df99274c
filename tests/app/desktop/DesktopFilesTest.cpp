// Tests of the desktop integration files: validated by the desktop's own tools, every MIME type
// offered one that the application reads, and an install that puts everything where desktops look.
#include "image/Image.h"
#include "testlib/TestSupport.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

QString entryValue(const QString &desktopFile, const QString &key)
{
    const QStringList lines = QString::fromUtf8(readBytes(desktopFile)).split(u'\n');
    for (const QString &line : lines)
        if (line.startsWith(key + u'='))
            return line.mid(key.size() + 1);
    return {};
}

TEST(DesktopFiles, TheDesktopToolsFindNothingWrong)
{
    const std::pair<QString, QStringList> validators[]
        = { { u"desktop-file-validate"_s, { u"" ORVEL_DESKTOP_FILE ""_s } },
              { u"appstreamcli"_s, { u"validate"_s, u"--no-net"_s, u"" ORVEL_METAINFO_FILE ""_s } } };
    QStringList missing;
    for (const auto &[tool, args] : validators) {
        if (QStandardPaths::findExecutable(tool).isEmpty()) {
            missing << tool;
            continue;
        }
        QByteArray out, err;
        EXPECT_EQ(runProgram(tool, args, &out, &err), 0)
            << tool << ": " << out.toStdString() << err.toStdString();
        EXPECT_TRUE(tool != u"desktop-file-validate" || out.isEmpty()) << "warnings: " << out.toStdString();
    }
    if (!missing.isEmpty())
        GTEST_SKIP() << missing.join(u", "_s) << " not installed (packages desktop-file-utils, appstream)";
}

TEST(DesktopFiles, EveryOfferedTypeIsOneTheApplicationReads)
{
    const QStringList types
        = entryValue(u"" ORVEL_DESKTOP_FILE ""_s, u"MimeType"_s).split(u';', Qt::SkipEmptyParts);
    ASSERT_TRUE(types.contains(u"inode/directory"_s) && types.contains(u"application/pdf"_s))
        << types.join(u';');
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
}

TEST(DesktopFiles, InstallingIntoAPrefixPutsEverythingWhereDesktopsLook)
{
    TempDir prefix;
    QByteArray err;
    ASSERT_EQ(runProgram(u"" ORVEL_CMAKE_COMMAND ""_s,
                  { u"--install"_s, u"" ORVEL_BUILD_DIR ""_s, u"--prefix"_s, prefix.path() }, nullptr, &err,
                  120000),
        0)
        << err.toStdString();
    // The desktop file runs the program installed beside it, under the prefix given now, and names
    // an icon that was installed.
    const QString desktopFile = prefix.file(u"share/applications/org.orvel.Thumbnails.desktop"_s);
    const QString program = prefix.file(u"bin/orvel-thumbnails"_s);
    EXPECT_EQ(entryValue(desktopFile, u"Exec"_s), program + u" %F"_s);
    EXPECT_TRUE(QFileInfo(program).isExecutable());
    EXPECT_TRUE(QFileInfo(prefix.file(u"bin/orvel-thumbs"_s)).isExecutable());
    const QString icon = entryValue(desktopFile, u"Icon"_s);
    EXPECT_TRUE(QFile::exists(prefix.file(u"share/icons/hicolor/scalable/apps/%1.svg"_s.arg(icon)))) << icon;
    for (int size : { 48, 256 }) {
        const QString file = prefix.file(u"share/icons/hicolor/%1x%1/apps/%2.png"_s.arg(size).arg(icon));
        EXPECT_EQ(loadImage(file).size(), QSize(size, size)) << file;
    }
    EXPECT_TRUE(QFile::exists(prefix.file(u"share/metainfo/org.orvel.Thumbnails.metainfo.xml"_s)));
}

} // namespace
