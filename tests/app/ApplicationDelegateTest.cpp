// Tests of the application delegate: launch order, the automatic quit, and opened files processed
// by the real thumbnail job in worker processes.
#include "app/ApplicationDelegate.h"
#include "DesktopTestSupport.h"
#include "app/IsolatedJob.h"
#include "app/PreferencesPanel.h"
#include "testlib/TestSupport.h"

#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QTest>
#include <gtest/gtest.h>

using namespace orvel;
using namespace orvel::test;

namespace {

class ApplicationDelegateTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        clearStandardDefaults();
        panel = std::make_unique<PreferencesPanel>();
        job = std::make_unique<IsolatedJob>(thumbsExecutable());
        ASSERT_TRUE(job->isIsolated()) << thumbsExecutable();
        delegate = std::make_unique<ApplicationDelegate>(panel.get());
        delegate->setFileProcessor([this](const QString &path) {
            processed << path;
            // The flags as the job sees them.
            finishedWhileProcessing = finishedWhileProcessing || delegate->didFinish();
            if (processingHook)
                processingHook();
            return job->processFile(path);
        });
        delegate->setQuitHandler([this] {
            ++quits;
            quitClock = clock.elapsed();
        });
        clock.start();
    }

    QString picture(const QString &name, int w = 64, int h = 48)
    {
        const QString path = dir.file(name);
        EXPECT_TRUE(writeTestImage(path, w, h));
        return path;
    }

    bool waitForQuit()
    {
        return processEventsUntil([this] { return quits > 0; }, 5000);
    }

    TempDir dir;
    std::unique_ptr<PreferencesPanel> panel;
    std::unique_ptr<IsolatedJob> job;
    std::unique_ptr<ApplicationDelegate> delegate;
    QStringList processed;
    bool finishedWhileProcessing = false;
    std::function<void()> processingHook;
    int quits = 0;
    qint64 quitClock = -1;
    QElapsedTimer clock;
};

TEST_F(ApplicationDelegateTest, PlainLaunchShowsThePanelAndNeverQuitsByItself)
{
    delegate->applicationWillFinishLaunching();
    delegate->applicationDidFinishLaunching();

    EXPECT_TRUE(panel->isVisible());
    EXPECT_FALSE(delegate->didDrop());
    EXPECT_FALSE(delegate->shouldQuit());
    EXPECT_TRUE(delegate->didFinish());
    EXPECT_FALSE(delegate->isTerminateScheduled());
    QTest::qWait(int(ApplicationDelegate::QuitDelay * 1000) * 2);
    EXPECT_EQ(quits, 0);
}

TEST_F(ApplicationDelegateTest, LaunchByDropProcessesItemsBeforeLaunchingEndsThenQuitsWithoutAWindow)
{
    const QString a = picture(QStringLiteral("a.png"));
    const QString b = picture(QStringLiteral("b.png"));
    delegate->applicationWillFinishLaunching();
    EXPECT_TRUE(delegate->applicationOpenFile(a));
    EXPECT_TRUE(delegate->applicationOpenFile(b));
    // Items of the launch come before its end: nothing is scheduled yet.
    EXPECT_TRUE(delegate->didDrop());
    EXPECT_FALSE(delegate->shouldQuit());
    EXPECT_FALSE(delegate->isTerminateScheduled());
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("a_thumb.jpg"))));
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("b_thumb.jpg"))));

    delegate->applicationDidFinishLaunching();
    EXPECT_TRUE(delegate->shouldQuit());
    EXPECT_TRUE(delegate->isTerminateScheduled());
    EXPECT_FALSE(panel->isVisible());
    EXPECT_FALSE(finishedWhileProcessing);
    const qint64 finished = clock.elapsed();
    ASSERT_TRUE(waitForQuit());
    EXPECT_EQ(quits, 1);
    // Not before the delay (a lower bound only; the machine may be slow).
    EXPECT_GE(quitClock - finished, qint64(ApplicationDelegate::QuitDelay * 1000) - 5);
}

TEST_F(ApplicationDelegateTest, EachLaterItemCancelsAndRearmsTheQuit)
{
    const QString a = picture(QStringLiteral("a.png"));
    const QString b = picture(QStringLiteral("b.png"));
    delegate->applicationOpenFile(a);
    delegate->applicationDidFinishLaunching();
    ASSERT_TRUE(delegate->isTerminateScheduled());

    // The item arrives; the quit is re-armed from its arrival, and the job runs first.
    const qint64 arrival = clock.elapsed();
    EXPECT_TRUE(delegate->applicationOpenFile(b));
    EXPECT_TRUE(delegate->isTerminateScheduled());
    EXPECT_EQ(quits, 0);
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("b_thumb.jpg"))));
    ASSERT_TRUE(waitForQuit());
    EXPECT_EQ(quits, 1);
    EXPECT_GE(quitClock - arrival, qint64(ApplicationDelegate::QuitDelay * 1000) - 5);
    QTest::qWait(int(ApplicationDelegate::QuitDelay * 1000) * 2);
    EXPECT_EQ(quits, 1);
}

TEST_F(ApplicationDelegateTest, TheQuitNeverCutsAJobShortWhenTheJobLetsEventsRun)
{
    const QString a = picture(QStringLiteral("a.png"));
    const QString b = picture(QStringLiteral("b.png"));
    delegate->applicationOpenFile(a);
    delegate->applicationDidFinishLaunching();
    int quitsDuringJob = -1;
    // As the progress window does: the event loop runs while the job works, past the delay.
    processingHook = [this, &quitsDuringJob] {
        QTest::qWait(int(ApplicationDelegate::QuitDelay * 1000) * 3);
        quitsDuringJob = quits;
    };
    EXPECT_TRUE(delegate->applicationOpenFile(b));
    EXPECT_EQ(quitsDuringJob, 0);
    EXPECT_TRUE(delegate->isTerminateScheduled());
    ASSERT_TRUE(waitForQuit());
    EXPECT_EQ(quits, 1);
}

TEST_F(ApplicationDelegateTest, WithQuitWhenDoneOffALaunchByDropStaysRunningUntilReopened)
{
    UserDefaults::standard().setObject(false, QStringLiteral("QuitWhenDone"));
    EXPECT_TRUE(delegate->applicationOpenFile(picture(QStringLiteral("a.png"))));
    EXPECT_FALSE(delegate->applicationOpenUntitledFile()) << "launching has not finished";
    delegate->applicationDidFinishLaunching();
    EXPECT_FALSE(delegate->shouldQuit());
    EXPECT_FALSE(delegate->isTerminateScheduled());
    EXPECT_FALSE(panel->isVisible());

    EXPECT_TRUE(delegate->applicationOpenFile(picture(QStringLiteral("b.png"))));
    EXPECT_FALSE(delegate->isTerminateScheduled());
    EXPECT_TRUE(delegate->applicationOpenUntitledFile());
    EXPECT_TRUE(panel->isVisible());
    QTest::qWait(int(ApplicationDelegate::QuitDelay * 1000) * 2);
    EXPECT_EQ(quits, 0);
}

TEST_F(ApplicationDelegateTest, ReopenShowsThePanelAgainAfterItWasClosed)
{
    delegate->applicationDidFinishLaunching();
    ASSERT_TRUE(panel->isVisible());
    panel->close();
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(delegate->applicationOpenUntitledFile());
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(ApplicationDelegateTest, ADropOnAPlainlyLaunchedApplicationIsProcessedAndItKeepsRunning)
{
    delegate->applicationDidFinishLaunching();
    EXPECT_TRUE(delegate->applicationOpenFile(picture(QStringLiteral("late.png"))));
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("late_thumb.jpg"))));
    EXPECT_TRUE(delegate->didDrop());
    EXPECT_FALSE(delegate->shouldQuit());
    EXPECT_FALSE(delegate->isTerminateScheduled());
}

TEST_F(ApplicationDelegateTest, UnappliedEditsInTheVisiblePanelAreStoredAndUsedForTheOpenedFile)
{
    delegate->applicationDidFinishLaunching();
    panel->findChild<QLineEdit *>(QStringLiteral("width"))->setText(QStringLiteral("3"));
    panel->findChild<QLineEdit *>(QStringLiteral("height"))->setText(QStringLiteral("20"));
    auto *format = panel->findChild<QComboBox *>(QStringLiteral("filetype"));
    format->setCurrentIndex(format->findData(4));

    const QString source = picture(QStringLiteral("wide.png"), 64, 32);
    EXPECT_TRUE(delegate->applicationOpenFile(source));
    EXPECT_EQ(UserDefaults::standard().integerForKey(QStringLiteral("width")), 16);
    EXPECT_EQ(UserDefaults::standard().integerForKey(QStringLiteral("filetype")), 4);
    // The worker process read the new settings: a PNG inside 16 by 20.
    const QImage thumbnail = loadImage(dir.file(QStringLiteral("wide_thumb.png")));
    ASSERT_FALSE(thumbnail.isNull());
    EXPECT_EQ(thumbnail.size(), QSize(16, 8));
    // Applied without a sender: the field still shows what was typed.
    EXPECT_EQ(panel->findChild<QLineEdit *>(QStringLiteral("width"))->text(), QStringLiteral("3"));
}

TEST_F(ApplicationDelegateTest, TerminationStoresThePanelOnlyWhenItIsVisible)
{
    auto *width = panel->findChild<QLineEdit *>(QStringLiteral("width"));
    width->setText(QStringLiteral("300"));
    delegate->applicationWillTerminate();
    EXPECT_FALSE(UserDefaults::standard().objectForKey(QStringLiteral("width")).isValid());

    panel->show();
    delegate->terminate();
    EXPECT_EQ(UserDefaults::standard().integerForKey(QStringLiteral("width")), 300);
    EXPECT_EQ(quits, 1);
}

TEST_F(ApplicationDelegateTest, AFolderIsWalkedWholeAndAnswersNoWhenAnyFileFails)
{
    QDir(dir.path()).mkpath(QStringLiteral("top/inner/deeper"));
    const QString top = dir.file(QStringLiteral("top"));
    ASSERT_TRUE(writeTestImage(top + QStringLiteral("/one.png"), 40, 30));
    ASSERT_TRUE(writeTestImage(top + QStringLiteral("/inner/two.png"), 40, 30));
    ASSERT_TRUE(writeTestImage(top + QStringLiteral("/inner/deeper/three.png"), 40, 30));
    ASSERT_TRUE(writeBytes(top + QStringLiteral("/inner/notes.txt"), "not a picture"));

    EXPECT_FALSE(delegate->applicationOpenFile(top));
    EXPECT_EQ(processed.size(), 4);
    EXPECT_TRUE(QFile::exists(top + QStringLiteral("/one_thumb.jpg")));
    EXPECT_TRUE(QFile::exists(top + QStringLiteral("/inner/two_thumb.jpg")));
    EXPECT_TRUE(QFile::exists(top + QStringLiteral("/inner/deeper/three_thumb.jpg")));
}

TEST_F(ApplicationDelegateTest, EmptyFolderAnswersYesAndMissingOrDanglingPathsAnswerNo)
{
    QDir(dir.path()).mkdir(QStringLiteral("empty"));
    EXPECT_TRUE(delegate->applicationOpenFile(dir.file(QStringLiteral("empty"))));
    EXPECT_EQ(
        QDir(dir.file(QStringLiteral("empty"))).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size(), 0);

    EXPECT_FALSE(delegate->applicationOpenFile(dir.file(QStringLiteral("nothing-here.png"))));
    ASSERT_TRUE(QFile::link(dir.file(QStringLiteral("gone.png")), dir.file(QStringLiteral("dangling.png"))));
    EXPECT_FALSE(delegate->applicationOpenFile(dir.file(QStringLiteral("dangling.png"))));
    EXPECT_FALSE(delegate->applicationOpenFile(QString()));
    EXPECT_TRUE(processed.isEmpty());
    EXPECT_TRUE(delegate->didDrop());
}

TEST_F(ApplicationDelegateTest, AHostileFileFailsAloneAndTheWorkerGoesOn)
{
    const QString broken = dir.file(QStringLiteral("broken.png"));
    ASSERT_TRUE(writeBytes(broken, QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(5000, '\x7f')));
    EXPECT_FALSE(delegate->applicationOpenFile(broken));
    EXPECT_TRUE(delegate->applicationOpenFile(picture(QStringLiteral("after.png"))));
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("after_thumb.jpg"))));
}

} // namespace
