// Tests of when the pool starts its workers, and of Ghostscript's run as a child of the worker:
// a short batch gets one worker, a queue that keeps it busy gets another, and Ghostscript past
// its time limit is killed and reaped.
#include "app/batch/WorkerPool.h"
#include "image/PDFImageRep.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

struct Child
{
    qint64 pid = 0;
    qint64 group = 0;
    bool zombie = false;
    QByteArray command;
};

/// The child processes of this process, zombies included; with a word, those whose command
/// line holds it.
QList<Child> children(const QByteArray &word = {})
{
    QList<Child> result;
    const QStringList entries = QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool isPid = false;
        const qint64 pid = entry.toLongLong(&isPid);
        if (!isPid)
            continue;
        // "pid (name) state ppid pgrp ...": the name may hold anything, so look after its last ")".
        const QByteArray stat = readBytes(u"/proc/%1/stat"_s.arg(pid));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        const QByteArray command = readBytes(u"/proc/%1/cmdline"_s.arg(pid));
        if (fields.size() > 2 && fields[1].toLongLong() == ::getpid() && command.contains(word))
            result << Child { pid, fields[2].toLongLong(), fields[0] == "Z", command };
    }
    return result;
}

/// PostScript that keeps Ghostscript busy for about the given number of loop turns, then draws nothing.
QByteArray busyPostScript(int turns)
{
    return "%!PS\n%%BoundingBox: 0 0 10 10\n0 1 " + QByteArray::number(turns) + " { pop } for\nshowpage\n";
}

class WorkerStart : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(dir.file(u"tmp"_s))); }

    WorkerPool::Options options(int workers) const
    {
        WorkerPool::Options result;
        result.executable = thumbsExecutable();
        result.workers = workers;
        result.timeoutSeconds = 60;
        return result;
    }

    TempDir dir;
    const EnvironmentOverride config { "XDG_CONFIG_HOME", dir.file(u"config"_s) };
    const EnvironmentOverride temporary { "TMPDIR", dir.file(u"tmp"_s) };
};

} // namespace

TEST_F(WorkerStart, ShortBatchStartsOneWorkerOnly)
{
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(writeTestImage(dir.file(u"p%1.png"_s.arg(i)), 40, 30));
    QList<WorkerPool::Result> results;
    WorkerPool pool(options(4), [&](const WorkerPool::Result &result) { results << result; });
    pool.setFilesLeft(3);
    for (int i = 0; i < 3; ++i)
        pool.submit(i, dir.file(u"p%1.png"_s.arg(i)), dir.file(u"p%1_thumb.jpg"_s.arg(i)));
    pool.waitForAll();

    ASSERT_EQ(results.size(), 3);
    for (const WorkerPool::Result &result : results)
        EXPECT_TRUE(result.ok) << result.reason.toStdString();
    EXPECT_EQ(pool.startedWorkerCount(), 1);
    EXPECT_EQ(pool.workerProcessIds().size(), 1);
    EXPECT_EQ(children("--worker").size(), 1);
}

TEST_F(WorkerStart, QueueThatKeepsTheWorkerBusyStartsAnotherThatTakesFiles)
{
    if (QStandardPaths::findExecutable(u"gs"_s).isEmpty())
        GTEST_SKIP() << "Ghostscript (gs) is not installed";
    // Files of a few tenths of a second each: far longer than a worker's start.
    constexpr int Files = 4;
    for (int i = 0; i < Files; ++i)
        ASSERT_TRUE(writeBytes(dir.file(u"slow%1.ps"_s.arg(i)), busyPostScript(12'000'000)));
    QList<WorkerPool::Result> results;
    QList<qint64> busyWorkers;
    WorkerPool pool(options(2), [&](const WorkerPool::Result &result) { results << result; });
    for (int i = 0; i < Files; ++i) {
        pool.submit(i, dir.file(u"slow%1.ps"_s.arg(i)), dir.file(u"slow%1_thumb.jpg"_s.arg(i)));
        for (qint64 pid : pool.workerProcessIds().mid(0, pool.runningCount()))
            if (!busyWorkers.contains(pid))
                busyWorkers << pid;
    }
    pool.waitForAll();

    ASSERT_EQ(results.size(), Files);
    EXPECT_EQ(pool.startedWorkerCount(), 2);
    // Both workers had files, none was started for nothing, and both still wait for more.
    EXPECT_EQ(busyWorkers.size(), 2);
    EXPECT_EQ(pool.workerProcessIds().size(), 2);
    EXPECT_EQ(children("--worker").size(), 2);
}

TEST(GhostscriptRun, OverrunIsKilledAndReapedAndRunsInTheCallersGroup)
{
    if (QStandardPaths::findExecutable(u"gs"_s).isEmpty())
        GTEST_SKIP() << "Ghostscript (gs) is not installed";
    const QByteArray looping = "%!PS\n%%BoundingBox: 0 0 10 10\n{ } loop\n";
    QString error;
    std::atomic<bool> done = false;
    std::thread render([&] {
        (void)renderPostScriptPage(looping, QRectF(0, 0, 10, 10), QSize(10, 10), 1, &error);
        done = true;
    });
    QList<Child> seen;
    while (!done && seen.isEmpty()) {
        for (const Child &child : children("-dSAFER")) {
            if (!child.zombie)
                seen << child;
        }
        ::usleep(5000);
    }
    render.join();

    EXPECT_EQ(error, u"PostScript conversion timed out after 1 s"_s);
    ASSERT_EQ(seen.size(), 1);
    // In this process's group, so that ending the group (the worker's watchdog) ends it too.
    EXPECT_EQ(seen[0].group, qint64(::getpgrp()));
    // Killed and reaped: not even a zombie is left.
    EXPECT_EQ(::kill(pid_t(seen[0].pid), 0), -1);
    EXPECT_EQ(errno, ESRCH);
}
