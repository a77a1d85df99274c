// IsolatedJob: the thumbnail job of the desktop application, run in a worker process.
#include "app/desktop/IsolatedJob.h"

#include "app/batch/WorkerEngine.h"
#include "app/batch/WorkerPool.h"
#include "app/engine/ThumbnailJob.h"
#include "files/FileManager.h"
#include "support/Failure.h"
#include "support/UserDefaults.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

#include <algorithm>
#include <memory>

#include <csignal>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

// The executable when it can run workers: it is there and so is the engine its workers load.
QString usableWorkerExecutable(const QString &executable)
{
    const QFileInfo info(executable);
    if (!info.isExecutable() || WorkerEngine::locate(info.absolutePath()).isEmpty())
        return {};
    return executable;
}

// Removes what a writer of output killed before its rename leaves behind: the hidden temporary
// file beside it, named after the output (".NAME.RANDOM.tmp", the name cut to 200 bytes).
void removeTemporaryFilesOf(const QString &output)
{
    if (output.isEmpty())
        return;
    const QFileInfo info(output);
    const QByteArray base = QFile::encodeName(info.fileName()).left(200);
    const QRegularExpression pattern(
        u"^\\.%1\\.[0-9a-z]+\\.tmp$"_s.arg(QRegularExpression::escape(QFile::decodeName(base))));
    QDir folder(info.absolutePath());
    const QStringList names = folder.entryList({ u".*.tmp"_s }, QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : names) {
        if (pattern.match(name).hasMatch())
            folder.remove(name);
    }
}

} // namespace

IsolatedJob::IsolatedJob(const QString &executable, int timeoutSeconds, UserDefaults *defaults)
    : m_executable(usableWorkerExecutable(executable))
    , m_timeoutSeconds(timeoutSeconds)
    , m_defaults(defaults)
{
}

IsolatedJob::~IsolatedJob() = default;

QString IsolatedJob::defaultExecutable()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/orvel-thumbs");
}

bool IsolatedJob::processFile(const QString &path, QString *error, bool *skipped)
{
    if (skipped)
        *skipped = false;
    if (m_running)
        return failure(error, u"another file is being made"_s);
    UserDefaults &defaults = m_defaults ? *m_defaults : UserDefaults::standard();
    if (m_executable.isEmpty())
        return ThumbnailJob::processFile(path, &defaults, error);

    // A pipe or a device would block the decoder reading it until the time limit.
    const std::optional<FileKind> kind = FileManager::fileKindAtPath(path);
    if (kind && *kind != FileKind::Regular)
        return failure(error, QStringLiteral("not a regular file"));

    if (!m_pool) {
        WorkerPool::Options options;
        options.executable = m_executable;
        options.workers = 1;
        options.timeoutSeconds = m_timeoutSeconds;
        m_pool = std::make_unique<WorkerPool>(options, [this](const WorkerPool::Result &result) {
            m_lastOk = result.ok;
            m_lastSkipped = result.skipped;
            m_lastReason = result.reason;
        });
    }
    m_lastOk = false;
    m_lastSkipped = false;
    m_lastReason = u"no answer from the worker"_s;
    m_cancelled = false;
    const QString output = ThumbnailJob::outputPathForFile(path, &defaults);
    const qint64 tag = m_nextTag++;
    if (QThread::currentThread() == QCoreApplication::instance()->thread()) {
        // Nothing runs between two files, so the file goes to the worker at once; then the wait
        // for its answer happens on a thread of its own while the event loop runs on: windows
        // draw themselves, the progress window appears during a long file and its Cancel button
        // can be clicked. The callers keep themselves from starting a second file meanwhile.
        m_running = true;
        m_pool->submit(tag, path, output);
        const QList<qint64> busy = m_pool->runningCount() > 0 ? m_pool->workerProcessIds() : QList<qint64>();
        m_workerPid = busy.value(0);
        QEventLoop loop;
        std::unique_ptr<QThread> waiter(QThread::create([this] { m_pool->waitForAll(); }));
        QObject::connect(waiter.get(), &QThread::finished, &loop, &QEventLoop::quit);
        waiter->start();
        loop.exec();
        waiter->wait();
        m_workerPid = 0;
        m_running = false;
    } else {
        m_pool->submit(tag, path, output);
        m_pool->waitForAll();
    }
    // A worker that had answered before it was killed made its thumbnail whole.
    if (m_cancelled && !m_lastOk) {
        removeTemporaryFilesOf(output);
        m_lastSkipped = false;
        m_lastReason = u"cancelled"_s;
    }
    if (error && !m_lastOk)
        *error = m_lastReason;
    if (skipped)
        *skipped = !m_lastOk && m_lastSkipped;
    return m_lastOk;
}

void IsolatedJob::cancel()
{
    if (!m_running || m_cancelled)
        return;
    m_cancelled = true;
    // The worker leads a process group of its own with everything it started (a PostScript
    // converter, say). It is not reaped before its death is seen, so the id is still its own.
    if (m_workerPid > 0)
        ::kill(pid_t(-m_workerPid), SIGKILL);
}

} // namespace orvel
