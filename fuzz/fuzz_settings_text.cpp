// The settings file, which users and other programs may edit: what it reads must write back to
// a file that reads the same.
#include "FuzzSupport.h"

#include "support/SettingsFormat_p.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QMap<QString, QVariant> values = orvel::detail::parseSettings(orvel::fuzz::bytesOf(data, size));
    const QMap<QString, QVariant> again = orvel::detail::parseSettings(orvel::detail::formatSettings(values));
    if (again != values)
        std::abort();
    return 0;
}
