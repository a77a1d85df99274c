// A batch of broken, truncated, hostile and enormous files: each fails with a reason, the good file
// is still made, nothing hangs and nothing is left behind.
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel::test;

TEST(BadInput, EveryBrokenFileFailsAloneWithAReason)
{
    TempDir dir, home;
    const QString d = dir.path();
    ASSERT_TRUE(writeTestImage(d + u"/good.png"_s, 300, 200));
    ASSERT_TRUE(writeTestImage(d + u"/cut.jpg"_s, 900, 700));
    QByteArray jpeg = readBytes(d + u"/cut.jpg"_s);
    ASSERT_TRUE(writeBytes(d + u"/cut.jpg"_s, jpeg.left(jpeg.size() / 3)));
    ASSERT_TRUE(writeBytes(d + u"/zero.png"_s, {}));
    ASSERT_TRUE(writeBytes(d + u"/noise.gif"_s, QByteArray(5000, '\x5a')));
    ASSERT_TRUE(writeBytes(d + u"/bomb.png"_s, pngDeclaring(300000, 300000)));
    // A 77-byte GIF whose one frame sits at (28261, 28516): its decoder's canvas would grow to
    // 55495 × 28532 pixels, 6 GB.
    ASSERT_TRUE(writeBytes(d + u"/canvas.gif"_s,
        QByteArray::fromBase64(
            "R0lGODlh8AAQAIAAAEdwTCh4yCH/C05FVFNDQVBFMi4wAwEAAAAh+QQFAAAAACxlbmRvYmoQAAACEYyP"
            "qcvtD6OctNqLs968+68UADs=")));
    ASSERT_TRUE(writeBytes(d + u"/forever.ps"_s, "%!PS\n{ } loop\n"));
    ASSERT_TRUE(writeBytes(d + u"/fake.pdf"_s, "%PDF-1.4\n1 0 obj << /Type /Catalog >> endobj\n"));
    ASSERT_TRUE(QFile::link(d + u"/nowhere.jpg"_s, d + u"/dangling.jpg"_s));

    QByteArray out, err;
    const int status = runThumbs(home, { u"--timeout"_s, u"3"_s, u"-j"_s, u"2"_s, d }, &out, &err);
    EXPECT_EQ(status, 1) << err.constData();
    EXPECT_TRUE(QFileInfo::exists(d + u"/good_thumb.jpg"_s));
    for (const char *name : { "cut.jpg", "zero.png", "noise.gif", "bomb.png", "canvas.gif", "forever.ps",
             "fake.pdf", "dangling.jpg" }) {
        const QByteArray line = (d + u'/' + QString::fromLatin1(name) + u": "_s).toUtf8();
        EXPECT_TRUE(err.contains(line)) << name << "\n" << err.constData();
    }
    // Refused from its header, not after a time-out or an exhausted machine.
    EXPECT_TRUE(err.contains((d + u"/canvas.gif: picture too large (55495 × 28532 pixels)"_s).toUtf8()))
        << err.constData();
    // Only the one good thumbnail was written: no partial outputs, no temporary files.
    QStringList made
        = QDir(d).entryList(QStringList { u"*thumb*"_s, u".*"_s }, QDir::Files | QDir::Hidden | QDir::System);
    EXPECT_EQ(made, QStringList { u"good_thumb.jpg"_s });
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
    ASSERT_TRUE(writeBytes(d + u"/a-wide.gif"_s,
        QByteArray::fromBase64(
            "R0lGODlh8AAQAIAAAEdwTCh4yCH/C05FVFNDQVBFMi4wAwEAAAAh+QQFAAAAACwAANAu4C4QAAACEYyP"
            "qcvtD6OctNqLs968+68UADs=")));
    ASSERT_TRUE(writeTestImage(d + u"/b-good.png"_s, 300, 200));

    QByteArray err;
    EXPECT_EQ(runThumbs(home, { u"-j1"_s, u"--memory-limit=256"_s, d }, nullptr, &err), 1);
    EXPECT_TRUE(err.contains((d + u"/a-wide.gif: the decoder gave up (GLib: "_s).toUtf8()))
        << err.constData();
    EXPECT_TRUE(err.contains("failed to allocate")) << err.constData();
    EXPECT_TRUE(QFileInfo::exists(d + u"/b-good_thumb.jpg"_s));

    EXPECT_EQ(runThumbs(home, { u"--memory-limit"_s, u"lots"_s, d }), 2);
}
