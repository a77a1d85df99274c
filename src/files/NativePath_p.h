// Not API: path encoding and time conversions shared by the files module.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <chrono>
#include <ctime>

namespace orvel::detail {

/// The file-system bytes of path; false for an empty path or one with an embedded NUL, which the
/// C library would silently cut short and so would name a different file.
inline bool nativePath(const QString &path, QByteArray *out)
{
    if (path.isEmpty() || path.contains(QChar(0)))
        return false;
    *out = QFile::encodeName(path);
    return true;
}

template <typename TimePoint> TimePoint timePointFromTimespec(const timespec &ts)
{
    using namespace std::chrono;
    return TimePoint(
        duration_cast<typename TimePoint::duration>(seconds(ts.tv_sec) + nanoseconds(ts.tv_nsec)));
}

template <typename TimePoint> timespec timespecFromTimePoint(TimePoint t)
{
    using namespace std::chrono;
    const nanoseconds ns = duration_cast<nanoseconds>(t.time_since_epoch());
    // Floor so that tv_nsec stays within [0, 1e9) for times before 1970.
    const seconds s = floor<seconds>(ns);
    timespec ts {};
    ts.tv_sec = static_cast<time_t>(s.count());
    ts.tv_nsec = static_cast<long>((ns - s).count());
    return ts;
}

} // namespace orvel::detail
