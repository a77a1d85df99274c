// A bundle's own places in the user's folders: its temporary folder and its log file.
#pragma once

#include "support/Bundle.h"

#include <QString>

namespace orvel {

/// The caches folder + "/TemporaryItems/" + the bundle's name, created (with its parents) when
/// missing; empty when it cannot be made or the bundle has no name.
[[nodiscard]] QString temporaryDirectory(const Bundle &bundle);
/// The library folder + "/Logs/" + the bundle's identifier + ".log"; empty without an identifier.
[[nodiscard]] QString logFile(const Bundle &bundle);

} // namespace orvel
