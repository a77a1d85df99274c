// The desktop integration files: validated, their MIME types, the file managers' actions, an install.
#include "image/Image.h"
#include "movie/Movie.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

/// The value of key in the main group of a desktop file.
QString entryValue(const QString &desktopFile, const QString &key)
{
    return readKeyFile(desktopFile).value(u"Desktop Entry"_s).value(key);
}

/// A file made from the templates in data/, as the build folder holds it.
QString staged(const QString &name) { return u"" ORVEL_DATA_BUILD_DIR "/"_s + name; }

/// The MIME types of a list written as in a desktop entry, with their canonical names.
QSet<QString> canonicalTypes(const QString &list)
{
    QMimeDatabase mimes;
    QSet<QString> types;
    for (const QString &name : list.split(u';', Qt::SkipEmptyParts)) {
        const QMimeType type = mimes.mimeTypeForName(name);
        types.insert(type.isValid() ? type.name() : name);
    }
    return types;
}

TEST(DesktopFiles, TheDesktopToolsFindNothingWrongButTheServiceTypesOwnKeys)
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
        if (tool != u"desktop-file-validate")
            continue;
        // Of the service menu it may report only the keys that KDE's service type adds.
        runProgram(tool, { staged(u"kio-servicemenus/org.orvel.Thumbnails.desktop"_s) }, &out);
        for (const QByteArray &line : out.trimmed().split('\n'))
            EXPECT_TRUE(line.isEmpty() || line.contains("but the type is \"Service\"")) << line.toStdString();
    }
    if (!missing.isEmpty())
        GTEST_SKIP() << missing.join(u", "_s) << " not installed (packages desktop-file-utils, appstream)";
}

TEST(DesktopFiles, EveryOfferedTypeIsOneTheApplicationReads)
{
    const QStringList types
        = entryValue(u"" ORVEL_DESKTOP_FILE ""_s, u"MimeType"_s).split(u';', Qt::SkipEmptyParts);
    // Folders are offered through the file managers' context menus, not as a type the program opens.
    ASSERT_TRUE(!types.contains(u"inode/directory"_s) && types.contains(u"application/pdf"_s))
        << types.join(u';');
    QMimeDatabase mimes;
    for (const QString &name : types) {
        const QMimeType type = mimes.mimeTypeForName(name);
        ASSERT_TRUE(type.isValid()) << name;
        const QStringList suffixes = type.suffixes();
        const bool readable = std::any_of(suffixes.cbegin(), suffixes.cend(), [](const QString &suffix) {
            return Image::isImageExtension(suffix, QString()) || Image::isPDFExtension(suffix, QString())
                || Image::isPostScriptExtension(suffix) || Movie::isQuickTimeExtension(suffix, QString());
        });
        EXPECT_TRUE(readable) << name << " (" << suffixes.join(u' ') << ")";
    }
}

TEST(DesktopFiles, EveryPictureDocumentAndMovieTypeTheProgramReadsIsOffered)
{
    const QSet<QString> offered = canonicalTypes(entryValue(u"" ORVEL_DESKTOP_FILE ""_s, u"MimeType"_s));
    QStringList extensions = Image::ImageFileTypes() + Image::PDFFileTypes() + Movie::QuickTimeFileTypes();
    ASSERT_GT(extensions.size(), 100);
    QMimeDatabase mimes;
    QStringList missing;
    for (const QString &extension : extensions) {
        if (extension.startsWith(u'\''))
            continue; // an HFS type code, not an extension
        // A picture, document or movie type (by name or generic icon) must be offered; text need not.
        for (const QMimeType &type : mimes.mimeTypesForFileName(u"file."_s + extension)) {
            if (type.inherits(u"text/plain"_s) && !type.name().startsWith(u"image/"_s))
                continue;
            const bool shown = type.name().startsWith(u"image/"_s) || type.name().startsWith(u"video/"_s)
                || type.genericIconName() == u"image-x-generic"
                || type.genericIconName() == u"video-x-generic"
                || Image::isPDFExtension(extension, QString());
            if (shown && !offered.contains(type.name()) && !missing.contains(type.name()))
                missing << type.name() + u" (."_s + extension + u')';
        }
    }
    EXPECT_TRUE(missing.isEmpty()) << missing.join(u", "_s);
}

/// A file manager's context-menu action: its file and the group holding its command.
struct MenuAction
{
    const char *file;
    const char *group;
};

class FileManagerAction : public testing::TestWithParam<MenuAction>
{
};

TEST_P(FileManagerAction, RunsTheProgramOnTheChosenItems)
{
    const auto action = readKeyFile(staged(QString::fromLatin1(GetParam().file)))
                            .value(QString::fromLatin1(GetParam().group));

    // Chosen: a picture, and a folder with a picture in it; %F is their paths, one argument each.
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(u"a picture.png"_s), 60, 40));
    ASSERT_TRUE(QDir().mkpath(dir.file(u"folder"_s)));
    ASSERT_TRUE(writeTestImage(dir.file(u"folder/inside.jpg"_s), 60, 40));
    QStringList command;
    const QString bin = QFileInfo(u"" ORVEL_THUMBNAILS_PATH ""_s).absolutePath();
    for (const QString &word : action.value(u"Exec"_s).split(u' ', Qt::SkipEmptyParts)) {
        if (word == u"%F")
            command << dir.file(u"a picture.png"_s) << dir.file(u"folder"_s);
        else
            command << QString(word).replace(u"@ORVEL_BINDIR@"_s, bin);
    }
    ASSERT_GE(command.size(), 3) << action.value(u"Exec"_s);
    // The program runs with the default settings, whatever earlier tests stored.
    TempDir config;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_s, config.path());
    QProcess run;
    run.setProcessEnvironment(environment);
    run.start(command.first(), command.mid(1));
    ASSERT_TRUE(run.waitForFinished(60000)) << "it did not quit by itself";
    EXPECT_EQ(run.exitCode(), 0) << run.readAllStandardError().toStdString();
    EXPECT_TRUE(QFile::exists(dir.file(u"a picture_thumb.jpg"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"folder/inside_thumb.jpg"_s)));
}

INSTANTIATE_TEST_SUITE_P(Menus, FileManagerAction,
    testing::Values(
        MenuAction { "kio-servicemenus/org.orvel.Thumbnails.desktop", "Desktop Action makeThumbnails" },
        MenuAction { "nemo-actions/org.orvel.Thumbnails.nemo_action", "Nemo Action" },
        MenuAction { "file-manager-actions/org.orvel.Thumbnails.desktop", "X-Action-Profile selection" }));

TEST(DesktopFiles, InstallingIntoAPrefixPutsEverythingWhereDesktopsLook)
{
    TempDir prefix;
    QByteArray err;
    ASSERT_EQ(runProgram(u"" ORVEL_CMAKE_COMMAND ""_s,
                  { u"--install"_s, u"" ORVEL_BUILD_DIR ""_s, u"--prefix"_s, prefix.path() }, nullptr, &err,
                  120000),
        0)
        << err.toStdString();
    // The desktop file runs the program installed under the prefix given now, with an installed icon.
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
    // The thumbnailer and the context-menu actions run the programs installed beside them.
    for (const QString &file : { u"thumbnailers/org.orvel.Thumbnails.thumbnailer"_s,
             u"kio/servicemenus/org.orvel.Thumbnails.desktop"_s,
             u"nemo/actions/org.orvel.Thumbnails.nemo_action"_s,
             u"file-manager/actions/org.orvel.Thumbnails.desktop"_s })
        EXPECT_TRUE(readBytes(prefix.file(u"share/"_s + file))
                        .contains((u"Exec="_s + prefix.file(u"bin/orvel-thumb"_s)).toUtf8()))
            << file;
}

} // namespace
