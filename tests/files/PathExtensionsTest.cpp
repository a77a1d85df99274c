// Path strings: standardisation and relative paths against independent references, containment,
// ordering, file-system fitting of multi-byte text, names, extensions, colon forms, temporary paths.
#include "files/PathExtensions.h"
#include "files/Base64.h"
#include "files/FinderInfo.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QRandomGenerator>
#include <algorithm>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::EnvironmentOverride;
using orvel::test::TempDir;

namespace {

/// The standardisation walk done literally on a list, index by index, as a reference.
QString referenceStandardizedPath(const QString &path)
{
    QStringList c = path.split(u'/');
    if (path.startsWith(u'/'))
        c[0] = u"/"_s;
    qsizetype i = 0;
    while (i < c.size()) {
        if (c[i].isEmpty() || c[i] == u"." || (c[i] == u"/" && i > 0)) {
            c.removeAt(i);
        } else if (c[i] == u"..") {
            c.removeAt(i);
            if (i > 0)
                c.removeAt(--i);
        } else {
            ++i;
        }
    }
    if (!c.isEmpty() && c[0] == u"/")
        c[0].clear();
    return c.join(u'/');
}

QString randomPath(QRandomGenerator &random)
{
    static const QString parts[] = { u"a"_s, u"bb"_s, u"."_s, u".."_s, u""_s, u"Bücher"_s, u"x.jpg"_s };
    QString path = random.bounded(2) ? u"/"_s : QString();
    const int n = random.bounded(7);
    for (int i = 0; i < n; ++i)
        path += parts[random.bounded(7)] + (random.bounded(4) ? u"/"_s : u"//"_s);
    if (random.bounded(2))
        path.chop(1);
    return path;
}

} // namespace

TEST(PathStandardisation, MatchesTheListWalkAndKeepsItsQuirks)
{
    QRandomGenerator random(7);
    for (int k = 0; k < 5000; ++k) {
        const QString path = randomPath(random);
        ASSERT_EQ(standardizedPath(path), referenceStandardizedPath(path)) << path;
    }
    EXPECT_EQ(standardizedPath(u"/"_s), u""_s);
    EXPECT_EQ(standardizedPathComponents(u"/a//b/"), (QStringList { u"/"_s, u"a"_s, u"b"_s }));
}

TEST(PathStandardisation, AHugeHostilePathIsHandledInLinearTime)
{
    const QString deep = u"/"_s + u"a/"_s.repeated(300000) + u"../"_s.repeated(300000) + u"end"_s;
    EXPECT_EQ(standardizedPath(deep), u"/end"_s);
    EXPECT_EQ(standardizedPathComponents(deep).size(), 2);
    EXPECT_EQ(relativePathToDirectory(deep, u"/"), u"./end"_s);
    EXPECT_EQ(stringByCreatingFileSystemRepresentation(deep).size(), 249);
    EXPECT_EQ(
        HFSPath(deep).size(), deep.size() + QStringView(RootVolumeName).size()); // "/" became "Computer:"
}

TEST(PathRelations, RelativePathsAgreeWithQtOnCleanAbsolutePaths)
{
    const QString cases[][3] = {
        { u"/a/b"_s, u"/a/b/./"_s, u"./"_s },
        { u"/a/../b/c"_s, u"/b"_s, u"./c"_s },
        { u"/../a"_s, u"/a"_s, u"./"_s },
    };
    for (const auto &c : cases)
        EXPECT_EQ(relativePathToDirectory(c[0], c[1]), c[2]) << c[0] << " from " << c[1];
    EXPECT_EQ(relativePathToDirectory(u"~/x", QDir::homePath()), u"./x"_s);

    // Qt writes "c" and "." where we write "./c" and "./"; otherwise both must agree.
    QRandomGenerator random(11);
    for (int k = 0; k < 3000; ++k) {
        const QString path = QDir::cleanPath(u'/' + randomPath(random));
        const QString dir = QDir::cleanPath(u'/' + randomPath(random));
        if (path.contains(u"..") || dir.contains(u".."))
            continue; // above the root, where Qt keeps the ".."
        QString ours = relativePathToDirectory(path, dir);
        ours = ours == u"./" ? u"."_s : ours.startsWith(u"./") ? ours.mid(2) : ours;
        if (ours.endsWith(u'/'))
            ours.chop(1);
        QString qt = QDir(dir).relativeFilePath(path);
        if (qt.endsWith(u'/'))
            qt.chop(1);
        ASSERT_EQ(ours, qt) << path << " from " << dir;
    }
}

TEST(PathRelations, NothingIsInsideTheRootAndAStringIsNotInsideItself)
{
    EXPECT_TRUE(pathIsInDirectory(u"/a/b/c"_s, u"/a/b"_s));
    EXPECT_TRUE(pathIsInDirectory(u"/a/b"_s, u"/a/b/"_s));
    const QString outside[][2] = { { u"/a/bc"_s, u"/a/b"_s }, { u"/A/b"_s, u"/a"_s }, { u"/a"_s, u"/"_s },
        { u"/"_s, u"//"_s }, { u"/a"_s, u""_s }, { u"/a"_s, QString() } };
    for (const auto &c : outside)
        EXPECT_FALSE(pathIsInDirectory(c[0], c[1])) << c[0] << " in " << c[1];

    const QString path = u"/srv/photos"_s;
    const QString sharedCopy = path;
    const QString equalText = QString::fromLatin1("/srv/") + u"photos"_s;
    EXPECT_FALSE(pathIsInDirectory(path, sharedCopy));
    EXPECT_TRUE(pathIsInDirectory(path, equalText));
    EXPECT_FALSE(pathIsInDirectories(path, { sharedCopy, u"/srv/other"_s }));
    EXPECT_TRUE(pathIsInDirectories(path, { sharedCopy, u"/srv/other"_s, equalText }));
    EXPECT_FALSE(pathIsInDirectories(path, {}));
}

TEST(PathRelations, FileComponentTreatsATrailingSlashAsAFolder)
{
    const QString cases[][2] = { { u""_s, u""_s }, { u"/"_s, u""_s }, { u"/a/b"_s, u"/a"_s },
        { u"/a/b/"_s, u"/a/b"_s }, { u"/a"_s, u"/"_s }, { u"a"_s, u""_s }, { u"a//b"_s, u"a"_s } };
    for (const auto &c : cases)
        EXPECT_EQ(stringByDeletingFileComponent(c[0]), c[1]) << c[0];
}

TEST(PathOrdering, NumbersCompareByValueAndTheWholeStringsDecide)
{
    EXPECT_LT(compareWithLastPathComponent(u"file9", u"file10"), 0);
    EXPECT_EQ(compareWithLastPathComponent(u"a7", u"a007"), -2);
    EXPECT_EQ(compareWithLastPathComponent(u"/x/img2.jpg", u"/y/img2.jpg"), u'x' - u'y');
    EXPECT_EQ(compareWithLastPathComponent(u"a", QStringView()), -1);
    EXPECT_EQ(compareWithLastPathComponent(u"", u"abc"), -3);
    EXPECT_EQ(compareWithLastPathComponent(u"a", u"B"), u'a' - u'B');
    EXPECT_EQ(caseInsensitiveCompareWithLastPathComponent(u"a", u"B"), -1);
    EXPECT_EQ(caseInsensitiveCompareWithLastPathComponent(u"Über2", u"über10"), -1);
    EXPECT_EQ(nonUmlautedCaseInsensitiveCompareWithLastPathComponent(u"Über", u"uber"), 0);
    // Runs longer than any integer still compare as numbers.
    const QString big = u"x1"_s + QString(40, u'0');
    EXPECT_GT(compareWithLastPathComponent(big, u"x"_s + QString(40, u'9')), 0);
    EXPECT_EQ(compareWithLastPathComponent(big, u"x0001"_s + QString(40, u'0')), -3);
    EXPECT_LT(compareWithLastPathComponent(u"img2.png", u"img02b.png"), 0);
}

TEST(FileSystemRepresentation, KeepsTheLongestFittingPrefixOfWholeCharacters)
{
    // One- to four-byte characters after a few ASCII ones, so that the limit falls on every offset.
    const QString characters[] = { u"a"_s, u"é"_s, u"€"_s, u"😀"_s };
    for (const QString &character : characters) {
        for (int lead = 0; lead < 4; ++lead) {
            QString original = QString(lead, u'x');
            while (original.toUtf8().size() < 400)
                original += character;
            for (const QString &extension : { QString(), u"jpg"_s }) {
                const qsizetype limit = extension.isEmpty() ? 249 : 245;
                const QString fitted = extension.isEmpty()
                    ? stringByCreatingFileSystemRepresentation(original)
                    : stringByCreatingFileSystemRepresentationByAppendingExtension(original, extension);
                const QString body = extension.isEmpty() ? fitted : fitted.chopped(4);
                EXPECT_TRUE(extension.isEmpty() || fitted.endsWith(u".jpg"));
                EXPECT_TRUE(original.startsWith(body));
                EXPECT_EQ(QString::fromUtf8(body.toUtf8()), body) << "no half of a surrogate pair";
                EXPECT_LE(body.toUtf8().size(), limit);
                EXPECT_GT(body.toUtf8().size() + character.toUtf8().size(), limit)
                    << "nothing cut needlessly";
            }
        }
    }
    EXPECT_EQ(
        stringByCreatingFileSystemRepresentationByAppendingExtension(u"photo.jpg"_s, u"jpg"), u"photo.jpg"_s);
    EXPECT_EQ(stringByCreatingFileSystemRepresentationByAppendingExtension(u"photo.JPG"_s, u"jpg"),
        u"photo.JPG.jpg"_s);
    EXPECT_EQ(
        stringByCreatingFileSystemRepresentationByAppendingExtension(u"a"_s, QString(18, u'x')), u"a"_s);
    EXPECT_TRUE(stringByCreatingFileSystemRepresentation(QString()).isNull());
    EXPECT_EQ(stringByCreatingFileSystemRepresentation(u""_s), u""_s);
}

TEST(FileNames, TrimsTheEndsReplacesSeparatorsAndComposes)
{
    const QString cases[][2] = {
        { u"..a/b:c~.."_s, u"a-b-c"_s },
        { u"~/.config"_s, u"config"_s },
        { u"v1.2 final"_s, u"v1.2 final"_s },
        { u"Cafe\u0301"_s, u"Caf\u00e9"_s },
        { u"./:~"_s, u""_s },
    };
    for (const auto &c : cases)
        EXPECT_EQ(stringByCreatingFilename(c[0]), c[1]) << c[0];
    EXPECT_EQ(stringByTrimmingInvalidFilenameCharacters(u"~..a/b:c~.x"_s), u"a/b:c~.x"_s);
}

TEST(FileNames, ComposeAsQtDoesForEveryLatinBaseAndMark)
{
    // Between "x" and "y" nothing is trimmed; separators among the bases become hyphens.
    const auto reference = [](const QString &text) {
        return text.normalized(QString::NormalizationForm_C)
            .replace(u'/', u'-')
            .replace(u':', u'-')
            .replace(u'~', u'-');
    };
    for (char16_t base = 0x20; base < 0x370; ++base) {
        for (char16_t mark = 0x300; mark < 0x370; ++mark) {
            QString text = u"x"_s;
            text.append(QChar(base)).append(QChar(mark)).append(u'y');
            ASSERT_EQ(stringByCreatingFilename(text), reference(text)) << int(base) << " " << int(mark);
            text.insert(3, QChar(char16_t(0x301))); // a second mark
            ASSERT_EQ(stringByCreatingFilename(text), reference(text)) << int(base) << " " << int(mark);
        }
    }
}

TEST(PathExtensionNames, ExtensionsAreCleanedMatchedAppendedAndReplaced)
{
    EXPECT_EQ(validPathExtension(u"/x/file.JPG?size=2"), u"JPG"_s);
    EXPECT_EQ(validPathExtension(u"a.tar-gz"), u""_s);
    EXPECT_EQ(validPathExtension(u"a.abcdefghijklmnopqr"), u""_s);
    EXPECT_EQ(validPathExtension(u"/home/.profile"), u""_s);
    EXPECT_TRUE(isValidPathExtension(u"jpeg2000"));
    EXPECT_EQ(stringByAppendingPathExtensionIfNecessary(u"a.JPG"_s, u"jpg"), u"a.JPG"_s);
    EXPECT_EQ(stringByAppendingPathExtensionIfNecessary(u"dir/a.png/"_s, u"jpg"), u"dir/a.png.jpg"_s);
    EXPECT_EQ(stringByReplacingPathExtensionWith(u"a.JPG"_s, u"jpg"), u"a.jpg"_s);
    EXPECT_EQ(stringByReplacingPathExtensionWith(u"/d.x/.rc"_s, u"jpg"), u"/d.x/.rc.jpg"_s);
    EXPECT_TRUE(pathMatchingExtensions(u"/a/B.Tiff", { u"png"_s, u"TIFF"_s }));
    EXPECT_FALSE(pathMatchingExtensions(u"/a/b.tif", { u"tiff"_s }));
}

TEST(PathExtensionNames, TypeCodesMatchWhenTheExtensionDoesNot)
{
    TempDir dir;
    const QString file = dir.file(u"scan"_s);
    ASSERT_TRUE(orvel::test::writeBytes(file, "x"));
    if (!setHFSTypeCodeOfFile(file, 0x4A504547)) // 'JPEG'
        GTEST_SKIP() << "no user extended attributes on the temporary folder's file system";
    EXPECT_TRUE(pathMatchingExtensionsOrTypes(file, { u"png"_s, u"'JPEG'"_s }));
    EXPECT_FALSE(pathMatchingExtensionsOrTypes(file, { u"png"_s, u"'jpeg'"_s }));
    EXPECT_TRUE(pathMatchingExtensionsOrTypes(dir.file(u"x.PNG"_s), { u"png"_s }));
    EXPECT_FALSE(pathMatchingExtensionsOrTypes(u""_s, { u""_s }));
}

TEST(PathForms, ColonFormsRoundTripAndMountedVolumesAreVolumes)
{
    const QString root = QString::fromUtf16(RootVolumeName);
    const QString pairs[][2] = {
        { u"/home/ann/a:b"_s, root + u":home:ann:a/b"_s },
        { u"/"_s, root + u":"_s },
        { u"/home/"_s, root + u":home:"_s },
    };
    for (const auto &p : pairs) {
        EXPECT_EQ(HFSPath(p[0]), p[1]);
        EXPECT_EQ(POSIXPath(p[1]), p[0]);
    }
    EXPECT_EQ(HFSPath(u"a/b"_s), u":a:b"_s);
    EXPECT_EQ(POSIXPath(u":a:b"_s), u"/a/b"_s);
    EXPECT_EQ(HFSPath(u"plain"_s), u"plain"_s);
    EXPECT_EQ(POSIXPath(u"plain"_s), u"/plain"_s);
    EXPECT_EQ(POSIXPath(u"~/x"_s), QDir::homePath() + u"/x"_s);
    EXPECT_TRUE(POSIXPath(QString()).isNull());

    const QString volume = POSIXPath(u"USB Stick:docs:a/b"_s);
    EXPECT_TRUE(volume.startsWith(u"/media/") || volume.startsWith(u"/run/media/")) << volume;
    EXPECT_TRUE(volume.endsWith(u"/USB Stick/docs/a:b")) << volume;
    EXPECT_EQ(HFSPath(volume), u"USB Stick:docs:a/b"_s);
}

TEST(PathForms, TemporaryPathsByPrefixTemporaryFolderAndMailAttachments)
{
    const QString home = QDir::homePath();
    EnvironmentOverride tmpdir("TMPDIR", u"/scratch/t"_s);
    for (const QString &path : { u"/tmp"_s, u"/tmpfoo/x"_s, u"/var/tmp/x"_s, u"/scratch/t/x"_s,
             home + u"/.claws-mail/mimetmp/bill.pdf"_s })
        EXPECT_TRUE(isTemporaryPath(path)) << path;
    for (const QString &path : { u"/var/tmp"_s, u"/scratch/tx"_s, home + u"/mail/mimetmp/bill.pdf"_s,
             u"/srv/.claws-mail/mimetmp/bill.pdf"_s, QString() })
        EXPECT_FALSE(isTemporaryPath(path)) << path;
}

TEST(Base64Text, DecodesWrappedTextAndRefusesDamage)
{
    EXPECT_EQ(encodebase64(u"Man"_s), u"TWFu"_s);
    EXPECT_EQ(decodebase64(encodebase64(u"Grüße 😀"_s)), u"Grüße 😀"_s);
    EXPECT_EQ(decodedBase64Data(u"TWFu\r\nTWE="_s), QByteArray("ManMa"));
    EXPECT_EQ(decodedBase64Data(u"TWE"_s), QByteArray("Ma"));
    EXPECT_TRUE(decodedBase64Data(u"TW=Fu"_s).isNull());
    EXPECT_TRUE(decodedBase64Data(u"TWFu!"_s).isNull());
    EXPECT_TRUE(decodebase64(encodedBase64Data("\xff\xfe")).isNull()) << "not UTF-8";
    EXPECT_EQ(decodebase64UsingEncoding(encodedBase64Data("\xe9t\xe9"), QStringConverter::Latin1), u"été"_s);
    EXPECT_EQ(decodebase64(u""_s), u""_s);
}
