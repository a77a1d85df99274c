// The toolkit's answer for a position that was not found.
#pragma once

#include <QtGlobal>
#include <limits>

namespace orvel {

/// The largest qsizetype: the result of every search that finds nothing.
inline constexpr qsizetype NotFound = std::numeric_limits<qsizetype>::max();

} // namespace orvel
