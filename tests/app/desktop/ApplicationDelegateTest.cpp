// The application delegate in this process: launch order, the automatic quit, paths one at a time.
#include "app/desktop/ApplicationDelegate.h"
#include "DesktopTestSupport.h"
#include "app/desktop/DesktopApplication.h"
#include "app/desktop/PreferencesPanel.h"
#include "app/engine/ThumbnailJob.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

constexpr int QuitDelayMs = int(ApplicationDelegate::QuitDelay * 1000);

class ApplicationDelegateTest : public DesktopTest
{
protected:
    void SetUp() override
    {
        DesktopTest::SetUp();
        panel = std::make_unique<PreferencesPanel>();
        delegate = std::make_unique<ApplicationDelegate>(panel.get());
        delegate->setFileProcessor([this](const QString &path) {
            if (processingHook)
                processingHook();
            return ThumbnailJob::processFile(path);
        });
        delegate->setQuitHandler([this] {
            ++quits;
            quitClock = clock.elapsed();
        });
        clock.start();
    }

    std::unique_ptr<PreferencesPanel> panel;
    std::unique_ptr<ApplicationDelegate> delegate;
    std::function<void()> processingHook;
    int quits = 0;
    qint64 quitClock = -1;
    QElapsedTimer clock;
};

TEST_F(ApplicationDelegateTest, APlainLaunchShowsThePanelAndNeverQuitsByItselfEvenAfterADrop)
{
    EXPECT_FALSE(delegate->applicationOpenUntitledFile()) << "launching has not finished";
    delegate->applicationWillFinishLaunching();
    delegate->applicationDidFinishLaunching();
    EXPECT_TRUE(panel->isVisible());
    EXPECT_FALSE(delegate->isTerminateScheduled());

    EXPECT_TRUE(delegate->applicationOpenFile(picture(u"late.png"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"late_thumb.jpg"_s)));
    EXPECT_FALSE(delegate->isTerminateScheduled());
    panel->close();
    EXPECT_TRUE(delegate->applicationOpenUntitledFile());
    EXPECT_TRUE(panel->isVisible());
    QTest::qWait(QuitDelayMs * 2);
    EXPECT_EQ(quits, 0);
}

TEST_F(ApplicationDelegateTest, ALaunchByDropQuitsWithoutAWindowAfterTheDelayFromItsLastItem)
{
    delegate->applicationWillFinishLaunching();
    EXPECT_TRUE(delegate->applicationOpenFile(picture(u"a.png"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"a_thumb.jpg"_s)));
    EXPECT_FALSE(delegate->isTerminateScheduled()) << "items of the launch come before its end";
    delegate->applicationDidFinishLaunching();
    EXPECT_TRUE(delegate->shouldQuit());
    EXPECT_FALSE(panel->isVisible());

    // A later item, half a delay on, is processed and arms the quit again from its arrival.
    QThread::msleep(QuitDelayMs / 2);
    const QString b = picture(u"b.png"_s);
    const qint64 arrival = clock.elapsed();
    EXPECT_TRUE(delegate->applicationOpenFile(b));
    EXPECT_TRUE(QFile::exists(dir.file(u"b_thumb.jpg"_s)));
    EXPECT_TRUE(delegate->isTerminateScheduled());
    ASSERT_TRUE(processEventsUntil([this] { return quits > 0; }, 5000));
    // A lower bound only: the machine may be slow.
    EXPECT_GE(quitClock - arrival, QuitDelayMs - 5);
    QTest::qWait(QuitDelayMs * 2);
    EXPECT_EQ(quits, 1);
}

TEST_F(ApplicationDelegateTest, TheQuitNeverCutsAJobShortWhenTheJobLetsEventsRun)
{
    delegate->applicationOpenFile(picture(u"a.png"_s));
    delegate->applicationDidFinishLaunching();
    int quitsDuringJob = -1;
    // As the progress window does: the event loop runs while the job works, past the delay.
    processingHook = [this, &quitsDuringJob] {
        QTest::qWait(QuitDelayMs * 3);
        quitsDuringJob = quits;
    };
    EXPECT_TRUE(delegate->applicationOpenFile(picture(u"b.png"_s)));
    EXPECT_EQ(quitsDuringJob, 0);
    EXPECT_TRUE(delegate->isTerminateScheduled());
    ASSERT_TRUE(processEventsUntil([this] { return quits > 0; }, 5000));
}

TEST_F(ApplicationDelegateTest, TerminationStoresThePanelOnlyWhenItIsVisible)
{
    typingLine(*panel, "width")->setText(u"300"_s);
    delegate->applicationWillTerminate();
    EXPECT_FALSE(UserDefaults::standard().objectForKey(u"width"_s).isValid());
    panel->show();
    typingLine(*panel, "width")->setText(u"300"_s);
    delegate->terminate();
    EXPECT_EQ(UserDefaults::standard().integerForKey(u"width"_s), 300);
    EXPECT_EQ(quits, 1);
}

TEST(DesktopApplication, PathsAreProcessedOneAtATimeInOrderAndADropKeepsItRunning)
{
    clearStandardDefaults();
    TempDir dir;
    for (const QString &name : { u"1.png"_s, u"2.png"_s, u"3.png"_s })
        ASSERT_TRUE(writeTestImage(dir.file(name), 30, 20));
    DesktopApplication::Options options; // no worker executable: the job runs in this process
    options.applicationId = uniqueApplicationId();
    DesktopApplication application(options);
    QStringList order;
    int depth = 0;
    bool nested = false;
    // The first job lets the event loop run while another path arrives (a hand-over, a drop).
    application.delegate().setFileProcessor([&](const QString &path) {
        order << QFileInfo(path).fileName();
        nested = nested || depth++ > 0;
        if (path.endsWith(u"2.png"_s)) {
            application.open({ dir.file(u"3.png"_s) });
            QCoreApplication::processEvents();
        }
        const bool ok = ThumbnailJob::processFile(path);
        --depth;
        return ok;
    });
    ASSERT_TRUE(application.listen());
    application.launch({});
    ASSERT_TRUE(application.panel().isVisible());
    Q_EMIT application.panel().filesDropped({ dir.file(u"2.png"_s), dir.file(u"1.png"_s) });
    ASSERT_TRUE(processEventsUntil([&] { return order.size() == 3; }));
    EXPECT_FALSE(nested);
    EXPECT_EQ(order, QStringList({ u"2.png"_s, u"1.png"_s, u"3.png"_s }));
    EXPECT_TRUE(QFile::exists(dir.file(u"3_thumb.jpg"_s)));
    EXPECT_FALSE(application.delegate().isTerminateScheduled());
}

TEST(DesktopLaunchPaths, PathsBecomeAbsoluteAndOptionsAreSkipped)
{
    const QString here = QDir::currentPath();
    EXPECT_EQ(launchPaths({ u"a.png"_s, u"--verbose"_s, u"/x/b.png"_s }),
        QStringList({ here + u"/a.png"_s, u"/x/b.png"_s }));
    EXPECT_EQ(launchPaths({ u"--"_s, u"-dash.png"_s, QString() }),
        QStringList({ here + u"/-dash.png"_s, QString() }));
}

} // namespace
