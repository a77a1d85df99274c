// Tests of the application delegate: launch order, the automatic quit, and opened files processed
// by the real thumbnail job in worker processes.
#include "app/desktop/ApplicationDelegate.h"
#include "DesktopTestSupport.h"
#include "app/desktop/IsolatedJob.h"
#include "app/desktop/PreferencesPanel.h"
#include "testlib/TestSupport.h"

#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QTest>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

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
    const QString a = picture(u"a.png"_s);
    const QString b = picture(u"b.png"_s);
    delegate->applicationWillFinishLaunching();
    EXPECT_TRUE(delegate->applicationOpenFile(a));
    EXPECT_TRUE(delegate->applicationOpenFile(b));
    // Items of the launch come before its end: nothing is scheduled yet.
    EXPECT_TRUE(delegate->didDrop());
    EXPECT_FALSE(delegate->shouldQuit());
    EXPECT_FALSE(delegate->isTerminateScheduled());
    EXPECT_TRUE(QFile::exists(dir.file(u"a_thumb.jpg"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"b_thumb.jpg"_s)));

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
    const QString a = picture(u"a.png"_s);
    const QString b = picture(u"b.png"_s);
    delegate->applicationOpenFile(a);
    delegate->applicationDidFinishLaunching();
    ASSERT_TRUE(delegate->isTerminateScheduled());

    // The item arrives; the quit is re-armed from its arrival, and the job runs first.
    const qint64 arrival = clock.elapsed();
    EXPECT_TRUE(delegate->applicationOpenFile(b));
    EXPECT_TRUE(delegate->isTerminateScheduled());
    EXPECT_EQ(quits, 0);
    EXPECT_TRUE(QFile::exists(dir.file(u"b_thumb.jpg"_s)));
    ASSERT_TRUE(waitForQuit());
    EXPECT_EQ(quits, 1);
    EXPECT_GE(quitClock - arrival, qint64(ApplicationDelegate::QuitDelay * 1000) - 5);
    QTest::qWait(int(ApplicationDelegate::QuitDelay * 1000) * 2);
    EXPECT_EQ(quits, 1);
}

TEST_F(ApplicationDelegateTest, TheQuitNeverCutsAJobShortWhenTheJobLetsEventsRun)
{
    const QString a = picture(u"a.png"_s);
    const QString b = picture(u"b.png"_s);
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
    UserDefaults::standard().setObject(false, u"QuitWhenDone"_s);
    EXPECT_TRUE(delegate->applicationOpenFile(picture(u"a.png"_s)));
    EXPECT_FALSE(delegate->applicationOpenUntitledFile()) << "launching has not finished";
    delegate->applicationDidFinishLaunching();
    EXPECT_FALSE(delegate->shouldQuit());
    EXPECT_FALSE(delegate->isTerminateScheduled());
    EXPECT_FALSE(panel->isVisible());

    EXPECT_TRUE(delegate->applicationOpenFile(picture(u"b.png"_s)));
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
    EXPECT_TRUE(delegate->applicationOpenFile(picture(u"late.png"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"late_thumb.jpg"_s)));
    EXPECT_TRUE(delegate->didDrop());
    EXPECT_FALSE(delegate->shouldQuit());
    EXPECT_FALSE(delegate->isTerminateScheduled());
}

TEST_F(ApplicationDelegateTest, UnappliedEditsInTheVisiblePanelAreStoredAndUsedForTheOpenedFile)
{
    delegate->applicationDidFinishLaunching();
    panel->findChild<QLineEdit *>(u"width"_s)->setText(u"3"_s);
    panel->findChild<QLineEdit *>(u"height"_s)->setText(u"20"_s);
    auto *format = panel->findChild<QComboBox *>(u"filetype"_s);
    format->setCurrentIndex(format->findData(4));

    const QString source = picture(u"wide.png"_s, 64, 32);
    EXPECT_TRUE(delegate->applicationOpenFile(source));
    EXPECT_EQ(UserDefaults::standard().integerForKey(u"width"_s), 16);
    EXPECT_EQ(UserDefaults::standard().integerForKey(u"filetype"_s), 4);
    // The worker process read the new settings: a PNG inside 16 by 20.
    const QImage thumbnail = loadImage(dir.file(u"wide_thumb.png"_s));
    ASSERT_FALSE(thumbnail.isNull());
    EXPECT_EQ(thumbnail.size(), QSize(16, 8));
    // Applied without a sender: the field still shows what was typed.
    EXPECT_EQ(panel->findChild<QLineEdit *>(u"width"_s)->text(), u"3"_s);
}

TEST_F(ApplicationDelegateTest, TerminationStoresThePanelOnlyWhenItIsVisible)
{
    auto *width = panel->findChild<QLineEdit *>(u"width"_s);
    width->setText(u"300"_s);
    delegate->applicationWillTerminate();
    EXPECT_FALSE(UserDefaults::standard().objectForKey(u"width"_s).isValid());

    panel->show();
    delegate->terminate();
    EXPECT_EQ(UserDefaults::standard().integerForKey(u"width"_s), 300);
    EXPECT_EQ(quits, 1);
}

TEST_F(ApplicationDelegateTest, AFolderIsWalkedWholeAndAnswersNoWhenAnyFileFails)
{
    QDir(dir.path()).mkpath(u"top/inner/deeper"_s);
    const QString top = dir.file(u"top"_s);
    ASSERT_TRUE(writeTestImage(top + u"/one.png"_s, 40, 30));
    ASSERT_TRUE(writeTestImage(top + u"/inner/two.png"_s, 40, 30));
    ASSERT_TRUE(writeTestImage(top + u"/inner/deeper/three.png"_s, 40, 30));
    ASSERT_TRUE(writeBytes(top + u"/inner/notes.txt"_s, "not a picture"));

    EXPECT_FALSE(delegate->applicationOpenFile(top));
    EXPECT_EQ(processed.size(), 4);
    EXPECT_TRUE(QFile::exists(top + u"/one_thumb.jpg"_s));
    EXPECT_TRUE(QFile::exists(top + u"/inner/two_thumb.jpg"_s));
    EXPECT_TRUE(QFile::exists(top + u"/inner/deeper/three_thumb.jpg"_s));
}

TEST_F(ApplicationDelegateTest, EmptyFolderAnswersYesAndMissingOrDanglingPathsAnswerNo)
{
    QDir(dir.path()).mkdir(u"empty"_s);
    EXPECT_TRUE(delegate->applicationOpenFile(dir.file(u"empty"_s)));
    EXPECT_EQ(QDir(dir.file(u"empty"_s)).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size(), 0);

    EXPECT_FALSE(delegate->applicationOpenFile(dir.file(u"nothing-here.png"_s)));
    ASSERT_TRUE(QFile::link(dir.file(u"gone.png"_s), dir.file(u"dangling.png"_s)));
    EXPECT_FALSE(delegate->applicationOpenFile(dir.file(u"dangling.png"_s)));
    EXPECT_FALSE(delegate->applicationOpenFile(QString()));
    EXPECT_TRUE(processed.isEmpty());
    EXPECT_TRUE(delegate->didDrop());
}

TEST_F(ApplicationDelegateTest, AHostileFileFailsAloneAndTheWorkerGoesOn)
{
    const QString broken = dir.file(u"broken.png"_s);
    ASSERT_TRUE(writeBytes(broken, QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(5000, '\x7f')));
    EXPECT_FALSE(delegate->applicationOpenFile(broken));
    EXPECT_TRUE(delegate->applicationOpenFile(picture(u"after.png"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"after_thumb.jpg"_s)));
}

} // namespace
