// BatchRun: one run of orvel-thumbs over its paths, and its report.
#pragma once

#include "app/batch/CommandLine.h"
#include "app/batch/Progress.h"
#include "app/batch/WorkerPool.h"
#include "files/FolderWalk.h"

#include <deque>

namespace orvel {

class UserDefaults;

/// Walks the paths of a command line, hands each file to the worker pool and reports the results
/// in walk order, whatever order the workers finish in: a line per failed file on standard error,
/// with --verbose each thumbnail (and each skipped file) on standard output, a progress line and a
/// summary. Inside a folder, files the job does not read and thumbnails that the naming rule could
/// have written are skipped, not failed: a second run over a folder makes nothing new.
class BatchRun : public FolderWalk::Visitor
{
public:
    /// A run of options.paths with the settings of defaults; executable is orvel-thumbs itself,
    /// started again for the workers.
    BatchRun(const CommandLineOptions &options, const QString &executable, UserDefaults &defaults);

    /// Runs the batch; answers the exit status: 0 when every path succeeded, else 1.
    [[nodiscard]] int run();

    bool processFile(const QString &path, FolderWalk::Found found) override;
    void failed(const QString &path, const QString &reason) override;
    bool unreadableFolder(const QString &path, const QString &reason) override;
    void willExamine(const QString &path) override { m_pool.waitForChangesAt(path); }
    void willListFolder(const QString &path) override { m_pool.waitForOutputsInside(path); }

private:
    struct Entry
    {
        QString path;
        QString output;
        bool done = false;
        bool ok = false;
        QString reason;
        bool started = false;
        /// Found in a folder: a file the job skips is then no failure.
        bool inFolder = false;
        bool skipped = false;
        qint64 bytesWritten = 0;
    };

    qint64 add(const QString &path, const QString &output, bool started, bool inFolder = false);
    void complete(qint64 tag, bool ok, const QString &reason, bool skipped = false, qint64 bytesWritten = 0);
    void report(const Entry &entry);

    const CommandLineOptions &m_options;
    UserDefaults &m_defaults;
    Progress m_progress;
    // Results wait here until every earlier one is in, so they are reported in walk order.
    std::deque<Entry> m_entries;
    qint64 m_firstTag = 0;
    qint64 m_thumbnails = 0;
    qint64 m_icons = 0;
    qint64 m_failed = 0;
    qint64 m_skipped = 0;
    qint64 m_bytesWritten = 0;
    WorkerPool m_pool;
};

} // namespace orvel
