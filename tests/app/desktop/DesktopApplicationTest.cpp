// Tests of the desktop application around the delegate: drops on the window and hand-overs
// processed in order, one at a time.
#include "app/desktop/DesktopApplication.h"
#include "DesktopTestSupport.h"
#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/IsolatedJob.h"
#include "app/desktop/PreferencesPanel.h"
#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

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
        options.applicationId = u"org.orvel.ThumbnailsTest.d"_s + QUuid::createUuid().toString(QUuid::Id128);
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
    ASSERT_TRUE(writeTestImage(dir.file(u"b.png"_s), 30, 20));
    ASSERT_TRUE(writeTestImage(dir.file(u"a.png"_s), 30, 20));
    Q_EMIT application->panel().filesDropped({ dir.file(u"b.png"_s), dir.file(u"a.png"_s) });
    ASSERT_TRUE(processEventsUntil([&] { return order.size() == 2; }));
    EXPECT_EQ(order, QStringList({ u"b.png"_s, u"a.png"_s }));
    EXPECT_TRUE(QFile::exists(dir.file(u"b_thumb.jpg"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"a_thumb.jpg"_s)));
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
        if (path.endsWith(u"1.png"_s)) {
            application->open({ dir.file(u"3.png"_s) });
            QCoreApplication::processEvents();
        }
        const bool ok = job.processFile(path);
        --depth;
        return ok;
    };
    application->open({ dir.file(u"1.png"_s), dir.file(u"2.png"_s) });
    EXPECT_FALSE(nested);
    EXPECT_EQ(order, QStringList({ u"1.png"_s, u"2.png"_s, u"3.png"_s }));
    EXPECT_TRUE(QFile::exists(dir.file(u"3_thumb.jpg"_s)));
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
