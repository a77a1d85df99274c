// End-to-end tests of the desktop program: orvel-thumbnails launched as a program (quitting by
// itself, a second launch handing its files over), and the thumbnail job run by orvel-thumbs
// workers for the delegate. The programs share this process's temporary settings, cache and
// runtime folders, and have no session bus.
#include "DesktopTestSupport.h"
#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/IsolatedJob.h"
#include "app/desktop/PreferencesPanel.h"
#include "testlib/TestSupport.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

class DesktopProgram : public DesktopTest
{
protected:
    QString picture(const QString &name)
    {
        EXPECT_TRUE(writeTestImage(dir.file(name), 80, 60));
        return dir.file(name);
    }
    bool waitForFile(const QString &name)
    {
        return processEventsUntil([&] { return QFile::exists(dir.file(name)); }, 60000);
    }

    const QString program = u"" ORVEL_THUMBNAILS_PATH ""_s;
    TempDir dir;
    IsolatedJob job { thumbsExecutable() };
};

TEST_F(DesktopProgram, ALaunchByDropWritesTheThumbnailsAndQuitsByItself)
{
    QDir(dir.path()).mkdir(u"more"_s);
    picture(u"more/two.jpg"_s);
    QProcess launch;
    launch.start(program, { picture(u"one.png"_s), dir.file(u"more"_s) });
    ASSERT_TRUE(launch.waitForFinished(60000)) << "it did not quit by itself";
    EXPECT_EQ(launch.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(launch.exitCode(), 0) << launch.readAllStandardError().toStdString();
    EXPECT_TRUE(QFile::exists(dir.file(u"one_thumb.jpg"_s)));
    EXPECT_TRUE(QFile::exists(dir.file(u"more/two_thumb.jpg"_s)));
}

TEST_F(DesktopProgram, ALaunchByDropWithAFailureStaysUntilItsReportIsRead)
{
    // No session bus, so no notification service: the report is a dialog, and the automatic quit
    // waits for it.
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

TEST_F(DesktopProgram, AFailingFileFailsAloneWithItsReasonAndTheWorkerGoesOn)
{
    ASSERT_TRUE(job.isIsolated()) << thumbsExecutable();
    const QString broken = dir.file(u"broken.png"_s);
    ASSERT_TRUE(writeBytes(broken, QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(5000, '\x7f')));
    const QString pipe = dir.file(u"pipe.png"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QString reason;
    EXPECT_FALSE(job.processFile(broken, &reason));
    EXPECT_EQ(reason, u"the decoder failed"_s);
    EXPECT_FALSE(job.processFile(pipe, &reason));
    EXPECT_EQ(reason, u"not a regular file"_s);

    const QString after = picture(u"after.png"_s);
    UserDefaults::standard().setObject(qint64(7), u"create"_s);
    UserDefaults::standard().synchronize();
    EXPECT_FALSE(job.processFile(after, &reason));
    EXPECT_EQ(reason, u"unknown create mode 7"_s);
    clearStandardDefaults();
    EXPECT_TRUE(job.processFile(after, &reason)) << reason;
    EXPECT_TRUE(QFile::exists(dir.file(u"after_thumb.jpg"_s)));
}

} // namespace
