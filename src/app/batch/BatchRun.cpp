// BatchRun: one run of orvel-thumbs over its paths, and its report.
#include "app/batch/BatchRun.h"

#include "app/shared/ThumbnailSettings.h"
#include "files/FileManager.h"

#include <QFileInfo>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

WorkerPool::Options poolOptions(const CommandLineOptions &options, const QString &executable)
{
    WorkerPool::Options pool;
    pool.executable = executable;
    pool.workers = options.jobs > 0 ? options.jobs : defaultJobCount();
    pool.timeoutSeconds = options.timeoutSeconds;
    pool.worker.settings = options.settings;
    pool.worker.memoryLimitMiB = options.memoryLimitMiB;
    pool.worker.verbose = options.verbose;
    pool.worker.dryRun = options.dryRun;
    return pool;
}

/// Whether the thumbnail at output exists and is newer than its source.
bool isUpToDate(const QString &output, const QString &source)
{
    if (output.isEmpty())
        return false;
    const std::optional<FileTime> made = FileManager::fileModificationDateAtPath(output);
    const std::optional<FileTime> changed = FileManager::fileModificationDateAtPath(source);
    return made && changed && *made > *changed;
}

} // namespace

BatchRun::BatchRun(const CommandLineOptions &options, const QString &executable, UserDefaults &defaults)
    : m_options(options)
    , m_defaults(defaults)
    , m_progress(!options.quiet)
    , m_pool(poolOptions(options, executable), [this](const WorkerPool::Result &result) {
        complete(result.tag, result.ok, result.reason, result.skipped, result.bytesWritten);
    })
{
}

namespace {

/// Counts the files a batch will hand to the job, by a walk of its own that only lists folders.
class Count : public FolderWalk::Visitor
{
public:
    explicit Count(const ThumbnailSettings &settings)
        : m_settings(settings)
    {
    }
    bool processFile(const QString &path, FolderWalk::Found found) override
    {
        if (found == FolderWalk::Found::Named || !m_settings.couldHaveWritten(path))
            ++files;
        return true;
    }
    qint64 files = 0;

private:
    const ThumbnailSettings &m_settings;
};

} // namespace

int BatchRun::run()
{
    bool ok = true;
    if (m_progress.isShown()) {
        // A total known from the start, so that the bar and the time left mean something.
        const ThumbnailSettings settings = ThumbnailSettings::read(m_defaults);
        Count count(settings);
        for (const QString &argument : m_options.paths)
            (void)FolderWalk::processPath(
                argument.isEmpty() ? argument : QFileInfo(argument).absoluteFilePath(), count,
                m_options.maxDepth);
        m_progress.setTotal(count.files);
    }
    for (const QString &argument : m_options.paths) {
        const QString path = argument.isEmpty() ? argument : QFileInfo(argument).absoluteFilePath();
        ok = FolderWalk::processPath(path, *this, m_options.maxDepth) && ok;
    }
    m_pool.waitForAll();
    m_progress.finish();
    if (!m_options.quiet)
        writeText(stderr,
            Progress::formatSummary(
                m_thumbnails, m_icons, m_skipped, m_failed, m_progress.elapsedSeconds(), m_bytesWritten)
                + (m_options.dryRun ? u" (dry run: nothing written)\n"_s : u"\n"_s));
    return ok && m_failed == 0 ? 0 : 1;
}

bool BatchRun::processFile(const QString &path, FolderWalk::Found found)
{
    const bool inFolder = found == FolderWalk::Found::InFolder;
    // A pipe or a device would block the decoder reading it until the time limit.
    const std::optional<FileKind> kind = FileManager::fileKindAtPath(path);
    if (kind && *kind != FileKind::Regular) {
        failed(path, u"not a regular file"_s);
        return false;
    }
    const ThumbnailSettings settings = ThumbnailSettings::read(m_defaults);
    if (inFolder && settings.couldHaveWritten(path)) {
        complete(add(path, {}, false, true), false, u"a thumbnail of this naming rule"_s, true);
        return true;
    }
    const QString output = settings.thumbnailPathFor(path);
    if (m_options.skipUpToDate && isUpToDate(output, path)) {
        complete(add(path, {}, false, true), false, u"its thumbnail is up to date"_s, true);
        return true;
    }
    const qint64 tag = add(path, output, true, inFolder);
    m_progress.fileStarted(path);
    m_pool.submit(tag, path, output);
    // The answer arrives later; run() counts it.
    return true;
}

void BatchRun::failed(const QString &path, const QString &reason)
{
    complete(add(path, {}, false), false, reason);
}

bool BatchRun::unreadableFolder(const QString &path, const QString &reason)
{
    // Whatever is in a folder we cannot read gets no thumbnail; the user should know.
    failed(path, reason);
    return false;
}

qint64 BatchRun::add(const QString &path, const QString &output, bool started, bool inFolder)
{
    m_entries.push_back({ path, output, false, false, QString(), started, inFolder, false, 0 });
    return m_firstTag + qint64(m_entries.size()) - 1;
}

void BatchRun::complete(qint64 tag, bool ok, const QString &reason, bool skipped, qint64 bytesWritten)
{
    Entry &entry = m_entries.at(size_t(tag - m_firstTag));
    entry.done = true;
    entry.ok = ok;
    entry.bytesWritten = bytesWritten;
    entry.reason = reason;
    // A file named by the user that the job does not read stays a failure.
    entry.skipped = !ok && skipped && entry.inFolder;
    while (!m_entries.empty() && m_entries.front().done) {
        report(m_entries.front());
        m_entries.pop_front();
        ++m_firstTag;
    }
}

void BatchRun::report(const Entry &entry)
{
    if (entry.skipped) {
        ++m_skipped;
        if (m_options.verbose || m_options.dryRun)
            m_progress.printLine(stdout, u"%1: skipped (%2)"_s.arg(entry.path, entry.reason));
    } else if (!entry.ok) {
        ++m_failed;
        m_progress.printLine(stderr, u"%1: %2"_s.arg(entry.path, entry.reason));
    } else if (entry.output.isEmpty()) {
        ++m_icons;
    } else {
        ++m_thumbnails;
        m_bytesWritten += entry.bytesWritten;
        if (m_options.dryRun)
            m_progress.printLine(stdout, u"%1 -> %2"_s.arg(entry.path, entry.output));
        else if (m_options.verbose)
            m_progress.printLine(stdout, entry.output);
    }
    if (entry.started)
        m_progress.fileFinished();
}

} // namespace orvel
