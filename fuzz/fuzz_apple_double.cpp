// AppleDouble companions as they come in zip archives and on foreign volumes: the parser, the
// Finder info and the fork in it, and a write back that must parse to the same entries.
#include "FuzzSupport.h"

#include "files/AppleDouble.h"
#include "files/ResourceFork.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::optional<orvel::AppleDouble> ad
        = orvel::AppleDouble::fromBytes(orvel::fuzz::bytesOf(data, size));
    if (!ad)
        return 0;
    (void)ad->finderInfo();
    (void)orvel::ResourceFork::fromData(ad->resourceFork());
    const std::optional<orvel::AppleDouble> again = orvel::AppleDouble::fromBytes(ad->toBytes());
    if (!again || again->entries().size() != ad->entries().size() || again->finderInfo() != ad->finderInfo()
        || again->resourceFork() != ad->resourceFork())
        std::abort();
    return 0;
}
