// Not API: where the movie module finds FFmpeg's shared libraries, which it loads on first need.
#pragma once

#include <QString>

namespace orvel::movie_detail {

/// Makes the loader look for FFmpeg's libraries in folder instead of the system's search path.
/// Only honoured before the first attempt to load them; answers whether it was.
bool setFFmpegLibraryFolder(const QString &folder);

/// Whether FFmpeg's libraries have been loaded into this process (no attempt is made here).
bool isFFmpegLoaded();

} // namespace orvel::movie_detail
