// The desktop program end to end, sharing this process's temporary folders, without a session bus.
#include "DesktopTestSupport.h"
#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/IsolatedJob.h"
#include "app/desktop/PreferencesPanel.h"
#include "testlib/TestSupport.h"

#include <QComboBox>
#include <QFile>
#include <QProcess>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

class DesktopProgram : public DesktopTest
{
protected:
    bool waitForFile(const QString &name)
    {
        return processEventsUntil([&] { return QFile::exists(dir.file(name)); }, 60000);
    }

    const QString program = u"" ORVEL_THUMBNAILS_PATH ""_s;
    IsolatedJob job { thumbsExecutable() };
};

TEST_F(DesktopProgram, ALaunchByDropWithAFailureStaysUntilItsReportIsRead)
{
    // No notification service: the report is a dialog, and the automatic quit waits for it.
    ASSERT_TRUE(writeBytes(dir.file(u"broken.png"_s), QByteArray("\x89PNG\r\n\x1a\n", 8)));
    QProcess launch;
    launch.start(program, { dir.file(u"broken.png"_s), picture(u"fine.png"_s) });
    ASSERT_TRUE(waitForFile(u"fine_thumb.jpg"_s));
    EXPECT_FALSE(launch.waitForFinished(1500)) << "it quit before the failure was shown";
    launch.terminate();
    launch.waitForFinished(10000);
}

TEST_F(DesktopProgram, WithQuitWhenDoneOffItStaysAndALaterLaunchHandsItsFilesToIt)
{
    UserDefaults::standard().setObject(false, u"QuitWhenDone"_s);
    UserDefaults::standard().setObject(qint64(4), u"filetype"_s);
    UserDefaults::standard().synchronize();
    QProcess running;
    running.start(program, { picture(u"first.jpg"_s) });
    ASSERT_TRUE(waitForFile(u"first_thumb.png"_s));
    EXPECT_FALSE(running.waitForFinished(500)) << "it quit although QuitWhenDone is off";

    QProcess second;
    second.start(program, { picture(u"second.jpg"_s) });
    ASSERT_TRUE(second.waitForFinished(30000));
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    ASSERT_TRUE(waitForFile(u"second_thumb.png"_s));
    EXPECT_EQ(running.state(), QProcess::Running);
    running.terminate();
    running.waitForFinished(10000);
}

TEST_F(DesktopProgram, UnappliedEditsInTheVisiblePanelReachTheWorkerOfTheOpenedFile)
{
    ASSERT_TRUE(job.isIsolated()) << thumbsExecutable();
    PreferencesPanel panel;
    ApplicationDelegate delegate(&panel);
    delegate.setFileProcessor([this](const QString &path) { return job.processFile(path); });
    delegate.applicationDidFinishLaunching();
    typingLine(panel, "width")->setText(u"3"_s);
    typingLine(panel, "height")->setText(u"20"_s);
    auto *format = outlet<QComboBox>(panel, "filetype");
    format->setCurrentIndex(format->findData(4));

    EXPECT_TRUE(delegate.applicationOpenFile(picture(u"wide.png"_s)));
    // A PNG inside 16 (the corrected width) by 20.
    EXPECT_EQ(loadImage(dir.file(u"wide_thumb.png"_s)).size(), QSize(16, 12));
    // Applied without a sender: the field still shows what was typed.
    EXPECT_EQ(typingLine(panel, "width")->text(), u"3"_s);
}

} // namespace
