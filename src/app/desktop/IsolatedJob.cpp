// IsolatedJob: the thumbnail job of the desktop application, run in a worker process.
#include "app/desktop/IsolatedJob.h"

#include "app/batch/WorkerEngine.h"
#include "app/batch/WorkerPool.h"
#include "app/engine/ThumbnailJob.h"
#include "files/FileManager.h"
#include "support/Failure.h"
#include "support/UserDefaults.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <memory>

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

bool IsolatedJob::processFile(const QString &path, QString *error)
{
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
            m_lastReason = result.reason;
        });
    }
    m_lastOk = false;
    m_lastReason = QStringLiteral("no answer from the worker");
    const QString output = ThumbnailJob::outputPathForFile(path, &defaults);
    const qint64 tag = m_nextTag++;
    auto work = [this, tag, &path, &output] {
        m_pool->submit(tag, path, output);
        m_pool->waitForAll();
    };
    if (QThread::currentThread() == QCoreApplication::instance()->thread()) {
        // Wait on a thread of its own while the event loop runs on, so that windows draw
        // themselves and the progress window appears during a long file; input waits.
        QEventLoop loop;
        std::unique_ptr<QThread> waiter(QThread::create(work));
        QObject::connect(waiter.get(), &QThread::finished, &loop, &QEventLoop::quit);
        waiter->start();
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        waiter->wait();
    } else {
        work();
    }
    if (error && !m_lastOk)
        *error = m_lastReason;
    return m_lastOk;
}

} // namespace orvel
