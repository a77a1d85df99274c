// End-to-end tests of the desktop program: orvel-thumbnails launched as a program (quitting by
// itself, a second launch handing its files over), and the thumbnail job run by orvel-thumbs
// workers for the delegate.
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

/// The desktop program with its own settings, cache and runtime folders in home and no session bus.
class DesktopProgram : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QDir(home.path()).mkpath(u"config/orvel"_s);
        QDir(home.path()).mkdir(u"runtime"_s);
        QFile::setPermissions(
            home.file(u"runtime"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void start(QProcess &program, const QStringList &paths)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
        env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        env.insert(u"XDG_CONFIG_HOME"_s, home.file(u"config"_s));
        env.insert(u"XDG_CACHE_HOME"_s, home.file(u"cache"_s));
        env.insert(u"XDG_RUNTIME_DIR"_s, home.file(u"runtime"_s));
        program.setProcessEnvironment(env);
        program.start(u"" ORVEL_THUMBNAILS_PATH ""_s, paths);
    }

    QString picture(const QString &name)
    {
        EXPECT_TRUE(writeTestImage(pictures.file(name), 80, 60));
        return pictures.file(name);
    }

    TempDir home;
    TempDir pictures;
};

TEST_F(DesktopProgram, ALaunchByDropWritesTheThumbnailsAndQuitsByItself)
{
    QDir(pictures.path()).mkdir(u"more"_s);
    picture(u"more/two.jpg"_s);
    QProcess program;
    start(program, { picture(u"one.png"_s), pictures.file(u"more"_s) });
    ASSERT_TRUE(program.waitForFinished(60000)) << "it did not quit by itself";
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
    EXPECT_TRUE(QFile::exists(pictures.file(u"one_thumb.jpg"_s)));
    EXPECT_TRUE(QFile::exists(pictures.file(u"more/two_thumb.jpg"_s)));
}

TEST_F(DesktopProgram, WithQuitWhenDoneOffItStaysAndALaterLaunchHandsItsFilesToIt)
{
    ASSERT_TRUE(
        writeBytes(home.file(u"config/orvel/thumbnails.conf"_s), "QuitWhenDone = false\nfiletype = 4\n"));
    QProcess running;
    start(running, { picture(u"first.jpg"_s) });
    ASSERT_TRUE(
        processEventsUntil([&] { return QFile::exists(pictures.file(u"first_thumb.png"_s)); }, 60000));
    EXPECT_FALSE(running.waitForFinished(500)) << "it quit although QuitWhenDone is off";

    QProcess second;
    start(second, { picture(u"second.jpg"_s) });
    ASSERT_TRUE(second.waitForFinished(30000));
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    ASSERT_TRUE(
        processEventsUntil([&] { return QFile::exists(pictures.file(u"second_thumb.png"_s)); }, 60000));
    EXPECT_EQ(running.state(), QProcess::Running);
    running.terminate();
    running.waitForFinished(10000);
}

/// The thumbnail job in orvel-thumbs workers, reading the settings this process stores.
class DesktopWorkers : public DesktopTest
{
protected:
    TempDir dir;
    IsolatedJob job { thumbsExecutable() };
};

TEST_F(DesktopWorkers, UnappliedEditsInTheVisiblePanelReachTheWorkerOfTheOpenedFile)
{
    ASSERT_TRUE(job.isIsolated()) << thumbsExecutable();
    PreferencesPanel panel;
    ApplicationDelegate delegate(&panel);
    delegate.setQuitHandler([] {});
    delegate.setFileProcessor([this](const QString &path) { return job.processFile(path); });
    delegate.applicationDidFinishLaunching();
    outlet<QLineEdit>(panel, "width")->setText(u"3"_s);
    outlet<QLineEdit>(panel, "height")->setText(u"20"_s);
    auto *format = outlet<QComboBox>(panel, "filetype");
    format->setCurrentIndex(format->findData(4));

    ASSERT_TRUE(writeTestImage(dir.file(u"wide.png"_s), 64, 32));
    EXPECT_TRUE(delegate.applicationOpenFile(dir.file(u"wide.png"_s)));
    // A PNG inside 16 (the corrected width) by 20.
    EXPECT_EQ(loadImage(dir.file(u"wide_thumb.png"_s)).size(), QSize(16, 8));
    // Applied without a sender: the field still shows what was typed.
    EXPECT_EQ(outlet<QLineEdit>(panel, "width")->text(), u"3"_s);
}

TEST_F(DesktopWorkers, AFailingFileFailsAloneWithItsReasonAndTheWorkerGoesOn)
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

    ASSERT_TRUE(writeTestImage(dir.file(u"after.png"_s), 40, 30));
    UserDefaults::standard().setObject(qint64(7), u"create"_s);
    UserDefaults::standard().synchronize();
    EXPECT_FALSE(job.processFile(dir.file(u"after.png"_s), &reason));
    EXPECT_EQ(reason, u"unknown create mode 7"_s);
    clearStandardDefaults();
    EXPECT_TRUE(job.processFile(dir.file(u"after.png"_s), &reason)) << reason;
    EXPECT_TRUE(QFile::exists(dir.file(u"after_thumb.jpg"_s)));
}

} // namespace
