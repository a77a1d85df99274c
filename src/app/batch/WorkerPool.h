// WorkerPool: runs the thumbnail job in worker processes, in parallel and with a time limit per file.
#pragma once

#include "app/shared/WorkerOptions.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>

namespace orvel {

/// A pool of worker processes, each the program itself started with "--worker" (see
/// ThumbnailWorker), that make the thumbnails of the files handed to it. A worker that crashes or overruns
/// its time limit answers NO for its file, is killed with everything it started, and is replaced; the batch
/// goes on.
///
/// Files of one batch may depend on each other: two sources with the same output, a source that
/// is the output of an earlier file, a folder that an earlier file writes into. The pool keeps the
/// effects of one-by-one processing in submission order by never letting two jobs that touch the
/// same path run at once, and by letting its caller wait for the jobs that may change a path
/// before looking at it:
///  - submit() waits for every running job whose output is this file's source or output, or
///    whose source is this file's source or output. So a later job with the same output
///    finishes last and wins, a thumbnail is re-made only once it is written, and no file is
///    replaced while a job reads it.
///  - waitForChangesAt() waits for every running job whose output is at or inside a path, or for
///    all of them when the path is a symbolic link (its target could be anything). A walk calls
///    it before resolving or testing a path, so it sees a file or sub-folder that an earlier job
///    makes exactly as one-by-one processing would.
///  - waitForOutputsInside() waits for every running job that writes inside a folder; a walk
///    calls it just before listing the folder, so the listing holds what earlier jobs wrote.
/// Jobs change the file system only by writing their output (and the folders on the way to it),
/// so these rules are all that is needed. Paths are compared with their folders' links resolved.
///
/// Workers are started as the queue pays for them, since a start costs a worker tens of
/// milliseconds of processor time, as much as several small files take:
///  - the first file starts the first worker and goes to it at once;
///  - while every started worker is busy (and has said it is ready), the time that submit() spends
///    waiting for one adds up, over consecutive files, into a backlog; it goes back to zero
///    whenever a worker had to wait for a file. Once the backlog is longer than a worker's start
///    (measured: from the spawn to the worker saying it is ready; 100 ms until then), another
///    worker is started, one at a time, up to the number asked for;
///  - when the caller said how many files are left (setFilesLeft()), another worker is started
///    only if those files, at the mean time a file has taken so far, keep each started worker
///    busy for longer than a start; so a short batch ends with the workers it has;
///  - a worker that is starting gets no file while a started one can take it, so starting one
///    never delays a file: the next file goes to whichever worker is free first.
/// A worker that fails to start, or dies before it is ready, is not tried again as an extra one.
class WorkerPool
{
public:
    struct Options
    {
        /// The orvel-thumbs executable.
        QString executable;
        /// What every worker is started with. Threads left at 0 share the processor cores among
        /// the workers; a memory limit left at -1 is defaultMemoryLimitMiB(workers).
        WorkerOptions worker;
        /// The number of worker processes, at least 1.
        int workers = 1;
        /// Time limit per file in seconds; 0 means none.
        int timeoutSeconds = 120;
    };

    struct Result
    {
        /// The tag given to submit().
        qint64 tag = 0;
        QString path;
        bool ok = false;
        /// When ok is false: the file is none of the kinds the job reads, so nothing was to be made.
        bool skipped = false;
        /// Why no thumbnail was made, when ok is false.
        QString reason;
        /// The size of the thumbnail written, when ok is true (0 for an icon or a dry run).
        qint64 bytesWritten = 0;
    };

    /// Called with each result as it comes, from within the pool's own calls; it must not call
    /// back into the pool.
    using ResultHandler = std::function<void(const Result &)>;

    WorkerPool(const Options &options, ResultHandler handler);
    /// Ends the workers; jobs still running are killed and their results never delivered.
    ~WorkerPool();

    WorkerPool(const WorkerPool &) = delete;
    WorkerPool &operator=(const WorkerPool &) = delete;

    /// Hands the file at path (resolved) to a worker; outputPath is the file its job writes, empty
    /// when none, and outputFolder the folder it writes it into when not beside the source. Waits
    /// first until a worker is free and no running job conflicts with this one.
    void submit(
        qint64 tag, const QString &path, const QString &outputPath, const QString &outputFolder = QString());

    /// Waits for every running job that may change what is at path (see the class comment).
    void waitForChangesAt(const QString &path);
    /// Waits for every running job whose output lies inside folder.
    void waitForOutputsInside(const QString &folder);
    /// Waits until every submitted file has its result.
    void waitForAll();

    /// Tells the pool how many files are still to be submitted, the next one included, when the
    /// caller knows: another worker is then started only when they are worth it. Each submit()
    /// counts one down.
    void setFilesLeft(qint64 count);

    /// The number of worker processes started so far, replacements included.
    [[nodiscard]] int startedWorkerCount() const;

    /// The number of jobs running.
    int runningCount() const;
    /// The process ids of the live workers, busy ones first.
    [[nodiscard]] QList<qint64> workerProcessIds() const;

    /// The memory limit each of workers processes gets by default, in MiB: three quarters of the
    /// machine's memory shared among them, at least 1 GiB. A decoder that a hostile file drives
    /// into allocating without end then fails that file instead of the machine.
    [[nodiscard]] static qint64 defaultMemoryLimitMiB(int workers);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace orvel
