// A run of the desktop program in this process with real workers: cancelling, and the failures
// reported in a dialog or a notification.
#include "DesktopTestSupport.h"
#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/DesktopApplication.h"
#include "app/desktop/IsolatedJob.h"
#include "app/desktop/OpenPanel.h"
#include "app/desktop/PreferencesPanel.h"
#include "app/desktop/ProgressWindow.h"
#include "app/desktop/RunReport.h"
#include "testlib/TestSupport.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QSystemTrayIcon>
#include <QTimer>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

// PostScript that never ends: its converter runs until it is killed or its time limit comes.
const QByteArray EndlessPostScript = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 100 100\n{ } loop\n";

class DesktopRun : public DesktopTest
{
protected:
    void SetUp() override
    {
        DesktopTest::SetUp();
        options.workerExecutable = thumbsExecutable();
        options.applicationId = uniqueApplicationId();
    }
    QString endless(const QString &name)
    {
        EXPECT_TRUE(writeBytes(dir.file(name), EndlessPostScript));
        return dir.file(name);
    }
    bool hasThumbnail(const QString &base) const { return QFile::exists(dir.file(base + u"_thumb.jpg"_s)); }

    DesktopApplication::Options options;
};

TEST_F(DesktopRun, CancelFromTheProgressWindowEndsTheRunAndLeavesTheFilesNotYetStartedAlone)
{
    DesktopApplication app(options);
    QDir(dir.path()).mkdir(u"later"_s);
    picture(u"later/inside.png"_s);
    const QStringList paths
        = { picture(u"first.png"_s), endless(u"slow.eps"_s), dir.file(u"later"_s), picture(u"last.png"_s) };
    // What a writer killed before its rename leaves beside its output.
    ASSERT_TRUE(writeBytes(dir.file(u".slow_thumb.jpg.x7k2q.tmp"_s), "half"));
    qint64 worker = 0;
    bool finished = false;
    QObject::connect(&app.delegate(), &ApplicationDelegate::processingFinished, [&] { finished = true; });
    QObject::connect(&app.delegate(), &ApplicationDelegate::fileStarted, [&](const QString &path) {
        if (!path.endsWith(u"slow.eps"_s))
            return;
        // A drop while a file is made waits its turn; the click comes through the event loop.
        QTimer::singleShot(0, [&] { app.open({ picture(u"dropped.png"_s) }); });
        QTimer::singleShot(700, [&] {
            worker = app.job().workerProcessId();
            app.progressWindow().cancelButton()->click();
        });
    });
    app.open(paths);

    EXPECT_TRUE(finished);
    EXPECT_TRUE(hasThumbnail(u"first"_s));
    for (const QString &base : { u"slow"_s, u"later/inside"_s, u"last"_s, u"dropped"_s })
        EXPECT_FALSE(hasThumbnail(base)) << base;
    ASSERT_GT(worker, 0);
    // The whole process group goes: a killed child of the worker is reaped shortly after it.
    EXPECT_TRUE(processEventsUntil([&] { return ::kill(pid_t(-worker), 0) != 0 && errno == ESRCH; }, 5000));
    EXPECT_EQ(QDir(dir.path()).entryList({ u".*.tmp"_s }, QDir::Files | QDir::Hidden), QStringList());
    // As at the end of any run: the window goes, nothing is reported for the cut file.
    EXPECT_TRUE(app.lastResults().cancelled);
    EXPECT_TRUE(app.lastResults().failures.isEmpty());
    EXPECT_EQ(app.resultsDialog(), nullptr);
    EXPECT_TRUE(processEventsUntil([&] { return !app.progressWindow().isVisible(); }));
    // A fresh worker takes the next file.
    app.open({ picture(u"next.png"_s) });
    EXPECT_TRUE(hasThumbnail(u"next"_s));
}

TEST_F(DesktopRun, WithoutANotificationServiceADialogListsTheFailedFilesWithTheirReasons)
{
    DesktopApplication app(options);
    ASSERT_TRUE(
        writeBytes(dir.file(u"broken.png"_s), QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(900, 'x')));
    ASSERT_TRUE(writeBytes(dir.file(u"named.txt"_s), "plain text"));
    QDir(dir.path()).mkdir(u"folder"_s);
    // A file of another kind met in a folder is passed over without a word.
    ASSERT_TRUE(writeBytes(dir.file(u"folder/notes.txt"_s), "plain text"));
    picture(u"folder/fine.png"_s);

    app.open({ dir.file(u"broken.png"_s), dir.file(u"missing.png"_s), dir.file(u"named.txt"_s),
        dir.file(u"folder"_s) });
    const RunResults &results = app.lastResults();
    EXPECT_EQ(results.made, 1);
    ASSERT_EQ(results.failures.size(), 3);
    EXPECT_EQ(results.failures.at(2).path, dir.file(u"named.txt"_s));

    auto *dialog = qobject_cast<QMessageBox *>(app.resultsDialog());
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->text(), u"3 files got no thumbnail"_s);
    EXPECT_TRUE(dialog->informativeText().contains(u"broken.png: the decoder failed"_s))
        << dialog->informativeText();
    EXPECT_TRUE(dialog->detailedText().contains(dir.file(u"missing.png"_s))) << dialog->detailedText();
    EXPECT_FALSE(dialog->informativeText().contains(u"notes.txt"_s));

    // A later run's failures take the place of the earlier ones.
    app.open({ dir.file(u"broken.png"_s) });
    ASSERT_TRUE(processEventsUntil([&] { return dialog == nullptr || !dialog->isVisible(); }, 2000));
    ASSERT_NE(app.resultsDialog(), nullptr);
    EXPECT_EQ(qobject_cast<QMessageBox *>(app.resultsDialog())->text(), u"1 file got no thumbnail"_s);
    app.resultsDialog()->close();
}

TEST_F(DesktopRun, TheOpenDialogTakesFilesAndFoldersTogetherAndShowsOnlyWhatTheProgramReads)
{
    picture(u"a.png"_s);
    ASSERT_TRUE(writeBytes(dir.file(u"notes.txt"_s), "text"));
    picture(u"SCAN.TIF"_s);
    QDir(dir.path()).mkdir(u"sub"_s);
    DesktopApplication app(options);
    app.panel().show();
    app.chooseFiles();
    OpenPanel *dialog = app.openPanel();
    ASSERT_NE(dialog, nullptr);
    dialog->setDirectory(dir.path());
    auto *view = dialog->findChild<QAbstractItemView *>(u"listView"_s);
    ASSERT_NE(view, nullptr);
    auto shown = [&] {
        QStringList names;
        const QModelIndex root = view->rootIndex();
        for (int row = 0; row < view->model()->rowCount(root); ++row)
            names << view->model()->index(row, 0, root).data().toString();
        names.sort();
        return names;
    };
    ASSERT_TRUE(processEventsUntil([&] { return shown().size() >= 3; }));
    processEventsUntil([] { return false; }, 200);
    EXPECT_EQ(shown(), QStringList({ u"SCAN.TIF"_s, u"a.png"_s, u"sub"_s }));

    view->selectAll();
    bool started = false;
    QObject::connect(&app.delegate(), &ApplicationDelegate::fileStarted, [&] { started = true; });
    dialog->accept();
    // In the order shown: folders first.
    EXPECT_EQ(dialog->chosenPaths(),
        QStringList({ dir.file(u"sub"_s), dir.file(u"a.png"_s), dir.file(u"SCAN.TIF"_s) }));
    // The run starts from the event loop once the dialog has gone, and ends with a sign.
    ASSERT_TRUE(processEventsUntil([&] { return started && !app.delegate().isProcessing(); }));
    EXPECT_TRUE(hasThumbnail(u"a"_s) && hasThumbnail(u"SCAN"_s));
    EXPECT_EQ(app.panel().statusBar()->currentMessage(), u"Thumbnails made: 2"_s);
}

TEST_F(DesktopRun, WithQuitWhenDoneOffAStatusIconShowsThePanelAndQuits)
{
    UserDefaults::standard().setObject(false, u"QuitWhenDone"_s);
    DesktopApplication app(options);
    app.launch({ picture(u"a.png"_s) });
    ASSERT_NE(app.statusIcon(), nullptr);
    ASSERT_NE(app.statusIcon()->contextMenu(), nullptr);
    // Show Preferences, Make Thumbnails…, a separator, Quit.
    const QList<QAction *> items = app.statusIcon()->contextMenu()->actions();
    ASSERT_EQ(items.size(), 4);
    EXPECT_FALSE(app.panel().isVisible());
    items.at(0)->trigger();
    EXPECT_TRUE(app.panel().isVisible());
    bool terminating = false;
    QObject::connect(&app.delegate(), &ApplicationDelegate::terminating, [&] { terminating = true; });
    items.at(3)->trigger();
    EXPECT_TRUE(terminating);

    // Turned on in the panel, the icon goes.
    outlet<QCheckBox>(app.panel(), "quitWhenDone")->click();
    EXPECT_EQ(app.statusIcon(), nullptr);
}

/// A notification service as small as a test needs: it keeps what it is sent.
class NotificationServer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList summaries;
    QStringList bodies;

public Q_SLOTS:
    uint Notify(const QString &, uint, const QString &, const QString &summary, const QString &body,
        const QStringList &, const QVariantMap &, int)
    {
        summaries << summary;
        bodies << body;
        return uint(summaries.size());
    }
};

TEST_F(DesktopRun, WithANotificationServiceTheFailuresArriveAsANotification)
{
    PrivateBus bus;
    if (!bus.isRunning())
        GTEST_SKIP() << "dbus-daemon could not be started";
    NotificationServer server;
    QDBusConnection serverConnection = bus.connect();
    ASSERT_TRUE(serverConnection.registerObject(
        u"/org/freedesktop/Notifications"_s, &server, QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(serverConnection.registerService(u"org.freedesktop.Notifications"_s));

    DesktopApplication app(options);
    app.setNotificationBus(bus.connect());
    ASSERT_TRUE(writeBytes(dir.file(u"a&b.png"_s), QByteArray("\x89PNG\r\n\x1a\n", 8)));
    app.open({ dir.file(u"a&b.png"_s), picture(u"fine.png"_s) });
    ASSERT_TRUE(processEventsUntil([&] { return !server.summaries.isEmpty(); }));
    EXPECT_EQ(server.summaries, QStringList { u"1 file got no thumbnail"_s });
    // The body is markup to the service: the name arrives escaped.
    EXPECT_TRUE(server.bodies.at(0).startsWith(u"a&amp;b.png: "_s)) << server.bodies.at(0);
    processEventsUntil([] { return false; }, 200);
    EXPECT_EQ(app.resultsDialog(), nullptr);
}

} // namespace

#include "DesktopRunTest.moc"
