// A batch of broken, truncated, hostile and enormous files: each fails with a reason, the good file
// is still made, nothing hangs and nothing is left behind.
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace orvel::test;

TEST(BadInput, EveryBrokenFileFailsAloneWithAReason)
{
    TempDir dir, home;
    const QString d = dir.path();
    ASSERT_TRUE(writeTestImage(d + QStringLiteral("/good.png"), 300, 200));
    ASSERT_TRUE(writeTestImage(d + QStringLiteral("/cut.jpg"), 900, 700));
    QByteArray jpeg = readBytes(d + QStringLiteral("/cut.jpg"));
    ASSERT_TRUE(writeBytes(d + QStringLiteral("/cut.jpg"), jpeg.left(jpeg.size() / 3)));
    ASSERT_TRUE(writeBytes(d + QStringLiteral("/zero.png"), {}));
    ASSERT_TRUE(writeBytes(d + QStringLiteral("/noise.gif"), QByteArray(5000, '\x5a')));
    ASSERT_TRUE(writeBytes(d + QStringLiteral("/bomb.png"), pngDeclaring(300000, 300000)));
    // A 77-byte GIF whose one frame sits at (28261, 28516): its decoder's canvas would grow to
    // 55495 × 28532 pixels, 6 GB.
    ASSERT_TRUE(writeBytes(d + QStringLiteral("/canvas.gif"),
        QByteArray::fromBase64(
            "R0lGODlh8AAQAIAAAEdwTCh4yCH/C05FVFNDQVBFMi4wAwEAAAAh+QQFAAAAACxlbmRvYmoQAAACEYyP"
            "qcvtD6OctNqLs968+68UADs=")));
    ASSERT_TRUE(writeBytes(d + QStringLiteral("/forever.ps"), "%!PS\n{ } loop\n"));
    ASSERT_TRUE(
        writeBytes(d + QStringLiteral("/fake.pdf"), "%PDF-1.4\n1 0 obj << /Type /Catalog >> endobj\n"));
    ASSERT_TRUE(QFile::link(d + QStringLiteral("/nowhere.jpg"), d + QStringLiteral("/dangling.jpg")));

    QByteArray out, err;
    const int status = runThumbs(home,
        { QStringLiteral("--timeout"), QStringLiteral("3"), QStringLiteral("-j"), QStringLiteral("2"), d },
        &out, &err);
    EXPECT_EQ(status, 1) << err.constData();
    EXPECT_TRUE(QFileInfo::exists(d + QStringLiteral("/good_thumb.jpg")));
    for (const char *name : { "cut.jpg", "zero.png", "noise.gif", "bomb.png", "canvas.gif", "forever.ps",
             "fake.pdf", "dangling.jpg" }) {
        const QByteArray line = (d + u'/' + QString::fromLatin1(name) + QStringLiteral(": ")).toUtf8();
        EXPECT_TRUE(err.contains(line)) << name << "\n" << err.constData();
    }
    // Refused from its header, not after a time-out or an exhausted machine.
    EXPECT_TRUE(
        err.contains((d + QStringLiteral("/canvas.gif: picture too large (55495 × 28532 pixels)")).toUtf8()))
        << err.constData();
    // Only the one good thumbnail was written: no partial outputs, no temporary files.
    QStringList made = QDir(d).entryList(QStringList { QStringLiteral("*thumb*"), QStringLiteral(".*") },
        QDir::Files | QDir::Hidden | QDir::System);
    EXPECT_EQ(made, QStringList { QStringLiteral("good_thumb.jpg") });
}

TEST(BadInput, AWorkerPastItsMemoryLimitFailsItsFileWithTheReason)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer's shadow memory rules out a data limit";
#endif
    TempDir dir, home;
    const QString d = dir.path();
    // A GIF whose one frame reaches to (12000, 12000): 144 megapixels, under the header limit, but a
    // 576 MB canvas for the decoder. Beside it a good file, made by the worker that replaces it.
    ASSERT_TRUE(writeBytes(d + QStringLiteral("/a-wide.gif"),
        QByteArray::fromBase64(
            "R0lGODlh8AAQAIAAAEdwTCh4yCH/C05FVFNDQVBFMi4wAwEAAAAh+QQFAAAAACwAANAu4C4QAAACEYyP"
            "qcvtD6OctNqLs968+68UADs=")));
    ASSERT_TRUE(writeTestImage(d + QStringLiteral("/b-good.png"), 300, 200));

    QByteArray err;
    EXPECT_EQ(
        runThumbs(home, { QStringLiteral("-j1"), QStringLiteral("--memory-limit=256"), d }, nullptr, &err),
        1);
    EXPECT_TRUE(err.contains((d + QStringLiteral("/a-wide.gif: the decoder gave up (GLib: ")).toUtf8()))
        << err.constData();
    EXPECT_TRUE(err.contains("failed to allocate")) << err.constData();
    EXPECT_TRUE(QFileInfo::exists(d + QStringLiteral("/b-good_thumb.jpg")));

    EXPECT_EQ(runThumbs(home, { QStringLiteral("--memory-limit"), QStringLiteral("lots"), d }), 2);
}
