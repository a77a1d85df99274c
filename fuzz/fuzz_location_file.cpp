// Location files as they come from other machines: the same bytes read as a web location (property
// list, XML or binary), as an internet shortcut and as a desktop link.
#include "FuzzSupport.h"

#include "files/FileManager.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = orvel::fuzz::bytesOf(data, size);
    for (const char *extension : { "webloc", "url", "desktop" })
        (void)orvel::FileManager::resolveInternetLocation(orvel::fuzz::scratchFile(bytes, extension));
    return 0;
}
