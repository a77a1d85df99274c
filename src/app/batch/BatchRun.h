// BatchRun: one run of orvel-thumbs over its paths, and its report.
#pragma once

#include "app/batch/CommandLine.h"
#include "app/batch/Progress.h"
#include "app/batch/WorkerPool.h"
#include "files/FolderWalk.h"

#include <QHash>

#include <deque>

namespace orvel {

class UserDefaults;

/// Walks the paths of a command line, hands each file to the worker pool and reports the results
/// in walk order, whatever order the workers finish in: a line per failed file on standard error,
/// with --verbose each thumbnail (and each skipped file) on standard output, a progress line and a
/// summary. Inside a folder, files the job does not read and thumbnails that the naming rule could
/// have written are skipped, not failed: a second run over a folder makes nothing new.
///
/// With an output folder, thumbnails go there instead of beside their sources, in a copy of the
/// walked tree: a file found at PATH/a/b in a walked folder PATH writes into
/// OUTPUT/<name of PATH>/a/b, a file named by itself into OUTPUT. Whatever a walk finds inside
/// the output folder is skipped, as the outputs of an earlier run, unless the walk starts there.
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
    void willExamine(const QString &path) override;
    void willListFolder(const QString &path) override;

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
    /// The folder that the thumbnail of a file goes into, as the walk came to it; empty for beside
    /// the source.
    QString outputFolderFor(FolderWalk::Found found) const;

    const CommandLineOptions &m_options;
    UserDefaults &m_defaults;
    // The output folder, absolute, and with its links resolved (empty without one), and the one
    // whose files the current walk skips.
    QString m_outputDir;
    QString m_outputDirKey;
    QString m_guardedOutputFolder;
    // The path given for the current walk, the last path the walk examined, and for every folder
    // it lists (as listed) the folder under m_outputDir that mirrors it.
    QString m_walkedPath;
    QString m_examined;
    QHash<QString, QString> m_mirrors;
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
