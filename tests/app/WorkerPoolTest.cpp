// Tests of the worker processes: parallel runs give exactly the files of one-by-one processing, and a
// worker that hangs or dies costs only its own file.
#include "app/WorkerPool.h"
#include "app/FolderWalk.h"
#include "app/ThumbnailJob.h"
#include "support/UserDefaults.h"

#include "testlib/TestSupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace orvel;
using orvel::test::runThumbs;
using orvel::test::TempDir;

namespace {

const QByteArray LoopingPostScript = "%!PS\n{} loop\n";

QStringList leftovers(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

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
                : QCryptographicHash::hash(orvel::test::readBytes(path), QCryptographicHash::Sha1).toHex());
    }
    return result;
}

/// The entries under root in the order the walk meets them, relative.
QStringList walkOrder(const QString &root)
{
    QStringList result;
    const QStringList names = QDir(root).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    for (const QString &name : names) {
        result << name;
        if (QFileInfo(root + u'/' + name).isDir()) {
            for (const QString &inner : walkOrder(root + u'/' + name))
                result << name + u'/' + inner;
        }
    }
    return result;
}

/// A folder whose files interact: two sources with one output, an old thumbnail that is re-made
/// and taken up again, a file that is not an image, nested folders, one large picture.
void makeMixedTree(const QString &root)
{
    QDir().mkpath(root + QStringLiteral("/sub/deeper"));
    QDir().mkpath(root + QStringLiteral("/empty"));
    ASSERT_TRUE(orvel::test::writeTestImage(root + QStringLiteral("/a.png"), 300, 200));
    ASSERT_TRUE(orvel::test::writeSolidImage(root + QStringLiteral("/a.gif"), 120, 80, Qt::red));
    ASSERT_TRUE(orvel::test::writeTestImage(root + QStringLiteral("/b.jpg"), 200, 300));
    ASSERT_TRUE(orvel::test::writeSolidImage(root + QStringLiteral("/b_thumb.jpg"), 90, 60, Qt::green));
    ASSERT_TRUE(orvel::test::writeTestImage(root + QStringLiteral("/big.png"), 2000, 1500, true));
    ASSERT_TRUE(orvel::test::writeBytes(root + QStringLiteral("/notes.txt"), "not a picture"));
    ASSERT_TRUE(orvel::test::writeBytes(root + QStringLiteral("/broken.png"), "\x89PNG\r\n\x1a\n truncated"));
    ASSERT_TRUE(orvel::test::writeTestImage(root + QStringLiteral("/sub/c.png"), 64, 64, true));
    ASSERT_TRUE(orvel::test::writeTestImage(root + QStringLiteral("/sub/c.tiff"), 50, 70));
    ASSERT_TRUE(orvel::test::writeTestImage(root + QStringLiteral("/sub/deeper/e.png"), 500, 20));
    for (int i = 0; i < 12; ++i) {
        ASSERT_TRUE(orvel::test::writeSolidImage(
            root + QStringLiteral("/n%1.png").arg(i), 40 + i, 30, QColor(i * 20, 255 - i * 20, 128)));
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

    bool processFile(const QString &path) override
    {
        QString reason;
        const bool ok = ThumbnailJob::processFile(path, &m_defaults, &reason);
        if (!ok)
            failures << path + QStringLiteral(": ")
                    + (reason.isEmpty() ? QStringLiteral("no thumbnail made") : reason);
        return ok;
    }
    void failed(const QString &path, const QString &reason) override
    {
        failures << path + QStringLiteral(": ") + reason;
    }

    QStringList failures;

private:
    UserDefaults &m_defaults;
};

/// The per-file lines of a run's standard error (the summary left out), with root written as ROOT.
QStringList failureLines(const QByteArray &err, const QString &root)
{
    static const QRegularExpression summary(QStringLiteral("^\\d+ thumbnails? made, "));
    QStringList lines = QString::fromLocal8Bit(err).split(u'\n', Qt::SkipEmptyParts);
    lines.removeIf([](const QString &line) { return summary.match(line).hasMatch(); });
    for (QString &line : lines)
        line.replace(root, QStringLiteral("ROOT"));
    return lines;
}

/// Sets an environment variable for as long as it lives.
class EnvironmentOverride
{
public:
    EnvironmentOverride(const char *name, const QString &value)
        : m_name(name)
        , m_wasSet(qEnvironmentVariableIsSet(name))
        , m_old(qgetenv(name))
    {
        qputenv(name, QFile::encodeName(value));
    }
    ~EnvironmentOverride()
    {
        if (m_wasSet)
            qputenv(m_name, m_old);
        else
            qunsetenv(m_name);
    }

private:
    const char *m_name;
    bool m_wasSet;
    QByteArray m_old;
};

/// The processes of a process group that are running (zombies left out).
QList<qint64> liveProcessesInGroup(qint64 group)
{
    QList<qint64> result;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool isPid = false;
        const qint64 pid = entry.toLongLong(&isPid);
        if (!isPid)
            continue;
        // "pid (name) state ppid pgrp ...": the name may hold anything, so look after its last ")".
        const QByteArray stat = orvel::test::readBytes(QStringLiteral("/proc/%1/stat").arg(pid));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 2 && fields[0] != "Z" && fields[2].toLongLong() == group)
            result << pid;
    }
    return result;
}

int openDescriptors()
{
    return int(QDir(QStringLiteral("/proc/self/fd"))
                   .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)
                   .size());
}

/// Compares one-by-one processing of a tree in this process with orvel-thumbs -j1 and -j3 on copies.
void expectParallelRunsMatchOneByOne(
    const QStringList &options, const QStringList &argumentsInRoot, const QVariantMap &settings)
{
    TempDir dir;
    const QStringList roots
        = { dir.file(QStringLiteral("one")), dir.file(QStringLiteral("j1")), dir.file(QStringLiteral("j3")) };
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

    UserDefaults defaults(dir.file(QStringLiteral("one.conf")));
    defaults.setArgumentDomain(settings);
    InProcessRun oneByOne(defaults);
    bool ok = true;
    for (const QString &path : argumentsFor(roots[0]))
        ok = FolderWalk::processPath(path, oneByOne) && ok;
    for (QString &line : oneByOne.failures)
        line.replace(roots[0], QStringLiteral("ROOT"));

    QByteArray errJ1;
    QByteArray errJ3;
    const int statusJ1 = runThumbs(
        dir, options + QStringList { QStringLiteral("-j1") } + argumentsFor(roots[1]), nullptr, &errJ1);
    const int statusJ3 = runThumbs(
        dir, options + QStringList { QStringLiteral("-j3") } + argumentsFor(roots[2]), nullptr, &errJ3);

    EXPECT_EQ(statusJ1, ok ? 0 : 1);
    EXPECT_EQ(statusJ3, ok ? 0 : 1);
    const auto expected = snapshot(roots[0]);
    EXPECT_EQ(snapshot(roots[1]), expected);
    EXPECT_EQ(snapshot(roots[2]), expected);
    EXPECT_EQ(failureLines(errJ1, roots[1]), oneByOne.failures) << errJ1.toStdString();
    EXPECT_EQ(failureLines(errJ3, roots[2]), oneByOne.failures) << errJ3.toStdString();
}

} // namespace

TEST(WorkerPool, ParallelRunMakesTheFilesOfOneByOneProcessing)
{
    expectParallelRunsMatchOneByOne({ QStringLiteral("--quiet") },
        { QString(), QStringLiteral("a.png"), QStringLiteral("a.png"), QStringLiteral("b_thumb_thumb.jpg"),
            QStringLiteral("sub") },
        {});
}

TEST(WorkerPool, ParallelRunIntoSubFoldersMakesTheFilesOfOneByOneProcessing)
{
    // The sub-folders made by the first jobs are walked again by the later arguments.
    expectParallelRunsMatchOneByOne(
        { QStringLiteral("--folder"), QStringLiteral("t"), QStringLiteral("-f"), QStringLiteral("png") },
        { QString(), QStringLiteral("t"), QStringLiteral("sub/t"), QStringLiteral("t") },
        { { QStringLiteral("extensionFormat"), qint64(2) },
            { QStringLiteral("extension"), QStringLiteral("t") },
            { QStringLiteral("filetype"), qint64(4) } });
}

TEST(WorkerPool, LaterFileWithTheSameOutputWins)
{
    TempDir dir;
    // The first file is much slower than the second, so in parallel it would finish last.
    ASSERT_TRUE(orvel::test::writeSolidImage(dir.file(QStringLiteral("photo.png")), 4000, 3000, Qt::blue));
    ASSERT_TRUE(orvel::test::writeSolidImage(dir.file(QStringLiteral("photo.gif")), 40, 30, Qt::red));
    const QString output = dir.file(QStringLiteral("photo_thumb.png"));
    const QStringList options
        = { QStringLiteral("--quiet"), QStringLiteral("-j2"), QStringLiteral("-f"), QStringLiteral("png") };

    ASSERT_EQ(runThumbs(dir,
                  options
                      + QStringList { dir.file(QStringLiteral("photo.png")),
                          dir.file(QStringLiteral("photo.gif")) }),
        0);
    QImage thumb = orvel::test::loadImage(output);
    ASSERT_FALSE(thumb.isNull());
    EXPECT_EQ(thumb.size(), QSize(40, 30));
    EXPECT_TRUE(orvel::test::colourNear(thumb.pixelColor(10, 10), Qt::red, 2));

    ASSERT_EQ(runThumbs(dir,
                  options
                      + QStringList { dir.file(QStringLiteral("photo.gif")),
                          dir.file(QStringLiteral("photo.png")) }),
        0);
    thumb = orvel::test::loadImage(output);
    EXPECT_EQ(thumb.size(), QSize(128, 96));
    EXPECT_TRUE(orvel::test::colourNear(thumb.pixelColor(10, 10), Qt::blue, 2));
}

TEST(WorkerPool, FilesAndFoldersMadeByEarlierJobsAreThereForLaterPaths)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("a.png")), 3000, 2000));
    EXPECT_EQ(runThumbs(dir,
                  { QStringLiteral("--quiet"), QStringLiteral("-j2"), dir.file(QStringLiteral("a.png")),
                      dir.file(QStringLiteral("a_thumb.jpg")) }),
        0);
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("a_thumb_thumb.jpg"))));

    EXPECT_EQ(runThumbs(dir,
                  { QStringLiteral("--quiet"), QStringLiteral("-j2"), QStringLiteral("--folder"),
                      QStringLiteral("small"), dir.file(QStringLiteral("a.png")),
                      dir.file(QStringLiteral("small")) }),
        0);
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("small/small/a.jpg"))));
}

TEST(WorkerPool, PathsWithAnyCharactersReachTheJob)
{
    TempDir dir;
    const QString name = QStringLiteral("we ird\nname \"ü\" \\ %s.png");
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(name), 30, 20));
    EXPECT_EQ(runThumbs(dir, { QStringLiteral("--quiet"), QStringLiteral("-j2"), dir.path() }), 0);
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("we ird\nname \"ü\" \\ %s_thumb.jpg"))));
}

TEST(WorkerPool, FileThatOverrunsTheTimeLimitFailsAndTheBatchGoesOn)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeBytes(dir.file(QStringLiteral("loop.ps")), LoopingPostScript));
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("good.png")), 60, 40));
    QByteArray err;
    EXPECT_EQ(runThumbs(dir,
                  { QStringLiteral("-j1"), QStringLiteral("--timeout"), QStringLiteral("1"),
                      dir.file(QStringLiteral("loop.ps")), dir.file(QStringLiteral("good.png")) },
                  nullptr, &err),
        1);
    EXPECT_TRUE(
        err.contains(QFile::encodeName(dir.file(QStringLiteral("loop.ps"))) + ": timed out after 1 s\n"))
        << err.toStdString();
    EXPECT_TRUE(err.contains("1 thumbnail made, 1 failed")) << err.toStdString();
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("good_thumb.jpg"))));
    EXPECT_EQ(leftovers(dir.file(QStringLiteral("tmp"))), QStringList());

    // Nothing the killed worker started (Ghostscript) runs on.
    QDirIterator processes(QStringLiteral("/proc"), QDir::Dirs | QDir::NoDotAndDotDot);
    while (processes.hasNext()) {
        const QString cmdline
            = QString::fromLocal8Bit(orvel::test::readBytes(processes.next() + QStringLiteral("/cmdline")));
        EXPECT_FALSE(cmdline.contains(dir.path())) << cmdline.toStdString();
    }
}

TEST(WorkerPool, KilledWorkerAnswersNoAndIsReplacedLeavingNothingBehind)
{
    TempDir dir;
    ASSERT_TRUE(orvel::test::writeBytes(dir.file(QStringLiteral("loop.ps")), LoopingPostScript));
    ASSERT_TRUE(orvel::test::writeTestImage(dir.file(QStringLiteral("good.png")), 60, 40));
    // The workers inherit this process's environment.
    QDir().mkpath(dir.file(QStringLiteral("tmp")));
    const EnvironmentOverride config("XDG_CONFIG_HOME", dir.file(QStringLiteral("config")));
    const EnvironmentOverride temporary("TMPDIR", dir.file(QStringLiteral("tmp")));
    const int descriptorsBefore = openDescriptors();

    QList<WorkerPool::Result> results;
    QList<qint64> workers;
    {
        WorkerPool::Options options;
        options.executable = orvel::test::thumbsExecutable();
        options.workers = 1;
        options.timeoutSeconds = 0;
        WorkerPool pool(options, [&](const WorkerPool::Result &result) { results << result; });

        pool.submit(1, dir.file(QStringLiteral("loop.ps")), dir.file(QStringLiteral("loop_thumb.jpg")));
        ASSERT_EQ(pool.runningCount(), 1);
        const qint64 busy = pool.workerProcessIds().value(0);
        ASSERT_GT(busy, 0);
        // Let the job get as far as starting Ghostscript, so that the kill leaves an orphan to clean up.
        for (int i = 0; i < 500 && liveProcessesInGroup(busy).size() < 2; ++i)
            ::usleep(10000);
        ASSERT_EQ(::kill(pid_t(busy), SIGKILL), 0);

        pool.submit(2, dir.file(QStringLiteral("good.png")), dir.file(QStringLiteral("good_thumb.jpg")));
        pool.waitForAll();
        workers << busy << pool.workerProcessIds();
        EXPECT_EQ(workers.size(), 2);
        EXPECT_NE(workers.value(0), workers.value(1));
    }

    ASSERT_EQ(results.size(), 2);
    EXPECT_EQ(results[0].tag, 1);
    EXPECT_FALSE(results[0].ok);
    EXPECT_TRUE(results[0].reason.startsWith(QStringLiteral("the decoder crashed (signal 9")))
        << results[0].reason.toStdString();
    EXPECT_EQ(results[1].tag, 2);
    EXPECT_TRUE(results[1].ok) << results[1].reason.toStdString();
    EXPECT_TRUE(QFile::exists(dir.file(QStringLiteral("good_thumb.jpg"))));

    // Every worker was reaped (no zombies), its process group is empty, and no descriptor leaked.
    for (qint64 pid : workers) {
        EXPECT_EQ(::kill(pid_t(pid), 0), -1);
        EXPECT_EQ(errno, ESRCH);
        EXPECT_EQ(liveProcessesInGroup(pid), QList<qint64>());
    }
    EXPECT_EQ(openDescriptors(), descriptorsBefore);
    EXPECT_EQ(leftovers(dir.file(QStringLiteral("tmp"))), QStringList());
}
