// The current process's identifier.
#include "support/ProcessInfo.h"

#include <unistd.h>

namespace orvel {

qint32 ProcessInfo::processNumber() { return qint32(getpid()); }

} // namespace orvel
