// The current process as other processes and files name it.
#pragma once

#include <QtGlobal>

namespace orvel {

/// Facts about the running process.
class ProcessInfo
{
public:
    /// The process identifier of the running process.
    [[nodiscard]] static qint32 processNumber();
};

} // namespace orvel
