// BatchRun: one run of orvel-thumbs over its paths, and its report.
#include "app/batch/BatchRun.h"

#include "app/shared/LocalizedText.h"
#include "app/shared/ThumbnailSettings.h"
#include "files/FileManager.h"
#include "files/LinkResolution.h"

#include <QDir>
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

/// The folder of path ("/" for a file at the root).
QString folderOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash <= 0 ? u"/"_s : path.left(slash);
}

QString lastComponent(const QString &path) { return path.mid(path.lastIndexOf(u'/') + 1); }

/// Whether path, with its links resolved, lies inside the folder whose resolved path is folderKey.
bool liesInside(const QString &path, const QString &folderKey)
{
    if (folderKey.isEmpty())
        return false;
    const QString key = stringByResolvingSymlinksInPath(path);
    return folderKey == u"/"
        || (key.startsWith(folderKey) && key.size() > folderKey.size() && key.at(folderKey.size()) == u'/');
}

/// The output folder (resolved) whose files a walk of walkedPath skips: none when the walk starts
/// at or inside it, for then the user asked for what is there.
QString guardedOutputFolder(const QString &walkedPath, const QString &outputDirKey)
{
    if (outputDirKey.isEmpty() || stringByResolvingSymlinksInPath(walkedPath) == outputDirKey
        || liesInside(walkedPath, outputDirKey))
        return QString();
    return outputDirKey;
}

QString absolute(const QString &path) { return path.isEmpty() ? path : QFileInfo(path).absoluteFilePath(); }

} // namespace

BatchRun::BatchRun(const CommandLineOptions &options, const QString &executable, UserDefaults &defaults)
    : m_options(options)
    , m_defaults(defaults)
    , m_outputDir(options.outputDir.isEmpty() ? QString() : QDir::cleanPath(absolute(options.outputDir)))
    , m_outputDirKey(stringByResolvingSymlinksInPath(m_outputDir))
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
        if (found == FolderWalk::Found::Named
            || (!m_settings.couldHaveWritten(path) && !liesInside(path, guardedOutputFolder)))
            ++files;
        return true;
    }
    qint64 files = 0;
    QString guardedOutputFolder;

private:
    const ThumbnailSettings &m_settings;
};

} // namespace

int BatchRun::run()
{
    bool ok = true;
    // The total known from the start makes the bar and the time left mean something, and lets
    // the pool start a second worker only when the batch is long enough to pay for it.
    const int workers = m_options.jobs > 0 ? m_options.jobs : defaultJobCount();
    if (m_progress.isShown() || workers > 1) {
        const ThumbnailSettings settings = ThumbnailSettings::read(m_defaults);
        Count count(settings);
        for (const QString &argument : m_options.paths) {
            count.guardedOutputFolder = guardedOutputFolder(absolute(argument), m_outputDirKey);
            (void)FolderWalk::processPath(absolute(argument), count, m_options.maxDepth);
        }
        m_progress.setTotal(count.files);
        m_pool.setFilesLeft(count.files);
    }
    for (const QString &argument : m_options.paths) {
        m_walkedPath = absolute(argument);
        m_guardedOutputFolder = guardedOutputFolder(m_walkedPath, m_outputDirKey);
        m_mirrors.clear();
        ok = FolderWalk::processPath(m_walkedPath, *this, m_options.maxDepth) && ok;
    }
    m_pool.waitForAll();
    m_progress.finish();
    if (!m_options.quiet)
        writeText(stderr,
            Progress::formatSummary(
                m_thumbnails, m_icons, m_skipped, m_failed, m_progress.elapsedSeconds(), m_bytesWritten)
                + (m_options.dryRun
                        ? u" ("_s + localizedText(QStringLiteral("dry run: nothing written")) + u")\n"_s
                        : u"\n"_s));
    return ok && m_failed == 0 ? 0 : 1;
}

bool BatchRun::processFile(const QString &path, FolderWalk::Found found)
{
    const bool inFolder = found == FolderWalk::Found::InFolder;
    // A pipe or a device would block the decoder reading it until the time limit.
    const std::optional<FileKind> kind = FileManager::fileKindAtPath(path);
    if (kind && *kind != FileKind::Regular) {
        failed(path, localizedText(QStringLiteral("not a regular file")));
        return false;
    }
    const ThumbnailSettings settings = ThumbnailSettings::read(m_defaults);
    if (inFolder && settings.couldHaveWritten(path)) {
        complete(add(path, {}, false, true), false,
            localizedText(QStringLiteral("a thumbnail of this naming rule")), true);
        return true;
    }
    if (inFolder && liesInside(path, m_guardedOutputFolder)) {
        complete(add(path, {}, false, true), false, localizedText(QStringLiteral("inside the output folder")),
            true);
        return true;
    }
    const QString folder = outputFolderFor(found);
    const QString output = settings.thumbnailPathFor(path, folder);
    if (m_options.skipUpToDate && isUpToDate(output, path)) {
        complete(add(path, {}, false, true), false,
            localizedText(QStringLiteral("its thumbnail is up to date")), true);
        return true;
    }
    const qint64 tag = add(path, output, true, inFolder);
    m_progress.fileStarted(path);
    // An icon is the source's own: no folder goes with it.
    m_pool.submit(tag, path, output, output.isEmpty() ? QString() : folder);
    // The answer arrives later; run() counts it.
    return true;
}

void BatchRun::willExamine(const QString &path)
{
    m_examined = path;
    m_pool.waitForChangesAt(path);
}

void BatchRun::willListFolder(const QString &path)
{
    if (!m_outputDir.isEmpty()) {
        // The folder was reached through the path examined last: the walked path itself, or an
        // entry of a folder listed before (whose name it keeps, even when it is a link).
        if (m_examined == m_walkedPath) {
            m_mirrors.insert(path, lastComponent(QDir::cleanPath(m_examined)));
        } else {
            const QString above = m_mirrors.value(folderOf(m_examined));
            const QString name = lastComponent(m_examined);
            m_mirrors.insert(path, above.isEmpty() ? name : above + u'/' + name);
        }
    }
    m_pool.waitForOutputsInside(path);
}

QString BatchRun::outputFolderFor(FolderWalk::Found found) const
{
    if (m_outputDir.isEmpty() || found == FolderWalk::Found::Named)
        return m_outputDir;
    const QString mirror = m_mirrors.value(folderOf(m_examined));
    return mirror.isEmpty() ? m_outputDir : m_outputDir + u'/' + mirror;
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
            m_progress.printLine(
                stdout, localizedText(QStringLiteral("%1: skipped (%2)")).arg(entry.path, entry.reason));
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
