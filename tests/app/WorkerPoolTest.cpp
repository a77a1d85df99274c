// Tests of the worker processes: parallel runs give exactly the files of one-by-one processing, a
// worker that hangs or dies costs only its own file, workers start only as the queue needs them, and
// Ghostscript past its time limit is killed and reaped.
#include "app/batch/WorkerPool.h"
#include "app/engine/ThumbnailJob.h"
#include "app/shared/ThumbnailSettings.h"
#include "files/FolderWalk.h"
#include "image/PDFImageRep.h"
#include "support/UserDefaults.h"

#include "testlib/TestSupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

const QByteArray LoopingPostScript = "%!PS\n{} loop\n";

/// Every file and folder under root, relative, with a hash of each file's bytes.
QMap<QString, QByteArray> snapshot(const QString &root)
{
    QMap<QString, QByteArray> result;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString relative = path.mid(root.size() + 1);
        result.insert(relative,
            it.fileInfo().isDir()
                ? QByteArray("folder")
                : QCryptographicHash::hash(readBytes(path), QCryptographicHash::Sha1).toHex());
    }
    return result;
}

/// The entries under root as the file system lists them, relative.
QStringList walkOrder(const QString &root)
{
    QStringList result;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (it.hasNext())
        result << it.next().mid(root.size() + 1);
    return result;
}

/// A folder whose files interact: two sources with one output, an old thumbnail that is re-made
/// and taken up again, a file that is not an image, nested folders, one large picture.
void makeMixedTree(const QString &root)
{
    QDir().mkpath(root + u"/sub/deeper"_s);
    QDir().mkpath(root + u"/empty"_s);
    ASSERT_TRUE(writeTestImage(root + u"/a.png"_s, 300, 200));
    ASSERT_TRUE(writeSolidImage(root + u"/a.gif"_s, 120, 80, Qt::red));
    ASSERT_TRUE(writeTestImage(root + u"/b.jpg"_s, 200, 300));
    ASSERT_TRUE(writeSolidImage(root + u"/b_thumb.jpg"_s, 90, 60, Qt::green));
    ASSERT_TRUE(writeTestImage(root + u"/big.png"_s, 2000, 1500, true));
    ASSERT_TRUE(writeBytes(root + u"/notes.txt"_s, "not a picture"));
    // Any characters in a name reach the job unchanged.
    ASSERT_TRUE(writeTestImage(root + u"/we ird\nname \"ü\" \\ %s.png"_s, 30, 20));
    ASSERT_TRUE(writeBytes(root + u"/broken.png"_s, "\x89PNG\r\n\x1a\n truncated"));
    ASSERT_TRUE(writeTestImage(root + u"/sub/c.png"_s, 64, 64, true));
    ASSERT_TRUE(writeTestImage(root + u"/sub/c.tiff"_s, 50, 70));
    ASSERT_TRUE(writeTestImage(root + u"/sub/deeper/e.png"_s, 500, 20));
    for (int i = 0; i < 12; ++i) {
        ASSERT_TRUE(
            writeSolidImage(root + u"/n%1.png"_s.arg(i), 40 + i, 30, QColor(i * 20, 255 - i * 20, 128)));
    }
}

/// One-by-one processing in this process: the walk with the job called directly.
class InProcessRun : public FolderWalk::Visitor
{
public:
    explicit InProcessRun(UserDefaults &defaults)
        : m_defaults(defaults)
    {
    }

    // The batch's rules, written out: inside a folder, thumbnails of the naming rule and files
    // that are no source are skipped.
    bool processFile(const QString &path, FolderWalk::Found found) override
    {
        const bool inFolder = found == FolderWalk::Found::InFolder;
        if (inFolder && ThumbnailSettings::read(m_defaults).couldHaveWritten(path))
            return true;
        QString reason;
        const ThumbnailJob::Outcome outcome = ThumbnailJob::run(path, &m_defaults, &reason);
        if (outcome == ThumbnailJob::Outcome::Skipped && inFolder)
            return true;
        if (outcome != ThumbnailJob::Outcome::Made)
            failures << path + u": "_s + reason;
        return outcome == ThumbnailJob::Outcome::Made;
    }
    void failed(const QString &path, const QString &reason) override { failures << path + u": "_s + reason; }

    QStringList failures;

private:
    UserDefaults &m_defaults;
};

/// The per-file lines of a run's standard error (the summary left out), with root written as ROOT.
QStringList failureLines(const QByteArray &err, const QString &root)
{
    static const QRegularExpression summary(u"^\\d+ thumbnails? made, "_s);
    QStringList lines = QString::fromLocal8Bit(err).split(u'\n', Qt::SkipEmptyParts);
    lines.removeIf([](const QString &line) { return summary.match(line).hasMatch(); });
    for (QString &line : lines)
        line.replace(root, u"ROOT"_s);
    return lines;
}

struct Process
{
    qint64 pid = 0;
    qint64 parent = 0;
    qint64 group = 0;
    bool zombie = false;
    QByteArray command;
};

/// Every process on the machine, zombies included.
QList<Process> processes()
{
    QList<Process> result;
    const QStringList entries = QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool isPid = false;
        const qint64 pid = entry.toLongLong(&isPid);
        if (!isPid)
            continue;
        // "pid (name) state ppid pgrp ...": the name may hold anything, so look after its last ")".
        const QByteArray stat = readBytes(u"/proc/%1/stat"_s.arg(pid));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 2)
            result << Process { pid, fields[1].toLongLong(), fields[2].toLongLong(), fields[0] == "Z",
                readBytes(u"/proc/%1/cmdline"_s.arg(pid)) };
    }
    return result;
}

/// The running processes (zombies left out) of a process group; with a parent, that parent's children.
QList<qint64> liveProcessesInGroup(qint64 group, qint64 parent = 0)
{
    QList<qint64> result;
    for (const Process &p : processes()) {
        if (!p.zombie && (parent > 0 ? p.parent == parent : p.group == group))
            result << p.pid;
    }
    return result;
}

/// The children of this process, zombies included, whose command line holds word.
QList<Process> children(const QByteArray &word)
{
    QList<Process> result;
    for (const Process &p : processes()) {
        if (p.parent == ::getpid() && p.command.contains(word))
            result << p;
    }
    return result;
}

int openDescriptors()
{
    return int(
        QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size());
}

/// Compares one-by-one processing of a tree in this process with orvel-thumbs -j1 and -j3 on copies.
void expectParallelRunsMatchOneByOne(
    const QStringList &options, const QStringList &argumentsInRoot, const QVariantMap &settings)
{
    TempDir dir;
    const QStringList roots = { dir.file(u"one"_s), dir.file(u"j1"_s), dir.file(u"j3"_s) };
    for (const QString &root : roots)
        makeMixedTree(root);
    if (walkOrder(roots[0]) != walkOrder(roots[1]) || walkOrder(roots[0]) != walkOrder(roots[2]))
        GTEST_SKIP() << "this file system lists the same names in a different order in each folder";

    auto argumentsFor = [&](const QString &root) {
        QStringList arguments;
        for (const QString &relative : argumentsInRoot)
            arguments << (relative.isEmpty() ? root : root + u'/' + relative);
        return arguments;
    };

    UserDefaults defaults(dir.file(u"one.conf"_s));
    defaults.setArgumentDomain(settings);
    InProcessRun oneByOne(defaults);
    bool ok = true;
    for (const QString &path : argumentsFor(roots[0]))
        ok = FolderWalk::processPath(path, oneByOne) && ok;
    for (QString &line : oneByOne.failures)
        line.replace(roots[0], u"ROOT"_s);

    const auto expected = snapshot(roots[0]);
    for (int i = 1; i <= 2; ++i) {
        const QString jobs = i == 1 ? u"-j1"_s : u"-j3"_s;
        QByteArray err;
        EXPECT_EQ(runThumbs(dir, options + QStringList { jobs } + argumentsFor(roots[i]), nullptr, &err),
            ok ? 0 : 1)
            << jobs;
        EXPECT_EQ(snapshot(roots[i]), expected) << jobs;
        EXPECT_EQ(failureLines(err, roots[i]), oneByOne.failures) << jobs << err.toStdString();
    }
}

} // namespace

TEST(WorkerPool, ParallelRunMakesTheFilesOfOneByOneProcessing)
{
    expectParallelRunsMatchOneByOne(
        { u"--quiet"_s }, { QString(), u"a.png"_s, u"a.png"_s, u"b_thumb_thumb.jpg"_s, u"sub"_s }, {});
}

TEST(WorkerPool, ParallelRunIntoSubFoldersMakesTheFilesOfOneByOneProcessing)
{
    // The sub-folders made by the first jobs are walked again by the later arguments.
    expectParallelRunsMatchOneByOne({ u"--folder"_s, u"t"_s, u"-f"_s, u"png"_s },
        { QString(), u"t"_s, u"sub/t"_s, u"t"_s },
        { { u"extensionFormat"_s, qint64(2) }, { u"extension"_s, u"t"_s }, { u"filetype"_s, qint64(4) } });
}

TEST(WorkerPool, LaterFileWithTheSameOutputWins)
{
    TempDir dir;
    // The first file is much slower than the second, so in parallel it would finish last.
    ASSERT_TRUE(writeSolidImage(dir.file(u"photo.png"_s), 4000, 3000, Qt::blue));
    ASSERT_TRUE(writeSolidImage(dir.file(u"photo.gif"_s), 40, 30, Qt::red));
    const QString output = dir.file(u"photo_thumb.png"_s);
    const QStringList options = { u"--quiet"_s, u"-j2"_s, u"-f"_s, u"png"_s };

    ASSERT_EQ(
        runThumbs(dir, options + QStringList { dir.file(u"photo.png"_s), dir.file(u"photo.gif"_s) }), 0);
    const QImage thumb = loadImage(output);
    EXPECT_EQ(thumb.size(), QSize(40, 30));
    EXPECT_TRUE(colourNear(thumb.pixelColor(10, 10), Qt::red, 2));
}

namespace {

/// PostScript that keeps Ghostscript busy for about the given number of loop turns, then draws nothing.
QByteArray busyPostScript(int turns)
{
    return "%!PS\n%%BoundingBox: 0 0 10 10\n0 1 " + QByteArray::number(turns) + " { pop } for\nshowpage\n";
}

class WorkerPoolRun : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(dir.file(u"tmp"_s))); }

    WorkerPool::Options options(int workers, int timeoutSeconds = 60) const
    {
        WorkerPool::Options result;
        result.executable = thumbsExecutable();
        result.workers = workers;
        result.timeoutSeconds = timeoutSeconds;
        return result;
    }

    TempDir dir;
    const EnvironmentOverride config { "XDG_CONFIG_HOME", dir.file(u"config"_s) };
    const EnvironmentOverride temporary { "TMPDIR", dir.file(u"tmp"_s) };
};

} // namespace

TEST_F(WorkerPoolRun, KilledWorkerAnswersNoAndIsReplacedLeavingNothingBehind)
{
    ASSERT_TRUE(writeBytes(dir.file(u"loop.ps"_s), LoopingPostScript));
    ASSERT_TRUE(writeTestImage(dir.file(u"good.png"_s), 60, 40));
    const int descriptorsBefore = openDescriptors();

    QList<WorkerPool::Result> results;
    QList<qint64> workers;
    {
        WorkerPool pool(options(1, 0), [&](const WorkerPool::Result &result) { results << result; });

        pool.submit(1, dir.file(u"loop.ps"_s), dir.file(u"loop_thumb.jpg"_s));
        ASSERT_EQ(pool.runningCount(), 1);
        const qint64 busy = pool.workerProcessIds().value(0);
        ASSERT_GT(busy, 0);
        // Let the job get as far as starting Ghostscript, so that the kill leaves an orphan to clean up.
        for (int i = 0; i < 500 && liveProcessesInGroup(busy).size() < 2; ++i)
            ::usleep(10000);
        ASSERT_EQ(::kill(pid_t(busy), SIGKILL), 0);

        pool.submit(2, dir.file(u"good.png"_s), dir.file(u"good_thumb.jpg"_s));
        pool.waitForAll();
        workers << busy << pool.workerProcessIds();
        EXPECT_EQ(workers.size(), 2);
        EXPECT_NE(workers.value(0), workers.value(1));
    }

    ASSERT_EQ(results.size(), 2);
    EXPECT_FALSE(results[0].ok);
    EXPECT_TRUE(results[0].reason.startsWith(u"the decoder crashed (signal 9"_s))
        << results[0].reason.toStdString();
    EXPECT_EQ(results[1].tag, 2);
    EXPECT_TRUE(results[1].ok) << results[1].reason.toStdString();
    EXPECT_EQ(results[1].bytesWritten, QFileInfo(dir.file(u"good_thumb.jpg"_s)).size());
    EXPECT_EQ(results[0].bytesWritten, 0);

    // Every worker was reaped (no zombies), its process group is empty, and no descriptor leaked.
    for (qint64 pid : workers) {
        EXPECT_EQ(::kill(pid_t(pid), 0), -1);
        EXPECT_EQ(errno, ESRCH);
        EXPECT_EQ(liveProcessesInGroup(pid), QList<qint64>());
    }
    EXPECT_EQ(openDescriptors(), descriptorsBefore);
    EXPECT_TRUE(QDir(dir.file(u"tmp"_s)).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST(WorkerPool, WorkersEndWithTheBatchEvenWhenItIsKilled)
{
    TempDir dir;
    ASSERT_TRUE(writeBytes(dir.file(u"loop.ps"_s), LoopingPostScript));
    QProcess batch;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_s, dir.file(u"config"_s));
    batch.setProcessEnvironment(environment);
    batch.start(thumbsExecutable(), { u"--quiet"_s, u"--timeout=0"_s, u"-j1"_s, dir.file(u"loop.ps"_s) });
    ASSERT_TRUE(batch.waitForStarted());

    // The worker, once it has started Ghostscript on the file that never ends.
    qint64 worker = 0;
    for (int i = 0; i < 1000 && (worker == 0 || liveProcessesInGroup(worker).size() < 2); ++i) {
        ::usleep(10000);
        const QList<qint64> children = liveProcessesInGroup(0, batch.processId());
        worker = children.value(0);
    }
    ASSERT_GT(worker, 0);
    ASSERT_GE(liveProcessesInGroup(worker).size(), 2);

    ::kill(pid_t(batch.processId()), SIGKILL);
    batch.waitForFinished();
    for (int i = 0; i < 500 && !liveProcessesInGroup(worker).isEmpty(); ++i)
        ::usleep(10000);
    EXPECT_EQ(liveProcessesInGroup(worker), QList<qint64>());
}

TEST_F(WorkerPoolRun, ShortBatchStartsOneWorkerOnly)
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
    EXPECT_EQ(children("--worker").size(), 1);
}

TEST_F(WorkerPoolRun, QueueThatKeepsTheWorkerBusyStartsAnotherThatTakesFiles)
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
    QList<Process> seen;
    while (!done && seen.isEmpty()) {
        for (const Process &child : children("-dSAFER")) {
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
