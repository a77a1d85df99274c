// WorkerEngine: the thumbnail engine that a worker process loads, kept out of the batch runner.
#include "app/batch/WorkerEngine.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <dlfcn.h>
#include <vector>

namespace orvel {

QString WorkerEngine::locate(const QString &executableFolder)
{
    const QString candidates[] = {
        executableFolder + u'/' + QLatin1StringView(FileName),
        // The install's library folder, relative to its bin folder.
        executableFolder + QStringLiteral("/" ORVEL_ENGINE_RELATIVE_FOLDER "/") + QLatin1StringView(FileName),
    };
    for (const QString &candidate : candidates) {
        if (QFileInfo(candidate).isFile())
            return QFileInfo(candidate).absoluteFilePath();
    }
    return {};
}

namespace {

/// The engine's entry point of that name, the engine loaded for good; null, having said why on
/// standard error, when there is none.
void *engineEntry(const char *symbol)
{
    const QString folder = QCoreApplication::applicationDirPath();
    const QString path = WorkerEngine::locate(folder);
    if (path.isEmpty()) {
        std::fprintf(stderr, "orvel-thumbs: the thumbnail engine %s is missing beside %s\n",
            WorkerEngine::FileName, qUtf8Printable(folder));
        return nullptr;
    }
    // Never unloaded: the process ends with the work it was loaded for.
    void *module = ::dlopen(QFile::encodeName(path).constData(), RTLD_LAZY | RTLD_LOCAL);
    if (!module) {
        std::fprintf(stderr, "orvel-thumbs: cannot load the thumbnail engine: %s\n", ::dlerror());
        return nullptr;
    }
    void *entry = ::dlsym(module, symbol);
    if (!entry)
        std::fprintf(stderr, "orvel-thumbs: %s is not a thumbnail engine\n", qUtf8Printable(path));
    return entry;
}

} // namespace

int WorkerEngine::runWorker(const QStringList &arguments)
{
    using Entry = int (*)(int, const char *const *);
    const auto entry = reinterpret_cast<Entry>(engineEntry("orvel_thumbs_worker_main"));
    if (!entry)
        return 3;
    std::vector<QByteArray> bytes;
    bytes.reserve(size_t(arguments.size()));
    for (const QString &argument : arguments)
        bytes.push_back(argument.toLocal8Bit());
    std::vector<const char *> argv;
    for (const QByteArray &b : bytes)
        argv.push_back(b.constData());
    argv.push_back(nullptr);
    return entry(int(bytes.size()), argv.data());
}

int WorkerEngine::runThumbnailer(const QString &source, const QString &output, int size, int timeoutSeconds,
    qint64 memoryLimitMiB, bool verbose)
{
    using Entry = int (*)(const char *, const char *, int, int, long long, int);
    const auto entry = reinterpret_cast<Entry>(engineEntry("orvel_thumbs_thumbnailer_main"));
    if (!entry)
        return 3;
    return entry(QFile::encodeName(source).constData(), QFile::encodeName(output).constData(), size,
        timeoutSeconds, memoryLimitMiB, verbose ? 1 : 0);
}

} // namespace orvel
