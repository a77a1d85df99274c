// Tests of the progress window: its counts, when it appears and goes, and the count of a drop.
#include "app/ProgressWindow.h"
#include "DesktopTestSupport.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <gtest/gtest.h>

using namespace orvel;
using namespace orvel::test;

namespace {

TEST(ProgressWindow, CountsTheFilesDoneOfTheExpectedTotal)
{
    ProgressWindow window;
    window.addExpectedFiles(3);
    window.fileStarted(QStringLiteral("/a/one.png"));
    window.fileFinished(QStringLiteral("/a/one.png"), true);
    window.fileStarted(QStringLiteral("/a/two.png"));
    EXPECT_EQ(window.countText(), QStringLiteral("1 of 3 files"));
    EXPECT_EQ(window.currentFile(), QStringLiteral("/a/two.png"));
    // More files than expected (the folder grew): the total follows.
    window.fileFinished(QString(), false);
    window.fileStarted(QString());
    window.fileFinished(QString(), true);
    window.fileStarted(QString());
    EXPECT_EQ(window.countText(), QStringLiteral("3 of 4 files"));
}

TEST(ProgressWindow, AppearsOnceARunHasTakenAboutASecondEvenInTheMiddleOfAFile)
{
    ProgressWindow window;
    QElapsedTimer clock;
    clock.start();
    window.addExpectedFiles(2);
    window.fileStarted(QStringLiteral("/a/one.png"));
    EXPECT_FALSE(window.isVisible());
    // The event loop runs while the job works; no other file event comes.
    ASSERT_TRUE(processEventsUntil([&] { return window.isVisible(); }, 10000));
    EXPECT_GE(clock.elapsed(), ProgressWindow::ShowDelay * 9 / 10);
    EXPECT_EQ(window.countText(), QStringLiteral("0 of 2 files"));

    // Processing stops between two items of one delivery: the run goes on.
    window.fileFinished(QStringLiteral("/a/one.png"), true);
    window.runFinished();
    window.fileStarted(QStringLiteral("/a/two.png"));
    EXPECT_TRUE(window.isVisible());
    window.runFinished();
    ASSERT_TRUE(processEventsUntil([&] { return !window.isVisible(); }));
    EXPECT_EQ(window.filesTotal(), 0);
}

TEST(ProgressWindow, AShortRunNeverShowsIt)
{
    ProgressWindow window;
    window.fileStarted(QStringLiteral("/a/one.png"));
    window.fileFinished(QStringLiteral("/a/one.png"), true);
    window.runFinished();
    QTest::qWait(ProgressWindow::ShowDelay + 200);
    EXPECT_FALSE(window.isVisible());
}

TEST(ProgressWindow, CountFilesSearchesFoldersAndStopsAtTheLimit)
{
    TempDir dir;
    QDir(dir.path()).mkpath(QStringLiteral("f/g"));
    for (const char *name : { "f/a", "f/.hidden", "f/g/b", "f/g/c", "single" })
        ASSERT_TRUE(writeBytes(dir.file(QString::fromLatin1(name)), "x"));
    // A link back up is not followed.
    ASSERT_TRUE(QFile::link(dir.file(QStringLiteral("f")), dir.file(QStringLiteral("f/g/up"))));
    EXPECT_EQ(countFiles({ dir.file(QStringLiteral("f")), dir.file(QStringLiteral("single")) }), 5);
    EXPECT_EQ(countFiles({ dir.file(QStringLiteral("f")) }, 2), 2);
    EXPECT_EQ(countFiles({}), 0);
}

} // namespace
