// Tests of the progress window: its counts, when it appears and goes, and the count of a drop.
#include "app/desktop/ProgressWindow.h"
#include "DesktopTestSupport.h"
#include "app/engine/ThumbnailJob.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

TEST(ProgressWindow, CountsTheFilesDoneOfTheExpectedTotalAndAShortRunNeverShowsIt)
{
    ProgressWindow window;
    window.addExpectedFiles(3);
    window.fileStarted(u"/a/one.png"_s);
    window.fileFinished(u"/a/one.png"_s, true);
    window.fileStarted(u"/a/two.png"_s);
    EXPECT_EQ(window.countText(), u"1 of 3 files"_s);
    EXPECT_EQ(window.currentFile(), u"/a/two.png"_s);
    // More files than expected (the folder grew): the total follows.
    for (int i = 0; i < 2; ++i) {
        window.fileFinished(QString(), i == 0);
        window.fileStarted(QString());
    }
    EXPECT_EQ(window.countText(), u"3 of 4 files"_s);
    window.runFinished();
    QTest::qWait(ProgressWindow::ShowDelay + 200);
    EXPECT_FALSE(window.isVisible());
}

TEST(ProgressWindow, AppearsOnceARunHasTakenAboutASecondEvenInTheMiddleOfAFile)
{
    ProgressWindow window;
    QElapsedTimer clock;
    clock.start();
    window.addExpectedFiles(2);
    window.fileStarted(u"/a/one.png"_s);
    EXPECT_FALSE(window.isVisible());
    // The event loop runs while the job works; no other file event comes.
    ASSERT_TRUE(processEventsUntil([&] { return window.isVisible(); }, 10000));
    EXPECT_GE(clock.elapsed(), ProgressWindow::ShowDelay * 9 / 10);
    EXPECT_EQ(window.countText(), u"0 of 2 files"_s);

    // Processing stops between two items of one delivery: the run goes on.
    window.fileFinished(u"/a/one.png"_s, true);
    window.runFinished();
    window.fileStarted(u"/a/two.png"_s);
    EXPECT_TRUE(window.isVisible());
    window.runFinished();
    ASSERT_TRUE(processEventsUntil([&] { return !window.isVisible(); }));
    EXPECT_EQ(window.filesTotal(), 0);
}

TEST(ProgressWindow, CountFilesSearchesFoldersAndStopsAtTheLimit)
{
    TempDir dir;
    QDir(dir.path()).mkpath(u"f/g"_s);
    for (const char *name : { "f/a", "f/.hidden", "f/g/b", "f/g/c", "single" })
        ASSERT_TRUE(writeBytes(dir.file(QString::fromLatin1(name)), "x"));
    // A link back up is not followed.
    ASSERT_TRUE(QFile::link(dir.file(u"f"_s), dir.file(u"f/g/up"_s)));
    EXPECT_EQ(countFiles({ dir.file(u"f"_s), dir.file(u"single"_s) }), 5);
    EXPECT_EQ(countFiles({ dir.file(u"f"_s) }, 2), 2);
    EXPECT_EQ(countFiles({}), 0);
}

TEST(ProgressWindow, AddsUpTheSizeOfTheThumbnailsOfTheRun)
{
    TempDir dir;
    ProgressWindow window;
    for (const char *name : { "a.png", "b.png", "c.png" }) {
        const QString source = dir.file(QString::fromLatin1(name));
        // Wherever the settings earlier tests stored put the thumbnail.
        const QString output = ThumbnailJob::outputPathForFile(source);
        ASSERT_FALSE(output.isEmpty());
        ASSERT_TRUE(QDir().mkpath(QFileInfo(output).path()));
        ASSERT_TRUE(writeBytes(output, QByteArray(1000, 'x')));
        window.fileStarted(source);
        window.fileFinished(source, source != dir.file(u"b.png"_s)); // b failed: its old file does not count
    }
    EXPECT_EQ(window.bytesWritten(), 2000);
    window.runFinished();
    ASSERT_TRUE(processEventsUntil([&] { return window.filesDone() == 0; }));
    EXPECT_EQ(window.bytesWritten(), 0);
}

} // namespace
