// FFmpegLibrary: FFmpeg's libraries opened with dlopen on first need, and the table of their functions.
#include "movie/FFmpegLibrary.h"

#include "movie/FFmpeg_p.h"
#include "support/Failure.h"

#include <QByteArray>
#include <QFile>

#include <atomic>
#include <dlfcn.h>
#include <mutex>

namespace orvel::movie_detail {

namespace {

#define ORVEL_STRINGIFY_(x) #x
#define ORVEL_STRINGIFY(x) ORVEL_STRINGIFY_(x)

// The sonames of the versions the module was compiled against, in dependency order: a library with
// another major version has another ABI, so no other one is tried.
constexpr const char *kSonames[] = {
    "libavutil.so." ORVEL_STRINGIFY(LIBAVUTIL_VERSION_MAJOR),
    "libswscale.so." ORVEL_STRINGIFY(LIBSWSCALE_VERSION_MAJOR),
    "libavcodec.so." ORVEL_STRINGIFY(LIBAVCODEC_VERSION_MAJOR),
    "libavformat.so." ORVEL_STRINGIFY(LIBAVFORMAT_VERSION_MAJOR),
};
enum LibraryIndex { avutil, swscale, avcodec, avformat, libraryCount };

std::mutex folderMutex;
QString libraryFolder;
bool loadAttempted = false;

FFmpegLibrary table;
std::atomic<bool> loaded { false };
std::atomic<int> logLevel { AV_LOG_QUIET };
QString loadFailure;

QString dlFailure()
{
    const char *message = dlerror();
    return QString::fromLocal8Bit(message ? message : "unknown failure");
}

// Opens the four libraries and resolves every function; on failure error says why. The handles are
// never closed: FFmpeg keeps process-wide state and its objects may outlive any caller.
bool loadLibraries(const QString &folder, QString *error)
{
    void *handles[libraryCount] = {};
    for (int i = 0; i < libraryCount; ++i) {
        const QByteArray name = folder.isEmpty()
            ? QByteArray(kSonames[i])
            : QFile::encodeName(folder + u'/' + QLatin1StringView(kSonames[i]));
        handles[i] = dlopen(name.constData(), RTLD_NOW | RTLD_LOCAL);
        if (!handles[i]) {
            *error = dlFailure();
            return false;
        }
    }
    FFmpegLibrary resolved;
#define ORVEL_FFMPEG_RESOLVE(library, function)                                                              \
    resolved.function = reinterpret_cast<decltype(resolved.function)>(dlsym(handles[library], #function));   \
    if (!resolved.function) {                                                                                \
        *error = dlFailure();                                                                                \
        return false;                                                                                        \
    }
    ORVEL_FFMPEG_FUNCTIONS(ORVEL_FFMPEG_RESOLVE)
#undef ORVEL_FFMPEG_RESOLVE
    table = resolved;
    return true;
}

} // namespace

bool setFFmpegLibraryFolder(const QString &folder)
{
    const std::lock_guard lock(folderMutex);
    if (loadAttempted)
        return false;
    libraryFolder = folder;
    return true;
}

bool isFFmpegLoaded() { return loaded.load(std::memory_order_acquire); }

const FFmpegLibrary *loadFFmpeg(QString *error)
{
    static std::once_flag once;
    std::call_once(once, [] {
        QString folder;
        {
            const std::lock_guard lock(folderMutex);
            loadAttempted = true;
            folder = libraryFolder;
        }
        QString failure;
        if (loadLibraries(folder, &failure)) {
            table.av_log_set_level(logLevel.load());
            loaded.store(true, std::memory_order_release);
        } else {
            loadFailure = QStringLiteral("FFmpeg is not available: ") + failure;
        }
    });
    if (isFFmpegLoaded())
        return &table;
    return failure<const FFmpegLibrary *>(error, loadFailure);
}

const FFmpegLibrary &ffmpeg() { return table; }

void setFFmpegLogLevel(int level)
{
    logLevel.store(level);
    if (isFFmpegLoaded())
        table.av_log_set_level(logLevel.load());
}

} // namespace orvel::movie_detail
