// Resource forks from files of unknown origin: the parser, every resource read, and a write back
// that must give a fork the parser takes again with the same resources.
#include "FuzzSupport.h"

#include "files/ResourceFork.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::optional<orvel::ResourceFork> fork = orvel::ResourceFork::fromData(orvel::fuzz::bytesOf(data, size));
    if (!fork)
        return 0;
    const auto resources = fork->resources();
    for (const auto &[type, id] : resources)
        if (fork->dataForType(type, id).isNull())
            std::abort();
    // Replacing the first resource rewrites the whole fork, names and attributes included.
    if (!resources.empty() && fork->addData("x", resources.front().first, resources.front().second)) {
        const std::optional<orvel::ResourceFork> again = orvel::ResourceFork::fromData(fork->data());
        if (!again || again->dataForType(resources.front().first, resources.front().second) != "x")
            std::abort();
    }
    return 0;
}
