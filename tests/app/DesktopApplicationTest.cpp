// Tests of the desktop application around the delegate: drops on the window and hand-overs
// processed in order, one at a time.
#include "app/DesktopApplication.h"
#include "DesktopTestSupport.h"
#include "app/ApplicationDelegate.h"
#include "app/IsolatedJob.h"
#include "app/PreferencesPanel.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <gtest/gtest.h>

using namespace orvel;
using namespace orvel::test;

namespace {

class DesktopApplicationTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        clearStandardDefaults();
        DesktopApplication::Options options;
        options.workerExecutable = thumbsExecutable();
        options.applicationId
            = QStringLiteral("org.orvel.ThumbnailsTest.d") + QUuid::createUuid().toString(QUuid::Id128);
        application = std::make_unique<DesktopApplication>(options);
        application->delegate().setQuitHandler([this] { ++quits; });
        application->delegate().setFileProcessor([this](const QString &path) {
            order << QFileInfo(path).fileName();
            return processor(path);
        });
    }

    IsolatedJob job { thumbsExecutable() };
    std::function<bool(const QString &)> processor
        = [this](const QString &path) { return job.processFile(path); };
    std::unique_ptr<DesktopApplication> application;
    QStringList order;
    int quits = 0;
};

TEST_F(DesktopApplicationTest, FilesDroppedOnThePanelAreProcessedAndItKeepsRunning)
{
    ASSERT_TRUE(application->listen());
    application->launch({});
    ASSERT_TRUE(application->panel().isVisible());
    TempDir dir;
    ASSERT_TRUE(writeTestImage(dir.file(QStringLiteral("b.png")), 30, 20));
    ASSERT_TRUE(writeTestImage(dir.file(QStringLiteral("a.png")), 30, 20));
    Q_EMIT application->panel().filesDropped(
        { dir.file(QStringLiteral("b.png")), dir.file(QStringLiteral("a.png")) });
    ASSERT_TRUE(processEventsUntil([&] { return order.size() == 2; }));
    EXPECT_EQ(order, QStringList({ QStringLiteral("b.png"), QStringLiteral("a.png") }));
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("b_thumb.jpg"))));
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("a_thumb.jpg"))));
    EXPECT_FALSE(application->delegate().isTerminateScheduled());
}

TEST_F(DesktopApplicationTest, PathsArrivingDuringAJobWaitTheirTurn)
{
    ASSERT_TRUE(application->listen());
    application->launch({});
    TempDir dir;
    for (const char *name : { "1.png", "2.png", "3.png" })
        ASSERT_TRUE(writeTestImage(dir.file(QString::fromLatin1(name)), 30, 20));
    bool nested = false;
    int depth = 0;
    // The first job lets the event loop run while another file is opened (a hand-over, a drop).
    processor = [&](const QString &path) {
        nested = nested || depth > 0;
        ++depth;
        if (path.endsWith(QStringLiteral("1.png"))) {
            application->open({ dir.file(QStringLiteral("3.png")) });
            QCoreApplication::processEvents();
        }
        const bool ok = job.processFile(path);
        --depth;
        return ok;
    };
    application->open({ dir.file(QStringLiteral("1.png")), dir.file(QStringLiteral("2.png")) });
    EXPECT_FALSE(nested);
    EXPECT_EQ(
        order, QStringList({ QStringLiteral("1.png"), QStringLiteral("2.png"), QStringLiteral("3.png") }));
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("3_thumb.jpg"))));
}

TEST(DesktopLaunchPaths, PathsBecomeAbsoluteAndOptionsAreSkipped)
{
    const QString here = QDir::currentPath();
    EXPECT_EQ(
        launchPaths({ QStringLiteral("a.png"), QStringLiteral("--verbose"), QStringLiteral("/x/b.png") }),
        QStringList({ here + QStringLiteral("/a.png"), QStringLiteral("/x/b.png") }));
    EXPECT_EQ(launchPaths({ QStringLiteral("--"), QStringLiteral("-dash.png"), QString() }),
        QStringList({ here + QStringLiteral("/-dash.png"), QString() }));
}

} // namespace
